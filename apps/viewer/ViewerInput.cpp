#include "apps/viewer/Viewer.h"

#include "apps/viewer/Actions.h"

#include <glm/common.hpp>
#include <glm/geometric.hpp>

#include <cmath>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

/// Points that a pointer may move between press and release of a click.
constexpr double ClickReach = 3.0;
constexpr double DoubleClickSeconds = 0.4;
/// Of a movement for a step of a trackpad.
constexpr double PixelsPerScroll = 30.0;
/// Scrolls that come sooner after each other are one movement.
constexpr double GestureSeconds = 0.3;

/// Whether an event and the one after it may be taken for one by panels.
bool IsOneWith(const InputEvent& event, const InputEvent& next)
{
    using Kind = InputEvent::Kind;
    const bool isSame = event.kind == next.kind;
    switch (next.kind)
    {
    case Kind::PointerMoved:
    case Kind::Scrolled: return isSame;
    // A letter comes with its key.
    case Kind::Typed: return isSame || event.kind == Kind::KeyDown;
    case Kind::ButtonDown:
    case Kind::ButtonUp:
    case Kind::KeyDown:
    case Kind::KeyUp: return false;
    case Kind::Dropped:
    case Kind::Refresh:
    case Kind::CloseAsked: return true;
    }
    return true;
}

/// Whether what an event does goes by which panels there are.
bool BeginsSomething(const InputEvent& event)
{
    return event.kind == InputEvent::Kind::ButtonDown || event.kind == InputEvent::Kind::KeyDown
        || event.kind == InputEvent::Kind::Scrolled;
}

} // namespace

glm::dvec2 Viewer::ToPicture(double x, double y) const
{
    const double ratio = m_window->GetPixelRatio();
    const PointRect& rect = m_panels.GetPicture();
    return {(x - rect.x) * ratio, (y - rect.y) * ratio};
}

bool Viewer::IsOverPicture(double x, double y) const
{
    const PointRect& rect = m_panels.GetPicture();
    return !m_gui->WantsPointer() && x >= rect.x && y >= rect.y && x < rect.x + rect.width && y < rect.y + rect.height;
}

void Viewer::HandleAll(const std::vector<InputEvent>& events)
{
    // Panels look once a frame at what is held and where the pointer is, and a long frame lets many
    // events come: a tap would be over before they saw it, and a click taken by who was under the last one.
    for (std::size_t i = 0; i < events.size(); ++i)
    {
        if (i > 0 && !IsOneWith(events[i - 1], events[i]))
        {
            ShowPanels(BeginsSomething(events[i]) ? FramesAfterEvent : 1);
        }
        Handle(events[i]);
    }
}

void Viewer::ShowPanels(int times)
{
    for (int i = 0; i < times && LayOut(0.0); ++i)
    {
        m_gui->LeaveOut();
    }
}

void Viewer::Handle(const InputEvent& event)
{
    Redraw();
    // A key that is for the program would take the keys to a field of a panel.
    if (event.key != KeyTab || m_gui->WantsKeys())
    {
        m_gui->Feed(event);
    }
    switch (event.kind)
    {
    case InputEvent::Kind::PointerMoved:
    case InputEvent::Kind::ButtonDown:
    case InputEvent::Kind::ButtonUp:
    case InputEvent::Kind::Scrolled: HandlePointer(event); break;
    case InputEvent::Kind::KeyDown: HandleKey(event); break;
    case InputEvent::Kind::Dropped:
        OpenAll(event.files,
                (event.modifiers & ModifierShift) != 0 ? Desk::Opening::Beside : Desk::Opening::InPlace);
        break;
    case InputEvent::Kind::CloseAsked: Close(); break;
    case InputEvent::Kind::Typed:
        // Which key has the sign, and with what held, is another thing on each keyboard.
        if (event.codepoint == '?' && !m_gui->WantsKeys())
        {
            RunActionOf(*this, '?', ModifierNone);
        }
        break;
    case InputEvent::Kind::KeyUp:
    case InputEvent::Kind::Refresh: break;
    }
}

void Viewer::HandleKey(const InputEvent& event)
{
    if (m_gui->WantsKeys() && event.key != KeyEscape)
    {
        return;
    }
    RunActionOf(*this, event.key == KeyF1 ? '?' : event.key, event.key == KeyF1 ? 0u : event.modifiers);
}

void Viewer::HandlePointer(const InputEvent& event)
{
    const glm::dvec2 pixel = ToPicture(event.x, event.y);
    const bool isBusy =
        m_isPressed || m_desk.GetNavigator().GetDrag() != Navigator::Drag::None || m_overlay.IsHeld();
    if (!isBusy && !IsOverPicture(event.x, event.y))
    {
        m_overlay.Hover(std::nullopt);
        return;
    }
    switch (event.kind)
    {
    case InputEvent::Kind::ButtonDown: BeginDrag(event, pixel); break;
    case InputEvent::Kind::ButtonUp: EndDrag(event, pixel); break;
    case InputEvent::Kind::Scrolled: Scroll(event, pixel); break;
    default: DragTo(pixel, isBusy); break;
    }
}

void Viewer::EndDrag(const InputEvent& event, const glm::dvec2& pixel)
{
    if (event.button == Button::Left && std::exchange(m_isPressed, false) && !m_isDragged)
    {
        Click(event, pixel);
    }
    if (std::exchange(m_isBoxing, false) && m_isDragged)
    {
        const glm::dvec2 low = glm::floor(glm::min(m_pressedAt, pixel));
        const glm::dvec2 size = glm::ceil(glm::max(m_pressedAt, pixel)) - low;
        m_desk.SelectIn({static_cast<int>(low.x), static_cast<int>(low.y), static_cast<int>(size.x),
                         static_cast<int>(size.y)}, (event.modifiers & ModifierShift) != 0);
    }
    m_overlay.SetBox(std::nullopt, {});
    m_overlay.Release();
    m_desk.GetNavigator().EndDrag();
}

void Viewer::Scroll(const InputEvent& event, const glm::dvec2& pixel)
{
    Navigator& navigator = m_desk.GetNavigator();
    // Fingers on a trackpad never go quite straight: how they begin is what they mean.
    if (event.time - m_lastScroll > GestureSeconds)
    {
        m_isSwiping = std::abs(event.dx) > std::abs(event.dy);
    }
    m_lastScroll = event.time;
    // With control held it comes nearer whichever way it goes: some systems tell fingers that spread so.
    const bool comesNearer = (event.modifiers & ModifierControl) != 0;
    if (!comesNearer && (m_isSwiping || (event.modifiers & ModifierShift) != 0))
    {
        navigator.PanBy(glm::dvec2(event.dx, event.dy) * PixelsPerScroll);
    }
    else
    {
        navigator.Zoom(event.dy, m_desk.PointUnder(pixel));
    }
    m_desk.FollowNavigator();
}

void Viewer::DragTo(const glm::dvec2& pixel, bool isHeld)
{
    m_overlay.Hover(pixel);
    if (isHeld && glm::distance(pixel, m_pressedAt) > ClickReach * m_window->GetPixelRatio())
    {
        m_isDragged = true;
    }
    if (m_overlay.DragTo(pixel))
    {
        return;
    }
    Navigator& navigator = m_desk.GetNavigator();
    if (m_isBoxing)
    {
        m_overlay.SetBox(m_pressedAt, pixel);
    }
    else if (navigator.GetDrag() != Navigator::Drag::None && m_isDragged)
    {
        navigator.DragTo(pixel);
        m_desk.FollowNavigator();
    }
}

void Viewer::BeginDrag(const InputEvent& event, const glm::dvec2& pixel)
{
    m_pressedAt = pixel;
    m_isDragged = false;
    if (event.button == Button::Left && m_overlay.Press(pixel))
    {
        return;
    }
    if (!m_desk.GetModel())
    {
        return;
    }
    m_isPressed = event.button == Button::Left;
    if (m_isPressed && (event.modifiers & ModifierControl) != 0)
    {
        m_isBoxing = true;
        return;
    }
    const bool pans = event.button != Button::Left || (event.modifiers & ModifierShift) != 0;
    const auto hit = m_desk.Pick(pixel);
    const auto pivot =
        hit ? std::optional<glm::dvec3>({hit->position.x, hit->position.y, hit->position.z}) : std::nullopt;
    m_desk.GetNavigator().BeginDrag(pans ? Navigator::Drag::Pan : Navigator::Drag::Orbit, pixel, pivot);
}

void Viewer::Click(const InputEvent& event, const glm::dvec2& pixel)
{
    if (m_measure.IsOn())
    {
        m_measure.Add(m_desk, pixel, m_window->GetPixelRatio());
        return;
    }
    const bool isDouble = event.time - m_lastClick < DoubleClickSeconds
        && glm::distance(pixel, m_lastClickAt) < 2.0 * ClickReach * m_window->GetPixelRatio();
    m_lastClick = event.time;
    m_lastClickAt = isDouble ? glm::dvec2(-1e9, -1e9) : pixel;
    if (isDouble)
    {
        m_desk.FitSelection();
        return;
    }
    m_desk.SelectAt(pixel, (event.modifiers & (ModifierShift | ModifierControl)) != 0);
}

} // namespace OV::ViewerApp
