#pragma once

#include <cstddef>

namespace OV::Test
{

/// Bytes that this program has asked the C heap for so far, whoever asked: what the libraries
/// take counts, and nothing is taken off again.
std::size_t MallocBytes();

}  // namespace OV::Test
