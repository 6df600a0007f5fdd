#include "orvane_host/present/detail/DrawnParts.h"
#include "tests/orvane_host/present/SettingsDice.h"

#include <gtest/gtest.h>

#include <vector>

namespace OV::Test
{

namespace
{

using Host::Detail::DrawnParts;
using Host::Detail::TexelRect;
using Tile = Host::Detail::SunView::Tile;

constexpr int kCell = 64;

/// A part in the cell of a number, of a rectangle counted from the cell's corner.
Tile PartAt(int cell, const glm::ivec2& low, const glm::ivec2& high, double place = 0.0)
{
    Tile tile;
    tile.cellLow = {cell * kCell, 0};
    tile.cellHigh = {(cell + 1) * kCell, kCell};
    tile.low = tile.cellLow + low;
    tile.high = tile.cellLow + high;
    tile.toClip[3][0] = place;
    return tile;
}

/// What is in each texel of one cell: nothing, or what was drawn there of the place that the cell was of.
class Cell
{
public:
    Cell() : m_texels(kCell * kCell) {}

    void Follow(const DrawnParts& parts, double place)
    {
        const DrawnParts::Change& change = parts.GetChanges().front();
        for (const TexelRect& rect : change.left)
        {
            m_cleared += Fill(rect, 0.0);
        }
        for (const TexelRect& rect : change.added)
        {
            m_drawn += Fill(rect, place);
        }
    }

    void ExpectHolds(const Tile& tile, double place) const
    {
        for (int y = 0; y < kCell; ++y)
        {
            for (int x = 0; x < kCell; ++x)
            {
                const bool isOf = x >= tile.low.x && x < tile.high.x && y >= tile.low.y && y < tile.high.y;
                ASSERT_EQ(m_texels[static_cast<std::size_t>(y * kCell + x)], isOf ? place : 0.0) << x << ", " << y;
            }
        }
    }

    int GetDrawn() const { return m_drawn; }
    int GetCleared() const { return m_cleared; }

private:
    /// @return of how many texels. What is drawn must come where nothing is, and what is cleared where something is.
    int Fill(const TexelRect& rect, double value)
    {
        for (int y = rect.low.y; y < rect.high.y; ++y)
        {
            for (int x = rect.low.x; x < rect.high.x; ++x)
            {
                double& texel = m_texels[static_cast<std::size_t>(y * kCell + x)];
                EXPECT_NE(texel == 0.0, value == 0.0) << x << ", " << y;
                texel = value;
            }
        }
        return (rect.high.x - rect.low.x) * (rect.high.y - rect.low.y);
    }

    std::vector<double> m_texels;
    int m_drawn = 0;
    int m_cleared = 0;
};

} // namespace

TEST(DrawnParts, DrawWhatIsAddedAndClearWhatIsLeftOfAnyRectangle)
{
    Dice dice(7);
    DrawnParts parts;
    Cell cell;
    double place = 1.0;
    int texels = 0;
    for (int i = 0; i < 500; ++i)
    {
        place += dice.Below(10) == 0 ? 1.0 : 0.0;
        const glm::ivec2 low(dice.Below(kCell / 2), dice.Below(kCell / 2));
        const glm::ivec2 high = low + glm::ivec2(1 + dice.Below(kCell / 2), 1 + dice.Below(kCell / 2));
        const Tile tile = PartAt(0, low, high, place);
        parts.Become({tile});
        cell.Follow(parts, place);
        cell.ExpectHolds(tile, place);
        texels += (high.x - low.x) * (high.y - low.y);
    }
    EXPECT_LT(cell.GetDrawn(), 0.9 * texels);
    EXPECT_LE(cell.GetCleared(), cell.GetDrawn());
}

TEST(DrawnParts, StayWhereNothingChanges)
{
    DrawnParts parts;
    const std::vector<Tile> tiles = {PartAt(0, {0, 0}, {9, 9}), PartAt(1, {3, 0}, {9, 9})};
    parts.Become(tiles);
    EXPECT_TRUE(parts.HaveChanged());
    parts.Become(tiles);
    EXPECT_FALSE(parts.HaveChanged());
    parts.Forget();
    parts.Become(tiles);
    EXPECT_TRUE(parts.HaveChanged());
    EXPECT_TRUE(parts.GetChanges().front().isOther);
}

TEST(DrawnParts, AreKnownByTheirCellsAndGoneOnesAreTold)
{
    DrawnParts parts;
    parts.Become({PartAt(0, {0, 0}, {9, 9}), PartAt(1, {0, 0}, {9, 9}), PartAt(2, {1, 2}, {3, 4})});
    // What is nearest is another, so that the others come sooner.
    parts.Become({PartAt(1, {0, 0}, {9, 9}), PartAt(3, {0, 0}, {9, 9})});
    ASSERT_EQ(parts.GetChanges().size(), 2u);
    EXPECT_TRUE(parts.GetChanges()[0].IsNone());
    EXPECT_TRUE(parts.GetChanges()[1].isOther);
    const std::vector<TexelRect> gone = {{{0, 0}, {9, 9}}, {{2 * kCell + 1, 2}, {2 * kCell + 3, 4}}};
    EXPECT_EQ(parts.GetGone(), gone);
    EXPECT_TRUE(parts.HaveChanged());
}

} // namespace OV::Test
