#include "apps/viewer/FilePanel.h"

#include "apps/viewer/Panels.h"
#include "orvane_host/import/ModelImporter.h"

#include <imgui.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <set>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

namespace fs = std::filesystem;

// In points.
constexpr float PanelWidth = 640.0f;
constexpr float PanelHeight = 480.0f;
constexpr float SizeWidth = 80.0f;
constexpr float DateWidth = 130.0f;

constexpr const char* NoSuchFile = "There is no such file.";

std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

/// Whether the ending of a file is one of a format that can be read.
bool IsModel(const std::string& name)
{
    static const std::set<std::string> endings = []
    {
        std::set<std::string> found;
        for (const Host::ImportFormat& format : Host::ModelImporter::ListFormats())
        {
            found.insert(format.extensions.begin(), format.extensions.end());
        }
        return found;
    }();
    const std::size_t dot = name.find_last_of('.');
    return dot != std::string::npos && endings.count(Lower(name.substr(dot + 1))) != 0;
}

std::string SizeText(long long bytes)
{
    static constexpr const char* units[] = {"B", "kB", "MB", "GB"};
    auto size = static_cast<double>(bytes);
    std::size_t unit = 0;
    for (; size >= 999.5 && unit + 1 < std::size(units); ++unit)
    {
        size /= 1000.0;
    }
    char text[32];
    std::snprintf(text, sizeof(text), size < 9.95 && unit > 0 ? "%.1f %s" : "%.0f %s", size, units[unit]);
    return text;
}

std::string DateText(std::time_t time)
{
    std::tm local{};
    char text[32] = "";
    if (::localtime_r(&time, &local))
    {
        std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M", &local);
    }
    return text;
}

std::string Home()
{
    const char* const home = std::getenv("HOME");
    return home && home[0] == '/' ? home : "/";
}

bool IsPressed(ImGuiKey key)
{
    return ImGui::IsKeyPressed(ImGui::GetKeyIndex(key));
}

} // namespace

void FilePanel::Ask(const std::string& folder, bool beside)
{
    m_isOpen = true;
    m_isNew = true;
    m_isBeside = beside;
    Enter(folder);
}

void FilePanel::Enter(const std::string& folder)
{
    // A typed path may end in a slash, which would be all that going up takes off.
    const fs::path path = fs::path(folder).lexically_normal();
    m_folder = (path.has_filename() ? path : path.parent_path()).string();
    m_typed[0] = '\0';
    m_choice = 0;
    m_isChoiceMoved = true;
    m_entries.clear();
    m_trouble.clear();
    std::error_code trouble;
    for (fs::directory_iterator entry(m_folder, trouble), end; !trouble && entry != end; entry.increment(trouble))
    {
        const std::string name = entry->path().filename().string();
        struct stat status{};
        if (name[0] == '.' || ::stat(entry->path().c_str(), &status) != 0)
        {
            continue;
        }
        const bool isFolder = S_ISDIR(status.st_mode);
        if (isFolder || IsModel(name))
        {
            m_entries.push_back({name, isFolder, isFolder ? std::string() : SizeText(status.st_size),
                                 DateText(status.st_mtime)});
        }
    }
    if (trouble)
    {
        m_trouble = "This folder can't be read.";
    }
    std::sort(m_entries.begin(), m_entries.end(), [](const Entry& left, const Entry& right)
              {
                  return left.isFolder != right.isFolder ? left.isFolder : Lower(left.name) < Lower(right.name);
              });
}

std::vector<std::size_t> FilePanel::Shown() const
{
    const std::string part = Lower(m_typed);
    std::vector<std::size_t> shown;
    for (std::size_t i = 0; i < m_entries.size(); ++i)
    {
        if (part.find('/') != std::string::npos || Lower(m_entries[i].name).find(part) != std::string::npos)
        {
            shown.push_back(i);
        }
    }
    return shown;
}

std::string FilePanel::Draw()
{
    if (!m_isOpen)
    {
        return {};
    }
    PlaceInMiddle(PanelWidth, PanelHeight);
    m_wanted.clear();
    if (ImGui::Begin(m_isBeside ? "Open a model beside what is there###Open" : "Open a model###Open", &m_isOpen,
                     ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoCollapse))
    {
        DrawPlaces();
        // The keys go to what is typed after a click on a button or a file too, so that Enter opens it.
        const bool isIdle = ImGui::IsWindowFocused(ImGuiFocusedFlags_ChildWindows) && !ImGui::IsAnyItemActive();
        if (std::exchange(m_isNew, false) || isIdle)
        {
            ImGui::SetKeyboardFocusHere();
        }
        ImGui::PushItemWidth(-1.0f);
        const bool isEntered = ImGui::InputTextWithHint("##typed", "Part of a name, or a path", m_typed, sizeof(m_typed),
                                                        ImGuiInputTextFlags_EnterReturnsTrue);
        ImGui::PopItemWidth();
        if (ImGui::IsItemEdited() && m_trouble == NoSuchFile)
        {
            m_trouble.clear();
        }
        const std::vector<std::size_t> shown = Shown();
        m_choice = std::min(m_choice, shown.empty() ? 0 : shown.size() - 1);
        DrawEntries(shown);
        DrawButtons();
        if (isEntered)
        {
            TakeTyped(shown);
        }
    }
    ImGui::End();
    if (!m_wanted.empty())
    {
        m_isOpen = false;
    }
    return m_wanted;
}

void FilePanel::DrawPlaces()
{
    const fs::path folder(m_folder);
    if (ImGui::Button("Home"))
    {
        Enter(Home());
    }
    ImGui::SameLine();
    if (ImGui::Button("Up"))
    {
        Enter(folder.parent_path().string());
    }
    ImGui::SameLine();
    ImGui::AlignTextToFramePadding();
    ImGui::TextUnformatted(m_folder.c_str());
    if (!m_trouble.empty())
    {
        ImGui::TextColored({0.75f, 0.1f, 0.05f, 1.0f}, "%s", m_trouble.c_str());
    }
}

void FilePanel::DrawEntries(const std::vector<std::size_t>& shown)
{
    ImGui::BeginChild("files", {0.0f, -ImGui::GetFrameHeightWithSpacing()}, true);
    if (IsPressed(ImGuiKey_DownArrow) && m_choice + 1 < shown.size())
    {
        ++m_choice;
        m_isChoiceMoved = true;
    }
    if (IsPressed(ImGuiKey_UpArrow) && m_choice > 0)
    {
        --m_choice;
        m_isChoiceMoved = true;
    }
    const float width = ImGui::GetContentRegionAvail().x;
    const Entry* taken = nullptr;
    for (std::size_t i = 0; i < shown.size(); ++i)
    {
        const Entry& entry = m_entries[shown[i]];
        ImGui::PushID(static_cast<int>(i));
        if (ImGui::Selectable((entry.isFolder ? entry.name + "/" : entry.name).c_str(), i == m_choice,
                              ImGuiSelectableFlags_AllowDoubleClick))
        {
            m_choice = i;
            taken = ImGui::IsMouseDoubleClicked(0) ? &entry : taken;
        }
        if (i == m_choice && std::exchange(m_isChoiceMoved, false))
        {
            ImGui::SetScrollHereY();
        }
        if (width > 2.0f * (SizeWidth + DateWidth))
        {
            ImGui::SameLine(width - SizeWidth - DateWidth);
            ImGui::TextDisabled("%s", entry.size.c_str());
            ImGui::SameLine(width - DateWidth);
            ImGui::TextDisabled("%s", entry.date.c_str());
        }
        ImGui::PopID();
    }
    if (shown.empty() && m_trouble.empty())
    {
        const bool isPath = std::strchr(m_typed, '/') != nullptr;
        ImGui::TextDisabled(m_typed[0] == '\0' ? "There is no model here."
                                : isPath       ? "Enter goes to that path."
                                               : "No model here has that in its name.");
    }
    ImGui::EndChild();
    if (taken)
    {
        // A copy: entering a folder forgets what was in the last one.
        TakeEntry(Entry(*taken));
    }
}

void FilePanel::DrawButtons()
{
    const std::vector<std::size_t> shown = Shown();
    if (ImGui::Button("Open"))
    {
        TakeTyped(shown);
    }
    ImGui::SameLine();
    if (ImGui::Button("Cancel"))
    {
        m_isOpen = false;
    }
    ImGui::SameLine();
    ImGui::TextDisabled("Files can also be dropped on the window; with Shift beside what is there.");
}

void FilePanel::TakeTyped(const std::vector<std::size_t>& shown)
{
    std::string typed = m_typed;
    if (typed.compare(0, 2, "~/") == 0 || typed == "~")
    {
        typed = Home() + typed.substr(1);
    }
    std::error_code ignored;
    const fs::path path = fs::path(m_folder) / typed;
    m_isNew = true;
    if (!typed.empty() && fs::is_directory(path, ignored))
    {
        Enter(path.string());
    }
    else if (!typed.empty() && fs::exists(path, ignored))
    {
        m_wanted = path.string();
    }
    else if (m_choice < shown.size() && typed.find('/') == std::string::npos)
    {
        TakeEntry(Entry(m_entries[shown[m_choice]]));
    }
    else
    {
        m_trouble = NoSuchFile;
    }
}

void FilePanel::TakeEntry(const Entry& entry)
{
    const std::string path = (fs::path(m_folder) / entry.name).string();
    if (entry.isFolder)
    {
        Enter(path);
        m_isNew = true;
    }
    else
    {
        m_wanted = path;
    }
}

} // namespace OV::ViewerApp
