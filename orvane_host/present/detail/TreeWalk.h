#pragma once

#include "orvane/scene/Node.h"

#include <utility>
#include <vector>

namespace OV::Host::Detail
{

/// Calls `State visit(Node&, const State&)` for every node of a tree, a node before its children,
/// children in list order, with what visit gave for the node above; the root gets state itself.
/// Walks without recursion: a tree may be deeper than the stack. The tree may not change meanwhile.
template <class State, class Visit>
void WalkTree(Node& root, const State& state, Visit visit)
{
    std::vector<std::pair<Node*, State>> pending{{&root, state}};
    while (!pending.empty())
    {
        const auto [node, above] = pending.back();
        pending.pop_back();
        const State own = visit(*node, above);
        const NodeChildren children = node->EachChild();
        for (auto child = children.rbegin(); child != children.rend(); ++child)
        {
            pending.emplace_back(*child, own);
        }
    }
}

} // namespace OV::Host::Detail
