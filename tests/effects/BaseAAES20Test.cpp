#include "orvane/effects/AAEffectES20.h"
#include "orvane/effects/FXAAEffectES20.h"
#include "tests/effects/EffectStage.h"
#include "tests/support/GLRecorder.h"
#include "tests/support/VirtualSlot.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

namespace OV::Test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

template <class Effect>
class Open : public Effect
{
public:
    Open() : Effect(nullptr) {}

    using Effect::height;
    using Effect::m_currentProgram;
    using Effect::width;
};

template <class Effect>
class ScreenEffect : public ::testing::Test
{
protected:
    GLRecorder gl;
    EffectStage stage;
    Open<Effect> effect;
};

using ScreenEffects = ::testing::Types<AAEffectES20, FXAAEffectES20>;
TYPED_TEST_SUITE(ScreenEffect, ScreenEffects);

using FXAA = ScreenEffect<FXAAEffectES20>;
using AA = ScreenEffect<AAEffectES20>;

} // namespace

TYPED_TEST(ScreenEffect, LinksOneProgramWhichItDeletesAtItsEnd)
{
    EXPECT_NE(this->effect.m_currentProgram, 0u);
    {
        const Open<TypeParam> second;
        EXPECT_EQ(this->gl.Live(GLObjectKind::Program).size(), 2u);
    }
    EXPECT_EQ(this->gl.Live(GLObjectKind::Program).size(), 1u);
    EXPECT_THAT(this->gl.Live(GLObjectKind::Shader), IsEmpty());
}

TYPED_TEST(ScreenEffect, KeepsTheSizeThatItIsGiven)
{
    EXPECT_EQ(this->effect.width, 0);
    EXPECT_EQ(this->effect.height, 0);
    this->effect.SetDimensions(30, 20);
    EXPECT_EQ(this->effect.width, 30);
    EXPECT_EQ(this->effect.height, 20);
}

TYPED_TEST(ScreenEffect, ApplySelectsTheProgramAndTakesNull)
{
    this->gl.Clear();
    this->effect.Apply(nullptr, nullptr);
    EXPECT_THAT(this->gl.Strings(), ElementsAre(CallText("glUseProgram", {double(this->effect.m_currentProgram)})));
    this->gl.Clear();
    this->effect.Remove();
    EXPECT_THAT(this->gl.Calls(), IsEmpty());
}

TYPED_TEST(ScreenEffect, ReadsThePositionsOfTheMeshAtItsOwnOffset)
{
    MeshES20& mesh = this->stage.AddMesh(EffectStage::Texture);
    mesh.positionOffset = 96;
    this->gl.Clear();
    this->effect.BindMeshAttributes(&mesh);
    EXPECT_THAT(this->gl.Strings({"glVertexAttribPointer", "glEnableVertexAttribArray"}),
                ::testing::UnorderedElementsAre(
                    CallText("glVertexAttribPointer",
                             {0, 3, GL_FLOAT, 0, double(mesh.GetStride()), double(mesh.GetPositionOffset())}),
                    "glEnableVertexAttribArray(0)"));
    EXPECT_EQ(this->gl.Calls().size(), 2u);
    this->gl.Clear();
    this->effect.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(this->gl.Strings(), ElementsAre("glDisableVertexAttribArray(0)"));
}

TYPED_TEST(ScreenEffect, WithoutAProgramNoAttributeIsTouched)
{
    this->gl.SetLinkResult(0);
    Open<TypeParam> broken;
    EXPECT_EQ(broken.m_currentProgram, 0u);
    MeshES20& mesh = this->stage.AddMesh(EffectStage::Bare);
    this->gl.Clear();
    broken.Apply(nullptr, nullptr);
    broken.BindMeshAttributes(&mesh);
    broken.ReleaseMeshAttributes(&mesh);
    EXPECT_THAT(this->gl.Strings(), ElementsAre("glUseProgram(0)"));
}

TEST_F(AA, SetsNoUniform)
{
    effect.SetDimensions(30, 20);
    gl.Clear();
    effect.BindMeshUniforms(nullptr);
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST_F(FXAA, SetsTheSizeInPixels)
{
    effect.SetDimensions(30, 20);
    effect.Apply(nullptr, nullptr);
    gl.Clear();
    effect.BindMeshUniforms(nullptr);
    EXPECT_THAT(gl.Uniform("u_width"), ElementsAre(30.0f));
    EXPECT_THAT(gl.Uniform("u_height"), ElementsAre(20.0f));
    EXPECT_EQ(gl.Calls().size(), 2u) << "locations were fetched once";
}

TEST(BaseAAES20, TheSizeFollowsTheSlotsOfItsBase)
{
    EXPECT_EQ(VirtualSlot(&BaseAAES20::SetDimensions), VirtualSlot(&MaterialEffectES20::Remove) + 1);
}

} // namespace OV::Test
