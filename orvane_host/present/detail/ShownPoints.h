#pragma once

#include "orvane_host/geometry/SectionFill.h"
#include "orvane_host/view/SceneFit.h"
#include "orvane/math/Vector.h"

#include <array>
#include <functional>
#include <vector>

namespace OV
{

class Node;
class Scene;

} // namespace OV

namespace OV::Host::Detail
{

/// The corners, in world space, of what is drawn below a node and at it and is left when planes
/// have cut away what lies on the side of their normals; without those that are not finite or beyond 1e15, which no
/// view can have in it. Globals must be up to date.
/// @param counts which meshes at which nodes are looked at.
std::vector<Vector> ShownPoints(const Node& node, const SceneFit::Filter& counts,
                                const std::vector<SectionPlane>& planes);

/// The same as polygons, each of which is convex; one of a single corner is a point.
void VisitShown(const Node& node, const SceneFit::Filter& counts, const std::vector<SectionPlane>& planes,
                const std::function<void(const std::vector<std::array<double, 3>>&)>& visit);

/// Puts points into a scene as a mesh, for SceneFit.
void AddPoints(Scene& scene, const std::vector<Vector>& points);

} // namespace OV::Host::Detail
