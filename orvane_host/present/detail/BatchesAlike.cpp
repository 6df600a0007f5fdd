// Small materials that differ in their colours alone: what stands still of them shares batches.

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/Batches.h"
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

/// Of a material's meshes at their nodes. Counting ends beyond a number.
std::size_t CountVertices(const Material& material, std::size_t most)
{
    std::size_t count = 0;
    for (const Mesh* mesh : material.EachMesh())
    {
        count += mesh->GetPositionBuffer().size() * mesh->EachNode().size();
        if (count > most)
        {
            break;
        }
    }
    return count;
}

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

void Batches::JoinNew()
{
    for (Group* group : m_newGroups)
    {
        JoinAlikes(*group);
    }
    m_newGroups.clear();
}

/// Counts a group among its look-alikes, if it is small, and sees whether one that is still is.
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
        if (StaysAlike(group) && CountVertices(material, 2 * kMostAlikeVertices) > 2 * kMostAlikeVertices)
        {
            LeaveAlikes(group);
        }
        return;
    }
    const std::optional<MaterialLook> look = MaterialLook::Of(material);
    if (!look || !IsDrawnAsItSays(material) || CountVertices(material, kMostAlikeVertices) > kMostAlikeVertices)
    {
        return;
    }
    std::unique_ptr<LookAlikes>& alikes = m_alikes[*look];
    if (!alikes)
    {
        alikes = std::make_unique<LookAlikes>();
        alikes->look = *look;
    }
    group.colors = MaterialColors::Of(material);
    group.alikes = alikes.get();
    group.alikesListing = m_listing;
    group.alikesPlace = static_cast<std::uint32_t>(alikes->groups.size());
    alikes->groups.push_back(&group);
    ++alikes->found;
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
        const BatchColors::Held held = BatchColors::Held::Of(group.colors);
        ForEachMember(group, [&](Index index) {
            const Member& member = m_members[index];
            if (member.batch)
            {
                member.batch->SetColors(member.piece, held);
            }
        });
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
    if (look && look->IsOf(second) && m_alikes.count(*look) == 0)
    {
        auto entry = m_alikes.extract(alikes.look);
        entry.key() = *look;
        alikes.look = *look;
        m_alikes.insert(std::move(entry));
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
