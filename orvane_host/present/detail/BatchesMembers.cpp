// The life of a mesh at a node: it joins the group of its material, is put into a batch or drawn by
// itself, and rests before it comes back.

#include "orvane_host/present/detail/Batches.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <typeinfo>

namespace OV::Host::Detail
{

namespace
{

/// Larger meshes gain next to nothing.
constexpr std::size_t kMostVertices = 2048;

/// Of a mesh at several nodes, each of which takes a copy.
constexpr std::size_t kMostSharedVertices = 256;

constexpr unsigned int kMeshFlags =
    MeshFlagNoCull | MeshFlagShowFaceSides | MeshFlagEffectFlag | MeshFlagMonochrome;

bool IsDrawnTogether(Material& material)
{
    constexpr unsigned int apart = MaterialFlagPoints | MaterialFlagAlwaysPass;
    return (material.GetFlags() & apart) == 0 && !material.hasAlpha && !material.UsingDrawID()
        && !material.IsTransparent();
}

bool IsRigid(const QGM::Transf3d& place)
{
    constexpr double most = 1e-5;
    for (int i = 0; i < 3; ++i)
    {
        for (int j = i; j < 3; ++j)
        {
            double product = i == j ? -1.0 : 0.0;
            for (int row = 0; row < 3; ++row)
            {
                product += place.m[row][i] * place.m[row][j];
            }
            if (!(std::abs(product) < most))
            {
                return false;
            }
        }
    }
    return !place.isMirror();
}

} // namespace

void Batches::Sync(MeshNode& node, NodeState& state)
{
    const unsigned int changes = std::exchange(state.changes, 0u);
    Index* link = &state.first;
    while (*link != kNone)
    {
        Member& member = m_members[*link];
        if (member.isGone)
        {
            *link = member.nextOfNode;
        }
        else
        {
            link = &member.nextOfNode;
        }
    }
    if ((changes & NodeChangeMeshes) != 0)
    {
        const auto isKnown = [&](const Mesh* mesh) {
            for (Index i = state.first; i != kNone; i = m_members[i].nextOfNode)
            {
                if (m_members[i].mesh == mesh)
                {
                    return true;
                }
            }
            return false;
        };
        for (Mesh* mesh : node.GetMeshes())
        {
            if (mesh->Type() != NodeTypeLine && !isKnown(mesh))
            {
                const Index index = AddMember(node, *mesh);
                m_members[index].nextOfNode = state.first;
                state.first = index;
            }
        }
    }
    for (Index i = state.first; i != kNone; i = m_members[i].nextOfNode)
    {
        Place(i, changes);
    }
}

Batches::Index Batches::AddMember(MeshNode& node, Mesh& mesh)
{
    Index index = static_cast<Index>(m_members.size());
    if (m_freeMembers.empty())
    {
        m_members.emplace_back();
    }
    else
    {
        index = m_freeMembers.back();
        m_freeMembers.pop_back();
    }
    Member member{};
    member.node = &node;
    member.mesh = &mesh;
    member.piece = kNone;
    member.nextOfNode = kNone;
    member.nextOfMark = kNone;
    member.previousOfMark = kNone;
    member.leaf = CullTree::NoEntry;
    m_members[index] = member;
    return index;
}

void Batches::DropMember(Index index)
{
    LeaveGroup(index);
    UnlinkMark(m_members[index]);
    m_members[index].isQueued = false;
    m_freeMembers.push_back(index);
}

void Batches::LeaveGroup(Index index)
{
    Member& member = m_members[index];
    LeaveBatch(member);
    MakeSingle(index, false);
    member.group = nullptr;
    member.isRested = false;
}

void Batches::LeaveBatch(Member& member)
{
    if (member.batch)
    {
        member.batch->GiveUp(member.piece);
        member.batch = nullptr;
        member.piece = kNone;
    }
    member.isFresh = false;
}

bool Batches::IsPlain(const MeshNode& node, Mesh& mesh) const
{
    return typeid(node) == typeid(MeshNode) && typeid(mesh) == typeid(Mesh);
}

bool Batches::IsShown(const Member& member)
{
    constexpr unsigned int elsewhere = NodeFlagHidden | NodeFlagCulled | NodeFlagHasNodeMaterial;
    return (member.node->GetFlags() & elsewhere) == 0;
}

bool Batches::CanBeTogether(const Member& member) const
{
    const Mesh& mesh = *member.mesh;
    if (!member.isPlain || !member.mark || !member.group->isTogether || member.node->UsingDrawID() || mesh.UsingDrawID())
    {
        return false;
    }
    const QGM::Transf3d& place = member.node->GetGlobal().GetTransf3d();
    if (m_onlyRigid && !IsRigid(place))
    {
        return false;
    }
    const std::size_t vertices = mesh.GetPositionBuffer().size();
    const QGM::Transf3d normals = place.affineInverseTranspose();
    // A transform that flattens has none.
    return vertices > 0 && vertices <= (mesh.GetNodes().size() > 1 ? kMostSharedVertices : kMostVertices)
        && std::isfinite(normals.m[0][0]) && std::isfinite(normals.m[1][1]) && std::isfinite(normals.m[2][2]);
}

BatchKind Batches::KindOf(const Member& member) const
{
    BatchKind kind;
    kind.streams = MeshFormatKey::Of(*member.mesh);
    kind.meshFlags = member.mesh->GetFlags() & kMeshFlags;
    kind.isMirrored = member.node->GetGlobal().GetTransf3d().isMirror();
    return kind;
}

Batches::Group* Batches::GroupOf(Material& material)
{
    if (material.Type() != NodeTypeMaterial)
    {
        return nullptr;
    }
    std::unique_ptr<Group>& group = m_groups[&material];
    if (group && !group->material)
    {
        // Another one had its address. Those that left it are still to be told.
        m_deadGroups.push_back(std::move(group));
    }
    if (!group)
    {
        group = std::make_unique<Group>();
        group->material = &material;
        group->isTogether = IsDrawnTogether(material);
        group->probe = TakeMesh(material, 0u);
    }
    return group.get();
}

void Batches::Place(Index index, unsigned int changes)
{
    Member& member = m_members[index];
    Material* const material = member.mesh->GetMaterial();
    Group* const group = material ? GroupOf(*material) : nullptr;
    if (group != member.group)
    {
        LeaveGroup(index);
        member.group = group;
    }
    if (!group)
    {
        return;
    }
    member.isPlain = IsPlain(*member.node, *member.mesh);
    EnsureMark(index);
    const bool hasMoved = (changes & (NodeChangePlace | GeometryChange)) != 0;
    member.isFresh = member.isFresh && !hasMoved;
    const bool canBeTogether = CanBeTogether(member);
    if (member.batch && (!canBeTogether || KindOf(member) != member.batch->GetKind()))
    {
        LeaveBatch(member);
    }
    const bool isShown = IsShown(member);
    const bool isOn = member.batch && member.isFresh && isShown && !IsApart(*member.node);
    if (member.batch)
    {
        member.batch->SetUserData(member.piece, member.node->GetUserData());
        member.batch->Switch(member.piece, isOn);
    }
    // One that is hidden in its batch is drawn nowhere.
    MakeSingle(index, !isOn && !(member.isFresh && !isShown));
    if (member.isSingle)
    {
        group->itemsHold = false;
        if (hasMoved)
        {
            PutIntoTree(index);
        }
    }
    if (!member.isFresh && canBeTogether && isShown)
    {
        Rest(index, m_frame > 1 ? kRest << member.losses : 0);
    }
}

void Batches::EnsureMark(Index index)
{
    Member& member = m_members[index];
    if (!member.isPlain)
    {
        UnlinkMark(member);
        return;
    }
    Object* const data = member.mesh->GetRenderData();
    if (data && data == member.mark)
    {
        return;
    }
    UnlinkMark(member);
    auto* mark = dynamic_cast<BatchMark*>(data);
    if (!mark || !mark->IsOf(m_link))
    {
        const bool isOthers = data && !mark && typeid(*data) != typeid(MeshES20);
        if (isOthers || (data && data != member.mesh->GetRawMesh()->GetRenderData()))
        {
            // Whoever puts an own object there draws it in an own way.
            member.isPlain = false;
            return;
        }
        mark = new BatchMark(member.mesh, m_link);
        member.mesh->SetRenderData(mark, true);
    }
    member.mark = mark;
    member.nextOfMark = mark->first;
    member.previousOfMark = kNone;
    if (mark->first != kNone)
    {
        m_members[mark->first].previousOfMark = index;
    }
    mark->first = index;
}

void Batches::UnlinkMark(Member& member)
{
    if (!member.mark)
    {
        return;
    }
    (member.previousOfMark == kNone ? member.mark->first : m_members[member.previousOfMark].nextOfMark) =
        member.nextOfMark;
    if (member.nextOfMark != kNone)
    {
        m_members[member.nextOfMark].previousOfMark = member.previousOfMark;
    }
    member.mark = nullptr;
    member.nextOfMark = kNone;
    member.previousOfMark = kNone;
}

void Batches::MakeSingle(Index index, bool isSingle)
{
    Member& member = m_members[index];
    if (member.isSingle == isSingle)
    {
        return;
    }
    member.isSingle = isSingle;
    Group& group = *member.group;
    group.itemsHold = false;
    if (isSingle)
    {
        group.singles.push_back(index);
        PutIntoTree(index);
        return;
    }
    group.hasLeft = true;
    if (member.leaf != CullTree::NoEntry)
    {
        m_tree.Remove(member.leaf);
        member.leaf = CullTree::NoEntry;
    }
}

void Batches::PutIntoTree(Index index)
{
    Member& member = m_members[index];
    if (!member.isPlain)
    {
        // What a host's own class shows, and where, only it knows.
        if (member.leaf != CullTree::NoEntry)
        {
            m_tree.Remove(member.leaf);
            member.leaf = CullTree::NoEntry;
        }
        return;
    }
    // What comes after the tree was asked counts as seen.
    member.seenFrame = m_frame;
    const WorldBox box = BoxAt(*member.mesh, member.node->GetGlobal());
    if (member.leaf == CullTree::NoEntry)
    {
        member.leaf = m_tree.Insert(box, index);
    }
    else
    {
        m_tree.Move(member.leaf, box);
    }
}

void Batches::Rest(Index index, unsigned int frames)
{
    Member& member = m_members[index];
    member.due = m_frame + frames;
    if (frames == 0)
    {
        if (!std::exchange(member.isRested, true))
        {
            member.group->rested[KindOf(member)].push_back(index);
        }
    }
    else if (!std::exchange(member.isQueued, true))
    {
        m_resting.emplace_back(m_frame + kRest, index);
    }
}

void Batches::WakeRested()
{
    while (!m_resting.empty() && m_resting.front().first <= m_frame)
    {
        const Index index = m_resting.front().second;
        m_resting.pop_front();
        Member& member = m_members[index];
        if (member.isGone || !member.isQueued)
        {
            continue;
        }
        if (member.due > m_frame)
        {
            m_resting.emplace_back(m_frame + kRest, index);
            continue;
        }
        member.isQueued = false;
        if (member.group && !member.isFresh && CanBeTogether(member))
        {
            Rest(index, 0);
        }
    }
}

} // namespace OV::Host::Detail
