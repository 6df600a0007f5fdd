#include "tests/effects/EffectChecks.h"

#include "tests/support/GLRecorder.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

namespace OV::Test
{

std::vector<std::string> ReadApply(GLRecorder& gl, EffectStage& stage, MaterialEffectES20& effect)
{
    effect.Apply(&stage.data, &stage.camera);
    effect.Remove();
    gl.Clear();
    // Values that the program holds are not sent again.
    EffectES20::ForgetUniformValues();
    effect.Apply(&stage.data, &stage.camera);
    return ReadCalls(gl);
}

std::vector<std::string> UniformTable(const std::map<unsigned int, std::string>& names)
{
    std::vector<std::string> table;
    for (const auto& [index, name] : names)
    {
        EXPECT_EQ(index, table.size()) << name;
        table.push_back(name);
    }
    return table;
}

std::vector<std::string> BoundAttributes(const GLRecorder& gl)
{
    std::vector<std::string> bound;
    for (const GLCall& call : gl.All("glBindAttribLocation"))
    {
        bound.push_back(std::to_string(call.Int(1)) + call.Text(2));
    }
    return bound;
}

std::uint64_t OptionsOf(unsigned int program, const std::map<std::uint64_t, unsigned int>& programsByOptions)
{
    for (const auto& [options, compiled] : programsByOptions)
    {
        if (compiled == program)
        {
            return options & ~EffectES20::OptionNoClipPlanes;
        }
    }
    return ~std::uint64_t{0};
}

void ExpectStream(const GLRecorder& gl, const MeshES20& mesh, unsigned int attribute, int components, int offset,
                  std::size_t times)
{
    const double index = attribute;
    EXPECT_EQ(gl.Count("glVertexAttribPointer", {index, static_cast<double>(components), GL_FLOAT, 0,
                                                 static_cast<double>(mesh.GetStride()), static_cast<double>(offset)}),
              times)
        << "attribute " << attribute;
    EXPECT_EQ(gl.Count("glEnableVertexAttribArray", {index}), times) << "attribute " << attribute;
}

void ExpectScreenStreams(GLRecorder& gl, EffectStage& stage, EffectES20& effect, EffectStage::Streams streams,
                         unsigned int textureAttribute)
{
    MeshES20& mesh = stage.AddMesh(streams);
    gl.Clear();
    effect.BindMeshAttributes(&mesh);
    ExpectStream(gl, mesh, 0, 3, mesh.GetPositionOffset());
    const std::size_t times = streams == EffectStage::Texture ? 1 : 0;
    ExpectStream(gl, mesh, textureAttribute, 2, mesh.GetTextureOffset(), times);
    gl.Clear();
    effect.ReleaseMeshAttributes(&mesh);
    // Of an effect that keeps them until it is removed.
    EffectES20::EndUse();
    EXPECT_THAT(gl.Strings(), ::testing::ElementsAre(
                                  CallText("glDisableVertexAttribArray", {0}),
                                  CallText("glDisableVertexAttribArray", {static_cast<double>(textureAttribute)})));
}

} // namespace OV::Test
