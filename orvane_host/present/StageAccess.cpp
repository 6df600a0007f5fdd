#include "orvane_host/present/StageAccess.h"

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/SceneRenderer.h"
#include "orvane_host/present/detail/Batch.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/effects/MaterialEffectES20.h"
#include "orvane/imaging/TextureLoader.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Mesh.h"

#include <GL/gl.h>

#include <algorithm>
#include <utility>

namespace OV::Host
{

namespace
{

/// Draws with the camera of the whole picture, in a viewport of which a part lies on the target, for the
/// length of a scope.
///
/// A camera of the part alone would give corners other numbers, which the rasteriser rounds in another way. It
/// is left as it is where a viewport can't be so large.
class WholeViewportScope
{
public:
    explicit WholeViewportScope(PresentationFrame& frame) : m_frame(frame), m_part(frame.cameraData.GetPart())
    {
        if (m_part.scaleX == 1.0 && m_part.scaleY == 1.0)
        {
            return;
        }
        const PicturePart& part = frame.part;
        GLint most[2] = {0, 0};
        glGetIntegerv(GL_VIEWPORT, m_viewport);
        glGetIntegerv(GL_MAX_VIEWPORT_DIMS, most);
        // A target may be finer than the picture.
        const int finer = m_viewport[2] / part.size.width;
        m_isMoved = finer > 0 && part.whole.width <= most[0] / finer && part.whole.height <= most[1] / finer;
        if (m_isMoved)
        {
            SetPart(ViewPart());
            glViewport(-part.x * finer, -part.y * finer, part.whole.width * finer, part.whole.height * finer);
        }
    }

    ~WholeViewportScope()
    {
        if (m_isMoved)
        {
            SetPart(m_part);
            glViewport(m_viewport[0], m_viewport[1], m_viewport[2], m_viewport[3]);
        }
    }

    WholeViewportScope(const WholeViewportScope&) = delete;
    WholeViewportScope& operator=(const WholeViewportScope&) = delete;

private:
    void SetPart(const ViewPart& part)
    {
        m_frame.cameraData.SetPart(part);
        m_frame.cameraData.UpdateMVP(m_frame.view.width, m_frame.view.height, false);
        // What is fed of the light may follow from the matrix.
        EffectES20::SetLightShare(EffectES20::GetLightShare());
    }

    PresentationFrame& m_frame;
    ViewPart m_part;
    GLint m_viewport[4] = {0, 0, 0, 0};
    bool m_isMoved = false;
};

} // namespace

EffectCache& StageAccess::GetEffects()
{
    return m_renderer.effectCache;
}

TextureLoader* StageAccess::GetTextureLoader()
{
    return m_renderer.textureLoader;
}

void StageAccess::List(Material& material, CameraNodeES20& cameraData, std::vector<RenderItemES20>& items,
                       bool clipped)
{
    m_renderer.PrepareOptimizedMaterial(&material, &cameraData, items, clipped);
}

void StageAccess::List(LineStyle& style, CameraNodeES20& cameraData, std::vector<RenderItemES20>& items,
                       bool clipped)
{
    m_renderer.PrepareLineStyle(&style, &cameraData, items, clipped);
}

void StageAccess::List(const std::vector<Material*>& materials, CameraNodeES20& cameraData,
                       std::vector<RenderItemES20>& items, bool clipped)
{
    m_renderer.PrepareOptimizedMaterials(materials, &cameraData, items, clipped);
}

void StageAccess::List(const std::vector<LineStyle*>& styles, CameraNodeES20& cameraData,
                       std::vector<RenderItemES20>& items, bool clipped)
{
    m_renderer.PrepareLineStyles(styles, &cameraData, items, clipped);
}

void StageAccess::ListWhole(Material& material, CameraNodeES20& cameraData, std::vector<RenderItemES20>& items,
                            bool clipped)
{
    m_renderer.PrepareWholeMaterial(&material, &cameraData, items, clipped);
}

void StageAccess::ListWhole(const std::vector<Material*>& materials, CameraNodeES20& cameraData,
                            std::vector<RenderItemES20>& items, bool clipped)
{
    m_renderer.PrepareWholeMaterials(materials, &cameraData, items, clipped);
}

void StageAccess::ListMeshes(const RenderItemES20& whole, std::vector<RenderItemES20>& items)
{
    SceneRenderer::ListMeshes(whole, items);
}

void StageAccess::List(Mesh& mesh, MeshNode& node, CameraNodeES20& cameraData, std::vector<RenderItemES20>& items)
{
    AlphaMeshNode entry{};
    entry.node = &node;
    entry.mesh = &mesh;
    m_renderer.PrepareZOrderedMeshNode(&entry, &cameraData, items);
}

SharedBufferPool& StageAccess::GetBufferPool()
{
    return m_renderer.bufferPool;
}

bool StageAccess::HasLosses() const
{
    return m_renderer.HasLosses();
}

bool StageAccess::IsGone(const RenderItemES20& item) const
{
    return m_renderer.IsGone(item);
}

void StageAccess::Upload()
{
    m_renderer.bufferPool.GenerateVBOs();
}

void StageAccess::Draw(CameraNodeES20& cameraData, const std::vector<RenderItemES20>& items, RenderPass pass)
{
    DrawItems(cameraData, items, pass);
}

void StageAccess::DrawInPicture(PresentationFrame& frame, const std::vector<RenderItemES20>& items, RenderPass pass)
{
    const WholeViewportScope whole(frame);
    DrawItems(frame.cameraData, items, pass);
}

void StageAccess::DrawItems(CameraNodeES20& cameraData, const std::vector<RenderItemES20>& items, RenderPass pass)
{
    const auto isOfSeveral = [this](const RenderItemES20& item) {
        const bool isThere = item.mesh && !(HasLosses() && IsGone(item));
        return isThere && Detail::BatchES20::HoldsColors(*item.mesh);
    };
    // The other passes read none of the colours.
    const bool readsColors = pass == RenderPassDefault || pass == RenderPassAdvanced;
    if (!readsColors || std::none_of(items.begin(), items.end(), isOfSeveral))
    {
        m_renderer.RenderItemList(&cameraData, items, pass);
        return;
    }
    // A class of the host's may draw meanwhile.
    std::vector<RenderItemES20> run = std::move(m_run);
    auto begin = items.begin();
    while (begin != items.end())
    {
        const bool several = isOfSeveral(*begin);
        const auto end =
            std::find_if(begin, items.end(), [&](const RenderItemES20& item) { return isOfSeveral(item) != several; });
        run.assign(begin, end);
        EffectES20::TakeMaterialColors(several);
        m_renderer.RenderItemList(&cameraData, run, pass);
        EffectES20::TakeMaterialColors(false);
        begin = end;
    }
    m_run = std::move(run);
}

bool StageAccess::PrepareScreen()
{
    if (!m_renderer.screenMesh)
    {
        m_renderer.CreateScreenMesh();
    }
    return m_renderer.screenMeshData;
}

void StageAccess::DrawOverScreen(MaterialEffectES20& effect)
{
    const bool made = m_renderer.screenMesh;
    if (!PrepareScreen())
    {
        return;
    }
    if (!made)
    {
        Upload();
    }
    effect.Apply(nullptr, nullptr);
    m_renderer.screenMeshData->Render(&effect, m_renderer.screenMesh->GetNodes(), false);
    effect.Remove();
}

} // namespace OV::Host
