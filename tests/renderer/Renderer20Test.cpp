#include "orvane/renderer/Renderer20.h"

#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/base/RenderCapabilities.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/renderdata/SharedBuffer.h"
#include "orvane/scene/AlphaMeshNode.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "tests/renderer/RendererDoubles.h"
#include "tests/support/GLRecorder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using Names = std::vector<std::string>;

constexpr double kClearAll = 0x4500;

class Renderer20Test : public ::testing::Test
{
protected:
    Renderer20Test() : renderer(&loader, nullptr) {}

    void Draw(Scene& of) { renderer.Render3D(&of, of.GetCameraNode()); }

    /// Counts of the indices of every draw, in order: the parts of a scene are told apart by
    /// them.
    std::vector<int> DrawnCounts() const
    {
        std::vector<int> counts;
        for (const GLCall& call : recorder.All("glDrawElements"))
            counts.push_back(static_cast<int>(call.Int(1)));
        return counts;
    }

    GLRecorder recorder;
    LaidDownLoader loader;
    Scene scene;
    OpenRenderer20 renderer;
};

/// Style that notes what the item loop does with it.
class NotingStyle : public MeshStyleES20
{
public:
    NotingStyle(std::string name, Names& log, EffectES20* effect = nullptr, bool applies = true)
        : m_name(std::move(name)), m_log(log), m_effect(effect), m_applies(applies)
    {
    }

    bool Apply(CameraNodeES20* camera, RenderPass pass) override
    {
        lastCamera = camera;
        m_log.push_back("apply " + m_name + " " + std::to_string(pass));
        return m_applies;
    }

    void Apply(CameraNodeES20*) override { m_log.push_back("plain apply " + m_name); }

    EffectES20* GetShader(RenderPass pass) override
    {
        lastPass = pass;
        return m_effect;
    }

    EffectES20* GetShader() override { return m_effect; }

    CameraNodeES20* lastCamera = nullptr;
    RenderPass lastPass = RenderPassAmbient;

protected:
    void Remove() override { m_log.push_back("remove " + m_name); }

private:
    std::string m_name;
    Names& m_log;
    EffectES20* m_effect;
    bool m_applies;
};

/// Render data that note how they are drawn, and may draw something else in between.
class NotingMeshES20 : public MeshES20
{
public:
    NotingMeshES20(std::string name, Names& log) : MeshES20(nullptr, nullptr), m_name(std::move(name)), m_log(log) {}

    void Render(EffectES20* effect, const std::vector<MeshNode*>& nodes, bool specificNode) override
    {
        lastEffect = effect;
        lastNodes = nodes;
        m_log.push_back(m_name + (specificNode ? " one" : " all"));
        if (inBetween)
        {
            inBetween();
            EXPECT_EQ(nodes, lastNodes) << "a list drawn in between changed the nodes of this one";
        }
    }

    EffectES20* lastEffect = nullptr;
    std::vector<MeshNode*> lastNodes;
    std::function<void()> inBetween;

private:
    std::string m_name;
    Names& m_log;
};

/// A mesh with such render data, which it owns.
struct NotedMesh
{
    NotedMesh(const std::string& name, Names& log) : mesh(std::make_shared<RawMesh>()), node(nullptr)
    {
        data = new NotingMeshES20(name, log);
        mesh.SetRenderData(data, true);
        mesh.AddNode(&node);
    }

    Mesh mesh;
    MeshNode node;
    NotingMeshES20* data;
};

Matrix MvpFor(CameraNode& camera, int widthPt, int heightPt)
{
    CameraNodeES20 reference(&camera);
    reference.UpdateMVP(widthPt, heightPt, false);
    return reference.GetMVP();
}

bool SameMatrix(const Matrix& a, const Matrix& b)
{
    return std::memcmp(a.m, b.m, sizeof(a.m)) == 0;
}

} // namespace

TEST_F(Renderer20Test, ConstructionMakesNoGLCall)
{
    EXPECT_TRUE(recorder.Calls().empty());
    EXPECT_EQ(renderer.width, 0);
    EXPECT_EQ(renderer.height, 0);
    ASSERT_NE(renderer.hudCamera, nullptr);
    EXPECT_EQ(renderer.hudCamera->GetCameraNode(), nullptr);
    EXPECT_EQ(renderer.onScreenFramebuffer, 0u);
    EXPECT_EQ(renderer.onScreenRenderbuffer, 0u);
    EXPECT_EQ(renderer.onScreenDepthbuffer, 0u);
    EXPECT_EQ(renderer.offscreenFramebuffer, 0u);
    EXPECT_EQ(renderer.screenScene, nullptr);
    EXPECT_EQ(renderer.screenEffect, nullptr);
    EXPECT_EQ(renderer.msaaFramebuffer, 0u);
    EXPECT_FALSE(renderer.overDraw);
    EXPECT_FALSE(renderer.msaaBuffersReady);
    EXPECT_FALSE(renderer.useOnScreenBuffers);
    EXPECT_FALSE(renderer.requestFlag);
    EXPECT_EQ(renderer.GetAAMode(), AAModeNone);
    EXPECT_EQ(renderer.clearColor.r, 1.0f);
    EXPECT_EQ(renderer.clearColor.g, 1.0f);
    EXPECT_EQ(renderer.clearColor.b, 1.0f);
    EXPECT_EQ(renderer.clearColor.a, 1.0f);
    EXPECT_EQ(renderer.extension, nullptr);
    EXPECT_EQ(renderer.GetDevicePixelRatio(), 1.0f);
    EXPECT_TRUE(renderer.SupportsRenderToTexture());
}

TEST_F(Renderer20Test, DestructionOfAnUnusedRendererMakesNoGLCall)
{
    {
        OpenRenderer20 unused(nullptr, nullptr);
    }
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(Renderer20Test, ConfigureReplacesLoaderAndCapabilitiesOnly)
{
    auto context = std::make_unique<AppContext>();
    RenderCapabilities* capabilities = context->GetContext()->GetRenderCapabilities();
    LaidDownLoader other;
    renderer.Configure(&other, capabilities);
    EXPECT_EQ(renderer.textureLoader.Get(), &other);
    EXPECT_EQ(renderer.capabilities.Get(), capabilities);
    context.reset();
    EXPECT_EQ(renderer.capabilities.Get(), nullptr);
    EXPECT_TRUE(recorder.Calls().empty());
    EXPECT_TRUE(loader.log.empty());
}

TEST_F(Renderer20Test, WhatOthersMayHaveWrittenWhileAwayIsSentAnew)
{
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer({Vector(0, 0, 0), Vector(1, 0, 0), Vector(0, 1, 0)});
    raw->SetIndices({0, 1, 2});
    raw->EndDescription(true);
    Scene drawn;
    auto* material = new Material("material");
    drawn.AddMaterial(material);
    auto* mesh = new Mesh(raw, &drawn);
    material->AddMesh(mesh);
    auto* place = new MeshNode(&drawn);
    drawn.GetRoot()->AddChild(place, false);
    mesh->AddNode(place);
    drawn.UpdateGraph(64.0f, 64.0f);
    renderer.Resize(64, 64);
    const auto uniforms = [&]
    {
        recorder.Clear();
        renderer.Render3D(&drawn, drawn.GetCameraNode());
        EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
        EXPECT_EQ(recorder.Count("glEnableVertexAttribArray"), recorder.Count("glDisableVertexAttribArray"));
        std::size_t count = 0;
        for (const std::string& name : recorder.Names())
        {
            count += name.compare(0, 9, "glUniform") == 0 ? 1 : 0;
        }
        return count;
    };
    const std::size_t all = uniforms();
    EXPECT_GT(all, 3u);
    EXPECT_EQ(uniforms(), 0u) << "a steady frame";
    renderer.Suspend();
    EXPECT_EQ(uniforms(), all);
    renderer.Resume();
    EXPECT_EQ(uniforms(), all);
    renderer.Configure(&loader, nullptr);
    EXPECT_EQ(uniforms(), all);
    EXPECT_EQ(uniforms(), 0u);
    drawn.Suspend();
}

TEST_F(Renderer20Test, ResizeStoresTheSizeAndSetsTheViewport)
{
    renderer.Resize(320, 200);
    EXPECT_EQ(renderer.GetWidthPx(), 320);
    EXPECT_EQ(renderer.GetHeightPx(), 200);
    EXPECT_EQ(recorder.Strings(), (Names{"glViewport(0, 0, 320, 200)"}));
}

TEST_F(Renderer20Test, SetOnScreenBuffersResizesThenClearsTheCaptureThenStores)
{
    class Slots : public OpenRenderer20
    {
    public:
        using OpenRenderer20::OpenRenderer20;
        void Resize(int width, int height) override
        {
            log.push_back("resize " + std::to_string(width) + "x" + std::to_string(height) + " over " +
                          std::to_string(onScreenFramebuffer));
        }
        void ClearOffscreenBuffers() override { log.push_back("clear over " + std::to_string(onScreenFramebuffer)); }
        Names log;
    };
    Slots slots(nullptr, nullptr);
    slots.SetDevicePixelRatio(3.0f);
    slots.SetOnScreenBuffers(64, 32, 4, 5, 6, 2.0f);
    EXPECT_EQ(slots.log, (Names{"resize 64x32 over 0", "clear over 0"}));
    EXPECT_EQ(slots.onScreenFramebuffer, 4u);
    EXPECT_EQ(slots.onScreenRenderbuffer, 5u);
    EXPECT_EQ(slots.onScreenDepthbuffer, 6u);
    EXPECT_EQ(slots.GetDevicePixelRatio(), 3.0f);
    EXPECT_FALSE(slots.useOnScreenBuffers);
}

TEST_F(Renderer20Test, BeginRenderClearsInTheGivenColourWithDepthWritesOn)
{
    renderer.BeginRender(false, Color(0.25f, 0.5f, 0.75f, 1.0f));
    EXPECT_EQ(recorder.Strings({"glBindFramebuffer", "glClearColor", "glDepthMask", "glClear"}),
              (Names{"glClearColor(0.25, 0.5, 0.75, 1)", "glDepthMask(1)", "glClear(17664)"}));
    EXPECT_EQ(renderer.clearColor.g, 0.5f);
}

TEST_F(Renderer20Test, BeginRenderBindsTheScreenOnlyWhenAskedTo)
{
    renderer.onScreenFramebuffer = 7;
    renderer.msaaFramebuffer = 8;
    for (const bool useBuffers : {false, true})
        for (const AAMode mode : {AAModeNone, AAModeMSAA, AAModeFXAA, AAModeSupersampling})
            for (const bool ready : {false, true})
                for (const bool capture : {false, true})
                {
                    renderer.useOnScreenBuffers = useBuffers;
                    renderer.aaMode = mode;
                    renderer.msaaBuffersReady = ready;
                    recorder.Clear();
                    renderer.BeginRender(capture, Color());
                    if (!useBuffers)
                    {
                        EXPECT_EQ(recorder.Count("glBindFramebuffer"), 0u);
                        continue;
                    }
                    const double expected = mode == AAModeMSAA && ready && capture ? 8 : 7;
                    EXPECT_EQ(recorder.Count("glBindFramebuffer"), 1u);
                    EXPECT_EQ(recorder.Count("glBindFramebuffer", {GL_FRAMEBUFFER, expected}), 1u)
                        << mode << ready << capture;
                    EXPECT_EQ(recorder.IndexOf("glBindFramebuffer"), 0u);
                }
    renderer.msaaFramebuffer = 0;
}

TEST_F(Renderer20Test, BeginRenderSetsWhatAHostMayHaveChangedBeforeItClears)
{
    renderer.Resize(300, 200);
    glViewport(5, 5, 20, 20);
    recorder.Clear();
    renderer.BeginRender(false, Color());
    const std::size_t clear = recorder.IndexOf("glClear");
    ASSERT_LT(clear, recorder.Calls().size());
    for (const auto& [name, numbers] : std::vector<std::pair<std::string, std::vector<double>>>{
             {"glViewport", {0, 0, 300, 200}},
             {"glFrontFace", {GL_CCW}},
             {"glCullFace", {GL_BACK}},
             {"glPolygonMode", {GL_FRONT_AND_BACK, GL_FILL}},
             {"glDepthFunc", {GL_LESS}},
             {"glClearDepth", {1}},
             {"glDisable", {GL_ALPHA_TEST}},
             {"glDisable", {GL_COLOR_LOGIC_OP}},
             {"glDisable", {GL_POLYGON_STIPPLE}}})
    {
        EXPECT_EQ(recorder.Count(name, numbers), 1u) << name;
        EXPECT_LT(recorder.IndexOf(name, numbers), clear) << name;
    }
}

TEST_F(Renderer20Test, WithoutASizeTheViewportStaysTheHosts)
{
    renderer.BeginRender(false, Color());
    EXPECT_EQ(recorder.Count("glViewport"), 0u);
    renderer.Resize(300, 200);
    recorder.Clear();
    renderer.BeginRender(false, Color());
    EXPECT_EQ(recorder.Count("glViewport"), 0u) << "nor is one set that is in force";
}

TEST_F(Renderer20Test, APixelRatioThatIsNoneCountsAsOne)
{
    renderer.Resize(300, 200);
    for (const float ratio : {0.0f, -2.0f, std::numeric_limits<float>::infinity(),
                              -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()})
    {
        SCOPED_TRACE(ratio);
        renderer.SetDevicePixelRatio(ratio);
        renderer.SetupAntialiasBuffers();
        EXPECT_EQ(renderer.offscreenWidth, 300);
        EXPECT_EQ(renderer.offscreenHeight, 200);
        renderer.ClearOffscreenBuffers();
        Draw(scene);
        auto* const data = dynamic_cast<CameraNodeES20*>(scene.GetCameraNode()->GetRenderData());
        ASSERT_NE(data, nullptr);
        EXPECT_TRUE(SameMatrix(data->GetMVP(), MvpFor(*scene.GetCameraNode(), 300, 200)));
    }
}

TEST_F(Renderer20Test, TheFirstLayerOfAFrameMeetsTheStateThatA3DPassLeaves)
{
    renderer.BeginRender(false, Color());
    EXPECT_TRUE(recorder.IsEnabled(GL_CULL_FACE));
    EXPECT_EQ(recorder.Count("glBlendEquation", {GL_FUNC_ADD}), 1u);
}

TEST_F(Renderer20Test, OverDrawLastsFromItsBeginToTheEndOfTheFrame)
{
    renderer.BeginOverDrawRender();
    EXPECT_TRUE(renderer.overDraw);
    renderer.BeginRender(false, Color());
    EXPECT_TRUE(renderer.overDraw);
    recorder.Clear();
    renderer.EndRender();
    EXPECT_FALSE(renderer.overDraw);
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(Renderer20Test, Render3DGivesTheCameraRenderDataAndDrawsInTheSameFrame)
{
    AddPart(scene, *AddMaterial(scene, "m"));
    renderer.Resize(300, 200);
    scene.UpdateGraph(300, 200);
    ASSERT_EQ(scene.GetCameraNode()->GetRenderData(), nullptr);
    Draw(scene);
    auto* cameraData = dynamic_cast<CameraNodeES20*>(scene.GetCameraNode()->GetRenderData());
    ASSERT_NE(cameraData, nullptr);
    EXPECT_EQ(cameraData->GetCameraNode(), scene.GetCameraNode());
    EXPECT_TRUE(SameMatrix(cameraData->GetMVP(), MvpFor(*scene.GetCameraNode(), 300, 200)));
    EXPECT_EQ(DrawnCounts(), std::vector<int>{3});
    Draw(scene);
    EXPECT_EQ(scene.GetCameraNode()->GetRenderData(), cameraData);
}

TEST_F(Renderer20Test, Render3DClearsDepthThenEnablesCullingDepthTestAndAddition)
{
    Draw(scene);
    EXPECT_EQ(recorder.Strings(),
              (Names{"glDisable(" + std::to_string(GL_BLEND) + ")", "glDepthMask(1)",
                     "glClear(" + std::to_string(GL_DEPTH_BUFFER_BIT) + ")",
                     "glEnable(" + std::to_string(GL_CULL_FACE) + ")",
                     "glEnable(" + std::to_string(GL_DEPTH_TEST) + ")",
                     "glBlendEquation(" + std::to_string(GL_FUNC_ADD) + ")"}));
}

TEST_F(Renderer20Test, WithOverDrawASecondRender3DKeepsDepthAndRender2DClearsItAllTheSame)
{
    Scene2D layer(nullptr);
    renderer.BeginRender(false, Color());
    Draw(scene);
    renderer.BeginOverDrawRender();
    recorder.Clear();
    Draw(scene);
    EXPECT_EQ(recorder.Count("glClear"), 0u);
    renderer.Render2D(&layer);
    EXPECT_EQ(recorder.Count("glClear", {GL_DEPTH_BUFFER_BIT}), 1u);
    renderer.EndRender();
    recorder.Clear();
    Draw(scene);
    EXPECT_EQ(recorder.Count("glClear", {GL_DEPTH_BUFFER_BIT}), 1u);
}

TEST_F(Renderer20Test, OpaqueMaterialsAreDrawnBeforeAlphaMaterialsInListOrder)
{
    Material* glass = AddMaterial(scene, "glass", 0.5f);
    Material* second = AddMaterial(scene, "second");
    Material* third = AddMaterial(scene, "third");
    AddPart(scene, *glass, {0, 1, 2});
    AddPart(scene, *third, {0, 1, 2, 0, 1, 2});
    AddPart(scene, *second, {0, 1, 2, 0, 1, 2, 0, 1, 2});
    Draw(scene);
    EXPECT_EQ(DrawnCounts(), (std::vector<int>{9, 6, 3}));
}

TEST_F(Renderer20Test, AllIsPreparedThenUploadedOnceThenDrawn)
{
    Material* first = AddMaterial(scene, "first");
    Material* second = AddMaterial(scene, "second");
    AddPart(scene, *first);
    AddPart(scene, *second);
    AddPart(scene, *second, {0, 1, 2}, {true, false, false});
    Draw(scene);
    EXPECT_EQ(recorder.Count("glBufferData"), 4u);
    const std::size_t firstDraw = recorder.IndexOf("glDrawElements");
    EXPECT_EQ(recorder.IndexOf("glBufferData", {}, firstDraw), recorder.Calls().size());
    EXPECT_EQ(recorder.Count("glDrawElements"), 3u);
    recorder.Clear();
    Draw(scene);
    EXPECT_EQ(recorder.Count("glBufferData"), 0u);
    EXPECT_EQ(recorder.Count("glGenBuffers"), 0u);
    EXPECT_EQ(recorder.Count("glDrawElements"), 3u);
}

TEST_F(Renderer20Test, EveryPassStartsWithAFreshBufferBinding)
{
    AddPart(scene, *AddMaterial(scene, "m"));
    Draw(scene);
    EXPECT_EQ(MeshES20::s_vertexId, 0u);
    recorder.Clear();
    Draw(scene);
    EXPECT_EQ(recorder.Count("glBindBuffer"), 2u);
}

TEST_F(Renderer20Test, MeshesOfOneBufferAndMaterialCostOneBindAndOneProgram)
{
    Material* material = AddMaterial(scene, "m");
    for (int i = 0; i < 20; ++i)
        AddPart(scene, *material);
    Draw(scene);
    recorder.Clear();
    Draw(scene);
    EXPECT_EQ(recorder.Count("glDrawElements"), 20u);
    EXPECT_EQ(recorder.Count("glBindBuffer"), 2u);
    EXPECT_EQ(recorder.Count("glUseProgram"), 1u);
}

TEST_F(Renderer20Test, AMaterialThatIsNotReadyGetsNoRenderDataOnThatFrame)
{
    Material* material = AddMaterial(scene, "m");
    AddPart(scene, *material);
    material->SetDrawID(scene.GetUpdateID() + 1);
    Draw(scene);
    EXPECT_EQ(material->GetRenderData(), nullptr);
    EXPECT_EQ(recorder.Count("glDrawElements"), 0u);
    material->SetDrawID(scene.GetUpdateID());
    Draw(scene);
    EXPECT_NE(material->GetRenderData(), nullptr);
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
}

TEST_F(Renderer20Test, AMeshWithADrawIDIsDrawnOnceForEachSetting)
{
    Material* material = AddMaterial(scene, "m");
    const ScenePart part = AddPart(scene, *material);
    scene.UpdateGraph(1, 1);
    part.mesh->SetDrawID(scene.GetUpdateID());
    Draw(scene);
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
    Draw(scene);
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
}

TEST_F(Renderer20Test, ThePixelRatioChangesMatricesButNeitherSizeNorViewport)
{
    renderer.Resize(801, 600);
    recorder.Clear();
    renderer.SetDevicePixelRatio(2.0f);
    EXPECT_EQ(renderer.GetDevicePixelRatio(), 2.0f);
    EXPECT_EQ(renderer.GetPxToPtScale(), 0.5f);
    EXPECT_EQ(renderer.GetWidthPx(), 801);
    EXPECT_TRUE(recorder.Calls().empty());
    Draw(scene);
    EXPECT_EQ(recorder.Count("glViewport"), 0u);
    auto* cameraData = static_cast<CameraNodeES20*>(scene.GetCameraNode()->GetRenderData());
    // 801 pixels are 400 points: truncated.
    EXPECT_TRUE(SameMatrix(cameraData->GetMVP(), MvpFor(*scene.GetCameraNode(), 400, 300)));
    EXPECT_FALSE(SameMatrix(cameraData->GetMVP(), MvpFor(*scene.GetCameraNode(), 401, 300)));

    Scene2D layer(nullptr);
    renderer.Render2D(&layer);
    CameraNodeES20 reference(nullptr);
    reference.UpdateHudMVP(400, 300, layer.nearZ - 0.1f, layer.farZ + 0.1f);
    EXPECT_TRUE(SameMatrix(renderer.hudCamera->GetHudMVP(), reference.GetHudMVP()));
}

TEST_F(Renderer20Test, NullSceneCameraOrLayerDrawsNothing)
{
    renderer.Render3D(nullptr, scene.GetCameraNode());
    renderer.Render3D(&scene, nullptr);
    renderer.Render2D(nullptr);
    renderer.PrepareOptimizedMaterial(nullptr, nullptr, *std::make_unique<std::vector<RenderItemES20>>(), false);
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(Renderer20Test, ForeignRenderDataIsLeftAloneAndNotDrawn)
{
    struct Foreign : Object
    {
    };
    Material* material = AddMaterial(scene, "m");
    AddPart(scene, *material);
    auto* foreign = new Foreign;
    material->SetRenderData(foreign);
    Draw(scene);
    EXPECT_EQ(material->GetRenderData(), foreign);
    EXPECT_EQ(recorder.Count("glDrawElements"), 0u);

    auto* foreignCameraData = new Foreign;
    scene.GetCameraNode()->SetRenderData(foreignCameraData);
    recorder.Clear();
    Draw(scene);
    EXPECT_EQ(scene.GetCameraNode()->GetRenderData(), foreignCameraData);
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(Renderer20Test, Render3DLeavesTheZOrderedListAlone)
{
    Material* glass = AddMaterial(scene, "glass", 0.5f);
    AddPart(scene, *glass);
    scene.PopulateZOrderedDrawItems();
    ASSERT_EQ(scene.GetZOrderedDrawItems().size(), 1u);
    Draw(scene);
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
}

TEST_F(Renderer20Test, Render2DClearsDepthThenTestsItAndLeavesCullingAndEquationAlone)
{
    Scene2D layer(nullptr);
    renderer.Render2D(&layer);
    Names begin = recorder.Strings();
    begin.resize(4);
    EXPECT_EQ(begin, (Names{"glDisable(" + std::to_string(GL_BLEND) + ")", "glDepthMask(1)",
                            "glClear(" + std::to_string(GL_DEPTH_BUFFER_BIT) + ")",
                            "glEnable(" + std::to_string(GL_DEPTH_TEST) + ")"}));
    EXPECT_EQ(recorder.Count("glEnable", {GL_CULL_FACE}), 0u);
    EXPECT_EQ(recorder.Count("glDisable", {GL_CULL_FACE}), 0u);
    EXPECT_EQ(recorder.Count("glBlendEquation"), 0u);
}

TEST_F(Renderer20Test, Render2DTakesTheDepthRangeOfTheLayerWithAMargin)
{
    renderer.Resize(200, 100);
    Scene2D layer(nullptr);
    layer.nearZ = -4.0f;
    layer.farZ = 6.0f;
    renderer.Render2D(&layer);
    CameraNodeES20 reference(nullptr);
    reference.UpdateHudMVP(200, 100, -4.0f - 0.1f, 6.0f + 0.1f);
    EXPECT_TRUE(SameMatrix(renderer.hudCamera->GetHudMVP(), reference.GetHudMVP()));
    EXPECT_TRUE(renderer.hudCamera->isHudCamera());
}

TEST_F(Renderer20Test, Render2DDrawsOpaqueMaterialsThenTheZOrderedItemsNodeByNode)
{
    Scene2D layer(nullptr);
    Material* opaque = AddMaterial(layer, "opaque");
    Material* glass = AddMaterial(layer, "glass", 0.5f);
    Material* other = AddMaterial(layer, "other", 0.5f);
    const ScenePart shared = AddPart(layer, *glass, {0, 1, 2});
    AddPart(layer, *opaque, {0, 1, 2, 0, 1, 2});
    AddPart(layer, *other, {0, 1, 2, 0, 1, 2, 0, 1, 2});
    auto* secondNode = new MeshNode(&layer);
    layer.GetRoot()->AddChild(secondNode, false);
    shared.mesh->AddNode(secondNode);

    renderer.Render2D(&layer);
    // The alpha list alone draws nothing in a layer.
    EXPECT_EQ(DrawnCounts(), std::vector<int>{6});

    layer.PopulateZOrderedDrawItems();
    recorder.Clear();
    renderer.Render2D(&layer);
    EXPECT_EQ(DrawnCounts(), (std::vector<int>{6, 3, 3, 9}));
    EXPECT_EQ(recorder.Count("glUseProgram"), 3u);
}

TEST_F(Renderer20Test, AZOrderedItemIsSkippedWithoutAReadyMaterial)
{
    std::vector<RenderItemES20> items;
    Mesh mesh(MakeRawMesh(3, {0, 1, 2}));
    MeshNode node(nullptr);
    AlphaMeshNode item{&node, &mesh, 0.0f};
    renderer.PrepareZOrderedMeshNode(&item, nullptr, items);
    EXPECT_TRUE(items.empty());

    Material* material = AddMaterial(scene, "m");
    material->AddMesh(&mesh);
    material->SetDrawID(scene.GetUpdateID() + 1);
    renderer.PrepareZOrderedMeshNode(&item, nullptr, items);
    EXPECT_TRUE(items.empty());
    EXPECT_EQ(material->GetRenderData(), nullptr);

    material->SetDrawID(0);
    renderer.PrepareZOrderedMeshNode(&item, nullptr, items);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].mesh, &mesh);
    EXPECT_EQ(items[0].node, &node);
    EXPECT_TRUE(items[0].specificNode);
    EXPECT_EQ(items[0].style, material->GetRenderData());
    EXPECT_FALSE(DataOf(mesh)->clippingPlaneEnabled);
}

TEST_F(Renderer20Test, PrepareOptimizedMaterialPassesTheClippingFlagOn)
{
    Material* material = AddMaterial(scene, "m");
    const ScenePart part = AddPart(scene, *material);
    std::vector<RenderItemES20> items;
    renderer.PrepareOptimizedMaterial(material, nullptr, items, true);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_TRUE(DataOf(*part.mesh)->clippingPlaneEnabled);
    auto* data = static_cast<MaterialES20*>(material->GetRenderData());
    EXPECT_EQ(data->bufferPool.Get(), &renderer.bufferPool);
    EXPECT_EQ(data->effectCache, &renderer.effectCache);
    EXPECT_EQ(data->GetTextureLoader(), &loader);
}

TEST_F(Renderer20Test, ANodeMaterialDrawsTheNodesOfOthersMeshesInItsStead)
{
    Material* plain = AddMaterial(scene, "plain");
    const ScenePart part = AddPart(scene, *plain);
    auto* nodeMaterial = new NodeMaterial;
    scene.AddMaterial(nodeMaterial);
    nodeMaterial->AddNode(part.node);
    Draw(scene);
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
    nodeMaterial->RemoveNode(part.node);
    recorder.Clear();
    Draw(scene);
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
}

TEST_F(Renderer20Test, ALineStyleGetsRenderDataOnFirstNeedWithoutAReadyTest)
{
    auto* style = new LineStyle("s");
    scene.AddLineStyle(style);
    std::vector<RenderItemES20> items;
    renderer.PrepareLineStyle(nullptr, nullptr, items, false);
    renderer.PrepareLineStyle(style, nullptr, items, false);
    const Object* data = style->GetRenderData();
    EXPECT_NE(data, nullptr);
    EXPECT_TRUE(items.empty());
    renderer.PrepareLineStyle(style, nullptr, items, false);
    EXPECT_EQ(style->GetRenderData(), data);
    scene.Suspend();
}

TEST_F(Renderer20Test, LinesAreDrawnBetweenOpaqueAndAlphaMaterials)
{
    Material* glass = AddMaterial(scene, "glass", 0.5f);
    Material* opaque = AddMaterial(scene, "opaque");
    AddPart(scene, *glass, {0, 1, 2});
    AddPart(scene, *opaque, {0, 1, 2, 0, 1, 2, 0, 1, 2});
    auto* style = new LineStyle("s");
    scene.AddLineStyle(style);
    auto raw = std::make_shared<RawLine>();
    raw->SetPositionBuffer({Vector(0, 0, 0), Vector(1, 0, 0)});
    raw->SetIndices({0, 1});
    raw->EndDescription(true);
    auto* line = new Line(raw, &scene);
    auto* node = new MeshNode(&scene);
    line->AddNode(node);
    scene.GetRoot()->AddChild(node, false);
    style->AddLine(line);
    Draw(scene);
    EXPECT_EQ(DrawnCounts(), (std::vector<int>{9, 6, 3}));
}

TEST_F(Renderer20Test, AnEmptyListDrawsNothingAndCallsNothing)
{
    renderer.RenderItemList(nullptr, {}, RenderPassDefault);
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(Renderer20Test, AStyleIsAppliedOnlyWhereItChangesAndRemovedAfterward)
{
    Names log;
    NotingStyle a("a", log);
    NotingStyle b("b", log);
    NotedMesh first("first", log);
    NotedMesh second("second", log);
    CameraNodeES20 camera(nullptr);
    renderer.RenderItemList(&camera,
                            {{&first.mesh, &a, false, nullptr},
                             {&second.mesh, &a, false, nullptr},
                             {&first.mesh, &b, false, nullptr},
                             {&second.mesh, &a, false, nullptr}},
                            RenderPassSky);
    EXPECT_EQ(log, (Names{"apply a 7", "first all", "second all", "remove a", "apply b 7", "first all", "remove b",
                          "apply a 7", "second all", "remove a"}));
    EXPECT_EQ(a.lastCamera, &camera);
    EXPECT_EQ(a.lastPass, RenderPassSky);
}

TEST_F(Renderer20Test, TheResultOfApplyIsNotTested)
{
    Names log;
    NotingStyle refusing("a", log, nullptr, false);
    NotedMesh mesh("mesh", log);
    renderer.RenderItemList(nullptr, {{&mesh.mesh, &refusing, false, nullptr}}, RenderPassDefault);
    EXPECT_EQ(log, (Names{"apply a 1", "mesh all", "remove a"}));
}

TEST_F(Renderer20Test, AnItemForOneNodeDrawsThatNodeOnly)
{
    Names log;
    MarkingEffect effect;
    NotingStyle style("a", log, &effect);
    NotedMesh mesh("mesh", log);
    MeshNode other(nullptr);
    mesh.mesh.AddNode(&other);
    renderer.RenderItemList(nullptr, {{&mesh.mesh, &style, true, &other}}, RenderPassDefault);
    EXPECT_EQ(log, (Names{"apply a 1", "mesh one", "remove a"}));
    EXPECT_EQ(mesh.data->lastNodes, std::vector<MeshNode*>{&other});
    EXPECT_EQ(mesh.data->lastEffect, &effect);
    renderer.RenderItemList(nullptr, {{&mesh.mesh, &style, false, nullptr}}, RenderPassDefault);
    EXPECT_EQ(mesh.data->lastNodes, (std::vector<MeshNode*>{&mesh.node, &other}));
}

TEST_F(Renderer20Test, AMeshWithoutRenderDataIsPassedOver)
{
    Names log;
    NotingStyle style("a", log);
    Mesh bare(std::make_shared<RawMesh>());
    renderer.RenderItemList(nullptr, {{&bare, &style, false, nullptr}}, RenderPassDefault);
    EXPECT_EQ(log, (Names{"apply a 1", "remove a"}));
}

TEST_F(Renderer20Test, AListMayBeDrawnFromWithinAnother)
{
    Names log;
    NotingStyle outer("outer", log);
    NotingStyle inner("inner", log);
    NotedMesh first("first", log);
    NotedMesh second("second", log);
    first.data->inBetween = [&]
    {
        renderer.RenderItemList(nullptr, {{&second.mesh, &inner, true, &second.node}}, RenderPassDefault);
        Draw(scene);
    };
    renderer.RenderItemList(nullptr,
                            {{&first.mesh, &outer, true, &first.node}, {&second.mesh, &outer, true, &first.node}},
                            RenderPassDefault);
    EXPECT_EQ(log, (Names{"apply outer 1", "first one", "apply inner 1", "second one", "remove inner", "second one",
                          "remove outer"}));
    EXPECT_EQ(second.data->lastNodes, std::vector<MeshNode*>{&first.node});
}

TEST_F(Renderer20Test, SuspendAndResumeReachTheLoader)
{
    renderer.Suspend();
    renderer.Resume();
    EXPECT_EQ(loader.log, (Names{"suspend", "resume"}));
    EXPECT_TRUE(recorder.Calls().empty());
    OpenRenderer20 without(nullptr, nullptr);
    without.Suspend();
    without.Resume();
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(Renderer20Test, ALoaderThatDiedIsNotCalled)
{
    auto own = std::make_unique<LaidDownLoader>();
    OpenRenderer20 orphaned(own.get(), nullptr);
    own.reset();
    orphaned.Suspend();
    orphaned.Resume();
    Material* material = AddMaterial(scene, "m");
    material->textureName = "t.png";
    AddPart(scene, *material);
    orphaned.Render3D(&scene, scene.GetCameraNode());
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
    scene.Suspend();
}

TEST_F(Renderer20Test, RenderDataOfADeadRendererAreRebuiltByTheNext)
{
    auto first = std::make_unique<OpenRenderer20>(&loader, nullptr);
    Material* material = AddMaterial(scene, "m");
    AddPart(scene, *material);
    AddPart(scene, *material, {0, 1, 2}, {true, true, true});
    first->Render3D(&scene, scene.GetCameraNode());
    EXPECT_EQ(recorder.Count("glDrawElements"), 2u);
    first.reset();
    EXPECT_EQ(recorder.Live(GLObjectKind::Program).size(), 0u);

    // The same address again, as a host's member would have it.
    auto second = std::make_unique<OpenRenderer20>(&loader, nullptr);
    recorder.Clear();
    second->Render3D(&scene, scene.GetCameraNode());
    EXPECT_EQ(recorder.Count("glDrawElements"), 2u);
    EXPECT_EQ(recorder.Live(GLObjectKind::Buffer).size(), 4u);
    auto* data = static_cast<MaterialES20*>(material->GetRenderData());
    EXPECT_EQ(data->bufferPool.Get(), &second->bufferPool);
    scene.Suspend();
    second.reset();
    EXPECT_EQ(recorder.LiveCount(), 0u);
    EXPECT_TRUE(recorder.StrayDeletes().empty());
}

TEST_F(Renderer20Test, RenderDataThatWereNeverUploadedAreRebuiltToo)
{
    auto first = std::make_unique<OpenRenderer20>(&loader, nullptr);
    Material* material = AddMaterial(scene, "m");
    AddPart(scene, *material);
    std::vector<RenderItemES20> items;
    first->PrepareOptimizedMaterial(material, nullptr, items, false);
    first.reset();
    Draw(scene);
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
}

TEST_F(Renderer20Test, TenSuspensionsAccountForEveryGLObjectAndRepeatTheFrame)
{
    AppContext context;
    auto owned = std::make_unique<Scene>();
    Scene& own = *owned;
    context.GetContext()->SetScene(std::move(owned));
    Material* material = AddMaterial(own, "m");
    AddPart(own, *material);
    AddPart(own, *material, {0, 1, 2}, {true, false, false});
    AddPart(own, *AddMaterial(own, "glass", 0.5f), {0, 1, 2}, {true, true, true});
    Material* flat = AddMaterial(*context.GetContext()->GetForeground2D(), "flat");
    AddPart(*context.GetContext()->GetForeground2D(), *flat);
    renderer.Resize(64, 64);
    context.SetScreenSize(64, 64);

    std::size_t live = 0;
    Names frame;
    for (int round = 0; round <= 10; ++round)
    {
        context.Update(0.0f);
        context.Render(&renderer, false);
        recorder.Clear();
        context.Update(0.0f);
        context.Render(&renderer, false);
        const Names draws = recorder.Names();
        if (round == 0)
        {
            live = recorder.LiveCount();
            frame = draws;
            EXPECT_GT(live, 6u);
        }
        EXPECT_EQ(recorder.LiveCount(), live) << "round " << round;
        EXPECT_EQ(draws, frame) << "round " << round;
        context.Suspend(&renderer);
        EXPECT_EQ(recorder.LiveCount(), 0u) << "round " << round;
        context.Resume(&renderer);
    }
    EXPECT_TRUE(recorder.StrayDeletes().empty());
}

TEST_F(Renderer20Test, TwoFramesOfAnUnchangedSceneMakeTheSameCalls)
{
    AppContext context;
    auto owned = std::make_unique<Scene>();
    Scene& own = *owned;
    context.GetContext()->SetScene(std::move(owned));
    AddPart(own, *AddMaterial(own, "m"));
    Material* glass = AddMaterial(own, "glass", 0.5f);
    AddPart(own, *glass);
    Material* back = AddMaterial(*context.GetContext()->GetBackground2D(), "back");
    AddPart(*context.GetContext()->GetBackground2D(), *back);
    renderer.Resize(64, 64);
    context.SetScreenSize(64, 64);
    context.Update(0.0f);
    context.Render(&renderer, false);
    recorder.Clear();
    context.Update(0.0f);
    context.Render(&renderer, false);
    const Names second = recorder.Strings();
    recorder.Clear();
    context.Update(0.0f);
    context.Render(&renderer, false);
    EXPECT_EQ(recorder.Strings(), second);
    // Depth writes are on for every clear.
    for (std::size_t i = 0; i < recorder.Calls().size(); ++i)
    {
        if (recorder.Calls()[i].name == "glClear")
        {
            ASSERT_GT(i, 0u);
            EXPECT_EQ(recorder.Calls()[i - 1].ToString(), "glDepthMask(1)");
        }
    }
}

TEST_F(Renderer20Test, EveryOrderOfDestructionIsSafe)
{
    struct Parts
    {
        std::unique_ptr<AppContext> context;
        std::unique_ptr<OpenRenderer20> renderer;
        std::unique_ptr<LaidDownLoader> loader;
        std::unique_ptr<Material> material;
    };
    std::vector<int> order = {0, 1, 2, 3};
    do
    {
        Parts parts;
        parts.context = std::make_unique<AppContext>();
        parts.loader = std::make_unique<LaidDownLoader>();
        parts.renderer = std::make_unique<OpenRenderer20>(parts.loader.get(),
                                                          parts.context->GetContext()->GetRenderCapabilities());
        parts.context->GetContext()->SetScene(std::make_unique<Scene>());
        Scene& own = *parts.context->GetContext()->GetScene();
        parts.material = std::make_unique<Material>("m");
        own.AddMaterial(parts.material.get());
        parts.material->textureName = "t.png";
        parts.loader->answers = {{1000}};
        AddPart(own, *parts.material);
        AddPart(own, *AddMaterial(own, "n"));
        parts.renderer->Resize(8, 8);
        parts.context->SetScreenSize(8, 8);
        parts.context->Update(0.0f);
        parts.context->Render(parts.renderer.get(), true);
        EXPECT_GT(recorder.LiveCount(), 0u);
        own.RemoveMaterial(parts.material.get());
        for (const int which : order)
        {
            switch (which)
            {
            case 0:
                parts.context.reset();
                break;
            case 1:
                parts.renderer.reset();
                break;
            case 2:
                parts.loader.reset();
                break;
            case 3:
                parts.material.reset();
                break;
            }
        }
        EXPECT_EQ(recorder.LiveCount(), 0u);
        EXPECT_TRUE(recorder.StrayDeletes().empty());
    } while (std::next_permutation(order.begin(), order.end()));
}

} // namespace OV::Test
