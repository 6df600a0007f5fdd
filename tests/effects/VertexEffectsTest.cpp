#include "orvane/effects/SimMaterialEffectES20.h"
#include "orvane/effects/VertexColorEffectES20.h"
#include "orvane/effects/WeightedAverageSecondPassEffectES20.h"

#include "orvane/math/Quaternion.h"
#include "orvane/scene/SimMaterial.h"
#include "orvane/scene/CameraNode.h"
#include "tests/effects/EffectChecks.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

#include <cmath>

namespace OV::Test
{

namespace
{

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::FloatNear;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::Pointwise;
using ::testing::StartsWith;

using Lines = std::vector<std::string>;

class OpenVertexColor : public VertexColorEffectES20
{
public:
    OpenVertexColor() : VertexColorEffectES20(nullptr) {}
    using VertexColorEffectES20::m_currentProgram;
    using VertexColorEffectES20::m_uniformNames;
};

class OpenSecondPass : public WeightedAverageSecondPassEffectES20
{
public:
    OpenSecondPass() : WeightedAverageSecondPassEffectES20(nullptr) {}
    using WeightedAverageSecondPassEffectES20::m_currentProgram;
    using WeightedAverageSecondPassEffectES20::m_uniformNames;
};

class OpenSim : public SimMaterialEffectES20
{
public:
    OpenSim() : SimMaterialEffectES20(nullptr) {}
    using SimMaterialEffectES20::blending;
    using SimMaterialEffectES20::m_currentProgram;
};

template <class Effect>
class VertexEffect : public ::testing::Test
{
protected:
    ~VertexEffect() override { stage.data.textureId = 0; }

    Lines Apply() { return ReadApply(gl, stage, effect); }

    /// Turns camera and node, stretches both, and expects the turns alone in the normal matrix.
    void ExpectNormalsOfTheView()
    {
        stage.AddMesh(EffectStage::Normals);
        Transform node;
        node.SetRotation(Turn(0.9f));
        node.SetScale(Vector(2, 3, 4));
        node.SetPosition(Vector(1, 2, 3));
        stage.Node().SetLocal(node);
        Transform camera;
        camera.SetRotation(Turn(0.4f));
        camera.SetScale(Vector(5, 5, 5));
        stage.scene.GetCameraNode()->SetLocal(camera);
        stage.Update();
        Apply();
        effect.BindMeshUniforms(&stage.Node());
        const float c = std::cos(0.5f);
        const float s = std::sin(0.5f);
        const std::vector<float> expected = {c, 0, -s, 0, 1, 0, s, 0, c};
        EXPECT_THAT(gl.Uniform("u_normalMatrix"), Pointwise(FloatNear(1e-5f), expected));
    }

    EffectSettingsGuard settings;
    GLRecorder gl;
    EffectStage stage;
    Effect effect;

private:
    /// About Y.
    static Quaternion Turn(float angle)
    {
        Quaternion turn;
        turn.y = std::sin(angle / 2.0f);
        turn.w = std::cos(angle / 2.0f);
        return turn;
    }
};

using VertexColorEffect = VertexEffect<OpenVertexColor>;
using SecondPassEffect = VertexEffect<OpenSecondPass>;
using SimEffect = VertexEffect<OpenSim>;

} // namespace

TEST_F(VertexColorEffect, HasTheStatedUniformTableAndName)
{
    Apply();
    EXPECT_THAT(UniformTable(effect.m_uniformNames),
                ElementsAre("u_enableLight", "u_lightDir", "u_mvpMatrix", "u_normalMatrix", "u_worldTransform",
                            "u_numClipPlanes", "u_clipPlaneNormals", "u_clipPlanePositions",
                            "u_clipPlaneOutlineColor", "u_clipPlaneOutlineSize"));
    std::string name;
    effect.CreateProgramForOptions(0, name);
    EXPECT_EQ(name, "VertexColorEffectES20");
}

TEST_F(VertexColorEffect, IsLitByTheCameraUnlessTheMaterialSaysNot)
{
    const Lines lines = Apply();
    EXPECT_THAT(lines, ElementsAre(CallText("glUseProgram", {static_cast<double>(effect.m_currentProgram)}),
                                     "u_enableLight(1)", "u_lightDir({0, 0, 1, 1})"));
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), IsEmpty());
    stage.material->SetFlags(MaterialFlagUnlit);
    EXPECT_THAT(Apply(), Contains("u_enableLight(0)"));
}

TEST_F(VertexColorEffect, BindsWhatTheMeshHas)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    mesh.colorOffset = 24;
    Apply();
    effect.BindMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), ElementsAre(CallText("glVertexAttribPointer", {0, 3, GL_FLOAT, 0, 32, 0}),
                                           "glEnableVertexAttribArray(0)",
                                           CallText("glVertexAttribPointer", {1, 3, GL_FLOAT, 0, 32, 12}),
                                           "glEnableVertexAttribArray(1)",
                                           CallText("glVertexAttribPointer", {2, 4, GL_FLOAT, 0, 32, 24}),
                                           "glEnableVertexAttribArray(2)"));
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), IsEmpty());
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre("glDisableVertexAttribArray(0)", "glDisableVertexAttribArray(1)",
                                           "glDisableVertexAttribArray(2)"));
    MeshES20& bare = stage.AddMesh(EffectStage::Bare);
    Apply();
    effect.BindMeshAttributes(&bare);
    EXPECT_EQ(gl.Count("glEnableVertexAttribArray"), 1u);
    gl.Clear();
    effect.ReleaseMeshAttributes(&bare);
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre("glDisableVertexAttribArray(0)"));
}

TEST_F(VertexColorEffect, NormalsGoToTheViewWithoutScale)
{
    ExpectNormalsOfTheView();
}

TEST_F(VertexColorEffect, WithoutPlanesTheClipUniformsAreNotTouched)
{
    stage.AddMesh(EffectStage::Bare);
    stage.Update();
    Apply();
    effect.BindMeshUniforms(&stage.Node());
    Lines lines = ReadCalls(gl);
    EXPECT_THAT(lines, Contains("u_numClipPlanes(0)"));
    EXPECT_THAT(lines, Not(Contains(StartsWith("u_clipPlane"))));
    for (int i = 0; i < 7; ++i)
    {
        EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(5, 0, 0));
    }
    effect.clipPlanesActive = false; // not asked
    effect.BindMeshUniforms(&stage.Node());
    EXPECT_THAT(ReadCalls(gl), IsSupersetOf({std::string("u_numClipPlanes(6)"), std::string("u_clipPlaneOutlineColor({0, 0, 0, 1})")}));
}

TEST_F(SecondPassEffect, AddsUpFromApplyToRemove)
{
    const Lines lines = Apply();
    EXPECT_THAT(lines, ElementsAre(CallText("glUseProgram", {static_cast<double>(effect.m_currentProgram)}),
                                     CallText("glEnable", {GL_BLEND}), CallText("glBlendFunc", {GL_ONE, GL_ONE})));
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre(CallText("glDisable", {GL_BLEND})));
    std::string name;
    effect.CreateProgramForOptions(0, name);
    EXPECT_EQ(name, "WeightedAverageSecondPassEffect");
    EXPECT_EQ(effect.m_uniformNames.size(), 1u);
}

TEST_F(SecondPassEffect, DrawsByPositionAlone)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals | EffectStage::Texture);
    stage.Update();
    Apply();
    effect.BindMeshAttributes(&mesh);
    effect.BindMeshUniforms(&stage.Node());
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), ElementsAre(CallText("glVertexAttribPointer", {0, 3, GL_FLOAT, 0, 64, 0}),
                                           "glEnableVertexAttribArray(0)", StartsWith("u_mvpMatrix(")));
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), Contains("glDisableVertexAttribArray(0)"));
}

TEST_F(SimEffect, LinksOneProgramWhenItIsMade)
{
    EXPECT_EQ(gl.Count("glLinkProgram"), 1u);
    Apply();
    EXPECT_EQ(gl.Count("glLinkProgram"), 0u);
}

TEST_F(SimEffect, AppliesAPlainMaterialWithoutARange)
{
    stage.material->SetDiffuse(Color(0.5f, 0.25f, 0.125f));
    const Lines lines = Apply();
    EXPECT_THAT(lines, ElementsAre(CallText("glUseProgram", {static_cast<double>(effect.m_currentProgram)}),
                                     "u_enableTexture(0)", "u_enableLight(1)", "u_color(0.5, 0.25, 0.125, 1)",
                                     "u_lightDir({0, 0, 1, 1})"));
    stage.material->SetFlags(MaterialFlagUnlit);
    EXPECT_THAT(Apply(), Contains("u_enableLight(0)"));
}

TEST_F(SimEffect, ARangeStaysUntilTheNextOne)
{
    SimMaterial material("scalar");
    EXPECT_EQ(material.Type(), 0x536D4D61);
    EXPECT_TRUE(material.HasType(0x536D4D61));
    EXPECT_TRUE(material.HasType(0x4D617472));
    EXPECT_FALSE(material.HasType(0x4E6D7472));
    EXPECT_EQ(material.rangeLower, 0.0f);
    EXPECT_EQ(material.rangeUpper, 0.0f);
    material.rangeLower = 0.25f;
    material.rangeUpper = 2.0f;
    MaterialES20 data(&material, nullptr, nullptr, nullptr);
    effect.Apply(&data, &stage.camera);
    EXPECT_THAT(ReadCalls(gl), Contains("u_scalarcliprange(0.25, 2)"));
    EXPECT_THAT(Apply(), Not(Contains(StartsWith("u_scalarcliprange"))));
    EXPECT_THAT(gl.Uniform("u_scalarcliprange"), ElementsAre(0.25f, 2.0f));
}

TEST_F(SimEffect, ATextureOrASeeThroughColourIsBlended)
{
    const Lines blending = {CallText("glEnable", {GL_BLEND}),
                            CallText("glBlendFunc", {GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA})};
    stage.data.textureId = 7;
    Lines lines = Apply();
    EXPECT_THAT(lines, IsSupersetOf(blending));
    EXPECT_THAT(lines, IsSupersetOf({std::string("u_enableTexture(1)"), CallText("glActiveTexture", {GL_TEXTURE0}),
                                     CallText("glBindTexture", {GL_TEXTURE_2D, 7})}));
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), ElementsAre(CallText("glDisable", {GL_BLEND})));
    EXPECT_FALSE(effect.blending);
    effect.Remove();
    EXPECT_THAT(ReadCalls(gl), IsEmpty());
    stage.data.textureId = 0;
    stage.material->SetOpacity(0.5f);
    EXPECT_THAT(Apply(), IsSupersetOf(blending));
}

TEST_F(SimEffect, BindsWhatTheMeshHasAndReleasesInItsOrder)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    EXPECT_EQ(mesh.GetScalarOffset(), -1) << "no scalars are packed";
    Apply();
    effect.BindMeshAttributes(&mesh);
    EXPECT_EQ(gl.Count("glEnableVertexAttribArray"), 2u);
    mesh.scalarOffset = 24;
    gl.Clear();
    effect.BindMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), Contains(CallText("glVertexAttribPointer", {2, 1, GL_FLOAT, 0, 32, 24})));
    effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(gl), ElementsAre("glDisableVertexAttribArray(1)", "glDisableVertexAttribArray(2)",
                                           "glDisableVertexAttribArray(0)"));
}

TEST_F(SimEffect, NormalsGoToTheViewWithoutScale)
{
    ExpectNormalsOfTheView();
}

} // namespace OV::Test
