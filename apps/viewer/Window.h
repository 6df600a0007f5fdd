#pragma once

#include "apps/viewer/Input.h"

#include <memory>
#include <string>
#include <vector>

struct GLFWwindow;

namespace OV::ViewerApp
{

/// A window with a GL context, and what is done to it.
///
/// One at a time, on the main thread.
class Window
{
public:
    /// Opens a window and makes its context current.
    /// @param error on failure what is missing and what helps, in one line.
    /// @return null on failure.
    static std::unique_ptr<Window> Create(const std::string& title, int width, int height, std::string& error);

    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    /// Gives the window another GL context, and everything in the old one is gone: what a driver
    /// does that resets. The new context is current.
    /// @return false where there is none to be had; the window is then of no use.
    bool LoseContext(std::string& error);

    /// Waits for something to happen and takes what did.
    /// @param seconds to wait at most; 0 doesn't wait, below 0 waits for ever.
    std::vector<InputEvent> Wait(double seconds);

    /// Ends a Wait from another thread.
    static void Wake();

    /// Shows what was drawn.
    void Swap();

    /// In points, as input is told.
    void GetSize(int& width, int& height) const;

    /// In pixels; 0 while the window is minimised.
    void GetFramebufferSize(int& width, int& height) const;

    /// Pixels per point.
    float GetPixelRatio() const;

    void SetSize(int width, int height);
    void SetTitle(const std::string& title);
    std::string GetClipboard() const;
    void SetClipboard(const std::string& text);

    /// Something happened, for the callbacks of the window system.
    void Push(InputEvent event);

private:
    Window() = default;

    bool Open(std::string& error);
    void Close();

    GLFWwindow* m_window = nullptr;
    std::string m_title;
    int m_width = 0;
    int m_height = 0;
    std::vector<InputEvent> m_events;
};

} // namespace OV::ViewerApp
