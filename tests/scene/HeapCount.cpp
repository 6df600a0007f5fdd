#include "tests/scene/HeapCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

// On their own: where a compiler sees them beside a caller it warns of free after new.

namespace
{

std::atomic<std::size_t> g_count{0};

} // namespace

// The other forms come here.
void* operator new(std::size_t size)
{
    ++g_count;
    if (void* const block = std::malloc(size ? size : 1))
    {
        return block;
    }
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

std::size_t OV::Test::HeapCount()
{
    return g_count;
}
