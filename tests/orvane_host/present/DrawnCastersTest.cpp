#include "orvane_host/present/detail/DrawnCasters.h"
#include "orvane_host/present/detail/TouchedTexels.h"
#include "tests/orvane_host/present/SettingsDice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::Detail::DrawnCasters;
using Host::Detail::Fingerprint;
using Host::Detail::TexelRect;
using Footprint = Host::Detail::SunView::Footprint;
using Tile = Host::Detail::SunView::Tile;

/// Of a part of a map, in texels and in units.
constexpr int kSize = 64;

Tile MakeTile()
{
    Tile tile;
    tile.low = {100, 0};
    tile.high = {100 + kSize, kSize};
    tile.area = {{-10.0, 5.0}, {-10.0 + kSize, 5.0 + kSize}};
    return tile;
}

struct Caster
{
    std::uint64_t number = 0; ///< what it looks like
    Footprint footprint;
    bool isGlass = false;
};

/// The texels of a part, each of which knows all that was drawn into it, in order.
class Texels
{
public:
    explicit Texels(bool isOfGlass) : m_isOfGlass(isOfGlass) {}

    void Draw(const std::vector<Caster>& casters, const TexelRect& rect)
    {
        const Tile tile = MakeTile();
        const Footprint area = FootprintAbout(tile, rect);
        for (int y = rect.low.y; y < rect.high.y; ++y)
        {
            for (int x = rect.low.x; x < rect.high.x; ++x)
            {
                At(x, y) = 0;
            }
        }
        for (const Caster& caster : casters)
        {
            if (caster.isGlass != m_isOfGlass || !caster.footprint.Meets(area))
            {
                continue;
            }
            ++drawn;
            for (int y = rect.low.y; y < rect.high.y; ++y)
            {
                for (int x = rect.low.x; x < rect.high.x; ++x)
                {
                    const glm::dvec2 middle = tile.area.from + glm::dvec2(x - tile.low.x, y - tile.low.y) + 0.5;
                    if (caster.footprint.Meets({middle, middle}))
                    {
                        At(x, y) = (At(x, y) + caster.number) * 0x9E3779B97F4A7C15u;
                    }
                }
            }
        }
    }

    bool operator==(const Texels& other) const { return m_texels == other.m_texels; }

    std::size_t drawn = 0; ///< casters

private:
    std::uint64_t& At(int x, int y) { return m_texels[static_cast<std::size_t>(y * kSize + x - MakeTile().low.x)]; }

    bool m_isOfGlass;
    std::array<std::uint64_t, kSize * kSize> m_texels{};
};

/// Casters, and what a map of them is drawn of.
class DrawnCastersTest : public testing::Test
{
protected:
    Caster MakeCaster(Dice& dice)
    {
        Caster caster;
        caster.number = ++m_last;
        const glm::dvec2 from(90.0 * dice.Share() - 20.0, 90.0 * dice.Share() - 10.0);
        const double size = dice.Below(10) == 0 ? 40.0 : 4.0;
        caster.footprint = {from, from + glm::dvec2(size * dice.Share(), size * dice.Share())};
        caster.isGlass = dice.Below(3) == 0;
        return caster;
    }

    std::vector<DrawnCasters::Print> Prints() const
    {
        std::vector<DrawnCasters::Print> prints;
        for (const Caster& caster : casters)
        {
            Fingerprint print;
            print.Add(caster.number);
            prints.push_back(DrawnCasters::PrintOf(print, caster.isGlass));
        }
        return prints;
    }

    void Become(std::uint64_t layout = 1)
    {
        drawn.Become(layout, Prints(), [this](std::size_t i) { return casters[i].footprint; });
    }

    void DrawTouched(Texels& texels, bool glass)
    {
        const Tile tile = MakeTile();
        if (drawn.HasAllChanged())
        {
            texels.Draw(casters, {tile.low, tile.high});
            return;
        }
        for (const TexelRect& rect : FindTouchedTexels(tile, drawn.GetChanged(glass)))
        {
            texels.Draw(casters, rect);
        }
    }

    void Edit(Dice& dice)
    {
        const auto any = [&] { return casters.begin() + dice.Below(static_cast<int>(casters.size())); };
        switch (casters.size() < 8 ? 0 : dice.Below(6))
        {
        case 0: casters.insert(any(), MakeCaster(dice)); return;
        case 1: casters.erase(any()); return;
        case 2: std::iter_swap(any(), any()); return;
        case 3: casters.push_back(*any()); return;
        default: *any() = MakeCaster(dice); return;
        }
    }

    std::vector<Caster> casters;
    DrawnCasters drawn;

private:
    std::uint64_t m_last = 0;
};

TEST_F(DrawnCastersTest, WhatChangesTouchesAllTexelsThatAreOthers)
{
    Dice dice(3);
    for (int i = 0; i < 60; ++i)
    {
        casters.push_back(MakeCaster(dice));
    }
    Texels texels[2] = {Texels(false), Texels(true)};
    std::size_t partial = 0;
    for (int step = 0; step < 200; ++step)
    {
        SCOPED_TRACE(step);
        Become();
        EXPECT_TRUE(drawn.AreThose(1, Prints()));
        partial += drawn.HasAllChanged() ? 0u : 1u;
        ASSERT_EQ(drawn.GetFootprints().size(), casters.size());
        for (std::size_t i = 0; i < casters.size(); ++i)
        {
            ASSERT_EQ(drawn.GetFootprints()[i].from, casters[i].footprint.from) << i;
            ASSERT_EQ(drawn.GetFootprints()[i].to, casters[i].footprint.to) << i;
        }
        for (const bool glass : {false, true})
        {
            Texels& now = texels[glass ? 1 : 0];
            DrawTouched(now, glass);
            Texels whole(glass);
            whole.Draw(casters, {MakeTile().low, MakeTile().high});
            ASSERT_TRUE(now == whole);
        }
        for (int edits = 1 + dice.Below(4); edits > 0; --edits)
        {
            Edit(dice);
        }
    }
    EXPECT_EQ(partial, 199u) << "all but the first";
}

TEST_F(DrawnCastersTest, WhatMovesTouchesLittle)
{
    Dice dice(4);
    for (int i = 0; i < 100; ++i)
    {
        Caster caster = MakeCaster(dice);
        caster.isGlass = false;
        caster.footprint.to = caster.footprint.from + 2.0;
        casters.push_back(caster);
    }
    casters[50].footprint = {{0.0, 20.0}, {2.0, 22.0}};
    Become();
    casters[50].number = 1000;
    casters[50].footprint = {{1.0, 20.0}, {3.0, 22.0}};
    Become();
    const std::vector<TexelRect> touched = FindTouchedTexels(MakeTile(), drawn.GetChanged(false));
    ASSERT_EQ(touched.size(), 1u);
    EXPECT_EQ(touched[0].low, glm::ivec2(109, 14));
    EXPECT_EQ(touched[0].high, glm::ivec2(114, 18));
    EXPECT_TRUE(FindTouchedTexels(MakeTile(), drawn.GetChanged(true)).empty());
    Texels texels(false);
    texels.Draw(casters, touched[0]);
    EXPECT_LT(texels.drawn, 10u);
}

TEST_F(DrawnCastersTest, AnotherLayoutChangesAll)
{
    Dice dice(5);
    casters = {MakeCaster(dice), MakeCaster(dice)};
    Become();
    EXPECT_TRUE(drawn.HasAllChanged());
    EXPECT_FALSE(drawn.AreThose(2, Prints()));
    Become(2);
    EXPECT_TRUE(drawn.HasAllChanged());
    casters[0].number = 1000;
    EXPECT_FALSE(drawn.AreThose(2, Prints()));
    Become(2);
    EXPECT_FALSE(drawn.HasAllChanged());
    drawn.Forget();
    EXPECT_FALSE(drawn.AreThose(2, Prints()));
    EXPECT_TRUE(drawn.GetFootprints().empty());
    Become(2);
    EXPECT_TRUE(drawn.HasAllChanged());
}

TEST_F(DrawnCastersTest, WhatBecomesGlassTouchesBothMaps)
{
    Dice dice(6);
    casters = {MakeCaster(dice), MakeCaster(dice), MakeCaster(dice)};
    casters[1].isGlass = false;
    Become();
    casters[1].isGlass = true;
    Become();
    EXPECT_EQ(drawn.GetChanged(false).size(), 1u);
    EXPECT_EQ(drawn.GetChanged(true).size(), 1u);
}

TEST_F(DrawnCastersTest, WhereMostMovesAllChanges)
{
    Dice dice(7);
    for (int i = 0; i < 2000; ++i)
    {
        casters.push_back(MakeCaster(dice));
    }
    Become();
    for (std::size_t i = 0; i < 200; ++i)
    {
        casters[900 + i].number += 100000;
    }
    Become();
    EXPECT_FALSE(drawn.HasAllChanged()) << "a group side by side";
    for (Caster& caster : casters)
    {
        caster.number += 100000;
    }
    Become();
    EXPECT_TRUE(drawn.HasAllChanged());
    casters.clear();
    Become();
    casters.push_back(MakeCaster(dice));
    Become();
    EXPECT_EQ(drawn.GetFootprints().size(), 1u);
}

TEST(TouchedTexels, AreWithinThePartAndFew)
{
    const Tile tile = MakeTile();
    EXPECT_TRUE(FindTouchedTexels(tile, {}).empty());
    EXPECT_TRUE(FindTouchedTexels(tile, {{{60.0, 0.0}, {70.0, 90.0}}}).empty()) << "beside it";
    EXPECT_TRUE(FindTouchedTexels(tile, {{{1e300, 1e300}, {1e301, 1e301}}}).empty());
    const std::vector<TexelRect> all = FindTouchedTexels(tile, {{{-1e300, -1e300}, {1e300, 1e300}}});
    ASSERT_EQ(all.size(), 1u);
    EXPECT_EQ(all[0].low, tile.low);
    EXPECT_EQ(all[0].high, tile.high);
    // Specks all over.
    std::vector<Footprint> specks;
    for (int i = 0; i < 400; ++i)
    {
        const glm::dvec2 at(-10.0 + 3.0 * (i % 20), 5.0 + 3.0 * (i / 20));
        specks.push_back({at, at + 0.1});
    }
    const std::vector<TexelRect> whole = FindTouchedTexels(tile, specks);
    ASSERT_EQ(whole.size(), 1u);
    EXPECT_EQ(whole[0].low, tile.low);
    EXPECT_EQ(whole[0].high, tile.high);
    // In opposite corners.
    const std::vector<TexelRect> apart = FindTouchedTexels(tile, {{{-9.0, 6.0}, {-8.0, 7.0}}, {{50.0, 60.0}, {51.0, 61.0}}});
    EXPECT_EQ(apart.size(), 2u);
}

} // namespace

} // namespace OV::Test
