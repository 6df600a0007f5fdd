#include "orvane/effects/BasicMaterialEffectES20.h"

#include "orvane/effects/SkySettings.h"
#include "tests/effects/CallTexts.h"
#include "tests/effects/EffectChecks.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

#include <cmath>
#include <limits>

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

using Lines = std::vector<std::string>;

/// Opens the state and the program of the effect.
class OpenEffect : public BasicMaterialEffectES20
{
public:
    explicit OpenEffect(bool isAdditive = false) : BasicMaterialEffectES20(nullptr, isAdditive) {}

    using BasicMaterialEffectES20::additive;
    using BasicMaterialEffectES20::blendEnabled;
    using BasicMaterialEffectES20::hasNormals;
    using BasicMaterialEffectES20::lit;
    using BasicMaterialEffectES20::m_camera;
    using BasicMaterialEffectES20::m_currentProgram;
    using BasicMaterialEffectES20::m_programsByOptions;
    using BasicMaterialEffectES20::m_uniformNames;
};

class BasicMaterialEffect : public ::testing::Test
{
protected:
    BasicMaterialEffect() { SkySettings::inst().SetUseFog(false); }

    Lines Apply() { return ReadApply(gl, stage, effect); }

    std::string Use() const { return "glUseProgram(" + std::to_string(effect.m_currentProgram) + ")"; }

    /// The mask of the program in use.
    std::uint64_t Mask() const { return OptionsOf(effect.m_currentProgram, effect.m_programsByOptions); }

    EffectSettingsGuard settings;
    GLRecorder gl;
    EffectStage stage;
    OpenEffect effect;
};

std::string BlendFunc(GLenum source, GLenum destination)
{
    return "glBlendFunc(" + std::to_string(source) + ", " + std::to_string(destination) + ")";
}

std::string Pointer(int attribute, int components, int stride, int offset)
{
    return "glVertexAttribPointer(" + std::to_string(attribute) + ", " + std::to_string(components) + ", " +
           std::to_string(GL_FLOAT) + ", 0, " + std::to_string(stride) + ", " + std::to_string(offset) + ")";
}

const std::string kIdentity = "{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}";

} // namespace

TEST_F(BasicMaterialEffect, HasTheStatedUniformTable)
{
    Apply();
    const Lines expected = {"u_ambient",         "u_color",        "u_enableLight",     "u_fogColor",
                            "u_fogRange",        "u_hScale",       "u_isDoubleSided",   "u_isMirrored",
                            "u_isShowFaceSides", "u_lightDir",     "u_mvpMatrix",       "u_normalMatrix",
                            "u_pointSize",       "u_stippleColor", "u_stippleOffset",   "u_stippleSize",
                            "u_vScale",          "u_worldTransform", "u_numClipPlanes", "u_clipPlaneNormals",
                            "u_clipPlanePositions", "u_pocheColor", "u_pocheColorEnabled"};
    EXPECT_EQ(UniformTable(effect.m_uniformNames), expected);
}

TEST_F(BasicMaterialEffect, BindsItsThreeAttributes)
{
    effect.Apply(&stage.data, &stage.camera);
    EXPECT_THAT(BoundAttributes(gl), ElementsAre("0a_position", "1a_normal", "2a_texture"));
}

TEST_F(BasicMaterialEffect, IsNamedByItsOptions)
{
    std::string name;
    effect.CreateProgramForOptions(7, name);
    EXPECT_EQ(name, "BasicMaterialEffect|TEXTURE|FOG|STIPPLING");
}

TEST_F(BasicMaterialEffect, TheMaskFollowsTextureFogAndStippling)
{
    Apply();
    EXPECT_EQ(Mask(), 0u);
    stage.data.textureId = 5;
    Apply();
    EXPECT_EQ(Mask(), 1u);
    SkySettings::inst().SetUseFog(true);
    Apply();
    EXPECT_EQ(Mask(), 3u);
    stage.material->stippling = true;
    Apply();
    EXPECT_EQ(Mask(), 7u);
    stage.data.textureId = 0;
    SkySettings::inst().SetUseFog(false);
    Apply();
    EXPECT_EQ(Mask(), 4u);
}

TEST_F(BasicMaterialEffect, ATextureStillToComeCountsAsNone)
{
    stage.data.textureId = MaterialES20::PendingTexture;
    stage.material->hasAlpha = true;
    EXPECT_THAT(Apply(), Contains(BindTexture(0)));
    EXPECT_EQ(Mask(), 0u);
    EXPECT_FALSE(effect.blendEnabled);
    stage.data.textureId = 0;
}

TEST_F(BasicMaterialEffect, AppliesAnUnlitPlainMaterialInOrder)
{
    stage.material->SetAmbient(Color(0.25f, 0.5f, 0.75f));
    stage.material->SetDiffuse(Color(0.5f, 0.125f, 1.0f));
    stage.material->pointSize = 3.0f;
    const Lines lines = Apply();
    EXPECT_THAT(lines, ElementsAre(Use(), Unit(0), BindTexture(0), "u_enableLight(0)",
                                     "u_ambient(0.25, 0.5, 0.75, 1)", "u_color(0.5, 0.125, 1, 1)",
                                     "u_pointSize(3)"));
    EXPECT_EQ(effect.m_camera, &stage.camera);
    EXPECT_FALSE(effect.lit);
}

TEST_F(BasicMaterialEffect, AppliesEverythingInOrder)
{
    SkySettings::inst().SetUseFog(true);
    SkySettings::inst().SetFogStart(10.0f);
    SkySettings::inst().SetFogEnd(20.0f);
    SkySettings::inst().SetHorizonColor(Color(0.5f, 0.25f, 0.125f, 1.0f));
    stage.AddLight().SetLocalDirection(Vector(0, -1, 0));
    stage.Update();
    stage.material->stippling = true;
    stage.material->stippleColor = Color(0, 1, 0, 1);
    stage.material->stippleOffset = 8.0f;
    stage.material->stippleSize = 2.0f;
    stage.material->SetDiffuse(Color(0.5f, 0.5f, 0.5f, 0.5f));
    stage.material->SetAmbient(Color(0.25f, 0.25f, 0.25f));
    stage.data.textureId = 9;
    stage.data.uScale = 2.0f;
    stage.data.vScale = 4.0f;
    const Lines lines = Apply();
    EXPECT_THAT(lines,
                ElementsAre(Use(), "u_fogRange(10, 20)", "u_fogColor(0.5, 0.25, 0.125, 1)",
                            "u_stippleColor(0, 1, 0, 1)", "u_stippleOffset(8)", "u_stippleSize(2)",
                            Enable(GL_BLEND), BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA), Unit(0),
                            BindTexture(9), "u_hScale(0.5)", "u_vScale(0.25)", "u_enableLight(1)",
                            "u_ambient(0.25, 0.25, 0.25, 1)", "u_lightDir(0, 1, 0)",
                            "u_color(0.5, 0.5, 0.5, 0.5)", "u_pointSize(1)"));
    EXPECT_TRUE(effect.lit);
    stage.data.textureId = 0;
}

TEST_F(BasicMaterialEffect, WithoutALightOrASceneNothingIsLit)
{
    Apply();
    EXPECT_FALSE(effect.lit);
    stage.AddLight();
    Apply();
    EXPECT_TRUE(effect.lit);
    stage.material->SetFlags(MaterialFlagUnlit);
    EXPECT_THAT(Apply(), Not(Contains(StartsWith("u_lightDir"))));
    EXPECT_FALSE(effect.lit);
    stage.material->ClearFlags(MaterialFlagUnlit);
    stage.scene.RemoveMaterial(stage.material);
    Apply();
    EXPECT_FALSE(effect.lit);
    stage.scene.AddMaterial(stage.material);
}

TEST_F(BasicMaterialEffect, OnlyTheFirstLightCounts)
{
    LightNode& first = stage.AddLight();
    LightNode& second = stage.AddLight();
    first.SetLocalDirection(Vector(0, 0, -1));
    second.SetLocalDirection(Vector(0, -1, 0));
    first.SetColor(0.5f, 1.0f, 0.25f);
    second.SetColor(0.0f, 0.0f, 0.0f);
    stage.Update();
    stage.material->ignoreLightColor = false;
    EXPECT_THAT(Apply(), IsSupersetOf({std::string("u_lightDir(0, 0, 1)"), std::string("u_color(0.5, 1, 0.25, 1)")}));
}

TEST_F(BasicMaterialEffect, TheLightColourCountsUnlessIgnored)
{
    stage.AddLight().SetColor(0.5f, 0.25f, 1.0f);
    stage.material->SetDiffuse(Color(0.5f, 1.0f, 0.125f, 0.75f));
    EXPECT_THAT(Apply(), Contains("u_color(0.5, 1, 0.125, 0.75)"));
    stage.material->ignoreLightColor = false;
    EXPECT_THAT(Apply(), Contains("u_color(0.25, 0.25, 0.125, 0.75)"));
}

TEST_F(BasicMaterialEffect, BlendsASeeThroughColourOrTextureAndUndoesIt)
{
    const Lines blending = {Enable(GL_BLEND), BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)};
    EXPECT_THAT(Apply(), Not(Contains(StartsWith("glEnable"))));
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), IsEmpty());

    stage.material->SetOpacity(0.999f);
    EXPECT_THAT(Apply(), IsSupersetOf(blending));
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre(Disable(GL_BLEND)));
    EXPECT_FALSE(effect.blendEnabled);
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), IsEmpty());

    stage.material->SetOpacity(1.0f);
    stage.material->hasAlpha = true;
    EXPECT_THAT(Apply(), Not(Contains(StartsWith("glEnable")))); // alpha of a texture that isn't there

    stage.data.textureId = 3;
    EXPECT_THAT(Apply(), IsSupersetOf(blending));
    stage.material->hasAlpha = false;
    effect.Remove();
    EXPECT_THAT(Apply(), Not(Contains(StartsWith("glEnable"))));
    stage.data.textureId = 0;
}

TEST_F(BasicMaterialEffect, AdditiveBlendsEvenAnOpaqueMaterialWithoutATexture)
{
    OpenEffect additive(true);
    additive.Apply(&stage.data, &stage.camera);
    EXPECT_THAT(ReadCalls(gl), IsSupersetOf({Enable(GL_BLEND), BlendFunc(GL_ONE, GL_ONE)}));
    EXPECT_TRUE(additive.blendEnabled);
    additive.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre(Disable(GL_BLEND)));
}

TEST_F(BasicMaterialEffect, ATextureScaleThatIsNotPositiveAndFiniteGivesOne)
{
    stage.data.textureId = 3;
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::pair<float, std::string> cases[] = {{4.0f, "(0.25)"},     {0.5f, "(2)"},    {0.0f, "(1)"},
                                                   {-0.0f, "(1)"},       {-2.0f, "(1)"},   {infinity, "(1)"},
                                                   {-infinity, "(1)"},   {nan, "(1)"},     {1.0f, "(1)"}};
    for (const auto& [scale, expected] : cases)
    {
        stage.data.uScale = scale;
        stage.data.vScale = 8.0f;
        EXPECT_THAT(Apply(), IsSupersetOf({"u_hScale" + expected, std::string("u_vScale(0.125)")})) << scale;
        stage.data.uScale = 8.0f;
        stage.data.vScale = scale;
        EXPECT_THAT(Apply(), IsSupersetOf({std::string("u_hScale(0.125)"), "u_vScale" + expected})) << scale;
    }
    stage.data.textureId = 0;
}

TEST_F(BasicMaterialEffect, MonotoneMakesTheFogWhite)
{
    SkySettings::inst().SetUseFog(true);
    SkySettings::inst().SetHorizonColor(Color(0.5f, 0.25f, 0.125f, 0.5f));
    SkySettings::inst().SetMonotone(true);
    EXPECT_THAT(Apply(), Contains("u_fogColor(1, 1, 1, 1)"));
    EXPECT_TRUE(SkySettings::inst().GetFogColor().IsExactlyEqual(Color(0.5f, 0.25f, 0.125f, 0.5f)));
}

TEST_F(BasicMaterialEffect, DrawsALitMeshInOrder)
{
    stage.AddLight();
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals | EffectStage::Texture);
    stage.Update();
    stage.data.textureId = 3;
    Apply();
    effect.BindMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl),
                ElementsAre(Pointer(0, 3, 64, 0), "glEnableVertexAttribArray(0)", Pointer(1, 3, 64, 12),
                            "glEnableVertexAttribArray(1)", Pointer(2, 2, 64, 24), "glEnableVertexAttribArray(2)",
                            "u_isShowFaceSides(0)"));
    EXPECT_TRUE(effect.hasNormals);
    effect.BindMeshUniforms(&stage.Node());
    const Lines uniforms = ReadCalls(gl);
    ASSERT_EQ(uniforms.size(), 7u);
    EXPECT_THAT(uniforms[0], StartsWith("u_mvpMatrix({"));
    EXPECT_THAT(std::vector<std::string>(uniforms.begin() + 1, uniforms.end()),
                ElementsAre("u_normalMatrix({1, 0, 0, 0, 1, 0, 0, 0, 1})", "u_isMirrored(0)",
                            "u_worldTransform(" + kIdentity + ")", "u_numClipPlanes(0)",
                            "u_pocheColor({0, 0, 0, 1})", "u_pocheColorEnabled(1)"));
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), IsEmpty());
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl),
                ElementsAre("glDisableVertexAttribArray(0)", "glDisableVertexAttribArray(1)",
                            "glDisableVertexAttribArray(2)"));
    stage.data.textureId = 0;
}

TEST_F(BasicMaterialEffect, DrawsAnUnlitMeshWithoutItsNormals)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    stage.Update();
    Apply();
    effect.BindMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), ElementsAre(Pointer(0, 3, 32, 0), "glEnableVertexAttribArray(0)",
                                           "u_isShowFaceSides(0)"));
    effect.BindMeshUniforms(&stage.Node());
    EXPECT_THAT(ReadCalls(gl), ElementsAre(StartsWith("u_mvpMatrix(")));
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), IsEmpty());
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre("glDisableVertexAttribArray(0)"));
}

TEST_F(BasicMaterialEffect, AMeshWithoutNormalsIsUnlitAndTheNextOneIsLitAgain)
{
    stage.AddLight();
    MeshES20& bare = stage.AddMesh(EffectStage::Bare);
    MeshNode& bareNode = stage.Node();
    MeshES20& shaded = stage.AddMesh(EffectStage::Normals);
    stage.Update();
    Apply();
    EXPECT_THAT(gl.Uniform("u_enableLight"), ElementsAre(1.0f));
    effect.BindMeshAttributes(&bare);
    EXPECT_THAT(ReadCalls(gl), ElementsAre(Pointer(0, 3, 32, 0), "glEnableVertexAttribArray(0)",
                                           "u_enableLight(0)", "u_isShowFaceSides(0)"));
    EXPECT_FALSE(effect.hasNormals);
    effect.BindMeshUniforms(&bareNode);
    EXPECT_THAT(ReadCalls(gl), ElementsAre(StartsWith("u_mvpMatrix(")));
    effect.ReleaseMeshAttributes(&bare);
    EXPECT_THAT(ReadCalls(gl), ElementsAre("u_enableLight(1)"));
    effect.BindMeshAttributes(&shaded);
    EXPECT_TRUE(effect.hasNormals);
    EXPECT_THAT(ReadCalls(gl), Not(Contains(StartsWith("u_enableLight"))));
    effect.ReleaseMeshAttributes(&shaded);
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre("glDisableVertexAttribArray(0)", "glDisableVertexAttribArray(1)"));
}

TEST_F(BasicMaterialEffect, TextureCoordinatesAreLeftOutWithoutATextureOption)
{
    gl.SetAttribLocation("a_texture", -1);
    MeshES20& mesh = stage.AddMesh(EffectStage::Texture);
    Apply();
    effect.BindMeshAttributes(&mesh);
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_EQ(gl.Count("glVertexAttribPointer"), 1u);
    EXPECT_EQ(gl.Count("glDisableVertexAttribArray", {2}), 0u);
}

TEST_F(BasicMaterialEffect, ATexturedMaterialCopesWithAMeshWithoutCoordinates)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Bare);
    stage.data.textureId = 3;
    Apply();
    effect.BindMeshAttributes(&mesh);
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_EQ(gl.Count("glVertexAttribPointer"), 1u);
    EXPECT_EQ(gl.Count("glDisableVertexAttribArray", {2}), 0u);
    stage.data.textureId = 0;
}

TEST_F(BasicMaterialEffect, OffsetsAreThoseOfTheMesh)
{
    stage.AddLight();
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    mesh.positionOffset = 960;
    mesh.normalOffset = 972;
    Apply();
    effect.BindMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), IsSupersetOf({Pointer(0, 3, 32, 960), Pointer(1, 3, 32, 972)}));
    effect.ReleaseMeshAttributes(&mesh);
}

TEST_F(BasicMaterialEffect, FaceSidesFollowTheFlagOfTheMesh)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Bare);
    Apply();
    mesh.GetMesh()->SetFlags(MeshFlagShowFaceSides);
    effect.BindMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), Contains("u_isShowFaceSides(1)"));
    mesh.GetMesh()->ClearFlags(MeshFlagShowFaceSides);
    effect.BindMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), Contains("u_isShowFaceSides(0)"));
}

TEST_F(BasicMaterialEffect, MatricesAreThoseOfCameraAndNode)
{
    stage.AddLight();
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    Transform place;
    place.SetScale(Vector(2, 4, 8));
    place.SetPosition(Vector(1, 2, 3));
    stage.Node().SetLocal(place);
    stage.Update();
    Apply();
    effect.BindMeshAttributes(&mesh);
    effect.BindMeshUniforms(&stage.Node());
    Matrix expected;
    expected.Multiply(stage.camera.GetMVP(), *stage.Node().GetGlobalMatrix());
    EXPECT_EQ(gl.Uniform("u_mvpMatrix"), std::vector<float>(expected.m, expected.m + 16));
    EXPECT_THAT(gl.Uniform("u_worldTransform"), ElementsAre(2, 0, 0, 0, 0, 4, 0, 0, 0, 0, 8, 0, 1, 2, 3, 1));
    EXPECT_THAT(gl.Uniform("u_normalMatrix"), ElementsAre(0.5f, 0, 0, 0, 0.25f, 0, 0, 0, 0.125f));
    EXPECT_THAT(gl.Uniform("u_isMirrored"), ElementsAre(0));
    const GLCall* upload = gl.Find("glUniformMatrix4fv");
    ASSERT_NE(upload, nullptr);
    EXPECT_EQ(upload->Int(2), GL_FALSE);
    effect.ReleaseMeshAttributes(&mesh);
}

TEST_F(BasicMaterialEffect, ClipPlanesReachLitMeshesThatAreClipped)
{
    EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(5, 0, 0));
    EffectES20::SetPocheColor(glm::vec4(0.5f, 0.25f, 0.125f, 1.0f));
    EffectES20::EnablePocheColor(false);
    stage.AddLight();
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    stage.Update();
    Apply();
    effect.BindMeshAttributes(&mesh);
    gl.Clear();
    effect.clipPlanesActive = false;
    effect.BindMeshUniforms(&stage.Node());
    EXPECT_THAT(ReadCalls(gl), Contains("u_numClipPlanes(0)"));
    effect.clipPlanesActive = true;
    EffectES20::ForgetUniformValues();
    effect.BindMeshUniforms(&stage.Node());
    const Lines lines = ReadCalls(gl);
    ASSERT_EQ(lines.size(), 9u);
    EXPECT_THAT(std::vector<std::string>(lines.begin() + 4, lines.end()),
                ElementsAre("u_clipPlaneNormals({1, 0, 0})", "u_clipPlanePositions({5, 0, 0})",
                            "u_numClipPlanes(1)", "u_pocheColor({0.5, 0.25, 0.125, 1})",
                            "u_pocheColorEnabled(0)"));
    effect.ReleaseMeshAttributes(&mesh);
}

TEST_F(BasicMaterialEffect, AMeshDrawnUnlitNeverSetsTheClipPlanes)
{
    EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(5, 0, 0));
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    stage.Update();
    Apply();
    effect.clipPlanesActive = true;
    effect.BindMeshAttributes(&mesh);
    effect.BindMeshUniforms(&stage.Node());
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), Not(Contains(StartsWith("u_numClipPlanes"))));
}

TEST_F(BasicMaterialEffect, LitMeshesLeaveNothingThatUnlitOnesWouldShow)
{
    EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(5, 0, 0));
    stage.AddLight();
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    Transform mirror;
    mirror.SetScale(Vector(-1, 1, 1));
    stage.Node().SetLocal(mirror);
    stage.Update();
    Apply();
    effect.clipPlanesActive = true;
    effect.BindMeshAttributes(&mesh);
    effect.BindMeshUniforms(&stage.Node());
    EXPECT_THAT(gl.Uniform("u_isMirrored"), ElementsAre(1));
    gl.Clear();
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), ElementsAre("u_numClipPlanes(0)", "u_isMirrored(0)"));
    effect.BindMeshAttributes(&mesh);
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), Not(Contains(StartsWith("u_numClipPlanes"))));
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre("glDisableVertexAttribArray(0)", "glDisableVertexAttribArray(1)"));
}

TEST_F(BasicMaterialEffect, ASteadyDrawLooksNothingUp)
{
    SkySettings::inst().SetUseFog(true);
    stage.AddLight();
    stage.data.textureId = 3;
    stage.material->stippling = true;
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals | EffectStage::Texture);
    stage.Update();
    Apply();
    gl.Clear();
    effect.Apply(&stage.data, &stage.camera);
    effect.BindMeshAttributes(&mesh);
    effect.BindMeshUniforms(&stage.Node());
    effect.ReleaseMeshAttributes(&mesh);
    effect.Remove();
    EXPECT_EQ(gl.Count("glGetUniformLocation"), 0u);
    EXPECT_EQ(gl.Count("glGetAttribLocation"), 0u);
    EXPECT_EQ(gl.Count("glGetError"), 0u);
    stage.data.textureId = 0;
}

TEST_F(BasicMaterialEffect, AFailedProgramIsDrawnWithInSilence)
{
    gl.SetLinkResult(0);
    stage.AddLight();
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    stage.Update();
    EXPECT_THAT(Apply(), ElementsAre("glUseProgram(0)", Unit(0), BindTexture(0)));
    effect.BindMeshAttributes(&mesh);
    effect.BindMeshUniforms(&stage.Node());
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), Not(Contains(StartsWith("?"))));
}

} // namespace OV::Test
