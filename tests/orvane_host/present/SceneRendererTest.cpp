#include "orvane_host/present/SceneRenderer.h"

#include "orvane/effects/SkySettings.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/support/GLFixture.h"

#include <algorithm>
#include <cmath>
#include <utility>

using namespace OV;
using namespace OV::Host;
using OV::Test::Picture;
using OV::Test::Pixel;
using OV::Test::PixelRect;
using OV::Test::ToPixel;

namespace
{

constexpr double Pi = 3.14159265358979323846;
constexpr double HalfAngle = 30.0 * Pi / 180.0;

/// The stated gradient, for an elevation in radians: 0.1 and 0.2 of the way up are its stops.
Pixel SkyAt(double elevation)
{
    const SkySettings& sky = SkySettings::inst();
    const double height = elevation / (Pi / 2.0);
    const auto clamp = [](double value) { return std::clamp(value, 0.0, 1.0); };
    const double horizon = 1.0 - clamp(height / sky.HorizonStop());
    const double middle = 1.0 - clamp((height - sky.HorizonStop()) / (sky.SkyStop() - sky.HorizonStop())) - horizon;
    const double upper = 1.0 - middle - horizon;
    const auto mix = [&](float a, float b, float c)
    { return static_cast<float>(a * horizon + b * middle + c * upper); };
    const Color& h = sky.GetHorizonColor();
    const Color& m = sky.GetSkyColor();
    const Color& u = sky.GetUpperSkyColor();
    return ToPixel(mix(h.r, m.r, u.r), mix(h.g, m.g, u.g), mix(h.b, m.b, u.b));
}

struct SceneRendererTest : OV::Test::GLFixture
{
    AppContext app;
    SceneRenderer renderer{nullptr, app.GetContext()->GetRenderCapabilities()};
    Scene* scene = nullptr;

    SceneRendererTest()
    {
        SkySettings::inst() = SkySettings();
        SkySettings::inst().SetUseFog(false);
        SkySettings::inst().SetHorizonColor(Color(0.9f, 0.5f, 0.1f));
        app.GetContext()->SetBackgroundColor(Color(0.0f, 1.0f, 0.0f));
        app.GetContext()->SetScene(std::make_unique<Scene>());
        scene = app.GetContext()->GetScene();
        app.SetScreenSize(Width(), Height());
        renderer.Resize(Width(), Height());
        renderer.ShowSky(true);
        scene->GetCameraNode()->SetFOV(static_cast<float>(HalfAngle));
    }

    ~SceneRendererTest() override { SkySettings::inst() = SkySettings(); }

    /// Looks along a direction from an eye.
    void Look(const Vector& eye, const Vector& at, const Vector& up = Vector(0, 1, 0))
    {
        Transform transform;
        transform.EyeLookUp(eye, at, up);
        scene->GetCameraNode()->SetGlobal(transform);
    }

    Picture Draw()
    {
        app.Update(0);
        app.Render(&renderer, false);
        return ReadPixels();
    }

    /// A square of edge 2 in the plane z, facing +z.
    Mesh* AddSquare(float z, const Color& color)
    {
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer({Vector(-1, -1, z), Vector(1, -1, z), Vector(1, 1, z), Vector(-1, 1, z)});
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        auto* material = new Material("square");
        material->diffuse = color;
        material->ambient = Color(0.0f, 0.0f, 0.0f);
        material->flags = MaterialFlagUnlit;
        scene->AddMaterial(material);
        auto* mesh = new Mesh(raw, scene);
        material->AddMesh(mesh);
        auto* node = new MeshNode(scene);
        scene->GetRoot()->AddChild(node, false);
        mesh->AddNode(node);
        return mesh;
    }

    /// Compares every pixel of the middle column with the gradient along a level view.
    void ExpectLevelSky(const Picture& picture) const
    {
        for (int y = 0; y < Height(); ++y)
        {
            const double up = ((y + 0.5) / Height() * 2.0 - 1.0) * std::tan(HalfAngle);
            const Pixel expected = SkyAt(std::atan(up));
            EXPECT_LE(OV::Test::ChannelDifference(picture.At(Width() / 2, y), expected), 2)
                << "row " << y << ": " << picture.At(Width() / 2, y) << " is not " << expected;
        }
    }
};

} // namespace

TEST_F(SceneRendererTest, TheHorizonLiesAtEyeLevelAndTheSkyRisesFromIt)
{
    Look(Vector(3, 7, 2), Vector(3, 7, -10));
    const Picture picture = Draw();
    ExpectLevelSky(picture);
    ExpectColorInRect(picture, {0, 0, Width(), Height() / 2}, ToPixel(0.9f, 0.5f, 0.1f));
    // The gradient is there at all.
    EXPECT_NE(picture.At(64, 70), picture.At(64, 90));
}

TEST_F(SceneRendererTest, TheSkyIsTheSameInEveryDirection)
{
    for (const Vector& direction : {Vector(1, 0, 0), Vector(-1, 0, 0), Vector(0, 0, 1), Vector(0.6f, 0, -0.8f)})
    {
        Look(Vector(), direction);
        ExpectLevelSky(Draw());
    }
}

TEST_F(SceneRendererTest, ASkyAboveZIsTheSkyAboveYTurned)
{
    const Vector eye(3, 7, 2);
    const std::pair<Vector, Vector> directions[] = {
        {Vector(0.3f, 0.2f, -1), Vector(0.3f, 1, 0.2f)},
        {Vector(-1, 0.1f, 0), Vector(-1, 0, 0.1f)},
        {Vector(0.2f, -0.3f, 1), Vector(0.2f, -1, -0.3f)}};
    for (const auto& [aboveY, aboveZ] : directions)
    {
        renderer.SetSkyAxis(UpAxis::Y);
        Look(eye, Vector(eye.x + aboveY.x, eye.y + aboveY.y, eye.z + aboveY.z));
        const Picture expected = Draw();
        renderer.SetSkyAxis(UpAxis::Z);
        Look(eye, Vector(eye.x + aboveZ.x, eye.y + aboveZ.y, eye.z + aboveZ.z), Vector(0, 0, 1));
        const Picture turned = Draw();
        for (int y = 0; y < Height(); ++y)
        {
            const int difference = OV::Test::ChannelDifference(turned.At(Width() / 4, y), expected.At(Width() / 4, y));
            EXPECT_LE(difference, 1) << "row " << y;
        }
        // There is a gradient to turn.
        EXPECT_NE(expected.At(Width() / 4, 2), expected.At(Width() / 4, Height() - 3));
    }
}

TEST_F(SceneRendererTest, TheSkyStandsStillWhereverTheEyeIs)
{
    for (const Vector& eye : {Vector(), Vector(1e6f, 2e6f, -3e6f), Vector(0, -5e8f, 0), Vector(1e-4f, 0, 0)})
    {
        Look(eye, Vector(eye.x, eye.y, eye.z - std::max(1.0f, std::abs(eye.z))));
        ExpectLevelSky(Draw());
    }
}

TEST_F(SceneRendererTest, NearAndFarOfTheCameraDoNotMoveTheSky)
{
    Look(Vector(), Vector(0, 0, -1));
    for (const auto& [nearValue, farValue] : {std::pair(0.01f, 1.0f), {50.0f, 60.0f}, {1e5f, 1e6f}})
    {
        scene->GetCameraNode()->SetNearFar(nearValue, farValue);
        ExpectLevelSky(Draw());
    }
}

TEST_F(SceneRendererTest, LookingUpShowsTheUpperSkyAndDownTheHorizon)
{
    Look(Vector(), Vector(0, 1, -0.1f));
    const Pixel upper = ToPixel(0.5921569f, 0.7294118f, 0.8862745f);
    ExpectColorInRect(Draw(), {0, 0, Width(), Height()}, upper);
    Look(Vector(), Vector(0, -1, -0.1f));
    ExpectColorInRect(Draw(), {0, 0, Width(), Height()}, ToPixel(0.9f, 0.5f, 0.1f));
}

TEST_F(SceneRendererTest, AnOrthographicCameraSeesTheSkyOfItsAngle)
{
    CameraNode* camera = scene->GetCameraNode();
    camera->SetProjection(CameraNode::Orthographic);
    camera->SetNearFar(-20.0f, 100.0f);
    Look(Vector(), Vector(0, 0, -1));
    ExpectLevelSky(Draw());
    EXPECT_EQ(camera->GetProjection(), CameraNode::Orthographic);
}

TEST_F(SceneRendererTest, EverythingIsInFrontOfTheSky)
{
    AddSquare(-900, Color(1, 0, 0));
    Look(Vector(0, 0, -850), Vector(0, 0, -900));
    const Picture picture = Draw();
    // Half the square's edge, projected.
    const int half = static_cast<int>(1.0 / 50.0 / std::tan(HalfAngle) * Width() / 2);
    ASSERT_GE(half, 2);
    EXPECT_EQ(picture.At(64, 64), (Pixel{255, 0, 0, 255}));
    EXPECT_EQ(picture.At(64 + half + 3, 60), ToPixel(0.9f, 0.5f, 0.1f));
}

TEST_F(SceneRendererTest, WithoutSkyTheBackgroundShows)
{
    Look(Vector(), Vector(0, 0, -1));
    Draw();
    renderer.ShowSky(false);
    EXPECT_FALSE(renderer.IsSkyShown());
    ExpectColorInRect(Draw(), {0, 0, Width(), Height()}, {0, 255, 0, 255});
}

TEST_F(SceneRendererTest, TwoFramesWithSkyAreTheSameAndSuspendingChangesNothing)
{
    AddSquare(-5, Color(0.2f, 0.4f, 0.6f, 0.5f));
    Look(Vector(), Vector(0, 0, -1));
    const Picture first = Draw();
    EXPECT_TRUE(first == Draw());
    app.Suspend(&renderer);
    EXPECT_TRUE(OV::Test::GLState::CaptureObjects()["buffer"].empty());
    app.Resume(&renderer);
    EXPECT_TRUE(first == Draw());
}

TEST_F(SceneRendererTest, ASecondLayerOfOverDrawKeepsTheFirst)
{
    AddSquare(-5, Color(1, 0, 0));
    Look(Vector(), Vector(0, 0, -1));
    app.Update(0);
    renderer.BeginRender(false, Color(0, 0, 0));
    renderer.Render3D(scene, scene->GetCameraNode());
    renderer.BeginOverDrawRender();
    Scene empty;
    renderer.Render3D(&empty, scene->GetCameraNode());
    renderer.EndRender();
    EXPECT_EQ(ReadPixels().At(64, 64), (Pixel{255, 0, 0, 255}));
}

TEST_F(SceneRendererTest, PackUploadsBeforeTheFirstFrame)
{
    Mesh* mesh = AddSquare(-5, Color(1, 0, 0));
    Look(Vector(), Vector(0, 0, -1));
    app.Update(0);
    EXPECT_EQ(mesh->GetRenderData(), nullptr);
    renderer.Pack(scene, scene->GetCameraNode());
    auto* data = dynamic_cast<MeshES20*>(mesh->GetRenderData());
    ASSERT_TRUE(data);
    const unsigned int buffer = data->vertexBufferId;
    EXPECT_NE(buffer, 0u);
    app.Render(&renderer, false);
    EXPECT_EQ(dynamic_cast<MeshES20*>(mesh->GetRenderData()), data);
    EXPECT_EQ(data->vertexBufferId, buffer);
    EXPECT_EQ(ReadPixels().At(64, 64), (Pixel{255, 0, 0, 255}));
}

TEST_F(SceneRendererTest, NullIsDrawnAndPackedAsNothing)
{
    renderer.Pack(nullptr, nullptr);
    renderer.Pack(scene, nullptr);
    renderer.Render3D(nullptr, nullptr);
    renderer.Render3D(scene, nullptr);
    EXPECT_EQ(renderer.GetSkyScene(), nullptr);
}
