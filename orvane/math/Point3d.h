#pragma once

namespace QGM
{

class Transf3d;

/// Place in double precision.
class Point3d
{
public:
    constexpr Point3d() = default;

    constexpr Point3d(double xValue, double yValue, double zValue) :
        x(xValue), y(yValue), z(zValue)
    {
    }

    /// Transforms the point in place, translation included. Row 3 of the transform is not
    /// used: nothing is divided by w. Defined with Transf3d.
    Point3d& operator*=(const Transf3d& transform);

    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

} // namespace QGM
