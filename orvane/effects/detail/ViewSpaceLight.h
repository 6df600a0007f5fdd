#pragma once

#include "orvane/math/Matrix3x3.h"

#include <glm/vec4.hpp>

namespace OV
{

class CameraNodeES20;
class MeshNode;

namespace Detail
{

/// Light along the camera's own axis, in view space, for effects that take none of the scene's.
inline const glm::vec4 kViewSpaceLight(0.0f, 0.0f, 1.0f, 1.0f);

/// Object to view space without scale: what carries the normals of such effects.
Matrix3x3 ViewSpaceNormalMatrix(const CameraNodeES20& camera, MeshNode& node);

} // namespace Detail

} // namespace OV
