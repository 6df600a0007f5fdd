#pragma once

#include <set>
#include <unordered_map>

namespace OV
{

class MeshNode;
class Node;
class Scene;

} // namespace OV

namespace OV::Host::Detail
{

/// Hides and isolates nodes, beside what a scene hides itself.
class NodeVisibility
{
public:
    /// @param scene not owned; outlives this.
    explicit NodeVisibility(Scene& scene) : m_scene(scene) {}

    NodeVisibility(const NodeVisibility&) = delete;
    NodeVisibility& operator=(const NodeVisibility&) = delete;

    /// @return whether anything changed, as all below.
    bool Hide(const Node& node);
    bool Show(const Node& node);
    bool Isolate(const Node& node);
    bool ShowAll();

    /// Whether the scene would show a node if nothing was hidden from here.
    bool IsShownByScene(const MeshNode& node) const;

    /// A node is being destroyed: another one may get its address. Only that is used.
    void Forget(const Node& node);

    /// After nodes came or went: forgets those that are gone.
    void Refresh();

private:
    void Apply();

    Scene& m_scene;
    std::set<const Node*> m_hidden;
    const Node* m_isolated = nullptr;
    /// Nodes that are hidden from here, with whether the scene hides them too.
    std::unordered_map<const Node*, bool> m_applied;
};

} // namespace OV::Host::Detail
