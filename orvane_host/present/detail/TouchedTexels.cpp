#include "orvane_host/present/detail/TouchedTexels.h"

#include <glm/common.hpp>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace OV::Host::Detail
{

namespace
{

/// Texels about a footprint that are drawn as well, and about those from where anything may be drawn into them: corners
/// come to lie next to where they are, by the fractions of a texel that GL tells apart.
constexpr double kBeside = 1.0;

/// Each rectangle draws anew what reaches into several.
constexpr std::size_t kMostRects = 8;

/// Of a part, as many texels as are sooner drawn for nothing than in one more rectangle.
constexpr double kLeast = 1.0 / 64.0;

/// Of a part, from which on all of it is drawn.
constexpr double kMost = 0.5;

double AreaOf(const TexelRect& rect)
{
    const glm::dvec2 size(rect.high - rect.low);
    return size.x * size.y;
}

TexelRect Around(const TexelRect& a, const TexelRect& b)
{
    return {glm::min(a.low, b.low), glm::max(a.high, b.high)};
}

glm::dvec2 TexelOf(const SunView::Tile& tile)
{
    return (tile.area.to - tile.area.from) / glm::dvec2(tile.high - tile.low);
}

TexelRect TexelsOf(const SunView::Tile& tile, const SunView::Footprint& footprint)
{
    const glm::dvec2 texel = TexelOf(tile);
    const glm::dvec2 size(tile.high - tile.low);
    // In double, in which what is far off has room.
    const glm::dvec2 first = glm::floor((footprint.from - tile.area.from) / texel - kBeside);
    const glm::dvec2 end = glm::ceil((footprint.to - tile.area.from) / texel + kBeside);
    return {tile.low + glm::ivec2(glm::clamp(first, glm::dvec2(0.0), size)),
            tile.low + glm::ivec2(glm::clamp(end, glm::dvec2(0.0), size))};
}

/// Where it costs least: with another, or as one more.
void Add(std::vector<TexelRect>& rects, const TexelRect& added, double least)
{
    TexelRect* nearest = nullptr;
    double shortest = std::numeric_limits<double>::infinity();
    for (TexelRect& rect : rects)
    {
        const double more = AreaOf(Around(rect, added)) - AreaOf(rect) - AreaOf(added);
        if (more < shortest)
        {
            shortest = more;
            nearest = &rect;
        }
    }
    if (nearest && (shortest <= least || rects.size() == kMostRects))
    {
        *nearest = Around(*nearest, added);
        return;
    }
    rects.push_back(added);
}

} // namespace

std::vector<TexelRect> FindTouchedTexels(const SunView::Tile& tile, const std::vector<SunView::Footprint>& changed)
{
    const TexelRect whole{tile.low, tile.high};
    std::vector<TexelRect> rects;
    for (const SunView::Footprint& footprint : changed)
    {
        const TexelRect touched = TexelsOf(tile, footprint);
        if (!IsEmpty(touched))
        {
            Add(rects, touched, kLeast * AreaOf(whole));
        }
    }
    double sum = 0.0;
    for (const TexelRect& rect : rects)
    {
        sum += AreaOf(rect);
    }
    return sum > kMost * AreaOf(whole) ? std::vector<TexelRect>{whole} : rects;
}

SunView::Footprint FootprintAbout(const SunView::Tile& tile, const TexelRect& texels)
{
    const glm::dvec2 texel = TexelOf(tile);
    return {tile.area.from + (glm::dvec2(texels.low - tile.low) - 2.0 * kBeside) * texel,
            tile.area.from + (glm::dvec2(texels.high - tile.low) + 2.0 * kBeside) * texel};
}

} // namespace OV::Host::Detail
