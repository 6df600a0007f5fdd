#pragma once

#include "apps/viewer/CommandText.h"
#include "apps/viewer/Desk.h"
#include "apps/viewer/Gui.h"
#include "apps/viewer/Measure.h"
#include "apps/viewer/ModelPicture.h"
#include "apps/viewer/Options.h"
#include "apps/viewer/Overlay.h"
#include "apps/viewer/Panels.h"
#include "apps/viewer/StateFile.h"
#include "apps/viewer/Window.h"

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace OV::ViewerApp
{

class ScriptRunner;

/// Ends the program with exit status 1 and one line for the person who called.
class Failure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The program: a window with a model and panels about it.
///
/// Waits for events, and draws only when one came or something moves.
class Viewer
{
public:
    /// Opens the window. Throws Failure.
    explicit Viewer(const Options& options);
    ~Viewer();

    /// Until it is closed. Throws Failure where a script fails.
    void Run();

    // For actions, panels and scripts.

    Desk& GetDesk() { return m_desk; }
    Window& GetWindow() { return *m_window; }
    Panels& GetPanels() { return m_panels; }
    Gui& GetGui() { return *m_gui; }
    Measure& GetMeasure() { return m_measure; }
    State& GetState() { return m_state; }

    void Open(const std::string& path, Desk::Opening opening = Desk::Opening::InPlace);

    /// Opens files beside each other.
    /// @param opening of the first.
    void OpenAll(const std::vector<std::string>& paths, Desk::Opening opening = Desk::Opening::InPlace);
    void Close() { m_isClosing = true; }

    /// Writes what the window shows next as a PNG file.
    void TakeScreenshot(const std::string& path) { m_screenshot = path; Redraw(); }

    /// Writes the model without panels as a PNG or JPEG file.
    /// @param width, height 0 for those of the window.
    /// @param transparent leaves the background out, unless there is a sky.
    void TakePicture(const std::string& path, int width = 0, int height = 0, bool transparent = false);

    /// The command of orvane-render that draws what is shown; to the clipboard.
    void CopyCommand();
    std::string CommandLine() const { return Command().ToShell(); }

    /// Ends the GL context after the present frame and goes on in another one. Throws Failure where there is
    /// none.
    void LoseContext();

    void SaveView(const std::string& name);
    void RecallView(const std::string& name);

    /// Asks for another frame.
    void Redraw();

    /// Whether nothing moves, loads or waits to be drawn.
    bool IsAtRest() const;

    std::string Statistics() const;

    /// Seconds after which the program looks for something to do by itself; below 0 where it sleeps until
    /// something happens.
    /// @param script seconds after which a script goes on; below 0 for one that has ended.
    double SleepSeconds(double script) const;

private:
    /// A panel follows an event in the frame after it, and what follows that in the next one.
    static constexpr int FramesAfterEvent = 3;

    RenderCommand Command() const;
    void ReadState();
    void WriteState();
    void HandleAll(const std::vector<InputEvent>& events);
    void Handle(const InputEvent& event);
    void HandlePointer(const InputEvent& event);
    void HandleKey(const InputEvent& event);
    void BeginDrag(const InputEvent& event, const glm::dvec2& pixel);
    void EndDrag(const InputEvent& event, const glm::dvec2& pixel);
    void Scroll(const InputEvent& event, const glm::dvec2& pixel);
    void DragTo(const glm::dvec2& pixel, bool isHeld);
    void Click(const InputEvent& event, const glm::dvec2& pixel);
    glm::dvec2 ToPicture(double x, double y) const;
    bool IsOverPicture(double x, double y) const;
    void Frame(double seconds);
    /// Lets panels take in what was done, without drawing.
    void ShowPanels(int times);
    /// Begins a frame with the panels.
    /// @return false, with none begun, while the window has no pixels.
    bool LayOut(double seconds);
    void DrawModel();
    void SaveScreenshot(int width, int height);
    void UpdateTitle();
    void ChangeContext();

    Options m_options;
    std::unique_ptr<Window> m_window;
    std::unique_ptr<Gui> m_gui;
    ModelPicture m_picture;
    Desk m_desk;
    Measure m_measure;
    State m_state;
    Overlay m_overlay;
    Panels m_panels;
    std::unique_ptr<ScriptRunner> m_script; ///< null without a script

    bool m_isClosing = false;
    bool m_isLosingContext = false;
    int m_framesToDraw = 0;
    std::uint64_t m_windowFrames = 0;
    std::uint64_t m_modelFrames = 0;
    std::string m_screenshot;

    bool m_isPressed = false; ///< the left button, over the picture
    glm::dvec2 m_pressedAt{0.0, 0.0};
    bool m_isDragged = false;
    bool m_isBoxing = false;
    double m_lastScroll = -1e9; ///< as InputEvent::time
    bool m_isSwiping = false;   ///< to the side
    double m_lastClick = -1e9;  ///< as InputEvent::time
    glm::dvec2 m_lastClickAt{-1e9, -1e9};
};

} // namespace OV::ViewerApp
