#include "apps/viewer/Navigator.h"

#include <glm/geometric.hpp>
#include <glm/trigonometric.hpp>

#include <algorithm>
#include <cmath>

namespace OV::ViewerApp
{

namespace
{

/// Of an orbit, for each pixel per height of the picture: once across is a half turn and more.
constexpr double OrbitDegrees = 220.0;
/// Of the distance that is left by a step of a wheel.
constexpr double ZoomStep = 0.85;

/// Begins and ends gently.
double Eased(double share)
{
    return share * share * (3.0 - 2.0 * share);
}

} // namespace

void Navigator::SetPicture(int width, int height, const glm::dvec3& worldUp)
{
    m_width = std::max(width, 1);
    m_height = std::max(height, 1);
    m_worldUp = worldUp;
}

void Navigator::SetReach(double nearest, double farthest)
{
    m_nearest = nearest;
    m_farthest = farthest;
}

void Navigator::Stand(const Eye& eye)
{
    m_eye = eye;
    m_drag = Drag::None;
    m_isTurning = false;
}

void Navigator::Follow(const Eye& eye)
{
    m_eye = eye;
}

void Navigator::BeginDrag(Drag drag, const glm::dvec2& pixel, const glm::dvec3& pivot)
{
    m_isTurning = false;
    m_drag = drag;
    m_dragEye = m_eye;
    m_dragPixel = pixel;
    m_pivot = pivot;
}

void Navigator::DragTo(const glm::dvec2& pixel)
{
    // From where it began, so that the way there and back ends where it began.
    const glm::dvec2 moved = pixel - m_dragPixel;
    if (m_drag == Drag::Orbit)
    {
        const double perPixel = glm::radians(OrbitDegrees) / std::min(m_width, m_height);
        m_eye = m_dragEye.Turned(m_pivot, m_worldUp, -moved.x * perPixel, -moved.y * perPixel);
    }
    if (m_drag == Drag::Pan)
    {
        const double depth = m_dragEye.DepthOf(m_pivot);
        const glm::dvec3 from = m_dragEye.Behind(m_dragPixel, depth, m_width, m_height);
        const glm::dvec3 to = m_dragEye.Behind(pixel, depth, m_width, m_height);
        m_eye = m_dragEye.Moved(from - to);
    }
}

void Navigator::EndDrag()
{
    m_drag = Drag::None;
}

void Navigator::Zoom(double steps, const glm::dvec3& point)
{
    m_isTurning = false;
    const double wanted = m_eye.Distance() * std::pow(ZoomStep, steps);
    const double distance = std::clamp(wanted, m_nearest, std::max(m_nearest, m_farthest));
    m_eye = m_eye.Nearer(point, distance / m_eye.Distance());
}

void Navigator::PanBy(const glm::dvec2& pixels)
{
    m_isTurning = false;
    const glm::dvec2 middle(m_width / 2.0, m_height / 2.0);
    const double depth = m_eye.Distance();
    m_eye = m_eye.Moved(m_eye.Behind(middle, depth, m_width, m_height)
                        - m_eye.Behind(middle + pixels, depth, m_width, m_height));
}

void Navigator::TurnBy(double yaw, double pitch)
{
    m_isTurning = false;
    m_eye = m_eye.Turned(m_eye.target, m_worldUp, yaw, pitch);
}

void Navigator::TurnTo(const Eye& eye)
{
    m_drag = Drag::None;
    m_turnFrom = m_eye;
    m_turnTo = eye;
    m_turned = 0.0;
    m_isTurning = true;
}

bool Navigator::Step(double seconds)
{
    if (!m_isTurning)
    {
        return false;
    }
    m_turned += seconds;
    const double share = std::min(m_turned / TurnSeconds, 1.0);
    m_eye = m_turnFrom.Towards(m_turnTo, Eased(share));
    m_isTurning = share < 1.0;
    return !m_isTurning;
}

} // namespace OV::ViewerApp
