#include "orvane_host/geometry/FeatureEdges.h"

#include "orvane_host/geometry/detail/EdgeFinder.h"
#include "orvane_host/geometry/detail/MeshNodes.h"
#include "orvane_host/geometry/detail/VertexWelder.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <map>
#include <memory>

namespace OV::Host
{

namespace
{

/// So many segments have 16-bit indices to their points, four vertices each.
constexpr std::size_t kMostSegments = 65536 / 4 / 2;

/// Units of depth that faces are moved besides: what the rounding of a depth may differ by. No
/// round number, by which room is told from an offset that a host has set.
constexpr float kDepthUnits = 4.0625f;

/// The room that the axis of a line needs, in pixels.
constexpr float kMostReach = 0.5f;

/// A line has one depth over all of its width. At its rim, on a face that falls away under it, it
/// stands out by half its width, and by the room of the face besides: what lies closer than the
/// slope over so many pixels behind a face, rafters below a roof for instance, would come through.
constexpr float kMostStanding = 1.7f;

/// The lines of one geometry.
struct SharedLines
{
    std::vector<Line*> lines;
    std::size_t segments = 0;
};

using LinesByGeometry = std::map<std::vector<const RawMesh*>, SharedLines>;

bool HasEdges(Mesh& mesh)
{
    const Material* material = mesh.GetMaterial();
    return mesh.Type() != NodeTypeLine && (!material || (material->GetFlags() & MaterialFlagPoints) == 0);
}

std::vector<const RawMesh*> GeometryOf(const MeshNode& node)
{
    std::vector<const RawMesh*> parts;
    for (Mesh* mesh : node.GetMeshes())
    {
        if (HasEdges(*mesh))
        {
            parts.push_back(mesh->GetRawMesh().get());
        }
    }
    return parts;
}

std::shared_ptr<RawLine> MakeRawLine(const FeatureEdge* first, const FeatureEdge* last)
{
    std::vector<Vector> points;
    std::vector<unsigned short> pairs;
    for (const FeatureEdge* edge = first; edge != last; ++edge)
    {
        const auto start = static_cast<unsigned short>(points.size());
        points.push_back(edge->start);
        points.push_back(edge->end);
        pairs.push_back(start);
        pairs.push_back(static_cast<unsigned short>(start + 1));
    }
    auto raw = std::make_shared<RawLine>();
    raw->SetPositionBuffer(points);
    raw->SetIndices(pairs);
    raw->EndDescription(true);
    return raw;
}

SharedLines MakeLines(Scene& scene, LineStyle& style, const std::vector<FeatureEdge>& edges)
{
    SharedLines made;
    made.segments = edges.size();
    for (std::size_t first = 0; first < edges.size(); first += kMostSegments)
    {
        const std::size_t last = std::min(first + kMostSegments, edges.size());
        auto* line = new Line(MakeRawLine(edges.data() + first, edges.data() + last), &scene);
        style.AddLine(line);
        made.lines.push_back(line);
    }
    return made;
}

} // namespace

std::vector<FeatureEdge> FeatureEdges::Find(const std::vector<const RawMesh*>& parts, float creaseDegrees)
{
    const Detail::VertexWelder welded(parts);
    return Detail::EdgeFinder(welded, creaseDegrees).Find();
}

std::vector<FeatureEdge> FeatureEdges::Find(const RawMesh& mesh, float creaseDegrees)
{
    return Find(std::vector<const RawMesh*>{&mesh}, creaseDegrees);
}

std::size_t FeatureEdges::AddTo(Scene& scene, LineStyle& style, float creaseDegrees)
{
    const std::vector<MeshNode*> nodes = Detail::MeshNodesOf(scene);
    LinesByGeometry known;
    std::size_t segments = 0;
    for (MeshNode* node : nodes)
    {
        const std::vector<const RawMesh*> parts = GeometryOf(*node);
        if (parts.empty())
        {
            continue;
        }
        const auto [entry, isNew] = known.try_emplace(parts);
        if (isNew)
        {
            entry->second = MakeLines(scene, style, Find(parts, creaseDegrees));
        }
        for (Line* line : entry->second.lines)
        {
            line->AddNode(node);
        }
        segments += entry->second.segments;
    }
    return segments;
}

void FeatureEdges::MakeRoom(Scene& scene, float lineWidth, float scale)
{
    // The slope of a polygon offset is the larger one along the axes of the picture, which is up
    // to this much less than that across a line.
    constexpr float diagonal = 1.4143f;
    const float halfWidth = lineWidth / 2.0f;
    const float left = std::max(kMostStanding - halfWidth, 0.0f) / diagonal;
    const float reach = std::min({halfWidth, kMostReach, left}) * scale;
    for (const auto* list : {&scene.GetOptimizedMaterials(), &scene.GetAlphaMaterials()})
    {
        for (Material* material : *list)
        {
            material->SetFlags(MaterialFlagPolygonOffset);
            material->polygonOffsetFactor = diagonal * reach;
            material->polygonOffsetUnits = kDepthUnits;
        }
    }
}

bool FeatureEdges::HasRoom(const Material& material)
{
    return (material.GetFlags() & MaterialFlagPolygonOffset) != 0 && material.polygonOffsetUnits == kDepthUnits;
}

} // namespace OV::Host
