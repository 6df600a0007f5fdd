#include "host/detail/AssimpMaterials.h"

#include <assimp/GltfMaterial.h>
#include <assimp/material.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>

namespace OV::Host
{

namespace
{

/// The picture that colours the surface; what else there is does not reach the scene.
bool FindColorTexture(const aiMaterial& material, aiTextureType& type, aiString& path)
{
    for (aiTextureType candidate : {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR})
    {
        if (material.GetTextureCount(candidate) > 0 &&
            aiGetMaterialTexture(&material, candidate, 0, &path) == aiReturn_SUCCESS && path.length > 0)
        {
            type = candidate;
            return true;
        }
    }
    return false;
}

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

bool IsBlack(const float* rgb)
{
    return rgb[0] <= 0.0f && rgb[1] <= 0.0f && rgb[2] <= 0.0f;
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

void SetTexture(const aiScene& scene, const aiMaterial& material, MaterialData& data)
{
    aiTextureType type = aiTextureType_NONE;
    aiString path;
    if (!FindColorTexture(material, type, path))
    {
        return;
    }
    data.embeddedTexture =
        scene.mNumTextures > 0 ? scene.GetEmbeddedTextureAndIndex(path.C_Str()).second : -1;
    if (data.embeddedTexture < 0)
    {
        data.texturePath = path.C_Str();
    }

    int modes[2] = {aiTextureMapMode_Wrap, aiTextureMapMode_Wrap};
    material.Get(AI_MATKEY_MAPPINGMODE_U(type, 0), modes[0]);
    material.Get(AI_MATKEY_MAPPINGMODE_V(type, 0), modes[1]);
    data.clampsTexture = modes[0] == aiTextureMapMode_Clamp && modes[1] == aiTextureMapMode_Clamp;

    // The same picture named for opacity says that its alpha counts.
    aiString opacityPath;
    if (aiGetMaterialTexture(&material, aiTextureType_OPACITY, 0, &opacityPath) == aiReturn_SUCCESS &&
        opacityPath == path && data.alphaMode == AlphaMode::Unstated)
    {
        data.alphaMode = AlphaMode::Blend;
    }

    // A black that would swallow the picture is what some writers put beside one.
    if (IsBlack(data.diffuse))
    {
        std::fill(data.diffuse, data.diffuse + 3, 1.0f);
    }
}

/// The transform as glTF defines it, with v downwards: offset * rotation * scale.
///
/// The parser stores numbers that are right without rotation only; offset and scale are
/// taken back out of them here.
void SetGltfMatrix(const aiUVTransform& stored, TextureMapping& mapping)
{
    const double rotation = -static_cast<double>(stored.mRotation);
    const double c = std::cos(rotation);
    const double s = std::sin(rotation);
    const double su = stored.mScaling.x;
    const double sv = stored.mScaling.y;
    const double offsetU = stored.mTranslation.x - 0.5 * su * (1.0 - c + s);
    const double offsetV = 1.0 - sv - stored.mTranslation.y + 0.5 * sv * (c + s - 1.0);

    // u' = O + R S u, where R turns to the left as one looks at a picture with v downwards,
    // and v = 1 - v put in on both sides.
    const double matrix[2][3] = {{c * su, -s * sv, offsetU + s * sv},
                                 {s * su, c * sv, 1.0 - offsetV - c * sv}};
    for (int row = 0; row < 2; ++row)
    {
        for (int column = 0; column < 3; ++column)
        {
            mapping.matrix[row][column] = static_cast<float>(matrix[row][column]);
        }
    }
    mapping.isTransformed = true;
}

} // namespace

bool IsGltf(const std::string& format)
{
    return format.compare(0, 4, "glTF") == 0;
}

MaterialData ConvertMaterial(const aiScene& scene, const aiMaterial& material)
{
    MaterialData data;
    aiString name;
    if (material.Get(AI_MATKEY_NAME, name) == aiReturn_SUCCESS)
    {
        data.name = name.C_Str();
    }
    if (!GetColor(material, AI_MATKEY_COLOR_DIFFUSE, data.diffuse))
    {
        GetColor(material, AI_MATKEY_BASE_COLOR, data.diffuse);
    }
    SetAlpha(material, data);
    GetColor(material, AI_MATKEY_COLOR_SPECULAR, data.specular);
    // With a picture the emissive colour only scales that, which is not shown.
    if (material.GetTextureCount(aiTextureType_EMISSIVE) == 0)
    {
        GetColor(material, AI_MATKEY_COLOR_EMISSIVE, data.emissive);
    }
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
    SetTexture(scene, material, data);
    return data;
}

TextureMapping MappingOf(const aiMaterial& material, const std::string& format)
{
    TextureMapping mapping;
    aiTextureType type = aiTextureType_NONE;
    aiString path;
    if (!FindColorTexture(material, type, path))
    {
        return mapping;
    }
    int channel = 0;
    if (material.Get(AI_MATKEY_UVWSRC(type, 0), channel) == aiReturn_SUCCESS && channel >= 0)
    {
        mapping.channel = static_cast<unsigned int>(channel);
    }
    aiUVTransform transform;
    if (IsGltf(format) && material.Get(AI_MATKEY_UVTRANSFORM(type, 0), transform) == aiReturn_SUCCESS)
    {
        SetGltfMatrix(transform, mapping);
    }
    return mapping;
}

} // namespace OV::Host
