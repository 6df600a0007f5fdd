#include "orvane_host/import/detail/AssimpTextures.h"

#include "orvane_host/import/detail/LinearColor.h"

#include <assimp/material.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace OV::Host
{

namespace
{

/// The picture that colours the surface.
constexpr std::initializer_list<aiTextureType> kColors = {aiTextureType_DIFFUSE, aiTextureType_BASE_COLOR};

/// Most likely first. Some formats have one word for normals and heights, and the parser puts
/// either with the other.
constexpr std::initializer_list<aiTextureType> kNormals = {aiTextureType_NORMALS, aiTextureType_NORMAL_CAMERA,
                                                           aiTextureType_HEIGHT};

constexpr std::initializer_list<aiTextureType> kEmissions = {aiTextureType_EMISSIVE, aiTextureType_EMISSION_COLOR};

constexpr std::initializer_list<aiTextureType> kOpacities = {aiTextureType_OPACITY};

/// The first of some kinds of picture that a material has.
bool FindTexture(const aiMaterial& material, std::initializer_list<aiTextureType> types, aiTextureType& type,
                 aiString& path)
{
    for (aiTextureType candidate : types)
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

PictureData PictureOf(const aiScene& scene, const aiString& path)
{
    PictureData picture;
    picture.embedded = scene.mNumTextures > 0 ? scene.GetEmbeddedTextureAndIndex(path.C_Str()).second : -1;
    if (picture.embedded < 0)
    {
        picture.path = path.C_Str();
    }
    return picture;
}

bool IsBlack(const float* rgb)
{
    return rgb[0] <= 0.0f && rgb[1] <= 0.0f && rgb[2] <= 0.0f;
}

/// Whether a surface shows nothing but what it emits.
bool IsBlackSurface(const aiMaterial& material)
{
    aiColor4D color(1, 1, 1, 1);
    if (material.Get(AI_MATKEY_COLOR_DIFFUSE, color) != aiReturn_SUCCESS)
    {
        material.Get(AI_MATKEY_BASE_COLOR, color);
    }
    const float rgb[3] = {color.r, color.g, color.b};
    return IsBlack(rgb);
}

/// By what the picture of what a surface emits is multiplied. Where glTF names no colour there is no light.
void GetEmission(const aiMaterial& material, const std::string& format, float* rgb)
{
    aiColor4D color(0, 0, 0, 1);
    aiGetMaterialColor(&material, AI_MATKEY_COLOR_EMISSIVE, &color);
    const float found[3] = {color.r, color.g, color.b};
    const bool isMeant = IsGltf(format) || !IsBlack(found);
    for (int i = 0; i < 3; ++i)
    {
        rgb[i] = !isMeant ? 1.0f : std::isfinite(found[i]) ? std::clamp(found[i], 0.0f, 1.0f) : 0.0f;
    }
}

/// The picture that a surface shows: that of its colours, or of what a black one emits.
bool FindShownTexture(const aiMaterial& material, const std::string& format, aiTextureType& type, aiString& path,
                      bool& isEmitted)
{
    isEmitted = !FindTexture(material, kColors, type, path);
    if (!isEmitted)
    {
        return true;
    }
    float emission[3];
    GetEmission(material, format, emission);
    return !IsBlack(emission) && IsBlackSurface(material) && FindTexture(material, kEmissions, type, path);
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

TextureMapping MappingOfType(const aiMaterial& material, aiTextureType type, const std::string& format)
{
    TextureMapping mapping;
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

/// A transform that changes nothing is the same as none. NaN differs from everything.
bool IsSame(const TextureMapping& one, const TextureMapping& other)
{
    return one.channel == other.channel &&
           std::equal(&one.matrix[0][0], &one.matrix[0][0] + 6, &other.matrix[0][0]);
}

MapData MapOf(const aiScene& scene, const aiMaterial& material, const std::string& format, aiTextureType type,
              const aiString& path)
{
    MapData map;
    map.picture = PictureOf(scene, path);
    map.isCertain = IsGltf(format);
    int flags = 0;
    map.isInverted = material.Get(AI_MATKEY_TEXFLAGS(type, 0), flags) == aiReturn_SUCCESS &&
                     (flags & aiTextureFlags_Invert) != 0;
    map.isOnOtherCoordinates = !IsSame(MappingOfType(material, type, format), MappingOf(material, format));
    return map;
}

/// The picture of the colours is no opacity map as well: its own alpha serves.
void SetOpacityMap(const aiScene& scene, const aiMaterial& material, const std::string& format,
                   const aiString& colorPath, MaterialData& data)
{
    aiTextureType type = aiTextureType_NONE;
    aiString path;
    if (!FindTexture(material, kOpacities, type, path))
    {
        return;
    }
    if (!(path == colorPath))
    {
        data.opacityMap = MapOf(scene, material, format, type, path);
    }
    else if (data.alphaMode == AlphaMode::Unstated)
    {
        data.alphaMode = AlphaMode::Blend;
    }
}

void SetColorTexture(const aiScene& scene, const aiMaterial& material, aiTextureType type,
                     const aiString& path, MaterialData& data)
{
    data.texture = PictureOf(scene, path);
    int modes[2] = {aiTextureMapMode_Wrap, aiTextureMapMode_Wrap};
    material.Get(AI_MATKEY_MAPPINGMODE_U(type, 0), modes[0]);
    material.Get(AI_MATKEY_MAPPINGMODE_V(type, 0), modes[1]);
    data.clampsTexture = modes[0] == aiTextureMapMode_Clamp && modes[1] == aiTextureMapMode_Clamp;

    // A black that would swallow the picture is what some writers put beside one.
    if (IsBlack(data.diffuse))
    {
        std::fill(data.diffuse, data.diffuse + 3, 1.0f);
    }
}

} // namespace

bool IsGltf(const std::string& format)
{
    return format.compare(0, 4, "glTF") == 0;
}

void SetTextures(const aiScene& scene, const aiMaterial& material, const std::string& format,
                 MaterialData& data)
{
    aiTextureType type = aiTextureType_NONE;
    aiString colorPath;
    bool isEmitted = false;
    if (FindShownTexture(material, format, type, colorPath, isEmitted))
    {
        SetColorTexture(scene, material, type, colorPath, data);
        if (isEmitted)
        {
            data.isUnlit = true;
            GetEmission(material, format, data.diffuse);
            if (IsOfLinearColors(format))
            {
                EncodeForScreen(data.diffuse);
            }
        }
    }
    aiString path;
    if (FindTexture(material, kNormals, type, path))
    {
        data.normalMap = MapOf(scene, material, format, type, path);
    }
    SetOpacityMap(scene, material, format, colorPath, data);
}

TextureMapping MappingOf(const aiMaterial& material, const std::string& format)
{
    aiTextureType type = aiTextureType_NONE;
    aiString path;
    bool isEmitted = false;
    const bool hasAny = FindShownTexture(material, format, type, path, isEmitted) ||
                        FindTexture(material, kNormals, type, path) ||
                        FindTexture(material, kOpacities, type, path);
    return hasAny ? MappingOfType(material, type, format) : TextureMapping();
}

} // namespace OV::Host
