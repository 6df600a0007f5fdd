#pragma once

#include <cstddef>
#include <cstdint>

namespace OV::detail
{

/// The most that a block may promise, by its own bytes. Deflate makes at most 258 bytes of 2
/// bits: more than that is a lie which would cost its memory before it shows.
constexpr std::uint64_t kLargestExpansion = 1032;

/// Bytes of the pixels of an Image of this size, whose sides have at most 32 bits.
constexpr std::uint64_t PictureBytes(std::uint64_t width, std::uint64_t height)
{
    // The largest sides and the 4 bytes of a pixel do not fit.
    return width * height > (UINT64_MAX >> 2) ? UINT64_MAX : width * height * 4;
}

}  // namespace OV::detail
