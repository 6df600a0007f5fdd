#include "apps/viewer/Desk.h"

#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <unordered_set>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

const Color SelectionColor(1.0f, 0.55f, 0.1f, 0.55f);

void Widen(const Node& node, std::optional<Host::Presentation::Box>& box, Desk::Thing& thing)
{
    if (const auto* const place = dynamic_cast<const MeshNode*>(&node))
    {
        for (const Mesh* const mesh : place->EachMesh())
        {
            // Lines are drawn of triangles that nobody has modelled.
            thing.triangles += mesh->Type() == NodeTypeLine ? 0 : mesh->GetIndices().size() / 3;
            if (thing.material.empty() && mesh->GetMaterial())
            {
                thing.material = mesh->GetMaterial()->GetName();
            }
            for (const Vector& position : mesh->GetPositionBuffer())
            {
                Vector point;
                point.Multiply(node.GetGlobal(), position);
                if (!box)
                {
                    box = Host::Presentation::Box{point, point};
                }
                for (unsigned int axis = 0; axis < 3; ++axis)
                {
                    box->low[axis] = std::min(box->low[axis], point[axis]);
                    box->high[axis] = std::max(box->high[axis], point[axis]);
                }
            }
        }
    }
    for (const Node* const child : node.EachChild())
    {
        Widen(*child, box, thing);
    }
}

std::string NameIn(const std::string& path)
{
    return path.substr(path.find_last_of('/') + 1);
}

} // namespace

std::string Desk::PathOf(const Node* node) const
{
    std::string path;
    for (; node && path.empty(); node = node->GetParent())
    {
        path = m_model->PathOf(*node);
    }
    return path;
}

void Desk::SelectAt(const glm::dvec2& pixel, bool adds)
{
    SelectIn({static_cast<int>(std::floor(pixel.x)), static_cast<int>(std::floor(pixel.y)), 1, 1}, adds);
}

void Desk::SelectIn(const Host::PickArea& area, bool adds)
{
    if (!m_model)
    {
        return;
    }
    std::vector<std::string> paths = adds ? m_selection : std::vector<std::string>();
    const std::unordered_set<std::string> before(paths.begin(), paths.end());
    std::unordered_set<std::string> seen; // a node may be hit by several of its meshes
    for (const Host::PickHit& hit : m_model->Pick(area))
    {
        const std::string path = PathOf(hit.node);
        if (path.empty() || !seen.insert(path).second)
        {
            continue;
        }
        if (before.count(path) == 0)
        {
            paths.push_back(path);
        }
        else if (area.width == 1)
        {
            // A second click takes it out again.
            paths.erase(std::find(paths.begin(), paths.end(), path));
        }
    }
    Select(std::move(paths));
}

void Desk::Select(std::vector<std::string> paths)
{
    m_selection = std::move(paths);
    ShowSelection();
}

void Desk::ShowSelection()
{
    if (!m_model)
    {
        return;
    }
    m_model->ClearHighlights();
    for (const std::string& path : m_selection)
    {
        m_model->Highlight(path, SelectionColor);
    }
}

std::string Desk::Thing::Text(const std::string& unit) const
{
    std::ostringstream text;
    text << std::setprecision(4) << "Material: " << (material.empty() ? "none" : material) << "\nSize: " << size.x
         << " x " << size.y << " x " << size.z << (unit.empty() ? "" : " ") << unit;
    if (triangles > 0)
    {
        text << '\n' << triangles << (triangles == 1 ? " triangle" : " triangles");
    }
    return text.str();
}

std::optional<Desk::Thing> Desk::Describe(const std::string& path) const
{
    const Node* const node = m_model ? m_model->FindNode(path) : nullptr;
    if (!node)
    {
        return std::nullopt;
    }
    Thing thing;
    thing.path = path;
    thing.name = NameIn(path);
    std::optional<Host::Presentation::Box> box;
    Widen(*node, box, thing);
    if (box)
    {
        thing.size.Subtract(box->high, box->low);
    }
    return thing;
}

void Desk::LabelSelection()
{
    for (const std::string& path : m_selection)
    {
        const auto found = std::find(m_labels.begin(), m_labels.end(), path);
        if (found != m_labels.end())
        {
            m_labels.erase(found);
            m_model->RemoveLabel(path);
        }
        else if (m_model->AddLabel(path))
        {
            m_labels.push_back(path);
        }
    }
}

void Desk::AddDimension(const Host::Dimension& dimension)
{
    if (m_model)
    {
        std::vector<Host::Dimension> dimensions = m_model->GetDimensions();
        dimensions.push_back(dimension);
        m_model->SetDimensions(std::move(dimensions));
    }
}

std::vector<Host::Dimension> Desk::GetDimensions() const
{
    return m_model ? m_model->GetDimensions() : std::vector<Host::Dimension>();
}

void Desk::RemoveLastDimension()
{
    if (m_model && !m_model->GetDimensions().empty())
    {
        std::vector<Host::Dimension> dimensions = m_model->GetDimensions();
        dimensions.pop_back();
        m_model->SetDimensions(std::move(dimensions));
    }
}

void Desk::ClearNotes()
{
    m_labels.clear();
    if (m_model)
    {
        m_model->ClearLabels();
        m_model->SetDimensions({});
    }
}

void Desk::ShowNotes()
{
    m_model->ClearLabels();
    m_labels.erase(std::remove_if(m_labels.begin(), m_labels.end(),
                                  [this](const std::string& path) { return !m_model->AddLabel(path); }),
                   m_labels.end());
}

void Desk::HideSelection()
{
    for (const std::string& path : std::exchange(m_selection, {}))
    {
        SetHidden(path, true);
    }
    ShowSelection();
}

void Desk::IsolateSelection()
{
    if (m_model && !m_selection.empty() && m_model->Isolate(m_selection.front()))
    {
        m_isolated = m_selection.front();
    }
}

void Desk::SetHidden(const std::string& path, bool hidden)
{
    if (!m_model || !(hidden ? m_model->Hide(path) : m_model->Show(path)))
    {
        return;
    }
    m_hidden.erase(std::remove(m_hidden.begin(), m_hidden.end(), path), m_hidden.end());
    if (hidden)
    {
        m_hidden.push_back(path);
    }
}

bool Desk::IsHidden(const std::string& path) const
{
    return std::find(m_hidden.begin(), m_hidden.end(), path) != m_hidden.end();
}

void Desk::ShowAll()
{
    m_hidden.clear();
    m_isolated.clear();
    if (m_model)
    {
        m_model->ShowAll();
    }
}

void Desk::HideAgain()
{
    m_model->ShowAll();
    m_hidden.erase(std::remove_if(m_hidden.begin(), m_hidden.end(),
                                  [this](const std::string& path) { return !m_model->Hide(path); }),
                   m_hidden.end());
    if (!m_isolated.empty() && !m_model->Isolate(m_isolated))
    {
        m_isolated.clear();
    }
}

void Desk::EditSelection()
{
    Host::PresentationSettings settings = m_settings;
    settings.editPath = m_selection.empty() ? std::string() : m_selection.front();
    if (!settings.editPath.empty() && settings.look != Host::Look::Advanced && settings.look != Host::Look::Phong)
    {
        settings.look = Host::Look::Advanced;
    }
    // The colour of the selection would cover what is edited.
    if (Apply(settings))
    {
        Select({});
    }
}

} // namespace OV::ViewerApp
