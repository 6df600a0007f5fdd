#include "tests/overlay/LayerShapes.h"
#include "tests/overlay/OverlayDoubles.h"

#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/scene/CameraNode.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace OV::Test
{

namespace
{

/// A 3D scene of a node, and nodes of the foreground layer that follow it.
class FollowerTest : public testing::TestWithParam<CameraNode::CameraProjection>
{
protected:
    FollowerTest()
    {
        context.GetContext()->SetScene(std::make_unique<Scene>());
        context.SetScreenSize(200, 100);
        CameraNode& camera = Camera();
        camera.SetProjection(CameraNode::Perspective);
        camera.SetFOV(std::atan(0.5f));
        camera.SetDistanceToTarget(20.0f);
        camera.SetNearFar(1.0f, 1000.0f);
        LookFrom(0, 0, 20);
        solid = new Node(&World());
        World().GetRoot()->AddChild(solid, false);
        follower = AddShapeNode(Layer(), 0, 0, 3);
    }

    Scene& World() { return *context.GetContext()->GetScene(); }
    Scene2D& Layer() { return *context.GetContext()->GetForeground2D(); }
    CameraNode& Camera() { return *World().GetCameraNode(); }

    void LookFrom(float x, float y, float z)
    {
        Transform place;
        place.SetPosition(Vector(x, y, z));
        Camera().SetGlobal(place);
    }

    bool Update() { return context.Update(0.0f); }

    Vector Seen() const { return follower->GetGlobal().GetPosition(); }
    bool IsCulled() const { return (follower->GetFlags() & NodeFlagCulled) != 0; }

    void ExpectSeenAt(float x, float y) const
    {
        EXPECT_NEAR(Seen().x, x, 1e-3f);
        EXPECT_NEAR(Seen().y, y, 1e-3f);
    }

    AppContext context;
    Node* solid = nullptr;
    Shape2DNode* follower = nullptr;
};

TEST_F(FollowerTest, FollowsNothingAtFirst)
{
    EXPECT_EQ(follower->Get3DParent(), nullptr);
    Place(*follower, 7, 8, 3);
    Update();
    EXPECT_EQ(Seen(), Vector(7, 8, 3));
}

// Half the view is 10 world units high where the node is, in both projections.
TEST_P(FollowerTest, StandsWhereTheCameraShowsTheNodeWithTheOriginBelow)
{
    Camera().SetProjection(GetParam());
    follower->Set3DParent(solid);
    EXPECT_EQ(follower->Get3DParent(), solid);
    EXPECT_TRUE(Update());
    ExpectSeenAt(100, 50);
    EXPECT_EQ(Seen().z, 3.0f);

    Place(*solid, 4, 2, 0);
    EXPECT_TRUE(Update());
    ExpectSeenAt(120, 60);
}

TEST_P(FollowerTest, FollowsUnderAMovingCamera)
{
    Camera().SetProjection(GetParam());
    follower->Set3DParent(solid);
    Update();
    LookFrom(4, 2, 20);
    EXPECT_TRUE(Update());
    ExpectSeenAt(80, 40);
    // Twice as far: half as large in perspective, as large as before otherwise.
    LookFrom(4, 2, 40);
    EXPECT_TRUE(Update());
    GetParam() == CameraNode::Perspective ? ExpectSeenAt(90, 45) : ExpectSeenAt(80, 40);
}

TEST_P(FollowerTest, FollowsWhenTheScreenGrows)
{
    Camera().SetProjection(GetParam());
    follower->Set3DParent(solid);
    Place(*solid, 4, 2, 0);
    Update();
    context.SetScreenSize(400, 200);
    Update();
    ExpectSeenAt(240, 120);
}

TEST_P(FollowerTest, IsCulledBehindTheEyeAndNeverHidden)
{
    Camera().SetProjection(GetParam());
    follower->Set3DParent(solid);
    Update();
    ASSERT_FALSE(IsCulled());
    Place(*solid, 0, 0, 30);
    Update();
    EXPECT_TRUE(IsCulled());
    EXPECT_FALSE(IsHidden(*follower));
    ExpectSeenAt(100, 50);
    Place(*solid, 0, 0, 0);
    Update();
    EXPECT_FALSE(IsCulled());
}

INSTANTIATE_TEST_SUITE_P(BothProjections, FollowerTest,
                         testing::Values(CameraNode::Perspective, CameraNode::Orthographic),
                         [](const testing::TestParamInfo<CameraNode::CameraProjection>& info) {
                             return info.param == CameraNode::Perspective ? "Perspective" : "Orthographic";
                         });

TEST_F(FollowerTest, AnOrthographicCameraSeesBehindItselfAsFarAsItsNearPlane)
{
    Camera().SetProjection(CameraNode::Orthographic);
    Camera().SetNearFar(-50.0f, 1000.0f);
    follower->Set3DParent(solid);
    Place(*solid, 4, 2, 60);
    Update();
    EXPECT_FALSE(IsCulled());
    ExpectSeenAt(120, 60);
    Place(*solid, 4, 2, 80);
    Update();
    EXPECT_TRUE(IsCulled());
}

TEST_F(FollowerTest, InTheCamerasOwnPlaneItIsCulled)
{
    follower->Set3DParent(solid);
    Place(*solid, 5, 0, 20);
    Update();
    EXPECT_TRUE(IsCulled());
    EXPECT_TRUE(std::isfinite(Seen().x));
}

TEST_F(FollowerTest, WithoutAScreenItStaysFinite)
{
    follower->Set3DParent(solid);
    context.SetScreenSize(0, 0);
    Update();
    EXPECT_TRUE(std::isfinite(Seen().x));
    EXPECT_FALSE(Update()) << "a place that is no number would change for ever";
}

TEST_F(FollowerTest, KeepsItsOwnDepthTurnAndSize)
{
    Transform own;
    own.SetPosition(Vector(1, 2, 9));
    own.SetRotation(Quaternion(0.0f, 0.0f, std::sqrt(0.5f), std::sqrt(0.5f)));
    own.SetScale(Vector(2, 3, 1));
    follower->SetLocal(own);
    follower->Set3DParent(solid);
    Update();
    Transform expected = own;
    expected.SetPosition(Vector(100, 50, 9));
    EXPECT_EQ(follower->GetLocal(), expected);
}

TEST_F(FollowerTest, StandsThereBelowAMovedParentOfTheLayerToo)
{
    auto* const group = AddShapeNode(Layer(), 30, 10, 5);
    group->AddChild(follower, false);
    follower->Set3DParent(solid);
    Update();
    ExpectSeenAt(100, 50);
    EXPECT_EQ(Seen().z, 8.0f) << "its own z below the parent's";
    // In the frame in which the parent moves.
    Place(*group, -50, 3, 5);
    Update();
    ExpectSeenAt(100, 50);
}

TEST_F(FollowerTest, AFrameWithoutChangesIsClean)
{
    follower->Set3DParent(solid);
    Update();
    EXPECT_FALSE(Update());
    follower->Set3DParent(nullptr);
    EXPECT_TRUE(Update());
    EXPECT_FALSE(Update());
    EXPECT_EQ(follower->Get3DParent(), nullptr);
}

TEST_F(FollowerTest, AMovingCameraMovesTheLayerInTheSameFrame)
{
    follower->Set3DParent(solid);
    auto* const material = AddLayerMaterial(Layer(), 1.0f);
    AddLayerMesh(Layer(), *follower, *material);
    Update();
    ASSERT_FALSE(IsCulled());
    LookFrom(500, 0, 20);
    Update();
    EXPECT_TRUE(IsCulled()) << "off the screen";
    LookFrom(0, 0, 20);
    Update();
    EXPECT_FALSE(IsCulled());
}

TEST_F(FollowerTest, ADyingParentClearsThePointerAndTheFollowerStays)
{
    follower->Set3DParent(solid);
    Place(*solid, 4, 2, 0);
    Update();
    World().DeleteSubtree(solid);
    EXPECT_EQ(follower->Get3DParent(), nullptr);
    Update();
    ExpectSeenAt(120, 60);
    EXPECT_FALSE(IsCulled());
}

TEST_F(FollowerTest, ShowsAgainWhenItsParentDiesBehindTheEye)
{
    follower->Set3DParent(solid);
    Place(*solid, 0, 0, 30);
    Update();
    ASSERT_TRUE(IsCulled());
    World().DeleteSubtree(solid);
    Update();
    EXPECT_FALSE(IsCulled());
}

TEST_F(FollowerTest, ShowsAgainWhenItStopsFollowingBehindTheEye)
{
    follower->Set3DParent(solid);
    Place(*solid, 0, 0, 30);
    Update();
    ASSERT_TRUE(IsCulled());
    follower->Set3DParent(nullptr);
    Update();
    EXPECT_FALSE(IsCulled());
}

TEST_F(FollowerTest, AnotherSceneInPlaceOfTheFollowedOneIsHarmless)
{
    follower->Set3DParent(solid);
    Update();
    context.GetContext()->SetScene(std::make_unique<Scene>());
    EXPECT_EQ(follower->Get3DParent(), nullptr);
    Update();
    ExpectSeenAt(100, 50);
}

TEST_F(FollowerTest, FollowersMayGoInAnyOrder)
{
    auto* const second = AddShapeNode(Layer(), 0, 0, 0);
    auto* const third = AddShapeNode(Layer(), 0, 0, 0);
    for (Shape2DNode* node : {follower, second, third})
    {
        node->Set3DParent(solid);
    }
    second->Set3DParent(solid);
    Layer().DeleteSubtree(second);
    Update();
    World().DeleteSubtree(solid);
    Layer().DeleteSubtree(follower);
    Update();
    third->Set3DParent(World().GetRoot());
    Update();
    Layer().Clear();
    Update();
}

TEST_F(FollowerTest, ALayerMayDieWithItsFollowers)
{
    auto layer = std::make_unique<Scene2D>(nullptr);
    auto* const below = AddShapeNode(*layer, 0, 0, 0);
    below->Set3DParent(solid);
    Shape2DNode kept(layer.get());
    kept.Set3DParent(solid);
    layer.reset();
    EXPECT_EQ(kept.GetScene2D(), nullptr);
    kept.UpdateGraph();
    float nearest = 0.0f;
    float farthest = 0.0f;
    kept.UpdateCulling(nearest, farthest);
    EXPECT_FALSE(kept.IsInside(0, 0));
    kept.Set3DParent(nullptr);
    kept.Set3DParent(solid);
}

} // namespace

} // namespace OV::Test
