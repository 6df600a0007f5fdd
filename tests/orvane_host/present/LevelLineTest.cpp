#include "orvane_host/geometry/FeatureEdges.h"
#include "orvane_host/present/SceneRenderer.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/Scene.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/support/GLFixture.h"

#include <cmath>

namespace OV::Host::Test
{

namespace
{

using OV::Test::Picture;
using OV::Test::Pixel;

const Pixel kBlack{0, 0, 0, 255};

/// A perspective camera at (0, 0, 10) that looks down -Z and sees 5 units to each side of the
/// origin; white faces and black lines.
class LevelLineTest : public OV::Test::GLFixture
{
protected:
    LevelLineTest()
    {
        AllowStateChange("blending");
        AllowStateChange("polygon offset");
        SkySettings::inst().SetUseFog(false);
        app.GetContext()->SetScene(std::make_unique<Scene>());
        scene = app.GetContext()->GetScene();
        renderer.Resize(Width(), Height());
        app.SetScreenSize(Width(), Height());
        CameraNode& camera = *scene->GetCameraNode();
        Transform place;
        place.SetPosition(Vector(0, 0, 10));
        camera.SetGlobal(place);
        camera.SetFOV(std::atan(0.5f));
        camera.SetNearFar(1.0f, 100.0f);

        material = new Material("white");
        material->SetFlags(MaterialFlagUnlit);
        material->SetAmbient(Color(0, 0, 0, 0));
        material->SetDiffuse(Color(1, 1, 1, 1));
        scene->AddMaterial(material);
        style = new LineStyle("black");
        style->color = Color(0, 0, 0, 1);
        style->secondColor = Color(0, 0, 0, 0);
        style->antialias = false;
        style->width = 0.5f;
        scene->AddLineStyle(style);
    }

    ~LevelLineTest() override { scene->Suspend(); }

    Mesh& AddMesh(std::vector<Vector> positions, std::vector<unsigned short> indices)
    {
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer(std::move(positions));
        raw->SetIndices(std::move(indices));
        raw->EndDescription(true);
        auto* mesh = new Mesh(raw, scene);
        auto* node = new MeshNode(scene);
        scene->GetRoot()->AddChild(node, false);
        mesh->AddNode(node);
        material->AddMesh(mesh);
        return *mesh;
    }

    Picture Frame()
    {
        scene->MarkDirty();
        app.Update(0.0f);
        app.Render(&renderer, false);
        return ReadPixels();
    }

    OV::Test::EffectSettingsGuard settings;
    AppContext app;
    SceneRenderer renderer{nullptr, app.GetContext()->GetRenderCapabilities()};
    Scene* scene = nullptr;
    Material* material = nullptr;
    LineStyle* style = nullptr;
};

} // namespace

TEST_F(LevelLineTest, WhatIsSeenNearlyEndOnDoesNotComeThroughAWall)
{
    AddMesh({{-9, -9, 0}, {9, -9, 0}, {9, 9, 0}, {-9, 9, 0}}, {0, 1, 2, 0, 2, 3});
    for (const float depth : {-0.2f, -1.0f, -3.0f})
    {
        for (int i = 0; i < 12; ++i)
        {
            auto raw = std::make_shared<RawLine>();
            const Vector near(0.4f * static_cast<float>(i) - 2.0f, 0.3f, depth);
            raw->SetPositionBuffer({near, Vector(near.x, near.y, depth - 4.0f)});
            raw->SetIndices({0, 1});
            auto* line = new Line(raw, scene);
            auto* node = new MeshNode(scene);
            scene->GetRoot()->AddChild(node, false);
            line->AddNode(node);
            style->AddLine(line);
        }
    }
    EXPECT_EQ(Frame().Count(kBlack), 0);
    style->noDepthTest = true;
    EXPECT_GT(Frame().Count(kBlack), 0) << "without the wall they would be seen";
}

TEST_F(LevelLineTest, AnInnerCornerSeenAtAGrazingAngleShowsItsLineWithoutGaps)
{
    // A trough whose walls run away from the eye on both sides of a slanting bottom line.
    const Vector start(-3.0f, -0.5f, -6.0f);
    const Vector end(3.0f, 0.7f, -4.0f);
    const auto toward = [](const Vector& p, float y, float z) { return Vector(p.x, p.y + y, p.z + z); };
    AddMesh({start, end, toward(end, -0.6f, 5.0f), toward(start, -0.6f, 5.0f), toward(end, 0.8f, 6.0f),
             toward(start, 0.8f, 6.0f)},
            {0, 3, 2, 0, 2, 1, 0, 1, 4, 0, 4, 5});
    style->width = 1.0f;
    ASSERT_GT(FeatureEdges::AddTo(*scene, *style, 10.0f), 0u);
    FeatureEdges::MakeRoom(*scene, 2.0f);
    const Picture picture = Frame();
    // Where the bottom line is seen, column by column.
    const auto toPixel = [&](const Vector& p, float across) {
        return static_cast<float>(Width()) / 2.0f + across / (10.0f - p.z) * static_cast<float>(Width());
    };
    const float left = toPixel(start, start.x);
    const float right = toPixel(end, end.x);
    const float low = toPixel(start, start.y);
    const float high = toPixel(end, end.y);
    for (int x = static_cast<int>(left) + 3; x < static_cast<int>(right) - 3; ++x)
    {
        const float y = low + (high - low) * (static_cast<float>(x) + 0.5f - left) / (right - left);
        const int middle = static_cast<int>(std::floor(y - 0.5f));
        EXPECT_TRUE(picture.At(x, middle) == kBlack || picture.At(x, middle + 1) == kBlack) << x;
    }
}

TEST_F(LevelLineTest, RoomIsHalfAPixelAndLessForWideLines)
{
    const struct
    {
        float width;
        float scale;
        float reach;
    } cases[] = {{0.5f, 1.0f, 0.25f}, {1.0f, 1.0f, 0.5f},  {1.0f, 2.0f, 1.0f}, {1.9f, 1.0f, 0.5f},
                 {3.0f, 1.0f, 0.141f}, {3.0f, 2.0f, 0.283f}, {3.5f, 1.0f, 0.0f}, {50.0f, 1.0f, 0.0f}};
    for (const auto& c : cases)
    {
        FeatureEdges::MakeRoom(*scene, c.width, c.scale);
        EXPECT_NE(material->GetFlags() & MaterialFlagPolygonOffset, 0u);
        EXPECT_NEAR(material->polygonOffsetFactor, c.reach * std::sqrt(2.0f), 0.002f) << c.width;
        EXPECT_GT(material->polygonOffsetUnits, 0.0f);
    }
}

TEST_F(LevelLineTest, ALineOfThreePixelsStaysHiddenByAThinSlantedFaceBeforeIt)
{
    // A face that falls away from the eye, and lines across the slope below it: two pixels and
    // more of it, seen from the eye, lie between.
    AddMesh({Vector(-3, -1, 4), Vector(3, -1, 4), Vector(3, 0, -6), Vector(-3, 0, -6)}, {0, 1, 2, 0, 2, 3});
    for (int i = 0; i < 8; ++i)
    {
        auto raw = std::make_shared<RawLine>();
        const float z = 2.5f - static_cast<float>(i);
        const float y = -1.0f + (4.0f - z) / 10.0f - 0.25f;
        raw->SetPositionBuffer({Vector(-2.0f, y, z), Vector(2.0f, y, z)});
        raw->SetIndices({0, 1});
        auto* line = new Line(raw, scene);
        auto* node = new MeshNode(scene);
        scene->GetRoot()->AddChild(node, false);
        line->AddNode(node);
        style->AddLine(line);
    }
    for (const float width : {1.0f, 2.0f, 3.0f})
    {
        style->width = width / 2.0f;
        FeatureEdges::MakeRoom(*scene, width);
        EXPECT_EQ(Frame().Count(kBlack), 0) << width;
    }
}

} // namespace OV::Host::Test
