#include "orvane_host/geometry/ViewVolume.h"

#include "orvane/math/Matrix.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace OV::Host
{

namespace
{

/// What rounding in floats, as GL computes, may move a corner of a box by against the largest term.
constexpr double kRounding = 1e-5;

} // namespace

void WorldBox::Widen(const WorldBox& other)
{
    Widen(other.low);
    Widen(other.high);
}

void WorldBox::Widen(const Vector& point)
{
    low = Vector(std::min(low.x, point.x), std::min(low.y, point.y), std::min(low.z, point.z));
    high = Vector(std::max(high.x, point.x), std::max(high.y, point.y), std::max(high.z, point.z));
}

WorldBox WorldBox::Empty()
{
    constexpr float most = std::numeric_limits<float>::max();
    return {Vector(most, most, most), Vector(-most, -most, -most)};
}

ViewVolume::ViewVolume(const Matrix& worldToClip, const Part& part)
{
    const auto row = [&](int r) {
        return Plane{worldToClip.m[r], worldToClip.m[4 + r], worldToClip.m[8 + r], worldToClip.m[12 + r]};
    };
    const auto sum = [](const Plane& a, double factor, const Plane& b) {
        return Plane{a.x + factor * b.x, a.y + factor * b.y, a.z + factor * b.z, a.w + factor * b.w};
    };
    const auto negative = [](const Plane& a) { return Plane{-a.x, -a.y, -a.z, -a.w}; };
    const Plane x = row(0);
    const Plane y = row(1);
    const Plane z = row(2);
    m_depth = row(3);
    m_planes = {sum(x, -part.left, m_depth), negative(sum(x, -part.right, m_depth)),
                sum(y, -part.bottom, m_depth), negative(sum(y, -part.top, m_depth)),
                sum(z, 1.0, m_depth), negative(sum(z, -1.0, m_depth))};
    m_lengthScale = std::sqrt(std::max(x.x * x.x + x.y * x.y + x.z * x.z, y.x * y.x + y.y * y.y + y.z * y.z));
}

ViewVolume::PlaneSet ViewVolume::PlanesAcross(const WorldBox& box, PlaneSet planes) const
{
    const double x = 0.5 * (static_cast<double>(box.low.x) + box.high.x);
    const double y = 0.5 * (static_cast<double>(box.low.y) + box.high.y);
    const double z = 0.5 * (static_cast<double>(box.low.z) + box.high.z);
    const double halfX = box.high.x - x;
    const double halfY = box.high.y - y;
    const double halfZ = box.high.z - z;
    PlaneSet across = 0;
    for (PlaneSet left = planes; left != 0; left &= left - 1)
    {
        const Plane& plane = m_planes[static_cast<std::size_t>(__builtin_ctz(left))];
        // Of the middle, and how far the corners lie to the inside and to the outside of it.
        const double middle = plane.x * x + plane.y * y + plane.z * z;
        const double reach =
            std::abs(plane.x) * halfX + std::abs(plane.y) * halfY + std::abs(plane.z) * halfZ;
        const double slack = kRounding * (2.0 * std::max(std::abs(middle), std::abs(reach)) + std::abs(plane.w));
        if (middle + reach + plane.w < -slack)
        {
            return NoneSeen;
        }
        // Also where a number is not finite.
        across |= middle - reach + plane.w > slack ? 0 : left & ~(left - 1);
    }
    return across;
}

float ViewVolume::ShareOfHeight(const Vector& place, float length) const
{
    const double depth = m_depth.x * place.x + m_depth.y * place.y + m_depth.z * place.z + m_depth.w;
    // By the nearest end of the length.
    const double reach = std::sqrt(m_depth.x * m_depth.x + m_depth.y * m_depth.y + m_depth.z * m_depth.z) * length;
    return depth > reach ? static_cast<float>(m_lengthScale * length / (2.0 * (depth - reach)))
                         : std::numeric_limits<float>::infinity();
}

} // namespace OV::Host
