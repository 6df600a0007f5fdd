#pragma once

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace OV
{

class Scene;

} // namespace OV

namespace OV::Test
{

/// The triangles at one node of a scene, in world space.
struct Solid
{
    std::vector<glm::dvec3> points;
    std::vector<std::array<std::uint32_t, 3>> triangles; ///< by the numbers of points
};

/// A plane that cuts away what lies on the side of its normal.
struct CuttingPlane
{
    glm::dvec3 normal; ///< of length 1
    glm::dvec3 point;
};

/// What is solid at the nodes of a scene: the opaque triangles that hang together and close, as
/// FindClosedShells finds them. The scene's graph must be up to date.
std::vector<Solid> FindClosedSolids(Scene& scene);

/// Which pixels of a picture look at a plane where it runs through a solid.
class SectionMask
{
public:
    /// @param toClip world to clip space; the whole section must lie before the eye.
    SectionMask(int width, int height, const glm::dmat4& toClip);

    /// Adds the section through a solid, seen from the side that is cut away.
    void Add(const Solid& solid, const CuttingPlane& plane);

    /// Whether the middle of a pixel lies in a section; the origin is the lower left corner.
    bool IsInside(int x, int y) const;

    /// Whether a pixel is farther than that from the rim of every section.
    bool IsClear(int x, int y, int distance) const;

private:
    /// A side of a section in pixels; the solid lies on its left.
    struct Side
    {
        double x1, y1, x2, y2;
    };

    std::vector<Side> SidesOf(const Solid& solid, const CuttingPlane& plane) const;

    std::size_t Index(int x, int y) const { return static_cast<std::size_t>(y * m_width + x); }

    int m_width;
    int m_height;
    glm::dmat4 m_toClip;
    std::vector<char> m_inside;
    std::vector<char> m_rim;
};

} // namespace OV::Test
