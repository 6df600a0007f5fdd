// What a frame draws, and in which order.

#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/PresentationRenderer.h"

#include "orvane_host/geometry/ViewVolume.h"
#include "orvane_host/present/Picking.h"
#include "orvane_host/present/detail/Batches.h"
#include "orvane_host/present/detail/DrawIdKeeper.h"
#include "orvane_host/present/detail/EffectInPlace.h"
#include "orvane_host/present/detail/ItemLister.h"
#include "orvane_host/present/detail/LineStage.h"
#include "orvane_host/present/detail/OcclusionView.h"
#include "orvane_host/present/detail/ScreenBuffer.h"
#include "orvane_host/present/detail/SurfacePass.h"
#include "orvane_host/present/detail/SurfaceStage.h"
#include "orvane/effects/MaterialEffectES20.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Scene.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cstddef>

namespace OV::Host
{

namespace
{

GLint Query(GLenum name)
{
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

/// Marks that something lasts, for the length of a scope.
class MarkScope
{
public:
    explicit MarkScope(bool& mark) : m_mark(mark) { m_mark = true; }
    ~MarkScope() { m_mark = false; }

    MarkScope(const MarkScope&) = delete;
    MarkScope& operator=(const MarkScope&) = delete;

private:
    bool& m_mark;
};

/// Frees the units in which stages left textures.
void ReleaseTextures(const PresentationFrame& frame)
{
    // The first unit comes last and stays active.
    for (std::size_t unit = frame.usedUnits.size(); unit-- > 0;)
    {
        if (frame.usedUnits[unit] || unit == 0)
        {
            glActiveTexture(GL_TEXTURE0 + static_cast<GLenum>(unit));
        }
        if (frame.usedUnits[unit])
        {
            glBindTexture(GL_TEXTURE_2D, 0);
        }
    }
}

/// The part of a picture that an area lies in, with a rim for what rounding may do.
ViewVolume::Part PartOf(const PickArea& area, const PixelSize& size)
{
    constexpr int rim = 2;
    const auto across = [&](int x) { return 2.0f * static_cast<float>(x) / static_cast<float>(size.width) - 1.0f; };
    const auto up = [&](int y) { return 1.0f - 2.0f * static_cast<float>(y) / static_cast<float>(size.height); };
    return {across(area.x - rim), across(area.x + area.width + rim), up(area.y + area.height + rim),
            up(area.y - rim)};
}

} // namespace

void PresentationRenderer::DrawScene(Scene& scene, CameraNode& camera)
{
    CameraNodeES20* const cameraData = CameraDataOf(&camera);
    if (!cameraData)
    {
        return;
    }
    const MarkScope drawing(m_drawing);
    PresentationFrame frame = BeginFrame(scene, camera, *cameraData, m_lister->GetItems());
    frame.target = TargetSize();
    cameraData->UpdateMVP(frame.view.width, frame.view.height, false);
    // Whoever of the host's is called meanwhile may delete the camera: the next frame has another.
    const auto isCameraGone = [cameraData] { return !cameraData->GetCameraNode(); };
    for (Entry& entry : m_stages)
    {
        entry.stage->Prepare(frame);
        if (isCameraGone())
        {
            return;
        }
    }
    if (Detail::Batches* const batches = BatchesOf(scene))
    {
        const float leastShare = m_batchSettings.smallestPixels / static_cast<float>(std::max(frame.screen.height, 1));
        // Of a larger picture what lies beside the part darkens corners in it.
        const bool isPart = !(frame.part.size == frame.part.whole);
        const bool isAllNeeded =
            m_castsShadows || isPart || std::any_of(m_stages.begin(), m_stages.end(), IsOutside);
        m_lister->List(frame, m_surfaces->AreLinesShown(), *batches, leastShare, isAllNeeded);
    }
    else
    {
        m_lister->List(frame, m_surfaces->AreLinesShown());
    }
    if (!isCameraGone())
    {
        if (NeedsMeshes())
        {
            m_lister->ListMeshes();
        }
        GatherNeeds(frame);
    }
    if (isCameraGone())
    {
        m_lister->Clear();
        return;
    }
    m_lister->DropGone(frame.renderer);
    bufferPool.GenerateVBOs();
    if (frame.served)
    {
        // Of points the shader of identifiers knows no size.
        m_lister->ListSurfaces(false);
        AskTarget(frame);
    }
    m_lines->Begin(frame.multisampled || (m_capturing && CanSuperSample()), m_capturing && UseFXAA());
    bool begun = false;
    for (Entry& entry : m_stages)
    {
        if (!begun && entry.step >= Step::Ground)
        {
            BeginScene();
            begun = true;
        }
        if (isCameraGone())
        {
            break;
        }
        DrawStage(entry, frame);
        if (IsOutside(entry))
        {
            m_lister->DropGone(frame.renderer);
        }
    }
    const auto isUsed = [](bool used) { return used; };
    if (frame.served || std::any_of(frame.usedUnits.begin(), frame.usedUnits.end(), isUsed))
    {
        ReleaseTextures(frame);
    }
    MeshES20::ResetBufferCache();
    m_lister->Clear();
}

/// Whether a stage looks at each mesh of the frame's items.
bool PresentationRenderer::NeedsMeshes() const
{
    return m_surfaces->SortsMeshes() || std::any_of(m_stages.begin(), m_stages.end(), IsOutside);
}

void PresentationRenderer::GatherNeeds(PresentationFrame& frame)
{
    for (Entry& entry : m_stages)
    {
        entry.needs = entry.stage->NeedsOf(frame);
        frame.needs |= entry.needs;
        if (!frame.cameraData.GetCameraNode())
        {
            return;
        }
    }
    frame.served = !overDraw && frame.needs.Any() && frame.renderer.PrepareScreen();
}

void PresentationRenderer::AskTarget(PresentationFrame& frame)
{
    frame.framebuffer = static_cast<unsigned int>(Query(GL_FRAMEBUFFER_BINDING));
    frame.multisampled = Query(GL_SAMPLE_BUFFERS) != 0;
    glGetFloatv(GL_DEPTH_RANGE, frame.depthRange.data());
    frame.depthShare = Detail::OcclusionView(frame.camera).depthShare;
}

void PresentationRenderer::BeginScene() const
{
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
    if (!overDraw)
    {
        glClear(GL_DEPTH_BUFFER_BIT);
    }
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
}

void PresentationRenderer::DrawStage(Entry& entry, PresentationFrame& frame)
{
    const FrameNeeds& needs = entry.needs;
    bool has = !needs.Any() || frame.served;
    if (has && needs.picture)
    {
        has = CopyPicture(frame);
    }
    if (has || needs.optional)
    {
        entry.stage->Draw(frame);
    }
    frame.picture = 0;
}

bool PresentationRenderer::CopyPicture(PresentationFrame& frame)
{
    if (!m_picture)
    {
        m_picture = std::make_unique<Detail::ScreenBuffer>(RenderTargetProfileColor);
    }
    if (!m_picture->Resize(frame.target.width, frame.target.height))
    {
        return false;
    }
    m_picture->CopyFrom(frame.framebuffer, frame.multisampled);
    // Copying leaves it bound.
    frame.usedUnits[0] = true;
    frame.picture = m_picture->GetTarget().GetColorTexture();
    return true;
}

void PresentationRenderer::DrawSurfaces(Scene& scene, CameraNode& camera, MaterialEffectES20& effect,
                                        const PickArea* area)
{
    CameraNodeES20* const cameraData = CameraDataOf(&camera);
    if (!cameraData)
    {
        return;
    }
    const MarkScope drawing(m_drawing);
    PresentationFrame frame = BeginFrame(scene, camera, *cameraData, m_lister->GetItems());
    cameraData->UpdateMVP(frame.view.width, frame.view.height, false);
    Detail::DrawIdKeeper drawIds(scene);
    if (Detail::Batches* const batches = BatchesOf(scene))
    {
        m_lister->ListSingly(frame, *batches, ViewVolume(cameraData->GetMVP(), area ? PartOf(*area, frame.screen)
                                                                                   : ViewVolume::Part()));
    }
    else
    {
        m_lister->List(frame, m_surfaces->AreLinesShown());
    }
    m_lister->ListMeshes();
    m_lister->ListSurfaces(true);
    const std::vector<RenderItemES20>& surfaces = frame.items.surfaces;
    drawIds.Keep(surfaces);
    bufferPool.GenerateVBOs();
    Detail::SurfacePass::SetState();
    {
        const Detail::EffectInPlace inPlace(surfaces, RenderPassDepthIdSecond, effect);
        RenderItemList(cameraData, surfaces, RenderPassDepthIdSecond);
    }
    MeshES20::ResetBufferCache();
    m_lister->Clear();
}

} // namespace OV::Host
