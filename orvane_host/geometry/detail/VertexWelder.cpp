#include "orvane_host/geometry/detail/VertexWelder.h"

#include "orvane/scene/RawMesh.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace OV::Host::Detail
{

namespace
{

/// Of the size of everything. Rounding of single precision is well below, what is modelled well
/// above.
constexpr double kRelativeTolerance = 2e-6;

/// Of the largest coordinate: what far from the origin is all that its numbers can tell apart.
constexpr double kRoundingTolerance = std::numeric_limits<float>::epsilon();

/// Cells are wider than the tolerance, so that most points need to look into one alone.
constexpr double kCellsPerTolerance = 0.125;

constexpr int kCellBits = 21;

/// More than there are, on any axis: bounds the cells of a point that was written after all were measured.
constexpr double kLastCell = (1 << kCellBits) - 1;

constexpr std::uint32_t kNoPoint = std::numeric_limits<std::uint32_t>::max();

bool IsFinite(const Vector& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

/// @param place in cells; the first cell for what is none.
std::uint64_t CellAt(double place)
{
    return place > 0.0 ? static_cast<std::uint64_t>(std::min(place, kLastCell)) : 0;
}

double SquaredDistance(const Vector& a, const Vector& b)
{
    const double x = double(a.x) - b.x;
    const double y = double(a.y) - b.y;
    const double z = double(a.z) - b.z;
    return x * x + y * y + z * z;
}

} // namespace

VertexWelder::VertexWelder(const std::vector<const RawMesh*>& parts)
{
    Measure(parts);
    for (const RawMesh* part : parts)
    {
        AddTriangles(*part);
    }
}

void VertexWelder::Measure(const std::vector<const RawMesh*>& parts)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    std::array<double, 3> low{infinity, infinity, infinity};
    std::array<double, 3> high{-infinity, -infinity, -infinity};
    double largest = 0.0;
    for (const RawMesh* part : parts)
    {
        for (const Vector& position : part->positions)
        {
            if (!IsFinite(position))
            {
                continue;
            }
            const std::array<double, 3> values{position.x, position.y, position.z};
            for (int axis = 0; axis < 3; ++axis)
            {
                low[axis] = std::min(low[axis], values[axis]);
                high[axis] = std::max(high[axis], values[axis]);
                largest = std::max(largest, std::abs(values[axis]));
            }
        }
    }
    if (low[0] > high[0])
    {
        return;
    }
    const double size = std::hypot(high[0] - low[0], high[1] - low[1], high[2] - low[2]);
    m_tolerance = std::max(size * kRelativeTolerance, largest * kRoundingTolerance);
    m_cellSize = m_tolerance > 0.0 ? m_tolerance / kCellsPerTolerance : 1.0;
    // One cell of room, for points that look into the cell below theirs.
    for (int axis = 0; axis < 3; ++axis)
    {
        m_origin[axis] = low[axis] - m_cellSize;
    }
}

void VertexWelder::AddTriangles(const RawMesh& part)
{
    std::vector<std::uint32_t> numbers(part.positions.size(), kNoPoint);
    const auto number = [&](unsigned short index) {
        if (index >= numbers.size())
        {
            return kNoPoint;
        }
        if (numbers[index] == kNoPoint && IsFinite(part.positions[index]))
        {
            numbers[index] = PointAt(part.positions[index]);
        }
        return numbers[index];
    };
    for (std::size_t i = 0; i + 2 < part.indices.size(); i += 3)
    {
        const WeldedTriangle triangle{number(part.indices[i]), number(part.indices[i + 1]),
                                      number(part.indices[i + 2])};
        const bool whole = std::find(triangle.begin(), triangle.end(), kNoPoint) == triangle.end();
        if (whole && triangle[0] != triangle[1] && triangle[1] != triangle[2] && triangle[2] != triangle[0])
        {
            m_triangles.push_back(triangle);
        }
    }
}

std::uint32_t VertexWelder::PointAt(const Vector& position)
{
    const std::array<float, 3> values{position.x, position.y, position.z};
    std::array<std::uint64_t, 3> low{};
    std::array<std::uint64_t, 3> high{};
    std::uint64_t home = 0;
    for (int axis = 0; axis < 3; ++axis)
    {
        const double place = values[axis] - m_origin[axis];
        low[axis] = CellAt((place - m_tolerance) / m_cellSize);
        // Two at most, as wide as cells are; who else writes the place may make it look like more.
        high[axis] = std::min(CellAt((place + m_tolerance) / m_cellSize), low[axis] + 1);
        home |= CellAt(place / m_cellSize) << (kCellBits * axis);
    }
    for (std::uint64_t z = low[2]; z <= high[2]; ++z)
    {
        for (std::uint64_t y = low[1]; y <= high[1]; ++y)
        {
            for (std::uint64_t x = low[0]; x <= high[0]; ++x)
            {
                const std::int64_t found = FindIn(x | y << kCellBits | z << (2 * kCellBits), position);
                if (found >= 0)
                {
                    return static_cast<std::uint32_t>(found);
                }
            }
        }
    }
    const auto added = static_cast<std::int64_t>(m_points.size());
    m_points.push_back(position);
    const auto entry = m_cells.try_emplace(home, -1).first;
    m_before.push_back(entry->second);
    entry->second = added;
    return static_cast<std::uint32_t>(added);
}

std::int64_t VertexWelder::FindIn(std::uint64_t cell, const Vector& position) const
{
    const auto found = m_cells.find(cell);
    if (found == m_cells.end())
    {
        return -1;
    }
    for (std::int64_t point = found->second; point >= 0; point = m_before[static_cast<std::size_t>(point)])
    {
        if (SquaredDistance(m_points[static_cast<std::size_t>(point)], position) <= m_tolerance * m_tolerance)
        {
            return point;
        }
    }
    return -1;
}

} // namespace OV::Host::Detail
