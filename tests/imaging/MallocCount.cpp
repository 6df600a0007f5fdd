#include "tests/imaging/MallocCount.h"

#include <atomic>

namespace
{

// Asked for before the first constructor runs.
std::atomic<std::size_t> g_bytes{0};

}  // namespace

std::size_t OV::Test::MallocBytes()
{
    return g_bytes;
}

#ifdef __SANITIZE_ADDRESS__

// Of the sanitizer's interface, whose header does not come with every compiler.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void*, std::size_t),
                                                         void (*freed)(const volatile void*));

namespace
{

// The sanitizer has an allocator of its own, which is not to be replaced.
const int g_hooked = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t size) { g_bytes += size; }, [](const volatile void*) {});

}  // namespace

#else

extern "C"
{

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

__attribute__((visibility("default"))) void* malloc(std::size_t size)
{
    g_bytes += size;
    return __libc_malloc(size);
}

__attribute__((visibility("default"))) void* calloc(std::size_t count, std::size_t size)
{
    g_bytes += count * size;
    return __libc_calloc(count, size);
}

__attribute__((visibility("default"))) void* realloc(void* block, std::size_t size)
{
    g_bytes += size;
    return __libc_realloc(block, size);
}

}  // extern "C"

#endif
