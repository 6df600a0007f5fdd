#include "orvane_host/geometry/detail/LineGeometry.h"

#include "orvane_host/geometry/detail/EdgeChains.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"

#include <algorithm>
#include <cstddef>

namespace OV::Host::Detail
{

namespace
{

/// So many segments have 16-bit indices to their points, four vertices each.
constexpr std::size_t kMostSegments = 65536 / 4 / 2;

bool HasEdges(Mesh& mesh)
{
    const Material* material = mesh.GetMaterial();
    return mesh.Type() != NodeTypeLine && (!material || (material->GetFlags() & MaterialFlagPoints) == 0);
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

} // namespace

std::vector<std::shared_ptr<RawMesh>> EdgeParts(const MeshNode& node)
{
    std::vector<std::shared_ptr<RawMesh>> parts;
    for (Mesh* mesh : node.EachMesh())
    {
        if (HasEdges(*mesh))
        {
            parts.push_back(mesh->GetRawMesh());
        }
    }
    return parts;
}

std::vector<std::shared_ptr<RawLine>> MakeRawLines(const std::vector<FeatureEdge>& edges)
{
    const std::vector<FeatureEdge> chained = ChainEdges(edges);
    std::vector<std::shared_ptr<RawLine>> lines;
    for (std::size_t first = 0; first < chained.size(); first += kMostSegments)
    {
        const std::size_t last = std::min(first + kMostSegments, chained.size());
        lines.push_back(MakeRawLine(chained.data() + first, chained.data() + last));
    }
    return lines;
}

} // namespace OV::Host::Detail
