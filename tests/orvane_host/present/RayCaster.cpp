#include "tests/orvane_host/present/RayCaster.h"

#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>

#include <algorithm>

namespace OV::Test
{

namespace
{

constexpr std::size_t kLeafSize = 4;

glm::dvec3 ToWorld(const Vector& point, const MeshNode& node)
{
    const auto& m = node.GetGlobal().GetTransf3d().m;
    glm::dvec3 world;
    for (int row = 0; row < 3; ++row)
    {
        world[row] = m[row][0] * point.x + m[row][1] * point.y + m[row][2] * point.z + m[row][3];
    }
    return world;
}

} // namespace

RayCaster::RayCaster(const Scene& scene)
{
    for (const auto* list : {&scene.GetOptimizedMaterials(), &scene.GetAlphaMaterials()})
    {
        for (Material* material : *list)
        {
            Collect(*material);
        }
    }
    if (!m_triangles.empty())
    {
        Build(0, m_triangles.size());
    }
}

void RayCaster::Collect(Material& material)
{
    for (Mesh* mesh : material.GetMeshes())
    {
        const bool twoSided =
            (material.GetFlags() & MaterialFlagNoCull) != 0 || (mesh->GetFlags() & MeshFlagNoCull) != 0;
        for (MeshNode* node : mesh->GetNodes())
        {
            if ((node->GetFlags() & (NodeFlagHidden | NodeFlagCulled)) == 0)
            {
                Collect(*mesh, *node, twoSided);
            }
        }
    }
}

void RayCaster::Collect(Mesh& mesh, MeshNode& node, bool twoSided)
{
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    const std::vector<unsigned short>& indices = mesh.GetIndices();
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
    {
        // In world space a mirrored node turns the order of the corners round by itself.
        const glm::dvec3 a = ToWorld(positions[indices[i]], node);
        const glm::dvec3 b = ToWorld(positions[indices[i + 1]], node);
        const glm::dvec3 c = ToWorld(positions[indices[i + 2]], node);
        m_triangles.push_back({a, {b - a, c - a}, twoSided, &mesh, &node});
    }
}

RayCaster::Box RayCaster::BoxOf(const Triangle& triangle)
{
    const glm::dvec3 b = triangle.corner + triangle.edges[0];
    const glm::dvec3 c = triangle.corner + triangle.edges[1];
    return {glm::min(triangle.corner, glm::min(b, c)), glm::max(triangle.corner, glm::max(b, c))};
}

void RayCaster::Build(std::size_t first, std::size_t count)
{
    const std::size_t self = m_branches.size();
    Box box = BoxOf(m_triangles[first]);
    for (std::size_t i = first + 1; i < first + count; ++i)
    {
        const Box own = BoxOf(m_triangles[i]);
        box = {glm::min(box.low, own.low), glm::max(box.high, own.high)};
    }
    m_branches.push_back({box, first, count, 0});
    if (count <= kLeafSize)
    {
        return;
    }
    const glm::dvec3 size = box.high - box.low;
    const int axis = size.x >= size.y && size.x >= size.z ? 0 : size.y >= size.z ? 1 : 2;
    const auto begin = m_triangles.begin() + static_cast<std::ptrdiff_t>(first);
    const auto middleOf = [axis](const Triangle& t)
    { return 3.0 * t.corner[axis] + t.edges[0][axis] + t.edges[1][axis]; };
    std::nth_element(begin, begin + static_cast<std::ptrdiff_t>(count / 2),
                     begin + static_cast<std::ptrdiff_t>(count),
                     [&](const Triangle& left, const Triangle& right) { return middleOf(left) < middleOf(right); });
    m_branches[self].count = 0;
    Build(first, count / 2);
    m_branches[self].second = m_branches.size();
    Build(first + count / 2, count - count / 2);
}

bool RayCaster::Meets(const Ray& ray, const Box& box, double limit)
{
    double from = ray.from;
    double to = limit;
    for (int axis = 0; axis < 3; ++axis)
    {
        double a = (box.low[axis] - ray.origin[axis]) / ray.direction[axis];
        double b = (box.high[axis] - ray.origin[axis]) / ray.direction[axis];
        // Written so that a ray within the plane of a side, which gives no number, goes through.
        if (a > b)
        {
            std::swap(a, b);
        }
        from = a > from ? a : from;
        to = b < to ? b : to;
    }
    return from <= to;
}

bool RayCaster::Hits(const Ray& ray, const Triangle& triangle, double& distance)
{
    const glm::dvec3 p = glm::cross(ray.direction, triangle.edges[1]);
    const double determinant = glm::dot(triangle.edges[0], p);
    // Above 0 where the corners run counter-clockwise seen along the ray.
    if (triangle.twoSided ? determinant == 0.0 : !(determinant > 0.0))
    {
        return false;
    }
    const glm::dvec3 s = ray.origin - triangle.corner;
    const double u = glm::dot(s, p) / determinant;
    const glm::dvec3 q = glm::cross(s, triangle.edges[0]);
    const double v = glm::dot(ray.direction, q) / determinant;
    distance = glm::dot(triangle.edges[1], q) / determinant;
    return u >= 0.0 && v >= 0.0 && u + v <= 1.0 && distance >= ray.from && distance <= ray.to;
}

/// Visits the hits of all triangles that may lie nearer than a limit, which may fall meanwhile.
template <class Visitor>
void RayCaster::Visit(const Ray& ray, const double& limit, const Visitor& visit) const
{
    std::size_t waiting[64];
    std::size_t depth = 0;
    if (!m_branches.empty())
    {
        waiting[depth++] = 0;
    }
    while (depth > 0)
    {
        const std::size_t index = waiting[--depth];
        const Branch& branch = m_branches[index];
        if (!Meets(ray, branch.box, limit))
        {
            continue;
        }
        if (branch.count == 0)
        {
            waiting[depth++] = branch.second;
            waiting[depth++] = index + 1;
            continue;
        }
        for (std::size_t i = branch.first; i < branch.first + branch.count; ++i)
        {
            double distance = 0.0;
            if (Hits(ray, m_triangles[i], distance))
            {
                visit(RayHit{distance, m_triangles[i].mesh, m_triangles[i].node});
            }
        }
    }
}

RayHit RayCaster::Cast(const Ray& ray) const
{
    RayHit nearest;
    nearest.distance = ray.to;
    Visit(ray, nearest.distance,
          [&](const RayHit& hit)
          {
              if (!nearest.mesh || hit.distance < nearest.distance)
              {
                  nearest = hit;
              }
          });
    return nearest;
}

std::vector<RayHit> RayCaster::CastThrough(const Ray& ray) const
{
    std::vector<RayHit> all;
    Visit(ray, ray.to, [&](const RayHit& hit) { all.push_back(hit); });
    std::sort(all.begin(), all.end(),
              [](const RayHit& left, const RayHit& right) { return left.distance < right.distance; });
    std::vector<RayHit> first;
    for (const RayHit& hit : all)
    {
        if (std::none_of(first.begin(), first.end(), [&](const RayHit& known) { return known.IsSame(hit); }))
        {
            first.push_back(hit);
        }
    }
    return first;
}

} // namespace OV::Test
