#include "orvane_host/present/detail/MaterialLook.h"

#include "orvane_host/import/detail/ImportedMaterial.h"
#include "orvane/effects/AdvancedMaterialEffectES20.h"
#include "orvane/effects/AdvancedMaterialPhongEffectES20.h"
#include "orvane/effects/BasicMaterialEffectES20.h"
#include "orvane/effects/DepthIdPassEffectES20.h"
#include "orvane/effects/MonotoneEffectES20.h"
#include "orvane/effects/VertexColorEffectES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/scene/Material.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <tuple>

namespace OV::Host::Detail
{

namespace
{

bool IsSame(const Color& a, const Color& b)
{
    return a.r == b.r && a.g == b.g && a.b == b.b;
}

bool IsWhole(const Color& a, const Color& b)
{
    return IsSame(a, b) && a.a == b.a;
}

bool IsShare(float value)
{
    return value >= 0.0f && value <= 1.0f;
}

bool CanBeHeld(const Color& color)
{
    return IsShare(color.r) && IsShare(color.g) && IsShare(color.b);
}

/// Whether a material is drawn as a solid without a texture, whenever it is listed.
bool IsSolid(const Material& material)
{
    constexpr unsigned int apart = MaterialFlagPoints | MaterialFlagAlwaysPass;
    return (material.GetFlags() & apart) == 0 && material.GetOpacity() == 1.0f && !material.hasAlpha
        && !material.UsingDrawID() && !material.pixels && material.textureName.empty()
        && material.normalMapName.empty() && material.opacityMapName.empty();
}

auto Ordered(const Color& color)
{
    return std::tie(color.r, color.g, color.b, color.a);
}

template <class Effect>
bool IsExactly(const EffectES20* effect)
{
    return effect && typeid(*effect) == typeid(Effect);
}

} // namespace

MaterialColors MaterialColors::Of(const Material& material)
{
    return {material.GetDiffuse(), material.GetAmbient()};
}

bool MaterialColors::AreOf(const Material& material) const
{
    return IsSame(diffuse, material.GetDiffuse()) && IsSame(ambient, material.GetAmbient());
}

std::optional<MaterialLook> MaterialLook::Of(const Material& material)
{
    MaterialLook look;
    look.type = &typeid(material);
    look.flags = material.GetFlags();
    if ((look.flags & MaterialFlagPolygonOffset) != 0)
    {
        look.offsetFactor = material.polygonOffsetFactor;
        look.offsetUnits = material.polygonOffsetUnits;
    }
    look.ignoresLightColor = material.ignoreLightColor;
    look.isStippled = material.stippling;
    if (look.isStippled)
    {
        look.stippleColor = material.stippleColor;
        look.stippleOffset = material.stippleOffset;
        look.stippleSize = material.stippleSize;
    }
    std::copy(std::begin(material.reflectionFactors), std::end(material.reflectionFactors), look.reflection);
    if (look.reflection[2] != 0.0f)
    {
        look.reflected = material.GetSpecular();
    }
    // What is no number is equal to nothing, and of no look.
    const bool isKnown = IsPlainMaterial(material) && look.IsOf(material);
    return isKnown ? std::optional<MaterialLook>(look) : std::nullopt;
}

bool MaterialLook::IsOf(const Material& material) const
{
    const bool isOffset = (flags & MaterialFlagPolygonOffset) != 0;
    const float* const factors = material.reflectionFactors;
    return flags == material.GetFlags() && IsSolid(material) && ignoresLightColor == material.ignoreLightColor
        && isStippled == material.stippling && reflection[0] == factors[0] && reflection[1] == factors[1]
        && reflection[2] == factors[2] && CanBeHeld(material.GetDiffuse()) && CanBeHeld(material.GetAmbient())
        && (!isOffset
            || (offsetFactor == material.polygonOffsetFactor && offsetUnits == material.polygonOffsetUnits))
        && (reflection[2] == 0.0f || IsWhole(reflected, material.GetSpecular()))
        && (!isStippled
            || (IsWhole(stippleColor, material.stippleColor) && stippleOffset == material.stippleOffset
                && stippleSize == material.stippleSize));
}

bool MaterialLook::operator<(const MaterialLook& other) const
{
    if (*type != *other.type)
    {
        return type->before(*other.type);
    }
    const auto all = [](const MaterialLook& look) {
        return std::tuple_cat(std::tie(look.flags, look.offsetFactor, look.offsetUnits, look.ignoresLightColor,
                                       look.isStippled, look.stippleOffset, look.stippleSize, look.reflection[0],
                                       look.reflection[1], look.reflection[2]),
                              Ordered(look.stippleColor), Ordered(look.reflected));
    };
    return all(*this) < all(other);
}

bool IsPlainMaterial(const Material& material)
{
    const std::type_info& type = typeid(material);
    return type == typeid(Material) || type == typeid(ImportedMaterial);
}

bool AreOwnData(const MaterialES20& data)
{
    const EffectES20* const advanced = data.passEffects[RenderPassAdvanced];
    return data.GetTextureID() == 0 && data.GetNormalMapID() == 0 && data.GetOpacityMapID() == 0
        && IsExactly<BasicMaterialEffectES20>(data.passEffects[RenderPassDefault])
        && IsExactly<DepthIdPassEffectES20>(data.passEffects[RenderPassDepthId])
        && IsExactly<VertexColorEffectES20>(data.passEffects[RenderPassVertexColor])
        && IsExactly<MonotoneEffectES20>(data.passEffects[RenderPassMonotone])
        && (IsExactly<AdvancedMaterialEffectES20>(advanced) || IsExactly<AdvancedMaterialPhongEffectES20>(advanced));
}

} // namespace OV::Host::Detail
