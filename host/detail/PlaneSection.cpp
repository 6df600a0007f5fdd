#include "host/detail/PlaneSection.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <set>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

/// Of the size of the section. Sides that meet are ends of edges that were rounded each by itself:
/// between such ends there is nothing to fill.
constexpr double kThinnest = 1e-6;

using Point = PlaneSection::Point;

double Dot(const Point& a, const Point& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Point Cross(const Point& a, const Point& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Point Normalized(const Point& a)
{
    const double length = std::sqrt(Dot(a, a));
    return {a[0] / length, a[1] / length, a[2] / length};
}

/// The axis that the normal points along least.
Point AxisAside(const Point& normal)
{
    const std::size_t axis = static_cast<std::size_t>(
        std::min_element(normal.begin(), normal.end(),
                         [](double a, double b) { return std::abs(a) < std::abs(b); }) - normal.begin());
    Point aside{};
    aside[axis] = 1.0;
    return aside;
}

/// The same point whichever way the edge is given, so that neighbours meet in it.
Point Crossing(const Point& a, double heightA, const Point& b, double heightB)
{
    if (b < a)
    {
        return Crossing(b, heightB, a, heightA);
    }
    const double share = heightA / (heightA - heightB);
    return {a[0] + (b[0] - a[0]) * share, a[1] + (b[1] - a[1]) * share, a[2] + (b[2] - a[2]) * share};
}

} // namespace

PlaneSection::PlaneSection(const Point& normal, const Point& point) : m_normal(normal), m_origin(point)
{
    m_u = Normalized(Cross(AxisAside(normal), normal));
    m_v = Cross(normal, m_u);
}

double PlaneSection::HeightOf(const Point& point) const
{
    return Dot(m_normal, point) - Dot(m_normal, m_origin);
}

void PlaneSection::Add(const std::array<Point, 3>& corners, const std::array<double, 3>& heights)
{
    Point up{};
    Point down{};
    int crossings = 0;
    for (std::size_t i = 0; i < 3; ++i)
    {
        const std::size_t next = (i + 1) % 3;
        if ((heights[i] >= 0.0) != (heights[next] >= 0.0))
        {
            (heights[next] >= 0.0 ? up : down) = Crossing(corners[i], heights[i], corners[next], heights[next]);
            ++crossings;
        }
    }
    if (crossings == 2)
    {
        m_sides.push_back({Dot(down, m_u), Dot(down, m_v), Dot(up, m_u), Dot(up, m_v)});
    }
}

std::vector<PlaneSection::Strip> PlaneSection::FindStrips() const
{
    std::vector<std::size_t> byBottom(m_sides.size());
    std::set<double> ends;
    for (std::size_t i = 0; i < m_sides.size(); ++i)
    {
        byBottom[i] = i;
        ends.insert({m_sides[i].v1, m_sides[i].v2});
    }
    const auto bottomOf = [this](std::size_t i) { return std::min(m_sides[i].v1, m_sides[i].v2); };
    const auto topOf = [this](std::size_t i) { return std::max(m_sides[i].v1, m_sides[i].v2); };
    std::sort(byBottom.begin(), byBottom.end(), [&](std::size_t a, std::size_t b) { return bottomOf(a) < bottomOf(b); });
    const double thinnest = ends.empty() ? 0.0 : kThinnest * (*ends.rbegin() - *ends.begin());

    std::vector<Strip> strips;
    std::map<std::pair<std::size_t, std::size_t>, std::size_t> open; ///< strips by their sides
    std::vector<std::size_t> active;
    std::size_t next = 0;
    for (auto end = ends.begin(); end != ends.end() && std::next(end) != ends.end(); ++end)
    {
        const double bottom = *end;
        const double top = *std::next(end);
        active.erase(std::remove_if(active.begin(), active.end(), [&](std::size_t i) { return topOf(i) <= bottom; }),
                     active.end());
        for (; next < byBottom.size() && bottomOf(byBottom[next]) <= bottom; ++next)
        {
            if (topOf(byBottom[next]) > bottom)
            {
                active.push_back(byBottom[next]);
            }
        }
        if (top - bottom <= thinnest)
        {
            continue;
        }
        const double middle = (bottom + top) / 2.0;
        std::sort(active.begin(), active.end(), [&](std::size_t a, std::size_t b)
                  { return std::pair(m_sides[a].At(middle), a) < std::pair(m_sides[b].At(middle), b); });
        std::map<std::pair<std::size_t, std::size_t>, std::size_t> still;
        int depth = 0;
        std::size_t left = 0;
        for (const std::size_t side : active)
        {
            // Going right, a side that runs down has what is enclosed on its right.
            const int before = depth;
            depth += m_sides[side].v1 > m_sides[side].v2 ? 1 : -1;
            if (before <= 0 && depth > 0)
            {
                left = side;
            }
            else if (before > 0 && depth <= 0)
            {
                const auto known = open.find({left, side});
                if (known == open.end())
                {
                    strips.push_back({left, side, bottom, top});
                }
                else
                {
                    strips[known->second].top = top;
                }
                still[{left, side}] = known == open.end() ? strips.size() - 1 : known->second;
            }
        }
        open = std::move(still);
    }
    return strips;
}

std::vector<PlaneSection::Point> PlaneSection::Fill() const
{
    std::vector<Point> corners;
    for (const Strip& strip : FindStrips())
    {
        const Side& left = m_sides[strip.left];
        const Side& right = m_sides[strip.right];
        const Point a = ToSpace(left.At(strip.bottom), strip.bottom);
        const Point b = ToSpace(right.At(strip.bottom), strip.bottom);
        const Point c = ToSpace(right.At(strip.top), strip.top);
        const Point d = ToSpace(left.At(strip.top), strip.top);
        corners.insert(corners.end(), {a, c, b, a, d, c});
    }
    return corners;
}

PlaneSection::Point PlaneSection::ToSpace(double u, double v) const
{
    const double height = Dot(m_normal, m_origin);
    Point point{};
    for (std::size_t i = 0; i < 3; ++i)
    {
        point[i] = m_normal[i] * height + m_u[i] * u + m_v[i] * v;
    }
    return point;
}

} // namespace OV::Host::Detail
