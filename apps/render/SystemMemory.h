#pragma once

#include <cstdint>

namespace OV::RenderApp
{

/// Bytes of memory that the machine can still give without swapping; 0 when it does not say.
std::uint64_t AvailableMemory();

} // namespace OV::RenderApp
