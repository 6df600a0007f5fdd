#include "orvane/effects/SkyEffectES20.h"

#include "orvane/effects/SkySettings.h"
#include "tests/effects/EffectChecks.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

namespace OV::Test
{

namespace
{

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::StartsWith;

class OpenEffect : public SkyEffectES20
{
public:
    OpenEffect() : SkyEffectES20(nullptr) {}

    using SkyEffectES20::m_currentProgram;
    using SkyEffectES20::m_uniformNames;
};

class SkyEffect : public ::testing::Test
{
protected:
    std::vector<std::string> Apply(SkyEffectES20& effect)
    {
        gl.Clear();
        effect.Apply(&stage.data, &stage.camera);
        return ReadCalls(gl);
    }

    EffectSettingsGuard settings;
    GLRecorder gl;
    EffectStage stage;
};

const std::string kDepthTest = "(" + std::to_string(GL_DEPTH_TEST) + ")";
const std::string kBindNone = "glBindTexture(" + std::to_string(GL_TEXTURE_2D) + ", 0)";

} // namespace

TEST_F(SkyEffect, LinksItsProgramAtConstructionAndDeletesIt)
{
    {
        OpenEffect effect;
        EXPECT_NE(effect.m_currentProgram, 0u);
        EXPECT_THAT(effect.m_uniformNames, IsEmpty());
        EXPECT_THAT(BoundAttributes(gl), ElementsAre("0a_position", "1a_texture"));
    }
    EXPECT_EQ(gl.LiveCount(), 0u);
}

TEST_F(SkyEffect, KeepsTheBaseWithoutOptions)
{
    OpenEffect effect;
    std::string name;
    EXPECT_EQ(effect.CreateProgramForOptions(1, name), 0u);
}

TEST_F(SkyEffect, FetchesEachLocationOnce)
{
    OpenEffect effect;
    EXPECT_EQ(gl.Count("glGetUniformLocation"), 6u);
    EXPECT_EQ(gl.Count("glGetAttribLocation"), 2u);
    gl.Clear();
    effect.Apply(&stage.data, &stage.camera);
    effect.Apply(&stage.data, &stage.camera);
    EXPECT_EQ(gl.Count("glGetUniformLocation"), 0u);
    EXPECT_EQ(gl.Count("glGetAttribLocation"), 0u);
}

TEST_F(SkyEffect, AppliesInOrderAndRemoves)
{
    OpenEffect effect;
    SkySettings::inst().SetHorizonColor(Color(0.5f, 0.25f, 0.125f, 1.0f));
    SkySettings::inst().SetSkyColor(Color(0.25f, 0.25f, 0.5f, 1.0f));
    SkySettings::inst().SetSkyUpperColor(Color(0.0f, 0.0f, 1.0f, 1.0f));
    SkySettings::inst().SetHorizonStop(0.25f);
    SkySettings::inst().SetSkyStop(0.5f);
    EXPECT_THAT(Apply(effect),
                ElementsAre("glUseProgram(" + std::to_string(effect.m_currentProgram) + ")",
                            "u_horizonColor(0.5, 0.25, 0.125, 1)", "u_skyColor(0.25, 0.25, 0.5, 1)",
                            "u_upperSkyColor(0, 0, 1, 1)", "u_horizonStop(0.25)", "u_skyStop(0.5)",
                            "glDisable" + kDepthTest, "glActiveTexture(" + std::to_string(GL_TEXTURE0) + ")",
                            kBindNone));
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre("glEnable" + kDepthTest, kBindNone));
}

TEST_F(SkyEffect, MonotoneIsWhiteWhateverTheRest)
{
    OpenEffect effect;
    SkySettings::inst().SetHorizonColor(Color(0.5f, 0.25f, 0.125f, 0.5f));
    SkySettings::inst().SetMonotone(true);
    SkySettings::inst().SetUseSkyColor(false);
    EXPECT_THAT(Apply(effect), IsSupersetOf({"u_horizonColor(1, 1, 1, 1)", "u_skyColor(1, 1, 1, 1)",
                                             "u_upperSkyColor(1, 1, 1, 1)"}));
}

TEST_F(SkyEffect, WithoutSkyColourTheHorizonIsEverywhere)
{
    OpenEffect effect;
    SkySettings::inst().SetHorizonColor(Color(0.5f, 0.25f, 0.125f, 0.5f));
    SkySettings::inst().SetUseSkyColor(false);
    EXPECT_THAT(Apply(effect),
                IsSupersetOf({"u_horizonColor(0.5, 0.25, 0.125, 0.5)", "u_skyColor(0.5, 0.25, 0.125, 0.5)",
                              "u_upperSkyColor(0.5, 0.25, 0.125, 0.5)"}));
}

TEST_F(SkyEffect, DrawsAMesh)
{
    OpenEffect effect;
    MeshES20& mesh = stage.AddMesh(EffectStage::Texture);
    stage.Update();
    Apply(effect);
    effect.BindMeshAttributes(&mesh);
    const std::string floats = std::to_string(GL_FLOAT);
    EXPECT_THAT(ReadCalls(gl),
                ElementsAre("glVertexAttribPointer(0, 3, " + floats + ", 0, 32, 0)",
                            "glEnableVertexAttribArray(0)",
                            "glVertexAttribPointer(1, 2, " + floats + ", 0, 32, 12)",
                            "glEnableVertexAttribArray(1)"));
    effect.BindMeshUniforms(&stage.Node());
    Matrix expected;
    expected.Multiply(stage.camera.GetMVP(), *stage.Node().GetGlobalMatrix());
    EXPECT_EQ(gl.Uniform("u_mvpMatrix"), std::vector<float>(expected.m, expected.m + 16));
    gl.Clear();
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), ElementsAre("glDisableVertexAttribArray(1)", "glDisableVertexAttribArray(0)"));
}

TEST_F(SkyEffect, CopesWithAMeshWithoutTextureCoordinates)
{
    OpenEffect effect;
    MeshES20& mesh = stage.AddMesh(EffectStage::Bare);
    Apply(effect);
    effect.BindMeshAttributes(&mesh);
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_EQ(gl.Count("glEnableVertexAttribArray"), 1u);
    EXPECT_EQ(gl.Count("glDisableVertexAttribArray"), 1u);
}

TEST_F(SkyEffect, AFailedProgramIsDrawnWithInSilence)
{
    gl.SetLinkResult(0);
    OpenEffect effect;
    EXPECT_EQ(gl.Count("glGetUniformLocation"), 0u);
    MeshES20& mesh = stage.AddMesh(EffectStage::Texture);
    stage.Update();
    Apply(effect);
    effect.BindMeshAttributes(&mesh);
    effect.BindMeshUniforms(&stage.Node());
    effect.ReleaseMeshAttributes(&mesh);
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), Not(Contains(StartsWith("glEnableVertexAttribArray"))));
    EXPECT_EQ(gl.Count("glDeleteProgram"), 0u);
}

} // namespace OV::Test
