#include "orvane/renderdata/LineStyleES20.h"

#include "orvane/effects/EffectCache.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/LineES20.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/NodeLineStyle.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/Scene.h"
#include "tests/renderdata/RenderDataDoubles.h"
#include "tests/support/GLRecorder.h"
#include "tests/support/VirtualSlot.h"

#include <gmock/gmock.h>

#include <memory>

namespace OV::Test
{

namespace
{

/// Opens what a renderer reaches through the base.
class OpenStyleData : public LineStyleES20
{
public:
    using LineStyleES20::LineStyleES20;
    using LineStyleES20::Remove;
};

class LineStyleES20Test : public ::testing::Test
{
protected:
    std::shared_ptr<RawLine> MakeRawLine()
    {
        auto raw = std::make_shared<RawLine>();
        raw->SetPositionBuffer({Vector(0, 0, 0), Vector(1, 0, 0)});
        raw->SetIndices({0, 1});
        return raw;
    }

    Line& AddLine()
    {
        lines.push_back(std::make_unique<Line>(MakeRawLine(), nullptr));
        style.AddLine(lines.back().get());
        return *lines.back();
    }

    static LineES20* DataOf(Line& line) { return dynamic_cast<LineES20*>(line.GetRenderData()); }

    GLRecorder gl;
    Scene scene;
    SharedBufferPool pool;
    EffectCache cache;
    CameraNodeES20 camera{scene.GetCameraNode()};
    LineStyle style{"style"};
    std::vector<std::unique_ptr<Line>> lines;
    std::vector<RenderItemES20> items;
};

} // namespace

TEST_F(LineStyleES20Test, HoldsOneReferenceOfTheLineEffect)
{
    EffectES20* effect = cache.GetEffect(EffectCache::SolidLine);
    {
        LineStyleES20 data(&style, &pool, &cache);
        EXPECT_EQ(data.effect, effect);
        EXPECT_EQ(data.secondEffect, nullptr);
        EXPECT_EQ(data.lineStyle, &style);
        EXPECT_EQ(data.bufferPool, &pool);
        EXPECT_EQ(effect->GetReferenceCount(), 2);
        EXPECT_TRUE(data.IsConnected());
    }
    EXPECT_EQ(effect->GetReferenceCount(), 1);
    EXPECT_TRUE(effect->Release());
}

TEST_F(LineStyleES20Test, BothEffectSlotsAreDropped)
{
    EffectES20* other = cache.GetEffect(EffectCache::BasicMaterial);
    other->AddReference();
    {
        LineStyleES20 data(&style, &pool, &cache);
        data.secondEffect = other;
    }
    EXPECT_EQ(other->GetReferenceCount(), 1);
    other->Release();
}

TEST_F(LineStyleES20Test, VirtualsStandInTheOrderOfMeshStyles)
{
    EXPECT_EQ(VirtualSlot<bool (LineStyleES20::*)(CameraNodeES20*, RenderPass)>(&LineStyleES20::Apply), 1);
    EXPECT_EQ(VirtualSlot<void (LineStyleES20::*)(CameraNodeES20*)>(&LineStyleES20::Apply), 2);
    EXPECT_EQ(VirtualSlot<void (OpenStyleData::*)()>(&OpenStyleData::Remove), 3);
    EXPECT_EQ(VirtualSlot<EffectES20* (LineStyleES20::*)(RenderPass)>(&LineStyleES20::GetShader), 4);
    EXPECT_EQ(VirtualSlot<EffectES20* (LineStyleES20::*)()>(&LineStyleES20::GetShader), 5);
}

TEST_F(LineStyleES20Test, EveryPassHasTheLineEffect)
{
    LineStyleES20 data(&style, &pool, &cache);
    for (unsigned pass = 0; pass <= kRenderPassCount; ++pass)
    {
        EXPECT_EQ(data.GetShader(static_cast<RenderPass>(pass)), data.effect) << pass;
    }
    EXPECT_EQ(data.GetShader(), data.effect);
}

TEST_F(LineStyleES20Test, TheAmbientPassAloneLeavesTheSecondColourOut)
{
    style.color = Color(0.25f, 0.0f, 0.0f, 1.0f);
    style.secondColor = Color(0.5f, 0.0f, 0.0f, 1.0f);
    OpenStyleData data(&style, &pool, &cache);
    const auto red = [&] {
        const float value = gl.Uniform("u_color").at(0);
        data.Remove();
        return value;
    };
    EXPECT_TRUE(data.Apply(&camera, RenderPassAmbient));
    EXPECT_EQ(red(), 0.25f);
    for (unsigned pass = 1; pass < kRenderPassCount; ++pass)
    {
        EXPECT_TRUE(data.Apply(&camera, static_cast<RenderPass>(pass)));
        EXPECT_EQ(red(), 0.75f) << pass;
    }
    data.Apply(&camera);
    EXPECT_EQ(red(), 0.75f);
}

TEST_F(LineStyleES20Test, RemovePutsTheDepthStateBack)
{
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    style.noDepthTest = true;
    style.noDepthWrite = true;
    style.SetFlags(LineStyleFlagDepthLessEqual);
    OpenStyleData data(&style, &pool, &cache);
    data.Apply(&camera, RenderPassDefault);
    EXPECT_FALSE(gl.IsEnabled(GL_DEPTH_TEST));
    data.Remove();
    EXPECT_TRUE(gl.IsEnabled(GL_DEPTH_TEST));
    EXPECT_EQ(gl.FindLast("glDepthFunc")->Int(0), GL_LESS);
    EXPECT_EQ(gl.FindLast("glDepthMask")->Int(0), GL_TRUE);
}

TEST_F(LineStyleES20Test, ListsItsLinesInTheirOrderWithRenderDataAndBehindWhatIsThere)
{
    for (int i = 0; i < 3; ++i)
    {
        AddLine();
    }
    LineStyleES20 data(&style, &pool, &cache);
    items.resize(1);
    data.Prepare(&camera, items, false);
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(items[0].mesh, nullptr);
    std::size_t next = 1;
    for (Line* line : style.GetLines())
    {
        const RenderItemES20& item = items[next++];
        EXPECT_EQ(item.mesh, line);
        EXPECT_EQ(item.style, &data);
        EXPECT_FALSE(item.specificNode);
        EXPECT_EQ(item.node, nullptr);
        ASSERT_NE(DataOf(*line), nullptr);
        EXPECT_EQ(DataOf(*line)->line, line);
    }
    const LineES20* first = DataOf(*lines[0]);
    items.clear();
    data.Prepare(&camera, items, false);
    EXPECT_EQ(DataOf(*lines[0]), first);
}

TEST_F(LineStyleES20Test, ListsALineThatIsNotReadyToo)
{
    Line& line = AddLine();
    line.SetDrawID(12);
    ASSERT_FALSE(line.ReadyToDraw());
    LineStyleES20 data(&style, &pool, &cache);
    data.Prepare(&camera, items, false);
    EXPECT_EQ(items.size(), 1u);
}

TEST_F(LineStyleES20Test, CutsWhereBothTheCallerAndTheStyleWantIt)
{
    Line& line = AddLine();
    LineStyleES20 data(&style, &pool, &cache);
    for (const bool caller : {false, true})
    {
        for (const bool wanted : {false, true})
        {
            style.clipping = wanted;
            data.Prepare(&camera, items, caller);
            EXPECT_EQ(DataOf(line)->clippingPlaneEnabled, caller && wanted) << caller << wanted;
        }
    }
}

TEST_F(LineStyleES20Test, OneLineAtOneNodeFollowsTheCallerAlone)
{
    Line& line = AddLine();
    MeshNode node(nullptr);
    style.clipping = false;
    LineStyleES20 data(&style, &pool, &cache);
    data.PrepareSpecificNode(&line, &node, items, true);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].mesh, &line);
    EXPECT_EQ(items[0].style, &data);
    EXPECT_TRUE(items[0].specificNode);
    EXPECT_EQ(items[0].node, &node);
    EXPECT_TRUE(DataOf(line)->clippingPlaneEnabled);
    data.PrepareSpecificNode(&line, &node, items, false);
    EXPECT_FALSE(DataOf(line)->clippingPlaneEnabled);
}

TEST_F(LineStyleES20Test, ANodeLineStyleListsTheLinesOfItsNode)
{
    Mesh mesh(MakeRawMesh(3, {0, 1, 2}), nullptr);
    Line first(MakeRawLine(), nullptr);
    Line second(MakeRawLine(), nullptr);
    MeshNode node(nullptr);
    first.AddNode(&node);
    mesh.AddNode(&node);
    second.AddNode(&node);
    NodeLineStyle bound;
    bound.clipping = false;
    bound.SetNode(&node);
    LineStyleES20 data(&bound, &pool, &cache);
    data.Prepare(&camera, items, true);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].mesh, &first);
    EXPECT_EQ(items[1].mesh, &second);
    for (const RenderItemES20& item : items)
    {
        EXPECT_EQ(item.style, &data);
        EXPECT_TRUE(item.specificNode);
        EXPECT_EQ(item.node, &node);
    }
    EXPECT_TRUE(DataOf(first)->clippingPlaneEnabled);
    EXPECT_EQ(mesh.GetRenderData(), nullptr);
}

TEST_F(LineStyleES20Test, ANodeLineStyleWithoutANodeAddsNoItems)
{
    NodeLineStyle unbound;
    Line line(MakeRawLine(), nullptr);
    unbound.AddLine(&line);
    LineStyleES20 data(&unbound, &pool, &cache);
    data.Prepare(&camera, items, false);
    EXPECT_TRUE(items.empty());
}

TEST_F(LineStyleES20Test, LinesOverOneGeometryShareTheirRenderData)
{
    auto raw = MakeRawLine();
    Line first(raw, nullptr);
    Line second(raw, nullptr);
    style.AddLine(&first);
    style.AddLine(&second);
    LineStyleES20 data(&style, &pool, &cache);
    data.Prepare(&camera, items, false);
    EXPECT_EQ(items.size(), 2u);
    ASSERT_NE(DataOf(first), nullptr);
    EXPECT_EQ(DataOf(first), DataOf(second));
}

TEST_F(LineStyleES20Test, TheGeometryOutlivesTheLineThatMadeItsRenderData)
{
    auto raw = MakeRawLine();
    auto first = std::make_unique<Line>(raw, nullptr);
    Line second(raw, nullptr);
    style.AddLine(first.get());
    LineStyleES20 data(&style, &pool, &cache);
    data.Prepare(&camera, items, false);
    style.AddLine(&second);
    first.reset();
    items.clear();
    data.Prepare(&camera, items, false);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(DataOf(second)->line, &second);
}

TEST_F(LineStyleES20Test, RenderDataOfAMeshIsReplaced)
{
    Line& line = AddLine();
    line.SetRenderData(new MeshES20(&line, &pool), true);
    LineStyleES20 data(&style, &pool, &cache);
    data.Prepare(&camera, items, false);
    EXPECT_NE(DataOf(line), nullptr);
}

TEST_F(LineStyleES20Test, SuspendingALineDestroysItsRenderDataAndPrepareMakesItAnew)
{
    Line& line = AddLine();
    LineStyleES20 data(&style, &pool, &cache);
    data.Prepare(&camera, items, false);
    pool.GenerateVBOs();
    EXPECT_EQ(gl.Live(GLObjectKind::Buffer).size(), 2u);
    line.Suspend();
    EXPECT_EQ(line.GetRenderData(), nullptr);
    EXPECT_EQ(gl.Live(GLObjectKind::Buffer).size(), 0u);
    data.Prepare(&camera, items, false);
    pool.GenerateVBOs();
    EXPECT_EQ(gl.Live(GLObjectKind::Buffer).size(), 2u);
}

TEST_F(LineStyleES20Test, APoolThatDiesFirstMakesItInert)
{
    AddLine();
    auto mortal = std::make_unique<SharedBufferPool>();
    OpenStyleData data(&style, mortal.get(), &cache);
    data.Prepare(&camera, items, false);
    mortal.reset();
    EXPECT_FALSE(data.IsConnected());
    items.clear();
    data.Prepare(&camera, items, false);
    EXPECT_TRUE(items.empty());
    MeshNode node(nullptr);
    data.PrepareSpecificNode(lines[0].get(), &node, items, false);
    EXPECT_TRUE(items.empty());
    // A line whose pool is gone gets new render data from the next style.
    LineStyleES20 next(&style, &pool, &cache);
    next.Prepare(&camera, items, false);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(DataOf(*lines[0])->pool, &pool);
}

TEST_F(LineStyleES20Test, ACacheThatDiesFirstTakesTheEffectAlong)
{
    auto mortal = std::make_unique<EffectCache>();
    OpenStyleData data(&style, &pool, mortal.get());
    mortal.reset();
    EXPECT_FALSE(data.IsConnected());
    EXPECT_EQ(data.effect, nullptr);
    EXPECT_TRUE(data.Apply(&camera, RenderPassDefault));
    data.Apply(&camera);
    data.Remove();
    EXPECT_EQ(gl.Live(GLObjectKind::Program).size(), 0u);
}

TEST_F(LineStyleES20Test, WithoutACacheThereIsNoEffect)
{
    LineStyleES20 data(&style, &pool, nullptr);
    EXPECT_EQ(data.effect, nullptr);
    EXPECT_EQ(data.GetShader(RenderPassDefault), nullptr);
    EXPECT_TRUE(data.Apply(&camera, RenderPassDefault));
}

} // namespace OV::Test
