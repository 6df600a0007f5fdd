#include "orvane_host/geometry/detail/PlaneSection.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

/// Of the size of the section. Sides that meet are ends of edges that were rounded each by itself:
/// between such ends there is nothing to fill.
constexpr double kThinnest = 1e-6;

/// Beyond it the products of lengths leave the range of numbers, and nothing has an order.
constexpr double kLargest = 1e100;

/// Sides that are put in order in all, level by level. More are those of a solid that is crumpled all over, and
/// would take minutes.
constexpr std::size_t kMostOrdered = 50'000'000;

/// Crossings of sides that strips end at, in all, and places that sides change for them at a level, for each
/// side. More are not looked for, and what lies there is filled a little beside.
constexpr std::size_t kMostCrossings = 20'000;
constexpr std::size_t kMostChanges = 64;

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
        const Side side{Dot(down, m_u), Dot(down, m_v), Dot(up, m_u), Dot(up, m_v)};
        const auto isNumber = [](double value) { return std::abs(value) < kLargest; };
        if (isNumber(side.u1) && isNumber(side.v1) && isNumber(side.u2) && isNumber(side.v2))
        {
            m_sides.push_back(side);
        }
    }
}

PlaneSection::Levels PlaneSection::FindLevels(std::vector<double> places, double thinnest)
{
    std::sort(places.begin(), places.end());
    Levels levels;
    for (const double place : places)
    {
        if (levels.empty() || place - levels.back() > thinnest)
        {
            levels.push_back(place);
        }
    }
    return levels;
}

std::size_t PlaneSection::LevelOf(const Levels& levels, double place)
{
    const auto above = std::upper_bound(levels.begin(), levels.end(), place);
    return above == levels.begin() ? 0 : static_cast<std::size_t>(above - levels.begin()) - 1;
}

void PlaneSection::AddStrips(std::size_t level, const std::vector<std::size_t>& row, std::vector<Strip>& strips,
                             OpenStrips& open) const
{
    OpenStrips still;
    int depth = 0;
    std::size_t left = 0;
    for (const std::size_t side : row)
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
            const std::size_t strip = known == open.end() ? strips.size() : known->second;
            if (strip == strips.size())
            {
                strips.push_back({left, side, level, level});
            }
            strips[strip].top = level + 1;
            still[{left, side}] = strip;
        }
    }
    open = std::move(still);
}

void PlaneSection::FindCrossings(const std::vector<std::size_t>& row, double bottom, double top, double thinnest,
                                 Levels& crossings) const
{
    const auto isInOrder = [&](std::size_t left, std::size_t right, double v)
    { return m_sides[left].At(v) <= m_sides[right].At(v) + thinnest; };
    // The row is in order at the middle: so it is at both ends, unless neighbours change places.
    bool areInOrder = true;
    for (std::size_t i = 1; i < row.size() && areInOrder; ++i)
    {
        areInOrder = isInOrder(row[i - 1], row[i], bottom) && isInOrder(row[i - 1], row[i], top);
    }
    if (areInOrder)
    {
        return;
    }
    // From the order at the bottom to that at the top, by changes of neighbours.
    std::vector<std::size_t> order = row;
    std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b)
              { return std::tuple(m_sides[a].At(bottom), m_sides[a].At(top), a)
                    < std::tuple(m_sides[b].At(bottom), m_sides[b].At(top), b); });
    std::size_t left = kMostChanges * order.size();
    for (std::size_t i = 1; i < order.size(); ++i)
    {
        for (std::size_t at = i; at > 0 && left > 0 && crossings.size() < kMostCrossings; --at, --left)
        {
            const Side& first = m_sides[order[at - 1]];
            const Side& second = m_sides[order[at]];
            const double before = second.At(bottom) - first.At(bottom);
            const double after = first.At(top) - second.At(top);
            if (!(after > 0.0))
            {
                break;
            }
            if (before > thinnest && after > thinnest)
            {
                crossings.push_back(bottom + (top - bottom) * before / (before + after));
            }
            std::swap(order[at - 1], order[at]);
        }
    }
}

std::vector<PlaneSection::Strip> PlaneSection::FindStrips(const Levels& levels, double thinnest, Levels* crossings) const
{
    std::vector<std::vector<std::size_t>> beginning(levels.size());
    std::vector<std::size_t> tops;
    std::size_t ordered = 0;
    for (std::size_t i = 0; i < m_sides.size(); ++i)
    {
        const std::size_t first = LevelOf(levels, m_sides[i].v1);
        const std::size_t last = LevelOf(levels, m_sides[i].v2);
        tops.push_back(std::max(first, last));
        if (first != last)
        {
            beginning[std::min(first, last)].push_back(i);
            ordered += std::max(first, last) - std::min(first, last);
        }
    }
    if (ordered > kMostOrdered)
    {
        return {};
    }
    std::vector<Strip> strips;
    OpenStrips open;
    std::vector<std::size_t> row;
    for (std::size_t level = 0; level + 1 < levels.size(); ++level)
    {
        row.erase(std::remove_if(row.begin(), row.end(), [&](std::size_t i) { return tops[i] <= level; }), row.end());
        row.insert(row.end(), beginning[level].begin(), beginning[level].end());
        const double middle = (levels[level] + levels[level + 1]) / 2.0;
        std::sort(row.begin(), row.end(), [&](std::size_t a, std::size_t b)
                  { return std::pair(m_sides[a].At(middle), a) < std::pair(m_sides[b].At(middle), b); });
        if (crossings)
        {
            FindCrossings(row, levels[level], levels[level + 1], thinnest, *crossings);
        }
        AddStrips(level, row, strips, open);
    }
    return strips;
}

std::vector<PlaneSection::Point> PlaneSection::Fill() const
{
    std::vector<double> ends;
    for (const Side& side : m_sides)
    {
        ends.insert(ends.end(), {side.v1, side.v2});
    }
    if (ends.empty())
    {
        return {};
    }
    const auto [lowest, highest] = std::minmax_element(ends.begin(), ends.end());
    const double thinnest = kThinnest * (*highest - *lowest);
    Levels levels = FindLevels(ends, thinnest);
    Levels crossings;
    std::vector<Strip> strips = FindStrips(levels, thinnest, &crossings);
    if (!crossings.empty())
    {
        ends.insert(ends.end(), crossings.begin(), crossings.end());
        Levels more = FindLevels(ends, thinnest);
        std::vector<Strip> parted = FindStrips(more, thinnest, nullptr);
        if (!parted.empty())
        {
            levels = std::move(more);
            strips = std::move(parted);
        }
    }
    // Strips that meet along a level have all corners on it in common, or cracks would show.
    std::vector<std::vector<double>> corners(levels.size());
    for (const Strip& strip : strips)
    {
        for (const std::size_t level : {strip.bottom, strip.top})
        {
            corners[level].push_back(m_sides[strip.left].At(levels[level]));
            corners[level].push_back(m_sides[strip.right].At(levels[level]));
        }
    }
    for (std::vector<double>& level : corners)
    {
        level = FindLevels(level, thinnest);
    }
    std::vector<Point> filled;
    for (const Strip& strip : strips)
    {
        const auto rim = [&](std::size_t level)
        {
            const std::size_t first = LevelOf(corners[level], m_sides[strip.left].At(levels[level]));
            const std::size_t last = LevelOf(corners[level], m_sides[strip.right].At(levels[level]));
            std::vector<Point> points;
            // Sides that cross where that was not looked for end in one corner.
            for (std::size_t i = first; i <= std::max(first, last); ++i)
            {
                points.push_back(ToSpace(corners[level][i], levels[level]));
            }
            return points;
        };
        const std::vector<Point> bottom = rim(strip.bottom);
        const std::vector<Point> top = rim(strip.top);
        for (std::size_t i = 0; i + 1 < bottom.size(); ++i)
        {
            filled.insert(filled.end(), {bottom[i], top.front(), bottom[i + 1]});
        }
        for (std::size_t i = 0; i + 1 < top.size(); ++i)
        {
            filled.insert(filled.end(), {bottom.back(), top[i], top[i + 1]});
        }
    }
    return filled;
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
