#include "orvane/effects/BasicMaterialAmbientPassEffectES20.h"
#include "orvane/effects/BasicMaterialEffectES20.h"
#include "orvane/effects/ShaderProgram.h"
#include "orvane/effects/ShaderSnippets.h"
#include "orvane/effects/SkyEffectES20.h"
#include "orvane/effects/shaders/BasicMaterialAmbientPassEffectES20.frag.h"
#include "orvane/effects/shaders/BasicMaterialAmbientPassEffectES20.vert.h"
#include "orvane/effects/shaders/BasicMaterialEffectES20.frag.h"
#include "orvane/effects/shaders/BasicMaterialEffectES20.vert.h"
#include "orvane/effects/shaders/SkyEffectES20.frag.h"
#include "orvane/effects/shaders/SkyEffectES20.vert.h"
#include "orvane/platform/detail/EntryPoints.h"
#include "tests/support/GLFixture.h"
#include "tests/support/ProgramInspection.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <set>

namespace OV::Test
{

namespace
{

constexpr std::uint64_t kTexture = 1;
constexpr std::uint64_t kFog = 2;
constexpr std::uint64_t kStippling = 4;

/// An effect with options, and what its programs have at each of them.
struct Family
{
    const char* label;
    const char* vertexSource;
    const char* fragmentSource;
    std::uint64_t masks;
    std::function<std::unique_ptr<MaterialEffectES20>()> make;
    std::set<std::string> uniforms;
    std::set<std::string> attributes;
};

std::vector<Family> Families()
{
    std::vector<Family> families;
    families.push_back(
        {"BasicMaterial",
         Shaders::BasicMaterialEffectES20Vert,
         Shaders::BasicMaterialEffectES20Frag,
         8,
         [] { return std::make_unique<BasicMaterialEffectES20>(nullptr, false); },
         {"u_ambient", "u_color", "u_enableLight", "u_isMirrored", "u_isShowFaceSides", "u_lightDir", "u_mvpMatrix",
          "u_normalMatrix", "u_pointSize", "u_worldTransform", "u_numClipPlanes", "u_clipPlaneNormals[0]",
          "u_clipPlanePositions[0]", "u_pocheColor", "u_pocheColorEnabled"},
         {"a_position", "a_normal"}});
    families.push_back({"BasicMaterialAmbientPass",
                        Shaders::BasicMaterialAmbientPassEffectES20Vert,
                        Shaders::BasicMaterialAmbientPassEffectES20Frag,
                        8,
                        [] { return std::make_unique<BasicMaterialAmbientPassEffectES20>(nullptr); },
                        {"u_ambient", "u_isMirrored", "u_isShowFaceSides", "u_mvpMatrix", "u_pointSize",
                         "u_pocheColor", "u_shadowIntensity", "u_isShadow"},
                        {"a_position"}});
    return families;
}

/// What the options add to a basic material.
void AddOptions(std::uint64_t mask, std::set<std::string>& uniforms, std::set<std::string>& attributes)
{
    if ((mask & kTexture) != 0)
    {
        uniforms.insert({"u_hScale", "u_vScale", "u_texture0"});
        attributes.insert("a_texture");
    }
    if ((mask & kFog) != 0)
    {
        uniforms.insert({"u_fogRange", "u_fogColor"});
    }
    if ((mask & kStippling) != 0)
    {
        uniforms.insert({"u_stippleColor", "u_stippleOffset", "u_stippleSize"});
    }
}

std::string Expand(const char* source, std::uint64_t mask)
{
    static constexpr OptionRow options[] = {{kTexture, "TEXTURE"}, {kFog, "FOG"}, {kStippling, "STIPPLING"}};
    const std::string defines = EffectES20::OptionsDefines(mask, options);
    return EffectES20::ExpandTemplate(source, {{"@OPTIONS@", defines},
                                               {"@OPTION_DEFINITIONS@", defines},
                                               {"@FOG_UNIFORMS@", FogUniforms},
                                               {"@FOG_CALC_FRAGMENT@", FogCalc},
                                               {"@STIPPLING_UNIFORMS@", StipplingUniforms},
                                               {"@INCLUDE_OVSL_ADD_STIPPLING_FUNCTION@", StipplingFunction}});
}

} // namespace

class AllOptions : public GLFixture
{
protected:
    // These tests call GL themselves, before the engine has had a reason to load it.
    void SetUp() override { ASSERT_TRUE(Platform::LoadEntryPoints()); }
};

TEST_F(AllOptions, EveryMaskCompilesAndLinksInSilence)
{
    for (const Family& family : Families())
    {
        const std::unique_ptr<MaterialEffectES20> effect = family.make();
        for (std::uint64_t mask = 0; mask < family.masks; ++mask)
        {
            ::testing::internal::CaptureStderr();
            const unsigned int program = effect->ProgramForOptions(mask);
            EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << family.label << ' ' << mask;
            EXPECT_NE(program, 0u) << family.label << ' ' << mask;
        }
    }
}

TEST_F(AllOptions, ColoursOfManyMaterialsLinkInSilenceBesideEveryMask)
{
    BasicMaterialEffectES20 effect(nullptr, false);
    for (std::uint64_t mask = 0; mask < 8; ++mask)
    {
        ::testing::internal::CaptureStderr();
        const unsigned int program = effect.ProgramForOptions(mask | EffectES20::OptionMaterialColors);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << mask;
        ASSERT_NE(program, 0u) << mask;
        EXPECT_EQ(glGetAttribLocation(program, "a_material"), 4) << mask;
        std::set<std::string> uniforms = ActiveUniforms(effect.ProgramForOptions(mask));
        uniforms.insert("u_materialColors[0]");
        EXPECT_EQ(ActiveUniforms(program), uniforms) << mask;
    }
    EXPECT_GE(EffectES20::MostMaterialColors(), 16);
    EXPECT_LE(EffectES20::MostMaterialColors(), 256);
    const std::string prelude = std::string(EsPrelude) + "#define MATERIAL_COLORS 32\n";
    EXPECT_EQ(CompileLog(GL_VERTEX_SHADER, prelude + Expand(Shaders::BasicMaterialEffectES20Vert, 0)), "");
    EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, prelude + Expand(Shaders::BasicMaterialEffectES20Frag, 0)), "");
}

TEST_F(AllOptions, WithoutClipPlanesEveryMaskLinksInSilenceAndKnowsNoPlane)
{
    for (const Family& family : Families())
    {
        const std::unique_ptr<MaterialEffectES20> effect = family.make();
        for (std::uint64_t mask = 0; mask < family.masks; ++mask)
        {
            ::testing::internal::CaptureStderr();
            const unsigned int program = effect->ProgramForOptions(mask | EffectES20::OptionNoClipPlanes);
            EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << family.label << ' ' << mask;
            ASSERT_NE(program, 0u) << family.label << ' ' << mask;
            std::set<std::string> uniforms = family.uniforms;
            std::set<std::string> attributes = family.attributes;
            AddOptions(mask, uniforms, attributes);
            for (const char* unread : {"u_clipPlaneNormals[0]", "u_clipPlanePositions[0]", "u_worldTransform",
                                       "u_numClipPlanes", "u_pocheColor", "u_pocheColorEnabled"})
            {
                // The ambient pass fills backs without asking for planes.
                if (std::string(family.label) != "BasicMaterialAmbientPass" || std::string(unread) != "u_pocheColor")
                {
                    uniforms.erase(unread);
                }
            }
            EXPECT_EQ(ActiveUniforms(program), uniforms) << family.label << ' ' << mask;
            EXPECT_EQ(ActiveAttributes(program), attributes) << family.label << ' ' << mask;
        }
    }
}

TEST_F(AllOptions, TheListOfClipPlanesChoosesTheProgram)
{
    BasicMaterialEffectES20 effect(nullptr, false);
    const auto inUse = []
    {
        GLint program = 0;
        glGetIntegerv(GL_CURRENT_PROGRAM, &program);
        return static_cast<unsigned int>(program);
    };
    effect.UseOptions(kFog);
    EXPECT_EQ(inUse(), effect.ProgramForOptions(kFog | EffectES20::OptionNoClipPlanes));
    EffectES20::AddClipPlane({1, 0, 0}, {0, 0, 0});
    effect.UseOptions(kFog);
    EXPECT_EQ(inUse(), effect.ProgramForOptions(kFog));
    EffectES20::ClearClipPlanes();
    effect.UseOptions(kFog);
    EXPECT_EQ(inUse(), effect.ProgramForOptions(kFog | EffectES20::OptionNoClipPlanes));
    EffectES20::EndUse();
    glUseProgram(0);
}

TEST_F(AllOptions, EveryProgramHasTheUniformsAndAttributesOfItsOptionsAndNoOther)
{
    for (const Family& family : Families())
    {
        const std::unique_ptr<MaterialEffectES20> effect = family.make();
        for (std::uint64_t mask = 0; mask < family.masks; ++mask)
        {
            std::set<std::string> uniforms = family.uniforms;
            std::set<std::string> attributes = family.attributes;
            AddOptions(mask, uniforms, attributes);
            const unsigned int program = effect->ProgramForOptions(mask);
            EXPECT_EQ(ActiveUniforms(program), uniforms) << family.label << ' ' << mask;
            EXPECT_EQ(ActiveAttributes(program), attributes) << family.label << ' ' << mask;
        }
    }
}

TEST_F(AllOptions, EveryMaskCompilesAsEs2WithItsPrecisions)
{
    if (!GLEW_ARB_ES2_compatibility)
    {
        FAIL() << "the context compiles no ES 2 shaders";
    }
    for (const Family& family : Families())
    {
        for (std::uint64_t mask = 0; mask < family.masks; ++mask)
        {
            EXPECT_EQ(CompileLog(GL_VERTEX_SHADER, EsPrelude + Expand(family.vertexSource, mask)), "")
                << family.label << ' ' << mask;
            EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, EsPrelude + Expand(family.fragmentSource, mask)), "")
                << family.label << ' ' << mask;
        }
    }
    EXPECT_EQ(CompileLog(GL_VERTEX_SHADER, std::string(EsPrelude) + Shaders::SkyEffectES20Vert), "");
    EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, std::string(EsPrelude) + Shaders::SkyEffectES20Frag), "");
}

TEST_F(AllOptions, NoMaskGivesAWarning)
{
    for (const Family& family : Families())
    {
        for (std::uint64_t mask = 0; mask < family.masks; ++mask)
        {
            EXPECT_EQ(CompileLog(GL_VERTEX_SHADER, ShaderPrelude + Expand(family.vertexSource, mask)), "");
            EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, ShaderPrelude + Expand(family.fragmentSource, mask)), "");
        }
    }
}

TEST_F(AllOptions, ABrokenSourceIsSeen)
{
    EXPECT_NE(CompileLog(GL_FRAGMENT_SHADER, "void main() { gl_FragColor = vec4(1); int i = 0.5; }"), "");
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(CompileShader("broken", GL_VERTEX_SHADER, "void main() { undeclared = 1.0; }"), 0);
    EXPECT_THAT(::testing::internal::GetCapturedStderr(),
                ::testing::StartsWith("Error compiling vertex shader\nCompile error information: \n"));
}

TEST_F(AllOptions, ALinkFailureOfTheDriverIsSilentAndLeavesNothing)
{
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(LoadProgram("unlinkable", "void main() { gl_Position = vec4(0.0); }",
                          "varying vec3 v_missing; void main() { gl_FragColor = vec4(v_missing, 1.0); }", {}),
              0);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST_F(AllOptions, TheSkyLinksWithAllItsUniforms)
{
    /// Tells its one program.
    class OpenSky : public SkyEffectES20
    {
    public:
        OpenSky() : SkyEffectES20(nullptr) {}
        using SkyEffectES20::m_currentProgram;
    };
    const OpenSky effect;
    ASSERT_NE(effect.m_currentProgram, 0u);
    EXPECT_EQ(ActiveUniforms(effect.m_currentProgram),
              (std::set<std::string>{"u_mvpMatrix", "u_horizonColor", "u_skyColor", "u_upperSkyColor",
                                     "u_horizonStop", "u_skyStop"}));
    EXPECT_EQ(ActiveAttributes(effect.m_currentProgram), (std::set<std::string>{"a_position", "a_texture"}));
}

TEST_F(AllOptions, AMissingUniformIsReportedByTheDriverAsMinusOne)
{
    const int name = LoadProgram("one", "void main() { gl_Position = vec4(0.0); }",
                                 "uniform vec4 u_used; void main() { gl_FragColor = u_used; }", {});
    ASSERT_NE(name, 0);
    ShaderProgram program(name);
    ::testing::internal::CaptureStderr();
    EXPECT_FALSE(program.DeclareUniforms({"u_used", "u_unused"}));
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Missing uniform variable u_unused\n");
    EXPECT_GE(program[0].location, 0);
    EXPECT_EQ(program[1].location, -1);
    glDeleteProgram(static_cast<unsigned int>(name));
}

} // namespace OV::Test
