#pragma once

#include "orvane/Export.h"

namespace OV
{

class Mesh;

/// Order of the meshes of a material: by sort ID, that is by creation; null comes last.
struct ORVANE_API CompareMeshPointers
{
    bool operator()(const Mesh* a, const Mesh* b) const;
};

} // namespace OV
