#include "orvane/imaging/detail/TextRasterizer.h"

#include "orvane/imaging/Image.h"
#include "tests/support/LocaleScope.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace OV::detail
{

namespace
{

using OV::Test::LocaleScope;

constexpr char kFont[] = "DejaVu Sans";
constexpr char kEllipsis[] = "\xE2\x80\xA6";

struct Size
{
    int width = -1;
    int height = -1;

    bool operator==(const Size& other) const { return width == other.width && height == other.height; }
};

Size Measure(const std::string& text, int size = 16, int maxWidth = 0, const std::string& font = kFont)
{
    Size result;
    MeasureText(font, size, text, maxWidth, result.width, result.height);
    return result;
}

/// Coverage, top row first.
struct Picture
{
    Size size;
    std::vector<unsigned char> coverage;

    unsigned char At(int x, int y) const { return coverage[std::size_t(y) * std::size_t(size.width) + std::size_t(x)]; }

    bool IsBlankColumn(int x) const
    {
        for (int y = 0; y < size.height; ++y)
        {
            if (At(x, y) != 0)
            {
                return false;
            }
        }
        return true;
    }

    bool IsBlank() const
    {
        return std::all_of(coverage.begin(), coverage.end(), [](unsigned char value) { return value == 0; });
    }
};

Picture Draw(const std::string& text, int size = 16, int maxWidth = 0, const std::string& font = kFont)
{
    const std::unique_ptr<Image> image(RasterizeText(font, size, text, maxWidth));
    Picture picture;
    if (!image)
    {
        return picture;
    }
    const unsigned char* const data = image->GetData(picture.size.width, picture.size.height);
    for (int i = 0; i < picture.size.width * picture.size.height; ++i)
    {
        EXPECT_TRUE(data[i * 4] == data[i * 4 + 1] && data[i * 4] == data[i * 4 + 2] && data[i * 4] == data[i * 4 + 3])
            << "all four bytes of a pixel hold the coverage";
        picture.coverage.push_back(data[i * 4 + 3]);
    }
    return picture;
}

class TextRasterizer : public testing::Test
{
protected:
    LocaleScope m_locale{"C.UTF-8"};
};

}  // namespace

TEST_F(TextRasterizer, AnEmptyTextIsNothingWideAndOneLineHigh)
{
    EXPECT_EQ(Measure("").width, 0);
    EXPECT_EQ(Measure("").height, Measure("x").height);
    EXPECT_EQ(Draw("").size, Measure(""));
}

TEST_F(TextRasterizer, MeasuredSizeIsDrawnSizeInManyScripts)
{
    const std::string texts[] = {
        "Section A-A",
        "Ångström Übergröße Ếổ",
        "Ελληνικά",
        "Пояснительная записка",
        "السلام عليكم",
        "שלום עולם",
        "नमस्ते दुनिया",
        "日本語の図面",
        "e\xCC\x81\xCC\xA3 combining",
        "line one\nline two, longer",
        "f\xC3\xAD" "fjord 1:50 \xD8\xB3\xD9\x84\xD8\xA7\xD9\x85 mixed",
    };
    for (const std::string& text : texts)
    {
        for (const int size : {1, 7, 12, 16, 33, 96})
        {
            for (const int maxWidth : {0, 1, 40, 10000})
            {
                SCOPED_TRACE(text + " at " + std::to_string(size) + " within " + std::to_string(maxWidth));
                EXPECT_EQ(Draw(text, size, maxWidth).size, Measure(text, size, maxWidth));
            }
        }
    }
}

TEST_F(TextRasterizer, ALimitAboveTheWidthChangesNothing)
{
    const Size whole = Measure("Elevation North");
    EXPECT_EQ(Measure("Elevation North", 16, whole.width), whole);
    EXPECT_EQ(Measure("Elevation North", 16, whole.width + 40), whole);
    EXPECT_EQ(Draw("Elevation North", 16, whole.width).coverage, Draw("Elevation North").coverage);
}

TEST_F(TextRasterizer, ALimitBelowOneIsNoLimit)
{
    const Size whole = Measure("Elevation North");
    EXPECT_EQ(Measure("Elevation North", 16, 0), whole);
    EXPECT_EQ(Measure("Elevation North", 16, -5), whole);
}

TEST_F(TextRasterizer, ALimitBelowTheWidthIsTheWidthAndTheHeightStays)
{
    const Size whole = Measure("Elevation North");
    const Size limited = Measure("Elevation North", 16, whole.width - 1);
    EXPECT_EQ(limited.width, whole.width - 1);
    EXPECT_EQ(limited.height, whole.height);
}

// Tries what may stay, longest first, one after the other: trailing words, then letters.
TEST_F(TextRasterizer, AtEveryLimitTrailingWordsThenLettersGoUntilRestAndEllipsisFit)
{
    const std::vector<std::string> rests = {"Plan of level", "Plan of", "Plan", "Pla", "Pl", "P", ""};
    const std::string text = "Plan of level two";
    const int full = Measure(text).width;
    for (int maxWidth = 1; maxWidth < full; ++maxWidth)
    {
        SCOPED_TRACE(maxWidth);
        std::string expected = kEllipsis;
        for (const std::string& rest : rests)
        {
            if (Measure(rest + kEllipsis).width <= maxWidth)
            {
                expected = rest + kEllipsis;
                break;
            }
        }
        const Picture drawn = Draw(text, 16, maxWidth);
        const Picture alone = Draw(expected);
        ASSERT_EQ(drawn.size.width, maxWidth);
        ASSERT_EQ(drawn.size.height, alone.size.height);
        for (int y = 0; y < drawn.size.height; ++y)
        {
            for (int x = 0; x < maxWidth; ++x)
            {
                ASSERT_EQ(drawn.At(x, y), x < alone.size.width ? alone.At(x, y) : 0) << x << ", " << y;
            }
        }
    }
}

TEST_F(TextRasterizer, EachLineGetsItsOwnEllipsis)
{
    const int width = Measure("Plan\xE2\x80\xA6").width;
    const Picture drawn = Draw("Plan of level\nok", 16, width);
    const Picture expected = Draw("Plan\xE2\x80\xA6\nok");
    EXPECT_EQ(drawn.coverage, expected.coverage);
}

TEST_F(TextRasterizer, LinesEndAtCarriageReturnLineFeedAndBothTogether)
{
    const int one = Measure("ab").height;
    EXPECT_EQ(Measure("ab\nab").height, 2 * one);
    EXPECT_EQ(Measure("ab\rab").height, 2 * one);
    EXPECT_EQ(Measure("ab\r\nab").height, 2 * one);
    EXPECT_EQ(Measure("ab\n\rab").height, 3 * one) << "a line feed before a carriage return is a line of its own";
    EXPECT_EQ(Measure("ab\n").height, 2 * one);
    EXPECT_EQ(Measure("ab ab ab ab").height, one) << "nothing else breaks a line";
    EXPECT_EQ(Draw("ab\r\nab").coverage, Draw("ab\nab").coverage);
}

TEST_F(TextRasterizer, TheWidestLineDecidesTheWidth)
{
    EXPECT_EQ(Measure("a\nwide line\nbb").width, Measure("wide line").width);
}

TEST_F(TextRasterizer, TheEmIsTheSizeInPixels)
{
    // An em dash of this font is one em wide, drawn from edge to edge.
    for (const int size : {16, 32, 100})
    {
        EXPECT_NEAR(Measure("\xE2\x80\x94", size).width, size, 1) << size;
    }
}

TEST_F(TextRasterizer, AccentsAndDescendersAreNotCut)
{
    for (const char* text : {"Ǻ", "Ế", "g", "j", "Q", "f", "\xE1\xBB\x98", "\xCE\x8A", "W", "//"})
    {
        for (const int size : {12, 17, 40})
        {
            SCOPED_TRACE(text + std::string(" at ") + std::to_string(size));
            const Picture alone = Draw(text, size);
            const Picture roomy = Draw(std::string("\n") + "    " + text + "    \n", size);
            const auto sum = [](const Picture& picture) {
                unsigned long total = 0;
                for (const unsigned char value : picture.coverage)
                {
                    total += value;
                }
                return total;
            };
            // The pen may stand at another fraction of a pixel in the wider line.
            EXPECT_NEAR(double(sum(alone)), double(sum(roomy)), 0.02 * double(sum(roomy)));
        }
    }
}

TEST_F(TextRasterizer, TheFirstRowOfTheImageIsTheTop)
{
    const Picture picture = Draw("_", 40);
    unsigned long top = 0;
    unsigned long bottom = 0;
    for (int y = 0; y < picture.size.height; ++y)
    {
        for (int x = 0; x < picture.size.width; ++x)
        {
            (y < picture.size.height / 2 ? top : bottom) += picture.At(x, y);
        }
    }
    EXPECT_EQ(top, 0u);
    EXPECT_GT(bottom, 0u);
}

TEST_F(TextRasterizer, RightToLeftTextIsOrderedForReading)
{
    // The first letter in memory stands rightmost: without it the picture loses its right end.
    const Picture two = Draw("\xD7\x90" "|", 32);
    const Picture ltr = Draw("|" "\xD7\x90", 32);
    EXPECT_EQ(two.size.width, ltr.size.width);
    const auto firstInk = [](const Picture& picture) {
        int rows = 0;
        int x = 0;
        while (picture.IsBlankColumn(x))
        {
            ++x;
        }
        for (int y = 0; y < picture.size.height; ++y)
        {
            rows += picture.At(x + 1, y) > 0 ? 1 : 0;
        }
        return rows;
    };
    const int bar = firstInk(Draw("|", 32));
    EXPECT_EQ(firstInk(two), bar) << "the bar follows the letter and so stands to its left";
}

TEST_F(TextRasterizer, ArabicLettersJoin)
{
    // Four forms of one letter: joined they are much narrower than alone.
    const std::string beh = "\xD8\xA8";
    EXPECT_LT(Measure(beh + beh + beh, 40).width, 3 * Measure(beh, 40).width * 9 / 10);
}

TEST_F(TextRasterizer, ACombiningMarkTakesNoWidth)
{
    EXPECT_EQ(Measure("e\xCC\x81", 32).width, Measure("\xC3\xA9", 32).width);
}

TEST_F(TextRasterizer, WhatNoFontHasIsABoxAndNoCrash)
{
    const Picture picture = Draw("\xF4\x8F\xBF\xBD", 24);
    EXPECT_GT(picture.size.width, 0);
    EXPECT_FALSE(picture.IsBlank());
}

TEST_F(TextRasterizer, AFamilyThatIsNotInstalledIsSubstituted)
{
    EXPECT_FALSE(Draw("text", 16, 0, "No Such Family").IsBlank());
    EXPECT_FALSE(Draw("text", 16, 0, "").IsBlank());
}

TEST_F(TextRasterizer, AFaceNameOfMoreThan31CharactersGivesNothing)
{
    EXPECT_FALSE(Draw("text", 16, 0, std::string(31, 'x')).IsBlank());
    EXPECT_EQ(Measure("text", 16, 0, std::string(32, 'x')), (Size{0, 0}));
    EXPECT_EQ(std::unique_ptr<Image>(RasterizeText(std::string(32, 'x'), 16, "text", 0)), nullptr);
    std::string accented;
    for (int i = 0; i < 31; ++i)
    {
        accented += "\xC3\xA4";
    }
    EXPECT_FALSE(Draw("text", 16, 0, accented).IsBlank()) << "characters count, not bytes";
}

TEST_F(TextRasterizer, ASizeThatNoFontHasGivesNothing)
{
    for (const int size : {0, -1, -2147483647, 2147483647})
    {
        EXPECT_EQ(Measure("text", size), (Size{0, 0})) << size;
        EXPECT_EQ(std::unique_ptr<Image>(RasterizeText(kFont, size, "text", 0)), nullptr) << size;
    }
}

TEST_F(TextRasterizer, ATextTooLargeForAPictureGivesNothing)
{
    EXPECT_EQ(Measure(std::string(4000, 'W'), 100), (Size{0, 0}));
    EXPECT_EQ(Measure(std::string(4000, '\n'), 100), (Size{0, 0}));
    EXPECT_EQ(std::unique_ptr<Image>(RasterizeText(kFont, 100, std::string(4000, 'W'), 0)), nullptr);
}

TEST_F(TextRasterizer, AByteThatTheLocaleRefusesIsTheCodePointOfItsValue)
{
    EXPECT_EQ(Draw("caf\xE9").coverage, Draw("caf\xC3\xA9").coverage);
    EXPECT_EQ(Draw("\xC3").coverage, Draw("\xC3\x83").coverage) << "a sequence cut short";
    const std::vector<unsigned char> decoded = Draw("\xC3\x83\xC2\xA9").coverage;
    const LocaleScope plain("C");
    EXPECT_EQ(Draw("\xC3\xA9").coverage, decoded) << "the plain locale knows no sequences";
}

TEST_F(TextRasterizer, ReadingDoesNotTouchTheLocale)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    Draw("text");
    EXPECT_EQ(before, std::setlocale(LC_ALL, nullptr));
}

TEST_F(TextRasterizer, ATextEndsAtItsFirstZero)
{
    EXPECT_EQ(Measure(std::string("ab\0cd", 5)), Measure("ab"));
}

TEST_F(TextRasterizer, AnyThreadMayCall)
{
    const Picture expected = Draw("threads");
    std::vector<std::thread> threads;
    std::vector<Picture> drawn(4);
    for (std::size_t i = 0; i < drawn.size(); ++i)
    {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 20; ++round)
            {
                drawn[i] = Draw("threads", 12 + round % 5);
            }
            drawn[i] = Draw("threads");
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    for (const Picture& picture : drawn)
    {
        EXPECT_EQ(picture.coverage, expected.coverage);
    }
}

TEST_F(TextRasterizer, ManySizesAndGlyphsLeaveTheSamePicture)
{
    const Picture expected = Draw("stable", 20);
    for (int size = 1; size < 80; ++size)
    {
        Measure("stable", size);
    }
    EXPECT_EQ(Draw("stable", 20).coverage, expected.coverage);
}

}  // namespace OV::detail
