#include "orvane/scene/RawLine.h"

#include <array>
#include <utility>

namespace OV
{

namespace
{

constexpr std::size_t cornersPerPoint = 4;
constexpr std::size_t indicesPerPair = 6;

constexpr std::array<Vector, cornersPerPoint> cornerNormals = {
    Vector(0.0f, 1.0f, 0.0f),
    Vector(0.0f, -1.0f, 0.0f),
    Vector(1.0f, 1.0f, 0.0f),
    Vector(1.0f, -1.0f, 0.0f),
};

constexpr std::array<TextureCoordinate, cornersPerPoint> cornerCoordinates = {
    TextureCoordinate(0.0f, 1.0f),
    TextureCoordinate(0.0f, 0.0f),
    TextureCoordinate(1.0f, 1.0f),
    TextureCoordinate(1.0f, 0.0f),
};

/// The two triangles of a point's quad.
constexpr std::array<unsigned short, indicesPerPair> quadCorners = {0, 3, 1, 0, 2, 3};

} // namespace

bool RawLine::SetPositionBuffer(const std::vector<Vector>& points)
{
    const std::size_t count = points.size();
    if (!positions.empty() && count != positions.size() / cornersPerPoint)
    {
        return false;
    }

    const std::size_t vertexCount = cornersPerPoint * (count + 1);
    std::vector<Vector> vertices;
    vertices.reserve(vertexCount);
    for (const Vector& point : points)
    {
        vertices.insert(vertices.end(), cornersPerPoint, point);
    }
    vertices.insert(vertices.end(), cornersPerPoint, count == 0 ? Vector() : points.front());
    positions = std::move(vertices);

    normals.resize(vertexCount);
    textureCoordinates.resize(vertexCount);
    for (std::size_t vertex = 0; vertex < cornersPerPoint * count; ++vertex)
    {
        normals[vertex] = cornerNormals[vertex % cornersPerPoint];
        textureCoordinates[vertex] = cornerCoordinates[vertex % cornersPerPoint];
    }
    for (std::size_t vertex = cornersPerPoint * count; vertex < vertexCount; ++vertex)
    {
        normals[vertex] = Vector();
    }
    return true;
}

bool RawLine::SetIndices(const std::vector<unsigned short>& pairs)
{
    const std::size_t pairCount = pairs.size() / 2;
    std::vector<unsigned short> quads;
    quads.reserve(indicesPerPair * pairCount);
    for (std::size_t pair = 0; pair < pairCount; ++pair)
    {
        // 16-bit arithmetic on purpose: the vertices of a buffer past its end wrap around.
        const auto first = static_cast<unsigned short>(pairs[2 * pair] * cornersPerPoint);
        for (const unsigned short corner : quadCorners)
        {
            quads.push_back(static_cast<unsigned short>(first + corner));
        }
    }
    indices = std::move(quads);
    return true;
}

} // namespace OV
