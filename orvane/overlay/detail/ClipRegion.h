#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace OV::Detail
{

/// The far edge of a region of pixels, as far as an int reaches.
inline int RegionEnd(int begin, int length)
{
    const std::int64_t end = std::int64_t(begin) + length;
    return static_cast<int>(std::clamp<std::int64_t>(end, std::numeric_limits<int>::min(),
                                                     std::numeric_limits<int>::max()));
}

} // namespace OV::Detail
