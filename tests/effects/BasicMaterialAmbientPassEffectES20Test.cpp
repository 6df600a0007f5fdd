#include "orvane/effects/BasicMaterialAmbientPassEffectES20.h"

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
using ::testing::Not;
using ::testing::StartsWith;

using Lines = std::vector<std::string>;

class OpenEffect : public BasicMaterialAmbientPassEffectES20
{
public:
    OpenEffect() : BasicMaterialAmbientPassEffectES20(nullptr) {}

    using BasicMaterialAmbientPassEffectES20::ambientColor;
    using BasicMaterialAmbientPassEffectES20::blendEnabled;
    using BasicMaterialAmbientPassEffectES20::lit;
    using BasicMaterialAmbientPassEffectES20::m_currentProgram;
    using BasicMaterialAmbientPassEffectES20::m_uniformNames;
};

class BasicMaterialAmbientPass : public ::testing::Test
{
protected:
    BasicMaterialAmbientPass()
    {
        SkySettings::inst().SetUseFog(false);
        stage.material->SetAmbient(Color(0.25f, 0.5f, 0.125f, 1.0f));
        stage.material->SetDiffuse(Color(0.5f, 0.25f, 0.75f, 1.0f));
    }

    Lines Apply() { return ReadApply(gl, stage, effect); }

    std::string Use() const { return "glUseProgram(" + std::to_string(effect.m_currentProgram) + ")"; }

    EffectSettingsGuard settings;
    GLRecorder gl;
    EffectStage stage;
    OpenEffect effect;
};

} // namespace

TEST_F(BasicMaterialAmbientPass, HasTheStatedUniformTable)
{
    Apply();
    const Lines expected = {"u_ambient",       "u_fogColor",       "u_fogRange",        "u_hScale",
                            "u_isMirrored",    "u_isShowFaceSides", "u_mvpMatrix",      "u_pointSize",
                            "u_stippleColor",  "u_stippleOffset",  "u_stippleSize",     "u_vScale",
                            "u_pocheColor",    "u_pocheColorEnabled", "u_shadowIntensity", "u_isShadow"};
    EXPECT_EQ(UniformTable(effect.m_uniformNames), expected);
}

TEST_F(BasicMaterialAmbientPass, BindsPositionAndTexture)
{
    effect.Apply(&stage.data, &stage.camera);
    EXPECT_THAT(BoundAttributes(gl), ElementsAre("0a_position", "1a_texture"));
}

TEST_F(BasicMaterialAmbientPass, IsNamedByItsOptions)
{
    std::string name;
    effect.CreateProgramForOptions(6, name);
    EXPECT_EQ(name, "BasicMaterialAmbientEffect|FOG|STIPPLING");
}

TEST_F(BasicMaterialAmbientPass, AppliesAPlainMaterialInOrderAndBindsNoTexture)
{
    stage.AddLight();
    const Lines lines = Apply();
    EXPECT_THAT(lines, ElementsAre(Use(), "u_isShadow(0)", "u_shadowIntensity(0.200000003)",
                                     "u_ambient(0.25, 0.5, 0.125, 1)", "u_pointSize(1)"));
    EXPECT_TRUE(effect.lit);
}

TEST_F(BasicMaterialAmbientPass, AppliesEverythingInOrder)
{
    SkySettings::inst().SetUseFog(true);
    SkySettings::inst().SetFogStart(10.0f);
    SkySettings::inst().SetFogEnd(20.0f);
    EffectES20::SetShadowIntensity(0.5f);
    stage.AddLight();
    stage.material->stippling = true;
    stage.material->SetOpacity(0.5f);
    stage.data.textureId = 9;
    stage.data.uScale = 2.0f;
    stage.data.vScale = 0.0f;
    const std::string blendFunc = "glBlendFunc(" + std::to_string(GL_SRC_ALPHA) + ", " +
                                  std::to_string(GL_ONE_MINUS_SRC_ALPHA) + ")";
    const Lines lines = Apply();
    EXPECT_THAT(lines,
                ElementsAre(Use(), "glActiveTexture(" + std::to_string(GL_TEXTURE0) + ")",
                            "glBindTexture(" + std::to_string(GL_TEXTURE_2D) + ", 9)", "u_hScale(0.5)",
                            "u_vScale(1)", "u_isShadow(0)", "u_shadowIntensity(0.5)", "u_fogRange(10, 20)",
                            "u_fogColor(1, 1, 1, 1)", "glEnable(" + std::to_string(GL_BLEND) + ")", blendFunc,
                            "u_ambient(0.25, 0.5, 0.125, 0.5)", "u_pointSize(1)", "u_stippleColor(1, 1, 1, 1)",
                            "u_stippleOffset(10)", "u_stippleSize(1)"));
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre("glDisable(" + std::to_string(GL_BLEND) + ")"));
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), IsEmpty());
    stage.data.textureId = 0;
}

TEST_F(BasicMaterialAmbientPass, TheAmbientOfTheFirstLightCountsWhileItHasOne)
{
    LightNode& light = stage.AddLight();
    stage.AddLight().SetAmbient(0.0f, 0.0f, 0.0f);
    EXPECT_THAT(Apply(), Contains("u_ambient(0.25, 0.5, 0.125, 1)"));
    light.SetAmbient(0.5f, 0.25f, 1.0f);
    EXPECT_THAT(Apply(), Contains("u_ambient(0.125, 0.125, 0.125, 1)"));
    light.ClearAmbient();
    EXPECT_THAT(Apply(), Contains("u_ambient(0.25, 0.5, 0.125, 1)"));
}

TEST_F(BasicMaterialAmbientPass, AnUnlitMaterialShowsAtFullColour)
{
    EXPECT_THAT(Apply(), Contains("u_ambient(0.75, 0.75, 0.875, 1)"));
    EXPECT_FALSE(effect.lit);
    // An unlit material takes the ambient of the light all the same.
    stage.material->SetFlags(MaterialFlagUnlit);
    stage.AddLight().SetAmbient(0.0f, 0.5f, 0.0f);
    EXPECT_THAT(Apply(), Contains("u_ambient(0.5, 0.5, 0.75, 1)"));
    EXPECT_FALSE(effect.lit);
}

TEST_F(BasicMaterialAmbientPass, AlphaIsTheOpacity)
{
    stage.material->SetAmbient(Color(0.25f, 0.25f, 0.25f, 0.125f));
    stage.material->SetOpacity(0.75f);
    EXPECT_THAT(Apply(), Contains("u_ambient(0.75, 0.5, 1, 0.75)"));
}

TEST_F(BasicMaterialAmbientPass, ShadowNeedsTheSwitchAndThePhongType)
{
    EXPECT_THAT(Apply(), Contains("u_isShadow(0)"));
    EffectES20::SetShadow(true);
    EXPECT_THAT(Apply(), Contains("u_isShadow(0)"));
    EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterialPhong);
    EXPECT_THAT(Apply(), Contains("u_isShadow(1)"));
    EffectES20::SetShadow(false);
    EXPECT_THAT(Apply(), Contains("u_isShadow(0)"));
}

TEST_F(BasicMaterialAmbientPass, DrawsAMeshAndLeavesThePositionEnabled)
{
    stage.AddLight();
    stage.data.textureId = 4;
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals | EffectStage::Texture);
    stage.Update();
    Apply();
    const std::string floats = std::to_string(GL_FLOAT);
    effect.BindMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl),
                ElementsAre("glVertexAttribPointer(0, 3, " + floats + ", 0, 64, 0)",
                            "glEnableVertexAttribArray(0)",
                            "glVertexAttribPointer(1, 2, " + floats + ", 0, 64, 24)",
                            "glEnableVertexAttribArray(1)", "u_isShowFaceSides(0)"));
    effect.BindMeshUniforms(&stage.Node());
    EXPECT_THAT(ReadCalls(gl), ElementsAre(StartsWith("u_mvpMatrix("), "u_isMirrored(0)",
                                           "u_pocheColor({0, 0, 0, 1})", "u_pocheColorEnabled(1)"));
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), IsEmpty());
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre("glDisableVertexAttribArray(1)"));
    stage.data.textureId = 0;
}

TEST_F(BasicMaterialAmbientPass, AMeshWithoutNormalsInALitMaterialShowsItsWholeColour)
{
    stage.AddLight();
    stage.material->SetDiffuse(Color(0.5f, 0.25f, 0.75f, 0.5f));
    MeshES20& bare = stage.AddMesh(EffectStage::Bare);
    MeshES20& shaded = stage.AddMesh(EffectStage::Normals);
    stage.Update();
    Apply();
    effect.BindMeshAttributes(&bare);
    EXPECT_THAT(ReadCalls(gl), Contains("u_ambient(0.75, 0.75, 0.875, 0.5)"));
    effect.ReleaseMeshAttributes(&bare);
    EXPECT_THAT(ReadCalls(gl), ElementsAre("u_ambient(0.25, 0.5, 0.125, 0.5)"));
    effect.BindMeshAttributes(&shaded);
    effect.ReleaseMeshAttributes(&shaded);
    EXPECT_THAT(ReadCalls(gl), Not(Contains(StartsWith("u_ambient"))));
}

TEST_F(BasicMaterialAmbientPass, AMeshWithoutNormalsInAnUnlitMaterialKeepsTheColourOfThePass)
{
    MeshES20& bare = stage.AddMesh(EffectStage::Bare);
    Apply();
    effect.BindMeshAttributes(&bare);
    effect.ReleaseMeshAttributes(&bare);
    EXPECT_THAT(ReadCalls(gl), Not(Contains(StartsWith("u_ambient"))));
}

TEST_F(BasicMaterialAmbientPass, AMeshWithoutAMaterialOfItsOwnKeepsTheColourOfThePass)
{
    stage.AddLight();
    MeshES20& bare = stage.AddMesh(EffectStage::Bare);
    stage.material->RemoveMesh(bare.GetMesh());
    Apply();
    effect.BindMeshAttributes(&bare);
    EXPECT_THAT(ReadCalls(gl), Not(Contains(StartsWith("u_ambient"))));
    effect.ReleaseMeshAttributes(&bare);
}

TEST_F(BasicMaterialAmbientPass, AMirroredNodeSaysSo)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Bare);
    Transform mirror;
    mirror.SetScale(Vector(-1, 1, 1));
    stage.Node().SetLocal(mirror);
    stage.Update();
    Apply();
    effect.BindMeshAttributes(&mesh);
    effect.BindMeshUniforms(&stage.Node());
    EXPECT_THAT(ReadCalls(gl), Contains("u_isMirrored(1)"));
}

TEST_F(BasicMaterialAmbientPass, FaceSidesFollowTheFlagOfTheMesh)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Bare);
    mesh.GetMesh()->SetFlags(MeshFlagShowFaceSides);
    Apply();
    effect.BindMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), Contains("u_isShowFaceSides(1)"));
}

} // namespace OV::Test
