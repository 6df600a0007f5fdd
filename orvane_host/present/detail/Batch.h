#pragma once

#include "orvane_host/geometry/ViewVolume.h"
#include "orvane_host/present/detail/BatchPiece.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Mesh.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace OV
{

class DepthIdPassEffectES20;
class Material;
class MeshNode;

} // namespace OV

namespace OV::Host::Detail
{

class BatchColors;

/// The nodes that stand for those of a batch when it is drawn. Which one a batch is drawn at tells
/// how much of it is.
struct BatchNodes
{
    const MeshNode* whole = nullptr; ///< all that is in it
    const MeshNode* seen = nullptr;  ///< what See found
};

/// Several meshes at several nodes in one pair of buffers, drawn in as few calls as it takes to
/// leave out those that are off.
///
/// Pieces keep their room for life. Nothing is kept of the geometry but what GL has.
class BatchES20 final : public MeshES20
{
public:
    static constexpr std::size_t MostVertices = 65536;

    struct Piece
    {
        const Mesh* mesh;
        Transform place; ///< from the mesh's space to that of the batch
        int userData;
        std::uint32_t owner; ///< the caller's number for it
        unsigned char material; ///< its number, where pieces are of several
    };

    /// Makes the buffers, with all pieces on. GL. They have at most MostVertices together and are
    /// sound.
    /// @param shown has the material and flags that the pieces are drawn with, and no geometry.
    /// @param colors of the materials by number, where pieces are of several; it outlives the batch. Null for one.
    BatchES20(Mesh* shown, SharedBufferPool* bufferPool, const BatchNodes& nodes, const BatchKind& batchKind,
              const std::vector<Piece>& pieces, const TextureFactors& factors, const BatchColors* colors);

    /// GL.
    ~BatchES20() override;

    void Render(EffectES20* effect, const std::vector<MeshNode*>& nodes, bool specificNode) override;

    /// Whether a mesh is a batch of pieces of several materials, to be drawn in the colours of each.
    static bool HoldsColors(const Mesh& drawn);

    const BatchKind& GetKind() const { return m_kind; }
    std::size_t GetPieceCount() const { return m_pieces.size() - 1; }
    std::uint32_t OwnerOf(std::size_t piece) const { return m_pieces[piece].owner; }
    std::size_t GetOnCount() const { return m_onCount; }
    /// Of the pieces that are on.
    std::size_t GetTriangleCount() const;
    /// Of the pieces that were not given up.
    std::size_t GetVertexCount() const { return m_vertexCount; }
    /// Of the buffers, identifiers included.
    std::size_t GetBytes() const;
    const WorldBox& GetBox() const { return m_box; }
    /// Another number, over all batches of the process, whenever something else is drawn.
    std::uint64_t GetRevision() const { return m_revision; }

    void Switch(std::size_t piece, bool on);
    void SetUserData(std::size_t piece, int userData);

    /// Asks the processor for what is kept of a piece, which is about to be looked at.
    void FetchAhead(std::size_t piece) const
    {
        __builtin_prefetch(&m_pieces[piece]);
        // Where the next one begins this one ends.
        __builtin_prefetch(&m_pieces[piece + 1].owner);
        __builtin_prefetch(&m_partBoxes[piece / kPart]);
    }

    /// Whether the normals of a piece stand as those of its mesh, apart from its positions: a shift doesn't read
    /// them.
    bool HasNormalsOfMesh(std::size_t piece) const
    {
        return m_areNormalsApart && m_isShifted[piece];
    }

    /// Whether a mesh fits into the room of a piece.
    bool Fits(std::size_t piece, const Mesh& mesh) const;

    /// Writes a piece anew. GL. The mesh fits. EndWriting comes before anything else is drawn.
    /// @param isReshaped whether the geometry is another, not only its place.
    /// @param scratch keeps its room from one piece to the next.
    void Write(std::size_t index, const Piece& piece, const TextureFactors& factors, bool isReshaped,
               std::vector<float>& scratch);

    /// Takes back what writing has left bound. GL.
    static void EndWriting();

    static constexpr std::uint32_t NoOwner = ~std::uint32_t{0};

    /// Leaves a piece's room unused for good, and without an owner.
    void GiveUp(std::size_t piece);

    /// Finds out what a view sees.
    /// @param leastShare of the height of the picture: pieces below it are left out.
    /// @param look another number for every other view or share; what was found for one is kept.
    /// @return whether it sees anything.
    bool See(const ViewVolume& view, float leastShare, std::uint64_t look);

    /// Calls a function with the owner of each piece that is on and that a view may see.
    template <class Found>
    void Collect(const ViewVolume& view, Found found) const
    {
        const std::size_t count = GetPieceCount();
        for (std::size_t i = 0; i < count; ++i)
        {
            if (i % kRow == 0 && !view.Sees(m_rowBoxes[i / kRow]))
            {
                i += kRow - 1;
            }
            else if (i % kPart == 0 && !view.Sees(m_partBoxes[i / kPart]))
            {
                i += kPart - 1;
            }
            else if (IsOn(i) && view.Sees(m_pieces[i].box))
            {
                found(m_pieces[i].owner);
            }
        }
    }

private:
    static constexpr std::size_t kRow = 64; ///< pieces that are looked at together, a bit each
    /// Pieces of a row that are culled together: so few that little of what lies outside is drawn, and
    /// so many that what is drawn is few ranges.
    static constexpr std::size_t kPart = 8;

    /// It ends where the next one begins.
    struct Room
    {
        WorldBox box;
        std::uint32_t firstVertex;
        std::uint32_t firstIndex;
        std::uint32_t owner;
        int userData;
    };

    /// Ranges of the index buffer, ready for GL.
    struct Runs
    {
        std::vector<int> counts;
        std::vector<const void*> offsets;
        std::vector<std::uint64_t> bits; ///< what they are made of
        bool isValid = false;
    };

    static std::uint64_t NextRevision();

    std::size_t VerticesOf(std::size_t piece) const
    {
        return m_pieces[piece + 1].firstVertex - m_pieces[piece].firstVertex;
    }
    std::size_t IndicesOf(std::size_t piece) const
    {
        return m_pieces[piece + 1].firstIndex - m_pieces[piece].firstIndex;
    }
    BatchLayout LayoutOf(std::size_t vertices) const { return BatchLayout(m_kind.streams, vertices, m_colors); }
    WorldBox ToWorld(const WorldBox& box) const;
    bool Search(const ViewVolume& view, float leastShare);
    std::uint64_t BitsSeen(const ViewVolume& view, ViewVolume::PlaneSet planes, float leastShare,
                           std::size_t row) const;
    bool IsOn(std::size_t piece) const { return ((m_on[piece / kRow] >> (piece % kRow)) & 1u) != 0; }
    const Runs& RunsOf(const MeshNode* node);
    void MakeRuns(Runs& runs, const std::vector<std::uint64_t>& bits) const;
    void WidenBoxes(std::size_t piece);
    void FitBoxes();
    void DrawRuns(const Runs& runs) const;
    void DrawRunsInColors(EffectES20& effect, const Runs& runs) const;
    void DrawIdentifiers(DepthIdPassEffectES20& effect, MeshNode* node, const Runs& runs);
    bool UploadIdentifiers();

    // What a frame that doesn't see it reads stands first and together.
    std::uint64_t m_look = 0;         ///< the one that was found out about; 0 for none
    std::uint64_t m_lookRevision = 0; ///< of what was drawn then
    std::uint64_t m_revision = NextRevision();
    std::size_t m_onCount = 0;
    std::size_t m_vertexCount = 0;
    bool m_seesAll = true;
    bool m_seesAny = false;
    WorldBox m_box;

    static inline bool s_isBound = false; ///< whether writing has left a buffer bound

    BatchNodes m_nodes;
    BatchKind m_kind;
    std::vector<Room> m_pieces; ///< and the end of the last
    std::vector<std::uint64_t> m_on;
    bool m_areNormalsApart = false;
    std::vector<bool> m_isShifted; ///< for each piece whether its place neither turned nor scaled it
    std::vector<WorldBox> m_rowBoxes;  ///< of kRow pieces each
    std::vector<WorldBox> m_partBoxes; ///< of kPart pieces each
    std::size_t m_writes = 0; ///< since the boxes were fitted: each may have left them too wide
    Runs m_whole;
    Runs m_seen;
    std::vector<std::uint64_t> m_seenBits;
    std::vector<bool> m_seenHolds; ///< for each row, while it is looked at as before and nothing in it has changed
    unsigned int m_identifiers = 0; ///< buffer of a colour for each vertex; 0 until it is needed
    bool m_identifiersHold = false;
    const BatchColors* m_colors; ///< null where all pieces have one material
    int m_materialOffset; ///< of the byte in a vertex that is the number of its material
};

/// The mesh that a batch is drawn as. It is in no scene, and its material does not know it.
class BatchMesh final : public Mesh
{
public:
    BatchMesh() : Mesh(std::shared_ptr<RawMesh>()) {}
    ~BatchMesh() override;

    void Become(Material* ownMaterial, unsigned int ownFlags);
};

} // namespace OV::Host::Detail
