#include "apps/viewer/ModelTree.h"

#include "orvane_host/import/NodePath.h"
#include "orvane_host/present/Presentation.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cctype>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

/// So many rows are read at a glance; larger trees begin closed below the first levels.
constexpr std::size_t MostOpenRows = 40;
constexpr std::size_t OpenLevels = 2;

bool Contains(const std::string& text, const std::string& part)
{
    const auto same = [](char a, char b)
    { return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b)); };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

bool IsOfRelations(const std::string& name)
{
    return name.empty() || name[0] == '$';
}

/// Nodes that have a shape, and all above them.
std::unordered_set<const Node*> DrawnNodes(const Node& root)
{
    std::unordered_set<const Node*> drawn;
    std::vector<const Node*> left = {&root};
    while (!left.empty())
    {
        const Node* const node = left.back();
        left.pop_back();
        left.insert(left.end(), node->EachChild().begin(), node->EachChild().end());
        const auto* const place = dynamic_cast<const MeshNode*>(node);
        if (place && !place->EachMesh().empty())
        {
            for (const Node* step = node; step && drawn.insert(step).second;)
            {
                step = step->GetParent();
            }
        }
    }
    return drawn;
}

} // namespace

void ModelTree::Read(const Host::Presentation& model)
{
    const std::vector<Host::ImportedNode>& nodes = model.GetNodes();
    const Host::NodePaths paths(nodes);
    const std::unordered_set<const Node*> drawn = DrawnNodes(*model.GetScene().GetRoot());
    std::unordered_map<const Node*, std::size_t> places;
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        if (!IsOfRelations(nodes[i].name))
        {
            places[nodes[i].node] = i;
        }
    }
    // Of each node, and of the whole at the end, those whose rows stand below it, in the order of the file.
    std::vector<std::vector<std::size_t>> below(nodes.size() + 1);
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        const auto self = places.find(nodes[i].node);
        if (self == places.end() || self->second != i)
        {
            continue;
        }
        auto above = places.end();
        for (const Node* step = nodes[i].node->GetParent(); step && above == places.end(); step = step->GetParent())
        {
            above = places.find(step);
        }
        below[above == places.end() ? nodes.size() : above->second].push_back(i);
    }
    m_rows.clear();
    m_isListed = false;
    // Without recursion: a tree may be deeper than the stack.
    std::vector<std::pair<std::size_t, std::size_t>> left; // node, row of the one above
    const auto push = [&](std::size_t of, std::size_t parent)
    {
        for (auto child = below[of].rbegin(); child != below[of].rend(); ++child)
        {
            left.emplace_back(*child, parent);
        }
    };
    push(nodes.size(), Row::None);
    while (!left.empty())
    {
        const auto [node, parent] = left.back();
        left.pop_back();
        Row row;
        row.path = paths.PathTo(*nodes[node].node);
        Host::NodeName called = Host::DivideName(nodes[node].name);
        row.name = std::move(called.name);
        row.kind = std::move(called.kind);
        row.parent = parent;
        row.level = parent == Row::None ? 0 : m_rows[parent].level + 1;
        row.isDrawn = drawn.count(nodes[node].node) != 0;
        row.end = m_rows.size() + 1;
        m_rows.push_back(std::move(row));
        push(node, m_rows.size() - 1);
    }
    for (std::size_t i = m_rows.size(); i-- > 0;)
    {
        if (m_rows[i].parent != Row::None)
        {
            std::size_t& end = m_rows[m_rows[i].parent].end;
            end = std::max(end, m_rows[i].end);
        }
    }
}

const std::vector<std::size_t>& ModelTree::List(const std::string& search)
{
    if (m_isListed && search == m_search)
    {
        return m_listed;
    }
    m_isListed = true;
    m_search = search;
    m_listed.clear();
    for (std::size_t row = 0; row < m_rows.size();)
    {
        const bool isShown = search.empty() || Contains(m_rows[row].name, search) || Contains(m_rows[row].kind, search);
        if (isShown)
        {
            m_listed.push_back(row);
        }
        row = search.empty() && !IsOpen(row) ? m_rows[row].end : row + 1;
    }
    return m_listed;
}

bool ModelTree::IsOpen(std::size_t row) const
{
    const bool isUsually = m_rows.size() <= MostOpenRows || m_rows[row].level < OpenLevels;
    return isUsually != (m_toggled.count(m_rows[row].path) != 0);
}

void ModelTree::Toggle(std::size_t row)
{
    if (m_toggled.erase(m_rows[row].path) == 0)
    {
        m_toggled.insert(m_rows[row].path);
    }
    m_isListed = false;
}

std::optional<std::size_t> ModelTree::Find(const std::string& path) const
{
    const auto found = std::find_if(m_rows.begin(), m_rows.end(), [&](const Row& row) { return row.path == path; });
    return found != m_rows.end() ? std::optional<std::size_t>(found - m_rows.begin()) : std::nullopt;
}

std::string ModelTree::PlaceOf(std::size_t row) const
{
    std::string place;
    for (std::size_t above = m_rows[row].parent; above != Row::None; above = m_rows[above].parent)
    {
        place = m_rows[above].name + (place.empty() ? "" : " / ") + place;
    }
    return place;
}

std::optional<std::size_t> ModelTree::Reveal(const std::string& path)
{
    const std::optional<std::size_t> found = Find(path);
    if (!found)
    {
        return std::nullopt;
    }
    for (std::size_t row = m_rows[*found].parent; row != Row::None; row = m_rows[row].parent)
    {
        if (!IsOpen(row))
        {
            Toggle(row);
        }
    }
    return found;
}

} // namespace OV::ViewerApp
