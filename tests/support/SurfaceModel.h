#pragma once

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <optional>
#include <random>
#include <utility>
#include <vector>

namespace OV::Test
{

/// A picture in memory that is sampled as GL does it with GL_NEAREST and GL_REPEAT. The colours
/// are those that 8 bits hold.
class Texels
{
public:
    Texels() = default;

    /// Rows from the bottom up.
    Texels(int width, int height, std::vector<glm::vec4> colors);

    /// A colour at random for every texel, out of the range between the two.
    static Texels Random(std::mt19937& random, int width, int height, const glm::vec4& low, const glm::vec4& high);

    int Width() const { return m_width; }
    int Height() const { return m_height; }

    /// RGBA, row by row.
    std::vector<unsigned char> Bytes() const;

    /// The colour there; none so near to the next texel that rounding might decide.
    std::optional<glm::vec4> At(const glm::vec2& coordinate) const;

private:
    int m_width = 0;
    int m_height = 0;
    std::vector<glm::vec4> m_colors;
};

/// Six faces of one colour each, in the order +X, -X, +Y, -Y, +Z, -Z.
struct CubeColors
{
    glm::vec4 faces[6];

    /// The face that a direction meets; none near an edge of the cube.
    std::optional<glm::vec4> At(const glm::vec3& direction) const;
};

/// The planes that cut a picture, and the outline along the cuts.
struct ClipModel
{
    enum class Place
    {
        Kept,
        Outline,
        Cut,
        Unsure ///< so near to a bound that rounding might decide
    };

    /// Normal and position, world space.
    std::vector<std::pair<glm::vec3, glm::vec3>> planes;
    float outlineSize = 0.3f;
    glm::vec4 outlineColor{0.0f, 0.0f, 0.0f, 1.0f};

    /// Only the first six planes count.
    Place At(const glm::vec3& world) const;
};

/// Even numbers of one generator.
float RandomIn(std::mt19937& random, float low, float high);
glm::vec3 RandomVec3(std::mt19937& random, float low, float high);
glm::vec4 RandomColor(std::mt19937& random, float low, float high);
bool RandomBool(std::mt19937& random);

} // namespace OV::Test
