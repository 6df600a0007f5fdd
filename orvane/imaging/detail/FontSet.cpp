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

// Pictures are larger than outlines.
constexpr std::size_t kMaxPictures = 256;

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

// The text has a colour of its own, so that of a picture only its light is left. By alpha alone
// a white tick on a green square would be a square; by light alone a black flag would be gone.
unsigned char CoverageOf(const unsigned char* premultiplied)
{
    return static_cast<unsigned char>((premultiplied[0] + premultiplied[1] + premultiplied[2] + premultiplied[3]) / 4);
}

// How much of its pixels the glyph covers that FreeType has just drawn.
GlyphPicture PictureOf(const FT_GlyphSlot slot)
{
    const FT_Bitmap& bitmap = slot->bitmap;
    GlyphPicture picture;
    const bool known = bitmap.pixel_mode == FT_PIXEL_MODE_BGRA || bitmap.pixel_mode == FT_PIXEL_MODE_GRAY;
    if (!known || !bitmap.buffer)
    {
        return picture;
    }
    picture.left = slot->bitmap_left;
    picture.top = slot->bitmap_top;
    picture.width = static_cast<int>(bitmap.width);
    picture.height = static_cast<int>(bitmap.rows);
    picture.coverage.reserve(std::size_t(bitmap.width) * bitmap.rows);
    const bool colored = bitmap.pixel_mode == FT_PIXEL_MODE_BGRA;
    for (unsigned int row = 0; row < bitmap.rows; ++row)
    {
        const unsigned char* const source = bitmap.buffer + std::ptrdiff_t(row) * bitmap.pitch;
        for (unsigned int column = 0; column < bitmap.width; ++column)
        {
            picture.coverage.push_back(colored ? CoverageOf(source + 4 * column) : source[column]);
        }
    }
    return picture;
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

FontFace::FontFace(FT_Library library, const std::string& file, long index, int size) :
    m_size(size)
{
    if (!library || FT_New_Face(library, file.c_str(), index, &m_face) != 0)
    {
        m_face = nullptr;
        return;
    }
    if (!TakeSize())
    {
        FT_Done_Face(m_face);
        m_face = nullptr;
    }
}

bool FontFace::TakeSize()
{
    if (!FT_HAS_COLOR(m_face) || !FT_HAS_FIXED_SIZES(m_face))
    {
        return FT_IS_SCALABLE(m_face) && FT_Set_Pixel_Sizes(m_face, 0, static_cast<FT_UInt>(m_size)) == 0;
    }
    // The smallest of those that need not be enlarged, else the largest.
    const FT_Bitmap_Size* const sizes = m_face->available_sizes;
    int best = 0;
    for (int i = 1; i < m_face->num_fixed_sizes; ++i)
    {
        const bool enough = sizes[i].y_ppem >= long(m_size) * 64;
        const bool bestIsEnough = sizes[best].y_ppem >= long(m_size) * 64;
        const bool smaller = sizes[i].y_ppem < sizes[best].y_ppem;
        if (enough == bestIsEnough ? smaller == enough : enough)
        {
            best = i;
        }
    }
    if (sizes[best].y_ppem < 64 || FT_Select_Size(m_face, best) != 0)
    {
        return false;
    }
    m_ownSize = (sizes[best].y_ppem + 32) / 64;
    return true;
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

const GlyphPicture* FontFace::Picture(unsigned int glyph)
{
    auto known = m_pictures.find(glyph);
    if (known == m_pictures.end())
    {
        if (m_pictures.size() >= kMaxPictures)
        {
            m_pictures.clear();
        }
        const bool drawn = FT_Load_Glyph(m_face, glyph, FT_LOAD_COLOR | FT_LOAD_RENDER) == 0;
        known = m_pictures.emplace(glyph, drawn ? PictureOf(m_face->glyph) : GlyphPicture()).first;
    }
    return known->second.coverage.empty() ? nullptr : &known->second;
}

double FontFace::Scale() const
{
    return HasPictures() ? double(m_size) / double(m_ownSize) : 1.0;
}

long FontFace::Scaled(long length) const
{
    return HasPictures() ? FT_MulDiv(length, m_size, m_ownSize) : length;
}

long FontFace::Ascender() const
{
    return Scaled(m_face->size->metrics.ascender);
}

long FontFace::Descender() const
{
    return Scaled(m_face->size->metrics.descender);
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

FontFace* FontSet::FaceWithAll(const char32_t* characters, std::size_t count)
{
    FontFace* const primary = Primary();
    if (!primary || std::all_of(characters, characters + count, [&](char32_t c) { return primary->Has(c); }))
    {
        return primary;
    }
    return FallbackFor(characters, count);
}

FontFace* FontSet::FaceFor(const char32_t* characters, std::size_t count)
{
    FontFace* face = FaceWithAll(characters, count);
    if (!face && count > 1)
    {
        face = FaceWithAll(characters, 1);
    }
    return face ? face : Primary();
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
