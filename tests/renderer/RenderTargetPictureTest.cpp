#include "orvane/effects/AAEffectES20.h"
#include "tests/renderer/OpenRenderTarget.h"
#include "tests/renderer/PixelBuffers.h"
#include "tests/renderer/PixelScene.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace OV::Test
{

namespace
{

class RenderTargetPicture : public PixelScene
{
protected:
    static Pixel At(const RenderTarget::RenderTargetImage& image, int x, int y)
    {
        const unsigned char* pixel = image.data + (y * image.width + x) * 4;
        return {pixel[0], pixel[1], pixel[2], pixel[3]};
    }

    static unsigned int Bound(GLenum query)
    {
        GLint name = 0;
        glGetIntegerv(query, &name);
        return static_cast<unsigned int>(name);
    }
};

constexpr unsigned kEverything = GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT;

} // namespace

TEST_F(RenderTargetPicture, EveryProfileIsCompleteAndGivesBackWhatWasBound)
{
    const unsigned int framebuffer = Bound(GL_FRAMEBUFFER_BINDING);
    for (const eRenderTargetProfile profile : kProfiles)
    {
        SCOPED_TRACE(profile);
        OpenRenderTarget target(profile);
        ::testing::internal::CaptureStderr();
        target.SetDimensions(40, 30);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
        EXPECT_TRUE(target.initialized);
        EXPECT_EQ(Bound(GL_FRAMEBUFFER_BINDING), framebuffer);
        EXPECT_EQ(Bound(GL_RENDERBUFFER_BINDING), 0u);
        EXPECT_EQ(Bound(GL_TEXTURE_BINDING_2D), 0u);
        EXPECT_EQ(target.GetColorTexture() == 0, profile == RenderTargetProfileDepth);
        EXPECT_EQ(target.GetDepthTexture() == 0, profile == RenderTargetProfileColor);
        target.BeginCapture(kEverything);
        EXPECT_EQ(Bound(GL_FRAMEBUFFER_BINDING), target.framebuffer);
        EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), static_cast<unsigned>(GL_FRAMEBUFFER_COMPLETE));
        target.EndCapture();
        EXPECT_EQ(Bound(GL_FRAMEBUFFER_BINDING), framebuffer);
        ExpectNoGLError();
    }
}

TEST_F(RenderTargetPicture, WhatIsDrawnIsReadBackBottomRowFirst)
{
    for (const eRenderTargetProfile profile :
         {RenderTargetProfileColor, RenderTargetProfileColorDepth, RenderTargetProfileColorDepthStencil})
    {
        SCOPED_TRACE(profile);
        OpenRenderTarget target(profile);
        target.SetDimensions(5, 3);
        glClearColor(0.2f, 0.4f, 0.6f, 0.8f);
        target.BeginCapture(kEverything);
        glEnable(GL_SCISSOR_TEST);
        glScissor(0, 0, 5, 1);
        glClearColor(1.0f, 0.0f, 0.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        glDisable(GL_SCISSOR_TEST);
        glScissor(0, 0, DefaultSize, DefaultSize);
        target.EndCapture();
        glPixelStorei(GL_PACK_ALIGNMENT, 8);
        glPixelStorei(GL_PACK_ROW_LENGTH, 100);
        RenderTarget::RenderTargetImage image;
        target.SaveImageTo(image);
        EXPECT_EQ(Bound(GL_PACK_ROW_LENGTH), 100u);
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
        glPixelStorei(GL_PACK_ROW_LENGTH, 0);
        EXPECT_EQ(image.width, 5);
        EXPECT_EQ(image.height, 3);
        for (int x = 0; x < 5; ++x)
        {
            EXPECT_EQ(At(image, x, 0), (Pixel{255, 0, 0, 255}));
            EXPECT_EQ(At(image, x, 1), (Pixel{51, 102, 153, 204}));
            EXPECT_EQ(At(image, x, 2), (Pixel{51, 102, 153, 204}));
        }
    }
    AllowStateChange("scissor box");
}

TEST_F(RenderTargetPicture, PixelBuffersOfTheHostDoNoHarm)
{
    // Too small for the textures: GL would refuse to read them from there.
    const PixelBuffers buffers;
    for (const eRenderTargetProfile profile : kProfiles)
    {
        SCOPED_TRACE(profile);
        OpenRenderTarget target(profile);
        target.SetDimensions(40, 30);
        ASSERT_TRUE(target.initialized);
        if (target.GetColorTexture() == 0)
        {
            continue;
        }
        glClearColor(0.2f, 0.4f, 0.6f, 0.8f);
        target.BeginCapture(kEverything);
        target.EndCapture();
        RenderTarget::RenderTargetImage image;
        target.SaveImageTo(image);
        EXPECT_EQ(At(image, 0, 0), (Pixel{51, 102, 153, 204}));
        EXPECT_EQ(At(image, 39, 29), (Pixel{51, 102, 153, 204}));
        ExpectNoGLError();
    }
    buffers.ExpectBound();
}

TEST_F(RenderTargetPicture, ATargetWithoutColourReadsAsZeroes)
{
    OpenRenderTarget target(RenderTargetProfileDepth);
    target.SetDimensions(5, 3);
    RenderTarget::RenderTargetImage image;
    target.SaveImageTo(image);
    for (int i = 0; i < 5 * 3 * 4; ++i)
    {
        EXPECT_EQ(image.data[i], 0) << i;
    }
    EXPECT_EQ(glGetError(), static_cast<unsigned>(GL_INVALID_OPERATION));
}

TEST_F(RenderTargetPicture, ACaptureIsLeftAndEnteredAgainAndLaidOverTheScreen)
{
    OpenRenderTarget target(RenderTargetProfileColorDepth);
    target.SetDimensions(Width(), Height());
    glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    target.BeginCapture(kEverything);
    target.SuspendCapture();
    glClearColor(0.0f, 0.0f, 1.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    ExpectColorInRect({0, 0, Width(), Height()}, {0, 0, 255, 255});
    target.ResumeCapture();
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, 64, 128);
    glClearColor(1.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glDisable(GL_SCISSOR_TEST);
    AllowStateChange("scissor box");
    target.EndCapture();
    ExpectColorInRect({0, 0, Width(), Height()}, {0, 0, 255, 255});

    EffectCache cache;
    auto* effect = static_cast<AAEffectES20*>(cache.GetEffect(EffectCache::AA));
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, target.GetColorTexture());
    effect->Apply(nullptr, nullptr);
    target.ApplyCapture(effect);
    glBindTexture(GL_TEXTURE_2D, 0);
    effect->Release();
    const Picture picture = ReadPixels();
    ExpectColorInRect(picture, {0, 0, 64, 128}, {255, 0, 0, 255});
    ExpectColorInRect(picture, {64, 0, 64, 128}, {0, 255, 0, 255});
}

TEST_F(RenderTargetPicture, TheDepthTextureHoldsTheDepthThatWasDrawn)
{
    for (const eRenderTargetProfile profile :
         {RenderTargetProfileDepth, RenderTargetProfileColorDepth, RenderTargetProfileColorDepthStencil})
    {
        SCOPED_TRACE(profile);
        OpenRenderTarget target(profile);
        target.SetDimensions(6, 4);
        glClearDepth(0.25);
        target.BeginCapture(kEverything);
        target.EndCapture();
        glClearDepth(1.0);
        std::vector<float> depths(24, -1.0f);
        glBindTexture(GL_TEXTURE_2D, target.GetDepthTexture());
        glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
        glBindTexture(GL_TEXTURE_2D, 0);
        for (const float depth : depths)
        {
            EXPECT_NEAR(depth, 0.25f, 1e-6f);
        }
        ExpectNoGLError();
    }
}

TEST_F(RenderTargetPicture, TheRenderersFrameIsTheSameInATarget)
{
    AddQuad(AddColor(Color(1, 0, 0, 1)), {10, 10, 60, 60}, 5.0f);
    AddQuad(AddColor(Color(0, 1, 0, 1)), {40, 40, 60, 60});
    const Picture direct = Frame();
    for (const eRenderTargetProfile profile : {RenderTargetProfileColorDepth, RenderTargetProfileColorDepthStencil})
    {
        OpenRenderTarget target(profile);
        target.SetDimensions(Width(), Height());
        target.BeginCapture(kEverything);
        Render(false);
        RenderTarget::RenderTargetImage image;
        target.SaveImageTo(image);
        EXPECT_EQ(Bound(GL_FRAMEBUFFER_BINDING), target.framebuffer) << "the capture goes on";
        target.EndCapture();
        int wrong = 0;
        for (int y = 0; y < Height(); ++y)
        {
            for (int x = 0; x < Width(); ++x)
            {
                wrong += At(image, x, y) != direct.At(x, y) ? 1 : 0;
            }
        }
        EXPECT_EQ(wrong, 0) << profile;
    }
}

TEST_F(RenderTargetPicture, ANewSizeLeavesNothingOfTheOldOne)
{
    OpenRenderTarget target(RenderTargetProfileColorDepthStencil);
    target.SetDimensions(40, 30);
    GLState::Unbind();
    const GLObjects first = GLState::CaptureObjects();
    target.SetDimensions(80, 60);
    const GLObjects second = GLState::CaptureObjects();
    for (const char* kind : {"texture", "framebuffer", "renderbuffer"})
    {
        EXPECT_EQ(first.at(kind).size(), second.at(kind).size()) << kind;
    }
    target.SetDimensions(0, 0);
    EXPECT_EQ(target.framebuffer, 0u);
}

} // namespace OV::Test
