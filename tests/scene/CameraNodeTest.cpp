#include "orvane/scene/CameraNode.h"

#include "tests/scene/TurnedCamera.h"
#include "tests/support/VirtualSlot.h"

namespace OV
{
namespace
{

using namespace Test;

TEST(CameraNode, StartsAsStated)
{
    CameraNode camera(nullptr);
    ExpectNearFar(camera, 0.01f, 1000.0f);
    EXPECT_EQ(camera.GetFOV(), 0.45f);
    EXPECT_EQ(camera.GetDistanceToTarget(), 50.0f);
    EXPECT_EQ(camera.GetProjection(), CameraNode::Perspective);
    EXPECT_EQ(static_cast<int>(camera.GetProjection()), 0);
    EXPECT_EQ(camera.screenWidth, 0.0f);
    EXPECT_EQ(camera.screenHeight, 0.0f);
    EXPECT_TRUE(CameraParts::FovOnSmallerSide(camera));
    EXPECT_TRUE(IsSame(camera.GetInvTransform(), Transform()));
    EXPECT_FALSE(camera.IsDirtyAndReset());
    EXPECT_EQ(camera.GetRenderData(), nullptr);

    const Frustum& frustum = camera.GetFrustum();
    EXPECT_FALSE(frustum.perspective);
    for (const Vector* const vector :
         {&frustum.position, &frustum.direction, &frustum.leftNormal, &frustum.topNormal, &frustum.rightNormal,
          &frustum.bottomNormal, &frustum.leftPlane.normal, &frustum.leftPlane.point})
    {
        EXPECT_TRUE(IsNear(*vector, Vector(0, 0, 0), 0.0f));
    }
}

TEST(CameraNode, PlainSettersMarkNothing)
{
    Scene scene;
    CameraNode* const camera = scene.GetCameraNode();
    scene.UpdateGraph(4.0f, 3.0f);
    const Plane before = camera->GetFrustum().leftPlane;
    camera->SetFOV(1.0f);
    camera->SetDistanceToTarget(3.0f);
    camera->SetProjection(orthographic);
    camera->SetNearFar(2.0f, 3.0f);
    EXPECT_EQ(camera->GetFOV(), 1.0f);
    EXPECT_EQ(camera->GetDistanceToTarget(), 3.0f);
    EXPECT_EQ(camera->GetProjection(), orthographic);
    ExpectNearFar(*camera, 2.0f, 3.0f);
    EXPECT_FALSE(scene.IsDirty());
    EXPECT_FALSE(camera->IsDirtyAndReset());
    EXPECT_TRUE(camera->GetFrustum().perspective);
    EXPECT_TRUE(IsNear(camera->GetFrustum().leftPlane.normal, before.normal, 0.0f));
}

TEST(CameraNode, MovingItMakesItDirtyUntilAsked)
{
    CameraNode camera(nullptr);
    camera.SetLocal(At(1, 2, 3));
    EXPECT_TRUE(IsSame(camera.GetLocal(), At(1, 2, 3)));
    EXPECT_TRUE(camera.IsDirtyAndReset());
    EXPECT_FALSE(camera.IsDirtyAndReset());
    camera.SetGlobal(At(4, 5, 6));
    EXPECT_TRUE(IsSame(camera.GetGlobal(), At(4, 5, 6)));
    EXPECT_TRUE(camera.IsDirtyAndReset());
    EXPECT_FALSE(camera.IsDirtyAndReset());
}

TEST(CameraNode, NearIsStoredAsGivenAndFarOnlyLiftedInPerspective)
{
    CameraNode camera(nullptr);
    camera.SetNearFar(1.0f, 0.0f);
    ExpectNearFar(camera, 1.0f, 1.0f);
    camera.SetNearFar(-3.0f, -5.0f);
    ExpectNearFar(camera, -3.0f, 1.0f);
    camera.SetNearFar(5.0f, 1e-30f);
    ExpectNearFar(camera, 5.0f, 1e-30f);
    camera.SetProjection(orthographic);
    camera.SetNearFar(1.0f, 0.0f);
    ExpectNearFar(camera, 1.0f, 0.0f);
    camera.SetNearFar(1.0f, -8.0f);
    ExpectNearFar(camera, 1.0f, -8.0f);
}

TEST(CameraNode, AnyProjectionButZeroIsOrthographic)
{
    CameraNode camera(nullptr);
    camera.SetProjection(static_cast<CameraNode::CameraProjection>(0x80000000u));
    camera.SetNearFar(1.0f, 0.0f);
    ExpectNearFar(camera, 1.0f, 0.0f);
    camera.UpdateFrustum(1.0f, 1.0f);
    EXPECT_FALSE(camera.GetFrustum().perspective);
}

TEST(CameraNode, UpdateGraphInvertsTheGlobalWhetherChangedOrNot)
{
    Scene scene;
    CameraNode* const camera = scene.GetCameraNode();
    scene.UpdateGraph(1.0f, 1.0f);
    NodeParts::Global(*camera) = Product(At(1, 2, 3), TurnedAboutY(0.7));
    camera->UpdateGraph();
    EXPECT_TRUE(IsSame(camera->GetInvTransform(), Inverse(Product(At(1, 2, 3), TurnedAboutY(0.7)))));
}

TEST(CameraNode, OwnsItsRenderDataAndItsScreenMapping)
{
    int deaths = 0;
    int screenDeaths = 0;
    {
        CameraNode camera(nullptr);
        ExpectOwningSlot([&] { return camera.GetRenderData(); },
                         [&](Object* data) { camera.SetRenderData(data); });
        camera.SetRenderData(Counted(deaths));
        camera.SetScreenMapping(new NotedScreen(&screenDeaths));
    }
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(screenDeaths, 1);
}

TEST(CameraNode, ReplacingAScreenMappingHandsTheOldOneBack)
{
    int deaths = 0;
    CameraNode camera(nullptr);
    auto first = std::make_unique<NotedScreen>(&deaths);
    camera.SetScreenMapping(first.get());
    camera.SetScreenMapping(first.get());
    EXPECT_EQ(deaths, 0);
    camera.SetScreenMapping(new NotedScreen);
    EXPECT_EQ(deaths, 0);
    first.reset();
    EXPECT_EQ(deaths, 1);
}

TEST_F(TurnedCamera, PerspectiveFrustumIsBuiltInWorldSpace)
{
    camera.UpdateFrustum(200.0f, 100.0f);
    EXPECT_EQ(camera.screenWidth, 200.0f);
    EXPECT_EQ(camera.screenHeight, 100.0f);
    const Frustum& frustum = camera.GetFrustum();
    EXPECT_TRUE(frustum.perspective);
    EXPECT_TRUE(IsNear(frustum.position, Vector(10, 20, 30)));
    EXPECT_TRUE(IsNear(frustum.direction, Vector(-1, 0, 0)));

    // tanV = 0.5 and tanH = 1: the sides stand at 45 degrees.
    const float half = std::sqrt(0.5f);
    const float unit = 1.0f / std::sqrt(1.25f);
    EXPECT_TRUE(IsNear(frustum.leftNormal, Vector(-half, 0, half)));
    EXPECT_TRUE(IsNear(frustum.rightNormal, Vector(half, 0, half)));
    EXPECT_TRUE(IsNear(frustum.topNormal, Vector(0, unit, 0.5f * unit)));
    EXPECT_TRUE(IsNear(frustum.bottomNormal, Vector(0, -unit, 0.5f * unit)));
    EXPECT_TRUE(IsNear(frustum.leftPlane.normal, Direction(-half, -half, 0)));
    EXPECT_TRUE(IsNear(frustum.rightPlane.normal, Direction(-half, half, 0)));
    EXPECT_TRUE(IsNear(frustum.topPlane.normal, Direction(-0.5f * unit, 0, unit)));
    EXPECT_TRUE(IsNear(frustum.bottomPlane.normal, Direction(-0.5f * unit, 0, -unit)));
    for (const Plane* const plane :
         {&frustum.leftPlane, &frustum.topPlane, &frustum.rightPlane, &frustum.bottomPlane})
    {
        EXPECT_TRUE(IsNear(plane->point, Vector(10, 20, 30)));
    }
}

TEST_F(TurnedCamera, OnAnUprightScreenTheAngleSpansTheWidth)
{
    camera.UpdateFrustum(100.0f, 200.0f);
    const float half = std::sqrt(0.5f);
    const float unit = 1.0f / std::sqrt(1.25f);
    EXPECT_TRUE(IsNear(camera.GetFrustum().rightNormal, Vector(unit, 0, 0.5f * unit)));
    EXPECT_TRUE(IsNear(camera.GetFrustum().topNormal, Vector(0, half, half))) << "and the height is larger";

    CameraParts::FovOnSmallerSide(camera) = false;
    camera.UpdateFrustum(100.0f, 200.0f);
    EXPECT_TRUE(IsNear(camera.GetFrustum().topNormal, Vector(0, unit, 0.5f * unit)));
    const float narrow = 1.0f / std::sqrt(1.0625f);
    EXPECT_TRUE(IsNear(camera.GetFrustum().rightNormal, Vector(narrow, 0, 0.25f * narrow)));
}

TEST_F(TurnedCamera, OrthographicFrustumIsABoxOfTheDistanceToTheTarget)
{
    camera.SetProjection(orthographic);
    camera.UpdateFrustum(200.0f, 100.0f);
    const Frustum& frustum = camera.GetFrustum();
    EXPECT_FALSE(frustum.perspective);
    EXPECT_TRUE(IsNear(frustum.leftNormal, Vector(-1, 0, 0), 0.0f));
    EXPECT_TRUE(IsNear(frustum.topNormal, Vector(0, 1, 0), 0.0f));
    EXPECT_TRUE(IsNear(frustum.rightNormal, Vector(1, 0, 0), 0.0f));
    EXPECT_TRUE(IsNear(frustum.bottomNormal, Vector(0, -1, 0), 0.0f));
    // Half the height is 0.5 * 40 = 20, half the width twice that.
    EXPECT_TRUE(IsNear(frustum.leftPlane.point, World(0, -40, 0), 1e-4f));
    EXPECT_TRUE(IsNear(frustum.rightPlane.point, World(0, 40, 0), 1e-4f));
    EXPECT_TRUE(IsNear(frustum.topPlane.point, World(0, 0, 20), 1e-4f));
    EXPECT_TRUE(IsNear(frustum.bottomPlane.point, World(0, 0, -20), 1e-4f));
    EXPECT_TRUE(IsNear(frustum.leftPlane.normal, Direction(0, -1, 0)));
    EXPECT_TRUE(IsNear(frustum.rightPlane.normal, Direction(0, 1, 0)));
    EXPECT_TRUE(IsNear(frustum.topPlane.normal, Direction(0, 0, 1)));
    EXPECT_TRUE(IsNear(frustum.bottomPlane.normal, Direction(0, 0, -1)));

    // An upright screen does not turn the sides round.
    camera.UpdateFrustum(100.0f, 200.0f);
    EXPECT_TRUE(IsNear(frustum.rightPlane.point, World(0, 10, 0), 1e-4f));
    EXPECT_TRUE(IsNear(frustum.topPlane.point, World(0, 0, 20), 1e-4f));
}

TEST_F(TurnedCamera, ZeroScreenGivesNumbersThatAreNotFinite)
{
    camera.UpdateFrustum(0.0f, 0.0f);
    EXPECT_TRUE(std::isnan(camera.GetFrustum().leftNormal.x));
    Vector out;
    camera.WorldPosToScreenPos(World(5, 0, 0), out);
    EXPECT_FALSE(std::isfinite(out.x));
}

TEST_F(TurnedCamera, GetPlanesGivesLeftRightTopBottom)
{
    camera.UpdateFrustum(200.0f, 100.0f);
    Plane planes[4];
    camera.GetPlanes(planes);
    const Frustum& frustum = camera.GetFrustum();
    const Plane* const expected[4] = {&frustum.leftPlane, &frustum.rightPlane, &frustum.topPlane,
                                      &frustum.bottomPlane};
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_TRUE(IsNear(planes[i].normal, expected[i]->normal, 0.0f)) << i;
        EXPECT_TRUE(IsNear(planes[i].point, expected[i]->point, 0.0f)) << i;
    }
    // The storage has the top before the right.
    EXPECT_LT(&frustum.leftPlane, &frustum.topPlane);
    EXPECT_LT(&frustum.topPlane, &frustum.rightPlane);
    EXPECT_LT(&frustum.rightPlane, &frustum.bottomPlane);
}

struct OutsideCase
{
    const char* label;
    CameraNode::CameraProjection projection;
    float forward, right, up, tolerance;
    bool outside;
};

void PrintTo(const OutsideCase& given, std::ostream* out)
{
    *out << given.label;
}

/// On a screen of 200 x 100 the perspective sides stand at 45 degrees; the orthographic sides
/// are 40 and 20 away.
class SphereBeforeCamera : public TurnedCamera, public ::testing::WithParamInterface<OutsideCase>
{
};

TEST_P(SphereBeforeCamera, IsOutsideAsStated)
{
    const OutsideCase& given = GetParam();
    camera.SetProjection(given.projection);
    camera.UpdateFrustum(200.0f, 100.0f);
    const Vector point = World(given.forward, given.right, given.up);
    EXPECT_EQ(camera.IsOutside(point, given.tolerance), given.outside);
    EXPECT_EQ(camera.GetFrustum().IsOutside(point, given.tolerance), given.outside);
}

// A point 10 past a side at 45 degrees is 7.07 away from it.
const OutsideCase outsideCases[] = {
    {"Ahead", perspective, 10, 0, 0, 0, false},
    {"JustInsideTheLeft", perspective, 10, -9.99f, 0, 0, false},
    {"JustOutsideTheLeft", perspective, 10, -10.01f, 0, 0, true},
    {"JustInsideTheRight", perspective, 10, 9.99f, 0, 0, false},
    {"JustOutsideTheRight", perspective, 10, 10.01f, 0, 0, true},
    {"JustInsideTheTop", perspective, 10, 0, 4.99f, 0, false},
    {"JustOutsideTheTop", perspective, 10, 0, 5.01f, 0, true},
    {"JustInsideTheBottom", perspective, 10, 0, -4.99f, 0, false},
    {"JustOutsideTheBottom", perspective, 10, 0, -5.01f, 0, true},
    {"SphereReachesIn", perspective, 10, 20, 0, 7.08f, false},
    {"SphereStaysOut", perspective, 10, 20, 0, 7.06f, true},
    {"BehindWithinTheTolerance", perspective, -1, 0, 0, 1.01f, false},
    {"BehindByMoreThanTheTolerance", perspective, -1, 0, 0, 0.99f, true},
    {"OrthographicBehind", orthographic, -1000, 0, 0, 0, false},
    {"OrthographicJustInsideTheLeft", orthographic, 5, -39.99f, 0, 0, false},
    {"OrthographicJustOutsideTheLeft", orthographic, 5, -40.01f, 0, 0, true},
    {"OrthographicJustInsideTheRight", orthographic, 5, 39.99f, 0, 0, false},
    {"OrthographicJustOutsideTheRight", orthographic, 5, 40.01f, 0, 0, true},
    {"OrthographicJustOutsideTheTop", orthographic, 5, 0, 20.01f, 0, true},
    {"OrthographicJustOutsideTheBottom", orthographic, 5, 0, -20.01f, 0, true},
    {"OrthographicSphereReachesIn", orthographic, 5, 0, 25, 5.01f, false},
};

INSTANTIATE_TEST_SUITE_P(CameraNode, SphereBeforeCamera, ::testing::ValuesIn(outsideCases),
                         [](const auto& info) { return info.param.label; });

/// Near the apex the sides alone let a point behind through.
TEST_F(TurnedCamera, BehindTheEyeIsOutsideOnlyPastTheToleranceThoughAllSidesHoldIt)
{
    camera.UpdateFrustum(200.0f, 100.0f);
    Frustum frustum = camera.GetFrustum();
    const Vector behind = World(-1, 0, 0);
    for (const Plane* const plane :
         {&frustum.leftPlane, &frustum.topPlane, &frustum.rightPlane, &frustum.bottomPlane})
    {
        EXPECT_FALSE(plane->IsOutside(behind, 0.95f));
    }
    EXPECT_TRUE(frustum.IsOutside(behind, 0.95f));
    EXPECT_FALSE(frustum.IsOutside(behind, 1.05f));
    frustum.perspective = false;
    EXPECT_FALSE(frustum.IsOutside(behind, 0.95f));
}

TEST_F(TurnedCamera, SyncViewSeesWhatTheOtherSees)
{
    camera.SetProjection(orthographic);
    camera.UpdateFrustum(200.0f, 100.0f);
    CameraNode mine(nullptr);
    mine.SetLocal(At(1, 1, 1));
    mine.GetGlobalMatrix();
    mine.GetGlobalMatrix();
    EXPECT_EQ(mine.GetGlobalNormalMatrix().m[0], 1.0f);
    mine.SyncView(&camera);
    ExpectNearFar(mine, 1.0f, 100.0f);
    EXPECT_EQ(mine.GetFOV(), camera.GetFOV());
    EXPECT_EQ(mine.GetProjection(), orthographic);
    EXPECT_EQ(mine.GetDistanceToTarget(), 40.0f);
    EXPECT_TRUE(IsSame(mine.GetGlobal(), camera.GetGlobal()));
    EXPECT_TRUE(IsSame(mine.GetInvTransform(), camera.GetInvTransform()));
    EXPECT_TRUE(IsSame(mine.GetLocal(), At(1, 1, 1))) << "its place in the tree stays";
    EXPECT_EQ(mine.screenWidth, 200.0f);
    EXPECT_EQ(mine.screenHeight, 100.0f);
    EXPECT_TRUE(IsNear(mine.GetFrustum().leftPlane.point, camera.GetFrustum().leftPlane.point, 0.0f));
    EXPECT_EQ(mine.GetGlobalMatrix()->m[12], 10.0f) << "the cached matrix was marked";
    EXPECT_NEAR(mine.GetGlobalNormalMatrix().m[0], 0.0f, 1e-6f) << "and that of the normals";
}

TEST_F(TurnedCamera, SyncViewFromACameraWithoutARangeTakesTheDefaultsAndLeavesTheSource)
{
    for (const auto& [nearValue, farValue] : {std::pair(4.0f, 4.0f), std::pair(5.0f, 4.0f)})
    {
        camera.SetNearFar(nearValue, farValue);
        CameraNode mine(nullptr);
        mine.SyncView(&camera);
        ExpectNearFar(mine, 0.1f, 1000.0f);
        ExpectNearFar(camera, nearValue, farValue);
    }
}

TEST_F(TurnedCamera, SyncViewWithItselfOrNullIsHarmless)
{
    camera.UpdateFrustum(200.0f, 100.0f);
    camera.SyncView(nullptr);
    camera.SyncView(&camera);
    ExpectNearFar(camera, 1.0f, 100.0f);
    EXPECT_TRUE(IsNear(camera.GetFrustum().position, World(0, 0, 0)));
}

TEST(CameraNode, SyncNearFarGivesBothTheWiderRange)
{
    CameraNode a(nullptr);
    CameraNode b(nullptr);
    a.SetNearFar(1.0f, 10.0f);
    b.SetNearFar(2.0f, 20.0f);
    a.SyncNearFar(&b);
    ExpectNearFar(a, 1.0f, 20.0f);
    ExpectNearFar(b, 1.0f, 20.0f);
    a.SetNearFar(3.0f, 30.0f);
    a.SyncNearFar(&b);
    ExpectNearFar(a, 1.0f, 30.0f);
    ExpectNearFar(b, 1.0f, 30.0f);
    a.SyncNearFar(nullptr);
    ExpectNearFar(a, 1.0f, 30.0f);
}

TEST(CameraNode, DyingEndsItsUseByEveryScene)
{
    Scene scene;
    Scene other;
    CameraNode* const own = scene.GetCameraNode();
    CameraNode* const otherOwn = other.GetCameraNode();
    auto camera = std::make_unique<CameraNode>(&scene);
    scene.SetCamera(camera.get());
    other.SetCamera(camera.get());
    EXPECT_EQ(scene.GetCameraNode(), camera.get());
    camera.reset();
    EXPECT_EQ(scene.GetCameraNode(), own);
    EXPECT_EQ(other.GetCameraNode(), otherOwn);
}

TEST(CameraNode, DyingUnusedLeavesTheCameraInUse)
{
    Scene scene;
    CameraNode used(&scene);
    scene.SetCamera(&used);
    {
        CameraNode unused(&scene);
    }
    EXPECT_EQ(scene.GetCameraNode(), &used);
}

TEST(CameraNode, OutlivesItsScene)
{
    auto scene = std::make_unique<Scene>();
    CameraNode camera(scene.get());
    scene->SetCamera(&camera);
    scene.reset();
    EXPECT_EQ(camera.GetScene(), nullptr);
    camera.SetLocal(At(1, 2, 3));
    camera.UpdateGraph();
    camera.UpdateFrustum(10.0f, 10.0f);
}

TEST(CameraNode, VirtualsStandInTheirOrder)
{
    EXPECT_EQ(VirtualSlot(&IScreen::WorldToScreen), 1);
    EXPECT_EQ(VirtualSlot(&IScreen::ScreenToRay), 2);
    EXPECT_EQ(VirtualSlot(&CameraNode::UpdateGraph), VirtualSlot(&Node::UpdateGraph));
    EXPECT_EQ(VirtualSlot(&CameraNode::UpdateFrustum), -1);
    EXPECT_EQ(VirtualSlot(&CameraNode::CreateRay), -1);
}

TEST(CameraNode, MayDieAfterASceneThatUsedItWentFirst)
{
    Scene scene;
    auto* const camera = new CameraNode(&scene);
    {
        Scene other;
        other.SetCamera(camera);
        other.SetCamera(camera);
    }
    delete camera;
}

} // namespace
} // namespace OV
