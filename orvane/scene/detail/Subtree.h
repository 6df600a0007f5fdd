#pragma once

#include "orvane/scene/Node.h"

#include <vector>

namespace OV::detail
{

/// The node and everything below it, a node before its children, children in list order.
/// Walks without recursion: a tree from outside may be deeper than the stack.
inline std::vector<Node*> CollectSubtree(Node* top)
{
    std::vector<Node*> subtree;
    std::vector<Node*> pending;
    if (top)
    {
        pending.push_back(top);
    }
    while (!pending.empty())
    {
        Node* const node = pending.back();
        pending.pop_back();
        subtree.push_back(node);
        const NodeChildren children = node->EachChild();
        pending.insert(pending.end(), children.rbegin(), children.rend());
    }
    return subtree;
}

} // namespace OV::detail
