#include "tests/support/GLFixture.h"
#include "tests/support/GLRecorder.h"

#include "orvane/platform/detail/EntryPoints.h"

#include <GL/glew.h>

#include <gmock/gmock.h>

#include <string>

namespace OV::Test
{

namespace
{

class GLRecorderGLTest : public GLFixture
{
protected:
    GLRecorderGLTest() { AllowStateChange("clear colour"); }
};

TEST_F(GLRecorderGLTest, ForwardsToTheDriverAndNotesOnTheWay)
{
    const GLRecorder recorder(GLRecorder::Mode::Forward);
    glClearColor(1.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    EXPECT_EQ(glGetError(), GLenum{GL_NO_ERROR});
    EXPECT_THAT(recorder.Strings(),
                testing::ElementsAre("glClearColor(1, 0, 0, 1)", CallText("glClear", {GL_COLOR_BUFFER_BIT}),
                                     "glGetError()"));
    ExpectColorInRect({0, 0, Width(), Height()}, {255, 0, 0, 255});
}

TEST_F(GLRecorderGLTest, AnswersForTheDriverOnlyWhatIsSet)
{
    const std::string vendor = reinterpret_cast<const char*>(glGetString(GL_VENDOR));
    {
        GLRecorder recorder(GLRecorder::Mode::Forward);
        recorder.SetString(GL_VERSION, "2.1 of old");
        EXPECT_STREQ(reinterpret_cast<const char*>(glGetString(GL_VERSION)), "2.1 of old");
        EXPECT_EQ(vendor, reinterpret_cast<const char*>(glGetString(GL_VENDOR)));
    }
    EXPECT_STRNE(reinterpret_cast<const char*>(glGetString(GL_VERSION)), "2.1 of old");
}

TEST_F(GLRecorderGLTest, AccountsForTheDriversOwnNames)
{
    const GLRecorder recorder(GLRecorder::Mode::Forward);
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    const unsigned char bytes[] = {5, 6, 7};
    glBufferData(GL_ARRAY_BUFFER, 3, bytes, GL_STATIC_DRAW);
    unsigned char back[3] = {};
    glGetBufferSubData(GL_ARRAY_BUFFER, 0, 3, back);
    EXPECT_THAT(back, testing::ElementsAre(5, 6, 7));
    EXPECT_THAT(recorder.BufferBytes(buffer), testing::ElementsAre(5, 6, 7));
    EXPECT_THAT(recorder.Live(GLObjectKind::Buffer), testing::ElementsAre(buffer));
    EXPECT_THAT(recorder.Calls()[0].ints, testing::ElementsAre(buffer));
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glDeleteBuffers(1, &buffer);
    EXPECT_EQ(recorder.LiveCount(), 0u);
}

TEST_F(GLRecorderGLTest, AStandInKeepsEverythingFromTheDriver)
{
    ASSERT_TRUE(Platform::LoadEntryPoints());
    {
        const GLRecorder recorder;
        glClearColor(0.0f, 1.0f, 0.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT);
        GLuint buffer = 0;
        glGenBuffers(1, &buffer);
        EXPECT_EQ(recorder.LiveCount(), 1u);
    }
    ExpectColorInRect({0, 0, Width(), Height()}, {0, 0, 0, 0});
    // Straight to the driver again.
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    EXPECT_TRUE(glIsBuffer(buffer));
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glDeleteBuffers(1, &buffer);
}

}  // namespace

}  // namespace OV::Test
