#define GL_GLEXT_PROTOTYPES

#include "apps/viewer/Viewer.h"

#include "apps/viewer/Actions.h"
#include "apps/viewer/ScriptRunner.h"
#include "orvane_host/output/WritePNG.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <glm/common.hpp>
#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

using Clock = std::chrono::steady_clock;

/// A panel follows an event in the frame after it, and what follows that in the next one.
constexpr int FramesAfterEvent = 3;
/// Points that a pointer may move between press and release of a click.
constexpr double ClickReach = 3.0;
constexpr double DoubleClickSeconds = 0.4;
/// Of a movement for a step of a trackpad.
constexpr double PixelsPerScroll = 30.0;
/// Scrolls that come sooner after each other are one movement.
constexpr double GestureSeconds = 0.3;
constexpr double LoadingPoll = 0.05;
constexpr double WatchPoll = 0.3;
/// Of what goes on in a panel while a button is held.
constexpr double HeldPoll = 0.25;

std::string ReadFile(const std::string& path, const char* what)
{
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    if (!stream)
    {
        throw Failure(path + ": the " + what + " can't be read; check the name");
    }
    return text.str();
}

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

std::string FullPath(const std::string& path)
{
    char* const full = ::realpath(path.c_str(), nullptr);
    const std::string found = full ? full : path;
    std::free(full);
    return found;
}

} // namespace

Viewer::Viewer(const Options& options) :
    m_options(options), m_desk(&Window::Wake), m_overlay(m_desk, m_measure), m_panels(*this)
{
    if (!options.script.empty())
    {
        Script script;
        std::string error;
        if (!Script::Parse(ReadFile(options.script, "script"), script, error))
        {
            throw Failure(options.script + ": " + error);
        }
        m_script = std::make_unique<ScriptRunner>(*this, std::move(script));
    }
    ReadState();
    std::string error;
    m_window = Window::Create("Orvane", options.width, options.height, options.scale, error);
    if (!m_window)
    {
        throw Failure(error);
    }
    m_gui = std::make_unique<Gui>(*m_window);
    m_desk.Watch(options.watch);
    OpenAll(options.models);
    Redraw();
}

Viewer::~Viewer()
{
    m_picture.Release();
}

void Viewer::ReadState()
{
    if (!m_options.forget)
    {
        std::string word;
        m_state = State::Read(State::UsualPath(), word);
        if (!word.empty())
        {
            m_desk.TellTrouble(word);
        }
    }
    m_desk.Apply(m_state.settings);
    if (m_options.settings.empty())
    {
        return;
    }
    std::string error;
    const auto settings = Host::PresentationSettings::FromJSON(ReadFile(m_options.settings, "file of settings"), error);
    if (!settings)
    {
        throw Failure(m_options.settings + ": " + error);
    }
    m_desk.Apply(*settings);
    m_desk.KeepAllSettings();
}

void Viewer::WriteState()
{
    if (m_options.forget)
    {
        return;
    }
    m_state.settings = m_desk.GetSettings();
    std::string error;
    if (!m_state.Write(State::UsualPath(), error))
    {
        throw Failure(error);
    }
}

void Viewer::Open(const std::string& path, Desk::Opening opening)
{
    if (!path.empty())
    {
        m_desk.Open(FullPath(path), opening);
        Redraw();
    }
}

void Viewer::OpenAll(const std::vector<std::string>& paths, Desk::Opening opening)
{
    for (const std::string& path : paths)
    {
        Open(path, std::exchange(opening, Desk::Opening::Beside));
    }
}

void Viewer::Redraw()
{
    m_framesToDraw = FramesAfterEvent;
}

bool Viewer::IsAtRest() const
{
    return m_framesToDraw == 0 && !m_desk.IsMoving() && !m_desk.IsOpening();
}

double Viewer::SleepSeconds(double script) const
{
    if (m_framesToDraw > 0 || m_desk.IsMoving())
    {
        return 0.0;
    }
    double seconds = script;
    const auto atMost = [&seconds](double wanted) { seconds = seconds < 0.0 ? wanted : std::min(seconds, wanted); };
    if (m_desk.IsOpening())
    {
        atMost(LoadingPoll);
    }
    if (m_desk.IsWatching())
    {
        atMost(WatchPoll);
    }
    if (m_gui->IsAnimated())
    {
        atMost(HeldPoll);
    }
    return seconds;
}

void Viewer::Run()
{
    Clock::time_point last = Clock::now();
    while (!m_isClosing)
    {
        const bool wasOpening = m_desk.IsOpening();
        HandleAll(m_window->Wait(SleepSeconds(m_script ? m_script->Timeout() : -1.0)));
        if (m_script && !m_isClosing)
        {
            m_script->Step();
        }
        if (std::exchange(m_isLosingContext, false))
        {
            ChangeContext();
        }
        const Clock::time_point now = Clock::now();
        const double seconds = std::chrono::duration<double>(now - last).count();
        last = now;
        if (const std::string opened = m_desk.Update(seconds); !opened.empty())
        {
            m_state.AddRecent(opened);
            m_measure.Clear();
            UpdateTitle();
        }
        if (m_desk.IsMoving() || m_desk.IsOpening() || wasOpening || m_desk.NeedsDraw() || m_gui->IsAnimated())
        {
            m_framesToDraw = std::max(m_framesToDraw, 1);
        }
        if (m_framesToDraw > 0 && !m_isClosing)
        {
            --m_framesToDraw;
            Frame(seconds);
        }
    }
    WriteState();
}

void Viewer::UpdateTitle()
{
    const std::vector<std::string> paths = m_desk.GetPaths();
    if (paths.empty())
    {
        return;
    }
    const std::string name = paths.front().substr(paths.front().find_last_of('/') + 1);
    const std::string more = paths.size() > 1 ? " and " + std::to_string(paths.size() - 1) + " more" : "";
    m_window->SetTitle(name + more + " - Orvane");
}

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

bool Viewer::LayOut(double seconds)
{
    int width = 0;
    int height = 0;
    m_window->GetFramebufferSize(width, height);
    if (width < 1 || height < 1)
    {
        return false;
    }
    const float ratio = m_window->GetPixelRatio();
    m_gui->Begin(seconds);
    m_panels.Draw();
    const PointRect& rect = m_panels.GetPicture();
    m_desk.SetPicture(static_cast<int>(std::lround(rect.width * ratio)),
                      static_cast<int>(std::lround(rect.height * ratio)), ratio);
    m_overlay.Draw(rect, ratio);
    return true;
}

void Viewer::Frame(double seconds)
{
    if (!LayOut(seconds))
    {
        return;
    }
    ++m_windowFrames;
    int width = 0;
    int height = 0;
    m_window->GetFramebufferSize(width, height);
    const float ratio = m_window->GetPixelRatio();
    const PointRect& rect = m_panels.GetPicture();
    const int pictureWidth = m_desk.GetWidth();
    const int pictureHeight = m_desk.GetHeight();
    const bool hasPicture = m_desk.GetModel() && pictureWidth > 0 && pictureHeight > 0;
    if (hasPicture && (m_desk.NeedsDraw() || !m_picture.Holds(pictureWidth, pictureHeight)))
    {
        DrawModel();
    }
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glViewport(0, 0, width, height);
    glClearColor(0.93f, 0.93f, 0.94f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    if (hasPicture)
    {
        m_picture.Show(static_cast<int>(std::lround(rect.x * ratio)),
                       height - static_cast<int>(std::lround(rect.y * ratio)) - pictureHeight);
    }
    glViewport(0, 0, width, height);
    m_gui->Draw();
    if (!m_screenshot.empty())
    {
        SaveScreenshot(width, height);
    }
    m_window->Swap();
}

void Viewer::DrawModel()
{
    const Clock::time_point begin = Clock::now();
    // As many as a saved picture has; those that GL lacks are left out when the picture is made.
    const int samples = Host::Presentation::SamplesFor(m_desk.GetDrawn(), Host::PresentationSettings::MostSamples);
    if (!m_picture.Begin(m_desk.GetWidth(), m_desk.GetHeight(), samples))
    {
        m_desk.TellTrouble("GL can't make a picture of the size of the window; make the window smaller");
        return;
    }
    m_desk.Draw();
    ++m_modelFrames;
    glFinish();
    m_desk.TellFrameTime(std::chrono::duration<double>(Clock::now() - begin).count());
}

void Viewer::SaveScreenshot(int width, int height)
{
    std::vector<unsigned char> rgba(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
    const std::size_t row = static_cast<std::size_t>(width) * 4;
    for (int y = 0; y < height / 2; ++y)
    {
        std::swap_ranges(rgba.begin() + static_cast<std::ptrdiff_t>(y * row),
                         rgba.begin() + static_cast<std::ptrdiff_t>((y + 1) * row),
                         rgba.begin() + static_cast<std::ptrdiff_t>((height - 1 - y) * row));
    }
    const std::string path = std::exchange(m_screenshot, {});
    std::string error;
    if (!Host::WritePNG(std::move(rgba), width, height, path, Host::PNGAlpha::Drop, error))
    {
        throw Failure(path + ": " + error);
    }
}

void Viewer::TakePicture(const std::string& path, int width, int height, bool transparent)
{
    Host::Presentation* const model = m_desk.GetModel();
    if (!model)
    {
        m_desk.TellTrouble("There is no model to make a picture of.");
        return;
    }
    // The colour of what is selected is no part of the design.
    const std::vector<std::string> selection = m_desk.GetSelection();
    m_desk.Select({});
    Host::PictureOptions picture;
    picture.width = width > 0 ? width : m_desk.GetWidth();
    picture.height = height > 0 ? height : m_desk.GetHeight();
    picture.transparent = transparent && !m_desk.GetSettings().sky;
    std::string error;
    // That of the window is as it is there; another one counts pixels alone.
    picture.pixelRatio = width < 1 || height < 1 ? m_desk.GetRatio() : 1.0f;
    const bool isSaved = model->SavePicture(path, picture, error);
    const Host::BlankPicture blank = isSaved ? model->FindBlank(picture) : Host::BlankPicture();
    m_desk.Select(selection);
    if (blank)
    {
        m_desk.Tell("Saved " + path + ", which shows nothing of the model: " + blank.Line());
    }
    else if (isSaved)
    {
        m_desk.Tell("Saved " + path);
    }
    else
    {
        m_desk.TellTrouble(path + ": " + error);
    }
}

RenderCommand Viewer::Command() const
{
    Shown shown;
    const std::vector<std::string> paths = m_desk.GetPaths();
    shown.besides.assign(paths.begin() + (paths.empty() ? 0 : 1), paths.end());
    shown.hidden = m_desk.GetHidden();
    shown.isolated = m_desk.GetIsolated();
    shown.labels = m_desk.GetLabels();
    shown.dimensions = m_desk.GetDimensions();
    shown.pixelRatio = m_desk.GetRatio();
    return MakeRenderCommand(m_desk.GetSettings(), m_desk.GetPath(), m_desk.GetWidth(), m_desk.GetHeight(),
                             "picture.png", shown);
}

void Viewer::CopyCommand()
{
    const RenderCommand command = Command();
    m_window->SetClipboard(command.ToShell());
    std::string text = "Copied the command of this picture";
    for (const std::string& sentence : command.leftOut)
    {
        text += "; " + sentence;
    }
    m_desk.Tell(text);
}

void Viewer::LoseContext()
{
    // A panel may ask for it in the middle of a frame.
    m_isLosingContext = true;
    Redraw();
}

void Viewer::ChangeContext()
{
    m_desk.Suspend();
    m_picture.Release();
    m_gui->Suspend();
    std::string error;
    if (!m_window->LoseContext(error))
    {
        throw Failure(error);
    }
    m_desk.Resume();
    UpdateTitle();
    Redraw();
}

void Viewer::SaveView(const std::string& name)
{
    m_state.SetView(name, m_desk.GetPath(), m_desk.GetSettings());
}

void Viewer::RecallView(const std::string& name)
{
    if (const SavedView* const saved = m_state.FindView(name, m_desk.GetPath()))
    {
        Host::PresentationSettings settings = m_desk.GetSettings();
        settings.section = saved->settings.section;
        if (m_desk.Apply(settings))
        {
            m_desk.TurnTo(saved->settings.view);
        }
    }
}

std::string Viewer::Statistics() const
{
    return "window frames " + std::to_string(m_windowFrames) + ", model frames " + std::to_string(m_modelFrames);
}

} // namespace OV::ViewerApp
