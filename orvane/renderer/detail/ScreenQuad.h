#pragma once

#include <memory>

namespace OV
{

class RawMesh;
}

namespace OV::Detail
{

/// The whole of clip space as two triangles with texture coordinates from 0 to 1. They turn
/// clockwise: it is drawn with culling off.
std::shared_ptr<RawMesh> MakeScreenQuad();

} // namespace OV::Detail
