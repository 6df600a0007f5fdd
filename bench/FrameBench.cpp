#include "bench/BenchSupport.h"
#include "bench/FlatMesh.h"
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

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

// Scenes drawn by the renderer and, in the same run, by a hand-written loop over flat arrays that
// makes the same GL calls with the same arguments: none but those that change anything. What counts
// is the ratio of the two.
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

struct FlatMaterial
{
    std::size_t first;
    std::size_t last;
};

class FrameBench
{
public:
    explicit FrameBench(const PatchOptions& options) : m_patches(options.patches)
    {
        SkySettings::inst().SetUseFog(false);
        AddPatches(m_scene, options);
        m_renderer.Resize(256, 256);
        m_scene.UpdateGraph(256.0f, 256.0f);
        DrawWithEngine();
        Flatten();
    }

    ~FrameBench() { m_scene.Suspend(); }

    int Patches() const { return m_patches; }

    void DrawWithEngine()
    {
        m_renderer.Render3D(&m_scene, m_scene.GetCameraNode());
    }

    void DrawByHand() const;

    /// Moves every patch and brings up to date what is drawn from it.
    void MoveWithEngine()
    {
        m_lift = 1.0f - m_lift;
        for (std::size_t i = 0; i < m_nodes.size(); ++i)
        {
            m_nodes[i]->SetLocal(PatchPlace(m_nodes[i]->GetUserData(), m_lift));
        }
        m_scene.UpdateGraph(256.0f, 256.0f);
    }

    void MoveByHand();

private:
    void Flatten();

    int m_patches;
    float m_lift = 0.0f;
    BenchRenderer m_renderer;
    Scene m_scene;
    unsigned m_program = 0;
    int m_mvpLocation = -1; ///< of all uniforms the one that does not hold from frame to frame
    Matrix m_viewProjection;
    std::vector<MeshNode*> m_nodes; ///< in the order of drawing, as are the next
    std::vector<FlatMaterial> m_flatMaterials;
    std::vector<FlatMesh> m_flatMeshes;
    std::vector<FlatNode> m_flatNodes;
};

void FrameBench::Flatten()
{
    const auto* camera = static_cast<CameraNodeES20*>(m_scene.GetCameraNode()->GetRenderData());
    EffectES20* effect = m_renderer.Effects().GetEffect(EffectCache::BasicMaterial);
    m_program = effect->ProgramForOptions(EffectES20::OptionNoClipPlanes);
    effect->Release();
    m_mvpLocation = glGetUniformLocation(m_program, "u_mvpMatrix");
    m_viewProjection = camera->GetMVP();
    for (Material* material : m_scene.GetOptimizedMaterials())
    {
        FlatMaterial flat{m_flatMeshes.size(), 0};
        for (Mesh* mesh : material->EachMesh())
        {
            MeshNode* node = mesh->EachNode().front();
            m_flatMeshes.push_back(Bench::Flatten(*mesh, m_viewProjection));
            m_nodes.push_back(node);
            FlatNode flatNode{};
            flatNode.local = node->GetLocal();
            m_flatNodes.push_back(flatNode);
        }
        flat.last = m_flatMeshes.size();
        m_flatMaterials.push_back(flat);
    }
}

void FrameBench::MoveByHand()
{
    m_lift = 1.0f - m_lift;
    for (std::size_t i = 0; i < m_flatNodes.size(); ++i)
    {
        m_flatNodes[i].local = PatchPlace(m_nodes[i]->GetUserData(), m_lift);
    }
    for (std::size_t i = 0; i < m_flatNodes.size(); ++i)
    {
        Compose(m_flatNodes[i], m_viewProjection, m_flatMeshes[i]);
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
            BindFlat(mesh, bound);
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

/// Scenes by their options, made when first asked for: repetitions of all may be interleaved.
std::map<std::array<int, 4>, std::unique_ptr<FrameBench>>& Frames()
{
    static std::map<std::array<int, 4>, std::unique_ptr<FrameBench>> frames;
    return frames;
}

FrameBench& Frame(const PatchOptions& options)
{
    std::unique_ptr<FrameBench>& frame =
        Frames()[{options.patches, options.materials, options.columns, options.rows}];
    if (!frame)
    {
        frame = std::make_unique<FrameBench>(options);
        RequireSameCalls([&] { frame->DrawWithEngine(); }, [&] { frame->DrawByHand(); });
    }
    return *frame;
}

/// The scene of a benchmark's arguments: meshes, materials, columns and rows of cells.
PatchOptions OptionsOf(const benchmark::State& state)
{
    PatchOptions options;
    options.patches = static_cast<int>(state.range(0));
    options.materials = static_cast<int>(state.range(1));
    options.columns = static_cast<int>(state.range(2));
    options.rows = static_cast<int>(state.range(3));
    return options;
}

void StaticSceneByEngine(benchmark::State& state)
{
    FrameBench& frame = Frame(OptionsOf(state));
    Repeat(state, frame.Patches(), [&] { frame.DrawWithEngine(); });
}

void StaticSceneByHand(benchmark::State& state)
{
    FrameBench& frame = Frame(OptionsOf(state));
    Repeat(state, frame.Patches(), [&] { frame.DrawByHand(); });
}

void MovingSceneByEngine(benchmark::State& state)
{
    FrameBench& frame = Frame(OptionsOf(state));
    Repeat(state, frame.Patches(),
           [&]
           {
               frame.MoveWithEngine();
               frame.DrawWithEngine();
           });
}

void MovingSceneByHand(benchmark::State& state)
{
    FrameBench& frame = Frame(OptionsOf(state));
    Repeat(state, frame.Patches(),
           [&]
           {
               frame.MoveByHand();
               frame.DrawByHand();
           });
}

/// A thousand meshes, ten thousand, twenty large ones of 119,400 triangles, and 20,000 materials
/// with one mesh each.
void StaticScenes(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"meshes", "materials", "columns", "rows"})->Unit(benchmark::kMillisecond);
    bench->Args({1000, kPatchMaterials, kPatchCells, kPatchCells});
    bench->Args({kPatches, kPatchMaterials, kPatchCells, kPatchCells});
    bench->Args({20, 20, 199, 300});
    bench->Args({20000, kPatchMaterials, kPatchCells, kPatchCells});
    bench->Args({20000, 20000, kPatchCells, kPatchCells});
}

void MovingScenes(benchmark::internal::Benchmark* bench)
{
    bench->ArgNames({"meshes", "materials", "columns", "rows"})->Unit(benchmark::kMillisecond);
    bench->Args({kPatches, kPatchMaterials, kPatchCells, kPatchCells});
}

BENCHMARK(StaticSceneByEngine)->Apply(StaticScenes);
BENCHMARK(StaticSceneByHand)->Apply(StaticScenes);
BENCHMARK(MovingSceneByEngine)->Apply(MovingScenes);
BENCHMARK(MovingSceneByHand)->Apply(MovingScenes);

} // namespace

int main(int argc, char** argv)
{
    DropDrawing();
    benchmark::Initialize(&argc, argv);
    const std::unique_ptr<Host::HeadlessContext> context = OpenContext(256, 256);
    benchmark::RunSpecifiedBenchmarks();
    Frames().clear();
    return 0;
}
