#pragma once

#include "orvane_host/view/ViewFit.h"
#include "orvane/math/Point3d.h"
#include "orvane/math/Vector3d.h"
#include "orvane/math/Vector.h"

namespace OV::Host
{

/// Where an OrbitCamera stands.
struct OrbitState
{
    /// What it turns about and looks at, in world space.
    QGM::Point3d target{0.0, 0.0, 0.0};
    /// Radians about the up axis from the front towards the right, -pi to pi.
    double azimuth = 0.0;
    /// Radians above the horizon, -pi/2 to pi/2.
    double elevation = 0.0;
    /// From the target to the eye, above 0. The picture is as high at the target in both projections.
    double distance = 10.0;
};

/// A camera that a person moves with a mouse: it orbits, pans and zooms to a point.
///
/// Pure mathematics in double, without a window, a clock or GL. Pixels are of a screen, from its
/// upper left corner; what lies under a pixel stays under it where an operation says so, to far
/// less than a pixel. The horizon stays level, also straight above and below. Numbers that are not
/// finite change nothing. The distance stays within 1/100,000 and 10,000 times the size of the
/// model, and the target within 100,000 times; the eye within 1e15, where settings take it, and the target within
/// 9e14, to leave room for the eye.
class OrbitCamera
{
public:
    /// In pixels, above 0; 1280 by 720 at first.
    void SetScreen(double width, double height);

    /// The box of what is looked at, which bounds the distance and gives near and far. A box that is
    /// empty, not finite or beyond 1e15 counts as a cube of edge 2 about the origin, as at first.
    void SetModel(const Vector& boxMin, const Vector& boxMax);

    QGM::Point3d GetModelMiddle() const;

    /// Full vertical angle in degrees, taken into 1 to 170; 35 at first.
    void SetFov(double degrees);
    double GetFov() const { return m_fov; }

    void SetOrthographic(bool orthographic) { m_isOrthographic = orthographic; }
    bool IsOrthographic() const { return m_isOrthographic; }

    void SetUpAxis(UpAxis axis) { m_upAxis = axis; }
    UpAxis GetUpAxis() const { return m_upAxis; }

    /// Takes a state over, within the bounds.
    void SetState(const OrbitState& state);
    const OrbitState& GetState() const { return m_state; }

    /// Turns about the target as a drag over so many pixels does: the height of the screen is half a
    /// turn.
    void Orbit(double rightPixels, double downPixels);

    /// Moves so that what was under one pixel, at the depth of the target, is under the other.
    void Pan(double fromX, double fromY, double toX, double toY);

    /// Moves so that a point is under a pixel, at the depth that it has.
    /// @return false, with nothing changed, for a point that is not before the eye.
    bool PanPoint(const QGM::Point3d& point, double toX, double toY);

    /// Comes nearer by a factor, or goes away by one below 1, while what is under a pixel at the depth
    /// of the target stays there.
    void Zoom(double factor, double x, double y);

    /// The same about a point of any depth, as picking finds it.
    void ZoomAt(double factor, const QGM::Point3d& point);

    /// Shows all of the model, from where it is seen.
    void FrameModel();

    /// Shows all of a box, from where it is seen.
    void FrameBox(const Vector& boxMin, const Vector& boxMax);

    /// Shows all of the model from a direction.
    void LookFrom(NamedView view);

    /// Looks from one place to another. Only straight above and below does up say what is up.
    /// @return false, with nothing changed, where the two coincide.
    bool Look(const Vector& eye, const Vector& target, const Vector& up);

    QGM::Point3d GetEye() const;
    /// A unit vector, the upper edge of the picture.
    QGM::Vector3d GetUp() const;

    /// The point under a pixel at the depth of the target.
    QGM::Point3d PointAt(double x, double y) const;

    /// Where a point is on the screen.
    /// @return false for a point that is not before the eye.
    bool PixelOf(const QGM::Point3d& point, double& x, double& y) const;

    /// Takes over where a camera is and how it sees; its roll is lost.
    /// @return false, with nothing changed, for a camera with numbers that make no view.
    bool ReadFrom(const CameraNode& camera);

    /// Writes transform, projection, angle, near, far and distance to target, as ViewFit::Look.
    void WriteTo(CameraNode& camera) const;

    /// A state on the way from one to another, the shorter way round, that sets off and arrives
    /// gently.
    /// @param time 0 for the one, 1 for the other; what is beyond counts as the nearer of them.
    static OrbitState Between(const OrbitState& from, const OrbitState& to, double time);

private:
    struct Axes
    {
        QGM::Vector3d right;
        QGM::Vector3d up;
        QGM::Vector3d back;
    };

    Axes GetAxes() const;
    double TanV() const;
    double UnitsPerPixel(double depth) const;
    double DepthOf(const QGM::Point3d& point, const Axes& axes) const;
    double BoundDistance(double distance, const QGM::Point3d& one, const QGM::Point3d& other) const;
    void Bound();
    ViewFitOptions FitOptions() const;

    OrbitState m_state;
    double m_width = 1280.0;
    double m_height = 720.0;
    double m_fov = 35.0;
    bool m_isOrthographic = false;
    UpAxis m_upAxis = UpAxis::Y;
    Vector m_boxMin{-1.0f, -1.0f, -1.0f};
    Vector m_boxMax{1.0f, 1.0f, 1.0f};
};

} // namespace OV::Host
