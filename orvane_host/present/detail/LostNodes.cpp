#include "orvane_host/present/detail/LostNodes.h"

#include "orvane_host/present/detail/NodeVisibility.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <utility>

namespace OV::Host::Detail
{

LostNodes::LostNodes(Scene& scene, const std::vector<ImportedNode>& nodes, NodeVisibility& visibility) :
    m_nodes(nodes), m_visibility(visibility)
{
    scene.AddNodeListener(this);
}

std::set<const Node*> LostNodes::Take()
{
    return std::exchange(m_lost, {});
}

void LostNodes::NodeGone(const Node& node)
{
    m_visibility.Forget(node);
    if (m_watched.erase(&node) != 0)
    {
        m_lost.insert(&node);
        return;
    }
    if (m_nodes.empty())
    {
        return;
    }
    if (m_known.empty())
    {
        for (const ImportedNode& entry : m_nodes)
        {
            m_known.push_back(entry.node);
        }
        std::sort(m_known.begin(), m_known.end());
    }
    if (std::binary_search(m_known.begin(), m_known.end(), &node))
    {
        m_lost.insert(&node);
    }
}

} // namespace OV::Host::Detail
