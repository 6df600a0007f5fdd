#include "orvane_host/present/detail/NodeTable.h"

namespace OV::Host::Detail
{

namespace
{

constexpr std::size_t kLeast = 16;

/// Whether a table of a size has room for so many: a fifth stays empty, so that searches end soon.
bool HasRoom(std::size_t size, std::size_t count)
{
    return count + count / 4 < size;
}

} // namespace

void NodeTable::Reserve(std::size_t count)
{
    std::size_t size = m_slots.empty() ? kLeast : m_slots.size();
    while (!HasRoom(size, count))
    {
        size *= 2;
    }
    if (size > m_slots.size())
    {
        Grow(size);
    }
}

void NodeTable::Grow(std::size_t size)
{
    std::vector<Slot> before(size, Slot{0, None});
    before.swap(m_slots);
    for (const Slot& slot : before)
    {
        if (slot.number != None)
        {
            Put(slot);
        }
    }
}

void NodeTable::Put(Slot slot)
{
    std::size_t at = HomeOf(slot.tag);
    while (m_slots[at].number != None)
    {
        at = (at + 1) & (m_slots.size() - 1);
    }
    m_slots[at] = slot;
}

void NodeTable::Insert(const Node* node, std::uint32_t number)
{
    Reserve(m_count + 1);
    Put({TagOf(node), number});
    ++m_count;
}

std::size_t NodeTable::PlaceOf(const Node* node, std::uint32_t number) const
{
    std::size_t at = HomeOf(TagOf(node));
    while (m_slots[at].number != number)
    {
        at = (at + 1) & (m_slots.size() - 1);
    }
    return at;
}

void NodeTable::Erase(const Node* node, std::uint32_t number)
{
    std::size_t gap = PlaceOf(node, number);
    const std::size_t last = m_slots.size() - 1;
    // What follows moves up as far as its home, so that no search ends at the gap.
    for (std::size_t at = (gap + 1) & last; m_slots[at].number != None; at = (at + 1) & last)
    {
        const std::size_t home = HomeOf(m_slots[at].tag);
        if (((at - home) & last) >= ((at - gap) & last))
        {
            m_slots[gap] = m_slots[at];
            gap = at;
        }
    }
    m_slots[gap].number = None;
    --m_count;
}

void NodeTable::Clear()
{
    m_slots.clear();
    m_count = 0;
}

} // namespace OV::Host::Detail
