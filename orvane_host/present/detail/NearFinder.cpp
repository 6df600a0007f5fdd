#include "orvane_host/present/detail/NearFinder.h"

#include "orvane_host/geometry/ViewVolume.h"
#include "orvane_host/present/detail/BatchMark.h"
#include "orvane_host/present/detail/BatchPiece.h"
#include "orvane_host/present/detail/TreeWalk.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <typeinfo>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Questions after which what was of no use is forgotten.
constexpr unsigned int kKept = 256;

/// Meshes at nodes that are looked at in one moving frame for whether they were described anew, of which nobody
/// is told: that of one in the layer above the picture counts too, and may come in every frame.
constexpr std::size_t kMostChecked = 4096;

/// What rests is put into the tree by so many at once at most.
constexpr std::size_t kMostRested = 128;

bool IsLine(const Mesh& mesh)
{
    return mesh.Type() == NodeTypeLine;
}

bool DrawsPoints(const Mesh& mesh)
{
    const Material* const material = mesh.GetMaterial();
    return material && (material->GetFlags() & MaterialFlagPoints) != 0;
}

/// Whether anything but the engine draws a mesh.
bool IsDrawnByHost(const Mesh& mesh)
{
    if (IsLine(mesh))
    {
        return false;
    }
    const Object* const data = mesh.GetRenderData();
    return typeid(mesh) != typeid(Mesh)
        || (data && typeid(*data) != typeid(MeshES20) && !dynamic_cast<const BatchMark*>(data));
}

/// A number that is another one for nearly every other geometry: a few of its vertices count.
std::uint32_t PrintOf(const Mesh& mesh)
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

} // namespace

/// What is found so far.
struct NearFinder::Question
{
    const NearView& view;
    double enough;
    std::size_t left; ///< corners that may still be looked at
    NearSpace space;  ///< of the mesh that is looked at
    double nearest = kInfinity;

    void Take(double depth)
    {
        nearest = depth < nearest ? depth : nearest;
        if (nearest < enough)
        {
            nearest = 0.0;
        }
    }

    bool Use(std::size_t corners)
    {
        if (corners > left)
        {
            nearest = 0.0;
            return false;
        }
        left -= corners;
        return true;
    }
};

NearFinder::NearFinder(Scene& scene)
{
    scene.AddNodeListener(this);
}

double NearFinder::Find(const NearView& view, double enough, std::size_t most)
{
    Update(most < kAllCorners ? kMostChecked : kAllCorners);
    // What moves without a word is asked in every frame.
    if (m_view && *m_view == view && m_enough == enough && m_most == most && m_foreignCount == 0)
    {
        return m_answer;
    }
    ++m_question;
    FollowMoved();
    PutRestedIntoTree();
    Question question{view, enough, most, NearSpace(view)};
    if (std::any_of(m_unknown.begin(), m_unknown.end(), [this](Index index) { return IsShown(m_members[index]); }))
    {
        question.nearest = 0.0;
    }
    else
    {
        const NearSpace world(view);
        m_tree.Search(
            kInfinity, [&](const WorldBox& box) { return world.LeastDepth(box, question.nearest); },
            [&](Index index)
            {
                if (m_members[index].loose == kNone)
                {
                    Look(question, m_members[index]);
                }
                return question.nearest;
            });
        for (const Loose& loose : m_loose)
        {
            if (world.LeastDepth(loose.box, question.nearest) < question.nearest)
            {
                Look(question, m_members[loose.member]);
            }
        }
    }
    m_view = view;
    m_enough = enough;
    m_most = most;
    m_answer = question.nearest;
    return m_answer;
}

bool NearFinder::IsShown(const Member& member)
{
    return (member.node->GetFlags() & NodeFlagHidden) == 0 && (IsLine(*member.mesh) || member.mesh->GetMaterial());
}

void NearFinder::Look(Question& question, const Member& member)
{
    const Mesh& mesh = *member.mesh;
    if (!IsShown(member) || !(question.nearest > 0.0))
    {
        return;
    }
    question.space.Set(question.view, member.node->GetGlobal());
    if (member.isBoxTrue)
    {
        WorldBox box;
        mesh.GetBBox(box.low, box.high);
        if (!(question.space.LeastDepth(box, question.nearest) < question.nearest))
        {
            return;
        }
    }
    LookAtTriangles(question, mesh);
}

void NearFinder::LookAtTriangles(Question& question, const Mesh& mesh)
{
    const std::size_t count = mesh.GetIndices().size();
    if (count <= 3 * 2 * kTogether || IsLine(mesh) || DrawsPoints(mesh))
    {
        LookAtTriangles(question, mesh, 0, count);
        return;
    }
    const Parts& parts = PartsOf(mesh);
    m_order.clear();
    for (std::size_t i = 0; i < parts.boxes.size(); ++i)
    {
        const double least = question.space.LeastDepth(parts.boxes[i], question.nearest);
        if (least < question.nearest)
        {
            m_order.emplace_back(least, i);
        }
    }
    std::sort(m_order.begin(), m_order.end());
    for (const auto& [least, part] : m_order)
    {
        if (!(least < question.nearest))
        {
            return;
        }
        const std::size_t first = part * 3 * kTogether;
        LookAtTriangles(question, mesh, first, std::min(first + 3 * kTogether, count));
    }
}

void NearFinder::LookAtTriangles(Question& question, const Mesh& mesh, std::size_t first, std::size_t last) const
{
    if (!question.Use(last - first))
    {
        return;
    }
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    const std::vector<unsigned short>& indices = mesh.GetIndices();
    const NearSpace& space = question.space;
    const std::size_t count = positions.size();
    if (IsLine(mesh))
    {
        // The six indices of a part name vertices of the point where it begins; those four further on are of
        // the point where it ends.
        for (std::size_t i = first; i < last; i += 6)
        {
            const std::size_t begin = indices[i];
            if (begin + 4 < count)
            {
                question.Take(space.DepthOf(positions[begin], positions[begin + 4], question.nearest));
            }
        }
        return;
    }
    if (DrawsPoints(mesh))
    {
        for (std::size_t i = first; i < last; ++i)
        {
            if (indices[i] < count)
            {
                question.Take(space.DepthOf(positions[indices[i]], question.nearest));
            }
        }
        return;
    }
    for (std::size_t i = first; i + 3 <= last; i += 3)
    {
        if (indices[i] < count && indices[i + 1] < count && indices[i + 2] < count)
        {
            question.Take(space.DepthOf(positions[indices[i]], positions[indices[i + 1]], positions[indices[i + 2]],
                                        question.nearest));
        }
    }
}

const NearFinder::Parts& NearFinder::PartsOf(const Mesh& mesh)
{
    Parts& parts = m_parts[mesh.GetRawMesh().get()];
    parts.used = m_question;
    const std::uint32_t print = PrintOf(mesh);
    if (!parts.boxes.empty() && parts.print == print)
    {
        return parts;
    }
    parts.print = print;
    parts.boxes.clear();
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    const std::vector<unsigned short>& indices = mesh.GetIndices();
    for (std::size_t first = 0; first < indices.size(); first += 3 * kTogether)
    {
        WorldBox box = WorldBox::Empty();
        const std::size_t last = std::min(first + 3 * kTogether, indices.size());
        for (std::size_t i = first; i < last; ++i)
        {
            if (indices[i] < positions.size())
            {
                box.Widen(positions[indices[i]]);
            }
        }
        parts.boxes.push_back(box);
    }
    return parts;
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
