#include "orvane/effects/LineFilterEffectES20.h"

#include "tests/effects/CallTexts.h"
#include "tests/effects/EffectChecks.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

#include <type_traits>

namespace OV::Test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class OpenEffect : public LineFilterEffectES20
{
public:
    OpenEffect() : LineFilterEffectES20(nullptr) {}

    using LineFilterEffectES20::depthTexture;
    using LineFilterEffectES20::idTexture;
    using LineFilterEffectES20::m_currentProgram;
    using LineFilterEffectES20::renderTexture;
    using LineFilterEffectES20::textureHeight;
    using LineFilterEffectES20::textureWidth;
    using LineFilterEffectES20::zFar;
    using LineFilterEffectES20::zNear;
};

class LineFilter : public ::testing::Test
{
protected:
    GLRecorder gl;
    EffectStage stage;
    OpenEffect effect;
};

} // namespace

static_assert(std::is_copy_constructible_v<LineFilterEffectES20> && std::is_copy_assignable_v<LineFilterEffectES20>);
static_assert(std::is_move_constructible_v<LineFilterEffectES20> && std::is_move_assignable_v<LineFilterEffectES20>);
static_assert(!std::is_constructible_v<LineFilterEffectES20, EffectCache*>, "the cache makes them");

TEST_F(LineFilter, StartsWithItsDefaults)
{
    EXPECT_FALSE(effect.OverlayOnly());
    EXPECT_EQ(effect.EdgeWeight(), 0.5f);
    const Color color = effect.GetEdgeColor();
    EXPECT_THAT((std::vector<float>{color.r, color.g, color.b, color.a}), ElementsAre(1.0f, 1.0f, 1.0f, 1.0f));
    EXPECT_FALSE(effect.ShowIds());
    EXPECT_FALSE(effect.ShowDebug());
    EXPECT_EQ(effect.zNear, 0.0f);
    EXPECT_EQ(effect.zFar, 0.0f);
    EXPECT_EQ(effect.textureWidth, 0);
    EXPECT_EQ(effect.textureHeight, 0);
    EXPECT_EQ(effect.renderTexture, 0);
    EXPECT_EQ(effect.depthTexture, 0);
    EXPECT_EQ(effect.idTexture, 0);
}

TEST_F(LineFilter, FetchesItsLocationsOnceWhenItIsMade)
{
    gl.Clear();
    const OpenEffect second;
    EXPECT_EQ(gl.Count("glCreateProgram"), 1u);
    EXPECT_EQ(gl.Count("glGetUniformLocation"), 12u);
    EXPECT_EQ(gl.Count("glGetAttribLocation"), 2u);
}

TEST_F(LineFilter, BindAndApplySelectProgramAndTextures)
{
    effect.SetDepthTexture(5);
    effect.SetRenderTexture(6);
    effect.SetIdTexture(7);
    for (const bool apply : {false, true})
    {
        gl.Clear();
        if (apply)
        {
            effect.Apply(nullptr, nullptr);
        }
        else
        {
            effect.Bind();
        }
        EXPECT_EQ(gl.Strings(), ProgramAndTextures(effect.m_currentProgram, {5, 6, 7}));
    }
    gl.Clear();
    effect.Remove();
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST_F(LineFilter, HandsAllItsSettingsToTheProgram)
{
    effect.SetDimensions(30, 20);
    effect.SetOverlayOnly(true);
    effect.EdgeWeight(0.75f);
    effect.SetShowIds(true);
    effect.SetShowDebug(true);
    effect.SetNearFar(2.0f, 9.0f);
    effect.SetEdgeColor(Color(0.125f, 0.25f, 0.5f, 0.75f));
    effect.Bind();
    effect.BindMeshUniforms(nullptr);
    EXPECT_THAT(gl.Uniform("uRenderedTextureWidth"), ElementsAre(30.0f));
    EXPECT_THAT(gl.Uniform("uRenderedTextureHeight"), ElementsAre(20.0f));
    EXPECT_THAT(gl.Uniform("uDepthTexture"), ElementsAre(0.0f));
    EXPECT_THAT(gl.Uniform("uRenderedTexture"), ElementsAre(1.0f));
    EXPECT_THAT(gl.Uniform("uIDTexture"), ElementsAre(2.0f));
    EXPECT_THAT(gl.Uniform("uOverlayOnly"), ElementsAre(1.0f));
    EXPECT_THAT(gl.Uniform("uEdgeWeight"), ElementsAre(0.75f));
    EXPECT_THAT(gl.Uniform("uShowIds"), ElementsAre(1.0f));
    EXPECT_THAT(gl.Uniform("uShowDebug"), ElementsAre(1.0f));
    EXPECT_THAT(gl.Uniform("uZNear"), ElementsAre(2.0f));
    EXPECT_THAT(gl.Uniform("uZFar"), ElementsAre(9.0f));
    EXPECT_THAT(gl.Uniform("uEdgeColor"), ElementsAre(0.125f, 0.25f, 0.5f, 0.75f));
    effect.SetOverlayOnly(false);
    effect.SetShowIds(false);
    effect.SetShowDebug(false);
    effect.BindMeshUniforms(nullptr);
    EXPECT_THAT(gl.Uniform("uOverlayOnly"), ElementsAre(0.0f));
    EXPECT_THAT(gl.Uniform("uShowIds"), ElementsAre(0.0f));
    EXPECT_THAT(gl.Uniform("uShowDebug"), ElementsAre(0.0f));
}

TEST_F(LineFilter, TextureCoordinatesAreReadWhereTheMeshHasThemAndDisabledInAnyCase)
{
    for (const EffectStage::Streams streams : {EffectStage::Bare, EffectStage::Texture})
    {
        SCOPED_TRACE(streams);
        ExpectScreenStreams(gl, stage, effect, streams, 1);
    }
}

TEST_F(LineFilter, WithoutAProgramNoAttributeIsTouched)
{
    gl.SetLinkResult(0);
    OpenEffect broken;
    EXPECT_EQ(broken.m_currentProgram, 0u);
    MeshES20& mesh = stage.AddMesh(EffectStage::Texture);
    gl.Clear();
    broken.BindMeshAttributes(&mesh);
    broken.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

} // namespace OV::Test
