// What a NearFinder knows of a scene: the meshes at its nodes, by what it is told of them.

#include "orvane_host/present/detail/NearFinder.h"

#include "orvane_host/present/detail/BatchMark.h"
#include "orvane_host/present/detail/BatchPiece.h"
#include "orvane_host/present/detail/TreeWalk.h"
#include "orvane/math/Vector.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <typeinfo>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

/// Questions after which what was of no use is forgotten.
constexpr unsigned int kKept = 256;

/// What rests is put into the tree by so many at once at most.
constexpr std::size_t kMostRested = 128;

/// Whether anything but the engine draws a mesh.
bool IsDrawnByHost(const Mesh& mesh)
{
    if (mesh.Type() == NodeTypeLine)
    {
        return false;
    }
    const Object* const data = mesh.GetRenderData();
    return typeid(mesh) != typeid(Mesh)
        || (data && typeid(*data) != typeid(MeshES20) && !dynamic_cast<const BatchMark*>(data));
}

} // namespace

NearFinder::NearFinder(Scene& scene)
{
    scene.AddNodeListener(this);
}

std::uint32_t NearFinder::PrintOf(const Mesh& mesh)
{
    constexpr std::size_t most = 16;
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    std::uint64_t print = 14695981039346656037ull;
    const auto add = [&](std::uint64_t value) { print = (print ^ value) * 1099511628211ull; };
    const auto addPlace = [&](const Vector& place)
    {
        for (const float number : {place.x, place.y, place.z})
        {
            std::uint32_t bits = 0;
            std::memcpy(&bits, &number, sizeof(bits));
            add(bits);
        }
    };
    Vector low;
    Vector high;
    mesh.GetBBox(low, high);
    addPlace(low);
    addPlace(high);
    add(static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(positions.data())));
    add(positions.size());
    add(mesh.GetIndices().size());
    const std::size_t step = std::max<std::size_t>(positions.size() / most, 1);
    for (std::size_t i = 0; i < positions.size(); i += step)
    {
        addPlace(positions[i]);
    }
    return static_cast<std::uint32_t>(print ^ print >> 32);
}

NearFinder::Index NearFinder::FirstOf(const Node& node) const
{
    return m_table.Find(&node, [&](Index index) { return m_members[index].node == &node; });
}

void NearFinder::NodeChanged(Node& node, NodeChange change)
{
    if (!m_hasStarted || change == NodeChangeIdentity)
    {
        return;
    }
    if (m_isDeaf && change == NodeChangePlace)
    {
        ++m_movedCount;
        m_view.reset();
        return;
    }
    if ((change & NodeChangeMeshes) != 0)
    {
        // A mesh may be on its way out, and is not touched again.
        DropMembers(node);
        m_new.insert(&node);
        m_view.reset();
        return;
    }
    const Index first = FirstOf(node);
    if (first == kNone)
    {
        return;
    }
    m_view.reset();
    if ((change & NodeChangeState) != 0)
    {
        // What nobody has drawn has no render data, whose loss would tell that it was described anew.
        m_changed.insert(&node);
    }
    if ((change & NodeChangePlace) != 0)
    {
        ++m_movedCount;
        for (Index i = first; i != kNone; i = m_members[i].nextOfNode)
        {
            MakeLoose(i);
        }
    }
}

void NearFinder::NodeGone(const Node& node)
{
    // Only its address is of use.
    m_new.erase(const_cast<Node*>(&node));
    m_changed.erase(const_cast<Node*>(&node));
    DropMembers(node);
}

void NearFinder::SceneGone()
{
    m_members.clear();
    m_free.clear();
    m_loose.clear();
    m_moved.clear();
    m_unknown.clear();
    m_foreignCount = 0;
    m_table.Clear();
    m_tree.Clear();
    m_stillCount = 0;
    m_new.clear();
    m_changed.clear();
    m_parts.clear();
    m_unchecked = 0;
    m_view.reset();
}

void NearFinder::Start()
{
    m_hasStarted = true;
    m_isStarting = true;
    m_listing = MeshES20::GetListingRevision();
    const auto add = [this](MeshNode& node)
    {
        if (FirstOf(node) == kNone)
        {
            AddMeshes(node);
        }
    };
    std::size_t count = 0;
    for (const Mesh* const mesh : GetListenedScene()->EachMesh())
    {
        count += mesh->EachNode().size();
    }
    m_members.reserve(count);
    // What hangs on no root is drawn too.
    for (const Mesh* const mesh : GetListenedScene()->EachMesh())
    {
        for (MeshNode* const node : mesh->EachNode())
        {
            add(*node);
        }
    }
    // Lines are not among the meshes of a scene, and their style may come into it later.
    if (Node* const root = GetListenedScene()->GetRoot())
    {
        WalkTree(*root, 0, [&](Node& node, int) {
            if (auto* const meshNode = dynamic_cast<MeshNode*>(&node))
            {
                add(*meshNode);
            }
            return 0;
        });
    }
    m_isStarting = false;
    std::vector<WorldBox> boxes;
    std::vector<Index> still;
    for (Index i = 0; i < m_members.size(); ++i)
    {
        if (!m_members[i].isUnknown && !m_members[i].isForeign)
        {
            boxes.push_back(BoxOf(m_members[i]));
            still.push_back(i);
        }
    }
    const std::vector<CullTree::Entry> leaves = m_tree.Fill(boxes, still);
    for (std::size_t i = 0; i < still.size(); ++i)
    {
        m_members[still[i]].leaf = leaves[i];
    }
    m_stillCount = still.size();
}

void NearFinder::Update(std::size_t checked)
{
    if (!GetListenedScene())
    {
        return;
    }
    if (!m_hasStarted)
    {
        Start();
    }
    if (m_listing != MeshES20::GetListingRevision())
    {
        m_listing = MeshES20::GetListingRevision();
        m_unchecked = m_members.size();
        ForgetParts();
    }
    LookForOtherGeometry(std::min(checked, m_unchecked));
    for (const Node* const node : m_changed)
    {
        for (Index i = FirstOf(*node); i != kNone; i = m_members[i].nextOfNode)
        {
            LookForOtherGeometry(m_members[i]);
        }
    }
    m_changed.clear();
    for (Node* const node : m_new)
    {
        // Only such tell of meshes.
        DropMembers(*node);
        AddMeshes(static_cast<MeshNode&>(*node));
    }
    m_new.clear();
    const std::size_t moved = std::exchange(m_movedCount, 0);
    const bool doAllMove = moved > 0 && m_stillCount == 0 && 2 * moved >= m_loose.size();
    if (m_isDeaf && !doAllMove)
    {
        for (Loose& loose : m_loose)
        {
            loose.due = m_question + kRest;
        }
    }
    m_isDeaf = doAllMove;
}

void NearFinder::LookForOtherGeometry(const Member& member)
{
    if (member.print != PrintOf(*member.mesh) || member.isUnknown != IsDrawnByHost(*member.mesh))
    {
        m_new.insert(member.node);
    }
}

void NearFinder::LookForOtherGeometry(std::size_t count)
{
    m_unchecked -= count;
    for (; count > 0; --count)
    {
        m_nextChecked = m_nextChecked + 1 < m_members.size() ? m_nextChecked + 1 : 0;
        if (m_members[m_nextChecked].node)
        {
            LookForOtherGeometry(m_members[m_nextChecked]);
        }
    }
}

void NearFinder::ForgetParts()
{
    for (auto parts = m_parts.begin(); parts != m_parts.end();)
    {
        parts = m_question - parts->second.used > kKept ? m_parts.erase(parts) : std::next(parts);
    }
}

void NearFinder::AddMeshes(MeshNode& node)
{
    for (Mesh* const mesh : node.EachMesh())
    {
        AddMember(node, *mesh);
    }
}

void NearFinder::AddMember(MeshNode& node, Mesh& mesh)
{
    Index index = static_cast<Index>(m_members.size());
    if (m_free.empty())
    {
        m_members.emplace_back();
    }
    else
    {
        index = m_free.back();
        m_free.pop_back();
    }
    Member& member = m_members[index];
    member = Member();
    member.mesh = &mesh;
    member.print = PrintOf(mesh);
    member.isForeign = typeid(node) != typeid(MeshNode);
    member.isUnknown = IsDrawnByHost(mesh);
    member.isBoxTrue = IsBoxTrue(mesh);
    member.nextOfNode = FirstOf(node);
    member.node = &node;
    if (member.nextOfNode != kNone)
    {
        m_table.Erase(&node, member.nextOfNode);
    }
    m_table.Insert(&node, index);
    m_foreignCount += member.isForeign || member.isUnknown ? 1 : 0;
    if (member.isUnknown)
    {
        m_unknown.push_back(index);
    }
    else if (member.isForeign)
    {
        MakeLoose(index);
    }
    else if (!m_isStarting)
    {
        PutIntoTree(index, BoxOf(member));
    }
}

void NearFinder::DropMembers(const Node& node)
{
    const Index first = FirstOf(node);
    if (first == kNone)
    {
        return;
    }
    m_view.reset();
    m_table.Erase(&node, first);
    for (Index i = first; i != kNone;)
    {
        Member& member = m_members[i];
        m_stillCount -= member.leaf != CullTree::NoEntry && member.loose == kNone ? 1 : 0;
        LeaveLoose(member);
        if (member.leaf != CullTree::NoEntry)
        {
            m_tree.Remove(member.leaf);
        }
        if (member.isUnknown)
        {
            m_unknown.erase(std::find(m_unknown.begin(), m_unknown.end(), i));
        }
        m_foreignCount -= member.isForeign || member.isUnknown ? 1 : 0;
        member.node = nullptr;
        m_free.push_back(i);
        i = member.nextOfNode;
    }
}

void NearFinder::MakeLoose(Index index)
{
    Member& member = m_members[index];
    if (member.isUnknown)
    {
        return;
    }
    if (member.loose == kNone)
    {
        // Its leaf waits: it may come back to about the same place.
        m_stillCount -= member.leaf != CullTree::NoEntry ? 1 : 0;
        member.loose = static_cast<Index>(m_loose.size());
        m_loose.push_back({{}, index, 0});
    }
    m_loose[member.loose].due = m_question + kRest;
    if (!member.hasMoved)
    {
        member.hasMoved = true;
        m_moved.push_back(index);
    }
}

void NearFinder::LeaveLoose(Member& member)
{
    if (member.loose == kNone)
    {
        return;
    }
    m_members[m_loose.back().member].loose = member.loose;
    m_loose[member.loose] = m_loose.back();
    m_loose.pop_back();
    member.loose = kNone;
}

void NearFinder::FollowMoved()
{
    for (const Index index : m_moved)
    {
        Member& member = m_members[index];
        if (std::exchange(member.hasMoved, false) && member.node && member.loose != kNone)
        {
            m_loose[member.loose].box = BoxOf(member);
        }
    }
    m_moved.clear();
    if (!m_isDeaf && m_foreignCount == 0)
    {
        return;
    }
    for (Loose& loose : m_loose)
    {
        const Member& member = m_members[loose.member];
        if (m_isDeaf || member.isForeign)
        {
            loose.box = BoxOf(member);
        }
    }
}

WorldBox NearFinder::BoxOf(const Member& member) const
{
    if (!member.isBoxTrue)
    {
        return BoxAt(*member.mesh, member.node->GetGlobal());
    }
    WorldBox box;
    member.mesh->GetBBox(box.low, box.high);
    return BoxAt(box, member.node->GetGlobal());
}

void NearFinder::PutIntoTree(Index index, const WorldBox& box)
{
    Member& member = m_members[index];
    ++m_stillCount;
    if (member.leaf == CullTree::NoEntry)
    {
        member.leaf = m_tree.Insert(box, index);
    }
    else
    {
        m_tree.Move(member.leaf, box);
    }
}

void NearFinder::PutRestedIntoTree()
{
    if (m_isDeaf)
    {
        return;
    }
    std::size_t put = 0;
    for (std::size_t i = m_loose.size(); i-- > 0 && put < kMostRested;)
    {
        const Loose loose = m_loose[i];
        Member& member = m_members[loose.member];
        if (loose.due <= m_question && !member.isForeign)
        {
            LeaveLoose(member);
            PutIntoTree(loose.member, loose.box);
            ++put;
        }
    }
}

} // namespace OV::Host::Detail
