#include "orvane_host/present/detail/SunHoursMesh.h"

#include "orvane_host/present/detail/Fingerprint.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

using QGM::Point3d;
using QGM::Vector3d;

/// Times that a triangle is quartered at most.
constexpr int kHalvings = 3;

/// Times that a side is halved in search of the rim that crosses it.
constexpr int kSearches = 4;

/// Of the way to the middle of the triangles around it, where a corner is counted.
constexpr double kInset = 0.05;

/// Of a step: a middle that lies farther from what its corners come to is drawn as a corner.
constexpr double kFlatness = 0.25;

Point3d Mixed(const Point3d& a, const Point3d& b, double share)
{
    return {a.x + share * (b.x - a.x), a.y + share * (b.y - a.y), a.z + share * (b.z - a.z)};
}

Vector3d NormalOf(const Point3d& a, const Point3d& b, const Point3d& c)
{
    const Vector3d u(b.x - a.x, b.y - a.y, b.z - a.z);
    const Vector3d v(c.x - a.x, c.y - a.y, c.z - a.z);
    return Vector3d(u.y * v.z - u.z * v.y, u.z * v.x - u.x * v.z, u.x * v.y - u.y * v.x).normalize();
}

} // namespace

SunHoursMesh::SunHoursMesh(const std::vector<Face>& faces, const SunHours& hours, double step, std::size_t most) :
    m_source(hours), m_step(step)
{
    Weld(faces);
    Count();
    for (int i = 0; i < kHalvings && Refine(most); ++i)
    {
        Count();
    }
    FindCrossings();
}

std::uint64_t SunHoursMesh::KeyOf(std::uint32_t first, std::uint32_t second)
{
    return (static_cast<std::uint64_t>(std::min(first, second)) << 32) | std::max(first, second);
}

std::uint64_t SunHoursMesh::SideOf(const Triangle& triangle, int side) const
{
    return KeyOf(triangle.corners[side], triangle.corners[(side + 1) % 3]);
}

double SunHoursMesh::LengthOf(const Triangle& triangle, int side) const
{
    const Point3d& a = m_corners[triangle.corners[side]].place;
    const Point3d& b = m_corners[triangle.corners[(side + 1) % 3]].place;
    return std::hypot(b.x - a.x, b.y - a.y, b.z - a.z);
}

int SunHoursMesh::LongestOf(const Triangle& triangle) const
{
    const int side = LengthOf(triangle, 1) > LengthOf(triangle, 0) ? 1 : 0;
    return LengthOf(triangle, 2) > LengthOf(triangle, side) ? 2 : side;
}

SunSpot SunHoursMesh::MiddleOf(const Triangle& triangle) const
{
    const Point3d& a = m_corners[triangle.corners[0]].place;
    const Point3d& b = m_corners[triangle.corners[1]].place;
    const Point3d& c = m_corners[triangle.corners[2]].place;
    return {Point3d((a.x + b.x + c.x) / 3.0, (a.y + b.y + c.y) / 3.0, (a.z + b.z + c.z) / 3.0),
            m_corners[triangle.corners[0]].normal};
}

bool SunHoursMesh::IsUneven(const Triangle& triangle) const
{
    float low = triangle.hours;
    float high = triangle.hours;
    for (const std::uint32_t corner : triangle.corners)
    {
        low = std::min(low, m_corners[corner].hours);
        high = std::max(high, m_corners[corner].hours);
    }
    return high - low > m_step;
}

/// Corners that are the same in every bit and look the same way are one.
void SunHoursMesh::Weld(const std::vector<Face>& faces)
{
    std::unordered_map<std::uint64_t, std::uint32_t> known;
    for (const Face& face : faces)
    {
        const Vector3d normal = NormalOf(face.corners[0], face.corners[1], face.corners[2]);
        Triangle triangle{};
        for (int i = 0; i < 3; ++i)
        {
            const Point3d& place = face.corners[i];
            Fingerprint print;
            for (const double value : {place.x, place.y, place.z})
            {
                print.Add(value);
            }
            for (const double value : {normal.x, normal.y, normal.z})
            {
                print.Add(std::llround(value * 1000.0));
            }
            const auto found = known.emplace(print.Get(), static_cast<std::uint32_t>(m_corners.size()));
            if (found.second)
            {
                Corner corner;
                corner.place = place;
                corner.normal = normal;
                m_corners.push_back(corner);
            }
            triangle.corners[i] = found.first->second;
        }
        m_triangles.push_back(triangle);
    }
}

/// What isn't counted yet.
void SunHoursMesh::Count()
{
    struct Around
    {
        Point3d sum;
        int count = 0;
    };
    std::vector<Around> around(m_corners.size());
    std::vector<SunSpot> spots;
    std::vector<std::pair<float*, bool*>> results;
    for (Triangle& triangle : m_triangles)
    {
        const SunSpot middle = MiddleOf(triangle);
        for (const std::uint32_t corner : triangle.corners)
        {
            Point3d& sum = around[corner].sum;
            sum = Point3d(sum.x + middle.place.x, sum.y + middle.place.y, sum.z + middle.place.z);
            ++around[corner].count;
        }
        if (!triangle.isCounted)
        {
            spots.push_back(middle);
            results.emplace_back(&triangle.hours, &triangle.isCounted);
        }
    }
    for (std::size_t i = 0; i < m_corners.size(); ++i)
    {
        Corner& corner = m_corners[i];
        if (!corner.isCounted && around[i].count > 0)
        {
            const double share = 1.0 / around[i].count;
            const Point3d& sum = around[i].sum;
            corner.counted = Mixed(corner.place, Point3d(sum.x * share, sum.y * share, sum.z * share), kInset);
            spots.push_back({corner.counted, corner.normal});
            results.emplace_back(&corner.hours, &corner.isCounted);
        }
    }
    const std::vector<float> hours = m_source.At(spots);
    for (std::size_t i = 0; i < hours.size(); ++i)
    {
        *results[i].first = hours[i];
        *results[i].second = true;
    }
}

/// The sides of what is uneven, and of each triangle with one of them its longest one as well, which
/// keeps triangles in shape.
SunHoursMesh::Sides SunHoursMesh::MarkSides() const
{
    Sides marked;
    for (const Triangle& triangle : m_triangles)
    {
        for (int side = 0; side < 3 && IsUneven(triangle); ++side)
        {
            marked.emplace(SideOf(triangle, side), 0);
        }
    }
    for (bool isMore = !marked.empty(); isMore;)
    {
        isMore = false;
        for (const Triangle& triangle : m_triangles)
        {
            bool isAny = false;
            for (int side = 0; side < 3; ++side)
            {
                isAny = isAny || marked.count(SideOf(triangle, side)) != 0;
            }
            isMore = (isAny && marked.emplace(SideOf(triangle, LongestOf(triangle)), 0).second) || isMore;
        }
    }
    return marked;
}

/// @return whether anything was halved.
bool SunHoursMesh::Refine(std::size_t most)
{
    Sides halves = MarkSides();
    // Each marked side adds two triangles at most.
    if (halves.empty() || m_triangles.size() + 2 * halves.size() > most)
    {
        return false;
    }
    for (auto& [side, middle] : halves)
    {
        const Corner& a = m_corners[side >> 32];
        Corner corner;
        corner.place = Mixed(a.place, m_corners[side & 0xFFFFFFFFu].place, 0.5);
        corner.normal = a.normal;
        middle = static_cast<std::uint32_t>(m_corners.size());
        m_corners.push_back(corner);
    }
    std::vector<Triangle> triangles;
    for (const Triangle& triangle : m_triangles)
    {
        Split(triangle, halves, triangles);
    }
    m_triangles = std::move(triangles);
    return true;
}

void SunHoursMesh::Split(const Triangle& triangle, const Sides& halves, std::vector<Triangle>& into) const
{
    const int longest = LongestOf(triangle);
    const auto cut = halves.find(SideOf(triangle, longest));
    if (cut == halves.end())
    {
        into.push_back(triangle);
        return;
    }
    const auto add = [&](std::uint32_t a, std::uint32_t b, std::uint32_t c) {
        Triangle part{};
        part.corners[0] = a;
        part.corners[1] = b;
        part.corners[2] = c;
        into.push_back(part);
    };
    const std::uint32_t a = triangle.corners[longest];
    const std::uint32_t b = triangle.corners[(longest + 1) % 3];
    const std::uint32_t c = triangle.corners[(longest + 2) % 3];
    const std::uint32_t middle = cut->second;
    const auto half = [&](std::uint32_t first, std::uint32_t second) {
        const auto other = halves.find(KeyOf(first, second));
        if (other == halves.end())
        {
            add(middle, first, second);
            return;
        }
        add(middle, first, other->second);
        add(middle, other->second, second);
    };
    half(b, c);
    half(c, a);
}

bool SunHoursMesh::IsCrossed(std::uint32_t first, std::uint32_t second) const
{
    return m_crossings.count(KeyOf(first, second)) != 0;
}

void SunHoursMesh::FindCrossings()
{
    for (const Triangle& triangle : m_triangles)
    {
        for (int side = 0; side < 3; ++side)
        {
            const std::uint64_t key = SideOf(triangle, side);
            const Corner& a = m_corners[key >> 32];
            const Corner& b = m_corners[key & 0xFFFFFFFFu];
            if (std::abs(a.hours - b.hours) > m_step)
            {
                m_crossings[key] = {0.0, 1.0, a.hours, b.hours};
            }
        }
    }
    for (int i = 0; i < kSearches; ++i)
    {
        std::vector<SunSpot> spots;
        for (const auto& [key, crossing] : m_crossings)
        {
            const Corner& a = m_corners[key >> 32];
            const Corner& b = m_corners[key & 0xFFFFFFFFu];
            spots.push_back({Mixed(a.counted, b.counted, 0.5 * (crossing.low + crossing.high)), a.normal});
        }
        const std::vector<float> hours = m_source.At(spots);
        auto found = hours.begin();
        for (auto& [key, crossing] : m_crossings)
        {
            const double middle = 0.5 * (crossing.low + crossing.high);
            const bool isFirst = std::abs(*found - crossing.first) < std::abs(*found - crossing.second);
            (isFirst ? crossing.low : crossing.high) = middle;
            (isFirst ? crossing.first : crossing.second) = *found;
            ++found;
        }
    }
}

SunHoursMesh::Vertex SunHoursMesh::VertexOf(std::uint32_t corner) const
{
    return {m_corners[corner].place, m_corners[corner].normal, m_corners[corner].hours};
}

/// Of a crossed side: the place of the rim, with the hours on either side of it.
void SunHoursMesh::VerticesOf(std::uint32_t first, std::uint32_t second, Vertex& atFirst, Vertex& atSecond) const
{
    const Crossing& crossing = m_crossings.at(KeyOf(first, second));
    const Corner& low = m_corners[std::min(first, second)];
    const Corner& high = m_corners[std::max(first, second)];
    const Point3d place = Mixed(low.place, high.place, 0.5 * (crossing.low + crossing.high));
    atFirst = {place, low.normal, first < second ? crossing.first : crossing.second};
    atSecond = {place, low.normal, first < second ? crossing.second : crossing.first};
}

std::vector<SunMapCell> SunHoursMesh::Cells(double off, double longest) const
{
    std::vector<SunMapCell> cells;
    for (const Triangle& triangle : m_triangles)
    {
        const auto add = [&](std::initializer_list<Vertex> vertices) {
            SunMapCell cell;
            cell.count = 0;
            for (const Vertex& vertex : vertices)
            {
                cell.corners[cell.count] = Vector(static_cast<float>(vertex.place.x + off * vertex.normal.x),
                                                  static_cast<float>(vertex.place.y + off * vertex.normal.y),
                                                  static_cast<float>(vertex.place.z + off * vertex.normal.z));
                cell.values[cell.count] = static_cast<float>(vertex.hours / longest);
                ++cell.count;
            }
            cells.push_back(cell);
        };
        const auto& corners = triangle.corners;
        const auto isCrossed = [&](int side) { return IsCrossed(corners[side], corners[(side + 1) % 3]); };
        const int crossed = int(isCrossed(0)) + int(isCrossed(1)) + int(isCrossed(2));
        const SunSpot spot = MiddleOf(triangle);
        const Vertex middle{spot.place, spot.normal, triangle.hours};
        // Turned so that a crossed side comes first, and with two the one that is not comes last but one.
        int turn = 0;
        while (crossed == 1 ? !isCrossed(turn) : crossed == 2 && isCrossed((turn + 1) % 3))
        {
            ++turn;
        }
        const std::uint32_t a = corners[turn];
        const std::uint32_t b = corners[(turn + 1) % 3];
        const std::uint32_t c = corners[(turn + 2) % 3];
        const Vertex atA = VertexOf(a);
        const Vertex atB = VertexOf(b);
        const Vertex atC = VertexOf(c);
        Vertex abA;
        Vertex abB;
        Vertex bcB;
        Vertex bcC;
        Vertex caC;
        Vertex caA;
        if (crossed > 0)
        {
            VerticesOf(a, b, abA, abB);
        }
        if (crossed > 1)
        {
            VerticesOf(c, a, caC, caA);
        }
        if (crossed > 2)
        {
            VerticesOf(b, c, bcB, bcC);
        }
        if (crossed == 3)
        {
            add({atA, abA, caA});
            add({atB, bcB, abB});
            add({atC, caC, bcC});
            for (Vertex* const vertex : {&abA, &bcB, &caC})
            {
                vertex->hours = middle.hours;
            }
            add({abA, bcB, caC});
        }
        else if (crossed == 2)
        {
            add({atA, abA, caA});
            add({abB, atB, atC, caC});
        }
        else if (crossed == 1)
        {
            add({atA, abA, atC});
            add({abB, atB, atC});
        }
        else if (std::abs(middle.hours - (atA.hours + atB.hours + atC.hours) / 3.0f) > kFlatness * m_step)
        {
            add({atA, atB, middle});
            add({atB, atC, middle});
            add({atC, atA, middle});
        }
        else
        {
            add({atA, atB, atC});
        }
    }
    return cells;
}

} // namespace OV::Host::Detail
