#include "orvane_host/present/detail/DrawnParts.h"

#include <glm/common.hpp>

#include <algorithm>

namespace OV::Host::Detail
{

namespace
{

TexelRect TexelsOf(const SunView::Tile& tile)
{
    return {tile.low, tile.high};
}

/// What of a rectangle is outside of another that lies in it: rows below and above, and what is left beside it.
std::vector<TexelRect> Outside(const TexelRect& rect, const TexelRect& inner)
{
    if (IsEmpty(inner))
    {
        return {rect};
    }
    std::vector<TexelRect> outside;
    for (const TexelRect& side : {TexelRect{rect.low, {rect.high.x, inner.low.y}},
                                  TexelRect{{rect.low.x, inner.high.y}, rect.high},
                                  TexelRect{{rect.low.x, inner.low.y}, {inner.low.x, inner.high.y}},
                                  TexelRect{{inner.high.x, inner.low.y}, {rect.high.x, inner.high.y}}})
    {
        if (!IsEmpty(side))
        {
            outside.push_back(side);
        }
    }
    return outside;
}

const SunView::Tile* InCellOf(const SunView::Tile& tile, const std::vector<SunView::Tile>& tiles)
{
    const auto same = std::find_if(tiles.begin(), tiles.end(), [&](const SunView::Tile& other) {
        return other.cellLow == tile.cellLow && other.cellHigh == tile.cellHigh;
    });
    return same == tiles.end() ? nullptr : &*same;
}

} // namespace

void DrawnParts::Become(const std::vector<SunView::Tile>& tiles)
{
    m_changes.clear();
    m_gone.clear();
    for (const SunView::Tile& tile : tiles)
    {
        const SunView::Tile* const before = InCellOf(tile, m_tiles);
        m_changes.push_back(before ? ChangeOf(*before, tile) : Change{true, {}, {TexelsOf(tile)}});
    }
    for (const SunView::Tile& before : m_tiles)
    {
        if (!InCellOf(before, tiles))
        {
            m_gone.push_back(TexelsOf(before));
        }
    }
    m_tiles = tiles;
}

bool DrawnParts::HaveChanged() const
{
    return !m_gone.empty()
        || std::any_of(m_changes.begin(), m_changes.end(), [](const Change& change) { return !change.IsNone(); });
}

void DrawnParts::Forget()
{
    *this = DrawnParts();
}

DrawnParts::Change DrawnParts::ChangeOf(const SunView::Tile& before, const SunView::Tile& now)
{
    const TexelRect texels = TexelsOf(now);
    if (before.toClip != now.toClip)
    {
        return {true, {TexelsOf(before)}, {texels}};
    }
    const TexelRect kept{glm::max(before.low, now.low), glm::min(before.high, now.high)};
    return {false, Outside(TexelsOf(before), kept), Outside(texels, kept)};
}

} // namespace OV::Host::Detail
