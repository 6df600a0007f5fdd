#include "apps/render/NodeList.h"

#include "apps/render/Report.h"
#include "orvane_host/import/NodePath.h"
#include "orvane/scene/Node.h"
#include "orvane/scene/Scene.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <unordered_map>

namespace OV::RenderApp
{

namespace
{

struct NamedNode
{
    const Node* node;
    std::string name;
    std::size_t level;
};

/// In the order of the tree, from the top down. Without recursion: a tree may be deep.
std::vector<NamedNode> Named(const Scene& scene, const std::vector<Host::ImportedNode>& nodes)
{
    std::unordered_map<const Node*, std::string> names;
    for (const Host::ImportedNode& imported : nodes)
    {
        if (!imported.name.empty())
        {
            names.emplace(imported.node, imported.name);
        }
    }
    std::vector<NamedNode> found;
    std::vector<std::pair<const Node*, std::size_t>> pending = {{scene.GetRoot(), 0}};
    while (!pending.empty())
    {
        const auto [node, level] = pending.back();
        pending.pop_back();
        const auto name = names.find(node);
        if (name != names.end())
        {
            found.push_back({node, name->second, level});
        }
        const std::size_t below = level + (name != names.end() ? 1 : 0);
        const NodeChildren children = node->EachChild();
        for (auto child = children.rbegin(); child != children.rend(); ++child)
        {
            pending.emplace_back(*child, below);
        }
    }
    return found;
}

/// Control characters would break the lines.
std::string OnOneLine(std::string name)
{
    std::replace_if(name.begin(), name.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '?');
    return name;
}

} // namespace

std::string ListNodesAsText(const Scene& scene, const std::vector<Host::ImportedNode>& nodes)
{
    std::string text;
    for (const NamedNode& named : Named(scene, nodes))
    {
        text += std::string(2 * named.level, ' ') + OnOneLine(named.name) + '\n';
    }
    return text;
}

std::string ListNodesAsJSON(const Scene& scene, const std::vector<Host::ImportedNode>& nodes)
{
    const Host::NodePaths paths(nodes);
    nlohmann::ordered_json top = nlohmann::ordered_json::array();
    // An object's place may move when it gets a neighbour: only what is above the present one is kept.
    std::vector<nlohmann::ordered_json*> above = {&top};
    for (const NamedNode& named : Named(scene, nodes))
    {
        above.resize(named.level + 1);
        nlohmann::ordered_json& siblings = *above.back();
        siblings.push_back({{"name", named.name}, {"path", paths.PathTo(*named.node)}});
        above.push_back(&siblings.back()["children"]);
    }
    return ToText(top);
}

} // namespace OV::RenderApp
