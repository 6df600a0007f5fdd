#include "apps/viewer/Measure.h"

#include "apps/viewer/Desk.h"
#include "apps/viewer/MeshTriangles.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <glm/geometric.hpp>
#include <glm/gtc/constants.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

/// Points that a pointer may be away from what it snaps to.
constexpr double SnapReach = 8.0;
/// In which what is near a place is looked for.
constexpr int Directions = 8;
/// Cosine between faces that lie in one plane: no one sees an edge between them.
constexpr double FlatCosine = 0.9999;

using Place = std::array<float, 3>;

struct Triangle
{
    std::array<Place, 3> keys;
    std::array<glm::dvec3, 3> corners;
};

std::vector<Triangle> TrianglesOf(const Mesh& mesh, const Node& node)
{
    const auto& m = node.GetGlobal().GetTransf3d().m;
    std::vector<Triangle> triangles;
    triangles.reserve(mesh.GetIndices().size() / 3);
    VisitTriangles(mesh, [&](const std::array<Vector, 3>& corners) {
        Triangle triangle;
        for (std::size_t k = 0; k < 3; ++k)
        {
            const Vector& p = corners[k];
            triangle.keys[k] = {p.x, p.y, p.z};
            for (int row = 0; row < 3; ++row)
            {
                triangle.corners[k][row] = m[row][0] * p.x + m[row][1] * p.y + m[row][2] * p.z + m[row][3];
            }
        }
        triangles.push_back(triangle);
    });
    return triangles;
}

/// An edge that bends or ends, and what lies at it.
struct Edge
{
    glm::dvec3 from;
    glm::dvec3 to;
    glm::dvec3 normal;
    bool isSeen = true; ///< no second face lies in the plane of the first one
};

std::vector<Edge> EdgesOf(const std::vector<Triangle>& triangles)
{
    std::map<std::pair<Place, Place>, Edge> edges;
    for (const Triangle& triangle : triangles)
    {
        const glm::dvec3 across =
            glm::cross(triangle.corners[1] - triangle.corners[0], triangle.corners[2] - triangle.corners[0]);
        const double area = glm::length(across);
        if (!(area > 0.0))
        {
            continue;
        }
        const glm::dvec3 normal = across / area;
        for (std::size_t k = 0; k < 3; ++k)
        {
            const std::size_t next = (k + 1) % 3;
            const auto key = std::minmax(triangle.keys[k], triangle.keys[next]);
            const auto added =
                edges.try_emplace({key.first, key.second}, Edge{triangle.corners[k], triangle.corners[next], normal});
            if (!added.second && std::abs(glm::dot(added.first->second.normal, normal)) > FlatCosine)
            {
                added.first->second.isSeen = false;
            }
        }
    }
    std::vector<Edge> seen;
    for (const auto& [key, edge] : edges)
    {
        if (edge.isSeen)
        {
            seen.push_back(edge);
        }
    }
    return seen;
}

/// Takes a corner that is nearer to a pixel than what was found, else such an edge.
/// @param place on what has the edges, where it is seen at that pixel or near it.
void SnapTo(const std::vector<Edge>& edges, const glm::dvec3& place, const glm::dvec2& pixel, const Navigator& view,
            double reach, Measure::Found& found)
{
    // In the world, so that what lies behind in the picture is not near.
    const double worldReach = reach * view.UnitsPerPixel(place) * 2.0;
    const auto take = [&](const glm::dvec3& point, Measure::Snap snap)
    {
        if (snap < found.snap || glm::distance(point, place) > worldReach)
        {
            return;
        }
        const auto there = view.PixelOf(point);
        const double distance = there ? glm::distance(*there, pixel) : reach;
        if (distance < (snap > found.snap ? reach : found.distance))
        {
            found = {point, snap, distance};
        }
    };
    for (const Edge& edge : edges)
    {
        take(edge.from, Measure::Snap::Corner);
        take(edge.to, Measure::Snap::Corner);
        const glm::dvec3 along = edge.to - edge.from;
        const double share = glm::dot(place - edge.from, along) / glm::dot(along, along);
        take(edge.from + along * std::clamp(share, 0.0, 1.0), Measure::Snap::Edge);
    }
}

} // namespace

void Measure::Turn(Kind kind)
{
    m_kind = kind == m_kind ? Kind::Off : kind;
    m_points.clear();
}

glm::dvec3 Measure::Snapped(const Mesh& mesh, const Node& node, const glm::dvec3& place,
                            const Navigator& view, double reach, Snap& snap)
{
    const auto pixel = view.PixelOf(place);
    Found found{place, Snap::Face, reach};
    if (pixel)
    {
        SnapTo(EdgesOf(TrianglesOf(mesh, node)), place, *pixel, view, reach, found);
    }
    snap = found.snap;
    return found.place;
}

std::optional<Measure::Found> Measure::Find(Desk& desk, const glm::dvec2& pixel, double reach)
{
    std::optional<Found> found;
    std::map<std::pair<const Mesh*, const Node*>, std::vector<Edge>> edges;
    const auto look = [&](const glm::dvec2& at, bool isMiddle)
    {
        const auto hit = desk.Pick(at);
        if (!hit)
        {
            return;
        }
        const glm::dvec3 place(hit->position.x, hit->position.y, hit->position.z);
        Found candidate = found.value_or(Found{place, Snap::Face, reach});
        auto known = edges.find({hit->mesh, hit->node});
        if (known == edges.end())
        {
            known = edges.emplace(std::make_pair(hit->mesh, hit->node), EdgesOf(TrianglesOf(*hit->mesh, *hit->node))).first;
        }
        SnapTo(known->second, place, pixel, desk.GetNavigator(), reach, candidate);
        if (isMiddle || candidate.snap != Snap::Face)
        {
            found = candidate;
        }
    };
    look(pixel, true);
    // At the rim of a thing a hand misses it as often as not, and would get what is far behind.
    for (const double radius : {reach / 2.0, reach})
    {
        for (int i = 0; i < Directions; ++i)
        {
            const double angle = i * 2.0 * glm::pi<double>() / Directions;
            look(pixel + glm::dvec2(std::cos(angle), std::sin(angle)) * radius, false);
        }
    }
    return found;
}

void Measure::Add(Desk& desk, const glm::dvec2& pixel, double ratio)
{
    const std::optional<Found> found = Find(desk, pixel, SnapReach * ratio);
    if (!found)
    {
        desk.Tell("There is nothing to measure at that place.");
        return;
    }
    if (IsWhole())
    {
        m_points.clear();
    }
    m_points.push_back(found->place);
    m_unit = desk.GetModel()->GetUnit();
    if (IsWhole())
    {
        desk.AddDimension(Dimension());
    }
    static constexpr const char* names[] = {"on a face", "on an edge", "at a corner"};
    desk.Tell("Point " + std::to_string(m_points.size()) + " " + names[static_cast<int>(found->snap)] + ". " + Text());
}

std::string Measure::Text() const
{
    if (m_kind == Kind::Off)
    {
        return {};
    }
    if (!IsWhole())
    {
        const std::size_t left = Count() - m_points.size();
        return m_kind == Kind::Angle && m_points.size() == 1 ? "Click the corner of the angle"
                                                             : "Click " + std::string(left == 1 ? "the last" : "a")
                                                                   + " point";
    }
    return Dimension().Text(m_unit);
}

Host::Dimension Measure::Dimension() const
{
    Host::Dimension dimension;
    for (const glm::dvec3& point : m_points)
    {
        dimension.points.emplace_back(point.x, point.y, point.z);
    }
    return dimension;
}

} // namespace OV::ViewerApp
