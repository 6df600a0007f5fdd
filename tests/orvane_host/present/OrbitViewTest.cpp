#include "orvane_host/present/OrbitView.h"

#include "orvane_host/present/PresentationSettings.h"
#include "orvane_host/view/OrbitCamera.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace OV;
using namespace OV::Host;

namespace
{

OrbitCamera MakeCamera()
{
    OrbitCamera camera;
    camera.SetScreen(1000.0, 600.0);
    camera.SetModel({-4, -1, -2}, {6, 5, 3});
    return camera;
}

} // namespace

TEST(OrbitView, SettingsLeadBackToTheSamePicture)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<double> pixels(0.0, 600.0);
    for (int step = 0; step < 500; ++step)
    {
        OrbitCamera camera = MakeCamera();
        camera.SetUpAxis(step % 2 ? UpAxis::Z : UpAxis::Y);
        camera.SetOrthographic(step % 3 == 0);
        camera.SetFov(20.0 + step % 50);
        camera.LookFrom(static_cast<NamedView>(step % 7));
        if (step > 20)
        {
            camera.Orbit(pixels(random), pixels(random) - 300.0);
            camera.Pan(pixels(random), pixels(random), pixels(random), pixels(random));
        }
        PresentationSettings settings;
        WriteView(camera, settings.view);
        ASSERT_EQ(settings.Trouble(), "") << step;
        OrbitCamera again = MakeCamera();
        ReadView(settings.view, again);
        EXPECT_EQ(again.IsOrthographic(), camera.IsOrthographic());
        EXPECT_EQ(again.GetUpAxis(), camera.GetUpAxis());
        const QGM::Point3d point = camera.PointAt(200.0, 500.0);
        double x = 0.0;
        double y = 0.0;
        ASSERT_TRUE(again.PixelOf(point, x, y));
        // What float leaves of eye and target.
        EXPECT_NEAR(x, 200.0, 0.01) << step;
        EXPECT_NEAR(y, 500.0, 0.01) << step;
    }
}

TEST(OrbitView, WithoutAnEyeTheNamedViewShowsTheModel)
{
    ViewSettings view;
    view.named = NamedView::Top;
    view.orthographic = true;
    OrbitCamera camera = MakeCamera();
    ReadView(view, camera);
    EXPECT_NEAR(camera.GetState().elevation, 1.5707963, 1e-6);
    EXPECT_TRUE(camera.IsOrthographic());
    EXPECT_NEAR(camera.GetState().target.x, 1.0, 1e-6);
}

TEST(OrbitView, WithoutADirectionUpwardsAPlanStaysTurnedAsItWas)
{
    for (const UpAxis axis : {UpAxis::Y, UpAxis::Z})
    {
        ViewSettings view;
        view.upAxis = axis;
        view.target = Vector(2, 1, 0);
        view.eye = axis == UpAxis::Z ? Vector(2, 1, 9) : Vector(2, 9, 0);
        OrbitCamera camera = MakeCamera();
        OrbitState turned = camera.GetState();
        turned.azimuth = 1.0;
        camera.SetState(turned);
        ReadView(view, camera);
        EXPECT_EQ(camera.GetState().azimuth, 1.0);
        // The one that is told is taken.
        view.up = Vector(1, 0, 0);
        ReadView(view, camera);
        EXPECT_NEAR(std::abs(camera.GetState().azimuth), 1.5707963, 1e-6);
    }
}

TEST(OrbitView, WithoutATargetTheMiddleOfTheModelIsLookedAt)
{
    ViewSettings view;
    view.eye = Vector(1, 2, 20.5f);
    OrbitCamera camera = MakeCamera();
    ReadView(view, camera);
    EXPECT_NEAR(camera.GetState().target.y, 2.0, 1e-6);
    EXPECT_NEAR(camera.GetState().target.z, 0.5, 1e-6);
    EXPECT_NEAR(camera.GetState().distance, 20.0, 1e-6);
}
