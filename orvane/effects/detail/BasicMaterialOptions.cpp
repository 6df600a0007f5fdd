#include "orvane/effects/detail/BasicMaterialOptions.h"

#include "orvane/effects/SkySettings.h"
#include "orvane/scene/Material.h"

namespace OV
{

std::uint64_t BasicMaterialOptions(const Material& material, unsigned int texture)
{
    std::uint64_t options = 0;
    if (texture != 0)
    {
        options |= BasicMaterialOptionTexture;
    }
    if (SkySettings::inst().UseFog())
    {
        options |= BasicMaterialOptionFog;
    }
    if (material.stippling)
    {
        options |= BasicMaterialOptionStippling;
    }
    return options;
}

} // namespace OV
