#include "apps/render/RenderJob.h"

#include "orvane_host/import/NodePath.h"
#include "apps/render/ProgressBar.h"
#include "apps/render/Report.h"
#include "apps/render/SurfaceSettings.h"
#include "apps/render/SystemMemory.h"
#include "orvane_host/geometry/FeatureEdges.h"
#include "orvane_host/context/HeadlessContext.h"
#include "orvane_host/import/ModelImporter.h"
#include "orvane_host/present/Picking.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "orvane_host/view/SceneFit.h"
#include "orvane_host/sheet/Sheet.h"
#include "orvane_host/sheet/Watermark.h"
#include "orvane_host/output/WritePNG.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/platform/ESTextureLoader.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Scene.h"

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <utility>

namespace OV::RenderApp
{

namespace
{

constexpr int UsualSamples = 4;
/// Above so many pixels multisampling would take more memory than it is worth: the picture is
/// scaled down to be looked at.
constexpr std::int64_t MultisampledPixels = 16 * 1024 * 1024;
/// So many things behind each other are picked; each takes a drawing.
constexpr int MostPicked = 100;
/// So many warnings of the import tell enough.
constexpr std::size_t MostWarnings = 5;

class Stopwatch
{
public:
    double Milliseconds() const
    {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - m_start).count();
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

bool IsSameFile(const std::string& left, const std::string& right)
{
    struct stat a{};
    struct stat b{};
    return ::stat(left.c_str(), &a) == 0 && ::stat(right.c_str(), &b) == 0 && a.st_dev == b.st_dev
        && a.st_ino == b.st_ino;
}

Vector Middle(const Vector& a, const Vector& b)
{
    return Vector((a.x + b.x) / 2.0f, (a.y + b.y) / 2.0f, (a.z + b.z) / 2.0f);
}

/// What the fog of the shaders takes a distance from the eye for: they multiply the depth in
/// the buffer by the distance in perspective, and have the depth alone without it. Both are
/// straight lines over the distance.
float ToShaderDistance(float distance, const CameraNode& camera)
{
    float nearDistance = 0.0f;
    float farDistance = 0.0f;
    camera.GetNearFar(nearDistance, farDistance);
    const float share = (distance - nearDistance) / (farDistance - nearDistance);
    return camera.GetProjection() == CameraNode::Perspective ? share * farDistance : share;
}

/// Sign of a unit of length; none for one that has none.
std::string UnitSign(double metres)
{
    static constexpr struct
    {
        double metres;
        const char* sign;
    } units[] = {{1.0, "m"}, {0.001, "mm"}, {0.01, "cm"}, {0.1, "dm"}, {1000.0, "km"}, {0.3048, "ft"}, {0.0254, "in"}};
    for (const auto& unit : units)
    {
        if (std::abs(metres - unit.metres) < 1e-6 * unit.metres)
        {
            return unit.sign;
        }
    }
    return {};
}

/// From corner to corner of the model's box.
float Extent(const Host::ImportReport& report)
{
    const Vector& a = report.boxMin;
    const Vector& b = report.boxMax;
    return report.hasBox ? std::hypot(b.x - a.x, b.y - a.y, b.z - a.z) : 1.0f;
}

std::int64_t PixelsOf(const Options& options)
{
    return static_cast<std::int64_t>(options.width) * options.height;
}

/// What trouble with the picture is told about.
const std::string& SubjectOf(const Options& options)
{
    return options.output.empty() ? options.model : options.output;
}

int ChooseSamples(const Options& options, const Host::HeadlessContext& gl)
{
    if (options.antialiasing != Antialiasing::Multisampling)
    {
        return 0;
    }
    if (options.samples)
    {
        return *options.samples;
    }
    return PixelsOf(options) <= MultisampledPixels ? std::min(UsualSamples, gl.GetMaxSamples()) : 0;
}

AAMode ModeOf(Antialiasing antialiasing)
{
    switch (antialiasing)
    {
    case Antialiasing::Multisampling: return AAModeMSAA;
    case Antialiasing::Filter: return AAModeFXAA;
    case Antialiasing::Supersampling: return AAModeSupersampling;
    case Antialiasing::None: break;
    }
    return AAModeNone;
}

/// Pixels along an edge of what is drawn for each of the picture.
int ScaleOf(const Options& options)
{
    return options.antialiasing == Antialiasing::Supersampling ? 2 : 1;
}

bool IsCaptured(const Options& options)
{
    return options.antialiasing == Antialiasing::Filter || options.antialiasing == Antialiasing::Supersampling;
}

int BytesPerPixel(const Options& options, int samples)
{
    const int drawn = ScaleOf(options) * ScaleOf(options);
    // Colour and depth of each sample, the resolved picture, its two copies and the file.
    int bytes = 8 * std::max(samples, 1) + (samples > 1 ? 4 : 0) + 4 + 3 + 3;
    bytes += IsCaptured(options) ? drawn * (4 + 4 + 4) : 0;
    // Identifiers and their depth, finer where there are samples, and what is darkened.
    const bool identified = options.edges || options.occlusion;
    bytes += identified ? (4 + 2 + 4) * (options.edges && samples > 1 ? 4 : drawn) : 0;
    bytes += options.occlusion ? 4 * drawn : 0;
    // Numbers and their depth.
    bytes += options.pick ? 4 + 2 + 4 : 0;
    return bytes;
}

/// A kernel that is short of memory kills the process instead of refusing, so that the picture
/// is not begun where it cannot fit.
void CheckMemory(const Options& options, int samples)
{
    const auto bytesPerPixel = static_cast<std::uint64_t>(BytesPerPixel(options, samples));
    const std::uint64_t needed = static_cast<std::uint64_t>(PixelsOf(options)) * bytesPerPixel;
    const std::uint64_t available = AvailableMemory();
    if (available != 0 && needed > available)
    {
        const auto mebibytes = [](std::uint64_t bytes) { return std::to_string(bytes >> 20) + " MiB"; };
        throw Failure(SubjectOf(options), "a picture of " + std::to_string(options.width) + "x"
                          + std::to_string(options.height) + " takes " + mebibytes(needed)
                          + " of memory and there are " + mebibytes(available) + "; ask for a smaller --size");
    }
}

/// Gives each node an identifier of its own, so that edges part them.
void NumberNodes(const std::vector<Host::ImportedNode>& nodes)
{
    // Of more nodes some share one; they are rarely neighbours.
    constexpr int most = 0xFFFF;
    int next = 0;
    for (const Host::ImportedNode& imported : nodes)
    {
        imported.node->SetUserData(next);
        next = (next + 1) % most;
    }
}

void PrintWarnings(const Host::ImportReport& report, const std::string& model)
{
    for (std::size_t i = 0; i < std::min(report.warnings.size(), MostWarnings); ++i)
    {
        PrintLine("warning: " + model + ": " + report.warnings[i]);
    }
    if (report.warnings.size() > MostWarnings)
    {
        PrintLine("warning: " + model + ": and " + std::to_string(report.warnings.size() - MostWarnings) + " more");
    }
}

} // namespace

RenderJob::RenderJob(const Options& options) : m_options(options)
{
}

RenderJob::~RenderJob() = default;

void RenderJob::Run()
{
    CheckFiles();
    ReadWatermark();
    OpenContext();
    Load();
    MakeFramebuffer();
    SetLook();
    SetEdit();
    AddLines();
    PlaceCamera();
    SetFog();
    AddSheet();
    Draw();
    Pick();
    Count();
    Write();
}

bool RenderJob::IsDrawn() const
{
    return !m_options.output.empty() || m_options.stats;
}

void RenderJob::CheckFiles() const
{
    struct stat model{};
    if (::stat(m_options.model.c_str(), &model) != 0)
    {
        throw Failure(m_options.model, "there is no such file; check the name");
    }
    if (!m_options.output.empty())
    {
        CheckOutput();
    }
}

void RenderJob::CheckOutput() const
{
    if (IsSameFile(m_options.model, m_options.output))
    {
        throw Failure(m_options.output, "the picture would replace the model; name another file with -o");
    }
    if (IsSameFile(m_options.watermark, m_options.output))
    {
        throw Failure(m_options.output, "the picture would replace the watermark; name another file with -o");
    }
    std::string error;
    if (!Host::CanWritePNG(m_options.output, error))
    {
        throw Failure(m_options.output, error);
    }
}

void RenderJob::ReadWatermark()
{
    if (m_options.watermark.empty())
    {
        return;
    }
    std::string error;
    m_watermark = Host::Watermark::Read(m_options.watermark, error);
    if (!m_watermark)
    {
        throw Failure(m_options.watermark, error);
    }
}

void RenderJob::OpenContext()
{
    // Limits are wanted before the model is read, memory for the picture only afterwards.
    Host::HeadlessContext::Options smallest;
    smallest.width = 1;
    smallest.height = 1;
    std::string error;
    m_gl = Host::HeadlessContext::Create(smallest, error);
    if (!m_gl)
    {
        throw Failure(SubjectOf(m_options), error);
    }
    const int maxWidth = m_gl->GetMaxWidth() / ScaleOf(m_options);
    const int maxHeight = m_gl->GetMaxHeight() / ScaleOf(m_options);
    if (m_options.width > maxWidth || m_options.height > maxHeight)
    {
        throw Failure(SubjectOf(m_options), "a picture of " + std::to_string(m_options.width) + "x"
                          + std::to_string(m_options.height) + " is too large; this GL allows at most "
                          + std::to_string(maxWidth) + "x" + std::to_string(maxHeight)
                          + ", so ask for a smaller --size");
    }
    m_stats.glVendor = m_gl->GetVendor();
    m_stats.glRenderer = m_gl->GetRenderer();
    m_stats.glVersion = m_gl->GetVersion();
}

void RenderJob::Load()
{
    const Stopwatch watch;
    Host::ImportOptions importOptions;
    ProgressBar bar("Loading");
    importOptions.progress = [&bar](float percent)
    {
        bar.Show(percent);
        return true;
    };
    Host::ImportResult result = Host::ModelImporter::Import(m_options.model, importOptions);
    bar.Clear();
    if (!result)
    {
        throw Failure(result.error.Line());
    }
    m_report = std::move(result.report);
    m_nodes = std::move(result.nodes);
    m_meshes = std::move(result.meshes);
    m_textures = std::make_unique<Platform::Linux::ESTextureLoader>();
    m_app = std::make_unique<AppContext>();
    m_app->GetContext()->SetScene(std::move(result.scene));
    m_stats.load = watch.Milliseconds();
    m_stats.nodes = m_report.nodes;
    m_stats.meshes = m_report.meshes;
    m_stats.triangles = m_report.triangles;
    PrintWarnings(m_report, m_options.model);
}

void RenderJob::MakeFramebuffer()
{
    const int samples = ChooseSamples(m_options, *m_gl);
    CheckMemory(m_options, samples);
    std::string error;
    if (IsDrawn() && !m_gl->Resize(m_options.width, m_options.height, samples, error))
    {
        throw Failure(SubjectOf(m_options), error);
    }
    m_stats.width = m_options.width;
    m_stats.height = m_options.height;
    m_stats.samples = m_gl->GetSamples();
    m_renderer = std::make_unique<Host::PresentationRenderer>(m_textures.get(), m_app->GetContext()->GetRenderCapabilities());
    m_renderer->Resize(m_options.width, m_options.height);
    m_renderer->SetAAMode(ModeOf(m_options.antialiasing));
    // Titles and bars are laid out in pixels of the picture, however fine it is drawn.
    m_renderer->SetLayerRatio(1.0f);
    m_app->SetScreenSize(m_options.width, m_options.height);
}

void RenderJob::SetLook()
{
    m_app->GetContext()->SetBackgroundColor(m_options.background);
    m_renderer->ShowSky(m_options.sky);
    SkySettings& sky = SkySettings::inst();
    sky.SetHorizonColor(m_options.background);
    sky.SetUseFog(m_options.fog.has_value());
    Scene& scene = *m_app->GetContext()->GetScene();
    const Host::Look look = m_options.surfaces.look;
    Host::ModelImporter::AddDefaultLights(scene, AmbientLevelFor(look));
    SuitMaterials(look, scene);
    if (m_options.noCull)
    {
        for (const auto* list : {&scene.GetOptimizedMaterials(), &scene.GetAlphaMaterials()})
        {
            for (Material* material : *list)
            {
                material->flags |= MaterialFlagNoCull;
            }
        }
    }
    m_renderer->SetLook(look);
    m_renderer->SetStrokeDensity(StrokeDensityFor(Extent(m_report)));
    m_renderer->SetEdges(m_options.edges);
    m_renderer->ShowAmbientOcclusion(m_options.occlusion);
    NumberNodes(m_nodes);
    ApplyClipping(m_options.surfaces, scene, Extent(m_report));
}

void RenderJob::SetEdit()
{
    const std::string& path = m_options.surfaces.edit;
    if (path.empty())
    {
        return;
    }
    const Node* const node = Host::FindNode(m_nodes, path);
    if (!node)
    {
        throw Failure(m_options.model, "there is no node '" + path + "' for --edit; some that there are: "
                          + Host::SomeNodeNames(m_nodes));
    }
    m_renderer->EditInContext(node->GetPath());
}

void RenderJob::AddLines()
{
    if (!m_options.lines)
    {
        return;
    }
    const LineLook& look = *m_options.lines;
    Scene& scene = *m_app->GetContext()->GetScene();
    auto* style = new LineStyle("edges");
    style->color = look.color;
    // It is added, and starts white.
    style->secondColor = Color(0.0f, 0.0f, 0.0f, 0.0f);
    // The samples of the picture smooth the rims; a line that fades to its rims would be blurred
    // besides, and would hide what is behind where it is all but transparent.
    style->antialias = false;
    style->width = look.width / 2.0f;
    style->SetDashed(look.dash.has_value());
    // Dashes are measured in pixels of what is drawn.
    const auto scale = static_cast<float>(ScaleOf(m_options));
    style->SetDashFrequency(look.dash.value_or(1.0f) * scale);
    style->offset = look.offset;
    scene.AddLineStyle(style);
    Host::FeatureEdges::AddTo(scene, *style, look.crease);
    Host::FeatureEdges::MakeRoom(scene, look.width, scale);
}

void RenderJob::PlaceCamera()
{
    Host::ViewFitOptions fit;
    fit.aspect = static_cast<float>(m_options.width) / static_cast<float>(m_options.height);
    fit.fovDegrees = m_options.fov;
    fit.orthographic = m_options.orthographic;
    // The fit goes by where the nodes are.
    m_app->Update(0.0f);
    CameraNode& camera = *m_app->GetContext()->GetCamera();
    if (!m_options.eye)
    {
        Host::ViewFit::Frame(camera, m_report.boxMin, m_report.boxMax, m_options.view, fit);
        Host::SceneFit::Frame(camera, *m_app->GetContext()->GetScene(), fit.aspect, fit.margin);
        return;
    }
    const Vector middle = m_report.hasBox ? Middle(m_report.boxMin, m_report.boxMax) : Vector();
    if (!Host::ViewFit::Look(camera, *m_options.eye, m_options.target.value_or(middle), m_options.up,
                             m_report.boxMin, m_report.boxMax, fit))
    {
        throw Failure(SubjectOf(m_options), "the eye is where it looks at; move --eye or --target");
    }
}

void RenderJob::SetFog()
{
    if (!m_options.fog)
    {
        return;
    }
    const CameraNode& camera = *m_app->GetContext()->GetCamera();
    SkySettings& sky = SkySettings::inst();
    sky.SetFogStart(ToShaderDistance(m_options.fog->start, camera));
    sky.SetFogEnd(ToShaderDistance(m_options.fog->end, camera));
}

void RenderJob::AddSheet()
{
    CoreContext& context = *m_app->GetContext();
    if (m_watermark)
    {
        m_watermark->Show(*context.GetBackground2D(), m_options.width, m_options.height);
    }
    Host::SheetOptions sheet;
    sheet.title = m_options.title;
    sheet.scaleBar = m_options.scaleBar;
    sheet.unit = UnitSign(m_report.metresPerUnit);
    sheet.north = m_options.north;
    m_sheet = std::make_unique<Host::Sheet>(*context.GetForeground2D(), sheet);
    m_sheet->Layout(*context.GetCamera(), m_options.width, m_options.height);
}

void RenderJob::Draw()
{
    if (!IsDrawn())
    {
        m_app->Update(0.0f);
        return;
    }
    m_gl->BindFramebuffer();
    for (int frame = 0; frame < m_options.frames; ++frame)
    {
        const Stopwatch watch;
        DrawFrame(frame);
        m_gl->Finish();
        m_stats.frames.push_back(watch.Milliseconds());
    }
}

void RenderJob::DrawFrame(int frame)
{
    CoreContext& context = *m_app->GetContext();
    m_app->Update(static_cast<float>(frame));
    if (frame == 0)
    {
        const Stopwatch watch;
        m_renderer->Pack(context.GetScene(), context.GetCamera());
        m_gl->Finish();
        m_stats.pack = watch.Milliseconds();
    }
    m_app->Render(m_renderer.get(), IsCaptured(m_options));
}

void RenderJob::Pick()
{
    if (!m_options.pick)
    {
        return;
    }
    Scene& scene = *m_app->GetContext()->GetScene();
    CameraNode& camera = *m_app->GetContext()->GetCamera();
    Host::Picking picking(*m_renderer);
    m_pick.x = m_options.pick->x;
    m_pick.y = m_options.pick->y;
    for (const Host::PickHit& hit : picking.PickThrough(scene, camera, m_pick.x, m_pick.y, MostPicked))
    {
        m_pick.Add(hit, camera, m_nodes, m_meshes);
    }
}

void RenderJob::Count()
{
    if (!IsDrawn())
    {
        return;
    }
    const CoreContext& context = *m_app->GetContext();
    std::vector<const Scene*> scenes = {context.GetScene(), context.GetBackground2D(), context.GetForeground2D()};
    if (m_renderer->GetSkyScene())
    {
        scenes.push_back(m_renderer->GetSkyScene());
    }
    m_stats.drawn = Host::CountDraws(scenes);
}

void RenderJob::Write()
{
    if (m_options.output.empty())
    {
        return;
    }
    std::string error;
    if (!Host::WritePNG(*m_gl, m_options.output, Host::PNGAlpha::Drop, error))
    {
        throw Failure(m_options.output, error);
    }
}

} // namespace OV::RenderApp
