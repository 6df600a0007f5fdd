#include "orvane/effects/DepthIdPassEffectES20.h"

#include "orvane/math/Matrix.h"
#include "orvane/math/Transform.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/effects/EffectChecks.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace OV::Test
{

namespace
{

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class OpenEffect : public DepthIdPassEffectES20
{
public:
    OpenEffect() : DepthIdPassEffectES20(nullptr) {}

    using DepthIdPassEffectES20::idMode;
    using DepthIdPassEffectES20::m_currentProgram;
};

class DepthIdPass : public ::testing::Test
{
protected:
    /// Selects the program of a mode and forgets the calls.
    void Use(int mode)
    {
        effect.SetIdMode(mode);
        effect.Apply(nullptr, &stage.camera);
        gl.Clear();
    }

    std::vector<float> Encoded(int userData)
    {
        stage.Node().SetUserData(userData);
        effect.BindMeshUniforms(&stage.Node());
        return gl.Uniform("u_encodedGroupInstance");
    }

    EffectSettingsGuard settings;
    GLRecorder gl;
    EffectStage stage;
    OpenEffect effect;
};

/// The stated arithmetic, in numbers wide enough never to overflow but where 32 bits are asked.
std::array<double, 4> Model(std::int64_t id)
{
    const std::int64_t group = std::int64_t(std::floor(double(id) / 16.0)) & 0xFFFFF000;
    const std::int64_t v = group | ((id & 0xFFFF) + 1);
    std::int64_t product = v * 122 % (std::int64_t(1) << 32);
    if (product >= (std::int64_t(1) << 31))
    {
        product -= std::int64_t(1) << 32;
    }
    const double e = static_cast<double>(product);
    const double blue = std::floor(e / 65536.0);
    double rest = e - blue * 65536.0;
    const double green = std::floor(rest / 256.0);
    rest -= green * 256.0;
    return {std::floor(rest) / 255.0, green / 255.0, blue / 255.0, 1.0};
}

} // namespace

TEST_F(DepthIdPass, NodeZeroIsNotBlack)
{
    stage.AddMesh(EffectStage::Bare);
    Use(1);
    EXPECT_THAT(Encoded(0), ElementsAre(static_cast<float>(122.0 / 255.0), 0.0f, 0.0f, 1.0f));
}

TEST_F(DepthIdPass, TheLargestObjectOfGroupZeroIsAllBlue)
{
    stage.AddMesh(EffectStage::Bare);
    Use(1);
    EXPECT_THAT(Encoded(0xFFFF), ElementsAre(0.0f, 0.0f, static_cast<float>(122.0 / 255.0), 1.0f));
}

TEST_F(DepthIdPass, IdentifiersAreEncodedByTheStatedArithmetic)
{
    stage.AddMesh(EffectStage::Bare);
    Use(1);
    for (const std::int64_t id :
         {0LL, 1LL, 2LL, 255LL, 256LL, 4095LL, 4096LL, 0xFFFELL, 0xFFFFLL, 0x10000LL, 0x10001LL, 0x1FFFFLL, 0x20000LL,
          0x123456LL, 0x7FFF0000LL, 0x7FFFFFFELL, 0x7FFFFFFFLL, -1LL, -2LL, -16LL, -0x10000LL, -0x10001LL,
          -0x7FFFFFFFLL, -0x80000000LL})
    {
        const std::array<double, 4> model = Model(id);
        const std::vector<float> color = Encoded(static_cast<int>(id));
        ASSERT_EQ(color.size(), 4u);
        for (std::size_t i = 0; i < 4; ++i)
        {
            EXPECT_EQ(color[i], static_cast<float>(model[i])) << id << " channel " << i;
        }
        float direct[4];
        DepthIdPassEffectES20::EncodeId(static_cast<int>(id), direct);
        EXPECT_THAT(color, ::testing::ElementsAreArray(direct));
    }
}

TEST_F(DepthIdPass, ApplySelectsTheProgramOfTheModeAndTurnsBlendingOff)
{
    EXPECT_EQ(effect.idMode, 0);
    const char* const options[] = {"#define OBJECTID\n", "#define GROUPID\n"};
    for (const int mode : {0, 1})
    {
        effect.SetIdMode(mode);
        EXPECT_EQ(effect.GetIdMode(), mode);
        gl.Clear();
        effect.Apply(nullptr, &stage.camera);
        EXPECT_EQ(gl.Count("glDisable", {GL_BLEND}), 1u);
        EXPECT_EQ(gl.CurrentProgram(), effect.m_currentProgram);
        for (const std::string& text : gl.ProgramTexts(effect.m_currentProgram))
        {
            EXPECT_THAT(text, HasSubstr(options[mode]));
            EXPECT_THAT(text, Not(HasSubstr(options[1 - mode])));
        }
    }
    gl.Clear();
    effect.Remove();
    EXPECT_THAT(gl.Calls(), IsEmpty());
}

TEST_F(DepthIdPass, ColoursAreReadForVertexIdentifiersOnlyAndWhereTheMeshHasThem)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Bare);
    for (const int offset : {-1, 0, 12})
    {
        mesh.colorOffset = offset;
        for (const int mode : {0, 1})
        {
            SCOPED_TRACE(std::to_string(offset) + ' ' + std::to_string(mode));
            Use(mode);
            effect.BindMeshAttributes(&mesh);
            ExpectStream(gl, mesh, 0, 3, mesh.GetPositionOffset());
            const std::size_t colors = offset >= 0 && mode == 0 ? 1 : 0;
            ExpectStream(gl, mesh, 1, 4, offset, colors);
            effect.ReleaseMeshAttributes(&mesh);
            EXPECT_EQ(gl.Count("glDisableVertexAttribArray"), 0u);
            effect.Remove();
            EXPECT_EQ(gl.Count("glDisableVertexAttribArray", {0}), 1u);
            EXPECT_EQ(gl.Count("glDisableVertexAttribArray", {1}), colors);
        }
    }
}

TEST_F(DepthIdPass, VertexIdentifiersSetNoIdentifierOfTheNode)
{
    stage.AddMesh(EffectStage::Bare);
    Use(0);
    EXPECT_THAT(Encoded(5), IsEmpty());
}

TEST_F(DepthIdPass, MatricesComeFromCameraAndNodeAndDitheringGoesOff)
{
    stage.AddMesh(EffectStage::Bare);
    Transform place;
    place.SetPosition(Vector(1.0f, 2.0f, 3.0f));
    stage.Node().SetLocal(place);
    stage.Update();
    Use(1);
    effect.BindMeshUniforms(&stage.Node());
    const Matrix world = *stage.Node().GetGlobalMatrix();
    Matrix product;
    product.Multiply(stage.camera.GetMVP(), world);
    const std::vector<float> mvp = gl.Uniform("u_mvpMatrix");
    const std::vector<float> transform = gl.Uniform("u_worldTransform");
    ASSERT_EQ(mvp.size(), 16u);
    ASSERT_EQ(transform.size(), 16u);
    for (int i = 0; i < 16; ++i)
    {
        EXPECT_FLOAT_EQ(mvp[std::size_t(i)], product.m[i]) << i;
        EXPECT_EQ(transform[std::size_t(i)], world.m[i]) << i;
    }
    EXPECT_EQ(gl.Calls().back().ToString(), CallText("glDisable", {GL_DITHER}));
}

TEST_F(DepthIdPass, IsNamedByItsOptions)
{
    std::string name;
    effect.CreateProgramForOptions(1, name);
    EXPECT_EQ(name, "DepthIdPassEffectES20|OBJECTID");
    effect.CreateProgramForOptions(2, name);
    EXPECT_EQ(name, "DepthIdPassEffectES20|GROUPID");
}

TEST_F(DepthIdPass, SixClipPlanesAtMostAreHandedOnWhetherAMeshIsToBeCutOrNot)
{
    stage.AddMesh(EffectStage::Bare);
    Use(1);
    effect.clipPlanesActive = false;
    for (int count = 0; count <= 7; ++count)
    {
        gl.Clear();
        effect.BindMeshUniforms(&stage.Node());
        const int used = std::min(count, 6);
        EXPECT_THAT(gl.Uniform("u_numClipPlanes"), ElementsAre(float(used)));
        // A seventh changes nothing.
        EXPECT_EQ(gl.Count("glUniform3fv"), count > 0 && count < 7 ? 2u : 0u);
        if (count > 0)
        {
            EXPECT_EQ(gl.Uniform("u_clipPlaneNormals").size(), std::size_t(used) * 3);
            EXPECT_EQ(gl.Uniform("u_clipPlanePositions").back(), float(used));
        }
        EffectES20::AddClipPlane(glm::vec3(0, 0, 1), glm::vec3(0, 0, float(count + 1)));
    }
}

} // namespace OV::Test
