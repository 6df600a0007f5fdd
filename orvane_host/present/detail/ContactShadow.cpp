#include "orvane_host/present/detail/ContactShadow.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace OV::Host::Detail
{

namespace
{

constexpr double kPi = 3.14159265358979323846;

/// Of the longest side of what stands on the ground: how far its shadow reaches.
constexpr double kReachShare = 0.35;
constexpr int kDirections = 32;
/// The sky from the horizon to the zenith, each part lighting the ground alike.
constexpr int kParts = 64;
/// In squares: more than anything that stands on the grid. What was higher has grown since it was measured.
constexpr double kHighest = 4.0 * ContactShadow::Size;
/// Columns that are written in all; what is left then is known by its edges alone.
constexpr std::size_t kBudget = 200'000'000;

int CountBits(std::uint64_t bits)
{
    int count = 0;
    for (; bits != 0; bits &= bits - 1)
    {
        ++count;
    }
    return count;
}

/// The first parts of the sky, so many.
std::uint64_t FirstParts(int count)
{
    return count >= kParts ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

/// The square that a place in squares lies in, which may lie beyond the grid by one; also of what is no number.
int SquareAt(double place)
{
    constexpr double size = ContactShadow::Size;
    return static_cast<int>(std::max(-1.0, std::min(size, place)));
}

/// Which part of the sky lies at a height over a distance: the square of the sine, by which a part
/// of it lights what is level.
int PartAt(float height, float distance)
{
    const float square = height * height;
    return static_cast<int>(square / (square + distance * distance) * static_cast<float>(kParts) + 0.5f);
}

} // namespace

ContactShadow::ContactShadow(const Polygons& polygons) : m_texels(static_cast<std::size_t>(Size) * Size)
{
    Measure(polygons);
    if (!(m_size > 0.0))
    {
        return;
    }
    m_budget = kBudget;
    m_columns.assign(m_texels.size(), {std::numeric_limits<float>::max(), -1.0f});
    polygons([this](const std::vector<Point>& polygon) { Fill(polygon); });
    SetOffsets();
    std::vector<float> darkness(m_texels.size());
    for (int y = 0; y < Size; ++y)
    {
        for (int x = 0; x < Size; ++x)
        {
            darkness[static_cast<std::size_t>(y) * Size + x] = DarknessAt(x, y);
        }
    }
    Smooth(darkness);
    for (int y = 1; y < Size - 1; ++y)
    {
        for (int x = 1; x < Size - 1; ++x)
        {
            const std::size_t i = static_cast<std::size_t>(y) * Size + x;
            m_texels[i] = static_cast<unsigned char>(std::lround(std::clamp(darkness[i], 0.0f, 1.0f) * 255.0f));
        }
    }
    m_columns = {};
    m_offsets = {};
}

void ContactShadow::Measure(const Polygons& polygons)
{
    constexpr double most = std::numeric_limits<double>::max();
    Point low = {most, most, most};
    Point high = {-most, -most, -most};
    polygons([&](const std::vector<Point>& polygon) {
        const bool isAbove = std::any_of(polygon.begin(), polygon.end(), [](const Point& p) { return p[2] >= 0.0; });
        for (std::size_t i = 0; isAbove && i < polygon.size(); ++i)
        {
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                low[axis] = std::min(low[axis], polygon[i][axis]);
                high[axis] = std::max(high[axis], polygon[i][axis]);
            }
        }
    });
    const double longest = std::max({high[0] - low[0], high[1] - low[1], high[2]});
    if (!(longest > 0.0) || !std::isfinite(longest))
    {
        return;
    }
    m_reach = kReachShare * longest;
    m_size = std::max(high[0] - low[0], high[1] - low[1]) + 2.0 * m_reach;
    // A square more on each side keeps the rim clear.
    m_size *= static_cast<double>(Size) / (Size - 4);
    m_left = (low[0] + high[0] - m_size) / 2.0;
    m_front = (low[1] + high[1] - m_size) / 2.0;
}

void ContactShadow::Raise(int x, int y, double height)
{
    if (x < 0 || y < 0 || x >= Size || y >= Size || !(height >= 0.0 && height <= kHighest))
    {
        return;
    }
    Column& column = m_columns[static_cast<std::size_t>(y) * Size + x];
    column.low = std::min(column.low, static_cast<float>(height));
    column.high = std::max(column.high, static_cast<float>(height));
}

void ContactShadow::Fill(const std::vector<Point>& polygon)
{
    const bool isFinite = std::all_of(polygon.begin(), polygon.end(), [](const Point& p) {
        return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
    });
    if (!isFinite)
    {
        return;
    }
    std::vector<Point> squares = polygon;
    const double perSquare = Size / m_size;
    for (Point& point : squares)
    {
        point[0] = (point[0] - m_left) * perSquare;
        point[1] = (point[1] - m_front) * perSquare;
        point[2] *= perSquare;
    }
    // What runs into the ground stands on it.
    const bool isAbove = std::any_of(squares.begin(), squares.end(), [](const Point& p) { return p[2] >= 0.0; });
    for (std::size_t i = 0; isAbove && i < squares.size(); ++i)
    {
        squares[i][2] = std::max(squares[i][2], 0.0);
    }
    for (std::size_t i = 0; isAbove && i < squares.size(); ++i)
    {
        FillEdge(squares[i], squares[(i + 1) % squares.size()]);
    }
    for (std::size_t i = 2; isAbove && i < squares.size(); ++i)
    {
        FillInside(squares[0], squares[i - 1], squares[i]);
    }
}

void ContactShadow::FillEdge(const Point& from, const Point& to)
{
    const double length = std::hypot(to[0] - from[0], to[1] - from[1]);
    const int steps = std::max(1, static_cast<int>(std::ceil(std::min(4.0 * Size, 2.0 * length))));
    for (int i = 0; i <= steps; ++i)
    {
        const double share = static_cast<double>(i) / steps;
        Raise(SquareAt(std::floor(from[0] + (to[0] - from[0]) * share)),
              SquareAt(std::floor(from[1] + (to[1] - from[1]) * share)),
              from[2] + (to[2] - from[2]) * share);
    }
}

void ContactShadow::FillInside(const Point& a, const Point& b, const Point& c)
{
    const double area = (b[0] - a[0]) * (c[1] - a[1]) - (c[0] - a[0]) * (b[1] - a[1]);
    const double lowY = std::min({a[1], b[1], c[1]});
    const double highY = std::max({a[1], b[1], c[1]});
    const double lowX = std::min({a[0], b[0], c[0]});
    const double highX = std::max({a[0], b[0], c[0]});
    const int firstY = std::max(0, SquareAt(std::ceil(lowY - 0.5)));
    const int lastY = std::min(Size - 1, SquareAt(std::floor(highY - 0.5)));
    const int firstX = std::max(0, SquareAt(std::ceil(lowX - 0.5)));
    const int lastX = std::min(Size - 1, SquareAt(std::floor(highX - 0.5)));
    if (area == 0.0 || firstY > lastY || firstX > lastX)
    {
        return;
    }
    const std::size_t cost = static_cast<std::size_t>(lastY - firstY + 1) * static_cast<std::size_t>(lastX - firstX + 1);
    if (cost > m_budget)
    {
        return;
    }
    m_budget -= cost;
    for (int y = firstY; y <= lastY; ++y)
    {
        for (int x = firstX; x <= lastX; ++x)
        {
            const double px = x + 0.5;
            const double py = y + 0.5;
            const double u = ((px - a[0]) * (c[1] - a[1]) - (c[0] - a[0]) * (py - a[1])) / area;
            const double v = ((b[0] - a[0]) * (py - a[1]) - (px - a[0]) * (b[1] - a[1])) / area;
            if (u >= 0.0 && v >= 0.0 && u + v <= 1.0)
            {
                Raise(x, y, a[2] + u * (b[2] - a[2]) + v * (c[2] - a[2]));
            }
        }
    }
}

void ContactShadow::SetOffsets()
{
    const int steps = static_cast<int>(m_reach * Size / m_size);
    for (int i = 0; i < kDirections; ++i)
    {
        const double angle = 2.0 * kPi * (i + 0.5) / kDirections;
        for (int step = 1; step <= steps; ++step)
        {
            m_offsets.push_back({static_cast<int>(std::lround(step * std::cos(angle))),
                                 static_cast<int>(std::lround(step * std::sin(angle)))});
        }
    }
}

float ContactShadow::DarknessAt(int x, int y) const
{
    const Column& own = m_columns[static_cast<std::size_t>(y) * Size + x];
    const bool isUnder = own.high >= 0.0f;
    const std::uint64_t above = isUnder ? ~FirstParts(PartAt(own.low, 0.5f)) : 0;
    if (CountBits(above) == kParts)
    {
        return 1.0f;
    }
    const auto steps = static_cast<float>(m_offsets.size() / kDirections);
    float sum = 0.0f;
    auto offset = m_offsets.begin();
    for (int i = 0; i < kDirections; ++i)
    {
        std::uint64_t hidden = above;
        auto direction = static_cast<float>(CountBits(above));
        for (float step = 1.0f; step <= steps; ++step, ++offset)
        {
            const int column = x + offset->x;
            const int row = y + offset->y;
            if (column < 0 || row < 0 || column >= Size || row >= Size)
            {
                continue;
            }
            const Column& other = m_columns[static_cast<std::size_t>(row) * Size + static_cast<std::size_t>(column)];
            if (other.high < 0.0f)
            {
                continue;
            }
            const std::uint64_t parts =
                FirstParts(PartAt(other.high, step)) & ~FirstParts(PartAt(other.low, step)) & ~hidden;
            if (parts != 0)
            {
                const float share = step / steps;
                direction += static_cast<float>(CountBits(parts)) * (1.0f - share * share);
                hidden |= parts;
            }
        }
        sum += direction;
    }
    return sum / static_cast<float>(kParts * kDirections);
}

void ContactShadow::Smooth(std::vector<float>& darkness) const
{
    std::vector<float> before;
    for (const int offset : {1, Size, 1, Size})
    {
        before = darkness;
        for (int y = 1; y < Size - 1; ++y)
        {
            for (int x = 1; x < Size - 1; ++x)
            {
                const int i = y * Size + x;
                const auto at = [&](int place) { return before[static_cast<std::size_t>(place)]; };
                darkness[static_cast<std::size_t>(i)] = 0.25f * at(i - offset) + 0.5f * at(i) + 0.25f * at(i + offset);
            }
        }
    }
}

} // namespace OV::Host::Detail
