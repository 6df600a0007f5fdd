#include "orvane/imaging/detail/TextRasterizer.h"

#include "orvane/imaging/Image.h"
#include "orvane/imaging/detail/FontSet.h"
#include "orvane/imaging/detail/LocaleText.h"
#include "orvane/imaging/detail/TextShaper.h"
#include "orvane/imaging/detail/Utf8.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace OV::detail
{

namespace
{

constexpr std::size_t kMaxFaceName = 31;
constexpr int kMaxFontSize = 4096;

// Larger than any texture that a driver takes.
constexpr std::int64_t kMaxExtent = 32768;

/// A whole text, ready to be measured and drawn.
struct TextLayout
{
    std::vector<ShapedLine> lines;
    int width = 0;
    int height = 0;
};

std::vector<std::u32string> SplitLines(const std::u32string& text)
{
    std::vector<std::u32string> lines(1);
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const char32_t c = text[i];
        if (c == U'\n' || c == U'\r')
        {
            i += c == U'\r' && i + 1 < text.size() && text[i + 1] == U'\n' ? 1 : 0;
            lines.emplace_back();
        }
        else if (c == U'\t')
        {
            lines.back().push_back(U' ');
        }
        else if (c >= U' ' && c != 0x7F)
        {
            lines.back().push_back(c);
        }
    }
    return lines;
}

int Ceil64(long value)
{
    return static_cast<int>((value + 63) >> 6);
}

int LineHeight(const ShapedLine& line)
{
    return Ceil64(line.ascender) + Ceil64(-line.descender);
}

/// Takes away the last lines of a text that is higher than that, and leaves an empty row.
void LimitHeight(TextLayout& layout, int maxHeight)
{
    if (maxHeight < 1 || layout.height <= maxHeight)
    {
        return;
    }
    while (!layout.lines.empty() && layout.height >= maxHeight)
    {
        layout.height -= LineHeight(layout.lines.back());
        layout.lines.pop_back();
    }
    ++layout.height;
}

// The one place that lays a text out: measuring and drawing can not disagree.
TextLayout LayOut(const std::string& fontName, int fontSize, const std::string& text, int maxWidth)
{
    TextLayout layout;
    const std::u32string name = DecodeLocaleText(fontName);
    if (fontSize < 1 || fontSize > kMaxFontSize || name.size() > kMaxFaceName)
    {
        return layout;
    }
    std::string family;
    if (!Utf8FromWide(std::wstring(name.begin(), name.end()), family))
    {
        family.clear();
    }
    FontSet& fonts = FontSet::OfThread(family, fontSize);

    std::int64_t width = 0;
    std::int64_t height = 0;
    for (const std::u32string& line : SplitLines(DecodeLocaleText(text)))
    {
        ShapedLine shaped = ShapeLine(fonts, line);
        width = std::max<std::int64_t>(width, shaped.Width());
        height += LineHeight(shaped);
        if (maxWidth >= 1 && shaped.Width() > maxWidth)
        {
            const ShapedLine whole = std::move(shaped);
            shaped = ShapeWithEllipsis(fonts, line, maxWidth);
            shaped.ascender = whole.ascender;
            shaped.descender = whole.descender;
        }
        layout.lines.push_back(std::move(shaped));
    }
    if (maxWidth >= 1)
    {
        width = std::min<std::int64_t>(width, maxWidth);
    }
    if (width > kMaxExtent || height > kMaxExtent)
    {
        return TextLayout();
    }
    layout.width = static_cast<int>(width);
    layout.height = static_cast<int>(height);
    return layout;
}

/// Coverage of a picture in the making, 0 to 255, top row first.
class Coverage
{
public:
    Coverage(int width, int height) :
        m_width(width), m_height(height), m_values(std::size_t(width) * std::size_t(height))
    {
    }

    // Adds, so that shapes that abut leave no seam. What lies outside is cut off.
    void Add(int x, int y, unsigned int value)
    {
        if (x >= 0 && x < m_width && y >= 0 && y < m_height)
        {
            unsigned char& there = m_values[std::size_t(y) * std::size_t(m_width) + std::size_t(x)];
            there = static_cast<unsigned char>(std::min(255u, there + value));
        }
    }

    void AddBitmap(const FT_Bitmap& bitmap, int left, int top)
    {
        if (bitmap.pixel_mode != FT_PIXEL_MODE_GRAY)
        {
            return;
        }
        for (unsigned int row = 0; row < bitmap.rows; ++row)
        {
            const unsigned char* const source = bitmap.buffer + std::ptrdiff_t(row) * bitmap.pitch;
            for (unsigned int column = 0; column < bitmap.width; ++column)
            {
                if (source[column] != 0)
                {
                    Add(left + int(column), top + int(row), source[column]);
                }
            }
        }
    }

    void AddBox(int left, int top, int width, int height)
    {
        for (int y = 0; y < height; ++y)
        {
            for (int x = 0; x < width; ++x)
            {
                const bool onEdge = x == 0 || y == 0 || x == width - 1 || y == height - 1;
                if (onEdge)
                {
                    Add(left + x, top + y, 255);
                }
            }
        }
    }

    // Four equal bytes a pixel, the bottom row first.
    std::vector<unsigned char> ToPixels() const
    {
        std::vector<unsigned char> pixels(m_values.size() * 4);
        unsigned char* out = pixels.data();
        for (int y = m_height - 1; y >= 0; --y)
        {
            const unsigned char* const row = m_values.data() + std::size_t(y) * std::size_t(m_width);
            for (int x = 0; x < m_width; ++x, out += 4)
            {
                std::fill(out, out + 4, row[x]);
            }
        }
        return pixels;
    }

private:
    int m_width;
    int m_height;
    std::vector<unsigned char> m_values;
};

void DrawGlyph(Coverage& coverage, const ShapedGlyph& glyph, long originX, int baseLine)
{
    const FT_Glyph outline = glyph.face->Outline(glyph.index);
    if (!outline)
    {
        return;
    }
    const long x = originX + glyph.x;
    FT_Vector fraction{x & 63, glyph.y & 63};
    FT_Glyph drawn = outline;
    if (FT_Glyph_To_Bitmap(&drawn, FT_RENDER_MODE_NORMAL, &fraction, 0) != 0)
    {
        return;
    }
    const auto* const bitmap = reinterpret_cast<FT_BitmapGlyph>(drawn);
    coverage.AddBitmap(bitmap->bitmap, int(x >> 6) + bitmap->left, baseLine - int(glyph.y >> 6) - bitmap->top);
    FT_Done_Glyph(drawn);
}

void DrawLine(Coverage& coverage, const ShapedLine& line, int fontSize, int baseLine)
{
    for (const ShapedGlyph& glyph : line.glyphs)
    {
        if (glyph.face)
        {
            DrawGlyph(coverage, glyph, -line.left, baseLine);
        }
        else
        {
            const int margin = std::max(1, fontSize / 12);
            const int side = std::max(1, BoxAdvance(fontSize) - 2 * margin);
            coverage.AddBox(int(glyph.x / 64) + margin, baseLine - fontSize + margin, side, fontSize - 2 * margin);
        }
    }
}

}  // namespace

void MeasureText(const std::string& fontName, int fontSize, const std::string& text, int maxWidth, int& width,
                 int& height)
{
    const TextLayout layout = LayOut(fontName, fontSize, text, maxWidth);
    width = layout.width;
    height = layout.height;
}

Image* RasterizeText(const std::string& fontName, int fontSize, const std::string& text, int maxWidth, int maxHeight)
{
    TextLayout layout = LayOut(fontName, fontSize, text, maxWidth);
    LimitHeight(layout, maxHeight);
    if (layout.lines.empty())
    {
        return nullptr;
    }
    Coverage coverage(layout.width, layout.height);
    int top = 0;
    for (const ShapedLine& line : layout.lines)
    {
        DrawLine(coverage, line, fontSize, top + Ceil64(line.ascender));
        top += LineHeight(line);
    }
    std::vector<unsigned char> pixels = coverage.ToPixels();
    return Image::ImageFromTextData(layout.width, layout.height, pixels.data());
}

}  // namespace OV::detail
