#include "orvane_host/context/HeadlessContext.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using OV::Host::HeadlessContext;

namespace
{

std::unique_ptr<HeadlessContext> Make(int width, int height, int samples = 0,
                                      HeadlessContext::Surface surface = HeadlessContext::Surface::Automatic)
{
    HeadlessContext::Options options;
    options.width = width;
    options.height = height;
    options.samples = samples;
    options.surface = surface;
    std::string error;
    auto context = HeadlessContext::Create(options, error);
    EXPECT_TRUE(context) << error;
    return context;
}

std::string ErrorOf(int width, int height, int samples = 0)
{
    HeadlessContext::Options options;
    options.width = width;
    options.height = height;
    options.samples = samples;
    std::string error;
    EXPECT_FALSE(HeadlessContext::Create(options, error));
    return error;
}

void Clear(float r, float g, float b, float a)
{
    glClearColor(r, g, b, a);
    glClear(GL_COLOR_BUFFER_BIT);
}

GLint Integer(GLenum name)
{
    GLint value = -1;
    glGetIntegerv(name, &value);
    return value;
}

std::string SizeLimit(const HeadlessContext& context)
{
    return std::to_string(context.GetMaxWidth()) + "x" + std::to_string(context.GetMaxHeight());
}

}  // namespace

TEST(HeadlessContext, IsCurrentAndBoundWithAFullViewportWhenMade)
{
    auto context = Make(37, 21);
    ASSERT_TRUE(context);
    EXPECT_TRUE(context->IsCurrent());
    EXPECT_EQ(context->GetWidth(), 37);
    EXPECT_EQ(context->GetHeight(), 21);
    EXPECT_EQ(context->GetSamples(), 0);
    EXPECT_NE(context->GetFramebuffer(), 0u);
    EXPECT_EQ(Integer(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<GLint>(context->GetFramebuffer()));
    EXPECT_EQ(Integer(GL_READ_FRAMEBUFFER_BINDING), static_cast<GLint>(context->GetFramebuffer()));
    GLint viewport[4] = {-1, -1, -1, -1};
    glGetIntegerv(GL_VIEWPORT, viewport);
    EXPECT_EQ(viewport[0], 0);
    EXPECT_EQ(viewport[1], 0);
    EXPECT_EQ(viewport[2], 37);
    EXPECT_EQ(viewport[3], 21);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST(HeadlessContext, HasEightBitColourDepthAndStencil)
{
    auto context = Make(8, 8);
    ASSERT_TRUE(context);
    EXPECT_EQ(Integer(GL_RED_BITS), 8);
    EXPECT_EQ(Integer(GL_ALPHA_BITS), 8);
    EXPECT_EQ(Integer(GL_DEPTH_BITS), 24);
    EXPECT_EQ(Integer(GL_STENCIL_BITS), 8);
}

TEST(HeadlessContext, NamesTheDriverAndThePlatform)
{
    auto context = Make(8, 8);
    ASSERT_TRUE(context);
    EXPECT_EQ(context->GetVendor(), reinterpret_cast<const char*>(glGetString(GL_VENDOR)));
    EXPECT_EQ(context->GetRenderer(), reinterpret_cast<const char*>(glGetString(GL_RENDERER)));
    EXPECT_EQ(context->GetVersion(), reinterpret_cast<const char*>(glGetString(GL_VERSION)));
    EXPECT_FALSE(context->GetPlatform().empty());
    EXPECT_EQ(context->GetVersion().find("OpenGL ES"), std::string::npos);
}

TEST(HeadlessContext, ReadsThePictureFromTheTopRowDown)
{
    auto context = Make(3, 2);
    ASSERT_TRUE(context);
    Clear(0, 0, 1, 1);
    glEnable(GL_SCISSOR_TEST);
    glScissor(1, 1, 1, 1);
    Clear(1, 0, 0, 0);
    std::vector<unsigned char> rgba;
    ASSERT_TRUE(context->ReadPixels(rgba));
    const std::vector<unsigned char> expected = {
        0, 0, 255, 255, 255, 0, 0, 0,   0, 0, 255, 255,
        0, 0, 255, 255, 0,   0, 255, 255, 0, 0, 255, 255,
    };
    EXPECT_EQ(rgba, expected);
}

TEST(HeadlessContext, ReadingKeepsBindingsAlignmentAndScissor)
{
    for (const int samples : {0, 4})
    {
        SCOPED_TRACE(samples);
        auto context = Make(5, 5, samples);
        ASSERT_TRUE(context);
        Clear(0, 1, 0, 1);
        glPixelStorei(GL_PACK_ALIGNMENT, 8);
        glEnable(GL_SCISSOR_TEST);
        glScissor(1, 1, 1, 1);
        std::vector<unsigned char> rgba;
        ASSERT_TRUE(context->ReadPixels(rgba));
        EXPECT_EQ(Integer(GL_PACK_ALIGNMENT), 8);
        EXPECT_TRUE(glIsEnabled(GL_SCISSOR_TEST));
        EXPECT_EQ(Integer(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<GLint>(context->GetFramebuffer()));
        EXPECT_EQ(Integer(GL_READ_FRAMEBUFFER_BINDING), static_cast<GLint>(context->GetFramebuffer()));
        ASSERT_EQ(rgba.size(), 100u);
        for (std::size_t i = 0; i < rgba.size(); i += 4)
        {
            ASSERT_EQ(rgba[i], 0) << "the scissor cut the picture at byte " << i;
            ASSERT_EQ(rgba[i + 1], 255) << "the scissor cut the picture at byte " << i;
        }
        EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    }
}

TEST(HeadlessContext, ReadingPassesByTheLayoutAndTheBufferOfTheHost)
{
    auto context = Make(5, 5);
    ASSERT_TRUE(context);
    Clear(0, 1, 0, 1);
    const auto genBuffers = reinterpret_cast<PFNGLGENBUFFERSPROC>(HeadlessContext::GetProcAddress("glGenBuffers"));
    const auto bindBuffer = reinterpret_cast<PFNGLBINDBUFFERPROC>(HeadlessContext::GetProcAddress("glBindBuffer"));
    const auto bufferData = reinterpret_cast<PFNGLBUFFERDATAPROC>(HeadlessContext::GetProcAddress("glBufferData"));
    ASSERT_TRUE(genBuffers && bindBuffer && bufferData);
    GLuint buffer = 0;
    genBuffers(1, &buffer);
    bindBuffer(GL_PIXEL_PACK_BUFFER, buffer);
    bufferData(GL_PIXEL_PACK_BUFFER, 16, nullptr, GL_STREAM_READ);
    glPixelStorei(GL_PACK_ROW_LENGTH, 2);
    glPixelStorei(GL_PACK_SKIP_ROWS, 1);
    glPixelStorei(GL_PACK_SKIP_PIXELS, 1);
    std::vector<unsigned char> rgba;
    ASSERT_TRUE(context->ReadPixels(rgba));
    ASSERT_EQ(rgba.size(), 100u);
    for (std::size_t i = 0; i < rgba.size(); i += 4)
    {
        ASSERT_EQ(rgba[i + 1], 255) << i;
    }
    EXPECT_EQ(Integer(GL_PACK_ROW_LENGTH), 2);
    EXPECT_EQ(Integer(GL_PACK_SKIP_ROWS), 1);
    EXPECT_EQ(Integer(GL_PACK_SKIP_PIXELS), 1);
    EXPECT_EQ(Integer(GL_PIXEL_PACK_BUFFER_BINDING), static_cast<GLint>(buffer));
}

TEST(HeadlessContext, MultisamplingSmoothsAnEdge)
{
    auto context = Make(16, 16, 4);
    ASSERT_TRUE(context);
    EXPECT_GE(context->GetSamples(), 4);
    Clear(0, 0, 0, 1);
    glColor3f(1, 1, 1);
    glBegin(GL_TRIANGLES);
    glVertex2f(-1, -1);
    glVertex2f(1, -0.7f);
    glVertex2f(-1, 1);
    glEnd();
    std::vector<unsigned char> rgba;
    ASSERT_TRUE(context->ReadPixels(rgba));
    int between = 0;
    for (std::size_t i = 0; i < rgba.size(); i += 4)
    {
        between += rgba[i] > 0 && rgba[i] < 255 ? 1 : 0;
    }
    EXPECT_GT(between, 4);
}

TEST(HeadlessContext, WorksOnAPbufferToo)
{
    auto context = Make(40, 30, 0, HeadlessContext::Surface::Pbuffer);
    ASSERT_TRUE(context);
    EXPECT_NE(context->GetPlatform().find("and pbuffer"), std::string::npos);
    Clear(1, 1, 0, 1);
    std::vector<unsigned char> rgba;
    ASSERT_TRUE(context->ReadPixels(rgba));
    ASSERT_EQ(rgba.size(), 40u * 30u * 4u);
    EXPECT_EQ(rgba[0], 255);
    EXPECT_EQ(rgba[2], 0);
}

TEST(HeadlessContext, ResizeReplacesTheFramebuffer)
{
    auto context = Make(4, 4);
    ASSERT_TRUE(context);
    std::string error;
    ASSERT_TRUE(context->Resize(9, 7, 4, error)) << error;
    EXPECT_EQ(context->GetWidth(), 9);
    EXPECT_EQ(context->GetHeight(), 7);
    EXPECT_GE(context->GetSamples(), 4);
    std::vector<unsigned char> rgba;
    ASSERT_TRUE(context->ReadPixels(rgba));
    EXPECT_EQ(rgba.size(), 9u * 7u * 4u);
    ASSERT_TRUE(context->Resize(9, 7, 1, error)) << error;
    EXPECT_EQ(context->GetSamples(), 0);
}

TEST(HeadlessContext, ARefusedResizeLeavesTheFramebufferAsItWas)
{
    auto context = Make(4, 4);
    ASSERT_TRUE(context);
    Clear(0, 1, 1, 1);
    const unsigned int framebuffer = context->GetFramebuffer();
    std::string error;
    EXPECT_FALSE(context->Resize(context->GetMaxWidth() + 1, 4, 0, error));
    EXPECT_NE(error.find(SizeLimit(*context)), std::string::npos) << error;
    EXPECT_EQ(context->GetFramebuffer(), framebuffer);
    EXPECT_EQ(context->GetWidth(), 4);
    EXPECT_EQ(Integer(GL_DRAW_FRAMEBUFFER_BINDING), static_cast<GLint>(framebuffer));
    std::vector<unsigned char> rgba;
    ASSERT_TRUE(context->ReadPixels(rgba));
    EXPECT_EQ(rgba[0], 0);
    EXPECT_EQ(rgba[1], 255);
}

TEST(HeadlessContext, TheWidestAndTheTallestFramebufferAreAllowed)
{
    auto context = Make(1, 1);
    ASSERT_TRUE(context);
    std::string error;
    EXPECT_TRUE(context->Resize(context->GetMaxWidth(), 1, 0, error)) << error;
    EXPECT_TRUE(context->Resize(1, context->GetMaxHeight(), 0, error)) << error;
    EXPECT_FALSE(context->Resize(1, context->GetMaxHeight() + 1, 0, error));
}

TEST(HeadlessContext, RefusesSizesThatNoFramebufferCanHave)
{
    auto context = Make(1, 1);
    ASSERT_TRUE(context);
    for (const auto& [width, height] : std::vector<std::pair<int, int>>{{0, 1}, {1, 0}, {-1, 1}, {1, -2147483647}})
    {
        EXPECT_NE(ErrorOf(width, height).find("has no area"), std::string::npos) << width << "x" << height;
    }
    for (const auto& [width, height] : std::vector<std::pair<int, int>>{{100000, 100000}, {100000, 1}, {2147483647, 2147483647}})
    {
        EXPECT_NE(ErrorOf(width, height).find("at most " + SizeLimit(*context)), std::string::npos)
            << width << "x" << height;
    }
}

TEST(HeadlessContext, RefusesMoreSamplesThanTheDriverHas)
{
    auto context = Make(1, 1);
    ASSERT_TRUE(context);
    EXPECT_NE(ErrorOf(4, 4, context->GetMaxSamples() + 1).find("0 to " + std::to_string(context->GetMaxSamples())),
              std::string::npos);
    EXPECT_NE(ErrorOf(4, 4, -1).find("samples"), std::string::npos);
    EXPECT_TRUE(Make(4, 4, context->GetMaxSamples()));
}

TEST(HeadlessContext, NothingIsCurrentAfterARefusal)
{
    ErrorOf(0, 0);
    EXPECT_EQ(glGetString(GL_VERSION), nullptr);
}

TEST(HeadlessContext, TwoContextsLiveSideBySideInAnyOrderOfDeath)
{
    for (const bool firstDiesFirst : {true, false})
    {
        auto first = Make(2, 2);
        auto second = Make(3, 3);
        ASSERT_TRUE(first && second);
        EXPECT_FALSE(first->IsCurrent());
        EXPECT_TRUE(second->IsCurrent());
        ASSERT_TRUE(first->MakeCurrent());
        EXPECT_TRUE(first->IsCurrent());
        (firstDiesFirst ? first : second).reset();
        auto& survivor = firstDiesFirst ? second : first;
        ASSERT_TRUE(survivor->MakeCurrent());
        Clear(1, 0, 1, 1);
        std::vector<unsigned char> rgba;
        ASSERT_TRUE(survivor->ReadPixels(rgba));
        EXPECT_EQ(rgba[0], 255);
        EXPECT_EQ(rgba[1], 0);
    }
}

TEST(HeadlessContext, TheDeathOfAnotherContextLeavesTheCurrentOneCurrent)
{
    auto first = Make(2, 2);
    auto second = Make(3, 3);
    ASSERT_TRUE(first && second);
    const GLint framebuffer = Integer(GL_DRAW_FRAMEBUFFER_BINDING);
    first.reset();
    EXPECT_TRUE(second->IsCurrent());
    EXPECT_EQ(Integer(GL_DRAW_FRAMEBUFFER_BINDING), framebuffer);
    EXPECT_TRUE(glIsEnabled(GL_DITHER));
}

TEST(HeadlessContext, MovesToAnotherThreadAfterRelease)
{
    auto context = Make(2, 2);
    ASSERT_TRUE(context);
    Clear(0, 1, 0, 1);
    bool refused = false;
    std::thread([&] { refused = !context->MakeCurrent(); }).join();
    EXPECT_TRUE(refused) << "a context was current on two threads";
    context->Release();
    EXPECT_FALSE(context->IsCurrent());
    std::vector<unsigned char> rgba;
    std::thread([&] { context->ReadPixels(rgba); context->Release(); }).join();
    ASSERT_EQ(rgba.size(), 16u);
    EXPECT_EQ(rgba[1], 255);
    EXPECT_TRUE(context->MakeCurrent());
}

TEST(HeadlessContext, FindsFunctionsByName)
{
    EXPECT_NE(HeadlessContext::GetProcAddress("glClear"), nullptr);
    EXPECT_NE(HeadlessContext::GetProcAddress("glUseProgram"), nullptr);
}
