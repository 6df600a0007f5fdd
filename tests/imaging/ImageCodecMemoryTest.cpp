#include "orvane/imaging/ImageCodec.h"
#include "tests/imaging/Decoding.h"
#include "tests/imaging/JpegFile.h"
#include "tests/imaging/MallocCount.h"
#include "tests/imaging/PngFile.h"

#include <gtest/gtest.h>

#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <stdexcept>
#include <string>

// What a file may make the codec take, whatever the file claims.
namespace OV
{
namespace
{

using namespace Test;

constexpr std::size_t kMiB = std::size_t(1) << 20;
constexpr std::size_t kGiB = kMiB << 10;

/// What became of a file, and the bytes that were asked for on the way.
struct Answer
{
    std::string error;
    int width = 0;
    int height = 0;
    std::size_t bytes = 0;
};

Answer Ask(const Bytes& file)
{
    Bytes copy = file;
    Answer answer;
    const std::size_t before = MallocBytes();
    try
    {
        const std::unique_ptr<Image> image(
            ImageCodec::DecodeImage(copy.data(), static_cast<int>(copy.size()), false, false));
        if (image)
        {
            image->GetDimensions(answer.width, answer.height);
        }
    }
    catch (const std::domain_error& error)
    {
        answer.error = error.what();
    }
    answer.bytes = MallocBytes() - before;
    return answer;
}

void AppendNumber(Bytes& bytes, std::uint32_t number)
{
    for (int shift = 24; shift >= 0; shift -= 8)
    {
        bytes.push_back(static_cast<unsigned char>(number >> shift));
    }
}

/// A chunk in front of the first IDAT of a file.
void AddChunk(Bytes& file, const std::string& type, const Bytes& data)
{
    const char idat[] = {'I', 'D', 'A', 'T'};
    const auto found = std::search(file.begin(), file.end(), std::begin(idat), std::end(idat));
    ASSERT_NE(found, file.end());
    Bytes chunk;
    AppendNumber(chunk, static_cast<std::uint32_t>(data.size()));
    chunk.insert(chunk.end(), type.begin(), type.end());
    chunk.insert(chunk.end(), data.begin(), data.end());
    AppendNumber(chunk, 0);
    file.insert(found - 4, chunk.begin(), chunk.end());
    RepairChecksums(file);
}

Bytes SmallPng()
{
    PngFile file;
    file.width = file.height = 4;
    file.FillWithNoise();
    return file.Write();
}

/// A PNG of one bit a pixel, all of one colour.
Bytes BlankPng(int width, int height)
{
    PngFile file;
    file.width = width;
    file.height = height;
    file.bitDepth = 1;
    file.colorType = 0;
    file.rows.assign(std::size_t(height), Bytes(file.RowBytes(), 0));
    return file.Write();
}

/// A JPEG that claims another size than it has.
Bytes ClaimingJpeg(int width, int height, bool progressive = false)
{
    JpegFile file;
    file.width = file.height = 8;
    file.progressive = progressive;
    file.FillWithPicture();
    Bytes bytes = file.Write();
    const unsigned char marker[] = {0xFF, static_cast<unsigned char>(progressive ? 0xC2 : 0xC0)};
    const auto frame = std::search(bytes.begin(), bytes.end(), std::begin(marker), std::end(marker));
    frame[5] = static_cast<unsigned char>(height >> 8);
    frame[6] = static_cast<unsigned char>(height);
    frame[7] = static_cast<unsigned char>(width >> 8);
    frame[8] = static_cast<unsigned char>(width);
    return bytes;
}

/// Puts the limit back at its end.
class LimitScope
{
public:
    explicit LimitScope(std::uint64_t bytes) : m_before(ImageCodec::GetMaxPictureBytes())
    {
        ImageCodec::SetMaxPictureBytes(bytes);
    }
    ~LimitScope() { ImageCodec::SetMaxPictureBytes(m_before); }

    LimitScope(const LimitScope&) = delete;
    LimitScope& operator=(const LimitScope&) = delete;

private:
    std::uint64_t m_before;
};

TEST(ImageCodecMemory, TheCountSeesEveryFormOfMalloc)
{
    const std::size_t before = MallocBytes();
    // Volatile, since a compiler may leave out what is given back unused.
    void* volatile block = std::malloc(1000);
    EXPECT_GE(MallocBytes() - before, 1000u);
    block = std::realloc(block, 5000);
    EXPECT_GE(MallocBytes() - before, 6000u);
    std::free(block);
    block = std::calloc(10, 700);
    EXPECT_GE(MallocBytes() - before, 13000u);
    std::free(block);
}

TEST(ImageCodecMemory, AChunkThatClaimsTwoGibibytesCostsNothing)
{
    for (const char* type : {"tEXt", "zTXt", "iTXt", "iCCP", "sPLT", "eXIf", "tRNS", "PLTE", "abCd", "ABCD", "IDAT"})
    {
        Bytes file = SmallPng();
        file.resize(33);
        AppendNumber(file, 0x7FFFFFFF);
        file.insert(file.end(), type, type + 4);
        file.insert(file.end(), {'k', 0, 'v', 'a', 'l', 'u'});
        ASSERT_EQ(file.size(), 47u);
        const Answer answer = Ask(file);
        EXPECT_EQ(answer.error, "Error reading PNG") << type;
        EXPECT_LT(answer.bytes, kMiB) << type;
    }
}

// A mebibyte of zeros is a kibibyte: the text of such chunks is worth nothing to a picture.
TEST(ImageCodecMemory, PackedTextsCostNoMoreThanTheirFile)
{
    Bytes zeros(4 * kMiB, 0);
    uLongf size = compressBound(zeros.size());
    Bytes packed(size);
    ASSERT_EQ(compress2(packed.data(), &size, zeros.data(), zeros.size(), 9), Z_OK);
    packed.resize(size);
    Bytes file = SmallPng();
    for (int i = 0; i < 64; ++i)
    {
        Bytes text = {'k', 0, 0};
        text.insert(text.end(), packed.begin(), packed.end());
        AddChunk(file, "zTXt", text);
        Bytes international = {'k', 0, 1, 0, 0, 0};
        international.insert(international.end(), packed.begin(), packed.end());
        AddChunk(file, "iTXt", international);
    }
    const Answer answer = Ask(file);
    EXPECT_EQ(answer.error, "");
    EXPECT_EQ(answer.width, 4);
    EXPECT_LT(answer.bytes, 8 * kMiB);
}

TEST(ImageCodecMemory, AChunkThatSaysNothingOfPixelsCostsNothingHoweverLong)
{
    for (const char* type : {"tEXt", "eXIf", "iCCP", "abCd"})
    {
        Bytes file = SmallPng();
        AddChunk(file, type, Bytes(9 * kMiB, 'x'));
        const Answer answer = Ask(file);
        EXPECT_EQ(answer.error, "") << type;
        EXPECT_EQ(answer.width, 4) << type;
        EXPECT_LT(answer.bytes, kMiB) << type;
    }
}

TEST(ImageCodecMemory, AJpegThatClaimsMoreThanItsBlockCanHoldIsAnError)
{
    for (const bool progressive : {false, true})
    {
        const Bytes file = ClaimingJpeg(30000, 30000, progressive);
        const Answer answer = Ask(file);
        EXPECT_EQ(answer.error, "Error reading JPEG") << progressive;
        EXPECT_LT(answer.bytes, kMiB) << progressive;
    }
}

TEST(ImageCodecMemory, AJpegMayTakeSoManyTimesItsBlock)
{
    // One row of pixels more is outside.
    Bytes file = ClaimingJpeg(256, 1);
    const int height = static_cast<int>(file.size() * 1032 / (256 * 4));
    file = ClaimingJpeg(256, height);
    EXPECT_EQ(Ask(file).error, "");
    EXPECT_EQ(Ask(file).height, height);
    file = ClaimingJpeg(256, height + 1);
    EXPECT_EQ(Ask(file).error, "Error reading JPEG");
}

TEST(ImageCodecMemory, TheLimitOnAPictureIsAGibibyteUnlessTheHostSetsIt)
{
    EXPECT_EQ(ImageCodec::GetMaxPictureBytes(), kGiB);
    const LimitScope scope(1234);
    EXPECT_EQ(ImageCodec::GetMaxPictureBytes(), 1234u);
}

TEST(ImageCodecMemory, APictureOfTheLimitIsReadAndALargerOneIsAnError)
{
    const Bytes png = SmallPng();
    JpegFile jpegFile;
    jpegFile.width = jpegFile.height = 4;
    jpegFile.FillWithPicture();
    const Bytes jpeg = jpegFile.Write();
    {
        const LimitScope scope(4 * 4 * 4);
        EXPECT_EQ(Ask(png).width, 4);
        EXPECT_EQ(Ask(jpeg).width, 4);
    }
    const LimitScope scope(4 * 4 * 4 - 1);
    EXPECT_EQ(Ask(png).error, "Error reading PNG");
    EXPECT_EQ(Ask(jpeg).error, "Error reading JPEG");
}

TEST(ImageCodecMemory, ABlankDrawingOfOneBitIsReadUpToTheLimit)
{
    const Bytes file = BlankPng(8000, 4000);
    ASSERT_LT(file.size() * 1032, std::size_t(8000) * 4000 * 4) << "the output is not what is held against the block";
    EXPECT_EQ(Ask(file).width, 8000);
    const LimitScope scope(std::uint64_t(8000) * 4000 * 4 - 1);
    const Answer answer = Ask(file);
    EXPECT_EQ(answer.error, "Error reading PNG");
    EXPECT_LT(answer.bytes, kMiB);
}

TEST(ImageCodecMemory, AOneBitDrawingOfMoreThanAGibibyteIsAnError)
{
    const Bytes file = BlankPng(20000, 13422);
    const Answer answer = Ask(file);
    EXPECT_EQ(answer.error, "Error reading PNG");
    EXPECT_LT(answer.bytes, kMiB);
}

}  // namespace
}  // namespace OV
