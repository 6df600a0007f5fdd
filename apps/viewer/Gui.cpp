#define GL_GLEXT_PROTOTYPES

#include "apps/viewer/Gui.h"

#include "apps/viewer/Window.h"
#include "orvane_host/context/GLStateGuard.h"

#include <GL/gl.h>
#include <GL/glext.h>
#include <backends/imgui_impl_opengl2.h>
#include <imgui.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace OV::ViewerApp
{

namespace
{

/// Height of letters, in points.
constexpr float FontSize = 15.0f;

/// Ranges of those that names of files and nodes are written in and the font has: Latin, Greek and
/// Cyrillic letters, dashes and quotes, and signs of money.
constexpr ImWchar Letters[] = {0x20, 0x24F, 0x370, 0x52F, 0x2010, 0x205E, 0x20A0, 0x20BF, 0};

/// From so many pixels per point on, letters are sharp without being drawn finer than those.
constexpr float FineRatio = 1.5f;

constexpr struct
{
    ImGuiKey_ gui;
    int key;
} kKeys[] = {
    {ImGuiKey_Tab, KeyTab},       {ImGuiKey_LeftArrow, KeyLeft},   {ImGuiKey_RightArrow, KeyRight},
    {ImGuiKey_UpArrow, KeyUp},    {ImGuiKey_DownArrow, KeyDown},   {ImGuiKey_PageUp, KeyPageUp},
    {ImGuiKey_PageDown, KeyPageDown}, {ImGuiKey_Home, KeyHome},    {ImGuiKey_End, KeyEnd},
    {ImGuiKey_Delete, KeyDelete}, {ImGuiKey_Backspace, KeyBackspace}, {ImGuiKey_Enter, KeyEnter},
    {ImGuiKey_Escape, KeyEscape}, {ImGuiKey_A, 'A'},               {ImGuiKey_C, 'C'},
    {ImGuiKey_V, 'V'},            {ImGuiKey_X, 'X'},               {ImGuiKey_Y, 'Y'},
    {ImGuiKey_Z, 'Z'},            {ImGuiKey_Space, ' '},
};

/// A font that reads well at any ratio; the library's own, which is one of pixels, where there is
/// none.
void MakeFont(float ratio)
{
    ImGuiIO& io = ImGui::GetIO();
    io.Fonts->Clear();
    ImFontConfig config;
    if (ratio >= FineRatio)
    {
        config.OversampleH = 1;
    }
    for (const char* path : {"/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", "/usr/share/fonts/TTF/DejaVuSans.ttf"})
    {
        if (FILE* const file = std::fopen(path, "rb"))
        {
            std::fclose(file);
            io.Fonts->AddFontFromFileTTF(path, FontSize * ratio, &config, Letters);
            break;
        }
    }
    if (io.Fonts->Fonts.empty())
    {
        config.SizePixels = FontSize * ratio;
        io.Fonts->AddFontDefault(&config);
    }
    io.FontGlobalScale = 1.0f / ratio;
}

std::size_t IndexOf(Button button)
{
    return button == Button::Left ? 0 : button == Button::Right ? 1 : 2;
}

} // namespace

Gui::Gui(Window& window) : m_window(window)
{
    IMGUI_CHECKVERSION();
    ImGui::CreateContext();
    ImGuiIO& io = ImGui::GetIO();
    // Where panels stand is kept with the other settings of the program, or not at all.
    io.IniFilename = nullptr;
    io.LogFilename = nullptr;
    // A window in which nobody does anything draws nothing.
    io.ConfigInputTextCursorBlink = false;
    for (const auto& key : kKeys)
    {
        io.KeyMap[key.gui] = key.key;
    }
    io.ClipboardUserData = &m_window;
    io.SetClipboardTextFn = [](void* window, const char* text) { static_cast<Window*>(window)->SetClipboard(text); };
    io.GetClipboardTextFn = [](void* window) -> const char*
    {
        static std::string text;
        text = static_cast<Window*>(window)->GetClipboard();
        return text.c_str();
    };
    ImGui::StyleColorsLight();
    ImGuiStyle& style = ImGui::GetStyle();
    style.WindowRounding = 4.0f;
    style.FrameRounding = 3.0f;
    style.FrameBorderSize = 1.0f;
    style.ItemSpacing = ImVec2(8.0f, 5.0f);
    style.Colors[ImGuiCol_WindowBg] = ImVec4(0.955f, 0.957f, 0.965f, 1.0f);
    style.Colors[ImGuiCol_PopupBg] = ImVec4(0.985f, 0.986f, 0.99f, 1.0f);
    style.Colors[ImGuiCol_TitleBgActive] = ImVec4(0.86f, 0.88f, 0.91f, 1.0f);
    style.Colors[ImGuiCol_Border] = ImVec4(0.72f, 0.74f, 0.78f, 1.0f);
    style.Colors[ImGuiCol_HeaderHovered] = ImVec4(0.80f, 0.86f, 0.94f, 1.0f);
    style.Colors[ImGuiCol_HeaderActive] = ImVec4(0.72f, 0.81f, 0.93f, 1.0f);
    style.Colors[ImGuiCol_Header] = ImVec4(0.88f, 0.90f, 0.93f, 1.0f);
    style.Colors[ImGuiCol_Button] = ImVec4(0.88f, 0.90f, 0.93f, 1.0f);
    style.Colors[ImGuiCol_TextDisabled] = ImVec4(0.45f, 0.47f, 0.50f, 1.0f);
    ImGui_ImplOpenGL2_Init();
}

Gui::~Gui()
{
    ImGui_ImplOpenGL2_Shutdown();
    ImGui::DestroyContext();
}

void Gui::Feed(const InputEvent& event)
{
    ImGuiIO& io = ImGui::GetIO();
    switch (event.kind)
    {
    case InputEvent::Kind::PointerMoved:
        io.MousePos = ImVec2(static_cast<float>(event.x), static_cast<float>(event.y));
        break;
    case InputEvent::Kind::ButtonDown:
    case InputEvent::Kind::ButtonUp:
        io.MousePos = ImVec2(static_cast<float>(event.x), static_cast<float>(event.y));
        io.MouseDown[IndexOf(event.button)] = event.kind == InputEvent::Kind::ButtonDown;
        break;
    case InputEvent::Kind::Scrolled:
        io.MouseWheel += static_cast<float>(event.dy);
        io.MouseWheelH += static_cast<float>(event.dx);
        break;
    case InputEvent::Kind::KeyDown:
    case InputEvent::Kind::KeyUp:
        if (event.key > KeyNone && event.key < KeyCount)
        {
            io.KeysDown[event.key] = event.kind == InputEvent::Kind::KeyDown;
        }
        io.KeyCtrl = (event.modifiers & ModifierControl) != 0;
        io.KeyShift = (event.modifiers & ModifierShift) != 0;
        io.KeyAlt = (event.modifiers & ModifierAlt) != 0;
        break;
    case InputEvent::Kind::Typed: io.AddInputCharacter(event.codepoint); break;
    case InputEvent::Kind::Dropped:
    case InputEvent::Kind::Refresh:
    case InputEvent::Kind::CloseAsked: break;
    }
}

bool Gui::WantsPointer() const
{
    return ImGui::GetIO().WantCaptureMouse;
}

bool Gui::WantsKeys() const
{
    return ImGui::GetIO().WantTextInput;
}

void Gui::Begin(double seconds)
{
    ImGuiIO& io = ImGui::GetIO();
    int width = 0;
    int height = 0;
    m_window.GetSize(width, height);
    const float ratio = m_window.GetPixelRatio();
    if (!m_hasObjects || m_ratio != ratio)
    {
        m_ratio = ratio;
        m_hasObjects = true;
        MakeFont(ratio);
        ImGui_ImplOpenGL2_DestroyDeviceObjects();
    }
    io.DisplaySize = ImVec2(static_cast<float>(width), static_cast<float>(height));
    io.DisplayFramebufferScale = ImVec2(ratio, ratio);
    io.DeltaTime = static_cast<float>(std::max(seconds, 1e-4));
    ImGui_ImplOpenGL2_NewFrame();
    ImGui::NewFrame();
}

void Gui::Draw()
{
    ImGui::Render();
    // The library draws without shaders, and what it sets is not to meet the engine.
    const Host::GLStateGuard guard;
    glUseProgram(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, 0);
    glActiveTexture(GL_TEXTURE0);
    ImGui_ImplOpenGL2_RenderDrawData(ImGui::GetDrawData());
}

bool Gui::CloseMenus()
{
    if (!ImGui::IsPopupOpen("", ImGuiPopupFlags_AnyPopupId | ImGuiPopupFlags_AnyPopupLevel))
    {
        return false;
    }
    // With no panel in focus none of them stays.
    ImGui::SetWindowFocus(nullptr);
    return true;
}

void Gui::LeaveOut()
{
    ImGui::EndFrame();
}

void Gui::Suspend()
{
    ImGui_ImplOpenGL2_DestroyDeviceObjects();
    m_hasObjects = false;
}

bool Gui::IsAnimated() const
{
    return ImGui::IsAnyMouseDown();
}

} // namespace OV::ViewerApp
