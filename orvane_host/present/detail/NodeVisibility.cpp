#include "orvane_host/present/detail/NodeVisibility.h"

#include "orvane_host/present/detail/TreeWalk.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <iterator>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

/// What the nodes above make of a node.
struct Inherited
{
    bool isHidden = false;
    bool isIsolated = false;
};

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

void NodeVisibility::Forget(const Node& node)
{
    m_hidden.erase(&node);
    m_applied.erase(&node);
    m_isolated = m_isolated == &node ? nullptr : m_isolated;
}

void NodeVisibility::Refresh()
{
    std::set<const Node*> nodes;
    WalkTree(*m_scene.GetRoot(), 0, [&nodes](Node& node, int state) {
        nodes.insert(&node);
        return state;
    });
    for (auto node = m_hidden.begin(); node != m_hidden.end();)
    {
        node = nodes.count(*node) != 0 ? std::next(node) : m_hidden.erase(node);
    }
    m_isolated = nodes.count(m_isolated) != 0 ? m_isolated : nullptr;
    Apply();
}

void NodeVisibility::Apply()
{
    std::unordered_map<const Node*, bool> hidden;
    WalkTree(*m_scene.GetRoot(), Inherited{false, m_isolated == nullptr}, [&](Node& node, Inherited state) {
        state.isHidden = state.isHidden || m_hidden.count(&node) != 0;
        state.isIsolated = state.isIsolated || &node == m_isolated;
        if (auto* const meshNode = dynamic_cast<MeshNode*>(&node))
        {
            const bool hiddenByScene = !IsShownByScene(*meshNode);
            if (state.isHidden || !state.isIsolated)
            {
                hidden[meshNode] = hiddenByScene;
                meshNode->SetFlags(NodeFlagHidden, false);
            }
            else if (!hiddenByScene)
            {
                meshNode->ClearFlags(NodeFlagHidden, false);
            }
        }
        return state;
    });
    m_applied = std::move(hidden);
    m_scene.MarkDirty();
}

} // namespace OV::Host::Detail
