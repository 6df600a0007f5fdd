#include "orvane/imaging/ImageCodec.h"
#include "tests/imaging/Decoding.h"
#include "tests/imaging/JpegFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace OV
{
namespace
{

using namespace Test;
using Colors = JpegFile::Colors;

// The stated reading of what libjpeg itself delivers: grey three times over, rows of two
// components filled up, then each 3 bytes of the block a pixel.
Bytes ExpectedPixels(const Bytes& file, bool swapRedBlue, bool flipVertical)
{
    const DecodedJpeg decoded = DecodeDirectly(file);
    const std::size_t width = std::size_t(decoded.width);
    const std::size_t height = std::size_t(decoded.height);
    Bytes block;
    for (std::size_t y = 0; y < height; ++y)
    {
        const unsigned char* row = &decoded.pixels[y * width * std::size_t(decoded.components)];
        if (decoded.components == 1)
        {
            for (std::size_t x = 0; x < width; ++x)
            {
                block.insert(block.end(), 3, row[x]);
            }
            continue;
        }
        block.insert(block.end(), row, row + width * std::size_t(decoded.components));
        block.resize(std::max(block.size(), (y + 1) * width * 3), 0);
    }
    Bytes pixels;
    for (std::size_t y = 0; y < height; ++y)
    {
        for (std::size_t x = 0; x < width; ++x)
        {
            const unsigned char* p = &block[((flipVertical ? height - 1 - y : y) * width + x) * 3];
            pixels.insert(pixels.end(), {p[swapRedBlue ? 2 : 0], p[1], p[swapRedBlue ? 0 : 2], 255});
        }
    }
    return pixels;
}

struct Form
{
    const char* label;
    Colors colors;
    int horizontalSampling;
    int verticalSampling;
    bool progressive;
    bool arithmetic;
    int restartInterval;
};

class ImageCodecJpeg : public ::testing::TestWithParam<std::tuple<Form, bool, bool>>
{
};

TEST_P(ImageCodecJpeg, DecodesToTheStatedPixels)
{
    const auto& [form, swap, flip] = GetParam();
    for (const auto& [width, height] : {std::pair(1, 1), std::pair(7, 5), std::pair(33, 18), std::pair(260, 257)})
    {
        JpegFile file;
        file.width = width;
        file.height = height;
        file.colors = form.colors;
        file.horizontalSampling = form.horizontalSampling;
        file.verticalSampling = form.verticalSampling;
        file.progressive = form.progressive;
        file.arithmetic = form.arithmetic;
        file.restartInterval = form.restartInterval;
        file.FillWithPicture();
        const Bytes bytes = file.Write();
        const std::unique_ptr<Image> image = Decode(bytes, swap, flip);
        ASSERT_NE(image, nullptr);
        ASSERT_EQ(image->width, width);
        ASSERT_EQ(image->height, height);
        EXPECT_TRUE(Pixels(*image) == ExpectedPixels(bytes, swap, flip)) << width << " by " << height;
    }
}

INSTANTIATE_TEST_SUITE_P(
    AllForms, ImageCodecJpeg,
    ::testing::Combine(
        ::testing::Values(Form{"Grey", Colors::Grey, 1, 1, false, false, 0},
                          Form{"GreyProgressive", Colors::Grey, 1, 1, true, false, 0},
                          Form{"YCbCr444", Colors::YCbCr, 1, 1, false, false, 0},
                          Form{"YCbCr422", Colors::YCbCr, 2, 1, false, false, 0},
                          Form{"YCbCr420", Colors::YCbCr, 2, 2, false, false, 0},
                          Form{"YCbCr440", Colors::YCbCr, 1, 2, false, false, 0},
                          Form{"YCbCrProgressive", Colors::YCbCr, 2, 2, true, false, 0},
                          Form{"YCbCrArithmetic", Colors::YCbCr, 2, 2, false, true, 0},
                          Form{"YCbCrRestarts", Colors::YCbCr, 2, 2, false, false, 2},
                          Form{"RGB", Colors::RGB, 1, 1, false, false, 0},
                          Form{"RGBProgressive", Colors::RGB, 1, 1, true, false, 0},
                          Form{"TwoComponents", Colors::TwoComponents, 1, 1, false, false, 0},
                          Form{"TwoComponentsProgressive", Colors::TwoComponents, 1, 1, true, false, 0},
                          Form{"CMYK", Colors::CMYK, 1, 1, false, false, 0},
                          Form{"YCCK", Colors::YCCK, 2, 2, false, false, 0}),
        ::testing::Bool(), ::testing::Bool()),
    [](const auto& info) {
        return std::string(std::get<0>(info.param).label) + (std::get<1>(info.param) ? "Swapped" : "Straight") +
               (std::get<2>(info.param) ? "Flipped" : "Upright");
    });

TEST(ImageCodecJpegValues, OneComponentGivesThreeEqualChannelsAndFullAlpha)
{
    JpegFile file;
    file.width = file.height = 8;
    file.colors = Colors::Grey;
    file.quality = 100;
    file.pixels.assign(64, 200);
    const Bytes pixels = Pixels(*Decode(file.Write()));
    for (std::size_t i = 0; i < pixels.size(); i += 4)
    {
        ASSERT_EQ(Bytes(&pixels[i], &pixels[i] + 4), (Bytes{200, 200, 200, 255}));
    }
}

TEST(ImageCodecJpegValues, ColorsComeInTheOrderRedGreenBlue)
{
    JpegFile file;
    file.width = file.height = 8;
    file.colors = Colors::RGB;
    file.quality = 100;
    for (int i = 0; i < 64; ++i)
    {
        file.pixels.insert(file.pixels.end(), {240, 120, 16});
    }
    const Bytes bytes = file.Write();
    const Bytes straight = Pixels(*Decode(bytes));
    const Bytes swapped = Pixels(*Decode(bytes, true));
    EXPECT_NEAR(straight[0], 240, 2);
    EXPECT_NEAR(straight[1], 120, 2);
    EXPECT_NEAR(straight[2], 16, 2);
    EXPECT_EQ(swapped[0], straight[2]);
    EXPECT_EQ(swapped[2], straight[0]);
}

TEST(ImageCodecJpegDamage, AWrongRestartMarkerIsPassedOver)
{
    JpegFile file;
    file.width = 64;
    file.height = 8;
    file.colors = Colors::Grey;
    file.restartInterval = 2;
    file.FillWithPicture();
    Bytes bytes = file.Write();
    const Bytes whole = Pixels(*Decode(bytes));
    const unsigned char second[] = {0xFF, 0xD1};
    const auto marker = std::search(bytes.begin(), bytes.end(), std::begin(second), std::end(second));
    ASSERT_NE(marker, bytes.end());
    marker[1] = 0xD5;
    const std::unique_ptr<Image> image = Decode(bytes);
    ASSERT_EQ(image->width, 64);
    // The two intervals before the marker, 32 columns, are untouched.
    for (int y = 0; y < 8; ++y)
    {
        const std::size_t at = std::size_t(y) * 64 * 4;
        EXPECT_TRUE(std::equal(&whole[at], &whole[at] + 32 * 4, image->data + at)) << "row " << y;
    }
}

TEST(ImageCodecJpegDamage, ABlockThatEndsEarlyShowsWhatThereWas)
{
    JpegFile file;
    file.width = 16;
    file.height = 64;
    file.FillWithPicture();
    Bytes bytes = file.Write();
    const Bytes whole = Pixels(*Decode(bytes));
    bytes.resize(bytes.size() - (bytes.size() / 4));
    const std::unique_ptr<Image> image = Decode(bytes);
    ASSERT_EQ(image->height, 64);
    const Bytes cut = Pixels(*image);
    EXPECT_TRUE(std::equal(cut.begin(), cut.begin() + 16 * 8 * 4, whole.begin()));
    EXPECT_FALSE(cut == whole);
}

TEST(ImageCodecJpegDamage, ASegmentLongerThanTheBlockIsAnError)
{
    Bytes bytes = {0xFF, 0xD8, 0xFF, 0xE5, 0xFF, 0xFF, 1, 2, 3};
    EXPECT_THROW(Decode(bytes), std::domain_error);
}

}  // namespace
}  // namespace OV
