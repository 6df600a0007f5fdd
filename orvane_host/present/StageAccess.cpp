#include "orvane_host/present/StageAccess.h"

#include "orvane_host/present/SceneRenderer.h"
#include "orvane/effects/MaterialEffectES20.h"
#include "orvane/imaging/TextureLoader.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Mesh.h"

namespace OV::Host
{

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
    m_renderer.RenderItemList(&cameraData, items, pass);
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
