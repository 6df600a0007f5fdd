#include "orvane/effects/AdvancedMaterialEffectES20.h"
#include "orvane/effects/AdvancedMaterialPhongEffectES20.h"
#include "orvane/effects/CrosshatchEffectES20.h"
#include "orvane/effects/MonotoneEffectES20.h"
#include "orvane/effects/ShaderProgram.h"
#include "orvane/effects/SimMaterialEffectES20.h"
#include "orvane/effects/VertexColorEffectES20.h"
#include "orvane/effects/WeightedAverageSecondPassEffectES20.h"
#include "orvane/effects/detail/AdvancedMaterialTables.h"
#include "orvane/effects/ShaderSnippets.h"
#include "orvane/effects/shaders/AdvancedMaterialEffectES20.frag.h"
#include "orvane/effects/shaders/AdvancedMaterialEffectES20.vert.h"
#include "orvane/effects/shaders/AdvancedMaterialPhongEffectES20.frag.h"
#include "orvane/effects/shaders/CrosshatchEffectES20.frag.h"
#include "orvane/effects/shaders/CrosshatchEffectES20.vert.h"
#include "orvane/effects/shaders/MonotoneEffectES20.frag.h"
#include "orvane/effects/shaders/MonotoneEffectES20.vert.h"
#include "orvane/effects/shaders/SimMaterialEffectES20.frag.h"
#include "orvane/effects/shaders/SimMaterialEffectES20.vert.h"
#include "orvane/effects/shaders/VertexColorEffectES20.frag.h"
#include "orvane/effects/shaders/VertexColorEffectES20.vert.h"
#include "orvane/effects/shaders/WeightedAverageSecondPassEffectES20.frag.h"
#include "orvane/effects/shaders/WeightedAverageSecondPassEffectES20.vert.h"
#include "orvane/platform/detail/EntryPoints.h"
#include "tests/support/GLFixture.h"
#include "tests/support/ProgramInspection.h"

#include <GL/glew.h>

#include <memory>
#include <set>
#include <string>

namespace OV::Test
{

namespace
{

using Names = std::set<std::string>;

constexpr std::uint64_t kFog = 1;
constexpr std::uint64_t kStippling = 2;
constexpr std::uint64_t kAmbient = 4;
constexpr std::uint64_t kCutout = 8;
constexpr std::uint64_t kTexture = 16;
constexpr std::uint64_t kNormalMap = 32;
constexpr std::uint64_t kVertexColors = 64;
constexpr std::uint64_t kMasks = 128;

/// The uniforms that a program of the mask can't do without.
Names AdvancedUniforms(bool phong, std::uint64_t mask)
{
    Names names = {"u_worldTransform", "u_mvpMatrix", "u_normalMatrix", "u_cubeMatrix", "u_lightDir", "u_camera",
                   "u_enableLight", "u_pointSize", "u_ambient", "u_color", "u_specular", "u_reflectionFactors",
                   "u_reflectionMap", "u_isShowFaceSides", "u_isBackFaces", "u_monochrome", "u_meshMonochrome",
                   "u_numClipPlanes", "u_clipPlaneNormals[0]", "u_clipPlanePositions[0]", "u_clipPlaneOutlineColor",
                   "u_clipPlaneOutlineSize", "u_pocheColor", "u_pocheColorEnabled", "u_isMirrored"};
    if (phong)
    {
        names.insert({"u_shadowIntensity", "u_isShadow", "u_sunShading"});
        names.insert((mask & kTexture) != 0 ? "u_ambientTextureIntensity" : "u_ambientColorIntensity");
    }
    if ((mask & (kTexture | kCutout | kNormalMap)) != 0)
    {
        names.insert("u_scale");
    }
    if ((mask & kFog) != 0)
    {
        names.insert({"u_fogRange", "u_fogColor"});
    }
    if ((mask & kStippling) != 0)
    {
        names.insert({"u_stippleColor", "u_stippleOffset", "u_stippleSize"});
    }
    for (const auto& [bit, name] : {std::pair(kTexture, "u_texture0"), std::pair(kNormalMap, "u_normalMap"),
                                    std::pair(kCutout, "u_opacityMap")})
    {
        if ((mask & bit) != 0)
        {
            names.insert(name);
        }
    }
    return names;
}

/// The uniforms that a driver drops where nothing of the light is left.
void DropUnread(bool phong, std::uint64_t mask, Names& names)
{
    const bool lightByVertex = (mask & kNormalMap) == 0 && (phong || (mask & kAmbient) == 0);
    if (!lightByVertex)
    {
        // Only the light at the vertices can be mirrored.
        names.erase("u_isMirrored");
    }
}

std::string Expand(const char* source, std::uint64_t mask)
{
    return EffectES20::ExpandTemplate(source, {{"@OPTIONS@", EffectES20::OptionsDefines(mask, Detail::kAdvancedOptions)},
                                               {"@FOG_UNIFORMS@", FogUniforms},
                                               {"@FOG_CALC@", FogCalc},
                                               {"@STIPPLING_UNIFORMS@", StipplingUniforms},
                                               {"@STIPPLING_FUNCTION@", StipplingFunction}});
}

std::unique_ptr<EffectES20> MakeAdvanced(bool phong)
{
    if (phong)
    {
        return std::make_unique<AdvancedMaterialPhongEffectES20>(nullptr);
    }
    return std::make_unique<AdvancedMaterialEffectES20>(nullptr);
}

/// A shader without options.
struct PlainSource
{
    GLenum type;
    const char* text;
};

constexpr PlainSource kPlainSources[] = {
    {GL_VERTEX_SHADER, Shaders::CrosshatchEffectES20Vert},
    {GL_FRAGMENT_SHADER, Shaders::CrosshatchEffectES20Frag},
    {GL_VERTEX_SHADER, Shaders::MonotoneEffectES20Vert},
    {GL_FRAGMENT_SHADER, Shaders::MonotoneEffectES20Frag},
    {GL_VERTEX_SHADER, Shaders::VertexColorEffectES20Vert},
    {GL_FRAGMENT_SHADER, Shaders::VertexColorEffectES20Frag},
    {GL_VERTEX_SHADER, Shaders::WeightedAverageSecondPassEffectES20Vert},
    {GL_FRAGMENT_SHADER, Shaders::WeightedAverageSecondPassEffectES20Frag},
    {GL_VERTEX_SHADER, Shaders::SimMaterialEffectES20Vert},
    {GL_FRAGMENT_SHADER, Shaders::SimMaterialEffectES20Frag},
};

class LooksOptions : public GLFixture
{
protected:
    // These tests call GL themselves, before the engine has had a reason to load it.
    void SetUp() override { ASSERT_TRUE(Platform::LoadEntryPoints()); }
};

} // namespace

TEST_F(LooksOptions, EveryMaskOfBothModelsLinksInSilenceWithItsUniformsAndNoOther)
{
    for (const bool phong : {false, true})
    {
        const std::unique_ptr<EffectES20> effect = MakeAdvanced(phong);
        for (std::uint64_t mask = 0; mask < kMasks; ++mask)
        {
            SCOPED_TRACE(::testing::Message() << (phong ? "Phong" : "plain") << " mask " << mask);
            ::testing::internal::CaptureStderr();
            const unsigned int program = effect->ProgramForOptions(mask);
            EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
            ASSERT_NE(program, 0u);
            Names uniforms = AdvancedUniforms(phong, mask);
            DropUnread(phong, mask, uniforms);
            EXPECT_EQ(ActiveUniforms(program), uniforms);
            Names attributes = {"a_position", "a_normal"};
            if (uniforms.count("u_scale") != 0)
            {
                attributes.insert("a_texture");
            }
            if ((mask & kVertexColors) != 0)
            {
                attributes.insert("a_vcolor");
            }
            EXPECT_EQ(ActiveAttributes(program), attributes);
        }
    }
}

TEST_F(LooksOptions, WithoutClipPlanesEveryMaskLinksInSilenceAndKnowsNoPlane)
{
    std::vector<std::unique_ptr<EffectES20>> effects;
    effects.push_back(MakeAdvanced(false));
    effects.push_back(MakeAdvanced(true));
    effects.push_back(std::make_unique<MonotoneEffectES20>(nullptr));
    effects.push_back(std::make_unique<VertexColorEffectES20>(nullptr));
    for (const std::unique_ptr<EffectES20>& effect : effects)
    {
        const bool isAdvanced = effect == effects[0] || effect == effects[1];
        for (std::uint64_t mask = 0; mask < (isAdvanced ? kMasks : 1); ++mask)
        {
            ::testing::internal::CaptureStderr();
            const unsigned int program = effect->ProgramForOptions(mask | EffectES20::OptionNoClipPlanes);
            EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << mask;
            ASSERT_NE(program, 0u) << mask;
            const Names uniforms = ActiveUniforms(program);
            EXPECT_EQ(uniforms.count("u_clipPlaneNormals[0]"), 0u) << mask;
            EXPECT_EQ(uniforms.count("u_clipPlanePositions[0]"), 0u) << mask;
            EXPECT_EQ(uniforms.count("u_mvpMatrix"), 1u) << mask;
            EXPECT_EQ(ActiveAttributes(program), ActiveAttributes(effect->ProgramForOptions(mask))) << mask;
        }
    }
}

TEST_F(LooksOptions, ReflectionAtPixelsLinksInSilenceBesideEveryMask)
{
    for (const bool phong : {false, true})
    {
        const std::unique_ptr<EffectES20> effect = MakeAdvanced(phong);
        for (std::uint64_t mask = 0; mask < kMasks; ++mask)
        {
            ::testing::internal::CaptureStderr();
            const unsigned int program = effect->ProgramForOptions(mask | EffectES20::OptionReflectAtPixels);
            EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << mask;
            ASSERT_NE(program, 0u) << mask;
            EXPECT_EQ(ActiveUniforms(program).count("u_reflectionTint"), 1u) << mask;
            EXPECT_EQ(ActiveUniforms(effect->ProgramForOptions(mask)).count("u_reflectionTint"), 0u) << mask;
        }
    }
}

TEST_F(LooksOptions, ColoursOfManyMaterialsLinkInSilenceBesideEveryMask)
{
    for (const bool phong : {false, true})
    {
        const std::unique_ptr<EffectES20> effect = MakeAdvanced(phong);
        for (std::uint64_t mask = 0; mask < kMasks; ++mask)
        {
            ::testing::internal::CaptureStderr();
            const unsigned int program = effect->ProgramForOptions(mask | EffectES20::OptionMaterialColors);
            EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << mask;
            ASSERT_NE(program, 0u) << mask;
            EXPECT_EQ(glGetAttribLocation(program, "a_material"), 4) << mask;
            // As many as are promised.
            const std::string last = "u_materialColors[" + std::to_string(2 * EffectES20::MostMaterialColors() - 1) + "]";
            EXPECT_NE(glGetUniformLocation(program, last.c_str()), -1) << mask;
            // All else is as it was.
            const unsigned int plain = effect->ProgramForOptions(mask);
            Names attributes = ActiveAttributes(plain);
            EXPECT_EQ(attributes.count("a_material"), 0u) << mask;
            attributes.insert("a_material");
            EXPECT_EQ(ActiveAttributes(program), attributes) << mask;
            Names uniforms = ActiveUniforms(plain);
            EXPECT_EQ(uniforms.count("u_materialColors[0]"), 0u) << mask;
            uniforms.insert("u_materialColors[0]");
            EXPECT_EQ(ActiveUniforms(program), uniforms) << mask;
        }
    }
}

TEST_F(LooksOptions, EveryMaskCompilesAsEs2WithItsPrecisions)
{
    if (!GLEW_ARB_ES2_compatibility)
    {
        FAIL() << "the context compiles no ES 2 shaders";
    }
    const std::string prelude = EsPrelude;
    for (std::uint64_t mask = 0; mask < kMasks; ++mask)
    {
        EXPECT_EQ(CompileLog(GL_VERTEX_SHADER, prelude + Expand(Shaders::AdvancedMaterialEffectES20Vert, mask)), "");
        EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, prelude + Expand(Shaders::AdvancedMaterialEffectES20Frag, mask)), "");
        EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, prelude + Expand(Shaders::AdvancedMaterialPhongEffectES20Frag, mask)),
                  "");
    }
    const std::string atPixels = prelude + "#define REFLECT_AT_PIXELS\n";
    for (const char* source : {Shaders::AdvancedMaterialEffectES20Frag, Shaders::AdvancedMaterialPhongEffectES20Frag})
    {
        EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, atPixels + Expand(source, 0)), "");
        EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, atPixels + Expand(source, kNormalMap)), "");
    }
    const std::string atVertices = prelude + "#define MATERIAL_COLORS 32\n";
    for (const std::uint64_t mask : {std::uint64_t{0}, kVertexColors, kVertexColors | kTexture})
    {
        EXPECT_EQ(CompileLog(GL_VERTEX_SHADER, atVertices + Expand(Shaders::AdvancedMaterialEffectES20Vert, mask)), "");
        EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, atVertices + Expand(Shaders::AdvancedMaterialEffectES20Frag, mask)),
                  "");
        EXPECT_EQ(
            CompileLog(GL_FRAGMENT_SHADER, atVertices + Expand(Shaders::AdvancedMaterialPhongEffectES20Frag, mask)),
            "");
    }
    for (const PlainSource& source : kPlainSources)
    {
        EXPECT_EQ(CompileLog(source.type, prelude + Expand(source.text, 0)), "") << source.text;
    }
    const std::string withoutPlanes = prelude + "#define NO_CLIP_PLANES\n";
    EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, withoutPlanes + Expand(Shaders::AdvancedMaterialEffectES20Frag, 0)), "");
    EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, withoutPlanes + Expand(Shaders::AdvancedMaterialPhongEffectES20Frag, 0)),
              "");
    EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, withoutPlanes + Expand(Shaders::MonotoneEffectES20Frag, 0)), "");
    EXPECT_EQ(CompileLog(GL_FRAGMENT_SHADER, withoutPlanes + Expand(Shaders::VertexColorEffectES20Frag, 0)), "");
}

TEST_F(LooksOptions, TheLooksWithoutOptionsLinkAndIgnoreTheMask)
{
    CrosshatchEffectES20 crosshatch(nullptr);
    MonotoneEffectES20 monotone(nullptr);
    VertexColorEffectES20 vertexColor(nullptr);
    WeightedAverageSecondPassEffectES20 secondPass(nullptr);
    for (EffectES20* effect : {static_cast<EffectES20*>(&crosshatch), static_cast<EffectES20*>(&monotone),
                               static_cast<EffectES20*>(&vertexColor), static_cast<EffectES20*>(&secondPass)})
    {
        ::testing::internal::CaptureStderr();
        const unsigned program = effect->ProgramForOptions(0);
        EXPECT_NE(program, 0u);
        EXPECT_EQ(ActiveUniforms(effect->ProgramForOptions(64)), ActiveUniforms(program));
        EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
    }
    EXPECT_EQ(ActiveUniforms(monotone.ProgramForOptions(0)),
              (Names{"u_color", "u_mvpMatrix", "u_showFaceSides", "u_worldTransform", "u_numClipPlanes",
                     "u_clipPlaneNormals[0]", "u_clipPlanePositions[0]", "u_clipPlaneOutlineColor",
                     "u_clipPlaneOutlineSize", "u_pocheColor", "u_pocheColorEnabled", "u_pointSize", "u_isBackFaces",
                     "u_shadowIntensity", "u_isShadow"}));
    EXPECT_EQ(ActiveUniforms(vertexColor.ProgramForOptions(0)),
              (Names{"u_enableLight", "u_lightDir", "u_mvpMatrix", "u_normalMatrix", "u_worldTransform",
                     "u_numClipPlanes", "u_clipPlaneNormals[0]", "u_clipPlanePositions[0]", "u_clipPlaneOutlineColor",
                     "u_clipPlaneOutlineSize"}));
    EXPECT_EQ(ActiveUniforms(secondPass.ProgramForOptions(0)), Names{"u_mvpMatrix"});
    Names crosshatchUniforms = {"u_ambient", "u_ambientPass", "u_baseTexture", "u_color", "u_enableLight",
                                "u_enableTexture", "u_hScale", "u_lightDir", "u_mvpMatrix", "u_normalMatrix",
                                "u_texture0", "u_texture1", "u_texture2", "u_texture3", "u_vScale", "u_isMirrored"};
    EXPECT_EQ(ActiveUniforms(crosshatch.ProgramForOptions(0)), crosshatchUniforms);
}

} // namespace OV::Test
