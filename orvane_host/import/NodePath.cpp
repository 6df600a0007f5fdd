#include "orvane_host/import/NodePath.h"

#include "orvane/scene/Node.h"

#include <algorithm>
#include <cctype>
#include <set>

namespace OV::Host
{

namespace
{

/// So many names tell what names look like.
constexpr std::size_t MostNames = 8;

/// Characters of the identifiers that stand at the end of names of buildings' parts.
constexpr std::size_t IdentifierSize = 22;

} // namespace

NodePaths::NodePaths(const std::vector<ImportedNode>& nodes) : m_nodes(nodes)
{
    m_names.reserve(nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i)
    {
        m_names[nodes[i].node] = &nodes[i].name;
        m_places[nodes[i].name].push_back(i);
    }
}

/// Whether the path ends in the node's name, with those of its parents before it.
bool NodePaths::Ends(const Node* node, const std::string& path) const
{
    std::size_t end = path.size();
    while (node)
    {
        const auto found = m_names.find(node);
        if (found == m_names.end())
        {
            return false;
        }
        // A name may hold slashes itself.
        const std::string& name = *found->second;
        if (name.size() > end || path.compare(end - name.size(), name.size(), name) != 0)
        {
            return false;
        }
        end -= name.size();
        if (end == 0)
        {
            return true;
        }
        if (path[--end] != '/')
        {
            return false;
        }
        node = node->GetParent();
    }
    return false;
}

Node* NodePaths::Find(const std::string& path) const
{
    std::size_t first = m_nodes.size();
    // The node's own name begins after some slash, or the path is nothing else.
    for (std::size_t begin = 0; begin <= path.size(); ++begin)
    {
        const bool isBegin = begin == 0 || path[begin - 1] == '/';
        const auto named = isBegin ? m_places.find(std::string_view(path).substr(begin)) : m_places.end();
        if (named == m_places.end())
        {
            continue;
        }
        for (const std::size_t place : named->second)
        {
            if (place >= first)
            {
                break;
            }
            if (Ends(m_nodes[place].node, path))
            {
                first = place;
            }
        }
    }
    return first < m_nodes.size() ? m_nodes[first].node : nullptr;
}

std::string NodePaths::PathTo(const Node& node) const
{
    std::string path;
    for (const Node* step = &node; step; step = step->GetParent())
    {
        const auto found = m_names.find(step);
        if (found == m_names.end())
        {
            break;
        }
        path = *found->second + (step == &node ? "" : "/") + path;
    }
    const std::size_t begin = path.find_first_not_of('/');
    return begin == std::string::npos ? std::string() : path.substr(begin);
}

Node* FindNode(const std::vector<ImportedNode>& nodes, const std::string& path)
{
    return NodePaths(nodes).Find(path);
}

std::string PathOf(const std::vector<ImportedNode>& nodes, const Node& node)
{
    return NodePaths(nodes).PathTo(node);
}

std::vector<std::string> ListNodePaths(const std::vector<ImportedNode>& nodes)
{
    const NodePaths known(nodes);
    std::vector<std::string> paths;
    for (const ImportedNode& node : nodes)
    {
        if (!node.name.empty())
        {
            paths.push_back(known.PathTo(*node.node));
        }
    }
    return paths;
}

NodeName DivideName(const std::string& whole)
{
    const auto isOfIdentifier = [](unsigned char letter) { return std::isalnum(letter) || letter == '_' || letter == '$'; };
    if (whole.compare(0, 3, "Ifc") != 0 || whole.size() < IdentifierSize + 5)
    {
        return {whole, {}};
    }
    const std::size_t end = whole.size() - IdentifierSize - 1;
    const std::size_t divide = whole.find('_');
    if (whole[end] != '_' || divide > end
        || !std::all_of(whole.begin() + static_cast<std::ptrdiff_t>(end) + 1, whole.end(), isOfIdentifier))
    {
        return {whole, {}};
    }
    const std::string kind = whole.substr(3, divide - 3);
    const std::string name = divide < end ? whole.substr(divide + 1, end - divide - 1) : std::string();
    return name.empty() ? NodeName{kind, {}} : NodeName{name, kind};
}

std::string SomeNodeNames(const std::vector<ImportedNode>& nodes)
{
    std::set<std::string> seen;
    std::string names;
    for (const ImportedNode& node : nodes)
    {
        if (node.name.empty() || seen.size() == MostNames || !seen.insert(node.name).second)
        {
            continue;
        }
        names += (names.empty() ? "" : ", ") + node.name;
    }
    return names;
}

} // namespace OV::Host
