#include "orvane/effects/AdvancedMaterialEffectES20.h"
#include "orvane/effects/AdvancedMaterialPhongEffectES20.h"

#include "orvane/effects/SkySettings.h"
#include "orvane/scene/CameraNode.h"
#include "tests/effects/CallTexts.h"
#include "tests/effects/EffectChecks.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <limits>

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

/// Opens the state and the program of one of the two models.
template <class Model>
class Open : public Model
{
public:
    Open() : Model(nullptr) {}

    using Model::blendEnabled;
    using Model::editPath;
    using Model::editPathActive;
    using Model::forceMonochrome;
    using Model::hasNormals;
    using Model::lit;
    using Model::m_currentProgram;
    using Model::m_programsByOptions;
    using Model::m_uniformNames;
    using Model::reflectionMapId;
};

template <class Model>
class AdvancedEffect : public ::testing::Test
{
protected:
    AdvancedEffect() { SkySettings::inst().SetUseFog(false); }

    ~AdvancedEffect() override { stage.data.textureId = stage.data.normalMapId = stage.data.opacityMapId = 0; }

    Lines Apply() { return ReadApply(gl, stage, effect); }

    /// The mask of the program in use.
    std::uint64_t Mask() const { return OptionsOf(effect.m_currentProgram, effect.m_programsByOptions); }

    Lines Bind(MeshES20& mesh)
    {
        effect.BindMeshAttributes(&mesh);
        return ReadCalls(gl);
    }

    Lines BindNode(MeshNode& node)
    {
        effect.BindMeshUniforms(&node);
        return ReadCalls(gl);
    }

    static constexpr bool IsPhong = std::is_same_v<Model, AdvancedMaterialPhongEffectES20>;

    EffectSettingsGuard settings;
    GLRecorder gl;
    EffectStage stage;
    Open<Model> effect;
};

using Models = ::testing::Types<AdvancedMaterialEffectES20, AdvancedMaterialPhongEffectES20>;
TYPED_TEST_SUITE(AdvancedEffect, Models);

std::string Texture(GLenum target, unsigned name)
{
    return CallText("glBindTexture", {static_cast<double>(target), static_cast<double>(name)});
}

std::string FrontFace(GLenum winding)
{
    return CallText("glFrontFace", {static_cast<double>(winding)});
}

} // namespace

TYPED_TEST(AdvancedEffect, HasTheStatedUniformTable)
{
    this->Apply();
    Lines expected = {"u_ambient", "u_camera", "u_color", "u_cubeMatrix", "u_enableLight", "u_fogColor", "u_fogRange",
                      "u_isShowFaceSides", "u_lightDir", "u_monochrome", "u_mvpMatrix", "u_normalMap",
                      "u_normalMatrix", "u_opacityMap", "u_pointSize", "u_reflectionFactors", "u_reflectionMap",
                      "u_scale", "u_specular", "u_stippleColor", "u_stippleOffset", "u_stippleSize", "u_texture0",
                      "u_worldTransform", "u_numClipPlanes", "u_clipPlaneNormals", "u_clipPlanePositions",
                      "u_clipPlaneOutlineColor", "u_clipPlaneOutlineSize", "u_pocheColor", "u_pocheColorEnabled",
                      "u_isBackFaces", "u_ambientColorIntensity", "u_ambientTextureIntensity", "u_shadowIntensity"};
    if (TestFixture::IsPhong)
    {
        expected.insert(expected.end(), {"u_isShadow", "u_sunShading"});
    }
    expected.push_back("u_meshMonochrome");
    EXPECT_EQ(UniformTable(this->effect.m_uniformNames), expected);
}

TYPED_TEST(AdvancedEffect, BindsItsThreeAttributes)
{
    this->effect.Apply(&this->stage.data, &this->stage.camera);
    EXPECT_THAT(BoundAttributes(this->gl), ElementsAre("0a_position", "1a_normal", "2a_texture"));
}

TYPED_TEST(AdvancedEffect, BothModelsAreNamedTheSameByTheirOptions)
{
    std::string name;
    this->effect.CreateProgramForOptions(17, name);
    EXPECT_EQ(name, "AdvancedMaterialEffect|FOG|TEXTURE");
    this->effect.CreateProgramForOptions(63, name);
    EXPECT_EQ(name, "AdvancedMaterialEffect|FOG|STIPPLING|AMBIENT|CUTOUT|TEXTURE|NORMALMAP");
}

TYPED_TEST(AdvancedEffect, TheFragmentShaderBeginsWithItsExtension)
{
    this->Apply();
    const Lines texts = this->gl.ProgramTexts(this->effect.m_currentProgram);
    ASSERT_EQ(texts.size(), 2u);
    const std::size_t extension = texts[1].find("#extension GL_OES_standard_derivatives : enable");
    ASSERT_NE(extension, std::string::npos);
    EXPECT_LT(extension, texts[1].find("uniform"));
}

TYPED_TEST(AdvancedEffect, TheMaskFollowsFogStipplesPassAndMaps)
{
    this->Apply();
    EXPECT_EQ(this->Mask(), 0u);
    SkySettings::inst().SetUseFog(true);
    this->Apply();
    EXPECT_EQ(this->Mask(), 1u);
    this->stage.material->stippling = true;
    this->Apply();
    EXPECT_EQ(this->Mask(), 3u);
    this->effect.passFlag = true;
    this->Apply();
    EXPECT_EQ(this->Mask(), 7u);
    this->stage.data.opacityMapId = 3;
    this->Apply();
    EXPECT_EQ(this->Mask(), 15u);
    this->stage.data.textureId = 4;
    this->Apply();
    EXPECT_EQ(this->Mask(), 31u);
    this->stage.data.normalMapId = 5;
    this->Apply();
    EXPECT_EQ(this->Mask(), 63u);
    this->effect.passFlag = false;
    this->stage.data.textureId = MaterialES20::PendingTexture;
    this->Apply();
    EXPECT_EQ(this->Mask(), 43u) << "a texture still to come counts as none";
}

TYPED_TEST(AdvancedEffect, AppliesAnUnlitPlainMaterialInOrder)
{
    this->stage.material->SetAmbient(Color(0.25f, 0.5f, 0.75f));
    this->stage.material->SetDiffuse(Color(0.5f, 0.125f, 1.0f));
    this->stage.material->pointSize = 3.0f;
    const float factors[] = {0.5f, 0.25f, 0.125f};
    std::copy(factors, factors + 3, this->stage.material->reflectionFactors);
    EffectES20::SetAmbientColorIntensity(0.5f);
    EffectES20::SetAmbientTextureIntensity(2.0f);
    EffectES20::SetShadowIntensity(0.75f);
    EffectES20::SetSunShading(0.25f);
    EffectES20::SetShadow(true);
    Transform place;
    place.SetPosition(Vector(1, 2, 3));
    this->stage.scene.GetCameraNode()->SetLocal(place);
    this->stage.Update();
    const Lines lines = this->Apply();
    Lines expected = {CallText("glUseProgram", {static_cast<double>(this->effect.m_currentProgram)}),
                      "u_camera(1, 2, 3)",
                      "u_reflectionMap(2)",
                      "u_reflectionFactors(0.5, 0.25, 0.125)",
                      Unit(0), Texture(GL_TEXTURE_2D, 0), Unit(1), Texture(GL_TEXTURE_2D, 0),
                      Unit(3), Texture(GL_TEXTURE_2D, 0), Unit(2), Texture(GL_TEXTURE_2D, 0), Unit(0),
                      "u_cubeMatrix", "u_enableLight(0)", "u_ambient(0.25, 0.5, 0.75, 1)",
                      "u_color(0.5, 0.125, 1, 1)", "u_specular(0, 0, 0, 1)", "u_lightDir(0, 0, 1)", "u_pointSize(3)"};
    // The stand-in has a uniform where its name stands in a source, read or not.
    Lines found;
    for (const std::string& line : lines)
    {
        const bool settled = line.compare(0, 8, "u_textur") == 0 || line.compare(0, 11, "u_normalMap") == 0 ||
                             line.compare(0, 12, "u_opacityMap") == 0;
        if (!settled)
        {
            found.push_back(line.compare(0, 12, "u_cubeMatrix") == 0 ? "u_cubeMatrix" : line);
        }
    }
    if (TestFixture::IsPhong)
    {
        expected.insert(expected.end(), {"u_ambientColorIntensity(0.5)", "u_ambientTextureIntensity(2)",
                                         "u_shadowIntensity(0.75)", "u_sunShading(0.25)", "u_isShadow(1)"});
    }
    EXPECT_EQ(found, expected);
    EXPECT_FALSE(this->effect.lit);
}

TYPED_TEST(AdvancedEffect, TheCameraIsWhereItStandsInTheWorld)
{
    Node parent(&this->stage.scene);
    Transform place;
    place.SetPosition(Vector(10, 0, 0));
    parent.SetLocal(place);
    this->stage.scene.GetRoot()->AddChild(&parent, false);
    CameraNode* const camera = this->stage.scene.GetCameraNode();
    parent.AddChild(camera, false);
    place.SetPosition(Vector(0, 0, 5));
    camera->SetLocal(place);
    this->stage.Update();
    this->stage.Update();
    EXPECT_THAT(this->Apply(), Contains("u_camera(10, 0, 5)"));
    // Where the scene finds it: what hangs nowhere dies with nobody.
    this->stage.scene.GetRoot()->AddChild(camera, false);
}

TYPED_TEST(AdvancedEffect, TheCubeMatrixIsAQuarterTurnAboutX)
{
    this->Apply();
    const std::vector<float> expected = {1, 0, 0, 0, 0, 1, 0, -1, 0};
    EXPECT_THAT(this->gl.Uniform("u_cubeMatrix"), Pointwise(FloatNear(2e-6f), expected));
    const GLCall* const upload = this->gl.Find("glUniformMatrix3fv");
    EXPECT_EQ(upload, nullptr) << "read and cleared";
}

TYPED_TEST(AdvancedEffect, EveryMapHasItsUnit)
{
    this->stage.data.textureId = 11;
    this->stage.data.normalMapId = 12;
    this->stage.data.opacityMapId = 13;
    this->stage.data.uScale = 2.0f;
    this->stage.data.vScale = 4.0f;
    this->effect.SetReflectionMap(14);
    const Lines lines = this->Apply();
    EXPECT_THAT(lines, IsSupersetOf({"u_texture0(0)", "u_normalMap(1)", "u_reflectionMap(2)", "u_opacityMap(3)",
                                     "u_scale(0.5, 0.25)"}));
    const Lines binds = {Unit(0), Texture(GL_TEXTURE_2D, 11), Unit(1), Texture(GL_TEXTURE_2D, 12),
                         Unit(3), Texture(GL_TEXTURE_2D, 13), Unit(2), Texture(GL_TEXTURE_CUBE_MAP, 14), Unit(0)};
    const auto first = std::find(lines.begin(), lines.end(), Unit(0));
    ASSERT_GE(lines.end() - first, static_cast<std::ptrdiff_t>(binds.size()));
    EXPECT_EQ(Lines(first, first + static_cast<std::ptrdiff_t>(binds.size())), binds);
    this->effect.Remove();
    EXPECT_THAT(ReadCalls(this->gl), ElementsAre("glUseProgram(0)", Unit(2), Texture(GL_TEXTURE_CUBE_MAP, 0), Unit(0)));
}

TYPED_TEST(AdvancedEffect, AScaleThatIsNotPositiveAndFiniteGivesOne)
{
    this->stage.data.normalMapId = 3; // any map makes the scale count
    for (const float scale : {0.0f, -1.0f, std::numeric_limits<float>::infinity(),
                              std::numeric_limits<float>::quiet_NaN()})
    {
        this->stage.data.uScale = scale;
        this->stage.data.vScale = 4.0f;
        EXPECT_THAT(this->Apply(), Contains("u_scale(1, 0.25)")) << scale;
    }
    this->stage.data.normalMapId = 0;
    EXPECT_THAT(this->Apply(), Not(Contains(StartsWith("u_scale"))));
}

TYPED_TEST(AdvancedEffect, TheLightsColourCountsUnlessIgnored)
{
    LightNode& light = this->stage.AddLight();
    light.SetColor(0.5f, 0.25f, 1.0f);
    light.SetLocalDirection(Vector(0, -1, 0));
    this->stage.Update();
    this->stage.material->SetDiffuse(Color(0.5f, 1.0f, 0.125f, 0.75f));
    EXPECT_THAT(this->Apply(), IsSupersetOf({"u_enableLight(1)", "u_color(0.5, 1, 0.125, 0.75)",
                                             "u_specular(1, 1, 1, 1)", "u_lightDir(0, 1, 0)"}));
    this->stage.material->ignoreLightColor = false;
    EXPECT_THAT(this->Apply(), IsSupersetOf({"u_color(0.25, 0.25, 0.125, 0.75)", "u_specular(0.5, 0.25, 1, 1)"}));
}

TYPED_TEST(AdvancedEffect, FogIsSetWithTheColourOrWhite)
{
    SkySettings& sky = SkySettings::inst();
    sky.SetUseFog(true);
    sky.SetFogStart(10.0f);
    sky.SetFogEnd(20.0f);
    sky.SetHorizonColor(Color(0.5f, 0.25f, 0.125f, 1.0f));
    EXPECT_THAT(this->Apply(), IsSupersetOf({"u_fogRange(10, 20)", "u_fogColor(0.5, 0.25, 0.125, 1)"}));
    sky.SetMonotone(true);
    EXPECT_THAT(this->Apply(), Contains("u_fogColor(1, 1, 1, 1)"));
}

TYPED_TEST(AdvancedEffect, BlendsASeeThroughMaterialAndUndoesIt)
{
    this->stage.material->SetOpacity(0.5f);
    EXPECT_THAT(this->Apply(), IsSupersetOf({CallText("glEnable", {GL_BLEND}),
                                             CallText("glBlendFunc", {GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA})}));
    EXPECT_TRUE(this->effect.blendEnabled);
    this->effect.Remove();
    EXPECT_THAT(ReadCalls(this->gl), ElementsAre("glUseProgram(0)", CallText("glDisable", {GL_BLEND})));
    EXPECT_FALSE(this->effect.blendEnabled);
    this->stage.material->SetOpacity(1.0f);
    this->stage.material->hasAlpha = true;
    EXPECT_THAT(this->Apply(), Not(Contains(StartsWith("glEnable")))); // alpha of a texture that isn't there
    this->stage.data.textureId = 7;
    EXPECT_THAT(this->Apply(), Contains(CallText("glEnable", {GL_BLEND})));
    this->effect.Remove();
    this->stage.material->hasAlpha = false;
    EXPECT_THAT(this->Apply(), Not(Contains(StartsWith("glEnable"))));
}

TYPED_TEST(AdvancedEffect, RemoveBeforeAnyApplyDoesNothing)
{
    this->effect.Remove();
    EXPECT_THAT(ReadCalls(this->gl), IsEmpty());
    this->effect.Precompile(0);
    this->gl.Clear();
    this->effect.Remove();
    EXPECT_THAT(ReadCalls(this->gl), IsEmpty());
}

TYPED_TEST(AdvancedEffect, PrecompileOfAKnownMaskChangesNothing)
{
    this->Apply();
    this->effect.Precompile(16);
    const unsigned current = this->effect.m_currentProgram;
    this->gl.Clear();
    this->effect.Precompile(0);
    EXPECT_EQ(this->effect.m_currentProgram, current);
    EXPECT_THAT(ReadCalls(this->gl), IsEmpty());
}

TYPED_TEST(AdvancedEffect, DrawsALitMeshInOrder)
{
    this->stage.AddLight();
    MeshES20& mesh = this->stage.AddMesh(EffectStage::Normals | EffectStage::Texture);
    this->stage.Update();
    this->Apply();
    const auto pointer = [](int attribute, int components, int offset) {
        return CallText("glVertexAttribPointer", {static_cast<double>(attribute), static_cast<double>(components),
                                                  GL_FLOAT, 0, 64, static_cast<double>(offset)});
    };
    EXPECT_THAT(this->Bind(mesh), ElementsAre(pointer(0, 3, 0), "glEnableVertexAttribArray(0)", pointer(1, 3, 12),
                                              "glEnableVertexAttribArray(1)", pointer(2, 2, 24),
                                              "glEnableVertexAttribArray(2)", "u_isShowFaceSides(0)",
                                              "u_meshMonochrome(0)"));
    EXPECT_TRUE(this->effect.hasNormals);
    const Lines uniforms = this->BindNode(this->stage.Node());
    ASSERT_EQ(uniforms.size(), 9u);
    EXPECT_EQ(uniforms[0], "u_monochrome(0)");
    EXPECT_THAT(uniforms[1], StartsWith("u_worldTransform("));
    EXPECT_THAT(uniforms[2], StartsWith("u_mvpMatrix("));
    EXPECT_THAT(Lines(uniforms.begin() + 3, uniforms.end()),
                ElementsAre("u_numClipPlanes(0)", "u_pocheColor({0, 0, 0, 1})", "u_pocheColorEnabled(1)",
                            "u_isBackFaces(0)", StartsWith("u_normalMatrix("), FrontFace(GL_CCW)));
    this->effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(this->gl), ElementsAre(FrontFace(GL_CCW)));
    this->effect.Remove();
    EXPECT_THAT(ReadCalls(this->gl), ElementsAre("glDisableVertexAttribArray(0)", "glDisableVertexAttribArray(1)",
                                                 "glDisableVertexAttribArray(2)", "glUseProgram(0)"));
}

TYPED_TEST(AdvancedEffect, AMeshWithoutNormalsIsUnlitAndTheNextOneIsLitAgain)
{
    this->stage.AddLight();
    MeshES20& bare = this->stage.AddMesh(EffectStage::Bare);
    Transform mirror;
    mirror.SetScale(Vector(-1, 1, 1));
    this->stage.Node().SetLocal(mirror);
    this->stage.Update();
    this->Apply();
    EXPECT_THAT(this->Bind(bare), Contains("u_enableLight(0)"));
    EXPECT_FALSE(this->effect.hasNormals);
    // Without light the winding of a mirrored node stays as it is: that is meant.
    EXPECT_THAT(this->BindNode(this->stage.Node()), Not(Contains(StartsWith("glFrontFace"))));
    this->effect.ReleaseMeshAttributes(&bare);
    EXPECT_THAT(ReadCalls(this->gl), ElementsAre(FrontFace(GL_CCW), "u_enableLight(1)"));
    this->effect.Remove();
    EXPECT_THAT(ReadCalls(this->gl), ElementsAre("glDisableVertexAttribArray(0)", "glUseProgram(0)"));
}

TYPED_TEST(AdvancedEffect, AnUnlitMeshLeavesNormalsLightAndWindingAlone)
{
    MeshES20& mesh = this->stage.AddMesh(EffectStage::Normals | EffectStage::Texture);
    Transform mirror;
    mirror.SetScale(Vector(-1, 1, 1));
    this->stage.Node().SetLocal(mirror);
    this->stage.AddLight();
    this->stage.Update();
    this->Apply();
    this->Bind(mesh); // lit, so that hasNormals is left set
    this->effect.ReleaseMeshAttributes(&mesh);
    this->stage.material->SetFlags(MaterialFlagUnlit);
    this->Apply();
    EXPECT_THAT(this->Bind(mesh), Not(Contains("glEnableVertexAttribArray(1)")));
    const Lines uniforms = this->BindNode(this->stage.Node());
    EXPECT_THAT(uniforms, Not(Contains(StartsWith("u_normalMatrix"))));
    EXPECT_THAT(uniforms, Not(Contains(StartsWith("glFrontFace"))));
    this->effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(this->gl), ElementsAre(FrontFace(GL_CCW)));
    this->effect.Remove();
    EXPECT_THAT(ReadCalls(this->gl),
                ElementsAre("glDisableVertexAttribArray(0)", "glDisableVertexAttribArray(2)", "glUseProgram(0)"));
}

TYPED_TEST(AdvancedEffect, CoordinatesThatTheProgramDoesNotReadAreLeftOut)
{
    this->gl.SetAttribLocation("a_texture", -1);
    MeshES20& mesh = this->stage.AddMesh(EffectStage::Texture);
    this->stage.Update();
    this->Apply();
    EXPECT_THAT(this->Bind(mesh), Not(Contains("glEnableVertexAttribArray(2)")));
    this->effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(ReadCalls(this->gl), ElementsAre(FrontFace(GL_CCW)));
    this->effect.Remove();
    EXPECT_THAT(ReadCalls(this->gl), ElementsAre("glDisableVertexAttribArray(0)", "glUseProgram(0)"));
}

TYPED_TEST(AdvancedEffect, AMirroredNodeTurnsTheWindingUntilTheMeshIsReleased)
{
    this->stage.AddLight();
    MeshES20& mesh = this->stage.AddMesh(EffectStage::Normals);
    Transform mirror;
    mirror.SetScale(Vector(-1, 1, 1));
    this->stage.Node().SetLocal(mirror);
    MeshNode& plain = this->stage.AddNode();
    this->stage.Update();
    this->Apply();
    this->Bind(mesh);
    MeshNode& mirrored = *mesh.GetMesh()->GetNodes().front();
    EXPECT_THAT(this->BindNode(mirrored), Contains(FrontFace(GL_CW)));
    EXPECT_THAT(this->BindNode(plain), Contains(FrontFace(GL_CCW)));
    this->effect.ReleaseMeshAttributes(&mesh);
    EXPECT_EQ(ReadCalls(this->gl).front(), FrontFace(GL_CCW));
}

TYPED_TEST(AdvancedEffect, ClipPlanesReachEveryMeshAndSixAtMost)
{
    MeshES20& mesh = this->stage.AddMesh(EffectStage::Normals);
    this->stage.Update();
    EffectES20::SetClipPlaneOutlineColor(glm::vec4(0.5f, 0.25f, 0.125f, 1.0f));
    EffectES20::SetClipPlaneOutlineSize(0.75f);
    this->Apply();
    this->Bind(mesh);
    this->effect.clipPlanesActive = false;
    const Lines without = this->BindNode(this->stage.Node());
    EXPECT_THAT(without, Contains("u_numClipPlanes(0)"));
    EXPECT_THAT(without, Not(Contains(StartsWith("u_clipPlane"))));
    for (int i = 0; i < 7; ++i)
    {
        EffectES20::AddClipPlane(glm::vec3(1, 0, 0), glm::vec3(static_cast<float>(i), 0, 0));
    }
    this->effect.BindMeshUniforms(&this->stage.Node());
    EXPECT_EQ(this->gl.Uniform("u_numClipPlanes"), std::vector<float>{6});
    EXPECT_EQ(this->gl.Find("glUniform3fv")->floats.size(), 18u);
    EXPECT_THAT(ReadCalls(this->gl), IsSupersetOf({std::string("u_clipPlaneOutlineColor({0.5, 0.25, 0.125, 1})"),
                                                   std::string("u_clipPlaneOutlineSize(0.75)")}));
}

TYPED_TEST(AdvancedEffect, FlagsOfTheMeshAreHandedOn)
{
    MeshES20& mesh = this->stage.AddMesh(EffectStage::Bare);
    this->stage.Update();
    this->Apply();
    mesh.GetMesh()->SetFlags(MeshFlagShowFaceSides);
    EXPECT_THAT(this->Bind(mesh), IsSupersetOf({"u_isShowFaceSides(1)", "u_meshMonochrome(0)"}));
    mesh.GetMesh()->ClearFlags(MeshFlagShowFaceSides);
    mesh.GetMesh()->SetFlags(MeshFlagMonochrome);
    EXPECT_THAT(this->Bind(mesh), IsSupersetOf({"u_isShowFaceSides(0)", "u_meshMonochrome(1)"}));
    this->effect.meshNodeFlag = true;
    EXPECT_THAT(this->BindNode(this->stage.Node()), Contains("u_isBackFaces(1)"));
}

TYPED_TEST(AdvancedEffect, AnEditPathIsCopiedAndCleared)
{
    AdvancedMaterialBaseES20::Path path = {{1, 2}};
    this->effect.SetEditInContextPath(path);
    path.clear();
    EXPECT_EQ(this->effect.editPath.size(), 1u);
    EXPECT_TRUE(this->effect.editPathActive);
    this->effect.SetEditInContextPath(this->effect.editPath);
    EXPECT_EQ(this->effect.editPath.size(), 1u);
    this->effect.ClearEditInContextPath();
    EXPECT_FALSE(this->effect.editPathActive);
    EXPECT_TRUE(this->effect.editPath.empty());
}

TYPED_TEST(AdvancedEffect, GreyIsForTheRestOfAnEditAndForAHostThatForcesIt)
{
    MeshES20& mesh = this->stage.AddMesh(EffectStage::Bare);
    this->stage.Update();
    this->Apply();
    this->Bind(mesh);
    MeshNode& node = this->stage.Node();
    EXPECT_THAT(this->BindNode(node), Contains("u_monochrome(0)"));
    this->effect.SetEditInContextPath({});
    EXPECT_THAT(this->BindNode(node), Contains("u_monochrome(1)")) << "the node has no path";
    node.SetPath({{1, 2}});
    EXPECT_THAT(this->BindNode(node), Contains("u_monochrome(0)"));
    this->effect.SetEditInContextPath({{1, 2}, {3, 4}});
    EXPECT_THAT(this->BindNode(node), Contains("u_monochrome(1)")) << "the path is longer than the node's";
    this->effect.ClearEditInContextPath();
    EXPECT_THAT(this->BindNode(node), Contains("u_monochrome(0)"));
    this->effect.forceMonochrome = true;
    EXPECT_THAT(this->BindNode(node), Contains("u_monochrome(1)"));
}

TYPED_TEST(AdvancedEffect, ASteadyDrawLooksNothingUp)
{
    this->stage.AddLight();
    MeshES20& mesh = this->stage.AddMesh(EffectStage::Normals | EffectStage::Texture);
    this->stage.data.textureId = 3;
    this->stage.Update();
    this->Apply();
    this->gl.Clear();
    this->effect.Apply(&this->stage.data, &this->stage.camera);
    this->effect.BindMeshAttributes(&mesh);
    this->effect.BindMeshUniforms(&this->stage.Node());
    this->effect.ReleaseMeshAttributes(&mesh);
    this->effect.Remove();
    EXPECT_EQ(this->gl.Count("glGetUniformLocation"), 0u);
    EXPECT_EQ(this->gl.Count("glGetAttribLocation"), 0u);
}

TYPED_TEST(AdvancedEffect, AFailedProgramIsDrawnWithInSilence)
{
    this->gl.SetLinkResult(0);
    this->stage.AddLight();
    MeshES20& mesh = this->stage.AddMesh(EffectStage::Normals);
    this->stage.Update();
    this->Apply();
    this->effect.BindMeshAttributes(&mesh);
    this->effect.BindMeshUniforms(&this->stage.Node());
    this->effect.ReleaseMeshAttributes(&mesh);
    this->effect.Remove();
    EXPECT_THAT(ReadCalls(this->gl), Not(Contains(StartsWith("?"))));
}

} // namespace OV::Test
