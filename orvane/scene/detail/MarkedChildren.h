#pragma once

#include "orvane/scene/Node.h"

#include <cstddef>
#include <cstdint>

namespace OV::detail
{

/// The children of a node that the walk of an update has to come to, so that it passes over all
/// others without looking at them.
///
/// Holds for one update ID; the first mark under another begins anew, without a look at those that
/// were there. Whoever is marked stands marked up to the top of its tree.
struct MarkedChildren
{
    /// Appends a child that is not there yet.
    void Add(Node* child, unsigned int current)
    {
        child->m_nextMarked = nullptr;
        if (updateID != current)
        {
            updateID = current;
            isUnknown = false;
            isInOrder = true;
            first = child;
            count = 1;
        }
        else if (isUnknown)
        {
            return;
        }
        else
        {
            isInOrder = isInOrder && last->m_rank < child->m_rank;
            last->m_nextMarked = child;
            ++count;
        }
        last = child;
    }

    /// Said as one of them leaves the parent: which are left is not found out.
    void Lose()
    {
        isUnknown = true;
    }

    bool HasAny(unsigned int current) const
    {
        return updateID == current;
    }

    /// Whether they can be gone through, as far as the parent has them, in the order of its children.
    bool IsInOrder(unsigned int current) const
    {
        return updateID == current && isInOrder && !isUnknown;
    }

    /// Brings them into that order where that takes less than to look at all children.
    void Sort(std::size_t childCount);

    Node* first = nullptr;
    Node* last = nullptr;
    std::uint32_t count = 0;
    unsigned int updateID = 0;
    bool isInOrder = true;
    bool isUnknown = true;

private:
    static Node* Merged(Node* a, Node* b);
    static Node* Sorted(Node* list, std::uint32_t length);
};

} // namespace OV::detail
