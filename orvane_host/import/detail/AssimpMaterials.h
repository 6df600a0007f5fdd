#pragma once

#include "orvane_host/import/detail/ModelData.h"

#include <string>

struct aiMaterial;
struct aiScene;

namespace OV::Host
{

/// @param format name of the parser.
MaterialData ConvertMaterial(const aiScene& scene, const aiMaterial& material, const std::string& format);

} // namespace OV::Host
