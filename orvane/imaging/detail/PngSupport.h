#pragma once

#include <png.h>

namespace OV::detail
{

/// The libpng interface that the engine is written for; every 1.6 accepts it.
constexpr char kPngVersion[] = "1.6.37";

/// Goes back to where the caller armed png_jmpbuf, saying nothing.
[[noreturn]] void PngFail(png_structp png, png_const_charp message);

/// Says nothing.
void PngIgnoreWarning(png_structp png, png_const_charp message);

}  // namespace OV::detail
