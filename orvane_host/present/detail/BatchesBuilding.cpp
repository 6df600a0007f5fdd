// How batches come to be, and end: what has rested is written into the room that it has in one, or is put
// together with others.

#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/Batches.h"
#include "orvane/math/Sphere.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <tuple>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

/// Lets bits stand three places apart.
std::uint64_t Spread(std::uint64_t bits)
{
    bits = (bits | bits << 32) & 0x1F00000000FFFFull;
    bits = (bits | bits << 16) & 0x1F0000FF0000FFull;
    bits = (bits | bits << 8) & 0x100F00F00F00F00Full;
    bits = (bits | bits << 4) & 0x10C30C30C30C30C3ull;
    return (bits | bits << 2) & 0x1249249249249249ull;
}

/// Where a place lies along a curve that fills a box: what is near on the curve is near in space.
std::uint64_t PlaceOnCurve(const Vector& place, const WorldBox& all)
{
    const auto cell = [](float at, float from, float to) {
        const float share = (at - from) / (to - from);
        return static_cast<std::uint64_t>(share > 0.0f ? std::min(share, 1.0f) * 1048575.0f : 0.0f);
    };
    return Spread(cell(place.x, all.low.x, all.high.x)) | Spread(cell(place.y, all.low.y, all.high.y)) << 1
        | Spread(cell(place.z, all.low.z, all.high.z)) << 2;
}

} // namespace

BatchES20::Piece Batches::PieceOf(Index index) const
{
    const Member& member = m_members[index];
    const LookAlikes* const alikes = member.group->alikes;
    const bool holdsColors = alikes && alikes->isTogether;
    const BatchColors::Held colors = holdsColors ? BatchColors::Held::Of(member.group->colors) : BatchColors::Held();
    return {member.mesh, PlaceOf(*member.node), member.node->GetUserData(), index, colors};
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
    WorldBox all = WorldBox::Empty();
    // What stands at one place is drawn in the order of the materials: of faces in one plane the first one shows.
    std::vector<std::tuple<std::uint64_t, Index, Index>> order;
    order.reserve(members.size());
    for (const Index index : members)
    {
        all.Widen(MiddleOf(m_members[index]));
    }
    for (const Index index : members)
    {
        order.emplace_back(PlaceOnCurve(MiddleOf(m_members[index]), all), m_members[index].group->order, index);
    }
    std::sort(order.begin(), order.end());
    std::transform(order.begin(), order.end(), members.begin(), [](const auto& entry) { return std::get<2>(entry); });
    const Index* first = members.data();
    const Index* const end = first + members.size();
    while (first != end)
    {
        const Index* last = first;
        std::size_t vertices = 0;
        for (; last != end; ++last)
        {
            vertices += m_members[*last].mesh->GetPositionBuffer().size();
            if (vertices > BatchES20::MostVertices)
            {
                break;
            }
        }
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
                               kind, pieces, shelf.factors, shelf.alikes != nullptr);
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
