#include "tests/apps/render/SolidSection.h"

#include "orvane_host/geometry/detail/ClosedShells.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <glm/geometric.hpp>
#include <glm/gtc/type_ptr.hpp>
#include <glm/vec4.hpp>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace OV::Test
{

std::vector<Solid> FindClosedSolids(Scene& scene)
{
    std::map<MeshNode*, std::vector<const RawMesh*>> partsByNode;
    for (const auto* list : {&scene.GetOptimizedMaterials(), &scene.GetAlphaMaterials()})
    {
        for (Material* material : *list)
        {
            if (material->GetOpacity() < 1.0f)
            {
                continue;
            }
            for (Mesh* mesh : material->GetMeshes())
            {
                for (MeshNode* node : mesh->GetNodes())
                {
                    partsByNode[node].push_back(mesh->GetRawMesh().get());
                }
            }
        }
    }
    std::vector<Solid> solids;
    for (const auto& [node, parts] : partsByNode)
    {
        const Host::Detail::VertexWelder welded(parts);
        Matrix matrix;
        node->GetGlobal().ExtractMatrix(matrix);
        Solid solid;
        for (const Vector& v : welded.Points())
        {
            solid.points.emplace_back(glm::dmat4(glm::make_mat4(matrix.m)) * glm::dvec4(v.x, v.y, v.z, 1.0));
        }
        solid.triangles = Host::Detail::FindClosedShells(welded);
        if (!solid.triangles.empty())
        {
            solids.push_back(std::move(solid));
        }
    }
    return solids;
}

SectionMask::SectionMask(int width, int height, const glm::dmat4& toClip) :
    m_width(width), m_height(height), m_toClip(toClip), m_inside(static_cast<std::size_t>(width * height), 0),
    m_rim(m_inside)
{
}

std::vector<SectionMask::Side> SectionMask::SidesOf(const Solid& solid, const CuttingPlane& plane) const
{
    std::vector<double> heights;
    for (const glm::dvec3& point : solid.points)
    {
        heights.push_back(glm::dot(plane.normal, point - plane.point));
    }
    const auto toPixel = [&](const glm::dvec3& point)
    {
        const glm::dvec4 clip = m_toClip * glm::dvec4(point, 1.0);
        return std::pair((clip.x / clip.w + 1.0) / 2.0 * m_width, (clip.y / clip.w + 1.0) / 2.0 * m_height);
    };
    // Counted from one end whichever triangle asks, so that neighbours meet in the same point.
    const auto crossing = [&](std::uint32_t a, std::uint32_t b)
    {
        const auto [from, to] = std::minmax(a, b);
        const double share = heights[from] / (heights[from] - heights[to]);
        return toPixel(solid.points[from] + (solid.points[to] - solid.points[from]) * share);
    };
    std::vector<Side> sides;
    for (const auto& triangle : solid.triangles)
    {
        std::pair<double, double> up;
        std::pair<double, double> down;
        int crossings = 0;
        for (int i = 0; i < 3; ++i)
        {
            const std::uint32_t a = triangle[static_cast<std::size_t>(i)];
            const std::uint32_t b = triangle[static_cast<std::size_t>((i + 1) % 3)];
            if ((heights[a] >= 0.0) != (heights[b] >= 0.0))
            {
                (heights[b] >= 0.0 ? up : down) = crossing(a, b);
                ++crossings;
            }
        }
        if (crossings == 2)
        {
            sides.push_back({down.first, down.second, up.first, up.second});
        }
    }
    return sides;
}

void SectionMask::Add(const Solid& solid, const CuttingPlane& plane)
{
    const std::vector<Side> sides = SidesOf(solid, plane);
    std::vector<char> inside(m_inside.size(), 0);
    // Seen from the side that is cut away what is solid lies on the left of a side.
    for (int y = 0; y < m_height; ++y)
    {
        // How often the row goes in and out up to each place.
        const double middle = y + 0.5;
        std::map<double, int> steps;
        for (const Side& side : sides)
        {
            if ((side.y1 >= middle) != (side.y2 >= middle))
            {
                const double x = side.x1 + (side.x2 - side.x1) * (middle - side.y1) / (side.y2 - side.y1);
                // Going right, what runs down has the solid on its right.
                steps[x] += (side.y1 < side.y2 ? -1 : 1);
            }
        }
        int depth = 0;
        for (auto step = steps.begin(); step != steps.end() && std::next(step) != steps.end(); ++step)
        {
            depth += step->second;
            const int first = std::max(0, static_cast<int>(std::ceil(step->first - 0.5)));
            const int last = std::min(m_width - 1, static_cast<int>(std::floor(std::next(step)->first - 0.5)));
            for (int x = first; depth > 0 && x <= last; ++x)
            {
                inside[Index(x, y)] = 1;
            }
        }
    }
    for (int y = 0; y < m_height; ++y)
    {
        for (int x = 0; x < m_width; ++x)
        {
            const char here = inside[Index(x, y)];
            m_inside[Index(x, y)] |= here;
            m_rim[Index(x, y)] |= (x > 0 && inside[Index(x - 1, y)] != here) || (y > 0 && inside[Index(x, y - 1)] != here);
        }
    }
}

bool SectionMask::IsInside(int x, int y) const
{
    return m_inside[Index(x, y)] != 0;
}

bool SectionMask::IsClear(int x, int y, int distance) const
{
    // A rim is marked on its right and on its upper side.
    for (int row = std::max(0, y - distance + 1); row <= std::min(m_height - 1, y + distance); ++row)
    {
        for (int column = std::max(0, x - distance + 1); column <= std::min(m_width - 1, x + distance); ++column)
        {
            if (m_rim[Index(column, row)] != 0)
            {
                return false;
            }
        }
    }
    return true;
}

} // namespace OV::Test
