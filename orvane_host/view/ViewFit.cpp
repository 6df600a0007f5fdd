#include "orvane_host/view/ViewFit.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iterator>

namespace OV::Host
{

namespace
{

using Vec = QGM::Vector3d;

constexpr double kPi = 3.14159265358979323846;
/// Beyond it the products of two distances leave the range of float in the projection.
constexpr double kLargestCoordinate = 1e15;
/// The projection becomes the identity where the near plane is nearer or narrower than half of this.
constexpr double kSmallestNearPlane = 2e-6;
constexpr double kSmallestRadius = 1e-4;

Vec ToVec(const Vector& v)
{
    return Vec(v.x, v.y, v.z);
}

Vec operator+(const Vec& a, const Vec& b)
{
    return Vec(a.x + b.x, a.y + b.y, a.z + b.z);
}

Vec operator-(const Vec& a, const Vec& b)
{
    return Vec(a.x - b.x, a.y - b.y, a.z - b.z);
}

Vec operator*(const Vec& a, double s)
{
    return Vec(a.x * s, a.y * s, a.z * s);
}

double Dot(const Vec& a, const Vec& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Vec Cross(const Vec& a, const Vec& b)
{
    return Vec(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

bool IsUsable(const Vector& v)
{
    return std::fabs(v.x) <= kLargestCoordinate && std::fabs(v.y) <= kLargestCoordinate &&
           std::fabs(v.z) <= kLargestCoordinate;
}

struct Box
{
    Vec center;
    Vec half;

    bool Set(const Vector& boxMin, const Vector& boxMax)
    {
        const bool isUsable = IsUsable(boxMin) && IsUsable(boxMax) && boxMin.x <= boxMax.x &&
                              boxMin.y <= boxMax.y && boxMin.z <= boxMax.z;
        if (!isUsable)
        {
            center = Vec();
            half = Vec(1.0, 1.0, 1.0);
            return false;
        }
        center = (ToVec(boxMin) + ToVec(boxMax)) * 0.5;
        half = (ToVec(boxMax) - ToVec(boxMin)) * 0.5;
        const double farthest = std::max({std::fabs(center.x), std::fabs(center.y), std::fabs(center.z)});
        // A box that float coordinates can no longer resolve is as good as a point.
        const double smallest = std::max(kSmallestRadius, farthest * 1e-6);
        if (half.length() < smallest)
        {
            half = Vec(smallest, smallest, smallest);
        }
        return true;
    }
};

/// How far the box reaches along a unit direction, from its centre.
double Reach(const Box& box, const Vec& direction)
{
    return std::fabs(direction.x) * box.half.x + std::fabs(direction.y) * box.half.y +
           std::fabs(direction.z) * box.half.z;
}

/// Camera axes in world space; z points from the target to the eye.
struct Axes
{
    Vec x;
    Vec y;
    Vec z;

    /// @return false when up does not decide them.
    bool Set(const Vec& back, Vec up)
    {
        z = back;
        x = Cross(up.normalize(), z);
        if (!(x.length() > 1e-6))
        {
            return false;
        }
        x.normalize();
        y = Cross(z, x);
        return true;
    }
};

struct Lens
{
    double aspect;
    /// Half the vertical angle.
    double halfAngle;
    double tanV;
    double tanH;
    /// Share of the picture that the box may fill.
    double fill;

    explicit Lens(const ViewFitOptions& options)
    {
        aspect = std::isfinite(options.aspect) && options.aspect > 0.0f ? options.aspect : 1.0;
        const double degrees = std::isfinite(options.fovDegrees) ? options.fovDegrees : 45.0;
        halfAngle = std::clamp(degrees, 1.0, 170.0) * kPi / 360.0;
        tanV = std::tan(halfAngle);
        tanH = tanV * aspect;
        fill = std::isfinite(options.margin) ? 1.0 - std::clamp(double(options.margin), 0.0, 0.95) : 1.0;
    }

    /// The engine's field of view for a perspective: the half angle on the shorter side.
    double PerspectiveFov() const { return aspect < 1.0 ? std::atan(tanH) : halfAngle; }
};

struct View
{
    Vec towardsEye;
    Vec up;
};

/// For Y up, in the order of NamedView.
constexpr double kIso = 0.57735026918962576;
const View kViews[] = {
    {Vec(kIso, kIso, kIso), Vec(0, 1, 0)}, {Vec(0, 0, 1), Vec(0, 1, 0)}, {Vec(0, 0, -1), Vec(0, 1, 0)},
    {Vec(-1, 0, 0), Vec(0, 1, 0)},         {Vec(1, 0, 0), Vec(0, 1, 0)}, {Vec(0, 1, 0), Vec(0, 0, -1)},
    {Vec(0, -1, 0), Vec(0, 0, 1)},
};
const char* const kViewNames[] = {"iso", "front", "back", "left", "right", "top", "bottom"};
static_assert(std::size(kViews) == std::size(kViewNames), "one name a view");

Vec FromYUp(const Vec& v, UpAxis upAxis)
{
    return upAxis == UpAxis::Z ? Vec(v.x, -v.z, v.y) : v;
}

/// Distance along axes.z from the centre at which every corner is inside the four sides.
double PerspectiveDistance(const Box& box, const Axes& axes, const Lens& lens)
{
    double distance = 0.0;
    for (int corner = 0; corner < 8; ++corner)
    {
        const Vec p((corner & 1) ? box.half.x : -box.half.x, (corner & 2) ? box.half.y : -box.half.y,
                    (corner & 4) ? box.half.z : -box.half.z);
        const double z = Dot(p, axes.z);
        distance = std::max({distance, z + std::fabs(Dot(p, axes.x)) / (lens.tanH * lens.fill),
                             z + std::fabs(Dot(p, axes.y)) / (lens.tanV * lens.fill)});
    }
    // A line seen end on, or a very wide angle, must not bring the eye into the box.
    return std::max(distance, Reach(box, axes.z) + 0.05 * box.half.length());
}

/// Near and far around the box, whose centre is this far in front of the eye.
void SetDepths(CameraNode& camera, const Box& box, const Axes& axes, double centerDepth)
{
    const double reach = Reach(box, axes.z);
    const double slack = std::max(0.02 * reach, 1e-3 * (std::fabs(centerDepth) + box.half.length()));
    double nearest = centerDepth - reach - slack;
    double farthest = centerDepth + reach + slack;
    if (camera.GetProjection() == CameraNode::Perspective)
    {
        // A box behind the eye leaves nothing to see; the planes still have to make sense.
        farthest = std::max(farthest, slack);
        const double least = ViewFit::LeastNear(camera);
        nearest = std::max({nearest, farthest * 1e-4, least});
        farthest = std::max(farthest, 2.0 * least);
    }
    camera.SetNearFar(static_cast<float>(nearest), static_cast<float>(farthest));
}

void Place(CameraNode& camera, const Vec& eye, const Axes& axes, double distance)
{
    Transform transform;
    transform.SetTransf3d(QGM::Transf3d(QGM::Point3d(eye.x, eye.y, eye.z), axes.x, axes.y, axes.z, false));
    camera.SetGlobal(transform);
    camera.SetDistanceToTarget(static_cast<float>(distance));
}

Axes MakeAxes(const Vec& back, const Vector& up, UpAxis axis)
{
    Axes axes;
    const Vec upAxis = FromYUp(Vec(0, 1, 0), axis);
    // Looking straight down or up, the picture's upper edge is the back, as from the top.
    const Vec awayFromFront = FromYUp(Vec(0, 0, -1), axis);
    if (!(IsUsable(up) && axes.Set(back, ToVec(up))) && !axes.Set(back, upAxis))
    {
        axes.Set(back, awayFromFront);
    }
    return axes;
}

/// Frames a box along axes.
bool Stand(CameraNode& camera, const Vector& boxMin, const Vector& boxMax, const Axes& axes,
           const ViewFitOptions& options)
{
    Box box;
    const bool isUsable = box.Set(boxMin, boxMax);
    const Lens lens(options);
    double distance = 0.0;
    if (options.orthographic)
    {
        // A line seen end on would leave a picture of no height.
        const double halfHeight =
            std::max({Reach(box, axes.y), Reach(box, axes.x) / lens.aspect, 0.01 * box.half.length()}) /
            lens.fill;
        distance = std::max(Reach(box, axes.z) + box.half.length(), halfHeight);
        camera.SetProjection(CameraNode::Orthographic);
        camera.SetFOV(static_cast<float>(std::atan(halfHeight / distance)));
    }
    else
    {
        distance = PerspectiveDistance(box, axes, lens);
        camera.SetProjection(CameraNode::Perspective);
        camera.SetFOV(static_cast<float>(lens.PerspectiveFov()));
    }
    Place(camera, box.center + axes.z * distance, axes, distance);
    SetDepths(camera, box, axes, distance);
    return isUsable;
}

} // namespace

Vector UpDirection(UpAxis axis)
{
    return axis == UpAxis::Z ? Vector(0.0f, 0.0f, 1.0f) : Vector(0.0f, 1.0f, 0.0f);
}

bool ViewFit::Frame(CameraNode& camera, const Vector& boxMin, const Vector& boxMax, NamedView view,
                    const ViewFitOptions& options)
{
    // What is no view is the first one.
    const auto index = static_cast<std::size_t>(view);
    const View& named = kViews[index < std::size(kViews) ? index : 0];
    Axes axes;
    axes.Set(FromYUp(named.towardsEye, options.upAxis), FromYUp(named.up, options.upAxis));
    return Stand(camera, boxMin, boxMax, axes, options);
}

bool ViewFit::FrameAlong(CameraNode& camera, const Vector& boxMin, const Vector& boxMax,
                         const Vector& towardsEye, const Vector& up, const ViewFitOptions& options)
{
    Vec back = ToVec(towardsEye);
    if (!IsUsable(towardsEye) || !(back.length() > 0.0))
    {
        return Frame(camera, boxMin, boxMax, NamedView::Iso, options);
    }
    back.normalize();
    return Stand(camera, boxMin, boxMax, MakeAxes(back, up, options.upAxis), options);
}

bool ViewFit::Look(CameraNode& camera, const Vector& eye, const Vector& target, const Vector& up,
                   const Vector& boxMin, const Vector& boxMax, const ViewFitOptions& options)
{
    if (!IsUsable(eye) || !IsUsable(target))
    {
        return false;
    }
    Vec back = ToVec(eye) - ToVec(target);
    const double distance = back.length();
    if (!(distance > 0.0))
    {
        return false;
    }
    back.normalize();

    const Axes axes = MakeAxes(back, up, options.upAxis);
    const Lens lens(options);
    camera.SetProjection(options.orthographic ? CameraNode::Orthographic : CameraNode::Perspective);
    camera.SetFOV(static_cast<float>(options.orthographic ? lens.halfAngle : lens.PerspectiveFov()));
    Place(camera, ToVec(eye), axes, distance);

    Box box;
    if (!box.Set(boxMin, boxMax))
    {
        box.center = ToVec(target);
        box.half = Vec(distance, distance, distance);
    }
    SetDepths(camera, box, axes, Dot(ToVec(eye) - box.center, axes.z));
    return true;
}

double ViewFit::LeastNear(const CameraNode& camera)
{
    return kSmallestNearPlane * std::max(1.0, 1.0 / std::tan(double(camera.GetFOV())));
}

bool ViewFit::ParseView(const std::string& text, NamedView& view)
{
    const auto found = std::find(std::begin(kViewNames), std::end(kViewNames), text);
    if (found == std::end(kViewNames))
    {
        return false;
    }
    view = static_cast<NamedView>(found - std::begin(kViewNames));
    return true;
}

const char* ViewFit::NameOf(NamedView view)
{
    const auto index = static_cast<std::size_t>(view);
    return index < std::size(kViewNames) ? kViewNames[index] : nullptr;
}

} // namespace OV::Host
