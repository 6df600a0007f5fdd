#include "tests/support/HeapCount.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

// On their own: where a compiler sees them beside a caller it warns of free after new.

namespace
{

std::atomic<std::size_t> g_count{0};
std::atomic<std::size_t> g_bytes{0};

void* TryAllocate(std::size_t size)
{
    ++g_count;
    void* const block = std::malloc(size ? size : 1);
    g_bytes += malloc_usable_size(block);
    return block;
}

void* Allocate(std::size_t size)
{
    if (void* const block = TryAllocate(size))
    {
        return block;
    }
    throw std::bad_alloc();
}

void Free(void* block)
{
    g_bytes -= malloc_usable_size(block);
    std::free(block);
}

} // namespace

// Each form by itself: those of the address sanitizer do not come to the plain one, as those
// of the standard library do.
void* operator new(std::size_t size)
{
    return Allocate(size);
}

void* operator new[](std::size_t size)
{
    return Allocate(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return TryAllocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return TryAllocate(size);
}

void operator delete(void* block) noexcept
{
    Free(block);
}

void operator delete[](void* block) noexcept
{
    Free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    Free(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    Free(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept
{
    Free(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept
{
    Free(block);
}

std::size_t OV::Test::HeapCount()
{
    return g_count;
}

std::size_t OV::Test::HeapBytes()
{
    return g_bytes;
}
