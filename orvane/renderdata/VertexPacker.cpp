#include "orvane/renderdata/detail/VertexPacker.h"

#include "orvane/math/Color.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/math/Vector.h"
#include "orvane/scene/Mesh.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <utility>
#include <vector>

namespace OV::Detail
{

namespace
{

// The arrays are read as floats, element after element.
static_assert(sizeof(Vector) == 3 * sizeof(float));
static_assert(sizeof(TextureCoordinate) == 2 * sizeof(float));
static_assert(sizeof(Color) == 4 * sizeof(float));

constexpr int kPositionFloats = 3;
constexpr int kNormalFloats = 3;
constexpr int kTextureFloats = 2;
constexpr int kColorFloats = 4;

/// Bits of a packing variant.
enum Variant : unsigned
{
    HasNormals = 1,
    HasTexture = 2,
    HasColor = 4,
    ScalesTexture = 8,
    VariantCount = 16
};

constexpr int UsedFloats(unsigned variant)
{
    return kPositionFloats + (variant & HasNormals ? kNormalFloats : 0) +
           (variant & HasTexture ? kTextureFloats : 0) + (variant & HasColor ? kColorFloats : 0);
}

/// Whole steps of 32 bytes, and always one more: 32 used bytes take 64.
constexpr int StrideBytes(int usedFloats)
{
    return ((usedFloats * static_cast<int>(sizeof(float))) & ~31) + 32;
}

/// The arrays of a mesh. Null where the format has no such stream.
struct Streams
{
    const Vector* positions = nullptr;
    const Vector* normals = nullptr;
    const TextureCoordinate* textureCoordinates = nullptr;
    const Color* colors = nullptr;
};

/// Writes vertices that every stream of the variant covers. What the variant settles is
/// settled at compile time, so that the loop has no branch in it.
template <unsigned V>
void PackRange(const Streams& in, std::size_t count, const TextureFactors& factors, float* out)
{
    constexpr int stride = StrideBytes(UsedFloats(V)) / static_cast<int>(sizeof(float));
    constexpr int padding = stride - UsedFloats(V);
    for (std::size_t i = 0; i < count; ++i)
    {
        float* vertex = out + i * stride;
        std::memcpy(vertex, &in.positions[i], sizeof(Vector));
        vertex += kPositionFloats;
        if constexpr ((V & HasNormals) != 0)
        {
            std::memcpy(vertex, &in.normals[i], sizeof(Vector));
            vertex += kNormalFloats;
        }
        if constexpr ((V & HasTexture) != 0)
        {
            if constexpr ((V & ScalesTexture) != 0)
            {
                vertex[0] = factors.u * in.textureCoordinates[i].u;
                vertex[1] = factors.v * in.textureCoordinates[i].v;
            }
            else
            {
                std::memcpy(vertex, &in.textureCoordinates[i], sizeof(TextureCoordinate));
            }
            vertex += kTextureFloats;
        }
        if constexpr ((V & HasColor) != 0)
        {
            std::memcpy(vertex, &in.colors[i], sizeof(Color));
            vertex += kColorFloats;
        }
        std::memset(vertex, 0, padding * sizeof(float));
    }
}

using PackRangeFunction = void (*)(const Streams&, std::size_t, const TextureFactors&, float*);

template <std::size_t... V>
constexpr std::array<PackRangeFunction, sizeof...(V)> MakeVariants(std::index_sequence<V...>)
{
    return {{&PackRange<V>...}};
}

constexpr auto kPackRange = MakeVariants(std::make_index_sequence<VariantCount>());

unsigned VariantOf(const MeshFormatKey& format, const TextureFactors& factors)
{
    // Copied without arithmetic unless a factor says otherwise: also -0 and NaN keep their bits.
    const bool scales = factors.u != 1.0f || factors.v != 1.0f;
    return (format.hasNormals ? HasNormals : 0u) | (format.hasTexture ? HasTexture : 0u) |
           (format.hasColor ? HasColor : 0u) | (format.hasTexture && scales ? ScalesTexture : 0u);
}

/// Element i of an array, or zeros past its end.
template <class T>
T ElementOrZero(const std::vector<T>& elements, std::size_t i)
{
    T element;
    if (i < elements.size())
    {
        element = elements[i];
    }
    else
    {
        std::memset(static_cast<void*>(&element), 0, sizeof(T));
    }
    return element;
}

} // namespace

VertexLayout VertexLayout::Of(const MeshFormatKey& format)
{
    VertexLayout layout;
    int floats = kPositionFloats;
    const auto place = [&floats](bool present, int count)
    {
        if (!present)
        {
            return -1;
        }
        const int offset = floats * static_cast<int>(sizeof(float));
        floats += count;
        return offset;
    };
    layout.normalOffset = place(format.hasNormals, kNormalFloats);
    layout.textureOffset = place(format.hasTexture, kTextureFloats);
    layout.colorOffset = place(format.hasColor, kColorFloats);
    layout.stride = StrideBytes(floats);
    return layout;
}

void PackVertices(const Mesh& mesh, const MeshFormatKey& format, const TextureFactors& factors,
                  float* out)
{
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    const std::vector<Vector>& normals = mesh.GetNormalBuffer();
    const std::vector<TextureCoordinate>& textureCoordinates = mesh.GetTextureBuffer();
    const std::vector<Color>& colors = mesh.GetColorBuffer();
    const PackRangeFunction pack = kPackRange[VariantOf(format, factors)];

    const std::size_t count = positions.size();
    std::size_t covered = count;
    if (format.hasNormals)
    {
        covered = std::min(covered, normals.size());
    }
    if (format.hasTexture)
    {
        covered = std::min(covered, textureCoordinates.size());
    }
    if (format.hasColor)
    {
        covered = std::min(covered, colors.size());
    }
    pack({positions.data(), normals.data(), textureCoordinates.data(), colors.data()}, covered, factors,
         out);

    const std::size_t stride = VertexLayout::Of(format).stride / sizeof(float);
    for (std::size_t i = covered; i < count; ++i)
    {
        const Vector normal = ElementOrZero(normals, i);
        const TextureCoordinate textureCoordinate = ElementOrZero(textureCoordinates, i);
        const Color color = ElementOrZero(colors, i);
        pack({&positions[i], &normal, &textureCoordinate, &color}, 1, factors, out + i * stride);
    }
}

} // namespace OV::Detail
