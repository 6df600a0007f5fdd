#pragma once

#include "orvane_host/geometry/FeatureEdges.h"

#include <memory>
#include <vector>

namespace OV
{

class MeshNode;
class RawLine;
class RawMesh;

} // namespace OV

namespace OV::Host::Detail
{

/// The geometry at a node that has edges: neither lines nor points.
std::vector<std::shared_ptr<RawMesh>> EdgeParts(const MeshNode& node);

/// Edges as lines, as many as 16-bit indices need, in the order of ChainEdges.
std::vector<std::shared_ptr<RawLine>> MakeRawLines(const std::vector<FeatureEdge>& edges);

} // namespace OV::Host::Detail
