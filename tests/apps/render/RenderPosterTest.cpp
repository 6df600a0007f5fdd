#include "tests/apps/render/RenderTool.h"
#include "tests/support/Golden.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace OV::Test
{

namespace
{

using ::testing::HasSubstr;
using ::testing::StartsWith;

class RenderPoster : public RenderTool
{
protected:
    /// A big-endian number of a PNG's bytes.
    static unsigned int NumberAt(const std::string& bytes, std::size_t at)
    {
        unsigned int number = 0;
        for (std::size_t i = at; i < at + 4; ++i)
        {
            number = number * 256 + static_cast<unsigned char>(bytes[i]);
        }
        return number;
    }

    std::string RunOn(const std::string& model, std::vector<std::string> options, int status = 0)
    {
        options.insert(options.begin(), {model, "-o", output});
        const ProcessResult result = Run(options);
        EXPECT_EQ(result.exitCode, status) << result.errors;
        return result.errors;
    }

    std::string output = folder.Path("out.png");
};

TEST_F(RenderPoster, PaperAndScaleSetSizeResolutionAndZoom)
{
    // A square of 2 units, which OBJ doesn't name: metres. At 1:10 it is 20 cm on paper.
    EXPECT_THAT(RunOn(WriteSquare(), {"--paper", "a4", "--dpi", "127", "--scale", "1:10", "--view", "front", "--aa",
                                      "none"}),
                HasSubstr("no unit"));
    const std::string png = ReadWholeFile(output);
    EXPECT_EQ(NumberAt(png, 16), 1485u);
    EXPECT_EQ(NumberAt(png, 20), 1050u);
    const std::size_t physical = png.find("pHYs");
    ASSERT_NE(physical, std::string::npos);
    EXPECT_EQ(NumberAt(png, physical + 4), 5000u);
    const Picture picture = LoadPicture(output);
    int wide = 0;
    for (int x = 0; x < picture.GetWidth(); ++x)
    {
        wide += picture.At(x, picture.GetHeight() / 2) == Pixel{255, 255, 255, 255} ? 0 : 1;
    }
    // 5 pixels a millimetre.
    EXPECT_NEAR(wide, 1000, 1);
}

TEST_F(RenderPoster, PaperStandsAndAModelThatIsTooLargeForItIsTold)
{
    const std::string told = RunOn(WriteSquare(), {"--paper", "A5", "--portrait", "--dpi", "25.4", "--scale", "1:5"});
    EXPECT_THAT(told, HasSubstr("larger than the paper"));
    const std::string png = ReadWholeFile(output);
    EXPECT_EQ(NumberAt(png, 16), 148u);
    EXPECT_EQ(NumberAt(png, 20), 210u);
    EXPECT_EQ(RunOn(WriteSquare(), {"--paper", "A5", "--dpi", "25.4", "--scale", "1:5", "--quiet"}), "");
}

TEST_F(RenderPoster, WrongPrintOptionsAreWrongUsage)
{
    const std::string model = WriteSquare();
    EXPECT_THAT(RunOn(model, {"--paper", "B4"}, 2), HasSubstr("one of A0"));
    EXPECT_THAT(RunOn(model, {"--paper", "A4", "--size", "10x10"}, 2), HasSubstr("--size"));
    EXPECT_THAT(RunOn(model, {"--portrait"}, 2), HasSubstr("--paper"));
    EXPECT_THAT(RunOn(model, {"--scale", "1:100"}, 2), HasSubstr("--paper"));
    EXPECT_THAT(RunOn(model, {"--paper", "A4", "--scale", "100"}, 2), HasSubstr("1:100"));
    EXPECT_THAT(RunOn(model, {"--paper", "A4", "--scale", "1:0"}, 2), HasSubstr("1:100"));
    EXPECT_THAT(RunOn(model, {"--dpi", "0"}, 2), HasSubstr("--dpi"));
    EXPECT_THAT(RunOn(model, {"--depth", "12"}, 2), HasSubstr("--depth"));
    EXPECT_THAT(RunOn(model, {"--alpha", "--sky"}, 2), HasSubstr("--sky"));
    EXPECT_THAT(RunOn(model, {"--up-axis", "x"}, 2), HasSubstr("y or z"));
    EXPECT_THAT(RunOn(model, {"--list-nodes=xml"}, 2), HasSubstr("text or json"));
    EXPECT_THAT(Run({model, "-o", "-", "--stats"}).errors, HasSubstr("standard output"));
}

TEST_F(RenderPoster, TransparentPicturesHaveAnAlphaOfTheirOwn)
{
    EXPECT_EQ(RunOn(WriteSquare(), {"--alpha", "--size", "64x64", "--view", "front", "--background", "navy"}), "");
    const Picture picture = LoadPicture(output);
    EXPECT_EQ(picture.At(0, 0), (Pixel{0, 0, 0, 0}));
    EXPECT_EQ(picture.At(32, 32).a, 255);
    EXPECT_GT(picture.At(32, 32).r, 100);
}

TEST_F(RenderPoster, AJPEGAndStandardOutputAreWritten)
{
    const std::string model = WriteSquare();
    output = folder.Path("out.jpg");
    EXPECT_EQ(RunOn(model, {"--size", "40x30"}), "");
    EXPECT_THAT(ReadWholeFile(output), StartsWith("\xFF\xD8\xFF"));
    EXPECT_THAT(RunOn(model, {"--size", "40x30", "--alpha"}, 1), HasSubstr("transparency"));
    const ProcessResult piped = Run({model, "-o", "-", "--size", "40x30"});
    EXPECT_EQ(piped.exitCode, 0) << piped.errors;
    EXPECT_THAT(piped.output, StartsWith("\x89PNG"));
}

TEST_F(RenderPoster, APictureOfNothingIsToldAndFailsOnRequest)
{
    const std::string model = WriteSquare();
    const std::vector<std::string> back = {"--view", "back", "--size", "64x48", "--title", "Back"};
    EXPECT_THAT(RunOn(model, back), HasSubstr("only backs of faces are in the view, and they are not drawn; ask for --no-cull"));
    std::vector<std::string> strict = back;
    strict.push_back("--fail-if-empty");
    EXPECT_THAT(RunOn(model, strict, 1), HasSubstr("--no-cull"));
    strict.push_back("--no-cull");
    EXPECT_EQ(RunOn(model, strict), "");
    std::vector<std::string> quiet = back;
    quiet.push_back("--quiet");
    EXPECT_EQ(RunOn(model, quiet), "");
    EXPECT_THAT(RunOn(model, {"--eye", "0,0,5", "--target", "0,0,9", "--size", "64x48"}), HasSubstr("--target"));
    EXPECT_THAT(RunOn(model, {"--clip", "0,1,0,0,-9,0", "--size", "64x48"}), HasSubstr("--clip"));
}

TEST_F(RenderPoster, FramingGoesByWhatClipPlanesLeave)
{
    // The lower eighth of the cube is as wide as the picture then.
    EXPECT_EQ(RunOn(WriteCube(), {"--view", "front", "--size", "200x100", "--clip", "0,1,0,0,-0.75,0", "--aa", "none"}), "");
    const Picture picture = LoadPicture(output);
    int wide = 0;
    for (int x = 0; x < picture.GetWidth(); ++x)
    {
        wide += picture.At(x, picture.GetHeight() / 2) == Pixel{255, 255, 255, 255} ? 0 : 1;
    }
    EXPECT_GT(wide, 180);
}

TEST_F(RenderPoster, AModelWhoseZIsUpStands)
{
    // From the front one sees what faces -Y then: the cyan bottom of the cube, with the red front above it.
    EXPECT_EQ(RunOn(WriteCube(), {"--view", "front", "--up-axis", "z", "--size", "64x64", "--look", "basic"}), "");
    const Pixel middle = LoadPicture(output).At(32, 32);
    EXPECT_LT(middle.r, 60);
    EXPECT_GT(middle.g, 120);
    EXPECT_GT(middle.b, 120);
}

TEST_F(RenderPoster, TheTreeOfNodesIsListed)
{
    const ProcessResult text = Run({"--list-nodes", WriteCube()});
    EXPECT_EQ(text.exitCode, 0) << text.errors;
    EXPECT_FALSE(text.output.empty());
    const ProcessResult json = Run({WriteCube(), "--list-nodes", "json"});
    const auto tree = nlohmann::json::parse(json.output, nullptr, false);
    ASSERT_TRUE(tree.is_array());
    ASSERT_FALSE(tree.empty());
    EXPECT_EQ(text.output.substr(0, text.output.find('\n')), tree[0]["name"].get<std::string>());
    EXPECT_TRUE(tree[0].contains("path"));
}

TEST_F(RenderPoster, AVeryLargePictureIsWrittenInTiles)
{
    EXPECT_EQ(RunOn(WriteCube(), {"--size", "20000x300", "--view", "front", "--background", "#102030"}), "");
    const std::string png = ReadWholeFile(output);
    EXPECT_EQ(NumberAt(png, 16), 20000u);
    EXPECT_EQ(NumberAt(png, 20), 300u);
    const Picture picture = LoadPicture(output);
    EXPECT_EQ(picture.At(0, 0), (Pixel{16, 32, 48, 255}));
    EXPECT_GT(picture.At(10000, 150).r, 100);
    EXPECT_THAT(RunOn(WriteCube(), {"--size", "65536x10"}, 1), HasSubstr("65535"));
}

} // namespace

} // namespace OV::Test
