#include "orvane_host/geometry/ViewVolume.h"

#include "orvane/math/Matrix.h"

#include <algorithm>
#include <cmath>
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
    const Plane planes[kPlanes] = {sum(x, -part.left, m_depth), negative(sum(x, -part.right, m_depth)),
                                   sum(y, -part.bottom, m_depth), negative(sum(y, -part.top, m_depth)),
                                   sum(z, 1.0, m_depth), negative(sum(z, -1.0, m_depth))};
    for (std::size_t i = 0; i < kPlanes; ++i)
    {
        m_planes.x[i] = planes[i].x;
        m_planes.y[i] = planes[i].y;
        m_planes.z[i] = planes[i].z;
        m_planes.w[i] = planes[i].w;
    }
    m_lengthScale = std::sqrt(std::max(x.x * x.x + x.y * x.y + x.z * x.z, y.x * y.x + y.y * y.y + y.z * y.z));
}

ViewVolume::Relation ViewVolume::RelationOf(const WorldBox& box) const
{
    const double x = 0.5 * (static_cast<double>(box.low.x) + box.high.x);
    const double y = 0.5 * (static_cast<double>(box.low.y) + box.high.y);
    const double z = 0.5 * (static_cast<double>(box.low.z) + box.high.z);
    const double halfX = box.high.x - x;
    const double halfY = box.high.y - y;
    const double halfZ = box.high.z - z;
    Numbers farthest;
    Numbers nearest;
    for (std::size_t i = 0; i < kPlanes; ++i)
    {
        // Of the middle, and how far the corners lie to the inside and to the outside of it.
        const double middle = m_planes.x[i] * x + m_planes.y[i] * y + m_planes.z[i] * z;
        const double reach =
            std::abs(m_planes.x[i]) * halfX + std::abs(m_planes.y[i]) * halfY + std::abs(m_planes.z[i]) * halfZ;
        const double slack =
            kRounding * (2.0 * std::max(std::abs(middle), std::abs(reach)) + std::abs(m_planes.w[i]));
        farthest[i] = middle + reach + m_planes.w[i] + slack;
        nearest[i] = middle - reach + m_planes.w[i] - slack;
    }
    // Of numbers that are not finite neither holds.
    bool isOutside = false;
    bool isInside = true;
    for (std::size_t i = 0; i < kPlanes; ++i)
    {
        isOutside |= farthest[i] < 0.0;
        isInside &= nearest[i] > 0.0;
    }
    return isOutside ? Relation::Outside : isInside ? Relation::Inside : Relation::Touches;
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
