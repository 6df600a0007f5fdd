#include "orvane/imaging/detail/FontSet.h"

#include <fontconfig/fontconfig.h>

#include <algorithm>
#include <list>

namespace OV::detail
{

namespace
{

// More glyphs of one face than this are thrown away together.
constexpr std::size_t kMaxGlyphs = 4096;

// More pairs of family and size than this push out the one used longest ago.
constexpr std::size_t kMaxFontSets = 32;

struct PatternDeleter
{
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using Pattern = std::unique_ptr<FcPattern, PatternDeleter>;

Pattern Wanted(const std::string& family, int size)
{
    Pattern pattern(FcPatternCreate());
    if (!pattern)
    {
        return nullptr;
    }
    FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
    FcPatternAddInteger(pattern.get(), FC_WEIGHT, FC_WEIGHT_REGULAR);
    FcPatternAddInteger(pattern.get(), FC_SLANT, FC_SLANT_ROMAN);
    FcPatternAddBool(pattern.get(), FC_SCALABLE, FcTrue);
    FcPatternAddDouble(pattern.get(), FC_PIXEL_SIZE, size);
    FcConfigSubstitute(nullptr, pattern.get(), FcMatchPattern);
    FcDefaultSubstitute(pattern.get());
    return pattern;
}

std::unique_ptr<FontFace> Open(FT_Library library, FcPattern* font, int size)
{
    FcChar8* file = nullptr;
    int index = 0;
    if (!font || FcPatternGetString(font, FC_FILE, 0, &file) != FcResultMatch)
    {
        return nullptr;
    }
    FcPatternGetInteger(font, FC_INDEX, 0, &index);
    auto face = std::make_unique<FontFace>(library, reinterpret_cast<const char*>(file), index, size);
    return face->Get() ? std::move(face) : nullptr;
}

// FreeType, and what is open of it, of one thread.
class ThreadFonts
{
public:
    ThreadFonts()
    {
        if (FT_Init_FreeType(&m_library) != 0)
        {
            m_library = nullptr;
        }
    }

    ~ThreadFonts()
    {
        m_sets.clear();
        if (m_library)
        {
            FT_Done_FreeType(m_library);
        }
    }

    FontSet& Get(const std::string& family, int size)
    {
        const auto found = std::find_if(m_sets.begin(), m_sets.end(), [&](const Entry& entry) {
            return entry.fonts.Size() == size && entry.family == family;
        });
        if (found != m_sets.end())
        {
            m_sets.splice(m_sets.begin(), m_sets, found);
        }
        else
        {
            m_sets.emplace_front(m_library, family, size);
            if (m_sets.size() > kMaxFontSets)
            {
                m_sets.pop_back();
            }
        }
        return m_sets.front().fonts;
    }

private:
    struct Entry
    {
        Entry(FT_Library library, const std::string& name, int size) :
            family(name), fonts(library, name, size)
        {
        }

        std::string family;
        FontSet fonts;
    };

    FT_Library m_library = nullptr;
    std::list<Entry> m_sets;  // the one used last stands first
};

}  // namespace

FontFace::FontFace(FT_Library library, const std::string& file, long index, int size)
{
    if (!library || FT_New_Face(library, file.c_str(), index, &m_face) != 0)
    {
        m_face = nullptr;
        return;
    }
    const bool usable = FT_IS_SCALABLE(m_face) && FT_Set_Pixel_Sizes(m_face, 0, static_cast<FT_UInt>(size)) == 0;
    if (!usable)
    {
        FT_Done_Face(m_face);
        m_face = nullptr;
    }
}

FontFace::~FontFace()
{
    ForgetGlyphs();
    if (m_face)
    {
        FT_Done_Face(m_face);
    }
}

bool FontFace::Has(char32_t c) const
{
    return FT_Get_Char_Index(m_face, c) != 0;
}

FT_Glyph FontFace::Outline(unsigned int glyph)
{
    const auto known = m_glyphs.find(glyph);
    if (known != m_glyphs.end())
    {
        return known->second;
    }
    if (m_glyphs.size() >= kMaxGlyphs)
    {
        ForgetGlyphs();
    }
    FT_Glyph outline = nullptr;
    if (FT_Load_Glyph(m_face, glyph, kGlyphLoadFlags) != 0 || FT_Get_Glyph(m_face->glyph, &outline) != 0)
    {
        outline = nullptr;
    }
    m_glyphs.emplace(glyph, outline);
    return outline;
}

long FontFace::Ascender() const
{
    return m_face->size->metrics.ascender;
}

long FontFace::Descender() const
{
    return m_face->size->metrics.descender;
}

void FontFace::ForgetGlyphs()
{
    for (const auto& [index, outline] : m_glyphs)
    {
        if (outline)
        {
            FT_Done_Glyph(outline);
        }
    }
    m_glyphs.clear();
}

/// A font that may stand in, opened when a character asks for it.
struct FontSet::Fallback
{
    explicit Fallback(FcPattern* font) : pattern(font) { FcPatternReference(font); }

    bool HasAll(const char32_t* characters, std::size_t count) const
    {
        FcCharSet* charset = nullptr;
        if (FcPatternGetCharSet(pattern.get(), FC_CHARSET, 0, &charset) != FcResultMatch)
        {
            return false;
        }
        return std::all_of(characters, characters + count,
                           [&](char32_t c) { return FcCharSetHasChar(charset, c) == FcTrue; });
    }

    Pattern pattern;
    std::unique_ptr<FontFace> face;
    bool failed = false;
};

FontSet::FontSet(FT_Library library, const std::string& family, int size) :
    m_library(library), m_family(family), m_size(size)
{
    const Pattern wanted = Wanted(family, size);
    if (wanted)
    {
        FcResult result = FcResultNoMatch;
        const Pattern best(FcFontMatch(nullptr, wanted.get(), &result));
        m_primary = Open(library, best.get(), size);
    }
}

FontSet::~FontSet() = default;

FontSet& FontSet::OfThread(const std::string& family, int size)
{
    thread_local ThreadFonts fonts;
    return fonts.Get(family, size);
}

FontFace* FontSet::FaceFor(const char32_t* characters, std::size_t count)
{
    FontFace* const primary = Primary();
    if (!primary)
    {
        return nullptr;
    }
    if (std::all_of(characters, characters + count, [&](char32_t c) { return primary->Has(c); }))
    {
        return primary;
    }
    if (FontFace* const face = FallbackFor(characters, count))
    {
        return face;
    }
    if (count > 1 && !primary->Has(characters[0]))
    {
        if (FontFace* const face = FallbackFor(characters, 1))
        {
            return face;
        }
    }
    return primary;
}

FontFace* FontSet::FaceOf(FT_Face face) const
{
    for (const auto& fallback : m_fallbacks)
    {
        if (fallback->face && fallback->face->Get() == face)
        {
            return fallback->face.get();
        }
    }
    return m_primary.get();
}

FontFace* FontSet::FallbackFor(const char32_t* characters, std::size_t count)
{
    FindFallbacks();
    for (const auto& fallback : m_fallbacks)
    {
        if (fallback->failed || !fallback->HasAll(characters, count))
        {
            continue;
        }
        if (!fallback->face)
        {
            fallback->face = Open(m_library, fallback->pattern.get(), m_size);
            fallback->failed = !fallback->face;
        }
        if (fallback->face)
        {
            return fallback->face.get();
        }
    }
    return nullptr;
}

void FontSet::FindFallbacks()
{
    if (m_fallbacksFound)
    {
        return;
    }
    m_fallbacksFound = true;
    const Pattern wanted = Wanted(m_family, m_size);
    FcResult result = FcResultNoMatch;
    FcFontSet* const fonts = wanted ? FcFontSort(nullptr, wanted.get(), FcTrue, nullptr, &result) : nullptr;
    if (!fonts)
    {
        return;
    }
    for (int i = 0; i < fonts->nfont; ++i)
    {
        m_fallbacks.push_back(std::make_unique<Fallback>(fonts->fonts[i]));
    }
    FcFontSetDestroy(fonts);
}

}  // namespace OV::detail
