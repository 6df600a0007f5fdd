// Memory that runs out in the middle: nothing of GL is left behind, and no end of a scene ends the
// process.

#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/renderdata/LineStyleES20.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/RawLine.h"
#include "tests/renderer/RendererDoubles.h"
#include "tests/support/GLRecorder.h"
#include "tests/support/HeapCount.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>

namespace OV::Test
{

namespace
{

/// Loader that counts the textures it has given, and takes no memory for it.
class CountingLoader : public TextureLoader
{
public:
    unsigned CreateTextTexture(const std::string&, int, const std::string&, int, int&, int&, int&, int&) override
    {
        return ++live;
    }
    unsigned CreateTexture(unsigned char*, int, int, float&, float&, bool&, bool) override { return ++live; }
    unsigned CreateTexture(const FilePath&, const std::string&, int&, int&, float&, float&, bool, float, int,
                           bool&) override
    {
        return ++live;
    }
    unsigned CreateMipMapTexture(const FilePath&, const std::vector<std::string>&) override { return 0; }
    unsigned CreateCubeMap(const FilePath&, const std::vector<std::string>&) override { return 0; }
    bool ReleaseTexture(unsigned) override
    {
        --live;
        return true;
    }
    void Suspend() override {}
    void Resume() override {}

    unsigned live = 0;
};

/// Does something with less memory than it needs, one block more each time, until it has enough.
/// @return how often it had not.
std::size_t WithTooLittle(const std::function<void(std::size_t)>& work)
{
    constexpr std::size_t most = 100000;
    for (std::size_t blocks = 0; blocks < most; ++blocks)
    {
        try
        {
            work(blocks);
            return blocks;
        }
        catch (const std::bad_alloc&)
        {
        }
    }
    ADD_FAILURE() << "never enough";
    return most;
}

/// A scene with all kinds of objects in it, drawn once.
struct FullContext
{
    FullContext() : renderer(&loader, nullptr)
    {
        context.GetContext()->SetScene(std::make_unique<Scene>());
        Scene& scene = *context.GetContext()->GetScene();
        auto* const light = new LightNode(&scene);
        scene.GetRoot()->AddChild(light, false);
        ScenePart last;
        for (int i = 0; i < 6; ++i)
        {
            Material* const material = AddMaterial(scene, "m", i % 2 == 0 ? 1.0f : 0.5f);
            material->textureName = "picture";
            last = AddPart(scene, *material);
            auto* const below = new MeshNode(&scene);
            last.node->AddChild(below, false);
            last.mesh->AddNode(below);
        }
        auto* const nodeMaterial = new NodeMaterial;
        scene.AddMaterial(nodeMaterial);
        nodeMaterial->AddNode(last.node);
        auto* const style = new LineStyle("line");
        scene.AddLineStyle(style);
        auto raw = std::make_shared<RawLine>();
        raw->SetPositionBuffer({{0, 0, 0}, {1, 1, 0}});
        raw->SetIndices({0, 1});
        auto* const line = new Line(raw, &scene);
        line->AddNode(last.node);
        style->AddLine(line);
        Scene2D& layer = *context.GetContext()->GetForeground2D();
        sprite = std::make_unique<Sprite>(&layer, new Rect(&layer, 4.0f, 4.0f, true));
        renderer.Resize(64, 64);
        context.SetScreenSize(64, 64);
        Draw();
    }

    void Draw()
    {
        context.Update(0.0f);
        context.Render(&renderer, true);
    }

    GLRecorder gl;
    CountingLoader loader;
    AppContext context;
    OpenRenderer20 renderer;
    std::unique_ptr<Sprite> sprite;
};

} // namespace

TEST(OutOfMemory, UnfinishedMaterialDataLeavesNeitherTexturesNorShaders)
{
    Material material("m");
    material.textureName = "a";
    material.normalMapName = "b";
    material.opacityMapName = "c";
    GLRecorder gl;
    CountingLoader loader;
    const std::size_t failed = WithTooLittle(
        [&](std::size_t blocks)
        {
            EXPECT_EQ(loader.live, 0u) << blocks;
            EXPECT_EQ(gl.LiveCount(), 0u) << blocks;
            EffectCache cache;
            SharedBufferPool pool;
            std::unique_ptr<MaterialES20> data;
            const HeapRefusal refusal(blocks);
            data = std::make_unique<MaterialES20>(&material, &loader, &pool, &cache);
        });
    EXPECT_GT(failed, 10u);
    EXPECT_EQ(loader.live, 0u);
    EXPECT_EQ(gl.LiveCount(), 0u);
}

TEST(OutOfMemory, UnfinishedLineDataLeavesNoShaders)
{
    LineStyle style("line");
    GLRecorder gl;
    const std::size_t failed = WithTooLittle(
        [&](std::size_t blocks)
        {
            EXPECT_EQ(gl.LiveCount(), 0u) << blocks;
            EffectCache cache;
            SharedBufferPool pool;
            std::unique_ptr<LineStyleES20> data;
            const HeapRefusal refusal(blocks);
            data = std::make_unique<LineStyleES20>(&style, &pool, &cache, nullptr);
            data->GetShader()->Precompile(0);
        });
    EXPECT_GT(failed, 5u);
    EXPECT_EQ(gl.LiveCount(), 0u);
}

TEST(OutOfMemory, UnfinishedMeshDataLeavesNothingInThePool)
{
    Mesh mesh(MakeRawMesh(3, {0, 1, 2}, {}));
    GLRecorder gl;
    SharedBufferPool pool;
    const std::size_t failed = WithTooLittle(
        [&](std::size_t blocks)
        {
            EXPECT_FALSE(pool.GenerateVBOs()) << blocks;
            const HeapRefusal refusal(blocks);
            const MeshES20 data(&mesh, &pool);
        });
    EXPECT_GT(failed, 1u);
    EXPECT_FALSE(pool.GenerateVBOs());
}

TEST(OutOfMemory, AScreenMeshThatCouldNotBeMadeIsMadeByTheNextCapture)
{
    GLRecorder gl;
    OpenRenderer20 renderer(nullptr, nullptr);
    renderer.Resize(64, 64);
    const std::size_t failed = WithTooLittle(
        [&](std::size_t blocks)
        {
            const HeapRefusal refusal(blocks);
            renderer.BeginCapture();
        });
    EXPECT_GT(failed, 5u);
    renderer.EndCapture();
    renderer.ApplyCapture();
    EXPECT_EQ(gl.Count("glDrawElements"), 1u);
}

TEST(OutOfMemory, SuspendingTakesNone)
{
    FullContext full;
    {
        const HeapRefusal refusal(0);
        EXPECT_NO_THROW(full.context.Suspend(&full.renderer));
    }
    EXPECT_EQ(full.loader.live, 0u);
    full.context.Resume(&full.renderer);
    full.Draw();
}

TEST(OutOfMemory, TheEndOfASceneTakesNone)
{
    {
        auto full = std::make_unique<FullContext>();
        std::unique_ptr<Scene> empty = std::make_unique<Scene>();
        {
            const HeapRefusal refusal(0);
            full->context.GetContext()->SetScene(std::move(empty));
        }
        EXPECT_LE(full->loader.live, 1u);
    }
    auto full = std::make_unique<FullContext>();
    const HeapRefusal refusal(0);
    full.reset();
}

} // namespace OV::Test
