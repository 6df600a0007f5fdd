#pragma once

#include <cstddef>

namespace OV::Test
{

/// How often this program has taken from the heap by any form of new so far.
std::size_t HeapCount();

/// Bytes that it holds by new now.
std::size_t HeapBytes();

} // namespace OV::Test
