// How batches come to be, and end: what has rested is written into the room that it has in one, or is put
// together with others.

#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/BatchOrder.h"
#include "orvane_host/present/detail/Batches.h"
#include "orvane/math/Sphere.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace OV::Host::Detail
{

BatchES20::Piece Batches::PieceOf(Index index) const
{
    const Member& member = m_members[index];
    return {member.mesh, PlaceOf(*member.node), member.node->GetUserData(), index, member.group->alikesNumber};
}

void Batches::SetTogether(Group& group, bool together)
{
    constexpr unsigned int apart = MaterialFlagPoints | MaterialFlagAlwaysPass;
    Material& material = *group.material;
    together = together && (material.GetFlags() & apart) == 0 && !material.hasAlpha && !material.UsingDrawID()
        && !material.IsTransparent();
    if (group.isTogether == together)
    {
        return;
    }
    group.isTogether = together;
    group.isRestedDue = group.isRestedDue || !group.rested.empty();
    if (!together)
    {
        Dissolve(group);
        return;
    }
    RestSingles(group);
}

void Batches::RestSingles(const Group& group)
{
    for (const Index index : group.singles)
    {
        const Member& member = m_members[index];
        if (member.group == &group && member.isSingle && !member.isGone && CanBeTogether(member) && IsShown(member))
        {
            Rest(index, kRest);
        }
    }
}

void Batches::KeepSingle(const Group& group, const std::vector<Index>& members)
{
    for (const Index index : members)
    {
        Member& member = m_members[index];
        if (!member.isGone && member.group == &group && member.isRested && !member.isFresh)
        {
            KeepSingle(index);
        }
    }
}

void Batches::KeepSingle(Index index)
{
    MakeSingle(index, true);
    if (StandsAlone(m_members[index]))
    {
        PutIntoTree(index);
    }
}

/// Lets what was in a batch be drawn by itself.
void Batches::PutApart(Index index)
{
    Member& member = m_members[index];
    member.isFresh = false;
    MakeSingle(index, true);
    if (StandsAlone(member) && !member.isQueued)
    {
        PutIntoTree(index);
    }
}

void Batches::Dissolve(Group& group)
{
    if (group.alikes)
    {
        LeaveAlikes(group);
    }
    DissolveBatches(group);
}

void Batches::DissolveBatches(Group& group)
{
    std::vector<Batch> batches;
    batches.swap(group.batches);
    for (Batch& batch : batches)
    {
        for (std::size_t i = 0; i < batch.data->GetPieceCount(); ++i)
        {
            const Index index = batch.data->OwnerOf(i);
            Member& member = m_members[index];
            if (index != kNone && member.batch == batch.data && member.piece == i && !member.isGone)
            {
                member.batch = nullptr;
                member.piece = kNone;
                PutApart(index);
            }
        }
        GiveBack(std::move(batch.mesh));
    }
}

void Batches::Build(StageAccess& renderer, Group& group)
{
    if (m_isFull && !group.hasNew)
    {
        return;
    }
    group.isRestedDue = false;
    for (auto entry = group.rested.begin(); entry != group.rested.end();)
    {
        Build(renderer, group, entry->first, entry->second);
        group.isRestedDue = group.isRestedDue || m_isFull;
        entry = entry->second.empty() ? group.rested.erase(entry) : std::next(entry);
    }
    group.hasNew = false;
    BatchES20::EndWriting();
}

bool Batches::Returns(Group& group, const BatchKind& kind, Index index)
{
    Member& member = m_members[index];
    if (member.isGone || !member.isRested || member.group != &group)
    {
        return false;
    }
    const bool isReady = HasRested(member) && !member.isFresh && IsShown(member) && CanBeTogether(member)
        && !(KindOf(member) != kind) && IsSound(*member.mesh);
    if (!isReady)
    {
        member.isRested = false;
        if (!member.isFresh && !member.batch)
        {
            MakeSingle(index, true);
        }
        if (StandsAlone(member) && !member.isQueued)
        {
            PutIntoTree(index);
        }
        return false;
    }
    const std::size_t vertices = member.mesh->GetPositionBuffer().size();
    // What was never drawn by itself has no other way to be drawn.
    if (member.isSingle && vertices > m_writable)
    {
        m_isFull = true;
        m_later.push_back(index);
        return false;
    }
    m_writable -= std::min(vertices, m_writable);
    if (!member.batch || !member.batch->Fits(member.piece, *member.mesh))
    {
        LeaveBatch(member);
        return true;
    }
    member.batch->Write(member.piece, PieceOf(index), group.factors, member.isReshaped, m_scratch);
    member.isReshaped = false;
    member.isFresh = true;
    member.isRested = false;
    Show(index);
    return false;
}

void Batches::Build(StageAccess& renderer, Group& group, const BatchKind& kind, std::vector<Index>& members)
{
    m_later.clear();
    m_homeless.clear();
    while (!members.empty() && (!m_isFull || group.hasNew))
    {
        const Index index = members.back();
        members.pop_back();
        if (Returns(group, kind, index))
        {
            m_homeless.push_back(index);
        }
    }
    members.insert(members.end(), m_later.begin(), m_later.end());
    if (!m_homeless.empty())
    {
        std::sort(m_homeless.begin(), m_homeless.end());
        m_homeless.erase(std::unique(m_homeless.begin(), m_homeless.end()), m_homeless.end());
        if (group.alikes && group.alikes->isTogether)
        {
            std::vector<Index>& rested = group.alikes->rested[kind];
            rested.insert(rested.end(), m_homeless.begin(), m_homeless.end());
            group.alikes->isRestedDue = true;
            return;
        }
        PutTogether(renderer, {group.batches, *group.material, group.factors, nullptr}, kind, m_homeless);
        members.insert(members.end(), m_homeless.begin(), m_homeless.end());
    }
}

Vector Batches::MiddleOf(const Member& member)
{
    Vector middle;
    middle.Multiply(member.node->GetGlobal(), member.mesh->GetSphere().center);
    return middle;
}

void Batches::PutTogether(StageAccess& renderer, const Shelf& shelf, const BatchKind& kind,
                          std::vector<Index>& members)
{
    Absorb(shelf, kind, members);
    if (members.size() < 2 && !shelf.alikes)
    {
        std::for_each(members.begin(), members.end(), [this](Index index) { KeepSingle(index); });
        return;
    }
    std::vector<BatchPlace> places;
    places.reserve(members.size());
    for (const Index index : members)
    {
        const Member& member = m_members[index];
        places.push_back({MiddleOf(member), member.group->order, index,
                          static_cast<std::uint32_t>(member.mesh->GetPositionBuffer().size())});
    }
    const std::vector<std::size_t> ends = CutByPlace(places, BatchES20::MostVertices, PartSize::Even);
    std::transform(places.begin(), places.end(), members.begin(), [](const BatchPlace& place) { return place.index; });
    const Index* first = members.data();
    for (const std::size_t end : ends)
    {
        const Index* const last = members.data() + end;
        MakeBatch(renderer, shelf, kind, first, last);
        first = last;
    }
    members.clear();
}

/// Whether a piece of a batch could be put together with others as it is by now: nobody is told of what a host
/// writes into arrays.
bool Batches::IsStill(const BatchES20& batch, std::size_t piece, const Member& member) const
{
    return batch.Fits(piece, *member.mesh) && !(KindOf(member) != batch.GetKind()) && IsSound(*member.mesh);
}

void Batches::Absorb(const Shelf& shelf, const BatchKind& kind, std::vector<Index>& members)
{
    // Each piece is packed anew only into a batch twice as large, so that many small additions cost
    // what they hold and little more.
    std::size_t vertices = 0;
    for (const Index index : members)
    {
        vertices += m_members[index].mesh->GetPositionBuffer().size();
    }
    for (std::size_t i = 0; i < shelf.batches.size();)
    {
        const BatchES20& batch = *shelf.batches[i].data;
        if (batch.GetKind() != kind || batch.GetVertexCount() > vertices
            || batch.GetVertexCount() + vertices > BatchES20::MostVertices)
        {
            ++i;
            continue;
        }
        vertices += batch.GetVertexCount();
        Batch absorbed = std::move(shelf.batches[i]);
        shelf.batches.erase(shelf.batches.begin() + static_cast<std::ptrdiff_t>(i));
        for (std::size_t piece = 0; piece < absorbed.data->GetPieceCount(); ++piece)
        {
            const Index index = absorbed.data->OwnerOf(piece);
            if (index == kNone)
            {
                continue;
            }
            Member& member = m_members[index];
            const bool isFresh = member.isFresh && !member.isGone;
            const bool isHere = !shelf.alikes || member.group->alikes == shelf.alikes;
            const bool isStill = isFresh && isHere && IsStill(*absorbed.data, piece, member);
            member.batch = nullptr;
            member.piece = kNone;
            if (isStill)
            {
                members.push_back(index);
            }
            else if (isFresh)
            {
                // Become another without a word.
                PutApart(index);
            }
        }
        GiveBack(std::move(absorbed.mesh));
        i = 0;
    }
}

void Batches::MakeBatch(StageAccess& renderer, const Shelf& shelf, const BatchKind& kind, const Index* first,
                        const Index* last)
{
    std::vector<BatchES20::Piece> pieces;
    pieces.reserve(static_cast<std::size_t>(last - first));
    std::transform(first, last, std::back_inserter(pieces), [this](Index index) { return PieceOf(index); });
    const auto& standIns = m_standIns[kind.isMirrored ? 1 : 0];
    Batch batch;
    batch.mesh = TakeMesh(shelf.material, kind.meshFlags);
    batch.data = new BatchES20(batch.mesh.get(), &renderer.GetBufferPool(), {standIns[0].get(), standIns[1].get()},
                               kind, pieces, shelf.factors, shelf.alikes ? &shelf.alikes->colors : nullptr);
    batch.mesh->SetRenderData(batch.data, false);
    shelf.batches.push_back(std::move(batch));
    for (const Index* index = first; index != last; ++index)
    {
        Member& member = m_members[*index];
        member.batch = shelf.batches.back().data;
        member.piece = static_cast<Index>(index - first);
        member.isFresh = true;
        member.isReshaped = false;
        member.isRested = false;
        Show(*index);
    }
}

void Batches::Show(Index index)
{
    Member& member = m_members[index];
    SetMovesOn(member, false);
    const bool isShown = IsShown(member);
    const bool isOn = isShown && !IsApart(*member.node);
    member.batch->Switch(member.piece, isOn);
    MakeSingle(index, isShown && !isOn);
    if (StandsAlone(member))
    {
        PutIntoTree(index);
    }
}

} // namespace OV::Host::Detail
