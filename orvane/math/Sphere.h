#pragma once

#include "orvane/math/Vector.h"

namespace OV
{

/// Bounding sphere, in the space of whoever holds it.
class Sphere
{
public:
    float radius = 0.0f;
    Vector center;
};

} // namespace OV
