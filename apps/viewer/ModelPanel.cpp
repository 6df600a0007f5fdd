#include "apps/viewer/Panels.h"
#include "apps/viewer/Viewer.h"
#include "orvane_host/import/NodePath.h"

#include <imgui.h>

#include <algorithm>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

/// Levels that a person sees at a glance; those below are indented no further.
constexpr std::size_t MostIndents = 12;

// In points.
constexpr float Indent = 14.0f;
/// Share of the side that the tree has at least.
constexpr float LeastTree = 0.3f;

/// What opens and closes what is below a row, as wide as an indent whether it is there or not.
/// @return whether it was pressed.
bool Opener(bool isThere, bool isOpen)
{
    const float height = ImGui::GetFrameHeight();
    const ImVec2 at = ImGui::GetCursorScreenPos();
    if (!isThere)
    {
        ImGui::Dummy({Indent, height});
        return false;
    }
    const bool isPressed = ImGui::InvisibleButton("open", {Indent, height});
    const float reach = 4.0f;
    const ImVec2 middle(at.x + Indent / 2.0f - 1.0f, at.y + height / 2.0f);
    const ImU32 color = ImGui::GetColorU32(ImGui::IsItemHovered() ? ImGuiCol_ButtonActive : ImGuiCol_TextDisabled);
    ImDrawList& list = *ImGui::GetWindowDrawList();
    if (isOpen)
    {
        list.AddTriangleFilled({middle.x - reach, middle.y - reach / 2.0f}, {middle.x + reach, middle.y - reach / 2.0f},
                               {middle.x, middle.y + reach}, color);
    }
    else
    {
        list.AddTriangleFilled({middle.x - reach / 2.0f, middle.y - reach}, {middle.x + reach, middle.y},
                               {middle.x - reach / 2.0f, middle.y + reach}, color);
    }
    return isPressed;
}

} // namespace

void Panels::DrawModelSide()
{
    ReadTree();
    Desk& desk = m_viewer.GetDesk();
    ImGui::PushItemWidth(-1.0f);
    if (ImGui::InputTextWithHint("##search", "Search the model", m_search, sizeof(m_search)) && m_search[0] == '\0')
    {
        // What was found is looked for among its neighbours.
        m_revealed.clear();
    }
    ImGui::PopItemWidth();
    // What stands below the tree is as high as it was in the last frame.
    const float room = ImGui::GetContentRegionAvail().y;
    const float below = m_belowTree > 0.0f ? m_belowTree : room * 0.4f;
    ImGui::BeginChild("tree", {0.0f, std::max(room - below - ImGui::GetStyle().ItemSpacing.y, room * LeastTree)}, true,
                      ImGuiWindowFlags_HorizontalScrollbar);
    DrawTree(desk);
    ImGui::EndChild();
    const float from = ImGui::GetCursorPosY();
    DrawSelection();
    DrawSavedViews();
    const float height = ImGui::GetCursorPosY() - from;
    if (height != m_belowTree)
    {
        m_belowTree = height;
        m_viewer.Redraw();
    }
}

void Panels::ReadTree()
{
    const Desk& desk = m_viewer.GetDesk();
    if (m_listed != desk.GetRevision())
    {
        m_listed = desk.GetRevision();
        m_tree.Read(*m_viewer.GetDesk().GetModel());
        m_isThingKnown = false;
        m_revealed.clear();
    }
}

void Panels::DrawTree(Desk& desk)
{
    const std::string selected = desk.GetSelection().empty() ? std::string() : desk.GetSelection().back();
    std::optional<std::size_t> revealed;
    if (selected != m_revealed)
    {
        // What is selected in the picture comes into sight; what is selected here is there.
        m_revealed = selected;
        revealed = m_search[0] == '\0' ? m_tree.Reveal(selected) : std::nullopt;
    }
    const std::vector<std::size_t>& shown = m_tree.List(m_search);
    const float rowHeight = ImGui::GetFrameHeightWithSpacing();
    if (revealed)
    {
        const auto place = std::lower_bound(shown.begin(), shown.end(), *revealed) - shown.begin();
        const float top = static_cast<float>(place) * rowHeight;
        const float height = ImGui::GetWindowHeight();
        if (top < ImGui::GetScrollY() || top + rowHeight > ImGui::GetScrollY() + height)
        {
            ImGui::SetScrollY(std::max(top - height / 3.0f, 0.0f));
            m_viewer.Redraw();
        }
    }
    std::optional<std::size_t> toggled;
    // A model may have very many; only those in sight are told.
    ImGuiListClipper clipper;
    clipper.Begin(static_cast<int>(shown.size()), rowHeight);
    while (clipper.Step())
    {
        for (int i = clipper.DisplayStart; i < clipper.DisplayEnd; ++i)
        {
            const std::size_t row = shown[static_cast<std::size_t>(i)];
            ImGui::PushID(static_cast<int>(row));
            if (DrawTreeRow(desk, row))
            {
                toggled = row;
            }
            ImGui::PopID();
        }
    }
    if (toggled)
    {
        m_tree.Toggle(*toggled);
    }
}

bool Panels::DrawTreeRow(Desk& desk, std::size_t index)
{
    const ModelTree::Row& row = m_tree.GetRows()[index];
    bool isShown = !desk.IsHidden(row.path);
    if (ImGui::Checkbox("##shown", &isShown))
    {
        desk.SetHidden(row.path, !isShown);
    }
    bool isSeen = isShown && row.isDrawn;
    for (std::size_t above = row.parent; isSeen && above != ModelTree::Row::None; above = m_tree.GetRows()[above].parent)
    {
        isSeen = !desk.IsHidden(m_tree.GetRows()[above].path);
    }
    const bool isSearch = m_search[0] != '\0';
    const std::size_t level = isSearch ? 0 : std::min(row.level, MostIndents);
    ImGui::SameLine(0.0f, 6.0f + Indent * static_cast<float>(level));
    const bool isToggled = Opener(!isSearch && m_tree.HasRowsBelow(index), m_tree.IsOpen(index));
    ImGui::SameLine(0.0f, 4.0f);
    const std::vector<std::string>& before = desk.GetSelection();
    const bool isSelected = std::find(before.begin(), before.end(), row.path) != before.end();
    ImGui::PushStyleColor(ImGuiCol_Text, ImGui::GetStyleColorVec4(isSeen ? ImGuiCol_Text : ImGuiCol_TextDisabled));
    ImGui::PushStyleColor(ImGuiCol_Header, ImGui::GetStyleColorVec4(ImGuiCol_HeaderActive));
    ImGui::AlignTextToFramePadding();
    const bool isClicked = ImGui::Selectable(row.name.c_str(), isSelected, ImGuiSelectableFlags_AllowDoubleClick);
    ImGui::PopStyleColor(2);
    if (ImGui::IsItemHovered())
    {
        std::string text = row.name;
        for (const std::string& line : {row.kind, m_tree.PlaceOf(index)})
        {
            text += (line.empty() ? "" : "\n") + line;
        }
        TellByPointer(text);
    }
    if (isClicked)
    {
        std::vector<std::string> selection = before;
        const bool adds = ImGui::GetIO().KeyCtrl || ImGui::GetIO().KeyShift;
        if (adds && isSelected)
        {
            selection.erase(std::find(selection.begin(), selection.end(), row.path));
        }
        else if (adds)
        {
            selection.push_back(row.path);
        }
        else
        {
            selection = {row.path};
        }
        m_revealed = selection.empty() ? std::string() : selection.back();
        desk.Select(std::move(selection));
        if (ImGui::IsMouseDoubleClicked(0))
        {
            desk.FitSelection();
        }
    }
    return isToggled;
}

/// What there is to say about a large part takes a while to find out.
const std::optional<Desk::Thing>& Panels::SelectedThing()
{
    const Desk& desk = m_viewer.GetDesk();
    const std::string selected = desk.GetSelection().empty() ? std::string() : desk.GetSelection().back();
    if (!m_isThingKnown || m_thingPath != selected)
    {
        m_isThingKnown = true;
        m_thingPath = selected;
        m_thing = selected.empty() ? std::nullopt : desk.Describe(selected);
        m_isThingFile = m_thing && desk.IsFile(selected);
        const std::optional<std::size_t> row = m_tree.Find(selected);
        m_thingPlace = row ? m_tree.PlaceOf(*row) : std::string();
    }
    return m_thing;
}

void Panels::DrawSelection()
{
    Desk& desk = m_viewer.GetDesk();
    ImGui::Separator();
    if (const std::optional<Desk::Thing>& thing = SelectedThing(); !thing)
    {
        ImGui::TextDisabled("Click something to select it.");
    }
    else
    {
        const Host::NodeName called = Host::DivideName(thing->name);
        ImGui::TextWrapped("%s", called.name.c_str());
        if (!called.kind.empty())
        {
            ImGui::TextDisabled("%s", called.kind.c_str());
        }
        // A path may be longer than all else together, and hard to read: what it is in, and the path under the pointer.
        ImGui::TextDisabled("%s", (m_thingPlace.empty() ? thing->path : m_thingPlace).c_str());
        if (ImGui::IsItemHovered())
        {
            TellByPointer(thing->path);
        }
        ImGui::TextWrapped("%s", thing->Text(desk.GetModel()->GetUnit()).c_str());
        if (desk.GetSelection().size() > 1)
        {
            ImGui::Text("and %zu more", desk.GetSelection().size() - 1);
        }
        DrawSelectionButtons(desk);
    }
    // Always there: what comes and goes moves the tree under the pointer.
    ImGui::BeginDisabled(!desk.HasHidden());
    if (ImGui::Button("Show all"))
    {
        desk.ShowAll();
    }
    ImGui::EndDisabled();
}

void Panels::DrawSelectionButtons(Desk& desk)
{
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
    if (m_isThingFile && ImGui::Button("Take the file away"))
    {
        desk.TakeAway(std::string(m_thingPath));
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
