#include "bench/BenchSupport.h"
#include "bench/PatchScene.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/math/Matrix.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderer/Renderer20.h"
#include "orvane/scene/CameraNode.h"

#include <GL/glew.h>
#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <vector>

// A static scene drawn by the renderer and, in the same run, by a hand-written loop over flat
// arrays that makes the same GL calls with the same arguments: none but those that change anything.
// What counts is the ratio of the two.
namespace
{

using namespace OV;
using namespace OV::Bench;

/// Shows what the hand-written loop has to know.
class BenchRenderer : public Renderer20
{
public:
    BenchRenderer() : Renderer20(nullptr, nullptr) {}
    EffectCache& Effects() { return effectCache; }
};

/// What changes from mesh to mesh, ready for GL.
struct FlatMesh
{
    unsigned vertexBuffer;
    unsigned indexBuffer;
    int stride;
    std::intptr_t positionOffset;
    std::intptr_t normalOffset;
    std::intptr_t indexOffset;
    int indexCount;
    Matrix mvp;
};

struct FlatMaterial
{
    std::size_t first;
    std::size_t last;
};

class FrameBench
{
public:
    FrameBench()
    {
        m_context = OpenContext(256, 256);
        SkySettings::inst().SetUseFog(false);
        AddPatches(m_scene, 1.0f);
        m_renderer.Resize(256, 256);
        m_scene.UpdateGraph(256.0f, 256.0f);
        DrawWithEngine();
        Flatten();
    }

    ~FrameBench() { m_scene.Suspend(); }

    void DrawWithEngine()
    {
        m_renderer.Render3D(&m_scene, m_scene.GetCameraNode());
    }

    void DrawByHand() const;

private:
    void Flatten();

    std::unique_ptr<Host::HeadlessContext> m_context;
    BenchRenderer m_renderer;
    Scene m_scene;
    unsigned m_program = 0;
    int m_mvpLocation = -1; ///< of all uniforms the one that does not hold from frame to frame
    std::vector<FlatMaterial> m_flatMaterials;
    std::vector<FlatMesh> m_flatMeshes;
};

void FrameBench::Flatten()
{
    const auto* camera = static_cast<CameraNodeES20*>(m_scene.GetCameraNode()->GetRenderData());
    EffectES20* effect = m_renderer.Effects().GetEffect(EffectCache::BasicMaterial);
    m_program = effect->ProgramForOptions(EffectES20::OptionNoClipPlanes);
    effect->Release();
    m_mvpLocation = glGetUniformLocation(m_program, "u_mvpMatrix");
    for (Material* material : m_scene.GetOptimizedMaterials())
    {
        FlatMaterial flat{m_flatMeshes.size(), 0};
        for (Mesh* mesh : material->GetMeshes())
        {
            const auto* data = static_cast<MeshES20*>(mesh->GetRenderData());
            MeshNode* node = mesh->GetNodes().front();
            FlatMesh flatMesh;
            flatMesh.vertexBuffer = data->vertexBufferId;
            flatMesh.indexBuffer = data->indexBufferId;
            flatMesh.stride = data->GetStride();
            flatMesh.positionOffset = data->GetPositionOffset();
            flatMesh.normalOffset = data->GetNormalOffset();
            flatMesh.indexOffset = data->indexOffset;
            flatMesh.indexCount = static_cast<int>(mesh->GetNumIndices());
            flatMesh.mvp.Multiply(camera->GetMVP(), *node->GetGlobalMatrix());
            m_flatMeshes.push_back(flatMesh);
        }
        flat.last = m_flatMeshes.size();
        m_flatMaterials.push_back(flat);
    }
}

void FrameBench::DrawByHand() const
{
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
    glClear(GL_DEPTH_BUFFER_BIT);
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    glBlendEquation(GL_FUNC_ADD);
    unsigned bound = 0;
    for (const FlatMaterial& material : m_flatMaterials)
    {
        glDisable(GL_POLYGON_OFFSET_FILL);
        glUseProgram(m_program);
        glActiveTexture(GL_TEXTURE0);
        glBindTexture(GL_TEXTURE_2D, 0);
        for (std::size_t i = material.first; i < material.last; ++i)
        {
            const FlatMesh& mesh = m_flatMeshes[i];
            if (mesh.vertexBuffer != bound)
            {
                glBindBuffer(GL_ARRAY_BUFFER, mesh.vertexBuffer);
                glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh.indexBuffer);
                bound = mesh.vertexBuffer;
            }
            glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, mesh.stride, Pointer(mesh.positionOffset));
            if (i == material.first)
            {
                glEnableVertexAttribArray(0);
            }
            glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, mesh.stride, Pointer(mesh.normalOffset));
            if (i == material.first)
            {
                glEnableVertexAttribArray(1);
            }
            glUniformMatrix4fv(m_mvpLocation, 1, GL_FALSE, mesh.mvp.m);
            glDrawElements(GL_TRIANGLES, mesh.indexCount, GL_UNSIGNED_SHORT, Pointer(mesh.indexOffset));
        }
        glDisableVertexAttribArray(0);
        glDisableVertexAttribArray(1);
    }
}

FrameBench& Frame()
{
    static FrameBench bench;
    return bench;
}

void StaticSceneByEngine(benchmark::State& state)
{
    Repeat(state, kPatches, [] { Frame().DrawWithEngine(); });
}

void StaticSceneByHand(benchmark::State& state)
{
    Repeat(state, kPatches, [] { Frame().DrawByHand(); });
}

BENCHMARK(StaticSceneByEngine)->Unit(benchmark::kMillisecond);
BENCHMARK(StaticSceneByHand)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    DropDrawing();
    benchmark::Initialize(&argc, argv);
    RequireSameCalls([] { Frame().DrawWithEngine(); }, [] { Frame().DrawByHand(); });
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
