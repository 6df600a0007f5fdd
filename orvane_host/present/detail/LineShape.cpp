#include "orvane_host/present/detail/LineShape.h"

#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/math/Vector.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/RawMesh.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <tuple>

namespace OV::Host::Detail
{

namespace
{

constexpr std::size_t kVertices = SolidLineEffectES20::VerticesPerPoint;
constexpr std::size_t kIndices = 6;

/// One end of a segment and where it lies.
struct End
{
    float x;
    float y;
    float z;
    std::uint32_t segment;
    unsigned char joint;
};

auto PlaceOf(const End& end)
{
    return std::tie(end.x, end.y, end.z);
}

/// What is not lies in no place, not even in its own.
bool IsPlace(const End& end)
{
    return std::isfinite(end.x) && std::isfinite(end.y) && std::isfinite(end.z);
}

bool IsSamePlace(const Vector& a, const Vector& b)
{
    return a.x == b.x && a.y == b.y && a.z == b.z;
}

} // namespace

LineShape::LineShape(const Mesh& line)
{
    const RawMesh& raw = *line.GetRawMesh();
    const std::vector<Vector>& positions = raw.positions;
    m_points = positions.size() / kVertices;
    std::vector<End> ends;
    for (std::size_t index = 0; index + kIndices <= raw.indices.size(); index += kIndices)
    {
        const std::size_t point = raw.indices[index] / kVertices;
        if (point + 1 >= m_points)
        {
            continue;
        }
        const Vector& start = positions[point * kVertices];
        const Vector& end = positions[(point + 1) * kVertices];
        const auto segment = static_cast<std::uint32_t>(m_segments.size());
        const bool goesOn =
            segment > 0 && IsSamePlace(positions[(m_segments.back().point + std::size_t(1)) * kVertices], start);
        m_segments.push_back({static_cast<std::uint32_t>(point), 0, goesOn});
        for (const End& found : {End{start.x, start.y, start.z, segment, JointAtStart},
                                 End{end.x, end.y, end.z, segment, JointAtEnd}})
        {
            if (IsPlace(found))
            {
                ends.push_back(found);
            }
        }
    }
    std::sort(ends.begin(), ends.end(), [](const End& a, const End& b) { return PlaceOf(a) < PlaceOf(b); });
    for (auto first = ends.begin(); first != ends.end();)
    {
        const auto last = std::find_if(first, ends.end(), [&](const End& end) { return PlaceOf(end) != PlaceOf(*first); });
        if (last - first > 1)
        {
            std::for_each(first, last, [&](const End& end) { m_segments[end.segment].joints |= end.joint; });
        }
        first = last;
    }
}

bool LineShape::HasSameJoints(unsigned char& joints) const
{
    joints = m_segments.empty() ? 0 : m_segments.front().joints;
    return std::all_of(m_segments.begin(), m_segments.end(),
                       [joints](const Segment& segment) { return segment.joints == joints; });
}

} // namespace OV::Host::Detail
