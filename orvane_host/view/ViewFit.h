#pragma once

#include "orvane/math/Vector.h"

#include <string>

namespace OV
{

class CameraNode;

} // namespace OV

namespace OV::Host
{

/// Where the viewer stands. Left is the model's left as seen from the front.
enum class NamedView
{
    /// From the front, the right and above, equally.
    Iso,
    Front,
    Back,
    Left,
    Right,
    Top,
    Bottom,
};

/// The axis that points up. The front is +Z with Y up, and -Y with Z up.
enum class UpAxis
{
    Y,
    Z,
};

/// The unit vector along it.
Vector UpDirection(UpAxis axis);

/// What the picture is like, apart from where it is taken from.
struct ViewFitOptions
{
    /// Width over height. Anything not finite or not above 0 counts as 1.
    float aspect = 16.0f / 9.0f;
    /// Full vertical angle, taken into 1 to 170. Without effect on Frame when orthographic.
    float fovDegrees = 45.0f;
    bool orthographic = false;
    UpAxis upAxis = UpAxis::Y;
    /// Share of half the picture left free on each side, 0 to below 1.
    float margin = 0.05f;
};

/// Places a camera so that a box is in the picture.
///
/// Writes the global transform, the projection, the half angle on the shorter side that
/// CameraNode keeps, near, far and the distance to target. The camera's parent, if any,
/// must have its global up to date. GL-free.
class ViewFit
{
public:
    /// Stands back along a named direction until the whole box, margin included, is in view.
    ///
    /// A box that is empty (a minimum above its maximum), not finite or beyond 1e15 is
    /// replaced by a cube of edge 2 about the origin; a single point gets room about it.
    /// @return false when the box had to be replaced. The camera is usable either way.
    static bool Frame(CameraNode& camera, const Vector& boxMin, const Vector& boxMax, NamedView view,
                      const ViewFitOptions& options = ViewFitOptions());

    /// The same along any direction.
    /// @param towardsEye of any length above 0; else Iso's is taken.
    /// @param up as in Look.
    static bool FrameAlong(CameraNode& camera, const Vector& boxMin, const Vector& boxMax,
                           const Vector& towardsEye, const Vector& up,
                           const ViewFitOptions& options = ViewFitOptions());

    /// Looks from eye to target; the box only decides near and far.
    ///
    /// With an orthographic camera the picture is as high as a perspective one at the
    /// target. An up that is zero, not finite or along the view is replaced by the up
    /// axis, or by the next axis that serves.
    /// @return false, with the camera untouched, when eye or target is not finite or
    /// the two coincide.
    static bool Look(CameraNode& camera, const Vector& eye, const Vector& target, const Vector& up,
                     const Vector& boxMin, const Vector& boxMax,
                     const ViewFitOptions& options = ViewFitOptions());

    /// The least distance of near with which a perspective camera has a projection, in units of the world. Below
    /// it the projection is the identity, which shows what lies behind the eye too.
    static double LeastNear(const CameraNode& camera);

    /// Reads the lower-case name of a view, as on a command line.
    /// @return false, with view untouched, for any other text.
    static bool ParseView(const std::string& text, NamedView& view);

    /// The name that ParseView knows a view by; null for what is no view.
    static const char* NameOf(NamedView view);
};

} // namespace OV::Host
