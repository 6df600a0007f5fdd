#pragma once

#include <string>

namespace OV
{
class Image;
}

namespace OV::detail
{

/// Size of a text in pixels: as wide as its widest line, as high as its lines, which end at
/// CR, LF and CRLF only. Any thread may ask.
///
/// Control characters are left out, and of the marks on one letter those after the thirtieth.
/// An empty text is 0 wide and one line high. A size below 1, a family name of more than 31
/// characters and a text too large for a picture measure 0 by 0.
/// @param fontName family, and @param text, both in the encoding of the C locale in force.
/// @param fontSize em in pixels. @param maxWidth in pixels; below 1: no limit.
void MeasureText(const std::string& fontName, int fontSize, const std::string& text, int maxWidth, int& width,
                 int& height);

/// The text as white over nothing, premultiplied, colour pictures of a font by their light and alpha, of the size that MeasureText gives. Lines
/// that are too wide end in an ellipsis. Any thread may call.
/// @param maxHeight in pixels; below 1: no limit. Lines that would pass it are left out, and
/// then the last row is empty.
/// @return null where there is nothing to measure either; the caller deletes it.
Image* RasterizeText(const std::string& fontName, int fontSize, const std::string& text, int maxWidth,
                     int maxHeight = 0);

}  // namespace OV::detail
