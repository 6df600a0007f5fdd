#pragma once

namespace OV::Test
{

/// Whether this build watches for faults of memory, which takes many times as long.
#ifdef __SANITIZE_ADDRESS__
inline constexpr bool isSanitized = true;
#else
inline constexpr bool isSanitized = false;
#endif

} // namespace OV::Test
