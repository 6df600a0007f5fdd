#include "bench/BenchSupport.h"
#include "bench/FlatMesh.h"
#include "bench/PatchScene.h"
#include "orvane_host/present/Picking.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/math/Color.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#ifdef ORVANE_COUNT_CALLS
#include "apps/render/GLCalls.h"
#endif

#include <GL/glew.h>
#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

// A large scene whose nodes stand still, drawn together, against the hand-written loop that draws
// it node by node: program in use, attribute pointers, one matrix and the draw. What counts is the
// ratio of the two in one run.
//
//   batch_bench NODES [PART...]       prints milliseconds of the parts, or of all
//   batch_bench NODES --times N PART  does one part so often, to count its instructions
//   batch_calls NODES [PART...]       prints the GL calls of a frame by kind
//
// With --look NAME behind the number of nodes, in that look, one of those with light. The loop then sends, of what
// its program reads, all that a node has of its own where none is turned: one matrix or two. With --materials N there
// are so many, which take turns and differ in colours, in place of 50 that stand in blocks.
namespace
{

using namespace OV;
using namespace OV::Bench;

constexpr int kWidth = 1280;
constexpr int kHeight = 720;
/// So many frames bring back what has moved.
constexpr int kSettled = 12;
/// Frames that are drawn in any case, and milliseconds after which there are no more.
constexpr int kFewest = 3;
constexpr double kLongEnough = 3000.0;

class BenchRenderer : public Host::PresentationRenderer
{
public:
    explicit BenchRenderer(Host::Look look) : PresentationRenderer(nullptr, nullptr) { SetLook(look); }
    EffectCache& Effects() { return effectCache; }
};

std::size_t HeapInUse()
{
    const struct mallinfo2 info = ::mallinfo2();
    return info.uordblks + info.hblkhd;
}

/// A software renderer takes and frees 200 MB in a frame of a million triangles. Whether the C
/// library gives it back in between depends on what was freed before, and taking it anew costs as
/// much as the drawing.
void KeepHeap()
{
    ::mallopt(M_MMAP_THRESHOLD, 32 << 20);
    ::mallopt(M_TRIM_THRESHOLD, 2000 << 20);
}

class BatchBench
{
public:
    /// @param materials 0 for those of the usual scene.
    BatchBench(int count, Host::Look look, int materials);
    ~BatchBench() { m_scene.Suspend(); }

    static const std::vector<std::string>& Parts();

    void Repeat(const std::string& part, int times);

    /// Of a frame, in milliseconds: the median.
    double Time(const std::string& part, int times);

    void PrintScene() const;
    void PrintTimes(const std::vector<std::string>& parts);
    /// In the program that counts.
    void PrintCalls(const std::vector<std::string>& parts);

private:
    using Clock = std::chrono::steady_clock;

    struct Part
    {
        const char* name;
        Host::BatchUse use;
        /// Of the width and height of the scene that is seen.
        float share;
        void (BatchBench::*work)();
    };

    static double MillisecondsSince(Clock::time_point start)
    {
        return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    }

    static const std::vector<Part>& Table();
    static const Part& Find(const std::string& name);

    void LookAt(float x, float y, float share);
    void Flatten();
    void Use(Host::BatchUse use);
    void Prepare(const Part& part);
    void Lift(int index);

    void Draw();
    EffectCache::EffectType EffectOfLook() const;
    void DrawByHand();
    void DrawMovedByHand();
    void Orbit();
    void Pick();
    void MoveOne();
    void MoveAll();
    void MoveTheSame();
    void MoveOthers();

    std::unique_ptr<Host::HeadlessContext> m_context;
    BenchRenderer m_renderer;
    Scene m_scene;
    Host::Picking m_picking{m_renderer};
    CameraNode* m_camera = nullptr;
    int m_count;
    int m_side;
    int m_step = 0;
    bool m_isCounting = false; ///< the same frames each time, however long they take
    double m_openMilliseconds = 0.0;
    double m_heapOfNode = 0.0;
    double m_heapOfFirstFrame = 0.0;
    Host::BatchUse m_use = Host::BatchUse::On;
    std::vector<MeshNode*> m_nodes;
    PatchOptions m_patches;
    Matrix m_viewProjection;
    std::vector<std::vector<FlatMesh>> m_flat; ///< by material
    std::vector<std::vector<FlatNode>> m_flatNodes;
    std::vector<std::vector<int>> m_flatIndices;
    std::vector<std::vector<Matrix>> m_flatWorlds; ///< empty where the program reads none
    unsigned m_program = 0;
    int m_mvp = -1;
    int m_world = -1;
};

BatchBench::BatchBench(int count, Host::Look look, int materials) :
    m_context(OpenContext(kWidth, kHeight)), m_renderer(look), m_count(count),
    m_side(static_cast<int>(std::ceil(std::sqrt(static_cast<double>(count)))))
{
    SkySettings::inst().SetUseFog(false);
    m_patches.patches = m_count;
    m_patches.spacing = 0.9f / kPatchCells;
    m_patches.side = m_side;
    m_patches.block = materials > 0 ? 0 : 4;
    m_patches.materials = materials > 0 ? materials : m_patches.materials;
    const std::size_t before = HeapInUse();
    m_nodes = AddPatches(m_scene, m_patches);
    for (int i = 0; i < materials; ++i)
    {
        const auto share = [i](int step) { return static_cast<float>(i * step % 251) / 251.0f; };
        m_scene.GetOptimizedMaterials()[static_cast<std::size_t>(i)]->SetDiffuse(Color(share(7), share(11), share(13)));
    }
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

const std::vector<BatchBench::Part>& BatchBench::Table()
{
    constexpr auto on = Host::BatchUse::On;
    constexpr auto off = Host::BatchUse::Off;
    // A half and a tenth of the area. Those that are drawn together stand first: going from one way
    // to the other makes all render data anew.
    static const std::vector<Part> table = {
        {"static", on, 1.0f, &BatchBench::Draw},
        {"one", on, 1.0f, &BatchBench::MoveOne},
        {"all", on, 1.0f, &BatchBench::MoveAll},
        {"half", on, 0.707f, &BatchBench::Draw},
        {"tenth", on, 0.237f, &BatchBench::Draw},
        {"orbit", on, 1.0f, &BatchBench::Orbit},
        {"pick", on, 1.0f, &BatchBench::Pick},
        {"edit", on, 1.0f, &BatchBench::MoveTheSame},
        {"edit-other", on, 1.0f, &BatchBench::MoveOthers},
        {"edges", on, 1.0f, &BatchBench::Draw},
        {"static-single", off, 1.0f, &BatchBench::Draw},
        {"one-single", off, 1.0f, &BatchBench::MoveOne},
        {"all-single", off, 1.0f, &BatchBench::MoveAll},
        {"half-single", off, 0.707f, &BatchBench::Draw},
        {"raw", off, 1.0f, &BatchBench::DrawByHand},
        {"raw-moving", off, 1.0f, &BatchBench::DrawMovedByHand},
    };
    return table;
}

const std::vector<std::string>& BatchBench::Parts()
{
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all;
        for (const Part& part : Table())
        {
            all.emplace_back(part.name);
        }
        return all;
    }();
    return names;
}

const BatchBench::Part& BatchBench::Find(const std::string& name)
{
    for (const Part& part : Table())
    {
        if (name == part.name)
        {
            return part;
        }
    }
    std::fprintf(stderr, "error: there is no part %s\n", name.c_str());
    std::exit(2);
}

void BatchBench::LookAt(float x, float y, float share)
{
    const auto side = static_cast<float>(m_side);
    m_camera->SetProjection(CameraNode::Orthographic);
    Transform place;
    place.SetPosition(Vector(x * side, y * side, 0.0f));
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
        m_flat.clear();
        m_renderer.SetBatches({use});
        Draw();
        Draw();
    }
}

void BatchBench::Flatten()
{
    const auto* const camera = static_cast<CameraNodeES20*>(m_camera->GetRenderData());
    EffectES20* const effect = m_renderer.Effects().GetEffect(EffectOfLook());
    m_program = effect->ProgramForOptions(EffectES20::OptionNoClipPlanes);
    effect->Release();
    m_mvp = glGetUniformLocation(m_program, "u_mvpMatrix");
    m_world = glGetUniformLocation(m_program, "u_worldTransform");
    m_viewProjection = camera->GetMVP();
    m_flat.clear();
    m_flatNodes.clear();
    m_flatIndices.clear();
    m_flatWorlds.clear();
    for (const Material* material : m_scene.GetOptimizedMaterials())
    {
        m_flat.emplace_back();
        m_flatNodes.emplace_back();
        m_flatIndices.emplace_back();
        m_flatWorlds.emplace_back();
        for (const Mesh* mesh : material->EachMesh())
        {
            if (m_world != -1)
            {
                m_flatWorlds.back().push_back(*mesh->EachNode().front()->GetGlobalMatrix());
            }
            m_flat.back().push_back(Bench::Flatten(*mesh, m_viewProjection));
            m_flatNodes.back().emplace_back();
            m_flatIndices.back().push_back(mesh->EachNode().front()->GetUserData());
        }
    }
}

EffectCache::EffectType BatchBench::EffectOfLook() const
{
    switch (m_renderer.GetLook())
    {
    case Host::Look::Advanced:
        return EffectCache::AdvancedMaterial;
    case Host::Look::Phong:
        return EffectCache::AdvancedMaterialPhong;
    default:
        return EffectCache::BasicMaterial;
    }
}

void BatchBench::DrawByHand()
{
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
    glClear(GL_DEPTH_BUFFER_BIT);
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    unsigned bound = 0;
    for (std::size_t i = 0; i < m_flat.size(); ++i)
    {
        glUseProgram(m_program);
        glEnableVertexAttribArray(0);
        glEnableVertexAttribArray(1);
        const Matrix* world = m_flatWorlds[i].data();
        for (const FlatMesh& mesh : m_flat[i])
        {
            BindFlat(mesh, bound);
            glVertexAttribPointer(0, 3, GL_FLOAT, GL_FALSE, mesh.stride, Pointer(mesh.positionOffset));
            glVertexAttribPointer(1, 3, GL_FLOAT, GL_FALSE, mesh.stride, Pointer(mesh.normalOffset));
            if (m_world != -1)
            {
                glUniformMatrix4fv(m_world, 1, GL_FALSE, (world++)->m);
            }
            glUniformMatrix4fv(m_mvp, 1, GL_FALSE, mesh.mvp.m);
            glDrawElements(GL_TRIANGLES, mesh.indexCount, GL_UNSIGNED_SHORT, Pointer(mesh.indexOffset));
        }
    }
    glDisableVertexAttribArray(0);
    glDisableVertexAttribArray(1);
    // The renderer knows nothing of what was bound here.
    MeshES20::ResetBufferCache();
}

void BatchBench::DrawMovedByHand()
{
    const float lift = 0.01f * static_cast<float>(++m_step % 10);
    for (std::size_t i = 0; i < m_flat.size(); ++i)
    {
        for (std::size_t j = 0; j < m_flat[i].size(); ++j)
        {
            m_flatNodes[i][j].local = PatchPlace(m_flatIndices[i][j], lift, m_side);
        }
    }
    for (std::size_t i = 0; i < m_flat.size(); ++i)
    {
        for (std::size_t j = 0; j < m_flat[i].size(); ++j)
        {
            Compose(m_flatNodes[i][j], m_viewProjection, m_flat[i][j]);
            if (m_world != -1)
            {
                m_flatWorlds[i][j] = m_flatNodes[i][j].matrix;
            }
        }
    }
    DrawByHand();
}

void BatchBench::Orbit()
{
    LookAt(0.5f + 0.01f * static_cast<float>(++m_step % 10), 0.5f, 0.9f);
    Draw();
}

void BatchBench::Pick()
{
    m_picking.Pick(m_scene, *m_camera, {kWidth / 2, kHeight / 2, 1, 1});
}

void BatchBench::Lift(int index)
{
    m_nodes[static_cast<std::size_t>(index)]->SetLocal(
        PatchPlace(index, 0.01f * static_cast<float>(m_step % 10), m_side));
}

void BatchBench::MoveOne()
{
    ++m_step;
    Lift(m_count / 2);
    Draw();
}

void BatchBench::MoveAll()
{
    ++m_step;
    for (int i = 0; i < m_count; ++i)
    {
        Lift(i);
    }
    Draw();
}

void BatchBench::MoveTheSame()
{
    ++m_step;
    for (int i = 0; i < m_count / 100; ++i)
    {
        Lift(i * 97 % m_count);
    }
    Draw();
}

void BatchBench::MoveOthers()
{
    ++m_step;
    for (int i = 0; i < m_count / 100; ++i)
    {
        Lift((m_step * 131 + i * 97) % m_count);
    }
    Draw();
}

void BatchBench::Prepare(const Part& part)
{
    Use(part.use);
    m_renderer.SetEdges(std::strcmp(part.name, "edges") == 0 ? std::optional<Host::EdgeLook>(Host::EdgeLook())
                                                             : std::nullopt);
    LookAt(0.5f, 0.5f, part.share);
    const bool isByHand = std::strncmp(part.name, "raw", 3) == 0;
    if (isByHand && m_flat.empty())
    {
        Draw();
        Flatten();
    }
    // Until what the part before has left in motion has come to rest, and what this one moves is drawn
    // as it will be.
    const bool rests = part.use == Host::BatchUse::On && part.work == &BatchBench::Draw;
    const auto start = Clock::now();
    for (int i = 0; i < 8 * kSettled; ++i)
    {
        const bool isSettled = rests ? m_renderer.CountBatches().single == 0 : i >= kSettled;
        const bool isLong = !m_isCounting && !rests && MillisecondsSince(start) > kLongEnough;
        if (i >= kFewest && (isSettled || isLong))
        {
            break;
        }
        (this->*part.work)();
    }
}

void BatchBench::Repeat(const std::string& name, int times)
{
    const Part& part = Find(name);
    m_isCounting = true;
    Prepare(part);
    for (int i = 0; i < times; ++i)
    {
        (this->*part.work)();
    }
}

#ifdef ORVANE_COUNT_CALLS

void BatchBench::PrintCalls(const std::vector<std::string>& parts)
{
    for (const std::string& name : parts)
    {
        const Part& part = Find(name);
        Prepare(part);
        const RenderApp::GLCallCounter counter;
        (this->*part.work)();
        std::printf("%-14s", name.c_str());
        for (std::size_t i = 0; i < RenderApp::GLCallKindCount; ++i)
        {
            std::printf(" %s %llu", RenderApp::GLCallKindNames[i],
                        static_cast<unsigned long long>(counter.GetCounts()[i]));
        }
        std::printf("\n");
    }
}

#else

double BatchBench::Time(const std::string& name, int times)
{
    const Part& part = Find(name);
    Prepare(part);
    std::vector<double> taken;
    const auto begin = Clock::now();
    for (int i = 0; i < times && (i < kFewest || MillisecondsSince(begin) < kLongEnough); ++i)
    {
        const auto start = Clock::now();
        (this->*part.work)();
        m_context->Finish();
        taken.push_back(MillisecondsSince(start));
    }
    std::sort(taken.begin(), taken.end());
    return taken[taken.size() / 2];
}

void BatchBench::PrintScene() const
{
    const Host::BatchCounts counts = m_renderer.CountBatches();
    std::printf("%d nodes: %zu batches of %zu, %zu by themselves\n", m_count, counts.batches, counts.pieces,
                counts.single);
    const double geometry = (kPatchCells + 1) * (kPatchCells + 1) * 2.0 * sizeof(Vector)
        + 6.0 * kPatchCells * kPatchCells * sizeof(unsigned short);
    std::printf("heap of a node %.0f bytes, its geometry arrays %.0f, buffers of the batches %.0f, since the first "
                "frame %.0f\n",
                m_heapOfNode, geometry, static_cast<double>(counts.bytes) / m_count, m_heapOfFirstFrame);
    std::printf("opened in %.1f ms\n", m_openMilliseconds);
}

void BatchBench::PrintTimes(const std::vector<std::string>& parts)
{
    // The quietest of several rounds: what else the machine does comes and goes.
    const int rounds = m_count > 20000 ? 2 : 3;
    const int times = m_count > 20000 ? 11 : 31;
    std::map<std::string, double> best;
    for (int round = 0; round < rounds; ++round)
    {
        for (const std::string& part : parts)
        {
            const double time = Time(part, times);
            const auto known = best.emplace(part, time).first;
            known->second = std::min(known->second, time);
        }
    }
    for (const std::string& part : parts)
    {
        std::printf("%-14s %9.4f ms\n", part.c_str(), best[part]);
    }
}

#endif

} // namespace

int main(int argc, char** argv)
{
    DropDrawing();
    KeepHeap();
    std::vector<std::string> words(argv + 1, argv + argc);
    Host::Look look = Host::Look::Basic;
    if (words.size() >= 3 && words[1] == "--look")
    {
        if (!Host::ParseLook(words[2], look) || look > Host::Look::Phong)
        {
            std::fprintf(stderr, "error: not a look with light: %s\n", words[2].c_str());
            return 2;
        }
        words.erase(words.begin() + 1, words.begin() + 3);
    }
    int materials = 0;
    if (words.size() >= 3 && words[1] == "--materials")
    {
        materials = std::atoi(words[2].c_str());
        words.erase(words.begin() + 1, words.begin() + 3);
    }
    BatchBench bench(words.empty() ? kPatches : std::atoi(words[0].c_str()), look, materials);
    if (words.size() >= 4 && words[1] == "--times")
    {
        for (std::size_t i = 3; i + 1 < words.size(); ++i)
        {
            bench.Repeat(words[i], 1);
        }
        bench.Repeat(words.back(), std::atoi(words[2].c_str()));
        return 0;
    }
    const std::vector<std::string> parts =
        words.size() > 1 ? std::vector<std::string>(words.begin() + 1, words.end()) : BatchBench::Parts();
#ifdef ORVANE_COUNT_CALLS
    bench.PrintCalls(parts);
#else
    bench.PrintScene();
    bench.PrintTimes(parts);
#endif
    return 0;
}
