#include "apps/viewer/Walker.h"

#include "orvane_host/geometry/Primitives.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace OV;
using namespace OV::ViewerApp;

namespace
{

const glm::dvec3 kUp(0.0, 1.0, 0.0);

/// A scene that boxes are put into.
class WalkerScene : public ::testing::Test
{
protected:
    MeshNode* Add(const Vector& low, const Vector& high)
    {
        auto* const mesh = new Mesh(Host::Primitives::Box(low, high), &scene);
        auto* const node = new MeshNode(&scene);
        scene.GetRoot()->AddChild(node, false);
        mesh->AddNode(node);
        return node;
    }

    Scene scene;
};

/// A floor of edge 10 at height 1, a table of edge 1 on it whose top is at height 2.
class WalkerFloor : public WalkerScene
{
protected:
    WalkerFloor()
    {
        Add({-5, 0, -5}, {5, 1, 5});
        table = Add({-0.5f, 1, -0.5f}, {0.5f, 2, 0.5f});
    }

    std::optional<double> Depth(const glm::dvec3& point) { return Walker(*scene.GetRoot(), kUp, 1.0).DepthOfFloor(point); }

    MeshNode* table = nullptr;
};

} // namespace

TEST_F(WalkerFloor, IsTheFirstThingBelow)
{
    EXPECT_NEAR(*Depth({3, 4, 3}), 3.0, 1e-9);
    EXPECT_NEAR(*Depth({0.25, 4, 0.3}), 2.0, 1e-9);
    // Below the top of the table its bottom is next, which lies on the floor.
    EXPECT_NEAR(*Depth({0.25, 1.5, 0.3}), 0.5, 1e-9);
}

TEST_F(WalkerFloor, EndsAtItsRim)
{
    EXPECT_TRUE(Depth({4.99, 4, 0.1}));
    EXPECT_FALSE(Depth({5.01, 4, 0.1}));
    EXPECT_FALSE(Depth({3, -1, 3}));
}

TEST_F(WalkerFloor, IsNothingHidden)
{
    table->SetFlags(NodeFlagHidden, false);
    EXPECT_NEAR(*Depth({0.25, 4, 0.3}), 3.0, 1e-9);
}

TEST_F(WalkerFloor, FollowsPlacesAndTheAxisThatIsUp)
{
    Transform place;
    place.SetPosition(Vector(0, 3, 0));
    table->SetGlobal(place);
    EXPECT_NEAR(*Depth({0.25, 8, 0.3}), 3.0, 1e-9);
    EXPECT_NEAR(*Walker(*scene.GetRoot(), {0, 0, 1}, 1.0).DepthOfFloor({2, 0.5, 9}), 4.0, 1e-9);
}

TEST_F(WalkerFloor, IsNothingThatIsCutAway)
{
    const Walker cut(*scene.GetRoot(), kUp, 1.0, {{{0, 2, 0}, {0, 1.5, 0}}});
    EXPECT_NEAR(*cut.DepthOfFloor({0.25, 4, 0.3}), 3.0, 1e-9) << "the bottom of the table";
}

namespace
{

/// A room of 8 by 8 metres on a floor at height 0, with a door in the wall at x = 4.
class WalkerWalls : public WalkerScene
{
protected:
    WalkerWalls()
    {
        Add({-10, -1, -10}, {10, 0, 10});
        Add({4, 0, -4}, {4.2f, 3, -0.5f});
        door = Add({4, 0, -0.5f}, {4.2f, 3, 0.5f});
        Add({4, 0, 0.5f}, {4.2f, 3, 4});
        Add({-4, 0, 4}, {4.2f, 3, 4.2f});
    }

    glm::dvec3 Walk(const glm::dvec3& from, const glm::dvec3& way, std::vector<Walker::Cut> cuts = {})
    {
        return Walker(*scene.GetRoot(), kUp, 1.0, std::move(cuts)).Walk(from, way);
    }

    static void ExpectAt(const glm::dvec3& place, const glm::dvec3& expected)
    {
        EXPECT_NEAR(place.x, expected.x, 1e-5);
        EXPECT_NEAR(place.y, expected.y, 1e-5);
        EXPECT_NEAR(place.z, expected.z, 1e-5);
    }

    MeshNode* door = nullptr;
};

} // namespace

TEST_F(WalkerWalls, NobodyGoesThroughThem)
{
    ExpectAt(Walk({0, 1.6, 0}, {2, 0, 0}), {2, 1.6, 0});
    ExpectAt(Walk({0, 1.6, 0}, {9, 0, 0}), {3.7, 1.6, 0});
    ExpectAt(Walk({3.69, 1.6, 0}, {0.5, 0, 0}), {3.7, 1.6, 0});
    // From the other side, and backwards.
    ExpectAt(Walk({8, 1.6, 0}, {-9, 0, 0}), {4.5, 1.6, 0});
}

TEST_F(WalkerWalls, OneGoesAlongThem)
{
    ExpectAt(Walk({3.5, 1.6, 0}, {1, 0, 1}), {3.7, 1.6, 1});
    // And stays in the corner.
    ExpectAt(Walk({3.5, 1.6, 3}, {3, 0, 3}), {3.7, 1.6, 3.7});
}

TEST_F(WalkerWalls, AnOpenDoorLetsOneThrough)
{
    door->SetFlags(NodeFlagHidden, false);
    ExpectAt(Walk({3, 1.6, 0}, {3, 0, 0}), {6, 1.6, 0});
    // It is as wide as a person and a bit.
    ExpectAt(Walk({3, 1.6, 0.1}, {3, 0, 0}), {6, 1.6, 0.1});
    EXPECT_LT(Walk({3, 1.6, 1.5}, {3, 0, 0}).x, 3.71);
}

TEST_F(WalkerWalls, WhatIsLowIsSteppedOnAndWhatIsHighIsWalkedUnder)
{
    Add({-2, 0, -1}, {-1, 0.5f, 1});
    ExpectAt(Walk({-3, 1.6, 0}, {1.5, 0, 0}), {-1.5, 2.1, 0});
    Add({-8, 0, -1}, {-7, 0.7f, 1});
    ExpectAt(Walk({-9, 1.6, 0}, {1.5, 0, 0}), {-8.3, 1.6, 0});
    Add({-2, 2, -6}, {2, 2.2f, -5});
    ExpectAt(Walk({0, 1.6, -8}, {0, 0, 3}), {0, 1.6, -5});
}

TEST_F(WalkerWalls, WhatIsCutAwayStopsNobody)
{
    ExpectAt(Walk({0, 1.6, 0}, {6, 0, 0}, {{{1, 0, 0}, {3, 0, 0}}}), {6, 1.6, 0});
    ExpectAt(Walk({0, 1.6, 0}, {6, 0, 0}, {{{0, 3, 0}, {0, 1.2, 0}}}), {3.7, 1.6, 0});
    ExpectAt(Walk({0, 1.6, 0}, {6, 0, 0}, {{{0, 3, 0}, {0, 0.5, 0}}}), {6, 1.6, 0});
}

TEST_F(WalkerWalls, WhoStandsInOneMayLeaveIt)
{
    const glm::dvec3 left = Walk({3.9, 1.6, 2}, {-1, 0, 0});
    EXPECT_LT(left.x, 3.5);
    // But not through it.
    EXPECT_LT(Walk({3.95, 1.6, 2}, {1, 0, 0}).x, 4.0);
}

TEST_F(WalkerWalls, AreMeasuredInMetresOfTheModel)
{
    // In a model of millimetres the same person is a thousand units to a metre.
    Scene small;
    auto* const mesh = new Mesh(Host::Primitives::Box({4000, 0, -4000}, {4200, 3000, 4000}), &small);
    auto* const node = new MeshNode(&small);
    small.GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
    const glm::dvec3 there = Walker(*small.GetRoot(), kUp, 1000.0).Walk({0, 1600, 0}, {9000, 0, 0});
    EXPECT_NEAR(there.x, 3700.0, 1e-2);
    EXPECT_NEAR(there.y, 1600.0, 1e-6);
}

TEST_F(WalkerWalls, AreNotPassedHoweverFarOneGoesAtOnce)
{
    ExpectAt(Walk({0, 1.6, 0}, {1e5, 0, 0}), {3.7, 1.6, 0});
    ExpectAt(Walk({0, 1.6, 0}, {1e30, 0, 0}), {3.7, 1.6, 0});
    ExpectAt(Walk({0, 1.6, 0}, {std::nan(""), 0, 0}), {0, 1.6, 0});
    ExpectAt(Walk({0, 1.6, 0}, {std::numeric_limits<double>::infinity(), 0, 0}), {0, 1.6, 0});
}
