// What a frame lists of a scene to be drawn.

#include "orvane/renderer/Renderer20.h"

#include "orvane/base/detail/Prefetch.h"
#include "orvane/base/detail/Walk.h"
#include "orvane/renderdata/LineStyleES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderer/detail/BorrowedVector.h"
#include "orvane/renderer/detail/DataOf.h"
#include "orvane/scene/AlphaMeshNode.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <typeinfo>
#include <utility>
#include <vector>

namespace OV
{

namespace
{

/// How far into a style's render data listing reads.
constexpr std::size_t kListLines = 3;

/// Does something with all that stood in a list of a scene when this began, as far as no host
/// that is called meanwhile deletes it.
/// @param first place in the list to begin with.
/// @param function given an entry and its place in the list.
template <class Entry, class Function>
void ForEachLiving(const std::vector<Entry*>& list, std::vector<Entry*>& scratch, std::size_t first,
                   Function function)
{
    constexpr std::size_t forEntry = 8;
    constexpr std::size_t forData = 4;
    const detail::Walk walk(nullptr, detail::Walk::Draw);
    Detail::BorrowedVector<Entry*> present(scratch);
    (*present).assign(list.begin(), list.end());
    const std::size_t count = (*present).size();
    for (std::size_t i = first; i < count; ++i)
    {
        if (!walk.HasLosses() && i + forEntry < count)
        {
            detail::PrefetchHead((*present)[i + forEntry]);
            detail::PrefetchLines<kListLines>((*present)[i + forData]->GetRenderData());
        }
        Entry* const entry = (*present)[i];
        if (!walk.IsGone(entry))
        {
            function(entry, i);
        }
    }
}

} // namespace

template <class Prepare>
void Renderer20::PrepareBy(Material* material, Prepare prepare)
{
    if (!material || !material->ReadyToDraw())
    {
        return;
    }
    const detail::Walk walk(material, detail::Walk::Other);
    if (MaterialES20* materialData = MaterialDataOf(*material))
    {
        prepare(*materialData);
    }
}

void Renderer20::PrepareWholeMaterial(Material* material, CameraNodeES20* cameraData,
                                      std::vector<RenderItemES20>& items, bool clippingPlane)
{
    PrepareBy(material, [&](MaterialES20& data) { data.PrepareWhole(cameraData, items, clippingPlane); });
}

Renderer20::WholeList::Revision Renderer20::WholeList::CurrentRevision()
{
    return {Material::GetListingRevision(), MeshES20::GetListingRevision()};
}

Renderer20::WholeList& Renderer20::WholeListOf(const std::vector<Material*>& materials, bool clippingPlane)
{
    const auto isAsked = [&](const WholeList& kept)
    { return kept.list == &materials && kept.isClipped == clippingPlane; };
    const auto found = std::find_if(std::begin(m_wholeLists), std::end(m_wholeLists), isAsked);
    if (found != std::end(m_wholeLists))
    {
        return *found;
    }
    // The one that was asked for longer ago, as a rule: frames ask for theirs in turns.
    m_nextWholeList = (m_nextWholeList + 1) % std::size(m_wholeLists);
    m_wholeLists[m_nextWholeList].revision = WholeList::Revision();
    return m_wholeLists[m_nextWholeList];
}

void Renderer20::PrepareWholeMaterials(const std::vector<Material*>& materials, CameraNodeES20* cameraData,
                                       std::vector<RenderItemES20>& items, bool clippingPlane)
{
    WholeList& kept = WholeListOf(materials, clippingPlane);
    const WholeList::Revision revision = WholeList::CurrentRevision();
    const bool holds = kept.revision == revision;
    // Out of the way of another frame, which a host that is called may draw.
    std::vector<WholeMaterial> wholes = std::exchange(kept.materials, {});
    wholes.resize(materials.size());
    const auto isKept = [&](const Material* material, std::size_t place)
    { return holds && wholes[place].data && wholes[place].material == material; };
    // Written in place: copied right after it was made, the processor would wait for it.
    const auto listKept = [&](std::size_t place) { items.emplace_back().style = wholes[place].data; };
    // A large scene is bound by memory: where nothing has changed, no material is looked at.
    std::size_t first = 0;
    for (; first < wholes.size() && isKept(materials[first], first); ++first)
    {
        listKept(first);
    }
    const auto prepare = [&](Material* material, std::size_t place)
    {
        if (isKept(material, place) && WholeList::CurrentRevision() == revision)
        {
            listKept(place);
            return;
        }
        const std::size_t before = items.size();
        // A class of the host's may change its mind without a word.
        const bool isAlwaysReady = material && typeid(*material) == typeid(Material) && !material->UsingDrawID();
        PrepareWholeMaterial(material, cameraData, items, clippingPlane);
        const bool isWhole = items.size() == before + 1 && !items.back().mesh;
        wholes[place] = {material, isAlwaysReady && isWhole ? static_cast<MaterialES20*>(items.back().style) : nullptr};
    };
    if (first < wholes.size())
    {
        ForEachLiving(materials, m_materials, first, prepare);
    }
    // What has changed meanwhile may have been listed as it was before.
    const bool isSame = WholeList::CurrentRevision() == revision;
    kept = {&materials, clippingPlane, isSame ? revision : WholeList::Revision(), std::move(wholes)};
}

void Renderer20::ListMeshes(const RenderItemES20& whole, std::vector<RenderItemES20>& items)
{
    static_cast<MaterialES20*>(whole.style)->ListMeshes(items);
}

void Renderer20::PrepareOptimizedMaterial(Material* material, CameraNodeES20* cameraData,
                                          std::vector<RenderItemES20>& items, bool clippingPlane)
{
    PrepareBy(material, [&](MaterialES20& data) { data.Prepare(cameraData, items, clippingPlane); });
}

void Renderer20::PrepareLineStyle(LineStyle* lineStyle, CameraNodeES20* cameraData,
                                  std::vector<RenderItemES20>& items, bool clippingPlane)
{
    if (!lineStyle)
    {
        return;
    }
    auto* data = detail::DataOf<LineStyleES20>(lineStyle->GetRenderData());
    // What another renderer made and left behind can't draw any more.
    const bool orphaned = data && !data->IsConnected();
    if (!lineStyle->GetRenderData() || orphaned)
    {
        data = new LineStyleES20(lineStyle, &bufferPool, &effectCache, extension.get());
        lineStyle->SetRenderData(data);
    }
    if (data)
    {
        data->Prepare(cameraData, items, clippingPlane);
    }
}

void Renderer20::PrepareOptimizedMaterials(const std::vector<Material*>& materials, CameraNodeES20* cameraData,
                                           std::vector<RenderItemES20>& items, bool clippingPlane)
{
    ForEachLiving(materials, m_materials, 0, [&](Material* material, std::size_t)
                  { PrepareOptimizedMaterial(material, cameraData, items, clippingPlane); });
}

void Renderer20::PrepareLineStyles(const std::vector<LineStyle*>& lineStyles, CameraNodeES20* cameraData,
                                   std::vector<RenderItemES20>& items, bool clippingPlane)
{
    ForEachLiving(lineStyles, m_lineStyles, 0, [&](LineStyle* lineStyle, std::size_t)
                  { PrepareLineStyle(lineStyle, cameraData, items, clippingPlane); });
}

bool Renderer20::HasLosses() const
{
    return detail::Walk::HaveLosses();
}

bool Renderer20::IsGone(const RenderItemES20& item) const
{
    const detail::Walk walk(this, detail::Walk::Draw);
    return walk.IsGone(item.mesh) || walk.IsGone(item.node);
}

void Renderer20::PrepareZOrderedMeshNode(AlphaMeshNode* alphaNode, CameraNodeES20* cameraData,
                                         std::vector<RenderItemES20>& items)
{
    Material* material = alphaNode->mesh->GetMaterial();
    if (!material || !material->ReadyToDraw())
    {
        return;
    }
    const detail::Walk walk(material, detail::Walk::Other);
    MaterialES20* const materialData = MaterialDataOf(*material);
    // Making it may have called a host that deletes what is to be listed.
    if (materialData && !walk.IsGone(alphaNode->mesh) && !walk.IsGone(alphaNode->node))
    {
        materialData->PrepareSpecificNode(cameraData, alphaNode->mesh, alphaNode->node, items, false);
    }
}

MaterialES20* Renderer20::MaterialDataOf(Material& material)
{
    auto* data = detail::DataOf<MaterialES20>(material.GetRenderData());
    // What another renderer made and left behind can't draw any more.
    const bool orphaned = data && !data->IsConnected();
    if (!material.GetRenderData() || orphaned)
    {
        auto made = std::make_unique<MaterialES20>(&material, textureLoader, &bufferPool, &effectCache);
        if (!made->GetMaterial())
        {
            // The texture loader's host has deleted the material.
            return nullptr;
        }
        data = made.release();
        material.SetRenderData(data);
    }
    return data;
}

} // namespace OV
