#pragma once

#include <cstdint>
#include <cstring>

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
        static_assert(sizeof(Value) <= sizeof(std::uint64_t));
        std::uint64_t word = 0;
        std::memcpy(&word, &value, sizeof(Value));
        // The finalizer of a generator of good repute, over the sum of what was and what comes.
        word += m_state + 0x9E3779B97F4A7C15u;
        word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9u;
        word = (word ^ (word >> 27)) * 0x94D049BB133111EBu;
        m_state = word ^ (word >> 31);
    }

    std::uint64_t Get() const { return m_state; }

private:
    std::uint64_t m_state = 0;
};

} // namespace OV::Host::Detail
