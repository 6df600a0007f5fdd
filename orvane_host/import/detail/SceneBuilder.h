#pragma once

#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/import/ImportResult.h"
#include "orvane_host/import/detail/ModelData.h"

#include <functional>
#include <string>

namespace OV::Host
{

/// Makes a scene of a model that it does not trust, and counts what it makes.
///
/// @param progress takes the share done, 0 to 1; false ends with Cancelled.
/// @param result takes scene, nodes, meshes, cameras, lights and counts. Without a scene the status
/// and the error's reason are set.
void BuildScene(const ModelData& model, const std::string& modelPath, const ImportOptions& options,
                const std::function<bool(float)>& progress, ImportResult& result);

} // namespace OV::Host
