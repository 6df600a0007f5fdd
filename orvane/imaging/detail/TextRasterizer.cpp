#include "orvane/imaging/detail/TextRasterizer.h"

#include "orvane/imaging/Image.h"
#include "orvane/imaging/detail/CharacterKinds.h"
#include "orvane/imaging/detail/FontSet.h"
#include "orvane/imaging/detail/LocaleText.h"
#include "orvane/imaging/detail/TextShaper.h"
#include "orvane/imaging/detail/Utf8.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

namespace OV::detail
{

namespace
{

constexpr std::size_t kMaxFaceName = 31;
constexpr int kMaxFontSize = 4096;

// As Unicode has it for text that is read as it comes; no language needs as many. A shaper
// looks back over all marks for each of them.
constexpr int kMaxMarks = 30;

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
    int marks = 0;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const char32_t c = text[i];
        if (c == U'\n' || c == U'\r')
        {
            i += c == U'\r' && i + 1 < text.size() && text[i + 1] == U'\n' ? 1 : 0;
            lines.emplace_back();
            marks = 0;
        }
        else if (c == U'\t')
        {
            lines.back().push_back(U' ');
        }
        else if (IsMark(c))
        {
            // One that is not seen would get a letter to stand on where a line begins with it.
            if (++marks <= kMaxMarks && !(lines.back().empty() && IsUnseen(c)))
            {
                lines.back().push_back(c);
            }
        }
        else if (!IsControl(c))
        {
            // What is not seen between two marks parts them for nobody.
            marks = IsUnseen(c) ? marks : 0;
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

    // Draws the picture so many times as large, its corner at a place between pixels. Each pixel
    // gets the mean of what lies under it, or of one pixel of the picture where that is larger.
    void AddPicture(const GlyphPicture& picture, double left, double top, double scale)
    {
        const std::vector<Footprint> columns = Footprints(picture.width, left, scale);
        const std::vector<Footprint> rows = Footprints(picture.height, top, scale);
        for (const Footprint& row : rows)
        {
            for (const Footprint& column : columns)
            {
                double sum = 0.0;
                for (std::size_t y = 0; y < row.weights.size(); ++y)
                {
                    const unsigned char* const source =
                        picture.coverage.data() + (std::size_t(row.first) + y) * std::size_t(picture.width);
                    for (std::size_t x = 0; x < column.weights.size(); ++x)
                    {
                        sum += row.weights[y] * column.weights[x] * source[std::size_t(column.first) + x];
                    }
                }
                Add(column.pixel, row.pixel, static_cast<unsigned int>(sum + 0.5));
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
    /// What a pixel sees of a row or column of a picture.
    struct Footprint
    {
        int pixel;
        int first;
        std::vector<double> weights;
    };

    static std::vector<Footprint> Footprints(int length, double start, double scale)
    {
        std::vector<Footprint> footprints;
        const double reach = 0.5 * std::max(1.0, 1.0 / scale);
        // Enlarged, a picture fades out over half a pixel of its own.
        const double rim = std::max(0.0, (reach - 0.5 / scale) * scale);
        const int last = static_cast<int>(std::ceil(start + length * scale + rim));
        for (int pixel = static_cast<int>(std::floor(start - rim)); pixel < last; ++pixel)
        {
            const double center = (pixel + 0.5 - start) / scale;
            Footprint footprint{pixel, std::max(0, static_cast<int>(std::floor(center - reach))), {}};
            for (int at = footprint.first; at < std::min<double>(length, center + reach); ++at)
            {
                const double part = std::min(at + 1.0, center + reach) - std::max<double>(at, center - reach);
                footprint.weights.push_back(std::max(0.0, part) / (2.0 * reach));
            }
            footprints.push_back(std::move(footprint));
        }
        return footprints;
    }

    int m_width;
    int m_height;
    std::vector<unsigned char> m_values;
};

void DrawPicture(Coverage& coverage, const ShapedGlyph& glyph, long originX, int baseLine)
{
    if (const GlyphPicture* const picture = glyph.face->Picture(glyph.index))
    {
        const double scale = glyph.face->Scale();
        coverage.AddPicture(*picture, double(originX + glyph.x) / 64.0 + picture->left * scale,
                            baseLine - double(glyph.y) / 64.0 - picture->top * scale, scale);
    }
}

void DrawGlyph(Coverage& coverage, const ShapedGlyph& glyph, long originX, int baseLine)
{
    if (glyph.face->HasPictures())
    {
        DrawPicture(coverage, glyph, originX, baseLine);
        return;
    }
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
