#include "orvane/effects/ShaderProgram.h"

#include "orvane/math/Color.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Matrix3x3.h"
#include "orvane/math/Vector.h"
#include "tests/support/GLRecorder.h"

#include <gmock/gmock.h>

#include <functional>
#include <numeric>

namespace OV::Test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Opens what ShaderProgram keeps for those who derive.
class OpenProgram : public ShaderProgram
{
public:
    using ShaderProgram::Exists;
    using ShaderProgram::GetLocation;
    using ShaderProgram::m_bound;
    using ShaderProgram::m_locations;
    using ShaderProgram::m_name;
    using ShaderProgram::m_uniformNames;
    using ShaderProgram::ShaderProgram;
};

/// A program whose uniforms a, b, c, ... are not yet asked for.
OpenProgram SeededProgram(const std::vector<std::string>& names)
{
    OpenProgram program(7);
    program.m_uniformNames = names;
    program.m_locations.assign(names.size(), -1);
    return program;
}

} // namespace

TEST(ShaderProgram, StartsWithoutProgramNameTableAndUnbound)
{
    const OpenProgram program;
    EXPECT_EQ(program.get(), 0u);
    EXPECT_EQ(program.m_name, "");
    EXPECT_THAT(program.m_locations, IsEmpty());
    EXPECT_THAT(program.m_uniformNames, IsEmpty());
    EXPECT_FALSE(program.m_bound);
}

TEST(ShaderProgram, KeepsTheGivenProgramAndName)
{
    const OpenProgram program(12, "Twelve");
    EXPECT_EQ(program.get(), 12u);
    EXPECT_EQ(program.m_name, "Twelve");
}

TEST(ShaderProgram, SetProgramLeavesCachedLocations)
{
    OpenProgram program = SeededProgram({"a", "b"});
    program.m_locations = {3, 4};
    program.SetProgram(9);
    EXPECT_EQ(program.get(), 9u);
    EXPECT_THAT(program.m_locations, ElementsAre(3, 4));
}

TEST(ShaderProgram, BindAndUnbindUseTheProgramAndKeepTheFlag)
{
    GLRecorder gl;
    ShaderProgram program(5);
    EXPECT_FALSE(program.IsBound());
    program.Bind();
    EXPECT_TRUE(program.IsBound());
    program.Unbind();
    EXPECT_FALSE(program.IsBound());
    EXPECT_THAT(gl.Strings(), ElementsAre("glUseProgram(5)", "glUseProgram(0)"));
}

TEST(ShaderProgram, BindingAnotherProgramDoesNotClearTheFlag)
{
    GLRecorder gl;
    ShaderProgram first(1);
    ShaderProgram second(2);
    first.Bind();
    second.Bind();
    EXPECT_TRUE(first.IsBound());
    EXPECT_TRUE(second.IsBound());
}

TEST(ShaderProgram, CopyTakesEverything)
{
    GLRecorder gl;
    OpenProgram original = SeededProgram({"a", "b"});
    original.m_name = "Name";
    original.m_locations = {5, 6};
    original.Bind();
    const OpenProgram copy(original);
    EXPECT_EQ(copy.get(), 7u);
    EXPECT_EQ(copy.m_name, "Name");
    EXPECT_TRUE(copy.m_bound);
    EXPECT_THAT(copy.m_locations, ElementsAre(5, 6));
    EXPECT_THAT(copy.m_uniformNames, ElementsAre("a", "b"));
    EXPECT_THAT(original.m_locations, ElementsAre(5, 6));
}

TEST(ShaderProgram, AssignmentToItselfDoesNothing)
{
    OpenProgram program = SeededProgram({"a"});
    program.m_name = "Name";
    OpenProgram& same = program;
    program = same;
    EXPECT_THAT(program.m_uniformNames, ElementsAre("a"));
    program = std::move(same);
    EXPECT_THAT(program.m_uniformNames, ElementsAre("a"));
    EXPECT_EQ(program.m_name, "Name");
}

TEST(ShaderProgram, MoveStealsTableAndNameAndLeavesProgramAndFlag)
{
    GLRecorder gl;
    // A name short enough to be kept inside the string must leave the source all the same.
    for (const std::string name : {"N", "A name far too long to be kept inside of the string"})
    {
        OpenProgram original = SeededProgram({"a"});
        original.m_name = name;
        original.Bind();
        OpenProgram moved(std::move(original));
        EXPECT_EQ(moved.m_name, name);
        EXPECT_THAT(moved.m_uniformNames, ElementsAre("a"));
        EXPECT_THAT(original.m_locations, IsEmpty());
        EXPECT_THAT(original.m_uniformNames, IsEmpty());
        EXPECT_EQ(original.m_name, "");
        EXPECT_EQ(original.get(), 7u);
        EXPECT_TRUE(original.m_bound);

        OpenProgram assigned;
        assigned = std::move(moved);
        EXPECT_EQ(assigned.m_name, name);
        EXPECT_EQ(assigned.get(), 7u);
        EXPECT_TRUE(assigned.m_bound);
        EXPECT_THAT(assigned.m_locations, ElementsAre(-1));
        EXPECT_THAT(moved.m_locations, IsEmpty());
        EXPECT_THAT(moved.m_uniformNames, IsEmpty());
        EXPECT_EQ(moved.m_name, "");
        EXPECT_EQ(moved.get(), 7u);
    }
}

TEST(ShaderProgram, NeverDeletesTheProgram)
{
    GLRecorder gl;
    {
        const ShaderProgram program(3);
        const ShaderProgram copy(program);
    }
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST(ShaderProgram, AKnownLocationCostsNoCall)
{
    GLRecorder gl;
    gl.SetUniformLocation("a", 11);
    OpenProgram program = SeededProgram({"a"});
    EXPECT_EQ(program.GetLocation(0), 11);
    EXPECT_EQ(gl.Count("glGetUniformLocation"), 1u);
    EXPECT_EQ(program.GetLocation(0), 11);
    EXPECT_EQ(gl.Count("glGetUniformLocation"), 1u);
}

TEST(ShaderProgram, LocationZeroIsKnownToo)
{
    GLRecorder gl;
    gl.SetUniformLocation("a", 0);
    OpenProgram program = SeededProgram({"a"});
    program.GetLocation(0);
    program.GetLocation(0);
    EXPECT_EQ(gl.Count("glGetUniformLocation"), 1u);
}

TEST(ShaderProgram, AMissingUniformIsAskedForAtEachUse)
{
    GLRecorder gl;
    gl.SetUniformLocation("gone", -1);
    OpenProgram program = SeededProgram({"gone"});
    EXPECT_EQ(program.GetLocation(0), -1);
    program.Uniform1i(0, 5);
    program.SetUniform(0, 1.0f);
    EXPECT_EQ(gl.Count("glGetUniformLocation"), 3u);
    EXPECT_EQ(gl.Count("glUniform1i", {-1, 5}), 1u);
    EXPECT_EQ(gl.Count("glUniform1f", {-1, 1.0}), 1u);
}

TEST(ShaderProgram, ExistsLooksAtTheCacheOnly)
{
    GLRecorder gl;
    gl.SetUniformLocation("a", 4);
    OpenProgram program = SeededProgram({"a"});
    EXPECT_FALSE(program.Exists(0));
    program.GetLocation(0);
    gl.Clear();
    EXPECT_TRUE(program.Exists(0));
    EXPECT_FALSE(program.Exists(1));
    EXPECT_FALSE(program.Exists(-1));
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST(ShaderProgram, IndexingGivesTheProgramAndTheLocation)
{
    GLRecorder gl;
    gl.SetUniformLocation("b", 21);
    OpenProgram program = SeededProgram({"a", "b"});
    const UniformVar var = program[1];
    EXPECT_EQ(var.program, &program);
    EXPECT_EQ(var.location, 21);
}

TEST(ShaderProgram, SkippedEntriesPastTheCacheReadAsLocationZero)
{
    GLRecorder gl;
    gl.SetUniformLocation("d", 40);
    OpenProgram program(7);
    program.m_uniformNames = {"a", "b", "c", "d"};
    EXPECT_EQ(program.GetLocation(3), 40);
    EXPECT_THAT(program.m_locations, ElementsAre(0, 0, 0, 40));
    EXPECT_EQ(program.GetLocation(1), 0);
    EXPECT_EQ(gl.Count("glGetUniformLocation"), 1u);
}

TEST(ShaderProgram, TheFirstStoreIntoAnEmptyCacheSkipsNothing)
{
    GLRecorder gl;
    gl.SetUniformLocation("a", 9);
    OpenProgram program(7);
    program.m_uniformNames = {"a"};
    EXPECT_EQ(program.GetLocation(0), 9);
    EXPECT_THAT(program.m_locations, ElementsAre(9));
}

TEST(ShaderProgram, AnIndexWithoutANameHasNoLocationAndAsksNothing)
{
    GLRecorder gl;
    OpenProgram program = SeededProgram({"a"});
    EXPECT_EQ(program.GetLocation(1), -1);
    EXPECT_EQ(program.GetLocation(-1), -1);
    EXPECT_THAT(gl.Calls(), IsEmpty());
    EXPECT_EQ(program.m_locations.size(), 1u);
}

TEST(ShaderProgram, DeclareUniformsWithAnEmptyListIsTrueAndSilent)
{
    GLRecorder gl;
    OpenProgram program = SeededProgram({"a"});
    ::testing::internal::CaptureStderr();
    EXPECT_TRUE(program.DeclareUniforms({}));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(program.m_uniformNames, IsEmpty());
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST(ShaderProgram, DeclareUniformsAsksForEachNameInOrder)
{
    GLRecorder gl;
    gl.SetUniformLocation("x", 3);
    gl.SetUniformLocation("y", 8);
    OpenProgram program(7);
    ::testing::internal::CaptureStderr();
    EXPECT_TRUE(program.DeclareUniforms({"x", "y"}));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(gl.Strings(), ElementsAre("glGetUniformLocation(7, \"x\")", "glGetUniformLocation(7, \"y\")"));
    EXPECT_THAT(program.m_locations, ElementsAre(3, 8));
}

TEST(ShaderProgram, DeclareUniformsReportsEveryMissingName)
{
    GLRecorder gl;
    gl.SetUniformLocation("x", -1);
    gl.SetUniformLocation("y", 8);
    gl.SetUniformLocation("z", -1);
    OpenProgram program(7);
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(program.DeclareUniforms({"x", "y", "z"}));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "Missing uniform variable x\nMissing uniform variable z\n");
    EXPECT_THAT(program.m_locations, ElementsAre(-1, 8, -1));
}

TEST(ShaderProgram, DeclareUniformsTakesItsOwnSequence)
{
    GLRecorder gl;
    gl.SetUniformLocation("a", 1);
    OpenProgram program = SeededProgram({"a"});
    EXPECT_TRUE(program.DeclareUniforms(program.m_uniformNames));
    EXPECT_THAT(program.m_uniformNames, ElementsAre("a"));
    EXPECT_THAT(program.m_locations, ElementsAre(1));
}

TEST(ShaderProgram, LoadKeepsTheResultAndLeavesTheTable)
{
    GLRecorder gl;
    OpenProgram program = SeededProgram({"a"});
    program.m_locations = {5};
    const int loaded = program.Load("void main() {}", "void main() {}", {{0, "a_position"}});
    EXPECT_NE(loaded, 0);
    EXPECT_EQ(program.get(), static_cast<unsigned int>(loaded));
    EXPECT_THAT(program.m_locations, ElementsAre(5));
    EXPECT_THAT(program.m_uniformNames, ElementsAre("a"));
}

TEST(ShaderProgram, AFailedLoadLeavesZero)
{
    GLRecorder gl;
    gl.SetLinkResult(0);
    ShaderProgram program(5);
    EXPECT_EQ(program.Load("", "", {}), 0);
    EXPECT_EQ(program.get(), 0u);
}

struct UniformCase
{
    const char* label;
    std::function<void(ShaderProgram&)> set;
    const char* call;
};

void PrintTo(const UniformCase& value, std::ostream* stream)
{
    *stream << value.label;
}

class ShaderProgramUniform : public ::testing::TestWithParam<UniformCase>
{
};

TEST_P(ShaderProgramUniform, MakesOneCallWithItsArguments)
{
    GLRecorder gl;
    gl.SetUniformLocation("a", 4);
    OpenProgram program = SeededProgram({"a"});
    program.GetLocation(0);
    gl.Clear();
    GetParam().set(program);
    EXPECT_THAT(gl.Strings(), ElementsAre(GetParam().call));
}

constexpr int kInts[] = {1, 2, 3, 4, 5, 6, 7, 8};
constexpr float kFloats[] = {0.5f, 1.5f,  2.5f,  3.5f,  4.5f,  5.5f,  6.5f,  7.5f,
                             8.5f, 9.5f, 10.5f, 11.5f, 12.5f, 13.5f, 14.5f, 15.5f};

Matrix CountingMatrix()
{
    Matrix matrix;
    std::iota(matrix.m, matrix.m + 16, 0.0f);
    return matrix;
}

Matrix3x3 CountingMatrix3()
{
    Matrix3x3 matrix;
    std::iota(matrix.m, matrix.m + 9, 0.0f);
    return matrix;
}

INSTANTIATE_TEST_SUITE_P(
    All, ShaderProgramUniform,
    ::testing::Values(
        UniformCase{"1i", [](ShaderProgram& p) { p.Uniform1i(0, 5); }, "glUniform1i(4, 5)"},
        UniformCase{"2i", [](ShaderProgram& p) { p.Uniform2i(0, 5, 6); }, "glUniform2i(4, 5, 6)"},
        UniformCase{"3i", [](ShaderProgram& p) { p.Uniform3i(0, 5, 6, 7); }, "glUniform3i(4, 5, 6, 7)"},
        UniformCase{"4i", [](ShaderProgram& p) { p.Uniform4i(0, 5, 6, 7, 8); }, "glUniform4i(4, 5, 6, 7, 8)"},
        UniformCase{"1f", [](ShaderProgram& p) { p.Uniform1f(0, 0.5f); }, "glUniform1f(4, 0.5)"},
        UniformCase{"2f", [](ShaderProgram& p) { p.Uniform2f(0, 0.5f, 1.5f); }, "glUniform2f(4, 0.5, 1.5)"},
        UniformCase{"3f", [](ShaderProgram& p) { p.Uniform3f(0, 0.5f, 1.5f, 2.5f); },
                    "glUniform3f(4, 0.5, 1.5, 2.5)"},
        UniformCase{"4f", [](ShaderProgram& p) { p.Uniform4f(0, 0.5f, 1.5f, 2.5f, 3.5f); },
                    "glUniform4f(4, 0.5, 1.5, 2.5, 3.5)"},
        UniformCase{"1iv", [](ShaderProgram& p) { p.Uniform1iv(0, 2, kInts); }, "glUniform1iv(4, 2, {1, 2})"},
        UniformCase{"2iv", [](ShaderProgram& p) { p.Uniform2iv(0, 2, kInts); },
                    "glUniform2iv(4, 2, {1, 2, 3, 4})"},
        UniformCase{"3iv", [](ShaderProgram& p) { p.Uniform3iv(0, 2, kInts); },
                    "glUniform3iv(4, 2, {1, 2, 3, 4, 5, 6})"},
        UniformCase{"4iv", [](ShaderProgram& p) { p.Uniform4iv(0, 2, kInts); },
                    "glUniform4iv(4, 2, {1, 2, 3, 4, 5, 6, 7, 8})"},
        UniformCase{"1fv", [](ShaderProgram& p) { p.Uniform1fv(0, 2, kFloats); }, "glUniform1fv(4, 2, {0.5, 1.5})"},
        UniformCase{"2fv", [](ShaderProgram& p) { p.Uniform2fv(0, 2, kFloats); },
                    "glUniform2fv(4, 2, {0.5, 1.5, 2.5, 3.5})"},
        UniformCase{"3fv", [](ShaderProgram& p) { p.Uniform3fv(0, 2, kFloats); },
                    "glUniform3fv(4, 2, {0.5, 1.5, 2.5, 3.5, 4.5, 5.5})"},
        UniformCase{"4fv", [](ShaderProgram& p) { p.Uniform4fv(0, 2, kFloats); },
                    "glUniform4fv(4, 2, {0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5})"},
        UniformCase{"Matrix2fv", [](ShaderProgram& p) { p.UniformMatrix2fv(0, 1, 1, kFloats); },
                    "glUniformMatrix2fv(4, 1, 1, {0.5, 1.5, 2.5, 3.5})"},
        UniformCase{"Matrix3fv", [](ShaderProgram& p) { p.UniformMatrix3fv(0, 1, 0, kFloats); },
                    "glUniformMatrix3fv(4, 1, 0, {0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5, 8.5})"},
        UniformCase{"Matrix4fv", [](ShaderProgram& p) { p.UniformMatrix4fv(0, 1, 1, kFloats); },
                    "glUniformMatrix4fv(4, 1, 1, {0.5, 1.5, 2.5, 3.5, 4.5, 5.5, 6.5, 7.5, 8.5, 9.5, 10.5, 11.5, "
                    "12.5, 13.5, 14.5, 15.5})"},
        UniformCase{"Int", [](ShaderProgram& p) { p.SetUniform(0, 5); }, "glUniform1i(4, 5)"},
        UniformCase{"TwoInts", [](ShaderProgram& p) { p.SetUniform(0, 5, 6); }, "glUniform2i(4, 5, 6)"},
        UniformCase{"ThreeInts", [](ShaderProgram& p) { p.SetUniform(0, 5, 6, 7); }, "glUniform3i(4, 5, 6, 7)"},
        UniformCase{"FourInts", [](ShaderProgram& p) { p.SetUniform(0, 5, 6, 7, 8); },
                    "glUniform4i(4, 5, 6, 7, 8)"},
        UniformCase{"Float", [](ShaderProgram& p) { p.SetUniform(0, 5.0f); }, "glUniform1f(4, 5)"},
        UniformCase{"TwoFloats", [](ShaderProgram& p) { p.SetUniform(0, 5.0f, 6.0f); }, "glUniform2f(4, 5, 6)"},
        UniformCase{"ThreeFloats", [](ShaderProgram& p) { p.SetUniform(0, 5.0f, 6.0f, 7.0f); },
                    "glUniform3f(4, 5, 6, 7)"},
        UniformCase{"FourFloats", [](ShaderProgram& p) { p.SetUniform(0, 5.0f, 6.0f, 7.0f, 8.0f); },
                    "glUniform4f(4, 5, 6, 7, 8)"},
        UniformCase{"Vector", [](ShaderProgram& p) { p.SetUniform(0, Vector(1.0f, 2.0f, 3.0f)); },
                    "glUniform3f(4, 1, 2, 3)"},
        UniformCase{"Color", [](ShaderProgram& p) { p.SetUniform(0, Color(0.5f, 0.25f, 1.0f, 0.75f)); },
                    "glUniform4f(4, 0.5, 0.25, 1, 0.75)"},
        UniformCase{"Matrix3x3", [](ShaderProgram& p) { p.SetUniform(0, CountingMatrix3()); },
                    "glUniformMatrix3fv(4, 1, 0, {0, 1, 2, 3, 4, 5, 6, 7, 8})"},
        UniformCase{"Matrix", [](ShaderProgram& p) { p.SetUniform(0, CountingMatrix()); },
                    "glUniformMatrix4fv(4, 1, 0, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15})"},
        UniformCase{"GlmVec2", [](ShaderProgram& p) { p.SetUniform(0, glm::vec2(1.0f, 2.0f)); },
                    "glUniform2fv(4, 1, {1, 2})"},
        UniformCase{"GlmVec3", [](ShaderProgram& p) { p.SetUniform(0, glm::vec3(1.0f, 2.0f, 3.0f)); },
                    "glUniform3fv(4, 1, {1, 2, 3})"},
        UniformCase{"GlmVec4", [](ShaderProgram& p) { p.SetUniform(0, glm::vec4(1.0f, 2.0f, 3.0f, 4.0f)); },
                    "glUniform4fv(4, 1, {1, 2, 3, 4})"},
        UniformCase{"GlmMat3", [](ShaderProgram& p) { p.SetUniform(0, glm::mat3(2.0f), true); },
                    "glUniformMatrix3fv(4, 1, 1, {2, 0, 0, 0, 2, 0, 0, 0, 2})"},
        UniformCase{"GlmMat4", [](ShaderProgram& p) { p.SetUniform(0, glm::mat4(2.0f), false); },
                    "glUniformMatrix4fv(4, 1, 0, {2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2})"}),
    [](const ::testing::TestParamInfo<UniformCase>& info) { return std::string(info.param.label); });

} // namespace OV::Test
