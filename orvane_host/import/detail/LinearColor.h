#pragma once

#include <assimp/types.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace OV::Host
{

/// Whether the channels of colours in a format measure light. Its pictures are encoded for the screen all the same.
inline bool IsOfLinearColors(const std::string& format)
{
    return format == "glTF2";
}

/// A channel as screens take it, 0 to 1, of one that measures light: after IEC 61966-2-1.
///
/// Factors of a picture's colour may be carried over by themselves: beyond the darkest colours the curve is close to
/// a power, and that of a product is the product of the powers.
inline float EncodedForScreen(float light)
{
    // In double, for white to stay white.
    const double bounded = std::clamp(light, 0.0f, 1.0f);
    return static_cast<float>(bounded <= 0.0031308 ? 12.92 * bounded : 1.055 * std::pow(bounded, 1.0 / 2.4) - 0.055);
}

inline void EncodeForScreen(float* rgb)
{
    std::transform(rgb, rgb + 3, rgb, EncodedForScreen);
}

inline void EncodeForScreen(aiColor4D& color)
{
    color.r = EncodedForScreen(color.r);
    color.g = EncodedForScreen(color.g);
    color.b = EncodedForScreen(color.b);
}

} // namespace OV::Host
