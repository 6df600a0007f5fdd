#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace OV::Host::Detail
{

/// A number that stands for values in a row: the same for the same values, and another for others
/// but for one case in 2 to the power of 64.
class Fingerprint
{
public:
    template <class Value>
    void Add(const Value& value)
    {
        m_state = Mixed(m_state + WordOf(value));
    }

    /// Many values at once, none of which waits for the one before: a third of the steps, and side by side.
    template <std::size_t Count>
    void AddAll(const std::array<std::uint64_t, Count>& words)
    {
        Add(SumOf(words, std::make_index_sequence<Count>()));
    }

    template <class Value>
    static std::uint64_t WordOf(const Value& value)
    {
        static_assert(sizeof(Value) <= sizeof(std::uint64_t));
        std::uint64_t word = 0;
        std::memcpy(&word, &value, sizeof(Value));
        return word;
    }

    std::uint64_t Get() const { return m_state; }

private:
    /// The finalizer of a generator of good repute, over the sum of what was and what comes.
    static constexpr std::uint64_t Mixed(std::uint64_t sum)
    {
        std::uint64_t word = sum + 0x9E3779B97F4A7C15u;
        word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9u;
        word = (word ^ (word >> 27)) * 0x94D049BB133111EBu;
        return word ^ (word >> 31);
    }

    template <std::size_t Count, std::size_t... Places>
    static std::uint64_t SumOf(const std::array<std::uint64_t, Count>& words, std::index_sequence<Places...>)
    {
        return (Product<Places>(words[Places]) + ...);
    }

    /// The factor is another one at each place, so that changes don't make up for each other.
    template <std::size_t Place>
    static std::uint64_t Product(std::uint64_t word)
    {
        constexpr std::uint64_t factor = Mixed(Place) | 1u;
        // High bits go down first, since a product hands them on upwards alone.
        return (word ^ (word >> 32)) * factor;
    }

    std::uint64_t m_state = 0;
};

} // namespace OV::Host::Detail
