#include "orvane_host/present/detail/Batches.h"

#include "orvane/math/Sphere.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>

namespace OV::Host::Detail
{

namespace
{

/// Each doubles the time for which what has lost its mark rests.
constexpr unsigned int kMostLosses = 4;

constexpr std::size_t kCacheLine = 64;

/// Asks for as much of an array as a processor doesn't fetch by itself in time.
void FetchBegin(const std::vector<Vector>& values)
{
    constexpr std::size_t most = 16 * kCacheLine;
    const auto* const bytes = reinterpret_cast<const char*>(values.data());
    const std::size_t count = std::min(most, values.size() * sizeof(Vector));
    for (std::size_t i = 0; i < count; i += kCacheLine)
    {
        __builtin_prefetch(bytes + i);
    }
}

bool Contains(const PointerSpan<Mesh>& meshes, const Mesh* mesh)
{
    return std::find(meshes.begin(), meshes.end(), mesh) != meshes.end();
}

} // namespace

bool Batches::IsWorthwhile(const Scene& scene)
{
    std::size_t count = scene.EachMesh().size();
    if (count >= kWorthwhile)
    {
        return true;
    }
    count = 0;
    for (const Mesh* mesh : scene.EachMesh())
    {
        count += mesh->EachNode().size();
    }
    return count >= kWorthwhile;
}

Batches::Batches(Scene& scene) : m_link(new BatchMarkLink(*this))
{
    scene.AddNodeListener(this);
}

Batches::~Batches()
{
    m_link->Cut();
    m_link->Release();
}

void Batches::SceneGone()
{
    // What dies with it has nobody to tell.
    m_link->Cut();
    m_table.Clear();
    m_moved.clear();
    m_changed.clear();
    m_new.clear();
    m_newPlaces.clear();
}

Batches::Index Batches::FirstOf(const Node& node) const
{
    return m_table.Find(&node, [&](Index index) { return m_members[index].node == &node; });
}

void Batches::NodeChanged(Node& node, NodeChange change)
{
    if (!m_hasStarted)
    {
        return;
    }
    if (m_isDeaf && change == NodeChangePlace)
    {
        ++m_movedCount;
        return;
    }
    if (change == NodeChangePlace)
    {
        m_moved.push_back(&node);
        if (m_moved.size() >= kMostMoved)
        {
            NoteMoved();
        }
        return;
    }
    const Index first = FirstOf(node);
    if (first == kNone)
    {
        // Of the nodes that show no mesh nothing is drawn.
        if ((change & NodeChangeMeshes) != 0)
        {
            NoteNew(static_cast<MeshNode&>(node));
        }
        return;
    }
    if ((change & NodeChangeMeshes) != 0)
    {
        // A mesh may be on its way out, and is not touched again.
        for (Index i = first; i != kNone; i = m_members[i].nextOfNode)
        {
            Member& member = m_members[i];
            if (!member.isGone && !Contains(member.node->EachMesh(), member.mesh))
            {
                member.isGone = true;
                m_gone.push_back(i);
            }
        }
    }
    Note(first, change);
}

void Batches::NoteMoved()
{
    // What moves for the first time lies in no cache.
    constexpr std::size_t forSlot = 16;
    constexpr std::size_t forMember = 8;
    const std::size_t count = m_moved.size();
    for (std::size_t i = 0; i < std::min(forSlot, count); ++i)
    {
        m_table.FetchAhead(m_moved[i]);
    }
    for (std::size_t i = 0; i < count; ++i)
    {
        if (i + forSlot < count)
        {
            m_table.FetchAhead(m_moved[i + forSlot]);
        }
        const Index guess = i + forMember < count ? m_table.Guess(m_moved[i + forMember]) : kNone;
        if (guess != kNone)
        {
            __builtin_prefetch(&m_members[guess]);
        }
        NotePlace(m_moved[i]);
    }
    m_moved.clear();
}

void Batches::NotePlace(const Node* node)
{
    const Index first = m_table.Find(node, [&](Index index) { return m_members[index].node == node; });
    if (first == kNone)
    {
        return;
    }
    const Member& only = m_members[first];
    if (!only.movesOn || only.changes != 0)
    {
        Note(first, NodeChangePlace);
        return;
    }
    // Nothing else is to be done about it, however many move in every frame.
    ++m_movedCount;
    m_loose[only.loose].due = m_frame + 1 + (kRest << only.losses);
}

void Batches::NodeGone(const Node& node)
{
    NoteMoved();
    const auto place = m_newPlaces.find(&node);
    if (place != m_newPlaces.end())
    {
        m_new[place->second] = nullptr;
        m_newPlaces.erase(place);
    }
    const Index first = FirstOf(node);
    if (first == kNone)
    {
        return;
    }
    m_table.Erase(&node, first);
    m_members[first].changes = 0;
    for (Index i = first; i != kNone; i = m_members[i].nextOfNode)
    {
        Member& member = m_members[i];
        if (!member.isGone)
        {
            member.isGone = true;
            m_gone.push_back(i);
        }
        if (member.batch)
        {
            member.batch->Switch(member.piece, false);
        }
    }
}

void Batches::MarkGone(BatchMark& mark)
{
    for (Index i = mark.first; i != kNone;)
    {
        Member& member = m_members[i];
        i = member.nextOfMark;
        member.hasMark = false;
        member.isReshaped = true;
        member.nextOfMark = kNone;
        member.previousOfMark = kNone;
        member.losses = static_cast<unsigned char>(std::min(member.losses + 1u, kMostLosses)) & 0x7u;
        if (!member.isGone)
        {
            Note(FirstOf(*member.node), GeometryChange);
        }
    }
}

void Batches::Note(Index first, unsigned int change)
{
    Member& member = m_members[first];
    if (member.changes == 0)
    {
        m_changed.emplace_back(member.node, first);
    }
    member.changes = static_cast<std::uint16_t>(member.changes | change);
}

void Batches::NoteNew(MeshNode& node)
{
    if (m_newPlaces.emplace(&node, m_new.size()).second)
    {
        m_new.push_back(&node);
    }
}

void Batches::Start()
{
    m_hasStarted = true;
    ChooseAnchor();
    std::size_t count = 0;
    for (const Mesh* mesh : GetListenedScene()->EachMesh())
    {
        count += mesh->EachNode().size();
    }
    m_members.reserve(count);
    for (Mesh* mesh : GetListenedScene()->EachMesh())
    {
        for (MeshNode* node : mesh->EachNode())
        {
            if (FirstOf(*node) == kNone)
            {
                AddMeshes(*node);
            }
        }
    }
}

void Batches::ChooseAnchor()
{
    WorldBox box = WorldBox::Empty();
    for (const Mesh* mesh : GetListenedScene()->EachMesh())
    {
        for (const MeshNode* node : mesh->EachNode())
        {
            Vector center;
            center.Multiply(node->GetGlobal(), mesh->GetSphere().center);
            box.Widen(center);
        }
    }
    const double low[] = {box.low.x, box.low.y, box.low.z};
    const double high[] = {box.high.x, box.high.y, box.high.z};
    double extent = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        extent = std::max(extent, high[i] - low[i]);
    }
    double anchor[3] = {};
    for (int i = 0; i < 3; ++i)
    {
        // Not by a little: what stands at the origin keeps its numbers to the last bit. A power of
        // two takes few bits from them.
        const double middle = 0.5 * (low[i] + high[i]);
        if (extent > 0.0 && std::isfinite(middle) && std::abs(middle) > 8.0 * extent)
        {
            const double step = std::exp2(std::floor(std::log2(extent)));
            anchor[i] = std::round(middle / step) * step;
        }
    }
    m_anchor = QGM::Vector3d(anchor[0], anchor[1], anchor[2]);
    PlaceNodes();
}

void Batches::PlaceNodes()
{
    for (const bool mirrors : {false, true})
    {
        QGM::Transf3d place;
        place.m[0][0] = mirrors ? -1.0 : 1.0;
        place.m[0][3] = m_anchor.x;
        place.m[1][3] = m_anchor.y;
        place.m[2][3] = m_anchor.z;
        Transform global;
        global.SetTransf3d(place);
        for (std::unique_ptr<MeshNode>& node : m_standIns[mirrors ? 1 : 0])
        {
            node = std::make_unique<MeshNode>(nullptr);
            node->SetGlobal(global);
        }
    }
}

Transform Batches::PlaceOf(const MeshNode& node) const
{
    // The inverse of the stand-in's, at once: no rounding but that of the difference.
    QGM::Transf3d place = node.GetGlobal().GetTransf3d();
    place.m[0][3] -= m_anchor.x;
    place.m[1][3] -= m_anchor.y;
    place.m[2][3] -= m_anchor.z;
    if (place.isMirror())
    {
        for (double& value : place.m[0])
        {
            value = -value;
        }
    }
    Transform result;
    result.SetTransf3d(place);
    return result;
}

void Batches::KeepApart(const std::vector<const MeshNode*>& nodes)
{
    std::unordered_set<const Node*> wanted(nodes.begin(), nodes.end());
    m_apart.swap(wanted);
    for (const auto* set : {&wanted, &m_apart})
    {
        for (const Node* node : *set)
        {
            // One that is gone is no longer known.
            if (const Index first = FirstOf(*node); first != kNone)
            {
                Note(first, NodeChangeState);
            }
        }
    }
}

void Batches::KeepEdited(const std::optional<Path>& path)
{
    if (m_edited == path)
    {
        return;
    }
    m_edited = path;
    NoteAll();
}

void Batches::KeepRigid(bool onlyRigid)
{
    if (std::exchange(m_onlyRigid, onlyRigid) != onlyRigid)
    {
        NoteAll();
    }
}

void Batches::NoteAll()
{
    for (const Member& member : m_members)
    {
        const Index first = member.isGone ? kNone : FirstOf(*member.node);
        if (first != kNone)
        {
            Note(first, NodeChangeState);
        }
    }
}

bool Batches::IsApart(const MeshNode& node) const
{
    if (m_edited)
    {
        const Path& path = node.GetPath();
        if (!path.empty() && m_edited->size() <= path.size()
            && std::equal(m_edited->begin(), m_edited->end(), path.begin()))
        {
            return true;
        }
    }
    return !m_apart.empty() && m_apart.count(&node) != 0;
}

void Batches::Update()
{
    NoteMoved();
    ++m_frame;
    m_writable = std::max(kMostWritten, kWrittenForSingle * m_singleCount);
    m_isFull = false;
    if (!m_hasStarted)
    {
        Start();
    }
    // What is told meanwhile, such as of marks that are replaced, is taken in too.
    for (std::size_t i = 0; i < m_gone.size(); ++i)
    {
        DropMember(m_gone[i]);
    }
    m_gone.clear();
    for (std::size_t i = 0; i < m_new.size(); ++i)
    {
        MeshNode* const node = m_new[i];
        if (node && FirstOf(*node) == kNone)
        {
            AddMeshes(*node);
        }
    }
    m_new.clear();
    m_newPlaces.clear();
    for (std::size_t i = 0; i < m_changed.size(); ++i)
    {
        FetchAhead(i);
        const auto [node, noted] = m_changed[i];
        // Another of its members may be the first by now, and the node may be gone.
        const Index first = m_members[noted].node == node && m_members[noted].changes != 0 ? noted : FirstOf(*node);
        if (first != kNone && m_members[first].changes != 0)
        {
            Sync(first);
        }
    }
    m_changed.clear();
    BatchES20::EndWriting();
    ListenOrNot();
    if (!m_isDeaf)
    {
        WakeRested();
    }
    for (const std::unique_ptr<Group>& group : m_deadGroups)
    {
        GiveBack(*group);
    }
    m_deadGroups.clear();
    DropDeadGroups();
}

void Batches::DropDeadGroups()
{
    if (m_groupsUnder == Material::GetListingRevision())
    {
        return;
    }
    for (auto group = m_groups.begin(); group != m_groups.end();)
    {
        if (group->second->material)
        {
            ++group;
            continue;
        }
        GiveBack(*group->second);
        group = m_groups.erase(group);
        ForgetListed();
    }
    m_groupsUnder = Material::GetListingRevision();
}

void Batches::FetchAhead(std::size_t changed) const
{
    // What moves for the first time lies in no cache, and waiting for it one by one takes longer than all the
    // work on it. Each step reads what one before it has asked for.
    constexpr std::size_t arrays = 2;
    constexpr std::size_t heads = 4;
    constexpr std::size_t meshes = 6;
    const auto memberAt = [&](std::size_t ahead) -> const Member* {
        if (m_changed.size() - changed <= ahead)
        {
            return nullptr;
        }
        const auto& [node, noted] = m_changed[changed + ahead];
        const Member& member = m_members[noted];
        // Another may have taken its place in the list, and the mesh of one that is gone may be deleted.
        const bool isWritten =
            member.node == node && !member.isGone && member.isFresh && !member.isSingle && member.batch;
        return isWritten ? &member : nullptr;
    };
    if (const Member* const member = memberAt(meshes))
    {
        __builtin_prefetch(member->mesh);
        __builtin_prefetch(reinterpret_cast<const char*>(member->mesh) + kCacheLine);
        __builtin_prefetch(member->batch);
    }
    if (const Member* const member = memberAt(heads))
    {
        __builtin_prefetch(&member->mesh->GetPositionBuffer());
        __builtin_prefetch(&member->mesh->GetNormalBuffer());
        __builtin_prefetch(&member->mesh->GetIndices());
        member->batch->FetchAhead(member->piece);
    }
    if (const Member* const member = memberAt(arrays))
    {
        FetchBegin(member->mesh->GetPositionBuffer());
        if (!member->batch->HasNormalsOfMesh(member->piece))
        {
            FetchBegin(member->mesh->GetNormalBuffer());
        }
    }
}

void Batches::ForgetListed()
{
    m_listed[0].clear();
    m_listed[1].clear();
}

std::unique_ptr<BatchMesh> Batches::TakeMesh(Material& material, unsigned int flags)
{
    if (m_spareMeshes.empty())
    {
        m_spareMeshes.push_back(std::make_unique<BatchMesh>());
    }
    std::unique_ptr<BatchMesh> mesh = std::move(m_spareMeshes.back());
    m_spareMeshes.pop_back();
    mesh->Become(&material, flags);
    return mesh;
}

void Batches::GiveBack(std::unique_ptr<BatchMesh> mesh)
{
    mesh->SetRenderData(nullptr, false);
    m_spareMeshes.push_back(std::move(mesh));
}

void Batches::GiveBack(Group& group)
{
    ForgetAlikes(group);
    GiveBack(std::move(group.probe));
    for (Batch& batch : group.batches)
    {
        GiveBack(std::move(batch.mesh));
    }
}

BatchCounts Batches::Count() const
{
    BatchCounts counts;
    const auto add = [&counts](const std::vector<Batch>& batches) {
        counts.batches += batches.size();
        for (const Batch& batch : batches)
        {
            counts.pieces += batch.data->GetOnCount();
            counts.triangles += batch.data->GetTriangleCount();
            counts.bytes += batch.data->GetBytes();
        }
    };
    for (const auto& [look, alikes] : m_alikes)
    {
        (void)look;
        add(alikes->batches);
    }
    for (const auto& [material, group] : m_groups)
    {
        (void)material;
        add(group->batches);
        counts.single += static_cast<std::size_t>(std::count_if(
            group->singles.begin(), group->singles.end(), [&, owner = group.get()](Index i)
            { return m_members[i].isSingle && !m_members[i].isGone && m_members[i].group == owner; }));
    }
    return counts;
}

} // namespace OV::Host::Detail
