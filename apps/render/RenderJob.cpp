#include "apps/render/RenderJob.h"

#include "apps/render/FileChecks.h"
#include "apps/render/GLCalls.h"
#include "apps/render/NodeList.h"
#include "apps/render/PictureMemory.h"
#include "apps/render/ProgressBar.h"
#include "apps/render/Report.h"
#include "apps/render/Stopwatch.h"
#include "apps/render/StudyJob.h"
#include "orvane_host/context/HeadlessContext.h"
#include "orvane_host/import/ModelImporter.h"
#include "orvane_host/import/NodePath.h"
#include "orvane_host/output/PictureFile.h"
#include "orvane_host/present/BlankPicture.h"
#include "orvane_host/present/Presentation.h"
#include "orvane_host/present/SunHoursMap.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include <unistd.h>

namespace OV::RenderApp
{

namespace
{

/// So many things behind each other are picked; each takes a drawing.
constexpr int MostPicked = 100;

/// Of a view that was fitted, what the model takes.
constexpr double WithoutMargin = 0.95;

/// The next scale that is in use on drawings.
long RoundScale(double scale)
{
    const double decade = std::pow(10.0, std::floor(std::log10(std::max(scale, 1.0))));
    for (const double step : {1.0, 2.0, 5.0})
    {
        if (scale <= step * decade)
        {
            return std::lround(step * decade);
        }
    }
    return std::lround(10.0 * decade);
}

std::string RemedyFor(Host::BlankReason reason)
{
    switch (reason)
    {
    case Host::BlankReason::AllCutAway: return "turn a --clip round or move it";
    case Host::BlankReason::OutOfView: return "move --eye or --target, or leave them out";
    case Host::BlankReason::EyeInside: return "move --eye, or ask for --no-cull";
    case Host::BlankReason::OnlyBacks: return "ask for --no-cull";
    case Host::BlankReason::TooSmall: return "move --eye nearer, or leave it out";
    case Host::BlankReason::InFog: return "move the end of --fog farther away";
    case Host::BlankReason::BackgroundColor: return "ask for another --background or for --lines";
    case Host::BlankReason::AllHidden: return "show some of it";
    case Host::BlankReason::TooTiny: return "scale it up";
    case Host::BlankReason::TooFarAway: return "move it to the origin";
    case Host::BlankReason::FarApart: return "look for parts of it that went astray";
    case Host::BlankReason::NotFinite:
    case Host::BlankReason::EmptyModel:
    case Host::BlankReason::NotBlank: break;
    }
    return "check that it is the right file";
}

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
    ListNodes();
    Present();
    if (m_options.study && m_options.study->hours.empty())
    {
        WriteStudySheet(m_options, *m_presentation);
        return;
    }
    if (IsMeasured())
    {
        MakeFramebuffer();
        Draw();
    }
    Pick();
    Write();
}

bool RenderJob::IsMeasured() const
{
    // One that is written in tiles is measured as it is written.
    return m_options.stats && (m_options.output.empty() || FitsAtOnce(m_options, *m_gl));
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
    if (m_options.output.empty() && m_options.stats)
    {
        CheckSize(m_options, *m_gl);
    }
    m_stats.glVendor = m_gl->GetVendor();
    m_stats.glRenderer = m_gl->GetRenderer();
    m_stats.glVersion = m_gl->GetVersion();
    m_stats.width = m_options.width;
    m_stats.height = m_options.height;
}

Host::ImportResult RenderJob::Read(std::size_t index) const
{
    const std::string& file = index == 0 ? m_options.model : m_options.besides[index - 1];
    const bool isPiped = m_options.piped && m_options.piped->index == index;
    ProgressBar bar("Loading");
    Host::ImportOptions importOptions;
    importOptions.orderCoplanar = !m_options.keepsCoplanar;
    importOptions.showBacks = !m_options.settings.cullBacks || !m_options.settings.section.planes.empty();
    importOptions.bringsWithinReach = m_options.besides.empty();
    importOptions.progress = [&bar](float percent)
    {
        bar.Show(percent);
        return true;
    };
    Host::ImportResult model =
        isPiped ? Host::ModelImporter::ImportStream(STDIN_FILENO, m_options.piped->format, importOptions)
                : Host::ModelImporter::Import(file, importOptions);
    bar.Clear();
    if (!model)
    {
        throw Failure(model.error.Line());
    }
    if (!m_options.quiet)
    {
        PrintWarnings(model.report.warnings, file);
    }
    return model;
}

void RenderJob::Load()
{
    const Stopwatch watch;
    m_presentation = std::make_unique<Host::Presentation>(Read(0));
    for (std::size_t i = 0; i < m_options.besides.size(); ++i)
    {
        std::string error;
        Require(m_presentation->Add(Read(i + 1), error), m_options.besides[i], error);
    }
    m_stats.load = watch.Milliseconds();
}

void RenderJob::MakeFramebuffer()
{
    const int samples = Host::Presentation::SamplesFor(m_options.settings, m_gl->GetMaxSamples());
    CheckMemory(m_options, samples);
    std::string error;
    Require(m_gl->Resize(m_options.width, m_options.height, samples, error), SubjectOf(m_options), error);
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
    ShowNodes(m_options.nodes, *m_presentation, m_options.model);
    m_presentation->Resize(m_options.width, m_options.height, m_options.picture.pixelRatio);
    if (!m_options.settings.view.eye && !m_options.settings.section.planes.empty() && !m_options.fitsAll)
    {
        // What is cut away needs no room in the picture.
        m_presentation->FrameShown();
    }
    SetScale();
    PresentStudy();
}

void RenderJob::PresentStudy()
{
    if (m_options.study && !m_options.study->hours.empty())
    {
        m_map = std::make_unique<Host::SunHoursMap>(*m_presentation);
        ShowStudyMap(m_options, *m_presentation, *m_map);
    }
    else if (!m_options.study && !m_presentation->GetSun().note.empty() && !m_options.quiet)
    {
        PrintLine(m_options.model + ": " + m_presentation->GetSun().note);
    }
}

void RenderJob::SetScale()
{
    if (!m_options.scale)
    {
        return;
    }
    const double unit = m_presentation->GetReport().metresPerUnit;
    const double onPaper = m_options.height / m_options.picture.pixelsPerMetre;
    const double wanted = onPaper * *m_options.scale / (unit > 0.0 ? unit : 1.0);
    if (unit <= 0.0)
    {
        Warn("the file tells no unit, which is taken for a metre");
    }
    const double fitting = m_presentation->GetViewHeight();
    if (!m_options.settings.view.eye && wanted < fitting * WithoutMargin)
    {
        Warn("the model is larger than the paper at this scale; about 1:"
             + std::to_string(RoundScale(*m_options.scale * fitting * WithoutMargin / wanted)) + " shows all of it");
    }
    m_presentation->SetViewHeight(wanted);
}

void RenderJob::Warn(const std::string& text) const
{
    if (!m_options.quiet)
    {
        PrintLine("warning: " + m_options.model + ": " + text);
    }
}

void RenderJob::ListNodes()
{
    switch (m_options.listing)
    {
    case NodeListing::Text:
        m_nodeList = ListNodesAsText(m_presentation->GetScene(), m_presentation->GetNodes());
        break;
    case NodeListing::JSON:
        m_nodeList = ListNodesAsJSON(m_presentation->GetScene(), m_presentation->GetNodes());
        break;
    case NodeListing::None:
        break;
    }
}

void RenderJob::Draw()
{
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
        m_presentation->Draw(m_options.width, m_options.height, m_options.picture.pixelRatio);
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
    const Host::NodePaths paths(m_presentation->GetNodes());
    for (const Host::PickHit& hit : m_presentation->PickThrough(m_pick.x, m_pick.y, MostPicked))
    {
        m_pick.Add(hit, m_presentation->GetCamera(), paths, m_presentation->GetMeshes());
    }
}

void RenderJob::Write()
{
    if (m_options.output.empty())
    {
        return;
    }
    const std::unique_ptr<Host::PictureFile> file = BeginPicture(m_options);
    WriteTo(*file);
    std::string error;
    Require(file->Finish(error), m_options.output, error);
}

void RenderJob::WriteTo(Host::PictureFile& file)
{
    const Stopwatch watch;
    ProgressBar bar("Drawing");
    Host::PictureOptions picture = m_options.picture;
    picture.width = m_options.width;
    picture.height = m_options.height;
    picture.progress = [&bar](float percent)
    {
        bar.Show(percent);
        return true;
    };
    Host::PictureFacts facts;
    std::string error;
    Require(m_presentation->WritePicture(file, picture, error, &facts), m_options.output, error);
    bar.Clear();
    if (m_options.stats && m_stats.frames.empty())
    {
        m_stats.frames.push_back(watch.Milliseconds());
        m_stats.samples = Host::Presentation::SamplesFor(m_options.settings, m_gl->GetMaxSamples());
        m_stats.presented = m_presentation->GetStatistics();
    }
    TellBlank(facts);
}

void RenderJob::TellBlank(const Host::PictureFacts& facts)
{
    const Host::PresentationSettings& settings = m_options.settings;
    const bool mayHide = settings.sky || settings.ground || !settings.surroundings.empty() || !(settings.sheet == Host::SheetSettings());
    if (!facts.isOneColor && !mayHide)
    {
        return;
    }
    Host::PictureOptions picture = m_options.picture;
    picture.width = m_options.width;
    picture.height = m_options.height;
    const Host::BlankPicture blank = m_presentation->FindBlank(picture);
    m_isBlank = static_cast<bool>(blank);
    if (m_isBlank && (!m_options.quiet || m_options.failIfEmpty))
    {
        PrintLine(m_options.output + ": nothing of the model is seen: " + blank.Line() + "; " + RemedyFor(blank.reason));
    }
}

} // namespace OV::RenderApp
