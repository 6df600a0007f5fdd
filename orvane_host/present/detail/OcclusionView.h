#pragma once

namespace OV
{

class CameraNode;

} // namespace OV

namespace OV::Host::Detail
{

/// The view that ambient occlusion takes its depths for: that of a camera, with a far plane that
/// suits the effect.
///
/// Steps and darkening follow the depth of a pixel between near and far. They are large enough to
/// be seen only where what is looked at lies well before the far plane.
struct OcclusionView
{
    explicit OcclusionView(const CameraNode& camera);

    /// Of a perspective view, also for a camera without perspective.
    float nearDistance = 0.0f;
    float farDistance = 1.0f;

    /// What the depths of the camera are multiplied by to be those of this view, above 0 and at
    /// most 1: a far plane that is farther only scales depths.
    double depthShare = 1.0;
};

} // namespace OV::Host::Detail
