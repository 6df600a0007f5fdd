#pragma once

#include "orvane_host/output/WritePNG.h"
#include "tests/support/Picture.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace OV::Test
{

/// A direction of the world with Y up, and what a picture of the surroundings has there.
struct SeenSide
{
    const char* name;
    float x, y, z;
    Pixel color;
};

/// In the order of the sides of a cube.
inline const std::array<SeenSide, 6> kSides = {{
    {"right", 1, 0, 0, {200, 30, 20}},
    {"left", -1, 0, 0, {20, 180, 170}},
    {"top", 0, 1, 0, {240, 240, 250}},
    {"bottom", 0, -1, 0, {60, 90, 30}},
    {"front", 0, 0, -1, {30, 60, 210}},
    {"back", 0, 0, 1, {230, 210, 40}},
}};

inline void PaintFile(const std::string& path, int width, int height, const std::function<Pixel(int, int)>& paint)
{
    std::vector<unsigned char> rgba;
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            const Pixel pixel = paint(x, y);
            for (const int channel : {pixel.r, pixel.g, pixel.b, 255})
            {
                rgba.push_back(static_cast<unsigned char>(channel));
            }
        }
    }
    std::string error;
    ASSERT_TRUE(Host::WritePNG(std::move(rgba), width, height, path, Host::PNGAlpha::Drop, error)) << error;
}

/// A picture in all directions: each has the colour of the nearest side.
inline void PaintPanorama(const std::string& path, int width)
{
    const double pi = std::acos(-1.0);
    PaintFile(path, width, width / 2, [&](int column, int row) {
        const double turn = ((column + 0.5) / width - 0.5) * 2.0 * pi;
        const double rise = (0.5 - (row + 0.5) / (width / 2)) * pi;
        const double x = std::cos(rise) * std::sin(turn);
        const double y = std::sin(rise);
        const double z = -std::cos(rise) * std::cos(turn);
        const SeenSide* nearest = &kSides[0];
        double most = -2.0;
        for (const SeenSide& side : kSides)
        {
            const double cosine = x * side.x + y * side.y + z * side.z;
            if (cosine > most)
            {
                most = cosine;
                nearest = &side;
            }
        }
        return nearest->color;
    });
}

} // namespace OV::Test
