#include "apps/viewer/Navigator.h"

#include "orvane_host/present/OrbitView.h"
#include "orvane_host/present/Presentation.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>

namespace OV::ViewerApp
{

namespace
{

/// How much nearer a step of a wheel comes.
constexpr double ZoomStep = 1.18;

QGM::Point3d ToPoint(const glm::dvec3& point)
{
    return {point.x, point.y, point.z};
}

glm::dvec3 ToGlm(const QGM::Point3d& point)
{
    return {point.x, point.y, point.z};
}

} // namespace

void Navigator::SetPicture(int width, int height)
{
    m_width = std::max(width, 1);
    m_height = std::max(height, 1);
    m_camera.SetScreen(m_width, m_height);
}

void Navigator::Follow(const Host::Presentation& presentation)
{
    const Host::ViewSettings& view = presentation.GetSettings().view;
    if (const auto box = presentation.GetModelBox())
    {
        m_camera.SetModel(box->low, box->high);
    }
    m_camera.SetUpAxis(view.upAxis);
    m_camera.SetFov(view.fov);
    m_camera.ReadFrom(presentation.GetCamera());
    m_camera.SetFov(view.fov);
}

void Navigator::WriteTo(Host::ViewSettings& view) const
{
    Host::WriteView(m_camera, view);
}

void Navigator::BeginDrag(Drag drag, const glm::dvec2& pixel, const std::optional<glm::dvec3>& pivot)
{
    m_isTurning = false;
    m_drag = drag;
    m_dragState = m_camera.GetState();
    m_dragPixel = pixel;
    m_pivot = pivot;
}

void Navigator::DragTo(const glm::dvec2& pixel)
{
    // From where it began, so that the way there and back ends where it began.
    m_camera.SetState(m_dragState);
    if (m_drag == Drag::Orbit)
    {
        m_camera.Orbit(pixel.x - m_dragPixel.x, pixel.y - m_dragPixel.y);
        if (m_pivot)
        {
            m_camera.PanPoint(ToPoint(*m_pivot), m_dragPixel.x, m_dragPixel.y);
        }
    }
    if (m_drag == Drag::Pan && m_pivot)
    {
        m_camera.PanPoint(ToPoint(*m_pivot), pixel.x, pixel.y);
    }
    else if (m_drag == Drag::Pan)
    {
        m_camera.Pan(m_dragPixel.x, m_dragPixel.y, pixel.x, pixel.y);
    }
}

void Navigator::Zoom(double steps, const glm::dvec3& point)
{
    m_isTurning = false;
    m_camera.ZoomAt(std::pow(ZoomStep, steps), ToPoint(point));
}

void Navigator::Zoom(double steps)
{
    m_isTurning = false;
    m_camera.Zoom(std::pow(ZoomStep, steps), m_width / 2.0, m_height / 2.0);
}

void Navigator::PanBy(const glm::dvec2& pixels)
{
    m_isTurning = false;
    const glm::dvec2 middle(m_width / 2.0, m_height / 2.0);
    m_camera.Pan(middle.x, middle.y, middle.x + pixels.x, middle.y + pixels.y);
}

void Navigator::OrbitBy(const glm::dvec2& pixels)
{
    m_isTurning = false;
    m_camera.Orbit(pixels.x, pixels.y);
}

void Navigator::LookAround(const glm::dvec2& pixels)
{
    m_isTurning = false;
    const glm::dvec3 place = Place();
    m_camera.Orbit(pixels.x, pixels.y);
    Move(place - Place());
}

glm::dvec3 Navigator::Ahead() const
{
    // Straight down the upper edge of the picture is ahead.
    const glm::dvec3 ahead = Forward() + Up() * 1e-3;
    return glm::normalize(ahead - WorldUp() * glm::dot(ahead, WorldUp()));
}

void Navigator::Move(const glm::dvec3& by)
{
    m_isTurning = false;
    Host::OrbitState state = m_camera.GetState();
    state.target = ToPoint(ToGlm(state.target) + by);
    m_camera.SetState(state);
}

void Navigator::TurnTo(const Host::OrbitState& from, const Host::OrbitState& to)
{
    m_drag = Drag::None;
    m_turnFrom = from;
    m_turnTo = to;
    m_turned = 0.0;
    m_isTurning = true;
    m_camera.SetState(from);
}

void Navigator::Stop()
{
    m_isTurning = false;
    m_drag = Drag::None;
}

bool Navigator::Step(double seconds)
{
    if (!m_isTurning)
    {
        return false;
    }
    m_turned += seconds;
    m_isTurning = m_turned < TurnSeconds;
    m_camera.SetState(Host::OrbitCamera::Between(m_turnFrom, m_turnTo, m_turned / TurnSeconds));
    return !m_isTurning;
}

glm::dvec3 Navigator::Place() const
{
    return ToGlm(m_camera.GetEye());
}

glm::dvec3 Navigator::WorldUp() const
{
    return m_camera.GetUpAxis() == Host::UpAxis::Z ? glm::dvec3(0.0, 0.0, 1.0) : glm::dvec3(0.0, 1.0, 0.0);
}

glm::dvec3 Navigator::Forward() const
{
    return glm::normalize(ToGlm(m_camera.GetState().target) - ToGlm(m_camera.GetEye()));
}

glm::dvec3 Navigator::Right() const
{
    return glm::normalize(glm::cross(Forward(), Up()));
}

glm::dvec3 Navigator::Up() const
{
    const QGM::Vector3d up = m_camera.GetUp();
    return {up.x, up.y, up.z};
}

std::optional<glm::dvec2> Navigator::PixelOf(const glm::dvec3& point) const
{
    glm::dvec2 pixel(0.0);
    return m_camera.PixelOf(ToPoint(point), pixel.x, pixel.y) ? std::optional<glm::dvec2>(pixel) : std::nullopt;
}

glm::dvec3 Navigator::PointAt(const glm::dvec2& pixel) const
{
    return ToGlm(m_camera.PointAt(pixel.x, pixel.y));
}

double Navigator::UnitsPerPixel(const glm::dvec3& point) const
{
    const double atTarget = glm::distance(PointAt({0.0, 0.0}), PointAt({0.0, 1.0}));
    if (m_camera.IsOrthographic())
    {
        return atTarget;
    }
    return atTarget * glm::dot(point - ToGlm(m_camera.GetEye()), Forward()) / m_camera.GetState().distance;
}

} // namespace OV::ViewerApp
