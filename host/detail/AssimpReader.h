#pragma once

#include "host/ImportOptions.h"
#include "host/ImportResult.h"
#include "host/detail/ModelData.h"

#include <functional>
#include <string>

namespace OV::Host
{

/// Why a file could not be read; the status is Done when it could.
struct ReadOutcome
{
    ImportStatus status = ImportStatus::Done;
    std::string reason;
};

/// Parses a file and flattens what it holds, triangulated and with normals, Y up.
///
/// Indices, numbers and references of the result are as the parser left them: not checked.
/// @param progress takes the share done, 0 to 1; false stops at the next step.
ReadOutcome ReadWithAssimp(const std::string& path, const ImportOptions& options,
                           const std::function<bool(float)>& progress, ModelData& model);

/// See ModelImporter::ListFormats.
std::vector<ImportFormat> ListAssimpFormats();

} // namespace OV::Host
