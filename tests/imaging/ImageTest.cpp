#include "orvane/imaging/Image.h"
#include "tests/imaging/Decoding.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

namespace OV
{
namespace
{

using namespace Test;

class OpenImage : public Image
{
public:
    using Image::SampleBilinear;
};

std::unique_ptr<Image> MakeImage(int width, int height, Bytes pixels)
{
    return std::unique_ptr<Image>(Image::ImageFromData(width, height, pixels.data(), false, false, false));
}

// One pixel of which every byte is the given one.
Bytes Grey(std::initializer_list<int> values)
{
    Bytes pixels;
    for (int value : values)
    {
        pixels.insert(pixels.end(), 4, static_cast<unsigned char>(value));
    }
    return pixels;
}

// The channel 0 of a picture of one byte a pixel, sampled.
int Sample(float x, float y, Bytes source, int width, int height)
{
    unsigned char result = 77;
    OpenImage::SampleBilinear(x, y, &result, source.data(), width, height, width, 1);
    return result;
}

TEST(Image, CanNotBeMadeEmptyByAHost)
{
    EXPECT_FALSE(std::is_default_constructible_v<Image>);
    EXPECT_FALSE(std::is_polymorphic_v<Image>);
}

TEST(Image, TellsItsPixelsAndItsSize)
{
    const std::unique_ptr<Image> image = MakeImage(2, 1, {1, 2, 3, 4, 5, 6, 7, 8});
    int width = 0;
    int height = 0;
    EXPECT_EQ(image->GetData(width, height), image->data);
    EXPECT_EQ(width, 2);
    EXPECT_EQ(height, 1);
    width = height = 0;
    image->GetDimensions(width, height);
    EXPECT_EQ(width, 2);
    EXPECT_EQ(height, 1);
    EXPECT_EQ(Pixels(*image), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
}

// The address sanitizer tells whether each block dies once, and once only.
TEST(Image, AssignmentCopiesTheFieldsAndSharesTheBlock)
{
    const std::unique_ptr<Image> first = MakeImage(1, 2, Grey({10, 20}));
    std::unique_ptr<Image> second = MakeImage(1, 1, Grey({30}));
    *second = *first;
    EXPECT_EQ(second->data, first->data);
    EXPECT_EQ(second->width, 1);
    EXPECT_EQ(second->height, 2);
    second.reset();
    EXPECT_EQ(Pixels(*first), Grey({10, 20}));
}

TEST(Image, ASharedBlockOutlivesTheImageItCameFrom)
{
    std::unique_ptr<Image> first = MakeImage(1, 1, Grey({10}));
    const std::unique_ptr<Image> second = MakeImage(1, 1, Grey({30}));
    *second = *first;
    const Image third(*second);
    first.reset();
    EXPECT_EQ(Pixels(*second), Grey({10}));
    EXPECT_EQ(third.data, second->data);
}

TEST(Image, AssignedToItselfItKeepsItsPixels)
{
    const std::unique_ptr<Image> image = MakeImage(1, 1, Grey({10}));
    const Image& same = *image;
    *image = same;
    EXPECT_EQ(Pixels(*image), Grey({10}));
    Image other(*image);
    *image = other;
    EXPECT_EQ(Pixels(*image), Grey({10}));
}

TEST(Image, ABlockTakenByTheHostIsTheHosts)
{
    std::unique_ptr<Image> image = MakeImage(1, 1, Grey({10}));
    unsigned char* const taken = image->data;
    image->data = nullptr;
    image.reset();
    EXPECT_EQ(taken[0], 10);
    std::free(taken);
}

TEST(Image, ABlockPutInByHandIsFreedWithTheImageAndLeavesSharersAlone)
{
    const std::unique_ptr<Image> first = MakeImage(1, 1, Grey({10}));
    {
        Image second(*first);
        second.data = static_cast<unsigned char*>(std::calloc(1, 4));
        const Image third(second);
        EXPECT_EQ(third.data, second.data);
    }
    EXPECT_EQ(Pixels(*first), Grey({10}));
}

TEST(Image, TextDataIsTurnedOverAndItsAverageFillsAllChannels)
{
    Bytes source = {30, 60, 90, 0, 255, 255, 255, 7, 0, 0, 2, 255, 1, 2, 2, 9};
    const std::unique_ptr<Image> image(Image::ImageFromTextData(2, 2, source.data()));
    EXPECT_EQ(image->width, 2);
    EXPECT_EQ(image->height, 2);
    EXPECT_EQ(Pixels(*image), Grey({0, 1, 60, 255}));
}

TEST(Image, TextDataOfNoWidthGivesAnImageWithoutPixels)
{
    Bytes source(4);
    const std::unique_ptr<Image> image(Image::ImageFromTextData(0, 12, source.data()));
    EXPECT_EQ(image->width, 0);
    EXPECT_EQ(image->height, 12);
    EXPECT_NE(image->data, nullptr);
}

TEST(Image, PremultiplyLeavesOpaquePixels)
{
    const std::unique_ptr<Image> image = MakeImage(1, 1, {255, 100, 1, 255});
    image->PremultiplyAlpha();
    EXPECT_EQ(Pixels(*image), (Bytes{255, 100, 1, 255}));
}

TEST(Image, PremultiplyDropsFractionsAndKeepsAlpha)
{
    const std::unique_ptr<Image> image =
        MakeImage(3, 1, {255, 101, 1, 128, 255, 254, 1, 254, 200, 100, 50, 0});
    image->PremultiplyAlpha();
    // 255, 101 and 1 times 0.50196; 255, 254 and 1 times 0.99608.
    EXPECT_EQ(Pixels(*image), (Bytes{128, 50, 0, 128, 254, 253, 0, 254, 0, 0, 0, 0}));
}

TEST(Image, PremultiplyFollowsTheFormulaForEveryValue)
{
    Bytes source;
    for (int alpha = 0; alpha < 256; ++alpha)
    {
        for (int value = 0; value < 256; ++value)
        {
            const auto byte = static_cast<unsigned char>(value);
            source.insert(source.end(), {byte, byte, byte, static_cast<unsigned char>(alpha)});
        }
    }
    const std::unique_ptr<Image> image = MakeImage(256, 256, source);
    image->PremultiplyAlpha();
    for (std::size_t i = 0; i < source.size(); i += 4)
    {
        const float alpha = float(source[i + 3]) * 0.003921569f;
        const int expected = source[i + 3] == 255 ? source[i] : int(float(source[i]) * alpha);
        ASSERT_EQ(int(image->data[i]), expected) << "value " << int(source[i]) << " alpha " << int(source[i + 3]);
        ASSERT_EQ(image->data[i + 3], source[i + 3]);
    }
}

TEST(Image, SampleBetweenTheFirstTwoColumnsIsTheFirstOne)
{
    const Bytes source = {10, 110, 210, 50};
    EXPECT_EQ(Sample(0.5f, 0, source, 4, 1), 10);
    EXPECT_EQ(Sample(0.999f, 0, source, 4, 1), 10);
    EXPECT_EQ(Sample(0, 0.5f, source, 1, 4), 10);
}

TEST(Image, SampleBlendsTheSecondAndThirdColumnEvenly)
{
    const Bytes source = {10, 110, 211, 50};
    EXPECT_EQ(Sample(1.5f, 0, source, 4, 1), 160);
    EXPECT_EQ(Sample(0, 1.5f, source, 1, 4), 160);
    EXPECT_EQ(Sample(1.25f, 0, source, 4, 1), 135);
}

TEST(Image, SampleTakesFourNeighbours)
{
    const Bytes source = {0, 0, 0, 0, 0, 100, 200, 0, 0, 50, 255, 0, 0, 0, 0, 0};
    // 100 * 0.75 * 0.5 + 200 * 0.25 * 0.5 + 50 * 0.75 * 0.5 + 255 * 0.25 * 0.5 = 113.125
    EXPECT_EQ(Sample(1.25f, 1.5f, source, 4, 4), 113);
}

TEST(Image, SampleOnWholeCoordinatesCopies)
{
    const Bytes source = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    for (int y = 0; y < 3; ++y)
    {
        for (int x = 0; x < 3; ++x)
        {
            EXPECT_EQ(Sample(float(x), float(y), source, 3, 3), 1 + y * 3 + x);
        }
    }
}

TEST(Image, SampleOutsideRepeatsTheEdge)
{
    const Bytes source = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    EXPECT_EQ(Sample(-3.5f, -0.5f, source, 3, 3), 1);
    EXPECT_EQ(Sample(2.5f, 0, source, 3, 3), 3);
    EXPECT_EQ(Sample(1e20f, 2.75f, source, 3, 3), 9);
    EXPECT_EQ(Sample(-1e20f, 1e9f, source, 3, 3), 7);
}

TEST(Image, SampleAtNoNumberIsDefined)
{
    const float infinity = std::numeric_limits<float>::infinity();
    const float noNumber = std::numeric_limits<float>::quiet_NaN();
    const Bytes source = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    EXPECT_EQ(Sample(noNumber, 2, source, 3, 3), 7);
    EXPECT_EQ(Sample(1, noNumber, source, 3, 3), 2);
    EXPECT_EQ(Sample(infinity, 0, source, 3, 3), 3);
    EXPECT_EQ(Sample(0, -infinity, source, 3, 3), 1);
}

TEST(Image, SampleWithATinyWeightCopies)
{
    Bytes source(20, 0);
    source[2] = 255;
    EXPECT_EQ(Sample(1.0000005f, 0, source, 20, 1), 0);
    // Blended with a weight just below 1, 255 loses its fraction; copied it would not.
    EXPECT_EQ(Sample(2.00001f, 0, source, 20, 1), 254);
}

TEST(Image, SampleWorksOnAnyNumberOfChannelsAndAnyStride)
{
    // Two pixels of three channels in rows of eight bytes.
    Bytes source = {10, 20, 30, 40, 50, 60, 0, 0, 12, 22, 32, 42, 52, 62, 0, 0, 14, 24, 34, 44, 54, 64, 0, 0};
    unsigned char result[4] = {9, 9, 9, 9};
    OpenImage::SampleBilinear(1, 1, result, source.data(), 2, 3, 8, 3);
    EXPECT_EQ(0, std::memcmp(result, "\x2A\x34\x3E\x09", 4));
}

TEST(Image, ResizeToItsOwnSizeKeepsThePixels)
{
    const Bytes source = Grey({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
    const std::unique_ptr<Image> image = MakeImage(4, 3, source);
    image->Resize(4, 3);
    EXPECT_EQ(Pixels(*image), source);
}

TEST(Image, ResizeMapsCornersToCorners)
{
    const std::unique_ptr<Image> image = MakeImage(3, 3, Grey({10, 0, 20, 0, 0, 0, 30, 0, 40}));
    image->Resize(7, 5);
    EXPECT_EQ(image->width, 7);
    EXPECT_EQ(image->height, 5);
    const Bytes pixels = Pixels(*image);
    EXPECT_EQ(pixels[0], 10);
    EXPECT_EQ(pixels[6 * 4], 20);
    EXPECT_EQ(pixels[4 * 7 * 4], 30);
    EXPECT_EQ(pixels[(4 * 7 + 6) * 4 + 3], 40);
}

TEST(Image, ResizeBlendsByPositionInTheSource)
{
    const std::unique_ptr<Image> image = MakeImage(4, 1, Grey({10, 20, 60, 80}));
    image->Resize(7, 2);
    // Steps of half a pixel; between the first two columns nothing is blended. One row has no
    // second to scale to: both new rows are it.
    EXPECT_EQ(Pixels(*image), Grey({10, 10, 20, 40, 60, 70, 80, 10, 10, 20, 40, 60, 70, 80}));
}

TEST(Image, ResizeToOneColumnDividesByZeroAndShowsTheFirst)
{
    const std::unique_ptr<Image> image = MakeImage(3, 2, Grey({10, 20, 30, 40, 50, 60}));
    image->Resize(1, 2);
    EXPECT_EQ(image->width, 1);
    EXPECT_EQ(Pixels(*image), Grey({10, 40}));
    image->Resize(1, 1);
    EXPECT_EQ(Pixels(*image), Grey({10}));
}

TEST(Image, ResizeLeavesThePixelsToThoseThatShareThem)
{
    const std::unique_ptr<Image> image = MakeImage(2, 1, Grey({10, 20}));
    const Image other(*image);
    image->Resize(1, 1);
    EXPECT_EQ(Pixels(other), Grey({10, 20}));
    EXPECT_EQ(Pixels(*image), Grey({10}));
}

TEST(Image, ResizeToNothingLeavesAnImageWithoutPixels)
{
    const std::unique_ptr<Image> image = MakeImage(2, 1, Grey({10, 20}));
    image->Resize(-3, 5);
    EXPECT_EQ(image->width, 0);
    EXPECT_EQ(image->height, 5);
    image->PremultiplyAlpha();
    image->Resize(1, 1);
    EXPECT_EQ(Pixels(*image), Grey({0}));
}

struct CropCase
{
    const char* label;
    int fullWidth, fullHeight, cropX, cropY, cropWidth, cropHeight;
    Bytes expected;
};

class ImageCrop : public ::testing::TestWithParam<CropCase>
{
};

TEST_P(ImageCrop, CutsFromTheScaledPictureAndLeavesTheImage)
{
    const CropCase& c = GetParam();
    const Bytes source = Grey({1, 2, 3, 4, 5, 6, 7, 8, 9});
    const std::unique_ptr<Image> image = MakeImage(3, 3, source);
    unsigned char* const cut =
        image->ResizeCropAndReturnData(c.fullWidth, c.fullHeight, c.cropX, c.cropY, c.cropWidth, c.cropHeight);
    ASSERT_NE(cut, nullptr);
    EXPECT_EQ(Bytes(cut, cut + c.expected.size()), c.expected);
    std::free(cut);
    EXPECT_EQ(image->width, 3);
    EXPECT_EQ(image->height, 3);
    EXPECT_EQ(Pixels(*image), source);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ImageCrop,
    ::testing::Values(CropCase{"Inside", 3, 3, 1, 1, 2, 2, Grey({5, 6, 8, 9})},
                      CropCase{"OfAScaledPicture", 5, 5, 2, 2, 2, 1, Grey({5, 5})},
                      CropCase{"PastTheRightEdgeRepeatsIt", 3, 3, 2, 0, 2, 1, Grey({3, 3})},
                      CropCase{"BeforeTheLeftEdgeRepeatsIt", 3, 3, -1, 2, 2, 1, Grey({7, 7})},
                      CropCase{"WiderThanTheFullSizeIsBlackBeyond", 3, 3, 0, 0, 4, 1, Grey({1, 2, 3, 0})},
                      CropCase{"TallerThanTheFullSizeIsBlackBeyond", 3, 3, 0, 0, 1, 4, Grey({1, 4, 7, 0})},
                      CropCase{"FromTheMiddleOfOneColumn", 1, 3, 1, 0, 1, 2, Grey({3, 6})},
                      CropCase{"OfNoSize", 3, 3, 0, 0, 0, 2, {}},
                      CropCase{"OfNegativeSize", 3, 3, 0, 0, -1, -1, {}},
                      CropCase{"FromTheLargestNumber", 3, 3, std::numeric_limits<int>::max(),
                               std::numeric_limits<int>::min(), 2, 1, Grey({3, 3})}),
    [](const ::testing::TestParamInfo<CropCase>& info) { return info.param.label; });

TEST(Image, SizesThatNoMemoryHoldsAreTheAllocatorsAffair)
{
    const std::unique_ptr<Image> image = MakeImage(1, 1, Grey({10}));
    constexpr int largest = std::numeric_limits<int>::max();
    EXPECT_THROW(image->Resize(largest, largest), std::bad_alloc);
    EXPECT_EQ(Pixels(*image), Grey({10}));
    unsigned char source[4] = {};
    EXPECT_THROW(Image::ImageFromData(largest, largest, source, false, false, false), std::bad_alloc);
    EXPECT_THROW(Image::ImageFromTextData(largest, largest, source), std::bad_alloc);
}

}  // namespace
}  // namespace OV
