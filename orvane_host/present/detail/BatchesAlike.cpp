// Materials that differ in their colours alone: what stands still of them shares batches.

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/BatchOrder.h"
#include "orvane_host/present/detail/Batches.h"
#include "orvane/math/Sphere.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <optional>
#include <typeinfo>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

/// Whether a material is drawn as its fields say, as far as is known yet.
bool IsDrawnAsItSays(const Material& material)
{
    const Object* const data = material.GetRenderData();
    return !data || (typeid(*data) == typeid(MaterialES20) && AreOwnData(static_cast<const MaterialES20&>(*data)));
}

} // namespace

template <class Visit>
void Batches::ForEachMember(const Group& group, Visit visit)
{
    for (const Mesh* mesh : group.material->EachMesh())
    {
        for (const MeshNode* node : mesh->EachNode())
        {
            for (Index i = FirstOf(*node); i != kNone; i = m_members[i].nextOfNode)
            {
                const Member& member = m_members[i];
                if (member.mesh == mesh && member.group == &group && !member.isGone)
                {
                    visit(i);
                }
            }
        }
    }
}

/// Puts together those near each other, so many each time.
void Batches::SortByPlace(std::vector<Group*>& groups, std::size_t count)
{
    std::vector<BatchPlace> places;
    places.reserve(groups.size());
    for (std::size_t i = 0; i < groups.size(); ++i)
    {
        BatchPlace place{Vector(), 0, static_cast<Index>(i), 1};
        const Material* const material = groups[i]->material.Get();
        const Mesh* const mesh = material && !material->EachMesh().empty() ? *material->EachMesh().begin() : nullptr;
        if (mesh && !mesh->EachNode().empty())
        {
            place.middle.Multiply((*mesh->EachNode().begin())->GetGlobal(), mesh->GetSphere().center);
        }
        places.push_back(place);
    }
    CutByPlace(places, count, PartSize::Full);
    std::vector<Group*> sorted;
    sorted.reserve(groups.size());
    std::transform(places.begin(), places.end(), std::back_inserter(sorted),
                   [&](const BatchPlace& place) { return groups[place.index]; });
    groups.swap(sorted);
}

void Batches::JoinNew()
{
    if (m_newGroups.size() > BatchColors::Most())
    {
        // Those near each other share batches, so that a view of a part sees few of these.
        SortByPlace(m_newGroups, BatchColors::Most());
    }
    for (Group* group : m_newGroups)
    {
        JoinAlikes(*group);
    }
    m_newGroups.clear();
}

/// Those of a look that have room for one more material.
Batches::LookAlikes& Batches::AlikesOf(const MaterialLook& look)
{
    const auto [first, last] = m_alikes.equal_range(look);
    // In the last there is room, if in any but by chance.
    const auto found = std::find_if(std::make_reverse_iterator(last), std::make_reverse_iterator(first),
                                    [](const auto& entry) { return entry.second->colors.HasRoom(); });
    if (found.base() != first)
    {
        return *found->second;
    }
    LookAlikes& made = *m_alikes.emplace_hint(last, look, std::make_unique<LookAlikes>())->second;
    made.look = look;
    return made;
}

/// Counts a group among its look-alikes, and sees whether one that is still is.
void Batches::JoinAlikes(Group& group)
{
    if (!group.material)
    {
        return;
    }
    const Material& material = *group.material;
    if (group.alikes)
    {
        // Of those that nobody sees nothing was compared.
        StaysAlike(group);
        return;
    }
    const std::optional<MaterialLook> look = MaterialLook::Of(material);
    if (!look || !IsDrawnAsItSays(material))
    {
        return;
    }
    LookAlikes& alikes = AlikesOf(*look);
    group.colors = MaterialColors::Of(material);
    group.alikes = &alikes;
    group.alikesNumber = alikes.colors.Take(group.colors);
    group.alikesListing = m_listing;
    group.alikesPlace = static_cast<std::uint32_t>(alikes.groups.size());
    alikes.groups.push_back(&group);
    ++alikes.found;
}

void Batches::ForgetAlikes(Group& group)
{
    m_newGroups.erase(std::remove(m_newGroups.begin(), m_newGroups.end(), &group), m_newGroups.end());
    if (!group.alikes)
    {
        return;
    }
    std::vector<Group*>& groups = group.alikes->groups;
    groups[group.alikesPlace] = groups.back();
    groups[group.alikesPlace]->alikesPlace = group.alikesPlace;
    groups.pop_back();
    group.alikes->colors.GiveBack(group.alikesNumber);
    group.alikes = nullptr;
}

/// Lets all of a group be drawn by itself, until it comes back when it has rested, to whichever batches it then
/// belongs to.
void Batches::LeaveAlikes(Group& group)
{
    const bool isTogether = group.alikes->isTogether;
    ForgetAlikes(group);
    if (!isTogether)
    {
        return;
    }
    ForEachMember(group, [this](Index index) {
        Member& member = m_members[index];
        LeaveBatch(member);
        member.isRested = false;
        PutApart(index);
        if (CanBeTogether(member) && IsShown(member))
        {
            Rest(index, kRest);
        }
    });
}

/// Sees whether a group is still like the others, in other colours or the same. One that isn't leaves.
bool Batches::StaysAlike(Group& group)
{
    const Material& material = *group.material;
    if (!group.alikes->look.IsOf(material) || !IsDrawnAsItSays(material))
    {
        LeaveAlikes(group);
        return false;
    }
    if (!group.colors.AreOf(material))
    {
        group.colors = MaterialColors::Of(material);
        group.alikes->colors.Set(group.alikesNumber, group.colors);
    }
    group.alikes->found += IsMissing(group) ? 1 : 0;
    group.alikesListing = m_listing;
    return true;
}

/// Where all have changed in the same way, as by a setting, none of them leaves.
void Batches::FollowLook(LookAlikes& alikes)
{
    if (alikes.groups.size() < 2 || !alikes.groups[0]->material || !alikes.groups[1]->material)
    {
        return;
    }
    const Material& first = *alikes.groups[0]->material;
    const Material& second = *alikes.groups[1]->material;
    if (alikes.look.IsOf(first) || alikes.look.IsOf(second))
    {
        return;
    }
    const std::optional<MaterialLook> look = MaterialLook::Of(first);
    if (look && look->IsOf(second))
    {
        const auto [begin, end] = m_alikes.equal_range(alikes.look);
        auto node = m_alikes.extract(std::find_if(begin, end, [&](const auto& entry)
                                                  { return entry.second.get() == &alikes; }));
        node.key() = *look;
        alikes.look = *look;
        m_alikes.insert(std::move(node));
    }
}

/// From now on the groups share batches.
void Batches::StartTogether(LookAlikes& alikes)
{
    alikes.isTogether = true;
    for (Group* group : alikes.groups)
    {
        group->isRestedDue = group->isRestedDue || !group->rested.empty();
        if (!group->batches.empty())
        {
            DissolveBatches(*group);
            RestSingles(*group);
        }
    }
}

void Batches::BeginAlikes(const ViewVolume& view, float leastShare, bool isAllNeeded)
{
    ++m_listing;
    JoinNew();
    const auto isSeenOrUnused = [&](const Batch& batch) {
        return batch.data->GetVertexCount() == 0
            || (batch.data->GetOnCount() > 0 && batch.data->See(view, leastShare, m_look));
    };
    for (auto entry = m_alikes.begin(); entry != m_alikes.end();)
    {
        LookAlikes& alikes = *entry->second;
        ++entry;
        if (!alikes.isTogether && alikes.groups.size() >= kFewestAlikes)
        {
            StartTogether(alikes);
        }
        alikes.found = 0;
        alikes.isLooked = alikes.isTogether
            && (isAllNeeded || std::any_of(alikes.batches.begin(), alikes.batches.end(), isSeenOrUnused));
        if (alikes.isLooked)
        {
            FollowLook(alikes);
        }
    }
    // Those that came just now are counted when they are compared, as all others are.
    ++m_listing;
}

void Batches::DropMissing(LookAlikes& alikes)
{
    // The last takes the place of one that leaves.
    for (std::size_t i = alikes.groups.size(); i > 0; --i)
    {
        Group& group = *alikes.groups[i - 1];
        if (!IsMissing(group))
        {
            continue;
        }
        if (group.material)
        {
            LeaveAlikes(group);
        }
        else
        {
            ForgetAlikes(group);
        }
    }
}

std::pair<Batches::Group*, MeshStyleES20*> Batches::FirstDrawn(PresentationFrame& frame, const LookAlikes& alikes)
{
    for (Group* group : alikes.groups)
    {
        // Without a mesh a material isn't drawn with.
        if (IsMissing(*group) || !group->material || group->material->EachMesh().empty())
        {
            continue;
        }
        if (MeshStyleES20* const style = Probe(frame, *group))
        {
            return {group, style};
        }
    }
    return {nullptr, nullptr};
}

void Batches::BuildAlikes(StageAccess& renderer, LookAlikes& alikes, Material& drawnWith)
{
    alikes.isRestedDue = false;
    for (auto& [kind, members] : alikes.rested)
    {
        BuildAlikes(renderer, alikes, drawnWith, kind, members);
    }
    alikes.rested.clear();
}

void Batches::BuildAlikes(StageAccess& renderer, LookAlikes& alikes, Material& drawnWith, const BatchKind& kind,
                          std::vector<Index>& members)
{
    const auto isOthers = [&](Index index) {
        const Member& member = m_members[index];
        return member.isGone || !member.isRested || member.batch || !member.group || member.group->alikes != &alikes;
    };
    members.erase(std::remove_if(members.begin(), members.end(), isOthers), members.end());
    std::sort(members.begin(), members.end());
    members.erase(std::unique(members.begin(), members.end()), members.end());
    if (!members.empty())
    {
        // Without textures the factors are of no meaning.
        PutTogether(renderer, {alikes.batches, drawnWith, TextureFactors(), &alikes}, kind, members);
    }
}

void Batches::ListLate(PresentationFrame& frame, std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen)
{
    for (const Index index : m_late)
    {
        const Member& member = m_members[index];
        MeshStyleES20* const style = Probe(frame, *member.group);
        if (style && member.isSingle && IsShown(member) && member.mesh->ReadyToDraw() && HasData(frame.renderer, member))
        {
            all.push_back({member.mesh, style, true, member.node});
            seen.push_back(all.back());
        }
    }
    m_late.clear();
}

void Batches::ListAlikes(PresentationFrame& frame, const ViewVolume& view, float leastShare,
                         std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen)
{
    for (auto entry = m_alikes.begin(); entry != m_alikes.end();)
    {
        LookAlikes& alikes = *entry->second;
        ListAlikes(frame, alikes, view, leastShare, all, seen);
        entry = alikes.groups.empty() && alikes.batches.empty() ? m_alikes.erase(entry) : std::next(entry);
    }
}

void Batches::ListAlikes(PresentationFrame& frame, LookAlikes& alikes, const ViewVolume& view, float leastShare,
                         std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen)
{
    if (alikes.isLooked && alikes.found != alikes.groups.size())
    {
        DropMissing(alikes);
    }
    if (!alikes.isRestedDue && !(alikes.isLooked && !alikes.batches.empty()))
    {
        return;
    }
    const auto [group, style] = FirstDrawn(frame, alikes);
    if (!group)
    {
        // None of them is left, or none can be drawn.
        DropUnused(alikes.batches);
        return;
    }
    if (alikes.isRestedDue)
    {
        m_isLate = true;
        BuildAlikes(frame.renderer, alikes, *group->material);
        m_isLate = false;
        ListLate(frame, all, seen);
    }
    for (const Batch& batch : alikes.batches)
    {
        batch.mesh->Become(group->material.Get(), batch.data->GetKind().meshFlags);
    }
    ListBatches(alikes.batches, *style, view, leastShare, all, seen);
}

} // namespace OV::Host::Detail
