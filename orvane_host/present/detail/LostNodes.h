#pragma once

#include "orvane_host/import/ImportResult.h"
#include "orvane/scene/NodeListener.h"

#include <set>
#include <vector>

namespace OV::Host::Detail
{

class NodeVisibility;

/// Notices that a host has deleted nodes by which whatever is kept of nodes was asked for: those with names,
/// and those that it was asked for themselves.
class LostNodes final : public NodeListener
{
public:
    /// @param nodes,visibility not owned; outlive this. The latter forgets whatever is gone at once.
    LostNodes(Scene& scene, const std::vector<ImportedNode>& nodes, NodeVisibility& visibility);

    /// Whether one of the nodes was deleted since Take.
    bool AreThere() const { return !m_lost.empty(); }

    /// Those that were deleted since the last time. Other nodes may have got their addresses.
    std::set<const Node*> Take();

    /// To be called when nodes have come or are taken out of the list.
    void Restart() { m_known.clear(); }

    /// Counts a node without a name too, until it is gone.
    void Watch(const Node& node) { m_watched.insert(&node); }

    void NodeChanged(Node&, NodeChange) override {}
    void NodeGone(const Node& node) override;
    void SceneGone() override {}

private:
    const std::vector<ImportedNode>& m_nodes;
    std::vector<const Node*> m_known; ///< in the order of addresses; empty until one goes
    std::set<const Node*> m_watched;
    std::set<const Node*> m_lost;
    NodeVisibility& m_visibility;
};

} // namespace OV::Host::Detail
