#pragma once

#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <array>
#include <vector>

namespace OV::Host::Detail
{

using Polygon = std::vector<glm::dvec4>;

/// What is left of a polygon on the side of a plane where `distance` is 0 or more.
template <class Distance>
Polygon Clipped(const Polygon& polygon, const Distance& distance)
{
    Polygon kept;
    for (std::size_t i = 0; i < polygon.size(); ++i)
    {
        const glm::dvec4& a = polygon[i];
        const glm::dvec4& b = polygon[(i + 1) % polygon.size()];
        const double da = distance(a);
        const double db = distance(b);
        if (da >= 0.0)
        {
            kept.push_back(a);
        }
        if ((da >= 0.0) != (db >= 0.0))
        {
            kept.push_back(a + (b - a) * (da / (da - db)));
        }
    }
    return kept;
}

/// Of a box; their numbers have a bit for each axis.
std::array<glm::dvec4, 8> Corners(const glm::dvec3& low, const glm::dvec3& high);

glm::dvec4 RowOf(const glm::dmat4& matrix, int row);

/// The corners of what a view and a box have in common.
class SeenPart
{
public:
    SeenPart(const glm::dmat4& worldToClip, const glm::dvec3& low, const glm::dvec3& high);

    const std::vector<Polygon>& GetFaces() const { return m_faces; }

private:
    template <class Clip>
    void AddFaces(const std::array<glm::dvec4, 8>& corners, const Clip& clip);

    std::vector<Polygon> m_faces;
};

} // namespace OV::Host::Detail
