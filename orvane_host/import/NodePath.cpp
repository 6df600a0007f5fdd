#include "orvane_host/import/NodePath.h"

#include "orvane/scene/Node.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <unordered_map>

namespace OV::Host
{

namespace
{

/// So many names tell what names look like.
constexpr std::size_t MostNames = 8;

using Names = std::unordered_map<const Node*, const std::string*>;

Names NamesOf(const std::vector<ImportedNode>& nodes)
{
    Names names;
    for (const ImportedNode& node : nodes)
    {
        names[node.node] = &node.name;
    }
    return names;
}

/// Whether the path ends in the node's name, with those of its parents before it.
bool Ends(const Node* node, const std::string& path, const Names& names)
{
    std::size_t end = path.size();
    while (node)
    {
        const auto found = names.find(node);
        if (found == names.end())
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

std::string PathIn(const Names& names, const Node& node)
{
    std::string path;
    for (const Node* step = &node; step; step = step->GetParent())
    {
        const auto found = names.find(step);
        if (found == names.end())
        {
            break;
        }
        path = *found->second + (step == &node ? "" : "/") + path;
    }
    const std::size_t begin = path.find_first_not_of('/');
    return begin == std::string::npos ? std::string() : path.substr(begin);
}

} // namespace

Node* FindNode(const std::vector<ImportedNode>& nodes, const std::string& path)
{
    const Names names = NamesOf(nodes);
    const auto found = std::find_if(nodes.begin(), nodes.end(),
                                    [&](const ImportedNode& node) { return Ends(node.node, path, names); });
    return found == nodes.end() ? nullptr : found->node;
}

std::string PathOf(const std::vector<ImportedNode>& nodes, const Node& node)
{
    return PathIn(NamesOf(nodes), node);
}

std::vector<std::string> ListNodePaths(const std::vector<ImportedNode>& nodes)
{
    const Names names = NamesOf(nodes);
    std::vector<std::string> paths;
    for (const ImportedNode& node : nodes)
    {
        if (!node.name.empty())
        {
            paths.push_back(PathIn(names, *node.node));
        }
    }
    return paths;
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
