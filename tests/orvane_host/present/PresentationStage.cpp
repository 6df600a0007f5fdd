#include "tests/orvane_host/present/PresentationStage.h"
#include "tests/support/ShowMesh.h"

#include "orvane/effects/DepthIdPassEffectES20.h"
#include "orvane/math/Transform.h"
#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <cmath>
#include <sstream>

namespace OV::Test
{

PresentationStage::PresentationStage(int width, int height, int samples)
{
    UseFramebuffer(width, height, samples);
    // Tests call GL themselves, before the engine has had a reason to load it.
    Platform::LoadEntryPoints();
    // Lines and materials leave it as the last of them needs it.
    AllowStateChange("polygon offset");
    SkySettings::inst().SetUseFog(false);
    NewRenderer();
}

PresentationStage::~PresentationStage()
{
    app.Suspend(renderer.get());
}

void PresentationStage::NewRenderer()
{
    renderer = std::make_unique<Host::PresentationRenderer>(&loader, app.GetContext()->GetRenderCapabilities());
    renderer->Resize(Width(), Height());
    app.SetScreenSize(Width(), Height());
}

CameraNode& PresentationStage::Camera()
{
    return *World().GetCameraNode();
}

Picture PresentationStage::Draw(bool capture)
{
    World().MarkDirty();
    app.Update(0.0f);
    app.Render(renderer.get(), capture);
    return ReadPixels();
}

Picture PresentationStage::DrawIdentifiers(bool capture)
{
    renderer->ShowIdentifiers(true);
    Picture picture = Draw(capture);
    renderer->ShowIdentifiers(false);
    return picture;
}

void PresentationStage::SuspendAndResume()
{
    app.Suspend(renderer.get());
    app.Resume(renderer.get());
}

void PresentationStage::ExpectSame(const Picture& actual, const Picture& expected, const char* what)
{
    ASSERT_EQ(actual.GetWidth(), expected.GetWidth()) << what;
    ASSERT_EQ(actual.GetHeight(), expected.GetHeight()) << what;
    int wrong = 0;
    std::ostringstream first;
    for (int y = 0; y < actual.GetHeight(); ++y)
    {
        for (int x = 0; x < actual.GetWidth(); ++x)
        {
            if (actual.At(x, y) != expected.At(x, y) && wrong++ == 0)
            {
                first << actual.At(x, y) << " in place of " << expected.At(x, y) << " at " << x << ", " << y;
            }
        }
    }
    EXPECT_EQ(wrong, 0) << "pixels differ " << what << "; the first is " << first.str();
}

FlatStage::FlatStage(int width, int height, int samples) : PresentationStage(width, height, samples)
{
    app.GetContext()->SetBackgroundColor(Color(0.0f, 0.0f, 1.0f));
    app.GetContext()->SetScene(std::make_unique<Scene>());
    renderer->SetLook(Host::Look::Basic);
    FitCamera();
}

void FlatStage::FitCamera()
{
    CameraNode& camera = Camera();
    camera.SetProjection(CameraNode::Orthographic);
    camera.SetFOV(std::atan(1.0f));
    camera.SetDistanceToTarget(static_cast<float>(Height()) / 2.0f);
    camera.SetNearFar(1.0f, 200.0f);
    Transform place;
    place.SetPosition(Vector(static_cast<float>(Width()) / 2.0f, static_cast<float>(Height()) / 2.0f, 100.0f));
    camera.SetLocal(place);
}

Material& FlatStage::AddMaterial(const Color& color)
{
    auto* const material = new Material("colour");
    material->SetFlags(MaterialFlagUnlit);
    material->SetAmbient(Color(0.0f, 0.0f, 0.0f, 0.0f));
    material->SetDiffuse(color);
    World().AddMaterial(material);
    return *material;
}

MeshNode& FlatStage::AddRect(Material& material, const PixelRect& rect, float z, int userData,
                             const std::vector<Color>& colors)
{
    const auto left = static_cast<float>(rect.x);
    const auto bottom = static_cast<float>(rect.y);
    const auto right = static_cast<float>(rect.x + rect.width);
    const auto top = static_cast<float>(rect.y + rect.height);
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer({{left, bottom, z}, {right, bottom, z}, {right, top, z}, {left, top, z}});
    raw->SetNormalBuffer(std::vector<Vector>(4, Vector(0, 0, 1)));
    if (!colors.empty())
    {
        raw->SetColorBuffer(std::vector<Color>(colors));
    }
    raw->SetIndices({0, 1, 2, 0, 2, 3});
    raw->EndDescription(true);
    MeshNode& node = ShowMesh(raw, material, World());
    node.SetUserData(userData);
    return node;
}

MeshNode& FlatStage::AddRect(const Color& color, const PixelRect& rect, float z, int userData)
{
    return AddRect(AddMaterial(color), rect, z, userData);
}

LineStyle& FlatStage::AddLine(const Vector& start, const Vector& end, const Color& color, float width)
{
    auto* const style = new LineStyle("line");
    style->color = color;
    style->secondColor = Color(0.0f, 0.0f, 0.0f, 0.0f);
    style->antialias = false;
    style->width = width;
    World().AddLineStyle(style);
    auto raw = std::make_shared<RawLine>();
    raw->SetPositionBuffer({start, end});
    raw->SetIndices({0, 1});
    auto* const line = new Line(raw, &World());
    style->AddLine(line);
    auto* const node = new MeshNode(&World());
    World().GetRoot()->AddChild(node, false);
    line->AddNode(node);
    return *style;
}

std::vector<StageByStage::Stage> StageByStage::Stages()
{
    const auto edges = [](Host::Identity identity) {
        return [identity](Host::PresentationRenderer& of) {
            Host::EdgeLook look;
            look.identity = identity;
            of.SetEdges(look);
        };
    };
    return {
        {"edges of objects", edges(Host::Identity::Object)},
        {"edges of groups", edges(Host::Identity::Group)},
        {"occlusion", [](auto& of) { of.ShowAmbientOcclusion(true); }},
        {"occlusion by horizons", [](auto& of) { of.SetHorizonOcclusion({{20.0f, 1.0f}}); }},
        {"identifiers", [](auto& of) { of.ShowIdentifiers(true); }},
        {"overlaid lines", [](auto& of) { of.OverlayLines(true); }},
        {"all",
         [edges](auto& of) {
             edges(Host::Identity::Object)(of);
             of.ShowAmbientOcclusion(true);
             of.SetHorizonOcclusion({{20.0f, 1.0f}});
             of.OverlayLines(true);
         }},
    };
}

void StageByStage::UseAllStages()
{
    Stages().back().use(*renderer);
}

void StageByStage::DropStages()
{
    renderer->SetEdges(std::nullopt);
    renderer->ShowAmbientOcclusion(false);
    renderer->SetHorizonOcclusion(std::nullopt);
    renderer->OverlayLines(false);
    renderer->ShowIdentifiers(false);
}

void StageByStage::AddThings()
{
    AddRect(Color(0.4f, 0.4f, 0.4f), {10, 10, 30, 20}, 0.0f, 1);
    AddRect(Color(0.2f, 0.6f, 0.2f), {40, 10, 20, 30}, 6.0f, 2);
}

Pixel IdentifierOf(int userData)
{
    float color[4];
    DepthIdPassEffectES20::EncodeId(userData, color);
    return ToPixel(color[0], color[1], color[2]);
}

} // namespace OV::Test
