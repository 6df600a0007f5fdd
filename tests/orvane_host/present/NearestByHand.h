#pragma once

#include "orvane_host/geometry/SectionFill.h"

#include <vector>

namespace OV
{

class CameraNode;
class Scene;

} // namespace OV

namespace OV::Test
{

/// How far before the eye the nearest place lies that a camera with perspective sees, of all triangles of
/// meshes with a material at nodes that aren't hidden, cut by planes: looks at each. Infinite for none.
/// @param aspect width over height of the picture.
double NearestByHand(const Scene& scene, const CameraNode& camera, double aspect,
                     const std::vector<Host::SectionPlane>& cuts = {});

} // namespace OV::Test
