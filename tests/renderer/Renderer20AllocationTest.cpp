#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/NodeMaterial.h"
#include "tests/renderer/RendererDoubles.h"
#include "tests/support/GLRecorder.h"
#include "tests/support/HeapCount.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

/// Stands for glBufferData: what is on the heap at that moment.
std::size_t g_mostLiveBytes = 0;

void GLAPIENTRY LookAtHeap(GLenum, GLsizeiptr, const void*, GLenum)
{
    g_mostLiveBytes = std::max(g_mostLiveBytes, HeapBytes());
}

/// A scene with all kinds of items in it, drawn without a record of the calls.
class SteadyFrame : public ::testing::Test
{
protected:
    SteadyFrame() : renderer(nullptr, nullptr)
    {
        context.GetContext()->SetScene(std::make_unique<Scene>());
        Scene& scene = *context.GetContext()->GetScene();
        auto* light = new LightNode(&scene);
        scene.GetRoot()->AddChild(light, false);
        for (int m = 0; m < 5; ++m)
        {
            Material* material = AddMaterial(scene, "m", m == 4 ? 0.5f : 1.0f);
            for (int i = 0; i < 40; ++i)
                last = AddPart(scene, *material, {0, 1, 2}, {true, false, i % 2 == 0});
            last.mesh->SetFlags(MeshFlagNoCull);
        }
        auto* nodeMaterial = new NodeMaterial;
        scene.AddMaterial(nodeMaterial);
        nodeMaterial->AddNode(last.node);

        Scene2D& layer = *context.GetContext()->GetForeground2D();
        Material* glass = AddMaterial(layer, "glass", 0.5f);
        for (int i = 0; i < 10; ++i)
            AddPart(layer, *glass);
        AddPart(layer, *AddMaterial(layer, "flat"));
        layer.PopulateZOrderedDrawItems();

        renderer.Resize(64, 64);
        context.SetScreenSize(64, 64);
    }

    void Frame(bool capture)
    {
        context.Update(0.0f);
        context.Render(&renderer, capture);
    }

    GLRecorder recorder;
    AppContext context;
    OpenRenderer20 renderer;
    ScenePart last;
};

} // namespace

TEST_F(SteadyFrame, AllocatesNothing)
{
    for (const bool capture : {false, true})
    {
        Frame(capture);
        Frame(capture);
        recorder.Clear();
        Frame(capture);
        const std::size_t screenQuads = capture && renderer.screenEffect ? 1 : 0;
        EXPECT_EQ(recorder.Count("glDrawElements"), 5u * 40u + 10u + 1u + screenQuads);

        recorder.SetRecording(false);
        Frame(capture);
        const std::size_t before = HeapCount();
        Frame(capture);
        Frame(capture);
        EXPECT_EQ(HeapCount(), before) << (capture ? "with" : "without") << " capture";
        recorder.SetRecording(true);
    }
}

TEST_F(SteadyFrame, AllocatesNothingWhileANodeMoves)
{
    Frame(false);
    Frame(false);
    recorder.SetRecording(false);
    Transform place;
    Frame(false);
    const std::size_t before = HeapCount();
    for (int i = 0; i < 3; ++i)
    {
        place.SetPosition(Vector(static_cast<float>(i), 0.0f, 0.0f));
        last.node->SetLocal(place);
        Frame(false);
    }
    EXPECT_EQ(HeapCount(), before);
}

namespace
{

/// What the heap holds and has given.
struct HeapState
{
    std::size_t blocks = HeapCount();
    std::size_t bytes = HeapBytes();
};

double PerNode(std::size_t before, std::size_t after, std::size_t nodes)
{
    return static_cast<double>(after - before) / static_cast<double>(nodes);
}

} // namespace

// Counted for all of it, the mesh's own arrays apart: the node in its tree, the mesh, what links the
// two and the material, render data, and the lists of a frame.
TEST(NodesWithMeshesOfTheirOwn, TakeFewBlocksAndBytes)
{
    constexpr std::size_t count = 100000;
    constexpr std::size_t arrays = 3 * sizeof(Vector) * 2 + 3 * sizeof(unsigned short);
    // What the stand-in for GL keeps of each mesh, as GL itself does: vertices of 32 bytes, and indices.
    constexpr std::size_t copy = 3 * 32 + 3 * sizeof(unsigned short);
    GLRecorder recorder;
    recorder.SetRecording(false);
    OpenRenderer20 renderer(nullptr, nullptr);
    renderer.Resize(64, 64);
    Scene scene;
    std::vector<Material*> materials;
    for (int i = 0; i < 50; ++i)
    {
        materials.push_back(AddMaterial(scene, "m"));
    }
    const HeapState empty;
    for (std::size_t i = 0; i < count; ++i)
    {
        AddPart(scene, *materials[i % materials.size()], {0, 1, 2}, {true, false, false});
    }
    scene.UpdateGraph(64.0f, 64.0f);
    const HeapState built;
    for (int frame = 0; frame < 2; ++frame)
    {
        renderer.Render3D(&scene, scene.GetCameraNode());
    }
    const HeapState drawn;

    RecordProperty("blocks", std::to_string(PerNode(empty.blocks, built.blocks, count)));
    RecordProperty("bytes", std::to_string(PerNode(empty.bytes, drawn.bytes, count)));
    // The sanitizer has each node by itself.
#if defined(__SANITIZE_ADDRESS__)
    constexpr double blocksOfNode = 1.0;
#else
    constexpr double blocksOfNode = 0.0;
#endif
    EXPECT_LE(PerNode(empty.blocks, built.blocks, count), blocksOfNode + 5.1) << "four of them geometry, and the mesh";
    EXPECT_LE(PerNode(built.blocks, drawn.blocks, count), 1.1) << "the render data of the mesh";
    EXPECT_LE(PerNode(empty.bytes, drawn.bytes, count) - arrays - copy, 950.0);
}

TEST_F(SteadyFrame, PackingTakesOneStagingCopyOfTheBufferInHand)
{
    recorder.SetRecording(false);
    std::vector<std::unique_ptr<Mesh>> meshes;
    for (const Format& format : {Format{true, true, true}, Format{true, true, false}, Format{false, true, true}})
    {
        for (int i = 0; i < 500; ++i)
        {
            meshes.push_back(std::make_unique<Mesh>(MakeRawMesh(60, {0, 1, 2}, format)));
            Attach(*meshes.back(), renderer.bufferPool);
        }
    }
    constexpr std::size_t staging = 500 * (60 * 64 + 3 * 2);
    const auto bufferData = __glewBufferData;
    __glewBufferData = LookAtHeap;
    g_mostLiveBytes = 0;
    const std::size_t before = HeapBytes();
    renderer.bufferPool.GenerateVBOs();
    __glewBufferData = bufferData;
    EXPECT_GE(g_mostLiveBytes, before + staging);
    EXPECT_LE(g_mostLiveBytes, before + staging + 8192);
    meshes.clear();
}

} // namespace OV::Test
