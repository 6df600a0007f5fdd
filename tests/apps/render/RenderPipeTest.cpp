#include "tests/apps/render/RenderTool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace OV::Test;

namespace
{

/// Runs orvane-render in the folder of the test with a file as standard input.
struct RenderPipe : RenderTool
{
    ProcessResult RunPiped(const std::string& input, const std::vector<std::string>& arguments) const
    {
        std::vector<std::string> all = {"/bin/sh", "-c", "cd \"$1\" && input=$2 && shift 2 && exec \"$0\" \"$@\" < \"$input\"",
                                        RenderProgram(), folder.Path(), input};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return RunProcess(all);
    }
};

} // namespace

TEST_F(RenderPipe, AModelFromStandardInputIsThePictureOfItsFile)
{
    const std::string cube = WriteCube();
    const std::vector<std::string> size = {"--size", "64x64"};
    for (const std::vector<std::string>& words : {std::vector<std::string>{"-"}, {"-", "--format", "obj"}, {"-", "--format", ".OBJ"}})
    {
        std::vector<std::string> piped = words;
        piped.insert(piped.end(), {"-o", "piped.png", "--size", "64x64"});
        const ProcessResult result = RunPiped(cube, piped);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.errors, "");
        const ProcessResult named = Run({cube, "-o", folder.Path("named.png"), "--size", "64x64"});
        ASSERT_EQ(named.exitCode, 0) << named.errors;
        EXPECT_EQ(ReadWholeFile(folder.Path("piped.png")), ReadWholeFile(folder.Path("named.png")));
    }
}

TEST_F(RenderPipe, AModelGoesInAndAPictureComesOut)
{
    const ProcessResult result = RunPiped(WriteSquare(), {"-", "-o", "-", "--size", "16x16"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_EQ(result.output.substr(1, 3), "PNG");
}

TEST_F(RenderPipe, AModelFromStandardInputStandsBesideFiles)
{
    const std::string square = WriteSquare();
    const ProcessResult first = RunPiped(WriteCube(), {"-", square, "--list-nodes"});
    EXPECT_EQ(first.exitCode, 0) << first.errors;
    const ProcessResult second = RunPiped(WriteCube(), {square, "-", "--list-nodes"});
    EXPECT_EQ(second.exitCode, 0) << second.errors;
    EXPECT_EQ(first.output.rfind("standard input", 0), 0u) << first.output;
    EXPECT_GT(second.output.find("standard input"), 0u) << second.output;
    EXPECT_NE(second.output.find("standard input"), std::string::npos) << second.output;
}

TEST_F(RenderPipe, BadInputEndsWithStatusOneAndOneLine)
{
    WriteWholeFile(folder.Path("empty"), "");
    WriteWholeFile(folder.Path("noise"), std::string("\x01\x02 nothing that is a model \x03\0\xFF", 30));
    WriteWholeFile(folder.Path("half.glb"), "glTF\x02");
    const struct
    {
        const char* label;
        std::string input;
        std::vector<std::string> words;
    } cases[] = {
        {"empty", folder.Path("empty"), {}},
        {"noise", folder.Path("noise"), {}},
        {"noise by a format", folder.Path("noise"), {"--format", "glb"}},
        {"half a file", folder.Path("half.glb"), {}},
        {"another format", WriteCube(), {"--format", "stl"}},
        {"a folder", folder.Path(), {}},
    };
    for (const auto& one : cases)
    {
        std::vector<std::string> words = {"-", "-o", "out.png"};
        words.insert(words.end(), one.words.begin(), one.words.end());
        const ProcessResult result = RunPiped(one.input, words);
        EXPECT_EQ(result.exitCode, 1) << one.label;
        EXPECT_EQ(result.errors.rfind("orvane-render: standard input: ", 0), 0u) << one.label << ": " << result.errors;
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << one.label << ": " << result.errors;
        EXPECT_EQ(result.output, "") << one.label;
    }
    const std::vector<std::string> files = FilesIn(folder.Path());
    EXPECT_EQ(std::find(files.begin(), files.end(), "out.png"), files.end());
}

TEST_F(RenderPipe, AFileOfThatNameIsReadByItsPath)
{
    WriteWholeFile(folder.Path("-"), ReadWholeFile(WriteSquare()));
    const ProcessResult result = RunPiped("/dev/null", {"./-", "--list-nodes"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
}
