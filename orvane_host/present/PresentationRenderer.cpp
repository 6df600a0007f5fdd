#include "orvane_host/present/PresentationRenderer.h"

#include "orvane_host/present/detail/Batches.h"
#include "orvane_host/present/detail/DepthStage.h"
#include "orvane_host/present/detail/EdgeStage.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/FilterEffect.h"
#include "orvane_host/present/detail/GroundStage.h"
#include "orvane_host/present/detail/HorizonStage.h"
#include "orvane_host/present/detail/IdentifierStage.h"
#include "orvane_host/present/detail/ItemLister.h"
#include "orvane_host/present/detail/LineDepthStage.h"
#include "orvane_host/present/detail/LineSetup.h"
#include "orvane_host/present/detail/LineStage.h"
#include "orvane_host/present/detail/NeededScope.h"
#include "orvane_host/present/detail/OcclusionStage.h"
#include "orvane_host/present/detail/ScreenBuffer.h"
#include "orvane_host/present/detail/ShadowStage.h"
#include "orvane_host/present/detail/SunPatchStage.h"
#include "orvane_host/present/detail/SurfaceStage.h"
#include "orvane/imaging/TextureLoader.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/scene/Scene.h"

#include <GL/gl.h>

#include <algorithm>
#include <utility>

namespace OV::Host
{

PresentationRenderer::PresentationRenderer(TextureLoader* loader, RenderCapabilities* caps) :
    SceneRenderer(loader, caps), m_layerLines(std::make_unique<Detail::LineSetup>()),
    m_lister(std::make_unique<Detail::ItemLister>())
{
    // In drawing order.
    m_shadows = Append<Detail::ShadowStage>(Step::Shadows);
    Append<Detail::IdentifierStage>(Step::Identifiers);
    Append<Detail::DepthStage>(Step::Depth);
    m_lineDepth = Append<Detail::LineDepthStage>(Step::LineDepth);
    m_ground = Append<Detail::GroundStage>(Step::Ground);
    m_sunPatch = Append<Detail::SunPatchStage>(Step::SunPatch, *m_shadows);
    m_surfaces = Append<Detail::SurfaceStage>(Step::Surfaces);
    m_surfaces->LightWith(*m_shadows);
    m_sunPatch->TakeStrokesOf(*m_surfaces);
    m_occlusion = Append<Detail::OcclusionStage>(Step::Occlusion);
    m_horizon = Append<Detail::HorizonStage>(Step::Occlusion);
    m_edges = Append<Detail::EdgeStage>(Step::Edges);
    m_lines = Append<Detail::LineStage>(Step::Lines, *m_lineDepth);
    m_surfaces->LeaveLinesTo(*m_lines);
}

PresentationRenderer::~PresentationRenderer()
{
    ReleaseHeld();
}

template <class Stage, class... Arguments>
Stage* PresentationRenderer::Append(Step step, Arguments&... arguments)
{
    m_stages.push_back({step, std::make_unique<Stage>(arguments...), {}});
    return static_cast<Stage*>(m_stages.back().stage.get());
}

PresentationRenderer::Step PresentationRenderer::StepOf(StageSlot slot)
{
    switch (slot)
    {
    case StageSlot::BeforeSurfaces:
        return Step::BeforeSurfaces;
    case StageSlot::AfterSurfaces:
        return Step::AfterSurfaces;
    case StageSlot::OverPicture:
        break;
    }
    return Step::OverPicture;
}

bool PresentationRenderer::IsOutside(const Entry& entry)
{
    return entry.step == Step::BeforeSurfaces || entry.step == Step::AfterSurfaces || entry.step == Step::OverPicture;
}

PresentationStage* PresentationRenderer::AddStage(std::unique_ptr<PresentationStage> stage, StageSlot slot)
{
    if (!stage || m_drawing)
    {
        return nullptr;
    }
    const Step step = StepOf(slot);
    const auto place = std::find_if(m_stages.begin(), m_stages.end(),
                                    [step](const Entry& entry) { return entry.step > step; });
    return m_stages.insert(place, Entry{step, std::move(stage), {}})->stage.get();
}

std::unique_ptr<PresentationStage> PresentationRenderer::RemoveStage(const PresentationStage* stage)
{
    const auto found = std::find_if(m_stages.begin(), m_stages.end(), [&](const Entry& entry) {
        return entry.stage.get() == stage && IsOutside(entry);
    });
    if (found == m_stages.end() || m_drawing)
    {
        return nullptr;
    }
    std::unique_ptr<PresentationStage> removed = std::move(found->stage);
    m_stages.erase(found);
    removed->ReleaseGL();
    return removed;
}

bool PresentationRenderer::DrawsBesideScene() const
{
    return std::any_of(m_stages.begin(), m_stages.end(),
                       [](const Entry& entry) { return IsOutside(entry) && entry.stage->DrawsBesideScene(); });
}

bool PresentationRenderer::ParseLook(const std::string& name, Look& look)
{
    return Host::ParseLook(name, look);
}

const char* PresentationRenderer::NameOfLook(Look look)
{
    const char* const name = Host::NameOfLook(look);
    return name ? name : "";
}

void PresentationRenderer::SetLook(Look look)
{
    m_surfaces->SetLook(look);
    m_shadows->SetFine(look != Look::Monotone && look != Look::VertexColor);
}

Look PresentationRenderer::GetLook() const
{
    return m_surfaces->GetLook();
}

void PresentationRenderer::SetStrokeWidth(float pixels)
{
    m_surfaces->SetStrokeWidth(pixels);
}

void PresentationRenderer::SetSurroundings(std::shared_ptr<const Surroundings> surroundings)
{
    m_surfaces->SetSurroundings(std::move(surroundings));
}

void PresentationRenderer::SetGlass(const GlassSettings& glass)
{
    m_surfaces->SetGlass(glass);
}

void PresentationRenderer::SetGround(const std::optional<Detail::Ground>& ground)
{
    m_ground->SetGround(ground);
}

void PresentationRenderer::ShowSurfaces(bool show)
{
    m_surfaces->ShowSurfaces(show);
    m_lineDepth->ShowSurfaces(show);
}

void PresentationRenderer::ShowLines(bool show)
{
    m_surfaces->ShowLines(show);
    m_lineDepth->ShowLines(show);
}

void PresentationRenderer::OverlayLines(bool overlay)
{
    m_surfaces->OverlayLines(overlay);
    m_lineDepth->OverlayLines(overlay);
}

void PresentationRenderer::SetHiddenLines(const std::optional<HiddenLineLook>& look)
{
    m_lines->SetHiddenLines(look);
}

void PresentationRenderer::EditInContext(std::vector<std::pair<std::uint64_t, std::uint64_t>> path)
{
    m_editPath = path;
    m_surfaces->SetEditPath(std::move(path));
}

void PresentationRenderer::LeaveEdit()
{
    m_editPath.reset();
    m_surfaces->SetEditPath(std::nullopt);
}

void PresentationRenderer::SetEdges(const std::optional<EdgeLook>& edges)
{
    m_edges->SetEdges(edges);
}

const std::optional<EdgeLook>& PresentationRenderer::GetEdges() const
{
    return m_edges->GetEdges();
}

void PresentationRenderer::ShowIdentifiers(bool show)
{
    m_edges->ShowIdentifiers(show);
    m_lineDepth->ShowIdentifiers(show);
}

void PresentationRenderer::ShowAmbientOcclusion(bool show)
{
    m_occlusion->Show(show);
}

void PresentationRenderer::SetHorizonOcclusion(const std::optional<HorizonOcclusion>& occlusion)
{
    m_horizon->Show(occlusion ? std::optional<Detail::HorizonStage::Look>(
                                    {occlusion->radius, occlusion->strength, occlusion->coarse})
                              : std::nullopt);
}

void PresentationRenderer::SetSun(const std::optional<Vector>& towardSun, const Vector& up)
{
    m_shadows->SetSun(towardSun, up);
}

void PresentationRenderer::SetShadows(const std::optional<ShadowSettings>& shadows)
{
    m_shadows->SetShadows(shadows);
    m_castsShadows = shadows.has_value();
}

void PresentationRenderer::SetShadowGround(const std::optional<ShadowGround>& ground)
{
    m_shadows->SetPlane(ground ? std::optional<Detail::ShadowStage::Plane>({ground->position, ground->up}) : std::nullopt);
    m_sunPatch->SetDarkness(ground ? ground->darkness : 0.0f);
}

void PresentationRenderer::Suspend()
{
    ReleaseHeld();
    SceneRenderer::Suspend();
}

void PresentationRenderer::ReleaseHeld()
{
    for (Entry& entry : m_stages)
    {
        entry.stage->ReleaseGL();
    }
    m_layerLines->ReleaseGL();
    Detail::Drop(m_filter);
    m_picture.reset();
    m_batches.reset();
}

void PresentationRenderer::KeepApart(std::vector<const MeshNode*> nodes)
{
    m_apart = std::move(nodes);
    if (m_batches)
    {
        m_batches->KeepApart(m_apart);
    }
}

BatchCounts PresentationRenderer::CountBatches() const
{
    return m_batches ? m_batches->Count() : BatchCounts();
}

Detail::Batches* PresentationRenderer::BatchesOf(Scene& scene)
{
    const bool isWanted = m_batchSettings.use != BatchUse::Off && GetLook() != Look::Crosshatch;
    if (m_batches && (!isWanted || m_batches->GetListenedScene() != &scene))
    {
        m_batches.reset();
        // What dies while a frame is drawn counts as gone to its end, and so would what took its
        // place.
        return nullptr;
    }
    if (!m_batches && isWanted && (m_batchSettings.use == BatchUse::On || Detail::Batches::IsWorthwhile(scene)))
    {
        m_batches = std::make_unique<Detail::Batches>(scene);
        m_batches->KeepApart(m_apart);
    }
    if (m_batches)
    {
        m_batches->KeepEdited(m_editPath);
        m_batches->KeepRigid(GetLook() == Look::VertexColor);
        m_batches->Update();
    }
    return m_batches.get();
}

void PresentationRenderer::ListSurfaces(Scene& scene, CameraNode& camera, std::vector<RenderItemES20>& items)
{
    CameraNodeES20* const cameraData = CameraDataOf(&camera);
    if (Detail::Batches* const batches = cameraData ? BatchesOf(scene) : nullptr)
    {
        PresentationFrame frame = BeginFrame(scene, camera, *cameraData, m_lister->GetItems());
        m_lister->List(frame, false, *batches, 0.0f, true);
        m_lister->Clear();
        return;
    }
    SceneRenderer::ListSurfaces(scene, camera, items);
}

int PresentationRenderer::GetMargin(const PixelSize& whole) const
{
    return GetColorMargin(whole) + m_horizon->MarginOf(whole);
}

int PresentationRenderer::GetColorMargin(const PixelSize& whole) const
{
    // The filter looks 4 pixels along an edge and a pixel about that; what reduces a finer picture looks
    // at the pixel and its neighbours.
    constexpr int filterReach = 6;
    constexpr int reducingReach = 2;
    int margin = UseFXAA() ? filterReach : CanSuperSample() ? reducingReach : 0;
    for (const Entry& entry : m_stages)
    {
        // That stage looks at pictures of its own.
        margin += entry.stage.get() == m_horizon ? 0 : entry.stage->MarginOf(whole);
    }
    return margin;
}

void PresentationRenderer::BeginCapture()
{
    SceneRenderer::BeginCapture();
    m_capturing = offscreenFramebuffer != 0 && !UseMSAA();
}

void PresentationRenderer::ApplyCapture()
{
    m_capturing = false;
    LayCapture();
    if (!UseMSAA())
    {
        m_lines->LayOver();
        // The next pass enables what it needs.
        glDisable(GL_DEPTH_TEST);
    }
}

void PresentationRenderer::LayCapture()
{
    const bool isScreenSized = PixelSize{offscreenWidth, offscreenHeight} == PixelSize{width, height};
    if (!UseFXAA() || !screenEffect || !isScreenSized)
    {
        SceneRenderer::ApplyCapture();
        return;
    }
    if (!m_filter)
    {
        m_filter = new Detail::FilterEffect;
    }
    m_filter->SetSize(width, height);
    const Detail::NeededScope needed(GetPart().value_or(PicturePart()), {width, height});
    EffectES20* const before = std::exchange(screenEffect, m_filter);
    m_filter->AddReference();
    SceneRenderer::ApplyCapture();
    // Without a mesh to draw with the renderer lets go of the effect.
    if (EffectES20* const after = std::exchange(screenEffect, before))
    {
        after->Release();
    }
    else
    {
        screenEffect = nullptr;
        before->Release();
    }
}

PixelSize PresentationRenderer::TargetSize() const
{
    return m_capturing ? PixelSize{offscreenWidth, offscreenHeight} : PixelSize{width, height};
}

bool PresentationRenderer::SetAAMode(AAMode mode)
{
    const float before = devicePixelRatio;
    const bool isChanged = SceneRenderer::SetAAMode(mode);
    if (isChanged)
    {
        m_plainRatio = mode == AAModeSupersampling ? before : devicePixelRatio;
        m_raisedRatio = devicePixelRatio;
    }
    return isChanged;
}

void PresentationRenderer::SetDevicePixelRatio(float ratio)
{
    SceneRenderer::SetDevicePixelRatio(ratio);
    m_plainRatio = ratio;
    m_raisedRatio = ratio;
}

void PresentationRenderer::Render2D(Scene2D* layer)
{
    const float ratio = devicePixelRatio;
    // One that was set otherwise since is the host's.
    devicePixelRatio = m_layerRatio.value_or(ratio == m_raisedRatio ? m_plainRatio : ratio);
    m_layerLines->Begin(effectCache, TargetSize(), {width, height});
    SceneRenderer::Render2D(layer);
    m_layerLines->End();
    devicePixelRatio = ratio;
}

} // namespace OV::Host
