#include "tests/apps/render/RenderTool.h"

#include <algorithm>

namespace OV::Test
{

namespace
{

class RenderLooks : public RenderTool
{
protected:
    static constexpr Pixel White{255, 255, 255, 255};

    /// Looks down -z at the middle of a model of edge 2.
    Picture Front(const std::string& model, std::vector<std::string> options) const
    {
        options.insert(options.end(), {"--size", "101x101", "--eye", "0,0,10", "--ortho"});
        return Render(model, options);
    }

    static Pixel Middle(const Picture& picture) { return picture.At(50, 50); }

    /// Expects wrong usage and a line that says so.
    void ExpectUsage(const std::vector<std::string>& options, const std::string& part) const
    {
        std::vector<std::string> arguments = {WriteSquare(), "-o", folder.Path("x.png")};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const ProcessResult result = Run(arguments);
        EXPECT_EQ(result.exitCode, 2) << part;
        EXPECT_NE(result.errors.find(part), std::string::npos) << result.errors;
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
    }
};

} // namespace

TEST_F(RenderLooks, EveryLookDrawsAndAdvancedIsTheUsualOne)
{
    const std::string square = WriteSquare();
    const Picture usual = Front(square, {});
    std::vector<Picture> pictures;
    for (const char* look : {"basic", "advanced", "phong", "crosshatch", "monotone", "vertex-color"})
    {
        pictures.push_back(Front(square, {"--look", look, "--background", "0000FF"}));
        EXPECT_NE(Middle(pictures.back()), (Pixel{0, 0, 255, 255})) << look;
    }
    EXPECT_EQ(Front(square, {"--look", "advanced"}), usual);
    // Red in the coloured looks, without colour in the others.
    for (const std::size_t coloured : {0u, 1u, 2u})
    {
        EXPECT_GT(Middle(pictures[coloured]).r, Middle(pictures[coloured]).g + 40) << coloured;
    }
    for (const std::size_t plain : {3u, 4u, 5u})
    {
        EXPECT_EQ(Middle(pictures[plain]).r, Middle(pictures[plain]).g) << plain;
    }
    EXPECT_EQ(Middle(pictures[4]), White);
}

TEST_F(RenderLooks, TheSameCommandGivesTheSamePictureInEveryLook)
{
    const std::string cube = WriteCube();
    for (const char* look : {"advanced", "phong", "crosshatch", "monotone", "vertex-color"})
    {
        // Some are white on white.
        const std::vector<std::string> options = {"--look", look, "--quiet"};
        EXPECT_EQ(Render(cube, options), Render(cube, options)) << look;
    }
}

TEST_F(RenderLooks, AnUnknownLookIsWrongUsage)
{
    ExpectUsage({"--look", "sketch"}, "'sketch' is not one of basic, advanced, phong");
    ExpectUsage({"--look", ""}, "--look");
}

TEST_F(RenderLooks, ACutSolidIsFilledWithThePocheColour)
{
    const std::string cube = WriteCube();
    // The front half is gone: the section lies where the middle was.
    for (const char* look : {"basic", "advanced", "phong", "monotone"})
    {
        const std::vector<std::string> cut = {"--look", look, "--clip", "0,0,1,0,0,0", "--outline", "0"};
        std::vector<std::string> options = cut;
        options.insert(options.end(), {"--poche", "123456"});
        EXPECT_LE(ChannelDifference(Middle(Front(cube, options)), Pixel{0x12, 0x34, 0x56, 255}), 1) << look;
        EXPECT_LE(ChannelDifference(Middle(Front(cube, cut)), Pixel{0x33, 0x33, 0x33, 255}), 1) << look;
        options = cut;
        options.insert(options.end(), {"--poche", "off", "--quiet"});
        EXPECT_GT(ChannelDifference(Middle(Front(cube, options)), Pixel{0x33, 0x33, 0x33, 255}), 30) << look;
    }
}

TEST_F(RenderLooks, TheOutlineRunsAlongTheCut)
{
    const std::string square = WriteSquare();
    const std::vector<std::string> cut = {"--clip", "0,5,0,0,0,0", "--outline-color", "00FF00"};
    std::vector<std::string> options = cut;
    options.insert(options.end(), {"--outline", "0.5"});
    const Picture wide = Front(square, options);
    EXPECT_EQ(wide.At(50, 52), White) << "above the cut";
    EXPECT_EQ(wide.At(50, 45), (Pixel{0, 255, 0, 255})) << "the normal's length doesn't count";
    EXPECT_NE(wide.At(50, 30), (Pixel{0, 255, 0, 255}));
    options = cut;
    options.insert(options.end(), {"--outline", "0"});
    EXPECT_EQ(Front(square, options).Count(Pixel{0, 255, 0, 255}), 0);
}

TEST_F(RenderLooks, SixPlanesAreAllowedAndEachCuts)
{
    const std::string square = WriteSquare();
    const std::vector<std::string> six = {"--clip", "1,0,0,0.5,0,0",  "--clip", "-1,0,0,-0.5,0,0",
                                          "--clip", "0,1,0,0,0.5,0",  "--clip", "0,-1,0,0,-0.5,0",
                                          "--clip", "1,1,0,0.5,0,0",  "--clip", "1,-1,0,0.5,0,0"};
    const Picture picture = Front(square, six);
    EXPECT_NE(picture.At(42, 50), White);
    for (const auto& [x, y] : {std::pair(75, 50), std::pair(25, 50), std::pair(50, 75), std::pair(50, 25),
                               std::pair(62, 62), std::pair(62, 38)})
    {
        EXPECT_EQ(picture.At(x, y), White) << x << ", " << y;
    }
    std::vector<std::string> seven = six;
    seven.insert(seven.end(), {"--clip", "0,0,1,0,0,5"});
    ExpectUsage(seven, "at most 6 planes");
}

TEST_F(RenderLooks, WrongCutsAreWrongUsage)
{
    ExpectUsage({"--clip", "0,0,1,0,0"}, "six numbers");
    ExpectUsage({"--clip", "0,0,1,0,0,x"}, "six numbers");
    ExpectUsage({"--clip", "0,0,0,1,1,1"}, "no direction");
    ExpectUsage({"--clip", "0,0,1,0,0,0", "--poche", "reddish"}, "--poche");
    ExpectUsage({"--clip", "0,0,1,0,0,0", "--outline", "-1"}, "--outline");
    ExpectUsage({"--clip", "0,0,1,0,0,0", "--outline-color", "0"}, "--outline-color");
    ExpectUsage({"--clip", "0,0,1,0,0,0", "--look", "crosshatch"}, "the look crosshatch is not cut");
    ExpectUsage({"--poche", "112233"}, "--clip");
    ExpectUsage({"--outline", "1"}, "--clip");
}

TEST_F(RenderLooks, AnEditKeepsTheColourOfItsPartAndGreysTheRest)
{
    const std::string model = WriteObj("two.obj",
                                       "v -2 -1 0\nv 0 -1 0\nv 0 1 0\nv -2 1 0\nv 2 -1 0\nv 2 1 0\n"
                                       "usemtl red\no left\nf 1 2 3 4\no right\nf 2 5 6 3\n");
    const auto isGrey = [](const Pixel& pixel) { return pixel.r == pixel.g && pixel.g == pixel.b; };
    for (const char* look : {"advanced", "phong"})
    {
        const Picture all = Front(model, {"--look", look});
        const Picture left = Front(model, {"--look", look, "--edit", "left"});
        EXPECT_FALSE(isGrey(all.At(30, 50)));
        EXPECT_EQ(left.At(30, 50), all.At(30, 50)) << look;
        EXPECT_TRUE(isGrey(left.At(70, 50))) << look;
        EXPECT_NE(left.At(70, 50), White) << look;
        const Picture right = Front(model, {"--look", look, "--edit", "right"});
        EXPECT_TRUE(isGrey(right.At(30, 50))) << look;
        EXPECT_EQ(right.At(70, 50), all.At(70, 50)) << look;
        const Picture root = Front(model, {"--look", look, "--edit", "two.obj"});
        EXPECT_EQ(root, all) << look;
        EXPECT_EQ(Front(model, {"--look", look, "--edit", "two.obj/left"}), left) << look;
    }
}

TEST_F(RenderLooks, AnEditOfNothingFailsAndNamesWhatThereIs)
{
    const std::string square = WriteSquare();
    const ProcessResult result = Run({square, "-o", folder.Path("x.png"), "--edit", "nobody"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.errors.find("no node 'nobody'"), std::string::npos) << result.errors;
    ExpectUsage({"--edit", "x", "--look", "monotone"}, "use advanced or phong");
}

TEST_F(RenderLooks, TheSectionThroughTheHouseIsClosed)
{
    const std::string house = TestModel("IFC/AC14-FZK-Haus.ifc");
    const Picture open = Render(house, {"--size", "320x240", "--view", "top", "--clip", "0,1,0,0,1.5,0",
                                        "--poche", "FF00FF", "--outline", "0"});
    // Walls seen from above: their sections, and nothing of the roof.
    const int filled = open.Count(Pixel{255, 0, 255, 255});
    EXPECT_GT(filled, 320 * 240 / 200);
    EXPECT_LT(filled, 320 * 240 / 5);
}

} // namespace OV::Test
