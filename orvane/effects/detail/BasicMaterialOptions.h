#pragma once

#include "orvane/effects/ProgramTemplate.h"

#include <cstdint>

namespace OV
{

class Material;

/// Options of the two basic material effects.
enum BasicMaterialOption : std::uint64_t
{
    BasicMaterialOptionTexture = 1,
    BasicMaterialOptionFog = 2,
    BasicMaterialOptionStippling = 4,
};

inline constexpr OptionRow kBasicMaterialOptions[] = {
    {0, "DEFAULT"},
    {BasicMaterialOptionTexture, "TEXTURE"},
    {BasicMaterialOptionFog, "FOG"},
    {BasicMaterialOptionStippling, "STIPPLING"},
};

/// The options that a material and the sky settings call for.
/// @param texture GL name of the colour texture, 0 for none.
std::uint64_t BasicMaterialOptions(const Material& material, unsigned int texture);

} // namespace OV
