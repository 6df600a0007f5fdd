#pragma once

#include <cstddef>
#include <cstring>

namespace OV::Test
{

/// Place of a virtual function in its class's table as a host's compiler numbers it, the
/// destructor at 0; -1 for a function that is not virtual.
///
/// Reads member pointers as the Itanium C++ ABI lays them out on x86-64: one more than the
/// byte offset in the table, where the destructor takes two places.
template <class Member>
int VirtualSlot(Member member)
{
    static_assert(sizeof(Member) == 2 * sizeof(std::ptrdiff_t), "a pointer to a member function");
    std::ptrdiff_t first = 0;
    std::memcpy(&first, &member, sizeof(first));
    if (first % 2 == 0)
    {
        return -1;
    }
    return static_cast<int>((first - 1) / static_cast<std::ptrdiff_t>(sizeof(void*))) - 1;
}

}  // namespace OV::Test
