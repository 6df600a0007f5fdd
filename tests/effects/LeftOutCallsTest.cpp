#include "orvane/effects/AdvancedMaterialEffectES20.h"
#include "orvane/effects/AdvancedMaterialPhongEffectES20.h"
#include "orvane/effects/BasicMaterialAmbientPassEffectES20.h"
#include "orvane/effects/BasicMaterialEffectES20.h"
#include "orvane/effects/CrosshatchEffectES20.h"
#include "orvane/effects/DepthIdPassEffectES20.h"
#include "orvane/effects/MonotoneEffectES20.h"
#include "orvane/effects/ShaderProgram.h"
#include "orvane/effects/VertexColorEffectES20.h"
#include "orvane/scene/Mesh.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/effects/EffectStage.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

#include <map>
#include <random>
#include <set>

namespace OV::Test
{

namespace
{

using ::testing::ElementsAre;

/// What the calls of a recorder have made of GL so far, and what each draw found.
class GLModel
{
public:
    /// Takes in what was called since, and has the recorder forget it.
    void Follow(GLRecorder& gl)
    {
        for (const GLCall& call : gl.Calls())
        {
            ++calls;
            Take(call);
        }
        gl.Clear();
    }

    /// Notes what a draw would find now.
    void Describe()
    {
        std::string text = "program " + std::to_string(m_program);
        const auto uniforms = m_uniforms.find(m_program);
        if (uniforms != m_uniforms.end())
        {
            for (const auto& [location, value] : uniforms->second)
            {
                text += "\n" + value;
            }
        }
        for (const std::int64_t array : arrays)
        {
            text += "\n" + m_pointers.at(array);
        }
        draws.push_back(text);
    }

    std::vector<std::string> draws;
    std::set<std::int64_t> arrays;
    std::size_t calls = 0;

private:
    void Take(const GLCall& call)
    {
        if (call.name == "glUseProgram")
        {
            m_program = call.Int(0);
        }
        else if (call.name.compare(0, 9, "glUniform") == 0)
        {
            m_uniforms[m_program][call.Int(0)] = call.ToString();
        }
        else if (call.name == "glVertexAttribPointer")
        {
            m_pointers[call.Int(0)] = call.ToString();
        }
        else if (call.name == "glEnableVertexAttribArray")
        {
            arrays.insert(call.Int(0));
        }
        else if (call.name == "glDisableVertexAttribArray")
        {
            arrays.erase(call.Int(0));
        }
        else if (call.name == "glDrawElements")
        {
            Describe();
        }
    }

    std::int64_t m_program = 0;
    std::map<std::int64_t, std::map<std::int64_t, std::string>> m_uniforms; ///< by program and location
    std::map<std::int64_t, std::string> m_pointers;
};

/// Whether an effect is let follow what its program holds.
enum class Following
{
    On,
    Off
};

/// Everything that draws surfaces, over meshes of all streams, in an order drawn by chance.
class RandomFrames
{
public:
    RandomFrames(unsigned int seed, Following following) : m_random(seed), m_following(following)
    {
        m_effects.push_back(std::make_unique<BasicMaterialEffectES20>(nullptr, false));
        m_effects.push_back(std::make_unique<BasicMaterialEffectES20>(nullptr, true));
        m_effects.push_back(std::make_unique<BasicMaterialAmbientPassEffectES20>(nullptr));
        m_effects.push_back(std::make_unique<DepthIdPassEffectES20>(nullptr));
        m_effects.push_back(std::make_unique<MonotoneEffectES20>(nullptr));
        m_effects.push_back(std::make_unique<VertexColorEffectES20>(nullptr));
        m_effects.push_back(std::make_unique<AdvancedMaterialEffectES20>(nullptr));
        m_effects.push_back(std::make_unique<AdvancedMaterialPhongEffectES20>(nullptr));
        m_effects.push_back(std::make_unique<CrosshatchEffectES20>(nullptr));
        m_stage.AddLight();
        for (unsigned int streams = 0; streams < 4; ++streams)
        {
            m_meshes.push_back(&m_stage.AddMesh(streams));
            m_stage.AddNode();
        }
        m_stage.Update();
        // Programs are numbered alike in every run.
        for (const auto& effect : m_effects)
        {
            for (const std::uint64_t options : {0u, 1u, 2u, 16u})
            {
                effect->Precompile(options);
            }
        }
    }

    ~RandomFrames() { m_stage.data.textureId = 0; }

    void Draw(int applies)
    {
        for (int i = 0; i < applies; ++i)
        {
            ChangeSomething();
            MaterialEffectES20& effect = *m_effects[Chance(m_effects.size())];
            effect.Apply(&m_stage.data, &m_stage.camera);
            if (m_following == Following::Off)
            {
                // Whoever binds a program takes it out of the effect's sight.
                ShaderProgram(static_cast<int>(gl.CurrentProgram())).Bind();
            }
            const std::size_t meshes = Chance(5);
            for (std::size_t mesh = 0; mesh < meshes; ++mesh)
            {
                MeshES20& drawn = *m_meshes[Chance(m_meshes.size())];
                drawn.EnableClippingPlane(Chance(2) == 0);
                drawn.Render(&effect, drawn.GetMesh()->GetNodes(), false);
            }
            effect.Remove();
            MeshES20::ResetBufferCache();
            model.Follow(gl);
            // The ambient pass leaves its positions on, so that the end is compared as well.
            model.Describe();
        }
    }

    GLRecorder gl;
    GLModel model;

private:
    std::size_t Chance(std::size_t cases) { return m_random() % cases; }

    float Part() { return static_cast<float>(Chance(3)) / 2.0f; }

    void ChangeSomething()
    {
        switch (Chance(10))
        {
        case 0: m_stage.material->SetDiffuse(Color(Part(), Part(), Part())); break;
        case 1: m_stage.material->SetAmbient(Color(Part(), Part(), Part())); break;
        case 2: m_stage.material->SetFlags(MaterialFlagUnlit); break;
        case 8: m_stage.material->ClearFlags(MaterialFlagUnlit); break;
        case 3: m_stage.data.textureId = static_cast<unsigned int>(Chance(2)) * 5; break;
        case 4: EffectES20::AddClipPlane({Part(), 1, 0}, {0, Part(), 0}); break;
        case 5: EffectES20::ClearClipPlanes(); break;
        case 6: EffectES20::EnablePocheColor(Chance(2) == 0); break;
        case 7: EffectES20::SetShadow(Chance(2) == 0); break;
        default: break;
        }
    }

    EffectSettingsGuard m_settings;
    EffectStage m_stage;
    std::vector<MeshES20*> m_meshes;
    std::vector<std::unique_ptr<MaterialEffectES20>> m_effects;
    std::mt19937 m_random;
    Following m_following;
};

class LeftOutCalls : public ::testing::Test
{
protected:
    LeftOutCalls() { stage.AddLight(); }

    void Apply() { effect.Apply(&stage.data, &stage.camera); }

    void Render(MeshES20& mesh) { mesh.Render(&effect, mesh.GetMesh()->GetNodes(), false); }

    std::vector<std::string> Arrays()
    {
        return gl.Strings({"glEnableVertexAttribArray", "glDisableVertexAttribArray", "glDrawElements"});
    }

    std::size_t Uniforms() const
    {
        std::size_t count = 0;
        for (const std::string& name : gl.Names())
        {
            count += name.compare(0, 9, "glUniform") == 0 ? 1 : 0;
        }
        return count;
    }

    EffectSettingsGuard settings;
    GLRecorder gl;
    EffectStage stage;
    BasicMaterialEffectES20 effect{nullptr, false};
};

std::string EnableArray(unsigned int attribute)
{
    return CallText("glEnableVertexAttribArray", {static_cast<double>(attribute)});
}

std::string DisableArray(unsigned int attribute)
{
    return CallText("glDisableVertexAttribArray", {static_cast<double>(attribute)});
}

/// The place of "u_color" in the table of the basic effect.
constexpr int kColor = 1;

} // namespace

TEST(LeftOutCallsOfAllEffects, EveryDrawFindsGLAsIfAllHadBeenSent)
{
    for (unsigned int seed = 1; seed <= 20; ++seed)
    {
        SCOPED_TRACE(seed);
        std::vector<std::string> expected;
        std::size_t all = 0;
        {
            RandomFrames frames(seed, Following::Off);
            frames.Draw(100);
            expected = frames.model.draws;
            all = frames.model.calls;
        }
        RandomFrames frames(seed, Following::On);
        frames.Draw(100);
        ASSERT_GT(expected.size(), 100u);
        EXPECT_EQ(frames.model.draws, expected);
        EXPECT_LT(frames.model.calls, all * 7 / 10);
    }
}

TEST_F(LeftOutCalls, ASecondNodeOfAMeshIsSentItsMatrixAlone)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    Transform shifted;
    shifted.SetPosition(Vector(1, 2, 3));
    stage.AddNode().SetLocal(shifted);
    stage.Update();
    Apply();
    gl.Clear();
    Render(mesh);
    // The normal matrix is the same, since the second node is only shifted.
    const std::size_t first = gl.IndexOf("glDrawElements");
    const std::vector<std::string> names = gl.Names();
    EXPECT_THAT(std::vector<std::string>(names.begin() + static_cast<std::ptrdiff_t>(first) + 1, names.end()),
                ElementsAre("glUniformMatrix4fv", "glUniformMatrix4fv", "glDrawElements"));
    effect.Remove();
}

TEST_F(LeftOutCalls, AnUnchangedFrameSendsNoUniform)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    stage.Update();
    for (int frame = 0; frame < 2; ++frame)
    {
        gl.Clear();
        Apply();
        Render(mesh);
        effect.Remove();
        EXPECT_EQ(Uniforms() > 0, frame == 0);
        EXPECT_EQ(gl.Count("glUseProgram"), 1u);
        EXPECT_EQ(gl.Count("glDrawElements"), 1u);
    }
}

TEST_F(LeftOutCalls, AMeshWithoutNormalsBetweenTwoTurnsTheirArrayOffForItself)
{
    MeshES20& first = stage.AddMesh(EffectStage::Normals);
    MeshES20& bare = stage.AddMesh(EffectStage::Bare);
    MeshES20& last = stage.AddMesh(EffectStage::Normals);
    stage.Update();
    Apply();
    gl.Clear();
    Render(first);
    Render(bare);
    Render(last);
    const auto draw = ::testing::StartsWith("glDrawElements");
    EXPECT_THAT(Arrays(), ElementsAre(EnableArray(0), EnableArray(1), draw, DisableArray(1), draw, EnableArray(1), draw));
    gl.Clear();
    effect.Remove();
    EXPECT_THAT(Arrays(), ElementsAre(DisableArray(0), DisableArray(1)));
}

TEST_F(LeftOutCalls, WithoutAnApplyArraysAreTurnedOffAtOnce)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    Apply();
    effect.Remove();
    gl.Clear();
    Render(mesh);
    EXPECT_THAT(Arrays(), ElementsAre(EnableArray(0), EnableArray(1), ::testing::StartsWith("glDrawElements"),
                                      DisableArray(1), DisableArray(0)));
}

TEST_F(LeftOutCalls, AnApplyWithoutARemoveStartsWithAllArraysOff)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Normals);
    Apply();
    Render(mesh);
    gl.Clear();
    Apply();
    EXPECT_THAT(Arrays(), ElementsAre(DisableArray(0), DisableArray(1)));
    effect.Remove();
}

TEST_F(LeftOutCalls, AUniformWhoseLocationIsInOtherHandsIsAlwaysSent)
{
    Apply();
    effect.Remove();
    const int location = effect.UniformLocation(gl.CurrentProgram(), kColor);
    ASSERT_GE(location, 0);
    for (int frame = 0; frame < 3; ++frame)
    {
        glUniform4f(location, 0.5f, 0.5f, 0.5f, 0.5f);
        gl.Clear();
        Apply();
        effect.Remove();
        EXPECT_EQ(gl.Count("glUniform4f", {static_cast<double>(location)}), 1u);
        EXPECT_EQ(Uniforms(), 1u);
    }
}

TEST_F(LeftOutCalls, WhatAnEffectWritesIntoTheProgramOfAnotherIsNotTakenForGranted)
{
    MeshES20& mesh = stage.AddMesh(EffectStage::Bare);
    stage.Update();
    BasicMaterialEffectES20 other(nullptr, false);
    other.Apply(&stage.data, &stage.camera);
    other.Remove();
    Apply();
    Render(mesh);
    effect.Remove();
    // Never applied again, it writes its matrix to the program that is in use.
    other.BindMeshUniforms(&stage.Node());
    gl.Clear();
    Apply();
    Render(mesh);
    effect.Remove();
    EXPECT_EQ(gl.Count("glUniformMatrix4fv"), 1u);
}

TEST_F(LeftOutCalls, WhatMayHaveBeenWrittenByOthersIsSentAnew)
{
    Apply();
    effect.Remove();
    gl.Clear();
    EffectES20::ForgetUniformValues();
    Apply();
    const std::size_t all = Uniforms();
    EXPECT_GT(all, 3u);
    gl.Clear();
    EffectES20::ForgetUniformValues();
    effect.Remove();
    Apply();
    effect.Remove();
    EXPECT_EQ(Uniforms(), all);
}

TEST_F(LeftOutCalls, AnEffectMayGoWhileItIsApplied)
{
    auto gone = std::make_unique<BasicMaterialEffectES20>(nullptr, false);
    gone->Apply(&stage.data, &stage.camera);
    gone.reset();
    EffectES20::ForgetUniformValues();
    EffectES20::EndUse();
    gl.Clear();
    Apply();
    effect.Remove();
    EXPECT_GT(Uniforms(), 3u);
}

} // namespace OV::Test
