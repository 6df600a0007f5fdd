#include "bench/BenchSupport.h"
#include "bench/PatchScene.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/scene/CameraNode.h"

// A frame of 10,000 meshes with stages of a presentation, against the same frame without. What
// counts is the ratio of each to the plain frame.
namespace
{

using namespace OV;
using namespace OV::Bench;

constexpr int kWidth = 1280;
constexpr int kHeight = 720;

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
        AddPatches(scene, patches);
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

    /// Sets what the next frames are drawn with, and draws one, so that all of it is made.
    void Choose(bool edges, bool occlusion, AAMode mode)
    {
        m_renderer.SetEdges(edges ? std::optional<Host::EdgeLook>(Host::EdgeLook()) : std::nullopt);
        m_renderer.ShowAmbientOcclusion(occlusion);
        m_renderer.SetAAMode(mode);
        m_captured = mode != AAModeNone;
        Draw();
    }

    void Draw()
    {
        m_app.Render(&m_renderer, m_captured);
        m_context->Finish();
    }

private:
    std::unique_ptr<Host::HeadlessContext> m_context;
    AppContext m_app;
    Host::PresentationRenderer m_renderer{nullptr, m_app.GetContext()->GetRenderCapabilities()};
    bool m_captured = false;
};

PresentationBench& Presentation()
{
    static PresentationBench bench;
    return bench;
}

void Measure(benchmark::State& state, bool edges, bool occlusion, AAMode mode)
{
    Presentation().Choose(edges, occlusion, mode);
    Repeat(state, kPatches, [] { Presentation().Draw(); });
}

void Plain(benchmark::State& state) { Measure(state, false, false, AAModeNone); }
void Edges(benchmark::State& state) { Measure(state, true, false, AAModeNone); }
void Occlusion(benchmark::State& state) { Measure(state, false, true, AAModeNone); }
void Filter(benchmark::State& state) { Measure(state, false, false, AAModeFXAA); }
void OcclusionEdgesFilter(benchmark::State& state) { Measure(state, true, true, AAModeFXAA); }

BENCHMARK(Plain)->Unit(benchmark::kMillisecond);
BENCHMARK(Edges)->Unit(benchmark::kMillisecond);
BENCHMARK(Occlusion)->Unit(benchmark::kMillisecond);
BENCHMARK(Filter)->Unit(benchmark::kMillisecond);
BENCHMARK(OcclusionEdgesFilter)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv)
{
    DropDrawing();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
