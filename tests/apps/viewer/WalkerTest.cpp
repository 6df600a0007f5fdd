#include "apps/viewer/Walker.h"

#include "orvane_host/geometry/Primitives.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

using namespace OV;
using namespace OV::ViewerApp;

namespace
{

const glm::dvec3 kUp(0.0, 1.0, 0.0);

/// A floor of edge 10 at height 1, a table of edge 1 on it whose top is at height 2.
class WalkerFloor : public ::testing::Test
{
protected:
    WalkerFloor()
    {
        Add({-5, 0, -5}, {5, 1, 5});
        table = Add({-0.5f, 1, -0.5f}, {0.5f, 2, 0.5f});
    }

    MeshNode* Add(const Vector& low, const Vector& high)
    {
        auto* const mesh = new Mesh(Host::Primitives::Box(low, high), &scene);
        auto* const node = new MeshNode(&scene);
        scene.GetRoot()->AddChild(node, false);
        mesh->AddNode(node);
        return node;
    }

    std::optional<double> Depth(const glm::dvec3& point) { return Walker::DepthOfFloor(*scene.GetRoot(), point, kUp); }

    Scene scene;
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
    EXPECT_NEAR(*Walker::DepthOfFloor(*scene.GetRoot(), {2, 0.5, 9}, {0, 0, 1}), 4.0, 1e-9);
}
