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
    /// @param width, height in points.
    /// @param scale pixels per point; 0 for those of the screen that the window is on.
    /// @param error on failure what is missing and what helps, in one line.
    /// @return null on failure.
    static std::unique_ptr<Window> Create(const std::string& title, int width, int height, float scale,
                                          std::string& error);

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

    /// Pixels per point; another one when the window comes to another screen.
    float GetPixelRatio() const;

    /// Another number of pixels per point from now on, as on another screen.
    void SetScale(float scale);

    /// Makes it small, or large again. A window that is small has no pixels, whether there is a window
    /// manager to take it from the screen or not.
    void Minimise(bool minimise);

    /// In points.
    void SetSize(int width, int height);
    void SetTitle(const std::string& title);
    std::string GetClipboard() const;
    void SetClipboard(const std::string& text);

    /// The window system took it from the screen, or brought it back.
    void NoteMinimised(bool isMinimised);

    /// Something happened, at a place in points.
    void Push(InputEvent event);

    /// What the window system counts in, for each point: one, or on some systems pixels.
    float UnitsPerPoint() const;

private:
    Window() = default;

    bool Open(std::string& error);
    void Close();

    GLFWwindow* m_window = nullptr;
    std::string m_title;
    int m_width = 0; ///< in points
    int m_height = 0;
    float m_scale = 0.0f;
    bool m_isMinimised = false;
    std::vector<InputEvent> m_events;
};

} // namespace OV::ViewerApp
