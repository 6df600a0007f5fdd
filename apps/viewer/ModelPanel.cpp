#include "apps/viewer/Panels.h"
#include "apps/viewer/Viewer.h"

#include <imgui.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace OV::ViewerApp
{

namespace
{

/// Levels that a person sees at a glance; those below are indented no further.
constexpr std::size_t MostIndents = 12;

bool Contains(const std::string& text, const std::string& part)
{
    const auto same = [](char a, char b)
    { return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b)); };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

} // namespace

void Panels::DrawModelSide()
{
    const float height = ImGui::GetContentRegionAvail().y;
    DrawTree();
    ImGui::SetCursorPosY(std::max(ImGui::GetCursorPosY(), height * 0.56f));
    DrawSelection();
    DrawSavedViews();
}

void Panels::ListNodes()
{
    const Desk& desk = m_viewer.GetDesk();
    if (m_listed != desk.GetRevision())
    {
        m_listed = desk.GetRevision();
        m_nodes = m_viewer.GetDesk().GetModel()->ListNodes();
    }
}

void Panels::DrawTree()
{
    ListNodes();
    Desk& desk = m_viewer.GetDesk();
    ImGui::PushItemWidth(-1.0f);
    ImGui::InputTextWithHint("##search", "Search the model", m_search, sizeof(m_search));
    ImGui::PopItemWidth();
    ImGui::BeginChild("tree", {0.0f, ImGui::GetContentRegionAvail().y * 0.55f}, true,
                      ImGuiWindowFlags_HorizontalScrollbar);
    std::vector<std::size_t> shown;
    for (std::size_t i = 0; i < m_nodes.size(); ++i)
    {
        if (m_search[0] == '\0' || Contains(m_nodes[i], m_search))
        {
            shown.push_back(i);
        }
    }
    // A model may have very many; only those in sight are told.
    ImGuiListClipper clipper;
    clipper.Begin(static_cast<int>(shown.size()));
    while (clipper.Step())
    {
        for (int row = clipper.DisplayStart; row < clipper.DisplayEnd; ++row)
        {
            const std::string& path = m_nodes[shown[static_cast<std::size_t>(row)]];
            const auto level = static_cast<std::size_t>(std::count(path.begin(), path.end(), '/'));
            ImGui::PushID(row);
            bool isShown = !desk.IsHidden(path);
            if (ImGui::Checkbox("##shown", &isShown))
            {
                desk.SetHidden(path, !isShown);
            }
            ImGui::SameLine(0.0f, 6.0f + 12.0f * static_cast<float>(std::min(level, MostIndents)));
            const std::vector<std::string>& selection = desk.GetSelection();
            const bool isSelected = std::find(selection.begin(), selection.end(), path) != selection.end();
            if (ImGui::Selectable(path.substr(path.find_last_of('/') + 1).c_str(), isSelected,
                                  ImGuiSelectableFlags_AllowDoubleClick))
            {
                desk.Select({path});
                if (ImGui::IsMouseDoubleClicked(0))
                {
                    desk.FitSelection();
                }
            }
            if (ImGui::IsItemHovered())
            {
                ImGui::SetTooltip("%s", path.c_str());
            }
            ImGui::PopID();
        }
    }
    ImGui::EndChild();
}

void Panels::DrawSelection()
{
    Desk& desk = m_viewer.GetDesk();
    ImGui::Separator();
    const std::vector<std::string>& selection = desk.GetSelection();
    const auto thing = selection.empty() ? std::nullopt : desk.Describe(selection.back());
    if (!thing)
    {
        ImGui::TextDisabled("Click something to select it.");
    }
    else
    {
        ImGui::TextWrapped("%s", thing->name.c_str());
        ImGui::PushStyleColor(ImGuiCol_Text, ImGui::GetStyleColorVec4(ImGuiCol_TextDisabled));
        // A path may be longer than all else together: its beginning, and all of it under the pointer.
        ImGui::TextUnformatted(thing->path.c_str());
        ImGui::PopStyleColor();
        if (ImGui::IsItemHovered())
        {
            ImGui::SetTooltip("%s", thing->path.c_str());
        }
        ImGui::TextWrapped("Material: %s", thing->material.empty() ? "none" : thing->material.c_str());
        ImGui::TextWrapped("Size: %.4g x %.4g x %.4g", thing->size.x, thing->size.y, thing->size.z);
        ImGui::TextWrapped("%zu triangles", thing->triangles);
        if (selection.size() > 1)
        {
            ImGui::Text("and %zu more", selection.size() - 1);
        }
        if (ImGui::Button("Hide"))
        {
            desk.HideSelection();
        }
        ImGui::SameLine();
        if (ImGui::Button("Alone"))
        {
            desk.IsolateSelection();
        }
        ImGui::SameLine();
        if (ImGui::Button("Fit"))
        {
            desk.FitSelection();
        }
        ImGui::SameLine();
        if (ImGui::Button("Edit"))
        {
            desk.EditSelection();
        }
    }
    if (thing && desk.IsFile(thing->path))
    {
        ImGui::SameLine();
        if (ImGui::Button("Take away"))
        {
            desk.TakeAway(std::string(thing->path));
        }
    }
    if (desk.HasHidden() && ImGui::Button("Show all"))
    {
        desk.ShowAll();
    }
}

void Panels::DrawSavedViews()
{
    ImGui::Separator();
    ImGui::PushItemWidth(ImGui::GetContentRegionAvail().x - 60.0f);
    ImGui::InputTextWithHint("##view", "Name of a view", m_viewName, sizeof(m_viewName));
    ImGui::PopItemWidth();
    ImGui::SameLine();
    if (ImGui::Button("Keep") && m_viewName[0] != '\0')
    {
        m_viewer.SaveView(m_viewName);
        m_viewName[0] = '\0';
    }
    const std::string model = m_viewer.GetDesk().GetPath();
    const std::vector<SavedView> views = m_viewer.GetState().views;
    for (const SavedView& view : views)
    {
        if (view.model != model)
        {
            continue;
        }
        ImGui::PushID(view.name.c_str());
        if (ImGui::SmallButton("x"))
        {
            m_viewer.GetState().RemoveView(view.name, model);
        }
        ImGui::SameLine();
        if (ImGui::Selectable(view.name.c_str()))
        {
            m_viewer.RecallView(view.name);
        }
        ImGui::PopID();
    }
}

} // namespace OV::ViewerApp
