#pragma once

#include "orvane_host/geometry/detail/BoxTree.h"
#include "orvane_host/import/detail/ModelData.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace OV::Host
{

/// Triangles of a mesh that hang together, in the space of the mesh.
struct SurfacePart
{
    /// Ascending, and of use all of them.
    std::vector<std::uint32_t> triangles;
    Detail::Box box = {};
    /// Twice the volume by the area, which for a board is how thick it is; 0 for what has rims.
    double thickness = 0.0;
};

struct SurfaceParts
{
    /// By their first triangles.
    std::vector<SurfacePart> parts;
    /// Triangles of no use.
    std::uint64_t dropped = 0;
};

/// Around all points that triangles of use have; the low corner above the high one without any.
Detail::Box BoxOfUsable(const MeshData& mesh);

/// Finds the triangles that share corners, by their positions to the bit. What of it has rims, and has
/// none taken together, is one part: the file has set a solid's faces apart.
SurfaceParts FindSurfaceParts(const MeshData& mesh);

/// A mesh of some of the parts, its triangles in the order that they have.
/// @param keepAlive takes what the result points into.
MeshData ExtractParts(const MeshData& mesh, const SurfaceParts& all, const std::vector<std::uint32_t>& parts,
                      std::vector<std::shared_ptr<const void>>& keepAlive);

} // namespace OV::Host
