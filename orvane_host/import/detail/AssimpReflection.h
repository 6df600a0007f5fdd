#pragma once

#include "orvane_host/import/detail/ModelData.h"

struct aiMaterial;

namespace OV::Host
{

/// How much a material reflects, where its file says so. What has highlights alone reflects
/// nothing.
void SetReflection(const aiMaterial& material, MaterialData& data);

} // namespace OV::Host
