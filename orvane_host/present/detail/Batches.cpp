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

/// Beside those of NodeChange: the geometry of one of its meshes.
constexpr unsigned int kGeometryChange = 0x100;

/// Larger meshes gain next to nothing.
constexpr std::size_t kMostVertices = 2048;

/// Of a mesh at several nodes, each of which takes a copy.
constexpr std::size_t kMostSharedVertices = 256;

constexpr unsigned char kMostLosses = 4;

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

bool Contains(const std::vector<Mesh*>& meshes, const Mesh* mesh)
{
    return std::find(meshes.begin(), meshes.end(), mesh) != meshes.end();
}

} // namespace

bool Batches::IsWorthwhile(const Scene& scene)
{
    std::size_t count = scene.GetMeshes().size();
    if (count >= kWorthwhile)
    {
        return true;
    }
    count = 0;
    for (const Mesh* mesh : scene.GetMeshes())
    {
        count += mesh->GetNodes().size();
    }
    return count >= kWorthwhile;
}

Batches::Batches(Scene& scene) : m_link(std::make_shared<BatchMarkOwner*>(static_cast<BatchMarkOwner*>(this)))
{
    scene.AddNodeListener(this);
}

Batches::~Batches()
{
    *m_link = nullptr;
}

void Batches::SceneGone()
{
    // What dies with it has nobody to tell.
    *m_link = nullptr;
    m_nodes.clear();
    m_changed.clear();
}

void Batches::NodeChanged(Node& node, NodeChange change)
{
    const auto known = m_nodes.find(&node);
    if (known == m_nodes.end())
    {
        // Of the nodes that show no mesh nothing is drawn.
        if ((change & NodeChangeMeshes) != 0 && m_hasStarted)
        {
            Note(static_cast<MeshNode&>(node), change);
        }
        return;
    }
    auto& meshNode = static_cast<MeshNode&>(node);
    if ((change & NodeChangeMeshes) != 0)
    {
        // A mesh may be on its way out, and is not touched again.
        for (Index i = known->second.first; i != kNone; i = m_members[i].nextOfNode)
        {
            Member& member = m_members[i];
            if (!member.isGone && !Contains(meshNode.GetMeshes(), member.mesh))
            {
                member.isGone = true;
                m_gone.push_back(i);
            }
        }
    }
    Note(meshNode, change);
}

void Batches::NodeGone(const Node& node)
{
    const auto known = m_nodes.find(&node);
    if (known == m_nodes.end())
    {
        return;
    }
    for (Index i = known->second.first; i != kNone; i = m_members[i].nextOfNode)
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
    m_nodes.erase(known);
}

void Batches::MarkGone(BatchMark& mark)
{
    for (Index i = mark.first; i != kNone;)
    {
        Member& member = m_members[i];
        i = member.nextOfMark;
        member.mark = nullptr;
        member.isReshaped = true;
        member.nextOfMark = kNone;
        member.previousOfMark = kNone;
        member.losses = std::min<unsigned char>(static_cast<unsigned char>(member.losses + 1), kMostLosses);
        if (!member.isGone)
        {
            Note(*member.node, kGeometryChange);
        }
    }
}

void Batches::Note(MeshNode& node, unsigned int change)
{
    NodeState& state = m_nodes[&node];
    if (state.changes == 0)
    {
        m_changed.push_back(&node);
    }
    state.changes |= change;
}

void Batches::Start()
{
    m_hasStarted = true;
    for (Mesh* mesh : GetListenedScene()->GetMeshes())
    {
        for (MeshNode* node : mesh->GetNodes())
        {
            Note(*node, NodeChangeMeshes | NodeChangePlace);
        }
    }
    ChooseAnchor();
}

void Batches::ChooseAnchor()
{
    WorldBox box = WorldBox::Empty();
    for (const Mesh* mesh : GetListenedScene()->GetMeshes())
    {
        for (const MeshNode* node : mesh->GetNodes())
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
            if (m_nodes.count(node) != 0)
            {
                Note(*const_cast<MeshNode*>(static_cast<const MeshNode*>(node)), NodeChangeState);
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
    for (auto& [node, state] : m_nodes)
    {
        m_changed.push_back(const_cast<Node*>(node));
        state.changes |= NodeChangeState;
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
    ++m_frame;
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
    for (std::size_t i = 0; i < m_changed.size(); ++i)
    {
        const auto known = m_nodes.find(m_changed[i]);
        if (known != m_nodes.end() && known->second.changes != 0)
        {
            Sync(static_cast<MeshNode&>(*m_changed[i]), known->second);
        }
    }
    m_changed.clear();
    WakeRested();
    for (const std::unique_ptr<Group>& group : m_deadGroups)
    {
        GiveBack(*group);
    }
    m_deadGroups.clear();
    for (auto group = m_groups.begin(); group != m_groups.end();)
    {
        if (group->second->material)
        {
            ++group;
            continue;
        }
        GiveBack(*group->second);
        group = m_groups.erase(group);
    }
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
    GiveBack(std::move(group.probe));
    for (Batch& batch : group.batches)
    {
        GiveBack(std::move(batch.mesh));
    }
}

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
    const bool hasMoved = (changes & (NodeChangePlace | kGeometryChange)) != 0;
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

BatchCounts Batches::Count() const
{
    BatchCounts counts;
    for (const auto& [material, group] : m_groups)
    {
        (void)material;
        counts.batches += group->batches.size();
        for (const Batch& batch : group->batches)
        {
            counts.pieces += batch.data->GetOnCount();
            counts.triangles += batch.data->GetTriangleCount();
            counts.bytes += batch.data->GetBytes();
        }
        counts.single += static_cast<std::size_t>(std::count_if(
            group->singles.begin(), group->singles.end(), [&, owner = group.get()](Index i)
            { return m_members[i].isSingle && !m_members[i].isGone && m_members[i].group == owner; }));
    }
    return counts;
}

} // namespace OV::Host::Detail
