#include "tests/imaging/TextureFiles.h"
#include "tests/overlay/LayerShapes.h"
#include "tests/support/GLRecorder.h"

#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/base/RenderCapabilities.h"
#include "orvane/imaging/TextureLoader.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

// A host with all that it makes, drawn at least once, on a recorder that stands in for GL.
class HostDouble
{
public:
    HostDouble()
        : context(std::make_unique<AppContext>())
        , loader(TextureLoader::Create())
        , renderer(std::make_unique<Renderer20>(loader.get(), context->GetContext()->GetRenderCapabilities()))
    {
        auto scene = std::make_unique<Scene>();
        AddTriangle(*scene, "opaque", 1.0f);
        AddTriangle(*scene, "transparent", 0.5f);
        context->GetContext()->SetScene(std::move(scene));
        Scene2D& layer = *context->GetContext()->GetForeground2D();
        Material* const material = AddLayerMaterial(layer, 1.0f);
        SetTexture(*material);
        AddLayerMesh(layer, *AddShapeNode(layer, 20, 20, 0), *material);
        context->SetScreenSize(64, 48);
        renderer->Resize(64, 48);
    }

    void Draw(bool capture = false)
    {
        context->Update(0.0f);
        context->Render(renderer.get(), capture);
    }

    // Ends one of the three: 'c'ontext, 'r'enderer, 'l'oader.
    void End(char which)
    {
        switch (which)
        {
        case 'c':
            context.reset();
            break;
        case 'r':
            renderer.reset();
            break;
        default:
            loader.reset();
        }
    }

    TextureFiles files;
    std::string picture = files.Write("picture.png", PlainPixels(4, 4, 10, 20, 30), 4, 4);
    std::unique_ptr<AppContext> context;
    std::unique_ptr<TextureLoader> loader;
    std::unique_ptr<Renderer20> renderer;

private:
    void SetTexture(Material& material)
    {
        material.texturePath = files.Path();
        material.textureName = picture;
    }

    void AddTriangle(Scene& scene, const std::string& name, float opacity)
    {
        auto raw = std::make_shared<RawMesh>();
        raw->StartDescription();
        raw->SetPositionBuffer({Vector(0, 0, -5), Vector(1, 0, -5), Vector(0, 1, -5)});
        raw->SetNormalBuffer({Vector(0, 0, 1), Vector(0, 0, 1), Vector(0, 0, 1)});
        raw->SetTextureBuffer({{0.0f, 0.0f}, {1.0f, 0.0f}, {0.0f, 1.0f}});
        raw->SetIndices({0, 1, 2});
        raw->EndDescription(true);
        auto* mesh = new Mesh(raw, &scene);
        auto* material = new Material(name);
        material->SetOpacity(opacity);
        SetTexture(*material);
        scene.AddMaterial(material);
        material->AddMesh(mesh);
        auto* node = new MeshNode(&scene);
        scene.GetRoot()->AddChild(node, false);
        mesh->AddNode(node);
    }
};

void ExpectNothingLeft(const GLRecorder& gl, bool texturesMayStay)
{
    EXPECT_TRUE(gl.Live(GLObjectKind::Buffer).empty());
    EXPECT_TRUE(gl.Live(GLObjectKind::Program).empty());
    EXPECT_TRUE(gl.Live(GLObjectKind::Shader).empty());
    EXPECT_TRUE(gl.Live(GLObjectKind::Framebuffer).empty());
    EXPECT_TRUE(gl.Live(GLObjectKind::Renderbuffer).empty());
    if (!texturesMayStay)
    {
        EXPECT_TRUE(gl.Live(GLObjectKind::Texture).empty());
    }
    EXPECT_TRUE(gl.StrayDeletes().empty());
}

// A texture goes with its owner, by way of the loader: where the loader goes first, no one is
// left to delete it.
bool LoaderGoesBeforeTheScene(const std::string& order)
{
    return order.find('l') < order.find('c');
}

class DestructionOrder : public testing::TestWithParam<std::string>
{
};

TEST_P(DestructionOrder, AfterAFrameIsSafeAndLeavesNothingBehind)
{
    const GLRecorder gl;
    {
        HostDouble host;
        host.Draw();
        ASSERT_GT(gl.Count("glDrawElements"), 0u);
        ASSERT_FALSE(gl.Live(GLObjectKind::Texture).empty());
        for (const char which : GetParam())
        {
            host.End(which);
        }
    }
    ExpectNothingLeft(gl, LoaderGoesBeforeTheScene(GetParam()));
}

TEST_P(DestructionOrder, AfterACapturedFrameIsSafeAndLeavesNothingBehind)
{
    const GLRecorder gl;
    {
        HostDouble host;
        host.Draw(true);
        ASSERT_FALSE(gl.Live(GLObjectKind::Framebuffer).empty());
        host.context->RenderCapturedAndUI(host.renderer.get());
        for (const char which : GetParam())
        {
            host.End(which);
        }
    }
    ExpectNothingLeft(gl, LoaderGoesBeforeTheScene(GetParam()));
}

TEST_P(DestructionOrder, AfterASuspendIsSafeAndLeavesNothingBehind)
{
    const GLRecorder gl;
    {
        HostDouble host;
        host.Draw(true);
        host.context->Suspend(host.renderer.get());
        EXPECT_TRUE(gl.Live(GLObjectKind::Texture).empty());
        EXPECT_TRUE(gl.Live(GLObjectKind::Buffer).empty());
        EXPECT_TRUE(gl.Live(GLObjectKind::Framebuffer).empty());
        for (const char which : GetParam())
        {
            host.End(which);
        }
    }
    ExpectNothingLeft(gl, false);
}

TEST_P(DestructionOrder, WithoutAFrameMakesNoGLObjects)
{
    const GLRecorder gl;
    {
        HostDouble host;
        for (const char which : GetParam())
        {
            host.End(which);
        }
    }
    EXPECT_EQ(gl.Count("glGenTextures") + gl.Count("glGenBuffers") + gl.Count("glCreateProgram"), 0u);
    ExpectNothingLeft(gl, false);
}

TEST_P(DestructionOrder, WithoutAContextOfGLIsSafe)
{
    HostDouble host;
    host.Draw();
    host.Draw(true);
    host.context->Suspend(host.renderer.get());
    host.context->Resume(host.renderer.get());
    for (const char which : GetParam())
    {
        host.End(which);
    }
}

// Whatever remains after each end goes on working.
TEST_P(DestructionOrder, WhatRemainsCanStillBeUsed)
{
    const GLRecorder gl;
    HostDouble host;
    host.Draw();
    for (const char which : GetParam())
    {
        host.End(which);
        if (host.context && !host.renderer)
        {
            Renderer20 other(host.loader.get(), host.context->GetContext()->GetRenderCapabilities());
            other.Resize(64, 48);
            const std::size_t before = gl.Count("glDrawElements");
            host.context->Update(0.0f);
            host.context->Render(&other, true);
            EXPECT_GT(gl.Count("glDrawElements"), before);
        }
        else if (host.context)
        {
            host.Draw(true);
            host.context->Suspend(host.renderer.get());
            host.context->Resume(host.renderer.get());
            host.Draw();
        }
        else if (host.renderer)
        {
            AppContext other;
            other.GetContext()->SetScene(std::make_unique<Scene>());
            other.Update(0.0f);
            other.Render(host.renderer.get(), true);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Of, DestructionOrder, testing::Values("crl", "clr", "rcl", "rlc", "lcr", "lrc"));

TEST(DestructionOrderOfMaterials, AMaterialMayOutliveEverythingElse)
{
    const GLRecorder gl;
    {
        HostDouble host;
        host.Draw();
        CoreContext& core = *host.context->GetContext();
        Scene* const scene = core.GetScene();
        Material* const material = scene->GetOptimizedMaterials()[0];
        ASSERT_TRUE(scene->RemoveMaterial(material));
        const std::unique_ptr<Material> kept(material);
        host.End('c');
        host.End('r');
        host.End('l');
        EXPECT_NE(kept->GetRenderData(), nullptr);
    }
    ExpectNothingLeft(gl, true);
}

TEST(DestructionOrderOfRenderers, TwoRenderersOfOneSceneMayGoInAnyOrder)
{
    for (const bool firstGoesFirst : {true, false})
    {
        const GLRecorder gl;
        {
            HostDouble host;
            auto second = std::make_unique<Renderer20>(host.loader.get(),
                                                       host.context->GetContext()->GetRenderCapabilities());
            second->Resize(64, 48);
            host.Draw();
            host.context->Render(second.get(), false);
            (firstGoesFirst ? host.renderer : second).reset();
            (firstGoesFirst ? second : host.renderer).reset();
            host.End('c');
        }
        ExpectNothingLeft(gl, false);
    }
}

}  // namespace

}  // namespace OV::Test
