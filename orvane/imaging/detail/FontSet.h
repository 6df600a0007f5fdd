#pragma once

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_GLYPH_H

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace OV::detail
{

/// How glyphs are measured and drawn. Light hinting sharpens stems vertically and leaves
/// advances alone, so that letters keep their shapes and distances at any size.
constexpr FT_Int32 kGlyphLoadFlags = FT_LOAD_TARGET_LIGHT | FT_LOAD_NO_BITMAP;

/// How much of each pixel the picture of a glyph covers, in the pixels of a font's own size.
struct GlyphPicture
{
    int left = 0;  ///< of the first column, from the pen
    int top = 0;   ///< of the first row's upper rim, upward from the base line
    int width = 0;
    int height = 0;
    std::vector<unsigned char> coverage;  ///< top row first
};

/// One font file at one size, with the glyphs that were drawn from it.
///
/// A colour font of pictures comes in sizes of its own: one of them is taken, and what the
/// font tells and draws is brought to the size asked for.
/// For the thread that made it, as all of FreeType.
class FontFace
{
public:
    /// @param file as fontconfig gives it. @param index of the face in the file.
    FontFace(FT_Library library, const std::string& file, long index, int size);
    FontFace(const FontFace&) = delete;
    FontFace& operator=(const FontFace&) = delete;
    ~FontFace();

    /// Null if the file could not be opened as a scalable font or one of colour pictures.
    FT_Face Get() const { return m_face; }

    bool Has(char32_t c) const;

    /// Whether glyphs are pictures, not outlines.
    bool HasPictures() const { return m_ownSize != 0; }

    /// The scaled outline of a glyph, which stays the face's; null if it can not be loaded.
    FT_Glyph Outline(unsigned int glyph);

    /// The picture of a glyph, which stays the face's, to be drawn Scale times as large; null if
    /// it can not be loaded. Good until the next call.
    const GlyphPicture* Picture(unsigned int glyph);

    /// Pixels to a pixel of the font's own size; 1 for outlines.
    double Scale() const;

    /// A length that FreeType or the shaper gave for this face, at the size asked for.
    long Scaled(long length) const;

    /// Extent above and below the base line, in 1/64 pixel, both counted upward.
    long Ascender() const;
    long Descender() const;

private:
    bool TakeSize();
    void ForgetGlyphs();

    FT_Face m_face = nullptr;
    int m_size;
    long m_ownSize = 0;  // em of the pictures in pixels; 0 for outlines
    std::unordered_map<unsigned int, FT_Glyph> m_glyphs;
    std::unordered_map<unsigned int, GlyphPicture> m_pictures;
};

/// The fonts that serve a family at a size: the one that matches it best, and those that have
/// the characters that it lacks, in the order in which fontconfig recommends them.
class FontSet
{
public:
    FontSet(FT_Library library, const std::string& family, int size);
    ~FontSet();

    /// The fonts of a family at a size, kept for this thread.
    ///
    /// Good until the next call. @param family in UTF-8; one that is not installed is
    /// substituted. @param size em in pixels.
    static FontSet& OfThread(const std::string& family, int size);

    /// Null where no font is installed at all.
    FontFace* Primary() const { return m_primary.get(); }

    /// The first font that has all of these characters; null where none has.
    FontFace* FaceWithAll(const char32_t* characters, std::size_t count);

    /// The first font that has all of these characters, else the first that has the first of
    /// them, else the primary one.
    FontFace* FaceFor(const char32_t* characters, std::size_t count);

    /// The open font of this set that is that face of FreeType's; else the primary one.
    FontFace* FaceOf(FT_Face face) const;

    /// Em in pixels.
    int Size() const { return m_size; }

private:
    struct Fallback;

    FontFace* FallbackFor(const char32_t* characters, std::size_t count);
    void FindFallbacks();

    FT_Library m_library;
    std::string m_family;
    int m_size;
    std::unique_ptr<FontFace> m_primary;
    bool m_fallbacksFound = false;
    std::vector<std::unique_ptr<Fallback>> m_fallbacks;
};

}  // namespace OV::detail
