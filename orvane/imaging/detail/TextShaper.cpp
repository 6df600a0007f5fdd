#include "orvane/imaging/detail/TextShaper.h"

#include "orvane/imaging/detail/CharacterKinds.h"
#include "orvane/imaging/detail/FontSet.h"

#include <raqm.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>

namespace OV::detail
{

namespace
{

constexpr char32_t kEllipsis = 0x2026;

struct RaqmDeleter
{
    void operator()(raqm_t* layout) const { raqm_destroy(layout); }
};
using Raqm = std::unique_ptr<raqm_t, RaqmDeleter>;

// Unlike the other spaces it is drawn.
constexpr char32_t kOghamSpace = 0x1680;

/// Gives each cluster of a text its font.
class FaceChooser
{
public:
    FaceChooser(raqm_t* layout, FontSet& fonts, const std::u32string& text) :
        m_layout(layout), m_fonts(fonts), m_text(text)
    {
    }

    void Choose()
    {
        for (std::size_t begin = 0; begin < m_text.size();)
        {
            const std::size_t end = ClusterEnd(m_text, begin);
            ChooseForCluster(begin, end);
            begin = end;
        }
        EndRun(m_text.size());
    }

private:
    // One font has all of a cluster, so that marks stand on their letters and what is joined is
    // joined by it. Where none has, what joiners join is taken apart.
    void ChooseForCluster(std::size_t begin, std::size_t end)
    {
        CollectSeen(begin, end);
        if (DrawsNothing())
        {
            Use(m_face ? m_face : m_fonts.Primary(), begin);
            return;
        }
        if (FontFace* const face = m_fonts.FaceWithAll(m_seen.data(), m_seen.size()))
        {
            Use(face, begin);
            return;
        }
        while (begin < end)
        {
            const auto joiner = std::find(m_text.begin() + std::ptrdiff_t(begin), m_text.begin() + std::ptrdiff_t(end),
                                          kZeroWidthJoiner);
            const std::size_t partEnd =
                std::min(end, static_cast<std::size_t>(joiner - m_text.begin()) + 1);
            CollectSeen(begin, partEnd);
            if (!m_seen.empty())
            {
                Use(m_fonts.FaceFor(m_seen.data(), m_seen.size()), begin);
            }
            begin = partEnd;
        }
    }

    // What is not seen needs no font that has it: the shaper hides it.
    void CollectSeen(std::size_t begin, std::size_t end)
    {
        m_seen.clear();
        std::copy_if(m_text.begin() + std::ptrdiff_t(begin), m_text.begin() + std::ptrdiff_t(end),
                     std::back_inserter(m_seen), [](char32_t c) { return !IsUnseen(c); });
    }

    // A space of a width that the font lacks is made by the shaper.
    bool DrawsNothing() const
    {
        return m_seen.empty() || (m_seen.size() == 1 && IsSpace(m_seen[0]) && m_seen[0] != kOghamSpace &&
                                  !m_fonts.Primary()->Has(m_seen[0]));
    }

    void Use(FontFace* face, std::size_t begin)
    {
        if (face != m_face)
        {
            EndRun(begin);
            m_face = face;
            m_runBegin = begin;
        }
    }

    void EndRun(std::size_t end)
    {
        if (m_face && end > m_runBegin)
        {
            raqm_set_freetype_face_range(m_layout, m_face->Get(), m_runBegin, end - m_runBegin);
        }
    }

    raqm_t* m_layout;
    FontSet& m_fonts;
    const std::u32string& m_text;
    std::u32string m_seen;
    FontFace* m_face = nullptr;
    std::size_t m_runBegin = 0;
};

/// Knows the glyphs that the shaper leaves although nothing is to be seen of them.
class HiddenGlyphs
{
public:
    explicit HiddenGlyphs(const std::u32string& text) :
        m_text(text)
    {
        if (std::none_of(text.begin(), text.end(), IsEmojiModifier))
        {
            return;
        }
        m_modifiers.resize(text.size());
        for (std::size_t begin = 0; begin < text.size();)
        {
            const std::size_t end = ClusterEnd(text, begin);
            MarkCluster(begin, end);
            begin = end;
        }
    }

    // Glyphs come in the order in which they are drawn; a cluster's come together.
    bool Hides(const FontFace& face, unsigned int glyph, std::size_t cluster)
    {
        if (cluster >= m_text.size())
        {
            return false;
        }
        if (glyph == 0 && IsUnseen(m_text[cluster]))
        {
            return true;
        }
        return !m_modifiers.empty() && m_modifiers[cluster] != 0 && IsModifier(face, glyph, cluster);
    }

private:
    // Which modifiers stand behind a symbol in the cluster, by bits.
    void MarkCluster(std::size_t begin, std::size_t end)
    {
        unsigned char found = 0;
        for (std::size_t i = begin + 1; i < end; ++i)
        {
            if (IsEmojiModifier(m_text[i]) && m_text[i - 1] != kZeroWidthJoiner)
            {
                found = static_cast<unsigned char>(found | 1u << (m_text[i] - kFirstEmojiModifier));
            }
        }
        std::fill(m_modifiers.begin() + std::ptrdiff_t(begin), m_modifiers.begin() + std::ptrdiff_t(end), found);
    }

    // A modifier that the font has joined is no glyph any more.
    bool IsModifier(const FontFace& face, unsigned int glyph, std::size_t cluster)
    {
        if (glyph == 0)
        {
            // The box of a modifier that the font lacks; one box stands for a symbol that it lacks too.
            const bool again = m_boxCluster == cluster;
            m_boxCluster = cluster;
            return again || face.Has(m_text[cluster]);
        }
        for (int i = 0; i < kEmojiModifiers; ++i)
        {
            if ((m_modifiers[cluster] >> i & 1) != 0 &&
                FT_Get_Char_Index(face.Get(), kFirstEmojiModifier + static_cast<char32_t>(i)) == glyph)
            {
                return true;
            }
        }
        return false;
    }

    const std::u32string& m_text;
    std::vector<unsigned char> m_modifiers;
    std::size_t m_boxCluster = std::u32string::npos;
};

// The ink of a glyph, in 1/64 pixel from its place; false where there is none.
bool FindInk(FontFace& face, unsigned int glyph, FT_BBox& box)
{
    if (face.HasPictures())
    {
        const GlyphPicture* const picture = face.Picture(glyph);
        if (!picture)
        {
            return false;
        }
        box = {face.Scaled(picture->left * 64L), face.Scaled((picture->top - picture->height) * 64L),
               face.Scaled((picture->left + picture->width) * 64L), face.Scaled(picture->top * 64L)};
        return true;
    }
    const FT_Glyph outline = face.Outline(glyph);
    if (!outline)
    {
        return false;
    }
    FT_Glyph_Get_CBox(outline, FT_GLYPH_BBOX_UNSCALED, &box);
    return box.xMin < box.xMax;
}

void Include(ShapedLine& line, FontFace& face, const ShapedGlyph& glyph)
{
    line.ascender = std::max(line.ascender, face.Ascender());
    line.descender = std::min(line.descender, face.Descender());
    FT_BBox box;
    if (!FindInk(face, glyph.index, box))
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
        if (IsUnseen(c))
        {
            continue;
        }
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
    char32_t base = text[begin];
    std::size_t end = begin + 1;
    for (; end < text.size(); ++end)
    {
        const char32_t c = text[end];
        if (BelongsToPrevious(c))
        {
            continue;
        }
        const bool joined = text[end - 1] == kZeroWidthJoiner;
        const bool modifies = IsEmojiModifier(c) && IsSymbol(base);
        if (!joined && !modifies)
        {
            break;
        }
        base = c;
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
    FaceChooser(layout.get(), fonts, text).Choose();
    if (!raqm_layout(layout.get()))
    {
        return line;
    }
    std::size_t count = 0;
    const raqm_glyph_t* const glyphs = raqm_get_glyphs(layout.get(), &count);
    line.glyphs.reserve(count);
    HiddenGlyphs hidden(text);
    long y = 0;
    for (std::size_t i = 0; i < count; ++i)
    {
        ShapedGlyph glyph;
        glyph.face = fonts.FaceOf(glyphs[i].ftface);
        glyph.index = glyphs[i].index;
        if (hidden.Hides(*glyph.face, glyph.index, glyphs[i].cluster))
        {
            continue;
        }
        glyph.x = line.advance + glyph.face->Scaled(glyphs[i].x_offset);
        glyph.y = y + glyph.face->Scaled(glyphs[i].y_offset);
        line.advance += glyph.face->Scaled(glyphs[i].x_advance);
        y += glyph.face->Scaled(glyphs[i].y_advance);
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
