#include "tests/support/HeapCount.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <new>

namespace OV::Test
{
namespace
{

TEST(HeapCount, SeesEveryFormOfNew)
{
    const std::size_t count = HeapCount();
    const std::size_t bytes = HeapBytes();
    // Calls, since a compiler may leave out new with its delete.
    void* const one = ::operator new(10);
    EXPECT_EQ(HeapCount(), count + 1);
    void* const some = ::operator new[](20);
    EXPECT_EQ(HeapCount(), count + 2);
    void* const oneOrNone = ::operator new(30, std::nothrow);
    EXPECT_EQ(HeapCount(), count + 3);
    void* const someOrNone = ::operator new[](40, std::nothrow);
    EXPECT_EQ(HeapCount(), count + 4);
    EXPECT_GE(HeapBytes(), bytes + 100);

    ::operator delete(one);
    ::operator delete[](some);
    ::operator delete(oneOrNone, std::nothrow);
    ::operator delete[](someOrNone, std::nothrow);
    EXPECT_EQ(HeapCount(), count + 4) << "giving back is not counted";
    EXPECT_EQ(HeapBytes(), bytes);
}

} // namespace
} // namespace OV::Test
