#include "orvane_host/present/detail/CasterList.h"

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/Batch.h"
#include "orvane_host/present/detail/ItemBox.h"
#include "orvane_host/present/detail/MaterialDataOf.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderdata/MeshStyleES20.h"
#include "orvane/renderdata/SharedBuffer.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <glm/gtc/type_ptr.hpp>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <typeinfo>

namespace OV::Host::Detail
{

namespace
{

/// How many casters ahead a mesh is asked for, and then what hangs on it.
constexpr std::size_t kForMesh = 16;
constexpr std::size_t kForItsParts = 8;
constexpr std::size_t kForData = 4;

template <class T>
void PrefetchLines(const T* object, int lines)
{
    constexpr int line = 64;
    for (int i = 0; i < lines; ++i)
    {
        __builtin_prefetch(reinterpret_cast<const char*>(object) + i * line);
    }
}

/// Asks for what casters some places ahead read: listing them is waiting for memory before all else.
void PrefetchCaster(const RenderItemES20* items)
{
    PrefetchLines(items[kForMesh].mesh, 2);
    const Mesh& mesh = *items[kForItsParts].mesh;
    PrefetchLines(mesh.GetRawMesh().get(), 3);
    PrefetchLines(items[kForData].mesh->GetRenderData(), 2);
    const PointerSpan<MeshNode> nodes = mesh.EachNode();
    if (!nodes.empty())
    {
        PrefetchLines(nodes.front(), 1);
        PrefetchLines(&nodes.front()->GetGlobal(), 3);
    }
}

bool HasMeshData(const Mesh& mesh)
{
    const Object* const data = mesh.GetRenderData();
    // The cast, which searches the classes, is for what derives.
    return data && (typeid(*data) == typeid(MeshES20) || dynamic_cast<const MeshES20*>(data));
}

bool IsFinite(const CastBox& box)
{
    const glm::dvec3 sum = box.middle + box.halves[0] + box.halves[1] + box.halves[2];
    return std::isfinite(sum.x + sum.y + sum.z);
}

/// @param print of what casters of the style have in common.
Fingerprint PrintOf(Fingerprint print, const RenderItemES20& item, const MeshNode& node, const CastBox& box)
{
    const auto* const data = static_cast<const MeshES20*>(item.mesh->GetRenderData());
    const auto pair = [](std::uint64_t first, std::uint64_t second) { return first << 32 | (second & 0xFFFFFFFFu); };
    std::array<std::uint64_t, 24> words{};
    // A mesh that was changed in place may come back at the address that it had, in a buffer with the name of the one
    // before: that has another number, and no place in it is given twice.
    words[0] = data->sharedBuffer ? data->sharedBuffer->GetNumber() : MeshES20::GetListingRevision();
    words[1] = pair(data->vertexBufferId, static_cast<std::uint32_t>(data->positionOffset));
    words[2] = Fingerprint::WordOf(data->indexOffset) << 1 | (data->clippingPlaneEnabled ? 1u : 0u);
    if (const BatchES20* const batch = BatchOf(*item.mesh))
    {
        words[0] = 0;
        words[3] = batch->GetRevision();
    }
    else if (const RawMesh* const raw = item.mesh->GetRawMesh().get())
    {
        words[3] = Fingerprint::WordOf(raw->positions.data());
        words[4] = pair(raw->positions.size(), raw->indices.size());
    }
    const auto& rows = node.GetGlobal().GetTransf3d().m;
    std::memcpy(&words[5], rows, sizeof(rows));
    std::memcpy(&words[21], glm::value_ptr(box.middle), 3 * sizeof(double));
    print.AddAll(words);
    return print;
}

} // namespace

void CasterList::List(const PresentationFrame& frame)
{
    m_casters.clear();
    m_boxes.clear();
    m_prints.clear();
    m_hasGlass = false;
    Add(frame.items.all, 0, frame.items.firstLine);
    Add(frame.items.all, frame.items.firstAlpha, frame.items.all.size());
}

void CasterList::Add(const std::vector<RenderItemES20>& items, std::size_t first, std::size_t end)
{
    Kind kind;
    for (std::size_t i = first; i < end; ++i)
    {
        const RenderItemES20& item = items[i];
        if (item.style != kind.style)
        {
            kind = KindOf(*item.style);
        }
        if (!kind.casts)
        {
            continue;
        }
        if (item.mesh)
        {
            Add(item, kind);
            continue;
        }
        m_meshes.clear();
        StageAccess::ListMeshes(item, m_meshes);
        for (std::size_t j = 0; j < m_meshes.size(); ++j)
        {
            if (j + kForMesh < m_meshes.size())
            {
                PrefetchCaster(&m_meshes[j]);
            }
            Add(m_meshes[j], kind);
        }
    }
}

CasterList::Kind CasterList::KindOf(MeshStyleES20& style)
{
    const MaterialES20* const data = MaterialDataOf(style);
    Material* const material = data ? data->GetMaterial() : nullptr;
    Kind kind;
    kind.style = &style;
    kind.casts = material && style.GetShader(RenderPassDepthId) && (material->GetFlags() & MaterialFlagPoints) == 0;
    if (kind.casts)
    {
        kind.isGlass = material->IsTransparent();
        kind.print.Add(data->GetTextureID());
        kind.print.Add(data->GetOpacityMapID());
        kind.print.Add(data->GetUScale());
        kind.print.Add(data->GetVScale());
        kind.print.Add(material->GetOpacity());
        kind.print.Add(material->hasAlpha);
    }
    return kind;
}

void CasterList::Add(const RenderItemES20& item, const Kind& kind)
{
    if (item.specificNode)
    {
        Add(item, *item.node, kind);
        return;
    }
    const PointerSpan<MeshNode> nodes = item.mesh->EachNode();
    for (MeshNode* node : nodes)
    {
        if ((node->GetFlags() & NodeFlagHasNodeMaterial) == 0)
        {
            Add(nodes.size() == 1 ? item : RenderItemES20{item.mesh, item.style, true, node}, *node, kind);
        }
    }
}

void CasterList::Add(const RenderItemES20& item, MeshNode& node, const Kind& kind)
{
    // What is out of the view casts into it all the same.
    const bool isHidden = (node.GetFlags() & NodeFlagHidden) != 0 || !node.ReadyToDraw();
    if (isHidden || !HasMeshData(*item.mesh))
    {
        return;
    }
    const CastBox box = BoxOf(*item.mesh, node);
    if (!IsFinite(box))
    {
        return;
    }
    m_casters.push_back({item, &node, kind.isGlass});
    m_boxes.push_back(box);
    // While it is at hand: a large scene is bound by memory.
    m_prints.push_back(DrawnCasters::PrintOf(PrintOf(kind.print, item, node, box), kind.isGlass));
    m_hasGlass = m_hasGlass || kind.isGlass;
}

} // namespace OV::Host::Detail
