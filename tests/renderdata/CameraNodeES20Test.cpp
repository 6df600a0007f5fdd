#include "orvane/renderdata/CameraNodeES20.h"

#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>

namespace OV::Test
{

namespace
{

std::uint32_t BitsOf(float number)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof(bits));
    return bits;
}

void ExpectEqual(const Matrix& actual, const Matrix& expected)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(BitsOf(actual.m[i]), BitsOf(expected.m[i])) << "element " << i << ": " << actual.m[i]
                                                              << " instead of " << expected.m[i];
}

/// Element-wise, for comparisons with numbers worked out another way.
void ExpectNear(const Matrix& actual, const Matrix& expected)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_NEAR(actual.m[i], expected.m[i], 1e-5f) << "element " << i;
}

class CameraNodeES20Test : public ::testing::Test
{
protected:
    CameraNodeES20Test() : node(*scene.GetCameraNode()), camera(&node)
    {
        node.SetFOV(std::atan(0.5f));
        node.SetNearFar(2.0f, 100.0f);
    }

    float Tangent() const { return std::tan(node.GetFOV()); }

    Scene scene;
    CameraNode& node;
    CameraNodeES20 camera;
};

} // namespace

TEST_F(CameraNodeES20Test, StartsWithZeroMatricesAndNoHud)
{
    const Matrix zero{};
    ExpectEqual(camera.GetMVP(), zero);
    ExpectEqual(camera.GetHudMVP(), zero);
    EXPECT_FALSE(camera.isHudCamera());
    EXPECT_EQ(camera.GetCameraNode(), &node);
    EXPECT_TRUE(camera.GetInvCamT() == Transform());
}

TEST_F(CameraNodeES20Test, ASquareViewHasTheTangentOnBothAxes)
{
    camera.UpdateMVP(300, 300, false);
    const float extent = 2.0f * Tangent();
    Matrix expected;
    expected.CalculatePerspMatrix(-extent, extent, -extent, extent, 2.0f, 100.0f);
    ExpectNear(camera.GetMVP(), expected);
    EXPECT_FLOAT_EQ(camera.GetMVP().m[0], 1.0f / Tangent());
    EXPECT_FLOAT_EQ(camera.GetMVP().m[5], 1.0f / Tangent());
}

TEST_F(CameraNodeES20Test, AWideViewWidensTheHorizontalExtentOnly)
{
    camera.UpdateMVP(600, 300, false);
    EXPECT_FLOAT_EQ(camera.GetMVP().m[0], 1.0f / (2.0f * Tangent()));
    EXPECT_FLOAT_EQ(camera.GetMVP().m[5], 1.0f / Tangent());
}

TEST_F(CameraNodeES20Test, ATallViewWidensTheVerticalExtentOnly)
{
    camera.UpdateMVP(300, 600, false);
    EXPECT_FLOAT_EQ(camera.GetMVP().m[0], 1.0f / Tangent());
    EXPECT_FLOAT_EQ(camera.GetMVP().m[5], 1.0f / (2.0f * Tangent()));
}

TEST_F(CameraNodeES20Test, TheFlagOfUpdateMVPIsNotRead)
{
    camera.UpdateMVP(640, 480, false);
    const Matrix without = camera.GetMVP();
    camera.UpdateMVP(640, 480, true);
    ExpectEqual(camera.GetMVP(), without);
}

TEST_F(CameraNodeES20Test, ProjectionComesFirstAndTheViewIsTheInverseOfTheGlobalTransform)
{
    Transform place;
    place.EyeLookUp(Vector(3, 4, 5), Vector(0, 0, 0), Vector(0, 1, 0));
    node.SetGlobal(place);
    camera.UpdateMVP(300, 200, false);

    Transform inverse;
    inverse.Invert(place);
    Matrix view;
    inverse.ExtractMatrix(view, true);
    Matrix actualView;
    camera.GetInvCamT().ExtractMatrix(actualView, true);
    ExpectNear(actualView, view);
    const float vertical = 2.0f * Tangent();
    const float horizontal = 2.0f * (300.0f * Tangent() / 200.0f);
    Matrix projection;
    projection.CalculatePerspMatrix(-horizontal, horizontal, -vertical, vertical, 2.0f, 100.0f);
    Matrix expected;
    expected.Multiply(projection, view);
    ExpectNear(camera.GetMVP(), expected);
}

TEST_F(CameraNodeES20Test, AScaleOnTheCameraDoesNotReachTheView)
{
    Transform place;
    place.EyeLookUp(Vector(3, 4, 5), Vector(0, 0, 0), Vector(0, 1, 0));
    node.SetGlobal(place);
    camera.UpdateMVP(300, 200, false);
    const Matrix plain = camera.GetMVP();

    Transform scaled = place;
    scaled.SetScale(Vector(2.0f, 3.0f, 4.0f));
    node.SetGlobal(scaled);
    camera.UpdateMVP(300, 200, false);
    ExpectNear(camera.GetMVP(), plain);
}

TEST_F(CameraNodeES20Test, AnOrthographicHeightFollowsTheDistanceToTheTarget)
{
    node.SetProjection(CameraNode::Orthographic);
    node.SetDistanceToTarget(20.0f);
    const float top = Tangent() * 20.0f;
    // The height carries the angle in a tall view as well.
    for (const auto& [width, height] : {std::pair{600, 300}, std::pair{300, 600}})
    {
        camera.UpdateMVP(width, height, false);
        const float right = top * static_cast<float>(width) / static_cast<float>(height);
        Matrix expected;
        expected.CalculateOrthoMatrix(-right, right, -top, top, 2.0f, 100.0f);
        ExpectNear(camera.GetMVP(), expected);
    }
}

TEST_F(CameraNodeES20Test, AnyOtherProjectionThanPerspectiveIsOrthographic)
{
    node.SetProjection(static_cast<CameraNode::CameraProjection>(7));
    camera.UpdateMVP(300, 300, false);
    EXPECT_EQ(camera.GetMVP().m[11], 0.0f);
    EXPECT_EQ(camera.GetMVP().m[15], 1.0f);
}

TEST_F(CameraNodeES20Test, AnInfiniteProjectionHasTheStatedElements)
{
    camera.UpdateInfiniteMVP(600, 300, 0.0f);
    const float vertical = 2.0f * Tangent();
    const float horizontal = 2.0f * (600.0f * Tangent() / 300.0f);
    Matrix expected{};
    expected.m[0] = 2.0f * 2.0f / (horizontal + horizontal);
    expected.m[5] = 2.0f * 2.0f / (vertical + vertical);
    expected.m[11] = -1.0f;
    const std::uint32_t depth = 0xBF7FFF58u;
    std::memcpy(&expected.m[10], &depth, sizeof(depth));
    const std::uint32_t offsetBits = 0xBFFFFFACu;
    float offset = 0.0f;
    std::memcpy(&offset, &offsetBits, sizeof(offset));
    expected.m[14] = 2.0f * offset;
    ExpectNear(camera.GetMVP(), expected);
    EXPECT_EQ(BitsOf(camera.GetMVP().m[10]), depth);
    EXPECT_EQ(BitsOf(camera.GetMVP().m[14]), BitsOf(expected.m[14]));
}

TEST_F(CameraNodeES20Test, TheNearOffsetMovesTheInfiniteProjection)
{
    camera.UpdateInfiniteMVP(300, 300, 3.0f);
    EXPECT_FLOAT_EQ(camera.GetMVP().m[14], 5.0f * -1.99999f);
    EXPECT_FLOAT_EQ(camera.GetMVP().m[0], 1.0f / Tangent());
    EXPECT_FALSE(camera.isHudCamera());
}

TEST_F(CameraNodeES20Test, TheFarDistanceDoesNotEnterAnInfiniteProjection)
{
    camera.UpdateInfiniteMVP(300, 200, 0.0f);
    const Matrix before = camera.GetMVP();
    node.SetNearFar(2.0f, 5.0f);
    camera.UpdateInfiniteMVP(300, 200, 0.0f);
    ExpectEqual(camera.GetMVP(), before);
}

TEST_F(CameraNodeES20Test, AnInfiniteOrthographicViewLeavesTheNearOffsetOut)
{
    node.SetProjection(CameraNode::Orthographic);
    camera.UpdateMVP(300, 200, false);
    const Matrix plain = camera.GetMVP();
    camera.UpdateInfiniteMVP(300, 200, 1.5f);
    ExpectEqual(camera.GetMVP(), plain);
}

TEST_F(CameraNodeES20Test, AnInfiniteViewInvertsTheUnscaledCameraToo)
{
    Transform place;
    place.EyeLookUp(Vector(3, 4, 5), Vector(0, 0, 0), Vector(0, 1, 0));
    Transform scaled = place;
    scaled.SetScale(Vector(5.0f, 5.0f, 5.0f));
    node.SetGlobal(scaled);
    camera.UpdateInfiniteMVP(300, 200, 0.0f);
    Transform inverse;
    inverse.Invert(place);
    Matrix view;
    inverse.ExtractMatrix(view, true);
    Matrix actualView;
    camera.GetInvCamT().ExtractMatrix(actualView, true);
    ExpectNear(actualView, view);
}

TEST_F(CameraNodeES20Test, TheHudMatrixCountsPointsFromTheLowerLeft)
{
    camera.UpdateMVP(300, 200, false);
    const Matrix mvp = camera.GetMVP();
    camera.UpdateHudMVP(400, 200, -1.0f, 3.0f);
    EXPECT_TRUE(camera.isHudCamera());
    Matrix expected;
    expected.CalculateOrthoMatrix(0.0f, 400.0f, 0.0f, 200.0f, -1.0f, 3.0f);
    ExpectEqual(camera.GetHudMVP(), expected);
    ExpectEqual(camera.GetMVP(), mvp);

    Vector corner;
    corner.Multiply(camera.GetHudMVP(), Vector(0, 0, 0));
    EXPECT_FLOAT_EQ(corner.x, -1.0f);
    EXPECT_FLOAT_EQ(corner.y, -1.0f);
    corner.Multiply(camera.GetHudMVP(), Vector(400, 200, 0));
    EXPECT_FLOAT_EQ(corner.x, 1.0f);
    EXPECT_FLOAT_EQ(corner.y, 1.0f);
}

TEST_F(CameraNodeES20Test, TheOtherUpdatesEndBeingAHudCamera)
{
    camera.UpdateHudMVP(400, 200, -1.0f, 3.0f);
    camera.UpdateMVP(300, 200, false);
    EXPECT_FALSE(camera.isHudCamera());
    camera.UpdateHudMVP(400, 200, -1.0f, 3.0f);
    camera.UpdateInfiniteMVP(300, 200, 0.0f);
    EXPECT_FALSE(camera.isHudCamera());
}

TEST(HudCamera, UpdateMVPWithoutACameraDoesNothingAtAll)
{
    CameraNodeES20 hud(nullptr);
    hud.UpdateHudMVP(400, 200, 0.0f, 1.0f);
    hud.UpdateMVP(300, 200, false);
    hud.UpdateInfiniteMVP(300, 200, 1.0f);
    EXPECT_TRUE(hud.isHudCamera());
    ExpectEqual(hud.GetMVP(), Matrix{});
}

TEST_F(CameraNodeES20Test, CopiesTakeEveryField)
{
    camera.UpdateMVP(300, 200, false);
    camera.UpdateHudMVP(400, 200, -1.0f, 3.0f);
    const CameraNodeES20 copy(camera);
    CameraNodeES20 assigned(nullptr);
    assigned = camera;
    for (const CameraNodeES20* other : {&copy, static_cast<const CameraNodeES20*>(&assigned)})
    {
        EXPECT_EQ(other->GetCameraNode(), &node);
        ExpectEqual(other->GetMVP(), camera.GetMVP());
        ExpectEqual(other->GetHudMVP(), camera.GetHudMVP());
        EXPECT_TRUE(other->GetInvCamT() == camera.GetInvCamT());
        EXPECT_TRUE(other->isHudCamera());
    }
}

TEST_F(CameraNodeES20Test, BelongsToItsCamera)
{
    struct Counted : CameraNodeES20
    {
        Counted(CameraNode* camera, int& deaths) : CameraNodeES20(camera), m_deaths(deaths) {}
        ~Counted() override { ++m_deaths; }
        int& m_deaths;
    };
    int deaths = 0;
    node.SetRenderData(new Counted(&node, deaths));
    node.SetRenderData(new Counted(&node, deaths));
    EXPECT_EQ(deaths, 1);
    node.SetRenderData(nullptr);
    EXPECT_EQ(deaths, 2);
}

TEST_F(CameraNodeES20Test, APartIsTheWholeScaledAndShifted)
{
    camera.UpdateMVP(80, 40, false);
    const Matrix whole = camera.mvp;
    // The right upper quarter: 0 to 1 of the whole becomes -1 to 1.
    camera.SetPart({2.0, 2.0, -1.0, -1.0});
    camera.UpdateMVP(80, 40, false);
    for (int column = 0; column < 16; column += 4)
    {
        EXPECT_NEAR(camera.mvp.m[column], 2.0f * whole.m[column] - whole.m[column + 3], 1e-5f);
        EXPECT_NEAR(camera.mvp.m[column + 1], 2.0f * whole.m[column + 1] - whole.m[column + 3], 1e-5f);
        EXPECT_EQ(camera.mvp.m[column + 2], whole.m[column + 2]);
        EXPECT_EQ(camera.mvp.m[column + 3], whole.m[column + 3]);
    }
    camera.UpdateHudMVP(80, 40, 0.0f, 1.0f);
    EXPECT_NEAR(camera.hudMvp.m[0], 4.0f / 80.0f, 1e-6f);
    EXPECT_NEAR(camera.hudMvp.m[12], -3.0f, 1e-6f);
    EXPECT_NEAR(camera.hudMvp.m[13], -3.0f, 1e-6f);
    camera.SetPart({});
    camera.UpdateMVP(80, 40, false);
    ExpectEqual(camera.mvp, whole);
}

} // namespace OV::Test
