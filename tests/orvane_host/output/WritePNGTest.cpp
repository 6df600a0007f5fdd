#include "orvane_host/output/WritePNG.h"

#include "orvane/imaging/FilePath.h"
#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"
#include "tests/support/GLFixture.h"
#include "tests/support/TemporaryFolder.h"

#include <GL/gl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

using namespace OV;
using namespace OV::Host;
using OV::Test::TemporaryFolder;

namespace fs = std::filesystem;

namespace
{

using Bytes = std::vector<unsigned char>;

const Bytes TwoByTwo = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};

Bytes ReadFile(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(stream), {});
}

void WriteText(const std::string& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

std::unique_ptr<Image> Decode(const std::string& path)
{
    return std::unique_ptr<Image>(ImageCodec::LoadImageData(FilePath{}, path, false, false));
}

/// Holds a process limit down for the length of a scope.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit lowered = m_before;
        lowered.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &lowered);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
    }

    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before{};
    void (*m_handler)(int) = nullptr;
};

struct WritePNGFile : ::testing::Test
{
    TemporaryFolder folder;
    std::string path = folder.Path("out.png");
    std::string error;

    std::size_t FilesInFolder() const
    {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder.Path()), {}));
    }
};

using WritePNGPicture = OV::Test::GLFixture;

}  // namespace

TEST_F(WritePNGFile, KeepsEveryChannelWhenAlphaIsKept)
{
    ASSERT_TRUE(WritePNG(TwoByTwo, 2, 2, path, PNGAlpha::Keep, error)) << error;
    const auto image = Decode(path);
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width, 2);
    EXPECT_EQ(image->height, 2);
    EXPECT_EQ(Bytes(image->data, image->data + 16), TwoByTwo);
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(WritePNGFile, IsOpaqueWhenAlphaIsDropped)
{
    ASSERT_TRUE(WritePNG(TwoByTwo, 2, 2, path, PNGAlpha::Drop, error)) << error;
    EXPECT_EQ(ReadFile(path).at(25), 2) << "the file's colour type is not RGB";
    const auto image = Decode(path);
    ASSERT_TRUE(image);
    const Bytes expected = {1, 2, 3, 255, 5, 6, 7, 255, 9, 10, 11, 255, 13, 14, 15, 255};
    EXPECT_EQ(Bytes(image->data, image->data + 16), expected);
}

TEST_F(WritePNGFile, RefusesPixelsThatDoNotFitTheSize)
{
    EXPECT_FALSE(WritePNG(Bytes(15), 2, 2, path, PNGAlpha::Keep, error));
    EXPECT_NE(error.find("2x2"), std::string::npos);
    EXPECT_FALSE(WritePNG(Bytes(), 0, 2, path, PNGAlpha::Keep, error));
    EXPECT_FALSE(WritePNG(Bytes(16), -2, -2, path, PNGAlpha::Keep, error));
    EXPECT_EQ(FilesInFolder(), 0u);
}

TEST_F(WritePNGFile, ReplacesAnOlderFileAndKeepsItsMode)
{
    WriteText(path, "old");
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
    ASSERT_TRUE(WritePNG(TwoByTwo, 2, 2, path, PNGAlpha::Keep, error)) << error;
    EXPECT_TRUE(Decode(path));
    struct stat status{};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(WritePNGFile, ANewFileHasTheModeThatTheProcessGives)
{
    const mode_t mask = ::umask(027);
    const bool written = WritePNG(TwoByTwo, 2, 2, path, PNGAlpha::Keep, error);
    ::umask(mask);
    ASSERT_TRUE(written) << error;
    struct stat status{};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u);
}

TEST_F(WritePNGFile, ALinkStaysALinkAndItsTargetIsReplaced)
{
    WriteText(folder.Path("real.png"), "old");
    fs::create_symlink("real.png", path);
    ASSERT_TRUE(WritePNG(TwoByTwo, 2, 2, path, PNGAlpha::Keep, error)) << error;
    EXPECT_TRUE(fs::is_symlink(path));
    EXPECT_FALSE(fs::is_symlink(folder.Path("real.png")));
    EXPECT_TRUE(Decode(folder.Path("real.png")));
}

TEST_F(WritePNGFile, AFailureHalfwayLeavesTheOldFileAndNothingElse)
{
    WriteText(path, "old");
    // Noise does not pack: the file is larger than the limit.
    Bytes noise(64 * 64 * 4);
    unsigned int seed = 1;
    for (unsigned char& value : noise)
    {
        seed = seed * 1664525u + 1013904223u;
        value = static_cast<unsigned char>(seed >> 24);
    }
    {
        const FileSizeLimit limit(4096);
        EXPECT_FALSE(WritePNG(noise, 64, 64, path, PNGAlpha::Keep, error));
    }
    EXPECT_NE(error.find("larger than allowed"), std::string::npos) << error;
    EXPECT_EQ(ReadFile(path), Bytes({'o', 'l', 'd'}));
    EXPECT_EQ(FilesInFolder(), 1u);
    EXPECT_TRUE(WritePNG(noise, 64, 64, path, PNGAlpha::Keep, error)) << error;
}

TEST_F(WritePNGFile, NamesReasonAndRemedyForEachKindOfTarget)
{
    const std::string file = folder.Path("file");
    WriteText(file, "x");
    const struct
    {
        const char* label;
        std::string path;
        const char* part;
    } cases[] = {
        {"no name", "", "no file name"},
        {"zero byte", folder.Path(std::string("a\0.png", 6)), "no zero byte"},
        {"folder", folder.Path(), "this is a folder; name a file in it"},
        {"trailing slash", folder.Path("missing/"), "this is a folder"},
        {"missing folder", folder.Path("missing/out.png"), "no such folder; create it"},
        {"file as folder", file + "/out.png", "is no folder"},
        {"name too long", folder.Path(std::string(300, 'n')), "too long; choose a shorter"},
        {"full device", "/dev/full", "no room left"},
    };
    for (const auto& item : cases)
    {
        SCOPED_TRACE(item.label);
        error.clear();
        EXPECT_FALSE(WritePNG(TwoByTwo, 2, 2, item.path, PNGAlpha::Keep, error));
        EXPECT_NE(error.find(item.part), std::string::npos) << error;
        EXPECT_EQ(error.find('\n'), std::string::npos);
        if (item.path != "/dev/full")
        {
            std::string early;
            EXPECT_FALSE(CanWritePNG(item.path, early));
            EXPECT_EQ(early, error) << "the early answer differs";
        }
    }
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(WritePNGFile, AFolderWithoutTheRightToWriteIsNamed)
{
    if (::geteuid() == 0)
    {
        // Rights do not bind the superuser; drop them for this test.
        ASSERT_EQ(::chmod(folder.Path().c_str(), 0555), 0);
        ASSERT_EQ(::seteuid(65534), 0);
    }
    else
    {
        ASSERT_EQ(::chmod(folder.Path().c_str(), 0555), 0);
    }
    const bool early = CanWritePNG(path, error);
    const bool written = WritePNG(TwoByTwo, 2, 2, path, PNGAlpha::Keep, error);
    if (::getuid() == 0)
    {
        ASSERT_EQ(::seteuid(0), 0);
    }
    ::chmod(folder.Path().c_str(), 0755);
    EXPECT_FALSE(early);
    EXPECT_FALSE(written);
    EXPECT_NE(error.find("may not be written"), std::string::npos) << error;
}

TEST_F(WritePNGFile, AskingEarlyLeavesNothingBehind)
{
    EXPECT_TRUE(CanWritePNG(path, error)) << error;
    EXPECT_EQ(FilesInFolder(), 0u);
    WriteText(path, "old");
    EXPECT_TRUE(CanWritePNG(path, error)) << error;
    EXPECT_EQ(ReadFile(path), Bytes({'o', 'l', 'd'}));
    EXPECT_EQ(FilesInFolder(), 1u);
}

TEST_F(WritePNGFile, ADeviceIsWrittenToAndStaysADevice)
{
    EXPECT_TRUE(CanWritePNG("/dev/null", error)) << error;
    EXPECT_TRUE(WritePNG(TwoByTwo, 2, 2, "/dev/null", PNGAlpha::Keep, error)) << error;
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(WritePNGFile, ANameOfAnotherKindOfPictureIsRefused)
{
    for (const char* name : {"out.jpg", "out.Tiff", "out.png.bmp", ".gif"})
    {
        SCOPED_TRACE(name);
        error.clear();
        EXPECT_FALSE(CanWritePNG(folder.Path(name), error));
        EXPECT_NE(error.find("let the name end in .png"), std::string::npos) << error;
        error.clear();
        EXPECT_FALSE(WritePNG(TwoByTwo, 2, 2, folder.Path(name), PNGAlpha::Keep, error));
        EXPECT_NE(error.find("let the name end in .png"), std::string::npos) << error;
    }
    EXPECT_EQ(FilesInFolder(), 0u);
    fs::create_directory(folder.Path("a.jpg"));
    for (const char* name : {"out", "out.PNG", "jpg", "out.", "out.jpg2", "a.jpg/out"})
    {
        SCOPED_TRACE(name);
        EXPECT_TRUE(CanWritePNG(folder.Path(name), error)) << error;
        EXPECT_TRUE(WritePNG(TwoByTwo, 2, 2, folder.Path(name), PNGAlpha::Keep, error)) << error;
    }
}

TEST_F(WritePNGFile, NamesMayHoldAnyBytes)
{
    const std::string odd = folder.Path("caf\xC3\xA9 \xFF.png");
    ASSERT_TRUE(WritePNG(TwoByTwo, 2, 2, odd, PNGAlpha::Keep, error)) << error;
    EXPECT_TRUE(fs::exists(odd));
}

TEST_F(WritePNGFile, TheSamePixelsGiveTheSameBytes)
{
    ASSERT_TRUE(WritePNG(TwoByTwo, 2, 2, path, PNGAlpha::Keep, error)) << error;
    ASSERT_TRUE(WritePNG(TwoByTwo, 2, 2, folder.Path("again.png"), PNGAlpha::Keep, error)) << error;
    EXPECT_EQ(ReadFile(path), ReadFile(folder.Path("again.png")));
}

TEST_F(WritePNGPicture, WritesTheFramebufferTopRowFirst)
{
    UseFramebuffer(3, 2);
    glClearColor(0, 0, 1, 0.5f);
    glClear(GL_COLOR_BUFFER_BIT);
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 1, 1, 1);
    glClearColor(1, 0, 0, 1);
    glClear(GL_COLOR_BUFFER_BIT);
    glDisable(GL_SCISSOR_TEST);
    AllowStateChange("scissor box");

    const TemporaryFolder folder;
    std::string error;
    ASSERT_TRUE(WritePNG(Context(), folder.Path("out.png"), PNGAlpha::Drop, error)) << error;
    const auto image = Decode(folder.Path("out.png"));
    ASSERT_TRUE(image);
    ASSERT_EQ(image->width, 3);
    ASSERT_EQ(image->height, 2);
    EXPECT_EQ(Bytes(image->data, image->data + 8), Bytes({255, 0, 0, 255, 0, 0, 255, 255}));
    EXPECT_EQ(Bytes(image->data + 12, image->data + 16), Bytes({0, 0, 255, 255}));
}
