#pragma once

#include "orvane/math/Vector.h"

#include <memory>

namespace OV
{

class RawMesh;

} // namespace OV

namespace OV::Host
{

/// Simple bodies with normals and texture coordinates, ready for a Mesh.
///
/// Fronts are outside. What is solid is closed: where faces meet their corners are the same bit for
/// bit. The axis of round bodies is Y, whichever axis is up in the scene, and their middle the origin. A size
/// that is not finite or not above 0 gives null; numbers of parts are taken into the range that 16-bit
/// indices have room for.
class Primitives
{
public:
    /// A solid of six faces, each with a whole picture, upright on the four sides.
    static std::shared_ptr<RawMesh> Box(const Vector& boxMin, const Vector& boxMax);

    /// A rectangle about the origin that faces +Y, u along +X and v along -Z.
    /// @param columns,rows 1 to 254 parts along X and Z.
    static std::shared_ptr<RawMesh> Plane(float width, float depth, int columns = 1, int rows = 1);

    /// A solid. The side is smooth with the picture once round it; the caps show the middle of it.
    /// @param segments 3 to 4096.
    static std::shared_ptr<RawMesh> Cylinder(float radius, float height, int segments = 32);

    /// As Cylinder, with the tip at half the height.
    static std::shared_ptr<RawMesh> Cone(float radius, float height, int segments = 32);

    /// A smooth solid, the picture once round it and v from pole to pole.
    /// @param segments 3 to 254 round the axis.
    /// @param rings 2 to 254 from pole to pole.
    static std::shared_ptr<RawMesh> Sphere(float radius, int segments = 32, int rings = 16);
};

} // namespace OV::Host
