#include "orvane_host/view/SceneFit.h"

#include "orvane_host/view/ViewFit.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <vector>

using namespace OV;
using namespace OV::Host;

namespace
{

/// Where vertices appear: -1 to 1 across the picture on both axes; depths from the eye.
struct Seen
{
    double left = std::numeric_limits<double>::max();
    double right = -left;
    double bottom = left;
    double top = -left;
    double nearest = left;
    double farthest = -left;
};

struct SceneFitTest : ::testing::Test
{
    Scene scene;
    std::vector<Vector> world;

    MeshNode* Add(const std::vector<Vector>& positions, const Transform& placed = Transform(), int unused = 0)
    {
        std::vector<unsigned short> indices;
        for (std::size_t i = 0; i + static_cast<std::size_t>(unused) < positions.size(); ++i)
        {
            indices.push_back(static_cast<unsigned short>(i));
            QGM::Point3d point(positions[i].x, positions[i].y, positions[i].z);
            point *= placed.GetTransf3d();
            world.emplace_back(static_cast<float>(point.x), static_cast<float>(point.y), static_cast<float>(point.z));
        }
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer(std::vector<Vector>(positions));
        raw->SetIndices(std::move(indices));
        raw->EndDescription(true);
        auto* node = new MeshNode(&scene);
        node->SetLocal(placed);
        scene.GetRoot()->AddChild(node, false);
        (new Mesh(raw, &scene))->AddNode(node);
        return node;
    }

    bool Fit(NamedView view, float aspect, bool orthographic, float fov = 45.0f, float margin = 0.05f)
    {
        scene.UpdateGraph(100.0f * aspect, 100.0f);
        ViewFitOptions options;
        options.aspect = aspect;
        options.orthographic = orthographic;
        options.fovDegrees = fov;
        ViewFit::Frame(*scene.GetCameraNode(), Vector(-1, -1, -1), Vector(1, 1, 1), view, options);
        return SceneFit::Frame(*scene.GetCameraNode(), scene, aspect, margin);
    }

    /// Projects by the camera's stated meaning, apart from the code under test.
    Seen Look(float aspect) const
    {
        const CameraNode& camera = *scene.GetCameraNode();
        const bool perspective = camera.GetProjection() == CameraNode::Perspective;
        const QGM::Transf3d view = camera.GetGlobal().GetTransf3d().invert();
        const double t = std::tan(static_cast<double>(camera.GetFOV()));
        Seen seen;
        for (const Vector& v : world)
        {
            QGM::Point3d p(v.x, v.y, v.z);
            p *= view;
            double tanV = aspect < 1.0f ? t / aspect : t;
            double tanH = aspect < 1.0f ? t : t * aspect;
            double distance = -p.z;
            if (!perspective)
            {
                tanV = t;
                tanH = t * aspect;
                distance = camera.GetDistanceToTarget();
            }
            const double x = p.x / (distance * tanH);
            const double y = p.y / (distance * tanV);
            seen.left = std::min(seen.left, x);
            seen.right = std::max(seen.right, x);
            seen.bottom = std::min(seen.bottom, y);
            seen.top = std::max(seen.top, y);
            seen.nearest = std::min(seen.nearest, -p.z);
            seen.farthest = std::max(seen.farthest, -p.z);
        }
        return seen;
    }

    void ExpectFits(float aspect, double fill) const
    {
        const Seen seen = Look(aspect);
        EXPECT_NEAR(seen.left, -seen.right, 0.01) << "not in the middle";
        EXPECT_NEAR(seen.bottom, -seen.top, 0.01) << "not in the middle";
        EXPECT_NEAR(std::max(seen.right, seen.top), fill, 0.01) << "does not fill the picture";
        float nearDistance = 0.0f;
        float farDistance = 0.0f;
        scene.GetCameraNode()->GetNearFar(nearDistance, farDistance);
        EXPECT_LT(nearDistance, seen.nearest);
        EXPECT_GT(farDistance, seen.farthest);
        if (scene.GetCameraNode()->GetProjection() == CameraNode::Perspective)
        {
            EXPECT_GT(nearDistance, 0.0f);
        }
    }
};

std::vector<Vector> Cloud(unsigned int seed, const Vector& stretch, const Vector& shift)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> along(-1.0f, 1.0f);
    std::vector<Vector> points;
    for (int i = 0; i < 60; ++i)
    {
        points.emplace_back(along(random) * stretch.x + shift.x, along(random) * stretch.y + shift.y,
                            along(random) * stretch.z + shift.z);
    }
    return points;
}

} // namespace

TEST_F(SceneFitTest, VerticesFillThePictureAndLieInItsMiddle)
{
    Add(Cloud(1, Vector(3, 1, 2), Vector(10, -4, 7)));
    Transform placed;
    placed.SetPosition(Vector(12, 2, 5));
    placed.SetScale(Vector(0.5f, 2.0f, 0.5f));
    Add(Cloud(2, Vector(1, 1, 1), Vector()), placed);
    for (const bool orthographic : {false, true})
    {
        for (const float aspect : {0.4f, 1.0f, 1.7777778f})
        {
            for (int view = 0; view < 7; ++view)
            {
                SCOPED_TRACE(testing::Message() << "view " << view << " aspect " << aspect << " ortho " << orthographic);
                ASSERT_TRUE(Fit(static_cast<NamedView>(view), aspect, orthographic));
                ExpectFits(aspect, 0.95);
            }
        }
    }
}

TEST_F(SceneFitTest, VerticesThatNoCameraHasRoomForDoNotCount)
{
    const std::vector<Vector> cloud = Cloud(7, Vector(1, 1, 1), Vector(20, 0, 0));
    Add(cloud);
    const std::vector<Vector> kept = world;
    const float inf = std::numeric_limits<float>::infinity();
    Add({Vector(inf, 0, 0), Vector(0, -inf, 0), Vector(1e30f, 0, 0), Vector(std::nanf(""), 0, 0)});
    Transform lost;
    lost.SetPosition(Vector(0, std::nanf(""), 0));
    Add(cloud, lost);
    Transform away;
    away.SetPosition(Vector(0, 0, 1e30f));
    Add(cloud, away);
    world = kept;
    for (const bool orthographic : {false, true})
    {
        ASSERT_TRUE(Fit(NamedView::Iso, 1.5f, orthographic));
        ExpectFits(1.5f, 0.95);
    }
}

TEST_F(SceneFitTest, AngleAndMarginAreKept)
{
    Add(Cloud(3, Vector(3, 1, 2), Vector()));
    for (const float fov : {5.0f, 35.0f, 100.0f})
    {
        ASSERT_TRUE(Fit(NamedView::Iso, 1.5f, false, fov, 0.2f));
        EXPECT_NEAR(scene.GetCameraNode()->GetFOV(), fov / 2.0f * 3.14159265f / 180.0f, 1e-5f);
        ExpectFits(1.5f, 0.8);
    }
}

TEST_F(SceneFitTest, TheDirectionOfViewStays)
{
    Add(Cloud(4, Vector(1, 1, 1), Vector(5, 5, 5)));
    scene.UpdateGraph(100, 100);
    ViewFit::Frame(*scene.GetCameraNode(), Vector(-1, -1, -1), Vector(1, 1, 1), NamedView::Iso);
    const QGM::Transf3d before = scene.GetCameraNode()->GetGlobal().GetTransf3d();
    ASSERT_TRUE(SceneFit::Frame(*scene.GetCameraNode(), scene, 1.0f));
    const QGM::Transf3d after = scene.GetCameraNode()->GetGlobal().GetTransf3d();
    for (int row = 0; row < 3; ++row)
    {
        for (int column = 0; column < 3; ++column)
        {
            EXPECT_NEAR(after.m[row][column], before.m[row][column], 1e-12);
        }
    }
}

TEST_F(SceneFitTest, FarFromTheOriginAndTinyOrHugeItFitsAsWell)
{
    const struct
    {
        const char* label;
        float size;
        Vector shift;
    } cases[] = {
        {"far out", 100.0f, Vector(500000, 0, -500000)},
        {"tiny", 0.01f, Vector()},
        {"huge", 1e9f, Vector()},
    };
    for (const auto& item : cases)
    {
        SCOPED_TRACE(item.label);
        scene.Clear();
        world.clear();
        Add(Cloud(5, Vector(item.size, item.size, item.size), item.shift));
        ASSERT_TRUE(Fit(NamedView::Iso, 1.5f, false));
        ExpectFits(1.5f, 0.95);
    }
}

TEST_F(SceneFitTest, HiddenNodesAndVerticesWithoutAnIndexDoNotCount)
{
    std::vector<Vector> cloud = Cloud(6, Vector(1, 1, 1), Vector());
    cloud.emplace_back(1000.0f, 1000.0f, 1000.0f);
    Add(cloud, Transform(), 1);
    const std::vector<Vector> counted = world;
    Add(Cloud(7, Vector(50, 50, 50), Vector()))->SetFlags(NodeFlagHidden, false);
    world = counted;
    ASSERT_TRUE(Fit(NamedView::Front, 1.0f, false));
    ExpectFits(1.0f, 0.95);
}

TEST_F(SceneFitTest, AFlatSceneSeenEdgeOnStaysInFrontOfTheEye)
{
    Add({Vector(0, 0, -5), Vector(0, 0, 5), Vector(0, 0, 1)});
    ASSERT_TRUE(Fit(NamedView::Front, 1.0f, false));
    EXPECT_GT(Look(1.0f).nearest, 0.0);
    ASSERT_TRUE(Fit(NamedView::Front, 1.0f, true));
    EXPECT_GT(scene.GetCameraNode()->GetFOV(), 0.0f);
}

TEST_F(SceneFitTest, WithNothingToFitTheCameraStays)
{
    const auto expectUntouched = [&](const char* label)
    {
        SCOPED_TRACE(label);
        scene.UpdateGraph(100, 100);
        ViewFit::Frame(*scene.GetCameraNode(), Vector(-1, -1, -1), Vector(1, 1, 1), NamedView::Iso);
        const Transform before = scene.GetCameraNode()->GetGlobal();
        EXPECT_FALSE(SceneFit::Frame(*scene.GetCameraNode(), scene, 1.0f));
        EXPECT_TRUE(scene.GetCameraNode()->GetGlobal() == before);
    };
    expectUntouched("empty");
    Add({Vector(1, 2, 3), Vector(1, 2, 3), Vector(1, 2, 3)});
    expectUntouched("a point");
    scene.Clear();
    const float infinite = std::numeric_limits<float>::infinity();
    Add({Vector(infinite, 0, 0), Vector(0, -infinite, 0), Vector(infinite, infinite, infinite)});
    expectUntouched("infinite");
}

TEST_F(SceneFitTest, NumbersThatAreNoneAreLeftOut)
{
    std::vector<Vector> cloud = Cloud(8, Vector(1, 1, 1), Vector());
    Add(cloud);
    const std::vector<Vector> counted = world;
    Add({Vector(std::nanf(""), 0, 0), Vector(0, std::nanf(""), 0), Vector(0, 0, std::nanf(""))});
    world = counted;
    ASSERT_TRUE(Fit(NamedView::Front, 1.0f, false));
    ExpectFits(1.0f, 0.95);
}

TEST_F(SceneFitTest, WhatMovesWhileItIsFittedLeavesTheCameraInPlace)
{
    for (const float depth : {0.0f, 3e38f, std::nanf("")})
    {
        scene.Clear();
        Add(Cloud(8, Vector(1, 1, 1), Vector()));
        scene.UpdateGraph(100, 100);
        CameraNode& camera = *scene.GetCameraNode();
        ViewFit::Frame(camera, Vector(-1, -1, -1), Vector(1, 1, 1), NamedView::Front);
        // Each pass over the vertices asks; after the first one they go where no eye sees them.
        int passes = 0;
        const auto counts = [&](const MeshNode&, const Mesh& mesh)
        {
            if (++passes > 1)
            {
                for (Vector& position : mesh.GetRawMesh()->positions)
                {
                    position = Vector(3e38f, -3e38f, depth);
                }
            }
            return true;
        };
        EXPECT_TRUE(SceneFit::Frame(camera, scene, counts, 1.0f, 0.05f));
        EXPECT_GT(passes, 1);
        const Vector place = camera.GetGlobal().GetPosition();
        EXPECT_LT(std::abs(place.x), 10.0f);
        EXPECT_LT(std::abs(place.y), 10.0f);
        EXPECT_LT(std::abs(place.z), 10.0f);
    }
}
