#pragma once

#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/import/ImportResult.h"
#include "orvane_host/import/detail/AssimpReader.h"
#include "orvane_host/import/detail/ModelData.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>

namespace OV::Host
{

/// Passes shares on as percentages that never fall.
class ImportProgress
{
public:
    /// @param callback may be empty; outlives this.
    explicit ImportProgress(const std::function<bool(float)>& callback) : m_callback(callback) {}

    bool operator()(float share)
    {
        m_percent = std::max(m_percent, std::clamp(share, 0.0f, 1.0f) * 100.0f);
        return !m_callback || m_callback(m_percent);
    }

private:
    const std::function<bool(float)>& m_callback;
    float m_percent = 0.0f;
};

/// What was read of a file, before there is a scene.
struct FileContents
{
    ReadOutcome outcome;
    std::uint64_t fileBytes = 0;
    ModelData model;
};

/// Checks and reads a file. May throw what the callback of the progress throws.
FileContents ReadModelFile(const ModelSource& source, const ImportOptions& options, ImportProgress& progress);

/// Builds the scene of what was read of a source with this name. May throw, as ReadModelFile.
void BuildResult(const FileContents& contents, const std::string& name, const ImportOptions& options,
                 ImportProgress& progress, ImportResult& result);

/// Carries out what may throw, and tells what it throws in the result.
ImportResult ImportGuarded(const std::string& path, const std::function<void(ImportResult&)>& work);

} // namespace OV::Host
