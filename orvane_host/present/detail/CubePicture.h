#pragma once

#include <glm/vec3.hpp>

#include <cstddef>
#include <vector>

namespace OV::Host::Detail
{

/// Six square pictures about a point, in linear light.
///
/// Faces and their rows are in the order in which GL takes them: +X, -X, +Y, -Y, +Z, -Z, and in
/// each the row of the texture coordinate 0 first.
class CubePicture
{
public:
    static constexpr int Faces = 6;

    explicit CubePicture(int size);

    /// In texels, of each edge.
    int GetSize() const { return m_size; }

    glm::vec3& At(int face, int x, int y) { return m_texels[IndexOf(face, x, y)]; }
    const glm::vec3& At(int face, int x, int y) const { return m_texels[IndexOf(face, x, y)]; }

    /// Towards a point of a face; not of unit length.
    /// @param x, y in texels, which have their middles at halves.
    glm::vec3 DirectionOf(int face, float x, float y) const;

    /// Between the four nearest texels of a face.
    glm::vec3 Sample(const glm::vec3& direction) const;

    /// Of half the size; each texel the mean of four. For a size of 2 or more.
    CubePicture Halved() const;

    /// What a rough surface reflects of a cube, as if seen straight on: the mean of what lies in the
    /// lobe of the distribution GGX of an alpha above 0 and at most 1.
    /// @param levels a cube and its halves down to 1 texel.
    /// @param samples directions that the mean is taken of.
    static CubePicture Blurred(const std::vector<CubePicture>& levels, int size, float alpha, int samples);

private:
    std::size_t IndexOf(int face, int x, int y) const
    {
        return (static_cast<std::size_t>(face) * m_size + y) * m_size + x;
    }

    int m_size;
    std::vector<glm::vec3> m_texels;
};

} // namespace OV::Host::Detail
