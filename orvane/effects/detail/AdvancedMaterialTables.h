#pragma once

#include "orvane/effects/ProgramTemplate.h"

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
};

inline constexpr OptionRow kAdvancedOptions[] = {
    {0, "DEFAULT"},
    {AdvancedOptionFog, "FOG"},
    {AdvancedOptionStippling, "STIPPLING"},
    {AdvancedOptionAmbient, "AMBIENT"},
    {AdvancedOptionCutout, "CUTOUT"},
    {AdvancedOptionTexture, "TEXTURE"},
    {AdvancedOptionNormalMap, "NORMALMAP"},
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

/// The rows of these, to stand first in a model's table.
#define ORVANE_ADVANCED_UNIFORM_ROWS                                              \
    {Detail::AdvancedUniformAmbient, "u_ambient"},                                \
    {Detail::AdvancedUniformCamera, "u_camera"},                                  \
    {Detail::AdvancedUniformColor, "u_color"},                                    \
    {Detail::AdvancedUniformCubeMatrix, "u_cubeMatrix"},                          \
    {Detail::AdvancedUniformEnableLight, "u_enableLight"},                        \
    {Detail::AdvancedUniformFogColor, "u_fogColor"},                              \
    {Detail::AdvancedUniformFogRange, "u_fogRange"},                              \
    {Detail::AdvancedUniformIsShowFaceSides, "u_isShowFaceSides"},                \
    {Detail::AdvancedUniformLightDir, "u_lightDir"},                              \
    {Detail::AdvancedUniformMonochrome, "u_monochrome"},                          \
    {Detail::AdvancedUniformMvpMatrix, "u_mvpMatrix"},                            \
    {Detail::AdvancedUniformNormalMap, "u_normalMap"},                            \
    {Detail::AdvancedUniformNormalMatrix, "u_normalMatrix"},                      \
    {Detail::AdvancedUniformOpacityMap, "u_opacityMap"},                          \
    {Detail::AdvancedUniformPointSize, "u_pointSize"},                            \
    {Detail::AdvancedUniformReflectionFactors, "u_reflectionFactors"},            \
    {Detail::AdvancedUniformReflectionMap, "u_reflectionMap"},                    \
    {Detail::AdvancedUniformScale, "u_scale"},                                    \
    {Detail::AdvancedUniformSpecular, "u_specular"},                              \
    {Detail::AdvancedUniformStippleColor, "u_stippleColor"},                      \
    {Detail::AdvancedUniformStippleOffset, "u_stippleOffset"},                    \
    {Detail::AdvancedUniformStippleSize, "u_stippleSize"},                        \
    {Detail::AdvancedUniformTexture0, "u_texture0"},                              \
    {Detail::AdvancedUniformWorldTransform, "u_worldTransform"},                  \
    {Detail::AdvancedUniformNumClipPlanes, "u_numClipPlanes"},                    \
    {Detail::AdvancedUniformClipPlaneNormals, "u_clipPlaneNormals"},              \
    {Detail::AdvancedUniformClipPlanePositions, "u_clipPlanePositions"},          \
    {Detail::AdvancedUniformClipPlaneOutlineColor, "u_clipPlaneOutlineColor"},    \
    {Detail::AdvancedUniformClipPlaneOutlineSize, "u_clipPlaneOutlineSize"},      \
    {Detail::AdvancedUniformPocheColor, "u_pocheColor"},                          \
    {Detail::AdvancedUniformPocheColorEnabled, "u_pocheColorEnabled"},            \
    {Detail::AdvancedUniformIsBackFaces, "u_isBackFaces"},                        \
    {Detail::AdvancedUniformAmbientColorIntensity, "u_ambientColorIntensity"},    \
    {Detail::AdvancedUniformAmbientTextureIntensity, "u_ambientTextureIntensity"},\
    {Detail::AdvancedUniformShadowIntensity, "u_shadowIntensity"}

enum AdvancedAttribute : unsigned
{
    AdvancedAttributePosition,
    AdvancedAttributeNormal,
    AdvancedAttributeTexture,
};

inline constexpr IndexedName kAdvancedAttributes[] = {
    {AdvancedAttributePosition, "a_position"},
    {AdvancedAttributeNormal, "a_normal"},
    {AdvancedAttributeTexture, "a_texture"},
};

} // namespace OV::Detail
