#pragma once

#include "host/detail/ModelData.h"

#include <string>

struct aiMaterial;
struct aiScene;

namespace OV::Host
{

/// Which texture coordinates a material's picture uses, and what happens to them first.
struct TextureMapping
{
    unsigned int channel = 0;
    bool isTransformed = false;
    /// Rows of a 2 x 3 matrix for (u, v, 1).
    float matrix[2][3] = {{1, 0, 0}, {0, 1, 0}};
};

MaterialData ConvertMaterial(const aiScene& scene, const aiMaterial& material);

/// @param format name of the parser: glTF keeps its transform in the material.
TextureMapping MappingOf(const aiMaterial& material, const std::string& format);

bool IsGltf(const std::string& format);

} // namespace OV::Host
