#pragma once

#include "orvane/Export.h"
#include "orvane/base/WatchedPtr.h"
#include "orvane/renderdata/MeshFormatKey.h"

#include <cstdint>
#include <vector>

namespace OV
{

class Mesh;
class MeshES20;
class SharedBufferPool;

/// GPU copy of the vertices and indices of several meshes of one format.
///
/// Owns one vertex and one index buffer, made by GenerateBuffers and deleted when the last
/// mesh leaves; the object deletes itself then. Meshes keep their place for life; space is
/// never given back singly. Indices are 16-bit and local to their mesh.
///
/// A vertex is position (3 floats), normal (3 floats), texture coordinate (2 floats) and
/// colour (4 floats), each where the format has it, then zeros up to the stride.
class ORVANE_API SharedBuffer
{
public:
    /// Above this many bytes of vertices a buffer that is in use takes no further mesh. One
    /// mesh alone may be larger.
    static constexpr std::int64_t MaxBytes = 2000000;

    /// An empty buffer, to be created with new. Not GL.
    explicit SharedBuffer(SharedBufferPool* owner);

    SharedBuffer(const SharedBuffer&) = delete;
    SharedBuffer& operator=(const SharedBuffer&) = delete;

    /// Takes the mesh in unless a buffer already in use would pass MaxBytes. The first mesh
    /// settles the layout for all.
    /// @return false, with nothing changed, when it is refused.
    bool TryAddMesh(MeshES20* meshData);

    /// Packs every held mesh and uploads once. GL. Without meshes, or after an earlier call,
    /// it does nothing.
    void GenerateBuffers();

    /// Takes the mesh out and leaves the others where they are. When it was the last one, the
    /// GL buffers are deleted (GL) and so is this object. A mesh that isn't held changes
    /// nothing.
    void RemoveMesh(MeshES20* meshData);

    /// Another for each buffer of the process: names that GL gives come again, and addresses too.
    std::uint64_t GetNumber() const { return m_number; }

    WatchedPtr<SharedBufferPool> pool; ///< owner; reads null once it is gone
    unsigned int vertexBufferId = 0;
    unsigned int indexBufferId = 0;
    int stride = 0;       ///< bytes; 0 until the first mesh settles the layout
    int normalOffset = 0; ///< bytes from the start of a vertex; -1: absent. Likewise below.
    int textureOffset = 0;
    int colorOffset = 0;
    std::vector<MeshES20*> meshes; ///< in order of arrival; not owned

    /// Vertex count times stride, summed over every mesh ever accepted: never reduced.
    std::int64_t bytesUsed = 0;

private:
    friend class SharedBufferPool;

    ~SharedBuffer();

    void SettleLayout(const Mesh& first);
    void Pack(float* vertices, unsigned short* indices);
    void DeleteBuffers();

    /// Takes this buffer out of every pool that lists it as open.
    void Close();

    const std::uint64_t m_number;
    MeshFormatKey m_format;
    std::vector<SharedBufferPool*> m_listedBy; ///< the pools whose map holds this buffer
};

} // namespace OV
