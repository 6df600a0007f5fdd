#pragma once

#include "orvane_host/geometry/CullTree.h"
#include "orvane_host/present/BatchSettings.h"
#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/detail/Batch.h"
#include "orvane_host/present/detail/BatchColors.h"
#include "orvane_host/present/detail/BatchMark.h"
#include "orvane_host/present/detail/MaterialLook.h"
#include "orvane_host/present/detail/NodeTable.h"
#include "orvane/base/WatchedPtr.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Vector3d.h"
#include "orvane/scene/NodeListener.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace OV
{

class Material;
class MeshNode;
class MeshStyleES20;

} // namespace OV

namespace OV::Host::Detail
{

/// Draws what stands still in a scene as few large meshes, and leaves out what a view doesn't see.
///
/// The nodes of the scene stay what they are; they tell what changes. A mesh at a node that moves
/// once, or is described anew with as many vertices, is written anew where it is in its batch. When
/// it moves on, is hidden or gets another material or other geometry, it leaves, is drawn by itself
/// from then on, and comes back when it has rested. One that was only hidden comes back at once,
/// since its room in the batch still shows it.
///
/// Of many that move or come back at once a frame writes only so many vertices; the others are
/// drawn by themselves meanwhile.
///
/// A batch has the meshes of one material. Of materials that differ in their colours alone, where there are several,
/// it has those of all that stand near each other, and its vertices hold the number of the material: see LookAlikes.
///
/// Not in batches: what is see-through or drawn as points, whatever its depth, or by draw IDs; what
/// has a material of its node's; large meshes, which gain nothing, and those at many nodes that
/// would take much memory; classes of the host's.
class Batches final : public NodeListener, private BatchMarkOwner
{
public:
    using Path = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

    /// Frames that a mesh at a node has to stand still before it is drawn with others again.
    static constexpr unsigned int kRest = 8;

    /// Vertices that a frame writes of what moves and what comes back: a fraction of a millisecond.
    static constexpr std::size_t kMostWritten = 65536;

    /// Or so many for each mesh at a node that is drawn by itself, where that is more: a part of what
    /// drawing it takes.
    static constexpr std::size_t kWrittenForSingle = 16;

    /// Frames at most for which what moves, and was seen, is drawn without being looked at again: a look
    /// costs a tenth of its draw.
    static constexpr unsigned int kSeenFor = 32;

    /// Frames for which it isn't asked which nodes move, while as many do as there are.
    static constexpr unsigned int kDeafFor = 64;

    /// With so many meshes at nodes BatchUse::Auto draws them together.
    static constexpr std::size_t kWorthwhile = 400;

    /// Look-alikes are drawn together once they are so many: each saves a change of material and draws, and they
    /// take a program of their own.
    static constexpr std::size_t kFewestAlikes = 5;

    /// Whether BatchUse::Auto draws the things of a scene together.
    static bool IsWorthwhile(const Scene& scene);

    explicit Batches(Scene& scene);

    /// GL.
    ~Batches() override;

    /// Nodes that are drawn by themselves, in place of those named before.
    void KeepApart(const std::vector<const MeshNode*>& nodes);

    /// Likewise those that EditInContext leaves their colours: those whose path begins so.
    void KeepEdited(const std::optional<Path>& path);

    /// Only what is turned and moved is drawn together, not what is scaled or mirrored: for looks
    /// that shade such things in a way of their own.
    void KeepRigid(bool onlyRigid);

    /// Takes in what has changed, once a frame. GL.
    void Update();

    /// Lists the meshes of the scene's opaque materials, all of them and those that the camera may
    /// see. GL.
    /// @param leastShare see BatchES20::See.
    /// @param isAllNeeded whether somebody asks for all: materials of which the camera sees nothing may be
    ///        left out otherwise.
    void List(PresentationFrame& frame, float leastShare, bool isAllNeeded, std::vector<RenderItemES20>& all,
              std::vector<RenderItemES20>& seen);

    /// Lists likewise those of the scene's see-through materials. GL.
    void ListAlpha(PresentationFrame& frame, float leastShare, bool isAllNeeded, std::vector<RenderItemES20>& all,
                   std::vector<RenderItemES20>& seen);

    /// Lists the meshes of all materials node by node that a view may see. GL.
    void ListSingly(PresentationFrame& frame, const ViewVolume& view, std::vector<RenderItemES20>& items);

    BatchCounts Count() const;

    void NodeChanged(Node& node, NodeChange change) override;
    void NodeGone(const Node& node) override;
    void SceneGone() override;

private:
    using Index = std::uint32_t;
    static constexpr Index kNone = ~Index{0};

    /// Nodes that have moved are looked up by so many at most.
    static constexpr std::size_t kMostMoved = 1024;

    /// Beside those of NodeChange: the geometry of one of a node's meshes.
    static constexpr unsigned int GeometryChange = 0x100;

    struct Batch
    {
        std::unique_ptr<BatchMesh> mesh;
        BatchES20* data; ///< the mesh's
    };

    struct LookAlikes;

    /// The meshes of a material.
    struct Group
    {
        // What a frame reads of a material that the camera doesn't see stands first and together.
        WatchedPtr<Material> material;
        std::vector<Batch> batches;
        std::size_t singleCount = 0; ///< of singles those that are
        std::size_t treeCount = 0;   ///< of these those in the tree
        std::uint64_t seenLook = 0;  ///< the last that saw one of those in the tree
        std::uint64_t listing = 0;
        LookAlikes* alikes = nullptr; ///< whose batches it shares; null for none
        std::uint32_t alikesPlace = 0; ///< in their list
        std::uint64_t alikesListing = 0; ///< the last that found it as they are
        Index order = 0; ///< among the materials, in the last listing that had it
        unsigned char alikesNumber = 0; ///< by which their vertices name its material
        bool isTogether = false; ///< whether its meshes may be drawn together
        bool itemsHold = false;
        bool isWhole = false; ///< the items are all that the material lists, and one may stand for them
        bool hasNew = false;  ///< one of the rested was never drawn
        bool hasLeft = false; ///< one of the singles is none any more
        bool isRestedDue = false; ///< the rested are to be looked at: one has come, or is another now
        std::map<BatchKind, std::vector<Index>> rested; ///< to be put into batches, or alone of their kind

        std::unique_ptr<BatchMesh> probe; ///< without geometry, to ask for the render data of the material
        MeshStyleES20* probed = nullptr;  ///< its answer
        std::uint64_t probedUnder = 0;    ///< the revision of materials under which that holds
        std::vector<Index> singles;       ///< in the order of drawing, once sorted

        // The singles ready to be drawn, while nothing has changed.
        std::vector<RenderItemES20> items;
        std::vector<std::pair<Index, Index>> spans; ///< in singles: where those of each item begin and end
        std::vector<unsigned int> lookDue; ///< for each item the frame in which it is looked at again
        const MeshStyleES20* style = nullptr; ///< only to be compared
        TextureFactors factors;
        MaterialColors colors; ///< those in which the look-alikes' batches show it
    };

    /// As many materials that differ in their colours alone as a program takes, those near each other where they are
    /// more.
    ///
    /// A group of them keeps what is drawn by itself, and gives to these what is to be drawn together. Nobody tells
    /// what is written into a material's fields: each is compared in each frame that sees any of the batches, and
    /// leaves when it has become another.
    struct LookAlikes
    {
        MaterialLook look;
        BatchColors colors; ///< of the groups
        std::vector<Group*> groups;
        std::vector<Batch> batches;
        std::map<BatchKind, std::vector<Index>> rested; ///< to be put into batches by this listing
        std::size_t found = 0;   ///< of the groups those that the listing has, and that are as they were
        bool isTogether = false; ///< they are so many that they are drawn together
        bool isLooked = false;   ///< whether this listing compares them
        bool isRestedDue = false;
    };

    /// Where batches come to stand.
    struct Shelf
    {
        std::vector<Batch>& batches;
        Material& material;
        TextureFactors factors;
        const LookAlikes* alikes; ///< null for those of one material
    };

    /// A mesh at a node. Every thing in a scene has one.
    struct Member
    {
        MeshNode* node;
        Mesh* mesh;
        Group* group;     ///< null without a material
        BatchES20* batch; ///< that it has room in; null for none
        Index piece;
        Index nextOfNode;
        Index nextOfMark;
        Index previousOfMark;
        Index loose;           ///< among m_loose; kNone while it rests in a batch
        std::uint16_t changes; ///< of the node, not yet taken in: at the first of its members
        unsigned char losses : 3; ///< how often its mark was taken away
        bool movesOn : 1; ///< it is drawn by itself, is in no tree, and waits for its node, which has no other, to rest
        bool hasMark : 1;
        bool isPlain : 1;    ///< of the engine's own classes
        bool isReshaped : 1; ///< the geometry is another than that of its room in the batch
        bool isFresh : 1;    ///< its room in the batch shows it as it is
        bool isSingle : 1;
        bool isQueued : 1;
        bool isGone : 1;
        bool isRested : 1; ///< among the group's rested
        bool isNew : 1;    ///< it was never drawn
        bool isBoxKnown : 1;
        bool isBoxTrue : 1; ///< the box that the geometry names encloses it
    };

    /// What there is to know of a member besides while it is drawn by itself or has moved lately.
    struct Loose
    {
        CullTree::Entry leaf = CullTree::NoEntry; ///< of what stands still and is drawn by itself
        unsigned int due = 0;                     ///< frame from which on it has rested
        std::uint64_t seenLook = 0;               ///< the last that saw the leaf
    };

    void MarkGone(BatchMark& mark) override;

    Index FirstOf(const Node& node) const;
    void Note(Index first, unsigned int change);
    void NoteMoved();
    void NotePlace(const Node* node);
    void NoteNew(MeshNode& node);
    void Start();
    void ChooseAnchor();
    void PlaceNodes();
    std::unique_ptr<BatchMesh> TakeMesh(Material& material, unsigned int flags);
    void GiveBack(std::unique_ptr<BatchMesh> mesh);
    void GiveBack(Group& group);
    void FetchAhead(std::size_t changed) const;
    void Sync(Index first);
    void AddMeshes(MeshNode& node);
    Index AddMember(MeshNode& node, Mesh& mesh);
    void DropMember(Index index);
    void Place(Index index, unsigned int changes);
    void Move(Index index);
    bool WriteInPlace(Index index);
    void EnsureMark(Index index);
    void UnlinkMark(Member& member);
    void LeaveGroup(Index index);
    void LeaveBatch(Member& member);
    bool MakeSingle(Index index, bool isSingle);
    void PutIntoTree(Index index);
    void LeaveTree(Member& member);
    Loose& LooseOf(Index index);
    void FreeLoose(Member& member);
    void Stir(Index index);
    void Queue(Index index);
    void Rest(Index index, unsigned int frames);
    void MakeRested(Index index);
    static void LookAtRested(const Member& member);
    void WakeRested();

    Group* GroupOf(Material& material);
    bool IsPlain(const MeshNode& node, Mesh& mesh) const;
    bool IsApart(const MeshNode& node) const;
    bool CanBeTogether(const Member& member) const;
    bool HasRested(const Member& member) const;
    void SetMovesOn(Member& member, bool movesOn);
    bool DoAllMoveOn() const;
    void ListenOrNot();
    bool StandsAlone(const Member& member) const;
    WorldBox BoxOf(Member& member) const;
    bool Sees(const ViewVolume& view, float leastShare, Member& member) const;
    void NoteAll();
    void ForgetListed();
    void DropDeadGroups();
    static bool IsShown(const Member& member);
    BatchKind KindOf(const Member& member) const;
    BatchES20::Piece PieceOf(Index index) const;
    Transform PlaceOf(const MeshNode& node) const;

    MeshStyleES20* Probe(PresentationFrame& frame, Group& group);
    void Build(StageAccess& renderer, Group& group);
    void Build(StageAccess& renderer, Group& group, const BatchKind& kind, std::vector<Index>& members);
    bool Returns(Group& group, const BatchKind& kind, Index index);
    void KeepSingle(Index index);
    void KeepSingle(const Group& group, const std::vector<Index>& members);
    void PutTogether(StageAccess& renderer, const Shelf& shelf, const BatchKind& kind, std::vector<Index>& members);
    static Vector MiddleOf(const Member& member);
    bool IsStill(const BatchES20& batch, std::size_t piece, const Member& member) const;
    void Absorb(const Shelf& shelf, const BatchKind& kind, std::vector<Index>& members);
    void MakeBatch(StageAccess& renderer, const Shelf& shelf, const BatchKind& kind, const Index* first,
                   const Index* last);
    void Show(Index index);
    void SetTogether(Group& group, bool together);
    void RestSingles(const Group& group);
    void Dissolve(Group& group);
    void DissolveBatches(Group& group);
    void DropUnused(std::vector<Batch>& batches);
    void ListBatches(std::vector<Batch>& batches, MeshStyleES20& style, const ViewVolume& view, float leastShare,
                     std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen);

    static void SortByPlace(std::vector<Group*>& groups, std::size_t count);
    void JoinNew();
    LookAlikes& AlikesOf(const MaterialLook& look);
    void JoinAlikes(Group& group);
    void LeaveAlikes(Group& group);
    void ForgetAlikes(Group& group);
    void PutApart(Index index);
    void BeginAlikes(const ViewVolume& view, float leastShare, bool isAllNeeded);
    void FollowLook(LookAlikes& alikes);
    void StartTogether(LookAlikes& alikes);
    bool StaysAlike(Group& group);
    bool IsMissing(const Group& group) const { return group.alikesListing != m_listing; }
    static bool IsPoints(const Group& group);
    static bool HasNoneApart(const Group& group)
    {
        return !group.isRestedDue && group.batches.empty() && group.singles.empty();
    }
    void ListAlikes(PresentationFrame& frame, const ViewVolume& view, float leastShare,
                    std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen);
    void ListAlikes(PresentationFrame& frame, LookAlikes& alikes, const ViewVolume& view, float leastShare,
                    std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen);
    void BuildAlikes(StageAccess& renderer, LookAlikes& alikes, Material& drawnWith);
    void BuildAlikes(StageAccess& renderer, LookAlikes& alikes, Material& drawnWith, const BatchKind& kind,
                     std::vector<Index>& members);
    std::pair<Group*, MeshStyleES20*> FirstDrawn(PresentationFrame& frame, const LookAlikes& alikes);
    void ListLate(PresentationFrame& frame, std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen);
    void DropMissing(LookAlikes& alikes);

    template <class Visit>
    void ForEachMember(const Group& group, Visit visit);

    bool IsOutside(const Group& group, const ViewVolume& view, float leastShare) const;
    bool AreSinglesOutside(const Group& group) const;
    void ListGroups(PresentationFrame& frame, bool areOpaque, float leastShare, bool isAllNeeded,
                    std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen);
    void ListGroup(PresentationFrame& frame, Group& group, const ViewVolume& view, float leastShare,
                   std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen);
    void MakeItems(StageAccess& renderer, Group& group, MeshStyleES20& style);
    bool ListAsWhole(PresentationFrame& frame, Group& group, const ViewVolume& view, float leastShare,
                     std::vector<RenderItemES20>& all, std::vector<RenderItemES20>& seen);
    bool IsItemSeen(Group& group, std::size_t item, const ViewVolume& view, float leastShare);
    void ListSeen(Group& group, const ViewVolume& view, float leastShare, std::vector<RenderItemES20>& seen);
    void ListIfSeen(Group& group, std::size_t item, const ViewVolume& view, float leastShare,
                    std::vector<RenderItemES20>& seen);
    void ListSeenOneByOne(const Group& group, std::size_t item, const ViewVolume& view, float leastShare,
                          std::vector<RenderItemES20>& seen);
    bool IsSeen(Member& member, const ViewVolume& view, float leastShare) const;
    void Look(const ViewVolume& view, const Matrix& worldToClip, float leastShare);
    bool HasData(StageAccess& renderer, const Member& member);

    template <class Lister>
    void ForEachMaterial(PresentationFrame& frame, bool areOpaque, Lister list);
    void FetchAhead(bool areOpaque, std::size_t material) const;
    Group* ListedGroup(bool areOpaque, std::size_t place, const Material* material);

    std::vector<Member> m_members;
    std::vector<Index> m_freeMembers;
    std::vector<Loose> m_loose;
    std::vector<Index> m_freeLoose;
    NodeTable m_table; ///< gives the first member of a node
    /// Have moved, and were not looked up yet: many at once wait for memory together. Only to be compared.
    std::vector<const Node*> m_moved;
    std::vector<std::pair<Node*, Index>> m_changed; ///< the first of its members at that time
    std::vector<MeshNode*> m_new; ///< that may show meshes and have no member; null once they are gone
    std::unordered_map<const Node*, std::size_t> m_newPlaces;
    std::vector<Index> m_gone;
    std::deque<std::pair<unsigned int, Index>> m_resting;
    std::unordered_map<const Material*, std::unique_ptr<Group>> m_groups;
    std::uint64_t m_groupsUnder = 0; ///< the revision of materials under which none of them is without one
    std::vector<std::unique_ptr<Group>> m_deadGroups;
    std::vector<Group*> m_newGroups; ///< not yet asked for look-alikes
    std::multimap<MaterialLook, std::unique_ptr<LookAlikes>> m_alikes;
    std::uint64_t m_listing = 0; ///< another number for each listing of the opaque materials
    /// Materials of a list with their groups, as they were found.
    std::vector<std::pair<const Material*, Group*>> m_listed[2];
    CullTree m_tree; ///< of what is drawn by itself
    BatchMarkLink* m_link;
    std::unordered_set<const Node*> m_apart;
    std::optional<Path> m_edited;
    QGM::Vector3d m_anchor{0.0, 0.0, 0.0}; ///< world space: where batches count from
    std::unique_ptr<MeshNode> m_standIns[2][2]; ///< by whether they mirror; for the whole and the seen
    /// Out of use. What dies while a frame is drawn counts as gone to its end, and what came to
    /// stand at its address would too.
    std::vector<std::unique_ptr<BatchMesh>> m_spareMeshes;
    std::vector<Material*> m_materials;
    std::vector<Index> m_found;
    std::vector<Index> m_later;
    std::vector<Index> m_homeless;
    std::vector<Index> m_late; ///< drawn by itself from this frame on, whose material was listed before
    bool m_isLate = false;     ///< whether the materials were listed
    std::vector<RenderItemES20> m_probed;
    std::vector<float> m_scratch;
    std::size_t m_singleCount = 0;
    std::size_t m_movesOnCount = 0;
    std::size_t m_movedCount = 0; ///< of those that move on, in this frame
    bool m_isDeaf = false;        ///< whether it isn't noted of each node that it moves on, since all do
    bool m_wasDeaf = false;       ///< it wasn't noted since the frame before
    unsigned int m_deafEnd = 0;   ///< frame in which it is noted again
    std::size_t m_writable = 0; ///< vertices that this frame may still write
    bool m_isFull = false;      ///< what comes back has to wait for the next frame
    Matrix m_lookMatrix;
    float m_lookShare = -1.0f;
    std::uint64_t m_look = 0;     ///< another number for each other view
    std::uint64_t m_treeLook = 0; ///< and for each other tree
    bool m_treeHolds = false;
    unsigned int m_frame = 0;
    bool m_onlyRigid = false;
    bool m_hasStarted = false;
};

} // namespace OV::Host::Detail
