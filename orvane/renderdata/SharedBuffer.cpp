#include "orvane/renderdata/SharedBuffer.h"

#include "orvane/base/GLCheckpoint.h"
#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderdata/SharedBufferPool.h"
#include "orvane/renderdata/detail/VertexPacker.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"

#include <GL/glew.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <memory>

namespace OV
{

namespace
{

/// The scale of the mesh's material is baked into the vertices; a change of it comes too late
/// for a mesh that is packed already.
Detail::TextureFactors TextureFactorsOf(const Mesh& mesh)
{
    Detail::TextureFactors factors;
    const Material* material = mesh.GetMaterial();
    const auto* data = material ? dynamic_cast<const MaterialES20*>(material->GetRenderData()) : nullptr;
    if (data)
    {
        factors.u = 1.0f / data->materialUScale;
        factors.v = 1.0f / data->materialVScale;
    }
    return factors;
}

/// Copies of the vertices and indices of one buffer, for the length of its upload. Not filled
/// beforehand: the packer writes every byte.
struct Staging
{
    Staging(std::size_t floatCount, std::size_t indexCount) :
        vertices(new float[floatCount]), indices(new unsigned short[indexCount])
    {
    }

    std::unique_ptr<float[]> vertices;
    std::unique_ptr<unsigned short[]> indices;
};

/// @return the largest; -1 if there is none.
int CopyIndices(const std::vector<unsigned short>& in, unsigned short* out)
{
    unsigned short largest = 0;
    for (std::size_t i = 0; i < in.size(); ++i)
    {
        // Read once: a host's thread may write meanwhile, and what counts is what is drawn.
        out[i] = in[i];
        largest = std::max(largest, out[i]);
    }
    return in.empty() ? -1 : largest;
}

int AbsoluteOffset(int offset, std::int64_t base)
{
    return offset < 0 ? -1 : static_cast<int>(offset + base);
}

/// Renderers of several contexts may each have a thread.
std::uint64_t NextNumber()
{
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

} // namespace

SharedBuffer::SharedBuffer(SharedBufferPool* owner) :
    pool(owner), m_number(NextNumber())
{
}

SharedBuffer::~SharedBuffer()
{
    if (vertexBufferId != 0)
    {
        DeleteBuffers();
    }
    Close();
}

void SharedBuffer::DeleteBuffers()
{
    glDeleteBuffers(1, &indexBufferId);
    glDeleteBuffers(1, &vertexBufferId);
    OV_GL_CHECKPOINT();
    // GL may give the name to the next buffer, which then would count as bound.
    if (MeshES20::s_vertexId == vertexBufferId)
    {
        MeshES20::ResetBufferCache();
    }
    indexBufferId = 0;
    vertexBufferId = 0;
}

bool SharedBuffer::TryAddMesh(MeshES20* meshData)
{
    const auto vertexCount = static_cast<std::int64_t>(meshData->mesh->GetNumVertices());
    if (stride == 0)
    {
        SettleLayout(*meshData->mesh);
    }
    const std::int64_t total = vertexCount * stride + bytesUsed;
    if (total > MaxBytes && !meshes.empty())
    {
        return false;
    }
    meshes.push_back(meshData);
    bytesUsed = total;
    return true;
}

void SharedBuffer::SettleLayout(const Mesh& first)
{
    m_format = MeshFormatKey::Of(first);
    const Detail::VertexLayout layout = Detail::VertexLayout::Of(m_format);
    stride = layout.stride;
    normalOffset = layout.normalOffset;
    textureOffset = layout.textureOffset;
    colorOffset = layout.colorOffset;
}

void SharedBuffer::GenerateBuffers()
{
    if (meshes.empty() || vertexBufferId != 0 || !Platform::LoadEntryPoints())
    {
        return;
    }
    std::int64_t totalVertices = 0;
    std::int64_t totalIndices = 0;
    for (const MeshES20* meshData : meshes)
    {
        totalVertices += static_cast<std::int64_t>(meshData->mesh->GetNumVertices());
        totalIndices += static_cast<std::int64_t>(meshData->mesh->GetNumIndices());
    }
    const std::int64_t vertexBytes = totalVertices * stride;
    const Staging staging(vertexBytes / sizeof(float), totalIndices);

    glGenBuffers(1, &vertexBufferId);
    glBindBuffer(GL_ARRAY_BUFFER, vertexBufferId);
    glGenBuffers(1, &indexBufferId);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBufferId);
    OV_GL_CHECKPOINT();
    if (vertexBufferId == 0 || indexBufferId == 0)
    {
        // Without either a draw would read from memory of the process, at an offset. The meshes
        // stay without buffers, and are not drawn.
        DeleteBuffers();
        MeshES20::ResetBufferCache();
        return;
    }

    Pack(staging.vertices.get(), staging.indices.get());

    glBufferData(GL_ARRAY_BUFFER, vertexBytes, staging.vertices.get(), GL_DYNAMIC_DRAW);
    glBufferData(GL_ELEMENT_ARRAY_BUFFER, totalIndices * sizeof(unsigned short), staging.indices.get(),
                 GL_DYNAMIC_DRAW);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    MeshES20::ResetBufferCache();
    OV_GL_CHECKPOINT();
    // No further mesh comes.
    meshes.shrink_to_fit();
}

void SharedBuffer::Pack(float* vertices, unsigned short* indices)
{
    std::int64_t base = 0;
    std::int64_t firstIndex = 0;
    for (MeshES20* meshData : meshes)
    {
        meshData->stride = stride;
        meshData->vertexBufferId = vertexBufferId;
        meshData->indexBufferId = indexBufferId;
        meshData->positionOffset = static_cast<int>(base);
        meshData->normalOffset = AbsoluteOffset(normalOffset, base);
        meshData->textureOffset = AbsoluteOffset(textureOffset, base);
        meshData->colorOffset = AbsoluteOffset(colorOffset, base);
        meshData->scalarOffset = -1;

        const Mesh& mesh = *meshData->mesh;
        Detail::PackVertices(mesh, m_format, TextureFactorsOf(mesh), vertices + base / sizeof(float));
        base += static_cast<std::int64_t>(mesh.GetNumVertices()) * stride;

        const std::vector<unsigned short>& meshIndices = mesh.GetIndices();
        const int largest = CopyIndices(meshIndices, indices + firstIndex);
        const std::int64_t spare = static_cast<std::int64_t>(mesh.GetNumVertices()) - 1 - largest;
        meshData->spareVertices = static_cast<int>(std::min<std::int64_t>(spare, std::numeric_limits<int>::max()));
        meshData->indexOffset = firstIndex * static_cast<std::int64_t>(sizeof(unsigned short));
        meshData->indexCount = static_cast<std::int64_t>(meshIndices.size());
        firstIndex += meshData->indexCount;
    }
}

void SharedBuffer::RemoveMesh(MeshES20* meshData)
{
    const auto found = std::find(meshes.begin(), meshes.end(), meshData);
    if (found == meshes.end())
    {
        return;
    }
    meshes.erase(found);
    if (meshes.empty())
    {
        delete this;
    }
}

void SharedBuffer::Close()
{
    while (!m_listedBy.empty())
    {
        m_listedBy.back()->RemoveSharedBuffer(this);
    }
}

} // namespace OV
