#include "orvane_host/geometry/detail/CoplanarOrder.h"

#include <gmock/gmock.h>

#include <vector>

namespace OV::Host::Detail
{

namespace
{

using ::testing::Each;
using ::testing::ElementsAre;

constexpr double kTolerance = 1e-5;

/// Rectangles across Z, as solids of a thickness that is told.
struct Sheets
{
    std::vector<PlacedSolid> solids;
    std::vector<std::vector<FaceCorners>> faces;

    /// @param facing 1 or -1, along Z.
    PlacedSolid& Add(double x, double z, double thickness, int facing = 1, double width = 1.0)
    {
        PlacedSolid solid;
        solid.box = {{x - kTolerance, -kTolerance, z - kTolerance}, {x + width + kTolerance, 1.0 + kTolerance, z + kTolerance}};
        solid.thickness = thickness;
        solid.family = static_cast<std::uint32_t>(solids.size());
        solids.push_back(solid);
        const std::array<double, 3> a = {x, 0, z};
        const std::array<double, 3> b = {x + width, 0, z};
        const std::array<double, 3> c = {x + width, 1, z};
        const std::array<double, 3> d = {x, 1, z};
        faces.push_back(facing > 0 ? std::vector<FaceCorners>{{a, b, c}, {a, c, d}}
                                   : std::vector<FaceCorners>{{a, c, b}, {a, d, c}});
        return solids.back();
    }

    CoplanarOrder Find(const CoplanarLimits& limits = {}) const
    {
        const auto hand = [this](std::uint32_t solid, const std::function<void(const FaceCorners&)>& take)
        {
            for (const FaceCorners& face : faces[solid])
            {
                take(face);
            }
        };
        return FindCoplanarOrder(solids, hand, kTolerance, limits);
    }
};

TEST(CoplanarOrder, PutsTheThickerBehind)
{
    Sheets sheets;
    sheets.Add(0.0, 0.0, 0.1);
    sheets.Add(0.5, 0.0, 0.3);
    const CoplanarOrder order = sheets.Find();
    EXPECT_TRUE(order.isComplete);
    EXPECT_EQ(order.pairs, 1u);
    EXPECT_THAT(order.ranks, ElementsAre(0, 1));
}

TEST(CoplanarOrder, PutsTheEarlierBehindOfTwoAsThick)
{
    Sheets sheets;
    sheets.Add(0.0, 0.0, 0.1);
    // Less than what rounding may make of it.
    sheets.Add(0.5, 0.0, 0.1 * (1.0 + 1e-6));
    EXPECT_THAT(sheets.Find().ranks, ElementsAre(1, 0));
}

TEST(CoplanarOrder, CountsWhatLiesBeforeOneAnother)
{
    Sheets sheets;
    sheets.Add(0.0, 0.0, 0.3);
    sheets.Add(0.2, 0.0, 0.0);
    sheets.Add(0.4, 0.0, 0.1);
    sheets.Add(5.0, 0.0, 0.5);
    EXPECT_THAT(sheets.Find().ranks, ElementsAre(2, 0, 1, 0));
}

TEST(CoplanarOrder, LeavesOthersAlone)
{
    struct Case
    {
        const char* label;
        double x, z;
        int facing;
        std::size_t pairs;
    };
    const Case cases[] = {
        {"in one place", 0.0, 0.0, 1, 1},
        {"just within the tolerance", 0.0, 0.9 * kTolerance, 1, 1},
        {"just beyond it", 0.0, 1.1 * kTolerance, 1, 0},
        {"side by side", 1.0, 0.0, 1, 0},
        {"overlapping by rounding", 1.0 - 4.0 * kTolerance, 0.0, 1, 0},
        {"overlapping by a little", 1.0 - 20.0 * kTolerance, 0.0, 1, 1},
        {"apart", 3.0, 0.0, 1, 0},
        {"looking the other way", 0.0, 0.0, -1, 0},
    };
    for (const Case& c : cases)
    {
        Sheets sheets;
        sheets.Add(0.0, 0.0, 0.1);
        sheets.Add(c.x, c.z, 0.2, c.facing);
        const CoplanarOrder order = sheets.Find();
        EXPECT_EQ(order.pairs, c.pairs) << c.label;
        EXPECT_EQ(order.ranks[1], c.pairs) << c.label;
    }
}

TEST(CoplanarOrder, HeedsBacksThatAreSeen)
{
    Sheets sheets;
    sheets.Add(0.0, 0.0, 0.1).showsBacks = true;
    sheets.Add(0.0, 0.0, 0.2, -1);
    EXPECT_THAT(sheets.Find().ranks, ElementsAre(0, 1));
}

TEST(CoplanarOrder, LeavesSheetsAloneThatLookOppositeWaysAndShowNoBacks)
{
    Sheets sheets;
    sheets.Add(0.0, 0.0, 0.0);
    sheets.Add(0.5, 0.0, 0.0, -1);
    EXPECT_THAT(sheets.Find().ranks, ElementsAre(0, 0));
}

TEST(CoplanarOrder, LetsAFamilyBe)
{
    Sheets sheets;
    sheets.Add(0.0, 0.0, 0.1);
    sheets.Add(0.5, 0.0, 0.2).family = 0;
    EXPECT_EQ(sheets.Find().pairs, 0u);
}

TEST(CoplanarOrder, FindsASliverOnALargeFace)
{
    // In planes that no axis lies across, and far from the origin.
    const auto at = [](double u, double v) -> std::array<double, 3>
    { return {40.0 + 0.6 * u - 0.48 * v, 7.0 + 0.8 * u + 0.36 * v, -20.0 + 0.8 * v}; };
    Sheets sheets;
    sheets.Add(0.0, 0.0, 0.1);
    sheets.Add(0.0, 0.0, 0.2);
    sheets.faces[0] = {{at(0.0, 0.3), at(9.0, 0.3), at(9.0, 0.301)}};
    sheets.faces[1] = {{at(-3.0, -5.0), at(12.0, -5.0), at(12.0, 7.0)}, {at(-3.0, -5.0), at(12.0, 7.0), at(-3.0, 7.0)}};
    for (PlacedSolid& solid : sheets.solids)
    {
        solid.box = {{-100, -100, -100}, {100, 100, 100}};
    }
    EXPECT_THAT(sheets.Find().ranks, ElementsAre(0, 1));
    for (std::array<double, 3>& corner : sheets.faces[0][0])
    {
        corner[2] += 1e-3;
    }
    EXPECT_THAT(sheets.Find().ranks, ElementsAre(0, 0));
}

TEST(CoplanarOrder, StandsBackNoFurtherThanThereAreSteps)
{
    Sheets sheets;
    for (int i = 0; i < 3 * kMostRank; ++i)
    {
        sheets.Add(0.0, 0.0, 0.1);
    }
    const CoplanarOrder order = sheets.Find();
    EXPECT_EQ(order.ranks.front(), kMostRank);
    EXPECT_EQ(order.ranks[sheets.solids.size() - 2], 1);
    EXPECT_EQ(order.ranks.back(), 0);
}

TEST(CoplanarOrder, GivesUpAtItsLimits)
{
    Sheets sheets;
    sheets.Add(0.0, 0.0, 0.1);
    sheets.Add(0.0, 0.0, 0.2);
    CoplanarLimits limits;
    limits.faces = 4;
    EXPECT_TRUE(sheets.Find(limits).isComplete);
    limits.faces = 3;
    EXPECT_FALSE(sheets.Find(limits).isComplete);
    limits = {};
    // Four faces, each of which meets all of them.
    limits.comparisons = 16;
    EXPECT_TRUE(sheets.Find(limits).isComplete);
    limits.comparisons = 15;
    const CoplanarOrder order = sheets.Find(limits);
    EXPECT_FALSE(order.isComplete);
    EXPECT_EQ(order.pairs, 0u);
    EXPECT_THAT(order.ranks, Each(0));
}

TEST(CoplanarOrder, GivesUpOnManyOfOneFamilyToo)
{
    Sheets sheets;
    for (int i = 0; i < 100; ++i)
    {
        sheets.Add(0.0, 0.0, 0.1).family = 0;
    }
    CoplanarLimits limits;
    limits.comparisons = 100 * 100;
    EXPECT_TRUE(sheets.Find(limits).isComplete);
    limits.comparisons -= 1;
    EXPECT_FALSE(sheets.Find(limits).isComplete);
}

} // namespace

} // namespace OV::Host::Detail
