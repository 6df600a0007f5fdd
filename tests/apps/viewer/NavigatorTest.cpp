#include "apps/viewer/Navigator.h"

#include "orvane_host/present/Presentation.h"

#include <glm/geometric.hpp>
#include <gtest/gtest.h>

using namespace OV;
using namespace OV::ViewerApp;

namespace
{

/// At an empty model, which counts as a cube of edge 2 about the origin.
Navigator MakeNavigator()
{
    Host::PresentationSettings settings;
    settings.view.eye = Vector(0.0f, 0.0f, 10.0f);
    settings.view.target = Vector(0.0f, 0.0f, 0.0f);
    Host::Presentation presentation{std::unique_ptr<Scene>()};
    std::string error;
    EXPECT_TRUE(presentation.Apply(settings, error)) << error;
    Navigator navigator;
    navigator.SetPicture(800, 600);
    navigator.Follow(presentation);
    return navigator;
}

void ExpectNear(const glm::dvec2& left, const glm::dvec2& right)
{
    EXPECT_NEAR(left.x, right.x, 0.01);
    EXPECT_NEAR(left.y, right.y, 0.01);
}

} // namespace

TEST(Navigator, FollowsAPresentation)
{
    const Navigator navigator = MakeNavigator();
    EXPECT_NEAR(glm::distance(navigator.Forward(), glm::dvec3(0, 0, -1)), 0.0, 1e-6);
    EXPECT_NEAR(glm::distance(navigator.Right(), glm::dvec3(1, 0, 0)), 0.0, 1e-6);
    ExpectNear(*navigator.PixelOf({0, 0, 0}), {400, 300});
}

TEST(Navigator, WhatIsUnderThePointerStaysThere)
{
    const glm::dvec3 point(0.7, -0.4, 1.0);
    for (const Navigator::Drag drag : {Navigator::Drag::Orbit, Navigator::Drag::Pan})
    {
        Navigator navigator = MakeNavigator();
        const glm::dvec2 pixel = *navigator.PixelOf(point);
        navigator.BeginDrag(drag, pixel, point);
        const glm::dvec2 to = pixel + glm::dvec2(60, -35);
        navigator.DragTo(to);
        ExpectNear(*navigator.PixelOf(point), drag == Navigator::Drag::Pan ? to : pixel);
        navigator.DragTo(pixel);
        ExpectNear(*navigator.PixelOf({0, 0, 0}), {400, 300});
    }
    Navigator navigator = MakeNavigator();
    const glm::dvec2 pixel = *navigator.PixelOf(point);
    const double distance = navigator.GetCamera().GetState().distance;
    navigator.Zoom(3.0, point);
    ExpectNear(*navigator.PixelOf(point), pixel);
    EXPECT_LT(navigator.GetCamera().GetState().distance, distance * 0.7);
}

TEST(Navigator, ATurnEndsWhereItIsToEnd)
{
    Navigator navigator = MakeNavigator();
    const Host::OrbitState from = navigator.GetCamera().GetState();
    Host::OrbitState to = from;
    to.azimuth = 1.0;
    to.distance = 4.0;
    navigator.TurnTo(from, to);
    EXPECT_EQ(navigator.GetCamera().GetState().azimuth, from.azimuth);
    EXPECT_FALSE(navigator.Step(Navigator::TurnSeconds / 2.0));
    EXPECT_NEAR(navigator.GetCamera().GetState().azimuth, 0.5, 0.01);
    EXPECT_TRUE(navigator.IsTurning());
    EXPECT_TRUE(navigator.Step(Navigator::TurnSeconds));
    EXPECT_EQ(navigator.GetCamera().GetState().azimuth, 1.0);
    EXPECT_EQ(navigator.GetCamera().GetState().distance, 4.0);
    EXPECT_FALSE(navigator.IsTurning());
    EXPECT_FALSE(navigator.Step(1.0));
}

TEST(Navigator, UnitsOfAPixelAreThoseOfTheDepth)
{
    const Navigator navigator = MakeNavigator();
    const glm::dvec3 near(0, 0, 5);
    const double units = navigator.UnitsPerPixel(near);
    ExpectNear(*navigator.PixelOf(near + glm::dvec3(units * 10.0, 0, 0)), {410, 300});
    EXPECT_NEAR(navigator.UnitsPerPixel({0, 0, 0}), units * 2.0, 1e-6);
}
