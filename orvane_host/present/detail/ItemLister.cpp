#include "orvane_host/present/detail/ItemLister.h"

#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/Batches.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshStyleES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
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
    m_items.seen = nullptr;
    frame.renderer.ListWhole(frame.scene.GetOptimizedMaterials(), frame.cameraData, items, true);
    m_items.firstLine = items.size();
    if (withLines)
    {
        frame.renderer.List(frame.scene.GetLineStyles(), frame.cameraData, items, true);
    }
    m_items.firstAlpha = items.size();
    frame.renderer.ListWhole(frame.scene.GetAlphaMaterials(), frame.cameraData, items, true);
    DropGone(frame.renderer);
}

void ItemLister::List(PresentationFrame& frame, bool withLines, Batches& batches, float leastShare, bool isAllNeeded)
{
    std::vector<RenderItemES20>& all = m_items.all;
    std::vector<RenderItemES20>& seen = m_seen.all;
    all.clear();
    seen.clear();
    batches.List(frame, leastShare, isAllNeeded, all, seen);
    m_items.firstLine = all.size();
    m_seen.firstLine = seen.size();
    if (withLines)
    {
        frame.renderer.List(frame.scene.GetLineStyles(), frame.cameraData, all, true);
    }
    m_items.firstAlpha = all.size();
    // Lines are seen as they are.
    seen.insert(seen.end(), all.begin() + static_cast<std::ptrdiff_t>(m_items.firstLine), all.end());
    m_seen.firstAlpha = seen.size();
    batches.ListAlpha(frame, leastShare, isAllNeeded, all, seen);
    m_items.seen = &m_seen;
    DropGone(frame.renderer);
}

void ItemLister::ListSingly(PresentationFrame& frame, Batches& batches, const ViewVolume& view)
{
    m_items.all.clear();
    m_items.seen = nullptr;
    batches.ListSingly(frame, view, m_items.all);
    m_items.firstLine = m_items.all.size();
    m_items.firstAlpha = m_items.all.size();
    DropGone(frame.renderer);
}

void ItemLister::ListMeshes()
{
    ListMeshes(m_items);
    if (m_items.seen)
    {
        ListMeshes(m_seen);
    }
}

void ItemLister::ListMeshes(FrameItems& items)
{
    const auto isWhole = [](const RenderItemES20& item) { return !item.mesh; };
    if (std::none_of(items.all.begin(), items.all.end(), isWhole))
    {
        return;
    }
    // Behind the others, whose place they take then: a list of their own would keep its room.
    const std::size_t count = items.all.size();
    std::size_t firstLine = 0;
    std::size_t firstAlpha = 0;
    for (std::size_t i = 0; i <= count; ++i)
    {
        firstLine = i == items.firstLine ? items.all.size() - count : firstLine;
        firstAlpha = i == items.firstAlpha ? items.all.size() - count : firstAlpha;
        if (i == count)
        {
            break;
        }
        const RenderItemES20 item = items.all[i];
        if (isWhole(item))
        {
            StageAccess::ListMeshes(item, items.all);
        }
        else
        {
            items.all.push_back(item);
        }
    }
    items.all.erase(items.all.begin(), items.all.begin() + static_cast<std::ptrdiff_t>(count));
    items.firstLine = firstLine;
    items.firstAlpha = firstAlpha;
}

void ItemLister::DropGone(const StageAccess& renderer)
{
    if (renderer.HasLosses())
    {
        ListMeshes();
        DropGone(renderer, m_items);
        DropGone(renderer, m_seen);
    }
}

void ItemLister::DropGone(const StageAccess& renderer, FrameItems& items)
{
    std::size_t kept = 0;
    std::size_t firstLine = 0;
    std::size_t firstAlpha = 0;
    for (std::size_t i = 0; i < items.all.size(); ++i)
    {
        if (renderer.IsGone(items.all[i]))
        {
            continue;
        }
        items.all[kept++] = items.all[i];
        firstLine += i < items.firstLine ? 1 : 0;
        firstAlpha += i < items.firstAlpha ? 1 : 0;
    }
    items.all.resize(kept);
    items.firstLine = firstLine;
    items.firstAlpha = firstAlpha;
    const auto isGone = [&](const RenderItemES20& item) { return renderer.IsGone(item); };
    items.surfaces.erase(std::remove_if(items.surfaces.begin(), items.surfaces.end(), isGone), items.surfaces.end());
}

void ItemLister::ListSurfaces(bool withPoints)
{
    ListSurfaces(m_items, withPoints);
    if (m_items.seen)
    {
        ListSurfaces(m_seen, withPoints);
    }
}

void ItemLister::ListSurfaces(FrameItems& items, bool withPoints)
{
    items.surfaces.clear();
    const MeshStyleES20* last = nullptr;
    bool identified = false;
    for (std::size_t i = 0; i < items.all.size(); ++i)
    {
        if (i == items.firstLine)
        {
            i = items.firstAlpha;
        }
        if (i == items.all.size())
        {
            break;
        }
        const RenderItemES20& item = items.all[i];
        if (item.style != last)
        {
            last = item.style;
            identified = item.style->GetShader(RenderPassDepthId) && (withPoints || !DrawsPoints(*item.style));
        }
        if (identified)
        {
            items.surfaces.push_back(item);
        }
    }
}

void ItemLister::Clear()
{
    for (FrameItems* items : {&m_items, &m_seen})
    {
        items->all.clear();
        items->surfaces.clear();
        items->firstLine = 0;
        items->firstAlpha = 0;
        items->seen = nullptr;
    }
}

} // namespace OV::Host::Detail
