#include "orvane_host/view/OrbitCamera.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <tuple>

using namespace OV;
using namespace OV::Host;

namespace
{

using Point = QGM::Point3d;

constexpr double kPi = 3.14159265358979323846;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kWidth = 1000.0;
constexpr double kHeight = 600.0;

OrbitCamera MakeCamera(bool orthographic, UpAxis axis = UpAxis::Y)
{
    OrbitCamera camera;
    camera.SetScreen(kWidth, kHeight);
    camera.SetUpAxis(axis);
    camera.SetOrthographic(orthographic);
    camera.SetModel({-4, -1, -2}, {6, 5, 3});
    camera.LookFrom(NamedView::Iso);
    return camera;
}

/// The pixel of a point through the matrices of a camera node, in double.
struct Pixel
{
    double x;
    double y;
    double depth;
};

Pixel Project(const CameraNode& camera, const Point& point)
{
    Transform inverse;
    inverse.Invert(camera.GetGlobal());
    Point p = point;
    p *= inverse.GetTransf3d();
    const double t = std::tan(double(camera.GetFOV()));
    const bool isPerspective = camera.GetProjection() == CameraNode::Perspective;
    const double top = t * (isPerspective ? -p.z : camera.GetDistanceToTarget());
    const double scale = 0.5 * kHeight / top;
    return {0.5 * kWidth + p.x * scale, 0.5 * kHeight - p.y * scale, -p.z};
}

Pixel PixelOf(const OrbitCamera& camera, const Point& point)
{
    Pixel pixel{kNaN, kNaN, 0.0};
    EXPECT_TRUE(camera.PixelOf(point, pixel.x, pixel.y));
    return pixel;
}

bool IsInside(const OrbitCamera& camera)
{
    const Point& target = camera.GetState().target;
    return std::max({std::fabs(target.x), std::fabs(target.y), std::fabs(target.z)}) < 6e5;
}

double Distance(const Point& a, const Point& b)
{
    return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

void ExpectSound(const OrbitCamera& camera)
{
    const OrbitState& state = camera.GetState();
    const Point eye = camera.GetEye();
    const QGM::Vector3d up = camera.GetUp();
    for (const double number : {state.target.x, state.target.y, state.target.z, state.azimuth,
                                state.elevation, state.distance, eye.x, eye.y, eye.z, up.x, up.y, up.z})
    {
        ASSERT_TRUE(std::isfinite(number));
    }
    ASSERT_GT(state.distance, 0.0);
    ASSERT_LE(std::fabs(state.elevation), kPi / 2.0);
    ASSERT_LE(std::fabs(state.azimuth), kPi + 1e-12);
    // Nothing turns over: the up of the picture never points down.
    ASSERT_GE(camera.GetUpAxis() == UpAxis::Z ? up.z : up.y, -1e-12);
}

class OrbitCameraBoth : public ::testing::TestWithParam<std::tuple<bool, UpAxis>>
{
protected:
    OrbitCamera camera = MakeCamera(std::get<0>(GetParam()), std::get<1>(GetParam()));
    std::mt19937 random{5};

    double Uniform(double low, double high)
    {
        return std::uniform_real_distribution<double>(low, high)(random);
    }
};

} // namespace

TEST_P(OrbitCameraBoth, StepsOfAnyKindKeepWhatIsUnderThePixel)
{
    int held = 0;
    for (int step = 0; step < 100000; ++step)
    {
        const double x = Uniform(0.0, kWidth);
        const double y = Uniform(0.0, kHeight);
        const double toX = Uniform(0.0, kWidth);
        const double toY = Uniform(0.0, kHeight);
        const Point grabbed = camera.PointAt(x, y);
        const int kind = static_cast<int>(random() % 5);
        Pixel expected{x, y, 0.0};
        Point point = grabbed;
        if (kind == 0)
        {
            camera.Orbit(Uniform(-300.0, 300.0), Uniform(-300.0, 300.0));
            point = camera.GetState().target;
            expected = {0.5 * kWidth, 0.5 * kHeight, 0.0};
        }
        else if (kind == 1)
        {
            camera.Pan(x, y, toX, toY);
            expected = {toX, toY, 0.0};
        }
        else if (kind == 2)
        {
            camera.Zoom(std::exp(Uniform(-1.0, 1.0)), x, y);
        }
        else
        {
            // What picking finds lies nearer or farther than the target.
            const double share = Uniform(0.2, 3.0);
            const Point eye = camera.GetEye();
            point = Point(eye.x + (grabbed.x - eye.x) * share, eye.y + (grabbed.y - eye.y) * share,
                          eye.z + (grabbed.z - eye.z) * share);
            expected = PixelOf(camera, point);
            if (kind == 3)
            {
                ASSERT_TRUE(camera.PanPoint(point, toX, toY));
                expected = {toX, toY, 0.0};
            }
            else
            {
                camera.ZoomAt(std::exp(Uniform(-1.0, 1.0)), point);
            }
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSound(camera)) << step;
        if (IsInside(camera))
        {
            const Pixel pixel = PixelOf(camera, point);
            ASSERT_NEAR(pixel.x, expected.x, 1e-3) << step << " of kind " << kind;
            ASSERT_NEAR(pixel.y, expected.y, 1e-3) << step << " of kind " << kind;
            ++held;
        }
        if (step % 50 == 49)
        {
            camera.LookFrom(static_cast<NamedView>(random() % 7));
        }
    }
    EXPECT_GT(held, 95000);
}

TEST_P(OrbitCameraBoth, TheCameraNodeSeesTheSame)
{
    Scene scene;
    CameraNode& node = *scene.GetCameraNode();
    for (int step = 0; step < 2000; ++step)
    {
        camera.Orbit(Uniform(-300.0, 300.0), Uniform(-300.0, 300.0));
        camera.Zoom(std::exp(Uniform(-0.7, 0.7)), Uniform(0.0, kWidth), Uniform(0.0, kHeight));
        camera.WriteTo(node);
        const Point point = camera.PointAt(Uniform(0.0, kWidth), Uniform(0.0, kHeight));
        const Pixel expected = PixelOf(camera, point);
        const Pixel pixel = Project(node, point);
        ASSERT_NEAR(pixel.x, expected.x, 1e-3) << step;
        ASSERT_NEAR(pixel.y, expected.y, 1e-3) << step;
        float nearest = 0.0f;
        float farthest = 0.0f;
        node.GetNearFar(nearest, farthest);
        ASSERT_LT(nearest, farthest);
        for (int corner = 0; corner < 8; ++corner)
        {
            const double depth =
                Project(node, Point(corner & 1 ? -4 : 6, corner & 2 ? -1 : 5, corner & 4 ? -2 : 3)).depth;
            ASSERT_LE(depth, farthest * (1 + 1e-5)) << step;
            ASSERT_TRUE(depth >= nearest - 1e-5 * std::fabs(nearest) ||
                        (!camera.IsOrthographic() && depth < 2e-4 * farthest))
                << step;
        }

        OrbitCamera read = MakeCamera(false, camera.GetUpAxis());
        read.SetFov(camera.GetFov());
        ASSERT_TRUE(read.ReadFrom(node));
        EXPECT_EQ(read.IsOrthographic(), camera.IsOrthographic());
        const Pixel again = PixelOf(read, point);
        ASSERT_NEAR(again.x, expected.x, 2e-3) << step;
        ASSERT_NEAR(again.y, expected.y, 2e-3) << step;
        if (step % 20 == 19)
        {
            camera.LookFrom(static_cast<NamedView>(random() % 7));
        }
    }
}

TEST_P(OrbitCameraBoth, NamedViewsAreThoseOfViewFit)
{
    Scene scene;
    for (int view = 0; view < 7; ++view)
    {
        SCOPED_TRACE(view);
        ViewFitOptions options;
        options.aspect = static_cast<float>(kWidth / kHeight);
        options.fovDegrees = 35.0f;
        options.orthographic = camera.IsOrthographic();
        options.upAxis = camera.GetUpAxis();
        CameraNode& expected = *scene.GetCameraNode();
        ViewFit::Frame(expected, {-4, -1, -2}, {6, 5, 3}, static_cast<NamedView>(view), options);
        camera.LookFrom(static_cast<NamedView>(view));
        CameraNode written(&scene);
        camera.WriteTo(written);
        for (int corner = 0; corner < 8; ++corner)
        {
            const Point point(corner & 1 ? -4 : 6, corner & 2 ? -1 : 5, corner & 4 ? -2 : 3);
            const Pixel is = Project(written, point);
            const Pixel should = Project(expected, point);
            EXPECT_NEAR(is.x, should.x, 1e-2);
            EXPECT_NEAR(is.y, should.y, 1e-2);
            EXPECT_TRUE(is.x > 0.0 && is.x < kWidth && is.y > 0.0 && is.y < kHeight);
        }
    }
}

TEST_P(OrbitCameraBoth, WhatIsNoNamedViewIsTheFirst)
{
    for (const int view : {-1, 7, 1000000})
    {
        Scene scene;
        CameraNode fitted(&scene);
        CameraNode& first = *scene.GetCameraNode();
        ViewFit::Frame(first, {-4, -1, -2}, {6, 5, 3}, NamedView::Iso, ViewFitOptions());
        ViewFit::Frame(fitted, {-4, -1, -2}, {6, 5, 3}, static_cast<NamedView>(view), ViewFitOptions());
        EXPECT_EQ(fitted.GetGlobal().GetPosition(), first.GetGlobal().GetPosition());
        camera.LookFrom(NamedView::Top);
        camera.LookFrom(NamedView::Iso);
        const OrbitState state = camera.GetState();
        camera.LookFrom(static_cast<NamedView>(view));
        EXPECT_EQ(camera.GetState().azimuth, state.azimuth);
        EXPECT_EQ(camera.GetState().elevation, state.elevation);
    }
}

TEST_P(OrbitCameraBoth, ZoomEndsAtBothEnds)
{
    for (int i = 0; i < 1000; ++i)
    {
        camera.Zoom(3.0, 900.0, 100.0);
        ASSERT_NO_FATAL_FAILURE(ExpectSound(camera));
    }
    const double radius = 0.5 * std::hypot(10.0, 6.0, 5.0);
    EXPECT_GE(camera.GetState().distance, 1e-5 * radius);
    EXPECT_LE(camera.GetState().distance, 1e-3 * radius);
    Scene scene;
    camera.WriteTo(*scene.GetCameraNode());
    const Point target = camera.GetState().target;
    EXPECT_NEAR(Project(*scene.GetCameraNode(), target).x, 0.5 * kWidth, 1e-3);
    for (int i = 0; i < 1000; ++i)
    {
        camera.Zoom(0.2, 100.0, 500.0);
        ASSERT_NO_FATAL_FAILURE(ExpectSound(camera));
    }
    EXPECT_NEAR(camera.GetState().distance, 1e4 * radius, radius);
    for (const double factor : {1e300, 1e-300, std::numeric_limits<double>::denorm_min(), 1e308})
    {
        camera.Zoom(factor, 1.0, 2.0);
        ASSERT_NO_FATAL_FAILURE(ExpectSound(camera));
    }
}

TEST_P(OrbitCameraBoth, BadNumbersChangeNothing)
{
    const OrbitState before = camera.GetState();
    for (const double bad : {kNaN, kInfinity, -kInfinity})
    {
        camera.Orbit(bad, 0.0);
        camera.Orbit(0.0, bad);
        camera.Pan(bad, 0.0, 0.0, 0.0);
        camera.Pan(0.0, 0.0, 0.0, bad);
        camera.Zoom(bad, 1.0, 1.0);
        camera.Zoom(2.0, bad, 1.0);
        camera.ZoomAt(2.0, Point(0, bad, 0));
        EXPECT_FALSE(camera.PanPoint(Point(bad, 0, 0), 1.0, 1.0));
        camera.SetFov(bad);
        camera.SetScreen(bad, 5.0);
        camera.FrameBox(Vector(static_cast<float>(bad), 0, 0), Vector(1, 1, 1));
        EXPECT_FALSE(camera.Look(Vector(static_cast<float>(bad), 0, 0), Vector(), Vector(0, 1, 0)));
        OrbitState state = before;
        state.distance = bad;
        camera.SetState(state);
    }
    camera.Zoom(0.0, 1.0, 1.0);
    camera.Zoom(-1.0, 1.0, 1.0);
    camera.SetScreen(0.0, 5.0);
    EXPECT_FALSE(camera.Look(Vector(1, 2, 3), Vector(1, 2, 3), Vector(0, 1, 0)));
    EXPECT_EQ(Distance(camera.GetState().target, before.target), 0.0);
    EXPECT_EQ(camera.GetState().distance, before.distance);
    EXPECT_EQ(camera.GetState().azimuth, before.azimuth);
    EXPECT_EQ(camera.GetState().elevation, before.elevation);
    EXPECT_EQ(camera.GetFov(), 35.0);
}

INSTANTIATE_TEST_SUITE_P(Projections, OrbitCameraBoth,
                         ::testing::Combine(::testing::Bool(), ::testing::Values(UpAxis::Y, UpAxis::Z)),
                         [](const auto& info)
                         {
                             return std::string(std::get<0>(info.param) ? "Orthographic" : "Perspective") +
                                    (std::get<1>(info.param) == UpAxis::Z ? "ZUp" : "YUp");
                         });

TEST(OrbitCamera, ModelsOfAnySizeAreShownAsLargeAsOthers)
{
    for (const float size : {1e-3f, 1.0f, 1e9f, 1e12f, 1e14f})
    {
        SCOPED_TRACE(size);
        OrbitCamera camera;
        camera.SetScreen(1000.0, 600.0);
        camera.SetModel({-size, -size, -size}, {size, size, size});
        camera.FrameModel();
        double x = 0.0;
        double y = 0.0;
        ASSERT_TRUE(camera.PixelOf({0.0, size, 0.0}, x, y));
        OrbitCamera usual;
        usual.SetScreen(1000.0, 600.0);
        usual.FrameModel();
        double usualX = 0.0;
        double usualY = 0.0;
        ASSERT_TRUE(usual.PixelOf({0.0, 1.0, 0.0}, usualX, usualY));
        EXPECT_NEAR(x, usualX, 0.01);
        EXPECT_NEAR(y, usualY, 0.01);
    }
}

TEST(OrbitCamera, EyesStayWhereSettingsTakeThem)
{
    for (const float size : {1e9f, 1e12f, 1e15f})
    {
        SCOPED_TRACE(size);
        OrbitCamera camera;
        camera.SetScreen(1000.0, 600.0);
        camera.SetModel({-size, -size, -size}, {size, size, size});
        camera.FrameModel();
        for (int step = 0; step < 400; ++step)
        {
            camera.Orbit(70.0 * step, 30.0 * (step % 7) - 90.0);
            camera.Pan(900.0, 500.0, 0.0, 0.0);
            camera.Zoom(step % 10 == 9 ? 3.0 : 0.8, 13.0 * (step % 50), 400.0);
            const QGM::Point3d eye = camera.GetEye();
            const QGM::Point3d& target = camera.GetState().target;
            for (const double place : {eye.x, eye.y, eye.z, target.x, target.y, target.z})
            {
                ASSERT_LE(std::fabs(static_cast<float>(place)), 1e15) << step;
            }
            ASSERT_GT(camera.GetState().distance, 0.0);
        }
    }
    OrbitCamera camera;
    camera.SetModel({-1.1e15f, -1.0f, -1.0f}, {1.0f, 1.0f, 1.0f});
    EXPECT_EQ(camera.GetModelMiddle().x, 0.0) << "beyond, as none";
}

TEST(OrbitCamera, OrbitingStopsAtThePolesWithoutTurningOver)
{
    OrbitCamera camera = MakeCamera(false);
    camera.LookFrom(NamedView::Front);
    camera.Orbit(0.0, 1e6);
    EXPECT_EQ(camera.GetState().elevation, kPi / 2.0);
    const double azimuth = camera.GetState().azimuth;
    camera.Orbit(0.0, -0.25 * kHeight);
    EXPECT_NEAR(camera.GetState().elevation, kPi / 4.0, 1e-12);
    EXPECT_EQ(camera.GetState().azimuth, azimuth);
    camera.Orbit(0.0, -1e6);
    EXPECT_EQ(camera.GetState().elevation, -kPi / 2.0);
    // Dragging to the right brings the left side of the model to the front.
    camera.LookFrom(NamedView::Front);
    camera.Orbit(0.5 * kHeight, 0.0);
    EXPECT_NEAR(camera.GetState().azimuth, -kPi / 2.0, 1e-12);
}

TEST(OrbitCamera, BothProjectionsShowTheTargetInOneSize)
{
    OrbitCamera camera = MakeCamera(false);
    camera.Orbit(77.0, -31.0);
    const Point point = camera.PointAt(321.0, 123.0);
    camera.SetOrthographic(true);
    EXPECT_NEAR(PixelOf(camera, point).x, 321.0, 1e-9);
    EXPECT_NEAR(PixelOf(camera, point).y, 123.0, 1e-9);
}

TEST(OrbitCamera, LooksAlsoStraightDownAndUp)
{
    OrbitCamera camera = MakeCamera(false);
    for (const float height : {7.0f, -7.0f})
    {
        for (const Vector& up : {Vector(1, 0, 0), Vector(0, 0, -1), Vector(-1, 0, 1)})
        {
            ASSERT_TRUE(camera.Look({1, height, 1}, {1, 0, 1}, up));
            const QGM::Vector3d is = camera.GetUp();
            const double length = std::hypot(double(up.x), double(up.z));
            EXPECT_NEAR(is.x, up.x / length, 1e-9);
            EXPECT_NEAR(is.z, up.z / length, 1e-9);
            EXPECT_NEAR(camera.GetEye().y, height, 1e-9);
        }
    }
    ASSERT_TRUE(camera.Look({3, 4, 5}, {0, 0, 0}, {0, 1, 0}));
    EXPECT_NEAR(Distance(camera.GetEye(), Point(3, 4, 5)), 0.0, 1e-9);
}

TEST(OrbitCamera, PointsBehindTheEyeAreRefused)
{
    OrbitCamera camera = MakeCamera(false);
    camera.LookFrom(NamedView::Front);
    const Point eye = camera.GetEye();
    double x = 1.0;
    double y = 2.0;
    EXPECT_FALSE(camera.PixelOf(Point(eye.x, eye.y, eye.z + 1.0), x, y));
    EXPECT_FALSE(camera.PanPoint(Point(eye.x, eye.y, eye.z + 1.0), 3.0, 4.0));
    EXPECT_EQ(x, 1.0);
    camera.SetOrthographic(true);
    EXPECT_TRUE(camera.PixelOf(Point(eye.x, eye.y, eye.z + 1.0), x, y));
}

TEST(OrbitCamera, FramingKeepsTheDirection)
{
    for (const bool orthographic : {false, true})
    {
        OrbitCamera camera = MakeCamera(orthographic);
        camera.Orbit(123.0, 45.0);
        const OrbitState before = camera.GetState();
        camera.FrameBox({10, 11, 12}, {11, 13, 14});
        EXPECT_EQ(camera.GetState().azimuth, before.azimuth);
        EXPECT_EQ(camera.GetState().elevation, before.elevation);
        double widest = 0.0;
        for (int corner = 0; corner < 8; ++corner)
        {
            const Pixel pixel =
                PixelOf(camera, Point(corner & 1 ? 10 : 11, corner & 2 ? 11 : 13, corner & 4 ? 12 : 14));
            widest =
                std::max({widest, std::fabs(pixel.x / kWidth - 0.5), std::fabs(pixel.y / kHeight - 0.5)});
        }
        EXPECT_LT(widest, 0.5);
        EXPECT_GT(widest, 0.4);
    }
}

TEST(OrbitCamera, TurnsTheShorterWayAndArrivesGently)
{
    OrbitState from;
    from.azimuth = 3.0;
    from.elevation = -0.5;
    from.distance = 1.0;
    OrbitState to = from;
    to.azimuth = -3.0;
    to.elevation = 1.0;
    to.distance = 100.0;
    to.target = Point(1, 2, 3);
    const auto at = [&](double time) { return OrbitCamera::Between(from, to, time); };
    EXPECT_EQ(at(0.0).azimuth, 3.0);
    EXPECT_EQ(at(-1.0).azimuth, 3.0);
    EXPECT_EQ(at(1.0).azimuth, -3.0);
    EXPECT_EQ(at(7.0).distance, 100.0);
    EXPECT_EQ(at(kNaN).distance, 100.0);
    EXPECT_NEAR(at(0.5).distance, 10.0, 1e-9);
    EXPECT_NEAR(std::fabs(at(0.5).azimuth), kPi, 1e-9);
    EXPECT_NEAR(at(0.5).target.y, 1.0, 1e-9);
    // Over pi, not back through 0.
    for (double time = 0.0; time <= 1.0; time += 0.01)
    {
        EXPECT_GE(std::fabs(at(time).azimuth), 3.0 - 1e-9);
    }
    EXPECT_LT(at(0.01).target.x, 0.001);
    EXPECT_GT(at(0.99).target.x, 0.999);
}
