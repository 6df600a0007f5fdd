#include "orvane_host/geometry/SunHours.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/support/ShowMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

namespace OV::Host::Test
{

namespace
{

using QGM::Point3d;
using QGM::Vector3d;

/// A floor of 20 by 20 about the zero point, and a wall of 4 by 3 on it along X, both without
/// thickness.
struct SunHoursScene : ::testing::Test
{
    Scene scene;
    Material* floor = new Material("floor");
    Material* wall = new Material("wall");
    MeshNode* wallNode = nullptr;

    SunHoursScene()
    {
        scene.AddMaterial(floor);
        scene.AddMaterial(wall);
        Add(*floor, {{-10, 0, -10}, {-10, 0, 10}, {10, 0, 10}, {10, 0, -10}});
        wallNode = Add(*wall, {{-2, 0, 0}, {2, 0, 0}, {2, 3, 0}, {-2, 3, 0}});
    }

    MeshNode* Add(Material& material, std::vector<Vector> corners)
    {
        auto raw = std::make_shared<RawMesh>();
        raw->StartDescription();
        raw->SetPositionBuffer(std::move(corners));
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        return &OV::Test::ShowMesh(raw, material, scene);
    }
};

const Vector3d kUp(0, 1, 0);

/// From behind the wall, at 45 degrees; straight down; from before it, of other lengths and hours.
const std::vector<SunMoment> kMoments = {{{0, 1, -1}, 0.5}, {{0, 2, 0}, 1.0}, {{0, 3, 3}, 0.25}};

} // namespace

TEST_F(SunHoursScene, CountsTheMomentsAtWhichNothingStandsBetween)
{
    const SunHours hours(scene, kMoments);
    // The wall's shadow reaches 3 to either side.
    EXPECT_EQ(hours.At({{0, 0, 5}, kUp}), 1.75);
    EXPECT_EQ(hours.At({{0, 0, 2}, kUp}), 1.25);
    EXPECT_EQ(hours.At({{0, 0, -2}, kUp}), 1.5);
    EXPECT_EQ(hours.At({{0, 0, 2.99}, kUp}), 1.25);
    EXPECT_EQ(hours.At({{0, 0, 3.01}, kUp}), 1.75);
    EXPECT_EQ(hours.At({{1.99, 0, 2}, kUp}), 1.25);
    EXPECT_EQ(hours.At({{2.01, 0, 2}, kUp}), 1.75);
    EXPECT_EQ(SunHours(scene, {}).At({{0, 0, 5}, kUp}), 0.0);
}

TEST_F(SunHoursScene, ASurfaceHasSunOnTheSideOfItsNormalAlone)
{
    const SunHours hours(scene, kMoments);
    EXPECT_EQ(hours.At({{0, 1, 0}, {0, 0, 1}}), 0.25);
    EXPECT_EQ(hours.At({{0, 1, 0}, {0, 0, -1}}), 0.5);
    EXPECT_EQ(hours.At({{0, 0, 5}, {0, -1, 0}}), 0.0);
    EXPECT_EQ(hours.At({{0, 1, 0}, {1, 0, 0}}), 0.0) << "at a grazing angle";
}

TEST_F(SunHoursScene, LetsTheSunThroughWhatIsSeeThroughHiddenOrCutAway)
{
    wall->SetDiffuse(Color(1, 1, 1, 0.5f));
    EXPECT_EQ(SunHours(scene, kMoments).At({{0, 0, 2}, kUp}), 1.75);
    wall->SetDiffuse(Color(1, 1, 1, 1));
    EXPECT_EQ(SunHours(scene, kMoments).At({{0, 0, 2}, kUp}), 1.25);
    wallNode->SetFlags(NodeFlagHidden, false);
    EXPECT_EQ(SunHours(scene, kMoments).At({{0, 0, 2}, kUp}), 1.75);
    wallNode->ClearFlags(NodeFlagHidden, false);
    const SunHours cut(scene, kMoments, {{Vector(0, 1, 0), Vector(0, 1, 0)}});
    EXPECT_EQ(cut.At({{0, 0, 2}, kUp}), 1.75) << "the shadow of the upper two thirds";
    EXPECT_EQ(cut.At({{0, 0, 0.9}, kUp}), 1.25);
    const SunHours beside(scene, kMoments, {{Vector(1, 0, 0), Vector(1, 0, 0)}});
    EXPECT_EQ(beside.At({{1.5, 0, 2}, kUp}), 1.75);
    EXPECT_EQ(beside.At({{0.5, 0, 2}, kUp}), 1.25);
}

TEST_F(SunHoursScene, FollowsTheSunBetweenMomentsWhereItIsTold)
{
    // The sun goes over the middle of the wall, from low in the west to low in the east. Before the wall
    // its light arrives when it stands lower than the line to the wall's upper rim.
    std::vector<SunMoment> moments;
    std::vector<SunMoment> many;
    constexpr int steps = 8;
    constexpr int finer = 256;
    const auto at = [](double angle) { return Vector3d(0, std::sin(angle), std::cos(angle)); };
    for (int i = 0; i <= steps * finer; ++i)
    {
        const double share = i == 0 || i == steps * finer ? 0.5 : 1.0;
        many.push_back({at(0.3 + 2.5 * i / (steps * finer)), share / finer});
        if (i % finer == 0)
        {
            // Directions are of any length.
            const Vector3d d = at(0.3 + 2.5 * i / (steps * finer));
            moments.push_back({Vector3d(3 * i * d.x + d.x, 3 * i * d.y + d.y, 3 * i * d.z + d.z), share, 1.0});
        }
    }
    const SunHours hours(scene, moments);
    const SunHours fine(scene, many);
    std::vector<SunMoment> still = moments;
    for (SunMoment& moment : still)
    {
        moment.toNext = 0.0;
    }
    const SunHours coarse(scene, still);
    double most = 0.0;
    for (double z = -9.0; z <= 9.0; z += 0.37)
    {
        const SunSpot spot{{0, 0, z}, kUp};
        EXPECT_NEAR(hours.At(spot), fine.At(spot), 0.07) << z;
        EXPECT_LE(std::abs(hours.At(spot) - coarse.At(spot)), 1.0) << z;
        most = std::max(most, std::abs(fine.At(spot) - coarse.At(spot)));
    }
    EXPECT_GT(most, 0.3) << "what the moments alone are off";
}

TEST_F(SunHoursScene, CountsManyPlacesAsItCountsEachOfThem)
{
    const SunHours hours(scene, kMoments);
    std::vector<SunSpot> spots;
    for (int i = 0; i < 5000; ++i)
    {
        spots.push_back({{-9.9 + 0.2 * (i % 100), 0.0, -9.9 + 0.4 * (i / 100)}, kUp});
    }
    const std::vector<float> all = hours.At(spots);
    ASSERT_EQ(all.size(), spots.size());
    int shaded = 0;
    for (std::size_t i = 0; i < spots.size(); ++i)
    {
        ASSERT_EQ(all[i], static_cast<float>(hours.At(spots[i]))) << i;
        shaded += all[i] < 1.75f ? 1 : 0;
    }
    EXPECT_GT(shaded, 200);
    EXPECT_TRUE(hours.At(std::vector<SunSpot>()).empty());
}

} // namespace OV::Host::Test
