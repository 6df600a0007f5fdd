#include "orvane/imaging/ImageCodec.h"
#include "tests/imaging/Decoding.h"
#include "tests/imaging/FailurePoints.h"
#include "tests/imaging/JpegFile.h"
#include "tests/imaging/PngFile.h"
#include "tests/imaging/QuietOutput.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <vector>

namespace OV
{
namespace
{

using namespace Test;

Bytes SmallPng(int colorType = 6)
{
    PngFile file;
    file.width = file.height = 20;
    file.colorType = colorType;
    file.FillWithNoise();
    return file.Write();
}

Bytes SmallJpeg(JpegFile::Colors colors = JpegFile::Colors::YCbCr)
{
    JpegFile file;
    file.width = file.height = 20;
    file.colors = colors;
    file.FillWithPicture();
    return file.Write();
}

TEST(ImageCodec, AssignmentDoesNothing)
{
    ImageCodec codec;
    const ImageCodec other;
    EXPECT_EQ(&(codec = other), &codec);
    EXPECT_EQ(&(codec = ImageCodec()), &codec);
    EXPECT_TRUE(std::is_empty_v<ImageCodec>);
}

TEST(ImageCodecFailure, WithoutAReadStructureThereIsNoImage)
{
    const FailureScope scope;
    Failures().readStruct = true;
    EXPECT_EQ(Decode(SmallPng()), nullptr);
}

TEST(ImageCodecFailure, WithoutAnInfoStructureThereIsNoImageAndNothingIsLeft)
{
    const Bytes file = SmallPng();
    for (const int passing : {0, 1})
    {
        const FailureScope scope;
        Failures().infoStructsToPass = passing;
        EXPECT_EQ(Decode(file), nullptr) << passing;
        EXPECT_EQ(Failures().livePngStructs, 0) << passing;
    }
    EXPECT_NE(Decode(file), nullptr);
}

TEST(ImageCodecFailure, NoStructureOutlivesACallHoweverItEnds)
{
    const Bytes whole = SmallPng();
    Bytes cut = whole;
    cut.resize(cut.size() / 2);
    const FailureScope scope;
    EXPECT_NE(Decode(whole), nullptr);
    EXPECT_THROW(Decode(cut), std::domain_error);
    EXPECT_EQ(Decode([] {
                  PngFile file;
                  file.width = file.height = 2;
                  file.colorType = 0;
                  file.bitDepth = 16;
                  file.FillWithNoise();
                  return file.Write();
              }()),
              nullptr);
    EXPECT_EQ(Failures().livePngStructs, 0);
}

// The rows are read in blocks that operator new gives in these forms.
TEST(ImageCodecFailure, NoMemoryForTheRowsIsAReadError)
{
    const Bytes wide = [] {
        PngFile file;
        file.width = file.height = 300;
        file.bitDepth = 16;
        file.FillWithNoise();
        return file.Write();
    }();
    const FailureScope scope;
    Bytes copy = wide;
    Failures().failingBlock = 300 * 300 * 8;
    std::string text;
    try
    {
        delete ImageCodec::DecodeImage(copy.data(), int(copy.size()), false, false);
    }
    catch (const std::domain_error& error)
    {
        text = error.what();
    }
    Failures().failingBlock = 0;
    EXPECT_EQ(text, "Error reading PNG");
}

TEST(ImageCodecQuiet, TheLibrariesPrintNothing)
{
    std::vector<Bytes> files = {SmallPng(), SmallJpeg(), Bytes(50, 0)};
    Bytes cutJpeg = SmallJpeg();
    cutJpeg.resize(cutJpeg.size() - 20);
    files.push_back(cutJpeg);
    Bytes cutPng = SmallPng();
    cutPng.resize(cutPng.size() - 20);
    files.push_back(cutPng);
    // A damaged ancillary chunk is a warning of libpng's.
    PngFile withTransparency;
    withTransparency.width = withTransparency.height = 4;
    withTransparency.colorType = 3;
    withTransparency.FillWithNoise();
    withTransparency.transparency = {1, 2, 3};
    Bytes warned = withTransparency.Write();
    const unsigned char chunk[] = {'t', 'R', 'N', 'S'};
    const auto found = std::search(warned.begin(), warned.end(), std::begin(chunk), std::end(chunk));
    ASSERT_NE(found, warned.end());
    found[4] ^= 1;
    files.push_back(warned);

    QuietOutput output;
    for (const Bytes& file : files)
    {
        try
        {
            Decode(file);
        }
        catch (const std::domain_error&)
        {
            // Only what is printed counts here.
        }
    }
    EXPECT_EQ(output.Finish(), "");
    EXPECT_EQ(Decode(warned)->data[3], 255);
}

TEST(ImageCodecQuiet, TheCatcherOfOutputCatchesBothStreams)
{
    QuietOutput output;
    std::fputs("out ", stdout);
    std::fflush(stdout);
    std::fputs("err", stderr);
    EXPECT_EQ(output.Finish(), "out err");
}

TEST(ImageCodecThreads, SeveralThreadsMayDecodeAtOnce)
{
    const std::vector<Bytes> files = {SmallPng(), SmallPng(4), SmallJpeg(), SmallJpeg(JpegFile::Colors::CMYK)};
    std::vector<Bytes> expected;
    for (const Bytes& file : files)
    {
        expected.push_back(Pixels(*Decode(file)));
    }
    Bytes cut = SmallPng();
    cut.resize(cut.size() / 2);
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back([&] {
            for (std::size_t turn = 0; turn < 40; ++turn)
            {
                const std::size_t file = turn % files.size();
                wrong += Pixels(*Decode(files[file])) == expected[file] ? 0 : 1;
                try
                {
                    Decode(cut);
                    ++wrong;
                }
                catch (const std::domain_error&)
                {
                }
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace OV
