#pragma once

#include <cstdint>
#include <functional>

namespace OV::Host
{

/// What a process of its own may take. Memory counts beyond what the host already maps.
struct IsolationLimits
{
    std::uint64_t memoryBytes = 0;
    std::uint64_t outputBytes = 0;
    std::uint32_t cpuSeconds = 0;
    std::uint32_t wallSeconds = 0;
};

enum class IsolationEnd
{
    /// The work returned; the output is complete.
    Finished,
    OutOfMemory,
    OutOfTime,
    TooMuchOutput,
    Crashed,
    Cancelled,
    /// The work returned, but its output could not be taken over.
    OutputLost,
    /// No process or no memory file could be had; nothing ran.
    NotStarted,
};

/// How the work ended, and what it wrote.
struct IsolationOutcome
{
    IsolationOutcome() = default;
    IsolationOutcome(IsolationOutcome&& other) noexcept;
    IsolationOutcome& operator=(IsolationOutcome&& other) noexcept;
    ~IsolationOutcome();

    IsolationEnd end = IsolationEnd::NotStarted;
    /// The signal that ended a crashed process, 0 when it left by itself.
    int signal = 0;
    /// What a crashed process left with by itself.
    int exitStatus = 0;
    /// Owned descriptor of the output, sealed against any change; -1 unless Finished.
    int output = -1;
    std::uint64_t outputBytes = 0;
};

/// The work's side of the arrangement, in the separate process.
class IsolatedWork
{
public:
    IsolatedWork(int outputDescriptor, int progressDescriptor)
        : m_output(outputDescriptor), m_progress(progressDescriptor)
    {
    }

    /// Descriptor of a file in memory that takes the result.
    int Output() const { return m_output; }

    /// Tells the host how far the work is, 0 to 1.
    void Report(float share);

    /// Changes the processor time that the work may take in all, up to the limit of the host.
    void AllowSeconds(std::uint64_t cpuSeconds);

private:
    int m_output;
    int m_progress;
};

/// Runs work in a forked process under limits and waits for its end.
///
/// The process shares nothing with the host from the fork on: whatever the work does to
/// memory, signals or the standard streams, which go nowhere, the host sees only the
/// outcome. The host may have threads and GL contexts; the work touches neither.
///
/// @param work must write its result to Output. An exception counts as a crash, except
/// std::bad_alloc.
/// @param progress called on the calling thread about ten times a second at least, with
/// the share last reported; false kills the process. May throw: the process is killed first.
IsolationOutcome RunIsolated(const IsolationLimits& limits, const std::function<void(IsolatedWork&)>& work,
                             const std::function<bool(float)>& progress);

} // namespace OV::Host
