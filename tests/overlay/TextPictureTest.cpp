#include "tests/overlay/LayerStage.h"
#include "tests/support/LocaleScope.h"

#include "orvane/imaging/Image.h"
#include "orvane/imaging/detail/TextRasterizer.h"
#include "orvane/overlay/Material2D.h"

#include <GL/glew.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

constexpr int kWidth = 400;
constexpr int kHeight = 120;

/// Coverage of a text, by pixels of its box from its lower left corner.
struct Coverage
{
    Coverage(const std::string& text, int fontSize, int maxWidth = 0) :
        image(detail::RasterizeText("DejaVu Sans", fontSize, text, maxWidth))
    {
        if (image)
        {
            width = image->width;
            height = image->height;
        }
    }

    int At(int x, int y) const
    {
        return image->data[(static_cast<std::size_t>(height - 1 - y) * width + x) * 4 + 3];
    }

    std::unique_ptr<Image> image;
    int width = 0;
    int height = 0;
};

class TextPicture : public LayerStage
{
protected:
    TextPicture() : LayerStage(kWidth, kHeight) {}

    Text& AddBlackText(const std::string& string, int fontSize, float x, float y, float z = 0.0f, int maxWidth = 0)
    {
        Text& text = AddText(string, fontSize, x, y, z, maxWidth);
        text.SetColor(Color(0, 0, 0, 1));
        return text;
    }

    /// A black text on white is one texel a pixel, upright, and nothing outside of its box.
    static void ExpectSharp(const Picture& picture, const Coverage& coverage, int left, int bottom)
    {
        int wrong = 0;
        int covered = 0;
        for (int y = 0; y < kHeight; ++y)
        {
            for (int x = 0; x < kWidth; ++x)
            {
                const int column = x - left;
                const int row = y - bottom;
                const bool inside = column >= 0 && column < coverage.width && row >= 0 && row < coverage.height;
                const int cover = inside ? coverage.At(column, row) : 0;
                covered += cover > 0;
                const Pixel pixel = picture.At(x, y);
                const int expected = 255 - cover;
                const int difference = ChannelDifference({pixel.r, pixel.g, pixel.b, 255},
                                                         {expected, expected, expected, 255});
                wrong += difference > (inside ? 1 : 0);
            }
        }
        EXPECT_EQ(wrong, 0) << "pixels that are not the text's own";
        EXPECT_GT(covered, 0);
    }

private:
    LocaleScope m_locale{"C.UTF-8"};
};

TEST_F(TextPicture, ALabelAtWholePixelsIsSharpAndUpright)
{
    for (const int fontSize : {12, 13, 16, 24, 40})
    {
        for (const int x : {0, 17})
        {
            SCOPED_TRACE(testing::Message() << fontSize << " at " << x);
            texts.clear();
            const Text& text = AddBlackText("Sharp, Ägypten!", fontSize, static_cast<float>(x), 30);
            const Coverage coverage("Sharp, Ägypten!", fontSize);
            EXPECT_EQ(text.GetRight() - text.GetLeft(), coverage.width);
            EXPECT_EQ(text.GetTop() - text.GetBottom(), coverage.height);
            ExpectSharp(Frame(), coverage, x, 30);
        }
    }
}

TEST_F(TextPicture, ACentredLabelIsSharpToo)
{
    texts.push_back(std::make_unique<Text>("DejaVu Sans", 19, "odd or even", &Layer(), true, true, 0));
    texts.back()->GetMaterial()->color = Color(0, 0, 0, 1);
    Place(*texts.back()->GetInstance(0), 200, 60);
    const Coverage coverage("odd or even", 19);
    ExpectSharp(Frame(), coverage, 200 - coverage.width / 2, 60 - coverage.height / 2);
}

TEST_F(TextPicture, LinesPastTheDriversLimitAreLeftOutAndTheOthersStandInTheirPlaces)
{
    GLint largest = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    constexpr int lineCount = 2000;
    const auto line = [](int number) { return "line " + std::to_string(number) + "\n"; };
    std::string string;
    for (int i = 0; i < lineCount; ++i)
    {
        string += line(i);
    }
    string.pop_back();
    Text& text = AddBlackText(string, 12, 10, 0);
    const int height = text.GetTop();
    const int lineHeight = height / lineCount;
    ASSERT_EQ(lineHeight * lineCount, height);
    ASSERT_GT(height, largest);
    const int drawnLines = (largest - 1) / lineHeight;
    // Whole lines within the picture, seen from the first of them to the last.
    constexpr int seen = 4;
    for (const int first : {0, 700, drawnLines - seen})
    {
        SCOPED_TRACE(first);
        std::string part;
        for (int i = first; i < first + seen; ++i)
        {
            part += line(i);
        }
        part.pop_back();
        const Coverage coverage(part, 12);
        ASSERT_EQ(coverage.height, seen * lineHeight);
        const int bottom = 30;
        Place(*text.GetInstance(0), 10, static_cast<float>(bottom - height + (first + seen) * lineHeight));
        const Picture picture = Frame();
        int wrong = 0;
        for (int y = 0; y < coverage.height; ++y)
        {
            for (int x = 0; x < coverage.width; ++x)
            {
                const int expected = 255 - coverage.At(x, y);
                wrong += std::abs(picture.At(10 + x, bottom + y).g - expected) > 4;
            }
        }
        EXPECT_EQ(wrong, 0);
        if (first + seen == drawnLines)
        {
            ExpectColorInRect(picture, {0, 0, kWidth, bottom - 1}, kWhite);
        }
    }
    Place(*text.GetInstance(0), 10, 0);
    ExpectColorInRect(Frame(), {0, 0, kWidth, kHeight}, kWhite);
    // Another of the same text takes the texture that is there.
    AddBlackText(string, 12, 10, static_cast<float>(kHeight - height));
    const Picture twice = Frame();
    texts.erase(texts.begin());
    EXPECT_EQ(Frame(), twice);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

TEST_F(TextPicture, DrawnSizeIsMeasuredSizeInEightScripts)
{
    const char* const strings[] = {
        "Section A-A (1:50)", "Ångström Übergröße Ếổ", "Ελληνικά",      "Пояснительная записка",
        "السلام عليكم",       "שלום עולם",             "नमस्ते दुनिया", "日本語の図面",
        "e\xCC\x81\xCC\xA3 combining", "two\nlines, longer",
    };
    for (const char* const string : strings)
    {
        SCOPED_TRACE(string);
        texts.clear();
        const Text& text = AddBlackText(string, 22, 10, 20);
        const Coverage coverage(string, 22);
        EXPECT_EQ(text.GetRight(), coverage.width);
        EXPECT_EQ(text.GetTop(), coverage.height);
        ExpectSharp(Frame(), coverage, 10, 20);
    }
}

TEST_F(TextPicture, AtEveryLimitTheTextStaysInsideOfIt)
{
    const std::string string = "Ground floor plan";
    const int full = Coverage(string, 20).width;
    for (int maxWidth = 0; maxWidth <= full + 1; maxWidth += maxWidth < 40 || maxWidth > full - 5 ? 1 : 13)
    {
        SCOPED_TRACE(maxWidth);
        texts.clear();
        const Text& text = AddBlackText(string, 20, 10, 20, 0.0f, maxWidth);
        const Coverage coverage(string, 20, maxWidth);
        EXPECT_EQ(text.GetRight(), maxWidth == 0 || maxWidth > full ? full : maxWidth);
        const Picture picture = Frame();
        if (maxWidth == 0 || maxWidth > 20)
        {
            ExpectSharp(picture, coverage, 10, 20);
        }
        ExpectColorInRect(picture, {10 + text.GetRight(), 0, 100, kHeight}, kWhite);
    }
}

TEST_F(TextPicture, AnUpdatedTextShowsTheNewString)
{
    Text& text = AddBlackText("before", 20, 10, 20);
    Frame();
    text.Update("and after");
    ExpectSharp(Frame(), Coverage("and after", 20), 10, 20);
    text.Update("");
    EXPECT_EQ(Frame().Count(kWhite), kWidth * kHeight);
    text.Update("again");
    ExpectSharp(Frame(), Coverage("again", 20), 10, 20);
}

TEST_F(TextPicture, ATextCutByARegionKeepsItsPixels)
{
    Text& text = AddBlackText("WWWWWWWW", 30, 10, 20);
    const Picture whole = Frame();
    struct
    {
        const char* label;
        PixelRect region;
    } const cases[] = {
        {"left", {50, 0, 400, kHeight}},
        {"right", {0, 0, 70, kHeight}},
        {"lower edge", {0, 32, 400, kHeight}},
        {"upper edge", {0, 0, 400, 34}},
        {"all sides", {50, 28, 60, 14}},
    };
    for (const auto& cut : cases)
    {
        SCOPED_TRACE(cut.label);
        const PixelRect& r = cut.region;
        text.SetClipRegion(r.x, r.y, r.width, r.height);
        const Picture picture = Frame();
        int wrong = 0;
        for (int y = 0; y < kHeight; ++y)
        {
            for (int x = 0; x < kWidth; ++x)
            {
                const bool inside = x >= r.x && x < r.x + r.width && y >= r.y && y < r.y + r.height;
                wrong += ChannelDifference(picture.At(x, y), inside ? whole.At(x, y) : kWhite) > 2;
            }
        }
        EXPECT_EQ(wrong, 0);
        EXPECT_LT(picture.Count(kWhite), kWidth * kHeight);
    }
    text.SetClipRegion(0, 0, kWidth, kHeight);
    EXPECT_EQ(Frame(), whole);
}

TEST_F(TextPicture, BackdropsLieBehindTheirTextAtAnyZ)
{
    Text& text = AddBlackText("Backdrop", 24, 30, 40);
    text.AddBackdrop(Color(1, 1, 0, 1), 150, 50, -10, -10);
    const Picture reference = Frame();
    EXPECT_GT(reference.Count({255, 255, 0, 255}), 150 * 50 / 2);
    EXPECT_GT(reference.Count(kBlack), 100);
    for (const float z : {-0.05f, 7.0f, 1.0e6f, -1.0e6f, 3.0e8f})
    {
        SCOPED_TRACE(z);
        Place(*text.GetInstance(0), 30, 40, z);
        EXPECT_EQ(Frame(), reference);
    }
    // Also next to things at other depths.
    AddSprite({300, 0, 10, 10}, Color(1, 0, 0, 1), -1.0e6f);
    AddSprite({300, 0, 10, 10}, Color(1, 0, 0, 1), 1.0e6f);
    Picture mixed = Frame();
    for (int y = 0; y < 10; ++y)
    {
        for (int x = 300; x < 310; ++x)
        {
            mixed.Set(x, y, kWhite);
        }
    }
    EXPECT_EQ(mixed, reference);
}

TEST_F(TextPicture, ATextBelow12PixelsFillsTheBoxOfTheSizeAskedFor)
{
    const Text& text = AddBlackText("small print", 8, 10, 20);
    EXPECT_EQ(text.GetRight(), Coverage("small print", 8).width);
    const Picture picture = Frame();
    EXPECT_LT(picture.Count(kWhite), kWidth * kHeight);
    ExpectColorInRect(picture, {10 + text.GetRight(), 0, 100, kHeight}, kWhite);
    ExpectColorInRect(picture, {0, 20 + text.GetTop(), kWidth, 50}, kWhite);
}

// Coverage comes in the colour too and is mixed by alpha: that is meant.
TEST_F(TextPicture, EdgesOfAWhiteTextGetTheSquareOfTheCoverage)
{
    context->GetContext()->SetBackgroundColor(Color(0, 0, 0, 1));
    AddText("Edges", 30, 10, 20);
    const Coverage coverage("Edges", 30);
    const Picture picture = Frame();
    for (int y = 0; y < coverage.height; ++y)
    {
        for (int x = 0; x < coverage.width; ++x)
        {
            const int cover = coverage.At(x, y);
            ASSERT_NEAR(picture.At(10 + x, 20 + y).r, cover * cover / 255.0, 1.5) << x << " " << y;
        }
    }
}

TEST_F(TextPicture, ATextMayGoBeforeOrAfterItsLayerOnceItIsDrawn)
{
    AddBlackText("first", 20, 10, 20);
    AddBlackText("second", 20, 10, 60);
    Frame();
    texts.erase(texts.begin());
    ExpectSharp(Frame(), Coverage("second", 20), 10, 60);
    Layer().Clear();
    EXPECT_EQ(Frame().Count(kWhite), kWidth * kHeight);
    AddBlackText("third", 20, 10, 20);
    ExpectSharp(Frame(), Coverage("third", 20), 10, 20);
    renderer.reset();
    context.reset();
    texts.clear();
}

} // namespace

} // namespace OV::Test
