#pragma once

#include "orvane_host/geometry/detail/VertexWelder.h"

#include <vector>

namespace OV::Host::Detail
{

/// The triangles that close: those of which every edge is run along as often one way as the other
/// by the triangles that they hang together with.
///
/// An edge whose other side is made of several shorter ones (a T-junction) counts piece by piece.
/// What hangs together with a hole or a loose face is left out as a whole.
std::vector<WeldedTriangle> FindClosedShells(const VertexWelder& welded);

} // namespace OV::Host::Detail
