#include "orvane_host/import/detail/AssimpTextures.h"

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
    if (FindTexture(material, kColors, type, colorPath))
    {
        SetColorTexture(scene, material, type, colorPath, data);
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
    const bool hasAny = FindTexture(material, kColors, type, path) ||
                        FindTexture(material, kNormals, type, path) ||
                        FindTexture(material, kOpacities, type, path);
    return hasAny ? MappingOfType(material, type, format) : TextureMapping();
}

} // namespace OV::Host
