#include "apps/viewer/Window.h"

#include <GLFW/glfw3.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

constexpr struct
{
    int glfw;
    int key;
} kKeys[] = {
    {GLFW_KEY_ESCAPE, KeyEscape},
    {GLFW_KEY_ENTER, KeyEnter},
    {GLFW_KEY_KP_ENTER, KeyEnter},
    {GLFW_KEY_TAB, KeyTab},
    {GLFW_KEY_BACKSPACE, KeyBackspace},
    {GLFW_KEY_DELETE, KeyDelete},
    {GLFW_KEY_LEFT, KeyLeft},
    {GLFW_KEY_RIGHT, KeyRight},
    {GLFW_KEY_UP, KeyUp},
    {GLFW_KEY_DOWN, KeyDown},
    {GLFW_KEY_PAGE_UP, KeyPageUp},
    {GLFW_KEY_PAGE_DOWN, KeyPageDown},
    {GLFW_KEY_HOME, KeyHome},
    {GLFW_KEY_END, KeyEnd},
    {GLFW_KEY_LEFT_SHIFT, KeyShift},
    {GLFW_KEY_RIGHT_SHIFT, KeyShift},
    {GLFW_KEY_LEFT_CONTROL, KeyControl},
    {GLFW_KEY_RIGHT_CONTROL, KeyControl},
    {GLFW_KEY_LEFT_ALT, KeyAlt},
    {GLFW_KEY_RIGHT_ALT, KeyAlt},
};

/// @param scancode of the key, for what is written on it.
int KeyOf(int glfw, int scancode)
{
    if (glfw >= GLFW_KEY_F1 && glfw <= GLFW_KEY_F12)
    {
        return KeyF1 + (glfw - GLFW_KEY_F1);
    }
    const auto found =
        std::find_if(std::begin(kKeys), std::end(kKeys), [&](const auto& candidate) { return candidate.glfw == glfw; });
    if (found != std::end(kKeys))
    {
        return found->key;
    }
    // Letters are those of the person's keyboard, wherever they are on it.
    const bool isWritten = glfw >= GLFW_KEY_SPACE && glfw <= GLFW_KEY_GRAVE_ACCENT;
    const char* const name = isWritten ? glfwGetKeyName(glfw, scancode) : nullptr;
    if (name && name[0] >= 'a' && name[0] <= 'z' && name[1] == '\0')
    {
        return name[0] - 'a' + 'A';
    }
    // The others are named by their characters on the usual keyboard.
    return glfw > 0 && glfw < 256 ? glfw : KeyNone;
}

unsigned ModifiersOf(int glfw)
{
    unsigned modifiers = ModifierNone;
    modifiers |= (glfw & GLFW_MOD_SHIFT) != 0 ? ModifierShift : 0u;
    // The command key stands in for control where a keyboard has one.
    modifiers |= (glfw & (GLFW_MOD_CONTROL | GLFW_MOD_SUPER)) != 0 ? ModifierControl : 0u;
    modifiers |= (glfw & GLFW_MOD_ALT) != 0 ? ModifierAlt : 0u;
    return modifiers;
}

Window& Of(GLFWwindow* window)
{
    return *static_cast<Window*>(glfwGetWindowUserPointer(window));
}

/// Where the pointer is, in points.
void TakePlace(GLFWwindow* window, InputEvent& event)
{
    glfwGetCursorPos(window, &event.x, &event.y);
    event.x /= Of(window).UnitsPerPoint();
    event.y /= Of(window).UnitsPerPoint();
}

InputEvent Made(InputEvent::Kind kind)
{
    InputEvent event;
    event.kind = kind;
    return event;
}

void OnMove(GLFWwindow* window, double x, double y)
{
    InputEvent event = Made(InputEvent::Kind::PointerMoved);
    event.x = x / Of(window).UnitsPerPoint();
    event.y = y / Of(window).UnitsPerPoint();
    Of(window).Push(event);
}

void OnButton(GLFWwindow* window, int button, int action, int modifiers)
{
    if (button > GLFW_MOUSE_BUTTON_MIDDLE)
    {
        return;
    }
    InputEvent event = Made(action == GLFW_PRESS ? InputEvent::Kind::ButtonDown : InputEvent::Kind::ButtonUp);
    event.button = button == GLFW_MOUSE_BUTTON_LEFT    ? Button::Left
                   : button == GLFW_MOUSE_BUTTON_RIGHT ? Button::Right
                                                       : Button::Middle;
    event.modifiers = ModifiersOf(modifiers);
    event.time = glfwGetTime();
    TakePlace(window, event);
    Of(window).Push(event);
}

unsigned HeldModifiers(GLFWwindow* window)
{
    const auto isHeld = [window](int left, int right)
    { return glfwGetKey(window, left) == GLFW_PRESS || glfwGetKey(window, right) == GLFW_PRESS; };
    unsigned modifiers = ModifierNone;
    modifiers |= isHeld(GLFW_KEY_LEFT_SHIFT, GLFW_KEY_RIGHT_SHIFT) ? ModifierShift : 0u;
    modifiers |= isHeld(GLFW_KEY_LEFT_CONTROL, GLFW_KEY_RIGHT_CONTROL) ? ModifierControl : 0u;
    return modifiers;
}

void OnScroll(GLFWwindow* window, double dx, double dy)
{
    InputEvent event = Made(InputEvent::Kind::Scrolled);
    event.modifiers = HeldModifiers(window);
    event.dx = dx;
    event.dy = dy;
    event.time = glfwGetTime();
    TakePlace(window, event);
    Of(window).Push(event);
}

void OnKey(GLFWwindow* window, int key, int scancode, int action, int modifiers)
{
    InputEvent event = Made(action == GLFW_RELEASE ? InputEvent::Kind::KeyUp : InputEvent::Kind::KeyDown);
    event.key = KeyOf(key, scancode);
    event.modifiers = ModifiersOf(modifiers);
    Of(window).Push(event);
}

void OnText(GLFWwindow* window, unsigned int codepoint)
{
    InputEvent event = Made(InputEvent::Kind::Typed);
    event.codepoint = codepoint;
    Of(window).Push(event);
}

void OnDrop(GLFWwindow* window, int count, const char** paths)
{
    InputEvent event = Made(InputEvent::Kind::Dropped);
    event.files.assign(paths, paths + count);
    event.modifiers = HeldModifiers(window);
    Of(window).Push(event);
}

void OnClose(GLFWwindow* window)
{
    // Whether it closes is for the program to say.
    glfwSetWindowShouldClose(window, GLFW_FALSE);
    Of(window).Push(Made(InputEvent::Kind::CloseAsked));
}

void OnRefresh(GLFWwindow* window)
{
    Of(window).Push(Made(InputEvent::Kind::Refresh));
}

} // namespace

std::unique_ptr<Window> Window::Create(const std::string& title, int width, int height, float scale,
                                       std::string& error)
{
    if (!glfwInit())
    {
        error = "there is no display to open a window on; start it on a desktop, or use orvane-render";
        return nullptr;
    }
    std::unique_ptr<Window> window(new Window);
    window->m_title = title;
    window->m_width = width;
    window->m_height = height;
    window->m_scale = scale;
    return window->Open(error) ? std::move(window) : nullptr;
}

Window::~Window()
{
    Close();
    // The libraries of the window system stay loaded until the process ends: what they keep for the
    // life of the process would be told as lost, by no name, by a check for leaks.
}

bool Window::Open(std::string& error)
{
    glfwDefaultWindowHints();
    // The model is drawn off screen and comes smoothed and finished.
    glfwWindowHint(GLFW_SAMPLES, 0);
    m_window = glfwCreateWindow(m_width, m_height, m_title.c_str(), nullptr, nullptr);
    if (!m_window)
    {
        error = "the driver makes no GL 2.1 context for a window; update it";
        return false;
    }
    glfwSetWindowUserPointer(m_window, this);
    glfwSetCursorPosCallback(m_window, OnMove);
    glfwSetMouseButtonCallback(m_window, OnButton);
    glfwSetScrollCallback(m_window, OnScroll);
    glfwSetKeyCallback(m_window, OnKey);
    glfwSetCharCallback(m_window, OnText);
    glfwSetDropCallback(m_window, OnDrop);
    glfwSetWindowCloseCallback(m_window, OnClose);
    glfwSetWindowRefreshCallback(m_window, OnRefresh);
    glfwSetWindowIconifyCallback(m_window, [](GLFWwindow* window, int isMinimised)
                                 { Of(window).NoteMinimised(isMinimised == GLFW_TRUE); });
    glfwSetFramebufferSizeCallback(m_window, [](GLFWwindow* window, int, int) { OnRefresh(window); });
    glfwSetWindowContentScaleCallback(m_window, [](GLFWwindow* window, float, float) { OnRefresh(window); });
    glfwMakeContextCurrent(m_window);
    glfwSwapInterval(1);
    // How large a point is here is known only now.
    SetSize(m_width, m_height);
    return true;
}

void Window::Close()
{
    if (m_window)
    {
        glfwDestroyWindow(m_window);
        m_window = nullptr;
    }
}

bool Window::LoseContext(std::string& error)
{
    GetSize(m_width, m_height);
    Close();
    return Open(error);
}

std::vector<InputEvent> Window::Wait(double seconds)
{
    if (seconds < 0.0)
    {
        glfwWaitEvents();
    }
    else if (seconds > 0.0)
    {
        glfwWaitEventsTimeout(seconds);
    }
    else
    {
        glfwPollEvents();
    }
    return std::exchange(m_events, {});
}

void Window::Wake()
{
    glfwPostEmptyEvent();
}

void Window::Swap()
{
    glfwSwapBuffers(m_window);
}

float Window::UnitsPerPoint() const
{
    int units = 0;
    int pixels = 0;
    int height = 0;
    glfwGetWindowSize(m_window, &units, &height);
    glfwGetFramebufferSize(m_window, &pixels, &height);
    if (units < 1 || pixels < 1)
    {
        return 1.0f;
    }
    const float pixelsPerUnit = static_cast<float>(pixels) / static_cast<float>(units);
    return std::max(GetPixelRatio() / pixelsPerUnit, 0.1f);
}

void Window::GetSize(int& width, int& height) const
{
    glfwGetWindowSize(m_window, &width, &height);
    const float units = UnitsPerPoint();
    width = static_cast<int>(std::lround(static_cast<float>(width) / units));
    height = static_cast<int>(std::lround(static_cast<float>(height) / units));
}

void Window::SetScale(float scale)
{
    m_scale = scale;
    Push(Made(InputEvent::Kind::Refresh));
}

void Window::NoteMinimised(bool isMinimised)
{
    m_isMinimised = isMinimised;
    Push(Made(InputEvent::Kind::Refresh));
}

void Window::Minimise(bool minimise)
{
    NoteMinimised(minimise);
    if (minimise)
    {
        glfwIconifyWindow(m_window);
    }
    else
    {
        glfwRestoreWindow(m_window);
    }
}

void Window::GetFramebufferSize(int& width, int& height) const
{
    if (m_isMinimised)
    {
        width = height = 0;
        return;
    }
    glfwGetFramebufferSize(m_window, &width, &height);
}

float Window::GetPixelRatio() const
{
    if (m_scale > 0.0f)
    {
        return m_scale;
    }
    float x = 1.0f;
    float y = 1.0f;
    glfwGetWindowContentScale(m_window, &x, &y);
    // A screen that doesn't know tells nothing sensible.
    return x >= 0.5f && x <= 8.0f ? x : 1.0f;
}

void Window::SetSize(int width, int height)
{
    const float units = UnitsPerPoint();
    glfwSetWindowSize(m_window, std::max(1, static_cast<int>(std::lround(static_cast<float>(width) * units))),
                      std::max(1, static_cast<int>(std::lround(static_cast<float>(height) * units))));
}

void Window::SetTitle(const std::string& title)
{
    m_title = title;
    glfwSetWindowTitle(m_window, title.c_str());
}

std::string Window::GetClipboard() const
{
    const char* const text = glfwGetClipboardString(m_window);
    return text ? text : "";
}

void Window::SetClipboard(const std::string& text)
{
    glfwSetClipboardString(m_window, text.c_str());
}

void Window::Push(InputEvent event)
{
    m_events.push_back(std::move(event));
}

} // namespace OV::ViewerApp
