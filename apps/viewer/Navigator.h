#pragma once

#include "apps/viewer/Eye.h"

#include <glm/vec2.hpp>

namespace OV::ViewerApp
{

/// Moves an eye by what a pointer does, and turns it to another one in a short while.
///
/// Knows no window and no clock: it is told pixels and seconds.
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

    /// The picture, in pixels, and the direction that is up in the world.
    void SetPicture(int width, int height, const glm::dvec3& worldUp);

    /// How near and how far the eye may come to what it looks at.
    void SetReach(double nearest, double farthest);

    /// Stands somewhere at once; ends a drag or a turn.
    void Stand(const Eye& eye);

    /// Takes over what another one did to the view, without ending what goes on.
    void Follow(const Eye& eye);

    const Eye& GetEye() const { return m_eye; }

    /// @param pivot what is under the pointer: an orbit goes about it, and a pan keeps it there.
    void BeginDrag(Drag drag, const glm::dvec2& pixel, const glm::dvec3& pivot);
    void DragTo(const glm::dvec2& pixel);
    void EndDrag();
    Drag GetDrag() const { return m_drag; }

    /// Steps of a wheel, above 0 to come nearer to a point.
    void Zoom(double steps, const glm::dvec3& point);

    /// Moves the picture by pixels, at the depth of the target.
    void PanBy(const glm::dvec2& pixels);

    /// Turns about the target by a part of a turn, as keys do.
    void TurnBy(double yaw, double pitch);

    void TurnTo(const Eye& eye);
    bool IsTurning() const { return m_isTurning; }

    /// Goes on with a turn.
    /// @return whether it ended with this step.
    bool Step(double seconds);

private:
    Eye m_eye;
    int m_width = 1;
    int m_height = 1;
    glm::dvec3 m_worldUp{0.0, 1.0, 0.0};
    double m_nearest = 0.0;
    double m_farthest = 1e15;

    Drag m_drag = Drag::None;
    Eye m_dragEye;
    glm::dvec2 m_dragPixel{0.0, 0.0};
    glm::dvec3 m_pivot{0.0, 0.0, 0.0};

    bool m_isTurning = false;
    Eye m_turnFrom;
    Eye m_turnTo;
    double m_turned = 0.0; ///< seconds
};

} // namespace OV::ViewerApp
