#include "tests/orvane_host/present/NearestByHand.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <glm/glm.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

namespace OV::Test
{

namespace
{

using Polygon = std::vector<glm::dvec3>;

/// What of a polygon lies where a plane's function isn't negative.
template <class Function>
Polygon Clipped(const Polygon& polygon, Function height)
{
    Polygon left;
    for (std::size_t i = 0; i < polygon.size(); ++i)
    {
        const glm::dvec3 from = polygon[i];
        const glm::dvec3 to = polygon[(i + 1) % polygon.size()];
        const double here = height(from);
        const double there = height(to);
        if (here >= 0.0)
        {
            left.push_back(from);
        }
        if ((here >= 0.0) != (there >= 0.0))
        {
            left.push_back(from + (to - from) * (here / (here - there)));
        }
    }
    return left;
}

} // namespace

double NearestByHand(const Scene& scene, const CameraNode& camera, double aspect,
                     const std::vector<Host::SectionPlane>& cuts)
{
    const auto toVec = [](const Vector& v) { return glm::dvec3(v.x, v.y, v.z); };
    const auto& e = camera.GetGlobal().GetTransf3d().m;
    const auto column = [&](int i) { return glm::dvec3(e[0][i], e[1][i], e[2][i]); };
    const double tangent = std::tan(static_cast<double>(camera.GetFOV()));
    const double across = aspect > 1.0 ? tangent * aspect : tangent;
    const double up = aspect < 1.0 ? tangent / aspect : tangent;
    const auto depthOf = [&](const glm::dvec3& p) { return -glm::dot(p - column(3), column(2)); };
    const auto rightOf = [&](const glm::dvec3& p) { return glm::dot(p - column(3), column(0)); };
    const auto heightOf = [&](const glm::dvec3& p) { return glm::dot(p - column(3), column(1)); };
    double nearest = std::numeric_limits<double>::infinity();
    for (const Mesh* mesh : scene.EachMesh())
    {
        const std::vector<Vector>& positions = mesh->GetPositionBuffer();
        const std::vector<unsigned short>& indices = mesh->GetIndices();
        for (const MeshNode* node : mesh->EachNode())
        {
            if (!mesh->GetMaterial() || (node->GetFlags() & NodeFlagHidden) != 0)
            {
                continue;
            }
            const auto& m = node->GetGlobal().GetTransf3d().m;
            const auto placed = [&](const Vector& p) {
                return glm::dvec3(m[0][0] * p.x + m[0][1] * p.y + m[0][2] * p.z + m[0][3],
                                  m[1][0] * p.x + m[1][1] * p.y + m[1][2] * p.z + m[1][3],
                                  m[2][0] * p.x + m[2][1] * p.y + m[2][2] * p.z + m[2][3]);
            };
            for (std::size_t i = 0; i + 3 <= indices.size(); i += 3)
            {
                const glm::dvec3 corners[] = {placed(positions[indices[i]]), placed(positions[indices[i + 1]]),
                                              placed(positions[indices[i + 2]])};
                const auto isNear = [&](const glm::dvec3& p) { return depthOf(p) < nearest; };
                const auto isBehind = [&](const glm::dvec3& p) { return depthOf(p) < 0.0; };
                if (std::none_of(std::begin(corners), std::end(corners), isNear)
                    || std::all_of(std::begin(corners), std::end(corners), isBehind))
                {
                    continue;
                }
                Polygon polygon(std::begin(corners), std::end(corners));
                polygon = Clipped(polygon, [&](const glm::dvec3& p) { return across * depthOf(p) - rightOf(p); });
                polygon = Clipped(polygon, [&](const glm::dvec3& p) { return across * depthOf(p) + rightOf(p); });
                polygon = Clipped(polygon, [&](const glm::dvec3& p) { return up * depthOf(p) - heightOf(p); });
                polygon = Clipped(polygon, [&](const glm::dvec3& p) { return up * depthOf(p) + heightOf(p); });
                for (const Host::SectionPlane& cut : cuts)
                {
                    polygon = Clipped(polygon, [&](const glm::dvec3& p) {
                        return -glm::dot(toVec(cut.normal), p - toVec(cut.position));
                    });
                }
                for (const glm::dvec3& p : polygon)
                {
                    nearest = std::min(nearest, depthOf(p));
                }
            }
        }
    }
    return nearest;
}

} // namespace OV::Test
