#include "tests/apps/render/RenderTool.h"

#include "orvane_host/output/WritePNG.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>

using namespace OV::Test;

namespace
{

constexpr Pixel White{255, 255, 255, 255};
constexpr Pixel Black{0, 0, 0, 255};
constexpr int Width = 400;
constexpr int Height = 300;

/// A sheet about a red square of edge 2, seen from the front.
struct RenderSheet : RenderTool
{
    const std::string square = WriteSquare();

    Picture Draw(std::vector<std::string> options) const
    {
        options.insert(options.end(), {"--size", "400x300", "--view", "front"});
        return Render(square, options);
    }

    /// Where pixels are of a kind: x, y, width and height; nothing wide where there is none.
    static PixelRect BoxOf(const Picture& picture, const PixelRect& within,
                           const std::function<bool(int, int)>& isOfKind)
    {
        int left = within.x + within.width;
        int right = within.x - 1;
        int bottom = within.y + within.height;
        int top = within.y - 1;
        for (int y = within.y; y < within.y + within.height && y < picture.GetHeight(); ++y)
        {
            for (int x = within.x; x < within.x + within.width && x < picture.GetWidth(); ++x)
            {
                if (isOfKind(x, y))
                {
                    left = std::min(left, x);
                    right = std::max(right, x);
                    bottom = std::min(bottom, y);
                    top = std::max(top, y);
                }
            }
        }
        return {left, bottom, std::max(0, right - left + 1), std::max(0, top - bottom + 1)};
    }

    /// Where two pictures differ.
    static PixelRect ChangeOf(const Picture& one, const Picture& other)
    {
        return BoxOf(one, {0, 0, Width, Height}, [&](int x, int y) { return one.At(x, y) != other.At(x, y); });
    }

    /// A PNG of one colour in the folder.
    std::string WritePlainPicture(int width, int height, const Pixel& color) const
    {
        std::vector<unsigned char> rgba;
        for (int i = 0; i < width * height; ++i)
        {
            rgba.insert(rgba.end(), {static_cast<unsigned char>(color.r), static_cast<unsigned char>(color.g),
                                     static_cast<unsigned char>(color.b), static_cast<unsigned char>(color.a)});
        }
        std::string error;
        const std::string path = folder.Path("mark.png");
        EXPECT_TRUE(OV::Host::WritePNG(rgba, width, height, path, OV::Host::PNGAlpha::Keep, error)) << error;
        return path;
    }

    void ExpectFailure(const std::string& watermark, const std::string& output, const std::string& named,
                       const std::string& reason, const std::string& option = "--watermark") const
    {
        const std::vector<std::string> before = FilesIn(folder.Path());
        const ProcessResult result = Run({square, "-o", output, option, watermark});
        EXPECT_EQ(result.signal, 0);
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
        EXPECT_EQ(result.errors.rfind("orvane-render: " + named + ": ", 0), 0u) << result.errors;
        EXPECT_NE(result.errors.find(reason), std::string::npos) << result.errors;
        EXPECT_NE(result.errors.find("; "), std::string::npos) << "no remedy in " << result.errors;
        EXPECT_EQ(FilesIn(folder.Path()), before);
    }
};

} // namespace

TEST_F(RenderSheet, TheTitleStandsInTheLowerRightCornerAndChangesNothingElse)
{
    const Picture plain = Draw({});
    const PixelRect change = ChangeOf(Draw({"--title", "Square"}), plain);
    EXPECT_GT(change.width, 30);
    EXPECT_GT(change.x, Width / 2);
    EXPECT_LT(change.x + change.width, Width - 10);
    EXPECT_GT(change.y, 4);
    EXPECT_LT(change.y + change.height, 50);
    EXPECT_EQ(Draw({"--title", ""}), plain);
}

TEST_F(RenderSheet, ATitleOfAnyLengthStaysInThePicture)
{
    const PixelRect change = ChangeOf(Draw({"--title", std::string(300, 'W')}), Draw({}));
    EXPECT_GT(change.x, 4);
    EXPECT_LT(change.x + change.width, Width - 4);
    EXPECT_GT(change.width, Width / 2);
}

TEST_F(RenderSheet, TitlesAreReadAsUtf8WhereNoEncodingIsTold)
{
    const auto draw = [&](const std::string& title, const std::string& locale) {
        const std::string output = folder.Path("titled.png");
        const ProcessResult result = Run({square, "-o", output, "--size", "400x300", "--title", title},
                                         {"LC_ALL=" + locale});
        EXPECT_EQ(result.exitCode, 0) << result.errors;
        return ReadWholeFile(output);
    };
    const std::string german = draw("Ägypten", "C.UTF-8");
    EXPECT_EQ(draw("Ägypten", "C"), german);
    EXPECT_EQ(draw("Ägypten", "not_a_locale"), german);
    EXPECT_NE(draw("Agypten", "C"), german);
    // Bytes that are no text in that encoding are no reason to fail.
    draw("\xFF\xFE \xC3", "C.UTF-8");
}

TEST_F(RenderSheet, TheScaleBarMeasuresTheModel)
{
    for (const std::vector<std::string>& options :
         {std::vector<std::string>{"--ortho"}, std::vector<std::string>{"--fov", "35"},
          std::vector<std::string>{"--fov", "90"}})
    {
        std::vector<std::string> all = options;
        all.push_back("--scale-bar");
        const Picture picture = Draw(all);
        const int edge = BoxOf(picture, {0, 0, Width, Height}, [&](int x, int y) {
            const Pixel pixel = picture.At(x, y);
            return pixel.r > 100 && pixel.g < 50;
        }).width;
        ASSERT_GT(edge, 200);
        // Its ink, below the numbers.
        const PixelRect bar =
            BoxOf(picture, {0, 0, Width / 2, 21}, [&](int x, int y) { return picture.At(x, y) == Black; });
        ASSERT_GT(bar.width, 30);
        const double length = 2.0 * bar.width / edge;
        double nearest = 0.1;
        for (const double round : {0.2, 0.5, 1.0, 2.0})
        {
            nearest = std::abs(round - length) < std::abs(nearest - length) ? round : nearest;
        }
        EXPECT_NEAR(bar.width, nearest / 2.0 * edge, 1.5) << "no round length";
        EXPECT_GT(BoxOf(picture, {0, 21, Width / 2, 20}, [&](int x, int y) {
                      return picture.At(x, y) != White && picture.At(x, y).r == picture.At(x, y).g;
                  }).width,
                  bar.width / 2)
            << "no numbers";
    }
}

TEST_F(RenderSheet, TheArrowToTheNorthStandsInTheUpperRightCorner)
{
    const PixelRect change = ChangeOf(Draw({"--north", "0"}), Draw({}));
    EXPECT_GT(change.x, Width - 120);
    EXPECT_GT(change.y, Height - 120);
    const auto inkOf = [](const Picture& picture) {
        return BoxOf(picture, {Width - 120, Height - 120, 120, 120}, [&](int x, int y) {
            const Pixel pixel = picture.At(x, y);
            return pixel.r < 180 && pixel.r == pixel.g;
        });
    };
    const PixelRect up = inkOf(Draw({"--north", "0"}));
    EXPECT_GT(up.height, 1.5 * up.width) << "it points upward";
    const Picture right = Draw({"--north", "90"});
    const PixelRect turned = inkOf(right);
    EXPECT_GT(turned.width, 1.5 * turned.height);
    EXPECT_EQ(Draw({"--north", "450"}), right);
    EXPECT_NE(Draw({"--north", "-90"}), right);
    EXPECT_EQ(Draw({"--north", "-270"}), right);
}

TEST_F(RenderSheet, TheWatermarkStandsInTheMiddleBehindTheModel)
{
    const std::string mark = WritePlainPicture(380, 40, {0, 0, 255, 255});
    const Picture plain = Draw({});
    const Picture marked = Draw({"--watermark", mark});
    int behind = 0;
    for (int y = 0; y < Height; ++y)
    {
        for (int x = 0; x < Width; ++x)
        {
            const bool inMark = x >= 10 && x < 390 && y >= 130 && y < 170;
            const bool isGround = plain.At(x, y) == White;
            const Pixel expected = inMark && isGround ? Pixel{0, 0, 255, 255} : plain.At(x, y);
            ASSERT_EQ(marked.At(x, y), expected) << x << " " << y;
            behind += inMark && !isGround;
        }
    }
    EXPECT_GT(behind, 1000);
    EXPECT_EQ(Draw({"--watermark", WritePlainPicture(380, 40, {0, 0, 255, 0})}), plain) << "all transparent";
}

TEST_F(RenderSheet, AWatermarkThatFailsIsNamedAndNothingIsWritten)
{
    const std::string output = folder.Path("out.png");
    ExpectFailure(folder.Path("missing.png"), output, folder.Path("missing.png"), "No such file");
    ExpectFailure(folder.Path(""), output, folder.Path(""), "folder");
    WriteWholeFile(folder.Path("empty.png"), "");
    ExpectFailure(folder.Path("empty.png"), output, folder.Path("empty.png"), "empty");
    ExpectFailure(square, output, square, "no PNG, JPEG, TGA, BMP, GIF or WebP");
    const std::string mark = WritePlainPicture(380, 40, {0, 0, 255, 255});
    const std::string whole = ReadWholeFile(mark);
    WriteWholeFile(folder.Path("cut.png"), whole.substr(0, whole.size() / 2));
    ExpectFailure(folder.Path("cut.png"), output, folder.Path("cut.png"), "");
    ExpectFailure(mark, mark, mark, "would replace the watermark");
    EXPECT_EQ(ReadWholeFile(mark), whole);
}

TEST_F(RenderSheet, SurroundingsThatFailAreNamedAndNothingIsWritten)
{
    const std::string output = folder.Path("out.png");
    const std::string flat = WritePlainPicture(40, 40, {0, 0, 255, 255});
    ExpectFailure(folder.Path("missing.png"), output, folder.Path("missing.png"), "No such file", "--surroundings");
    ExpectFailure(flat, output, flat, "twice as wide as high", "--surroundings");
    ExpectFailure(flat, flat, flat, "would replace the surroundings", "--surroundings");
}

TEST_F(RenderSheet, TheSameCommandTwiceGivesTheSameBytes)
{
    const std::vector<std::string> options = {"--title", "Square", "--scale-bar", "--north", "33.3", "--watermark",
                                              WritePlainPicture(700, 700, {9, 99, 199, 99}), "--frames", "3"};
    Draw(options);
    const std::string first = ReadWholeFile(folder.Path("rendered.png"));
    Draw(options);
    EXPECT_EQ(ReadWholeFile(folder.Path("rendered.png")), first);
}

TEST_F(RenderSheet, TheSmallestPictureHasRoomForAllOfIt)
{
    for (const char* size : {"1x1", "3x200", "60x40"})
    {
        const Picture picture = Render(square, {"--size", size, "--title", "Square", "--scale-bar", "--north", "0"});
        EXPECT_FALSE(picture.IsEmpty());
    }
}
