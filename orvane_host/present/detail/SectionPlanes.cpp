#include "orvane_host/present/detail/SectionPlanes.h"

#include <cmath>

namespace OV::Host::Detail
{

std::vector<SectionPlane> SectionPlanesOf(const SectionSettings& settings)
{
    // A length that rounding alone keeps from 1 stays: dividing by it would turn the plane.
    constexpr float rounding = 1e-6f;
    std::vector<SectionPlane> planes;
    for (const ClipPlane& plane : settings.planes)
    {
        Vector normal = plane.normal;
        const float length = std::hypot(normal.x, normal.y, normal.z);
        if (std::abs(length - 1.0f) > rounding)
        {
            normal = Vector(normal.x / length, normal.y / length, normal.z / length);
        }
        planes.push_back({normal, plane.position});
    }
    return planes;
}

} // namespace OV::Host::Detail
