#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

namespace OV::Test
{

/// Forbids every page that lies wholly between two addresses.
/// @return how many bytes that were.
inline std::size_t Forbid(const void* from, const void* to)
{
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    auto low = reinterpret_cast<std::uintptr_t>(from);
    auto high = reinterpret_cast<std::uintptr_t>(to);
    if (low > high)
    {
        std::swap(low, high);
    }
    low = (low + page - 1) / page * page;
    high = high / page * page;
    if (low >= high || mprotect(reinterpret_cast<void*>(low), high - low, PROT_NONE) != 0)
    {
        return 0;
    }
    return high - low;
}

/// Expects work to end well in a process of its own in which prepare has forbidden memory.
/// What looks at every entry of a list dies of the entries that it has no business with: that
/// counts steps without a clock.
///
/// @param prepare returns how many bytes it forbade.
template <class Prepare, class Work>
void ExpectUntouched(Prepare prepare, Work work)
{
    EXPECT_EXIT(
        {
            if (prepare() == 0)
            {
                _exit(2);
            }
            work();
            // Without destructors, which may look at everything.
            _exit(0);
        },
        ::testing::ExitedWithCode(0), "");
}

} // namespace OV::Test
