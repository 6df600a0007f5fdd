#include "orvane_host/present/detail/NodeVisibility.h"

#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <iterator>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

void CollectNodes(const Node& node, std::set<const Node*>& nodes)
{
    nodes.insert(&node);
    for (const Node* child : node.GetChildren())
    {
        CollectNodes(*child, nodes);
    }
}

} // namespace

bool NodeVisibility::Hide(const Node& node)
{
    const bool isNew = m_hidden.insert(&node).second;
    Apply();
    return isNew;
}

bool NodeVisibility::Show(const Node& node)
{
    const bool wasHidden = m_hidden.erase(&node) != 0;
    Apply();
    return wasHidden;
}

bool NodeVisibility::Isolate(const Node& node)
{
    const bool isOther = std::exchange(m_isolated, &node) != &node;
    Apply();
    return isOther;
}

bool NodeVisibility::ShowAll()
{
    const bool hid = !m_hidden.empty() || m_isolated;
    m_hidden.clear();
    m_isolated = nullptr;
    Apply();
    return hid;
}

bool NodeVisibility::IsShownByScene(const MeshNode& node) const
{
    const auto found = m_applied.find(&node);
    return found == m_applied.end() ? (node.GetFlags() & NodeFlagHidden) == 0 : !found->second;
}

void NodeVisibility::Refresh()
{
    std::set<const Node*> nodes;
    CollectNodes(*m_scene.GetRoot(), nodes);
    for (auto node = m_hidden.begin(); node != m_hidden.end();)
    {
        node = nodes.count(*node) != 0 ? std::next(node) : m_hidden.erase(node);
    }
    m_isolated = nodes.count(m_isolated) != 0 ? m_isolated : nullptr;
    Apply();
}

void NodeVisibility::Apply()
{
    std::unordered_map<const MeshNode*, bool> hidden;
    Walk(*m_scene.GetRoot(), false, m_isolated == nullptr, hidden);
    m_applied = std::move(hidden);
    m_scene.MarkDirty();
}

void NodeVisibility::Walk(Node& node, bool isHidden, bool isIsolated,
                          std::unordered_map<const MeshNode*, bool>& hidden)
{
    isHidden = isHidden || m_hidden.count(&node) != 0;
    isIsolated = isIsolated || &node == m_isolated;
    if (auto* const meshNode = dynamic_cast<MeshNode*>(&node))
    {
        const bool hiddenByScene = !IsShownByScene(*meshNode);
        if (isHidden || !isIsolated)
        {
            hidden[meshNode] = hiddenByScene;
            meshNode->SetFlags(NodeFlagHidden, false);
        }
        else if (!hiddenByScene)
        {
            meshNode->ClearFlags(NodeFlagHidden, false);
        }
    }
    for (Node* child : node.GetChildren())
    {
        Walk(*child, isHidden, isIsolated, hidden);
    }
}

} // namespace OV::Host::Detail
