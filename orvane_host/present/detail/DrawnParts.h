#pragma once

#include "orvane_host/present/detail/SunView.h"
#include "orvane_host/present/detail/TexelRect.h"

#include <cstddef>
#include <vector>

namespace OV::Host::Detail
{

/// Which texels of the parts of the sun's map are drawn, by which it is known what is left to draw where the eye has
/// moved.
class DrawnParts
{
public:
    /// What becomes of a part.
    struct Change
    {
        bool isOther = false;         ///< nothing in its cell can stay
        std::vector<TexelRect> left;  ///< that are no longer of it; all that were drawn where it is another
        std::vector<TexelRect> added; ///< that are to be drawn once those are clear; all of them where it is another

        bool IsNone() const { return added.empty() && left.empty(); }
    };

    /// Takes others in their place, and finds out what that changes.
    void Become(const std::vector<SunView::Tile>& tiles);

    /// Whether anything has changed when they last became what they are.
    bool HaveChanged() const;

    /// Of the parts, in their order.
    const std::vector<Change>& GetChanges() const { return m_changes; }

    /// Texels in cells that no part has any more.
    const std::vector<TexelRect>& GetGone() const { return m_gone; }

    /// Nothing is drawn any more.
    void Forget();

private:
    static Change ChangeOf(const SunView::Tile& before, const SunView::Tile& now);

    std::vector<SunView::Tile> m_tiles;
    std::vector<Change> m_changes;
    std::vector<TexelRect> m_gone;
};

} // namespace OV::Host::Detail
