#include "apps/viewer/Walker.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <glm/geometric.hpp>

#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace OV::ViewerApp
{

namespace
{

glm::dvec3 InWorld(const Node& node, const Vector& p)
{
    const auto& m = node.GetGlobal().GetTransf3d().m;
    return {m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3],
            m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3],
            m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3]};
}

/// How far down a triangle is met; by the shares of its corners in the place where it is.
std::optional<double> Meet(const std::array<glm::dvec3, 3>& corners, const glm::dvec3& point, const glm::dvec3& down)
{
    const glm::dvec3 first = corners[1] - corners[0];
    const glm::dvec3 second = corners[2] - corners[0];
    const glm::dvec3 across = glm::cross(down, second);
    const double turned = glm::dot(first, across);
    // One on edge carries nobody.
    if (!(std::abs(turned) > 1e-9 * glm::length(first) * glm::length(second)))
    {
        return std::nullopt;
    }
    const glm::dvec3 from = point - corners[0];
    const double u = glm::dot(from, across) / turned;
    const glm::dvec3 other = glm::cross(from, first);
    const double v = glm::dot(down, other) / turned;
    const double depth = glm::dot(second, other) / turned;
    const bool isMet = u >= 0.0 && v >= 0.0 && u + v <= 1.0 && depth >= 0.0;
    return isMet ? std::optional<double>(depth) : std::nullopt;
}

void FindFloor(const MeshNode& node, const glm::dvec3& point, const glm::dvec3& down, std::optional<double>& nearest)
{
    for (const Mesh* const mesh : node.GetMeshes())
    {
        const std::vector<Vector>& positions = mesh->GetPositionBuffer();
        const std::vector<unsigned short>& indices = mesh->GetIndices();
        for (std::size_t i = 0; i + 2 < indices.size(); i += 3)
        {
            if (indices[i] >= positions.size() || indices[i + 1] >= positions.size()
                || indices[i + 2] >= positions.size())
            {
                continue;
            }
            const std::array<glm::dvec3, 3> corners = {InWorld(node, positions[indices[i]]),
                                                       InWorld(node, positions[indices[i + 1]]),
                                                       InWorld(node, positions[indices[i + 2]])};
            const auto depth = Meet(corners, point, down);
            if (depth && (!nearest || *depth < *nearest))
            {
                nearest = depth;
            }
        }
    }
}

} // namespace

std::optional<double> Walker::DepthOfFloor(const Node& node, const glm::dvec3& point, const glm::dvec3& up)
{
    std::optional<double> nearest;
    // Trees may be of any depth.
    std::vector<const Node*> left = {&node};
    while (!left.empty())
    {
        const Node* const next = left.back();
        left.pop_back();
        const auto* const place = dynamic_cast<const MeshNode*>(next);
        if (place && (place->GetFlags() & NodeFlagHidden) == 0)
        {
            FindFloor(*place, point, -up, nearest);
        }
        left.insert(left.end(), next->GetChildren().begin(), next->GetChildren().end());
    }
    return nearest;
}

} // namespace OV::ViewerApp
