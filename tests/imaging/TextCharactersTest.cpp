#include "orvane/imaging/Image.h"
#include "orvane/imaging/detail/TextRasterizer.h"

#include <ft2build.h>
#include FT_FREETYPE_H
#include <fontconfig/fontconfig.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

// Characters that are not letters: what is never seen, marks in masses, colour emoji.
using namespace std::string_literals;

namespace OV::detail
{

namespace
{

constexpr char kFont[] = "DejaVu Sans";
constexpr char kEmojiFont[] = "Noto Color Emoji";

/// Em of the pictures in that font, in pixels.
constexpr int kPictureSize = 109;

// None of these is in the font of the letters.
constexpr char32_t kHouse = 0x1F3E0;
constexpr char32_t kThumb = 0x1F44D;
constexpr char32_t kSkin = 0x1F3FD;
constexpr char32_t kJoiner = 0x200D;
constexpr char32_t kAsPicture = 0xFE0F;

/// Coverage, top row first.
struct Picture
{
    int width = -1;
    int height = -1;
    std::vector<unsigned char> coverage;

    double Sum() const { return std::accumulate(coverage.begin(), coverage.end(), 0.0); }

    bool operator==(const Picture& other) const
    {
        return width == other.width && height == other.height && coverage == other.coverage;
    }
};

std::string Utf8(const std::u32string& text)
{
    std::string bytes;
    for (const char32_t c : text)
    {
        const int more = c < 0x80 ? 0 : c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
        constexpr unsigned leads[] = {0x00, 0xC0, 0xE0, 0xF0};
        bytes.push_back(static_cast<char>(leads[more] | c >> 6 * more));
        for (int i = more - 1; i >= 0; --i)
        {
            bytes.push_back(static_cast<char>(0x80 | (c >> 6 * i & 0x3F)));
        }
    }
    return bytes;
}

Picture Draw(const std::u32string& text, int size = 32, const std::string& font = kFont, int maxWidth = 0)
{
    const std::unique_ptr<Image> image(RasterizeText(font, size, Utf8(text), maxWidth));
    Picture picture;
    if (!image)
    {
        return picture;
    }
    const unsigned char* const data = image->GetData(picture.width, picture.height);
    for (int i = 0; i < picture.width * picture.height; ++i)
    {
        EXPECT_TRUE(data[i * 4] == data[i * 4 + 1] && data[i * 4] == data[i * 4 + 2] && data[i * 4] == data[i * 4 + 3])
            << "all four bytes of a pixel hold the coverage";
        picture.coverage.push_back(data[i * 4 + 3]);
    }
    int width = -1;
    int height = -1;
    MeasureText(font, size, Utf8(text), maxWidth, width, height);
    EXPECT_EQ(width, picture.width);
    EXPECT_EQ(height, picture.height);
    return picture;
}

std::u32string Times(std::size_t count, const std::u32string& text)
{
    std::u32string all;
    for (std::size_t i = 0; i < count; ++i)
    {
        all += text;
    }
    return all;
}

/// The glyph's picture as FreeType gives it, at the size that the font has it in.
class EmojiGlyph
{
public:
    explicit EmojiGlyph(char32_t c)
    {
        FcPattern* const wanted = FcNameParse(reinterpret_cast<const FcChar8*>(kEmojiFont));
        FcConfigSubstitute(nullptr, wanted, FcMatchPattern);
        FcDefaultSubstitute(wanted);
        FcResult result = FcResultNoMatch;
        FcPattern* const font = FcFontMatch(nullptr, wanted, &result);
        FcChar8* file = nullptr;
        const bool found = FcPatternGetString(font, FC_FILE, 0, &file) == FcResultMatch;
        EXPECT_TRUE(found && FT_Init_FreeType(&m_library) == 0 &&
                    FT_New_Face(m_library, reinterpret_cast<const char*>(file), 0, &m_face) == 0 &&
                    FT_HAS_COLOR(m_face) && FT_Select_Size(m_face, 0) == 0 &&
                    m_face->available_sizes[0].y_ppem == kPictureSize * 64 &&
                    FT_Load_Char(m_face, c, FT_LOAD_COLOR) == 0)
            << kEmojiFont << " is needed";
        FcPatternDestroy(font);
        FcPatternDestroy(wanted);
    }
    EmojiGlyph(const EmojiGlyph&) = delete;
    EmojiGlyph& operator=(const EmojiGlyph&) = delete;
    ~EmojiGlyph() { FT_Done_FreeType(m_library); }

    const FT_Bitmap& Bitmap() const { return m_face->glyph->bitmap; }
    int Left() const { return m_face->glyph->bitmap_left; }

    /// The mean of colour, premultiplied, and alpha.
    int Coverage(unsigned x, unsigned y) const
    {
        const unsigned char* const pixel =
            Bitmap().buffer + std::ptrdiff_t(y) * Bitmap().pitch + std::ptrdiff_t(x) * 4;
        return (pixel[0] + pixel[1] + pixel[2] + pixel[3]) / 4;
    }

    double Sum() const
    {
        double sum = 0.0;
        for (unsigned y = 0; y < Bitmap().rows; ++y)
        {
            for (unsigned x = 0; x < Bitmap().width; ++x)
            {
                sum += Coverage(x, y);
            }
        }
        return sum;
    }

private:
    FT_Library m_library = nullptr;
    FT_Face m_face = nullptr;
};

class TextCharacters : public testing::Test
{
protected:
    TextCharacters() : m_before(std::setlocale(LC_ALL, nullptr)) { EXPECT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr); }
    ~TextCharacters() override { std::setlocale(LC_ALL, m_before.c_str()); }

private:
    std::string m_before;
};

std::vector<char32_t> UnseenCharacters()
{
    std::vector<char32_t> all;
    for (char32_t c = 0x80; c <= 0x9F; ++c)
    {
        all.push_back(c);
    }
    for (char32_t c = 0x2060; c <= 0x206F; ++c)
    {
        all.push_back(c);
    }
    const char32_t others[] = {0x01,   0x7F,   0xAD,   0x034F, 0x061C, 0x115F, 0x1160, 0x17B4, 0x180B, 0x180E, 0x200B,
                               0x200C, 0x200D, 0x200E, 0x200F, 0x2028, 0x2029, 0x202A, 0x202C, 0x202D, 0x3164,
                               0xFE00, 0xFE0F, 0xFEFF, 0xFFA0, 0xFFF0, 0xFFF9, 0xFFFA, 0xFFFB, 0x1BCA0, 0x1D173,
                               0xE0001, 0xE0061, 0xE0100, 0xE0FFF};
    all.insert(all.end(), std::begin(others), std::end(others));
    return all;
}

}  // namespace

TEST_F(TextCharacters, WhatIsNotSeenLeavesTheLineAlone)
{
    const Picture empty = Draw(U"");
    const Picture letters = Draw(U"ab");
    for (const char32_t c : UnseenCharacters())
    {
        SCOPED_TRACE(testing::Message() << std::hex << "U+" << std::uint32_t(c));
        EXPECT_EQ(Draw({c}), empty);
        EXPECT_EQ(Draw({'a', c, 'b'}), letters);
        EXPECT_EQ(Draw({'a', 'b', c}), letters);
        EXPECT_EQ(Draw({c, 'a', 'b'}), letters);
    }
}

TEST_F(TextCharacters, ASpaceThatTheFontLacksHasAWidthAndLeavesTheHeightAlone)
{
    const Picture letters = Draw(U"ab");
    for (const char32_t c : {char32_t(0x3000), char32_t(0x2003), char32_t(0x205F)})
    {
        const Picture spaced = Draw({'a', c, 'b'});
        EXPECT_GT(spaced.width, letters.width + 3) << std::uint32_t(c);
        EXPECT_EQ(spaced.height, letters.height) << std::uint32_t(c);
        EXPECT_NEAR(spaced.Sum(), letters.Sum(), 0.01 * letters.Sum()) << std::uint32_t(c);
    }
}

TEST_F(TextCharacters, IsolatesStillOrderWhatTheyHold)
{
    // A bar behind a Hebrew letter stands to its left, unless an isolate parts the two.
    constexpr char32_t alef = 0x05D0;
    const Picture apart = Draw({'x', alef, '|', alef});
    EXPECT_EQ(Draw({alef, '|', alef}).width, Draw({alef, 0x2066, '|', 0x2069, alef}).width);
    EXPECT_EQ(Draw({'x', 0x2067, alef, '|', alef, 0x2069}), apart);
    EXPECT_EQ(Draw({'x', 0x2067, alef, '|', 0x2069}), Draw({'x', '|', alef}));
}

TEST_F(TextCharacters, MarksPastTheThirtiethAreLeftOut)
{
    const std::u32string acute = U"\u0301";
    const Picture twentyNine = Draw(U"e"s + Times(29, acute));
    const Picture thirty = Draw(U"e"s + Times(30, acute));
    EXPECT_GT(thirty.height, twentyNine.height);
    EXPECT_EQ(Draw(U"e"s + Times(31, acute)), thirty);
    const std::u32string parted = U"e"s + Times(20, acute) + U"\u200D"s;
    EXPECT_EQ(Draw(parted + Times(20, acute)), Draw(parted + Times(10, acute))) << "what is not seen is no letter";
    EXPECT_FALSE(Draw(parted + Times(10, acute)) == Draw(parted + Times(9, acute)));
    const Picture letters = Draw(U"e"s + Times(20, acute) + U"e"s + Times(20, acute));
    EXPECT_EQ(letters.height, Draw(U"e"s + Times(20, acute)).height) << "each letter has its own";
}

// What looks back over all marks for each of them is not done within the time of a test run.
TEST_F(TextCharacters, MassesOfMarksOnOneLetterAreDrawn)
{
    const Picture thirty = Draw(U"e"s + Times(30, U"\u0301") + U"x", 16);
    EXPECT_EQ(Draw(U"e"s + Times(1000000, U"\u0301") + U"x", 16), thirty);
    EXPECT_EQ(Draw(U"e"s + Times(300000, U"\u0301\u034F") + U"x", 16).width, thirty.width);
    EXPECT_GT(Draw(Times(300000, U"\u0301"), 16).height, 0);
    EXPECT_EQ(Draw(U"e"s + Times(300000, U"\u200D") + U"x", 16), Draw(U"ex", 16));
}

TEST_F(TextCharacters, AColorEmojiIsDrawnByTheCoverageOfItsPicture)
{
    const EmojiGlyph glyph(kHouse);
    const Picture picture = Draw({kHouse}, kPictureSize);
    ASSERT_GE(picture.width, int(glyph.Bitmap().width));
    // Its rows are where the first covered ones are.
    const auto firstRow = [](int rows, auto covered) {
        int row = 0;
        while (row < rows && !covered(row))
        {
            ++row;
        }
        return row;
    };
    const int top = firstRow(picture.height, [&](int y) {
        const auto row = picture.coverage.begin() + std::ptrdiff_t(y) * picture.width;
        return std::any_of(row, row + picture.width, [](unsigned char value) { return value != 0; });
    });
    const int glyphTop = firstRow(int(glyph.Bitmap().rows), [&](int y) {
        for (unsigned x = 0; x < glyph.Bitmap().width; ++x)
        {
            if (glyph.Coverage(x, unsigned(y)) != 0)
            {
                return true;
            }
        }
        return false;
    });
    for (unsigned y = unsigned(glyphTop); y < glyph.Bitmap().rows; ++y)
    {
        for (unsigned x = 0; x < glyph.Bitmap().width; ++x)
        {
            const std::size_t row = std::size_t(top) + y - unsigned(glyphTop);
            const std::size_t column = x + unsigned(std::max(0, glyph.Left()));
            const std::size_t at = row * std::size_t(picture.width) + column;
            ASSERT_LT(at, picture.coverage.size());
            ASSERT_EQ(picture.coverage[at], glyph.Coverage(x, y)) << x << ", " << y;
        }
    }
    EXPECT_EQ(picture.Sum(), glyph.Sum());
}

TEST_F(TextCharacters, WhatIsLightInAPictureIsSeenOnWhatIsDark)
{
    // A white tick on a green square, and a black flag.
    const Picture tick = Draw({0x2705}, 109);
    const auto [least, most] = std::minmax_element(tick.coverage.begin(), tick.coverage.end());
    EXPECT_EQ(*least, 0);
    EXPECT_GT(*most, 240);
    const auto dim = std::count_if(tick.coverage.begin(), tick.coverage.end(),
                                   [](unsigned char value) { return value > 60 && value < 180; });
    EXPECT_GT(dim, 3000);
    EXPECT_GT(Draw({0x1F3F4}, 109).Sum(), 3000.0 * 255 / 4);
}

TEST_F(TextCharacters, AColorEmojiHasTheSizeOfTheText)
{
    const EmojiGlyph glyph(kHouse);
    for (const int size : {12, 16, 33, 64, 200})
    {
        SCOPED_TRACE(size);
        const Picture picture = Draw({kHouse}, size);
        const double scale = double(size) / kPictureSize;
        EXPECT_NEAR(picture.width, 136 * scale, 2.0);
        EXPECT_NEAR(picture.Sum(), glyph.Sum() * scale * scale, 0.03 * glyph.Sum() * scale * scale);
    }
    // The line grows no more than its picture needs.
    EXPECT_LE(Draw({'a', kHouse}, 16).height, 21);
}

TEST_F(TextCharacters, AFontOfColorEmojiMayBeTheFontOfTheText)
{
    EXPECT_EQ(Draw({kHouse}, 32, kEmojiFont).Sum(), Draw({kHouse}, 32).Sum());
    EXPECT_GT(Draw(U"text", 32, kEmojiFont).Sum(), 0.0);
}

TEST_F(TextCharacters, WhatTheFontJoinsIsOnePicture)
{
    const Picture thumb = Draw({kThumb});
    EXPECT_EQ(Draw({kThumb, kSkin}).width, thumb.width);
    EXPECT_GT(Draw({kThumb, kSkin}).Sum(), 0.0);
    const Picture family = Draw({0x1F468, kJoiner, 0x1F469, kJoiner, 0x1F467});
    EXPECT_EQ(family.width, thumb.width);
    EXPECT_EQ(Draw({kThumb, kAsPicture}), thumb);
}

TEST_F(TextCharacters, AModifierThatTheFontCanNotJoinVanishesBehindItsBase)
{
    struct Case
    {
        const char* label;
        char32_t base;
    };
    const Case cases[] = {
        {"in the font of the pictures", kHouse},
        {"in a font without modifiers", 0x2654},
        {"in no font", 0x1D800},
    };
    for (const Case& each : cases)
    {
        SCOPED_TRACE(each.label);
        const Picture alone = Draw({'a', each.base, 'b'});
        EXPECT_GT(alone.width, Draw(U"ab").width);
        EXPECT_EQ(Draw({'a', each.base, kSkin, 'b'}), alone);
        EXPECT_EQ(Draw({'a', each.base, kAsPicture, kSkin, 'b'}), alone);
    }
}

TEST_F(TextCharacters, AModifierThatStandsBehindNoSymbolIsDrawn)
{
    const Picture swatch = Draw({kSkin});
    EXPECT_GT(swatch.Sum(), 0.0);
    EXPECT_GT(Draw({'a', kSkin}).width, Draw(U"a").width + 10);
}

TEST_F(TextCharacters, AJoinerThatTheFontCanNotJoinByVanishes)
{
    EXPECT_EQ(Draw({kHouse, kJoiner, kHouse}), Draw({kHouse, kHouse}));
    EXPECT_EQ(Draw({kHouse, kJoiner}), Draw({kHouse}));
    // No font has both of these, and each is drawn by its own.
    EXPECT_EQ(Draw({0x2654, kJoiner, kHouse}), Draw({0x2654, kHouse}));
}

TEST_F(TextCharacters, EmojiKeepToALimitOfTheWidth)
{
    const std::u32string text(20, kHouse);
    const Picture limited = Draw(text, 16, kFont, 100);
    EXPECT_EQ(limited.width, 100);
    EXPECT_GT(limited.Sum(), 0.0);
}

}  // namespace OV::detail
