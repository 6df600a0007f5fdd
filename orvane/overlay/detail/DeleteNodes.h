#pragma once

#include "orvane/scene/Mesh.h"
#include "orvane/scene/Scene.h"

namespace OV::Detail
{

/// Takes every node that shows the mesh out of the scene. Taken one at a time, since one may lie
/// below another and go with it; the last first, which moves no others.
inline void DeleteNodes(Scene& scene, const Mesh& mesh)
{
    while (!mesh.EachNode().empty())
    {
        scene.DeleteSubtree(mesh.EachNode().back());
    }
}

} // namespace OV::Detail
