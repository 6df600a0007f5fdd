#include "orvane/imaging/FilePath.h"
#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"
#include "orvane/imaging/detail/FileBytes.h"
#include "orvane/imaging/detail/Utf8.h"
#include "tests/imaging/Decoding.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace OV
{
namespace
{

namespace fs = std::filesystem;
using namespace Test;

class ImageCodecFile : public ::testing::Test
{
protected:
    ImageCodecFile()
    {
        std::string pattern = (fs::temp_directory_path() / "orvane-image-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
        {
            throw std::runtime_error("no temporary directory");
        }
        m_directory = pattern;
        Bytes pixels = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
        m_png = ImageCodec::EncodeImagePNG(pixels, 2, 2, 3);
    }

    ~ImageCodecFile() override
    {
        std::error_code ignored;
        fs::remove_all(m_directory, ignored);
    }

    // The directory with its separator.
    FilePath Path() const { return {m_directory.wstring() + L"/"}; }

    void Write(const std::string& name, const Bytes& bytes) const
    {
        fs::create_directories(fs::path(m_directory.string() + "/" + name).parent_path());
        std::ofstream file(m_directory.string() + "/" + name, std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
        ASSERT_TRUE(file.good());
    }

    static std::unique_ptr<Image> Load(const FilePath& path, const std::string& name, bool swap = false,
                                       bool flip = false)
    {
        return std::unique_ptr<Image>(ImageCodec::LoadImageData(path, name, swap, flip));
    }

    fs::path m_directory;
    Bytes m_png;
};

TEST_F(ImageCodecFile, IsLoadedAndDecodedWithBothSwitchesHandedOn)
{
    Write("a.png", m_png);
    EXPECT_EQ(Pixels(*Load(Path(), "a.png")), (Bytes{1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255, 10, 11, 12, 255}));
    EXPECT_EQ(Pixels(*Load(Path(), "a.png", true, false)),
              (Bytes{3, 2, 1, 255, 6, 5, 4, 255, 9, 8, 7, 255, 12, 11, 10, 255}));
    EXPECT_EQ(Pixels(*Load(Path(), "a.png", false, true)),
              (Bytes{7, 8, 9, 255, 10, 11, 12, 255, 1, 2, 3, 255, 4, 5, 6, 255}));
}

TEST_F(ImageCodecFile, PathAndNameAreRunTogetherWithoutASeparator)
{
    Write("a.png", m_png);
    Write("sub/b.png", m_png);
    const FilePath bare{m_directory.wstring()};
    EXPECT_EQ(Load(bare, "a.png"), nullptr);
    EXPECT_NE(Load(bare, "/a.png"), nullptr);
    EXPECT_NE(Load({m_directory.wstring() + L"/su"}, "b/b.png"), nullptr);
    EXPECT_NE(Load({}, m_directory.string() + "/a.png"), nullptr);
}

TEST_F(ImageCodecFile, NamesOutsideAsciiAreFoundWhateverTheLocale)
{
    const std::string name = "t\xC3\xBCr-\xE7\x93\xA6-\xF0\x9F\x8F\xA0.png";
    Write(name, m_png);
    const std::string old = std::setlocale(LC_ALL, nullptr);
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
    EXPECT_NE(Load(Path(), name), nullptr);
    EXPECT_NE(Load({Path().path + L"t\u00FCr-\u74E6-"}, "\xF0\x9F\x8F\xA0.png"), nullptr);
    std::setlocale(LC_ALL, old.c_str());
}

TEST_F(ImageCodecFile, AMissingFileGivesNull)
{
    EXPECT_EQ(Load(Path(), "none.png"), nullptr);
    EXPECT_EQ(Load(Path(), "none/none.png"), nullptr);
    EXPECT_EQ(Load({}, ""), nullptr);
    EXPECT_EQ(Load(Path(), std::string(100000, 'x')), nullptr);
}

TEST_F(ImageCodecFile, AnEmptyFileGivesNull)
{
    Write("empty.png", {});
    EXPECT_EQ(Load(Path(), "empty.png"), nullptr);
}

TEST_F(ImageCodecFile, ADirectoryAndAnythingElseThatIsNoFileGiveNull)
{
    fs::create_directory(m_directory / "dir.png");
    EXPECT_EQ(Load(Path(), "dir.png"), nullptr);
    EXPECT_EQ(Load(Path(), ""), nullptr);
    ASSERT_EQ(0, mkfifo((m_directory / "pipe.png").c_str(), 0600));
    EXPECT_EQ(Load(Path(), "pipe.png"), nullptr);
    EXPECT_EQ(Load({}, "/dev/null"), nullptr);
    fs::create_symlink("loop.png", m_directory / "loop.png");
    EXPECT_EQ(Load(Path(), "loop.png"), nullptr);
}

TEST_F(ImageCodecFile, AFileLargerThanAnIntGivesNull)
{
    Write("big.png", m_png);
    // A hole: it takes no room on the disk.
    fs::resize_file(m_directory / "big.png", std::uintmax_t(1) << 31);
    EXPECT_EQ(Load(Path(), "big.png"), nullptr);
    fs::resize_file(m_directory / "big.png", (std::uintmax_t(1) << 32) + m_png.size());
    EXPECT_EQ(Load(Path(), "big.png"), nullptr);
    fs::resize_file(m_directory / "big.png", m_png.size());
    EXPECT_NE(Load(Path(), "big.png"), nullptr);
}

TEST_F(ImageCodecFile, BytesAreReadUpToTheLimitAndNotOneMore)
{
    Write("ten", Bytes(10, 7));
    const std::string name = (m_directory / "ten").string();
    EXPECT_EQ(detail::ReadWholeFile(name, 10).size, 10u);
    EXPECT_EQ(detail::ReadWholeFile(name, 10).data[9], 7);
    EXPECT_EQ(detail::ReadWholeFile(name, 9).size, 0u);
    EXPECT_EQ(detail::ReadWholeFile(name, 9).data, nullptr);
}

TEST_F(ImageCodecFile, AFileThatMayNotBeReadGivesNull)
{
    Write("shut.png", m_png);
    fs::permissions(m_directory / "shut.png", fs::perms::none);
    // Who may read anything reads this too.
    EXPECT_EQ(Load(Path(), "shut.png") != nullptr, access((m_directory / "shut.png").c_str(), R_OK) == 0);
}

TEST_F(ImageCodecFile, AForeignFileIsAnErrorOfTheDecoder)
{
    Write("text.png", Bytes(30, 'a'));
    EXPECT_THROW(Load(Path(), "text.png"), std::domain_error);
    Bytes cut = m_png;
    cut.pop_back();
    Write("cut.png", cut);
    EXPECT_THROW(Load(Path(), "cut.png"), std::domain_error);
}

TEST_F(ImageCodecFile, ANullByteInANameHidesNothing)
{
    Write("a.png", m_png);
    EXPECT_EQ(Load(Path(), std::string("a.png\0", 6)), nullptr);
    EXPECT_EQ(Load({Path().path + std::wstring(L"a.png\0", 6)}, ""), nullptr);
}

TEST_F(ImageCodecFile, APathWithCharactersThatAreNoneGivesNull)
{
    for (const unsigned value : {0xD800u, 0xDFFFu, 0x110000u, 0xFFFFFFFFu})
    {
        EXPECT_EQ(Load({std::wstring(1, static_cast<wchar_t>(value))}, "a.png"), nullptr);
    }
}

struct TextCase
{
    const char* label;
    const char* utf8;
    std::wstring wide;
};

class ImageCodecName : public ::testing::TestWithParam<TextCase>
{
};

TEST_P(ImageCodecName, IsConvertedBothWays)
{
    EXPECT_EQ(detail::WideFromUtf8(GetParam().utf8), GetParam().wide);
    std::string back = "what was there";
    EXPECT_TRUE(detail::Utf8FromWide(GetParam().wide, back));
    EXPECT_EQ(back, GetParam().utf8);
}

INSTANTIATE_TEST_SUITE_P(
    Bounds, ImageCodecName,
    ::testing::Values(TextCase{"Empty", "", L""}, TextCase{"Ascii", "a\x7F", L"a\x7F"},
                      TextCase{"FirstOfTwoBytes", "\xC2\x80", std::wstring(1, wchar_t(0x80))},
                      TextCase{"LastOfTwoBytes", "\xDF\xBF", std::wstring(1, wchar_t(0x7FF))},
                      TextCase{"FirstOfThreeBytes", "\xE0\xA0\x80", std::wstring(1, wchar_t(0x800))},
                      TextCase{"BeforeTheSurrogates", "\xED\x9F\xBF", std::wstring(1, wchar_t(0xD7FF))},
                      TextCase{"AfterTheSurrogates", "\xEE\x80\x80", std::wstring(1, wchar_t(0xE000))},
                      TextCase{"LastOfThreeBytes", "\xEF\xBF\xBF", std::wstring(1, wchar_t(0xFFFF))},
                      TextCase{"FirstOfFourBytes", "\xF0\x90\x80\x80", std::wstring(1, wchar_t(0x10000))},
                      TextCase{"LastOfAll", "\xF4\x8F\xBF\xBF", std::wstring(1, wchar_t(0x10FFFF))}),
    [](const auto& info) { return info.param.label; });

class ImageCodecBadName : public ::testing::TestWithParam<TextCase>
{
};

TEST_P(ImageCodecBadName, RaisesBadConversion)
{
    for (const std::string& name : {std::string(GetParam().utf8), "before" + std::string(GetParam().utf8) + "after"})
    {
        try
        {
            ImageCodec::LoadImageData(FilePath(), name, false, false);
            ADD_FAILURE() << "no exception";
        }
        catch (const std::range_error& error)
        {
            EXPECT_STREQ(error.what(), "bad conversion");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Forms, ImageCodecBadName,
    ::testing::Values(TextCase{"ContinuationAlone", "\x80", {}}, TextCase{"TwoBytesCut", "\xC3", {}},
                      TextCase{"ThreeBytesCut", "\xE7\x93", {}}, TextCase{"FourBytesCut", "\xF0\x9F\x8F", {}},
                      TextCase{"OverlongOfTwo", "\xC1\xBF", {}}, TextCase{"OverlongOfThree", "\xE0\x9F\xBF", {}},
                      TextCase{"OverlongOfFour", "\xF0\x8F\xBF\xBF", {}}, TextCase{"FirstSurrogate", "\xED\xA0\x80", {}},
                      TextCase{"LastSurrogate", "\xED\xBF\xBF", {}}, TextCase{"PastTheLast", "\xF4\x90\x80\x80", {}},
                      TextCase{"FiveBytes", "\xF8\x88\x80\x80\x80", {}}, TextCase{"Latin1", "t\xFCr", {}},
                      TextCase{"NoByteOfUtf8", "\xFF", {}}),
    [](const auto& info) { return info.param.label; });

}  // namespace
}  // namespace OV
