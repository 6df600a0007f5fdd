#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/Batches.h"
#include "orvane/math/Sphere.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
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

bool StandsFor(const std::vector<Material*>& materials, const Material* material)
{
    return std::find(materials.begin(), materials.end(), material) != materials.end();
}

bool IsTooSmall(const WorldBox& box, const ViewVolume& view, float leastShare)
{
    if (!(leastShare > 0.0f))
    {
        return false;
    }
    Vector size;
    size.Subtract(box.high, box.low);
    Vector middle;
    middle.Add(box.low, box.high);
    middle.Scale(0.5f);
    return view.ShareOfHeight(middle, size.Magnitude()) < leastShare;
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

BatchES20::Piece Batches::PieceOf(Index index) const
{
    const Member& member = m_members[index];
    return {member.mesh, PlaceOf(*member.node), member.node->GetUserData(), index};
}

template <class Lister>
void Batches::ForEachMaterial(PresentationFrame& frame, const std::vector<Material*>& materials, Lister list)
{
    m_materials.assign(materials.begin(), materials.end());
    for (std::size_t i = 0; i < m_materials.size(); ++i)
    {
        // A host that is called meanwhile may have taken it away.
        if (!frame.renderer.HasLosses() || StandsFor(materials, m_materials[i]))
        {
            const auto group = m_groups.find(m_materials[i]);
            const bool isKnown = group != m_groups.end() && group->second->material;
            list(*m_materials[i], isKnown ? group->second.get() : nullptr);
        }
    }
}

void Batches::List(PresentationFrame& frame, float leastShare, bool isAllNeeded, std::vector<RenderItemES20>& all,
                   std::vector<RenderItemES20>& seen)
{
    const ViewVolume view(frame.cameraData.GetMVP());
    Look(view, frame.cameraData.GetMVP(), leastShare);
    ForEachMaterial(frame, frame.scene.GetOptimizedMaterials(), [&](Material& material, Group* group) {
        if (group)
        {
            SetTogether(*group, true);
            ListGroup(frame, *group, &view, leastShare, isAllNeeded, all, &seen);
            return;
        }
        const std::size_t before = all.size();
        frame.renderer.List(material, frame.cameraData, all, true);
        seen.insert(seen.end(), all.begin() + static_cast<std::ptrdiff_t>(before), all.end());
    });
}

void Batches::Look(const ViewVolume& view, const Matrix& worldToClip, float leastShare)
{
    if (m_lookShare != leastShare || std::memcmp(m_lookMatrix.m, worldToClip.m, sizeof(worldToClip.m)) != 0)
    {
        m_lookMatrix = worldToClip;
        m_lookShare = leastShare;
        ++m_look;
        m_treeHolds = false;
    }
    if (m_treeHolds)
    {
        return;
    }
    m_treeHolds = true;
    ++m_treeLook;
    m_tree.Collect(view, [&](Index index) {
        Loose& loose = m_loose[m_members[index].loose];
        if (!IsTooSmall(m_tree.GetBox(loose.leaf), view, leastShare))
        {
            loose.seenLook = m_treeLook;
        }
    });
}

void Batches::ListAlpha(PresentationFrame& frame, std::vector<RenderItemES20>& items)
{
    ForEachMaterial(frame, frame.scene.GetAlphaMaterials(), [&](Material& material, Group* group) {
        if (group)
        {
            SetTogether(*group, false);
            ListGroup(frame, *group, nullptr, 0.0f, true, items, nullptr);
            return;
        }
        frame.renderer.List(material, frame.cameraData, items, true);
    });
}

void Batches::ListSingly(PresentationFrame& frame, const ViewVolume& view, std::vector<RenderItemES20>& items)
{
    m_found.clear();
    m_tree.Collect(view, [&](Index index) { m_found.push_back(index); });
    for (const auto& [material, group] : m_groups)
    {
        (void)material;
        for (const Batch& batch : group->batches)
        {
            if (view.Sees(batch.data->GetBox()))
            {
                batch.data->Collect(view, [&](Index index) { m_found.push_back(index); });
            }
        }
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
    ForEachMaterial(frame, frame.scene.GetOptimizedMaterials(), listFound);
    ForEachMaterial(frame, frame.scene.GetAlphaMaterials(), listFound);
}

MeshStyleES20* Batches::Probe(PresentationFrame& frame, Group& group)
{
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
    return m_probed.front().style;
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
    if (!together)
    {
        Dissolve(group);
        return;
    }
    for (const Index index : group.singles)
    {
        Member& member = m_members[index];
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
            MakeSingle(index, true);
            if (StandsAlone(member))
            {
                PutIntoTree(index);
            }
        }
    }
}

void Batches::Dissolve(Group& group)
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
                member.isFresh = false;
                MakeSingle(index, true);
                if (StandsAlone(member) && !member.isQueued)
                {
                    PutIntoTree(index);
                }
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
    for (auto entry = group.rested.begin(); entry != group.rested.end();)
    {
        Build(renderer, group, entry->first, entry->second);
        entry = entry->second.empty() ? group.rested.erase(entry) : std::next(entry);
    }
    group.hasNew = false;
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
        PutTogether(renderer, group, kind, m_homeless);
        members.insert(members.end(), m_homeless.begin(), m_homeless.end());
    }
}

Vector Batches::MiddleOf(const Member& member)
{
    Vector middle;
    middle.Multiply(member.node->GetGlobal(), member.mesh->GetSphere().center);
    return middle;
}

void Batches::PutTogether(StageAccess& renderer, Group& group, const BatchKind& kind, std::vector<Index>& members)
{
    Absorb(group, kind, members);
    if (members.size() < 2)
    {
        KeepSingle(group, members);
        return;
    }
    WorldBox all = WorldBox::Empty();
    std::vector<std::pair<std::uint64_t, Index>> order;
    order.reserve(members.size());
    for (const Index index : members)
    {
        all.Widen(MiddleOf(m_members[index]));
    }
    for (const Index index : members)
    {
        order.emplace_back(PlaceOnCurve(MiddleOf(m_members[index]), all), index);
    }
    std::sort(order.begin(), order.end());
    std::transform(order.begin(), order.end(), members.begin(), [](const auto& entry) { return entry.second; });
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
        MakeBatch(renderer, group, kind, first, last);
        first = last;
    }
    members.clear();
}

void Batches::Absorb(Group& group, const BatchKind& kind, std::vector<Index>& members)
{
    // Each piece is packed anew only into a batch twice as large, so that many small additions cost
    // what they hold and little more.
    std::size_t vertices = 0;
    for (const Index index : members)
    {
        vertices += m_members[index].mesh->GetPositionBuffer().size();
    }
    for (std::size_t i = 0; i < group.batches.size();)
    {
        const BatchES20& batch = *group.batches[i].data;
        if (batch.GetKind() != kind || batch.GetVertexCount() > vertices
            || batch.GetVertexCount() + vertices > BatchES20::MostVertices)
        {
            ++i;
            continue;
        }
        vertices += batch.GetVertexCount();
        Batch absorbed = std::move(group.batches[i]);
        group.batches.erase(group.batches.begin() + static_cast<std::ptrdiff_t>(i));
        for (std::size_t piece = 0; piece < absorbed.data->GetPieceCount(); ++piece)
        {
            const Index index = absorbed.data->OwnerOf(piece);
            if (index == kNone)
            {
                continue;
            }
            Member& member = m_members[index];
            member.batch = nullptr;
            member.piece = kNone;
            if (member.isFresh && !member.isGone)
            {
                members.push_back(index);
            }
        }
        GiveBack(std::move(absorbed.mesh));
        i = 0;
    }
}

void Batches::MakeBatch(StageAccess& renderer, Group& group, const BatchKind& kind, const Index* first,
                        const Index* last)
{
    std::vector<BatchES20::Piece> pieces;
    pieces.reserve(static_cast<std::size_t>(last - first));
    std::transform(first, last, std::back_inserter(pieces), [this](Index index) { return PieceOf(index); });
    const auto& standIns = m_standIns[kind.isMirrored ? 1 : 0];
    Batch batch;
    batch.mesh = TakeMesh(*group.material, kind.meshFlags);
    batch.data = new BatchES20(batch.mesh.get(), &renderer.GetBufferPool(), {standIns[0].get(), standIns[1].get()},
                               kind, pieces, group.factors);
    batch.mesh->SetRenderData(batch.data, false);
    group.batches.push_back(std::move(batch));
    for (const Index* index = first; index != last; ++index)
    {
        Member& member = m_members[*index];
        member.batch = group.batches.back().data;
        member.piece = static_cast<Index>(index - first);
        member.isFresh = true;
        member.isReshaped = false;
        member.isRested = false;
        Show(*index);
    }
}

void Batches::Show(Index index)
{
    const Member& member = m_members[index];
    const bool isShown = IsShown(member);
    const bool isOn = isShown && !IsApart(*member.node);
    member.batch->Switch(member.piece, isOn);
    MakeSingle(index, isShown && !isOn);
    if (StandsAlone(member))
    {
        PutIntoTree(index);
    }
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
        if (isDrawn && end - i == mesh->GetNodes().size())
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
    group.listing = MeshES20::GetListingRevision();
}

bool Batches::IsOutside(const Group& group, const ViewVolume& view, float leastShare) const
{
    // What is no longer used has to be given back.
    const auto isSeenOrUnused = [&](const Batch& batch) {
        return batch.data->GetVertexCount() == 0
            || (batch.data->GetOnCount() > 0 && batch.data->See(view, leastShare, m_look));
    };
    return group.singles.empty() && group.rested.empty()
        && std::none_of(group.batches.begin(), group.batches.end(), isSeenOrUnused);
}

void Batches::ListGroup(PresentationFrame& frame, Group& group, const ViewVolume* view, float leastShare,
                        bool isAllNeeded, std::vector<RenderItemES20>& all, std::vector<RenderItemES20>* seen)
{
    if (seen && !isAllNeeded && IsOutside(group, *view, leastShare))
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
    if (isOtherStyle || !group.rested.empty())
    {
        group.factors = FactorsOf(style);
    }
    if (!group.rested.empty() && !group.isTogether)
    {
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
    else if (!group.rested.empty())
    {
        Build(frame.renderer, group);
    }
    const auto isUsed = [](const Batch& batch) { return batch.data->GetVertexCount() > 0; };
    const auto unused = std::partition(group.batches.begin(), group.batches.end(), isUsed);
    for (auto batch = unused; batch != group.batches.end(); ++batch)
    {
        GiveBack(std::move(batch->mesh));
    }
    group.batches.erase(unused, group.batches.end());
    for (const Batch& batch : group.batches)
    {
        const auto& standIns = m_standIns[batch.data->GetKind().isMirrored ? 1 : 0];
        if (batch.data->GetOnCount() == 0)
        {
            continue;
        }
        all.push_back({batch.mesh.get(), style, true, standIns[0].get()});
        if (seen && batch.data->See(*view, leastShare, m_look))
        {
            seen->push_back({batch.mesh.get(), style, true, standIns[1].get()});
        }
    }
    if (group.singles.empty())
    {
        return;
    }
    if (!group.itemsHold || isOtherStyle || group.listing != MeshES20::GetListingRevision())
    {
        MakeItems(frame.renderer, group, *style);
    }
    all.insert(all.end(), group.items.begin(), group.items.end());
    if (seen)
    {
        ListSeen(group, *view, leastShare, *seen);
    }
}

WorldBox Batches::BoxOf(Member& member) const
{
    if (!member.isBoxKnown)
    {
        member.isBoxKnown = true;
        member.isBoxTrue = IsBoxTrue(*member.mesh);
    }
    if (!member.isBoxTrue)
    {
        return BoxAt(*member.mesh, member.node->GetGlobal());
    }
    WorldBox box;
    member.mesh->GetBBox(box.low, box.high);
    return BoxAt(box, member.node->GetGlobal());
}

bool Batches::Sees(const ViewVolume& view, float leastShare, Member& member) const
{
    if (!member.isPlain)
    {
        return true;
    }
    const WorldBox box = BoxOf(member);
    return view.Sees(box) && !IsTooSmall(box, view, leastShare);
}

void Batches::ListSeen(const Group& group, const ViewVolume& view, float leastShare, std::vector<RenderItemES20>& seen)
{
    // A point may reach beyond its place.
    const bool isPoints = (group.material->GetFlags() & MaterialFlagPoints) != 0;
    const auto isSeen = [&](Index index) {
        Member& member = m_members[index];
        return isPoints
            || (StandsAlone(member) ? Sees(view, leastShare, member)
                                    : m_loose[member.loose].seenLook == m_treeLook);
    };
    for (std::size_t i = 0; i < group.items.size(); ++i)
    {
        const RenderItemES20& item = group.items[i];
        const auto [begin, end] = group.spans[i];
        if (item.specificNode)
        {
            if (isSeen(group.singles[begin]))
            {
                seen.push_back(item);
            }
            continue;
        }
        const auto first = group.singles.begin() + begin;
        const auto last = group.singles.begin() + end;
        if (std::all_of(first, last, isSeen))
        {
            seen.push_back(item);
            continue;
        }
        for (auto index = first; index != last; ++index)
        {
            if (isSeen(*index) && IsShown(m_members[*index]))
            {
                seen.push_back({item.mesh, item.style, true, m_members[*index].node});
            }
        }
    }
}

} // namespace OV::Host::Detail
