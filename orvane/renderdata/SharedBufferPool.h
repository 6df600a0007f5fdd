#pragma once

#include "orvane/Export.h"
#include "orvane/base/Lifetime.h"
#include "orvane/renderdata/MeshFormatKey.h"
#include "orvane/renderdata/SharedBufferPoolPtr.h"

#include <map>

namespace OV
{

class MeshES20;
class SharedBuffer;

/// Collects meshes by vertex format while a frame is prepared, and uploads them together.
///
/// Holds only the buffers that are still open for filling; an uploaded buffer belongs to the
/// meshes in it. A copy lists the same open buffers; whichever pool uploads one first takes
/// it out of both. Neither deletes a buffer.
class ORVANE_API SharedBufferPool
{
public:
    SharedBufferPool() = default;
    SharedBufferPool(const SharedBufferPool& other);
    SharedBufferPool(SharedBufferPool&& other);
    SharedBufferPool& operator=(const SharedBufferPool& other);
    SharedBufferPool& operator=(SharedBufferPool&& other);
    ~SharedBufferPool();

    /// Places the mesh, which must have vertices, in the open buffer of its format. GL when
    /// that buffer is full: it is uploaded at this moment and a fresh one takes its place.
    /// @return the buffer that holds the mesh now; it is never null.
    SharedBuffer* AddMesh(MeshES20* meshData);

    /// Uploads every open buffer, after which none is open. GL, but for an empty pool.
    /// @return true if there was at least one.
    bool GenerateVBOs();

    /// Ends with the pool: what hangs on its meshes is told, or finds out.
    Lifetime& GetLifetime() { return m_lifetime; }

protected:
    friend class SharedBuffer;
    friend class SharedBufferPoolPtr;

    /// Takes the buffer out of the open ones, if it is there.
    void RemoveSharedBuffer(SharedBuffer* buffer);

private:
    using OpenBuffers = std::map<MeshFormatKey, SharedBuffer*>;

    void List(const OpenBuffers& buffers);
    void List(const MeshFormatKey& key, SharedBuffer* buffer);
    void UnlistAll();

    OpenBuffers m_openBuffers;
    /// What those share that point here; empty before the first.
    SharedBufferPoolPtr m_self;
    Lifetime m_lifetime;
};

} // namespace OV
