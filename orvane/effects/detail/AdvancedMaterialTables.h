#pragma once

#include "orvane/effects/ProgramTemplate.h"

#include <cstddef>
#include <cstdint>

namespace OV::Detail
{

enum AdvancedOption : std::uint64_t
{
    AdvancedOptionFog = 1,
    AdvancedOptionStippling = 2,
    AdvancedOptionAmbient = 4,
    AdvancedOptionCutout = 8,
    AdvancedOptionTexture = 16,
    AdvancedOptionNormalMap = 32,
    AdvancedOptionVertexColors = 64,
};

inline constexpr OptionRow kAdvancedOptions[] = {
    {0, "DEFAULT"},
    {AdvancedOptionFog, "FOG"},
    {AdvancedOptionStippling, "STIPPLING"},
    {AdvancedOptionAmbient, "AMBIENT"},
    {AdvancedOptionCutout, "CUTOUT"},
    {AdvancedOptionTexture, "TEXTURE"},
    {AdvancedOptionNormalMap, "NORMALMAP"},
    {AdvancedOptionVertexColors, "VERTEX_COLORS"},
};

/// The uniforms that both models have, at the same places.
enum AdvancedUniform : int
{
    AdvancedUniformAmbient,
    AdvancedUniformCamera,
    AdvancedUniformColor,
    AdvancedUniformCubeMatrix,
    AdvancedUniformEnableLight,
    AdvancedUniformFogColor,
    AdvancedUniformFogRange,
    AdvancedUniformIsShowFaceSides,
    AdvancedUniformLightDir,
    AdvancedUniformMonochrome,
    AdvancedUniformMvpMatrix,
    AdvancedUniformNormalMap,
    AdvancedUniformNormalMatrix,
    AdvancedUniformOpacityMap,
    AdvancedUniformPointSize,
    AdvancedUniformReflectionFactors,
    AdvancedUniformReflectionMap,
    AdvancedUniformScale,
    AdvancedUniformSpecular,
    AdvancedUniformStippleColor,
    AdvancedUniformStippleOffset,
    AdvancedUniformStippleSize,
    AdvancedUniformTexture0,
    AdvancedUniformWorldTransform,
    AdvancedUniformNumClipPlanes,
    AdvancedUniformClipPlaneNormals,
    AdvancedUniformClipPlanePositions,
    AdvancedUniformClipPlaneOutlineColor,
    AdvancedUniformClipPlaneOutlineSize,
    AdvancedUniformPocheColor,
    AdvancedUniformPocheColorEnabled,
    AdvancedUniformIsBackFaces,
    AdvancedUniformAmbientColorIntensity,
    AdvancedUniformAmbientTextureIntensity,
    AdvancedUniformShadowIntensity,
    AdvancedUniformCount,
};

inline constexpr IndexedName kAdvancedUniforms[] = {
    {AdvancedUniformAmbient, "u_ambient"},
    {AdvancedUniformCamera, "u_camera"},
    {AdvancedUniformColor, "u_color"},
    {AdvancedUniformCubeMatrix, "u_cubeMatrix"},
    {AdvancedUniformEnableLight, "u_enableLight"},
    {AdvancedUniformFogColor, "u_fogColor"},
    {AdvancedUniformFogRange, "u_fogRange"},
    {AdvancedUniformIsShowFaceSides, "u_isShowFaceSides"},
    {AdvancedUniformLightDir, "u_lightDir"},
    {AdvancedUniformMonochrome, "u_monochrome"},
    {AdvancedUniformMvpMatrix, "u_mvpMatrix"},
    {AdvancedUniformNormalMap, "u_normalMap"},
    {AdvancedUniformNormalMatrix, "u_normalMatrix"},
    {AdvancedUniformOpacityMap, "u_opacityMap"},
    {AdvancedUniformPointSize, "u_pointSize"},
    {AdvancedUniformReflectionFactors, "u_reflectionFactors"},
    {AdvancedUniformReflectionMap, "u_reflectionMap"},
    {AdvancedUniformScale, "u_scale"},
    {AdvancedUniformSpecular, "u_specular"},
    {AdvancedUniformStippleColor, "u_stippleColor"},
    {AdvancedUniformStippleOffset, "u_stippleOffset"},
    {AdvancedUniformStippleSize, "u_stippleSize"},
    {AdvancedUniformTexture0, "u_texture0"},
    {AdvancedUniformWorldTransform, "u_worldTransform"},
    {AdvancedUniformNumClipPlanes, "u_numClipPlanes"},
    {AdvancedUniformClipPlaneNormals, "u_clipPlaneNormals"},
    {AdvancedUniformClipPlanePositions, "u_clipPlanePositions"},
    {AdvancedUniformClipPlaneOutlineColor, "u_clipPlaneOutlineColor"},
    {AdvancedUniformClipPlaneOutlineSize, "u_clipPlaneOutlineSize"},
    {AdvancedUniformPocheColor, "u_pocheColor"},
    {AdvancedUniformPocheColorEnabled, "u_pocheColorEnabled"},
    {AdvancedUniformIsBackFaces, "u_isBackFaces"},
    {AdvancedUniformAmbientColorIntensity, "u_ambientColorIntensity"},
    {AdvancedUniformAmbientTextureIntensity, "u_ambientTextureIntensity"},
    {AdvancedUniformShadowIntensity, "u_shadowIntensity"},
};
static_assert(sizeof(kAdvancedUniforms) / sizeof(IndexedName) == AdvancedUniformCount);

/// A table of uniforms of its own storage: what both models have, then what one has.
template <std::size_t Size>
struct AdvancedUniformTable
{
    IndexedName rows[Size];
};

template <std::size_t OwnSize>
constexpr AdvancedUniformTable<AdvancedUniformCount + OwnSize> WithAdvancedUniforms(const IndexedName (&own)[OwnSize])
{
    AdvancedUniformTable<AdvancedUniformCount + OwnSize> table{};
    for (std::size_t i = 0; i < AdvancedUniformCount; ++i)
    {
        table.rows[i] = kAdvancedUniforms[i];
    }
    for (std::size_t i = 0; i < OwnSize; ++i)
    {
        table.rows[AdvancedUniformCount + i] = own[i];
    }
    return table;
}

enum AdvancedAttribute : unsigned
{
    AdvancedAttributePosition,
    AdvancedAttributeNormal,
    AdvancedAttributeTexture,
    AdvancedAttributeColor, ///< with AdvancedOptionVertexColors
};

inline constexpr IndexedName kAdvancedAttributes[] = {
    {AdvancedAttributePosition, "a_position"},
    {AdvancedAttributeNormal, "a_normal"},
    {AdvancedAttributeTexture, "a_texture"},
};

inline constexpr IndexedName kAdvancedColoredAttributes[] = {
    {AdvancedAttributePosition, "a_position"},
    {AdvancedAttributeNormal, "a_normal"},
    {AdvancedAttributeTexture, "a_texture"},
    {AdvancedAttributeColor, "a_vcolor"},
};

/// A model's template with the attributes that programs of the options have.
constexpr ProgramTemplate AdvancedTemplate(ProgramTemplate model, std::uint64_t options)
{
    if ((options & AdvancedOptionVertexColors) != 0)
    {
        model.attributes = kAdvancedColoredAttributes;
    }
    return model;
}

} // namespace OV::Detail
