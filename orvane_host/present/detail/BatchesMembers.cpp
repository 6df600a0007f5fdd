// The life of a mesh at a node: it joins the group of its material, and is put into a batch or drawn by
// itself.

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
#include <utility>

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

double Determinant(const QGM::Transf3d& place)
{
    const auto& m = place.m;
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) + m[0][1] * (m[1][2] * m[2][0] - m[1][0] * m[2][2])
        + m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
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

void Batches::AddMeshes(MeshNode& node)
{
    Index first = FirstOf(node);
    const auto isKnown = [&](const Mesh* mesh) {
        for (Index i = first; i != kNone; i = m_members[i].nextOfNode)
        {
            if (m_members[i].mesh == mesh && !m_members[i].isGone)
            {
                return true;
            }
        }
        return false;
    };
    for (Mesh* mesh : node.EachMesh())
    {
        if (mesh->Type() == NodeTypeLine || isKnown(mesh))
        {
            continue;
        }
        const Index index = AddMember(node, *mesh);
        if (first == kNone)
        {
            m_table.Insert(&node, index);
            first = index;
        }
        else
        {
            m_members[index].nextOfNode = m_members[first].nextOfNode;
            m_members[first].nextOfNode = index;
            SetMovesOn(m_members[first], false);
        }
    }
    for (Index i = first; i != kNone; i = m_members[i].nextOfNode)
    {
        if (m_members[i].isNew)
        {
            Place(i, NodeChangeMeshes);
        }
    }
}

void Batches::Sync(Index first)
{
    const unsigned int changes = std::exchange(m_members[first].changes, std::uint16_t{0});
    for (Index i = first; i != kNone; i = m_members[i].nextOfNode)
    {
        LookAtRested(m_members[i]);
        if (changes == NodeChangePlace)
        {
            Move(i);
        }
        else
        {
            Place(i, changes);
        }
    }
    if ((changes & NodeChangeMeshes) != 0)
    {
        AddMeshes(*m_members[first].node);
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
    member.loose = kNone;
    member.isNew = true;
    m_members[index] = member;
    m_isDeaf = false;
    return index;
}

void Batches::DropMember(Index index)
{
    LeaveGroup(index);
    UnlinkMark(m_members[index]);
    Member& member = m_members[index];
    FreeLoose(member);
    member.isQueued = false;
    const Index first = FirstOf(*member.node);
    if (first == index)
    {
        const unsigned int changes = std::exchange(member.changes, std::uint16_t{0});
        m_table.Erase(member.node, index);
        if (member.nextOfNode != kNone)
        {
            m_table.Insert(member.node, member.nextOfNode);
            if (changes != 0)
            {
                Note(member.nextOfNode, changes);
            }
        }
        else if ((changes & NodeChangeMeshes) != 0)
        {
            NoteNew(*member.node);
        }
    }
    else
    {
        // Of a node that is gone there is no list any more.
        for (Index i = first; i != kNone; i = m_members[i].nextOfNode)
        {
            if (m_members[i].nextOfNode == index)
            {
                m_members[i].nextOfNode = member.nextOfNode;
                break;
            }
        }
    }
    member.nextOfNode = kNone;
    m_freeMembers.push_back(index);
}

void Batches::LeaveGroup(Index index)
{
    Member& member = m_members[index];
    LeaveBatch(member);
    MakeSingle(index, false);
    LookAtRested(member);
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
        // One that rests alone may have become large enough to take in what is left of the batch.
        member.group->isRestedDue = member.group->isRestedDue || !member.group->rested.empty();
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
    if (!member.isPlain || !member.hasMark || !member.group->isTogether || member.node->UsingDrawID() || mesh.UsingDrawID())
    {
        return false;
    }
    const QGM::Transf3d& place = member.node->GetGlobal().GetTransf3d();
    if (m_onlyRigid && !IsRigid(place))
    {
        return false;
    }
    const std::size_t vertices = mesh.GetPositionBuffer().size();
    // A transform that flattens has no matrix for normals.
    return vertices > 0 && vertices <= (mesh.EachNode().size() > 1 ? kMostSharedVertices : kMostVertices)
        && std::isfinite(1.0 / Determinant(place));
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
        m_newGroups.push_back(group.get());
        ForgetListed();
    }
    return group.get();
}

void Batches::Place(Index index, unsigned int changes)
{
    Material* const material = m_members[index].mesh->GetMaterial();
    Group* const group = material ? GroupOf(*material) : nullptr;
    if (group != m_members[index].group)
    {
        LeaveGroup(index);
        m_members[index].group = group;
    }
    Member& member = m_members[index];
    if (member.isGone || !group)
    {
        return;
    }
    member.isPlain = IsPlain(*member.node, *member.mesh);
    member.isBoxKnown = false;
    EnsureMark(index);
    const bool isNew = member.isNew;
    member.isNew = false;
    const bool hasMoved = (changes & (NodeChangePlace | GeometryChange)) != 0;
    const bool canBeTogether = CanBeTogether(member);
    if (member.batch && (!canBeTogether || KindOf(member) != member.batch->GetKind()))
    {
        LeaveBatch(member);
    }
    const bool isShown = IsShown(member);
    const bool isApart = IsApart(*member.node);
    if (hasMoved && member.isFresh)
    {
        member.isFresh = isShown && !isApart && WriteInPlace(index);
    }
    if (isNew && canBeTogether && isShown)
    {
        // What nobody has drawn yet is put into a batch before it is drawn.
        MakeRested(index);
        group->hasNew = true;
        return;
    }
    const bool isOn = member.batch && member.isFresh && isShown && !isApart;
    if (member.batch)
    {
        member.batch->SetUserData(member.piece, member.node->GetUserData());
        member.batch->Switch(member.piece, isOn);
    }
    // One that is hidden in its batch is drawn nowhere.
    const bool becameSingle = MakeSingle(index, !isOn && !(member.isFresh && !isShown));
    if (member.isSingle)
    {
        group->itemsHold = false;
        if (hasMoved)
        {
            Stir(index);
        }
        else if (becameSingle)
        {
            PutIntoTree(index);
        }
    }
    if (!member.isFresh && canBeTogether && isShown)
    {
        Rest(index, kRest << member.losses);
    }
}

void Batches::Move(Index index)
{
    Member& member = m_members[index];
    if (member.isGone || !member.group)
    {
        return;
    }
    if (member.isSingle && !member.isFresh)
    {
        // Whether it may come back is looked at once it has rested.
        Stir(index);
        SetMovesOn(member, member.nextOfNode == kNone);
        return;
    }
    if (!(member.isFresh && !member.isSingle && CanBeTogether(member) && !IsApart(*member.node) && IsShown(member)
          && member.node->GetGlobal().GetTransf3d().isMirror() == member.batch->GetKind().isMirrored
          && WriteInPlace(index)))
    {
        Place(index, NodeChangePlace);
    }
}

bool Batches::WriteInPlace(Index index)
{
    Member& member = m_members[index];
    const Mesh& mesh = *member.mesh;
    const std::size_t vertices = mesh.GetPositionBuffer().size();
    // What moves on and on would be written again and again.
    if (member.loose != kNone || vertices > m_writable || !member.batch->Fits(member.piece, mesh)
        || (member.isReshaped && !IsSound(mesh)))
    {
        return false;
    }
    m_writable -= vertices;
    member.batch->Write(member.piece, PieceOf(index), member.group->factors, member.isReshaped, m_scratch);
    member.isReshaped = false;
    Stir(index);
    return true;
}

void Batches::EnsureMark(Index index)
{
    Member& member = m_members[index];
    if (!member.isPlain)
    {
        UnlinkMark(member);
        return;
    }
    if (member.hasMark)
    {
        // The mark ends, and tells, before anything else takes its place.
        return;
    }
    Object* const data = member.mesh->GetRenderData();
    BatchMark* mark = BatchMark::Of(data, *m_link);
    if (!mark)
    {
        const bool isOthers = data && !dynamic_cast<BatchMark*>(data) && typeid(*data) != typeid(MeshES20);
        if (isOthers || (data && data != member.mesh->GetRawMesh()->GetRenderData()))
        {
            // Whoever puts an own object there draws it in an own way.
            member.isPlain = false;
            return;
        }
        auto* const quiet = new QuietMark(*m_link);
        member.mesh->SetRenderData(quiet, true);
        mark = quiet;
    }
    member.hasMark = true;
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
    if (!member.hasMark)
    {
        return;
    }
    if (member.previousOfMark == kNone)
    {
        // The mesh lives: its end would have been the mark's.
        BatchMark::Of(member.mesh->GetRenderData(), *m_link)->first = member.nextOfMark;
    }
    else
    {
        m_members[member.previousOfMark].nextOfMark = member.nextOfMark;
    }
    if (member.nextOfMark != kNone)
    {
        m_members[member.nextOfMark].previousOfMark = member.previousOfMark;
    }
    member.hasMark = false;
    member.nextOfMark = kNone;
    member.previousOfMark = kNone;
}

bool Batches::MakeSingle(Index index, bool isSingle)
{
    Member& member = m_members[index];
    if (member.isSingle == isSingle)
    {
        return false;
    }
    member.isSingle = isSingle;
    SetMovesOn(member, false);
    m_singleCount += isSingle ? 1 : static_cast<std::size_t>(-1);
    Group& group = *member.group;
    group.itemsHold = false;
    if (isSingle)
    {
        ++group.singleCount;
        group.singles.push_back(index);
        if (m_isLate)
        {
            m_late.push_back(index);
        }
        return true;
    }
    --group.singleCount;
    group.hasLeft = true;
    LeaveTree(member);
    if (!member.isQueued)
    {
        FreeLoose(member);
    }
    return true;
}

void Batches::PutIntoTree(Index index)
{
    Member& member = m_members[index];
    SetMovesOn(member, false);
    if (!member.isPlain)
    {
        // What a host's own class shows, and where, only it knows.
        LeaveTree(member);
        return;
    }
    Loose& loose = LooseOf(index);
    // What comes after the tree was asked counts as seen.
    loose.seenLook = m_treeLook;
    member.group->seenLook = m_treeLook;
    m_treeHolds = false;
    const WorldBox box = BoxAt(*member.mesh, member.node->GetGlobal());
    if (loose.leaf == CullTree::NoEntry)
    {
        loose.leaf = m_tree.Insert(box, index);
        ++member.group->treeCount;
    }
    else
    {
        m_tree.Move(loose.leaf, box);
    }
}

void Batches::LeaveTree(Member& member)
{
    if (member.loose != kNone && m_loose[member.loose].leaf != CullTree::NoEntry)
    {
        m_tree.Remove(m_loose[member.loose].leaf);
        m_loose[member.loose].leaf = CullTree::NoEntry;
        --member.group->treeCount;
    }
}

Batches::Loose& Batches::LooseOf(Index index)
{
    Member& member = m_members[index];
    if (member.loose == kNone)
    {
        if (m_freeLoose.empty())
        {
            m_freeLoose.push_back(static_cast<Index>(m_loose.size()));
            m_loose.emplace_back();
        }
        member.loose = m_freeLoose.back();
        m_freeLoose.pop_back();
        m_loose[member.loose] = Loose();
    }
    return m_loose[member.loose];
}

void Batches::FreeLoose(Member& member)
{
    SetMovesOn(member, false);
    if (member.loose != kNone)
    {
        LeaveTree(member);
        m_freeLoose.push_back(member.loose);
        member.loose = kNone;
    }
}

bool Batches::StandsAlone(const Member& member) const
{
    return member.isSingle && (member.loose == kNone || m_loose[member.loose].leaf == CullTree::NoEntry);
}

} // namespace OV::Host::Detail
