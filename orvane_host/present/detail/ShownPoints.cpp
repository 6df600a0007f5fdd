#include "orvane_host/present/detail/ShownPoints.h"

#include "orvane/math/Transf3d.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

using Point = std::array<double, 3>;
using Polygon = std::vector<Point>;

/// So many points have 16-bit indices.
constexpr std::size_t kMostPoints = 65535;

/// No camera has room for what is beyond.
constexpr double kFarthest = 1e15;

bool IsPlace(const Point& point)
{
    // Written so that what is not a number fails.
    return std::all_of(point.begin(), point.end(), [](double x) { return std::abs(x) <= kFarthest; });
}

Point Times(const QGM::Transf3d& transform, const Vector& v)
{
    Point result{};
    for (std::size_t row = 0; row < 3; ++row)
    {
        const auto& m = transform.m[row];
        result[row] = m[0] * v.x + m[1] * v.y + m[2] * v.z + m[3];
    }
    return result;
}

double HeightOver(const SectionPlane& plane, const Point& point)
{
    return plane.normal.x * (point[0] - plane.position.x) + plane.normal.y * (point[1] - plane.position.y)
        + plane.normal.z * (point[2] - plane.position.z);
}

/// What of a polygon, or of a point, lies on the other side of a plane's normal.
void ClipTo(const SectionPlane& plane, Polygon& polygon, Polygon& spare)
{
    spare.clear();
    for (std::size_t i = 0; i < polygon.size(); ++i)
    {
        const Point& from = polygon[i];
        const Point& to = polygon[(i + 1) % polygon.size()];
        const double here = HeightOver(plane, from);
        const double there = HeightOver(plane, to);
        if (here <= 0.0)
        {
            spare.push_back(from);
        }
        if ((here < 0.0 && there > 0.0) || (here > 0.0 && there < 0.0))
        {
            const double share = here / (here - there);
            spare.push_back({from[0] + (to[0] - from[0]) * share, from[1] + (to[1] - from[1]) * share,
                             from[2] + (to[2] - from[2]) * share});
        }
    }
    std::swap(polygon, spare);
}

class Visitor
{
public:
    using Visit = std::function<void(const Polygon&)>;

    Visitor(const std::vector<SectionPlane>& planes, const Visit& visit) : m_planes(planes), m_visit(visit) {}

    void Add(const Mesh& mesh, const QGM::Transf3d& toWorld)
    {
        const std::vector<Vector>& positions = mesh.GetPositionBuffer();
        const std::vector<unsigned short>& indices = mesh.GetIndices();
        if (mesh.Type() == NodeTypeLine)
        {
            AddLine(positions, indices, toWorld);
            return;
        }
        const Material* const material = mesh.GetMaterial();
        const std::size_t corners = material && (material->GetFlags() & MaterialFlagPoints) != 0 ? 1 : 3;
        for (std::size_t first = 0; first + corners <= indices.size(); first += corners)
        {
            m_polygon.clear();
            for (std::size_t i = first; i < first + corners; ++i)
            {
                const std::size_t index = indices[i];
                if (index < positions.size())
                {
                    m_polygon.push_back(Times(toWorld, positions[index]));
                }
            }
            AddPolygon();
        }
    }

private:
    /// The six indices of a part of a line name vertices of the point where it begins; those four
    /// further on are of the point where it ends.
    void AddLine(const std::vector<Vector>& positions, const std::vector<unsigned short>& indices,
                 const QGM::Transf3d& toWorld)
    {
        for (std::size_t first = 0; first < indices.size(); first += 6)
        {
            const std::size_t begin = indices[first];
            if (begin + 4 < positions.size())
            {
                m_polygon = {Times(toWorld, positions[begin]), Times(toWorld, positions[begin + 4])};
                AddPolygon();
            }
        }
    }

    /// What the planes leave of it.
    void AddPolygon()
    {
        for (const SectionPlane& plane : m_planes)
        {
            ClipTo(plane, m_polygon, m_spare);
        }
        if (!m_polygon.empty())
        {
            m_visit(m_polygon);
        }
    }

    const std::vector<SectionPlane>& m_planes;
    const Visit& m_visit;
    Polygon m_polygon;
    Polygon m_spare;
};

} // namespace

std::vector<Vector> ShownPoints(const Node& node, const SceneFit::Filter& counts,
                                const std::vector<SectionPlane>& planes)
{
    std::vector<Vector> points;
    VisitShown(node, counts, planes, [&points](const Polygon& polygon) {
        for (const Point& point : polygon)
        {
            if (IsPlace(point))
            {
                points.emplace_back(static_cast<float>(point[0]), static_cast<float>(point[1]),
                                    static_cast<float>(point[2]));
            }
        }
    });
    return points;
}

void VisitShown(const Node& node, const SceneFit::Filter& counts, const std::vector<SectionPlane>& planes,
                const std::function<void(const Polygon&)>& visit)
{
    Visitor visitor(planes, visit);
    std::vector<const Node*> open = {&node};
    while (!open.empty())
    {
        const Node* const next = open.back();
        open.pop_back();
        open.insert(open.end(), next->EachChild().begin(), next->EachChild().end());
        const auto* const meshNode = dynamic_cast<const MeshNode*>(next);
        if (!meshNode)
        {
            continue;
        }
        for (const Mesh* mesh : meshNode->EachMesh())
        {
            if (counts(*meshNode, *mesh))
            {
                visitor.Add(*mesh, meshNode->GetGlobal().GetTransf3d());
            }
        }
    }
}

void AddPoints(Scene& scene, const std::vector<Vector>& points)
{
    auto* const node = new MeshNode(&scene);
    scene.GetRoot()->AddChild(node, false);
    for (std::size_t first = 0; first < points.size(); first += kMostPoints)
    {
        const std::size_t last = std::min(first + kMostPoints, points.size());
        std::vector<unsigned short> indices;
        for (std::size_t i = first; i < last; ++i)
        {
            indices.push_back(static_cast<unsigned short>(i - first));
        }
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer({points.begin() + static_cast<std::ptrdiff_t>(first),
                                points.begin() + static_cast<std::ptrdiff_t>(last)});
        raw->SetIndices(std::move(indices));
        raw->EndDescription(true);
        (new Mesh(raw, &scene))->AddNode(node);
    }
}

} // namespace OV::Host::Detail
