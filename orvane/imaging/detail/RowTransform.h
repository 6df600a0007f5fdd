#pragma once

#include <cstddef>
#include <functional>

namespace OV::detail
{

/// Turns rows of raw pixels into rows of RGBA: (source, destination, width, rows). Both sides
/// have no padding and do not overlap.
using RowTransform = std::function<void(unsigned char*, unsigned char*, std::size_t, std::size_t)>;

/// Bytes that a pixel of the source takes.
constexpr std::size_t SourceBytes(bool sourceIsRGB)
{
    return sourceIsRGB ? 3 : 4;
}

/// The transform for a kind of source.
/// @param swapRedBlue exchanges bytes 0 and 2 of each pixel.
/// @param sourceIsRGB 3 bytes a pixel, which become opaque; else 4, whose last is kept.
/// @param flipVertical the first row of the source becomes the last of the destination.
RowTransform ChooseRowTransform(bool swapRedBlue, bool sourceIsRGB, bool flipVertical);

}  // namespace OV::detail
