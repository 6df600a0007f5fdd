#include "apps/viewer/Panels.h"
#include "apps/viewer/Viewer.h"
#include "orvane_host/import/ModelImporter.h"

#include <imgui.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>

namespace OV::ViewerApp
{

namespace
{

namespace fs = std::filesystem;

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
    std::string ending = dot == std::string::npos ? std::string() : name.substr(dot + 1);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return endings.count(ending) != 0;
}

void PlaceInMiddle(float width, float height)
{
    const ImVec2 size = ImGui::GetIO().DisplaySize;
    ImGui::SetNextWindowPos({size.x / 2.0f, size.y / 2.0f}, ImGuiCond_Always, {0.5f, 0.5f});
    ImGui::SetNextWindowSize({std::min(width, size.x), std::min(height, size.y)});
}

} // namespace

void Panels::AskForFile(bool beside)
{
    m_isFileOpen = true;
    m_isFileBeside = beside;
    std::error_code ignored;
    const std::string path = m_viewer.GetDesk().GetPath();
    m_folder = path.empty() ? fs::current_path(ignored).string() : fs::path(path).parent_path().string();
    ListFolder();
}

void Panels::ListFolder()
{
    m_entries.clear();
    m_fileTrouble.clear();
    std::error_code trouble;
    for (fs::directory_iterator entry(m_folder, trouble), end; !trouble && entry != end; entry.increment(trouble))
    {
        std::error_code ignored;
        const std::string name = entry->path().filename().string();
        const bool isFolder = entry->is_directory(ignored);
        if (name[0] != '.' && (isFolder || IsModel(name)))
        {
            m_entries.push_back({name, isFolder});
        }
    }
    if (trouble)
    {
        m_fileTrouble = "This folder can't be read.";
    }
    std::sort(m_entries.begin(), m_entries.end(), [](const Entry& left, const Entry& right)
              { return left.isFolder != right.isFolder ? left.isFolder : left.name < right.name; });
}

void Panels::DrawFilePanel()
{
    if (!m_isFileOpen)
    {
        return;
    }
    PlaceInMiddle(560.0f, 460.0f);
    std::string wanted;
    std::string folder;
    if (ImGui::Begin(m_isFileBeside ? "Open a model beside what is there###Open" : "Open a model###Open", &m_isFileOpen, ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoCollapse))
    {
        ImGui::TextWrapped("%s", m_folder.c_str());
        if (!m_fileTrouble.empty())
        {
            ImGui::TextColored({0.75f, 0.1f, 0.05f, 1.0f}, "%s", m_fileTrouble.c_str());
        }
        ImGui::BeginChild("files", {0.0f, -ImGui::GetFrameHeightWithSpacing()}, true);
        if (ImGui::Selectable("..  the folder above"))
        {
            folder = fs::path(m_folder).parent_path().string();
        }
        for (const Entry& entry : m_entries)
        {
            const std::string path = (fs::path(m_folder) / entry.name).string();
            if (ImGui::Selectable((entry.isFolder ? entry.name + "/" : entry.name).c_str()))
            {
                (entry.isFolder ? folder : wanted) = path;
            }
        }
        ImGui::EndChild();
        if (ImGui::Button("Cancel"))
        {
            m_isFileOpen = false;
        }
        ImGui::SameLine();
        ImGui::TextDisabled("Files can also be dropped on the window; with Shift beside what is there.");
    }
    ImGui::End();
    if (!folder.empty())
    {
        m_folder = folder;
        ListFolder();
    }
    if (!wanted.empty())
    {
        m_isFileOpen = false;
        m_viewer.Open(wanted, m_isFileBeside ? Desk::Opening::Beside : Desk::Opening::InPlace);
    }
}

void Panels::AskForPicture()
{
    m_isPictureOpen = m_viewer.GetDesk().GetModel() != nullptr;
}

void Panels::DrawPicturePanel()
{
    if (!m_isPictureOpen)
    {
        return;
    }
    PlaceInMiddle(420.0f, 140.0f);
    if (ImGui::Begin("Save a picture", &m_isPictureOpen, ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoCollapse))
    {
        ImGui::InputText("PNG file", m_pictureName, sizeof(m_pictureName));
        ImGui::InputInt2("Pixels", m_pictureSize);
        if (ImGui::Button("Save"))
        {
            m_isPictureOpen = false;
            m_viewer.TakePicture(m_pictureName, m_pictureSize[0], m_pictureSize[1]);
        }
        ImGui::SameLine();
        if (ImGui::Button("As large as here"))
        {
            m_pictureSize[0] = m_viewer.GetDesk().GetWidth();
            m_pictureSize[1] = m_viewer.GetDesk().GetHeight();
        }
    }
    ImGui::End();
}

} // namespace OV::ViewerApp
