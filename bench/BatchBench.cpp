#include "bench/BenchSupport.h"
#include "orvane_host/present/Picking.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <GL/glew.h>
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

// A large scene whose nodes stand still, drawn together, against the hand-written loop that draws
// it node by node: program in use, attribute pointers, one matrix and the draw. What counts is the
// ratio of the two in one run. `batch_bench NODES` prints them; `batch_bench NODES PART` does one
// part again and again, to count its instructions.
namespace
{

using namespace OV;
using namespace OV::Bench;

constexpr int kWidth = 1280;
constexpr int kHeight = 720;
constexpr int kMaterials = 50;
constexpr int kCells = 7; ///< 98 triangles a mesh

std::shared_ptr<RawMesh> MakePiece(float x, float y)
{
    std::vector<Vector> positions;
    std::vector<Vector> normals;
    std::vector<unsigned short> indices;
    for (int j = 0; j <= kCells; ++j)
    {
        for (int i = 0; i <= kCells; ++i)
        {
            positions.emplace_back(0.9f * static_cast<float>(i) / kCells, 0.9f * static_cast<float>(j) / kCells,
                                   0.1f * std::sin(x + static_cast<float>(i)) * std::cos(y + static_cast<float>(j)));
            normals.emplace_back(0.0f, 0.0f, 1.0f);
        }
    }
    for (int j = 0; j < kCells; ++j)
    {
        for (int i = 0; i < kCells; ++i)
        {
            const auto a = static_cast<unsigned short>(j * (kCells + 1) + i);
            const auto c = static_cast<unsigned short>(a + kCells + 1);
            const auto b = static_cast<unsigned short>(a + 1);
            const auto d = static_cast<unsigned short>(c + 1);
            indices.insert(indices.end(), {a, b, d, a, d, c});
        }
    }
    auto raw = std::make_shared<RawMesh>();
    raw->SetPositionBuffer(std::move(positions));
    raw->SetNormalBuffer(std::move(normals));
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    return raw;
}

/// What a loop that knows everything beforehand needs of a mesh.
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

class BenchRenderer : public Host::PresentationRenderer
{
public:
    BenchRenderer() : PresentationRenderer(nullptr, nullptr) { SetLook(Host::Look::Basic); }
    EffectCache& Effects() { return effectCache; }
};

std::size_t HeapInUse()
{
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

class BatchBench
{
public:
    explicit BatchBench(int count) : m_context(OpenContext(kWidth, kHeight)), m_count(count)
    {
        SkySettings::inst().SetUseFog(false);
        const std::size_t before = HeapInUse();
        Fill();
        m_camera = m_scene.GetCameraNode();
        LookAt(0.5f, 0.5f, 1.0f);
        m_renderer.Resize(kWidth, kHeight);
        const std::size_t described = HeapInUse();
        const auto start = Clock::now();
        m_renderer.SetBatches({Host::BatchUse::On});
        Draw();
        m_openMilliseconds = MillisecondsSince(start);
        m_heapOfFirstFrame = static_cast<double>(HeapInUse() - described) / m_count;
        m_heapOfNode = static_cast<double>(HeapInUse() - before) / m_count;
    }

    ~BatchBench() { m_scene.Suspend(); }

    /// What the parts are called.
    double Time(const std::string& part, int times);

    void Print();

private:
    using Clock = std::chrono::steady_clock;

    static double MillisecondsSince(Clock::time_point start)
    {
        return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    }

    void Fill();
    /// @param share of the width and height of the scene that is seen.
    void LookAt(float x, float y, float share);
    void Flatten();
    void DrawByHand() const;
    void Draw();
    void Use(Host::BatchUse use);
    void MoveSome(int first, int count);

    std::unique_ptr<Host::HeadlessContext> m_context;
    BenchRenderer m_renderer;
    Scene m_scene;
    Host::Picking m_picking{m_renderer};
    CameraNode* m_camera = nullptr;
    int m_count;
    int m_side = 0;
    int m_step = 0;
    double m_openMilliseconds = 0.0;
    double m_heapOfNode = 0.0;
    double m_heapOfFirstFrame = 0.0;
    Host::BatchUse m_use = Host::BatchUse::On;
    std::vector<MeshNode*> m_nodes;
    std::vector<std::vector<FlatMesh>> m_flat;
    unsigned m_program = 0;
    int m_mvp = -1;
};

void BatchBench::Fill()
{
    m_scene.GetRoot()->AddChild(new LightNode(&m_scene), false);
    std::vector<Material*> materials;
    for (int i = 0; i < kMaterials; ++i)
    {
        materials.push_back(new Material("material"));
        m_scene.AddMaterial(materials.back());
    }
    m_side = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(m_count))));
    for (int i = 0; i < m_count; ++i)
    {
        const auto x = static_cast<float>(i % m_side);
        const auto y = static_cast<float>(i / m_side);
        auto* const mesh = new Mesh(MakePiece(x, y), &m_scene);
        auto* const node = new MeshNode(&m_scene);
        Transform place;
        place.SetPosition(Vector(x, y, 0.0f));
        node->SetLocal(place);
        mesh->AddNode(node);
        m_scene.GetRoot()->AddChild(node, false);
        // As in a building: neighbours share materials by and large.
        materials[static_cast<std::size_t>((i / m_side / 4 + i % m_side / 4) % kMaterials)]->AddMesh(mesh);
        m_nodes.push_back(node);
    }
}

void BatchBench::LookAt(float x, float y, float share)
{
    const auto side = static_cast<float>(m_side);
    m_camera->SetProjection(CameraNode::Orthographic);
    Transform place;
    place.SetPosition(Vector(x * side, y * side, 50.0f));
    m_camera->SetLocal(place);
    m_camera->SetNearFar(1.0f, 100.0f);
    // Of the shorter side, which is the height.
    m_camera->SetDistanceToTarget(0.5f * share * side / std::tan(m_camera->GetFOV()));
    m_scene.UpdateGraph(kWidth, kHeight);
}

void BatchBench::Draw()
{
    m_scene.UpdateGraph(kWidth, kHeight);
    m_renderer.Render3D(&m_scene, m_camera);
}

void BatchBench::Use(Host::BatchUse use)
{
    if (m_use != use)
    {
        m_use = use;
        m_renderer.SetBatches({use});
        Draw();
        Draw();
    }
}

void BatchBench::Flatten()
{
    Use(Host::BatchUse::Off);
    const auto* const camera = static_cast<CameraNodeES20*>(m_camera->GetRenderData());
    EffectES20* const effect = m_renderer.Effects().GetEffect(EffectCache::BasicMaterial);
    m_program = effect->ProgramForOptions(EffectES20::OptionNoClipPlanes);
    effect->Release();
    m_mvp = glGetUniformLocation(m_program, "u_mvpMatrix");
    m_flat.clear();
    for (const Material* material : m_scene.GetOptimizedMaterials())
    {
        m_flat.emplace_back();
        for (Mesh* mesh : material->GetMeshes())
        {
            const auto* const data = static_cast<MeshES20*>(mesh->GetRenderData());
            FlatMesh flat;
            flat.vertexBuffer = data->vertexBufferId;
            flat.indexBuffer = data->indexBufferId;
            flat.stride = data->GetStride();
            flat.positionOffset = data->GetPositionOffset();
            flat.normalOffset = data->GetNormalOffset();
            flat.indexOffset = data->indexOffset;
            flat.indexCount = static_cast<int>(mesh->GetNumIndices());
            flat.mvp.Multiply(camera->GetMVP(), *mesh->GetNodes().front()->GetGlobalMatrix());
            m_flat.back().push_back(flat);
        }
    }
}

void BatchBench::DrawByHand() const
{
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
    glClear(GL_DEPTH_BUFFER_BIT);
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    unsigned bound = 0;
    for (const std::vector<FlatMesh>& meshes : m_flat)
    {
        glUseProgram(m_program);
        glEnableVertexAttribArray(0);
        glEnableVertexAttribArray(1);
        for (const FlatMesh& mesh : meshes)
        {
            if (mesh.vertexBuffer != bound)
            {
                glBindBuffer(GL_ARRAY_BUFFER, mesh.vertexBuffer);
                glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh.indexBuffer);
                bound = mesh.vertexBuffer;
            }
            glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, mesh.stride, Pointer(mesh.positionOffset));
            glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, mesh.stride, Pointer(mesh.normalOffset));
            glUniformMatrix4fv(m_mvp, 1, GL_FALSE, mesh.mvp.m);
            glDrawElements(GL_TRIANGLES, mesh.indexCount, GL_UNSIGNED_SHORT, Pointer(mesh.indexOffset));
        }
    }
    glDisableVertexAttribArray(0);
    glDisableVertexAttribArray(1);
    // The renderer knows nothing of what was bound here.
    MeshES20::ResetBufferCache();
}

void BatchBench::MoveSome(int first, int count)
{
    for (int i = 0; i < count; ++i)
    {
        MeshNode& node = *m_nodes[static_cast<std::size_t>((first + i * 97) % m_count)];
        Transform place = node.GetLocal();
        Vector position = place.GetPosition();
        position.z = 0.01f * static_cast<float>(m_step % 10);
        place.SetPosition(position);
        node.SetLocal(place);
    }
    ++m_step;
}

double BatchBench::Time(const std::string& part, int times)
{
    std::function<void()> work = [this] { Draw(); };
    LookAt(0.5f, 0.5f, 1.0f);
    if (part == "raw")
    {
        if (m_flat.empty())
        {
            Flatten();
        }
        work = [this] { DrawByHand(); };
    }
    else
    {
        Use(part == "single" ? Host::BatchUse::Off : Host::BatchUse::On);
        m_renderer.SetEdges(part == "edges" ? std::optional<Host::EdgeLook>(Host::EdgeLook()) : std::nullopt);
    }
    if (part == "orbit")
    {
        work = [this] {
            LookAt(0.5f + 0.01f * static_cast<float>(++m_step % 10), 0.5f, 0.9f);
            Draw();
        };
    }
    else if (part == "tenth")
    {
        // Of the area.
        LookAt(0.5f, 0.5f, 0.237f);
    }
    else if (part == "pick")
    {
        work = [this] { m_picking.Pick(m_scene, *m_camera, {kWidth / 2, kHeight / 2, 1, 1}); };
    }
    else if (part == "edit")
    {
        work = [this] {
            MoveSome(0, m_count / 100);
            Draw();
        };
    }
    else if (part == "edit-other")
    {
        work = [this] {
            MoveSome(m_step * 131, m_count / 100);
            Draw();
        };
    }
    for (int i = 0; i < 12; ++i)
    {
        work();
    }
    std::vector<double> taken;
    for (int i = 0; i < times; ++i)
    {
        const auto start = Clock::now();
        work();
        m_context->Finish();
        taken.push_back(MillisecondsSince(start));
    }
    std::sort(taken.begin(), taken.end());
    return taken[taken.size() / 2];
}

void BatchBench::Print()
{
    const Host::BatchCounts counts = m_renderer.CountBatches();
    std::printf("%d nodes: %zu batches of %zu, %zu by themselves\n", m_count, counts.batches, counts.pieces,
                counts.single);
    const double geometry = (kCells + 1) * (kCells + 1) * 2.0 * sizeof(Vector) + 6.0 * kCells * kCells * 2.0;
    std::printf("heap of a node %.0f bytes, its geometry arrays %.0f; batches %.0f\n", m_heapOfNode, geometry,
                static_cast<double>(counts.bytes) / m_count);
    std::printf("of that the first frame added %.0f bytes\n", m_heapOfFirstFrame);
    std::printf("opened in %.1f ms\n", m_openMilliseconds);
    const int times = m_count > 20000 ? 15 : 61;
    for (const char* part : {"static", "orbit", "tenth", "pick", "edit", "edit-other", "edges", "single", "raw"})
    {
        std::printf("%-12s %8.3f ms\n", part, Time(part, times));
    }
}

} // namespace

int main(int argc, char** argv)
{
    DropDrawing();
    BatchBench bench(argc > 1 ? std::atoi(argv[1]) : 10000);
    if (argc > 2)
    {
        std::printf("%.3f ms\n", bench.Time(argv[2], argc > 3 ? std::atoi(argv[3]) : 21));
        return 0;
    }
    bench.Print();
    return 0;
}
