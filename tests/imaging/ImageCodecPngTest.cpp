#include "orvane/imaging/ImageCodec.h"
#include "tests/imaging/Decoding.h"
#include "tests/imaging/PngFile.h"

#include <gtest/gtest.h>

#include <functional>
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

PngFile Noise(int width, int height, int colorType, int bitDepth)
{
    PngFile file;
    file.width = width;
    file.height = height;
    file.colorType = colorType;
    file.bitDepth = bitDepth;
    file.FillWithNoise(unsigned(colorType * 17 + bitDepth));
    return file;
}

// The value of `depth` bits at a place in a packed row.
unsigned PackedValue(const Bytes& row, int index, int depth)
{
    const int bit = index * depth;
    return (row[std::size_t(bit / 8)] >> (8 - depth - bit % 8)) & ((1u << depth) - 1);
}

// What the decoder is to make of a row before it is read as pixels, and how wide a pixel is.
Bytes ExpandedRow(const PngFile& file, const Bytes& row)
{
    Bytes bytes;
    for (int x = 0; x < file.width; ++x)
    {
        if (file.colorType == 0)
        {
            const unsigned value = PackedValue(row, x, file.bitDepth);
            bytes.insert(bytes.end(), 3, static_cast<unsigned char>(value * 255 / ((1u << file.bitDepth) - 1)));
        }
        else if (file.colorType == 3)
        {
            const unsigned entry = PackedValue(row, x, file.bitDepth);
            for (std::size_t c = 0; c < 3; ++c)
            {
                bytes.push_back(file.palette[entry * 3 + c]);
            }
            if (!file.transparency.empty())
            {
                bytes.push_back(entry < file.transparency.size() ? file.transparency[entry] : 255);
            }
        }
        else if (file.colorType == 4)
        {
            bytes.insert(bytes.end(), 3, row[std::size_t(x) * 2]);
            bytes.push_back(row[std::size_t(x) * 2 + 1]);
        }
    }
    return bytes.empty() ? row : bytes;
}

// The stated reading: the rows behind each other as one block, of which each 3 or 4 bytes
// are a pixel.
Bytes ExpectedPixels(const PngFile& file, bool swapRedBlue, bool flipVertical)
{
    Bytes block;
    for (const Bytes& row : file.rows)
    {
        const Bytes expanded = ExpandedRow(file, row);
        block.insert(block.end(), expanded.begin(), expanded.end());
    }
    const bool four = file.colorType == 6 || (file.colorType == 3 && !file.transparency.empty());
    Bytes pixels;
    for (int y = 0; y < file.height; ++y)
    {
        const int sourceRow = flipVertical ? file.height - 1 - y : y;
        for (int x = 0; x < file.width; ++x)
        {
            const unsigned char* p = &block[std::size_t(sourceRow * file.width + x) * (four ? 4 : 3)];
            pixels.insert(pixels.end(), {p[swapRedBlue ? 2 : 0], p[1], p[swapRedBlue ? 0 : 2],
                                         four ? p[3] : static_cast<unsigned char>(255)});
        }
    }
    return pixels;
}

struct Form
{
    const char* label;
    int colorType;
    int bitDepth;
    int transparentEntries;
};

class ImageCodecPng : public ::testing::TestWithParam<std::tuple<Form, bool, bool>>
{
};

TEST_P(ImageCodecPng, DecodesToTheStatedPixels)
{
    const auto& [form, swap, flip] = GetParam();
    for (const auto& [width, height] : {std::pair(1, 1), std::pair(7, 5), std::pair(33, 9), std::pair(260, 257)})
    {
        PngFile file = Noise(width, height, form.colorType, form.bitDepth);
        for (int i = 0; i < form.transparentEntries; ++i)
        {
            file.transparency.push_back(static_cast<unsigned char>(i * 60));
        }
        const std::unique_ptr<Image> image = Decode(file.Write(), swap, flip);
        ASSERT_NE(image, nullptr);
        ASSERT_EQ(image->width, width);
        ASSERT_EQ(image->height, height);
        EXPECT_TRUE(Pixels(*image) == ExpectedPixels(file, swap, flip)) << width << " by " << height;
    }
}

INSTANTIATE_TEST_SUITE_P(
    AllForms, ImageCodecPng,
    ::testing::Combine(::testing::Values(Form{"Grey1", 0, 1, 0}, Form{"Grey2", 0, 2, 0}, Form{"Grey4", 0, 4, 0},
                                         Form{"Grey8", 0, 8, 0}, Form{"RGB8", 2, 8, 0}, Form{"RGB16", 2, 16, 0},
                                         Form{"Palette1", 3, 1, 0}, Form{"Palette2", 3, 2, 0},
                                         Form{"Palette4", 3, 4, 0}, Form{"Palette8", 3, 8, 0},
                                         Form{"Palette1Transparent", 3, 1, 1}, Form{"Palette2Transparent", 3, 2, 4},
                                         Form{"Palette4Transparent", 3, 4, 3}, Form{"Palette8Transparent", 3, 8, 200},
                                         Form{"GreyAlpha8", 4, 8, 0}, Form{"RGBA8", 6, 8, 0}, Form{"RGBA16", 6, 16, 0}),
                       ::testing::Bool(), ::testing::Bool()),
    [](const auto& info) {
        return std::string(std::get<0>(info.param).label) + (std::get<1>(info.param) ? "Swapped" : "Straight") +
               (std::get<2>(info.param) ? "Flipped" : "Upright");
    });

TEST(ImageCodecPngValues, AGreyOneBitFileIsBlackAndWhiteAndOpaque)
{
    PngFile file = Noise(4, 1, 0, 1);
    file.rows = {{0x50}};
    EXPECT_EQ(Pixels(*Decode(file.Write())),
              (Bytes{0, 0, 0, 255, 255, 255, 255, 255, 0, 0, 0, 255, 255, 255, 255, 255}));
}

TEST(ImageCodecPngValues, APaletteWithoutTransparencyIsOpaque)
{
    PngFile file = Noise(2, 1, 3, 8);
    file.palette = {10, 20, 30, 40, 50, 60};
    file.rows = {{1, 0}};
    EXPECT_EQ(Pixels(*Decode(file.Write())), (Bytes{40, 50, 60, 255, 10, 20, 30, 255}));
}

TEST(ImageCodecPngValues, APaletteWithTransparencyBringsAlpha)
{
    PngFile file = Noise(2, 1, 3, 8);
    file.palette = {10, 20, 30, 40, 50, 60};
    file.transparency = {70};
    file.rows = {{1, 0}};
    EXPECT_EQ(Pixels(*Decode(file.Write())), (Bytes{40, 50, 60, 255, 10, 20, 30, 70}));
}

TEST(ImageCodecPngValues, GreyWithAlphaIsReadThreeBytesAPixelAsItsRowsLie)
{
    PngFile file = Noise(4, 1, 4, 8);
    file.rows = {{1, 9, 2, 8, 3, 7, 4, 6}};
    // The rows hold 1 1 1 9 2 2 2 8 3 3 3 7 4 4 4 6.
    EXPECT_EQ(Pixels(*Decode(file.Write())), (Bytes{1, 1, 1, 255, 9, 2, 2, 255, 2, 8, 3, 255, 3, 3, 7, 255}));
}

TEST(ImageCodecPngValues, SixteenBitsAreNeitherRefusedNorReduced)
{
    PngFile file = Noise(2, 1, 6, 16);
    file.rows = {{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};
    EXPECT_EQ(Pixels(*Decode(file.Write())), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST(ImageCodecPngValues, AColorMarkedTransparentStaysOpaque)
{
    for (const int colorType : {0, 2})
    {
        PngFile file = Noise(2, 1, colorType, 8);
        file.transparentColor = true;
        file.rows = {Bytes(file.RowBytes(), 0)};
        EXPECT_EQ(Pixels(*Decode(file.Write())), (Bytes{0, 0, 0, 255, 0, 0, 0, 255})) << "type " << colorType;
    }
}

TEST(ImageCodecPngRefusal, InterlacedFilesOfEveryColorTypeGiveNull)
{
    for (const int colorType : {0, 2, 3, 4, 6})
    {
        PngFile file = Noise(9, 9, colorType, 8);
        file.interlaced = true;
        EXPECT_EQ(Decode(file.Write()), nullptr) << "type " << colorType;
        file.interlaced = false;
        EXPECT_NE(Decode(file.Write()), nullptr) << "type " << colorType;
    }
}

TEST(ImageCodecPngRefusal, GreyOfSixteenBitsGivesNullWithAndWithoutAlpha)
{
    EXPECT_EQ(Decode(Noise(3, 3, 0, 16).Write()), nullptr);
    EXPECT_EQ(Decode(Noise(3, 3, 4, 16).Write()), nullptr);
}

TEST(ImageCodecPngSniffing, TheSignatureAsFarAsItGoesIsPng)
{
    const Bytes file = Noise(3, 3, 6, 8).Write();
    for (std::size_t size = 1; size <= 8; ++size)
    {
        try
        {
            Decode(Bytes(file.begin(), file.begin() + std::ptrdiff_t(size)));
            ADD_FAILURE() << size << " bytes gave an answer";
        }
        catch (const std::domain_error& error)
        {
            EXPECT_STREQ(error.what(), "Error reading PNG");
        }
    }
}

TEST(ImageCodecPngSniffing, AnyOtherBlockIsJpeg)
{
    const std::vector<Bytes> blocks = {{0}, {0x89, 'P', 'N', 'J'}, {0xFF, 0xD8}, Bytes(100, 'x')};
    for (const Bytes& block : blocks)
    {
        try
        {
            Decode(block);
            ADD_FAILURE() << "a block of " << block.size() << " gave an answer";
        }
        catch (const std::domain_error& error)
        {
            EXPECT_STREQ(error.what(), "Error reading JPEG");
        }
    }
}

TEST(ImageCodecPngSniffing, NoBlockIsAnEmptyJpeg)
{
    unsigned char signature[8] = {0x89, 'P', 'N', 'G', 13, 10, 26, 10};
    EXPECT_THROW(ImageCodec::DecodeImage(signature, 0, false, false), std::domain_error);
    EXPECT_THROW(ImageCodec::DecodeImage(signature, -8, false, false), std::domain_error);
    EXPECT_THROW(ImageCodec::DecodeImage(nullptr, 0, false, false), std::domain_error);
    EXPECT_THROW(ImageCodec::DecodeImage(nullptr, 8, false, false), std::domain_error);
}

TEST(ImageCodecPngSizes, AFlatPictureOfTheHighestCompressionIsRead)
{
    // One bit a pixel that becomes four bytes: the output is many times what a lie could claim.
    PngFile file = Noise(8000, 4000, 3, 1);
    file.transparency = {0};
    file.rows.assign(4000, Bytes(file.RowBytes(), 0));
    const Bytes bytes = file.Write();
    ASSERT_LT(bytes.size() * 1032, std::size_t(8000) * 4000 * 4);
    const std::unique_ptr<Image> image = Decode(bytes);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->width, 8000);
    EXPECT_EQ(image->data[std::size_t(8000) * 4000 * 4 - 2], file.palette[2]);
}

TEST(ImageCodecPngSizes, ASizeThatTheBlockCanNotHoldIsAnError)
{
    for (const int colorType : {0, 2, 3, 4, 6})
    {
        Bytes bytes = Noise(3, 3, colorType, 8).Write();
        // A million columns and rows, the most that libpng lets pass.
        for (const std::size_t at : {16u, 20u})
        {
            bytes[at] = 0x00;
            bytes[at + 1] = 0x0F;
            bytes[at + 2] = 0x42;
            bytes[at + 3] = 0x40;
        }
        RepairChecksums(bytes);
        EXPECT_THROW(Decode(bytes), std::domain_error) << "type " << colorType;
    }
}

}  // namespace
}  // namespace OV
