#include "orvane_host/present/detail/SunView.h"

#include <glm/geometric.hpp>
#include <glm/mat3x3.hpp>
#include <glm/matrix.hpp>
#include <glm/vec4.hpp>

#include <algorithm>
#include <cmath>
#include <limits>

namespace OV::Host::Detail
{

namespace
{

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Texels around a part that filters may read.
constexpr int kMargin = 4;

/// Texels for each pixel of the picture: with fewer, rims are seen in steps.
constexpr double kFineness = 2.5;

/// How much farther the end of a slice of the view lies than its start, at most.
constexpr double kSliceRatio = 2.3;

/// Sizes of texels go up by this.
constexpr double kLadder = 1.1892071150027210; // the fourth root of 2

using Polygon = std::vector<glm::dvec4>;

/// What is left of a polygon on the side of a plane where `distance` is 0 or more.
template <class Distance>
Polygon Clipped(const Polygon& polygon, const Distance& distance)
{
    Polygon kept;
    for (std::size_t i = 0; i < polygon.size(); ++i)
    {
        const glm::dvec4& a = polygon[i];
        const glm::dvec4& b = polygon[(i + 1) % polygon.size()];
        const double da = distance(a);
        const double db = distance(b);
        if (da >= 0.0)
        {
            kept.push_back(a);
        }
        if ((da >= 0.0) != (db >= 0.0))
        {
            kept.push_back(a + (b - a) * (da / (da - db)));
        }
    }
    return kept;
}

/// The faces of a box by its corners, whose numbers have a bit for each axis.
constexpr int kFaces[6][4] = {{0, 1, 3, 2}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 3, 7, 6}, {0, 2, 6, 4}, {1, 3, 7, 5}};

std::array<glm::dvec4, 8> Corners(const glm::dvec3& low, const glm::dvec3& high)
{
    std::array<glm::dvec4, 8> corners;
    for (int i = 0; i < 8; ++i)
    {
        corners[static_cast<std::size_t>(i)] = glm::dvec4((i & 1) != 0 ? high.x : low.x, (i & 2) != 0 ? high.y : low.y,
                                                          (i & 4) != 0 ? high.z : low.z, 1.0);
    }
    return corners;
}

glm::dvec4 RowOf(const glm::dmat4& matrix, int row)
{
    return {matrix[0][row], matrix[1][row], matrix[2][row], matrix[3][row]};
}

/// The corners of what a view and a box have in common.
class SeenPart
{
public:
    SeenPart(const glm::dmat4& worldToClip, const glm::dvec3& low, const glm::dvec3& high)
    {
        const glm::dvec4 w = RowOf(worldToClip, 3);
        for (int axis = 0; axis < 3; ++axis)
        {
            const glm::dvec4 row = RowOf(worldToClip, axis);
            m_planes[static_cast<std::size_t>(2 * axis)] = w + row;
            m_planes[static_cast<std::size_t>(2 * axis + 1)] = w - row;
        }
        AddFaces(Corners(low, high), [&](Polygon polygon) {
            for (const glm::dvec4& plane : m_planes)
            {
                polygon = Clipped(polygon, [&](const glm::dvec4& p) { return glm::dot(plane, p); });
            }
            return polygon;
        });
        const glm::dmat4 toWorld = glm::inverse(worldToClip);
        std::array<glm::dvec4, 8> corners = Corners(glm::dvec3(-1.0), glm::dvec3(1.0));
        for (glm::dvec4& corner : corners)
        {
            corner = toWorld * corner;
            corner /= corner.w;
        }
        AddFaces(corners, [&](Polygon polygon) {
            for (int axis = 0; axis < 3; ++axis)
            {
                polygon = Clipped(polygon, [&](const glm::dvec4& p) { return p[axis] - low[axis]; });
                polygon = Clipped(polygon, [&](const glm::dvec4& p) { return high[axis] - p[axis]; });
            }
            return polygon;
        });
    }

    const std::vector<Polygon>& GetFaces() const { return m_faces; }

private:
    template <class Clip>
    void AddFaces(const std::array<glm::dvec4, 8>& corners, const Clip& clip)
    {
        for (const auto& face : kFaces)
        {
            Polygon polygon;
            for (const int corner : face)
            {
                polygon.push_back(corners[static_cast<std::size_t>(corner)]);
            }
            polygon = clip(std::move(polygon));
            if (!polygon.empty())
            {
                m_faces.push_back(std::move(polygon));
            }
        }
    }

    std::array<glm::dvec4, 6> m_planes;
    std::vector<Polygon> m_faces;
};

/// Where the slices of a view end that reaches from one distance to another.
std::vector<double> EndsOf(double nearest, double farthest, bool perspective)
{
    const double ratio = perspective && nearest > 0.0 ? farthest / nearest : 1.0;
    const int wanted = static_cast<int>(std::ceil(std::log(std::max(ratio, 1.0)) / std::log(kSliceRatio) - 1e-9));
    const int count = std::clamp(wanted, 1, SunView::MostTiles);
    std::vector<double> ends;
    for (int i = 1; i < count; ++i)
    {
        ends.push_back(nearest * std::pow(ratio, static_cast<double>(i) / count));
    }
    ends.push_back(kInfinity);
    return ends;
}

/// The smallest step of the ladder of sizes that is no smaller.
double OnLadder(double size)
{
    return std::pow(kLadder, std::ceil(std::log(size) / std::log(kLadder) - 1e-9));
}

int PowerOfTwo(double least)
{
    int power = 1;
    while (power < least && power < (1 << 20))
    {
        power *= 2;
    }
    return power;
}

} // namespace

SunView::SunView(const Request& request, const std::vector<CastBox>& casters)
{
    // Upright where the sun isn't overhead: the shadows of a low sun then fall along one axis, in
    // which the map is narrow and its texels fine.
    const glm::dvec3& sun = request.towardSun;
    const glm::dvec3 up = std::abs(sun.y) < 0.999 ? glm::dvec3(0.0, 1.0, 0.0) : glm::dvec3(0.0, 0.0, 1.0);
    m_axes[0] = glm::normalize(glm::cross(up, sun));
    m_axes[1] = glm::cross(sun, m_axes[0]);
    m_axes[2] = sun;
    if (casters.empty())
    {
        return;
    }
    Bound(casters, request);
    const SeenPart seen(request.worldToClip, request.low, request.high);
    const glm::dvec4 distance = RowOf(request.worldToClip, 3);
    double nearest = kInfinity;
    double farthest = -kInfinity;
    for (const Polygon& face : seen.GetFaces())
    {
        for (const glm::dvec4& corner : face)
        {
            nearest = std::min(nearest, glm::dot(distance, corner));
            farthest = std::max(farthest, glm::dot(distance, corner));
        }
    }
    if (!(nearest <= farthest))
    {
        return;
    }
    const std::vector<double> ends = EndsOf(nearest, farthest, request.perspective);
    LayOut(request, ends);
    double start = -kInfinity;
    for (std::size_t i = 0; i < ends.size(); ++i)
    {
        glm::dvec2 from(kInfinity);
        glm::dvec2 to(-kInfinity);
        for (const Polygon& face : seen.GetFaces())
        {
            Polygon slice = face;
            if (ends.size() > 1)
            {
                slice = Clipped(slice, [&](const glm::dvec4& p) { return std::min(glm::dot(distance, p) - start, 1e300); });
                slice = Clipped(slice, [&](const glm::dvec4& p) { return std::min(ends[i] - glm::dot(distance, p), 1e300); });
            }
            for (const glm::dvec4& corner : slice)
            {
                const glm::dvec2 at(glm::dot(m_axes[0], glm::dvec3(corner)), glm::dot(m_axes[1], glm::dvec3(corner)));
                from = glm::min(from, at);
                to = glm::max(to, at);
            }
        }
        start = ends[i];
        from = glm::max(from, m_from);
        to = glm::min(to, m_to);
        Tile& tile = m_tiles[i];
        const bool isEmpty = !(from.x <= to.x) || !(from.y <= to.y);
        tile = MakeTile(tile.low, tile.high.x - tile.low.x, isEmpty ? m_from : from, isEmpty ? m_from : to);
    }
}

void SunView::Bound(const std::vector<CastBox>& casters, const Request& request)
{
    m_from = glm::dvec2(kInfinity);
    m_to = glm::dvec2(-kInfinity);
    m_nearest = kInfinity;
    m_farthest = -kInfinity;
    for (const CastBox& box : casters)
    {
        glm::dvec3 middle;
        glm::dvec3 reach(0.0);
        for (int axis = 0; axis < 3; ++axis)
        {
            const glm::dvec3& direction = m_axes[static_cast<std::size_t>(axis)];
            middle[axis] = glm::dot(direction, box.middle);
            for (const glm::dvec3& half : box.halves)
            {
                reach[axis] += std::abs(glm::dot(direction, half));
            }
        }
        m_from = glm::min(m_from, glm::dvec2(middle - reach));
        m_to = glm::max(m_to, glm::dvec2(middle + reach));
        m_nearest = std::min(m_nearest, -(middle.z + reach.z));
        m_farthest = std::max(m_farthest, -(middle.z - reach.z));
    }
    for (const glm::dvec4& corner : Corners(request.low, request.high))
    {
        m_farthest = std::max(m_farthest, -glm::dot(m_axes[2], glm::dvec3(corner)));
    }
    // A little room, so that nothing lies on an end.
    const double room = 1e-3 * std::max(m_farthest - m_nearest, 1e-30);
    m_nearest -= room;
    m_farthest += room;
}

void SunView::LayOut(const Request& request, const std::vector<double>& ends)
{
    // One part has the map alone, two share it, more have a quarter of it each, which is enough: of
    // what lies at one distance only some is seen.
    const int count = static_cast<int>(ends.size());
    const int most = std::max(request.mostTexels, 64);
    int side = std::min(std::max(PowerOfTwo(kFineness * request.pixels), 256), most);
    glm::ivec2 grid(1, 1);
    if (count > 2)
    {
        side = std::max(side / 2, 32);
        grid = count > 4 ? glm::ivec2(4, 2) : glm::ivec2(2, 2);
    }
    else if (count == 2)
    {
        grid = glm::ivec2(2, 1);
    }
    while (side * grid.x > 2 * most)
    {
        side /= 2;
    }
    m_size = grid * side;
    for (int i = 0; i < count; ++i)
    {
        Tile tile;
        tile.low = glm::ivec2(i % grid.x, i / grid.x) * side;
        tile.high = tile.low + glm::ivec2(side);
        m_tiles.push_back(tile);
    }
}

SunView::Tile SunView::MakeTile(const glm::ivec2& place, int texels, glm::dvec2 from, glm::dvec2 to) const
{
    const double range = GetRange();
    const double smallest = 1e-6 * range;
    Tile tile;
    tile.low = place;
    tile.high = place + glm::ivec2(texels);
    glm::dmat4 toClip(1.0);
    for (int axis = 0; axis < 2; ++axis)
    {
        const double size = OnLadder(std::max(to[axis] - from[axis], smallest) / (texels - 2 * kMargin - 1));
        const double first = (std::floor(from[axis] / size) - kMargin) * size;
        tile.step[axis] = size / range;
        tile.from[axis] = first;
        tile.to[axis] = first + texels * size;
        const glm::dvec3& direction = m_axes[static_cast<std::size_t>(axis)];
        for (int column = 0; column < 3; ++column)
        {
            tile.toMap[column][axis] = direction[column] / size;
            toClip[column][axis] = 2.0 * direction[column] / (texels * size);
        }
        tile.toMap[3][axis] = place[axis] - first / size;
        toClip[3][axis] = -2.0 * first / (texels * size) - 1.0;
    }
    for (int column = 0; column < 3; ++column)
    {
        tile.toMap[column][2] = -m_axes[2][column] / range;
        toClip[column][2] = -2.0 * m_axes[2][column] / range;
    }
    tile.toMap[3][2] = -m_nearest / range;
    toClip[3][2] = -2.0 * m_nearest / range - 1.0;
    tile.toClip = toClip;
    return tile;
}

bool SunView::Casts(const CastBox& box, const Tile& tile) const
{
    for (int axis = 0; axis < 2; ++axis)
    {
        const glm::dvec3& direction = m_axes[static_cast<std::size_t>(axis)];
        const double middle = glm::dot(direction, box.middle);
        double reach = 0.0;
        for (const glm::dvec3& half : box.halves)
        {
            reach += std::abs(glm::dot(direction, half));
        }
        if (middle + reach < tile.from[axis] || middle - reach > tile.to[axis])
        {
            return false;
        }
    }
    return true;
}

} // namespace OV::Host::Detail
