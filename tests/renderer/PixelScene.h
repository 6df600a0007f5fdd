#pragma once

#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/base/RenderCapabilities.h"
#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/scene/CameraNode.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/renderer/RendererDoubles.h"
#include "tests/support/GLFixture.h"

#include <cmath>
#include <memory>
#include <vector>

namespace OV::Test
{

/// Base of tests on an orthographic scene in which a world unit is a pixel and the origin is the
/// middle of the picture, over a blue ground. Everything is unlit, so that colours are exact.
class PixelScene : public GLFixture
{
protected:
    PixelScene()
    {
        // Tests call GL themselves, before the engine has had a reason to load it.
        Platform::LoadEntryPoints();
        context = std::make_unique<AppContext>();
        context->GetContext()->SetScene(std::make_unique<Scene>());
        scene = context->GetContext()->GetScene();
        context->GetContext()->SetBackgroundColor(Color(0.0f, 0.0f, 1.0f, 1.0f));
        CameraNode& camera = *scene->GetCameraNode();
        camera.SetProjection(CameraNode::Orthographic);
        camera.SetFOV(std::atan(1.0f));
        camera.SetDistanceToTarget(static_cast<float>(DefaultSize) / 2.0f);
        camera.SetNearFar(1.0f, 200.0f);
        Transform place;
        place.SetPosition(Vector(0.0f, 0.0f, 100.0f));
        camera.SetGlobal(place);
        NewRenderer();
    }

    ~PixelScene() override
    {
        renderer.reset();
        context.reset();
    }

    /// Starts over with a renderer of the framebuffer's size.
    void NewRenderer()
    {
        renderer = std::make_unique<OpenRenderer20>(nullptr, context->GetContext()->GetRenderCapabilities());
        renderer->Resize(Width(), Height());
        context->SetScreenSize(Width(), Height());
    }

    Material& AddColor(const Color& color)
    {
        auto* material = new Material("colour");
        material->SetFlags(MaterialFlagUnlit);
        material->SetAmbient(Color(0.0f, 0.0f, 0.0f, 0.0f));
        material->SetDiffuse(color);
        scene->AddMaterial(material);
        return *material;
    }

    /// A shape of triangles, by window coordinates of a picture of the default size.
    MeshNode& AddShape(Material& material, const std::vector<Vector>& corners,
                       const std::vector<Color>& colors = {})
    {
        std::vector<Vector> positions;
        std::vector<unsigned short> indices;
        const float half = static_cast<float>(DefaultSize) / 2.0f;
        for (const Vector& corner : corners)
        {
            indices.push_back(static_cast<unsigned short>(positions.size()));
            positions.push_back(Vector(corner.x - half, corner.y - half, corner.z));
        }
        auto raw = std::make_shared<RawMesh>();
        if (!colors.empty())
        {
            raw->SetColorBuffer(std::vector<Color>(colors));
        }
        raw->SetPositionBuffer(std::move(positions));
        raw->SetIndices(std::move(indices));
        raw->EndDescription(true);
        auto* mesh = new Mesh(raw, scene);
        auto* node = new MeshNode(scene);
        mesh->AddNode(node);
        scene->GetRoot()->AddChild(node, false);
        material.AddMesh(mesh);
        return *node;
    }

    MeshNode& AddQuad(Material& material, const PixelRect& rect, float z = 0.0f, const std::vector<Color>& colors = {})
    {
        const auto left = static_cast<float>(rect.x);
        const auto bottom = static_cast<float>(rect.y);
        const auto right = static_cast<float>(rect.x + rect.width);
        const auto top = static_cast<float>(rect.y + rect.height);
        return AddShape(material,
                        {{left, bottom, z}, {right, bottom, z}, {right, top, z},
                         {left, bottom, z}, {right, top, z}, {left, top, z}},
                        colors);
    }

    void Render(bool capture)
    {
        context->Update(0.0f);
        context->Render(renderer.get(), capture);
    }

    Picture Frame(bool capture = false)
    {
        Render(capture);
        return ReadPixels();
    }

    EffectSettingsGuard settings;
    std::unique_ptr<AppContext> context;
    std::unique_ptr<OpenRenderer20> renderer;
    Scene* scene = nullptr;
};

} // namespace OV::Test
