#include "orvane/effects/ShaderProgram.h"

#include "tests/support/GLRecorder.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

namespace OV::Test
{

namespace
{

using ::testing::ElementsAre;

constexpr char kMain[] = "void main() {}\n";

/// What a call wrote to the standard error stream.
template <class Call>
std::string ErrorsOf(Call call)
{
    ::testing::internal::CaptureStderr();
    call();
    return ::testing::internal::GetCapturedStderr();
}

int LoadMain(const std::map<unsigned int, std::string>& attributes = {})
{
    return LoadProgram("Main", kMain, kMain, attributes);
}

} // namespace

TEST(ShaderPrelude, MakesThePrecisionMacrosEmpty)
{
    EXPECT_STREQ(ShaderPrelude, "#define PRECISION_DEFAULT_HIGHP(t)\n"
                                "#define PRECISION_DEFAULT_MEDIUMP(t)\n"
                                "#define PRECISION_DEFAULT_LOWP(t)\n"
                                "\n"
                                "#define HIGHP\n"
                                "#define LOWP\n"
                                "#define MEDIUMP\n");
}

TEST(LoadProgram, PutsThePreludeBeforeBothSources)
{
    GLRecorder gl;
    const int program = LoadProgram("P", "vertex text", "fragment text", {});
    EXPECT_THAT(gl.ProgramTexts(static_cast<unsigned>(program)),
                ElementsAre(std::string(ShaderPrelude) + "vertex text",
                            std::string(ShaderPrelude) + "fragment text"));
}

TEST(LoadProgram, CallsInOrder)
{
    GLRecorder gl;
    const int program = LoadMain({{2, "second"}, {0, "first"}});
    EXPECT_NE(program, 0);
    const std::vector<std::string> compile = {"glGetError", "glCreateShader",  "glGetError",
                                              "glShaderSource", "glGetError",  "glCompileShader",
                                              "glGetError",     "glGetShaderiv"};
    std::vector<std::string> expected = {"glGetError"};
    expected.insert(expected.end(), compile.begin(), compile.end());
    expected.insert(expected.end(), compile.begin(), compile.end());
    for (const char* name :
         {"glCreateProgram", "glAttachShader", "glAttachShader", "glGetError", "glBindAttribLocation",
          "glGetError", "glBindAttribLocation", "glGetError", "glLinkProgram", "glGetProgramiv",
          "glGetError", "glDeleteShader", "glDeleteShader", "glGetError"})
    {
        expected.push_back(name);
    }
    EXPECT_EQ(gl.Names(), expected);
}

TEST(LoadProgram, CompilesAttachesAndDeletesInTheStatedOrder)
{
    GLRecorder gl;
    const int program = LoadMain();
    const std::vector<GLCall> made = gl.All("glCreateShader");
    ASSERT_EQ(made.size(), 2u);
    EXPECT_EQ(made[0].Int(0), GL_VERTEX_SHADER);
    EXPECT_EQ(made[1].Int(0), GL_FRAGMENT_SHADER);
    const std::vector<GLCall> attached = gl.All("glAttachShader");
    ASSERT_EQ(attached.size(), 2u);
    EXPECT_EQ(attached[0].Int(0), program);
    const std::vector<GLCall> deleted = gl.All("glDeleteShader");
    ASSERT_EQ(deleted.size(), 2u);
    EXPECT_EQ(deleted[0].Int(0), attached[1].Int(1));
    EXPECT_EQ(deleted[1].Int(0), attached[0].Int(1));
    EXPECT_EQ(gl.Live(GLObjectKind::Shader).size(), 0u);
    EXPECT_EQ(gl.Live(GLObjectKind::Program).size(), 1u);
}

TEST(LoadProgram, BindsAttributesInAscendingOrder)
{
    GLRecorder gl;
    const int program = LoadMain({{2, "c"}, {0, "a"}, {1, "b"}});
    const std::string prefix = "glBindAttribLocation(" + std::to_string(program) + ", ";
    EXPECT_THAT(gl.Strings({"glBindAttribLocation"}),
                ElementsAre(prefix + "0, \"a\")", prefix + "1, \"b\")", prefix + "2, \"c\")"));
}

TEST(LoadProgram, AFailedVertexCompileLeavesNothing)
{
    GLRecorder gl;
    gl.SetCompileResult(GL_VERTEX_SHADER, 0, "broken");
    const std::string errors = ErrorsOf([] { EXPECT_EQ(LoadMain(), 0); });
    EXPECT_EQ(errors, "Error compiling vertex shader\nCompile error information: \nbroken\n");
    EXPECT_EQ(gl.Count("glCreateShader"), 1u);
    EXPECT_EQ(gl.LiveCount(), 0u);
}

TEST(LoadProgram, AFailedFragmentCompileDeletesTheVertexShader)
{
    GLRecorder gl;
    gl.SetCompileResult(GL_FRAGMENT_SHADER, 0, "broken");
    const std::string errors = ErrorsOf([] { EXPECT_EQ(LoadMain(), 0); });
    EXPECT_EQ(errors, "Error compiling fragment shader\nCompile error information: \nbroken\n");
    EXPECT_EQ(gl.Count("glCreateProgram"), 0u);
    EXPECT_EQ(gl.LiveCount(), 0u);
}

TEST(LoadProgram, WithoutAProgramNameBothShadersGoFragmentFirst)
{
    GLRecorder gl;
    gl.FailCreation("glCreateProgram");
    EXPECT_EQ(LoadMain(), 0);
    const std::vector<GLCall> deleted = gl.All("glDeleteShader");
    ASSERT_EQ(deleted.size(), 2u);
    EXPECT_GT(deleted[0].Int(0), deleted[1].Int(0));
    EXPECT_EQ(gl.LiveCount(), 0u);
}

TEST(LoadProgram, AnErrorWhileAttachingDeletesNothing)
{
    GLRecorder gl;
    gl.RaiseOn("glAttachShader", GL_INVALID_OPERATION, 2);
    EXPECT_EQ(LoadMain({{0, "a"}}), 0);
    EXPECT_EQ(gl.Count("glBindAttribLocation"), 0u);
    EXPECT_EQ(gl.Count("glDeleteShader"), 0u);
    EXPECT_EQ(gl.Count("glDeleteProgram"), 0u);
}

TEST(LoadProgram, AnErrorAtAnAttributeEndsAtOnceAndDeletesNothing)
{
    GLRecorder gl;
    gl.RaiseOn("glBindAttribLocation", GL_INVALID_VALUE, 2);
    EXPECT_EQ(LoadMain({{0, "a"}, {1, "b"}, {2, "c"}}), 0);
    EXPECT_EQ(gl.Count("glBindAttribLocation"), 2u);
    EXPECT_EQ(gl.Count("glLinkProgram"), 0u);
    EXPECT_EQ(gl.Count("glDeleteShader"), 0u);
    EXPECT_EQ(gl.Count("glDeleteProgram"), 0u);
}

TEST(LoadProgram, AFailedLinkPrintsNothingAndLeavesNothing)
{
    GLRecorder gl;
    gl.SetLinkResult(0, "no main");
    std::string output;
    ::testing::internal::CaptureStdout();
    const std::string errors = ErrorsOf([] { EXPECT_EQ(LoadMain(), 0); });
    output = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(errors, "");
    EXPECT_EQ(output, "");
    EXPECT_EQ(gl.Count("glGetProgramInfoLog"), 1u);
    EXPECT_EQ(gl.LiveCount(), 0u);
    EXPECT_THAT(gl.Names({"glDeleteProgram", "glDeleteShader"}),
                ElementsAre("glDeleteProgram", "glDeleteShader", "glDeleteShader"));
}

TEST(LoadProgram, AnEmptyLinkLogIsNotFetched)
{
    GLRecorder gl;
    gl.SetLinkResult(0);
    EXPECT_EQ(LoadMain(), 0);
    EXPECT_EQ(gl.Count("glGetProgramInfoLog"), 0u);
}

TEST(LoadProgram, AnErrorAfterLinkingLeavesProgramAndShaders)
{
    GLRecorder gl;
    gl.RaiseOn("glLinkProgram", GL_OUT_OF_MEMORY);
    EXPECT_EQ(LoadMain(), 0);
    EXPECT_EQ(gl.Count("glDeleteShader"), 0u);
    EXPECT_EQ(gl.Count("glDeleteProgram"), 0u);
}

TEST(LoadProgram, AnErrorWhileDeletingTheShadersFailsToo)
{
    GLRecorder gl;
    gl.RaiseOn("glDeleteShader", GL_INVALID_VALUE, 2);
    EXPECT_EQ(LoadMain(), 0);
    EXPECT_EQ(gl.Count("glDeleteShader"), 2u);
    EXPECT_EQ(gl.Count("glDeleteProgram"), 0u);
}

TEST(LoadProgram, APendingErrorIsClearedFirst)
{
    GLRecorder gl;
    gl.QueueError(GL_INVALID_ENUM);
    EXPECT_NE(LoadMain(), 0);
}

TEST(CompileShader, AWarningIsNoFailureAndPrintsNothing)
{
    GLRecorder gl;
    gl.SetCompileResult(GL_VERTEX_SHADER, 1, "warning: unused variable");
    const std::string errors =
        ErrorsOf([] { EXPECT_NE(CompileShader("name", GL_VERTEX_SHADER, kMain), 0); });
    EXPECT_EQ(errors, "");
}

TEST(CompileShader, AnyStatusButOneIsAFailure)
{
    GLRecorder gl;
    gl.SetCompileResult(GL_VERTEX_SHADER, 2);
    ErrorsOf([] { EXPECT_EQ(CompileShader("name", GL_VERTEX_SHADER, kMain), 0); });
}

TEST(CompileShader, WithAnEmptyLogOnlyTheFirstLineIsPrinted)
{
    GLRecorder gl;
    gl.SetCompileResult(GL_VERTEX_SHADER, 0, "");
    const std::string errors =
        ErrorsOf([] { EXPECT_EQ(CompileShader("name", GL_VERTEX_SHADER, kMain), 0); });
    EXPECT_EQ(errors, "Error compiling vertex shader\n");
    EXPECT_EQ(gl.Count("glGetShaderInfoLog"), 0u);
    EXPECT_EQ(gl.LiveCount(), 0u);
}

TEST(CompileShader, ALogOfOneCharacterIsPrinted)
{
    // Its length counts the closing zero: 2 is the first above 1.
    GLRecorder gl;
    gl.SetCompileResult(GL_VERTEX_SHADER, 0, "x");
    const std::string errors =
        ErrorsOf([] { EXPECT_EQ(CompileShader("name", GL_VERTEX_SHADER, kMain), 0); });
    EXPECT_EQ(errors, "Error compiling vertex shader\nCompile error information: \nx\n");
}

TEST(CompileShader, EveryOtherTypeIsReportedAsFragment)
{
    GLRecorder gl;
    gl.SetCompileResult(GL_GEOMETRY_SHADER, 0);
    const std::string errors =
        ErrorsOf([] { EXPECT_EQ(CompileShader("name", GL_GEOMETRY_SHADER, kMain), 0); });
    EXPECT_EQ(errors, "Error compiling fragment shader\n");
}

TEST(CompileShader, TheReportDoesNotNameTheShader)
{
    GLRecorder gl;
    gl.SetCompileResult(GL_VERTEX_SHADER, 0, "broken");
    const std::string errors =
        ErrorsOf([] { CompileShader("Remarkable.vert", GL_VERTEX_SHADER, kMain); });
    EXPECT_EQ(errors.find("Remarkable"), std::string::npos);
}

TEST(CompileShader, ANameOfZeroFailsInSilence)
{
    GLRecorder gl;
    gl.FailCreation("glCreateShader");
    const std::string errors =
        ErrorsOf([] { EXPECT_EQ(CompileShader("name", GL_VERTEX_SHADER, kMain), 0); });
    EXPECT_EQ(errors, "");
    EXPECT_EQ(gl.Count("glShaderSource"), 0u);
}

TEST(CompileShader, AnErrorAtCreationFailsInSilence)
{
    GLRecorder gl;
    gl.RaiseOn("glCreateShader", GL_INVALID_ENUM);
    EXPECT_EQ(ErrorsOf([] { EXPECT_EQ(CompileShader("name", GL_VERTEX_SHADER, kMain), 0); }), "");
    EXPECT_EQ(gl.Count("glShaderSource"), 0u);
}

TEST(CompileShader, AnErrorAtTheSourceFailsInSilenceAndDeletesNothing)
{
    GLRecorder gl;
    gl.RaiseOn("glShaderSource", GL_INVALID_VALUE);
    EXPECT_EQ(ErrorsOf([] { EXPECT_EQ(CompileShader("name", GL_VERTEX_SHADER, kMain), 0); }), "");
    EXPECT_EQ(gl.Count("glCompileShader"), 0u);
    EXPECT_EQ(gl.Count("glDeleteShader"), 0u);
}

TEST(CompileShader, AnErrorAtCompilingIsIgnored)
{
    GLRecorder gl;
    gl.RaiseOn("glCompileShader", GL_INVALID_OPERATION);
    EXPECT_NE(CompileShader("name", GL_VERTEX_SHADER, kMain), 0);
}

TEST(CompileShader, GivesOneStringWithoutALength)
{
    GLRecorder gl;
    CompileShader("name", GL_VERTEX_SHADER, kMain);
    const GLCall* call = gl.Find("glShaderSource");
    ASSERT_NE(call, nullptr);
    EXPECT_EQ(call->Int(1), 1);
    EXPECT_EQ(call->args.at(3).number, 0.0);
    EXPECT_THAT(call->texts, ElementsAre(kMain));
}

TEST(CompileShader, WithoutASourceItFails)
{
    GLRecorder gl;
    EXPECT_EQ(CompileShader("name", GL_VERTEX_SHADER, nullptr), 0);
}

} // namespace OV::Test
