#include "tests/apps/render/RenderTool.h"
#include "tests/support/GLFixture.h"
#include "tests/support/Golden.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

using namespace OV::Test;

namespace
{

constexpr Pixel White{255, 255, 255, 255};

const char* const kModes[] = {"none", "msaa", "fxaa", "ssaa"};

struct RenderScreen : RenderTool
{
    /// Front view of the cube, whose face is 40 pixels wide in the middle of 90 by 60: its rims lie
    /// between pixels.
    Picture Front(std::vector<std::string> options) const
    {
        options.insert(options.end(),
                       {"--size", "90x60", "--eye", "0,0,5", "--target", "0,0,0", "--ortho", "--fov", "33.398488"});
        return Render(WriteCube(), options);
    }

    /// A floor and two walls that meet, from a corner.
    std::string WriteRoom() const
    {
        return WriteObj("room.obj", "v -1 0 -1\nv 1 0 -1\nv 1 0 1\nv -1 0 1\nv -1 1 -1\nv 1 1 -1\nv -1 1 1\n"
                                    "usemtl yellow\no floor\nf 4 3 2 1\nusemtl cyan\no back\nf 1 2 6 5\n"
                                    "usemtl magenta\no side\nf 4 1 5 7\n");
    }

    /// Runs the tool as it is typed, with a picture that is expected.
    Picture Type(const std::vector<std::string>& arguments) const
    {
        const ProcessResult result = Run(arguments);
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
        return LoadPicture(folder.Path("typed.png"));
    }
};

std::size_t DifferingPixels(const Picture& left, const Picture& right)
{
    std::size_t count = 0;
    for (int y = 0; y < left.GetHeight(); ++y)
    {
        for (int x = 0; x < left.GetWidth(); ++x)
        {
            count += left.At(x, y) != right.At(x, y) ? 1 : 0;
        }
    }
    return count;
}

/// Each pixel the mean of four.
Picture Halved(const Picture& from)
{
    const int width = from.GetWidth() / 2;
    const int height = from.GetHeight() / 2;
    Picture half(width, height, std::vector<unsigned char>(static_cast<std::size_t>(width * height) * 4));
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            int sum[3] = {0, 0, 0};
            for (const auto& [right, up] : {std::pair(0, 0), std::pair(1, 0), std::pair(0, 1), std::pair(1, 1)})
            {
                const Pixel pixel = from.At(2 * x + right, 2 * y + up);
                sum[0] += pixel.r;
                sum[1] += pixel.g;
                sum[2] += pixel.b;
            }
            half.Set(x, y, {(sum[0] + 2) / 4, (sum[1] + 2) / 4, (sum[2] + 2) / 4, 255});
        }
    }
    return half;
}

} // namespace

TEST_F(RenderScreen, EdgesStandAloneOrWithTheirOpacityWhereverTheyStand)
{
    const std::string cube = WriteCube();
    const std::string out = folder.Path("typed.png");
    const Picture plain = Type({cube, "-o", out, "--size", "90x60"});
    const Picture edges = Type({cube, "-o", out, "--size", "90x60", "--edges"});
    EXPECT_NE(edges, plain);
    const std::vector<std::vector<std::string>> sameCommands = {
        {"--edges", cube, "-o", out, "--size", "90x60"},
        {cube, "--edges", "-o", out, "--size", "90x60"},
        {cube, "-o", out, "--size", "90x60", "--edges", "0.5"},
        {"--edges", "0.5", cube, "-o", out, "--size", "90x60"},
        {"--edges=0.5", cube, "-o", out, "--size", "90x60"},
        {cube, "-o", out, "--size", "90x60", "--edges", "5e-1"},
        {cube, "-o", out, "--size", "90x60", "--edges", "--edge-color", "000000"},
    };
    for (const std::vector<std::string>& command : sameCommands)
    {
        EXPECT_EQ(Type(command), edges) << command[0] << ' ' << command.back();
    }
    EXPECT_NE(Type({cube, "-o", out, "--size", "90x60", "--edges", "1"}), edges);
    EXPECT_NE(Type({cube, "-o", out, "--size", "90x60", "--edges=0.25"}), edges);
    EXPECT_EQ(Type({cube, "-o", out, "--size", "90x60", "--edges", "0"}), plain);
}

TEST_F(RenderScreen, EdgesHaveTheirOpacityAndColourAndPartTheModelFromTheBackground)
{
    const Picture plain = Front({"--aa", "none"});
    const Picture red = Front({"--aa", "none", "--edges", "1", "--edge-color", "C00000"});
    const Picture half = Front({"--aa", "none", "--edges"});
    // To the left of the face, which begins at 25; two neighbours differ at its right corners.
    EXPECT_EQ(plain.At(24, 30), White);
    EXPECT_LE(ChannelDifference(red.At(24, 30), {224, 128, 128, 255}), 1) << red.At(24, 30);
    EXPECT_LE(ChannelDifference(half.At(24, 30), {191, 191, 191, 255}), 1) << half.At(24, 30);
    EXPECT_EQ(red.At(64, 49), (Pixel{192, 0, 0, 255}));
    EXPECT_EQ(red.At(64, 10), (Pixel{192, 0, 0, 255}));
    // Nothing but the rim of the face: the cube is one node.
    EXPECT_EQ(DifferingPixels(red, plain), 40u * 4u + 40u + 40u - 2u);
    for (int y = 12; y < 48; ++y)
    {
        EXPECT_EQ(red.At(45, y), plain.At(45, y));
    }
}

TEST_F(RenderScreen, EdgesPartNodesOfOneColour)
{
    const std::string two = WriteObj("two.obj", "v -2 -1 0\nv 0 -1 0\nv 0 1 0\nv -2 1 0\nv 2 -1 0\nv 2 1 0\n"
                                                "o left\nf 1 2 3 4\no right\nf 2 5 6 3\n");
    const std::vector<std::string> view = {"--aa", "none", "--size", "101x101", "--eye", "0,0,10", "--ortho"};
    std::vector<std::string> edges = view;
    edges.push_back("--edges");
    const Picture plain = Render(two, view);
    const Picture parted = Render(two, edges);
    int changed = 0;
    for (int x = 45; x < 56; ++x)
    {
        changed += parted.At(x, 50) != plain.At(x, 50) ? 1 : 0;
    }
    EXPECT_EQ(changed, 1) << "a line of one pixel between the two";
}

TEST_F(RenderScreen, OcclusionDarkensCornersAndNotTheBackground)
{
    const std::string room = WriteRoom();
    const std::vector<std::string> view = {"--aa", "none", "--size", "160x120"};
    std::vector<std::string> dark = view;
    dark.push_back("--ao");
    const Picture plain = Render(room, view);
    const Picture picture = Render(room, dark);
    int darker = 0;
    for (int y = 0; y < 120; ++y)
    {
        for (int x = 0; x < 160; ++x)
        {
            const Pixel before = plain.At(x, y);
            const Pixel after = picture.At(x, y);
            if (before == White)
            {
                ASSERT_EQ(after, White) << x << ", " << y;
            }
            ASSERT_LE(after.r, before.r) << x << ", " << y;
            ASSERT_LE(after.g, before.g) << x << ", " << y;
            ASSERT_LE(after.b, before.b) << x << ", " << y;
            darker += before.r + before.g + before.b - after.r - after.g - after.b > 60 ? 1 : 0;
        }
    }
    EXPECT_GT(darker, 100);
}

TEST_F(RenderScreen, EveryModeOfAntialiasingDrawsTheSceneItsWay)
{
    const std::string room = WriteRoom();
    std::vector<Picture> pictures;
    for (const char* mode : kModes)
    {
        pictures.push_back(Render(room, {"--aa", mode, "--size", "160x120"}));
        EXPECT_GT(pictures.back().Count(White), 160 * 120 / 4) << mode;
        EXPECT_LT(pictures.back().Count(White), 160 * 120 * 3 / 4) << mode;
    }
    const Picture& hard = pictures[0];
    EXPECT_EQ(Render(room, {"--size", "160x120", "--samples", "4"}), pictures[1]) << "msaa is the usual one";
    EXPECT_EQ(Render(room, {"--size", "160x120", "--samples", "0"}), hard);
    for (std::size_t first = 0; first < pictures.size(); ++first)
    {
        for (std::size_t second = first + 1; second < pictures.size(); ++second)
        {
            EXPECT_NE(pictures[first], pictures[second]) << kModes[first] << " and " << kModes[second];
        }
        // They differ along rims alone: nearly all of the picture is the same but for rounding.
        int apart = 0;
        for (int y = 0; y < 120; ++y)
        {
            for (int x = 0; x < 160; ++x)
            {
                apart += ChannelDifference(pictures[first].At(x, y), hard.At(x, y)) > 2 ? 1 : 0;
            }
        }
        EXPECT_LT(apart, 160 * 120 / 12) << kModes[first];
    }
}

TEST_F(RenderScreen, TheFilterLeavesFlatAreasUntouched)
{
    const Picture hard = Front({"--aa", "none"});
    const Picture filtered = Front({"--aa", "fxaa"});
    for (int y = 0; y < 60; ++y)
    {
        for (int x = 0; x < 90; ++x)
        {
            const bool inside = x >= 28 && x < 62 && y >= 13 && y < 47;
            const bool outside = x < 22 || x >= 68 || y < 7 || y >= 53;
            if (inside || outside)
            {
                ASSERT_EQ(filtered.At(x, y), hard.At(x, y)) << x << ", " << y;
            }
        }
    }
}

TEST_F(RenderScreen, ASupersampledPictureIsOneOfTwiceTheSizeReduced)
{
    const std::string house = TestModel("IFC/AC14-FZK-Haus.ifc");
    for (const std::vector<std::string>& view :
         {std::vector<std::string>{}, std::vector<std::string>{"--ortho", "--view", "front", "--sky"}})
    {
        std::vector<std::string> small = {"--aa", "ssaa", "--size", "160x90"};
        std::vector<std::string> large = {"--aa", "none", "--size", "320x180"};
        small.insert(small.end(), view.begin(), view.end());
        large.insert(large.end(), view.begin(), view.end());
        const Picture supersampled = Render(house, small);
        EXPECT_LE(Compare(supersampled, Halved(Render(house, large))).largestChannelDifference, 2);
        EXPECT_GT(DifferingPixels(supersampled, Render(house, {"--aa", "none", "--size", "160x90"})), 500u);
    }
}

TEST_F(RenderScreen, LinesDashesAndSheetAreOfTheirSizeAlsoInASupersampledPicture)
{
    const std::vector<std::string> options = {"--lines",     "--line-width", "2",     "--dash", "5",
                                              "--scale-bar", "--title",      "Cube", "--north", "0"};
    std::vector<std::string> hard = options;
    hard.insert(hard.end(), {"--aa", "none"});
    std::vector<std::string> fine = options;
    fine.insert(fine.end(), {"--aa", "ssaa"});
    const Picture reference = Front(hard);
    const Picture picture = Front(fine);
    // Along the left side of the face, where the dashes run.
    const auto isDark = [](const Pixel& pixel) { return pixel.r + pixel.g + pixel.b < 384; };
    int apart = 0;
    for (int y = 12; y < 48; ++y)
    {
        for (const int x : {22, 23, 24, 25, 26, 27})
        {
            apart += isDark(reference.At(x, y)) != isDark(picture.At(x, y)) ? 1 : 0;
        }
    }
    EXPECT_LE(apart, 4);
    // The sheet lies over the picture and is drawn once it has its size.
    int ink = 0;
    for (int y = 0; y < 8; ++y)
    {
        for (int x = 0; x < 90; ++x)
        {
            ASSERT_EQ(picture.At(x, y), reference.At(x, y)) << x << ", " << y;
            ink += isDark(picture.At(x, y)) ? 1 : 0;
        }
    }
    EXPECT_GT(ink, 10);
}

TEST_F(RenderScreen, EachWithEachGivesAPictureOfItsOwnTwice)
{
    const std::string room = WriteRoom();
    for (const char* mode : kModes)
    {
        std::vector<Picture> pictures;
        for (const std::vector<std::string>& stages :
             {std::vector<std::string>{}, {"--edges"}, {"--ao"}, {"--edges", "--ao"}, {"--sky"},
              {"--sky", "--edges", "1", "--ao", "--look", "phong", "--lines"}})
        {
            // At eye level, where there is sky.
            std::vector<std::string> options = {"--aa", mode, "--size", "120x90", "--eye", "3,0.8,3"};
            options.insert(options.end(), stages.begin(), stages.end());
            pictures.push_back(Render(room, options));
            for (std::size_t i = 0; i + 1 < pictures.size(); ++i)
            {
                EXPECT_GT(DifferingPixels(pictures[i], pictures.back()), 50u) << mode << ' ' << i;
            }
            options.insert(options.end(), {"--frames", "2"});
            EXPECT_EQ(Render(room, options), pictures.back()) << mode << ": the second frame";
        }
    }
}

TEST_F(RenderScreen, WhatIsTooLargeForTwiceTheSizeIsDrawnInTiles)
{
    const int largest = GLFixture::Context().GetMaxWidth() / 2;
    const std::string square = WriteSquare();
    for (const int width : {largest, largest + 1})
    {
        EXPECT_EQ(Render(square, {"--aa", "ssaa", "--size", std::to_string(width) + "x1", "--quiet"}).GetWidth(), width);
    }
}
