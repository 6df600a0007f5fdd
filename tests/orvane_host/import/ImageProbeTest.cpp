#include "orvane_host/import/detail/ImageProbe.h"

#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"
#include "tests/imaging/JpegFile.h"
#include "tests/imaging/PngFile.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

using namespace OV;
using namespace OV::Host;
using namespace OV::Test;

namespace
{

ImageFacts Probe(const Bytes& bytes)
{
    return ProbeImage(MemorySource(bytes.data(), bytes.size()));
}

std::unique_ptr<Image> Decode(Bytes bytes)
{
    try
    {
        return std::unique_ptr<Image>(
            ImageCodec::DecodeImage(bytes.data(), static_cast<int>(bytes.size()), false, false));
    }
    catch (const std::domain_error&)
    {
        return nullptr;
    }
}

struct PngCase
{
    const char* label;
    int colorType;
    int bitDepth;
    bool interlaced;
    bool hasTransparency;
    bool isReadable;
    bool hasAlpha;
    bool isDistorted;
};

const PngCase kPngs[] = {
    {"RGBA", 6, 8, false, false, true, true, false},
    {"RGBA, 16 bits", 6, 16, false, false, true, true, true},
    {"RGB", 2, 8, false, false, true, false, false},
    {"palette", 3, 8, false, false, true, false, false},
    {"palette with transparency", 3, 8, false, true, true, true, false},
    {"palette of 2 bits with transparency", 3, 2, false, true, true, true, false},
    {"grey", 0, 8, false, false, true, false, false},
    {"grey of 1 bit", 0, 1, false, false, true, false, false},
    {"grey of 16 bits", 0, 16, false, false, false, false, true},
    {"grey with alpha", 4, 8, false, false, true, false, true},
    {"grey with alpha, 16 bits", 4, 16, false, false, false, false, true},
    {"interlaced", 6, 8, true, false, false, false, false},
};

TEST(ImageProbe, SaysOfEachPngWhatTheCodecMakesOfIt)
{
    for (const PngCase& test : kPngs)
    {
        SCOPED_TRACE(test.label);
        PngFile png;
        png.width = 13;
        png.height = 7;
        png.colorType = test.colorType;
        png.bitDepth = test.bitDepth;
        png.interlaced = test.interlaced;
        png.FillWithNoise();
        if (test.hasTransparency)
        {
            png.transparency.assign(std::size_t(1) << test.bitDepth, 128);
        }
        const Bytes bytes = png.Write();
        const ImageFacts facts = Probe(bytes);
        EXPECT_EQ(facts.isReadable, test.isReadable);
        EXPECT_EQ(facts.hasAlpha, test.hasAlpha);
        EXPECT_EQ(facts.isReadable && facts.isDistorted, test.isReadable && test.isDistorted);
        EXPECT_EQ(facts.obstacle.empty(), test.isReadable);
        EXPECT_EQ(facts.width, 13u);
        EXPECT_EQ(facts.height, 7u);

        const std::unique_ptr<Image> image = Decode(bytes);
        EXPECT_EQ(image != nullptr, test.isReadable);
        bool isOpaque = true;
        for (int i = 0; image && i < 13 * 7; ++i)
        {
            isOpaque = isOpaque && image->data[4 * i + 3] == 255;
        }
        EXPECT_EQ(isOpaque, !test.hasAlpha);
    }
}

TEST(ImageProbe, FindsTheSizeOfAJpegBehindItsOtherSegments)
{
    JpegFile jpeg;
    jpeg.width = 21;
    jpeg.height = 9;
    jpeg.FillWithPicture();
    Bytes bytes = jpeg.Write();
    EXPECT_EQ(Probe(bytes).width, 21u);
    EXPECT_EQ(Probe(bytes).height, 9u);
    EXPECT_TRUE(Probe(bytes).isReadable);
    EXPECT_FALSE(Probe(bytes).hasAlpha);

    // An application segment that holds a picture of its own, and fill bytes.
    Bytes segment = {0xFF, 0xFF, 0xFF, 0xE1, 0x00, 0x0D, 0xFF, 0xD8, 0xFF, 0xC0, 0, 11, 8, 1, 0, 1, 0};
    bytes.insert(bytes.begin() + 2, segment.begin(), segment.end());
    EXPECT_EQ(Probe(bytes).width, 21u);
}

TEST(ImageProbe, KnowsTheJpegsWhoseBytesAreTakenForOthers)
{
    using Colors = JpegFile::Colors;
    for (Colors colors :
         {Colors::Grey, Colors::YCbCr, Colors::RGB, Colors::TwoComponents, Colors::CMYK, Colors::YCCK})
    {
        JpegFile jpeg;
        jpeg.width = 16;
        jpeg.height = 16;
        jpeg.colors = colors;
        jpeg.FillWithPicture();
        const int components = jpeg.Components();
        EXPECT_EQ(Probe(jpeg.Write()).isDistorted, components == 2 || components == 4) << components;
    }
}

TEST(ImageProbe, EveryTruncationOfAHeadIsRefusedOrAgrees)
{
    PngFile png;
    png.width = 5;
    png.height = 4;
    png.colorType = 3;
    png.FillWithNoise();
    png.transparency = {0};
    JpegFile jpeg;
    jpeg.width = 5;
    jpeg.height = 4;
    jpeg.FillWithPicture();
    for (const Bytes& whole : {png.Write(), jpeg.Write()})
    {
        for (std::size_t size = 0; size < whole.size(); ++size)
        {
            const ImageFacts facts =
                Probe(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
            EXPECT_EQ(facts.obstacle.empty(), facts.isReadable) << size;
            if (facts.isReadable)
            {
                EXPECT_EQ(facts.Pixels(), 20u) << size;
            }
        }
    }
}

TEST(ImageProbe, OtherFilesAreNoPictures)
{
    for (const char* text :
         {"", "x", "GIF90a..........", "BM..............", "DDS .............", "\x89PNX\r\n\x1a\n....."})
    {
        const ImageFacts facts = Probe(Bytes(text, text + std::char_traits<char>::length(text)));
        EXPECT_FALSE(facts.isReadable) << text;
        EXPECT_FALSE(facts.obstacle.empty()) << text;
    }
}

TEST(ImageProbe, SizesAreMultipliedWithoutOverflow)
{
    ImageFacts facts;
    facts.width = 0xFFFFFFFF;
    facts.height = 0xFFFFFFFF;
    EXPECT_EQ(facts.Pixels(), 0xFFFFFFFEull << 32 | 1);
}

TEST(ImageProbe, APictureWithoutPixelsIsRefused)
{
    PngFile png;
    png.width = 3;
    png.height = 3;
    png.FillWithNoise();
    Bytes bytes = png.Write();
    for (std::size_t i = 16; i < 20; ++i)
    {
        bytes[i] = 0;
    }
    EXPECT_FALSE(Probe(bytes).isReadable);
}

} // namespace
