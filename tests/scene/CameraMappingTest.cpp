#include "orvane/scene/CameraNode.h"

#include "tests/scene/TurnedCamera.h"

namespace OV
{
namespace
{

using namespace Test;

TEST_F(TurnedCamera, RayThroughTheMiddleOfAPerspectiveViewRunsDownTheAxis)
{
    camera.UpdateFrustum(200.0f, 100.0f);
    Vector start, end;
    camera.CreateRay(0.5f, 0.5f, start, end);
    EXPECT_TRUE(IsNear(start, World(0, 0, 0)));
    EXPECT_TRUE(IsNear(end, World(200, 0, 0), 1e-3f)) << "twice the far distance away";
}

TEST_F(TurnedCamera, RayThroughACornerOfAPerspectiveView)
{
    camera.UpdateFrustum(200.0f, 100.0f);
    Vector start, end;
    camera.CreateRay(1.0f, 0.0f, start, end);
    // Right by tanH = 1, up by tanV = 0.5: the length of (1, 0.5, -1) is 1.5.
    EXPECT_TRUE(IsNear(start, World(0, 0, 0)));
    EXPECT_TRUE(IsNear(end, World(200.0f / 1.5f, 200.0f / 1.5f, 100.0f / 1.5f), 1e-3f));
    camera.CreateRay(0.0f, 1.0f, start, end);
    EXPECT_TRUE(IsNear(end, World(200.0f / 1.5f, -200.0f / 1.5f, -100.0f / 1.5f), 1e-3f));

    camera.UpdateFrustum(100.0f, 200.0f);
    camera.CreateRay(1.0f, 0.0f, start, end);
    EXPECT_TRUE(IsNear(end, World(200.0f / 1.5f, 100.0f / 1.5f, 200.0f / 1.5f), 1e-3f)) << "upright";
    CameraParts::FovOnSmallerSide(camera) = false;
    camera.CreateRay(1.0f, 0.5f, start, end);
    const float length = std::sqrt(1.0625f);
    EXPECT_TRUE(IsNear(end, World(200.0f / length, 50.0f / length, 0), 1e-3f));
}

TEST_F(TurnedCamera, RayOfAPerspectiveViewIsScaledByTheGlobalTransform)
{
    camera.UpdateFrustum(100.0f, 100.0f);
    NodeParts::Global(camera) = Product(At(10, 20, 30), Scaled(2, 2, 3));
    Vector start, end;
    camera.CreateRay(0.5f, 0.5f, start, end);
    EXPECT_TRUE(IsNear(end, Vector(10, 20, 30 - 600), 1e-3f));
}

TEST_F(TurnedCamera, RayOfAnOrthographicViewIsParallelToTheAxis)
{
    camera.SetProjection(orthographic);
    camera.UpdateFrustum(200.0f, 100.0f);
    Vector start, end;
    camera.CreateRay(1.0f, 0.25f, start, end);
    EXPECT_TRUE(IsNear(start, World(0, 40, 10), 1e-4f));
    EXPECT_TRUE(IsNear(end, World(200, 40, 10), 1e-3f));

    camera.SetNearFar(-5.0f, 100.0f);
    camera.CreateRay(1.0f, 0.25f, start, end);
    EXPECT_TRUE(IsNear(start, World(-5, 40, 10), 1e-4f)) << "begins behind the camera by the negative near";
    EXPECT_TRUE(IsNear(end, World(200, 40, 10), 1e-3f));
}

TEST_F(TurnedCamera, RayOfAPerspectiveViewWithoutAScreenTakesTheOrthographicWay)
{
    camera.screenWidth = 0.0f;
    camera.screenHeight = 100.0f;
    Vector start, end;
    camera.CreateRay(1.0f, 0.0f, start, end);
    EXPECT_TRUE(IsNear(start, World(0, 0, 20), 1e-4f));
    EXPECT_TRUE(IsNear(end, World(200, 0, 20), 1e-3f));

    camera.screenWidth = 100.0f;
    camera.screenHeight = 0.0f;
    camera.CreateRay(1.0f, 0.0f, start, end);
    EXPECT_FALSE(std::isfinite(start.z)) << "the width divided by no height";
}

TEST_F(TurnedCamera, RayMendsNearPastFarForGood)
{
    camera.UpdateFrustum(100.0f, 100.0f);
    camera.SetNearFar(5.0f, 4.0f);
    Vector start, end;
    camera.CreateRay(0.5f, 0.5f, start, end);
    ExpectNearFar(camera, 0.1f, 1000.0f);
    EXPECT_TRUE(IsNear(end, World(2000, 0, 0), 1e-2f));
    camera.SetNearFar(4.0f, 4.0f);
    camera.CreateRay(0.5f, 0.5f, start, end);
    ExpectNearFar(camera, 4.0f, 4.0f);
}

TEST_F(TurnedCamera, ScreenMappingReplacesTheRay)
{
    auto* const screen = new NotedScreen;
    camera.SetScreenMapping(screen);
    camera.SetNearFar(5.0f, 4.0f);
    Vector start, end;
    camera.CreateRay(0.25f, 0.75f, start, end);
    EXPECT_EQ(screen->calls, 1);
    EXPECT_EQ(screen->lastX, 0.25f);
    EXPECT_EQ(screen->lastY, 0.75f);
    EXPECT_TRUE(screen->lastFlag);
    EXPECT_TRUE(IsNear(start, Vector(1, 2, 3), 0.0f));
    EXPECT_TRUE(IsNear(end, Vector(4, 5, 6), 0.0f));
    ExpectNearFar(camera, 5.0f, 4.0f);
    CameraParts::FovOnSmallerSide(camera) = false;
    camera.CreateRay(0.25f, 0.75f, start, end);
    EXPECT_FALSE(screen->lastFlag);
}

TEST_F(TurnedCamera, ScreenMappingReplacesTheScreenPosition)
{
    auto* const screen = new NotedScreen;
    camera.SetScreenMapping(screen);
    camera.screenWidth = 320.0f;
    camera.screenHeight = 200.0f;
    Vector out;
    camera.WorldPosToScreenPos(Vector(1, 2, 3), out);
    EXPECT_EQ(screen->calls, 1);
    EXPECT_TRUE(IsNear(screen->lastWorld, Vector(1, 2, 3), 0.0f));
    EXPECT_EQ(screen->lastWidth, 320.0f);
    EXPECT_EQ(screen->lastHeight, 200.0f);
    EXPECT_TRUE(IsNear(out, Vector(7, 8, 9), 0.0f));
    camera.SetScreenMapping(nullptr);
    camera.WorldPosToScreenPos(World(10, 0, 0), out);
    EXPECT_EQ(screen->calls, 1);
    EXPECT_NEAR(out.x, 160.0f, 1e-3f);
    delete screen;
}

TEST_F(TurnedCamera, PerspectiveScreenPositionIsInPixelsFromTheTopLeft)
{
    camera.UpdateFrustum(200.0f, 100.0f);
    Vector out;
    camera.WorldPosToScreenPos(World(10, 0, 0), out);
    EXPECT_NEAR(out.x, 100.0f, 1e-3f);
    EXPECT_NEAR(out.y, 50.0f, 1e-3f);
    camera.WorldPosToScreenPos(World(10, 5, 2.5f), out);
    EXPECT_NEAR(out.x, 150.0f, 1e-3f) << "half of tanH = 1 to the right";
    EXPECT_NEAR(out.y, 25.0f, 1e-3f) << "half of tanV = 0.5 up";
    camera.WorldPosToScreenPos(World(10, -10, -5), out);
    EXPECT_NEAR(out.x, 0.0f, 1e-3f);
    EXPECT_NEAR(out.y, 100.0f, 1e-3f);
}

TEST_F(TurnedCamera, PerspectiveScreenPositionAlwaysActsAsIfTheAngleWereOnTheSmallerSide)
{
    for (const bool flag : {true, false})
    {
        CameraParts::FovOnSmallerSide(camera) = flag;
        camera.UpdateFrustum(100.0f, 200.0f);
        Vector out;
        camera.WorldPosToScreenPos(World(10, 5, 10), out);
        EXPECT_NEAR(out.x, 100.0f, 1e-3f) << flag;
        EXPECT_NEAR(out.y, 0.0f, 1e-3f) << flag;
    }
}

TEST_F(TurnedCamera, ScreenDepthIsMinusTwoAtTheNearPlaneAndZeroAtTheFarPlane)
{
    camera.UpdateFrustum(200.0f, 100.0f);
    Vector out;
    camera.WorldPosToScreenPos(World(1, 0, 0), out);
    EXPECT_NEAR(out.z, -2.0f, 1e-5f);
    camera.WorldPosToScreenPos(World(100, 0, 0), out);
    EXPECT_NEAR(out.z, 0.0f, 1e-5f);
    camera.WorldPosToScreenPos(World(2, 1, 0.5f), out);
    EXPECT_NEAR(out.z, (101.0f - 100.0f) / 99.0f - 1.0f, 1e-4f);
}

TEST_F(TurnedCamera, OrthographicScreenPositionHasNoDepth)
{
    camera.SetProjection(orthographic);
    camera.UpdateFrustum(200.0f, 100.0f);
    Vector out(1, 1, 1);
    camera.WorldPosToScreenPos(World(77, 0, 0), out);
    EXPECT_TRUE(IsNear(out, Vector(100, 50, 0), 1e-3f));
    camera.WorldPosToScreenPos(World(-5, 20, 10), out);
    EXPECT_TRUE(IsNear(out, Vector(150, 25, 0), 1e-3f));
    camera.UpdateFrustum(100.0f, 200.0f);
    camera.WorldPosToScreenPos(World(0, 10, 20), out);
    EXPECT_TRUE(IsNear(out, Vector(100, 0, 0), 1e-3f)) << "the height carries the angle, upright too";
}

TEST_F(TurnedCamera, PointInTheCameraPlaneHasNoFinitePosition)
{
    NodeParts::Global(camera) = Transform();
    camera.UpdateGraph();
    camera.UpdateFrustum(200.0f, 100.0f);
    Vector out;
    camera.WorldPosToScreenPos(Vector(1, 2, 0), out);
    EXPECT_FALSE(std::isfinite(out.x));
    EXPECT_FALSE(std::isfinite(out.z));
}

TEST_F(TurnedCamera, ScreenPositionMayOverwriteTheWorldPosition)
{
    camera.UpdateFrustum(200.0f, 100.0f);
    for (const auto projection : {perspective, orthographic})
    {
        camera.SetProjection(projection);
        Vector expected;
        camera.WorldPosToScreenPos(World(8, 3, 1), expected);
        Vector point = World(8, 3, 1);
        camera.WorldPosToScreenPos(point, point);
        EXPECT_TRUE(IsNear(point, expected, 0.0f));
    }
}

TEST_F(TurnedCamera, RayAndScreenPositionAgree)
{
    for (const auto projection : {perspective, orthographic})
    {
        for (const auto& [width, height] : {std::pair(200.0f, 100.0f), std::pair(100.0f, 200.0f)})
        {
            camera.SetProjection(projection);
            camera.UpdateFrustum(width, height);
            Vector start, end, out;
            camera.CreateRay(0.3f, 0.8f, start, end);
            camera.WorldPosToScreenPos(end, out);
            EXPECT_NEAR(out.x, 0.3f * width, 1e-2f);
            EXPECT_NEAR(out.y, 0.8f * height, 1e-2f);
        }
    }
}

} // namespace
} // namespace OV
