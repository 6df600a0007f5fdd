#include "orvane_host/present/detail/NearView.h"

#include "orvane_host/geometry/ViewVolume.h"
#include "orvane/scene/CameraNode.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace OV::Host::Detail
{

namespace
{

constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// What rounding in floats, as GL computes, may move a place by, against its largest coordinate.
constexpr double kRounding = 1e-6;

double LargestOf(double x, double y, double z)
{
    return std::max({std::abs(x), std::abs(y), std::abs(z)});
}

} // namespace

bool NearView::Suits(const CameraNode& camera)
{
    constexpr double most = 1e-4;
    const auto& m = camera.GetGlobal().GetTransf3d().m;
    for (int i = 0; i < 3; ++i)
    {
        for (int j = i; j < 3; ++j)
        {
            double product = i == j ? -1.0 : 0.0;
            for (int row = 0; row < 3; ++row)
            {
                product += m[row][i] * m[row][j];
            }
            if (!(std::abs(product) < most) || !std::isfinite(m[i][3]))
            {
                return false;
            }
        }
    }
    const double tangent = std::tan(static_cast<double>(camera.GetFOV()));
    return camera.GetProjection() == CameraNode::Perspective && tangent > 0.0 && std::isfinite(tangent);
}

NearView::NearView(const CameraNode& camera, double aspect, const Room& room, const std::vector<SectionPlane>& cuts)
{
    const auto& m = camera.GetGlobal().GetTransf3d().m;
    m_eye = {m[0][3], m[1][3], m[2][3]};
    m_slack = kRounding * LargestOf(m_eye[0], m_eye[1], m_eye[2]);
    // The angle belongs to the shorter side.
    const double tangent = std::tan(static_cast<double>(camera.GetFOV()));
    const double across = tangent * std::max(aspect, 1.0) * room.across;
    const double up = tangent / std::min(aspect, 1.0) * room.up;
    const auto form = [&](double x, double y, double depth) {
        return Form{x * m[0][0] + y * m[0][1] - depth * m[0][2], x * m[1][0] + y * m[1][1] - depth * m[1][2],
                    x * m[2][0] + y * m[2][1] - depth * m[2][2], 0.0};
    };
    for (const Form& side : {form(0.0, 0.0, 1.0), form(-1.0, 0.0, across), form(1.0, 0.0, across),
                             form(0.0, -1.0, up), form(0.0, 1.0, up)})
    {
        m_forms[m_count++] = side;
    }
    for (std::size_t i = 0; i < m_corners.size(); ++i)
    {
        const Form corner = form((i & 1) != 0 ? across : -across, (i & 2) != 0 ? up : -up, 1.0);
        m_corners[i] = {corner.x, corner.y, corner.z};
    }
    for (const SectionPlane& cut : cuts)
    {
        if (m_count == kMostForms)
        {
            break;
        }
        const Vector& n = cut.normal;
        const Vector& p = cut.position;
        const double above = n.x * (m_eye[0] - p.x) + n.y * (m_eye[1] - p.y) + n.z * (m_eye[2] - p.z);
        m_forms[m_count++] = {-n.x, -n.y, -n.z, m_slack + kRounding * LargestOf(p.x, p.y, p.z) - above};
    }
}

double NearView::DepthOfPlane(const Vector& position, const Vector& up) const
{
    const double height =
        up.x * (m_eye[0] - position.x) + up.y * (m_eye[1] - position.y) + up.z * (m_eye[2] - position.z);
    double nearest = kInfinity;
    for (const Direction& corner : m_corners)
    {
        const double depth = -height / (corner[0] * up.x + corner[1] * up.y + corner[2] * up.z);
        nearest = depth >= 0.0 ? std::min(nearest, depth) : nearest;
    }
    return nearest;
}

NearSpace::NearSpace(const NearView& view) : NearSpace(view, Transform())
{
}

void NearSpace::Set(const NearView& view, const Transform& place)
{
    const auto& m = place.GetTransf3d().m;
    const double x = m[0][3] - view.m_eye[0];
    const double y = m[1][3] - view.m_eye[1];
    const double z = m[2][3] - view.m_eye[2];
    m_count = view.m_count;
    for (std::size_t i = 0; i < m_count; ++i)
    {
        const Form& form = view.m_forms[i];
        const auto along = [&](int column)
        { return form.x * m[0][column] + form.y * m[1][column] + form.z * m[2][column]; };
        m_forms[i] = {along(0), along(1), along(2), form.x * x + form.y * y + form.z * z + form.w};
    }
}

double NearSpace::LeastDepth(const WorldBox& box, double limit) const
{
    const double x = 0.5 * (static_cast<double>(box.low.x) + box.high.x);
    const double y = 0.5 * (static_cast<double>(box.low.y) + box.high.y);
    const double z = 0.5 * (static_cast<double>(box.low.z) + box.high.z);
    const double halfX = box.high.x - x;
    const double halfY = box.high.y - y;
    const double halfZ = box.high.z - z;
    // Boxes are told in floats.
    const double rounding = kRounding * (LargestOf(x, y, z) + LargestOf(halfX, halfY, halfZ));
    const auto reachOf = [&](const Form& form)
    {
        const double x1 = std::abs(form.x);
        const double y1 = std::abs(form.y);
        const double z1 = std::abs(form.z);
        return x1 * halfX + y1 * halfY + z1 * halfZ + (x1 + y1 + z1) * rounding;
    };
    const auto middleOf = [&](const Form& form) { return form.x * x + form.y * y + form.z * z + form.w; };
    const double middle = middleOf(m_forms[0]);
    const double reach = reachOf(m_forms[0]);
    if (middle + reach < 0.0)
    {
        return kInfinity;
    }
    // Also where a number is not finite.
    const double least = middle - reach > 0.0 ? middle - reach : 0.0;
    if (!(least < limit))
    {
        return least;
    }
    for (std::size_t i = 1; i < m_count; ++i)
    {
        if (middleOf(m_forms[i]) + reachOf(m_forms[i]) < 0.0)
        {
            return kInfinity;
        }
    }
    return least;
}

double NearSpace::DepthAt(const Vector& point) const
{
    const Form& form = m_forms[0];
    return form.x * point.x + form.y * point.y + form.z * point.z + form.w;
}

NearSpace::Values NearSpace::ValuesAt(const Vector& point) const
{
    Values values;
    for (std::size_t i = 0; i < m_count; ++i)
    {
        const Form& form = m_forms[i];
        values[i] = form.x * point.x + form.y * point.y + form.z * point.z + form.w;
    }
    return values;
}

unsigned int NearSpace::OutsideOf(const Values& values) const
{
    unsigned int outside = 0;
    for (std::size_t i = 1; i < m_count; ++i)
    {
        outside |= values[i] >= 0.0 ? 0u : 1u << i;
    }
    return outside;
}

double NearSpace::DepthOf(const Vector& point, double limit) const
{
    const Values values = ValuesAt(point);
    return DepthOf(&values, 1, limit);
}

double NearSpace::DepthOf(const Vector& from, const Vector& to, double limit) const
{
    const Values corners[] = {ValuesAt(from), ValuesAt(to)};
    return DepthOf(corners, 2, limit);
}

double NearSpace::DepthOf(const Vector& first, const Vector& second, const Vector& third, double limit) const
{
    // Of most triangles this is all that there is to know.
    const double least = std::min({DepthAt(first), DepthAt(second), DepthAt(third)});
    if (!(least < limit))
    {
        return least;
    }
    const Values corners[] = {ValuesAt(first), ValuesAt(second), ValuesAt(third)};
    return DepthOf(corners, 3, limit);
}

double NearSpace::DepthOf(const Values* corners, std::size_t count, double limit) const
{
    double nearest = kInfinity;
    unsigned int all = ~0u;
    unsigned int any = 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        const unsigned int outside = OutsideOf(corners[i]);
        all &= outside;
        any |= outside;
        nearest = std::min(nearest, corners[i][0]);
    }
    if (all != 0 || any == 0 || !(nearest < limit))
    {
        return all != 0 ? kInfinity : nearest;
    }
    // Each plane adds a corner, and where rounding bends a polygon a few more.
    std::array<Values, 3 * kMostForms> polygons[2];
    std::copy(corners, corners + count, polygons[0].begin());
    std::size_t kept = count;
    int now = 0;
    for (std::size_t plane = 1; plane < m_count; ++plane)
    {
        if ((any >> plane & 1u) == 0)
        {
            continue;
        }
        const auto& polygon = polygons[now];
        auto& clipped = polygons[1 - now];
        std::size_t next = 0;
        for (std::size_t i = 0; i < kept; ++i)
        {
            if (next + 2 > clipped.size())
            {
                return nearest;
            }
            const Values& from = polygon[i];
            const Values& to = polygon[(i + 1) % kept];
            const bool isInside = from[plane] >= 0.0;
            if (isInside)
            {
                clipped[next++] = from;
            }
            if (isInside != (to[plane] >= 0.0))
            {
                const double share = from[plane] / (from[plane] - to[plane]);
                Values& crossing = clipped[next++];
                for (std::size_t k = 0; k < m_count; ++k)
                {
                    crossing[k] = from[k] + (to[k] - from[k]) * share;
                }
                crossing[plane] = 0.0;
            }
        }
        kept = next;
        now = 1 - now;
    }
    nearest = kInfinity;
    for (std::size_t i = 0; i < kept; ++i)
    {
        nearest = std::min(nearest, polygons[now][i][0]);
    }
    return nearest;
}

} // namespace OV::Host::Detail
