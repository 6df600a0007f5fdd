#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace OV
{

class Node;

} // namespace OV

namespace OV::Host::Detail
{

/// Finds a number by the address of a node: 8 bytes an entry and what is empty, in one array.
class NodeTable
{
public:
    static constexpr std::uint32_t None = ~std::uint32_t{0};

    /// @return None where there is none.
    /// @param isOf called with a number: whether that belongs to the node.
    template <class IsOf>
    std::uint32_t Find(const Node* node, IsOf isOf) const
    {
        if (m_slots.empty())
        {
            return None;
        }
        const std::uint32_t tag = TagOf(node);
        for (std::size_t at = HomeOf(tag); m_slots[at].number != None; at = (at + 1) & (m_slots.size() - 1))
        {
            if (m_slots[at].tag == tag && isOf(m_slots[at].number))
            {
                return m_slots[at].number;
            }
        }
        return None;
    }

    /// Asks the processor for what finding a node reads first.
    void FetchAhead(const Node* node) const
    {
        if (!m_slots.empty())
        {
            __builtin_prefetch(&m_slots[HomeOf(TagOf(node))]);
        }
    }

    /// The number that finding a node looks at first, which may be that of another node; None where there is none.
    std::uint32_t Guess(const Node* node) const
    {
        return m_slots.empty() ? None : m_slots[HomeOf(TagOf(node))].number;
    }

    /// The node must not have one yet.
    void Insert(const Node* node, std::uint32_t number);

    /// The node must have that number.
    void Erase(const Node* node, std::uint32_t number);

    void Clear();

private:
    struct Slot
    {
        std::uint32_t tag;
        std::uint32_t number;
    };

    static std::uint32_t TagOf(const Node* node)
    {
        // Addresses are multiples; the product carries what differs into the bits that count.
        auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(node));
        bits = (bits ^ bits >> 32) * 0x9E3779B97F4A7C15ull;
        return static_cast<std::uint32_t>(bits >> 32);
    }

    std::size_t HomeOf(std::uint32_t tag) const { return tag & (m_slots.size() - 1); }
    std::size_t PlaceOf(const Node* node, std::uint32_t number) const;
    void Reserve(std::size_t count);
    void Grow(std::size_t size);
    void Put(Slot slot);

    std::vector<Slot> m_slots; ///< none, or a power of two
    std::size_t m_count = 0;
};

} // namespace OV::Host::Detail
