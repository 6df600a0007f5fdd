#pragma once

#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/import/ImportResult.h"

#include <memory>
#include <string>

namespace OV::Host
{

/// Reads a model file on a thread of its own, so that a program goes on meanwhile.
///
/// The scene is built by Take, on the thread that calls it.
class ModelLoading
{
public:
    /// Begins to read.
    /// @param options its progress is called on the other thread, and by Take on its own.
    explicit ModelLoading(const std::string& path, const ImportOptions& options = ImportOptions());

    /// Cancels and waits for the other thread.
    ~ModelLoading();

    ModelLoading(const ModelLoading&) = delete;
    ModelLoading& operator=(const ModelLoading&) = delete;

    /// The share of the whole import that is done, 0 to 100, never falling. Reading comes first; what
    /// is left for Take is the building.
    float GetPercent() const;

    /// Asks the import to end; Take then tells ImportStatus::Cancelled.
    void Cancel();

    /// Whether Take answers without waiting for the other thread.
    bool IsReady() const;

    /// Waits until IsReady.
    void Wait();

    /// Waits, then builds the scene. The second time ImportStatus::Failed.
    ImportResult Take();

private:
    class Impl;

    std::unique_ptr<Impl> m_impl;
};

} // namespace OV::Host
