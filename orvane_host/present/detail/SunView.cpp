#include "orvane_host/present/detail/SunView.h"

#include "orvane_host/present/detail/SeenPart.h"

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

/// Parts of what is seen begin and end on every so many texels, so that few of them change at once while the eye moves.
/// Of smaller maps it would be too much.
constexpr int kGrid = 128;
constexpr int kLeastWithGrid = 1024;

/// Of parts by distance there are that many, or twice that.
constexpr int kFewParts = 4;

/// Parts by distance are no narrower: narrow ones would be others with every change of what is farthest.
constexpr double kLeastOctaves = 0.375;

/// Octaves by which what is nearest and farthest may be off.
constexpr double kBesideParts = 1e-6;

/// Of a cell, what a part that moves takes at most, for the rest to be room to move in. Smaller ones have more of it.
constexpr double kMostOfCell = 0.875;
constexpr double kLittleOfCell = 0.75;

/// Texels beside the parts of a map of several. Rows of it that are a power of two long come to lie in the same few
/// places of a processor's cache, and a frame of the inside of a house takes 1.1 times the time.
constexpr int kBeside = 96;

/// Light draws texels out on the ground where it comes in flat, and on walls where it comes in steeply. For rims not
/// to get teeth they are made finer, up to so much. Where one part holds all of the scene it is up to more if there is
/// room for it, or else less: that part stays as it is while the eye moves.
constexpr double kFlattest = 0.4;
constexpr double kMostFlattestOfWhole = 0.25;
constexpr double kLeastFlattestOfWhole = 0.6;

/// As much as they are made finer for planes that face an eye without perspective, as of plans and elevations.
constexpr double kMostDrawnOut = 4.0;

/// Texels of a side of the map at least, and of one of several parts, as many times the pixels of the picture at most.
constexpr int kLeastTexels = 64;
constexpr double kTexelsOfPixel = 4.0;

/// Axes that light runs this much along, of 1, tell how far off casters may be; one of three always does.
constexpr double kSteepest = 1e-3;

/// Sizes of texels go up by this, and what parts have of the distance, in octaves.
constexpr double kLadder = 1.1892071150027210; // the fourth root of 2

/// The step of a ladder that is next to a size, rounded up or down.
double OnLadder(double size, double (*round)(double))
{
    return std::pow(kLadder, round(std::log(size) / std::log(kLadder)));
}

int GridOf(int mostTexels)
{
    return mostTexels < kLeastWithGrid ? 1 : kGrid;
}

/// Numbers of the parts that distances lie in, each as wide as the others, in octaves.
struct Range
{
    double width = 0.0;
    int first = 0;
    int last = 0;
};

/// The narrowest with no more than so many parts.
Range RangeOf(double nearest, double farthest, int count)
{
    const double low = std::log2(nearest) - kBesideParts;
    const double high = std::log2(farthest) + kBesideParts;
    Range range;
    range.width = std::max(OnLadder((high - low) / count, std::ceil), kLeastOctaves);
    for (;; range.width *= kLadder)
    {
        range.first = static_cast<int>(std::floor(low / range.width));
        range.last = static_cast<int>(std::floor(high / range.width));
        if (range.last - range.first < count)
        {
            return range;
        }
    }
}

double LongerOf(const glm::dvec2& edges)
{
    return std::max(edges.x, edges.y);
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

/// What the eye sees.
struct SunView::Sight
{
    Sight(const Request& request, const glm::dvec2& wantedAtOne) :
        part(request.worldToClip, request.low, request.high),
        distance(request.perspective ? RowOf(request.worldToClip, 3) : glm::dvec4(0.0, 0.0, 0.0, 1.0)),
        wanted(wantedAtOne), most(std::max(request.mostTexels, kLeastTexels)),
        // Without perspective all is equally far, and parts by distance would be the same again and again.
        mostParts(request.perspective ? request.mostParts : 1), mostOfCell(request.perspective ? kMostOfCell : 1.0)
    {
        for (const Polygon& face : part.GetFaces())
        {
            for (const glm::dvec4& corner : face)
            {
                nearest = std::min(nearest, glm::dot(distance, corner));
                farthest = std::max(farthest, glm::dot(distance, corner));
            }
        }
    }

    bool IsAny() const { return nearest <= farthest && nearest > 0.0; }

    SeenPart part;
    glm::dvec4 distance; ///< of a place from the eye
    double nearest = kInfinity;
    double farthest = -kInfinity;
    glm::dvec2 wanted;   ///< edges of a texel at the distance 1
    int most;            ///< texels of a side of a part that is alone
    int mostParts;
    double mostOfCell;
};

SunView::SunView(const Request& request, const std::vector<CastBox>& casters)
{
    // Upright where the sun isn't overhead: the shadows of a low sun then fall along one axis, in
    // which the map is narrow and its texels fine.
    const glm::dvec3& sun = request.towardSun;
    const double height = std::abs(glm::dot(sun, request.up));
    const glm::dvec3 level = std::abs(request.up.z) < 0.9 ? glm::dvec3(0.0, 0.0, 1.0) : glm::dvec3(0.0, 1.0, 0.0);
    const glm::dvec3 up = height < 0.999 ? request.up : level;
    m_axes[0] = glm::normalize(glm::cross(up, sun));
    m_axes[1] = glm::cross(sun, m_axes[0]);
    m_axes[2] = sun;
    if (casters.empty())
    {
        return;
    }
    Bound(casters, request);
    FindReach(casters);
    // Pixels at the distance 1.
    const glm::dvec2 pixel(2.0 / (request.pixels.x * glm::length(glm::dvec3(RowOf(request.worldToClip, 0)))),
                           2.0 / (request.pixels.y * glm::length(glm::dvec3(RowOf(request.worldToClip, 1)))));
    const glm::dvec2 finer =
        request.perspective ? glm::dvec2(1.0) : FinerOn(glm::normalize(glm::dvec3(RowOf(request.worldToClip, 2))));
    const double flatter = std::min(height, std::sqrt(std::max(1.0 - height * height, 0.0)));
    const auto wantedWith = [&](double texel, double flattest) {
        const glm::dvec2 onGroundAndWalls(1.0, std::clamp(flatter, flattest, 1.0));
        return texel * std::min(pixel.x, pixel.y) * glm::min(finer, onGroundAndWalls);
    };
    const Sight sight(request, wantedWith(request.texel, kFlattest));
    if (!sight.IsAny())
    {
        return;
    }
    const double texelOfWhole = std::min(request.texelOfWhole, request.texel);
    const bool isHeld = HoldAll(sight, wantedWith(texelOfWhole, kMostFlattestOfWhole))
        || HoldAll(sight, wantedWith(request.texel, kMostFlattestOfWhole)) || HoldAll(sight, sight.wanted)
        || HoldAll(sight, wantedWith(request.texel, kLeastFlattestOfWhole)) || HoldWhatIsSeen(sight);
    if (!isHeld)
    {
        const int enough = PowerOfTwo(kTexelsOfPixel * std::max(request.pixels.x, request.pixels.y));
        HoldByDistance(sight, std::max(std::min(sight.most / 2, enough), kLeastTexels / 2));
    }
}

bool SunView::HoldAll(const Sight& sight, const glm::dvec2& wanted)
{
    Area all;
    all.from = m_from;
    all.to = m_to;
    if (!Divide(all, wanted * sight.nearest, sight.most))
    {
        return false;
    }
    m_finestTexel = LongerOf(all.texel);
    Place({all}, {PowerOfTwo(all.size.x), PowerOfTwo(all.size.y)});
    return true;
}

bool SunView::HoldWhatIsSeen(const Sight& sight)
{
    Area area = AreaOf(sight, -kInfinity, kInfinity);
    if (IsEmpty(area))
    {
        return true;
    }
    const int most = static_cast<int>(sight.mostOfCell * sight.most);
    if (!Divide(area, sight.wanted * sight.nearest, most, GridOf(most)) && sight.mostParts >= kFewParts)
    {
        return false;
    }
    m_finestTexel = LongerOf(area.texel);
    const glm::ivec2 cell(PowerOfTwo(area.size.x / sight.mostOfCell), PowerOfTwo(area.size.y / sight.mostOfCell));
    Place({area}, glm::min(cell, glm::ivec2(PowerOfTwo(sight.most))));
    return true;
}

void SunView::HoldByDistance(const Sight& sight, int cell)
{
    const int most = static_cast<int>(sight.mostOfCell * cell);
    std::vector<Area> areas;
    bool isFine = false;
    for (int count = kFewParts; count <= sight.mostParts && !isFine; count *= 2)
    {
        // Parts begin at distances that are the same from wherever the eye looks, and have their cells by these.
        const Range range = RangeOf(sight.nearest, sight.farthest, count);
        int first = range.first;
        // Also where nothing is seen as near: the map would else change its numbers whenever something comes so near.
        m_finestTexel = OnLadder(LongerOf(sight.wanted) * std::exp2(first * range.width), std::floor);
        isFine = true;
        areas.clear();
        for (int i = range.first; i <= range.last; ++i)
        {
            const double start = std::exp2(i * range.width);
            Area area = AreaOf(sight, i == range.first ? -kInfinity : start,
                               i == range.last ? kInfinity : std::exp2((i + 1) * range.width));
            if (IsEmpty(area) && areas.empty())
            {
                ++first;
                continue;
            }
            // The box that is seen and that of what casts are convex, so that no part between others is empty; one
            // that rounding makes so keeps its number, and takes next to no room.
            isFine = Divide(area, sight.wanted * start, most, GridOf(most)) && isFine;
            areas.push_back(area);
        }
        while (!areas.empty() && IsEmpty(areas.back()))
        {
            areas.pop_back();
        }
        m_cells = count;
        m_slices = {1.0 / range.width, static_cast<double>(-first), (first % count + count) % count};
    }
    Place(areas, glm::ivec2(PowerOfTwo(cell)));
}

glm::dvec2 SunView::FinerOn(const glm::dvec3& normal) const
{
    // An edge, moved along the light into the plane, gets longer by its way there.
    const double toward = std::max(std::abs(glm::dot(m_axes[2], normal)), 1e-3);
    const auto share = [&](const glm::dvec3& axis) {
        return 1.0 / std::min(std::hypot(1.0, glm::dot(axis, normal) / toward), kMostDrawnOut);
    };
    return {share(m_axes[0]), share(m_axes[1])};
}

SunView::Area SunView::AreaOf(const Sight& sight, double start, double end) const
{
    Area area;
    area.from = glm::dvec2(kInfinity);
    area.to = glm::dvec2(-kInfinity);
    for (const Polygon& face : sight.part.GetFaces())
    {
        Polygon slice = face;
        if (start > -kInfinity)
        {
            slice = Clipped(slice, [&](const glm::dvec4& p) { return glm::dot(sight.distance, p) - start; });
        }
        if (end < kInfinity)
        {
            slice = Clipped(slice, [&](const glm::dvec4& p) { return end - glm::dot(sight.distance, p); });
        }
        for (const glm::dvec4& corner : slice)
        {
            const glm::dvec2 at(glm::dot(m_axes[0], glm::dvec3(corner)), glm::dot(m_axes[1], glm::dvec3(corner)));
            area.from = glm::min(area.from, at);
            area.to = glm::max(area.to, at);
        }
    }
    area.from = glm::max(area.from, m_from);
    area.to = glm::min(area.to, m_to);
    const bool isEmpty = !(area.from.x < area.to.x) || !(area.from.y < area.to.y);
    return isEmpty ? Area{} : area;
}

bool SunView::Divide(Area& area, const glm::dvec2& wanted, int most, int grid)
{
    bool isFine = true;
    for (int axis = 0; axis < 2; ++axis)
    {
        const double extent = std::max(area.to[axis] - area.from[axis], 1e-300);
        const double least = extent / (most - 2 * kMargin - 2 * grid);
        double texel = OnLadder(wanted[axis], std::floor);
        if (texel < least)
        {
            texel = OnLadder(least, std::ceil);
            isFine = isFine && texel <= wanted[axis];
        }
        area.texel[axis] = texel;
        const double first = std::floor(area.from[axis] / texel) - kMargin;
        const int size = std::min(static_cast<int>(extent / texel) + 2 * kMargin + 2, most);
        const double end = std::ceil((first + size) / grid) * grid;
        area.first[axis] = std::floor(first / grid) * grid;
        area.size[axis] = std::min(static_cast<int>(end - area.first[axis]), most);
    }
    return isFine;
}

void SunView::Place(const std::vector<Area>& areas, const glm::ivec2& cell)
{
    // Cells of one size, as many as there may be, so that the map keeps its own while the eye moves.
    const int columns = m_cells > 2 ? 2 : 1;
    for (std::size_t i = 0; i < areas.size(); ++i)
    {
        const int number = (m_slices.firstCell + static_cast<int>(i)) % m_cells;
        m_tiles.push_back(MakeTile(cell * glm::ivec2(number % columns, number / columns), cell, areas[i]));
    }
    m_size = areas.empty() ? glm::ivec2(0) : cell * glm::ivec2(columns, m_cells / columns);
    m_size.x += HasParts() && !areas.empty() ? kBeside : 0;
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

void SunView::FindReach(const std::vector<CastBox>& casters)
{
    glm::dvec3 low(kInfinity);
    glm::dvec3 high(-kInfinity);
    for (const CastBox& box : casters)
    {
        const glm::dvec3 reach = glm::abs(box.halves[0]) + glm::abs(box.halves[1]) + glm::abs(box.halves[2]);
        low = glm::min(low, box.middle - reach);
        high = glm::max(high, box.middle + reach);
    }
    double shortest = kInfinity;
    for (int axis = 0; axis < 3; ++axis)
    {
        const double toward = m_axes[2][axis];
        const double way = (high[axis] - low[axis]) / std::abs(toward);
        if (std::abs(toward) > kSteepest && way < shortest)
        {
            shortest = way;
            const double perUnit = 1.0 / (toward * GetRange());
            m_reach = glm::dvec4(0.0);
            m_reach[axis] = -perUnit;
            m_reach.w = (toward > 0.0 ? high : low)[axis] * perUnit;
        }
    }
}

SunView::Tile SunView::MakeTile(const glm::ivec2& place, const glm::ivec2& cell, const Area& area) const
{
    const double range = GetRange();
    Tile tile;
    tile.cellLow = place;
    tile.cellHigh = place + cell;
    glm::dmat4 toClip(1.0);
    for (int axis = 0; axis < 2; ++axis)
    {
        const double size = area.texel[axis];
        const int texels = cell[axis];
        // With room the cell stays where it is while the part moves through it.
        const double filled = area.size[axis] / static_cast<double>(texels);
        const double most = filled <= kLittleOfCell ? kLittleOfCell : filled <= kMostOfCell ? kMostOfCell : 1.0;
        const double room = std::max(std::floor((1.0 - most) * texels), 1.0);
        const double firstOfCell = std::floor(area.first[axis] / room) * room;
        const double first = firstOfCell * size;
        tile.low[axis] = place[axis] + static_cast<int>(area.first[axis] - firstOfCell);
        tile.high[axis] = tile.low[axis] + area.size[axis];
        tile.step[axis] = size / range;
        tile.area.from[axis] = area.first[axis] * size;
        tile.area.to[axis] = (area.first[axis] + area.size[axis]) * size;
        const glm::dvec3& direction = m_axes[static_cast<std::size_t>(axis)];
        for (int column = 0; column < 3; ++column)
        {
            tile.toMap[column][axis] = direction[column] / size;
            toClip[column][axis] = 2.0 * direction[column] / (texels * size);
        }
        tile.toMap[3][axis] = place[axis] - firstOfCell;
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

SunView::Footprint SunView::FootprintOf(const CastBox& box) const
{
    Footprint footprint;
    for (int axis = 0; axis < 2; ++axis)
    {
        const glm::dvec3& direction = m_axes[static_cast<std::size_t>(axis)];
        const double middle = glm::dot(direction, box.middle);
        double reach = 0.0;
        for (const glm::dvec3& half : box.halves)
        {
            reach += std::abs(glm::dot(direction, half));
        }
        footprint.from[axis] = middle - reach;
        footprint.to[axis] = middle + reach;
    }
    return footprint;
}

} // namespace OV::Host::Detail
