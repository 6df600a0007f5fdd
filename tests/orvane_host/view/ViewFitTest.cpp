#include "orvane_host/view/ViewFit.h"

#include "orvane/math/Matrix.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

using namespace OV;
using namespace OV::Host;

namespace
{

constexpr float kPi = 3.14159265f;
const float kInfinity = std::numeric_limits<float>::infinity();
const float kNaN = std::numeric_limits<float>::quiet_NaN();

/// A camera of a scene of its own.
struct Stage
{
    Scene scene;
    CameraNode& camera = *scene.GetCameraNode();
};

/// Where a point falls in the picture: -1 to 1 from edge to edge, z the depth in front of
/// the eye. Computed from the stated meaning of the camera's fields.
struct Projected
{
    double x;
    double y;
    double depth;
};

Projected Project(const CameraNode& camera, const Vector& point, double aspect)
{
    Transform inverse;
    inverse.Invert(camera.GetGlobal());
    QGM::Point3d p(point.x, point.y, point.z);
    p *= inverse.GetTransf3d();
    const double t = std::tan(double(camera.GetFOV()));
    if (camera.GetProjection() != CameraNode::Perspective)
    {
        const double top = t * camera.GetDistanceToTarget();
        return {p.x / (top * aspect), p.y / top, -p.z};
    }
    const double horizontal = aspect < 1.0 ? t : t * aspect;
    const double vertical = aspect < 1.0 ? t / aspect : t;
    return {p.x / (-p.z * horizontal), p.y / (-p.z * vertical), -p.z};
}

std::vector<Vector> Corners(const Vector& low, const Vector& high)
{
    std::vector<Vector> corners;
    for (int i = 0; i < 8; ++i)
    {
        corners.emplace_back((i & 1) ? high.x : low.x, (i & 2) ? high.y : low.y, (i & 4) ? high.z : low.z);
    }
    return corners;
}

struct BoxCase
{
    const char* label;
    Vector low;
    Vector high;
};

const BoxCase kBoxes[] = {
    {"cube", Vector(-1, -1, -1), Vector(1, 1, 1)},
    {"away from the origin", Vector(100, 200, 300), Vector(104, 201, 330)},
    {"flat in z", Vector(-5, -2, 0), Vector(5, 2, 0)},
    {"flat in y", Vector(-5, 3, -2), Vector(5, 3, 2)},
    {"a line", Vector(0, 0, -7), Vector(0, 0, 7)},
    {"a point", Vector(3, 4, 5), Vector(3, 4, 5)},
    {"a point far out", Vector(3e6f, 4e6f, 5e6f), Vector(3e6f, 4e6f, 5e6f)},
    {"small", Vector(0, 0, 0), Vector(0.002f, 0.001f, 0.003f)},
    {"large", Vector(-1e8f, -1e7f, -1e8f), Vector(1e8f, 1e7f, 1e8f)},
    {"huge", Vector(-1e15f, -1e15f, -1e15f), Vector(1e15f, 1e15f, 1e15f)},
};

const NamedView kViews[] = {NamedView::Iso,   NamedView::Front, NamedView::Back,  NamedView::Left,
                            NamedView::Right, NamedView::Top,   NamedView::Bottom};

TEST(ViewFit, EveryBoxIsWholeInThePictureFromEveryView)
{
    for (const BoxCase& box : kBoxes)
    {
        for (NamedView view : kViews)
        {
            for (float aspect : {16.0f / 9.0f, 1.0f, 0.4f, 8.0f})
            {
                for (bool isOrthographic : {false, true})
                {
                    for (UpAxis up : {UpAxis::Y, UpAxis::Z})
                    {
                        SCOPED_TRACE(std::string(box.label) + " view " + std::to_string(int(view)) +
                                     " aspect " + std::to_string(aspect) + (isOrthographic ? " ortho" : "") +
                                     (up == UpAxis::Z ? " z up" : ""));
                        Stage stage;
                        ViewFitOptions options;
                        options.aspect = aspect;
                        options.orthographic = isOrthographic;
                        options.upAxis = up;
                        EXPECT_TRUE(ViewFit::Frame(stage.camera, box.low, box.high, view, options));

                        float nearDistance = 0;
                        float farDistance = 0;
                        stage.camera.GetNearFar(nearDistance, farDistance);
                        EXPECT_GT(nearDistance, 0.0f);
                        EXPECT_GT(farDistance, nearDistance);
                        EXPECT_GT(farDistance - nearDistance, 1e-6f);
                        for (const Vector& corner : Corners(box.low, box.high))
                        {
                            const Projected p = Project(stage.camera, corner, aspect);
                            EXPECT_LE(std::fabs(p.x), 0.9501);
                            EXPECT_LE(std::fabs(p.y), 0.9501);
                            EXPECT_GT(p.depth, nearDistance);
                            EXPECT_LT(p.depth, farDistance);
                        }
                    }
                }
            }
        }
    }
}

TEST(ViewFit, TheBoxFillsThePictureUpToTheMargin)
{
    for (bool isOrthographic : {false, true})
    {
        for (float margin : {0.0f, 0.05f, 0.5f})
        {
            for (float aspect : {2.0f, 0.5f})
            {
                Stage stage;
                ViewFitOptions options;
                options.aspect = aspect;
                options.orthographic = isOrthographic;
                options.margin = margin;
                ViewFit::Frame(stage.camera, Vector(-3, -1, -2), Vector(3, 1, 2), NamedView::Iso, options);
                double widest = 0;
                for (const Vector& corner : Corners(Vector(-3, -1, -2), Vector(3, 1, 2)))
                {
                    const Projected p = Project(stage.camera, corner, aspect);
                    widest = std::max({widest, std::fabs(p.x), std::fabs(p.y)});
                }
                EXPECT_NEAR(widest, 1.0 - margin, 1e-4);
            }
        }
    }
}

struct ViewCase
{
    const char* name;
    NamedView view;
    /// Towards the viewer and up in the picture, with Y up and with Z up.
    Vector towardsEye;
    Vector up;
    Vector towardsEyeZ;
    Vector upZ;
};

const ViewCase kNamedViews[] = {
    {"front", NamedView::Front, Vector(0, 0, 1), Vector(0, 1, 0), Vector(0, -1, 0), Vector(0, 0, 1)},
    {"back", NamedView::Back, Vector(0, 0, -1), Vector(0, 1, 0), Vector(0, 1, 0), Vector(0, 0, 1)},
    {"left", NamedView::Left, Vector(-1, 0, 0), Vector(0, 1, 0), Vector(-1, 0, 0), Vector(0, 0, 1)},
    {"right", NamedView::Right, Vector(1, 0, 0), Vector(0, 1, 0), Vector(1, 0, 0), Vector(0, 0, 1)},
    {"top", NamedView::Top, Vector(0, 1, 0), Vector(0, 0, -1), Vector(0, 0, 1), Vector(0, 1, 0)},
    {"bottom", NamedView::Bottom, Vector(0, -1, 0), Vector(0, 0, 1), Vector(0, 0, -1), Vector(0, -1, 0)},
};

TEST(ViewFit, NamedViewsStandWhereTheirNamesSay)
{
    for (const ViewCase& expected : kNamedViews)
    {
        for (UpAxis upAxis : {UpAxis::Y, UpAxis::Z})
        {
            SCOPED_TRACE(expected.name);
            Stage stage;
            ViewFitOptions options;
            options.upAxis = upAxis;
            ViewFit::Frame(stage.camera, Vector(9, 19, 29), Vector(11, 21, 31), expected.view, options);
            const QGM::Transf3d& global = stage.camera.GetGlobal().GetTransf3d();
            const bool isZ = upAxis == UpAxis::Z;
            const Vector& back = isZ ? expected.towardsEyeZ : expected.towardsEye;
            const Vector& up = isZ ? expected.upZ : expected.up;
            EXPECT_NEAR(global.zDir().x, back.x, 1e-12);
            EXPECT_NEAR(global.zDir().y, back.y, 1e-12);
            EXPECT_NEAR(global.zDir().z, back.z, 1e-12);
            EXPECT_NEAR(global.yDir().x, up.x, 1e-12);
            EXPECT_NEAR(global.yDir().y, up.y, 1e-12);
            EXPECT_NEAR(global.yDir().z, up.z, 1e-12);
            EXPECT_FALSE(global.isMirror());
            const float distance = stage.camera.GetDistanceToTarget();
            const Vector eye = stage.camera.GetGlobal().GetPosition();
            EXPECT_NEAR(eye.x, 10 + back.x * distance, 1e-4);
            EXPECT_NEAR(eye.y, 20 + back.y * distance, 1e-4);
            EXPECT_NEAR(eye.z, 30 + back.z * distance, 1e-4);
        }
    }
}

TEST(ViewFit, IsoLooksFromFrontRightAndAboveEqually)
{
    Stage stage;
    ViewFit::Frame(stage.camera, Vector(-1, -1, -1), Vector(1, 1, 1), NamedView::Iso);
    const Vector eye = stage.camera.GetGlobal().GetPosition();
    EXPECT_GT(eye.x, 0.0f);
    EXPECT_FLOAT_EQ(eye.x, eye.y);
    EXPECT_FLOAT_EQ(eye.y, eye.z);

    ViewFitOptions options;
    options.upAxis = UpAxis::Z;
    ViewFit::Frame(stage.camera, Vector(-1, -1, -1), Vector(1, 1, 1), NamedView::Iso, options);
    const Vector eyeZ = stage.camera.GetGlobal().GetPosition();
    EXPECT_FLOAT_EQ(eyeZ.x, -eyeZ.y);
    EXPECT_FLOAT_EQ(eyeZ.x, eyeZ.z);
}

TEST(ViewFit, FieldOfViewIsHalfTheVerticalAngleInAWidePicture)
{
    Stage stage;
    ViewFitOptions options;
    options.fovDegrees = 60.0f;
    options.aspect = 2.0f;
    ViewFit::Frame(stage.camera, Vector(-1, -1, -1), Vector(1, 1, 1), NamedView::Front, options);
    EXPECT_FLOAT_EQ(stage.camera.GetFOV(), kPi / 6);
    options.aspect = 1.0f;
    ViewFit::Frame(stage.camera, Vector(-1, -1, -1), Vector(1, 1, 1), NamedView::Front, options);
    EXPECT_FLOAT_EQ(stage.camera.GetFOV(), kPi / 6);
}

TEST(ViewFit, FieldOfViewIsThatOfTheWidthInATallPicture)
{
    Stage stage;
    ViewFitOptions options;
    options.fovDegrees = 60.0f;
    options.aspect = 0.5f;
    ViewFit::Frame(stage.camera, Vector(-1, -1, -1), Vector(1, 1, 1), NamedView::Front, options);
    // The engine widens the height by 1 / aspect, which brings the vertical angle back to 60.
    EXPECT_NEAR(std::tan(stage.camera.GetFOV()) / 0.5, std::tan(kPi / 6), 1e-6);
}

TEST(ViewFit, AnglesAndAspectsOutOfRangeAreTakenIn)
{
    struct
    {
        float degrees;
        float expected;
    } const angles[] = {{0.0f, 1.0f},  {-5.0f, 1.0f}, {500.0f, 170.0f},
                        {kNaN, 45.0f}, {1.0f, 1.0f},  {170.0f, 170.0f}};
    for (const auto& angle : angles)
    {
        Stage stage;
        ViewFitOptions options;
        options.fovDegrees = angle.degrees;
        ViewFit::Frame(stage.camera, Vector(-1, -1, -1), Vector(1, 1, 1), NamedView::Front, options);
        EXPECT_NEAR(stage.camera.GetFOV(), angle.expected * kPi / 360, 1e-6) << angle.degrees;
    }
    for (float aspect : {0.0f, -1.0f, kNaN, kInfinity})
    {
        Stage stage;
        ViewFitOptions options;
        options.aspect = aspect;
        options.orthographic = true;
        ViewFit::Frame(stage.camera, Vector(-2, -1, -1), Vector(2, 1, 1), NamedView::Front, options);
        const Projected p = Project(stage.camera, Vector(2, 1, 1), 1.0);
        EXPECT_NEAR(p.x, 0.95, 1e-5) << aspect;
    }
}

TEST(ViewFit, OrthographicHeightFollowsTheBox)
{
    Stage stage;
    ViewFitOptions options;
    options.orthographic = true;
    options.margin = 0.0f;
    options.aspect = 1.0f;
    ViewFit::Frame(stage.camera, Vector(-1, -3, -1), Vector(1, 3, 1), NamedView::Front, options);
    EXPECT_NE(stage.camera.GetProjection(), CameraNode::Perspective);
    EXPECT_NEAR(std::tan(stage.camera.GetFOV()) * stage.camera.GetDistanceToTarget(), 3.0, 1e-5);
    options.orthographic = false;
    ViewFit::Frame(stage.camera, Vector(-1, -3, -1), Vector(1, 3, 1), NamedView::Front, options);
    EXPECT_EQ(stage.camera.GetProjection(), CameraNode::Perspective);
}

TEST(ViewFit, UselessBoxesAreReplacedByACube)
{
    const BoxCase useless[] = {
        {"empty", Vector(1, 1, 1), Vector(-1, -1, -1)},
        {"empty in one axis", Vector(0, 0, 1), Vector(1, 1, 0)},
        {"not a number", Vector(0, kNaN, 0), Vector(1, 1, 1)},
        {"infinite", Vector(0, 0, 0), Vector(kInfinity, 1, 1)},
        {"extremes of float", Vector(3.4e38f, 3.4e38f, 3.4e38f), Vector(-3.4e38f, -3.4e38f, -3.4e38f)},
        {"beyond bounds", Vector(0, 0, 0), Vector(1, 1.1e15f, 1)},
    };
    Stage cube;
    ViewFit::Frame(cube.camera, Vector(-1, -1, -1), Vector(1, 1, 1), NamedView::Iso);
    for (const BoxCase& box : useless)
    {
        SCOPED_TRACE(box.label);
        Stage stage;
        EXPECT_FALSE(ViewFit::Frame(stage.camera, box.low, box.high, NamedView::Iso));
        EXPECT_TRUE(stage.camera.GetGlobal() == cube.camera.GetGlobal());
        EXPECT_EQ(stage.camera.GetFOV(), cube.camera.GetFOV());
    }
}

TEST(ViewFit, ACameraBelowATurnedNodeEndsAtTheSamePlaceInTheWorld)
{
    Stage plain;
    ViewFit::Frame(plain.camera, Vector(1, 2, 3), Vector(4, 5, 6), NamedView::Right);

    Stage stage;
    auto* parent = new Node(&stage.scene);
    stage.scene.GetRoot()->AddChild(parent, false);
    Transform turned;
    turned.SetTransf3d(QGM::Transf3d(QGM::Point3d(7, 8, 9), QGM::Vector3d(0, 2, 0), QGM::Vector3d(-2, 0, 0),
                                     QGM::Vector3d(0, 0, 2), false));
    parent->SetLocal(turned);
    parent->AddChild(&stage.camera, false);
    stage.scene.GetRoot()->UpdateGraph();
    ViewFit::Frame(stage.camera, Vector(1, 2, 3), Vector(4, 5, 6), NamedView::Right);
    stage.scene.UpdateGraph(100, 100);
    EXPECT_TRUE(stage.camera.GetGlobal().GetTransf3d().isEqual(plain.camera.GetGlobal().GetTransf3d(), 1e-9));
}

TEST(ViewFit, LookGoesFromEyeToTarget)
{
    Stage stage;
    ViewFitOptions options;
    options.fovDegrees = 40.0f;
    options.aspect = 1.5f;
    ASSERT_TRUE(ViewFit::Look(stage.camera, Vector(10, 0, 0), Vector(2, 0, 0), Vector(0, 0, 3),
                              Vector(-1, -1, -1), Vector(1, 1, 1), options));
    const QGM::Transf3d& global = stage.camera.GetGlobal().GetTransf3d();
    EXPECT_NEAR(global.zDir().x, 1.0, 1e-12);
    EXPECT_NEAR(global.yDir().z, 1.0, 1e-12);
    EXPECT_EQ(stage.camera.GetGlobal().GetPosition(), Vector(10, 0, 0));
    EXPECT_FLOAT_EQ(stage.camera.GetDistanceToTarget(), 8.0f);
    EXPECT_FLOAT_EQ(stage.camera.GetFOV(), 20 * kPi / 180);
    float nearDistance = 0;
    float farDistance = 0;
    stage.camera.GetNearFar(nearDistance, farDistance);
    EXPECT_LT(nearDistance, 9.0f);
    EXPECT_GT(nearDistance, 8.5f);
    EXPECT_GT(farDistance, 11.0f);
    EXPECT_LT(farDistance, 11.5f);
}

TEST(ViewFit, AnUpThatDecidesNothingIsReplaced)
{
    struct
    {
        const char* label;
        Vector eye;
        Vector up;
        UpAxis axis;
        Vector expectedY;
    } const cases[] = {
        {"zero", Vector(0, 0, 5), Vector(0, 0, 0), UpAxis::Y, Vector(0, 1, 0)},
        {"not a number", Vector(0, 0, 5), Vector(kNaN, 0, 0), UpAxis::Y, Vector(0, 1, 0)},
        {"along the view", Vector(0, 0, 5), Vector(0, 0, -2), UpAxis::Y, Vector(0, 1, 0)},
        {"down the up axis", Vector(0, 5, 0), Vector(0, 1, 0), UpAxis::Y, Vector(0, 0, -1)},
        {"up the up axis", Vector(0, -5, 0), Vector(0, 1, 0), UpAxis::Y, Vector(0, 0, -1)},
        {"zero, z up", Vector(5, 0, 0), Vector(0, 0, 0), UpAxis::Z, Vector(0, 0, 1)},
        {"down the z axis", Vector(0, 0, 5), Vector(0, 0, 1), UpAxis::Z, Vector(0, 1, 0)},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.label);
        Stage stage;
        ViewFitOptions options;
        options.upAxis = test.axis;
        ASSERT_TRUE(ViewFit::Look(stage.camera, test.eye, Vector(0, 0, 0), test.up, Vector(-1, -1, -1),
                                  Vector(1, 1, 1), options));
        const QGM::Vector3d y = stage.camera.GetGlobal().GetTransf3d().yDir();
        EXPECT_NEAR(y.x, test.expectedY.x, 1e-12);
        EXPECT_NEAR(y.y, test.expectedY.y, 1e-12);
        EXPECT_NEAR(y.z, test.expectedY.z, 1e-12);
    }
}

TEST(ViewFit, LookRefusesWhatHasNoDirection)
{
    Stage stage;
    const Transform before = stage.camera.GetGlobal();
    const Vector low(-1, -1, -1);
    const Vector high(1, 1, 1);
    const Vector up(0, 1, 0);
    EXPECT_FALSE(ViewFit::Look(stage.camera, Vector(1, 2, 3), Vector(1, 2, 3), up, low, high));
    EXPECT_FALSE(ViewFit::Look(stage.camera, Vector(kNaN, 0, 0), Vector(0, 0, 0), up, low, high));
    EXPECT_FALSE(ViewFit::Look(stage.camera, Vector(1, 0, 0), Vector(kInfinity, 0, 0), up, low, high));
    EXPECT_TRUE(stage.camera.GetGlobal() == before);
    EXPECT_FLOAT_EQ(stage.camera.GetFOV(), 0.45f);
}

TEST(ViewFit, LookHasUsableDepthsWhereverTheBoxIs)
{
    struct
    {
        const char* label;
        Vector eye;
        Vector low;
        Vector high;
    } const cases[] = {
        {"eye inside", Vector(0, 0, 0.5f), Vector(-10, -10, -10), Vector(10, 10, 10)},
        {"box behind", Vector(0, 0, 5), Vector(-1, -1, 100), Vector(1, 1, 101)},
        {"no box", Vector(0, 0, 5), Vector(1, 1, 1), Vector(-1, -1, -1)},
        {"a point", Vector(0, 0, 5), Vector(1, 1, 1), Vector(1, 1, 1)},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.label);
        Stage stage;
        ASSERT_TRUE(
            ViewFit::Look(stage.camera, test.eye, Vector(0, 0, 0), Vector(0, 1, 0), test.low, test.high));
        float nearDistance = 0;
        float farDistance = 0;
        stage.camera.GetNearFar(nearDistance, farDistance);
        EXPECT_GT(nearDistance, 1e-6f);
        EXPECT_GT(farDistance, nearDistance);
        EXPECT_LE(farDistance / nearDistance, 1.0001e4f);
    }
}

TEST(ViewFit, EveryLookHasAProjection)
{
    // One too narrow to be worked out would show what is behind the eye.
    for (const float size : {1e-4f, 1e-3f, 0.1f, 1.0f, 1e4f})
    {
        for (const float away : {-1.0f, -0.4f, 0.0f, 0.3f, 1.0f})
        {
            for (const float degrees : {1.0f, 45.0f, 170.0f})
            {
                SCOPED_TRACE(testing::Message() << size << ", " << away << ", " << degrees);
                Stage stage;
                ViewFitOptions options;
                options.fovDegrees = degrees;
                const float half = 0.5f * size;
                ASSERT_TRUE(ViewFit::Look(stage.camera, Vector(0, 0, away * size), Vector(0, 0, away * size - 1.0f),
                                          Vector(0, 1, 0), Vector(-half, -half, -half), Vector(half, half, half), options));
                float nearDistance = 0;
                float farDistance = 0;
                stage.camera.GetNearFar(nearDistance, farDistance);
                const float reach = nearDistance * std::tan(stage.camera.GetFOV());
                Matrix projection;
                projection.CalculatePerspMatrix(-reach, reach, -reach, reach, nearDistance, farDistance);
                EXPECT_EQ(projection.m[11], -1.0f);
            }
        }
    }
}

TEST(ViewFit, AnOrthographicLookMayKeepWhatIsBehindTheEye)
{
    Stage stage;
    ViewFitOptions options;
    options.orthographic = true;
    options.fovDegrees = 90.0f;
    ASSERT_TRUE(ViewFit::Look(stage.camera, Vector(0, 0, 1), Vector(0, 0, 0), Vector(0, 1, 0),
                              Vector(-4, -4, -4), Vector(4, 4, 4), options));
    float nearDistance = 0;
    float farDistance = 0;
    stage.camera.GetNearFar(nearDistance, farDistance);
    EXPECT_LT(nearDistance, -3.0f);
    EXPECT_GT(farDistance, 5.0f);
    // As high as a perspective of 90 degrees at a distance of 1.
    EXPECT_NEAR(std::tan(stage.camera.GetFOV()) * stage.camera.GetDistanceToTarget(), 1.0, 1e-6);
}

TEST(ViewFit, ViewsAreKnownByTheirLowerCaseNames)
{
    const char* const names[] = {"iso", "front", "back", "left", "right", "top", "bottom"};
    for (std::size_t i = 0; i < std::size(names); ++i)
    {
        NamedView view = NamedView::Iso;
        EXPECT_TRUE(ViewFit::ParseView(names[i], view)) << names[i];
        EXPECT_EQ(view, kViews[i]);
    }
    for (const char* text : {"", "Front", "fron", "front ", "isometric"})
    {
        NamedView view = NamedView::Left;
        EXPECT_FALSE(ViewFit::ParseView(text, view)) << text;
        EXPECT_EQ(view, NamedView::Left);
    }
}

} // namespace
