#include "orvane_host/present/detail/ItemLister.h"

#include "orvane_host/present/StageAccess.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshStyleES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Scene.h"

#include <cstddef>
#include <vector>

namespace OV::Host::Detail
{

namespace
{

bool DrawsPoints(const MeshStyleES20& style)
{
    const auto* const data = dynamic_cast<const MaterialES20*>(&style);
    // The material may have been deleted while the frame was listed.
    const Material* const material = data ? data->GetMaterial() : nullptr;
    return material && (material->GetFlags() & MaterialFlagPoints) != 0;
}

} // namespace

void ItemLister::List(PresentationFrame& frame, bool withLines)
{
    std::vector<RenderItemES20>& items = m_items.all;
    items.clear();
    frame.renderer.List(frame.scene.GetOptimizedMaterials(), frame.cameraData, items, true);
    m_items.firstLine = items.size();
    if (withLines)
    {
        frame.renderer.List(frame.scene.GetLineStyles(), frame.cameraData, items, true);
    }
    m_items.firstAlpha = items.size();
    frame.renderer.List(frame.scene.GetAlphaMaterials(), frame.cameraData, items, true);
    DropGone(frame.renderer);
}

void ItemLister::DropGone(const StageAccess& renderer)
{
    if (!renderer.HasLosses())
    {
        return;
    }
    std::size_t kept = 0;
    std::size_t firstLine = 0;
    std::size_t firstAlpha = 0;
    for (std::size_t i = 0; i < m_items.all.size(); ++i)
    {
        if (renderer.IsGone(m_items.all[i]))
        {
            continue;
        }
        m_items.all[kept++] = m_items.all[i];
        firstLine += i < m_items.firstLine ? 1 : 0;
        firstAlpha += i < m_items.firstAlpha ? 1 : 0;
    }
    m_items.all.resize(kept);
    m_items.firstLine = firstLine;
    m_items.firstAlpha = firstAlpha;
}

void ItemLister::ListSurfaces(bool withPoints)
{
    m_items.surfaces.clear();
    const MeshStyleES20* last = nullptr;
    bool identified = false;
    for (std::size_t i = 0; i < m_items.all.size(); ++i)
    {
        if (i == m_items.firstLine)
        {
            i = m_items.firstAlpha;
        }
        if (i == m_items.all.size())
        {
            break;
        }
        const RenderItemES20& item = m_items.all[i];
        if (item.style != last)
        {
            last = item.style;
            identified = item.style->GetShader(RenderPassDepthId) && (withPoints || !DrawsPoints(*item.style));
        }
        if (identified)
        {
            m_items.surfaces.push_back(item);
        }
    }
}

void ItemLister::Clear()
{
    m_items.all.clear();
    m_items.surfaces.clear();
    m_items.firstLine = 0;
    m_items.firstAlpha = 0;
}

} // namespace OV::Host::Detail
