#include "orvane_host/import/detail/AssimpReflection.h"

#include <assimp/ObjMaterial.h>
#include <assimp/material.h>

#include <algorithm>
#include <cmath>

namespace OV::Host
{

namespace
{

/// What glass, paint and plastic reflect straight on.
constexpr float kDielectric = 0.04f;

/// The models of illumination of OBJ files from 3 to 9 say, each in its way, that the colour of
/// the highlights also takes in what the surface mirrors.
constexpr int kFirstMirror = 3;
constexpr int kLastMirror = 9;

float Clamped(float value)
{
    return std::isfinite(value) ? std::clamp(value, 0.0f, 1.0f) : 0.0f;
}

bool GetFactor(const aiMaterial& material, const char* key, unsigned int type, unsigned int index,
               float& factor)
{
    ai_real value = 0;
    if (material.Get(key, type, index, value) != aiReturn_SUCCESS)
    {
        return false;
    }
    factor = Clamped(static_cast<float>(value));
    return true;
}

float Luminance(float red, float green, float blue)
{
    return 0.299f * Clamped(red) + 0.587f * Clamped(green) + 0.114f * Clamped(blue);
}

bool GetLuminance(const aiMaterial& material, const char* key, unsigned int type, unsigned int index,
                  float& luminance)
{
    aiColor4D color;
    if (aiGetMaterialColor(&material, key, type, index, &color) != aiReturn_SUCCESS)
    {
        return false;
    }
    luminance = Luminance(color.r, color.g, color.b);
    return true;
}

bool HasTexture(const aiMaterial& material, aiTextureType type)
{
    return material.GetTextureCount(type) > 0;
}

/// A surface of which the file says how rough it is.
/// @param straight what it would reflect straight on if it were smooth.
void SetRough(float straight, float roughness, MaterialData& data)
{
    // The picture of a rough surface is spread so wide that nothing of it can be seen.
    const float polish = (1.0f - roughness) * (1.0f - roughness);
    // Between its two ends the share grows in a straight line, by Fresnel only close to the
    // grazing end. A seventh of what is missing there lets both reflect as much in all
    // directions together, after Schlick's formula.
    const float grazing = straight + (1.0f - straight) / 7.0f;
    data.reflection[0] = straight * polish;
    data.reflection[1] = grazing * polish;
    data.reflection[2] = polish > 0.0f ? 1.0f - roughness : 0.0f;
}

/// Metal, or not, of a roughness. Where a picture says which, the factors are the most that
/// there is of both, so that the surface is at least as smooth and at worst no metal.
bool SetMetallicRoughness(const aiMaterial& material, MaterialData& data)
{
    float metallic = 0.0f;
    float roughness = 1.0f;
    const bool isMetallic = GetFactor(material, AI_MATKEY_METALLIC_FACTOR, metallic);
    const bool isRough = GetFactor(material, AI_MATKEY_ROUGHNESS_FACTOR, roughness);
    // A roughness alone is worked out from the highlights by some parsers.
    float mirror = 0.0f;
    const bool hasMirror = GetFactor(material, AI_MATKEY_REFLECTIVITY, mirror);
    if (!isMetallic && (!isRough || hasMirror))
    {
        return false;
    }
    if (HasTexture(material, aiTextureType_METALNESS) || HasTexture(material, aiTextureType_UNKNOWN))
    {
        metallic = 0.0f;
    }
    const float color = Luminance(data.diffuse[0], data.diffuse[1], data.diffuse[2]);
    SetRough(kDielectric + (color - kDielectric) * metallic, roughness, data);
    // Metals reflect in their colour, all else in white.
    for (int i = 0; metallic > 0.0f && i < 3; ++i)
    {
        data.specular[i] = kDielectric + (data.diffuse[i] - kDielectric) * metallic;
    }
    return true;
}

/// The colour of what is reflected, of a gloss. A picture may bring either to nothing.
bool SetSpecularGlossiness(const aiMaterial& material, MaterialData& data)
{
    float glossiness = 0.0f;
    if (!GetFactor(material, AI_MATKEY_GLOSSINESS_FACTOR, glossiness))
    {
        return false;
    }
    float specular = 0.0f;
    GetLuminance(material, AI_MATKEY_COLOR_SPECULAR, specular);
    if (!HasTexture(material, aiTextureType_SPECULAR))
    {
        SetRough(specular, 1.0f - glossiness, data);
    }
    return true;
}

/// Models from before roughness mirror sharply, and as much from every side.
void SetMirror(const aiMaterial& material, MaterialData& data)
{
    float color = 1.0f;
    float factor = 1.0f;
    const bool hasColor = GetLuminance(material, AI_MATKEY_COLOR_REFLECTIVE, color);
    const bool hasFactor = GetFactor(material, AI_MATKEY_REFLECTIVITY, factor);
    float share = hasColor || hasFactor ? color * factor : 0.0f;
    int illumination = 0;
    if (!hasColor && !hasFactor && material.Get(AI_MATKEY_OBJ_ILLUM, illumination) == aiReturn_SUCCESS &&
        illumination >= kFirstMirror && illumination <= kLastMirror)
    {
        GetLuminance(material, AI_MATKEY_COLOR_SPECULAR, share);
    }
    data.reflection[0] = share;
    data.reflection[1] = share;
    data.reflection[2] = share > 0.0f ? 1.0f : 0.0f;
}

} // namespace

void SetReflection(const aiMaterial& material, MaterialData& data)
{
    if (data.isUnlit)
    {
        return;
    }
    if (!SetSpecularGlossiness(material, data) && !SetMetallicRoughness(material, data))
    {
        SetMirror(material, data);
    }
}

} // namespace OV::Host
