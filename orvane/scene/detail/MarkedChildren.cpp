#include "orvane/scene/detail/MarkedChildren.h"

namespace OV::detail
{

Node* MarkedChildren::Merged(Node* a, Node* b)
{
    Node* merged = nullptr;
    for (Node** end = &merged;; end = &(*end)->m_nextMarked)
    {
        if (!a || !b)
        {
            *end = a ? a : b;
            return merged;
        }
        Node*& next = a->m_rank < b->m_rank ? a : b;
        *end = next;
        next = next->m_nextMarked;
    }
}

Node* MarkedChildren::Sorted(Node* list, std::uint32_t length)
{
    if (length < 2)
    {
        return list;
    }
    Node* endOfFirstHalf = list;
    for (std::uint32_t i = 1; i < length / 2; ++i)
    {
        endOfFirstHalf = endOfFirstHalf->m_nextMarked;
    }
    Node* const secondHalf = endOfFirstHalf->m_nextMarked;
    endOfFirstHalf->m_nextMarked = nullptr;
    Node* const sortedFirst = Sorted(list, length / 2);
    return Merged(sortedFirst, Sorted(secondHalf, length - length / 2));
}

void MarkedChildren::Sort(std::size_t childCount)
{
    constexpr std::size_t fewest = 8;
    if (isInOrder || isUnknown || count > childCount / fewest)
    {
        return;
    }
    first = Sorted(first, count);
    for (last = first; last->m_nextMarked;)
    {
        last = last->m_nextMarked;
    }
    isInOrder = true;
}

} // namespace OV::detail
