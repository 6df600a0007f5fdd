#pragma once

#include "orvane_host/import/ImportResult.h"
#include "orvane/scene/NodeListener.h"

#include <set>
#include <vector>

namespace OV::Host::Detail
{

/// Notices that a host has deleted nodes by which whatever is kept of nodes was asked for: those with names, and
/// those that it was asked for themselves.
class LostNodes final : public NodeListener
{
public:
    /// @param nodes not owned; outlive this.
    LostNodes(Scene& scene, const std::vector<ImportedNode>& nodes);

    /// Whether one of the nodes was deleted since Restart.
    bool AreThere() const { return m_areThere; }

    /// To be called when nodes have come or are taken out of the list.
    void Restart();

    /// Counts a node without a name too, until it is gone.
    void Watch(const Node& node) { m_watched.insert(&node); }

    void NodeChanged(Node&, NodeChange) override {}
    void NodeGone(const Node& node) override;
    void SceneGone() override {}

private:
    const std::vector<ImportedNode>& m_nodes;
    std::vector<const Node*> m_known; ///< in the order of addresses; empty until one goes
    std::set<const Node*> m_watched;
    bool m_areThere = false;
};

} // namespace OV::Host::Detail
