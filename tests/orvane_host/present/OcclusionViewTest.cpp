#include "orvane_host/present/detail/OcclusionView.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

namespace OV::Host::Detail
{

namespace
{

/// Depth of a distance, as perspective puts it.
double DepthOf(double distance, double nearDistance, double farDistance)
{
    return farDistance / (farDistance - nearDistance) * (1.0 - nearDistance / distance);
}

struct OcclusionViewTest : ::testing::Test
{
    Scene scene;
    CameraNode& camera = *scene.GetCameraNode();
};

} // namespace

TEST_F(OcclusionViewTest, SharesDepthsWithAFarPlaneTwelveTargetsAway)
{
    camera.SetProjection(CameraNode::Perspective);
    camera.SetNearFar(10.0f, 60.0f);
    camera.SetDistanceToTarget(30.0f);
    const OcclusionView view(camera);
    EXPECT_EQ(view.nearDistance, 10.0f);
    EXPECT_EQ(view.farDistance, 360.0f);
    for (const double distance : {10.0, 25.0, 60.0})
    {
        EXPECT_NEAR(view.depthShare * DepthOf(distance, 10.0, 60.0), DepthOf(distance, 10.0, 360.0), 1e-9);
    }
}

TEST_F(OcclusionViewTest, IsThatOfACameraThatSeesFarther)
{
    camera.SetProjection(CameraNode::Perspective);
    camera.SetNearFar(1.0f, 5000.0f);
    camera.SetDistanceToTarget(30.0f);
    const OcclusionView view(camera);
    EXPECT_EQ(view.farDistance, 5000.0f);
    EXPECT_DOUBLE_EQ(view.depthShare, 1.0);
}

TEST_F(OcclusionViewTest, TakesHalfTheDepthsWithoutPerspective)
{
    camera.SetProjection(CameraNode::Orthographic);
    camera.SetNearFar(-20.0f, 60.0f);
    const OcclusionView view(camera);
    EXPECT_EQ(view.nearDistance, 0.25f);
    EXPECT_EQ(view.farDistance, 1.0f);
    EXPECT_DOUBLE_EQ(view.depthShare, 0.5);
}

TEST_F(OcclusionViewTest, LeavesDepthsAloneWhereNearAndFarMakeNoView)
{
    camera.SetProjection(CameraNode::Perspective);
    camera.SetDistanceToTarget(30.0f);
    camera.SetNearFar(60.0f, 10.0f);
    EXPECT_DOUBLE_EQ(OcclusionView(camera).depthShare, 1.0) << "the wrong way round";
    camera.SetNearFar(10.0f, 10.0f);
    EXPECT_DOUBLE_EQ(OcclusionView(camera).depthShare, 1.0) << "without depth";
}

} // namespace OV::Host::Detail
