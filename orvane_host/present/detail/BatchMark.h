#pragma once

#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderdata/RenderDataStandIn.h"

#include <cstddef>
#include <cstdint>

namespace OV
{

class Mesh;
class SharedBufferPool;

} // namespace OV

namespace OV::Host::Detail
{

class BatchMark;

/// Is told of marks that are gone.
class BatchMarkOwner
{
public:
    /// Something of the geometry has changed, or somebody else draws it.
    virtual void MarkGone(BatchMark& mark) = 0;

protected:
    ~BatchMarkOwner() = default;
};

/// What marks know their owner by, whichever dies first. Lives as long as one of them.
class BatchMarkLink
{
public:
    explicit BatchMarkLink(BatchMarkOwner& marksOwner) : m_owner(&marksOwner) {}

    BatchMarkOwner* GetOwner() const { return m_owner; }

    /// Nobody is told any more.
    void Cut() { m_owner = nullptr; }

    void Hold() { ++m_holders; }

    /// Deletes the link with the last that holds it.
    void Release();

private:
    ~BatchMarkLink() = default;

    BatchMarkOwner* m_owner;
    std::size_t m_holders = 1; ///< the owner
};

/// Hangs on a geometry that may be drawn in a batch, and tells when that is described anew, which
/// takes its render data away.
class BatchMark
{
public:
    BatchMark(const BatchMark&) = delete;
    BatchMark& operator=(const BatchMark&) = delete;

    /// The mark on a geometry that is the owner's; null for none.
    static BatchMark* Of(Object* data, const BatchMarkLink& owner);

    /// Leaves the list to another mark.
    std::uint32_t HandOver();

    /// Its meshes at nodes, in a list of the owner's. Without one nobody is told.
    std::uint32_t first = kNone;

protected:
    static constexpr std::uint32_t kNone = ~std::uint32_t{0};

    explicit BatchMark(BatchMarkLink& owner) : m_link(&owner) { owner.Hold(); }
    ~BatchMark();

private:
    BatchMarkLink* m_link;
};

/// The mark of a geometry that nobody draws by itself: it takes no room in a buffer.
class QuietMark final : public RenderDataStandIn, public BatchMark
{
public:
    explicit QuietMark(BatchMarkLink& owner) : BatchMark(owner) {}
};

/// The mark of a geometry that is drawn by itself, or was once.
///
/// Whoever else draws the mesh with another pool replaces it.
class DrawnMark final : public MeshES20, public BatchMark
{
public:
    /// GL where the open buffer of the pool was full.
    /// @param before the mark whose place it takes; its end is of no meaning any more.
    DrawnMark(Mesh* shown, SharedBufferPool* bufferPool, BatchMarkLink& owner, BatchMark& before) :
        MeshES20(shown, bufferPool), BatchMark(owner)
    {
        first = before.HandOver();
        DrawAsBase();
    }
};

} // namespace OV::Host::Detail
