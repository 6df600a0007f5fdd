#define GL_GLEXT_PROTOTYPES

#include "apps/viewer/Viewer.h"

#include "apps/viewer/ScriptRunner.h"
#include "orvane_host/output/WritePNG.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

using Clock = std::chrono::steady_clock;

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
