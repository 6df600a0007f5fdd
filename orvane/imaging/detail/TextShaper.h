#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace OV::detail
{

class FontFace;
class FontSet;

/// A glyph on a line. Lengths in 1/64 pixel, y upward, from the line's start on its base line.
struct ShapedGlyph
{
    FontFace* face = nullptr;  ///< null: a box stands for the character
    unsigned int index = 0;
    long x = 0;
    long y = 0;
};

/// A line of text, shaped and in visual order, with the extents of its ink.
struct ShapedLine
{
    std::vector<ShapedGlyph> glyphs;
    long advance = 0;
    long left = 0;   ///< at most 0: how far ink reaches to the left of the start
    long right = 0;  ///< at least the advance
    long ascender = 0;
    long descender = 0;  ///< negative below the base line

    /// Whole pixels that hold the line.
    int Width() const;
};

/// Shapes and orders one line, which holds no line break.
///
/// Each character is set in the first font of the set that has it, with the marks and joiners
/// that belong to it. What is not seen asks for no font, and what a font can not join of a
/// symbol (a skin tone, a joiner) vanishes behind it. Without any font there are boxes, one for
/// each character that is seen.
ShapedLine ShapeLine(FontSet& fonts, const std::u32string& text);

/// Shapes a line that is wider than a limit so that it fits: trailing words, then letters, go
/// until the rest and an ellipsis fit. Where not even the ellipsis fits it stands alone.
ShapedLine ShapeWithEllipsis(FontSet& fonts, const std::u32string& text, int maxWidth);

/// Side and margin of the box that stands for a character where there is no font, in pixels.
int BoxAdvance(int size);

/// The end of the cluster that begins at a position: a character and the marks, joiners and
/// skin tones that belong to it.
std::size_t ClusterEnd(const std::u32string& text, std::size_t begin);

}  // namespace OV::detail
