// Where the near plane is: before what stands nearest to the eye.

#include "orvane_host/present/detail/NearFinder.h"
#include "orvane_host/present/detail/NearView.h"
#include "orvane_host/present/detail/PresentationImpl.h"
#include "orvane_host/present/detail/ProcessSettings.h"
#include "orvane_host/present/detail/SceneReach.h"
#include "orvane_host/present/detail/SectionPlanes.h"
#include "orvane_host/view/ViewFit.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace OV::Host
{

namespace
{

/// Near over far that parts depths well enough: what the bounds of the model give is left as it is from here on.
constexpr double EnoughOfFar = 1e-2;

/// Of the distance to what is nearest, before rounding.
constexpr double ShareOfNearest = 0.7;

/// Near over far at least: what is nearer than any such plane is cut anyway, and the bounds of the model then part
/// the depths of the rest.
constexpr double LeastOfFar = 5e-7;

/// Near over far at most, where all that is seen is far away.
constexpr double MostOfFar = 0.25;

/// Corners of triangles that a frame looks at while the view moves.
constexpr std::size_t MostWhileMoving = 500'000;

/// Pixels beyond the rims of the picture that rounding of its size may bring in.
constexpr int RoundingReach = 2;

/// Frames after which what finds the nearest thing is let go where it isn't needed.
constexpr int FramesKept = 100;

} // namespace

void Presentation::Impl::KeepDepths()
{
    Camera().GetNearFar(m_depths.nearest, m_depths.farthest);
    m_depths.used = m_depths.nearest;
}

void Presentation::Impl::FitNear()
{
    CameraNode& camera = Camera();
    float nearest = 0.0f;
    float farthest = 0.0f;
    camera.GetNearFar(nearest, farthest);
    // What a host has set stays.
    if (nearest != m_depths.used || farthest != m_depths.farthest)
    {
        return;
    }
    const std::optional<double> found = FindNear();
    m_depths.used = found ? static_cast<float>(*found) : m_depths.nearest;
    if (m_depths.used != nearest)
    {
        camera.SetNearFar(m_depths.used, farthest);
        // The distances of fog are told to shaders by the range of depths.
        Detail::ProcessSettings::FollowDepths(settings, camera);
    }
}

std::optional<double> Presentation::Impl::FindNear()
{
    const double farthest = m_depths.farthest;
    const bool isNeeded = m_depths.nearest > 0.0f && m_depths.nearest < EnoughOfFar * farthest && m_width > 0
        && m_height > 0 && Detail::NearView::Suits(Camera()) && !renderer->DrawsBesideScene();
    if (!isNeeded)
    {
        if (++m_framesWithoutNear > FramesKept)
        {
            m_nearFinder.reset();
        }
        return std::nullopt;
    }
    m_framesWithoutNear = 0;
    const double least = std::max(LeastOfFar * farthest, ViewFit::LeastNear(Camera()));
    const double nearest = NearestDepth(least / ShareOfNearest);
    const double wanted = std::min(ShareOfNearest * nearest, MostOfFar * farthest);
    if (!(wanted >= least))
    {
        return std::nullopt;
    }
    // In steps, by which it stays what it was in nearly every frame of a view that moves.
    const double step = std::exp2(std::floor(std::log2(wanted)));
    // The bounds of the model do as long as they cut nothing.
    return std::max(step, nearest > m_depths.nearest ? m_depths.nearest : least);
}

double Presentation::Impl::NearestDepth(double enough)
{
    Scene& scene = World();
    if (!m_nearFinder || m_nearFinder->GetListenedScene() != &scene)
    {
        m_nearFinder = std::make_unique<Detail::NearFinder>(scene);
    }
    const int reach = Detail::ReachOfPoints(scene) + Detail::ReachOfLines(scene) + RoundingReach;
    const Detail::NearView::Room room = {1.0 + 2.0 * reach / m_width, 1.0 + 2.0 * reach / m_height};
    const Detail::NearView view(Camera(), static_cast<double>(Aspect()), room,
                                Detail::SectionPlanesOf(settings.section));
    const bool hurries = m_hurries && !renderer->GetPart();
    const std::size_t most = hurries ? MostWhileMoving : Detail::NearFinder::kAllCorners;
    double nearest = m_nearFinder->Find(view, enough + view.GetSlack(), most);
    if (const std::optional<PresentationRenderer::ShadowGround> ground = ShadowGroundOfModel())
    {
        nearest = std::min(nearest, view.DepthOfPlane(ground->position, ground->up));
    }
    return nearest - view.GetSlack();
}

} // namespace OV::Host
