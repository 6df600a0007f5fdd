#pragma once

#include "orvane/math/Vector.h"

namespace OV
{

/// Plane kept as a point on it and a normal, which need not be unit.
class Plane
{
public:
    void Set(const Vector& planePoint, const Vector& planeNormal)
    {
        point = planePoint;
        normal = planeNormal;
    }

    /// Whether p lies more than the tolerance to the side that the normal points to.
    /// The tolerance counts in units of the length of the normal.
    bool IsOutside(const Vector& p, float tolerance) const
    {
        const Vector fromPlane(p.x - point.x, p.y - point.y, p.z - point.z);
        return fromPlane.Dot(normal) > tolerance;
    }

    Vector point;
    Vector normal;
};

} // namespace OV
