#include "orvane_host/geometry/detail/PointTree.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

float Coordinate(const Vector& v, int axis)
{
    return axis == 0 ? v.x : axis == 1 ? v.y : v.z;
}

} // namespace

struct PointTree::Query
{
    std::uint32_t startNumber;
    std::uint32_t endNumber;
    std::array<double, 3> start;
    std::array<double, 3> along;
    double length;
    double tolerance;
    std::vector<Hit>& hits;
};

PointTree::PointTree(const std::vector<Vector>& points, std::vector<std::uint32_t> numbers) :
    m_points(points), m_numbers(std::move(numbers)), m_axes(m_numbers.size())
{
    Build(0, m_numbers.size());
}

unsigned char PointTree::WidestAxis(std::size_t low, std::size_t high) const
{
    unsigned char widest = 0;
    float most = -1.0f;
    for (unsigned char axis = 0; axis < 3; ++axis)
    {
        float first = Coordinate(m_points[m_numbers[low]], axis);
        float last = first;
        for (std::size_t i = low + 1; i < high; ++i)
        {
            const float place = Coordinate(m_points[m_numbers[i]], axis);
            first = std::min(first, place);
            last = std::max(last, place);
        }
        if (last - first > most)
        {
            most = last - first;
            widest = axis;
        }
    }
    return widest;
}

void PointTree::Build(std::size_t low, std::size_t high)
{
    if (high - low < 2)
    {
        return;
    }
    const std::size_t middle = low + (high - low) / 2;
    const unsigned char axis = WidestAxis(low, high);
    m_axes[middle] = axis;
    const auto at = [this](std::size_t i) { return m_numbers.begin() + static_cast<std::ptrdiff_t>(i); };
    std::nth_element(at(low), at(middle), at(high), [&](std::uint32_t a, std::uint32_t b) {
        const float left = Coordinate(m_points[a], axis);
        const float right = Coordinate(m_points[b], axis);
        return left < right || (left == right && a < b);
    });
    Build(low, middle);
    Build(middle + 1, high);
}

void PointTree::FindInside(std::uint32_t start, std::uint32_t end, double tolerance, std::vector<Hit>& hits) const
{
    const Vector& a = m_points[start];
    const Vector& b = m_points[end];
    const std::array<double, 3> along{double(b.x) - a.x, double(b.y) - a.y, double(b.z) - a.z};
    const Query query{start,
                      end,
                      {a.x, a.y, a.z},
                      along,
                      std::hypot(along[0], along[1], along[2]),
                      tolerance,
                      hits};
    const std::size_t first = hits.size();
    Visit(0, m_numbers.size(), 0.0, 1.0, query);
    std::sort(hits.begin() + static_cast<std::ptrdiff_t>(first), hits.end(), [](const Hit& left, const Hit& right) {
        return left.place < right.place || (left.place == right.place && left.point < right.point);
    });
}

void PointTree::Visit(std::size_t low, std::size_t high, double from, double to, const Query& query) const
{
    if (low >= high || from > to)
    {
        return;
    }
    const std::size_t middle = low + (high - low) / 2;
    const std::uint32_t number = m_numbers[middle];
    const Vector& point = m_points[number];
    if (number != query.startNumber && number != query.endNumber)
    {
        const std::array<double, 3> offset{point.x - query.start[0], point.y - query.start[1],
                                           point.z - query.start[2]};
        const double dot =
            offset[0] * query.along[0] + offset[1] * query.along[1] + offset[2] * query.along[2];
        const double place = dot / (query.length * query.length);
        const double apart = std::hypot(offset[0] - place * query.along[0], offset[1] - place * query.along[1],
                                        offset[2] - place * query.along[2]);
        const double margin = query.tolerance / query.length;
        if (apart <= query.tolerance && place > margin && place < 1.0 - margin)
        {
            query.hits.push_back({place, number});
        }
    }

    // The part of the segment on each side of the plane through the middle point.
    const unsigned char axis = m_axes[middle];
    const std::size_t side = axis;
    const double above = Coordinate(point, axis) + query.tolerance - query.start[side];
    const double below = Coordinate(point, axis) - query.tolerance - query.start[side];
    const double slope = query.along[side];
    if (slope == 0.0)
    {
        Visit(low, middle, from, above >= 0.0 ? to : -1.0, query);
        Visit(middle + 1, high, from, below <= 0.0 ? to : -1.0, query);
    }
    else if (slope > 0.0)
    {
        Visit(low, middle, from, std::min(to, above / slope), query);
        Visit(middle + 1, high, std::max(from, below / slope), to, query);
    }
    else
    {
        Visit(low, middle, std::max(from, above / slope), to, query);
        Visit(middle + 1, high, from, std::min(to, below / slope), query);
    }
}

} // namespace OV::Host::Detail
