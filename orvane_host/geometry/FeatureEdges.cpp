#include "orvane_host/geometry/FeatureEdges.h"

#include "orvane_host/geometry/FeatureLines.h"
#include "orvane_host/geometry/detail/DepthRank.h"
#include "orvane_host/geometry/detail/EdgeFinder.h"
#include "orvane_host/geometry/detail/MeshNodes.h"
#include "orvane_host/geometry/detail/VertexWelder.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Scene.h"

#include <algorithm>

namespace OV::Host
{

namespace
{

/// The room that the axis of a line needs, in pixels.
constexpr float kMostReach = 0.5f;

/// A line has one depth over all of its width. At its rim, on a face that falls away under it, it
/// stands out by half its width, and by the room of the face besides: what lies closer than the
/// slope over so many pixels behind a face, rafters below a roof for instance, would come through.
constexpr float kMostStanding = 1.7f;

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
    // The lines stay when this goes.
    FeatureLines lines(scene);
    const std::size_t segments = lines.Show(style, creaseDegrees);
    lines.Leave();
    return segments;
}

LineRoom FeatureEdges::RoomFor(float lineWidth, float scale)
{
    // The slope of a polygon offset is the larger one along the axes of the picture, which is up
    // to this much less than that across a line.
    constexpr float diagonal = 1.4143f;
    const float halfWidth = lineWidth / 2.0f;
    const float left = std::max(kMostStanding - halfWidth, 0.0f) / diagonal;
    const float reach = std::min({halfWidth, kMostReach, left}) * scale;
    return {diagonal * reach, Detail::DepthRank::RoomUnits};
}

void FeatureEdges::MakeRoom(Scene& scene, float lineWidth, float scale)
{
    const LineRoom room = RoomFor(lineWidth, scale);
    for (const auto* list : {&scene.GetOptimizedMaterials(), &scene.GetAlphaMaterials()})
    {
        for (Material* material : *list)
        {
            const int rank = Detail::DepthRank::Of(Detail::DepthRank::OffsetOf(*material));
            Detail::DepthRank::Give(*material, Detail::DepthRank::WithRoom(rank, room.factor, room.units));
        }
    }
}

bool FeatureEdges::HasRoom(const Material& material)
{
    return Detail::DepthRank::HasRoom(Detail::DepthRank::OffsetOf(material));
}

} // namespace OV::Host
