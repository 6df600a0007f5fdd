#include "orvane_host/import/detail/LineSplitter.h"

#include "orvane_host/import/detail/MeshSplitter.h"

#include "orvane/scene/RawLine.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace OV::Host
{

namespace
{

/// So many points have 16-bit indices, four vertices each.
constexpr std::size_t kMostPoints = 65'536 / 4;

bool IsUsable(const MeshData& mesh, std::uint32_t vertex)
{
    if (vertex >= mesh.positions.count / 3)
    {
        return false;
    }
    const float* const position = mesh.positions.data + 3 * std::uint64_t(vertex);
    return std::all_of(position, position + 3, [](float x) { return std::fabs(x) <= kMaxCoordinate; });
}

Vector PositionOf(const MeshData& mesh, std::uint32_t vertex)
{
    const float* const position = mesh.positions.data + 3 * std::uint64_t(vertex);
    return Vector(position[0], position[1], position[2]);
}

/// @param points two to a segment.
std::shared_ptr<RawLine> MakePart(const std::vector<Vector>& points)
{
    std::vector<unsigned short> pairs;
    pairs.reserve(points.size());
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        pairs.push_back(static_cast<unsigned short>(i));
    }
    auto raw = std::make_shared<RawLine>();
    raw->SetPositionBuffer(points);
    raw->SetIndices(pairs);
    raw->EndDescription(true);
    return raw;
}

} // namespace

LineParts SplitLines(const MeshData& mesh)
{
    LineParts result;
    std::vector<Vector> points;
    for (std::uint64_t i = 0; i + 1 < mesh.indices.count; i += 2)
    {
        if (!IsUsable(mesh, mesh.indices[i]) || !IsUsable(mesh, mesh.indices[i + 1]))
        {
            ++result.dropped;
            continue;
        }
        ++result.segments;
        points.push_back(PositionOf(mesh, mesh.indices[i]));
        points.push_back(PositionOf(mesh, mesh.indices[i + 1]));
        if (points.size() == kMostPoints)
        {
            result.parts.push_back(MakePart(points));
            points.clear();
        }
    }
    if (!points.empty())
    {
        result.parts.push_back(MakePart(points));
    }
    return result;
}

} // namespace OV::Host
