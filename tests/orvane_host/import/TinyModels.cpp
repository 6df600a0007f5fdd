#include "tests/orvane_host/import/TinyModels.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <sstream>

namespace OV::Test
{

namespace
{

std::string Join(const std::vector<std::string>& items)
{
    std::string result;
    for (const std::string& item : items)
    {
        result += (result.empty() ? "" : ",") + item;
    }
    return result;
}

void AppendWord(Bytes& to, std::size_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
    {
        to.push_back(static_cast<unsigned char>(value >> shift));
    }
}

void AppendChunk(Bytes& to, const char* type, Bytes content, unsigned char padding)
{
    content.resize((content.size() + 3) / 4 * 4, padding);
    AppendWord(to, content.size());
    to.insert(to.end(), type, type + 4);
    to.insert(to.end(), content.begin(), content.end());
}

/// The smallest and largest value of each component, as two JSON members.
std::string Bounds(const std::vector<float>& values, int components)
{
    std::string low;
    std::string high;
    for (int c = 0; c < components; ++c)
    {
        float smallest = values[static_cast<std::size_t>(c)];
        float largest = smallest;
        for (std::size_t i = static_cast<std::size_t>(c); i < values.size();
             i += static_cast<std::size_t>(components))
        {
            smallest = std::min(smallest, values[i]);
            largest = std::max(largest, values[i]);
        }
        low += (c ? "," : "") + std::to_string(smallest);
        high += (c ? "," : "") + std::to_string(largest);
    }
    return "\"min\":[" + low + "],\"max\":[" + high + "]";
}

} // namespace

void WriteFile(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

void WriteFile(const std::string& path, const Bytes& content)
{
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
}

std::string MarkedUtf16(const std::u16string& text, bool isBigEndian)
{
    std::string bytes;
    for (const char16_t unit : u"\uFEFF" + text)
    {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>(unit >> 8);
        bytes += {isBigEndian ? high : low, isBigEndian ? low : high};
    }
    return bytes;
}

std::string CubeObj()
{
    std::ostringstream text;
    for (int i = 0; i < 8; ++i)
    {
        text << "v " << ((i & 1) ? 0.5 : -0.5) << ' ' << ((i & 2) ? 0.5 : -0.5) << ' '
             << ((i & 4) ? 0.5 : -0.5) << '\n';
    }
    text << "f 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n";
    return text.str();
}

std::string GridObj(int size)
{
    std::ostringstream text;
    for (int y = 0; y < size; ++y)
    {
        for (int x = 0; x < size; ++x)
        {
            text << "v " << x << ' ' << y << " 0\n";
        }
    }
    for (int y = 0; y + 1 < size; ++y)
    {
        for (int x = 0; x + 1 < size; ++x)
        {
            const int a = y * size + x + 1;
            text << "f " << a << ' ' << a + 1 << ' ' << a + size << '\n';
            text << "f " << a + 1 << ' ' << a + size + 1 << ' ' << a + size << '\n';
        }
    }
    return text.str();
}

std::size_t TinyGltf::AddView(const void* bytes, std::size_t size)
{
    m_buffer.resize((m_buffer.size() + 3) / 4 * 4);
    m_views.push_back("{\"buffer\":0,\"byteOffset\":" + std::to_string(m_buffer.size()) +
                      ",\"byteLength\":" + std::to_string(size) + "}");
    const auto* from = static_cast<const unsigned char*>(bytes);
    m_buffer.insert(m_buffer.end(), from, from + size);
    return m_views.size() - 1;
}

std::size_t TinyGltf::AddFloats(const std::vector<float>& values, int components)
{
    static const char* const types[] = {"", "SCALAR", "VEC2", "VEC3", "VEC4"};
    const std::size_t view = AddView(values.data(), values.size() * sizeof(float));
    m_accessors.push_back("{\"bufferView\":" + std::to_string(view) + ",\"componentType\":5126,\"count\":" +
                          std::to_string(values.size() / static_cast<std::size_t>(components)) +
                          ",\"type\":\"" + types[components] + "\"," + Bounds(values, components) + "}");
    return m_accessors.size() - 1;
}

std::size_t TinyGltf::AddIndices(const std::vector<unsigned short>& indices)
{
    const std::size_t view = AddView(indices.data(), indices.size() * sizeof(unsigned short));
    m_accessors.push_back("{\"bufferView\":" + std::to_string(view) + ",\"componentType\":5123,\"count\":" +
                          std::to_string(indices.size()) + ",\"type\":\"SCALAR\"}");
    return m_accessors.size() - 1;
}

std::size_t TinyGltf::AddBytes(const Bytes& bytes)
{
    return AddView(bytes.data(), bytes.size());
}

Bytes TinyGltf::Glb(const std::string& members) const
{
    const std::string json =
        "{\"asset\":{\"version\":\"2.0\"},\"buffers\":[{\"byteLength\":" + std::to_string(m_buffer.size()) +
        "}],\"bufferViews\":[" + Join(m_views) + "],\"accessors\":[" + Join(m_accessors) + "]," + members +
        "}";
    Bytes chunks;
    AppendChunk(chunks, "JSON", Bytes(json.begin(), json.end()), ' ');
    AppendChunk(chunks, "BIN\0", m_buffer, 0);
    Bytes file;
    file.insert(file.end(), {'g', 'l', 'T', 'F'});
    AppendWord(file, 2);
    AppendWord(file, chunks.size() + 12);
    file.insert(file.end(), chunks.begin(), chunks.end());
    return file;
}

Bytes TriangleGlb(const std::string& nodes, const std::string& members, const std::string& material)
{
    TinyGltf gltf;
    gltf.AddFloats({0, 0, 0, 1, 0, 0, 0, 1, 0}, 3);
    gltf.AddFloats({0, 0, 1, 0, 0, 1, 0, 0, 1}, 3);
    gltf.AddFloats({0, 0, 1, 0, 0, 1}, 2);
    gltf.AddIndices({0, 1, 2});
    return gltf.Glb("\"scene\":0,\"scenes\":[{\"nodes\":[0]}],\"nodes\":[" + nodes + "],\"materials\":[" +
                    material +
                    "],\"meshes\":[{\"primitives\":[{\"attributes\":{\"POSITION\":0,\"NORMAL\":1,"
                    "\"TEXCOORD_0\":2},\"indices\":3,\"material\":0}]}]" +
                    members);
}

} // namespace OV::Test
