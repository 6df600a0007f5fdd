#pragma once

#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <vector>

namespace OV::Host::Detail
{

/// All mesh nodes in the tree of a scene, a node before its children, children in list order.
/// Walks without recursion: a tree may be deeper than the stack.
inline std::vector<MeshNode*> MeshNodesOf(const Scene& scene)
{
    std::vector<MeshNode*> found;
    std::vector<Node*> pending;
    if (Node* const root = scene.GetRoot())
    {
        pending.push_back(root);
    }
    while (!pending.empty())
    {
        Node* const node = pending.back();
        pending.pop_back();
        if (auto* const meshNode = dynamic_cast<MeshNode*>(node))
        {
            found.push_back(meshNode);
        }
        pending.insert(pending.end(), node->EachChild().rbegin(), node->EachChild().rend());
    }
    return found;
}

} // namespace OV::Host::Detail
