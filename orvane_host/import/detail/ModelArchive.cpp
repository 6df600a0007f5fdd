#include "orvane_host/import/detail/ModelArchive.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace OV::Host
{

namespace
{

constexpr std::uint64_t kBufferBytes = 256 * 1024;
constexpr std::uint64_t kAlignment = 8;
constexpr std::uint64_t kEndMark = 0x4f5646494e495348;

// Overloads by the kind of value, with one text for both directions: T is constant where the
// archive is a writer. The last argument is the value's address and only picks the overload.

template <typename Archive, typename T>
void Fields(Archive& archive, T& plain, const void*)
{
    archive.Value(plain);
}

template <typename Archive, typename T>
void Fields(Archive& archive, T& text, const std::string*)
{
    archive.Text(text);
}

template <typename Archive, typename T>
void Fields(Archive& archive, T& mesh, const MeshData*)
{
    archive.Text(mesh.name);
    archive.Value(mesh.material);
    archive.Value(mesh.pieceOf);
    archive.Value(mesh.standsBack);
    archive.Value(mesh.kind);
    archive.Array(mesh.positions);
    archive.Array(mesh.normals);
    archive.Array(mesh.texCoords);
    archive.Array(mesh.colors);
    archive.Array(mesh.indices);
}

template <typename Archive, typename T>
void Fields(Archive& archive, T& picture, const PictureData*)
{
    archive.Text(picture.path);
    archive.Value(picture.embedded);
}

template <typename Archive, typename T>
void Fields(Archive& archive, T& map, const MapData*)
{
    Fields(archive, map.picture, &map.picture);
    archive.Value(map.isCertain);
    archive.Value(map.isInverted);
    archive.Value(map.isOnOtherCoordinates);
}

template <typename Archive, typename T>
void Fields(Archive& archive, T& material, const MaterialData*)
{
    archive.Text(material.name);
    archive.Value(material.diffuse);
    archive.Value(material.emissive);
    archive.Value(material.specular);
    archive.Value(material.shininess);
    archive.Value(material.isTwoSided);
    archive.Value(material.isUnlit);
    archive.Value(material.clampsTexture);
    archive.Value(material.alphaMode);
    archive.Value(material.reflection);
    Fields(archive, material.texture, &material.texture);
    Fields(archive, material.normalMap, &material.normalMap);
    Fields(archive, material.opacityMap, &material.opacityMap);
}

template <typename Archive, typename T>
void Fields(Archive& archive, T& texture, const TextureData*)
{
    archive.Value(texture.width);
    archive.Value(texture.height);
    archive.Array(texture.bytes);
}

template <typename Archive, typename T>
void Fields(Archive& archive, T& node, const NodeData*)
{
    archive.Text(node.name);
    archive.Value(node.parent);
    archive.Value(node.local);
    archive.List(node.meshes);
}

template <typename Archive, typename T>
void Fields(Archive& archive, T& model, const ModelData*)
{
    archive.Text(model.format);
    archive.Value(model.metresPerUnit);
    archive.Value(model.latitude);
    archive.Value(model.longitude);
    archive.Value(model.north);
    archive.Value(model.skippedLines);
    archive.Value(model.coplanarPairs);
    archive.Value(model.droppedTriangles);
    archive.List(model.nodes);
    archive.List(model.meshes);
    archive.List(model.materials);
    archive.List(model.textures);
    archive.List(model.cameras);
    archive.List(model.lights);
    archive.List(model.warnings);
}

} // namespace

ArchiveWriter::ArchiveWriter(int descriptor) : m_descriptor(descriptor)
{
    m_buffer.reserve(kBufferBytes);
}

template <typename T>
void ArchiveWriter::List(const std::vector<T>& list)
{
    Value(static_cast<std::uint64_t>(list.size()));
    for (const T& element : list)
    {
        Fields(*this, element, &element);
    }
}

void ArchiveWriter::Text(const std::string& text)
{
    Value(static_cast<std::uint64_t>(text.size()));
    Append(text.data(), text.size());
}

bool ArchiveWriter::Finish()
{
    Flush();
    return m_good;
}

void ArchiveWriter::Append(const void* bytes, std::uint64_t size)
{
    m_offset += size;
    const char* from = static_cast<const char*>(bytes);
    if (m_buffer.size() + size > kBufferBytes)
    {
        Flush();
        if (size > kBufferBytes)
        {
            WriteOut(from, size);
            return;
        }
    }
    m_buffer.insert(m_buffer.end(), from, from + size);
}

void ArchiveWriter::Align()
{
    static const char zeros[kAlignment] = {};
    Append(zeros, (kAlignment - m_offset % kAlignment) % kAlignment);
}

void ArchiveWriter::Flush()
{
    WriteOut(m_buffer.data(), m_buffer.size());
    m_buffer.clear();
}

void ArchiveWriter::WriteOut(const char* bytes, std::uint64_t size)
{
    while (m_good && size > 0)
    {
        const ssize_t written = write(m_descriptor, bytes, size);
        if (written < 0)
        {
            m_good = errno == EINTR;
            continue;
        }
        bytes += written;
        size -= static_cast<std::uint64_t>(written);
    }
}

ArchiveReader::ArchiveReader(const void* bytes, std::uint64_t size)
    : m_bytes(static_cast<const char*>(bytes)), m_size(size)
{
}

void ArchiveReader::Value(bool& value)
{
    unsigned char byte = 0;
    Take(&byte, sizeof(byte));
    value = byte != 0;
}

void ArchiveReader::Text(std::string& text)
{
    text.clear();
    std::uint64_t size = 0;
    Value(size);
    if (!m_good || size > m_size - m_offset)
    {
        m_good = false;
        return;
    }
    text.assign(m_bytes + m_offset, size);
    m_offset += size;
}

template <typename T>
void ArchiveReader::List(std::vector<T>& list)
{
    list.clear();
    std::uint64_t count = 0;
    Value(count);
    // Grown one by one: the count is not believed before the elements have been there.
    for (std::uint64_t i = 0; m_good && i < count; ++i)
    {
        list.emplace_back();
        Fields(*this, list.back(), &list.back());
    }
}

void ArchiveReader::Take(void* to, std::uint64_t size)
{
    if (!m_good || size > m_size - m_offset)
    {
        m_good = false;
        std::memset(to, 0, size);
        return;
    }
    std::memcpy(to, m_bytes + m_offset, size);
    m_offset += size;
}

void ArchiveReader::Align()
{
    const std::uint64_t padding = (kAlignment - m_offset % kAlignment) % kAlignment;
    if (padding > m_size - m_offset)
    {
        m_good = false;
        return;
    }
    m_offset += padding;
}

void WriteModel(ArchiveWriter& archive, const ModelData& model)
{
    Fields(archive, model, &model);
    archive.Value(kEndMark);
}

bool ReadModel(ArchiveReader& archive, ModelData& model)
{
    Fields(archive, model, &model);
    std::uint64_t mark = 0;
    archive.Value(mark);
    return archive.IsGood() && mark == kEndMark;
}

} // namespace OV::Host
