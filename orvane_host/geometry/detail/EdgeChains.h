#pragma once

#include "orvane_host/geometry/FeatureEdges.h"

#include <vector>

namespace OV::Host::Detail
{

/// Orders edges so that they follow each other where they can, as polylines: dashes then run on from
/// one to the next. Where more than two meet, those go on that go straight on. Edges that do not
/// start where the one before ends begin a new polyline; some are turned round.
std::vector<FeatureEdge> ChainEdges(const std::vector<FeatureEdge>& edges);

} // namespace OV::Host::Detail
