#include "orvane/imaging/ImageCodec.h"
#include "tests/imaging/Decoding.h"
#include "tests/imaging/JpegFile.h"
#include "tests/imaging/PngFile.h"
#include "tests/imaging/QuietOutput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

// Every length and every single damaged byte of small files.
namespace OV
{
namespace
{

using namespace Test;

constexpr int kWidth = 11;
constexpr int kHeight = 9;

struct SmallFile
{
    const char* label;
    std::function<Bytes()> write;
    bool refused = false;   // by its header
    bool hasScans = false;  // more than one
};

SmallFile Png(const char* label, int colorType, int bitDepth, bool interlaced = false, int transparentEntries = 0)
{
    return {label, [=] {
                PngFile file;
                file.width = kWidth;
                file.height = kHeight;
                file.colorType = colorType;
                file.bitDepth = bitDepth;
                file.interlaced = interlaced;
                file.FillWithNoise();
                file.transparency.assign(std::size_t(transparentEntries), 40);
                return file.Write();
            },
            interlaced || (colorType == 0 && bitDepth == 16)};
}

SmallFile Jpeg(const char* label, JpegFile::Colors colors, bool progressive = false, bool arithmetic = false,
               int restartInterval = 0)
{
    return {label, [=] {
                JpegFile file;
                file.width = kWidth;
                file.height = kHeight;
                file.colors = colors;
                file.progressive = progressive;
                file.arithmetic = arithmetic;
                file.restartInterval = restartInterval;
                file.quality = 50;
                file.FillWithPicture();
                return file.Write();
            },
            false, progressive};
}

// A block whose last byte is the last that may be read: the page behind it is shut, which
// the libraries too, built without sanitizers, can not pass unnoticed.
class GuardedBlock
{
public:
    explicit GuardedBlock(const Bytes& bytes)
        : m_size(bytes.size())
    {
        const std::size_t page = std::size_t(sysconf(_SC_PAGESIZE));
        const std::size_t open = (m_size + page - 1) / page * page;
        m_length = open + page;
        m_start = static_cast<unsigned char*>(
            mmap(nullptr, m_length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        if (m_start == MAP_FAILED || mprotect(m_start + open, page, PROT_NONE) != 0)
        {
            throw std::runtime_error("no guarded block");
        }
        m_data = m_start + open - m_size;
        std::copy(bytes.begin(), bytes.end(), m_data);
    }
    GuardedBlock(const GuardedBlock&) = delete;
    GuardedBlock& operator=(const GuardedBlock&) = delete;
    ~GuardedBlock() { munmap(m_start, m_length); }

    std::unique_ptr<Image> Decode(bool flipVertical) const
    {
        return std::unique_ptr<Image>(ImageCodec::DecodeImage(m_data, int(m_size), false, flipVertical));
    }

private:
    std::size_t m_size;
    std::size_t m_length;
    unsigned char* m_start;
    unsigned char* m_data;
};

enum class Outcome
{
    Picture,
    Null,
    PngError,
    JpegError
};

// Fails the test on anything that is none of the four. The pixels are all read, so that a
// sanitizer sees those that were never written.
Outcome Try(const Bytes& bytes, bool flipVertical = true)
{
    try
    {
        const std::unique_ptr<Image> image = GuardedBlock(bytes).Decode(flipVertical);
        if (!image)
        {
            return Outcome::Null;
        }
        EXPECT_GT(image->width, 0);
        EXPECT_GT(image->height, 0);
        EXPECT_EQ(Pixels(*image).size() % 4, 0u);
        return Outcome::Picture;
    }
    catch (const std::domain_error& error)
    {
        const std::string text = error.what();
        EXPECT_TRUE(text == "Error reading PNG" || text == "Error reading JPEG") << text;
        return text == "Error reading PNG" ? Outcome::PngError : Outcome::JpegError;
    }
}

class ImageCodecDamage : public ::testing::TestWithParam<SmallFile>
{
protected:
    Bytes m_file = GetParam().write();
    bool m_isPng = m_file[0] == 0x89;
    bool m_isRefused = GetParam().refused;
    bool m_hasScans = GetParam().hasScans;
};

std::string LabelOf(const ::testing::TestParamInfo<SmallFile>& info)
{
    return info.param.label;
}

TEST_P(ImageCodecDamage, TheWholeFileIsAnswered)
{
    const Outcome outcome = Try(m_file);
    EXPECT_TRUE(outcome == Outcome::Picture || outcome == Outcome::Null);
}

TEST_P(ImageCodecDamage, EveryTruncationIsAnsweredInSilence)
{
    QuietOutput output;
    std::vector<Outcome> outcomes;
    for (std::size_t size = 0; size < m_file.size(); ++size)
    {
        outcomes.push_back(Try(Bytes(m_file.begin(), m_file.begin() + std::ptrdiff_t(size))));
    }
    EXPECT_EQ(output.Finish(), "");
    EXPECT_EQ(outcomes[0], Outcome::JpegError);
    if (m_isPng)
    {
        // No part of a file is a picture; what its header has refused stays refused.
        for (std::size_t size = 1; size < outcomes.size(); ++size)
        {
            EXPECT_TRUE(outcomes[size] == Outcome::PngError || (outcomes[size] == Outcome::Null && m_isRefused))
                << "length " << size;
        }
        return;
    }
    // From the first pixels on there is a picture, except where tables between scans are cut.
    const auto first = std::find(outcomes.begin(), outcomes.end(), Outcome::Picture);
    for (auto outcome = outcomes.begin(); outcome != outcomes.end(); ++outcome)
    {
        const bool scansFollow = outcome > first && m_hasScans;
        EXPECT_TRUE(*outcome == (outcome < first ? Outcome::JpegError : Outcome::Picture) ||
                    (*outcome == Outcome::JpegError && scansFollow))
            << "length " << outcome - outcomes.begin();
    }
    EXPECT_EQ(outcomes.back(), Outcome::Picture);
}

TEST_P(ImageCodecDamage, EveryFlippedByteIsAnsweredInSilence)
{
    QuietOutput output;
    std::vector<Outcome> outcomes;
    for (const unsigned char mask : {0xFF, 0x01, 0x80, 0x10})
    {
        for (std::size_t i = 0; i < m_file.size(); ++i)
        {
            Bytes damaged = m_file;
            damaged[i] ^= mask;
            outcomes.push_back(Try(damaged));
        }
    }
    EXPECT_EQ(output.Finish(), "");
    for (std::size_t i = 0; i < outcomes.size(); ++i)
    {
        const bool toPng = m_isPng && i % m_file.size() >= 8;
        EXPECT_NE(outcomes[i], toPng ? Outcome::JpegError : Outcome::PngError) << "byte " << i % m_file.size();
    }
}

TEST_P(ImageCodecDamage, EveryFlippedBitThatChecksumsDoNotShowIsAnsweredInSilence)
{
    QuietOutput output;
    int pictures = 0;
    for (int bit = 0; bit < 8; ++bit)
    {
        for (std::size_t i = m_isPng ? 8 : 0; i < m_file.size(); ++i)
        {
            Bytes damaged = m_file;
            damaged[i] ^= static_cast<unsigned char>(1u << bit);
            if (m_isPng)
            {
                RepairChecksums(damaged);
            }
            const Outcome outcome = Try(damaged, false);
            pictures += outcome == Outcome::Picture || outcome == Outcome::Null ? 1 : 0;
        }
    }
    EXPECT_EQ(output.Finish(), "");
    // Damage gets as far as the pixels.
    EXPECT_GT(pictures, 40);
}

TEST_P(ImageCodecDamage, WhateverFollowsTheEndIsLeftAlone)
{
    Bytes longer = m_file;
    longer.insert(longer.end(), 100, 0xFF);
    EXPECT_EQ(Try(longer), Try(m_file));
}

INSTANTIATE_TEST_SUITE_P(
    SmallFiles, ImageCodecDamage,
    ::testing::Values(Png("Grey1", 0, 1), Png("Grey8", 0, 8), Png("Grey16", 0, 16), Png("RGB8", 2, 8),
                      Png("RGB16", 2, 16), Png("Palette4", 3, 4), Png("Palette8", 3, 8, false, 100),
                      Png("GreyAlpha8", 4, 8), Png("RGBA8", 6, 8), Png("RGBA16", 6, 16),
                      Png("RGBA8Interlaced", 6, 8, true), Jpeg("JpegGrey", JpegFile::Colors::Grey),
                      Jpeg("JpegYCbCr", JpegFile::Colors::YCbCr),
                      Jpeg("JpegProgressive", JpegFile::Colors::YCbCr, true),
                      Jpeg("JpegArithmetic", JpegFile::Colors::YCbCr, false, true),
                      Jpeg("JpegRestarts", JpegFile::Colors::YCbCr, false, false, 1),
                      Jpeg("JpegRGB", JpegFile::Colors::RGB), Jpeg("JpegTwoComponents", JpegFile::Colors::TwoComponents),
                      Jpeg("JpegCMYK", JpegFile::Colors::CMYK), Jpeg("JpegYCCK", JpegFile::Colors::YCCK)),
    LabelOf);

}  // namespace
}  // namespace OV
