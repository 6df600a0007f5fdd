#include "orvane/effects/CrosshatchEffectES20.h"
#include "orvane/effects/MonotoneEffectES20.h"

#include "orvane/scene/NodeMaterial.h"
#include "tests/effects/CallTexts.h"
#include "tests/effects/EffectChecks.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

#include <algorithm>

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

template <class Effect>
class OpenSketch : public Effect
{
public:
    OpenSketch() : Effect(nullptr) {}

    using Effect::m_currentProgram;
    using Effect::m_uniformNames;
};

class OpenCrosshatch : public OpenSketch<CrosshatchEffectES20>
{
public:
    using CrosshatchEffectES20::hasNormals;
    using CrosshatchEffectES20::hatchTextures;
    using CrosshatchEffectES20::lit;
    using CrosshatchEffectES20::noiseTexture;
};

using OpenMonotone = OpenSketch<MonotoneEffectES20>;

template <class Effect>
class SketchEffect : public ::testing::Test
{
protected:
    ~SketchEffect() override { stage.data.textureId = 0; }

    Lines Apply()
    {
        return ReadApply(gl, stage, effect);
    }

    Lines Names() const { return UniformTable(effect.m_uniformNames); }

    EffectSettingsGuard settings;
    GLRecorder gl;
    EffectStage stage;
    Effect effect;
};

using CrosshatchEffect = SketchEffect<OpenCrosshatch>;
using MonotoneEffect = SketchEffect<OpenMonotone>;

} // namespace

TEST_F(CrosshatchEffect, HasTheStatedUniformTableAndName)
{
    Apply();
    EXPECT_THAT(Names(), ElementsAre("u_ambient", "u_ambientPass", "u_baseTexture", "u_color", "u_enableLight",
                                     "u_enableTexture", "u_hScale", "u_lightDir", "u_mvpMatrix", "u_noiseTexture",
                                     "u_normalMatrix", "u_texture0", "u_texture1", "u_texture2", "u_texture3",
                                     "u_vScale"));
    std::string name;
    effect.CreateProgramForOptions(0, name);
    EXPECT_EQ(name, "CrosshatchEffect");
}

TEST_F(CrosshatchEffect, StartsWithoutTexturesAndTakesThemByIndex)
{
    EXPECT_THAT(effect.hatchTextures, ElementsAre(0u, 0u, 0u, 0u));
    EXPECT_EQ(effect.noiseTexture, 0u);
    for (int i = -1; i < 6; ++i)
    {
        effect.SetHatchTexture(i, static_cast<unsigned>(20 + i));
    }
    effect.SetNoiseTexture(30);
    EXPECT_THAT(effect.hatchTextures, ElementsAre(20u, 21u, 22u, 23u));
    EXPECT_EQ(effect.noiseTexture, 30u);
}

TEST_F(CrosshatchEffect, AppliesAnUnlitPlainMaterialInOrder)
{
    for (int i = 0; i < 4; ++i)
    {
        effect.SetHatchTexture(i, static_cast<unsigned>(20 + i));
    }
    effect.SetNoiseTexture(30);
    stage.material->SetOpacity(0.5f);
    const Lines lines = Apply();
    EXPECT_THAT(lines,
                ElementsAre(CallText("glUseProgram", {static_cast<double>(effect.m_currentProgram)}), "u_hScale(1)",
                            "u_vScale(1)", "u_enableTexture(0)", "u_ambientPass(0)", Unit(0), BindTexture(20),
                            Unit(1), BindTexture(21), Unit(2), BindTexture(22), Unit(3), BindTexture(23), Unit(5),
                            BindTexture(30), Unit(0), "u_texture0(0)", "u_texture1(1)", "u_texture2(2)",
                            "u_texture3(3)", "u_baseTexture(4)", "u_noiseTexture(5)", "u_ambient(1, 1, 1, 1)", "u_color(1, 1, 1, 0.5)",
                            "u_enableLight(0)"));
    EXPECT_FALSE(effect.lit);
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), IsEmpty());
}

TEST_F(CrosshatchEffect, ATextureGoesToUnitFourWithTheScalesOfTheMaterial)
{
    stage.data.textureId = 9;
    stage.data.uScale = 8.0f; // not read for this kind of material
    stage.material->hatchUScale = 0.5f;
    stage.material->hatchVScale = 0.25f;
    effect.passFlag = true;
    const Lines lines = Apply();
    EXPECT_THAT(lines, IsSupersetOf({"u_hScale(0.5)", "u_vScale(0.25)", "u_enableTexture(1)", "u_ambientPass(1)"}));
    const auto unit = std::find(lines.begin(), lines.end(), Unit(4));
    ASSERT_NE(unit, lines.end());
    EXPECT_EQ(*(unit + 1), BindTexture(9));
}

TEST_F(CrosshatchEffect, ANodeMaterialTakesTheInverseOfItsScalesAndOneForZero)
{
    NodeMaterial material;
    material.hatchUScale = 7.0f;
    MaterialES20 data(&material, nullptr, nullptr, nullptr);
    data.textureId = 9;
    data.uScale = 4.0f;
    data.vScale = 0.0f;
    effect.Apply(&data, &stage.camera);
    EXPECT_THAT(ReadCalls(gl), IsSupersetOf({"u_hScale(0.25)", "u_vScale(1)"}));
    data.textureId = 0;
}

TEST_F(CrosshatchEffect, WhoIgnoresTheLightsColourTakesNoLight)
{
    LightNode& light = stage.AddLight();
    light.SetColor(0.5f, 0.25f, 1.0f);
    light.SetLocalDirection(Vector(0, -1, 0));
    stage.Update();
    stage.material->SetDiffuse(Color(0.5f, 1.0f, 0.125f, 0.75f));
    ASSERT_TRUE(stage.material->ignoreLightColor);
    EXPECT_THAT(Apply(), IsSupersetOf({"u_enableLight(0)", "u_color(0.5, 1, 0.125, 0.75)", "u_lightDir(0, 1, 0)"}));
    EXPECT_TRUE(effect.lit);
    stage.material->ignoreLightColor = false;
    EXPECT_THAT(Apply(), IsSupersetOf({"u_enableLight(1)", "u_color(0.25, 0.25, 0.125, 0.75)", "u_lightDir(0, 1, 0)"}));
    stage.material->SetFlags(MaterialFlagUnlit);
    EXPECT_THAT(Apply(), Not(Contains(StartsWith("u_lightDir"))));
    EXPECT_FALSE(effect.lit);
}

TEST_F(CrosshatchEffect, BindsNormalsForLitMeshesOnly)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals | EffectStage::Texture);
    stage.Update();
    Apply();
    effect.BindMeshAttributes(&mesh);
    EXPECT_EQ(gl.Count("glEnableVertexAttribArray", {0}), 1u);
    EXPECT_EQ(gl.Count("glEnableVertexAttribArray", {1}), 0u);
    EXPECT_EQ(gl.Count("glEnableVertexAttribArray", {2}), 1u);
    effect.ReleaseMeshAttributes(&mesh);
    stage.AddLight();
    Apply();
    effect.BindMeshAttributes(&mesh);
    EXPECT_TRUE(effect.hasNormals);
    gl.Clear();
    effect.BindMeshUniforms(&stage.Node());
    EXPECT_THAT(ReadCalls(gl), ElementsAre(StartsWith("u_mvpMatrix("), StartsWith("u_normalMatrix(")));
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), IsEmpty());
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre("glDisableVertexAttribArray(0)", "glDisableVertexAttribArray(1)",
                                           "glDisableVertexAttribArray(2)"));
}

TEST_F(CrosshatchEffect, ALitMeshWithoutNormalsGetsNoNormalMatrix)
{
    stage.AddLight();
    MeshES20& mesh = stage.AddMesh(EffectStage::Bare);
    stage.Update();
    Apply();
    effect.BindMeshAttributes(&mesh);
    EXPECT_FALSE(effect.hasNormals);
    gl.Clear();
    effect.BindMeshUniforms(&stage.Node());
    EXPECT_THAT(ReadCalls(gl), ElementsAre(StartsWith("u_mvpMatrix(")));
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), IsEmpty());
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre("glDisableVertexAttribArray(0)"));
}

TEST_F(MonotoneEffect, HasTheStatedUniformTableAndTheNameOfAnotherEffect)
{
    Apply();
    EXPECT_THAT(Names(), ElementsAre("u_color", "u_mvpMatrix", "u_showFaceSides", "u_worldTransform",
                                     "u_numClipPlanes", "u_clipPlaneNormals", "u_clipPlanePositions",
                                     "u_clipPlaneOutlineColor", "u_clipPlaneOutlineSize", "u_pocheColor",
                                     "u_pocheColorEnabled", "u_pointSize", "u_isBackFaces", "u_shadowIntensity",
                                     "u_isShadow"));
    std::string name;
    effect.CreateProgramForOptions(0, name);
    EXPECT_EQ(name, "DepthIdPassEffectES20");
}

TEST_F(MonotoneEffect, ApplyTurnsBlendingOffAndRemoveDoesNothing)
{
    stage.material->SetOpacity(0.5f);
    const Lines lines = Apply();
    EXPECT_THAT(lines, ElementsAre(CallText("glUseProgram", {static_cast<double>(effect.m_currentProgram)}),
                                     CallText("glDisable", {GL_BLEND})));
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), IsEmpty());
}

TEST_F(MonotoneEffect, DrawsAMeshInOrder)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    stage.Update();
    Apply();
    effect.BindMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), ElementsAre(CallText("glVertexAttribPointer", {0, 3, GL_FLOAT, 0, 32, 0}),
                                           "glEnableVertexAttribArray(0)", "u_showFaceSides(0)"));
    effect.BindMeshUniforms(&stage.Node());
    const Lines lines = ReadCalls(gl);
    ASSERT_EQ(lines.size(), 10u);
    EXPECT_THAT(lines[0], StartsWith("u_mvpMatrix("));
    EXPECT_EQ(lines[1], CallText("glFrontFace", {GL_CCW}));
    EXPECT_EQ(lines[2], "u_color(1, 1, 1)");
    EXPECT_THAT(lines[3], StartsWith("u_worldTransform("));
    EXPECT_THAT(Lines(lines.begin() + 4, lines.end()),
                ElementsAre("u_numClipPlanes(0)", "u_pocheColor({0, 0, 0, 1})", "u_pocheColorEnabled(1)",
                            "u_isBackFaces(0)", "u_isShadow(0)", StartsWith("u_shadowIntensity(")));
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), ElementsAre(CallText("glFrontFace", {GL_CCW})));
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre("glDisableVertexAttribArray(0)"));
}

TEST_F(MonotoneEffect, FlagsPassAndMirrorAreHandedOn)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Bare);
    mesh.GetMesh()->SetFlags(MeshFlagShowFaceSides);
    Transform mirror;
    mirror.SetScale(Vector(-1, 1, 1));
    stage.Node().SetLocal(mirror);
    stage.Update();
    effect.passFlag = true;
    effect.meshNodeFlag = true;
    Apply();
    effect.BindMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), Contains("u_showFaceSides(1)"));
    effect.BindMeshUniforms(&stage.Node());
    EXPECT_THAT(gl.Uniform("u_color"), ElementsAre(0.8f, 0.8f, 0.8f));
    EXPECT_THAT(ReadCalls(gl), IsSupersetOf({CallText("glFrontFace", {GL_CW}), std::string("u_isBackFaces(1)")}));
}

TEST_F(MonotoneEffect, PointsAreBlackAndSixWideWhicheverThePass)
{
    stage.AddMesh(EffectStage::Bare);
    stage.material->SetFlags(MaterialFlagPoints);
    stage.Update();
    for (const bool second : {false, true})
    {
        effect.passFlag = second;
        Apply();
        effect.BindMeshUniforms(&stage.Node());
        EXPECT_THAT(ReadCalls(gl), IsSupersetOf({"u_color(0, 0, 0)", "u_pointSize(6)"}));
    }
    stage.material->ClearFlags(MaterialFlagPoints);
    effect.BindMeshUniforms(&stage.Node());
    EXPECT_THAT(ReadCalls(gl), Not(Contains(StartsWith("u_pointSize"))));
    MeshNode empty(&stage.scene);
    EffectES20::ForgetUniformValues();
    effect.BindMeshUniforms(&empty);
    EXPECT_THAT(ReadCalls(gl), Contains(StartsWith("u_color(0.8")));
}

TEST_F(MonotoneEffect, ClipPlanesReachMeshesThatAreClipped)
{
    stage.AddMesh(EffectStage::Bare);
    stage.Update();
    Apply();
    EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(5, 0, 0));
    effect.clipPlanesActive = false;
    effect.BindMeshUniforms(&stage.Node());
    EXPECT_THAT(ReadCalls(gl), Contains("u_numClipPlanes(0)"));
    effect.clipPlanesActive = true;
    effect.BindMeshUniforms(&stage.Node());
    EXPECT_THAT(ReadCalls(gl), IsSupersetOf({"u_clipPlaneNormals({1, 0, 0})", "u_clipPlanePositions({5, 0, 0})",
                                             "u_numClipPlanes(1)", "u_clipPlaneOutlineColor({0, 0, 0, 1})"}));
    for (int i = 0; i < 6; ++i)
    {
        EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(5, 0, 0));
    }
    effect.BindMeshUniforms(&stage.Node());
    EXPECT_THAT(gl.Uniform("u_numClipPlanes"), ElementsAre(6));
}

} // namespace OV::Test
