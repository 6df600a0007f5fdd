#include "orvane/renderer/Renderer20.h"

#include "orvane/base/detail/Prefetch.h"
#include "orvane/base/detail/Walk.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderdata/RenderItemES20.h"
#include "orvane/renderdata/detail/PlainDraw.h"
#include "orvane/renderer/detail/BorrowedVector.h"
#include "orvane/renderer/detail/PlainDraws.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <cstddef>
#include <vector>

namespace OV
{

namespace
{

/// How many items ahead of its draw a mesh is asked for, and what hangs on it.
constexpr std::size_t kForMesh = 24;
constexpr std::size_t kForItsParts = 16;
constexpr std::size_t kForDataAndNode = 8;

/// How far into a style's render data drawing reads, and into a material.
constexpr std::size_t kStyleLines = 3;
constexpr std::size_t kMaterialLines = 3;

/// The node that an item draws first, or null.
const MeshNode* FirstNode(const RenderItemES20& item)
{
    if (item.specificNode)
    {
        return item.node;
    }
    const PointerSpan<MeshNode> nodes = item.mesh->EachNode();
    return nodes.empty() ? nullptr : nodes.front();
}

/// Asks for what the item of that place touches, a few items ahead of its draw. One stage reads what
/// the stage before it has asked for.
void PrefetchStyle(const RenderItemES20* items)
{
    const RenderItemES20& item = items[kForMesh];
    if (item.mesh)
    {
        detail::PrefetchHead(item.mesh);
    }
    if (item.style != items[kForMesh - 1].style)
    {
        detail::PrefetchLines<kStyleLines>(item.style);
    }
}

void PrefetchParts(const RenderItemES20& item)
{
    detail::PrefetchHead(item.mesh->GetRawMesh().get());
}

void PrefetchDataAndNode(const RenderItemES20* items)
{
    const RenderItemES20& item = items[kForDataAndNode];
    detail::PrefetchHead(item.mesh->GetRawMesh()->GetRenderData());
    if (const MeshNode* node = FirstNode(item))
    {
        // Flags, draw ID and matrix stand first in it.
        detail::PrefetchLines<4>(node);
    }
    if (item.style != items[kForDataAndNode - 1].style)
    {
        detail::PrefetchLines<kMaterialLines>(item.mesh->GetMaterial());
    }
}

} // namespace

void Renderer20::RenderItemList(CameraNodeES20* cameraData, std::vector<RenderItemES20> const& items,
                                RenderPass pass)
{
    const detail::Walk walk(this, detail::Walk::Draw);
    Detail::BorrowedVector<MeshNode*> singleNode(m_singleNode);
    (*singleNode).resize(1);
    MeshStyleES20* current = nullptr;
    detail::PlainDraws plain;
    const std::size_t prefetchEnd = items.size() > kForMesh ? items.size() - kForMesh : 0;
    for (std::size_t i = 0; i < items.size(); ++i)
    {
        const RenderItemES20& item = items[i];
        if (i < prefetchEnd && !walk.HasLosses())
        {
            PrefetchAhead(&item);
        }
        if (item.style != current)
        {
            plain.Flush();
            if (current)
            {
                current->Remove();
            }
            item.style->Apply(cameraData, pass);
            current = item.style;
            plain.Begin(current, pass);
        }
        if (!item.mesh)
        {
            plain.Flush();
            if (walk.HasLosses() || !plain.DrawAll())
            {
                DrawWhole(static_cast<MaterialES20&>(*current), pass, walk, *singleNode);
            }
            continue;
        }
        if (!walk.HasLosses())
        {
            if (const std::size_t drawn = plain.Draw(&item, items.data() + items.size()))
            {
                i += drawn - 1;
                continue;
            }
            if (plain.Take(item))
            {
                continue;
            }
        }
        plain.Flush();
        DrawItem(item, pass, walk, *singleNode);
    }
    plain.Flush();
    if (current)
    {
        current->Remove();
    }
    // An effect of the host's may have left some.
    EffectES20::EndUse();
}

void Renderer20::PrefetchAhead(const RenderItemES20* items)
{
    PrefetchStyle(items);
    const RenderItemES20& forParts = items[kForItsParts];
    if (forParts.mesh)
    {
        PrefetchParts(forParts);
    }
    else
    {
        const auto& material = static_cast<const MaterialES20&>(*forParts.style);
        detail::PrefetchLines<kMaterialLines>(material.material);
        detail::PrefetchHead(material.m_list.items.data());
    }
    const RenderItemES20& forData = items[kForDataAndNode];
    if (forData.mesh)
    {
        PrefetchDataAndNode(items);
    }
    else if (const auto& list = static_cast<const MaterialES20&>(*forData.style).m_list.items; !list.empty())
    {
        detail::Prefetch(list.front());
    }
}

void Renderer20::DrawItem(const RenderItemES20& item, RenderPass pass, const detail::Walk& walk,
                          std::vector<MeshNode*>& singleNode)
{
    // A host that was called since the item was listed may have deleted what it names.
    if (walk.HasLosses() && (walk.IsGone(item.mesh) || walk.IsGone(item.node)))
    {
        return;
    }
    // Only Prepare puts a mesh on the list, and it has seen to the render data.
    auto* meshData = static_cast<MeshES20*>(item.mesh->GetRenderData());
    if (!meshData)
    {
        return;
    }
    // One node needs no list of the mesh's own.
    const PointerSpan<MeshNode> nodes = item.mesh->EachNode();
    if (item.specificNode || nodes.size() == 1)
    {
        singleNode[0] = item.specificNode ? item.node : nodes.front();
        meshData->Render(item.style->GetShader(pass), singleNode, item.specificNode);
    }
    else
    {
        meshData->Render(item.style->GetShader(pass), item.mesh->GetNodes(), false);
    }
}

void Renderer20::DrawWhole(MaterialES20& material, RenderPass pass, const detail::Walk& walk,
                           std::vector<MeshNode*>& singleNode)
{
    const std::vector<detail::PlainDraw>& list = material.m_list.items;
    // A frame within this one, of a host's effect, may list anew.
    for (std::size_t i = 0; i < list.size(); ++i)
    {
        if (i + kForDataAndNode < list.size() && !walk.HasLosses())
        {
            const detail::PlainDraw& ahead = list[i + kForDataAndNode];
            detail::PrefetchHead(ahead.mesh);
            detail::Prefetch(ahead);
        }
        DrawItem({list[i].mesh, &material, false, nullptr}, pass, walk, singleNode);
    }
}

} // namespace OV
