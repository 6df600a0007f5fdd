#pragma once

#include "orvane_host/view/OrbitCamera.h"

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <optional>

namespace OV::Host
{

class Presentation;
struct ViewSettings;

} // namespace OV::Host

namespace OV::ViewerApp
{

/// Moves a camera by what a pointer does, and turns it to another place in a short while.
///
/// Knows no window and no clock: it is told pixels of the picture, from its upper left corner, and
/// seconds.
class Navigator
{
public:
    enum class Drag
    {
        None,
        Orbit,
        Pan,
    };

    /// How long a turn takes, in seconds.
    static constexpr double TurnSeconds = 0.25;

    void SetPicture(int width, int height);

    /// Looks from where a presentation does. What goes on goes on.
    void Follow(const Host::Presentation& presentation);

    /// Writes eye, target and up.
    void WriteTo(Host::ViewSettings& view) const;

    const Host::OrbitCamera& GetCamera() const { return m_camera; }

    /// @param pivot what is under the pointer, which stays there; none for the target, which stays
    /// in the middle.
    void BeginDrag(Drag drag, const glm::dvec2& pixel, const std::optional<glm::dvec3>& pivot);
    void DragTo(const glm::dvec2& pixel);
    void EndDrag() { m_drag = Drag::None; }
    Drag GetDrag() const { return m_drag; }

    /// Steps of a wheel, above 0 to come nearer to a point.
    void Zoom(double steps, const glm::dvec3& point);

    /// Steps of a wheel, towards the middle of the picture.
    void Zoom(double steps);

    /// Moves the picture by pixels, at the depth of the target.
    void PanBy(const glm::dvec2& pixels);

    /// Turns about the target as a drag over so many pixels does.
    void OrbitBy(const glm::dvec2& pixels);

    /// Turns there from somewhere.
    /// Turns the head as a drag over so many pixels does: the eye stays.
    void LookAround(const glm::dvec2& pixels);

    void Move(const glm::dvec3& by);

    /// Along the ground to where the view looks, of length 1.
    glm::dvec3 Ahead() const;

    void TurnTo(const Host::OrbitState& from, const Host::OrbitState& to);
    bool IsTurning() const { return m_isTurning; }
    void Stop();

    /// Goes on with a turn.
    /// @return whether it ended with this step.
    bool Step(double seconds);

    // What is seen where

    glm::dvec3 Place() const; ///< of the eye
    glm::dvec3 WorldUp() const;
    glm::dvec3 Forward() const;
    glm::dvec3 Right() const;
    glm::dvec3 Up() const;

    /// None for what isn't before the eye.
    std::optional<glm::dvec2> PixelOf(const glm::dvec3& point) const;

    /// The point under a pixel, as far away as the target.
    glm::dvec3 PointAt(const glm::dvec2& pixel) const;

    /// World units across a pixel at a point.
    double UnitsPerPixel(const glm::dvec3& point) const;

private:
    Host::OrbitCamera m_camera;
    int m_height = 1;
    int m_width = 1;

    Drag m_drag = Drag::None;
    Host::OrbitState m_dragState;
    glm::dvec2 m_dragPixel{0.0, 0.0};
    std::optional<glm::dvec3> m_pivot;

    bool m_isTurning = false;
    Host::OrbitState m_turnFrom;
    Host::OrbitState m_turnTo;
    double m_turned = 0.0; ///< seconds
};

} // namespace OV::ViewerApp
