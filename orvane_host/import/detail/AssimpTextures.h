#pragma once

#include "orvane_host/import/detail/ModelData.h"

#include <string>

struct aiMaterial;
struct aiScene;

namespace OV::Host
{

/// Which texture coordinates a material's pictures use, and what happens to them first.
struct TextureMapping
{
    unsigned int channel = 0;
    bool isTransformed = false;
    /// Rows of a 2 x 3 matrix for (u, v, 1).
    float matrix[2][3] = {{1, 0, 0}, {0, 1, 0}};
};

/// Takes the pictures from a material whose colours are there already.
/// @param format name of the parser.
void SetTextures(const aiScene& scene, const aiMaterial& material, const std::string& format,
                 MaterialData& data);

/// The mapping of the picture that colours the surface, or else of the first map there is.
/// @param format name of the parser: glTF keeps its transform in the material.
TextureMapping MappingOf(const aiMaterial& material, const std::string& format);

bool IsGltf(const std::string& format);

} // namespace OV::Host
