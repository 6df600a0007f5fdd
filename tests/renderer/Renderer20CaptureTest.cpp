#include "orvane/effects/AAEffectES20.h"
#include "orvane/effects/FXAAEffectES20.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/base/RenderCapabilities.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/renderdata/SharedBuffer.h"
#include "orvane/scene/CameraNode.h"
#include "tests/renderer/RendererDoubles.h"
#include "tests/support/GLRecorder.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using Names = std::vector<std::string>;

/// Answers one question as the test says, and all others with no.
class LaidDownCapabilities : public RenderCapabilities
{
public:
    bool HasFramebufferObject() override { return false; }
    bool HasARBDepthTexture() override { return false; }
    bool HasTextureStencil8() override { return false; }
    bool HasPackedDepthStencil() override { return false; }
    int GetMaxTextureSize() override { return 0; }
    bool HasNpotTextures() override { return false; }
    bool RequiresPowerOfTwo() override { return false; }
    bool HasNpotRepeat() override { return false; }
    bool HasNpotMipmap() override { return false; }
    bool HasDepthTexture() override { return depthTexture; }
    bool HasDepthTextureFault() override { return depthTextureFault; }

    bool depthTexture = false;
    bool depthTextureFault = false;
};

/// Renderer whose capture is drawn by an effect that shows in the recording.
class EffectiveRenderer20 : public OpenRenderer20
{
public:
    using OpenRenderer20::OpenRenderer20;

    MarkingEffect* UseMarkingEffect(int* deaths = nullptr)
    {
        auto* effect = new MarkingEffect(deaths);
        UseScreenEffect(effect);
        return effect;
    }
};

/// Screen effect that notes what it is told, in words.
class TellingScreenEffect : public BaseAAES20
{
public:
    explicit TellingScreenEffect(Names& log) : BaseAAES20(nullptr), m_log(log) {}

    void SetDimensions(int newWidth, int newHeight) override
    {
        m_log.push_back("size " + std::to_string(newWidth) + " " + std::to_string(newHeight));
        BaseAAES20::SetDimensions(newWidth, newHeight);
    }

    void Apply(MaterialES20* material, CameraNodeES20* camera) override
    {
        m_log.push_back(material || camera ? "apply to something" : "apply");
    }

    void BindMeshUniforms(MeshNode*) override
    {
        m_log.push_back("draw " + std::to_string(width) + " " + std::to_string(height));
    }

private:
    Names& m_log;
};

/// Lets framebuffers be unsupported up to the nth question, from 1, and complete from then on.
class CompleteFrom
{
public:
    CompleteFrom(GLRecorder& recorder, int nth) : m_recorder(recorder), m_left(nth)
    {
        s_current = this;
        m_original = glCheckFramebufferStatus;
        glCheckFramebufferStatus = Answer;
        m_recorder.SetFramebufferStatus(GL_FRAMEBUFFER_UNSUPPORTED);
    }

    ~CompleteFrom() { glCheckFramebufferStatus = m_original; }

private:
    static GLenum GLAPIENTRY Answer(GLenum target)
    {
        if (--s_current->m_left <= 0)
        {
            s_current->m_recorder.SetFramebufferStatus(GL_FRAMEBUFFER_COMPLETE);
        }
        return s_current->m_original(target);
    }

    static CompleteFrom* s_current;
    GLRecorder& m_recorder;
    int m_left;
    PFNGLCHECKFRAMEBUFFERSTATUSPROC m_original;
};

CompleteFrom* CompleteFrom::s_current = nullptr;

class Renderer20CaptureTest : public ::testing::Test
{
protected:
    Renderer20CaptureTest() : renderer(&loader, &capabilities)
    {
        renderer.Resize(100, 50);
        recorder.SetIntegers(GL_FRAMEBUFFER_BINDING, {71});
        recorder.SetIntegers(GL_RENDERBUFFER_BINDING, {72});
        recorder.Clear();
    }

    /// A capture of nothing, uploaded, with an effect to draw it.
    MarkingEffect* CaptureNothing()
    {
        renderer.BeginCapture();
        MarkingEffect* effect = renderer.UseMarkingEffect();
        Scene2D layer(nullptr);
        renderer.Render2D(&layer);
        renderer.EndCapture();
        recorder.Clear();
        return effect;
    }

    GLRecorder recorder;
    LaidDownLoader loader;
    LaidDownCapabilities capabilities;
    EffectiveRenderer20 renderer;
};

std::string Str(unsigned number)
{
    return std::to_string(number);
}

} // namespace

TEST_F(Renderer20CaptureTest, SetAAModeSettlesTheRatio)
{
    EXPECT_TRUE(renderer.SetAAMode(AAModeSupersampling));
    EXPECT_EQ(renderer.GetDevicePixelRatio(), 2.0f);
    EXPECT_TRUE(renderer.SetAAMode(AAModeFXAA));
    EXPECT_EQ(renderer.GetDevicePixelRatio(), 1.0f);
    renderer.SetDevicePixelRatio(3.0f);
    EXPECT_TRUE(renderer.SetAAMode(AAModeSupersampling));
    EXPECT_EQ(renderer.GetDevicePixelRatio(), 3.0f);
    EXPECT_TRUE(renderer.SetAAMode(AAModeMSAA));
    EXPECT_EQ(renderer.GetDevicePixelRatio(), 1.0f);
    renderer.SetDevicePixelRatio(1.5f);
    EXPECT_TRUE(renderer.SetAAMode(AAModeNone));
    EXPECT_EQ(renderer.GetDevicePixelRatio(), 1.0f);
    renderer.SetDevicePixelRatio(1.5f);
    EXPECT_TRUE(renderer.SetAAMode(static_cast<AAMode>(9)));
    EXPECT_EQ(renderer.GetDevicePixelRatio(), 1.5f);
}

TEST_F(Renderer20CaptureTest, WithoutANameForTheFramebufferTheFrameGoesToTheScreenAndNothingIsLeft)
{
    recorder.FailCreation("glGenFramebuffers");
    for (int frame = 0; frame < 3; ++frame)
    {
        renderer.BeginCapture();
        renderer.EndCapture();
        renderer.ApplyCapture();
    }
    EXPECT_EQ(recorder.Count("glGenTextures"), 0u);
    EXPECT_EQ(recorder.Live(GLObjectKind::Texture).size(), 0u);
    EXPECT_EQ(recorder.Live(GLObjectKind::Renderbuffer).size(), 0u);
    EXPECT_EQ(recorder.Count("glBindFramebuffer", {GL_FRAMEBUFFER, 0}), 0u);
    recorder.FailCreation("glGenFramebuffers", false);
    renderer.BeginCapture();
    EXPECT_NE(renderer.offscreenFramebuffer, 0u);
}

TEST_F(Renderer20CaptureTest, AScreenMeshThatCouldNotBeUploadedIsMadeAgain)
{
    recorder.FailCreation("glGenBuffers");
    renderer.BeginCapture();
    renderer.EndCapture();
    renderer.ApplyCapture();
    EXPECT_EQ(recorder.Count("glDrawElements"), 0u);
    EXPECT_EQ(recorder.FindLast("glViewport")->ToString(), "glViewport(0, 0, 100, 50)");
    recorder.FailCreation("glGenBuffers", false);
    renderer.BeginCapture();
    renderer.EndCapture();
    renderer.ApplyCapture();
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
}

TEST_F(Renderer20CaptureTest, SetAAModeSuspendsAndResumesThroughTheSlots)
{
    class Slots : public OpenRenderer20
    {
    public:
        using OpenRenderer20::OpenRenderer20;
        void Suspend() override { log.push_back("suspend in " + std::to_string(aaMode)); }
        void Resume() override { log.push_back("resume"); }
        Names log;
    };
    Slots slots(nullptr, nullptr);
    EXPECT_TRUE(slots.SetAAMode(AAModeFXAA));
    EXPECT_EQ(slots.log, (Names{"suspend in 2", "resume"}));
}

TEST_F(Renderer20CaptureTest, SetAAModeToTheModeInForceSuspendsNothing)
{
    renderer.SetDevicePixelRatio(2.5f);
    EXPECT_FALSE(renderer.SetAAMode(AAModeNone));
    EXPECT_TRUE(loader.log.empty());
    EXPECT_EQ(renderer.GetDevicePixelRatio(), 2.5f);
}

TEST_F(Renderer20CaptureTest, TheQueriesOfEachMode)
{
    struct Row
    {
        AAMode mode;
        bool fxaa;
        bool msaa;
        bool supersample;
    };
    for (const Row& row : {Row{AAModeNone, false, false, false}, Row{AAModeMSAA, false, true, false},
                           Row{AAModeFXAA, true, false, true}, Row{AAModeSupersampling, false, false, true}})
    {
        renderer.SetAAMode(row.mode);
        EXPECT_EQ(renderer.GetAAMode(), row.mode);
        EXPECT_EQ(renderer.UseFXAA(), row.fxaa) << row.mode;
        EXPECT_EQ(renderer.UseMSAA(), row.msaa) << row.mode;
        EXPECT_EQ(renderer.CanSuperSample(), row.supersample) << row.mode;
    }
}

TEST_F(Renderer20CaptureTest, TheBuffersAreMadeInOrder)
{
    capabilities.depthTexture = true;
    renderer.SetupAntialiasBuffers();
    const std::string framebuffer = Str(renderer.offscreenFramebuffer);
    const std::string color = Str(renderer.offscreenColorRenderbuffer);
    const std::string depth = Str(renderer.offscreenDepthRenderbuffer);
    const std::string colorTexture = Str(renderer.offscreenColorTexture);
    const std::string depthTexture = Str(renderer.offscreenDepthTexture);
    const std::string fb = Str(GL_FRAMEBUFFER);
    const std::string rb = Str(GL_RENDERBUFFER);
    const std::string tex = Str(GL_TEXTURE_2D);
    const auto parameter = [&tex](unsigned name, unsigned value)
    { return "glTexParameteri(" + tex + ", " + Str(name) + ", " + Str(value) + ")"; };
    const auto image = [](unsigned format, unsigned type)
    {
        return CallText("glTexImage2D", {GL_TEXTURE_2D, 0, double(format), 100, 50, 0, double(format), double(type)},
                        "null");
    };
    EXPECT_EQ(
        recorder.Strings({"glBindFramebuffer", "glBindRenderbuffer", "glFramebufferRenderbuffer",
                          "glRenderbufferStorage", "glBindTexture", "glTexParameteri", "glTexImage2D",
                          "glFramebufferTexture2D", "glCheckFramebufferStatus"}),
        (Names{"glBindFramebuffer(" + fb + ", " + framebuffer + ")", "glBindRenderbuffer(" + rb + ", " + color + ")",
               "glFramebufferRenderbuffer(" + fb + ", " + Str(GL_COLOR_ATTACHMENT0) + ", " + rb + ", " + color + ")",
               "glBindRenderbuffer(" + rb + ", " + depth + ")",
               "glRenderbufferStorage(" + rb + ", " + Str(GL_DEPTH24_STENCIL8) + ", 100, 50)",
               "glFramebufferRenderbuffer(" + fb + ", " + Str(GL_DEPTH_ATTACHMENT) + ", " + rb + ", " + depth + ")",
               "glFramebufferRenderbuffer(" + fb + ", " + Str(GL_STENCIL_ATTACHMENT) + ", " + rb + ", " + depth + ")",
               "glBindTexture(" + tex + ", " + colorTexture + ")", parameter(GL_TEXTURE_MIN_FILTER, GL_LINEAR),
               parameter(GL_TEXTURE_MAG_FILTER, GL_NEAREST), parameter(GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE),
               parameter(GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE), image(GL_RGBA, GL_UNSIGNED_BYTE),
               "glFramebufferTexture2D(" + fb + ", " + Str(GL_COLOR_ATTACHMENT0) + ", " + tex + ", " + colorTexture +
                   ", 0)",
               "glBindTexture(" + tex + ", " + depthTexture + ")", parameter(GL_TEXTURE_MIN_FILTER, GL_NEAREST),
               parameter(GL_TEXTURE_MAG_FILTER, GL_NEAREST), parameter(GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE),
               parameter(GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE), image(GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT),
               "glFramebufferTexture2D(" + fb + ", " + Str(GL_DEPTH_ATTACHMENT) + ", " + tex + ", " + depthTexture +
                   ", 0)",
               "glBindTexture(" + tex + ", 0)", "glCheckFramebufferStatus(" + fb + ")",
               "glBindFramebuffer(" + fb + ", 71)", "glBindRenderbuffer(" + rb + ", 72)"}));
    EXPECT_EQ(renderer.offscreenSpareRenderbuffer, 0u);
}

TEST_F(Renderer20CaptureTest, WhatIsBoundAtTheFirstCaptureCountsAsTheScreen)
{
    renderer.onScreenFramebuffer = 3;
    renderer.onScreenRenderbuffer = 4;
    renderer.SetupAntialiasBuffers();
    EXPECT_EQ(renderer.onScreenFramebuffer, 71u);
    EXPECT_EQ(renderer.onScreenRenderbuffer, 72u);
}

TEST_F(Renderer20CaptureTest, TheSizeIsPixelsTimesTheRatioTruncated)
{
    renderer.Resize(101, 33);
    renderer.SetDevicePixelRatio(1.5f);
    renderer.SetupAntialiasBuffers();
    EXPECT_EQ(renderer.offscreenWidth, 151);
    EXPECT_EQ(renderer.offscreenHeight, 49);
}

TEST_F(Renderer20CaptureTest, WithoutWorkingDepthTexturesThereIsNone)
{
    for (const auto& [has, fault] :
         {std::pair{false, false}, std::pair{false, true}, std::pair{true, true}, std::pair{true, false}})
    {
        capabilities.depthTexture = has;
        capabilities.depthTextureFault = fault;
        renderer.SetupAntialiasBuffers();
        EXPECT_EQ(renderer.offscreenDepthTexture != 0, has && !fault);
        renderer.ClearOffscreenBuffers();
    }
    OpenRenderer20 without(nullptr, nullptr);
    without.SetupAntialiasBuffers();
    EXPECT_NE(without.offscreenFramebuffer, 0u);
    EXPECT_EQ(without.offscreenDepthTexture, 0u);
}

TEST_F(Renderer20CaptureTest, AnIncompleteFramebufferGetsAPackedTextureOnBothAttachments)
{
    // The stand-in stays incomplete: first the packed texture is tried, then the renderbuffer.
    capabilities.depthTexture = true;
    recorder.SetFramebufferStatus(GL_FRAMEBUFFER_UNSUPPORTED);
    renderer.SetupAntialiasBuffers();
    const std::vector<GLCall> images = recorder.All("glTexImage2D");
    ASSERT_EQ(images.size(), 3u);
    EXPECT_TRUE(images[2].Begins({GL_TEXTURE_2D, 0, GL_DEPTH24_STENCIL8, 100, 50, 0, GL_DEPTH_STENCIL,
                                  GL_UNSIGNED_INT_24_8}));
    const std::vector<GLCall> textures = recorder.All("glFramebufferTexture2D");
    ASSERT_EQ(textures.size(), 4u);
    EXPECT_EQ(textures[2].Int(1), GL_DEPTH_ATTACHMENT);
    EXPECT_EQ(textures[3].Int(1), GL_STENCIL_ATTACHMENT);
    EXPECT_EQ(textures[2].Int(3), textures[1].Int(3));
    EXPECT_EQ(textures[3].Int(3), textures[1].Int(3));
    EXPECT_EQ(recorder.Count("glCheckFramebufferStatus"), 2u);

    const std::vector<GLCall> buffers = recorder.All("glFramebufferRenderbuffer");
    ASSERT_EQ(buffers.size(), 5u);
    EXPECT_EQ(buffers[3].Int(1), GL_DEPTH_ATTACHMENT);
    EXPECT_EQ(buffers[4].Int(1), GL_STENCIL_ATTACHMENT);
    EXPECT_EQ(buffers[4].Int(3), renderer.offscreenDepthRenderbuffer);
    EXPECT_EQ(renderer.offscreenDepthTexture, 0u);
    EXPECT_EQ(recorder.Live(GLObjectKind::Texture), std::set<unsigned>{renderer.offscreenColorTexture});
}

TEST_F(Renderer20CaptureTest, AnIncompleteFramebufferWithoutADepthTextureIsLeftAsItIs)
{
    recorder.SetFramebufferStatus(GL_FRAMEBUFFER_UNSUPPORTED);
    renderer.SetupAntialiasBuffers();
    EXPECT_EQ(recorder.Count("glTexImage2D"), 1u);
    EXPECT_EQ(recorder.Count("glCheckFramebufferStatus"), 1u);
    EXPECT_EQ(recorder.Count("glFramebufferRenderbuffer"), 3u);
    EXPECT_EQ(recorder.FindLast("glBindFramebuffer")->Int(1), 71);
}

TEST_F(Renderer20CaptureTest, APackedTextureThatMakesItCompleteStays)
{
    capabilities.depthTexture = true;
    const CompleteFrom complete(recorder, 2);
    renderer.SetupAntialiasBuffers();
    EXPECT_EQ(recorder.Count("glCheckFramebufferStatus"), 2u);
    EXPECT_EQ(recorder.All("glTexImage2D").size(), 3u);
    EXPECT_EQ(recorder.Count("glFramebufferRenderbuffer"), 3u) << "the renderbuffer is not asked again";
    EXPECT_NE(renderer.offscreenDepthTexture, 0u);
    EXPECT_EQ(recorder.Live(GLObjectKind::Texture),
              (std::set<unsigned>{renderer.offscreenColorTexture, renderer.offscreenDepthTexture}));
    EXPECT_EQ(recorder.FindLast("glBindTexture")->Int(1), 0);
    EXPECT_EQ(recorder.FindLast("glBindFramebuffer")->Int(1), 71);
    EXPECT_EQ(recorder.FindLast("glBindRenderbuffer")->Int(1), 72);
}

TEST_F(Renderer20CaptureTest, BeginCaptureBindsTheBuffersAndClearsThem)
{
    renderer.BeginCapture();
    recorder.Clear();
    renderer.BeginCapture();
    EXPECT_EQ(recorder.Strings(),
              (Names{"glBindFramebuffer(" + Str(GL_FRAMEBUFFER) + ", " + Str(renderer.offscreenFramebuffer) + ")",
                     "glBindRenderbuffer(" + Str(GL_RENDERBUFFER) + ", " + Str(renderer.offscreenColorRenderbuffer) +
                         ")",
                     "glViewport(0, 0, 100, 50)", "glDepthMask(1)", "glClear(17664)"}));
}

TEST_F(Renderer20CaptureTest, ASecondCaptureMakesNoNewObjects)
{
    CaptureNothing();
    renderer.ApplyCapture();
    const std::size_t live = recorder.LiveCount();
    recorder.Clear();
    renderer.BeginCapture();
    renderer.EndCapture();
    renderer.ApplyCapture();
    EXPECT_EQ(recorder.LiveCount(), live);
    for (const std::string& name : recorder.Names())
        EXPECT_NE(name.rfind("glGen", 0), 0u) << name;
}

TEST_F(Renderer20CaptureTest, EndCaptureDoesNothing)
{
    CaptureNothing();
    renderer.EndCapture();
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(Renderer20CaptureTest, ApplyCaptureDrawsTheTextureOnTheScreen)
{
    MarkingEffect* effect = CaptureNothing();
    renderer.ApplyCapture();
    const std::string vertexBuffer = Str(renderer.screenMeshData->vertexBufferId);
    const std::string indexBuffer = Str(renderer.screenMeshData->indexBufferId);
    EXPECT_EQ(recorder.Strings(),
              (Names{"glBindFramebuffer(" + Str(GL_FRAMEBUFFER) + ", 71)",
                     "glBindRenderbuffer(" + Str(GL_RENDERBUFFER) + ", 72)",
                     "glActiveTexture(" + Str(GL_TEXTURE0) + ")",
                     "glBindTexture(" + Str(GL_TEXTURE_2D) + ", " + Str(renderer.offscreenColorTexture) + ")",
                     "glDisable(" + Str(GL_BLEND) + ")", "glDisable(" + Str(GL_DEPTH_TEST) + ")",
                     "glDisable(" + Str(GL_CULL_FACE) + ")", "glViewport(0, 0, 100, 50)", "glUseProgram(77)",
                     "glBindBuffer(" + Str(GL_ARRAY_BUFFER) + ", " + vertexBuffer + ")",
                     "glBindBuffer(" + Str(GL_ELEMENT_ARRAY_BUFFER) + ", " + indexBuffer + ")",
                     "glEnableVertexAttribArray(0)", "glUniform1i(0, 0)",
                     "glDrawElements(" + Str(GL_TRIANGLES) + ", 6, " + Str(GL_UNSIGNED_SHORT) + ", 0)",
                     "glDisableVertexAttribArray(0)", "glEnable(" + Str(GL_CULL_FACE) + ")"}));
    EXPECT_EQ(effect->lastMaterial, nullptr);
    EXPECT_EQ(effect->lastCamera, nullptr);
    EXPECT_EQ(MeshES20::s_vertexId, 0u);
}

TEST_F(Renderer20CaptureTest, TheQuadIsDrawnFromItsOwnOffset)
{
    // Another mesh of the quad's format arrives first and lies before it in the buffer.
    Mesh other(MakeRawMesh(5, {0, 1, 2}, {false, true, false}));
    Attach(other, renderer.bufferPool);
    CaptureNothing();
    EXPECT_EQ(renderer.screenMeshData->GetPositionOffset(), 5 * 32);
    renderer.ApplyCapture();
    EXPECT_EQ(recorder.Count("glEnableVertexAttribArray", {5 * 32}), 1u);
    EXPECT_EQ(recorder.Count("glDrawElements", {GL_TRIANGLES, 6, GL_UNSIGNED_SHORT, 6}), 1u);
}

TEST_F(Renderer20CaptureTest, AQuadThatIsNotUploadedYetIsUploadedByApplyCapture)
{
    renderer.BeginCapture();
    renderer.UseMarkingEffect();
    ASSERT_EQ(renderer.screenMeshData->vertexBufferId, 0u);
    recorder.Clear();
    renderer.ApplyCapture();
    EXPECT_NE(renderer.screenMeshData->vertexBufferId, 0u);
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
}

TEST_F(Renderer20CaptureTest, WithoutBuffersOnlyTheScreenIsBound)
{
    const Names screenOnly = {"glBindFramebuffer(" + Str(GL_FRAMEBUFFER) + ", 5)",
                              "glBindRenderbuffer(" + Str(GL_RENDERBUFFER) + ", 6)", "glViewport(0, 0, 100, 50)"};
    renderer.onScreenFramebuffer = 5;
    renderer.onScreenRenderbuffer = 6;
    renderer.ApplyCapture();
    EXPECT_EQ(recorder.Strings(), screenOnly);

    renderer.BeginCapture();
    renderer.UseMarkingEffect();
    renderer.ClearOffscreenBuffers();
    renderer.onScreenFramebuffer = 5;
    renderer.onScreenRenderbuffer = 6;
    recorder.Clear();
    renderer.ApplyCapture();
    EXPECT_EQ(recorder.Strings(), screenOnly);
}

TEST_F(Renderer20CaptureTest, TheEffectIsToldTheSizeOfTheScreenBeforeItIsApplied)
{
    Names log;
    renderer.BeginCapture();
    renderer.UseScreenEffect(new TellingScreenEffect(log));
    renderer.Resize(300, 200);
    renderer.ApplyCapture();
    EXPECT_EQ(log, (Names{"size 300 200", "apply", "draw 300 200"}));
}

TEST_F(Renderer20CaptureTest, EachModeHasItsEffectWhichAModeChangeSwaps)
{
    renderer.BeginCapture();
    EXPECT_NE(dynamic_cast<AAEffectES20*>(renderer.screenEffect), nullptr);
    EXPECT_EQ(renderer.screenEffect->GetReferenceCount(), 1);
    EXPECT_EQ(renderer.screenEffect->GetCache(), &renderer.effectCache);
    Mesh* quad = renderer.screenMesh;

    renderer.SetAAMode(AAModeFXAA);
    EXPECT_NE(dynamic_cast<FXAAEffectES20*>(renderer.screenEffect), nullptr);
    EXPECT_EQ(renderer.screenEffect->GetReferenceCount(), 1);
    EXPECT_EQ(recorder.Live(GLObjectKind::Program).size(), 1u) << "the old effect is gone";
    EXPECT_EQ(renderer.offscreenFramebuffer, 0u);
    EXPECT_EQ(renderer.screenMesh, quad);

    renderer.SetAAMode(AAModeSupersampling);
    EXPECT_NE(dynamic_cast<AAEffectES20*>(renderer.screenEffect), nullptr);
    EXPECT_EQ(recorder.Live(GLObjectKind::Program).size(), 1u);
    renderer.BeginCapture();
    EXPECT_EQ(renderer.offscreenWidth, 200);
    EXPECT_EQ(renderer.offscreenHeight, 100);

    OpenRenderer20 fresh(nullptr, nullptr);
    fresh.Resize(10, 10);
    fresh.SetAAMode(AAModeFXAA);
    EXPECT_EQ(fresh.screenEffect, nullptr) << "not before there is a quad";
    fresh.BeginCapture();
    EXPECT_NE(dynamic_cast<FXAAEffectES20*>(fresh.screenEffect), nullptr);
}

TEST_F(Renderer20CaptureTest, ACaptureDrawnWithFxaaTellsTheProgramTheSizeOfTheScreen)
{
    renderer.SetAAMode(AAModeFXAA);
    renderer.BeginCapture();
    recorder.Clear();
    renderer.ApplyCapture();
    EXPECT_EQ(recorder.Uniform("u_width"), std::vector<float>{100.0f});
    EXPECT_EQ(recorder.Uniform("u_height"), std::vector<float>{50.0f});
    EXPECT_LT(recorder.IndexOf("glUseProgram"), recorder.IndexOf("glUniform1f"));
    EXPECT_EQ(recorder.Count("glDrawElements"), 1u);
}

TEST_F(Renderer20CaptureTest, WithoutAnEffectNothingIsDrawn)
{
    renderer.BeginCapture();
    renderer.UseScreenEffect(nullptr);
    recorder.Clear();
    renderer.ApplyCapture();
    EXPECT_EQ(recorder.Names(), (Names{"glBindFramebuffer", "glBindRenderbuffer", "glViewport"}));
}

TEST_F(Renderer20CaptureTest, WithMultisamplingNothingIsCaptured)
{
    renderer.SetAAMode(AAModeMSAA);
    recorder.Clear();
    renderer.BeginCapture();
    renderer.EndCapture();
    renderer.ApplyCapture();
    EXPECT_TRUE(recorder.Calls().empty());
    EXPECT_EQ(renderer.offscreenFramebuffer, 0u);
    EXPECT_EQ(renderer.screenScene, nullptr);

    AppContext context;
    context.GetContext()->SetScene(std::make_unique<Scene>());
    context.SetScreenSize(100, 50);
    context.Update(0.0f);
    recorder.Clear();
    context.Render(&renderer, true);
    EXPECT_EQ(recorder.Count("glBindFramebuffer"), 0u);
    EXPECT_EQ(recorder.Count("glViewport"), 0u);
}

TEST_F(Renderer20CaptureTest, TheScreenMeshIsAQuadOverAllOfClipSpace)
{
    renderer.CreateScreenMesh();
    ASSERT_NE(renderer.screenScene, nullptr);
    ASSERT_NE(renderer.screenMesh, nullptr);
    const std::vector<Vector> positions = {{-1, -1, 0}, {-1, 1, 0}, {1, 1, 0}, {1, 1, 0}, {1, -1, 0}, {-1, -1, 0}};
    const std::vector<TextureCoordinate> coordinates = {{0, 0}, {0, 1}, {1, 1}, {1, 1}, {1, 0}, {0, 0}};
    ASSERT_EQ(renderer.screenMesh->GetNumVertices(), 6u);
    for (int i = 0; i < 6; ++i)
    {
        EXPECT_EQ(renderer.screenMesh->GetPositionBuffer()[i], positions[i]) << i;
        EXPECT_EQ(renderer.screenMesh->GetTextureBuffer()[i].u, coordinates[i].u) << i;
        EXPECT_EQ(renderer.screenMesh->GetTextureBuffer()[i].v, coordinates[i].v) << i;
    }
    EXPECT_EQ(renderer.screenMesh->GetIndices(), (std::vector<unsigned short>{0, 1, 2, 3, 4, 5}));
    EXPECT_TRUE(renderer.screenMesh->GetNormalBuffer().empty());
    EXPECT_EQ(renderer.screenMesh->GetRenderData(), renderer.screenMeshData);
    EXPECT_EQ(renderer.screenMesh->GetScene(), renderer.screenScene.get());
    ASSERT_EQ(renderer.screenMesh->GetNodes().size(), 1u);
    EXPECT_EQ(renderer.screenMesh->GetNodes()[0]->GetParent(), renderer.screenScene->GetRoot());
    EXPECT_TRUE(renderer.screenScene->GetCameraNode()->GetGlobal() == Transform());
    EXPECT_EQ(renderer.screenMeshData->pool.Get(), &renderer.bufferPool);
    // Drawn later: the next pass uploads it.
    EXPECT_EQ(recorder.Count("glGenBuffers"), 0u);
}

TEST_F(Renderer20CaptureTest, TheQuadIsUploadedByTheFirstPassAfterBeginCapture)
{
    renderer.BeginCapture();
    Scene2D layer(nullptr);
    renderer.Render2D(&layer);
    EXPECT_NE(renderer.screenMeshData->vertexBufferId, 0u);
}

TEST_F(Renderer20CaptureTest, AResizeKeepsTheOldCaptureSize)
{
    CaptureNothing();
    renderer.Resize(300, 200);
    recorder.Clear();
    renderer.BeginCapture();
    renderer.ApplyCapture();
    const std::vector<GLCall> viewports = recorder.All("glViewport");
    ASSERT_EQ(viewports.size(), 2u);
    EXPECT_TRUE(viewports[0].Begins({0, 0, 100, 50}));
    EXPECT_TRUE(viewports[1].Begins({0, 0, 300, 200}));
    renderer.ClearOffscreenBuffers();
    renderer.BeginCapture();
    EXPECT_EQ(renderer.offscreenWidth, 300);
    EXPECT_EQ(renderer.offscreenHeight, 200);
}

TEST_F(Renderer20CaptureTest, WhichNamesOutliveWhat)
{
    capabilities.depthTexture = true;
    struct Row
    {
        const char* label;
        std::function<void(EffectiveRenderer20&)> act;
        bool buffers;  ///< outlive it: framebuffer, renderbuffers, textures
        bool quad;     ///< outlives it: the quad on the GPU
        bool program;  ///< outlives it: that of the screen effect
    };
    const Row rows[] = {
        {"a later capture", [](auto& r) { r.BeginCapture(), r.ApplyCapture(); }, true, true, true},
        {"a resize", [](auto& r) { r.Resize(300, 200); }, true, true, true},
        {"the mode in force", [](auto& r) { r.SetAAMode(AAModeNone); }, true, true, true},
        {"another ratio", [](auto& r) { r.SetDevicePixelRatio(3.0f); }, true, true, true},
        {"other screen buffers", [](auto& r) { r.SetOnScreenBuffers(100, 50, 0, 0, 0, 1.0f); }, false, true, true},
        {"a clearing", [](auto& r) { r.ClearOffscreenBuffers(); }, false, true, true},
        {"a suspension", [](auto& r) { r.Suspend(); }, false, false, false},
        {"a resumption alone", [](auto& r) { r.Resume(); }, true, false, true},
        {"another mode", [](auto& r) { r.SetAAMode(AAModeSupersampling); }, false, false, false},
        {"multisampling", [](auto& r) { r.SetAAMode(AAModeMSAA); }, false, false, false},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.label);
        GLRecorder own;
        EffectiveRenderer20 used(nullptr, &capabilities);
        used.Resize(100, 50);
        used.BeginCapture();
        used.ApplyCapture();
        const auto made = [&own]
        {
            return std::vector<std::set<unsigned>>{own.Live(GLObjectKind::Framebuffer),
                                                   own.Live(GLObjectKind::Renderbuffer),
                                                   own.Live(GLObjectKind::Texture)};
        };
        const std::vector<std::set<unsigned>> buffers = made();
        const std::set<unsigned> quad = own.Live(GLObjectKind::Buffer);
        const std::set<unsigned> program = own.Live(GLObjectKind::Program);
        ASSERT_EQ(buffers[0].size(), 1u);
        ASSERT_EQ(buffers[1].size(), 2u);
        ASSERT_EQ(buffers[2].size(), 2u);
        ASSERT_EQ(quad.size(), 2u);
        ASSERT_EQ(program.size(), 1u);
        const Mesh* mesh = used.screenMesh;

        row.act(used);
        EXPECT_EQ(made(), row.buffers ? buffers : std::vector<std::set<unsigned>>(3));
        EXPECT_EQ(used.offscreenFramebuffer != 0, row.buffers);
        EXPECT_EQ(own.Live(GLObjectKind::Buffer), row.quad ? quad : std::set<unsigned>{});
        EXPECT_EQ(own.Live(GLObjectKind::Program).count(*program.begin()), row.program ? 1u : 0u);
        EXPECT_EQ(used.screenMesh, mesh) << "in any case";
        EXPECT_TRUE(own.StrayDeletes().empty());
    }
}

TEST_F(Renderer20CaptureTest, AModeChangeReachesTheLoaderAndLeavesTheSceneClean)
{
    AppContext context;
    context.GetContext()->SetScene(std::make_unique<Scene>());
    context.SetScreenSize(100, 50);
    context.Update(0.0f);
    context.Render(&renderer, true);
    ASSERT_FALSE(context.Update(0.0f));
    EXPECT_TRUE(renderer.SetAAMode(AAModeFXAA));
    EXPECT_EQ(loader.log, (Names{"suspend", "resume"}));
    // The host redraws of its own accord.
    EXPECT_FALSE(context.GetContext()->GetScene()->IsDirty());
    EXPECT_FALSE(context.Update(0.0f));
}

TEST_F(Renderer20CaptureTest, ClearOffscreenBuffersDeletesEverythingAndZeroesTheFramebuffer)
{
    capabilities.depthTexture = true;
    renderer.SetupAntialiasBuffers();
    const int color = static_cast<int>(renderer.offscreenColorRenderbuffer);
    const int depth = static_cast<int>(renderer.offscreenDepthRenderbuffer);
    const int colorTexture = static_cast<int>(renderer.offscreenColorTexture);
    const int depthTexture = static_cast<int>(renderer.offscreenDepthTexture);
    const int framebuffer = static_cast<int>(renderer.offscreenFramebuffer);
    recorder.Clear();
    renderer.ClearOffscreenBuffers();
    EXPECT_EQ(recorder.Names(),
              (Names{"glDeleteRenderbuffers", "glDeleteRenderbuffers", "glDeleteRenderbuffers", "glBindTexture",
                     "glDeleteTextures", "glDeleteTextures", "glDeleteFramebuffers"}));
    const std::vector<GLCall>& calls = recorder.Calls();
    EXPECT_EQ(calls[0].ints, std::vector<int>{color});
    EXPECT_EQ(calls[1].ints, std::vector<int>{depth});
    EXPECT_EQ(calls[2].ints, std::vector<int>{0});
    EXPECT_TRUE(calls[3].Begins({GL_TEXTURE_2D, 0}));
    EXPECT_EQ(calls[4].ints, std::vector<int>{colorTexture});
    EXPECT_EQ(calls[5].ints, std::vector<int>{depthTexture});
    EXPECT_EQ(calls[6].ints, std::vector<int>{framebuffer});
    EXPECT_EQ(renderer.offscreenFramebuffer, 0u);
    EXPECT_EQ(renderer.offscreenDepthTexture, 0u);
    // The other names stay, stale.
    EXPECT_EQ(renderer.offscreenColorTexture, static_cast<unsigned>(colorTexture));
    EXPECT_EQ(renderer.offscreenColorRenderbuffer, static_cast<unsigned>(color));
    EXPECT_EQ(renderer.offscreenDepthRenderbuffer, static_cast<unsigned>(depth));
    EXPECT_EQ(recorder.LiveCount(), 0u);
    EXPECT_TRUE(recorder.StrayDeletes().empty());

    recorder.Clear();
    renderer.ClearOffscreenBuffers();
    EXPECT_TRUE(recorder.Calls().empty());
}

TEST_F(Renderer20CaptureTest, BuffersOfASubclassForMultisamplingAreDeletedWithTheOthers)
{
    renderer.CreateMSAABuffers();
    EXPECT_TRUE(recorder.Calls().empty());
    glGenFramebuffers(1, &renderer.msaaFramebuffer);
    glGenRenderbuffers(1, &renderer.msaaColorRenderbuffer);
    glGenRenderbuffers(1, &renderer.msaaDepthRenderbuffer);
    recorder.Clear();
    renderer.ClearOffscreenBuffers();
    EXPECT_EQ(recorder.Names(), (Names{"glDeleteFramebuffers", "glDeleteRenderbuffers", "glDeleteRenderbuffers"}));
    EXPECT_EQ(renderer.msaaFramebuffer, 0u);
    EXPECT_EQ(renderer.msaaColorRenderbuffer, 0u);
    EXPECT_EQ(renderer.msaaDepthRenderbuffer, 0u);
    EXPECT_EQ(recorder.LiveCount(), 0u);
}

TEST_F(Renderer20CaptureTest, SuspendLetsGoOfTheQuadAndTheEffectAndResumeBringsTheQuadBack)
{
    int deaths = 0;
    renderer.BeginCapture();
    renderer.UseMarkingEffect(&deaths);
    Scene2D layer(nullptr);
    renderer.Render2D(&layer);
    Mesh* quad = renderer.screenMesh;
    renderer.Suspend();
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(renderer.screenEffect, nullptr);
    EXPECT_EQ(renderer.screenMeshData, nullptr);
    EXPECT_EQ(quad->GetRenderData(), nullptr);
    EXPECT_EQ(renderer.offscreenFramebuffer, 0u);
    EXPECT_EQ(recorder.LiveCount(), 0u);

    renderer.Resume();
    EXPECT_EQ(renderer.screenMesh, quad);
    ASSERT_NE(renderer.screenMeshData, nullptr);
    EXPECT_EQ(quad->GetRenderData(), renderer.screenMeshData);
    EXPECT_EQ(renderer.offscreenFramebuffer, 0u);
    EXPECT_EQ(loader.log, (Names{"suspend", "resume"}));

    renderer.BeginCapture();
    EXPECT_NE(renderer.offscreenFramebuffer, 0u);
    EXPECT_EQ(renderer.screenMesh, quad);
    renderer.Render2D(&layer);
    EXPECT_NE(renderer.screenMeshData->vertexBufferId, 0u);
}

TEST_F(Renderer20CaptureTest, ASharedScreenEffectLosesOneReference)
{
    MarkingEffect* effect = CaptureNothing();
    effect->AddReference();
    renderer.Suspend();
    EXPECT_EQ(effect->GetReferenceCount(), 1);
    effect->Release();
}

TEST_F(Renderer20CaptureTest, TheDestructorFreesEverything)
{
    int deaths = 0;
    {
        EffectiveRenderer20 own(nullptr, &capabilities);
        own.Resize(10, 10);
        own.BeginCapture();
        own.UseMarkingEffect(&deaths);
        own.ApplyCapture();
        struct Extension : Object
        {
            explicit Extension(int& count) : m_count(count) {}
            ~Extension() override { ++m_count; }
            int& m_count;
        };
        own.extension = std::make_unique<Extension>(deaths);
        EXPECT_GT(recorder.LiveCount(), 0u);
    }
    EXPECT_EQ(deaths, 2);
    EXPECT_EQ(recorder.LiveCount(), 0u);
    EXPECT_TRUE(recorder.StrayDeletes().empty());
}

TEST_F(Renderer20CaptureTest, AFrameWithCaptureRunsInOrder)
{
    AppContext context;
    context.GetContext()->SetScene(std::make_unique<Scene>());
    AddPart(*context.GetContext()->GetScene(), *AddMaterial(*context.GetContext()->GetScene(), "m"));
    context.SetScreenSize(100, 50);
    context.Update(0.0f);
    context.Render(&renderer, true);
    renderer.UseMarkingEffect();
    recorder.Clear();
    context.Update(0.0f);
    context.Render(&renderer, true);
    const std::string all = "glClear(17664)";
    const std::string depth = "glClear(" + Str(GL_DEPTH_BUFFER_BIT) + ")";
    const std::string offscreen = "glBindFramebuffer(" + Str(GL_FRAMEBUFFER) + ", " + Str(renderer.offscreenFramebuffer) + ")";
    const std::string screen = "glBindFramebuffer(" + Str(GL_FRAMEBUFFER) + ", 71)";
    const std::string draw = "glDrawElements(" + Str(GL_TRIANGLES) + ", ";
    EXPECT_EQ(recorder.Strings({"glClear", "glBindFramebuffer", "glDrawElements"}),
              (Names{all, offscreen, all, depth, depth, draw + "3, " + Str(GL_UNSIGNED_SHORT) + ", 0)", screen,
                     draw + "6, " + Str(GL_UNSIGNED_SHORT) + ", 0)", depth}));

    recorder.Clear();
    context.RenderCapturedAndUI(&renderer);
    EXPECT_EQ(recorder.Strings({"glClear", "glBindFramebuffer", "glDrawElements"}),
              (Names{all, screen, draw + "6, " + Str(GL_UNSIGNED_SHORT) + ", 0)", depth}));
}

} // namespace OV::Test
