#include "orvane/effects/ShaderProgram.h"
#include "orvane/effects/ShaderSnippets.h"
#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/effects/shaders/SolidLineEffectES20.frag.h"
#include "orvane/effects/shaders/SolidLineEffectES20.vert.h"
#include "orvane/platform/detail/EntryPoints.h"
#include "tests/support/GLFixture.h"
#include "tests/support/ProgramInspection.h"

#include <GL/glew.h>

#include <set>
#include <string>

namespace OV::Test
{

namespace
{

constexpr std::uint64_t kMobile = 1;
constexpr std::uint64_t kAntialias = 2;
constexpr std::uint64_t kOverlay = 4;
constexpr std::uint64_t kDashed = 8;
constexpr std::uint64_t kFog = 16;
constexpr std::uint64_t kMasks = 32;

constexpr OptionRow kOptions[] = {{kMobile, "MOBILE"}, {kAntialias, "ANTIALIAS"}, {kOverlay, "OVERLAY"},
                                  {kDashed, "DASHED"}, {kFog, "FOG"}};

/// The fragment text of a mask behind a prelude.
std::string FragmentText(const std::string& prelude, std::uint64_t mask)
{
    return prelude + EffectES20::ExpandTemplate(Shaders::SolidLineEffectES20Frag,
                                                {{"@OPTIONS@", EffectES20::OptionsDefines(mask, kOptions)},
                                                 {"@FOG_UNIFORMS@", FogUniforms},
                                                 {"@FOG_CALC@", FogCalc}});
}

/// The uniforms that a program of the mask needs.
std::set<std::string> ExpectedUniforms(std::uint64_t mask)
{
    std::set<std::string> names = {"u_mvpMatrix",         "u_vpMatrix",   "u_worldTransform", "u_invViewDims",
                                   "u_offsetToCameraPos", "u_orthoOffset", "u_isPerspCamera",  "u_width",
                                   "u_color",             "u_numClipPlanes", "u_clipPlaneNormals[0]",
                                   "u_clipPlanePositions[0]"};
    if ((mask & (kAntialias | kDashed)) != 0)
    {
        names.insert("u_viewDims");
    }
    if ((mask & kAntialias) != 0)
    {
        names.insert("u_invWidth");
    }
    if ((mask & kDashed) != 0)
    {
        names.insert("u_dashedLineFrequency");
    }
    if ((mask & kFog) != 0)
    {
        names.insert({"u_fogRange", "u_fogColor"});
    }
    if ((mask & kOverlay) != 0)
    {
        names.insert({"u_idTexture", "u_groupTexture"});
        if ((mask & kMobile) == 0)
        {
            names.insert("u_depthTexture");
        }
    }
    return names;
}

class SolidLineOptions : public GLFixture
{
protected:
    // These tests call GL themselves, before the engine has had a reason to load it.
    void SetUp() override { ASSERT_TRUE(Platform::LoadEntryPoints()); }
};

} // namespace

TEST_F(SolidLineOptions, EveryMaskLinksInSilenceWithItsUniformsAndNoOther)
{
    SolidLineEffectES20 effect(nullptr);
    for (std::uint64_t mask = 0; mask < kMasks; ++mask)
    {
        ::testing::internal::CaptureStderr();
        const unsigned int program = effect.ProgramForOptions(mask);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << mask;
        ASSERT_NE(program, 0u) << mask;
        EXPECT_EQ(ActiveUniforms(program), ExpectedUniforms(mask)) << mask;
        for (const char* attribute : {"a_startPosition", "a_endPosition", "a_choiceDirNone"})
        {
            EXPECT_TRUE(effect.HasAttribute(program, attribute)) << mask << ' ' << attribute;
        }
        EXPECT_EQ(glGetAttribLocation(program, "a_startPosition"), 0);
        EXPECT_EQ(glGetAttribLocation(program, "a_endPosition"), 1);
        EXPECT_EQ(glGetAttribLocation(program, "a_choiceDirNone"), 2);
    }
}

TEST_F(SolidLineOptions, WithoutClipPlanesEveryMaskLinksInSilenceAndKnowsNoPlane)
{
    SolidLineEffectES20 effect(nullptr);
    for (std::uint64_t mask = 0; mask < kMasks; ++mask)
    {
        ::testing::internal::CaptureStderr();
        const unsigned int program = effect.ProgramForOptions(mask | EffectES20::OptionNoClipPlanes);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << mask;
        ASSERT_NE(program, 0u) << mask;
        std::set<std::string> uniforms = ExpectedUniforms(mask);
        for (const char* unread :
             {"u_clipPlaneNormals[0]", "u_clipPlanePositions[0]", "u_numClipPlanes", "u_worldTransform"})
        {
            EXPECT_EQ(uniforms.erase(unread), 1u) << unread;
        }
        EXPECT_EQ(ActiveUniforms(program), uniforms) << mask;
    }
}

TEST_F(SolidLineOptions, NoMaskGivesAWarning)
{
    EXPECT_EQ(CompileLog(GL_VERTEX_SHADER, std::string(ShaderPrelude) + Shaders::SolidLineEffectES20Vert), "");
    for (std::uint64_t mask = 0; mask < kMasks; ++mask)
    {
        EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, FragmentText(ShaderPrelude, mask)), "") << mask;
    }
}

TEST_F(SolidLineOptions, EveryMaskCompilesAsEs2WithItsPrecisions)
{
    if (!GLEW_ARB_ES2_compatibility)
    {
        FAIL() << "the context compiles no ES 2 shaders";
    }
    EXPECT_EQ(CompileLog(GL_VERTEX_SHADER, std::string(EsPrelude) + Shaders::SolidLineEffectES20Vert), "");
    for (std::uint64_t mask = 0; mask < kMasks; ++mask)
    {
        EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, FragmentText(EsPrelude, mask)), "") << mask;
    }
}

} // namespace OV::Test
