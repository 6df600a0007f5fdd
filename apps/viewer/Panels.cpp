#include "apps/viewer/Panels.h"

#include "apps/viewer/Actions.h"
#include "apps/viewer/SettingsPanel.h"
#include "apps/viewer/Viewer.h"

#include <imgui.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace OV::ViewerApp
{

namespace
{

// In points.
constexpr float LeftWidth = 250.0f;
constexpr float RightWidth = 290.0f;
constexpr float StatusHeight = 26.0f;
/// Below so much room for the picture the sides give way.
constexpr float LeastPicture = 120.0f;

constexpr ImGuiWindowFlags FixedWindow = ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoResize
    | ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoBringToFrontOnFocus;

/// A key as a person reads it.
std::string KeyText(const char* key)
{
    std::string text = key;
    bool isFirst = true;
    for (char& letter : text)
    {
        if (isFirst)
        {
            letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
        }
        isFirst = letter == '+' || letter == '-';
    }
    return text;
}

void BeginFixed(const char* name, float x, float y, float width, float height, ImGuiWindowFlags flags = 0)
{
    ImGui::SetNextWindowPos({x, y});
    ImGui::SetNextWindowSize({width, height});
    ImGui::Begin(name, nullptr, FixedWindow | flags);
}

} // namespace

void Panels::Draw()
{
    const ImVec2 size = ImGui::GetIO().DisplaySize;
    // A dot is no menu: in a window too small for panels the picture has all of it.
    const bool hasBars = size.y > 4.0f * StatusHeight;
    float top = 0.0f;
    if (hasBars)
    {
        DrawMenu();
        top = ImGui::GetFrameHeight();
    }
    const float bottom = hasBars ? StatusHeight : 0.0f;
    const bool hasModel = m_viewer.GetDesk().GetModel() != nullptr;
    const bool hasSides = hasBars && m_hasSides && hasModel && size.x > LeftWidth + RightWidth + LeastPicture;
    m_picture.x = hasSides ? LeftWidth : 0.0f;
    m_picture.y = top;
    m_picture.width = size.x - (hasSides ? LeftWidth + RightWidth : 0.0f);
    m_picture.height = size.y - top - bottom;
    if (hasSides)
    {
        ImGui::PushStyleVar(ImGuiStyleVar_WindowRounding, 0.0f);
        BeginFixed("Model", 0.0f, top, LeftWidth, m_picture.height, ImGuiWindowFlags_NoTitleBar);
        DrawModelSide();
        ImGui::End();
        BeginFixed("Settings", size.x - RightWidth, top, RightWidth, m_picture.height, ImGuiWindowFlags_NoTitleBar);
        DrawSettingsSide();
        ImGui::End();
        ImGui::PopStyleVar();
    }
    if (hasBars)
    {
        DrawStatus(size.x, size.y);
    }
    if (!hasModel && !m_viewer.GetDesk().IsOpening() && !m_isFileOpen && hasBars)
    {
        DrawWelcome();
    }
    DrawOpening();
    DrawHelp();
    DrawFilePanel();
    DrawPicturePanel();
}

void Panels::DrawMenu()
{
    if (!ImGui::BeginMainMenuBar())
    {
        return;
    }
    const std::vector<Action>& actions = ListActions();
    for (std::size_t i = 0; i < actions.size();)
    {
        const char* const group = actions[i].group;
        const bool isOpen = ImGui::BeginMenu(group);
        for (; i < actions.size() && std::strcmp(actions[i].group, group) == 0; ++i)
        {
            if (isOpen && ImGui::MenuItem(actions[i].text, KeyText(actions[i].key).c_str()))
            {
                actions[i].run(m_viewer);
            }
        }
        if (isOpen && std::strcmp(group, "File") == 0 && !m_viewer.GetState().recent.empty())
        {
            ImGui::Separator();
            const std::vector<std::string> recent = m_viewer.GetState().recent;
            for (const std::string& path : recent)
            {
                if (ImGui::MenuItem(path.c_str()))
                {
                    m_viewer.Open(path);
                }
            }
        }
        if (isOpen)
        {
            ImGui::EndMenu();
        }
    }
    ImGui::EndMainMenuBar();
}

void Panels::DrawStatus(float width, float height)
{
    ImGui::PushStyleVar(ImGuiStyleVar_WindowRounding, 0.0f);
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, {8.0f, 4.0f});
    ImGui::PushStyleVar(ImGuiStyleVar_WindowMinSize, {1.0f, 1.0f});
    BeginFixed("Status", 0.0f, height - StatusHeight, width, StatusHeight,
               ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoScrollbar);
    const Desk& desk = m_viewer.GetDesk();
    const Measure& measure = m_viewer.GetMeasure();
    const Desk::Message& message = desk.GetMessage();
    if (message.isTrouble)
    {
        ImGui::TextColored({0.75f, 0.1f, 0.05f, 1.0f}, "%s", message.text.c_str());
    }
    else if (measure.IsOn())
    {
        ImGui::Text("%s: %s", measure.GetKind() == Measure::Kind::Angle ? "Angle" : "Distance", measure.Text().c_str());
    }
    else
    {
        ImGui::TextUnformatted(message.text.c_str());
    }
    ImGui::End();
    ImGui::PopStyleVar(3);
}

void Panels::DrawSettingsSide()
{
    Desk& desk = m_viewer.GetDesk();
    Host::PresentationSettings settings = desk.GetSettings();
    const auto box = desk.GetModel()->GetModelBox();
    const Host::Presentation::Box none{Vector(-1.0f, -1.0f, -1.0f), Vector(1.0f, 1.0f, 1.0f)};
    if (EditSettings(settings, box.value_or(none), desk.GetModel()->GetSun()) && desk.Apply(settings) && desk.GetMessage().isTrouble)
    {
        desk.Tell("");
    }
}

void Panels::DrawHelp()
{
    if (!m_isHelpOpen)
    {
        return;
    }
    const ImVec2 size = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowPos({size.x / 2.0f, size.y / 2.0f}, ImGuiCond_Always, {0.5f, 0.5f});
    ImGui::SetNextWindowSize({std::min(660.0f, size.x), std::min(530.0f, size.y)});
    if (ImGui::Begin("Keys", &m_isHelpOpen, ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoCollapse))
    {
        static constexpr const char* pointer[][2] = {
            {"Drag", "Turn about the point under the pointer"},
            {"Shift or middle drag", "Move"},
            {"Wheel", "Come nearer to the pointer"},
            {"Click", "Select; with Shift another one too"},
            {"Double click", "Fit what is selected"},
            {"Ctrl drag", "Select all in a box"},
        };
        const auto line = [](const std::string& key, const char* text)
        {
            ImGui::TextColored({0.75f, 0.35f, 0.05f, 1.0f}, "%s", key.c_str());
            ImGui::SameLine(150.0f);
            ImGui::TextUnformatted(text);
        };
        for (const auto& entry : pointer)
        {
            line(entry[0], entry[1]);
        }
        ImGui::Separator();
        ImGui::Columns(2, "keys", false);
        const std::vector<Action>& actions = ListActions();
        for (std::size_t i = 0; i < actions.size(); ++i)
        {
            if (i == (actions.size() + 1) / 2)
            {
                ImGui::NextColumn();
            }
            ImGui::TextColored({0.75f, 0.35f, 0.05f, 1.0f}, "%s", KeyText(actions[i].key).c_str());
            ImGui::SameLine(96.0f);
            ImGui::TextUnformatted(actions[i].text);
        }
        ImGui::Columns(1);
    }
    ImGui::End();
}

void Panels::DrawWelcome()
{
    const ImVec2 size = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowPos({size.x / 2.0f, size.y / 2.0f}, ImGuiCond_Always, {0.5f, 0.5f});
    ImGui::Begin("Welcome", nullptr, FixedWindow | ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_AlwaysAutoResize);
    ImGui::TextUnformatted("Drop a model here, or press Ctrl+O to open one.");
    ImGui::TextDisabled("Press ? for the keys.");
    const std::vector<std::string> recent = m_viewer.GetState().recent;
    if (!recent.empty())
    {
        ImGui::Separator();
        for (const std::string& path : recent)
        {
            if (ImGui::Selectable(path.c_str()))
            {
                m_viewer.Open(path);
            }
        }
    }
    ImGui::End();
}

void Panels::DrawOpening()
{
    Desk& desk = m_viewer.GetDesk();
    if (!desk.IsOpening())
    {
        return;
    }
    ImGui::SetNextWindowPos({m_picture.x + m_picture.width / 2.0f, m_picture.y + m_picture.height / 2.0f},
                            ImGuiCond_Always, {0.5f, 0.5f});
    ImGui::Begin("Opening", nullptr, FixedWindow | ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_AlwaysAutoResize);
    const std::string& path = desk.GetOpeningPath();
    ImGui::Text("Opening %s", path.substr(path.find_last_of('/') + 1).c_str());
    ImGui::ProgressBar(desk.GetPercent() / 100.0f, {280.0f, 0.0f});
    ImGui::SameLine();
    if (ImGui::Button("Cancel"))
    {
        desk.CancelOpening();
    }
    ImGui::End();
}

bool Panels::CloseTop()
{
    const bool hadOne = m_isHelpOpen || m_isFileOpen || m_isPictureOpen;
    m_isHelpOpen = m_isFileOpen = m_isPictureOpen = false;
    return hadOne;
}

} // namespace OV::ViewerApp
