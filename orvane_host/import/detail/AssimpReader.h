#pragma once

#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/import/ImportResult.h"
#include "orvane_host/import/detail/ModelData.h"
#include "orvane_host/import/detail/ModelSource.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace OV::Host
{

/// Why a file could not be read; the status is Done when it could.
struct ReadOutcome
{
    ImportStatus status = ImportStatus::Done;
    std::string reason;
};

/// What the reader tells while it is at work.
struct ReadHooks
{
    /// Takes the share done, 0 to 1; false stops at the next step.
    std::function<bool(float)> progress;
    /// Takes the size of all files opened so far; may be empty.
    std::function<void(std::uint64_t)> opened;
};

/// Parses a file and flattens what it holds, triangulated and with normals, Y up.
///
/// Indices, numbers and references of the result are as the parser left them: not checked.
ReadOutcome ReadWithAssimp(const ModelSource& source, const ImportOptions& options, const ReadHooks& hooks,
                           ModelData& model);

/// See ModelImporter::ListFormats.
std::vector<ImportFormat> ListAssimpFormats();

} // namespace OV::Host
