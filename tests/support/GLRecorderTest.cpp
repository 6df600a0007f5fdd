#include "tests/support/GLRecorder.h"

#include "orvane/platform/detail/EntryPoints.h"

#include <GL/glew.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace OV::Test
{

namespace
{

using testing::ElementsAre;

TEST(GLRecorder, NotesCallsInOrderWithTheirArguments)
{
    GLRecorder recorder;
    glClearColor(0.5f, 0.0f, 1.0f, 1.0f);
    glActiveTexture(GL_TEXTURE1);
    glVertexAttribPointer(2, 3, GL_FLOAT, GL_FALSE, 32, reinterpret_cast<const void*>(12));
    const float values[] = {1.0f, 0.25f, -2.0f};
    glUniform3fv(7, 1, values);
    EXPECT_THAT(recorder.Strings(), ElementsAre("glClearColor(0.5, 0, 1, 1)", "glActiveTexture(33985)",
                                                "glVertexAttribPointer(2, 3, 5126, 0, 32, 12)",
                                                "glUniform3fv(7, 1, {1, 0.25, -2})"));
    EXPECT_EQ(recorder.Calls()[2].Int(5), 12);
    EXPECT_EQ(recorder.Strings()[1], CallText("glActiveTexture", {GL_TEXTURE1}));
    EXPECT_EQ(recorder.Strings()[3], CallText("glUniform3fv", {7, 1}, "{1, 0.25, -2}"));
    EXPECT_EQ(CallText("glFlush", {}), "glFlush()");
    EXPECT_THAT(recorder.Names({"glClearColor", "glUniform3fv"}), ElementsAre("glClearColor", "glUniform3fv"));
}

TEST(GLRecorder, FindsAndCountsCallsByTheirFirstArguments)
{
    GLRecorder recorder;
    glEnable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    EXPECT_EQ(recorder.Count("glEnable"), 3u);
    EXPECT_EQ(recorder.Count("glEnable", {GL_BLEND}), 2u);
    EXPECT_EQ(recorder.Count("glEnable", {GL_BLEND, 1}), 0u);
    EXPECT_EQ(recorder.IndexOf("glEnable", {GL_DEPTH_TEST}), 1u);
    EXPECT_EQ(recorder.IndexOf("glEnable", {GL_BLEND}, 1), 2u);
    EXPECT_EQ(recorder.IndexOf("glDisable"), 3u);
    ASSERT_NE(recorder.Find("glEnable", {GL_DEPTH_TEST}), nullptr);
    EXPECT_EQ(recorder.Find("glDisable"), nullptr);
    recorder.Clear();
    EXPECT_TRUE(recorder.Calls().empty());
    EXPECT_TRUE(recorder.IsEnabled(GL_BLEND));
}

TEST(GLRecorder, AccountsForLiveObjectsAndStrayDeletes)
{
    GLRecorder recorder;
    GLuint buffers[2] = {};
    glGenBuffers(2, buffers);
    GLuint texture = 0;
    glGenTextures(1, &texture);
    const GLuint program = glCreateProgram();
    const GLuint shader = glCreateShader(GL_VERTEX_SHADER);
    EXPECT_THAT(recorder.Live(GLObjectKind::Buffer), ElementsAre(buffers[0], buffers[1]));
    EXPECT_EQ(recorder.LiveCount(), 5u);
    EXPECT_THAT(recorder.Calls()[0].ints, ElementsAre(buffers[0], buffers[1]));

    glDeleteBuffers(2, buffers);
    glDeleteTextures(1, &texture);
    glDeleteProgram(program);
    glDeleteShader(shader);
    glDeleteShader(0);
    EXPECT_EQ(recorder.LiveCount(), 0u);
    EXPECT_TRUE(recorder.StrayDeletes().empty());
    glDeleteTextures(1, &texture);
    EXPECT_THAT(recorder.StrayDeletes(), ElementsAre(std::pair(GLObjectKind::Texture, texture)));
}

TEST(GLRecorder, KeepsWhatBuffersAndTexturesWereFilledWith)
{
    GLRecorder recorder;
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    glBindBuffer(GL_ARRAY_BUFFER, buffer);
    const unsigned char bytes[] = {1, 2, 3, 4};
    glBufferData(GL_ARRAY_BUFFER, 4, bytes, GL_DYNAMIC_DRAW);
    const unsigned char changed[] = {9};
    glBufferSubData(GL_ARRAY_BUFFER, 2, 1, changed);
    EXPECT_THAT(recorder.BufferBytes(buffer), ElementsAre(1, 2, 9, 4));

    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, bytes);
    EXPECT_THAT(recorder.TextureTexels(texture).bytes, ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(recorder.TextureTexels(texture).width, 1);
    EXPECT_EQ(recorder.TextureTexels(texture, 1).width, 0);
}

TEST(GLRecorder, AProgramHasTheUniformsThatItsSourcesName)
{
    GLRecorder recorder;
    const GLuint shader = glCreateShader(GL_VERTEX_SHADER);
    const GLchar* source = "uniform vec4 u_color; uniform mat4 u_lights[4];";
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    GLint status = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &status);
    EXPECT_EQ(status, 1);
    const GLuint program = glCreateProgram();
    glAttachShader(program, shader);
    glBindAttribLocation(program, 3, "u_color");
    glLinkProgram(program);
    EXPECT_EQ(glGetUniformLocation(program, "u_color"), 0);
    EXPECT_EQ(glGetUniformLocation(program, "u_lights[2]"), 1);
    EXPECT_EQ(glGetUniformLocation(program, "u_col"), -1);
    EXPECT_EQ(glGetUniformLocation(program, "u_color"), 0);
    EXPECT_EQ(glGetAttribLocation(program, "u_color"), 3);

    glUseProgram(program);
    glUniform4f(0, 1.0f, 2.0f, 3.0f, 4.0f);
    EXPECT_THAT(recorder.Uniform("u_color"), ElementsAre(1, 2, 3, 4));
    EXPECT_TRUE(recorder.Uniform("u_lights[2]").empty());
    EXPECT_EQ(recorder.CurrentProgram(), program);
    EXPECT_THAT(recorder.ProgramTexts(program), ElementsAre(source));

    recorder.SetUniformLocation("u_color", -1);
    EXPECT_EQ(glGetUniformLocation(program, "u_color"), -1);
}

TEST(GLRecorder, AnswersWhatItWasTold)
{
    GLRecorder recorder;
    recorder.SetString(GL_VERSION, nullptr);
    EXPECT_EQ(glGetString(GL_VERSION), nullptr);
    recorder.SetString(GL_EXTENSIONS, "GL_A GL_B");
    EXPECT_STREQ(reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS)), "GL_A GL_B");
    recorder.SetIntegers(GL_MAX_TEXTURE_SIZE, {77});
    GLint size = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &size);
    EXPECT_EQ(size, 77);
    GLint function = 0;
    glDepthFunc(GL_ALWAYS);
    glGetIntegerv(GL_DEPTH_FUNC, &function);
    EXPECT_EQ(function, GL_ALWAYS);

    recorder.SetCompileResult(GL_FRAGMENT_SHADER, 0, "bad");
    const GLuint shader = glCreateShader(GL_FRAGMENT_SHADER);
    glCompileShader(shader);
    GLint length = 0;
    glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
    EXPECT_EQ(length, 4);
    char log[4] = {};
    glGetShaderInfoLog(shader, 4, nullptr, log);
    EXPECT_STREQ(log, "bad");

    recorder.FailCreation("glCreateProgram");
    EXPECT_EQ(glCreateProgram(), 0u);
    recorder.QueueError(GL_OUT_OF_MEMORY);
    recorder.RaiseOn("glFlush", GL_INVALID_VALUE, 2);
    glFlush();
    EXPECT_EQ(glGetError(), GLenum{GL_OUT_OF_MEMORY});
    EXPECT_EQ(glGetError(), GLenum{GL_NO_ERROR});
    glFlush();
    EXPECT_EQ(glGetError(), GLenum{GL_INVALID_VALUE});
}

TEST(GLRecorder, NotesNothingWhileRecordingIsOff)
{
    GLRecorder recorder;
    recorder.SetRecording(false);
    GLuint buffer = 0;
    glGenBuffers(1, &buffer);
    EXPECT_TRUE(recorder.Calls().empty());
    EXPECT_EQ(recorder.LiveCount(), 1u);
    recorder.SetRecording(true);
    glFlush();
    EXPECT_EQ(recorder.Calls().size(), 1u);
}

TEST(GLRecorder, TheInnerOfTwoNotesAloneUntilItGoes)
{
    GLRecorder outer;
    {
        GLRecorder inner;
        glFlush();
        glUseProgram(3);
        EXPECT_EQ(inner.Calls().size(), 2u);
    }
    EXPECT_TRUE(outer.Calls().empty());
    glUseProgram(4);
    EXPECT_THAT(outer.Strings(), ElementsAre("glUseProgram(4)"));
}

TEST(GLRecorder, LeavesEverythingAsItWasWhenItGoes)
{
    const bool wasLoaded = __glewCreateShader != nullptr;
    {
        GLRecorder recorder;
        EXPECT_TRUE(Platform::LoadEntryPoints());
        EXPECT_TRUE(recorder.Calls().empty());
    }
    EXPECT_EQ(__glewCreateShader != nullptr, wasLoaded);
    // Without a context the driver has no answer.
    EXPECT_EQ(glGetString(GL_VERSION), nullptr);
}

}  // namespace

}  // namespace OV::Test
