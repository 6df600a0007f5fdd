#include "orvane_host/geometry/detail/EdgeChains.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

using namespace OV;
using namespace OV::Host;
using namespace OV::Host::Detail;

namespace
{

/// How often an edge begins where the one before it does not end.
int CountBreaks(const std::vector<FeatureEdge>& edges)
{
    int breaks = 0;
    for (std::size_t i = 1; i < edges.size(); ++i)
    {
        const Vector& end = edges[i - 1].end;
        const Vector& start = edges[i].start;
        breaks += end.x != start.x || end.y != start.y || end.z != start.z ? 1 : 0;
    }
    return breaks;
}

} // namespace

TEST(EdgeChains, ARingIsOnePolylineWhateverTheOrderAndTheWayOfItsEdges)
{
    const Vector corners[] = {{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {0, 1, 0}};
    const std::vector<FeatureEdge> edges = {
        {corners[2], corners[3]}, {corners[0], corners[1]}, {corners[2], corners[1]}, {corners[3], corners[0]}};
    const std::vector<FeatureEdge> chained = ChainEdges(edges);
    EXPECT_EQ(chained.size(), 4u);
    EXPECT_EQ(CountBreaks(chained), 0);
}

TEST(EdgeChains, WhereMoreThanTwoMeetThoseGoOnThatGoStraight)
{
    const Vector middle(1, 0, 0);
    const std::vector<FeatureEdge> edges = {{middle, Vector(1, 3, 0)}, {Vector(0, 0, 0), middle}, {Vector(2, 0, 0), middle}};
    const std::vector<FeatureEdge> chained = ChainEdges(edges);
    ASSERT_EQ(chained.size(), 3u);
    EXPECT_EQ(CountBreaks(chained), 1);
    for (std::size_t i = 1; i < 3; ++i)
    {
        if (chained[i].start.x == middle.x && chained[i - 1].end.x == middle.x && chained[i - 1].end.y == 0.0f)
        {
            EXPECT_EQ(chained[i].end.y, 0.0f) << "it goes straight on";
        }
    }
}

TEST(EdgeChains, SoManyMayMeetThatNoneGoesOn)
{
    std::vector<FeatureEdge> star;
    for (int i = 0; i < 400000; ++i)
    {
        star.push_back({Vector(0, 0, 0), Vector(1, static_cast<float>(i), static_cast<float>(i % 7))});
    }
    EXPECT_EQ(ChainEdges(star).size(), star.size());
    for (const int most : {100, 511, 512})
    {
        std::vector<FeatureEdge> fewer(star.begin(), star.begin() + most);
        fewer.push_back({Vector(0, 0, 0), Vector(-1, -3, -3)});
        const bool goesOn = most < 512;
        EXPECT_EQ(CountBreaks(ChainEdges(fewer)), goesOn ? most - 1 : most) << "of those that meet, one goes straight on";
    }
}

TEST(EdgeChains, NothingComesOfNothing)
{
    EXPECT_TRUE(ChainEdges({}).empty());
}
