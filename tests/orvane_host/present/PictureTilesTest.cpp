#include "orvane_host/present/detail/PictureTiles.h"

#include "orvane_host/present/PresentationSettings.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace OV::Host::Detail
{

namespace
{

struct Case
{
    const char* label;
    PixelSize whole;
    PixelSize most;
    int margin;
};

const Case Cases[] = {
    {"fits", {640, 480}, {1024, 1024}, 20},
    {"fits to the pixel", {640, 480}, {640, 480}, 20},
    {"a pixel too wide", {641, 480}, {640, 480}, 0},
    {"both ways", {1000, 700}, {256, 192}, 20},
    {"no margin", {1000, 700}, {256, 192}, 0},
    {"tiles smaller than their margins", {300, 300}, {64, 64}, 50},
    {"one pixel", {1, 1}, {64, 64}, 3},
    {"the largest", {65535, 65535}, {4096, 512}, 30},
};

TEST(PictureTiles, KeepEveryPixelOnceAndDrawTheMarginAboutIt)
{
    for (const Case& c : Cases)
    {
        constexpr int rim = 3;
        const PictureTiles tiles(c.whole, c.most, c.margin, rim);
        int x = 0;
        for (int column = 0; column < tiles.GetColumns(); ++column)
        {
            const PictureTile tile = tiles.At(column, 0);
            EXPECT_EQ(tile.x, x) << c.label;
            x += tile.kept.width;
        }
        EXPECT_EQ(x, c.whole.width) << c.label;
        int y = 0;
        for (int row = 0; row < tiles.GetRows(); ++row)
        {
            const PictureTile tile = tiles.At(0, row);
            EXPECT_EQ(tile.y, y) << c.label;
            y += tile.kept.height;
        }
        EXPECT_EQ(y, c.whole.height) << c.label;
        for (int column = 0; column < tiles.GetColumns(); ++column)
        {
            const PictureTile tile = tiles.At(column, tiles.GetRows() - 1);
            const PicturePart& part = tile.part;
            EXPECT_EQ(part.x % PictureTiles::Step, 0) << c.label;
            EXPECT_EQ(part.y % PictureTiles::Step, 0) << c.label;
            EXPECT_TRUE(part.x == 0 || tile.x - part.x >= c.margin) << c.label;
            EXPECT_TRUE(part.y == 0 || tile.y - part.y >= c.margin) << c.label;
            const int right = part.x + part.size.width;
            EXPECT_LE(right, c.whole.width) << c.label;
            EXPECT_TRUE(right == c.whole.width || right - tile.x - tile.kept.width >= c.margin) << c.label;
            const PictureRect& needed = part.needed;
            EXPECT_EQ(needed.x, std::max(tile.x - rim, part.x)) << c.label;
            EXPECT_EQ(needed.y, std::max(tile.y - rim, part.y)) << c.label;
            EXPECT_EQ(needed.x + needed.size.width, std::min(tile.x + tile.kept.width + rim, right)) << c.label;
            EXPECT_EQ(needed.y + needed.size.height,
                      std::min(tile.y + tile.kept.height + rim, part.y + part.size.height)) << c.label;
            EXPECT_LE(part.size.width, tiles.GetLargest().width) << c.label;
            EXPECT_LE(part.size.height, tiles.GetLargest().height) << c.label;
        }
    }
}

TEST(PictureTiles, OfALargePictureTakeLittleMemory)
{
    PresentationSettings all;
    all.occlusion = true;
    all.edges.emplace();
    for (const Antialiasing way : {Antialiasing::None, Antialiasing::Multisampling, Antialiasing::Supersampling})
    {
        all.antialiasing = way;
        for (const int bits : {8, 16})
        {
            const PixelSize size = TileSizeFor(all, {65535, 65535}, 4, bits, {16384, 16384}, 0);
            EXPECT_LE(static_cast<long>(size.width) * size.height, 4L << 20);
            EXPECT_LE(65535L * size.height * bits / 2, 320L << 20);
            EXPECT_GE(size.height, PictureTiles::Step);
        }
    }
    all.antialiasing = Antialiasing::Multisampling;
    all.occlusion = true;
    all.lines.emplace();
    const PixelSize tile = TileSizeFor(all, {32000, 20000}, 4, 8, {16384, 16384}, 0);
    EXPECT_LE(static_cast<long>(tile.width) * tile.height * BytesPerPixel(all, 4, 8), 320L << 20);
    EXPECT_LE(tile.width, tile.height * 3 / 2) << "about square: little of it is overlaps";
    EXPECT_LE(tile.height, tile.width);
    all.antialiasing = Antialiasing::None;
    all.occlusion = false;
    all.shadows.emplace();
    const PixelSize shadowed = TileSizeFor(all, {32000, 20000}, 0, 8, {16384, 16384}, 0);
    EXPECT_LE(std::max(shadowed.width, shadowed.height), 1536) << "as many pixels as its map has texels for";
    EXPECT_LE(TileSizeFor(all, {17000, 20}, 0, 8, {16384, 16384}, 0).width, 1536) << "also where memory is no matter";
    all.shadows.reset();
    const PixelSize small = TileSizeFor(all, {1280, 720}, 4, 8, {16384, 16384}, 0);
    EXPECT_EQ(small.width, 1280);
    EXPECT_EQ(small.height, 720);
    EXPECT_EQ(TileSizeFor(all, {1280, 720}, 4, 8, {1024, 16384}, 0).width, 1024);
    EXPECT_EQ(TileSizeFor(all, {1280, 720}, 4, 8, {16384, 16384}, 300).width, 300);
}

} // namespace

} // namespace OV::Host::Detail
