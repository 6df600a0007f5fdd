#include "orvane_host/present/detail/ScreenBuffer.h"
#include "tests/support/GLFixture.h"
#include "tests/support/GLState.h"

#include <GL/glew.h>

#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::Detail::ScreenBuffer;

constexpr int kWidth = 70;
constexpr int kHeight = 50;

/// GL's answer to framebuffers of a scope, that memory is short, from so many questions on.
class ShortMemory
{
public:
    explicit ShortMemory(int first) : m_real(__glewCheckFramebufferStatus)
    {
        s_left = first;
        s_real = m_real;
        __glewCheckFramebufferStatus = &Answer;
    }
    ~ShortMemory() { __glewCheckFramebufferStatus = m_real; }

    ShortMemory(const ShortMemory&) = delete;
    ShortMemory& operator=(const ShortMemory&) = delete;

private:
    static GLenum GLAPIENTRY Answer(GLenum target)
    {
        return s_left-- > 0 ? s_real(target) : GL_FRAMEBUFFER_UNSUPPORTED;
    }

    static int s_left;
    static PFNGLCHECKFRAMEBUFFERSTATUSPROC s_real;

    PFNGLCHECKFRAMEBUFFERSTATUSPROC m_real;
};

int ShortMemory::s_left = 0;
PFNGLCHECKFRAMEBUFFERSTATUSPROC ShortMemory::s_real = nullptr;

GLint OfTexture(unsigned int texture, GLenum name)
{
    GLint value = 0;
    glBindTexture(GL_TEXTURE_2D, texture);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, name, &value);
    glBindTexture(GL_TEXTURE_2D, 0);
    return value;
}

using ScreenBufferTest = GLFixture;

} // namespace

TEST_F(ScreenBufferTest, HoldsNothingBesideItsTextures)
{
    const GLObjects before = GLState::CaptureObjects();
    for (const eRenderTargetProfile profile :
         {RenderTargetProfileColor, RenderTargetProfileDepth, RenderTargetProfileColorDepth})
    {
        SCOPED_TRACE(profile);
        ScreenBuffer buffer(profile);
        ASSERT_TRUE(buffer.Resize(kWidth, kHeight));
        const GLObjects with = GLState::CaptureObjects();
        EXPECT_EQ(with.at("renderbuffer"), before.at("renderbuffer"));
        EXPECT_EQ(with.at("framebuffer").size(), before.at("framebuffer").size() + 1);
        const bool hasColor = profile != RenderTargetProfileDepth;
        const bool hasDepth = profile != RenderTargetProfileColor;
        EXPECT_EQ(buffer.GetTarget().GetColorTexture() != 0, hasColor);
        EXPECT_EQ(buffer.GetTarget().GetDepthTexture() != 0, hasDepth);
        EXPECT_EQ(with.at("texture").size(), before.at("texture").size() + (hasColor ? 1 : 0) + (hasDepth ? 1 : 0));
        for (const unsigned int texture : {buffer.GetTarget().GetColorTexture(), buffer.GetTarget().GetDepthTexture()})
        {
            if (texture != 0)
            {
                EXPECT_EQ(OfTexture(texture, GL_TEXTURE_WIDTH), kWidth);
                EXPECT_EQ(OfTexture(texture, GL_TEXTURE_HEIGHT), kHeight);
            }
        }
    }
    EXPECT_EQ(GLState::CaptureObjects(), before);
}

TEST_F(ScreenBufferTest, TellsDepthsApartAsItIsTold)
{
    using Depths = ScreenBuffer::Depths;
    ScreenBuffer buffer(RenderTargetProfileDepth, Depths::Offsets);
    const auto bits = [&] {
        EXPECT_TRUE(buffer.Resize(kWidth, kHeight));
        return OfTexture(buffer.GetTarget().GetDepthTexture(), GL_TEXTURE_DEPTH_SIZE);
    };
    EXPECT_EQ(bits(), 24);
    buffer.SetDepths(Depths::Short);
    EXPECT_EQ(buffer.GetTarget().GetDepthTexture(), 0u) << "until it has a size again";
    EXPECT_EQ(bits(), 16);
    buffer.SetDepths(Depths::Finest);
    EXPECT_GE(bits(), 24);
}

TEST_F(ScreenBufferTest, IsDrawnIntoAllOver)
{
    ScreenBuffer buffer(RenderTargetProfileColorDepth, ScreenBuffer::Depths::Short);
    ASSERT_TRUE(buffer.Resize(kWidth, kHeight));
    glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
    glClearDepth(0.25);
    buffer.GetTarget().BeginCapture(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    buffer.GetTarget().EndCapture();
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    glClearDepth(1.0);
    std::vector<float> depths(kWidth * kHeight);
    glBindTexture(GL_TEXTURE_2D, buffer.GetTarget().GetDepthTexture());
    glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, GL_FLOAT, depths.data());
    std::vector<unsigned int> colors(kWidth * kHeight);
    glBindTexture(GL_TEXTURE_2D, buffer.GetTarget().GetColorTexture());
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_INT_8_8_8_8, colors.data());
    glBindTexture(GL_TEXTURE_2D, 0);
    for (std::size_t i = 0; i < depths.size(); ++i)
    {
        ASSERT_NEAR(depths[i], 0.25f, 1e-4f) << i;
        ASSERT_EQ(colors[i], 0x00ff00ffu) << i;
    }
}

TEST_F(ScreenBufferTest, PutsUpWithAGLThatHasNoRoomAndTellsIt)
{
    // Entry points are loaded with the first buffer.
    EXPECT_TRUE(ScreenBuffer(RenderTargetProfileDepth).Resize(kWidth, kHeight));
    const GLObjects before = GLState::CaptureObjects();
    // The first framebuffers are of one pixel.
    for (int answered = 0; answered < 3; ++answered)
    {
        SCOPED_TRACE(answered);
        ScreenBuffer buffer(RenderTargetProfileDepth, ScreenBuffer::Depths::Short);
        testing::internal::CaptureStderr();
        {
            const ShortMemory memory(answered);
            EXPECT_FALSE(buffer.Resize(kWidth, kHeight));
        }
        const std::string told = testing::internal::GetCapturedStderr();
        EXPECT_NE(told, "");
        if (answered == 2)
        {
            EXPECT_EQ(told, "Could not make a buffer of 70 x 50 pixels.\n");
        }
        EXPECT_EQ(GLState::CaptureObjects(), before);
        EXPECT_FALSE(buffer.Resize(kWidth, kHeight)) << "is not tried again";
        EXPECT_TRUE(buffer.Resize(kWidth, kHeight + 1));
    }
    ExpectNoGLError();
}

} // namespace OV::Test
