#pragma once

#include <cstddef>
#include <cstdint>

namespace OV::detail
{

/// Asks for the cache lines of some bytes ahead of their use. Meshes, nodes and their render
/// data lie scattered over the heap, and a frame walks all of them: waiting for memory would
/// cost more than all the rest of it. Reads nothing, so that any address will do.
inline void Prefetch(const void* begin, const void* end)
{
    constexpr std::ptrdiff_t line = 64;
    for (const char* byte = static_cast<const char*>(begin); byte < end; byte += line)
    {
        __builtin_prefetch(byte);
    }
    // The last line, where the first one was not met at its beginning.
    __builtin_prefetch(static_cast<const char*>(end) - 1);
}

/// The same for the beginning of an object alone.
template <class T>
void PrefetchBegin(const T* object)
{
    __builtin_prefetch(object);
}

/// The same for what stands first in an object, two lines of it.
template <class T>
void PrefetchHead(const T* object)
{
    constexpr std::size_t line = 64;
    __builtin_prefetch(object);
    __builtin_prefetch(reinterpret_cast<const char*>(object) + line);
}

/// The same for some lines, beginning with an object.
template <std::size_t Lines>
void PrefetchLines(const void* object)
{
    constexpr std::size_t line = 64;
    // As a number: null is as good as any.
    const auto begin = reinterpret_cast<std::uintptr_t>(object);
    for (std::size_t i = 0; i < Lines; ++i)
    {
        __builtin_prefetch(reinterpret_cast<const void*>(begin + i * line));
    }
}

/// The same for the end of an object alone.
template <class T>
void PrefetchEnd(const T* object)
{
    __builtin_prefetch(reinterpret_cast<const char*>(object + 1) - sizeof(void*));
}

/// The same for a whole object.
template <class T>
void Prefetch(const T* object)
{
    Prefetch(object, object + 1);
}

} // namespace OV::detail
