#include "orvane_host/geometry/SectionFill.h"

#include "orvane_host/geometry/detail/ClosedShells.h"
#include "orvane_host/geometry/detail/MeshNodes.h"
#include "orvane_host/geometry/detail/PlaneSection.h"
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
#include <cstdlib>
#include <iterator>
#include <map>
#include <memory>
#include <new>
#include <utility>

namespace OV::Host
{

namespace
{

using Point = Detail::PlaneSection::Point;

/// So many corners have 16-bit indices, in whole triangles.
constexpr std::size_t kMostCorners = 65535;

/// Of the largest coordinate: what a shader may be off that computes in single precision.
constexpr double kRounding = 1e-6;

/// What closes of the meshes of a node, in the node's own space. Nodes with the same meshes share
/// it.
struct Shells
{
    std::vector<Vector> points;
    std::vector<Detail::WeldedTriangle> triangles;
};

using ShellsByGeometry = std::map<std::vector<const RawMesh*>, Shells>;

bool CanBeSolid(const Mesh& mesh)
{
    const Material* const material = mesh.GetMaterial();
    // The effects fill nothing that lets light through either.
    return mesh.Type() != NodeTypeLine && material && (material->GetFlags() & MaterialFlagPoints) == 0
        && material->GetOpacity() >= 1.0f;
}

const Shells& ShellsOf(const MeshNode& node, ShellsByGeometry& known)
{
    std::vector<const RawMesh*> parts;
    for (const Mesh* mesh : node.GetMeshes())
    {
        if (CanBeSolid(*mesh))
        {
            parts.push_back(mesh->GetRawMesh().get());
        }
    }
    const auto [entry, isNew] = known.try_emplace(parts);
    if (isNew && !parts.empty())
    {
        const Detail::VertexWelder welded(parts);
        entry->second = {welded.Points(), Detail::FindClosedShells(welded)};
    }
    return entry->second;
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

/// The largest coordinate of the shells in world space.
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

Point Lowered(const Point& position, const Point& normal, double by)
{
    return {position[0] - normal[0] * by, position[1] - normal[1] * by, position[2] - normal[2] * by};
}

/// The corners of the faces, in world space and clockwise from the side that is cut away.
std::vector<Point> Cut(const Shells& shells, const Transform& toWorld, bool isMirror, const Point& normal,
                       const Point& position)
{
    Detail::PlaneSection section(normal, position);
    std::vector<Point> points;
    std::vector<double> heights;
    for (const Vector& point : shells.points)
    {
        points.push_back(Times(toWorld.GetTransf3d(), ToPoint(point)));
        heights.push_back(section.HeightOf(points.back()));
    }
    for (const Detail::WeldedTriangle& triangle : shells.triangles)
    {
        const std::uint32_t a = triangle[0];
        const std::uint32_t b = triangle[isMirror ? 2 : 1];
        const std::uint32_t c = triangle[isMirror ? 1 : 2];
        section.Add({points[a], points[b], points[c]}, {heights[a], heights[b], heights[c]});
    }
    return section.Fill();
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
    raw->SetPositionBuffer(std::move(positions));
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    return raw;
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

bool IsCut(const Mesh& mesh, const std::vector<SectionPlane>& planes)
{
    const std::vector<MeshNode*>& nodes = mesh.GetNodes();
    return std::any_of(nodes.begin(), nodes.end(), [&](const MeshNode* node) {
        return std::any_of(planes.begin(), planes.end(),
                           [&](const SectionPlane& plane) { return IsCut(mesh, *node, plane); });
    });
}

/// The same surface, without meshes.
Material* CopyOf(const Material& other)
{
    auto* const copy = new Material(other);
    copy->flags = other.flags;
    if (other.pixels)
    {
        const std::size_t bytes = std::size_t(4) * static_cast<std::size_t>(other.pixelWidth)
            * static_cast<std::size_t>(other.pixelHeight);
        copy->pixels = static_cast<unsigned char*>(std::malloc(bytes));
        if (!copy->pixels)
        {
            delete copy;
            throw std::bad_alloc();
        }
        std::copy(other.pixels, other.pixels + bytes, copy->pixels);
    }
    copy->pixelWidth = other.pixelWidth;
    copy->pixelHeight = other.pixelHeight;
    copy->pointSize = other.pointSize;
    copy->polygonOffsetFactor = other.polygonOffsetFactor;
    copy->polygonOffsetUnits = other.polygonOffsetUnits;
    copy->clampTexture = other.clampTexture;
    copy->uScale = other.uScale;
    copy->vScale = other.vScale;
    copy->stippleOffset = other.stippleOffset;
    copy->stippleSize = other.stippleSize;
    copy->hatchUScale = other.hatchUScale;
    copy->hatchVScale = other.hatchVScale;
    copy->normalMapName = other.normalMapName;
    copy->opacityMapName = other.opacityMapName;
    std::copy(std::begin(other.reflectionFactors), std::end(other.reflectionFactors), copy->reflectionFactors);
    copy->noDepthWrite = other.noDepthWrite;
    return copy;
}

Material* MakeMaterial(Scene& scene, const Color& color)
{
    auto* const material = new Material("section");
    material->SetDiffuse(color);
    material->SetAmbient(color);
    material->flags = MaterialFlagUnlit | MaterialFlagNoCull;
    scene.AddMaterial(material);
    return material;
}

} // namespace

std::size_t SectionFill::AddTo(Scene& scene, const std::vector<SectionPlane>& planes, float inset, const Color& color)
{
    const std::vector<MeshNode*> nodes = Detail::MeshNodesOf(scene);
    ShellsByGeometry known;
    Material* material = nullptr;
    std::size_t count = 0;
    for (MeshNode* node : nodes)
    {
        if ((node->GetFlags() & NodeFlagHidden) != 0)
        {
            continue;
        }
        Transform toNode;
        toNode.Invert(node->GetGlobal());
        if (!std::isfinite(toNode.GetPosition().x))
        {
            // What is flattened encloses nothing.
            continue;
        }
        const Shells& shells = ShellsOf(*node, known);
        const bool isMirror = node->IsGlobalMirror();
        const double reach = ReachOf(shells, node->GetGlobal());
        std::vector<Point> corners;
        for (const SectionPlane& plane : planes)
        {
            const Point normal = ToPoint(plane.normal);
            const Point position = Lowered(ToPoint(plane.position), normal, inset + kRounding * reach);
            const std::vector<Point> more = Cut(shells, node->GetGlobal(), isMirror, normal, position);
            corners.insert(corners.end(), more.begin(), more.end());
            count += more.empty() ? 0 : 1;
        }
        for (std::size_t first = 0; first < corners.size(); first += kMostCorners)
        {
            const std::size_t last = std::min(first + kMostCorners, corners.size());
            material = material ? material : MakeMaterial(scene, color);
            auto* const mesh = new Mesh(MakeRawMesh(corners.data() + first, corners.data() + last,
                                                    toNode.GetTransf3d(), isMirror, color), &scene);
            material->AddMesh(mesh);
            mesh->AddNode(node);
        }
    }
    return count;
}

void SectionFill::ShowInsides(Scene& scene, const std::vector<SectionPlane>& planes)
{
    std::vector<Material*> materials;
    for (const auto* list : {&scene.GetOptimizedMaterials(), &scene.GetAlphaMaterials()})
    {
        materials.insert(materials.end(), list->begin(), list->end());
    }
    for (Material* material : materials)
    {
        std::vector<Mesh*> cut;
        std::copy_if(material->GetMeshes().begin(), material->GetMeshes().end(), std::back_inserter(cut),
                     [&](const Mesh* mesh) { return IsCut(*mesh, planes); });
        Material* open = material;
        if (!cut.empty() && cut.size() < material->GetMeshes().size())
        {
            open = CopyOf(*material);
            scene.AddMaterial(open);
            for (Mesh* mesh : cut)
            {
                open->AddMesh(mesh);
            }
        }
        open->flags |= cut.empty() ? 0u : MaterialFlagNoCull;
    }
}

} // namespace OV::Host
