#pragma once

#include "orvane_host/geometry/SectionFill.h"
#include "orvane_host/view/SceneFit.h"
#include "orvane/math/Vector.h"

#include <vector>

namespace OV
{

class Node;
class Scene;

} // namespace OV

namespace OV::Host::Detail
{

/// The corners, in world space, of what is drawn below a node and at it and is left when planes
/// have cut away what lies on the side of their normals. Globals must be up to date.
/// @param counts which meshes at which nodes are looked at.
std::vector<Vector> ShownPoints(const Node& node, const SceneFit::Filter& counts,
                                const std::vector<SectionPlane>& planes);

/// Puts points into a scene as a mesh, for SceneFit.
void AddPoints(Scene& scene, const std::vector<Vector>& points);

} // namespace OV::Host::Detail
