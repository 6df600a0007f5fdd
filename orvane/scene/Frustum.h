#pragma once

#include "orvane/math/Plane.h"
#include "orvane/math/Vector.h"

namespace OV
{

/// The sides of what a camera sees, in world space. There is no near and no far plane.
struct Frustum
{
    /// Whether a sphere of radius tolerance around p, in world space, lies wholly past one of
    /// the sides, or wholly behind the eye of a perspective camera.
    bool IsOutside(const Vector& p, float tolerance) const
    {
        if (leftPlane.IsOutside(p, tolerance) || topPlane.IsOutside(p, tolerance) ||
            rightPlane.IsOutside(p, tolerance) || bottomPlane.IsOutside(p, tolerance))
        {
            return true;
        }
        const Vector fromEye(p.x - position.x, p.y - position.y, p.z - position.z);
        return perspective && -tolerance > fromEye.Dot(direction);
    }

    bool perspective = false;
    /// The camera's place in the world.
    Vector position;
    /// Unit line of sight in world space.
    Vector direction;
    /// Normals point outward.
    Plane leftPlane;
    Plane topPlane;
    Plane rightPlane;
    Plane bottomPlane;
    /// The same normals in the camera's own space.
    Vector leftNormal;
    Vector topNormal;
    Vector rightNormal;
    Vector bottomNormal;
};

} // namespace OV
