#include "orvane_host/present/PresentationRenderer.h"

#include "orvane/effects/EffectES20.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/math/Quaternion.h"
#include "orvane/math/Transform.h"
#include "orvane/platform/ESTextureLoader.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/SimMaterial.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/support/GLFixture.h"

#include <algorithm>
#include <cmath>
#include <map>

using namespace OV;
using namespace OV::Host;
using OV::Test::ChannelDifference;
using OV::Test::Picture;
using OV::Test::Pixel;
using OV::Test::PixelRect;
using OV::Test::ToPixel;

namespace
{

/// A square of edge 4 in the middle of what the camera sees, which is 10 high.
std::shared_ptr<RawMesh> MakeSquare(bool colors)
{
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer({Vector(-2, -2, 0), Vector(2, -2, 0), Vector(2, 2, 0), Vector(-2, 2, 0)});
    raw->SetNormalBuffer(std::vector<Vector>(4, Vector(0, 0, 1)));
    if (colors)
    {
        raw->SetColorBuffer(std::vector<Color>(4, Color(0.0f, 1.0f, 0.0f)));
    }
    raw->SetIndices({0, 1, 2, 0, 2, 3});
    raw->EndDescription(true);
    return raw;
}

struct PresentationRendererTest : OV::Test::GLFixture
{
    static constexpr PixelRect Square{41, 41, 46, 46};

    OV::Test::EffectSettingsGuard settings;
    Platform::Linux::ESTextureLoader loader;
    AppContext app;
    std::unique_ptr<PresentationRenderer> renderer;
    Scene* scene = nullptr;
    Material* material = nullptr;
    MeshNode* node = nullptr;

    PresentationRendererTest()
    {
        renderer = std::make_unique<PresentationRenderer>(&loader, app.GetContext()->GetRenderCapabilities());
        SkySettings::inst().SetUseFog(false);
        app.GetContext()->SetBackgroundColor(Color(0.0f, 0.0f, 1.0f));
        app.GetContext()->SetScene(std::make_unique<Scene>());
        scene = app.GetContext()->GetScene();
        app.SetScreenSize(Width(), Height());
        renderer->Resize(Width(), Height());
        scene->GetCameraNode()->SetFOV(0.78539816f);
        Transform place;
        place.SetPosition(Vector(0, 0, 5));
        scene->GetCameraNode()->SetLocal(place);
        material = new Material("material");
        material->SetDiffuse(Color(0.8f, 0.4f, 0.2f));
        material->SetAmbient(Color(0.5f, 0.5f, 0.5f));
        scene->AddMaterial(material);
        node = AddSquare(*material, false);
        auto* light = new LightNode(scene);
        scene->GetRoot()->AddChild(light, false);
    }

    ~PresentationRendererTest() override { app.Suspend(renderer.get()); }

    MeshNode* AddSquare(Material& of, bool colors)
    {
        auto* mesh = new Mesh(MakeSquare(colors), scene);
        of.AddMesh(mesh);
        auto* made = new MeshNode(scene);
        scene->GetRoot()->AddChild(made, false);
        mesh->AddNode(made);
        return made;
    }

    Picture Draw(Look look)
    {
        renderer->SetLook(look);
        scene->MarkDirty();
        app.Update(0.0f);
        app.Render(renderer.get(), false);
        return ReadPixels();
    }

    static Pixel Middle(const Picture& picture) { return picture.At(64, 64); }

    static void ExpectNear(const Pixel& pixel, float r, float g, float b)
    {
        EXPECT_LE(ChannelDifference(pixel, ToPixel(r, g, b)), 2) << pixel;
    }
};

} // namespace

TEST_F(PresentationRendererTest, FindsLooksByTheirNames)
{
    const std::pair<const char*, Look> looks[] = {
        {"basic", Look::Basic},           {"advanced", Look::Advanced}, {"phong", Look::Phong},
        {"crosshatch", Look::Crosshatch}, {"monotone", Look::Monotone}, {"vertex-color", Look::VertexColor}};
    for (const auto& [name, expected] : looks)
    {
        Look look = expected == Look::Basic ? Look::Phong : Look::Basic;
        EXPECT_TRUE(PresentationRenderer::ParseLook(name, look)) << name;
        EXPECT_EQ(look, expected) << name;
        EXPECT_STREQ(PresentationRenderer::NameOfLook(expected), name);
    }
    Look look = Look::Phong;
    for (const char* name : {"", "Basic", "vertexcolor", "advanced "})
    {
        EXPECT_FALSE(PresentationRenderer::ParseLook(name, look)) << name;
        EXPECT_EQ(look, Look::Phong);
    }
}

TEST_F(PresentationRendererTest, StartsInTheAdvancedLook)
{
    EXPECT_EQ(renderer->GetLook(), Look::Advanced);
}

TEST_F(PresentationRendererTest, EveryLookDrawsTheSurfaceItsWay)
{
    // The light shines straight at the square.
    ExpectNear(Middle(Draw(Look::Basic)), 1.0f, 0.9f, 0.7f);
    ExpectNear(Middle(Draw(Look::Advanced)), 0.8f, 0.4f, 0.2f);
    // 0.5 * 0.7 of the colour is added at a quarter of the sun.
    ExpectNear(Middle(Draw(Look::Phong)), 0.8f * 1.0875f, 0.4f * 1.0875f, 0.2f * 1.0875f);
    ExpectNear(Middle(Draw(Look::Monotone)), 1.0f, 1.0f, 1.0f);
    ExpectNear(Middle(Draw(Look::VertexColor)), 1.0f, 1.0f, 1.0f);
    for (const Look look : {Look::Basic, Look::Advanced, Look::Phong, Look::Crosshatch, Look::Monotone})
    {
        EXPECT_EQ(Draw(look).At(10, 10), (Pixel{0, 0, 255, 255}));
    }
}

TEST_F(PresentationRendererTest, StrokesOfHalfTheWidthAreMoreAndKeepTheTone)
{
    material->SetAmbient(Color(0.1f, 0.1f, 0.1f));
    material->SetDiffuse(Color(0.6f, 0.6f, 0.6f));
    const auto toneAndChanges = [this](float width) {
        renderer->SetStrokeWidth(width);
        const Picture picture = Draw(Look::Crosshatch);
        double tone = 0.0;
        double changes = 0.0;
        for (int y = Square.y + 2; y < Square.y + Square.height - 2; ++y)
        {
            for (int x = Square.x + 2; x < Square.x + Square.width - 2; ++x)
            {
                tone += picture.At(x, y).r;
                changes += std::abs(picture.At(x, y).r - picture.At(x + 1, y).r);
            }
        }
        return std::make_pair(tone, changes);
    };
    const auto [broadTone, broadChanges] = toneAndChanges(3.0f);
    const auto [fineTone, fineChanges] = toneAndChanges(1.5f);
    EXPECT_NEAR(fineTone / broadTone, 1.0, 0.1);
    EXPECT_GT(fineChanges, 1.4 * broadChanges);
}

TEST_F(PresentationRendererTest, LooksMayChangeFromFrameToFrameAndEachFrameIsTheSameAgain)
{
    const Look looks[] = {Look::Phong,    Look::Crosshatch, Look::Basic,      Look::VertexColor,
                          Look::Advanced, Look::Monotone,   Look::Crosshatch, Look::Phong};
    std::map<Look, Picture> first;
    for (int round = 0; round < 2; ++round)
    {
        for (const Look look : looks)
        {
            const Picture picture = Draw(look);
            const auto known = first.emplace(look, picture);
            EXPECT_EQ(known.first->second, picture) << static_cast<int>(look);
        }
    }
}

TEST_F(PresentationRendererTest, ColoursOfTheVerticesShow)
{
    scene->DeleteSubtree(node);
    AddSquare(*material, true);
    ExpectNear(Middle(Draw(Look::VertexColor)), 0.0f, 1.0f, 0.0f);
}

TEST_F(PresentationRendererTest, MaterialsThatKnowOnlyTheDefaultPassAreDrawnInEveryLook)
{
    auto* sim = new SimMaterial("sim");
    sim->SetFlags(MaterialFlagUnlit);
    scene->AddMaterial(sim);
    Transform nearer;
    nearer.SetPosition(Vector(0, 0, 1));
    AddSquare(*sim, false)->SetLocal(nearer);
    for (const Look look : {Look::Advanced, Look::Phong, Look::Crosshatch, Look::Monotone, Look::VertexColor})
    {
        const Pixel pixel = Middle(Draw(look));
        EXPECT_LE(ChannelDifference(pixel, ToPixel(0.75f, 0.75f, 0.75f, 0.5f)), 1) << pixel;
    }
}

TEST_F(PresentationRendererTest, TheClipPlanesCutInEveryLookThatKnowsThem)
{
    EffectES20::AddClipPlane(glm::vec3(0, 1, 0), glm::vec3(0, 1, 0));
    EffectES20::SetClipPlaneOutlineSize(0.0f);
    for (const Look look : {Look::Basic, Look::Advanced, Look::Phong, Look::Monotone, Look::VertexColor})
    {
        const Picture picture = Draw(look);
        EXPECT_EQ(picture.At(64, 84), (Pixel{0, 0, 255, 255})) << static_cast<int>(look);
        EXPECT_NE(picture.At(64, 70), (Pixel{0, 0, 255, 255})) << static_cast<int>(look);
    }
}

TEST_F(PresentationRendererTest, OfAFaceSeenFromItsEdgeNoDotsAreLeftWhereItIsCut)
{
    scene->DeleteSubtree(node);
    UseFramebuffer(Width(), Height(), 4);
    material->SetFlags(MaterialFlagNoCull);
    // So close to the height of the eye that it covers single samples of a pixel at most. Where
    // the middle of such a pixel would meet its plane, it is not cut.
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    const float height = 0.004f;
    raw->SetPositionBuffer({Vector(-4, height, -3), Vector(4, height, -3), Vector(4, height, 3), Vector(-4, height, 3)});
    raw->SetNormalBuffer(std::vector<Vector>(4, Vector(0, 1, 0)));
    raw->SetIndices({0, 1, 2, 0, 2, 3});
    raw->EndDescription(true);
    auto* mesh = new Mesh(raw, scene);
    material->AddMesh(mesh);
    node = new MeshNode(scene);
    scene->GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
    const Pixel background{0, 0, 255, 255};
    for (const Look look : {Look::Basic, Look::Advanced, Look::Phong, Look::Monotone, Look::VertexColor})
    {
        EffectES20::ClearClipPlanes();
        EXPECT_LT(Draw(look).Count(background), Width() * Height()) << "it shows";
        EffectES20::AddClipPlane(glm::vec3(0, 0, -1), glm::vec3(0, 0, 3.2f));
        EXPECT_EQ(Draw(look).Count(background), Width() * Height()) << static_cast<int>(look);
    }
}

TEST_F(PresentationRendererTest, LinesAreDrawnInEveryLook)
{
    AllowStateChange("polygon offset"); // as lines leave it
    auto* style = new LineStyle("red");
    style->color = Color(1.0f, 0.0f, 0.0f);
    style->secondColor = Color(0.0f, 0.0f, 0.0f, 0.0f);
    style->antialias = false;
    style->width = 3.0f;
    scene->AddLineStyle(style);
    auto raw = std::make_shared<RawLine>();
    raw->SetPositionBuffer({Vector(-4, 3, 0), Vector(4, 3, 0)});
    raw->SetIndices({0, 1});
    auto* line = new Line(raw, scene);
    style->AddLine(line);
    auto* lineNode = new MeshNode(scene);
    scene->GetRoot()->AddChild(lineNode, false);
    line->AddNode(lineNode);
    for (const Look look : {Look::Basic, Look::Advanced, Look::Phong, Look::Crosshatch, Look::Monotone,
                            Look::VertexColor})
    {
        ExpectNear(Draw(look).At(64, 64 + 38), 1.0f, 0.0f, 0.0f);
    }
}

TEST_F(PresentationRendererTest, AnEditGreysTheRestInBothModelsUntilItIsLeft)
{
    node->SetPath({{1, 2}});
    for (const Look look : {Look::Advanced, Look::Phong})
    {
        const Picture plain = Draw(look);
        renderer->EditInContext({{1, 2}});
        EXPECT_EQ(Draw(look), plain);
        renderer->EditInContext({{3, 4}});
        const Pixel grey = Middle(Draw(look));
        EXPECT_EQ(grey.r, grey.g);
        EXPECT_EQ(grey.g, grey.b);
        renderer->LeaveEdit();
        EXPECT_EQ(Draw(look), plain);
    }
}

TEST_F(PresentationRendererTest, StrokesLieTheSameOnAnObjectThatIsTurned)
{
    // A quarter turn of the object and of the picture on it: the strokes keep their tone, where
    // drawn along the wrong axis they would be pulled out to stripes.
    material->ignoreLightColor = false;
    material->SetDiffuse(Color(0.5f, 0.5f, 0.5f));
    material->SetAmbient(Color(0.1f, 0.1f, 0.1f));
    const auto spread = [this](const Picture& picture) {
        // Ink varies along both axes; in stripes it varies along one.
        double across = 0.0;
        double up = 0.0;
        for (int y = Square.y; y + 1 < Square.y + Square.height; ++y)
        {
            for (int x = Square.x; x + 1 < Square.x + Square.width; ++x)
            {
                across += std::abs(picture.At(x, y).r - picture.At(x + 1, y).r);
                up += std::abs(picture.At(x, y).r - picture.At(x, y + 1).r);
            }
        }
        return std::min(across, up) / std::max(across, up);
    };
    EXPECT_GT(spread(Draw(Look::Crosshatch)), 0.3);

    // The same square in a mesh that lies, stood up by its node.
    scene->DeleteSubtree(node);
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer({Vector(-2, 0, 2), Vector(2, 0, 2), Vector(2, 0, -2), Vector(-2, 0, -2)});
    raw->SetNormalBuffer(std::vector<Vector>(4, Vector(0, 1, 0)));
    raw->SetIndices({0, 1, 2, 0, 2, 3});
    raw->EndDescription(true);
    auto* mesh = new Mesh(raw, scene);
    material->AddMesh(mesh);
    node = new MeshNode(scene);
    Quaternion quarter;
    quarter.x = std::sin(0.78539816f);
    quarter.w = std::cos(0.78539816f);
    Transform stand;
    stand.SetRotation(quarter);
    node->SetLocal(stand);
    scene->GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
    EXPECT_GT(spread(Draw(Look::Crosshatch)), 0.3);
}

TEST_F(PresentationRendererTest, TheToneOfStrokesFollowsTheLightHoweverTheObjectIsTurned)
{
    material->ignoreLightColor = false;
    material->SetDiffuse(Color(0.9f, 0.9f, 0.9f));
    material->SetAmbient(Color(0.05f, 0.05f, 0.05f));
    const auto tone = [&](float angle) {
        Quaternion turn;
        turn.y = std::sin(angle / 2.0f);
        turn.w = std::cos(angle / 2.0f);
        Transform place;
        place.SetRotation(turn);
        node->SetLocal(place);
        const Picture picture = Draw(Look::Crosshatch);
        double sum = 0.0;
        for (int y = 44; y < 84; ++y)
        {
            for (int x = 60; x < 68; ++x)
            {
                sum += picture.At(x, y).r;
            }
        }
        return sum / (40.0 * 8.0);
    };
    const double facing = tone(0.0f);
    const double slanted = tone(1.0f);
    const double away = tone(1.35f);
    EXPECT_GT(facing, slanted + 10.0);
    EXPECT_GT(slanted, away + 10.0);
}

TEST_F(PresentationRendererTest, SuspensionsLeaveNothingAndChangeNoPicture)
{
    for (const Look look : {Look::Crosshatch, Look::Advanced})
    {
        renderer->EditInContext({{3, 4}});
        const Picture before = Draw(look);
        for (int i = 0; i < 3; ++i)
        {
            app.Suspend(renderer.get());
            app.Resume(renderer.get());
            EXPECT_EQ(Draw(look), before);
        }
    }
}

TEST_F(PresentationRendererTest, TheRendererMayGoBeforeTheScene)
{
    Draw(Look::Crosshatch);
    Draw(Look::Phong);
    renderer.reset();
    renderer = std::make_unique<PresentationRenderer>(&loader, app.GetContext()->GetRenderCapabilities());
    renderer->Resize(Width(), Height());
    Draw(Look::Crosshatch);
}

TEST_F(PresentationRendererTest, StrokesNeedNoLoader)
{
    material->SetAmbient(Color(0.1f, 0.1f, 0.1f));
    material->SetDiffuse(Color(0.6f, 0.6f, 0.6f));
    const Picture usual = Draw(Look::Crosshatch);
    renderer->Configure(nullptr, nullptr);
    EXPECT_EQ(Draw(Look::Crosshatch), usual);
}
