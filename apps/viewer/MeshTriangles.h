#pragma once

#include "orvane/math/Vector.h"
#include "orvane/scene/Mesh.h"

#include <array>
#include <cstddef>
#include <vector>

namespace OV::ViewerApp
{

/// Calls with the corners, in object space, of each triangle of a mesh that has all three.
///
/// Each index is read once: another thread may write a host's arrays meanwhile, and what was checked
/// must be what is looked up.
template <typename Visit>
void VisitTriangles(const Mesh& mesh, Visit&& visit)
{
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    const std::vector<unsigned short>& indices = mesh.GetIndices();
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
    {
        const std::array<std::size_t, 3> corners = {indices[i], indices[i + 1], indices[i + 2]};
        if (corners[0] < positions.size() && corners[1] < positions.size() && corners[2] < positions.size())
        {
            visit(std::array<Vector, 3>{positions[corners[0]], positions[corners[1]], positions[corners[2]]});
        }
    }
}

} // namespace OV::ViewerApp
