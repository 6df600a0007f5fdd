#include "apps/viewer/Eye.h"

#include "orvane_host/present/Presentation.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"

#include <glm/geometric.hpp>
#include <glm/gtc/quaternion.hpp>
#include <glm/trigonometric.hpp>

#include <algorithm>
#include <cmath>

namespace OV::ViewerApp
{

namespace
{

/// The rotation that takes a camera's own axes to those of an eye.
glm::dquat RotationOf(const Eye& eye)
{
    const glm::dvec3 right = eye.Right();
    const glm::dvec3 back = -eye.Forward();
    return glm::normalize(glm::quat_cast(glm::dmat3(right, glm::cross(back, right), back)));
}

double HalfAngle(const Eye& eye)
{
    return glm::radians(eye.fov) / 2.0;
}

} // namespace

Eye Eye::Of(const Host::Presentation& presentation)
{
    const CameraNode& camera = presentation.GetCamera();
    const Host::ViewSettings& view = presentation.GetSettings().view;
    const auto& m = camera.GetGlobal().GetTransf3d().m;
    Eye eye;
    eye.fov = view.fov;
    eye.orthographic = view.orthographic;
    eye.place = glm::dvec3(m[0][3], m[1][3], m[2][3]);
    eye.up = glm::normalize(glm::dvec3(m[0][1], m[1][1], m[2][1]));
    double distance = camera.GetDistanceToTarget();
    const glm::dvec3 back = glm::normalize(glm::dvec3(m[0][2], m[1][2], m[2][2]));
    eye.target = eye.place - back * distance;
    if (eye.orthographic)
    {
        // A fit sets the angle of such a camera; settings have the height of the picture by way of
        // the distance.
        distance *= std::tan(static_cast<double>(camera.GetFOV())) / std::tan(HalfAngle(eye));
        eye.place = eye.target + back * distance;
    }
    return eye;
}

double Eye::Distance() const
{
    return glm::distance(place, target);
}

glm::dvec3 Eye::Forward() const
{
    return glm::normalize(target - place);
}

glm::dvec3 Eye::Right() const
{
    return glm::normalize(glm::cross(Forward(), up));
}

double Eye::UnitsPerPixel(double depth, int height) const
{
    const double distance = orthographic ? Distance() : depth;
    return 2.0 * distance * std::tan(HalfAngle(*this)) / std::max(height, 1);
}

glm::dvec3 Eye::Behind(const glm::dvec2& pixel, double depth, int width, int height) const
{
    const double units = UnitsPerPixel(depth, height);
    const glm::dvec3 forward = Forward();
    const glm::dvec3 right = Right();
    const glm::dvec3 above = glm::cross(right, forward);
    return place + forward * depth + right * ((pixel.x - width / 2.0) * units)
        + above * ((height / 2.0 - pixel.y) * units);
}

double Eye::DepthOf(const glm::dvec3& point) const
{
    return glm::dot(point - place, Forward());
}

std::optional<glm::dvec2> Eye::Project(const glm::dvec3& point, int width, int height) const
{
    const double depth = DepthOf(point);
    if (!orthographic && !(depth > 1e-9 * Distance()))
    {
        return std::nullopt;
    }
    const double units = UnitsPerPixel(depth, height);
    const glm::dvec3 right = Right();
    const glm::dvec3 above = glm::cross(right, Forward());
    return glm::dvec2(width / 2.0 + glm::dot(point - place, right) / units,
                      height / 2.0 - glm::dot(point - place, above) / units);
}

Eye Eye::Turned(const glm::dvec3& about, const glm::dvec3& worldUp, double yaw, double pitch) const
{
    Eye turned = *this;
    const auto turn = [&](const glm::dquat& by)
    {
        turned.place = about + by * (turned.place - about);
        turned.target = about + by * (turned.target - about);
        turned.up = by * turned.up;
    };
    turn(glm::angleAxis(yaw, worldUp));
    // The angle between what is up in the picture and in the world: a quarter turn at the poles.
    const glm::dvec3 forward = turned.Forward();
    const double height = std::clamp(glm::dot(forward, worldUp), -1.0, 1.0);
    const double elevation = std::asin(height);
    const bool isUpright = glm::dot(turned.up, worldUp) >= -1e-9;
    if (isUpright)
    {
        const double quarter = glm::radians(90.0);
        pitch = std::clamp(pitch, -quarter - elevation, quarter - elevation);
    }
    turn(glm::angleAxis(pitch, turned.Right()));
    return turned;
}

Eye Eye::Moved(const glm::dvec3& by) const
{
    Eye moved = *this;
    moved.place += by;
    moved.target += by;
    return moved;
}

Eye Eye::Nearer(const glm::dvec3& point, double factor) const
{
    Eye nearer = *this;
    nearer.place = point + (place - point) * factor;
    nearer.target = point + (target - point) * factor;
    return nearer;
}

Eye Eye::Towards(const Eye& other, double share) const
{
    if (share >= 1.0)
    {
        return other;
    }
    Eye between = other;
    const glm::dquat rotation = glm::slerp(RotationOf(*this), RotationOf(other), share);
    const double distance = Distance() * std::pow(other.Distance() / Distance(), share);
    between.target = glm::mix(target, other.target, share);
    between.place = between.target + rotation * glm::dvec3(0.0, 0.0, distance);
    between.up = rotation * glm::dvec3(0.0, 1.0, 0.0);
    between.fov = glm::mix(fov, other.fov, share);
    return between;
}

} // namespace OV::ViewerApp
