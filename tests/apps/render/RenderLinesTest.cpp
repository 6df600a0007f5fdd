#include "tests/apps/render/RenderTool.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

using namespace OV::Test;

namespace
{

struct RenderLines : RenderTool
{
    static constexpr Pixel Black{0, 0, 0, 255};

    /// Front view of the cube, whose face is 40 pixels wide in the middle of 90 by 60.
    Picture Front(std::vector<std::string> options) const
    {
        options.insert(options.end(), {"--size", "90x60", "--eye", "0,0,5", "--target", "0,0,0", "--ortho", "--fov", "33.398488"});
        return Render(WriteCube(), options);
    }

    /// Length of the run of a colour from a pixel to the right.
    static int RunAt(const Picture& picture, int x, int y)
    {
        int length = 0;
        while (picture.At(x + length, y) == Black)
        {
            ++length;
        }
        return length;
    }
};

struct BadLines
{
    const char* label;
    std::vector<std::string> options;
    const char* named;
};

} // namespace

TEST_F(RenderLines, FrameTheFaceOfACubeAndLeaveItsInside)
{
    const Picture plain = Front({});
    const Picture drawn = Front({"--lines", "--line-width", "2"});
    EXPECT_EQ(plain.Count(Black), 0);
    EXPECT_EQ(plain.At(26, 30), plain.At(45, 30)) << "the face begins at 25";
    EXPECT_NE(plain.At(24, 30), plain.At(45, 30));
    // One pixel to each side of the rim, which lies between pixels.
    EXPECT_EQ(RunAt(drawn, 24, 30), 2);
    EXPECT_EQ(RunAt(drawn, 64, 30), 2);
    for (int y = 0; y < 60; ++y)
    {
        for (int x = 0; x < 90; ++x)
        {
            const bool inside = x >= 26 && x < 64 && y >= 11 && y < 49;
            const bool outside = x < 24 || x >= 66 || y < 9 || y >= 51;
            if (inside || outside)
            {
                ASSERT_EQ(drawn.At(x, y), plain.At(x, y)) << x << ' ' << y;
            }
        }
    }
}

TEST_F(RenderLines, WidthAndColourAreThoseAskedFor)
{
    const Picture wide = Front({"--lines", "--line-width", "8", "--line-color", "20C0FF"});
    const Pixel color{0x20, 0xC0, 0xFF, 255};
    for (int x = 21; x < 29; ++x)
    {
        EXPECT_EQ(wide.At(x, 30), color) << x;
    }
    EXPECT_NE(wide.At(20, 30), color);
    EXPECT_NE(wide.At(29, 30), color);
}

TEST_F(RenderLines, DashesLeaveGapsOfTheirLength)
{
    const Picture dashed = Front({"--lines", "--line-width", "2", "--dash", "5"});
    const Picture whole = Front({"--lines", "--line-width", "2"});
    int changes = 0;
    for (int y = 12; y < 48; ++y)
    {
        changes += (dashed.At(24, y) == Black) != (dashed.At(24, y - 1) == Black) ? 1 : 0;
    }
    EXPECT_GE(changes, 6);
    EXPECT_LE(changes, 8);
    // Half of them, and through gaps at the rim the dashes of edges farther back.
    EXPECT_GT(dashed.Count(Black), whole.Count(Black) / 2 - 10);
    EXPECT_LT(dashed.Count(Black), whole.Count(Black) * 3 / 4);
}

TEST_F(RenderLines, WhatBendsLessThanTheCreaseHasNone)
{
    const Picture plain = Front({});
    EXPECT_EQ(Front({"--lines", "--crease", "91"}), plain);
    EXPECT_NE(Front({"--lines", "--crease", "89"}), plain);
}

TEST_F(RenderLines, HiddenOnesShowOnlyWhenTheyAreShiftedForward)
{
    // Seen from a corner, the edge that goes up from the far corner lies in the middle of the top.
    const auto blackOnTop = [&](const std::vector<std::string>& more) {
        std::vector<std::string> options = {"--size", "90x60", "--view", "iso", "--ortho", "--lines", "--line-width",
                                            "4"};
        options.insert(options.end(), more.begin(), more.end());
        const Picture picture = Render(WriteCube(), options);
        int black = 0;
        for (int y = 40; y < 48; ++y)
        {
            black += picture.At(45, y) == Black ? 1 : 0;
        }
        return black;
    };
    EXPECT_EQ(blackOnTop({}), 0);
    EXPECT_EQ(blackOnTop({"--line-offset", "0"}), 0);
    EXPECT_GT(blackOnTop({"--line-offset", "400"}), 3);
    EXPECT_EQ(blackOnTop({"--line-offset", "-500"}), 0);
}

TEST_F(RenderLines, ComeOutTheSameTwice)
{
    const std::string model = TestModel("IFC/AC14-FZK-Haus.ifc");
    for (const char* file : {"first.png", "second.png"})
    {
        const ProcessResult result = Run({model, "-o", folder.Path(file), "--lines", "--dash", "4"});
        ASSERT_EQ(result.exitCode, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
    }
    EXPECT_EQ(ReadWholeFile(folder.Path("first.png")), ReadWholeFile(folder.Path("second.png")));
}

TEST_F(RenderLines, CountAsDrawsAndNotAsTriangles)
{
    const auto stats = [&](std::vector<std::string> options) {
        options.insert(options.end(), {WriteCube(), "-o", folder.Path("out.png"), "--stats"});
        return nlohmann::json::parse(Run(options).output);
    };
    const nlohmann::json plain = stats({});
    const nlohmann::json drawn = stats({"--lines"});
    EXPECT_GT(drawn["draws"].get<int>(), plain["draws"].get<int>());
    EXPECT_EQ(drawn["drawn_triangles"], plain["drawn_triangles"]);
    EXPECT_GT(drawn["bytes"].get<int>(), plain["bytes"].get<int>());
}

TEST_F(RenderLines, WrongOptionsEndWithStatusTwoAndOneLineThatNamesThem)
{
    const BadLines cases[] = {
        {"crease without lines", {"--crease", "30"}, "--lines"},
        {"width without lines", {"--line-width", "2"}, "--lines"},
        {"colour without lines", {"--line-color", "000000"}, "--lines"},
        {"dash without lines", {"--dash", "2"}, "--lines"},
        {"offset without lines", {"--line-offset", "2"}, "--lines"},
        {"hidden without lines", {"--hidden", "dashed"}, "--lines"},
        {"hidden in another word", {"--lines", "--hidden", "dotted"}, "--hidden"},
        {"crease below 0", {"--lines", "--crease", "-1"}, "--crease"},
        {"crease above 180", {"--lines", "--crease", "181"}, "--crease"},
        {"crease that is no number", {"--lines", "--crease", "nan"}, "--crease"},
        {"crease in words", {"--lines", "--crease", "steep"}, "--crease"},
        {"width of 0", {"--lines", "--line-width", "0"}, "--line-width"},
        {"width above 100", {"--lines", "--line-width", "100.5"}, "--line-width"},
        {"colour of five digits", {"--lines", "--line-color", "12345"}, "--line-color"},
        {"dash of 0", {"--lines", "--dash", "0"}, "--dash"},
        {"dash without end", {"--lines", "--dash", "inf"}, "--dash"},
        {"offset that is no number", {"--lines", "--line-offset", "nan"}, "--line-offset"},
    };
    const std::string model = WriteSquare();
    for (const BadLines& bad : cases)
    {
        std::vector<std::string> arguments = {model, "-o", folder.Path("out.png")};
        arguments.insert(arguments.end(), bad.options.begin(), bad.options.end());
        const ProcessResult result = Run(arguments);
        EXPECT_EQ(result.exitCode, 2) << bad.label;
        EXPECT_EQ(result.output, "") << bad.label;
        EXPECT_NE(result.errors.find(bad.named), std::string::npos) << bad.label << ": " << result.errors;
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << bad.label;
    }
    EXPECT_EQ(FilesIn(folder.Path()), (std::vector<std::string>{"colours.mtl", "square.obj"}));
}
