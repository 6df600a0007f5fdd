#pragma once

#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <memory>

namespace OV::Test
{

/// Shows described geometry at a node of its own below the root. The scene owns what is made.
inline MeshNode& ShowMesh(const std::shared_ptr<RawMesh>& raw, Material& material, Scene& scene)
{
    auto* const mesh = new Mesh(raw, &scene);
    material.AddMesh(mesh);
    auto* const node = new MeshNode(&scene);
    scene.GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
    return *node;
}

} // namespace OV::Test
