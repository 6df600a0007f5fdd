#include "orvane_host/present/detail/SeenPart.h"

#include <glm/geometric.hpp>
#include <glm/matrix.hpp>

#include <utility>

namespace OV::Host::Detail
{

namespace
{

/// The faces of a box by its corners, whose numbers have a bit for each axis.
constexpr int kFaces[6][4] = {{0, 1, 3, 2}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 3, 7, 6}, {0, 2, 6, 4}, {1, 3, 7, 5}};

} // namespace

std::array<glm::dvec4, 8> Corners(const glm::dvec3& low, const glm::dvec3& high)
{
    std::array<glm::dvec4, 8> corners;
    for (int i = 0; i < 8; ++i)
    {
        corners[static_cast<std::size_t>(i)] = glm::dvec4((i & 1) != 0 ? high.x : low.x, (i & 2) != 0 ? high.y : low.y,
                                                          (i & 4) != 0 ? high.z : low.z, 1.0);
    }
    return corners;
}

glm::dvec4 RowOf(const glm::dmat4& matrix, int row)
{
    return {matrix[0][row], matrix[1][row], matrix[2][row], matrix[3][row]};
}

template <class Clip>
void SeenPart::AddFaces(const std::array<glm::dvec4, 8>& corners, const Clip& clip)
{
    for (const auto& face : kFaces)
    {
        Polygon polygon;
        for (const int corner : face)
        {
            polygon.push_back(corners[static_cast<std::size_t>(corner)]);
        }
        polygon = clip(std::move(polygon));
        if (!polygon.empty())
        {
            m_faces.push_back(std::move(polygon));
        }
    }
}

SeenPart::SeenPart(const glm::dmat4& worldToClip, const glm::dvec3& low, const glm::dvec3& high)
{
    std::array<glm::dvec4, 6> planes;
    const glm::dvec4 w = RowOf(worldToClip, 3);
    for (int axis = 0; axis < 3; ++axis)
    {
        const glm::dvec4 row = RowOf(worldToClip, axis);
        planes[static_cast<std::size_t>(2 * axis)] = w + row;
        planes[static_cast<std::size_t>(2 * axis + 1)] = w - row;
    }
    AddFaces(Corners(low, high), [&](Polygon polygon) {
        for (const glm::dvec4& plane : planes)
        {
            polygon = Clipped(polygon, [&](const glm::dvec4& p) { return glm::dot(plane, p); });
        }
        return polygon;
    });
    const glm::dmat4 toWorld = glm::inverse(worldToClip);
    std::array<glm::dvec4, 8> corners = Corners(glm::dvec3(-1.0), glm::dvec3(1.0));
    for (glm::dvec4& corner : corners)
    {
        corner = toWorld * corner;
        corner /= corner.w;
    }
    AddFaces(corners, [&](Polygon polygon) {
        for (int axis = 0; axis < 3; ++axis)
        {
            polygon = Clipped(polygon, [&](const glm::dvec4& p) { return p[axis] - low[axis]; });
            polygon = Clipped(polygon, [&](const glm::dvec4& p) { return high[axis] - p[axis]; });
        }
        return polygon;
    });
}

} // namespace OV::Host::Detail
