#pragma once

#include "orvane/math/Vector.h"

#include <limits>

namespace OV::detail
{

constexpr float largestFloat = std::numeric_limits<float>::max();

/// Makes a box that the first widening replaces whole.
inline void StartBox(Vector& boxMin, Vector& boxMax)
{
    boxMin.Set(largestFloat, largestFloat, largestFloat);
    boxMax.Set(-largestFloat, -largestFloat, -largestFloat);
}

/// Widens a box to hold the box from low to high. What is not a number widens nothing.
inline void WidenBox(Vector& boxMin, Vector& boxMax, const Vector& low, const Vector& high)
{
    for (unsigned int axis = 0; axis < 3; ++axis)
    {
        if (low[axis] < boxMin[axis])
        {
            boxMin[axis] = low[axis];
        }
        if (high[axis] > boxMax[axis])
        {
            boxMax[axis] = high[axis];
        }
    }
}

inline void WidenBox(Vector& boxMin, Vector& boxMax, const Vector& point)
{
    WidenBox(boxMin, boxMax, point, point);
}

} // namespace OV::detail
