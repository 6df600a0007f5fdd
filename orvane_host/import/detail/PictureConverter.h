#pragma once

#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/import/detail/ModelData.h"

#include <cstdint>
#include <functional>
#include <string>

namespace OV::Host
{

/// Decodes the pictures of a model that the engine does not, into texels of the model.
///
/// This is done where the model is parsed, so that a file which breaks the decoder breaks no host. A picture
/// that cannot be decoded, or that the limits forbid, stays as it is.
/// @param opened takes the size of each file that is read, may be empty.
void ConvertPictures(ModelData& model, const std::string& modelPath, const ImportOptions& options,
                     const std::function<void(std::uint64_t)>& opened);

} // namespace OV::Host
