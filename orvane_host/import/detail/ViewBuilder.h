#pragma once

#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/import/ImportResult.h"
#include "orvane_host/import/detail/ModelData.h"

#include <vector>

namespace OV::Host
{

/// Makes the cameras and lights of a model.
///
/// Only the first light of a scene counts, so the ones with a direction come first. Each is
/// scaled to full strength, less what the materials show without it.
/// @param nodes the scene's nodes by the model's index, with globals up to date.
/// @param result takes what is made; its scene and box must be there.
void BuildCamerasAndLights(const ModelData& model, const std::vector<Node*>& nodes,
                           const ImportOptions& options, ImportResult& result);

} // namespace OV::Host
