#pragma once

#include "orvane_host/geometry/CullTree.h"
#include "orvane_host/present/detail/NearView.h"
#include "orvane_host/present/detail/NodeTable.h"
#include "orvane/scene/NodeListener.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace OV
{

class Mesh;
class MeshNode;
class RawMesh;

} // namespace OV

namespace OV::Host::Detail
{

/// Finds how far before an eye a scene begins, by all that nodes show: surfaces, points and lines.
///
/// What stands still is in a tree of boxes; large meshes have boxes about so many of their triangles
/// besides. What moves is asked one by one until it has rested. Without a change of the view or the scene
/// the answer is at hand. Not GL.
class NearFinder final : public NodeListener
{
public:
    /// Of a mesh, the triangles that share a box.
    static constexpr std::size_t kTogether = 32;

    /// Questions for which a node has to stand still before it is in the tree again.
    static constexpr unsigned int kRest = 16;

    /// As many corners as there are.
    static constexpr std::size_t kAllCorners = std::numeric_limits<std::size_t>::max();

    explicit NearFinder(Scene& scene);

    /// The smallest depth of what is seen of triangles, lines and middles of points, to the last of them;
    /// infinite where nothing is seen. 0 where it isn't known: where something is drawn by a class of a
    /// host's, and where it takes too much work.
    /// @param enough depths below this are as good as 0.
    /// @param most corners of triangles that may be looked at. With less than all that a large scene describes anew
    ///        without a word may be found some frames later.
    double Find(const NearView& view, double enough, std::size_t most);

    void NodeChanged(Node& node, NodeChange change) override;
    void NodeGone(const Node& node) override;
    void SceneGone() override;

private:
    using Index = std::uint32_t;
    static constexpr Index kNone = NodeTable::None;

    /// A mesh at a node.
    struct Member
    {
        MeshNode* node = nullptr; ///< null for one that is gone
        Mesh* mesh = nullptr;
        Index nextOfNode = kNone;
        /// Where it stood once; the box counts while it isn't loose.
        CullTree::Entry leaf = CullTree::NoEntry;
        Index loose = kNone;     ///< its place in m_loose
        std::uint32_t print = 0; ///< of its geometry
        bool hasMoved = false;   ///< since the last question
        bool isForeign = false;  ///< its node may move without a word
        bool isUnknown = false;  ///< a host's class draws it
        bool isBoxTrue = false;  ///< the box that the geometry names encloses it
    };

    /// What moves, or has not rested yet.
    struct Loose
    {
        WorldBox box;
        Index member;
        unsigned int due; ///< question from which on it has rested
    };

    /// Boxes about the triangles of a large mesh, in its own space.
    struct Parts
    {
        std::uint32_t print = 0;
        unsigned int used = 0; ///< last question that it was of use for
        std::vector<WorldBox> boxes;
    };

    struct Question;

    /// A number that is another one for nearly every other geometry: a few of its vertices count.
    static std::uint32_t PrintOf(const Mesh& mesh);

    Index FirstOf(const Node& node) const;
    void Start();
    void Update(std::size_t checked);
    void LookForOtherGeometry(std::size_t count);
    void LookForOtherGeometry(const Member& member);
    void ForgetParts();
    void AddMeshes(MeshNode& node);
    void AddMember(MeshNode& node, Mesh& mesh);
    void DropMembers(const Node& node);
    void MakeLoose(Index index);
    void LeaveLoose(Member& member);
    WorldBox BoxOf(const Member& member) const;
    void PutIntoTree(Index index, const WorldBox& box);
    void PutRestedIntoTree();
    void FollowMoved();
    static bool IsShown(const Member& member);
    void Look(Question& question, const Member& member);
    void LookAtTriangles(Question& question, const Mesh& mesh);
    void LookAtTriangles(Question& question, const Mesh& mesh, std::size_t first, std::size_t last) const;
    const Parts& PartsOf(const Mesh& mesh);

    std::vector<Member> m_members;
    std::vector<Index> m_free;
    std::vector<Loose> m_loose;
    std::vector<Index> m_moved;   ///< of the loose
    std::vector<Index> m_unknown; ///< those that are
    std::size_t m_foreignCount = 0;
    NodeTable m_table; ///< gives the first member of a node
    CullTree m_tree;
    std::size_t m_stillCount = 0; ///< in the tree and not loose
    std::unordered_set<Node*> m_new;     ///< whose meshes are to be taken in anew
    std::unordered_set<Node*> m_changed; ///< whose meshes may have other geometry
    std::unordered_map<const RawMesh*, Parts> m_parts;
    std::vector<std::pair<double, std::size_t>> m_order; ///< scratch
    std::uint64_t m_listing = 0;
    std::size_t m_unchecked = 0;   ///< members that may have other geometry since
    std::size_t m_nextChecked = 0; ///< before the next of them
    unsigned int m_question = 0;
    std::size_t m_movedCount = 0; ///< since the last question
    bool m_isDeaf = false;        ///< all move: it isn't noted which
    bool m_hasStarted = false;
    bool m_isStarting = false;    ///< the tree is to be made of all at once

    std::optional<NearView> m_view; ///< that the answer is for; none where something has changed
    double m_enough = 0.0;
    std::size_t m_most = 0;
    double m_answer = 0.0;
};

} // namespace OV::Host::Detail
