#pragma once

#include "tests/orvane_host/import/TinyPictures.h"

#include <cstdint>

namespace OV::Test
{

/// Two by two: red and green above, blue and a fourth colour below.
struct FourPixels
{
    Colour fourth = {255, 255, 255, 255};

    Colour At(int x, int y) const;
};

/// True colour with alpha, plain or run length encoded, from the bottom up or from the top down.
Bytes Tga(const FourPixels& pixels, bool isPacked = false, bool isTopDown = false);

/// Without alpha.
Bytes Bmp(const FourPixels& pixels);

/// A fourth colour that is not opaque is the transparent one.
Bytes Gif(const FourPixels& pixels);

/// Without loss.
Bytes Webp(const FourPixels& pixels);

} // namespace OV::Test
