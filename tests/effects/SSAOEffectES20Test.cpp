#include "orvane/effects/SSAOEffectES20.h"

#include "orvane/effects/ScalableAmbientObscuranceEffectES20.h"
#include "orvane/scene/CameraNode.h"
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
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class OpenEffect : public SSAOEffectES20
{
public:
    OpenEffect() : SSAOEffectES20(nullptr) {}

    using SSAOEffectES20::depthTexture;
    using SSAOEffectES20::height;
    using SSAOEffectES20::m_currentProgram;
    using SSAOEffectES20::renderTexture;
    using SSAOEffectES20::width;
    using SSAOEffectES20::zFar;
    using SSAOEffectES20::zNear;
};

class SSAO : public ::testing::Test
{
protected:
    GLRecorder gl;
    EffectStage stage;
    OpenEffect effect;
};

/// The stub, with textures that nobody else can give it.
class OpenStub : public ScalableAmbientObscuranceEffectES20
{
public:
    OpenStub() : ScalableAmbientObscuranceEffectES20(nullptr)
    {
        EXPECT_EQ(depthTexture, 0);
        EXPECT_EQ(renderTexture, 0);
        EXPECT_EQ(width, 0);
        EXPECT_EQ(height, 0);
        depthTexture = 5;
        renderTexture = 6;
        width = 30;
        height = 20;
    }

    using ScalableAmbientObscuranceEffectES20::m_currentProgram;
};

} // namespace

static_assert(std::is_copy_constructible_v<SSAOEffectES20> && std::is_move_assignable_v<SSAOEffectES20>);
static_assert(!std::is_constructible_v<SSAOEffectES20, EffectCache*>, "the cache makes them");

TEST_F(SSAO, StartsWithItsDefaults)
{
    EXPECT_EQ(effect.width, 0);
    EXPECT_EQ(effect.height, 0);
    EXPECT_EQ(effect.renderTexture, 0);
    EXPECT_EQ(effect.depthTexture, 0);
    EXPECT_EQ(effect.zNear, 0.1f);
    EXPECT_EQ(effect.zFar, 1000.0f);
}

TEST_F(SSAO, NearAndFarAreTheDefaultsWhateverTheCameraSays)
{
    stage.scene.GetCameraNode()->SetNearFar(3.0f, 70.0f);
    stage.Update();
    effect.Apply(nullptr, &stage.camera);
    effect.BindMeshUniforms(nullptr);
    EXPECT_THAT(gl.Uniform("uZNear"), ElementsAre(0.1f));
    EXPECT_THAT(gl.Uniform("uZFar"), ElementsAre(1000.0f));
}

TEST_F(SSAO, ApplyAndBindTakeMistButNeverNoise)
{
    effect.SetDepthTexture(5);
    effect.SetRenderTexture(6);
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
        EXPECT_EQ(gl.CurrentProgram(), effect.m_currentProgram);
        const std::string fragment = gl.ProgramTexts(effect.m_currentProgram).at(1);
        EXPECT_THAT(fragment, HasSubstr("#define USE_MIST\n"));
        EXPECT_THAT(fragment, Not(HasSubstr("#define USE_NOISE\n")));
        EXPECT_EQ(gl.Strings({"glUseProgram", "glActiveTexture", "glBindTexture"}),
                  ProgramAndTextures(effect.m_currentProgram, {5, 6}));
    }
    EXPECT_EQ(gl.Live(GLObjectKind::Program).size(), 1u);
    gl.Clear();
    effect.Remove();
    EXPECT_THAT(gl.Calls(), IsEmpty());
    effect.UseOptions(2);
    EXPECT_THAT(gl.ProgramTexts(effect.m_currentProgram).at(1), HasSubstr("#define USE_NOISE\n"))
        << "noise is an option all the same";
}

TEST_F(SSAO, IsNamedByItsOptions)
{
    std::string name;
    effect.CreateProgramForOptions(3, name);
    EXPECT_EQ(name, "SSAOEffectES20|USE_MIST|USE_NOISE");
}

TEST_F(SSAO, HandsItsSettingsToTheProgram)
{
    effect.SetDimensions(30, 20);
    effect.SetNearFar(2.0f, 9.0f);
    effect.Bind();
    effect.BindMeshUniforms(nullptr);
    EXPECT_THAT(gl.Uniform("uRenderedTextureWidth"), ElementsAre(30.0f));
    EXPECT_THAT(gl.Uniform("uRenderedTextureHeight"), ElementsAre(20.0f));
    EXPECT_THAT(gl.Uniform("uDepthTexture"), ElementsAre(0.0f));
    EXPECT_THAT(gl.Uniform("uRenderedTexture"), ElementsAre(1.0f));
    EXPECT_THAT(gl.Uniform("uZNear"), ElementsAre(2.0f));
    EXPECT_THAT(gl.Uniform("uZFar"), ElementsAre(9.0f));
    EXPECT_TRUE(gl.Uniform("uPart").empty()) << "a whole picture has none";
    effect.SetPart(64, 128, 32, 16, 640, 480);
    effect.Bind();
    effect.BindMeshUniforms(nullptr);
    EXPECT_THAT(gl.Uniform("uPart"), ElementsAre(64.0f, 128.0f, 32.0f, 16.0f));
    EXPECT_THAT(gl.Uniform("uWhole"), ElementsAre(640.0f, 480.0f));
}

TEST_F(SSAO, TextureCoordinatesAreReadWhereTheMeshHasThemAndDisabledInAnyCase)
{
    for (const EffectStage::Streams streams : {EffectStage::Bare, EffectStage::Texture})
    {
        SCOPED_TRACE(streams);
        effect.Bind();
        ExpectScreenStreams(gl, stage, effect, streams, 2);
    }
}

TEST(ScalableAmbientObscurance, StandsInForItsProgramWithNoneAndTouchesNoAttribute)
{
    GLRecorder gl;
    gl.SetCompileResult(GL_FRAGMENT_SHADER, 0);
    ::testing::internal::CaptureStderr();
    OpenStub effect;
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "Error compiling fragment shader\n");
    EXPECT_EQ(effect.m_currentProgram, 0u);
    EXPECT_EQ(gl.LiveCount(), 0u);
    EffectStage stage;
    MeshES20& mesh = stage.AddMesh(EffectStage::Texture);
    gl.Clear();
    effect.BindMeshAttributes(&mesh);
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST(ScalableAmbientObscurance, HasTheShapeOfItsSibling)
{
    // A compiler without complaints, as the stand-in is, lets all of it be seen.
    GLRecorder gl;
    // The unfinished source names no sizes.
    gl.SetUniformLocation("uRenderedTextureWidth", 90);
    gl.SetUniformLocation("uRenderedTextureHeight", 91);
    OpenStub effect;
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
        EXPECT_EQ(gl.Strings(), ProgramAndTextures(effect.m_currentProgram, {5, 6}));
    }
    gl.Clear();
    effect.BindMeshUniforms(nullptr);
    EXPECT_THAT(gl.Uniform("uDepthTexture"), ElementsAre(0.0f));
    EXPECT_THAT(gl.Uniform("uRenderedTexture"), ElementsAre(1.0f));
    EXPECT_THAT(gl.Uniform("uRenderedTextureWidth"), ElementsAre(30.0f));
    EXPECT_THAT(gl.Uniform("uRenderedTextureHeight"), ElementsAre(20.0f));
    EffectStage stage;
    ExpectScreenStreams(gl, stage, effect, EffectStage::Texture, 1);
    gl.Clear();
    effect.Remove();
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

} // namespace OV::Test
