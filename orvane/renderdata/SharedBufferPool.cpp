#include "orvane/renderdata/SharedBufferPool.h"

#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderdata/SharedBuffer.h"
#include "orvane/scene/Mesh.h"

#include <algorithm>
#include <tuple>

namespace OV
{

namespace
{

void Erase(std::vector<SharedBufferPool*>& pools, SharedBufferPool* pool)
{
    pools.erase(std::remove(pools.begin(), pools.end(), pool), pools.end());
}

} // namespace

MeshFormatKey MeshFormatKey::Of(const Mesh& mesh)
{
    MeshFormatKey key;
    key.hasNormals = !mesh.GetNormalBuffer().empty();
    key.hasTexture = !mesh.GetTextureBuffer().empty();
    key.hasColor = !mesh.GetColorBuffer().empty();
    return key;
}

bool operator<(const MeshFormatKey& a, const MeshFormatKey& b)
{
    return std::tie(a.hasNormals, a.hasTexture, a.hasColor, a.reserved) <
           std::tie(b.hasNormals, b.hasTexture, b.hasColor, b.reserved);
}

SharedBufferPool::SharedBufferPool(const SharedBufferPool& other)
{
    List(other.m_openBuffers);
}

SharedBufferPool::SharedBufferPool(SharedBufferPool&& other)
{
    List(other.m_openBuffers);
    other.UnlistAll();
}

SharedBufferPool& SharedBufferPool::operator=(const SharedBufferPool& other)
{
    if (this != &other)
    {
        UnlistAll();
        List(other.m_openBuffers);
    }
    return *this;
}

SharedBufferPool& SharedBufferPool::operator=(SharedBufferPool&& other)
{
    if (this != &other)
    {
        *this = static_cast<const SharedBufferPool&>(other);
        other.UnlistAll();
    }
    return *this;
}

SharedBufferPool::~SharedBufferPool()
{
    ++MeshES20::s_listingRevision;
    if (m_self.m_word)
    {
        m_self.m_word->pool = nullptr;
    }
    UnlistAll();
}

SharedBufferPoolPtr::SharedBufferPoolPtr(SharedBufferPool* pool)
{
    if (!pool)
    {
        return;
    }
    SharedBufferPoolPtr& shared = pool->m_self;
    if (!shared.m_word)
    {
        shared.m_word = new Word{pool, 1};
    }
    *this = shared;
}

SharedBufferPoolPtr& SharedBufferPoolPtr::operator=(const SharedBufferPoolPtr& other)
{
    Word* const taken = other.m_word;
    if (taken)
    {
        ++taken->holders;
    }
    LetGo();
    m_word = taken;
    return *this;
}

SharedBuffer* SharedBufferPool::AddMesh(MeshES20* meshData)
{
    const MeshFormatKey key = MeshFormatKey::Of(*meshData->mesh);
    const auto found = m_openBuffers.find(key);
    if (found != m_openBuffers.end())
    {
        SharedBuffer* open = found->second;
        if (open->TryAddMesh(meshData))
        {
            return open;
        }
        open->GenerateBuffers();
        open->Close();
    }
    auto* fresh = new SharedBuffer(this);
    try
    {
        List(key, fresh);
        fresh->TryAddMesh(meshData);
    }
    catch (...)
    {
        delete fresh;
        throw;
    }
    return fresh;
}

bool SharedBufferPool::GenerateVBOs()
{
    if (m_openBuffers.empty())
    {
        return false;
    }
    if (Platform::LoadEntryPoints())
    {
        while (!m_openBuffers.empty())
        {
            SharedBuffer* buffer = m_openBuffers.begin()->second;
            buffer->GenerateBuffers();
            buffer->Close();
        }
    }
    return true;
}

void SharedBufferPool::RemoveSharedBuffer(SharedBuffer* buffer)
{
    const auto found = std::find_if(m_openBuffers.begin(), m_openBuffers.end(),
                                    [buffer](const auto& entry) { return entry.second == buffer; });
    if (found != m_openBuffers.end())
    {
        m_openBuffers.erase(found);
        Erase(buffer->m_listedBy, this);
    }
}

void SharedBufferPool::List(const OpenBuffers& buffers)
{
    for (const auto& [key, buffer] : buffers)
    {
        List(key, buffer);
    }
}

void SharedBufferPool::List(const MeshFormatKey& key, SharedBuffer* buffer)
{
    // Room first, so that both know of each other or neither does.
    buffer->m_listedBy.reserve(buffer->m_listedBy.size() + 1);
    m_openBuffers[key] = buffer;
    buffer->m_listedBy.push_back(this);
}

void SharedBufferPool::UnlistAll()
{
    for (const auto& entry : m_openBuffers)
    {
        Erase(entry.second->m_listedBy, this);
    }
    m_openBuffers.clear();
}

} // namespace OV
