#include "tests/apps/render/RenderTool.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

using namespace OV::Test;

namespace
{

/// 90 by 60 pixels are enough for figures whose edges lie between pixels.
struct RenderPicture : RenderTool
{
    /// Where something other than the background is: x, y, width and height.
    static PixelRect BoxOf(const Picture& picture, const Pixel& background)
    {
        int left = picture.GetWidth();
        int bottom = picture.GetHeight();
        int right = -1;
        int top = -1;
        for (int y = 0; y < picture.GetHeight(); ++y)
        {
            for (int x = 0; x < picture.GetWidth(); ++x)
            {
                if (picture.At(x, y) != background)
                {
                    left = std::min(left, x);
                    right = std::max(right, x);
                    bottom = std::min(bottom, y);
                    top = std::max(top, y);
                }
            }
        }
        return {left, bottom, right - left + 1, top - bottom + 1};
    }

    static void ExpectBox(const Picture& picture, const PixelRect& expected)
    {
        const PixelRect box = BoxOf(picture, White);
        EXPECT_NEAR(box.x, expected.x, 1);
        EXPECT_NEAR(box.y, expected.y, 1);
        EXPECT_NEAR(box.width, expected.width, 1);
        EXPECT_NEAR(box.height, expected.height, 1);
    }

    /// The hues in a picture, a bit each for red, green and blue, without the background.
    static std::set<int> HuesIn(const Picture& picture)
    {
        std::set<int> hues;
        for (int y = 0; y < picture.GetHeight(); ++y)
        {
            for (int x = 0; x < picture.GetWidth(); ++x)
            {
                const Pixel pixel = picture.At(x, y);
                if (pixel != White)
                {
                    hues.insert((pixel.r > 0 ? 4 : 0) + (pixel.g > 0 ? 2 : 0) + (pixel.b > 0 ? 1 : 0));
                }
            }
        }
        return hues;
    }

    static constexpr Pixel White{255, 255, 255, 255};
    static constexpr int Red = 4;
    static constexpr int Green = 2;
    static constexpr int Blue = 1;
    static constexpr int Yellow = 6;
    static constexpr int Magenta = 5;
    static constexpr int Cyan = 3;
};

} // namespace

TEST_F(RenderPicture, IsAnRGBFileOfTheSizeAskedFor)
{
    const std::string square = WriteSquare();
    for (const auto& [text, width, height] :
         {std::tuple("90x60", 90, 60), std::tuple("1x1", 1, 1), std::tuple("3x200", 3, 200)})
    {
        const Picture picture = Render(square, {"--size", text});
        EXPECT_EQ(picture.GetWidth(), width);
        EXPECT_EQ(picture.GetHeight(), height);
        EXPECT_EQ(ReadWholeFile(folder.Path("rendered.png")).at(25), 2) << "the colour type is not RGB";
    }
    const Picture usual = Render(square, {});
    EXPECT_EQ(usual.GetWidth(), 1280);
    EXPECT_EQ(usual.GetHeight(), 720);
}

TEST_F(RenderPicture, EveryViewShowsTheFaceThatItNames)
{
    const std::string cube = WriteCube();
    for (const auto& [view, hue] : {std::pair("front", Red), std::pair("back", Green), std::pair("left", Blue),
                                    std::pair("right", Yellow), std::pair("top", Magenta), std::pair("bottom", Cyan)})
    {
        SCOPED_TRACE(view);
        EXPECT_EQ(HuesIn(Render(cube, {"--size", "90x60", "--view", view})), std::set<int>({hue}));
    }
    EXPECT_EQ(HuesIn(Render(cube, {"--size", "90x60", "--view", "iso"})), std::set<int>({Red, Yellow, Magenta}));
    EXPECT_TRUE(Render(cube, {"--size", "90x60"}) == Render(cube, {"--size", "90x60", "--view", "iso"}))
        << "iso is not the usual view";
}

TEST_F(RenderPicture, EveryFaceOfACubeIsLitFromEveryView)
{
    const std::string cube = WriteCube();
    for (const char* view : {"iso", "front", "back", "left", "right", "top", "bottom"})
    {
        SCOPED_TRACE(view);
        const Picture picture = Render(cube, {"--size", "90x60", "--view", view});
        for (int y = 0; y < 60; ++y)
        {
            for (int x = 0; x < 90; ++x)
            {
                const Pixel pixel = picture.At(x, y);
                ASSERT_GE(std::max({pixel.r, pixel.g, pixel.b}), 50) << "nearly black at " << x << ", " << y;
            }
        }
    }
}

TEST_F(RenderPicture, TheModelFillsThePictureAndLiesInItsMiddle)
{
    const std::string cube = WriteCube();
    for (const char* size : {"180x120", "120x180", "150x150"})
    {
        for (const char* view : {"iso", "front", "top"})
        {
            for (const bool ortho : {false, true})
            {
                SCOPED_TRACE(testing::Message() << size << " " << view << " " << ortho);
                std::vector<std::string> options = {"--size", size, "--view", view};
                if (ortho)
                {
                    options.emplace_back("--ortho");
                }
                const Picture picture = Render(cube, options);
                const PixelRect box = BoxOf(picture, White);
                EXPECT_NEAR(box.x, picture.GetWidth() - box.x - box.width, 2);
                EXPECT_NEAR(box.y, picture.GetHeight() - box.y - box.height, 2);
                const double fill = std::max(static_cast<double>(box.width) / picture.GetWidth(),
                                             static_cast<double>(box.height) / picture.GetHeight());
                EXPECT_NEAR(fill, 0.95, 0.03);
            }
        }
    }
}

TEST_F(RenderPicture, EyeTargetAndAngleDecideWhatIsSeenWhere)
{
    // At distance 5 and a tangent of 0.5 the view is 5 high: a square of edge 2 takes 2/5 of it.
    const std::string square = WriteSquare();
    const std::string angle = std::to_string(2.0 * std::atan(0.5) * 180.0 / 3.14159265358979);
    ExpectBox(Render(square, {"--size", "100x100", "--eye", "0,0,5", "--fov", angle}), {30, 30, 40, 40});
    ExpectBox(Render(square, {"--size", "200x100", "--eye", "0,0,5", "--target", "0,0,0", "--fov", angle}),
              {80, 30, 40, 40});
    // The angle is the vertical one in an upright picture too.
    ExpectBox(Render(square, {"--size", "60x100", "--eye", "0,0,5", "--fov", angle}), {10, 30, 40, 40});
    ExpectBox(Render(square, {"--size", "100x100", "--eye", "1,-1,5", "--target", "1,-1,0", "--fov", angle}),
              {10, 50, 40, 40});
    ExpectBox(Render(square, {"--size", "100x100", "--eye=-1,0,5", "--target=-1,0,-3", "--fov", angle}),
              {50, 30, 40, 40});
}

TEST_F(RenderPicture, TheTargetLeftOutIsTheMiddleOfTheModel)
{
    const std::string shifted = WriteObj("shifted.obj", "v 9 19 0\nv 11 19 0\nv 11 21 0\nv 9 21 0\nf 1 2 3 4\n");
    const PixelRect box = BoxOf(Render(shifted, {"--size", "101x101", "--eye", "10,20,6"}), White);
    EXPECT_EQ(box.x, 100 - box.x - box.width + 1);
    EXPECT_EQ(box.y, 100 - box.y - box.height + 1);
}

TEST_F(RenderPicture, UpTurnsThePicture)
{
    const std::string quarter = WriteObj("quarter.obj", "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nf 1 2 3 4\n");
    const std::vector<std::string> options = {"--size", "100x100", "--eye", "0,0,5", "--target", "0,0,0"};
    const auto withUp = [&](const std::string& up)
    {
        std::vector<std::string> all = options;
        all.insert(all.end(), {"--up=" + up});
        const PixelRect box = BoxOf(Render(quarter, all), White);
        return std::pair(box.x >= 49, box.y >= 49);
    };
    EXPECT_EQ(withUp("0,1,0"), std::pair(true, true));
    EXPECT_EQ(withUp("0,-1,0"), std::pair(false, false));
    EXPECT_EQ(withUp("1,0,0"), std::pair(false, true));
    EXPECT_EQ(withUp("-2,0,0"), std::pair(true, false));
}

TEST_F(RenderPicture, OrthoKeepsSizesWhateverTheDepth)
{
    const std::string pair = WriteObj("pair.obj", "v -2 -1 0\nv -1 -1 0\nv -1 1 0\nv -2 1 0\nf 1 2 3 4\nusemtl blue\n"
                                                  "v 1 -1 -8\nv 2 -1 -8\nv 2 1 -8\nv 1 1 -8\nf 5 6 7 8\n");
    const auto pixels = [&](const std::vector<std::string>& options)
    {
        const Picture picture = Render(pair, options);
        std::pair<int, int> count;
        for (int y = 0; y < picture.GetHeight(); ++y)
        {
            for (int x = 0; x < picture.GetWidth(); ++x)
            {
                const Pixel pixel = picture.At(x, y);
                count.first += pixel.r > 0 && pixel.b == 0 ? 1 : 0;
                count.second += pixel.r == 0 && pixel.b > 0 ? 1 : 0;
            }
        }
        return count;
    };
    const auto [redFlat, blueFlat] = pixels({"--size", "120x60", "--view", "front", "--ortho"});
    EXPECT_GT(redFlat, 1000);
    EXPECT_NEAR(redFlat, blueFlat, 60) << "more than one column or row apart";
    const auto [redDeep, blueDeep] = pixels({"--size", "120x60", "--view", "front"});
    EXPECT_GT(redDeep, 2 * blueDeep);
}

TEST_F(RenderPicture, BackgroundIsWhiteUnlessAskedOtherwise)
{
    const std::string square = WriteSquare();
    EXPECT_EQ(Render(square, {"--size", "40x20", "--view", "front"}).At(0, 0), White);
    EXPECT_EQ(Render(square, {"--size", "40x20", "--view", "front", "--background", "1A2b3C"}).At(39, 19),
              (Pixel{0x1A, 0x2B, 0x3C, 255}));
}

TEST_F(RenderPicture, SkyHasItsHorizonAtEyeLevelInTheColourOfTheBackground)
{
    const std::string square = WriteSquare();
    const Picture picture = Render(square, {"--size", "60x100", "--eye", "0,40,50", "--target", "0,40,0", "--sky",
                                            "--background", "FF8800", "--fov", "60", "--quiet"});
    const Pixel orange{255, 0x88, 0, 255};
    for (int y = 0; y < 50; ++y)
    {
        ASSERT_EQ(picture.At(5, y), orange) << "row " << y;
    }
    for (int y = 52; y < 99; ++y)
    {
        ASSERT_GE(picture.At(30, y + 1).b, picture.At(30, y).b) << "the sky does not rise at row " << y;
    }
    // 30 degrees up lies past the last stop of the gradient.
    EXPECT_LE(ChannelDifference(picture.At(30, 99), ToPixel(0.5921569f, 0.7294118f, 0.8862745f)), 1);
}

TEST_F(RenderPicture, FogGoesByTheDistanceFromTheEye)
{
    // At distance 5; a second square behind makes the depths of the picture uneven.
    const std::string pair = WriteObj("pair.obj", "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\nf 1 2 3 4\n"
                                                  "v 5 -1 -30\nv 7 -1 -30\nv 7 1 -30\nv 5 1 -30\nf 5 6 7 8\n");
    for (const bool ortho : {false, true})
    {
        SCOPED_TRACE(ortho);
        const auto center = [&](const std::string& fog)
        {
            std::vector<std::string> options = {"--size", "41x41", "--eye", "0,0,5", "--target", "0,0,0",
                                                "--background", "00FF00", "--quiet"};
            if (ortho)
            {
                options.emplace_back("--ortho");
            }
            if (!fog.empty())
            {
                options.insert(options.end(), {"--fog", fog});
            }
            return Render(pair, options).At(20, 20);
        };
        const Pixel clear = center("");
        EXPECT_GT(clear.r, 100);
        EXPECT_EQ(clear.g, 0);
        EXPECT_EQ(center("5.01,7"), clear);
        EXPECT_EQ(center("1,4.99"), (Pixel{0, 255, 0, 255}));
        for (const auto& [range, fog] : {std::pair("0,10", 0.5), std::pair("4,8", 0.25), std::pair("0,500", 0.01)})
        {
            const Pixel faded = center(range);
            EXPECT_NEAR(faded.r, clear.r * (1.0 - fog), 1.5) << range;
            EXPECT_NEAR(faded.g, 255 * fog, 1.5) << range;
        }
    }
}

TEST_F(RenderPicture, BackFacesAreDrawnOnlyWithoutCulling)
{
    const std::string away = WriteObj("away.obj", "v -1 -1 0\nv -1 1 0\nv 1 1 0\nv 1 -1 0\nf 1 2 3 4\n");
    EXPECT_EQ(Render(away, {"--size", "40x40", "--view", "front", "--quiet"}).Count(White), 1600);
    EXPECT_LT(Render(away, {"--size", "40x40", "--view", "front", "--no-cull"}).Count(White), 800);
}

TEST_F(RenderPicture, SamplesSmoothEdges)
{
    const std::string triangle = WriteObj("triangle.obj", "v -1 -1 0\nv 1 -0.5 0\nv 0 1 0\nf 1 2 3\n");
    const auto colours = [&](const std::vector<std::string>& options)
    {
        const Picture picture = Render(triangle, options);
        std::set<int> reds;
        for (int y = 0; y < picture.GetHeight(); ++y)
        {
            for (int x = 0; x < picture.GetWidth(); ++x)
            {
                reds.insert(picture.At(x, y).g);
            }
        }
        return reds.size();
    };
    EXPECT_EQ(colours({"--size", "60x60", "--view", "front", "--samples", "0"}), 2u);
    EXPECT_GT(colours({"--size", "60x60", "--view", "front", "--samples", "4"}), 2u);
}

TEST_F(RenderPicture, TheSameCommandGivesTheSameBytes)
{
    const std::string house = TestModel("IFC/AC14-FZK-Haus.ifc");
    const std::vector<std::vector<std::string>> commands = {
        {house, "--size", "320x180", "--sky", "--fog", "10,100"},
        {house, "--size", "320x180", "--view", "front", "--ortho", "--no-cull"},
        {TestModel("glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb"), "--size", "320x180"},
        {TestModel("glTF/CesiumMilkTruck/CesiumMilkTruck.gltf"), "--size", "320x180", "--samples", "0"},
    };
    for (std::vector<std::string> command : commands)
    {
        SCOPED_TRACE(testing::PrintToString(command));
        command.insert(command.end(), {"-o", folder.Path("a.png")});
        ASSERT_EQ(Run(command).exitCode, 0);
        command.back() = folder.Path("b.png");
        ASSERT_EQ(Run(command).exitCode, 0);
        EXPECT_EQ(ReadWholeFile(folder.Path("a.png")), ReadWholeFile(folder.Path("b.png")));
        // Later frames are the first one again.
        command.insert(command.end(), {"--frames", "3"});
        ASSERT_EQ(Run(command).exitCode, 0);
        EXPECT_EQ(ReadWholeFile(folder.Path("a.png")), ReadWholeFile(folder.Path("b.png")));
    }
}

TEST_F(RenderPicture, ATextureIsOnTheModel)
{
    const Picture picture = Render(TestModel("glTF2/BoxTextured-glTF/BoxTextured.gltf"),
                                   {"--size", "200x200", "--view", "front"});
    const auto share = [&](auto matches)
    {
        int count = 0;
        for (int y = 0; y < 200; ++y)
        {
            for (int x = 0; x < 200; ++x)
            {
                count += matches(picture.At(x, y)) ? 1 : 0;
            }
        }
        return count / 40000.0;
    };
    EXPECT_GT(share([](const Pixel& p) { return p.b > p.r + 40 && p.b > p.g + 10; }), 0.1) << "no blue";
    EXPECT_GT(share([](const Pixel& p) { return p.g > p.r + 20 && p.g > p.b + 20; }), 0.1) << "no green";
}
