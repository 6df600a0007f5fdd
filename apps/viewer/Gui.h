#pragma once

#include "apps/viewer/Input.h"

#include <string>

namespace OV::ViewerApp
{

class Window;

/// The panels' library, fed with the same events as the view, whether they come from a person or
/// from a script. GL from construction to destruction.
class Gui
{
public:
    explicit Gui(Window& window);
    ~Gui();
    Gui(const Gui&) = delete;
    Gui& operator=(const Gui&) = delete;

    /// Takes an event in. One that belongs to a panel (WantsPointer, WantsKeys) is not for the view.
    void Feed(const InputEvent& event);

    /// Whether the pointer is over a panel or holds something of one, as of the last frame.
    bool WantsPointer() const;

    /// Whether a panel takes typed text.
    bool WantsKeys() const;

    /// Begins a frame: panels are told between Begin and Draw.
    /// @param seconds since the last one.
    void Begin(double seconds);

    /// Draws the panels over the framebuffer that is bound.
    void Draw();

    /// Ends a frame in place of Draw, with nothing drawn.
    void LeaveOut();

    /// Closes menus and lists that are open.
    /// @return whether there were any.
    bool CloseMenus();

    /// Lets go of GL objects before a context is lost, and makes them anew with the next Begin.
    void Suspend();

    /// Whether something in the panels moves by itself, such as a blinking cursor.
    bool IsAnimated() const;

private:
    Window& m_window;
    float m_ratio = 0.0f; ///< that fonts are made for
    bool m_hasObjects = false;
};

} // namespace OV::ViewerApp
