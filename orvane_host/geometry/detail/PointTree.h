#pragma once

#include "orvane/math/Vector.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace OV::Host::Detail
{

/// Finds which of many points lie on a segment.
class PointTree
{
public:
    /// A point on a segment.
    struct Hit
    {
        double place = 0.0; ///< 0 at the start to 1 at the end
        std::uint32_t point = 0;
    };

    /// @param points must outlive the tree.
    /// @param numbers of the points to find, each once.
    PointTree(const std::vector<Vector>& points, std::vector<std::uint32_t> numbers);

    /// Appends the points within the tolerance of a segment but farther than that from its ends,
    /// in their order along it.
    void FindInside(std::uint32_t start, std::uint32_t end, double tolerance, std::vector<Hit>& hits) const;

private:
    struct Query;

    void Build(std::size_t low, std::size_t high);
    /// The axis along which points of a range are furthest apart: of those of a flat model one divides nothing.
    unsigned char WidestAxis(std::size_t low, std::size_t high) const;
    void Visit(std::size_t low, std::size_t high, double from, double to, const Query& query) const;

    const std::vector<Vector>& m_points;
    /// The middle of each range divides it along its axis.
    std::vector<std::uint32_t> m_numbers;
    std::vector<unsigned char> m_axes; ///< of the ranges, by their middle
};

} // namespace OV::Host::Detail
