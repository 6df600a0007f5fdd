#include "orvane_host/geometry/detail/SolidCutter.h"

#include "orvane_host/geometry/detail/ClosedShells.h"
#include "orvane_host/geometry/detail/MaterialCopy.h"
#include "orvane_host/geometry/detail/MeshNodes.h"
#include "orvane_host/geometry/detail/PlaneSection.h"
#include "orvane/math/Transf3d.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

using Point = PlaneSection::Point;

/// So many corners have 16-bit indices, in whole triangles.
constexpr std::size_t kMostCorners = 65535;

/// Of the largest coordinate: what a shader may be off that computes in single precision.
constexpr double kRounding = 1e-6;

bool CanBeSolid(const Mesh& mesh)
{
    const Material* const material = mesh.GetMaterial();
    // The effects fill nothing that lets light through either.
    return mesh.Type() != NodeTypeLine && material && (material->GetFlags() & MaterialFlagPoints) == 0
        && material->GetOpacity() >= 1.0f;
}

Point Times(const QGM::Transf3d& transform, const Point& point)
{
    const auto& m = transform.m;
    Point result{};
    for (std::size_t row = 0; row < 3; ++row)
    {
        result[row] = m[row][0] * point[0] + m[row][1] * point[1] + m[row][2] * point[2] + m[row][3];
    }
    return result;
}

Point ToPoint(const Vector& v)
{
    return {v.x, v.y, v.z};
}

Vector ToVector(const Point& point)
{
    return Vector(static_cast<float>(point[0]), static_cast<float>(point[1]), static_cast<float>(point[2]));
}

Point Lowered(const Point& position, const Point& normal, double by)
{
    return {position[0] - normal[0] * by, position[1] - normal[1] * by, position[2] - normal[2] * by};
}

std::shared_ptr<RawMesh> MakeRawMesh(const Point* first, const Point* last, const QGM::Transf3d& toNode, bool isMirror,
                                     const Color& color)
{
    std::vector<Vector> positions;
    std::vector<unsigned short> indices;
    for (const Point* corner = first; corner != last; ++corner)
    {
        indices.push_back(static_cast<unsigned short>(positions.size()));
        positions.push_back(ToVector(Times(toNode, *corner)));
    }
    for (std::size_t i = 0; isMirror && i + 2 < indices.size(); i += 3)
    {
        std::swap(indices[i], indices[i + 1]);
    }
    auto raw = std::make_shared<RawMesh>();
    raw->SetColorBuffer(std::vector<Color>(positions.size(), color));
    // The basic look cuts what is lit alone, which has normals; any will do.
    raw->SetNormalBuffer(std::vector<Vector>(positions.size(), Vector(0.0f, 0.0f, 1.0f)));
    raw->SetPositionBuffer(std::move(positions));
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    return raw;
}

/// The largest coordinate of the shells in world space.
template <typename Shells>
double ReachOf(const Shells& shells, const Transform& toWorld)
{
    double reach = 0.0;
    for (const Vector& point : shells.points)
    {
        for (const double place : Times(toWorld.GetTransf3d(), ToPoint(point)))
        {
            reach = std::max(reach, std::abs(place));
        }
    }
    return reach;
}

/// The corners of the faces, in world space and clockwise from the side that is cut away.
template <typename Shells>
std::vector<Point> CutShells(const Shells& shells, const Transform& toWorld, bool isMirror, const Point& normal,
                             const Point& position)
{
    PlaneSection section(normal, position);
    std::vector<Point> points;
    std::vector<double> heights;
    for (const Vector& point : shells.points)
    {
        points.push_back(Times(toWorld.GetTransf3d(), ToPoint(point)));
        heights.push_back(section.HeightOf(points.back()));
    }
    for (const WeldedTriangle& triangle : shells.triangles)
    {
        const std::uint32_t a = triangle[0];
        const std::uint32_t b = triangle[isMirror ? 2 : 1];
        const std::uint32_t c = triangle[isMirror ? 1 : 2];
        section.Add({points[a], points[b], points[c]}, {heights[a], heights[b], heights[c]});
    }
    return section.Fill();
}

/// Whether a plane runs through the box of a mesh at a node.
bool IsCut(const Mesh& mesh, const MeshNode& node, const SectionPlane& plane)
{
    Vector low;
    Vector high;
    mesh.GetBBox(low, high);
    const Point normal = ToPoint(plane.normal);
    const Point position = ToPoint(plane.position);
    bool above = false;
    bool below = false;
    for (int corner = 0; corner < 8; ++corner)
    {
        const Point place = Times(node.GetGlobal().GetTransf3d(),
                                  {corner & 1 ? high.x : low.x, corner & 2 ? high.y : low.y, corner & 4 ? high.z : low.z});
        double height = 0.0;
        for (std::size_t i = 0; i < 3; ++i)
        {
            height += normal[i] * (place[i] - position[i]);
        }
        above = above || height > 0.0;
        below = below || height < 0.0;
    }
    return above && below;
}

/// Whether a plane may run through a box in a node's space.
bool MayCut(const Vector& low, const Vector& high, const Transform& toWorld, const Point& normal, const Point& position,
            double slack)
{
    double least = std::numeric_limits<double>::max();
    double most = std::numeric_limits<double>::lowest();
    for (int corner = 0; corner < 8; ++corner)
    {
        const Point place = Times(toWorld.GetTransf3d(), {corner & 1 ? high.x : low.x, corner & 2 ? high.y : low.y,
                                                          corner & 4 ? high.z : low.z});
        double height = 0.0;
        for (std::size_t i = 0; i < 3; ++i)
        {
            height += normal[i] * (place[i] - position[i]);
        }
        least = std::min(least, height);
        most = std::max(most, height);
    }
    return least <= slack && most >= -slack;
}

} // namespace

const SolidCutter::Shells& SolidCutter::ShellsOf(const MeshNode& node)
{
    Geometry parts;
    for (const Mesh* mesh : node.EachMesh())
    {
        if (CanBeSolid(*mesh))
        {
            parts.push_back(mesh->GetRawMesh());
        }
    }
    const auto [entry, isNew] = m_known.try_emplace(parts);
    if (isNew && !parts.empty())
    {
        std::vector<const RawMesh*> meshes;
        for (const std::shared_ptr<RawMesh>& part : parts)
        {
            meshes.push_back(part.get());
        }
        const VertexWelder welded(meshes);
        Shells& shells = entry->second;
        shells.triangles = FindClosedShells(welded);
        shells.points = welded.Points();
        shells.low = shells.high = shells.points.empty() ? Vector() : shells.points.front();
        for (const Vector& point : shells.points)
        {
            shells.low = Vector(std::min(shells.low.x, point.x), std::min(shells.low.y, point.y),
                                std::min(shells.low.z, point.z));
            shells.high = Vector(std::max(shells.high.x, point.x), std::max(shells.high.y, point.y),
                                 std::max(shells.high.z, point.z));
        }
    }
    return entry->second;
}

SolidCutter::Faces SolidCutter::Cut(const MeshNode& node, const std::vector<SectionPlane>& planes, float inset,
                                    const Color& color)
{
    Faces faces;
    const Shells& shells = ShellsOf(node);
    Transform toNode;
    toNode.Invert(node.GetGlobal());
    if (shells.triangles.empty() || !std::isfinite(toNode.GetPosition().x))
    {
        // What is flattened encloses nothing.
        return faces;
    }
    const bool isMirror = const_cast<MeshNode&>(node).IsGlobalMirror();
    const double reach = ReachOf(shells, node.GetGlobal());
    std::vector<Point> corners;
    for (const SectionPlane& plane : planes)
    {
        const Point normal = ToPoint(plane.normal);
        const Point position = Lowered(ToPoint(plane.position), normal, inset + kRounding * reach);
        if (!MayCut(shells.low, shells.high, node.GetGlobal(), normal, position, kRounding * reach))
        {
            continue;
        }
        const std::vector<Point> more = CutShells(shells, node.GetGlobal(), isMirror, normal, position);
        corners.insert(corners.end(), more.begin(), more.end());
        faces.cuts += more.empty() ? 0 : 1;
    }
    for (std::size_t first = 0; first < corners.size(); first += kMostCorners)
    {
        const std::size_t last = std::min(first + kMostCorners, corners.size());
        faces.meshes.push_back(MakeRawMesh(corners.data() + first, corners.data() + last, toNode.GetTransf3d(),
                                           isMirror, color));
    }
    return faces;
}

std::vector<MeshNode*> ShownMeshNodes(const Scene& scene)
{
    std::vector<MeshNode*> nodes = MeshNodesOf(scene);
    const auto isHidden = [](const MeshNode* node) { return (node->GetFlags() & NodeFlagHidden) != 0; };
    nodes.erase(std::remove_if(nodes.begin(), nodes.end(), isHidden), nodes.end());
    return nodes;
}

bool IsCut(const Mesh& mesh, const std::vector<SectionPlane>& planes)
{
    const PointerSpan<MeshNode> nodes = mesh.EachNode();
    return std::any_of(nodes.begin(), nodes.end(), [&](const MeshNode* node) {
        return std::any_of(planes.begin(), planes.end(),
                           [&](const SectionPlane& plane) { return IsCut(mesh, *node, plane); });
    });
}

/// The same surface, without meshes.
Material* CopyOf(const Material& other)
{
    auto copy = std::make_unique<Material>(other);
    CompleteCopy(other, *copy);
    return copy.release();
}

Material* MakeSectionMaterial(const Color& color)
{
    auto* const material = new Material("section");
    SetSectionColor(*material, color);
    material->flags = MaterialFlagUnlit | MaterialFlagNoCull;
    return material;
}

void SetSectionColor(Material& material, const Color& color)
{
    material.SetDiffuse(color);
    material.SetAmbient(color);
}

} // namespace OV::Host::Detail
