#pragma once

#include <cstddef>

namespace OV::Test
{

/// How often this program has taken from the heap by any form of new so far.
std::size_t HeapCount();

/// Bytes that it holds by new now.
std::size_t HeapBytes();

/// Lets new give so many blocks more and none after them, for the length of a scope. What a
/// recorder of GL calls takes for itself is not counted and never refused.
class HeapRefusal
{
public:
    explicit HeapRefusal(std::size_t blocks);
    ~HeapRefusal();
    HeapRefusal(const HeapRefusal&) = delete;
    HeapRefusal& operator=(const HeapRefusal&) = delete;
};

} // namespace OV::Test
