#pragma once

#include "tests/imaging/Bytes.h"

#include <cstddef>
#include <string>
#include <vector>

namespace OV::Test
{

/// What a PNG file holds, row by row as the file has it: packed bits, two bytes in big-endian
/// order for 16 bits a channel.
struct PngFile
{
    int width = 0;
    int height = 0;
    int bitDepth = 8;
    int colorType = 6;
    bool interlaced = false;
    Bytes palette;       ///< 3 bytes an entry, for colour type 3
    Bytes transparency;  ///< alpha of the first entries, for colour type 3
    bool transparentColor = false;  ///< marks colour 0 as transparent, for types 0 and 2
    std::vector<Bytes> rows;

    int Channels() const;
    std::size_t RowBytes() const;

    /// Sets the rows to a fixed noise, and the palette to as many entries as the depth has.
    void FillWithNoise(unsigned seed = 1);

    /// The bytes of the file, written by libpng itself.
    Bytes Write() const;
};

/// Writes the right checksum behind each chunk, as far as whole chunks go, so that damage
/// inside reaches the decoder.
void RepairChecksums(Bytes& file);

}  // namespace OV::Test
