#include "orvane_host/view/OrbitCamera.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <iterator>

namespace OV::Host
{

namespace
{

using Point = QGM::Point3d;
using Vec = QGM::Vector3d;

constexpr double kPi = 3.14159265358979323846;
constexpr double kNearest = 1e-5;
constexpr double kFarthest = 1e4;
constexpr double kFarthestTarget = 1e5;
/// What eye and target must differ by to be two places in float, against their coordinates.
constexpr double kFloatRoom = 4e-6;
constexpr float kLargestModel = 1e15f;
constexpr double kMostTarget = 0.9e15;
/// In each coordinate, with room for what rounding to float adds.
constexpr double kMostEye = 0.999e15;

bool AreFinite(std::initializer_list<double> numbers)
{
    return std::all_of(numbers.begin(), numbers.end(), [](double number) { return std::isfinite(number); });
}

bool IsFinite(const Point& point)
{
    return AreFinite({point.x, point.y, point.z});
}

Point ToPoint(const Vector& v)
{
    return Point(v.x, v.y, v.z);
}

Vector ToVector(const Point& p)
{
    return Vector(static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z));
}

Vec FromTo(const Point& from, const Point& to)
{
    return Vec(to.x - from.x, to.y - from.y, to.z - from.z);
}

Point Moved(const Point& point, const Vec& direction, double length)
{
    return Point(point.x + direction.x * length, point.y + direction.y * length,
                 point.z + direction.z * length);
}

double Dot(const Vec& a, const Vec& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

double Largest(const Point& point)
{
    return std::max({std::fabs(point.x), std::fabs(point.y), std::fabs(point.z)});
}

Vec FromYUp(const Vec& v, UpAxis axis)
{
    return axis == UpAxis::Z ? Vec(v.x, -v.z, v.y) : v;
}

Vec ToYUp(const Vec& v, UpAxis axis)
{
    return axis == UpAxis::Z ? Vec(v.x, v.z, -v.y) : v;
}

/// Into -pi to pi.
double Wrapped(double angle)
{
    return std::remainder(angle, 2.0 * kPi);
}

bool IsModel(const Vector& boxMin, const Vector& boxMax)
{
    for (unsigned int axis = 0; axis < 3; ++axis)
    {
        // Written so that what is not a number fails.
        if (!(std::fabs(boxMin[axis]) <= kLargestModel && std::fabs(boxMax[axis]) <= kLargestModel &&
              boxMin[axis] <= boxMax[axis]))
        {
            return false;
        }
    }
    return true;
}

/// Never 0: a model that is a point has room about it.
double RadiusOf(const Vector& boxMin, const Vector& boxMax)
{
    const double largest = std::max(Largest(ToPoint(boxMin)), Largest(ToPoint(boxMax)));
    return std::max({0.5 * FromTo(ToPoint(boxMin), ToPoint(boxMax)).length(), 1e-6 * largest, 1e-4});
}

Point MiddleOf(const Vector& boxMin, const Vector& boxMax)
{
    return Moved(ToPoint(boxMin), FromTo(ToPoint(boxMin), ToPoint(boxMax)), 0.5);
}

/// In the order of NamedView.
struct Angles
{
    double azimuth;
    double elevation;
};
const Angles kNamed[] = {{kPi / 4.0, std::asin(1.0 / std::sqrt(3.0))},
                         {0.0, 0.0},
                         {kPi, 0.0},
                         {-kPi / 2.0, 0.0},
                         {kPi / 2.0, 0.0},
                         {0.0, kPi / 2.0},
                         {0.0, -kPi / 2.0}};

} // namespace

void OrbitCamera::SetScreen(double width, double height)
{
    if (AreFinite({width, height}) && width > 0.0 && height > 0.0)
    {
        m_width = width;
        m_height = height;
    }
}

void OrbitCamera::SetModel(const Vector& boxMin, const Vector& boxMax)
{
    const bool isModel = IsModel(boxMin, boxMax);
    m_boxMin = isModel ? boxMin : Vector(-1.0f, -1.0f, -1.0f);
    m_boxMax = isModel ? boxMax : Vector(1.0f, 1.0f, 1.0f);
    Bound();
}

QGM::Point3d OrbitCamera::GetModelMiddle() const
{
    return MiddleOf(m_boxMin, m_boxMax);
}

void OrbitCamera::SetFov(double degrees)
{
    if (std::isfinite(degrees))
    {
        m_fov = std::clamp(degrees, 1.0, 170.0);
    }
}

void OrbitCamera::SetState(const OrbitState& state)
{
    if (IsFinite(state.target) && AreFinite({state.azimuth, state.elevation, state.distance}))
    {
        m_state = state;
        Bound();
    }
}

void OrbitCamera::Orbit(double rightPixels, double downPixels)
{
    OrbitState state = m_state;
    state.azimuth -= rightPixels * kPi / m_height;
    state.elevation += downPixels * kPi / m_height;
    SetState(state);
}

void OrbitCamera::Pan(double fromX, double fromY, double toX, double toY)
{
    PanPoint(PointAt(fromX, fromY), toX, toY);
}

bool OrbitCamera::PanPoint(const Point& point, double toX, double toY)
{
    const Axes axes = GetAxes();
    const double depth = DepthOf(point, axes);
    if (!IsFinite(point) || !AreFinite({toX, toY}) || !(m_isOrthographic || depth > 0.0))
    {
        return false;
    }
    const double scale = UnitsPerPixel(depth);
    const Vec offset = FromTo(m_state.target, point);
    OrbitState state = m_state;
    state.target = Moved(state.target, axes.right, Dot(offset, axes.right) - (toX - 0.5 * m_width) * scale);
    state.target = Moved(state.target, axes.up, Dot(offset, axes.up) + (toY - 0.5 * m_height) * scale);
    SetState(state);
    return true;
}

void OrbitCamera::Zoom(double factor, double x, double y)
{
    if (AreFinite({x, y}))
    {
        ZoomAt(factor, PointAt(x, y));
    }
}

void OrbitCamera::ZoomAt(double factor, const Point& point)
{
    if (!std::isfinite(factor) || !(factor > 0.0) || !IsFinite(point))
    {
        return;
    }
    // What the bounds leave of the factor goes for target and distance alike.
    OrbitState state = m_state;
    state.distance = BoundDistance(m_state.distance / factor, m_state.target, point);
    state.target = Moved(point, FromTo(point, m_state.target), state.distance / m_state.distance);
    SetState(state);
}

void OrbitCamera::FrameModel()
{
    FrameBox(m_boxMin, m_boxMax);
}

void OrbitCamera::FrameBox(const Vector& boxMin, const Vector& boxMax)
{
    if (!IsModel(boxMin, boxMax))
    {
        return;
    }
    const Axes axes = GetAxes();
    CameraNode camera(nullptr);
    ViewFit::FrameAlong(camera, boxMin, boxMax, ToVector(Point(axes.back.x, axes.back.y, axes.back.z)),
                        ToVector(Point(axes.up.x, axes.up.y, axes.up.z)), FitOptions());
    OrbitState state = m_state;
    state.target = MiddleOf(boxMin, boxMax);
    // Without perspective the picture's height decides, which the distance stands for here.
    state.distance = m_isOrthographic
                         ? std::tan(double(camera.GetFOV())) * camera.GetDistanceToTarget() / TanV()
                         : camera.GetDistanceToTarget();
    SetState(state);
}

void OrbitCamera::LookFrom(NamedView view)
{
    // What is no view is the first one.
    const auto index = static_cast<std::size_t>(view);
    const Angles& angles = kNamed[index < std::size(kNamed) ? index : 0];
    m_state.azimuth = angles.azimuth;
    m_state.elevation = angles.elevation;
    FrameModel();
}

bool OrbitCamera::Look(const Vector& eye, const Vector& target, const Vector& up)
{
    const Vec back = FromTo(ToPoint(target), ToPoint(eye));
    const double distance = back.length();
    if (!IsFinite(ToPoint(eye)) || !IsFinite(ToPoint(target)) || !(distance > 0.0))
    {
        return false;
    }
    const Vec level = ToYUp(back, m_upAxis);
    OrbitState state;
    state.target = ToPoint(target);
    state.distance = distance;
    state.elevation = std::asin(std::clamp(level.y / distance, -1.0, 1.0));
    state.azimuth = std::atan2(level.x, level.z);
    if (std::hypot(level.x, level.z) < 1e-6 * distance)
    {
        // From above the picture's upper edge lies away from the front of the azimuth.
        const Vec flat = ToYUp(Vec(up.x, up.y, up.z), m_upAxis);
        const double away = level.y > 0.0 ? -1.0 : 1.0;
        const bool isTold = std::hypot(flat.x, flat.z) > 0.0;
        state.elevation = std::copysign(kPi / 2.0, level.y);
        state.azimuth = isTold ? std::atan2(away * flat.x, away * flat.z) : m_state.azimuth;
    }
    SetState(state);
    return true;
}

QGM::Point3d OrbitCamera::GetEye() const
{
    return Moved(m_state.target, GetAxes().back, m_state.distance);
}

QGM::Vector3d OrbitCamera::GetUp() const
{
    return GetAxes().up;
}

QGM::Point3d OrbitCamera::PointAt(double x, double y) const
{
    const Axes axes = GetAxes();
    const double scale = UnitsPerPixel(m_state.distance);
    return Moved(Moved(m_state.target, axes.right, (x - 0.5 * m_width) * scale), axes.up,
                 (0.5 * m_height - y) * scale);
}

bool OrbitCamera::PixelOf(const Point& point, double& x, double& y) const
{
    const Axes axes = GetAxes();
    const double depth = DepthOf(point, axes);
    if (!m_isOrthographic && !(depth > 0.0))
    {
        return false;
    }
    const Vec offset = FromTo(m_state.target, point);
    const double scale = UnitsPerPixel(depth);
    x = 0.5 * m_width + Dot(offset, axes.right) / scale;
    y = 0.5 * m_height - Dot(offset, axes.up) / scale;
    return true;
}

bool OrbitCamera::ReadFrom(const CameraNode& camera)
{
    const QGM::Transf3d& place = camera.GetGlobal().GetTransf3d();
    const Point eye(place.m[0][3], place.m[1][3], place.m[2][3]);
    Vec back = place.zDir();
    Vec up = place.yDir();
    const double tangent = std::tan(double(camera.GetFOV()));
    double distance = camera.GetDistanceToTarget();
    const double size = back.length();
    if (!IsFinite(eye) || !AreFinite({size, distance, tangent}) ||
        !(size > 0.0 && distance > 0.0 && tangent > 0.0))
    {
        return false;
    }
    const Point target = Moved(eye, back, -distance / size);
    const bool isOrthographic = camera.GetProjection() != CameraNode::Perspective;
    if (!isOrthographic)
    {
        // The camera's angle is that of the shorter side.
        const double aspect = m_width / m_height;
        SetFov(std::atan(aspect < 1.0 ? tangent / aspect : tangent) * 360.0 / kPi);
    }
    OrbitCamera looking = *this;
    looking.m_isOrthographic = isOrthographic;
    // About the zero point, where the direction loses nothing to float.
    const Vector direction(static_cast<float>(back.x / size), static_cast<float>(back.y / size),
                           static_cast<float>(back.z / size));
    if (!looking.Look(direction, Vector(), ToVector(Point(up.x, up.y, up.z))))
    {
        return false;
    }
    OrbitState state = looking.m_state;
    state.target = target;
    state.distance = isOrthographic ? tangent * distance / TanV() : distance;
    m_isOrthographic = isOrthographic;
    SetState(state);
    return true;
}

void OrbitCamera::WriteTo(CameraNode& camera) const
{
    const Axes axes = GetAxes();
    const Point eye = GetEye();
    ViewFit::Look(camera, ToVector(eye), ToVector(m_state.target),
                  ToVector(Point(axes.up.x, axes.up.y, axes.up.z)), m_boxMin, m_boxMax, FitOptions());
    // Again without the rounding of eye and target, which shows when near.
    Transform place;
    place.SetTransf3d(QGM::Transf3d(eye, axes.right, axes.up, axes.back, false));
    camera.SetGlobal(place);
    camera.SetDistanceToTarget(static_cast<float>(m_state.distance));
}

OrbitState OrbitCamera::Between(const OrbitState& from, const OrbitState& to, double time)
{
    if (time <= 0.0)
    {
        return from;
    }
    if (!(time < 1.0))
    {
        return to;
    }
    const double share = time * time * (3.0 - 2.0 * time);
    OrbitState state;
    state.target = Moved(from.target, FromTo(from.target, to.target), share);
    state.azimuth = Wrapped(from.azimuth + share * Wrapped(to.azimuth - from.azimuth));
    state.elevation = from.elevation + share * (to.elevation - from.elevation);
    // By factors, so that coming near is as gentle as going away.
    state.distance = from.distance * std::pow(to.distance / from.distance, share);
    return state;
}

OrbitCamera::Axes OrbitCamera::GetAxes() const
{
    // By angles, so that there are axes straight above and below as well.
    const double sinA = std::sin(m_state.azimuth);
    const double cosA = std::cos(m_state.azimuth);
    const double sinE = std::sin(m_state.elevation);
    const double cosE = std::cos(m_state.elevation);
    return {FromYUp(Vec(cosA, 0.0, -sinA), m_upAxis),
            FromYUp(Vec(-sinE * sinA, cosE, -sinE * cosA), m_upAxis),
            FromYUp(Vec(cosE * sinA, sinE, cosE * cosA), m_upAxis)};
}

double OrbitCamera::TanV() const
{
    return std::tan(m_fov * kPi / 360.0);
}

/// @param depth of what is measured; without perspective all depths are the target's.
double OrbitCamera::UnitsPerPixel(double depth) const
{
    return 2.0 * (m_isOrthographic ? m_state.distance : depth) * TanV() / m_height;
}

double OrbitCamera::DepthOf(const Point& point, const Axes& axes) const
{
    return m_state.distance - Dot(FromTo(m_state.target, point), axes.back);
}

/// @param one,other places between which the target will be.
double OrbitCamera::BoundDistance(double distance, const Point& one, const Point& other) const
{
    const double radius = RadiusOf(m_boxMin, m_boxMax);
    const double out = std::max(Largest(one), Largest(other));
    const double least = std::max(kNearest * radius, kFloatRoom * out);
    return std::clamp(distance, least, std::max(least, std::min(kFarthest * radius, kMostEye - out)));
}

void OrbitCamera::Bound()
{
    const Point middle = MiddleOf(m_boxMin, m_boxMax);
    const double reach = kFarthestTarget * RadiusOf(m_boxMin, m_boxMax);
    const auto bounded = [&](double place, double about)
    { return std::clamp(std::clamp(place, about - reach, about + reach), -kMostTarget, kMostTarget); };
    m_state.target.x = bounded(m_state.target.x, middle.x);
    m_state.target.y = bounded(m_state.target.y, middle.y);
    m_state.target.z = bounded(m_state.target.z, middle.z);
    m_state.azimuth = Wrapped(m_state.azimuth);
    m_state.elevation = std::clamp(m_state.elevation, -kPi / 2.0, kPi / 2.0);
    m_state.distance = BoundDistance(m_state.distance, m_state.target, m_state.target);
}

ViewFitOptions OrbitCamera::FitOptions() const
{
    ViewFitOptions options;
    options.aspect = static_cast<float>(m_width / m_height);
    options.fovDegrees = static_cast<float>(m_fov);
    options.orthographic = m_isOrthographic;
    options.upAxis = m_upAxis;
    return options;
}

} // namespace OV::Host
