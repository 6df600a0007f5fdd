#include "orvane/imaging/ImageCodec.h"
#include "tests/imaging/Decoding.h"
#include "tests/imaging/FailurePoints.h"
#include "tests/imaging/QuietOutput.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>

namespace OV
{
namespace
{

using namespace Test;

constexpr std::uint64_t kHuge = std::uint64_t(1) << 62;

std::string EncodeError(std::uint64_t width, std::uint64_t height)
{
    Bytes pixels = NoiseBytes(width * height * 3);
    try
    {
        ImageCodec::EncodeImagePNG(pixels, width, height, 3);
    }
    catch (const std::domain_error& error)
    {
        return error.what();
    }
    return "no error";
}

TEST(ImageCodecEncode, FourChannelsComeBackAsTheyWere)
{
    for (const auto& [width, height] : {std::pair(1u, 1u), std::pair(2u, 3u), std::pair(301u, 299u)})
    {
        Bytes pixels = NoiseBytes(width * height * 4);
        const Bytes before = pixels;
        const auto image = Decode(ImageCodec::EncodeImagePNG(pixels, width, height, 4));
        EXPECT_EQ(pixels, before);
        ASSERT_EQ(image->width, int(width));
        ASSERT_EQ(image->height, int(height));
        EXPECT_EQ(Pixels(*image), pixels);
    }
}

TEST(ImageCodecEncode, ThreeChannelsComeBackOpaque)
{
    Bytes pixels = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    const Bytes file = ImageCodec::EncodeImagePNG(pixels, 2, 2, 3);
    EXPECT_EQ(Pixels(*Decode(file)), (Bytes{1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255, 10, 11, 12, 255}));
    EXPECT_EQ(Pixels(*Decode(file, true, true)), (Bytes{9, 8, 7, 255, 12, 11, 10, 255, 3, 2, 1, 255, 6, 5, 4, 255}));
}

TEST(ImageCodecEncode, TheHeaderTellsEightBitsNoInterlaceAndTheColorType)
{
    for (const std::uint64_t channels : {3u, 4u})
    {
        Bytes pixels = NoiseBytes(7 * 5 * channels);
        const Bytes file = ImageCodec::EncodeImagePNG(pixels, 7, 5, channels);
        const unsigned char header[] = {0x89, 'P', 'N', 'G', 13, 10, 26, 10, 0, 0, 0, 13, 'I', 'H', 'D', 'R', 0, 0, 0, 7,
                                        0, 0, 0, 5, 8, static_cast<unsigned char>(channels == 4 ? 6 : 2), 0, 0, 0};
        ASSERT_GT(file.size(), sizeof(header));
        EXPECT_EQ(0, std::memcmp(file.data(), header, sizeof(header)));
        const unsigned char end[] = {0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82};
        EXPECT_EQ(0, std::memcmp(&file[file.size() - sizeof(end)], end, sizeof(end)));
    }
}

TEST(ImageCodecEncode, TheSamePixelsGiveTheSameBytes)
{
    Bytes pixels = NoiseBytes(50 * 50 * 4);
    EXPECT_EQ(ImageCodec::EncodeImagePNG(pixels, 50, 50, 4), ImageCodec::EncodeImagePNG(pixels, 50, 50, 4));
}

struct BadArguments
{
    const char* label;
    std::size_t bytes;
    std::uint64_t width, height, channels;
};

class ImageCodecEncodeRefusal : public ::testing::TestWithParam<BadArguments>
{
};

TEST_P(ImageCodecEncodeRefusal, GivesAnEmptyVectorAndNoException)
{
    const BadArguments& bad = GetParam();
    Bytes pixels(bad.bytes);
    EXPECT_TRUE(ImageCodec::EncodeImagePNG(pixels, bad.width, bad.height, bad.channels).empty());
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ImageCodecEncodeRefusal,
    ::testing::Values(BadArguments{"OneByteShort", 15, 2, 2, 4}, BadArguments{"OneByteLong", 17, 2, 2, 4},
                      BadArguments{"OneChannel", 4, 2, 2, 1}, BadArguments{"TwoChannels", 8, 2, 2, 2},
                      BadArguments{"FiveChannels", 20, 2, 2, 5}, BadArguments{"NoChannels", 0, 2, 2, 0},
                      BadArguments{"NoWidth", 0, 0, 2, 4}, BadArguments{"NoHeight", 0, 2, 0, 4},
                      BadArguments{"NoPixels", 0, 2, 2, 4}, BadArguments{"WidthAndHeightChanged", 24, 4, 2, 4},
                      BadArguments{"ProductWrapsToNothing", 0, kHuge, 1, 4},
                      BadArguments{"ProductWrapsToTheSize", 16, kHuge + 1, 4, 4},
                      BadArguments{"HeightWrapsToTheSize", 4, 1, kHuge + 1, 4},
                      BadArguments{"BothWrap", 16, std::uint64_t(1) << 32, std::uint64_t(1) << 32, 4}),
    [](const auto& info) { return info.param.label; });

TEST(ImageCodecEncodeFailure, TheLargestWidthOfTheLibraryIsWrittenAndOneMoreIsNot)
{
    Bytes pixels(std::size_t(1000000) * 3);
    EXPECT_FALSE(ImageCodec::EncodeImagePNG(pixels, 1000000, 1, 3).empty());
    QuietOutput output;
    EXPECT_EQ(EncodeError(1000001, 1), "Error writing PNG");
    EXPECT_EQ(EncodeError(1, 1000001), "Error writing PNG");
    EXPECT_EQ(output.Finish(), "");
}

TEST(ImageCodecEncodeFailure, EachStepThatFailsHasItsText)
{
    {
        const FailureScope scope;
        Failures().writeStruct = true;
        EXPECT_EQ(EncodeError(2, 2), "failed to allocate init png write structure");
    }
    {
        const FailureScope scope;
        Failures().infoStructsToPass = 0;
        EXPECT_EQ(EncodeError(2, 2), "failed to allocate init png info structure");
        EXPECT_EQ(Failures().livePngStructs, 0);
    }
    {
        const FailureScope scope;
        Failures().pngMalloc = true;
        EXPECT_EQ(EncodeError(2, 2), "failed to allocate png memory");
        EXPECT_EQ(Failures().livePngStructs, 0);
    }
    EXPECT_EQ(EncodeError(2, 2), "no error");
}

TEST(ImageCodecEncodeFailure, OutputThatFindsNoMemoryIsAWriteError)
{
    const FailureScope scope;
    Bytes pixels = NoiseBytes(200 * 200 * 4);
    QuietOutput output;
    Failures().failingBlock = 100000;
    std::string text;
    try
    {
        ImageCodec::EncodeImagePNG(pixels, 200, 200, 4);
    }
    catch (const std::domain_error& error)
    {
        text = error.what();
    }
    Failures().failingBlock = 0;
    EXPECT_EQ(text, "Error writing PNG");
    EXPECT_EQ(Failures().livePngStructs, 0);
    EXPECT_EQ(output.Finish(), "");
}

}  // namespace
}  // namespace OV
