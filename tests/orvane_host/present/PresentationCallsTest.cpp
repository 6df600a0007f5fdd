#include "orvane_host/present/ShadowSettings.h"
#include "orvane/math/Vector.h"
#include "orvane/renderer/AAMode.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/AddedStage.h"
#include "tests/orvane_host/present/EveryFeatureScene.h"
#include "tests/orvane_host/present/PresentationStage.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::EdgeLook;
using Host::Identity;

/// What a stage that covers the whole screen may cost.
constexpr std::size_t kMostCalls = 40;

class PresentationCalls : public PresentationStage
{
protected:
    /// Lines draw the scene by themselves: they are counted by themselves.
    PresentationCalls() : scene(*app.GetContext()) { renderer->ShowLines(false); }

    /// The calls of the 3D part of a steady frame.
    std::vector<GLCall> CallsOfScene()
    {
        Draw();
        World().MarkDirty();
        app.Update(0.0f);
        renderer->BeginRender(false, Color(1, 1, 1));
        const GLRecorder recorder(GLRecorder::Mode::Forward);
        renderer->Render3D(&World(), &Camera());
        std::vector<GLCall> calls = recorder.Calls();
        renderer->EndRender();
        return calls;
    }

    /// How many calls a whole steady frame takes.
    std::size_t CallsOfFrame(bool capture)
    {
        Draw(capture);
        World().MarkDirty();
        app.Update(0.0f);
        const GLRecorder recorder(GLRecorder::Mode::Forward);
        app.Render(renderer.get(), capture);
        return recorder.Calls().size();
    }

    /// How many calls come before the scene itself: they draw it into other buffers. The scene
    /// begins with the last clear, and the two settings before it.
    static std::size_t CallsBeforeScene(const std::vector<GLCall>& calls)
    {
        std::size_t clear = 0;
        for (std::size_t i = 0; i < calls.size(); ++i)
        {
            clear = calls[i].name == "glClear" ? i : clear;
        }
        return clear - 2;
    }

    /// How often the scene is drawn into other buffers.
    static std::size_t PassesOf(const std::vector<GLCall>& calls)
    {
        const auto isClear = [](const GLCall& call) { return call.name == "glClear"; };
        return static_cast<std::size_t>(std::count_if(calls.begin(), calls.end(), isClear)) - 1;
    }

    /// Expects the scene to be drawn once more, in no more calls than it takes by itself, and the
    /// rest of a stage to be cheap.
    void ExpectCheap(const std::string& label, const std::vector<GLCall>& plain)
    {
        const std::vector<GLCall> calls = CallsOfScene();
        EXPECT_EQ(PassesOf(calls), 1u) << label;
        const std::size_t inPass = CallsBeforeScene(calls);
        EXPECT_LE(inPass, plain.size()) << label;
        ASSERT_GT(calls.size(), plain.size() + inPass) << label;
        const std::size_t stage = calls.size() - plain.size() - inPass;
        EXPECT_LE(stage, kMostCalls) << label;
        RecordProperty("pass for " + label, static_cast<int>(inPass));
        RecordProperty(label, static_cast<int>(stage));
    }

    static EdgeLook EdgesOf(Identity identity)
    {
        EdgeLook look;
        look.identity = identity;
        return look;
    }

    EveryFeatureScene scene;
};

} // namespace

TEST_F(PresentationCalls, AStageOverTheScreenIsCheapAndAPassOverTheSceneIsNoDearerThanTheScene)
{
    for (const int samples : {0, 4})
    {
        UseFramebuffer(SmallWidth, SmallHeight, samples);
        const std::string how = samples == 0 ? "" : " with 4 samples";
        const std::vector<GLCall> plain = CallsOfScene();
        EXPECT_EQ(PassesOf(plain), 0u);
        EXPECT_EQ(CallsBeforeScene(plain), 0u);
        RecordProperty("scene" + how, static_cast<int>(plain.size()));

        renderer->ShowAmbientOcclusion(true);
        ExpectCheap("occlusion" + how, plain);
        renderer->ShowAmbientOcclusion(false);
        renderer->SetHorizonOcclusion({{0.1f, 1.0f}});
        const std::vector<GLCall> horizons = CallsOfScene();
        EXPECT_EQ(PassesOf(horizons), 1u) << "the faces, between the scene and what is laid over it" << how;
        EXPECT_LE(horizons.size(), 2 * plain.size() + 2 * kMostCalls) << "and two runs over the screen" << how;
        renderer->SetHorizonOcclusion(std::nullopt);
        renderer->SetEdges(EdgesOf(Identity::Group));
        ExpectCheap("edges of groups" + how, plain);
        renderer->SetEdges(EdgesOf(Identity::Object));
        ExpectCheap("edges of objects" + how, plain);
        renderer->SetEdges(std::nullopt);
        renderer->ShowIdentifiers(true);
        ExpectCheap("identifiers" + how, plain);
        renderer->ShowIdentifiers(false);
        EXPECT_EQ(CallsOfScene().size(), plain.size()) << "what is off costs nothing";
    }
}

TEST_F(PresentationCalls, StagesShareThePassesThatTheyCanShare)
{
    const auto passes = [this] { return PassesOf(CallsOfScene()); };
    renderer->ShowLines(true);
    renderer->OverlayLines(true);
    EXPECT_EQ(passes(), 2u) << "both identities";
    renderer->SetEdges(EdgesOf(Identity::Group));
    EXPECT_EQ(passes(), 2u);
    renderer->ShowAmbientOcclusion(true);
    EXPECT_EQ(passes(), 2u) << "occlusion takes the depth of groups";
    renderer->ShowLines(false);
    EXPECT_EQ(passes(), 1u) << "or that of whatever edges need";
    renderer->SetEdges(std::nullopt);
    EXPECT_EQ(passes(), 1u) << "or one of its own";
    renderer->ShowAmbientOcclusion(false);
    EXPECT_EQ(passes(), 0u);
}

TEST_F(PresentationCalls, ACaptureIsCheapInEveryModeOfAntialiasing)
{
    for (const AAMode mode : {AAModeNone, AAModeMSAA, AAModeFXAA, AAModeSupersampling})
    {
        renderer->SetAAMode(mode);
        const std::size_t plain = CallsOfFrame(false);
        const std::size_t captured = CallsOfFrame(true);
        if (mode == AAModeMSAA)
        {
            EXPECT_EQ(captured, plain) << "nothing is captured";
            continue;
        }
        EXPECT_GT(captured, plain) << mode;
        EXPECT_LE(captured - plain, kMostCalls) << mode;
        RecordProperty("capture" + std::to_string(mode), static_cast<int>(captured - plain));
    }
}

TEST_F(PresentationCalls, ASteadyFrameAsksForNoBufferAndReadsNothingBack)
{
    renderer->SetEdges(EdgesOf(Identity::Group));
    renderer->ShowAmbientOcclusion(true);
    renderer->SetHorizonOcclusion({{0.1f, 1.0f}});
    renderer->ShowLines(true);
    for (const int samples : {0, 4})
    {
        UseFramebuffer(SmallWidth, SmallHeight, samples);
        renderer->OverlayLines(samples == 0);
        for (const GLCall& call : CallsOfScene())
        {
            for (const char* dear : {"glGen", "glDelete", "glTexImage2D", "glRenderbufferStorage", "glBufferData",
                                     "glCheckFramebufferStatus", "glReadPixels", "glGetError", "glFinish",
                                     "glGetUniformLocation", "glGetTexImage"})
            {
                EXPECT_NE(call.name.rfind(dear, 0), 0u) << call.ToString();
            }
        }
    }
}

TEST_F(PresentationCalls, WhatTheSunSeesIsDrawnOnlyWhereItHasChanged)
{
    const std::vector<GLCall> plain = CallsOfScene();
    renderer->SetSun(Vector(0.3f, 0.8f, 0.5f));
    renderer->SetShadows(Host::ShadowSettings());
    const std::vector<GLCall> steady = CallsOfScene();
    EXPECT_EQ(PassesOf(steady), 0u);
    // Each program is told once what the sun's view is: eight uniforms at most.
    const auto isProgram = [](const GLCall& call) { return call.name == "glUseProgram"; };
    const auto programs = static_cast<std::size_t>(std::count_if(steady.begin(), steady.end(), isProgram));
    ASSERT_GT(steady.size(), plain.size());
    EXPECT_LE(steady.size() - plain.size(), 8 * programs + kMostCalls);
    RecordProperty("steady", static_cast<int>(steady.size() - plain.size()));

    // What is solid and what is glass.
    const auto passesAfter = [this](const auto& change) {
        Draw();
        change();
        World().MarkDirty();
        app.Update(0.0f);
        renderer->BeginRender(false, Color(1, 1, 1));
        const GLRecorder recorder(GLRecorder::Mode::Forward);
        renderer->Render3D(&World(), &Camera());
        const std::size_t passes = PassesOf(recorder.Calls());
        renderer->EndRender();
        return passes;
    };
    EXPECT_EQ(passesAfter([] {}), 0u);
    EXPECT_EQ(passesAfter([this] { renderer->SetSun(Vector(0.4f, 0.8f, 0.5f)); }), 2u);
    EXPECT_EQ(passesAfter([this] { renderer->SetShadows(std::nullopt); }), 0u);
    EXPECT_EQ(CallsOfScene().size(), plain.size()) << "what is off costs nothing";
}

TEST_F(PresentationCalls, WhatHidesGlassIsDrawnIntoDepthsWithoutLookingUpShadows)
{
    renderer->SetSun(Vector(0.3f, 0.8f, 0.5f));
    renderer->SetShadows(Host::ShadowSettings());
    renderer->SetGlass(Host::GlassSettings());
    unsigned int program = 0;
    bool writesColors = true;
    std::size_t depthsAlone = 0;
    std::size_t shadowed = 0;
    for (const GLCall& call : CallsOfScene())
    {
        if (call.name == "glUseProgram")
        {
            program = static_cast<unsigned int>(call.Int(0));
        }
        else if (call.name == "glColorMask")
        {
            writesColors = !call.Begins({0, 0, 0, 0});
        }
        else if (call.name.rfind("glDraw", 0) == 0)
        {
            const bool looksUp = glGetUniformLocation(program, "u_sunDepth") >= 0;
            EXPECT_TRUE(writesColors || !looksUp) << call.ToString();
            depthsAlone += writesColors ? 0 : 1;
            shadowed += looksUp ? 1 : 0;
        }
    }
    EXPECT_GT(depthsAlone, 0u);
    EXPECT_GT(shadowed, 0u);
}

TEST_F(PresentationCalls, AnAddedStageCostsWhatItNeedsAndNoMore)
{
    const auto texts = [this] {
        std::vector<std::string> list;
        for (const GLCall& call : CallsOfScene())
        {
            list.push_back(call.ToString());
        }
        return list;
    };
    renderer->SetEdges(EdgesOf(Identity::Group));
    const std::vector<std::string> withEdges = texts();
    renderer->SetEdges(std::nullopt);
    const std::vector<std::string> plain = texts();

    const auto record = std::make_shared<StageRecord>();
    AddedStage* stage = new AddedStage(record);
    renderer->AddStage(std::unique_ptr<Host::PresentationStage>(stage), Host::StageSlot::AfterSurfaces);
    EXPECT_EQ(texts(), plain) << "no need, no call";
    EXPECT_GT(record->drawn, 0);

    stage->needs.target = true;
    const std::size_t target = texts().size() - plain.size();
    EXPECT_GT(target, 0u);
    EXPECT_LE(target, 5u);

    stage->needs = {};
    stage->needs.groupIdentifiers = true;
    EXPECT_EQ(PassesOf(CallsOfScene()), 1u);
    renderer->SetEdges(EdgesOf(Identity::Group));
    EXPECT_EQ(texts(), withEdges) << "what edges have is shared";
    renderer->SetEdges(std::nullopt);

    stage->needs = {};
    stage->needs.picture = true;
    EXPECT_EQ(PassesOf(CallsOfScene()), 0u) << "a copy is no pass";
}

} // namespace OV::Test
