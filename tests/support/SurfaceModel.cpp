#include "tests/support/SurfaceModel.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace OV::Test
{

namespace
{

constexpr float kNearTexel = 0.01f;
constexpr float kNearEdge = 0.02f;
constexpr float kNearBound = 0.002f;

glm::vec4 ToBytes(const glm::vec4& color)
{
    return glm::round(glm::clamp(color, 0.0f, 1.0f) * 255.0f);
}

/// The texel of one axis; -1 when it is not sure which one.
int TexelOf(float coordinate, int size)
{
    const float place = (coordinate - std::floor(coordinate)) * static_cast<float>(size);
    if (std::abs(place - std::round(place)) < kNearTexel)
    {
        return -1;
    }
    return std::min(static_cast<int>(place), size - 1);
}

} // namespace

Texels::Texels(int width, int height, std::vector<glm::vec4> colors) : m_width(width), m_height(height)
{
    for (const glm::vec4& color : colors)
    {
        m_colors.push_back(ToBytes(color) / 255.0f);
    }
}

Texels Texels::Random(std::mt19937& random, int width, int height, const glm::vec4& low, const glm::vec4& high)
{
    std::vector<glm::vec4> colors;
    for (int i = 0; i < width * height; ++i)
    {
        colors.push_back(glm::mix(low, high, RandomColor(random, 0.0f, 1.0f)));
    }
    return Texels(width, height, std::move(colors));
}

std::vector<unsigned char> Texels::Bytes() const
{
    std::vector<unsigned char> bytes;
    for (const glm::vec4& color : m_colors)
    {
        const glm::vec4 texel = ToBytes(color);
        for (int i = 0; i < 4; ++i)
        {
            bytes.push_back(static_cast<unsigned char>(texel[i]));
        }
    }
    return bytes;
}

std::optional<glm::vec4> Texels::At(const glm::vec2& coordinate) const
{
    const int column = TexelOf(coordinate.x, m_width);
    const int row = TexelOf(coordinate.y, m_height);
    if (column < 0 || row < 0)
    {
        return std::nullopt;
    }
    return m_colors[static_cast<std::size_t>(row * m_width + column)];
}

std::optional<glm::vec4> CubeColors::At(const glm::vec3& direction) const
{
    const glm::vec3 size = glm::abs(direction);
    int axis = 0;
    for (int i = 1; i < 3; ++i)
    {
        axis = size[i] > size[axis] ? i : axis;
    }
    for (int i = 0; i < 3; ++i)
    {
        if (i != axis && size[axis] - size[i] < kNearEdge * size[axis])
        {
            return std::nullopt;
        }
    }
    return faces[2 * axis + (direction[axis] < 0.0f ? 1 : 0)];
}

ClipModel::Place ClipModel::At(const glm::vec3& world) const
{
    bool outline = false;
    bool unsure = false;
    const std::size_t count = std::min<std::size_t>(planes.size(), 6);
    for (std::size_t i = 0; i < count; ++i)
    {
        const float side = glm::dot(planes[i].first, world - planes[i].second);
        if (side > kNearBound)
        {
            return Place::Cut;
        }
        unsure = unsure || std::abs(side) <= kNearBound || std::abs(side + outlineSize) <= kNearBound;
        outline = outline || side > -outlineSize;
    }
    if (unsure)
    {
        return Place::Unsure;
    }
    return outline ? Place::Outline : Place::Kept;
}

float RandomIn(std::mt19937& random, float low, float high)
{
    // The distributions of the library are not the same everywhere.
    return low + (high - low) * static_cast<float>(random() / 4294967296.0);
}

glm::vec3 RandomVec3(std::mt19937& random, float low, float high)
{
    const float x = RandomIn(random, low, high);
    const float y = RandomIn(random, low, high);
    return {x, y, RandomIn(random, low, high)};
}

glm::vec4 RandomColor(std::mt19937& random, float low, float high)
{
    const glm::vec3 color = RandomVec3(random, low, high);
    return {color, RandomIn(random, low, high)};
}

bool RandomBool(std::mt19937& random)
{
    return (random() >> 16 & 1u) != 0;
}

} // namespace OV::Test
