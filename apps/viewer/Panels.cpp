#include "apps/viewer/Panels.h"

#include "apps/viewer/Actions.h"
#include "apps/viewer/SettingsPanel.h"
#include "apps/viewer/Viewer.h"

#include <imgui.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace OV::ViewerApp
{

namespace
{

namespace fs = std::filesystem;

// In points.
constexpr float LeftWidth = 250.0f;
constexpr float RightWidth = 290.0f;
constexpr float StatusHeight = 26.0f;
/// Below so much room for the picture the sides give way, that of the model first.
constexpr float LeastPicture = 360.0f;
/// With two columns.
constexpr float HelpWidth = 960.0f;

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

std::string FileNameOf(const std::string& path)
{
    return path.substr(path.find_last_of('/') + 1);
}

/// The folder of a file, from the person's own one where it is in there.
std::string FolderOf(const std::string& path)
{
    const std::string folder = path.substr(0, path.find_last_of('/'));
    const char* const home = std::getenv("HOME");
    const std::string own = home ? home : "";
    const bool isOwn = own.size() > 1 && folder.compare(0, own.size(), own) == 0
        && (folder.size() == own.size() || folder[own.size()] == '/');
    return isOwn ? "~" + folder.substr(own.size()) : folder;
}

} // namespace

void PlaceInMiddle(float width, float height)
{
    const ImVec2 size = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowPos({size.x / 2.0f, size.y / 2.0f}, ImGuiCond_Always, {0.5f, 0.5f});
    ImGui::SetNextWindowSize({std::min(width, size.x), std::min(height, size.y)});
}

void TellByPointer(const std::string& text)
{
    ImGui::BeginTooltip();
    ImGui::PushTextWrapPos(0.9f * ImGui::GetIO().DisplaySize.x);
    ImGui::TextUnformatted(text.c_str());
    ImGui::PopTextWrapPos();
    ImGui::EndTooltip();
}

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
    const bool hasSides = hasBars && m_hasSides && hasModel;
    const bool hasRight = hasSides && size.x >= RightWidth + LeastPicture;
    const bool hasLeft = hasSides && size.x >= LeftWidth + RightWidth + LeastPicture;
    m_picture.x = hasLeft ? LeftWidth : 0.0f;
    m_picture.y = top;
    m_picture.width = size.x - m_picture.x - (hasRight ? RightWidth : 0.0f);
    m_picture.height = size.y - top - bottom;
    ImGui::PushStyleVar(ImGuiStyleVar_WindowRounding, 0.0f);
    if (hasLeft)
    {
        BeginFixed("Model", 0.0f, top, LeftWidth, m_picture.height, ImGuiWindowFlags_NoTitleBar);
        DrawModelSide();
        ImGui::End();
    }
    if (hasRight)
    {
        BeginFixed("Settings", size.x - RightWidth, top, RightWidth, m_picture.height, ImGuiWindowFlags_NoTitleBar);
        DrawSettingsSide();
        ImGui::End();
    }
    ImGui::PopStyleVar();
    if (hasBars)
    {
        DrawStatus(size.x, size.y);
    }
    if (!hasModel && !m_viewer.GetDesk().IsOpening() && !m_file.IsOpen() && hasBars)
    {
        DrawWelcome();
    }
    DrawOpening();
    DrawHelp();
    const std::string wanted = m_file.Draw();
    m_viewer.Open(wanted, m_file.IsBeside() ? Desk::Opening::Beside : Desk::Opening::InPlace);
    DrawPicturePanel();
}

void Panels::AskForFile(bool beside)
{
    std::error_code ignored;
    const std::vector<std::string>& recent = m_viewer.GetState().recent;
    const std::string path = m_viewer.GetDesk().GetPath();
    const std::string last = !path.empty() || recent.empty() ? path : recent.front();
    const fs::path folder = fs::path(last).parent_path();
    m_file.Ask(fs::is_directory(folder, ignored) ? folder.string() : fs::current_path(ignored).string(), beside);
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
            if (isOpen && ImGui::MenuItem(actions[i].text, KeyText(actions[i].key).c_str(), false, !LackOf(actions[i], m_viewer)))
            {
                actions[i].run(m_viewer);
            }
        }
        if (isOpen && std::strcmp(group, "File") == 0)
        {
            DrawRecent();
        }
        if (isOpen)
        {
            ImGui::EndMenu();
        }
    }
    ImGui::EndMainMenuBar();
}

void Panels::DrawRecent()
{
    const std::vector<std::string> recent = m_viewer.GetState().recent;
    if (!recent.empty())
    {
        ImGui::Separator();
    }
    for (const std::string& path : recent)
    {
        ImGui::PushID(path.c_str());
        if (ImGui::MenuItem(FileNameOf(path).c_str(), FolderOf(path).c_str()))
        {
            m_viewer.Open(path);
        }
        ImGui::PopID();
    }
}

void Panels::DrawStatus(float width, float height)
{
    ImGui::PushStyleVar(ImGuiStyleVar_WindowRounding, 0.0f);
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, {8.0f, 4.0f});
    ImGui::PushStyleVar(ImGuiStyleVar_WindowMinSize, {1.0f, 1.0f});
    BeginFixed("Status", 0.0f, height - StatusHeight, width, StatusHeight,
               ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoScrollbar);
    const Desk::Message& message = m_viewer.GetDesk().GetMessage();
    if (message.isTrouble)
    {
        ImGui::TextColored({0.75f, 0.1f, 0.05f, 1.0f}, "%s", message.text.c_str());
    }
    else
    {
        ImGui::TextUnformatted(message.text.c_str());
    }
    // What helps stands at the end, which a small window has no room for.
    if (ImGui::GetItemRectSize().x > width - 16.0f && ImGui::IsItemHovered())
    {
        TellByPointer(message.text);
    }
    static constexpr const char* hint = "? lists the keys";
    const float begin = width - ImGui::CalcTextSize(hint).x - 8.0f;
    ImGui::SameLine();
    if (ImGui::GetCursorPosX() < begin)
    {
        ImGui::SetCursorPosX(begin);
        ImGui::TextDisabled("%s", hint);
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
    const bool hasPlace = desk.GetModel()->GetReport().place.has_value();
    if (EditSettings(settings, box.value_or(none), desk.GetModel()->GetSun(), hasPlace) && desk.Apply(settings)
        && desk.GetMessage().isTrouble)
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
    // A line without a text is a heading.
    struct Line
    {
        std::string key;
        const char* text;
    };
    static const std::vector<Line> lines = []
    {
        std::vector<Line> all = {
            {"Pointer", nullptr},
            {"Drag", "Turn about what is under the pointer"},
            {"Shift drag", "Move; so do the middle and the right button"},
            {"Wheel", "Come nearer to the pointer; with Shift, move"},
            {"Two fingers", "Up and down as a wheel; to the side, move"},
            {"Click", "Select; with Shift another one too"},
            {"Double click", "Fit what is selected"},
            {"Ctrl drag", "Select all in a box"},
            {"Drag an arrow", "Move the plane that cuts"},
        };
        const char* group = "";
        for (const Action& action : ListActions())
        {
            if (std::strcmp(group, action.group) != 0)
            {
                if (std::strcmp(group, "Walk") == 0)
                {
                    all.push_back({"H on a door", "Hide it, and it lets you through"});
                }
                group = action.group;
                all.push_back({group, nullptr});
            }
            all.push_back({KeyText(action.key), action.text});
        }
        return all;
    }();
    // A second column that is cut off helps nobody.
    const bool hasTwo = ImGui::GetIO().DisplaySize.x >= HelpWidth;
    const std::size_t half = hasTwo ? (lines.size() + 1) / 2 : lines.size();
    const float lineHeight = ImGui::GetTextLineHeightWithSpacing();
    PlaceInMiddle(hasTwo ? HelpWidth : HelpWidth / 2.0f + 20.0f, static_cast<float>(half + 3) * lineHeight);
    if (ImGui::Begin("Keys", &m_isHelpOpen, ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoCollapse))
    {
        ImGui::Columns(hasTwo ? 2 : 1, "keys", false);
        for (std::size_t i = 0; i < lines.size(); ++i)
        {
            if (i == half)
            {
                ImGui::NextColumn();
            }
            if (!lines[i].text)
            {
                ImGui::TextDisabled("%s", lines[i].key.c_str());
                continue;
            }
            ImGui::TextColored({0.75f, 0.35f, 0.05f, 1.0f}, "%s", lines[i].key.c_str());
            ImGui::SameLine(i < half ? 158.0f : 120.0f);
            ImGui::TextUnformatted(lines[i].text);
        }
        ImGui::Columns(1);
    }
    ImGui::End();
}

void Panels::DrawWelcome()
{
    const ImVec2 size = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowPos({size.x / 2.0f, size.y / 2.0f}, ImGuiCond_Always, {0.5f, 0.5f});
    ImGui::PushStyleVar(ImGuiStyleVar_WindowPadding, {28.0f, 24.0f});
    ImGui::Begin("Welcome", nullptr, FixedWindow | ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_AlwaysAutoResize);
    ImGui::PopStyleVar();
    ImGui::AlignTextToFramePadding();
    ImGui::TextUnformatted("Drop a model here, or");
    ImGui::SameLine();
    if (ImGui::Button("Open a model..."))
    {
        AskForFile();
    }
    ImGui::TextDisabled("Ctrl+O does so too, and ? lists all keys.");
    const std::vector<std::string> recent = m_viewer.GetState().recent;
    if (!recent.empty())
    {
        ImGui::Dummy({0.0f, 6.0f});
        ImGui::TextDisabled("Opened lately");
    }
    for (const std::string& path : recent)
    {
        ImGui::PushID(path.c_str());
        if (ImGui::Selectable(FileNameOf(path).c_str(), false, 0, {160.0f, 0.0f}))
        {
            m_viewer.Open(path);
        }
        ImGui::SameLine(0.0f, 16.0f);
        ImGui::TextDisabled("%s", FolderOf(path).c_str());
        ImGui::PopID();
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
    // At the foot of the picture, where it is in nobody's way.
    ImGui::SetNextWindowPos({m_picture.x + m_picture.width / 2.0f, m_picture.y + m_picture.height - 12.0f},
                            ImGuiCond_Always, {0.5f, 1.0f});
    ImGui::Begin("Opening", nullptr, FixedWindow | ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_AlwaysAutoResize);
    ImGui::Text("Opening %s", FileNameOf(desk.GetOpeningPath()).c_str());
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
    const bool hadOne = m_isHelpOpen || m_file.IsOpen() || m_isPictureOpen;
    m_isHelpOpen = m_isPictureOpen = false;
    m_file.Close();
    return hadOne;
}

} // namespace OV::ViewerApp
