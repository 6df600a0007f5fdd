#include "tests/apps/render/RenderTool.h"

using namespace OV::Test;

namespace
{

const char* const kLeft = "o left\nv -3 -1 0\nv -1 -1 0\nv -1 1 0\nv -3 1 0\n";
const char* const kRight = "o right\nv 1 -1 0\nv 3 -1 0\nv 3 1 0\nv 1 1 0\n";

class RenderNodes : public RenderTool
{
protected:
    /// Two squares side by side, as nodes of their own.
    std::string WritePair() const
    {
        return WriteObj("pair.obj", std::string(kLeft) + "f 1 2 3 4\n" + kRight + "f 5 6 7 8\n");
    }

    Picture Seen(const std::string& model, std::vector<std::string> options = {}) const
    {
        options.insert(options.end(), {"--eye", "0,0,12", "--target", "0,0,0", "--size", "320x240"});
        return Render(model, options);
    }

    static void ExpectSame(const Picture& left, const Picture& right)
    {
        ASSERT_FALSE(left.IsEmpty());
        EXPECT_TRUE(left == right);
    }
};

} // namespace

TEST_F(RenderNodes, WhatIsHiddenIsNotDrawn)
{
    const std::string pair = WritePair();
    const Picture left = Seen(WriteObj("left.obj", std::string(kLeft) + "f 1 2 3 4\n"));
    EXPECT_TRUE(left != Seen(pair));
    ExpectSame(Seen(pair, {"--hide", "right"}), left);
    ExpectSame(Seen(pair, {"--isolate", "pair.obj/left"}), left);
    const Picture none = Seen(pair, {"--hide", "right", "--hide", "left", "--quiet"});
    EXPECT_TRUE(none != left);
    ExpectSame(none, Seen(pair, {"--hide", "pair.obj", "--quiet"}));
}

TEST_F(RenderNodes, ANodeThatThereIsNotIsTold)
{
    const std::string pair = WritePair();
    for (const char* option : {"--hide", "--isolate", "--label"})
    {
        const ProcessResult result = Run({pair, "-o", folder.Path("out.png"), option, "attic"});
        EXPECT_EQ(result.exitCode, 1);
        EXPECT_NE(result.errors.find(std::string("there is no node 'attic' for ") + option), std::string::npos) << result.errors;
        EXPECT_NE(result.errors.find("left"), std::string::npos) << result.errors;
    }
}

TEST_F(RenderNodes, SeveralFilesAreDrawnInOneScene)
{
    const std::string left = WriteObj("left.obj", std::string(kLeft) + "f 1 2 3 4\n");
    const std::string right = WriteObj("right.obj", std::string(kRight) + "f 1 2 3 4\n");
    const Picture both = Seen(left, {right});
    ExpectSame(both, Seen(WritePair()));
    // Framed together as well.
    ExpectSame(Render(left, {right, "--view", "front"}), Render(WritePair(), {"--view", "front"}));
    const ProcessResult missing = Run({left, folder.Path("none.obj"), "-o", folder.Path("out.png")});
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_NE(missing.errors.find("none.obj"), std::string::npos) << missing.errors;
    const ProcessResult over = Run({left, right, "-o", right});
    EXPECT_EQ(over.exitCode, 1);
    EXPECT_NE(over.errors.find("would replace the model"), std::string::npos) << over.errors;
}

TEST_F(RenderNodes, NotesStandOnThePicture)
{
    const std::string pair = WritePair();
    const Picture plain = Seen(pair);
    const Picture measured = Seen(pair, {"--distance", "-3,-1,0,3,-1,0"});
    const Picture bent = Seen(pair, {"--angle", "-3,-1,0,3,-1,0,3,1,0"});
    const Picture labelled = Seen(pair, {"--label", "left"});
    EXPECT_TRUE(measured != plain);
    EXPECT_TRUE(bent != plain);
    EXPECT_TRUE(bent != measured);
    EXPECT_TRUE(labelled != plain);
    // The line runs between the squares, where there was nothing.
    const auto isInk = [](const Pixel& pixel) { return pixel.r < 80 && pixel.g < 80 && pixel.b < 80; };
    int ink = 0;
    for (int y = 0; y < 240; ++y)
    {
        ink += isInk(measured.At(140, y)) ? 1 : 0;
        EXPECT_FALSE(isInk(plain.At(140, y)));
    }
    EXPECT_GE(ink, 1);
    EXPECT_LE(ink, 3);
}

TEST_F(RenderNodes, ThePixelRatioWidensLines)
{
    const std::string pair = WritePair();
    ExpectSame(Seen(pair, {"--lines", "--line-width", "2", "--pixel-ratio", "2"}), Seen(pair, {"--lines", "--line-width", "4"}));
}

TEST_F(RenderNodes, TheUpAxisTurnsNamedViews)
{
    const std::string pair = WritePair();
    // With Z up the squares stand in the plane of the ground and are seen from above.
    ExpectSame(Render(pair, {"--up-axis", "z", "--view", "top"}), Render(pair, {"--view", "front"}));
    EXPECT_TRUE(Render(pair, {"--up-axis", "z"}) != Render(pair, {}));
}
