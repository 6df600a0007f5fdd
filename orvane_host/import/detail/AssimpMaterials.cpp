#include "orvane_host/import/detail/AssimpMaterials.h"

#include "orvane_host/import/detail/AssimpReflection.h"
#include "orvane_host/import/detail/AssimpTextures.h"
#include "orvane_host/import/detail/LinearColor.h"

#include <assimp/GltfMaterial.h>
#include <assimp/material.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>

namespace OV::Host
{

namespace
{

float Clamped(float value, float otherwise)
{
    return std::isfinite(value) ? std::clamp(value, 0.0f, 1.0f) : otherwise;
}

bool GetColor(const aiMaterial& material, const char* key, unsigned int type, unsigned int index, float* rgb)
{
    aiColor4D color;
    if (aiGetMaterialColor(&material, key, type, index, &color) != aiReturn_SUCCESS)
    {
        return false;
    }
    rgb[0] = Clamped(color.r, 0.0f);
    rgb[1] = Clamped(color.g, 0.0f);
    rgb[2] = Clamped(color.b, 0.0f);
    return true;
}

/// Opacity where no alpha mode is stated. Zero is taken for a writer that meant
/// transparency: a surface that nobody can see would hardly be in the file.
float PlainOpacity(const aiMaterial& material)
{
    ai_real opacity = 1;
    aiColor4D diffuse(1, 1, 1, 1);
    if (material.Get(AI_MATKEY_OPACITY, opacity) != aiReturn_SUCCESS &&
        material.Get(AI_MATKEY_COLOR_DIFFUSE, diffuse) == aiReturn_SUCCESS)
    {
        opacity = diffuse.a;
    }
    const float clamped = Clamped(static_cast<float>(opacity), 1.0f);
    return clamped > 0.0f ? clamped : 1.0f;
}

void SetAlpha(const aiMaterial& material, MaterialData& data)
{
    aiString mode;
    if (material.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) != aiReturn_SUCCESS)
    {
        data.diffuse[3] = PlainOpacity(material);
        return;
    }
    const std::string text = mode.C_Str();
    if (text == "OPAQUE")
    {
        data.alphaMode = AlphaMode::Opaque;
        data.diffuse[3] = 1.0f;
        return;
    }
    // Cut-outs are blended: there is no alpha test.
    data.alphaMode = AlphaMode::Blend;
    aiColor4D base(1, 1, 1, 1);
    if (text == "BLEND" && aiGetMaterialColor(&material, AI_MATKEY_BASE_COLOR, &base) != aiReturn_SUCCESS)
    {
        aiGetMaterialColor(&material, AI_MATKEY_COLOR_DIFFUSE, &base);
    }
    data.diffuse[3] = Clamped(base.a, 1.0f);
}

void SetColors(const aiMaterial& material, const std::string& format, MaterialData& data)
{
    const bool hasDiffuse = GetColor(material, AI_MATKEY_COLOR_DIFFUSE, data.diffuse) ||
                            GetColor(material, AI_MATKEY_BASE_COLOR, data.diffuse);
    GetColor(material, AI_MATKEY_COLOR_SPECULAR, data.specular);
    // With a picture the emissive colour only scales that.
    if (material.GetTextureCount(aiTextureType_EMISSIVE) == 0)
    {
        GetColor(material, AI_MATKEY_COLOR_EMISSIVE, data.emissive);
    }
    if (IsOfLinearColors(format))
    {
        if (hasDiffuse)
        {
            EncodeForScreen(data.diffuse);
        }
        EncodeForScreen(data.specular);
        EncodeForScreen(data.emissive);
    }
}

} // namespace

MaterialData ConvertMaterial(const aiScene& scene, const aiMaterial& material, const std::string& format)
{
    MaterialData data;
    aiString name;
    if (material.Get(AI_MATKEY_NAME, name) == aiReturn_SUCCESS)
    {
        data.name = name.C_Str();
    }
    SetColors(material, format, data);
    SetAlpha(material, data);
    ai_real shininess = 0;
    if (material.Get(AI_MATKEY_SHININESS, shininess) == aiReturn_SUCCESS && std::isfinite(shininess))
    {
        data.shininess = static_cast<float>(shininess);
    }

    int isTwoSided = 0;
    material.Get(AI_MATKEY_TWOSIDED, isTwoSided);
    data.isTwoSided = isTwoSided != 0;
    // Elsewhere than in glTF the model "no shading" is written by many who mean nothing by it.
    int shading = 0;
    aiString alphaMode;
    data.isUnlit = material.Get(AI_MATKEY_SHADING_MODEL, shading) == aiReturn_SUCCESS &&
                   shading == aiShadingMode_Unlit &&
                   material.Get(AI_MATKEY_GLTF_ALPHAMODE, alphaMode) == aiReturn_SUCCESS;
    SetTextures(scene, material, format, data);
    SetReflection(material, data);
    return data;
}

} // namespace OV::Host
