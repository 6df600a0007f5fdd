#include "orvane_host/present/detail/BatchMark.h"

#include "orvane/renderdata/SharedBufferPool.h"
#include "orvane/scene/Mesh.h"

#include <utility>

namespace OV::Host::Detail
{

BatchMark::BatchMark(Mesh* shown, Link owner) : MeshES20(nullptr, nullptr), m_owner(std::move(owner))
{
    mesh = shown;
}

BatchMark::~BatchMark()
{
    if (*m_owner)
    {
        (*m_owner)->MarkGone(*this);
    }
}

void BatchMark::Join(SharedBufferPool& bufferPool)
{
    if (pool)
    {
        return;
    }
    pool = &bufferPool;
    if (mesh->GetNumVertices() > 0)
    {
        sharedBuffer = bufferPool.AddMesh(this);
    }
}

} // namespace OV::Host::Detail
