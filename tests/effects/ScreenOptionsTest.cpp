#include "orvane/effects/AAEffectES20.h"
#include "orvane/effects/DepthIdPassEffectES20.h"
#include "orvane/effects/FXAAEffectES20.h"
#include "orvane/effects/LineFilterEffectES20.h"
#include "orvane/effects/SSAOEffectES20.h"
#include "orvane/effects/ScalableAmbientObscuranceEffectES20.h"
#include "orvane/effects/ShaderProgram.h"
#include "orvane/effects/shaders/AAEffectES20.frag.h"
#include "orvane/effects/shaders/AAEffectES20.vert.h"
#include "orvane/effects/shaders/DepthIdPassEffectES20.frag.h"
#include "orvane/effects/shaders/DepthIdPassEffectES20.vert.h"
#include "orvane/effects/shaders/FXAAEffectES20.frag.h"
#include "orvane/effects/shaders/FXAAEffectES20.vert.h"
#include "orvane/effects/shaders/LineFilterEffectES20.frag.h"
#include "orvane/effects/shaders/LineFilterEffectES20.vert.h"
#include "orvane/effects/shaders/SSAOEffectES20.frag.h"
#include "orvane/effects/shaders/SSAOEffectES20.vert.h"
#include "orvane/platform/detail/EntryPoints.h"
#include "tests/support/GLFixture.h"
#include "tests/support/ProgramInspection.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

#include <set>
#include <string>
#include <utility>

namespace OV::Test
{

namespace
{

using NameSet = std::set<std::string>;

/// An effect that otherwise only a cache makes; shows its program.
template <class Effect>
class Made : public Effect
{
public:
    Made() : Effect(nullptr) {}

    using Effect::m_currentProgram;
};

constexpr OptionRow kIdentifierOptions[] = {{1, "OBJECTID"}, {2, "GROUPID"}};
constexpr OptionRow kOcclusionOptions[] = {{1, "USE_MIST"}, {2, "USE_NOISE"}};

/// Both sources of an effect with these options, after a prelude, without a complaint.
void ExpectSilence(const char* prelude, const char* vertex, const char* fragment, const OptionTable& table,
                   std::uint64_t mask)
{
    const std::string defines = EffectES20::OptionsDefines(mask, table);
    const auto expand = [&](const char* source) {
        return prelude +
               EffectES20::ExpandTemplate(source, {{"@OPTIONS@", defines}, {"@OPTION_DEFINITIONS@", defines}});
    };
    EXPECT_EQ(CompileLog(GL_VERTEX_SHADER, expand(vertex)), "") << mask;
    EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, expand(fragment)), "") << mask;
}

void ExpectAllSilent(const char* prelude)
{
    for (std::uint64_t mask = 0; mask < 4; ++mask)
    {
        ExpectSilence(prelude, Shaders::DepthIdPassEffectES20Vert, Shaders::DepthIdPassEffectES20Frag,
                      kIdentifierOptions, mask);
        ExpectSilence(prelude, Shaders::SSAOEffectES20Vert, Shaders::SSAOEffectES20Frag, kOcclusionOptions, mask);
    }
    for (const auto& [vertex, fragment] : {std::pair{Shaders::AAEffectES20Vert, Shaders::AAEffectES20Frag},
                                           std::pair{Shaders::FXAAEffectES20Vert, Shaders::FXAAEffectES20Frag},
                                           std::pair{Shaders::LineFilterEffectES20Vert,
                                                     Shaders::LineFilterEffectES20Frag}})
    {
        ExpectSilence(prelude, vertex, fragment, kIdentifierOptions, 0);
    }
}

class ScreenOptions : public GLFixture
{
protected:
    // These tests call GL themselves, before the engine has had a reason to load it.
    void SetUp() override { ASSERT_TRUE(Platform::LoadEntryPoints()); }
};

} // namespace

TEST_F(ScreenOptions, EveryMaskOfTheIdentifierPassLinksWithItsNamesAndNoOther)
{
    DepthIdPassEffectES20 effect(nullptr);
    for (std::uint64_t mask = 0; mask < 4; ++mask)
    {
        NameSet uniforms = {"u_mvpMatrix", "u_worldTransform", "u_numClipPlanes", "u_clipPlaneNormals[0]",
                            "u_clipPlanePositions[0]"};
        NameSet attributes = {"a_position"};
        (mask & 1) != 0 ? attributes.insert("a_color") : uniforms.insert("u_encodedGroupInstance");
        ::testing::internal::CaptureStderr();
        const unsigned int program = effect.ProgramForOptions(mask);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << mask;
        ASSERT_NE(program, 0u) << mask;
        EXPECT_EQ(ActiveUniforms(program), uniforms) << mask;
        EXPECT_EQ(ActiveAttributes(program), attributes) << mask;
    }
}

TEST_F(ScreenOptions, EveryMaskOfAmbientOcclusionLinksWithItsNamesAndNoOther)
{
    Made<SSAOEffectES20> effect;
    for (std::uint64_t mask = 0; mask < 4; ++mask)
    {
        ::testing::internal::CaptureStderr();
        const unsigned int program = effect.ProgramForOptions(mask);
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << mask;
        ASSERT_NE(program, 0u) << mask;
        EXPECT_EQ(ActiveUniforms(program),
                  (NameSet{"uDepthTexture", "uRenderedTexture", "uRenderedTextureHeight", "uRenderedTextureWidth",
                           "uZFar", "uZNear"}))
            << mask;
        EXPECT_EQ(ActiveAttributes(program), (NameSet{"a_position", "a_texture"})) << mask;
        EXPECT_EQ(glGetAttribLocation(program, "a_texture"), 2);
    }
}

TEST_F(ScreenOptions, EffectsOfOneProgramLinkWithTheirNames)
{
    const Made<AAEffectES20> plain;
    ASSERT_NE(plain.m_currentProgram, 0u);
    EXPECT_EQ(ActiveUniforms(plain.m_currentProgram), (NameSet{"u_texture0"}));
    EXPECT_EQ(ActiveAttributes(plain.m_currentProgram), (NameSet{"a_position"}));

    const Made<FXAAEffectES20> fxaa;
    ASSERT_NE(fxaa.m_currentProgram, 0u);
    EXPECT_EQ(ActiveUniforms(fxaa.m_currentProgram), (NameSet{"u_height", "u_texture0", "u_width"}));
    EXPECT_EQ(ActiveAttributes(fxaa.m_currentProgram), (NameSet{"a_position"}));

    // Depth, near, far and the debug flag play no part in the lines.
    const Made<LineFilterEffectES20> lines;
    ASSERT_NE(lines.m_currentProgram, 0u);
    EXPECT_EQ(ActiveUniforms(lines.m_currentProgram),
              (NameSet{"uEdgeColor", "uEdgeWeight", "uIDTexture", "uOverlayOnly", "uRenderedTexture",
                       "uRenderedTextureHeight", "uRenderedTextureWidth", "uShowIds"}));
    EXPECT_EQ(ActiveAttributes(lines.m_currentProgram), (NameSet{"a_position", "a_texture"}));
}

TEST_F(ScreenOptions, NoMaskGivesAWarning)
{
    ExpectAllSilent(ShaderPrelude);
}

TEST_F(ScreenOptions, EveryMaskCompilesAsEs2WithItsPrecisions)
{
    if (!GLEW_ARB_ES2_compatibility)
    {
        FAIL() << "the context compiles no ES 2 shaders";
    }
    ExpectAllSilent(EsPrelude);
}

TEST_F(ScreenOptions, TheUnfinishedAmbientOcclusionDoesNotCompile)
{
    ::testing::internal::CaptureStderr();
    Made<ScalableAmbientObscuranceEffectES20> effect;
    EXPECT_THAT(::testing::internal::GetCapturedStderr(), ::testing::StartsWith("Error compiling fragment shader\n"));
    EXPECT_EQ(effect.m_currentProgram, 0u);
    effect.Apply(nullptr, nullptr);
    effect.Remove();
}

TEST_F(ScreenOptions, TheCacheMakesTheClassOfEachTypeButNeverTheUnfinishedOne)
{
    EffectCache cache;
    for (int type = 0; type <= 17; ++type)
    {
        EffectES20* effect = cache.GetEffect(static_cast<EffectCache::EffectType>(type));
        ASSERT_NE(effect, nullptr) << type;
        EXPECT_EQ(dynamic_cast<AAEffectES20*>(effect) != nullptr, type == EffectCache::AA);
        EXPECT_EQ(dynamic_cast<FXAAEffectES20*>(effect) != nullptr, type == EffectCache::FXAA);
        EXPECT_EQ(dynamic_cast<DepthIdPassEffectES20*>(effect) != nullptr, type == EffectCache::DepthIdPass);
        EXPECT_EQ(dynamic_cast<SSAOEffectES20*>(effect) != nullptr, type == EffectCache::SSAO);
        EXPECT_EQ(dynamic_cast<LineFilterEffectES20*>(effect) != nullptr, type == EffectCache::LineFilter);
        EXPECT_EQ(dynamic_cast<ScalableAmbientObscuranceEffectES20*>(effect), nullptr);
        EXPECT_EQ(effect->GetCache(), &cache);
        EXPECT_TRUE(effect->Release());
    }
}

} // namespace OV::Test
