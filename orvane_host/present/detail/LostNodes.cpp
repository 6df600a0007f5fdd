#include "orvane_host/present/detail/LostNodes.h"

#include "orvane/scene/Scene.h"

#include <algorithm>

namespace OV::Host::Detail
{

LostNodes::LostNodes(Scene& scene, const std::vector<ImportedNode>& nodes) : m_nodes(nodes)
{
    scene.AddNodeListener(this);
}

void LostNodes::Restart()
{
    m_known.clear();
    m_areThere = false;
}

void LostNodes::NodeGone(const Node& node)
{
    m_areThere = m_watched.erase(&node) != 0 || m_areThere;
    if (m_areThere || m_nodes.empty())
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
    m_areThere = std::binary_search(m_known.begin(), m_known.end(), &node);
}

} // namespace OV::Host::Detail
