#pragma once

#include "orvane_host/import/ImportResult.h"
#include "orvane/scene/NodeListener.h"

#include <vector>

namespace OV::Host::Detail
{

/// Notices that a host has deleted nodes that have names, by which whatever is kept of nodes was asked for.
class LostNodes final : public NodeListener
{
public:
    /// @param nodes not owned; outlive this.
    LostNodes(Scene& scene, const std::vector<ImportedNode>& nodes);

    /// Whether one of the nodes was deleted since Restart.
    bool AreThere() const { return m_areThere; }

    /// To be called when nodes have come or are taken out of the list.
    void Restart();

    void NodeChanged(Node&, NodeChange) override {}
    void NodeGone(const Node& node) override;
    void SceneGone() override {}

private:
    const std::vector<ImportedNode>& m_nodes;
    std::vector<const Node*> m_known; ///< in the order of addresses; empty until one goes
    bool m_areThere = false;
};

} // namespace OV::Host::Detail
