#include "orvane_host/output/PictureFile.h"

#include "orvane/imaging/FilePath.h"
#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace OV::Host
{

namespace
{

using Test::TemporaryFolder;

std::string ReadFile(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
}

/// The data of a chunk of a PNG; empty where it has none.
std::string ChunkOf(const std::string& png, const std::string& name)
{
    const std::size_t at = png.find(name);
    if (at == std::string::npos)
    {
        return {};
    }
    std::size_t length = 0;
    for (std::size_t i = at - 4; i < at; ++i)
    {
        length = length * 256 + static_cast<unsigned char>(png[i]);
    }
    return png.substr(at + 4, length);
}

PictureFormat Small()
{
    PictureFormat format;
    format.width = 3;
    format.height = 2;
    return format;
}

bool WriteRows(PictureFile& file, const void* row)
{
    std::string error;
    for (int i = 0; i < file.GetFormat().height; ++i)
    {
        if (!file.WriteRow(row, error))
        {
            return false;
        }
    }
    return file.Finish(error);
}

const unsigned char kRow[] = {255, 0, 0, 0, 255, 0, 0, 0, 255};

class PictureFileTest : public ::testing::Test
{
protected:
    TemporaryFolder folder;
    std::string error;
};

TEST_F(PictureFileTest, APNGHasItsRowsAndItsResolution)
{
    PictureFormat format = Small();
    format.pixelsPerMetre = 300.0 / 0.0254;
    const std::string path = folder.Path("small.png");
    const auto file = PictureFile::Create(path, format, error);
    ASSERT_TRUE(file) << error;
    EXPECT_FALSE(std::filesystem::exists(path));
    ASSERT_TRUE(WriteRows(*file, kRow));
    const std::unique_ptr<Image> image(ImageCodec::LoadImageData(FilePath{}, path, false, false));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width, 3);
    EXPECT_EQ(image->height, 2);
    // 11811 pixels a metre, both ways, and the unit.
    EXPECT_EQ(ChunkOf(ReadFile(path), "pHYs"), std::string("\x00\x00\x2E\x23\x00\x00\x2E\x23\x01", 9));
}

TEST_F(PictureFileTest, SixteenBitsAreInTheOrderOfPNG)
{
    PictureFormat format = Small();
    format.width = 1;
    format.height = 1;
    format.alpha = true;
    format.bits = 16;
    const std::uint16_t row[] = {0x0102, 0x0304, 0x0506, 0x0708};
    const std::string path = folder.Path("deep.png");
    const auto file = PictureFile::Create(path, format, error);
    ASSERT_TRUE(file) << error;
    ASSERT_TRUE(WriteRows(*file, row));
    const std::string header = ChunkOf(ReadFile(path), "IHDR");
    EXPECT_EQ(header[8], 16);
    EXPECT_EQ(header[9], 6);
    EXPECT_TRUE(ChunkOf(ReadFile(path), "pHYs").empty());
}

TEST_F(PictureFileTest, AJPEGIsWrittenWhereTheNameAsksForIt)
{
    PictureFormat format = Small();
    format.width = 64;
    format.height = 48;
    format.pixelsPerMetre = 10000.0;
    const std::string path = folder.Path("small.JPG");
    ASSERT_TRUE(PictureFile::KindOf(path, format.kind, error));
    EXPECT_EQ(format.kind, PictureKind::JPEG);
    std::vector<unsigned char> row;
    for (int i = 0; i < 64; ++i)
    {
        row.insert(row.end(), {200, 100, 50});
    }
    const auto file = PictureFile::Create(path, format, error);
    ASSERT_TRUE(file) << error;
    ASSERT_TRUE(WriteRows(*file, row.data()));
    const std::unique_ptr<Image> image(ImageCodec::LoadImageData(FilePath{}, path, false, false));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width, 64);
    EXPECT_EQ(image->height, 48);
    EXPECT_NEAR(static_cast<const unsigned char*>(image->data)[0], 200, 3);
    // 100 pixels a centimetre.
    EXPECT_NE(ReadFile(path).find(std::string("JFIF\0\x01\x01\x02\0\x64\0\x64", 12)), std::string::npos);
}

TEST_F(PictureFileTest, AnUnfinishedFileLeavesTheOldOneAndNothingElse)
{
    const std::string path = folder.Path("old.png");
    std::ofstream(path) << "old";
    for (const char* name : {"old.png", "new.jpg"})
    {
        PictureFormat format = Small();
        ASSERT_TRUE(PictureFile::KindOf(name, format.kind, error));
        const auto file = PictureFile::Create(folder.Path(name), format, error);
        ASSERT_TRUE(file) << error;
        EXPECT_TRUE(file->WriteRow(kRow, error));
    }
    EXPECT_EQ(ReadFile(path), "old");
    int files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder.Path("")))
    {
        ++files;
    }
    EXPECT_EQ(files, 1);
}

TEST_F(PictureFileTest, WhatAFormatCannotHoldIsRefusedBeforeAnythingIsWritten)
{
    const auto refusal = [&](const std::string& name, const PictureFormat& format)
    {
        error.clear();
        EXPECT_FALSE(PictureFile::Create(folder.Path(name), format, error)) << name;
        EXPECT_FALSE(std::filesystem::exists(folder.Path(name)));
        return error;
    };
    PictureFormat format = Small();
    format.width = PictureFormat::MostPixels;
    EXPECT_TRUE(PictureFile::CanHold(format, error)) << error;
    format.width = PictureFormat::MostPixels + 1;
    EXPECT_NE(refusal("wide.png", format).find("65535"), std::string::npos) << error;
    format = Small();
    format.height = 0;
    EXPECT_NE(refusal("flat.png", format).find("3x0"), std::string::npos) << error;
    format = Small();
    format.bits = 12;
    EXPECT_NE(refusal("bits.png", format).find("8 or 16"), std::string::npos) << error;
    format = Small();
    format.kind = PictureKind::JPEG;
    format.alpha = true;
    EXPECT_NE(refusal("alpha.jpg", format).find("transparency"), std::string::npos) << error;
    format.alpha = false;
    format.bits = 16;
    EXPECT_NE(refusal("deep.jpg", format).find("16 bits"), std::string::npos) << error;
    EXPECT_NE(refusal("other.webp", Small()).find(".webp"), std::string::npos) << error;
    EXPECT_NE(refusal("other.jpg", Small()).find("JPEG"), std::string::npos) << error;
}

TEST_F(PictureFileTest, APipeTakesAPictureAndAClosedOneIsTold)
{
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    const auto file = PictureFile::Create(pipe[1], Small(), error);
    ASSERT_TRUE(file) << error;
    ASSERT_TRUE(WriteRows(*file, kRow));
    char signature[8] = {};
    EXPECT_EQ(::read(pipe[0], signature, 8), 8);
    EXPECT_EQ(std::string(signature, 8), "\x89PNG\r\n\x1A\n");
    ::close(pipe[0]);
    ::close(pipe[1]);
    EXPECT_FALSE(PictureFile::Create(pipe[1], Small(), error));
    EXPECT_FALSE(error.empty());
}

} // namespace

} // namespace OV::Host
