#pragma once

#include <cmath>

namespace QGM
{

/// Direction in double precision.
class Vector3d
{
public:
    constexpr Vector3d() = default;

    constexpr Vector3d(double xValue, double yValue, double zValue) :
        x(xValue), y(yValue), z(zValue)
    {
    }

    double length() const
    {
        return std::sqrt(x * x + y * y + z * z);
    }

    /// Makes it unit; a zero vector stays as it is.
    Vector3d& normalize()
    {
        const double magnitude = length();
        if (magnitude != 0.0)
        {
            x /= magnitude;
            y /= magnitude;
            z /= magnitude;
        }
        return *this;
    }

    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

} // namespace QGM
