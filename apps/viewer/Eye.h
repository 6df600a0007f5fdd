#pragma once

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <optional>

namespace OV
{

class CameraNode;

} // namespace OV

namespace OV::Host
{

class Presentation;

} // namespace OV::Host

namespace OV::ViewerApp
{

/// Where a model is looked at from, in world space, and the picture that this makes.
///
/// A plain value; what moves it gives a new one. Pixels are those of the picture, from its upper
/// left corner.
struct Eye
{
    glm::dvec3 place{0.0, 0.0, 1.0};
    glm::dvec3 target{0.0, 0.0, 0.0};
    glm::dvec3 up{0.0, 1.0, 0.0}; ///< across the line of sight, of length 1
    double fov = 35.0;            ///< full vertical angle in degrees
    bool orthographic = false;

    /// The one that a presentation looks from; its target is as far away as settings would have it.
    static Eye Of(const Host::Presentation& presentation);

    double Distance() const;
    glm::dvec3 Forward() const;
    glm::dvec3 Right() const;

    /// World units across one pixel at a distance along the line of sight.
    double UnitsPerPixel(double depth, int height) const;

    /// The point behind a pixel, as far along the line of sight as told.
    glm::dvec3 Behind(const glm::dvec2& pixel, double depth, int width, int height) const;

    /// Distance along the line of sight.
    double DepthOf(const glm::dvec3& point) const;

    /// None for what isn't before the eye.
    std::optional<glm::dvec2> Project(const glm::dvec3& point, int width, int height) const;

    /// Turned about a point: to the right by yaw about what is up in the world, then upwards by
    /// pitch, in radians, never past the pole.
    Eye Turned(const glm::dvec3& about, const glm::dvec3& worldUp, double yaw, double pitch) const;

    Eye Moved(const glm::dvec3& by) const;

    /// Nearer to a point by a factor below 1, which stays where it is in the picture.
    Eye Nearer(const glm::dvec3& point, double factor) const;

    /// On the way to another one, by a share of 0 to 1.
    Eye Towards(const Eye& other, double share) const;
};

} // namespace OV::ViewerApp
