#include "orvane/effects/HUDEffectES20.h"

#include "orvane/overlay/Material2D.h"
#include "tests/effects/EffectStage.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

namespace OV::Test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::Contains;
using ::testing::IsEmpty;

class OpenEffect : public HUDEffectES20
{
public:
    OpenEffect() : HUDEffectES20(nullptr) {}

    using HUDEffectES20::blending;
    using HUDEffectES20::m_currentProgram;
};

class HUDEffect : public ::testing::Test
{
protected:
    HUDEffect() { gl.Clear(); }

    ~HUDEffect() override { flatData.textureId = 0; }

    std::vector<std::string> Apply() { return ApplyTo(flatData); }

    std::vector<std::string> ApplyTo(MaterialES20& data)
    {
        gl.Clear();
        effect.Apply(&data, &stage.camera);
        return ReadCalls(gl);
    }

    std::vector<std::string> Remove()
    {
        effect.Remove();
        return ReadCalls(gl);
    }

    /// How the locations of a mesh are set.
    std::vector<std::string> Attributes(MeshES20& mesh)
    {
        gl.Clear();
        effect.BindMeshAttributes(&mesh);
        return gl.Strings();
    }

    std::vector<float> MeshMatrix()
    {
        effect.BindMeshUniforms(&stage.Node());
        return gl.Uniform("u_mvpMatrix");
    }

    GLRecorder gl;
    EffectStage stage;
    Material2D flat{"flat"};
    MaterialES20 flatData{&flat, nullptr, nullptr, nullptr};
    OpenEffect effect;
};

std::string Call(const char* name, std::vector<double> numbers)
{
    return CallText(name, numbers);
}

const std::string kBlendOn = Call("glEnable", {GL_BLEND});
const std::string kBlendOff = Call("glDisable", {GL_BLEND});
const std::string kMixByAlpha = Call("glBlendFunc", {GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA});
const std::string kReplace = Call("glBlendFunc", {GL_ONE, GL_ZERO});

} // namespace

TEST_F(HUDEffect, LinksOneProgramAndFetchesItsLocationsOnce)
{
    EXPECT_NE(effect.m_currentProgram, 0u);
    EXPECT_FALSE(effect.blending);
    gl.Clear();
    {
        OpenEffect second;
        EXPECT_EQ(gl.Count("glCreateProgram"), 1u);
        EXPECT_EQ(gl.Count("glGetUniformLocation"), 3u);
        EXPECT_EQ(gl.Count("glGetAttribLocation"), 2u);
        gl.Clear();
        second.Apply(&flatData, &stage.camera);
        EXPECT_EQ(gl.Count("glGetUniformLocation"), 0u);
    }
    EXPECT_EQ(gl.Live(GLObjectKind::Program).size(), 1u);
}

TEST_F(HUDEffect, AnOpaquePlainMaterialLeavesBlendingAsItIs)
{
    flat.color = Color(0.25f, 0.5f, 0.75f, 1.0f);
    const std::vector<std::string> calls = Apply();
    EXPECT_THAT(calls, ElementsAre(StartsWith("glUseProgram"), Call("glDepthMask", {1}), "u_enableTexture(0)",
                                   Call("glActiveTexture", {GL_TEXTURE0}), Call("glBindTexture", {GL_TEXTURE_2D, 0}),
                                   "u_color(0.25, 0.5, 0.75, 1)"));
    EXPECT_FALSE(effect.blending);
    EXPECT_THAT(Remove(), ElementsAre(Call("glDepthMask", {1})));
}

TEST_F(HUDEffect, ATexturedMaterialAlwaysBlendsEvenAtFullOpacity)
{
    flatData.textureId = 9;
    const std::vector<std::string> calls = Apply();
    EXPECT_THAT(calls, ElementsAre(StartsWith("glUseProgram"), Call("glDepthMask", {1}), kBlendOn, kMixByAlpha,
                                   "u_enableTexture(1)", Call("glActiveTexture", {GL_TEXTURE0}),
                                   Call("glBindTexture", {GL_TEXTURE_2D, 9}), "u_color(1, 1, 1, 1)"));
    EXPECT_TRUE(effect.blending);
    EXPECT_THAT(Remove(), ElementsAre(kBlendOff, Call("glDepthMask", {1})));
    EXPECT_FALSE(effect.blending);
    EXPECT_THAT(Remove(), ElementsAre(Call("glDepthMask", {1}))) << "only what Apply turned on";
}

TEST_F(HUDEffect, BlendsWhatIsNotOpaque)
{
    struct
    {
        const char* label;
        float alpha, opacity;
        bool blends;
    } const cases[] = {
        {"opaque", 1.0f, 1.0f, false},
        {"colour just below", 0.999f, 1.0f, true},
        {"opacity just below", 1.0f, 0.999f, true},
        {"colour above", 1.5f, 1.0f, false},
    };
    for (const auto& expected : cases)
    {
        SCOPED_TRACE(expected.label);
        flat.color.a = expected.alpha;
        flat.SetOpacity(expected.opacity);
        EXPECT_EQ(testing::Matches(Contains(kBlendOn))(Apply()), expected.blends);
        EXPECT_EQ(effect.blending, expected.blends);
        effect.Remove();
    }
}

TEST_F(HUDEffect, WithoutItsBlendFlagItReplacesWhatIsThere)
{
    flatData.textureId = 9;
    flat.blend = 0;
    const std::vector<std::string> calls = Apply();
    EXPECT_THAT(calls, Contains(kBlendOn));
    EXPECT_THAT(calls, Contains(kReplace));
    EXPECT_THAT(calls, Not(Contains(kMixByAlpha)));
    flat.blend = 2;
    EXPECT_THAT(Apply(), Contains(kMixByAlpha)) << "any bit will do";
}

TEST_F(HUDEffect, APlainMaterialIsDrawnInItsDiffuseColour)
{
    stage.material->SetDiffuse(Color(0.5f, 0.25f, 0.125f, 0.5f));
    const std::vector<std::string> calls = ApplyTo(stage.data);
    EXPECT_THAT(calls, Contains("u_color(0.5, 0.25, 0.125, 0.5)"));
    EXPECT_THAT(calls, Contains(kMixByAlpha));
}

TEST_F(HUDEffect, DepthIsWrittenUnlessTheMaterialSaysNo)
{
    flat.noDepthWrite = true;
    EXPECT_THAT(Apply(), Contains(Call("glDepthMask", {0})));
    EXPECT_THAT(Remove(), ElementsAre(Call("glDepthMask", {1}))) << "on again whatever the material said";
}

TEST_F(HUDEffect, ATextureStillToComeIsNone)
{
    flatData.textureId = MaterialES20::PendingTexture;
    EXPECT_THAT(Apply(), Contains("u_enableTexture(0)"));
    EXPECT_FALSE(effect.blending);
}

TEST_F(HUDEffect, BindsPositionsAndTextureCoordinatesWhereThereAreAny)
{
    MeshES20& bare = stage.AddMesh(EffectStage::Bare);
    MeshES20& textured = stage.AddMesh(EffectStage::Texture);
    gl.SetAttribLocation("a_position", 3);
    gl.SetAttribLocation("a_texture", 5);
    OpenEffect elsewhere;

    gl.Clear();
    elsewhere.BindMeshAttributes(&bare);
    EXPECT_EQ(gl.Count("glEnableVertexAttribArray"), 1u);
    EXPECT_EQ(gl.Count("glEnableVertexAttribArray", {3}), 1u);
    EXPECT_EQ(gl.Count("glVertexAttribPointer", {3, 3, GL_FLOAT, 0, double(bare.GetStride()),
                                                 double(bare.GetPositionOffset())}),
              1u);
    gl.Clear();
    elsewhere.ReleaseMeshAttributes(&bare);
    EXPECT_THAT(gl.Strings(), ElementsAre(Call("glDisableVertexAttribArray", {3})));

    gl.Clear();
    elsewhere.BindMeshAttributes(&textured);
    EXPECT_EQ(gl.Count("glEnableVertexAttribArray"), 2u);
    EXPECT_EQ(gl.Count("glVertexAttribPointer", {5, 2, GL_FLOAT, 0, double(textured.GetStride()),
                                                 double(textured.GetTextureOffset())}),
              1u);
    gl.Clear();
    elsewhere.ReleaseMeshAttributes(&textured);
    EXPECT_THAT(gl.Strings(),
                ElementsAre(Call("glDisableVertexAttribArray", {5}), Call("glDisableVertexAttribArray", {3})));
}

TEST_F(HUDEffect, TakesTheMatrixOfTheLayerOrOfTheCamera)
{
    stage.AddMesh(EffectStage::Bare);
    Transform place;
    place.SetPosition(Vector(30, 20, 0));
    stage.Node().SetLocal(place);
    stage.Update();

    stage.camera.UpdateHudMVP(100, 50, -1.0f, 1.0f);
    Apply();
    const std::vector<float> layer = MeshMatrix();
    ASSERT_EQ(layer.size(), 16u);
    EXPECT_FLOAT_EQ(layer[12], 2.0f * 30.0f / 100.0f - 1.0f);
    EXPECT_FLOAT_EQ(layer[13], 2.0f * 20.0f / 50.0f - 1.0f);

    stage.camera.UpdateMVP(100, 50, false);
    Matrix expected;
    expected.Multiply(stage.camera.GetMVP(), *stage.Node().GetGlobalMatrix());
    EXPECT_THAT(MeshMatrix(), testing::ElementsAreArray(expected.m, 16));
}

TEST_F(HUDEffect, WithoutAProgramItDoesNoHarm)
{
    gl.SetLinkResult(0);
    OpenEffect broken;
    EXPECT_EQ(broken.m_currentProgram, 0u);
    MeshES20& mesh = stage.AddMesh(EffectStage::Texture);
    broken.Apply(&flatData, &stage.camera);
    gl.Clear();
    broken.BindMeshAttributes(&mesh);
    broken.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(gl.Strings(), IsEmpty());
}

} // namespace OV::Test
