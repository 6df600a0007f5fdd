// What a frame lists.

#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/Batches.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

bool StandsFor(const std::vector<Material*>& materials, const Material* material)
{
    return std::find(materials.begin(), materials.end(), material) != materials.end();
}

TextureFactors FactorsOf(const MeshStyleES20* style)
{
    TextureFactors factors;
    if (const auto* const data = dynamic_cast<const MaterialES20*>(style))
    {
        factors.u = 1.0f / data->materialUScale;
        factors.v = 1.0f / data->materialVScale;
    }
    return factors;
}

} // namespace

Batches::Group* Batches::ListedGroup(bool areOpaque, std::size_t place, const Material* material)
{
    std::vector<std::pair<const Material*, Group*>>& known = m_listed[areOpaque ? 0 : 1];
    if (known.size() <= place)
    {
        known.resize(m_materials.size());
    }
    auto& [listed, group] = known[place];
    if (listed != material)
    {
        const auto found = m_groups.find(material);
        listed = material;
        group = found != m_groups.end() ? found->second.get() : nullptr;
    }
    return group && group->material ? group : nullptr;
}

/// Asks the processor for what is compared of materials to come, which lie scattered where there are many.
void Batches::FetchAhead(bool areOpaque, std::size_t material) const
{
    constexpr std::size_t fields = 8;
    constexpr std::size_t behindThem = 4;
    const std::size_t left = m_materials.size() - material;
    if (left > fields)
    {
        const Material& later = *m_materials[material + fields];
        __builtin_prefetch(&later);
        __builtin_prefetch(&later.GetDiffuse());
        __builtin_prefetch(&later.stippling);
        __builtin_prefetch(&later.textureName);
        __builtin_prefetch(&later.pixels);
        __builtin_prefetch(&later.opacityMapName);
    }
    const std::vector<std::pair<const Material*, Group*>>& known = m_listed[areOpaque ? 0 : 1];
    if (left > behindThem && material + behindThem < known.size())
    {
        const auto* const data = reinterpret_cast<const char*>(m_materials[material + behindThem]->GetRenderData());
        const auto* const group = reinterpret_cast<const char*>(known[material + behindThem].second);
        for (std::size_t line = 0; line < 3; ++line)
        {
            __builtin_prefetch(data + 64 * line);
            __builtin_prefetch(group + 64 * line);
        }
    }
}

template <class Lister>
void Batches::ForEachMaterial(PresentationFrame& frame, bool areOpaque, Lister list)
{
    const std::vector<Material*>& materials =
        areOpaque ? frame.scene.GetOptimizedMaterials() : frame.scene.GetAlphaMaterials();
    m_materials.assign(materials.begin(), materials.end());
    for (std::size_t i = 0; i < m_materials.size(); ++i)
    {
        // A host that is called meanwhile may have taken it away.
        const bool hasLosses = frame.renderer.HasLosses();
        if (!hasLosses)
        {
            FetchAhead(areOpaque, i);
        }
        if (!hasLosses || StandsFor(materials, m_materials[i]))
        {
            list(*m_materials[i], ListedGroup(areOpaque, i, m_materials[i]));
        }
    }
}

void Batches::List(PresentationFrame& frame, float leastShare, bool isAllNeeded, std::vector<RenderItemES20>& all,
                   std::vector<RenderItemES20>& seen)
{
    ListGroups(frame, true, leastShare, isAllNeeded, all, seen);
}

void Batches::ListAlpha(PresentationFrame& frame, float leastShare, bool isAllNeeded, std::vector<RenderItemES20>& all,
                        std::vector<RenderItemES20>& seen)
{
    ListGroups(frame, false, leastShare, isAllNeeded, all, seen);
}

void Batches::ListGroups(PresentationFrame& frame, bool areOpaque, float leastShare, bool isAllNeeded,
                         std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen)
{
    const ViewVolume view(frame.cameraData.GetMVP());
    Look(view, frame.cameraData.GetMVP(), leastShare);
    if (areOpaque)
    {
        BeginAlikes(view, leastShare, isAllNeeded);
    }
    Index order = 0;
    ForEachMaterial(frame, areOpaque, [&](Material& material, Group* group) {
        if (group && areOpaque)
        {
            group->order = order++;
            // What has become another is drawn by itself at once.
            if (group->alikes && group->alikes->isTogether
                && (group->alikes->isLooked ? StaysAlike(*group) : !isAllNeeded && !IsPoints(*group))
                && HasNoneApart(*group))
            {
                return;
            }
        }
        if (group && !isAllNeeded && IsOutside(*group, view, leastShare))
        {
            // Whether its meshes may be drawn together is asked when one is seen.
            return;
        }
        if (group)
        {
            SetTogether(*group, areOpaque);
            ListGroup(frame, *group, view, leastShare, all, seen);
            return;
        }
        const std::size_t before = all.size();
        frame.renderer.List(material, frame.cameraData, all, true);
        seen.insert(seen.end(), all.begin() + static_cast<std::ptrdiff_t>(before), all.end());
    });
    if (areOpaque)
    {
        ListAlikes(frame, view, leastShare, all, seen);
    }
}

void Batches::ListSingly(PresentationFrame& frame, const ViewVolume& view, std::vector<RenderItemES20>& items)
{
    m_found.clear();
    m_tree.Collect(view, [&](Index index) { m_found.push_back(index); });
    const auto collect = [&](const std::vector<Batch>& batches) {
        for (const Batch& batch : batches)
        {
            if (view.Sees(batch.data->GetBox()))
            {
                batch.data->Collect(view, [&](Index index) { m_found.push_back(index); });
            }
        }
    };
    for (const auto& [look, alikes] : m_alikes)
    {
        (void)look;
        collect(alikes->batches);
    }
    for (const auto& [material, group] : m_groups)
    {
        (void)material;
        collect(group->batches);
        // Points reach beyond the box of their places.
        const bool isPoints = group->material && (group->material->GetFlags() & MaterialFlagPoints) != 0;
        for (const Index index : group->singles)
        {
            Member& member = m_members[index];
            if (member.isSingle && member.group == group.get()
                && (isPoints || (StandsAlone(member) && Sees(view, 0.0f, member))))
            {
                m_found.push_back(index);
            }
        }
        // What came since the last frame.
        for (const auto& [kind, members] : group->rested)
        {
            (void)kind;
            std::copy_if(members.begin(), members.end(), std::back_inserter(m_found), [&](Index index) {
                const Member& member = m_members[index];
                return !member.isSingle && !member.batch && !member.isGone && member.group == group.get();
            });
        }
    }
    const auto comesFirst = [this](Index left, Index right) {
        const Member& a = m_members[left];
        const Member& b = m_members[right];
        const std::uint64_t first = a.mesh->GetSortID();
        const std::uint64_t second = b.mesh->GetSortID();
        return a.group != b.group ? a.group < b.group : first != second ? first < second : left < right;
    };
    std::sort(m_found.begin(), m_found.end(), comesFirst);
    m_found.erase(std::unique(m_found.begin(), m_found.end()), m_found.end());
    const auto listFound = [&](Material& material, Group* group) {
        if (!group)
        {
            frame.renderer.List(material, frame.cameraData, items, true);
            return;
        }
        const auto isBefore = [this](Index index, const Group* wanted) { return m_members[index].group < wanted; };
        auto found = std::lower_bound(m_found.begin(), m_found.end(), static_cast<const Group*>(group), isBefore);
        if (found == m_found.end() || m_members[*found].group != group)
        {
            return;
        }
        MeshStyleES20* const style = Probe(frame, *group);
        for (; style && found != m_found.end() && m_members[*found].group == group; ++found)
        {
            const Member& member = m_members[*found];
            if (!member.isGone && IsShown(member) && HasData(frame.renderer, member) && member.mesh->ReadyToDraw())
            {
                items.push_back({member.mesh, style, true, member.node});
            }
        }
    };
    ForEachMaterial(frame, true, listFound);
    ForEachMaterial(frame, false, listFound);
}

MeshStyleES20* Batches::Probe(PresentationFrame& frame, Group& group)
{
    // Asking takes as long as all else that is done about a material that is drawn as it was.
    if (group.probed && group.probedUnder == Material::GetListingRevision())
    {
        return group.probed;
    }
    group.probed = nullptr;
    if (!group.probe->GetRenderData())
    {
        group.probe->SetRenderData(new MeshES20(group.probe.get(), &frame.renderer.GetBufferPool()), false);
    }
    const bool usesDrawID = group.material->UsingDrawID();
    m_probed.clear();
    frame.renderer.List(*group.probe, *m_standIns[0][0], frame.cameraData, m_probed);
    if (!group.material || m_probed.empty())
    {
        return nullptr;
    }
    if (usesDrawID)
    {
        // Being asked has used it up.
        group.material->SetDrawID(frame.scene.GetUpdateID());
    }
    else if (IsPlainMaterial(*group.material))
    {
        // One of a host's own class may change without a word.
        group.probed = m_probed.front().style;
        group.probedUnder = Material::GetListingRevision();
    }
    return m_probed.front().style;
}

bool Batches::HasData(StageAccess& renderer, const Member& member)
{
    if (member.hasMark)
    {
        Object* const present = member.mesh->GetRenderData();
        auto* const drawn = dynamic_cast<MeshES20*>(present);
        if (!drawn || !drawn->pool)
        {
            BatchMark& mark = *BatchMark::Of(present, *m_link);
            member.mesh->SetRenderData(new DrawnMark(member.mesh, &renderer.GetBufferPool(), *m_link, mark), true);
        }
    }
    else if (!member.mesh->GetRenderData())
    {
        member.mesh->SetRenderData(new MeshES20(member.mesh, &renderer.GetBufferPool()), true);
    }
    auto* const data = dynamic_cast<MeshES20*>(member.mesh->GetRenderData());
    if (data)
    {
        data->EnableClippingPlane(true);
    }
    return data != nullptr;
}

void Batches::MakeItems(StageAccess& renderer, Group& group, MeshStyleES20& style)
{
    if (group.hasLeft)
    {
        const auto isGone = [&](Index index) {
            const Member& member = m_members[index];
            return member.isGone || !member.isSingle || member.group != &group;
        };
        group.singles.erase(std::remove_if(group.singles.begin(), group.singles.end(), isGone), group.singles.end());
        group.hasLeft = false;
    }
    const auto comesFirst = [this](Index left, Index right) {
        const std::uint64_t first = m_members[left].mesh->GetSortID();
        const std::uint64_t second = m_members[right].mesh->GetSortID();
        return first != second ? first < second : left < right;
    };
    std::sort(group.singles.begin(), group.singles.end(), comesFirst);
    group.singles.erase(std::unique(group.singles.begin(), group.singles.end()), group.singles.end());
    group.items.clear();
    group.spans.clear();
    group.itemsHold = true;
    for (std::size_t i = 0; i < group.singles.size();)
    {
        Mesh* const mesh = m_members[group.singles[i]].mesh;
        std::size_t end = i;
        while (end < group.singles.size() && m_members[group.singles[end]].mesh == mesh)
        {
            ++end;
        }
        // Whether one with a draw ID is drawn is decided anew in every frame.
        group.itemsHold = group.itemsHold && !mesh->UsingDrawID();
        const bool isDrawn = mesh->ReadyToDraw() && HasData(renderer, m_members[group.singles[i]]);
        if (isDrawn && end - i == mesh->EachNode().size())
        {
            group.items.push_back({mesh, &style, false, nullptr});
            group.spans.emplace_back(static_cast<Index>(i), static_cast<Index>(end));
        }
        else if (isDrawn)
        {
            for (std::size_t at = i; at < end; ++at)
            {
                if (IsShown(m_members[group.singles[at]]))
                {
                    group.items.push_back({mesh, &style, true, m_members[group.singles[at]].node});
                    group.spans.emplace_back(static_cast<Index>(at), static_cast<Index>(at + 1));
                }
            }
        }
        i = end;
    }
    const auto isAtOne = [](const RenderItemES20& item) { return item.specificNode; };
    group.isWhole = group.itemsHold && group.items.size() == group.material->EachMesh().size() &&
        std::none_of(group.items.begin(), group.items.end(), isAtOne);
    group.lookDue.assign(group.items.size(), 0);
    group.listing = MeshES20::GetListingRevision();
}

bool Batches::IsPoints(const Group& group)
{
    return (group.material->GetFlags() & MaterialFlagPoints) != 0;
}

bool Batches::IsOutside(const Group& group, const ViewVolume& view, float leastShare) const
{
    // A point may reach beyond its place, and what is no longer used has to be given back.
    const auto isSeenOrUnused = [&](const Batch& batch) {
        return batch.data->GetVertexCount() == 0
            || (batch.data->GetOnCount() > 0 && batch.data->See(view, leastShare, m_look));
    };
    return !group.isRestedDue && !IsPoints(group) && AreSinglesOutside(group)
        && std::none_of(group.batches.begin(), group.batches.end(), isSeenOrUnused);
}

bool Batches::AreSinglesOutside(const Group& group) const
{
    if (group.singleCount == 0)
    {
        return true;
    }
    // Whether something with a draw ID is drawn is to be asked in every frame.
    return group.itemsHold && group.listing == MeshES20::GetListingRevision() && group.treeCount == group.singleCount
        && group.seenLook != m_treeLook;
}

void Batches::ListGroup(PresentationFrame& frame, Group& group, const ViewVolume& view, float leastShare,
                        std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen)
{
    if (group.alikes && HasNoneApart(group))
    {
        return;
    }
    MeshStyleES20* const style = Probe(frame, group);
    if (!style)
    {
        return;
    }
    const bool isOtherStyle = group.style != style;
    group.style = style;
    if (isOtherStyle || group.isRestedDue)
    {
        group.factors = FactorsOf(style);
    }
    if (group.isRestedDue && !group.isTogether)
    {
        group.isRestedDue = false;
        for (auto& [kind, members] : group.rested)
        {
            (void)kind;
            KeepSingle(group, members);
            for (const Index index : members)
            {
                m_members[index].isRested = m_members[index].isRested && m_members[index].group != &group;
            }
        }
        group.rested.clear();
    }
    else if (group.isRestedDue)
    {
        JoinAlikes(group);
        Build(frame.renderer, group);
    }
    ListBatches(group.batches, *style, view, leastShare, all, seen);
    if (group.singles.empty())
    {
        return;
    }
    if (!group.itemsHold || isOtherStyle || group.listing != MeshES20::GetListingRevision())
    {
        MakeItems(frame.renderer, group, *style);
    }
    if (!ListAsWhole(frame, group, view, leastShare, all, seen))
    {
        all.insert(all.end(), group.items.begin(), group.items.end());
        ListSeen(group, view, leastShare, seen);
    }
}

void Batches::DropUnused(std::vector<Batch>& batches)
{
    const auto isUsed = [](const Batch& batch) { return batch.data->GetVertexCount() > 0; };
    const auto unused = std::partition(batches.begin(), batches.end(), isUsed);
    for (auto batch = unused; batch != batches.end(); ++batch)
    {
        GiveBack(std::move(batch->mesh));
    }
    batches.erase(unused, batches.end());
}

void Batches::ListBatches(std::vector<Batch>& batches, MeshStyleES20& style, const ViewVolume& view,
                          float leastShare, std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen)
{
    DropUnused(batches);
    for (const Batch& batch : batches)
    {
        const auto& standIns = m_standIns[batch.data->GetKind().isMirrored ? 1 : 0];
        if (batch.data->GetOnCount() == 0)
        {
            continue;
        }
        all.push_back({batch.mesh.get(), &style, true, standIns[0].get()});
        if (batch.data->See(view, leastShare, m_look))
        {
            seen.push_back({batch.mesh.get(), &style, true, standIns[1].get()});
        }
    }
}

/// Lists one item for all of a material that is drawn mesh by mesh, as where all of it moves.
/// @return false, with nothing done, where one can't stand for them.
bool Batches::ListAsWhole(PresentationFrame& frame, Group& group, const ViewVolume& view, float leastShare,
                          std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen)
{
    // What gets too small has to leave the picture at once, and would be looked at twice.
    if (!group.isWhole || leastShare > 0.0f)
    {
        return false;
    }
    for (std::size_t i = 0; i < group.items.size(); ++i)
    {
        if (group.lookDue[i] <= m_frame && !IsItemSeen(group, i, view, leastShare))
        {
            return false;
        }
    }
    const std::size_t before = all.size();
    frame.renderer.ListWhole(*group.material, frame.cameraData, all, true);
    const bool isOne = all.size() == before + 1 && !all.back().mesh;
    if (isOne)
    {
        seen.push_back(all.back());
    }
    else
    {
        all.resize(before);
    }
    return isOne;
}

} // namespace OV::Host::Detail
