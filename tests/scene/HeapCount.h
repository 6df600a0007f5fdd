#pragma once

#include <cstddef>

namespace OV::Test
{

/// How often this program has taken from the heap so far.
std::size_t HeapCount();

} // namespace OV::Test
