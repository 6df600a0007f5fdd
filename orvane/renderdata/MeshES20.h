#pragma once

#include "orvane/Export.h"
#include "orvane/base/Object.h"
#include "orvane/renderdata/SharedBufferPoolPtr.h"

#include <cstdint>
#include <vector>

namespace OV
{

class EffectES20;
class Mesh;
class MeshNode;
class SharedBuffer;
class SharedBufferPool;

/// Render data of a mesh: where it lies in a shared buffer, and how it is drawn.
///
/// Hangs on a Mesh or its RawMesh, which owns it. Offsets are bytes in the vertex buffer and
/// hold after the upload; until then nothing is drawn.
class ORVANE_API MeshES20 : public Object
{
public:
    /// Joins a buffer of the pool if the mesh has a vertex; a mesh without one stays outside
    /// for good. GL when the pool's open buffer was full.
    /// @param pool not owned; not null. It may die first.
    MeshES20(Mesh* mesh, SharedBufferPool* pool);

    /// Leaves the buffer. GL when this was its last mesh.
    ~MeshES20() override;

    MeshES20(const MeshES20&) = delete;
    MeshES20& operator=(const MeshES20&) = delete;

    /// Draws the mesh once for each node that is visible and ready, in list order. GL.
    ///
    /// Before the upload, with a null effect, or when the mesh has no vertices any more, it
    /// returns with no state changed. Where the mesh has fewer indices than were uploaded, those
    /// are drawn. The effect must have been applied.
    /// @param specificNode true if nodes holds the one node of a render item; false for the
    ///        mesh's own list, of which nodes with a material of their own are left out.
    virtual void Render(EffectES20* effect, const std::vector<MeshNode*>& nodes, bool specificNode);

    /// Bytes from one vertex to the next.
    int GetStride() const { return stride; }

    /// Of this mesh's first vertex.
    int GetPositionOffset() const { return positionOffset; }

    /// Of the first normal; negative if the mesh has none. Likewise below.
    int GetNormalOffset() const { return normalOffset; }
    int GetTextureOffset() const { return textureOffset; }
    int GetColorOffset() const { return colorOffset; }
    int GetScalarOffset() const { return scalarOffset; }

    Mesh* GetMesh() const { return mesh; }

    /// Whether DrawAsBase was called.
    bool DrawsAsBase() const { return m_drawsAsBase; }

    /// Whether the clip planes cut this mesh.
    void EnableClippingPlane(bool enable)
    {
        if (clippingPlaneEnabled != enable)
        {
            clippingPlaneEnabled = enable;
            ++s_listingRevision;
        }
    }

    /// Another number whenever any mesh loses render data, or the clip planes begin or cease to cut
    /// one: what was listed for drawing under the same number still holds. A mesh that is new to its
    /// material concerns that one alone, which knows its meshes by their own revision.
    static std::uint64_t GetListingRevision() { return s_listingRevision; }

    /// Binds the pair of buffers unless the vertex buffer is the one bound last: the two live
    /// and die together. GL.
    static void ApplyBuffer(unsigned int vertexBuffer, unsigned int indexBuffer)
    {
        if (s_vertexId != vertexBuffer)
        {
            BindBuffer(vertexBuffer, indexBuffer);
        }
    }

    /// Forgets which buffer was bound last. For whoever binds buffers otherwise.
    static void ResetBufferCache();

    /// Name of the vertex buffer that the engine bound last, for the whole process; 0: unknown.
    static unsigned int s_vertexId;

    // What a draw reads stands first and together, as in a mesh.
    Mesh* mesh = nullptr; ///< not owned
    unsigned int vertexBufferId = 0;
    unsigned int indexBufferId = 0;
    int stride = 0;
    int positionOffset = 0;
    int normalOffset = 0;
    int textureOffset = 0;
    int colorOffset = 0;
    int scalarOffset = 0;         ///< -1 after the upload: no scalar stream is packed
    std::int64_t indexOffset = 0; ///< bytes in the index buffer of this mesh's first index
    std::int64_t indexCount = 0;  ///< number of indices uploaded

    /// Vertices uploaded beyond the one that the largest index names; negative when that index
    /// leads out of the mesh, which is then not drawn.
    int spareVertices = 0;
    bool clippingPlaneEnabled = false;

private:
    bool m_drawsAsBase = false;

public:
    /// Placed this mesh; reads null once it is gone, and the next frame replaces this object.
    SharedBufferPoolPtr pool;
    SharedBuffer* sharedBuffer = nullptr; ///< null for a mesh that had no vertices

protected:
    /// Said at construction by a class that has no Render of its own: its meshes may then be drawn with others
    /// in one loop, without a call of it.
    void DrawAsBase() { m_drawsAsBase = true; }

    /// Whether a node of the list given to Render is drawn: visible, ready, and not left to a
    /// render item that names it.
    static bool IsDrawn(const MeshNode& node, bool specificNode);

    /// How many indices a draw takes, and where in the index buffer they begin: never more than
    /// were uploaded or than the mesh has now, and none where one would read past the mesh's vertices.
    /// @param reach how far beyond the vertex of an index a draw reads.
    int DrawnIndexCount(int reach = 0) const;
    const void* FirstIndex() const;

private:
    friend class SharedBufferPool;

    static std::uint64_t s_listingRevision;

    static void BindBuffer(unsigned int vertexBuffer, unsigned int indexBuffer);

    /// @return the depth function that was in force.
    static int PassAlways();
};

} // namespace OV
