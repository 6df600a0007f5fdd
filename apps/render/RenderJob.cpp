#include "apps/render/RenderJob.h"

#include "apps/render/FileChecks.h"
#include "apps/render/GLCalls.h"
#include "apps/render/PictureMemory.h"
#include "apps/render/ProgressBar.h"
#include "apps/render/Report.h"
#include "apps/render/Stopwatch.h"
#include "apps/render/StudyJob.h"
#include "orvane_host/context/HeadlessContext.h"
#include "orvane_host/import/ModelImporter.h"
#include "orvane_host/import/NodePath.h"
#include "orvane_host/output/WritePNG.h"
#include "orvane_host/present/Presentation.h"
#include "orvane_host/present/SunHoursMap.h"
#include "orvane/scene/Scene.h"

#include <optional>
#include <utility>

namespace OV::RenderApp
{

namespace
{

/// So many things behind each other are picked; each takes a drawing.
constexpr int MostPicked = 100;

} // namespace

RenderJob::RenderJob(const Options& options) : m_options(options)
{
}

RenderJob::~RenderJob() = default;

void RenderJob::Run()
{
    CheckFiles(m_options);
    OpenContext();
    Load();
    MakeFramebuffer();
    Present();
    if (m_options.study && m_options.study->hours.empty())
    {
        WriteStudySheet(m_options, *m_presentation);
        return;
    }
    Draw();
    Pick();
    Write();
}

bool RenderJob::IsDrawn() const
{
    return !m_options.output.empty() || m_options.stats;
}

void RenderJob::OpenContext()
{
    // Limits are wanted before the model is read, memory for the picture only afterwards.
    Host::HeadlessContext::Options smallest;
    smallest.width = 1;
    smallest.height = 1;
    std::string error;
    m_gl = Host::HeadlessContext::Create(smallest, error);
    Require(m_gl != nullptr, SubjectOf(m_options), error);
    const int maxWidth = m_gl->GetMaxWidth() / ScaleOf(m_options.settings);
    const int maxHeight = m_gl->GetMaxHeight() / ScaleOf(m_options.settings);
    Require(m_options.width <= maxWidth && m_options.height <= maxHeight, SubjectOf(m_options),
            "a picture of " + std::to_string(m_options.width) + "x" + std::to_string(m_options.height)
                + " is too large; this GL allows at most " + std::to_string(maxWidth) + "x"
                + std::to_string(maxHeight) + ", so ask for a smaller --size");
    m_stats.glVendor = m_gl->GetVendor();
    m_stats.glRenderer = m_gl->GetRenderer();
    m_stats.glVersion = m_gl->GetVersion();
}

void RenderJob::Load()
{
    const Stopwatch watch;
    ProgressBar bar("Loading");
    Host::ImportOptions importOptions;
    importOptions.progress = [&bar](float percent)
    {
        bar.Show(percent);
        return true;
    };
    Host::ImportResult model = Host::ModelImporter::Import(m_options.model, importOptions);
    bar.Clear();
    if (!model)
    {
        throw Failure(model.error.Line());
    }
    PrintWarnings(model.report.warnings, m_options.model);
    m_presentation = std::make_unique<Host::Presentation>(std::move(model));
    m_stats.load = watch.Milliseconds();
}

void RenderJob::MakeFramebuffer()
{
    const int samples = Host::Presentation::SamplesFor(m_options.settings, m_options.width, m_options.height,
                                                       m_gl->GetMaxSamples());
    CheckMemory(m_options, samples);
    std::string error;
    Require(!IsDrawn() || m_gl->Resize(m_options.width, m_options.height, samples, error), SubjectOf(m_options), error);
    m_stats.width = m_options.width;
    m_stats.height = m_options.height;
    m_stats.samples = m_gl->GetSamples();
}

void RenderJob::Present()
{
    const std::string& edit = m_options.settings.editPath;
    Require(edit.empty() || m_presentation->FindNode(edit), m_options.model,
            "there is no node '" + edit + "' for --edit; some that there are: "
                + Host::SomeNodeNames(m_presentation->GetNodes()));
    const std::optional<Host::SunSettings>& sun = m_options.settings.sun;
    Require(!sun || sun->direction || sun->place || m_presentation->GetReport().place, m_options.model,
            "it tells no place for the sun; name one by --place LAT,LON");
    std::string error;
    Require(m_presentation->Apply(m_options.settings, error), SubjectOf(m_options), error);
    m_presentation->Resize(m_options.width, m_options.height);
    if (m_options.study && !m_options.study->hours.empty())
    {
        m_map = std::make_unique<Host::SunHoursMap>(*m_presentation);
        ShowStudyMap(m_options, *m_presentation, *m_map);
    }
    else if (!m_options.study && !m_presentation->GetSun().note.empty())
    {
        PrintLine(m_options.model + ": " + m_presentation->GetSun().note);
    }
}

void RenderJob::Draw()
{
    if (!IsDrawn())
    {
        return;
    }
    m_gl->BindFramebuffer();
    for (int frame = 0; frame < m_options.frames; ++frame)
    {
        const Stopwatch watch;
        // Each is drawn in full, also where a capture would serve.
        m_presentation->GetScene().MarkDirty();
        if (frame == 0)
        {
            m_presentation->Prepare();
            m_gl->Finish();
            m_stats.pack = watch.Milliseconds();
        }
        std::optional<GLCallCounter> calls;
        if (m_options.stats && frame + 1 == m_options.frames)
        {
            calls.emplace();
        }
        m_presentation->Draw(m_options.width, m_options.height);
        if (calls)
        {
            m_stats.calls = calls->GetCounts();
            calls.reset();
        }
        m_gl->Finish();
        m_stats.frames.push_back(watch.Milliseconds());
    }
    m_stats.presented = m_presentation->GetStatistics();
}

void RenderJob::Pick()
{
    if (!m_options.pick)
    {
        return;
    }
    m_pick.x = m_options.pick->x;
    m_pick.y = m_options.pick->y;
    for (const Host::PickHit& hit : m_presentation->PickThrough(m_pick.x, m_pick.y, MostPicked))
    {
        m_pick.Add(hit, m_presentation->GetCamera(), m_presentation->GetNodes(), m_presentation->GetMeshes());
    }
}

void RenderJob::Write()
{
    std::string error;
    Require(m_options.output.empty() || Host::WritePNG(*m_gl, m_options.output, Host::PNGAlpha::Drop, error),
            m_options.output, error);
}

} // namespace OV::RenderApp
