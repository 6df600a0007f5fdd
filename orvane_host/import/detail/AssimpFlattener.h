#pragma once

#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/import/detail/ModelData.h"

struct aiScene;

namespace OV::Host
{

/// Turns a parsed, triangulated scene into flat arrays, with the root turned to Y up.
///
/// Arrays stay where they are as far as possible: the scene must live as long as the model.
/// @param model its format must be set; the rest is filled in.
void FlattenScene(const aiScene& scene, const ImportLimits& limits, ModelData& model);

} // namespace OV::Host
