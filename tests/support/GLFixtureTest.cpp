#include "tests/support/GLFixture.h"

#include <GL/glew.h>
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <vector>

#include "orvane/platform/detail/EntryPoints.h"

using namespace OV::Test;

namespace
{

/// The fixture opened up, to be put to work by hand inside another test.
class Probe : public GLFixture
{
public:
    using GLFixture::AllowObjects;
    using GLFixture::AllowStateChange;
    using GLFixture::ExpectColorInRect;
    using GLFixture::ExpectNoGLError;
    using GLFixture::Height;
    using GLFixture::ReadPixels;
    using GLFixture::UseFramebuffer;
    using GLFixture::Width;

    Probe() { OV::Platform::LoadEntryPoints(); }

    void TestBody() override {}
};

}  // namespace

TEST(GLFixture, StartsEachTestWithAClearFramebuffer)
{
    Probe probe;
    EXPECT_EQ(probe.Width(), GLFixture::DefaultSize);
    probe.ExpectColorInRect({0, 0, probe.Width(), probe.Height()}, {0, 0, 0, 0});
}

TEST(GLFixture, AnUntouchedContextPasses)
{
    Probe probe;
    glClearColor(1, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
}

TEST(GLFixture, APendingErrorFails)
{
    EXPECT_NONFATAL_FAILURE({ Probe probe; glEnable(0xBAD); }, "GL error 0x500");
}

TEST(GLFixture, AnObjectLeftOverFails)
{
    unsigned int name = 0;
    EXPECT_NONFATAL_FAILURE(
        {
            Probe probe;
            glGenBuffers(1, &name);
            glBindBuffer(GL_ARRAY_BUFFER, name);
        },
        "is left over");
    EXPECT_NONFATAL_FAILURE({ Probe probe; glDeleteBuffers(1, &name); }, "somebody else was deleted");
    unsigned int shader = 0;
    EXPECT_NONFATAL_FAILURE({ Probe probe; shader = glCreateShader(GL_VERTEX_SHADER); }, "the shader");
    glDeleteShader(shader);
}

TEST(GLFixture, AProgramDeletedWhileInUseIsNotLeftOver)
{
    Probe probe;
    const unsigned int program = glCreateProgram();
    const unsigned int shader = glCreateShader(GL_VERTEX_SHADER);
    const char* source = "void main() { gl_Position = vec4(0.0); }";
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    glAttachShader(program, shader);
    glLinkProgram(program);
    glDeleteShader(shader);
    glUseProgram(program);
    glDeleteProgram(program);
}

TEST(GLFixture, StateLeftChangedFails)
{
    EXPECT_NONFATAL_FAILURE({ Probe probe; glDepthMask(GL_FALSE); }, "'depth mask' changed from 1 to 0");
    EXPECT_NONFATAL_FAILURE({ Probe probe; glEnable(GL_BLEND); }, "'blending'");
    EXPECT_NONFATAL_FAILURE({ Probe probe; glEnableVertexAttribArray(3); }, "'vertex attribute 3'");
    EXPECT_NONFATAL_FAILURE({ Probe probe; glBindFramebuffer(GL_READ_FRAMEBUFFER, 0); }, "'read framebuffer'");
}

TEST(GLFixture, AllowedStateMayStayChanged)
{
    {
        Probe probe;
        probe.AllowStateChange("depth mask");
        glDepthMask(GL_FALSE);
    }
    Probe next;
    GLboolean mask = GL_FALSE;
    glGetBooleanv(GL_DEPTH_WRITEMASK, &mask);
    EXPECT_TRUE(mask) << "one test's state reached the next";
    EXPECT_NONFATAL_FAILURE(next.AllowStateChange("depht mask"), "no state is named");
}

TEST(GLFixture, AnotherFramebufferHidesNoLeftOverRenderbuffer)
{
    unsigned int name = 0;
    EXPECT_NONFATAL_FAILURE(
        {
            Probe probe;
            glGenRenderbuffers(1, &name);
            glBindRenderbuffer(GL_RENDERBUFFER, name);
            glBindRenderbuffer(GL_RENDERBUFFER, 0);
            probe.UseFramebuffer(20, 10, 4);
            EXPECT_EQ(probe.Width(), 20);
        },
        "is left over");
    glDeleteRenderbuffers(1, &name);
}

TEST(GLFixture, FindsObjectsHoweverManyWereMadeBefore)
{
    Probe probe;
    for (int round = 0; round < 4; ++round)
    {
        std::vector<GLuint> names(700);
        glGenRenderbuffers(static_cast<GLsizei>(names.size()), names.data());
        glBindRenderbuffer(GL_RENDERBUFFER, names.back());
        EXPECT_EQ(GLState::CaptureObjects().at("renderbuffer").count(names.back()), 1u) << names.back();
        glBindRenderbuffer(GL_RENDERBUFFER, 0);
        glDeleteRenderbuffers(static_cast<GLsizei>(names.size()), names.data());
    }
}

TEST(GLFixture, ColourInARectangleIsExact)
{
    Probe probe;
    probe.UseFramebuffer(16, 16);
    glEnable(GL_SCISSOR_TEST);
    glScissor(4, 8, 5, 3);
    glClearColor(1, 0.5f, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glDisable(GL_SCISSOR_TEST);
    probe.AllowStateChange("scissor box");
    const Pixel orange = ToPixel(1, 0.5f, 0);
    const Picture picture = probe.ReadPixels();
    EXPECT_EQ(picture.Count(orange), 15);
    Probe::ExpectColorInRect(picture, {4, 8, 5, 3}, orange);
    EXPECT_NONFATAL_FAILURE(Probe::ExpectColorInRect(picture, {4, 8, 6, 3}, orange), "(0, 0, 0, 0) at 9, 8");
    EXPECT_NONFATAL_FAILURE(Probe::ExpectColorInRect(picture, {4, 7, 5, 3}, orange), "at 4, 7");
    EXPECT_NONFATAL_FAILURE(Probe::ExpectColorInRect(picture, {4, 8, 5, 3}, {255, 126, 0, 255}), "are not");
    Probe::ExpectColorInRect(picture, {4, 8, 5, 3}, {255, 126, 0, 255}, 2);
    EXPECT_NONFATAL_FAILURE(Probe::ExpectColorInRect(picture, Inset({4, 8, 4, 3}), orange), "is empty");
    EXPECT_NONFATAL_FAILURE(Probe::ExpectColorInRect(picture, {14, 0, 3, 1}, orange), "not inside");
}
