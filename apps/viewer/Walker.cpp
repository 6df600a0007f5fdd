#include "apps/viewer/Walker.h"

#include "apps/viewer/MeshTriangles.h"
#include "apps/viewer/Walls.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

using Corners = std::array<glm::dvec3, 3>;

glm::dvec3 InWorld(const Node& node, const Vector& p)
{
    const auto& m = node.GetGlobal().GetTransf3d().m;
    return {m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3],
            m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3],
            m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3]};
}

/// A box in world space about something.
struct Box
{
    glm::dvec3 low;
    glm::dvec3 high;

    bool Meets(const Box& other) const
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            if (low[axis] > other.high[axis] || high[axis] < other.low[axis])
            {
                return false;
            }
        }
        return true;
    }
};

Box BoxOf(const Mesh& mesh, const Node& node)
{
    Vector low;
    Vector high;
    mesh.GetBBox(low, high);
    Box box{InWorld(node, low), InWorld(node, low)};
    for (int corner = 1; corner < 8; ++corner)
    {
        const glm::dvec3 place = InWorld(
            node, Vector((corner & 1) ? high.x : low.x, (corner & 2) ? high.y : low.y, (corner & 4) ? high.z : low.z));
        box.low = glm::min(box.low, place);
        box.high = glm::max(box.high, place);
    }
    return box;
}

/// How far down a triangle is met; by the shares of its corners in the place where it is.
std::optional<double> Meet(const Corners& corners, const glm::dvec3& point, const glm::dvec3& down)
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

/// Calls with each triangle that is shown, of the meshes that meet a box.
template <typename Visit>
void VisitShown(const Node& model, const Box& within, Visit&& visit)
{
    // Trees may be of any depth.
    std::vector<const Node*> left = {&model};
    while (!left.empty())
    {
        const Node* const next = left.back();
        left.pop_back();
        const auto* const place = dynamic_cast<const MeshNode*>(next);
        if (place && (place->GetFlags() & NodeFlagHidden) == 0)
        {
            for (const Mesh* const mesh : place->EachMesh())
            {
                if (BoxOf(*mesh, *place).Meets(within))
                {
                    VisitTriangles(*mesh, [&](const std::array<Vector, 3>& corners) {
                        visit(Corners{InWorld(*place, corners[0]), InWorld(*place, corners[1]), InWorld(*place, corners[2])});
                    });
                }
            }
        }
        left.insert(left.end(), next->EachChild().begin(), next->EachChild().end());
    }
}

} // namespace

Walker::Walker(const Node& model, const glm::dvec3& up, double metre, std::vector<Cut> cuts) :
    m_model(model), m_up(up), m_metre(metre), m_cuts(std::move(cuts))
{
}

std::optional<double> Walker::DepthOfFloor(const glm::dvec3& point) const
{
    std::optional<double> nearest;
    constexpr double far = 1e30;
    const Box below{glm::min(point, point - m_up * far), point};
    VisitShown(m_model, below,
               [&](const Corners& corners)
               {
                   const auto depth = Meet(corners, point, -m_up);
                   if (!depth || (nearest && *depth >= *nearest))
                   {
                       return;
                   }
                   const glm::dvec3 place = point - m_up * *depth;
                   const bool isCutAway = std::any_of(m_cuts.begin(), m_cuts.end(), [&](const Cut& cut)
                                                      { return glm::dot(place - cut.position, cut.normal) > 0.0; });
                   nearest = isCutAway ? nearest : depth;
               });
    return nearest;
}

glm::dvec3 Walker::Walk(const glm::dvec3& eye, const glm::dvec3& way) const
{
    const double height = glm::dot(eye, m_up);
    const double low = height - (EyeHeight - StepHeight) * m_metre;
    const double high = height + HeadRoom * m_metre;
    const double radius = Radius * m_metre;
    Walls walls(m_up, low, high, m_cuts);
    const glm::dvec3 reach(glm::length(way) + 2.0 * radius + EyeHeight * m_metre);
    const Box about{eye - reach, eye + reach};
    VisitShown(m_model, about,
               [&](const Corners& corners)
               {
                   const Box box{glm::min(glm::min(corners[0], corners[1]), corners[2]),
                                 glm::max(glm::max(corners[0], corners[1]), corners[2])};
                   if (box.Meets(about))
                   {
                       walls.Add(corners);
                   }
               });
    const glm::dvec3 there = walls.Follow(eye, way, radius);
    const double knee = m_metre * (EyeHeight - StepHeight);
    const auto depth = DepthOfFloor(there - m_up * knee);
    return depth ? there + m_up * (m_metre * StepHeight - *depth) : there;
}

} // namespace OV::ViewerApp
