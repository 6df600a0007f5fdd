#pragma once

#include "tests/orvane_host/present/PresentationModels.h"

#include "orvane/math/Color.h"
#include "orvane/math/Vector.h"

#include <memory>

namespace OV
{

class Material;
class Mesh;
class MeshNode;

} // namespace OV

namespace OV::Test
{

/// A floor with a cube over it, for shadows that can be worked out by hand.
struct FloorAndCube
{
    std::unique_ptr<Host::Presentation> presentation;
    Material* cubeMaterial = nullptr;
    MeshNode* cube = nullptr;
    MeshNode* floor = nullptr;
};

/// The floor's top is at a height of 0 and 12 units wide each way; the cube's edges are a unit long.
/// @param bottom height of the cube's lower face.
/// @param scale of all lengths.
FloorAndCube MakeFloorAndCube(float bottom, const Color& cubeColor = Color(0.8f, 0.8f, 0.8f), float scale = 1.0f,
                              bool withFloor = true);

/// Looks straight down at a square of 12 units, whose picture has a ten-pixel a unit at 120 by 120.
/// Right is +x, up in the picture is -z.
Host::PresentationSettings LookingDown(float scale = 1.0f);

class FloorAndCubeFixture : public PresentationFixture
{
protected:
    using PresentationFixture::PresentationFixture;

    /// One frame with settings, which stay.
    Picture Draw(FloorAndCube& made, const Host::PresentationSettings& wanted) const;
};

} // namespace OV::Test
