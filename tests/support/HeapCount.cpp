#include "tests/support/HeapCount.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace OV::Test
{

/// Of the recorder, in programs that have one.
__attribute__((weak)) bool InsideGLCall();

} // namespace OV::Test

// On their own: where a compiler sees them beside a caller it warns of free after new.

namespace
{

std::atomic<std::size_t> g_count{0};
std::atomic<std::size_t> g_bytes{0};

/// Blocks still to be given while new is refused; all of them while not.
bool g_refusing = false;
std::size_t g_blocksLeft = 0;

bool IsRefused()
{
    if (!g_refusing || (OV::Test::InsideGLCall && OV::Test::InsideGLCall()))
    {
        return false;
    }
    if (g_blocksLeft == 0)
    {
        return true;
    }
    --g_blocksLeft;
    return false;
}

void* TryAllocate(std::size_t size)
{
    ++g_count;
    if (IsRefused())
    {
        return nullptr;
    }
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

OV::Test::HeapRefusal::HeapRefusal(std::size_t blocks)
{
    g_blocksLeft = blocks;
    g_refusing = true;
}

OV::Test::HeapRefusal::~HeapRefusal()
{
    g_refusing = false;
}
