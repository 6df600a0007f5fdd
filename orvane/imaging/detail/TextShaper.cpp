#include "orvane/imaging/detail/TextShaper.h"

#include "orvane/imaging/detail/FontSet.h"

#include <hb.h>
#include <raqm.h>

#include <algorithm>
#include <cstdint>
#include <memory>

namespace OV::detail
{

namespace
{

constexpr char32_t kEllipsis = 0x2026;
constexpr char32_t kZeroWidthJoiner = 0x200D;

struct RaqmDeleter
{
    void operator()(raqm_t* layout) const { raqm_destroy(layout); }
};
using Raqm = std::unique_ptr<raqm_t, RaqmDeleter>;

bool BelongsToPrevious(char32_t c)
{
    switch (hb_unicode_general_category(hb_unicode_funcs_get_default(), c))
    {
    case HB_UNICODE_GENERAL_CATEGORY_NON_SPACING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_SPACING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_ENCLOSING_MARK:
    case HB_UNICODE_GENERAL_CATEGORY_FORMAT:
        return true;
    default:
        return false;
    }
}

bool IsSpace(char32_t c)
{
    return hb_unicode_general_category(hb_unicode_funcs_get_default(), c) ==
           HB_UNICODE_GENERAL_CATEGORY_SPACE_SEPARATOR;
}

// Puts every cluster in a font that has all of it, so that marks stand on their letters.
void ChooseFaces(raqm_t* layout, FontSet& fonts, const std::u32string& text)
{
    std::size_t runBegin = 0;
    FontFace* runFace = nullptr;
    for (std::size_t begin = 0; begin < text.size();)
    {
        const std::size_t end = ClusterEnd(text, begin);
        FontFace* const face = fonts.FaceFor(text.data() + begin, end - begin);
        if (face != runFace)
        {
            if (runFace)
            {
                raqm_set_freetype_face_range(layout, runFace->Get(), runBegin, begin - runBegin);
            }
            runFace = face;
            runBegin = begin;
        }
        begin = end;
    }
    raqm_set_freetype_face_range(layout, runFace->Get(), runBegin, text.size() - runBegin);
}

void Include(ShapedLine& line, FontFace& face, const ShapedGlyph& glyph)
{
    line.ascender = std::max(line.ascender, face.Ascender());
    line.descender = std::min(line.descender, face.Descender());
    const FT_Glyph outline = face.Outline(glyph.index);
    if (!outline)
    {
        return;
    }
    FT_BBox box;
    FT_Glyph_Get_CBox(outline, FT_GLYPH_BBOX_UNSCALED, &box);
    if (box.xMin >= box.xMax)
    {
        return;
    }
    line.left = std::min(line.left, glyph.x + box.xMin);
    line.right = std::max(line.right, glyph.x + box.xMax);
    line.ascender = std::max(line.ascender, glyph.y + box.yMax);
    line.descender = std::min(line.descender, glyph.y + box.yMin);
}

ShapedLine ShapeBoxes(FontSet& fonts, const std::u32string& text)
{
    ShapedLine line;
    line.ascender = long(fonts.Size()) * 64;
    for (const char32_t c : text)
    {
        if (!IsSpace(c))
        {
            line.glyphs.push_back({nullptr, 0, line.advance, 0});
        }
        line.advance += long(BoxAdvance(fonts.Size())) * 64;
    }
    line.right = line.advance;
    return line;
}

// The text as far as a number of clusters, without the blanks at its end, and an ellipsis.
std::u32string Shortened(const std::u32string& text, std::size_t length)
{
    while (length > 0 && IsSpace(text[length - 1]))
    {
        --length;
    }
    return text.substr(0, length) + kEllipsis;
}

// The longest of the given lengths, which rise, at which the shortened text fits; by halving,
// since the width grows with the length.
bool LongestThatFits(FontSet& fonts, const std::u32string& text, const std::vector<std::size_t>& lengths, int maxWidth,
                     ShapedLine& line)
{
    bool found = false;
    std::size_t low = 0;
    std::size_t high = lengths.size();
    while (low < high)
    {
        const std::size_t middle = low + (high - low) / 2;
        ShapedLine candidate = ShapeLine(fonts, Shortened(text, lengths[middle]));
        if (candidate.Width() <= maxWidth)
        {
            line = std::move(candidate);
            found = true;
            low = middle + 1;
        }
        else
        {
            high = middle;
        }
    }
    return found;
}

}  // namespace

int ShapedLine::Width() const
{
    return static_cast<int>((right - left + 63) / 64);
}

int BoxAdvance(int size)
{
    return std::max(1, size * 6 / 10);
}

std::size_t ClusterEnd(const std::u32string& text, std::size_t begin)
{
    std::size_t end = begin + 1;
    while (end < text.size() && (BelongsToPrevious(text[end]) || text[end - 1] == kZeroWidthJoiner))
    {
        ++end;
    }
    return end;
}

ShapedLine ShapeLine(FontSet& fonts, const std::u32string& text)
{
    FontFace* const primary = fonts.Primary();
    if (!primary)
    {
        return ShapeBoxes(fonts, text);
    }
    ShapedLine line;
    line.ascender = primary->Ascender();
    line.descender = primary->Descender();
    if (text.empty())
    {
        return line;
    }

    const Raqm layout(raqm_create());
    static_assert(sizeof(char32_t) == sizeof(std::uint32_t), "code points pass as they are");
    if (!layout || !raqm_set_text(layout.get(), reinterpret_cast<const std::uint32_t*>(text.data()), text.size()) ||
        !raqm_set_par_direction(layout.get(), RAQM_DIRECTION_DEFAULT) ||
        !raqm_set_freetype_load_flags(layout.get(), kGlyphLoadFlags))
    {
        return line;
    }
    ChooseFaces(layout.get(), fonts, text);
    if (!raqm_layout(layout.get()))
    {
        return line;
    }
    std::size_t count = 0;
    const raqm_glyph_t* const glyphs = raqm_get_glyphs(layout.get(), &count);
    line.glyphs.reserve(count);
    long y = 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        ShapedGlyph glyph;
        glyph.face = fonts.FaceOf(glyphs[i].ftface);
        glyph.index = glyphs[i].index;
        glyph.x = line.advance + glyphs[i].x_offset;
        glyph.y = y + glyphs[i].y_offset;
        line.advance += glyphs[i].x_advance;
        y += glyphs[i].y_advance;
        Include(line, *glyph.face, glyph);
        line.glyphs.push_back(glyph);
    }
    line.right = std::max(line.right, line.advance);
    return line;
}

ShapedLine ShapeWithEllipsis(FontSet& fonts, const std::u32string& text, int maxWidth)
{
    std::vector<std::size_t> words;
    std::vector<std::size_t> letters;
    for (std::size_t at = 0; at < text.size(); at = ClusterEnd(text, at))
    {
        if (at > 0 && IsSpace(text[at]) && !IsSpace(text[at - 1]))
        {
            words.push_back(at);
        }
        if (words.empty())
        {
            letters.push_back(at);
        }
    }
    ShapedLine line;
    if (!LongestThatFits(fonts, text, words, maxWidth, line) &&
        !LongestThatFits(fonts, text, letters, maxWidth, line))
    {
        line = ShapeLine(fonts, std::u32string(1, kEllipsis));
    }
    return line;
}

}  // namespace OV::detail
