#pragma once

#include <cstddef>

namespace OV::detail
{

/// Turns RGB into opaque RGBA. Reads pixels * 3 bytes and not one more; the sides do not
/// overlap.
void WidenRGB(const unsigned char* source, unsigned char* destination, std::size_t pixels);

/// The same on any machine; WidenRGB is up to three times as fast where the machine can
/// shuffle bytes.
void WidenRGBPlain(const unsigned char* source, unsigned char* destination, std::size_t pixels);

}  // namespace OV::detail
