#include "orvane_host/present/detail/OcclusionView.h"

#include "orvane/scene/CameraNode.h"

#include <algorithm>

namespace OV::Host::Detail
{

namespace
{

/// How far the far plane is, in distances of the camera's target.
constexpr float kRange = 12.0f;

/// The same where there is no perspective, in depths of the view; and near over far of the
/// perspective view that has such depths.
constexpr float kOrthographicRange = 2.0f;
constexpr float kOrthographicNear = 0.25f;

} // namespace

OcclusionView::OcclusionView(const CameraNode& camera)
{
    if (camera.GetProjection() != CameraNode::Perspective)
    {
        nearDistance = kOrthographicNear;
        farDistance = 1.0f;
        depthShare = 1.0 / kOrthographicRange;
        return;
    }
    float cameraFar = 1.0f;
    camera.GetNearFar(nearDistance, cameraFar);
    farDistance = std::max(kRange * camera.GetDistanceToTarget(), cameraFar);
    // Depths are far / (far - near) * (1 - near / distance).
    const double share = static_cast<double>(farDistance) * (cameraFar - nearDistance)
        / (static_cast<double>(cameraFar) * (farDistance - nearDistance));
    depthShare = share > 0.0 && share <= 1.0 ? share : 1.0;
}

} // namespace OV::Host::Detail
