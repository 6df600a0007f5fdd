#pragma once

#include "orvane/renderdata/MeshES20.h"

#include <cstdint>
#include <memory>

namespace OV
{

class RawMesh;

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

/// Render data of a geometry that may be drawn in a batch: it takes room in a buffer of its own
/// only once it is drawn by itself, and tells when the geometry is described anew, which takes the
/// render data away.
///
/// Whoever else draws the mesh finds render data without a pool, and replaces them.
class BatchMark final : public MeshES20
{
public:
    /// Of the owner; null once that is gone.
    using Link = std::shared_ptr<BatchMarkOwner*>;

    BatchMark(Mesh* shown, Link owner);
    ~BatchMark() override;

    bool IsOf(const Link& owner) const { return m_owner == owner; }

    /// Takes room in a buffer of the pool, unless it has. GL where that was full.
    void Join(SharedBufferPool& bufferPool);

    /// Its meshes at nodes, in a list of the owner's.
    std::uint32_t first = ~std::uint32_t{0};

private:
    Link m_owner;
};

} // namespace OV::Host::Detail
