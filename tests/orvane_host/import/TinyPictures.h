#pragma once

#include "tests/imaging/PngFile.h"

#include <array>
#include <functional>

namespace OV::Test
{

/// R, G, B, A.
using Colour = std::array<unsigned char, 4>;

/// What a normal map has where the surface is level.
inline constexpr Colour kLevel = {128, 128, 255, 255};

/// A PNG of 8 bits that is painted pixel by pixel, from the top left on.
inline Bytes Painted(int width, int height, const std::function<Colour(int x, int y)>& paint)
{
    PngFile png;
    png.width = width;
    png.height = height;
    for (int y = 0; y < height; ++y)
    {
        Bytes row;
        for (int x = 0; x < width; ++x)
        {
            const Colour colour = paint(x, y);
            row.insert(row.end(), colour.begin(), colour.end());
        }
        png.rows.push_back(row);
    }
    return png.Write();
}

/// A PNG of 8 x 8 in one colour.
inline Bytes Plain(const Colour& colour)
{
    return Painted(8, 8, [colour](int, int) { return colour; });
}

} // namespace OV::Test
