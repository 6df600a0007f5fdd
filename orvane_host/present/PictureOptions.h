#pragma once

#include "orvane/math/Color.h"

#include <functional>

namespace OV::Host
{

/// What a picture that Presentation writes is like, apart from what it shows.
struct PictureOptions
{
    /// In pixels, 1 to PictureFormat::MostPixels each. Beyond what GL draws at once the picture is drawn
    /// in tiles.
    int width = 1280;
    int height = 720;

    /// Pixels for each that settings count, such as those of a line's width; above 0.
    float pixelRatio = 1.0f;

    /// Leaves the background out and tells in straight alpha how much of a pixel is covered. Fog still
    /// fades to the background's colour. Not with a sky, which covers all. Draws everything twice.
    bool transparent = false;

    /// A channel, 8 or 16. With Antialiasing::Filter and where ambient occlusion is drawn there is no more
    /// in 16 bits than in 8.
    int bits = 8;

    /// How large the picture is in print: pixels a metre; 0 says nothing of it.
    double pixelsPerMetre = 0.0;

    /// Longest side of a tile in pixels; 0 takes as many as suit the memory. Overlaps come on top where
    /// that is too few for them.
    int longestTile = 0;

    /// Told how much is drawn, 0 to 100; false ends the work without a file.
    std::function<bool(float percent)> progress;
};

/// What was noticed while a picture was drawn.
struct PictureFacts
{
    int tiles = 0;
    /// Whether nobody would tell any pixel from the first one, and the colour of that.
    bool isOneColor = true;
    Color color{0.0f, 0.0f, 0.0f, 0.0f};
};

} // namespace OV::Host
