#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

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

/// Forbids what lies between the objects of a list that were made one right after the other, as far
/// as no others came to lie between them: of the longest such run.
template <class T>
std::size_t ForbidRun(const std::vector<T*>& objects, std::size_t first, std::size_t last)
{
    const auto address = [&](std::size_t i) { return reinterpret_cast<std::uintptr_t>(objects[i]); };
    std::size_t longest = 0;
    std::size_t begin = first;
    std::size_t run = first;
    for (std::size_t i = first + 1; i < last; ++i)
    {
        run = address(i) > address(i - 1) && address(i) - address(i - 1) < 2 * sizeof(T) ? run : i;
        if (i - run > longest)
        {
            longest = i - run;
            begin = run;
        }
    }
    return Forbid(objects[begin], objects[begin + longest]);
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
