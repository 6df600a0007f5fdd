#include "bench/BenchSupport.h"
#include "bench/PatchScene.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/scene/CameraNode.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <vector>

// A frame of 10,000 meshes with stages of a presentation, node by node, against the same frame without. What
// counts is the ratio of each to the plain frame.
//
//   presentation_bench                  measures times; further options are those of the benchmark library
//   presentation_bench --times N PART   draws so many frames of one part, to count their instructions
namespace
{

using namespace OV;
using namespace OV::Bench;

constexpr int kWidth = 1280;
constexpr int kHeight = 720;
constexpr int kSettled = 3;

/// What the frames of a measurement are drawn with.
struct Part
{
    const char* name;
    bool edges = false;
    bool spiral = false;
    bool horizons = false;
    bool shadows = false;
    AAMode mode = AAModeNone;
    bool moves = false; ///< all nodes, in every frame
};

const Part kParts[] = {
    {"Plain"},
    {"Edges", true},
    {"Occlusion", false, true},
    {"Horizons", false, false, true},
    {"Shadows", false, false, false, true},
    {"Filter", false, false, false, false, AAModeFXAA},
    {"OcclusionEdgesFilter", true, true, false, false, AAModeFXAA},
    {"OcclusionEdgesShadows", true, true, false, true},
    {"PlainMoving", false, false, false, false, AAModeNone, true},
    {"EdgesMoving", true, false, false, false, AAModeNone, true},
    {"OcclusionMoving", false, true, false, false, AAModeNone, true},
    {"HorizonsMoving", false, false, true, false, AAModeNone, true},
    {"ShadowsMoving", false, false, false, true, AAModeNone, true},
    {"OcclusionEdgesShadowsMoving", true, true, false, true, AAModeNone, true},
};

class PresentationBench
{
public:
    PresentationBench() : m_context(OpenContext(kWidth, kHeight))
    {
        SkySettings::inst().SetUseFog(false);
        m_app.GetContext()->SetScene(std::make_unique<Scene>());
        Scene& scene = *m_app.GetContext()->GetScene();
        // Patches that cover the picture side by side.
        PatchOptions patches;
        patches.spacing = 1.0f / kPatchCells;
        m_nodes = AddPatches(scene, patches);
        CameraNode& camera = *scene.GetCameraNode();
        Transform place;
        place.SetPosition(Vector(50.0f, 50.0f, 20.0f));
        camera.SetLocal(place);
        camera.SetNearFar(10.0f, 200.0f);
        camera.SetDistanceToTarget(70.0f);
        m_app.SetScreenSize(kWidth, kHeight);
        m_renderer.Resize(kWidth, kHeight);
        m_app.Update(0.0f);
    }

    ~PresentationBench() { m_app.Suspend(&m_renderer); }

    /// Sets what the next frames are drawn with, and draws some, so that all of it is made.
    void Choose(const Part& part)
    {
        m_renderer.SetEdges(part.edges ? std::optional<Host::EdgeLook>(Host::EdgeLook()) : std::nullopt);
        m_renderer.ShowAmbientOcclusion(part.spiral);
        m_renderer.SetHorizonOcclusion(part.horizons ? std::optional<Occlusion>(Occlusion()) : std::nullopt);
        m_renderer.SetSun(part.shadows ? std::optional<Vector>(Vector(0.4f, 0.3f, 0.8f)) : std::nullopt);
        m_renderer.SetShadows(part.shadows ? std::optional<Host::ShadowSettings>(Host::ShadowSettings())
                                           : std::nullopt);
        m_renderer.SetAAMode(part.mode);
        m_captured = part.mode != AAModeNone;
        m_moves = part.moves;
        for (int i = 0; i < kSettled; ++i)
        {
            Draw();
        }
    }

    void Draw()
    {
        if (m_moves)
        {
            const float lift = 0.01f * static_cast<float>(++m_step % 10);
            for (std::size_t i = 0; i < m_nodes.size(); ++i)
            {
                m_nodes[i]->SetLocal(PatchPlace(static_cast<int>(i), lift));
            }
            m_app.Update(0.0f);
        }
        m_app.Render(&m_renderer, m_captured);
        m_context->Finish();
    }

private:
    using Occlusion = Host::PresentationRenderer::HorizonOcclusion;

    std::unique_ptr<Host::HeadlessContext> m_context;
    AppContext m_app;
    Host::PresentationRenderer m_renderer{nullptr, m_app.GetContext()->GetRenderCapabilities()};
    std::vector<MeshNode*> m_nodes;
    int m_step = 0;
    bool m_captured = false;
    bool m_moves = false;
};

PresentationBench& Presentation()
{
    static PresentationBench bench;
    return bench;
}

int DrawTimes(int times, const char* name)
{
    for (const Part& part : kParts)
    {
        if (std::strcmp(part.name, name) == 0)
        {
            Presentation().Choose(part);
            for (int i = 0; i < times; ++i)
            {
                Presentation().Draw();
            }
            return 0;
        }
    }
    std::fprintf(stderr, "error: there is no part %s\n", name);
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    DropDrawing();
    if (argc == 4 && std::strcmp(argv[1], "--times") == 0)
    {
        return DrawTimes(std::atoi(argv[2]), argv[3]);
    }
    for (const Part& part : kParts)
    {
        benchmark::RegisterBenchmark(part.name, [&part](benchmark::State& state) {
            Presentation().Choose(part);
            Repeat(state, kPatches, [] { Presentation().Draw(); });
        })->Unit(benchmark::kMillisecond);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
