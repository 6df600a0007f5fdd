#include "orvane_host/import/detail/IsolatedProcess.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace OV::Host
{

namespace
{

using Clock = std::chrono::steady_clock;

/// Exit statuses of the process, unlike any that a library would leave with.
constexpr int kExitFinished = 91;
constexpr int kExitOutOfMemory = 92;
constexpr int kExitThrown = 93;
constexpr int kPollMilliseconds = 50;

class Descriptor
{
public:
    explicit Descriptor(int descriptor = -1) : m_descriptor(descriptor) {}

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    ~Descriptor() { Reset(); }

    int Get() const { return m_descriptor; }

    int Release() { return std::exchange(m_descriptor, -1); }

    void Reset(int descriptor = -1)
    {
        if (m_descriptor >= 0)
        {
            close(m_descriptor);
        }
        m_descriptor = descriptor;
    }

private:
    int m_descriptor;
};

/// A child process that is killed and reaped unless it has been waited for.
class Child
{
public:
    explicit Child(pid_t pid) : m_pid(pid) {}

    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    ~Child()
    {
        if (!m_isGone)
        {
            Kill();
        }
    }

    void Kill()
    {
        kill(m_pid, SIGKILL);
        while (!Wait(0))
        {
        }
    }

    /// @return true once the process is gone.
    bool Poll() { return m_isGone || Wait(WNOHANG); }

    /// A wait status, or none where the host reaps children behind our back.
    bool HasStatus() const { return m_hasStatus; }

    int Status() const { return m_status; }

private:
    bool Wait(int flags)
    {
        const pid_t result = waitpid(m_pid, &m_status, flags);
        if (result == m_pid)
        {
            m_hasStatus = true;
            m_isGone = true;
        }
        else if (result < 0 && errno != EINTR)
        {
            m_isGone = true;
        }
        return m_isGone;
    }

    pid_t m_pid;
    int m_status = 0;
    bool m_isGone = false;
    bool m_hasStatus = false;
};

std::uint64_t MappedBytes()
{
    std::uint64_t pages = 0;
    if (std::FILE* file = std::fopen("/proc/self/statm", "re"))
    {
        unsigned long long value = 0;
        if (std::fscanf(file, "%llu", &value) == 1)
        {
            pages = value;
        }
        std::fclose(file);
    }
    return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

void Limit(int resource, std::uint64_t soft, std::uint64_t hard)
{
    rlimit limit = {};
    if (getrlimit(static_cast<__rlimit_resource>(resource), &limit) != 0)
    {
        return;
    }
    limit.rlim_max = std::min<rlim_t>(limit.rlim_max, hard);
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, soft);
    setrlimit(static_cast<__rlimit_resource>(resource), &limit);
}

void ResetSignals()
{
    // A host's crash handler has no business with a crash that is provided for.
    for (int number : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGPIPE, SIGXCPU, SIGXFSZ, SIGTERM, SIGINT})
    {
        std::signal(number, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

void SilenceStandardStreams()
{
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (nowhere >= 0)
    {
        dup2(nowhere, STDIN_FILENO);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
    }
}

void PreferAsVictim()
{
    // Where the machine runs out of memory, this process has to go before its host.
    const int file = open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC);
    if (file >= 0)
    {
        (void)!write(file, "1000", 4);
        close(file);
    }
}

[[noreturn]] void RunChild(pid_t host, const IsolationLimits& limits, std::uint64_t mapped,
                           const std::function<void(IsolatedWork&)>& work, IsolatedWork& side)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != host)
    {
        _exit(kExitThrown);
    }
    ResetSignals();
    SilenceStandardStreams();
    PreferAsVictim();
    Limit(RLIMIT_CORE, 0, 0);
    Limit(RLIMIT_AS, mapped + limits.memoryBytes, mapped + limits.memoryBytes);
    Limit(RLIMIT_FSIZE, limits.outputBytes, limits.outputBytes);
    Limit(RLIMIT_CPU, limits.cpuSeconds, std::uint64_t(limits.cpuSeconds) + 1);

    int status = kExitThrown;
    try
    {
        work(side);
        status = kExitFinished;
    }
    catch (const std::bad_alloc&)
    {
        status = kExitOutOfMemory;
    }
    catch (...)
    {
    }
    // No destructors and no exit handlers: they belong to the host's copy.
    _exit(status);
}

/// Reads all shares that have come in.
/// @return false at the end of the pipe.
bool ReadProgress(int pipe, float& share)
{
    float shares[64];
    const ssize_t size = read(pipe, shares, sizeof(shares));
    if (size < 0)
    {
        return errno == EINTR || errno == EAGAIN;
    }
    for (ssize_t i = 0; i < size / ssize_t(sizeof(float)); ++i)
    {
        if (shares[i] > share)
        {
            share = std::min(shares[i], 1.0f);
        }
    }
    return size > 0;
}

IsolationEnd ReasonOfEnd(const Child& child, IsolationOutcome& outcome)
{
    if (!child.HasStatus())
    {
        // The host has its children reaped for it. Whether the output is whole shows when
        // it is read.
        return IsolationEnd::Finished;
    }
    const int status = child.Status();
    if (WIFEXITED(status))
    {
        switch (WEXITSTATUS(status))
        {
        case kExitFinished:
            return IsolationEnd::Finished;
        case kExitOutOfMemory:
            return IsolationEnd::OutOfMemory;
        default:
            outcome.exitStatus = WEXITSTATUS(status);
            return IsolationEnd::Crashed;
        }
    }
    outcome.signal = WTERMSIG(status);
    switch (outcome.signal)
    {
    case SIGXCPU:
        return IsolationEnd::OutOfTime;
    case SIGXFSZ:
        return IsolationEnd::TooMuchOutput;
    case SIGKILL:
        // Ours are dealt with where they are sent; what is left is the system short of memory.
        return IsolationEnd::OutOfMemory;
    default:
        return IsolationEnd::Crashed;
    }
}

/// Lets nobody change the output any more: a page that vanishes under a mapping would kill the host.
bool Seal(int output)
{
    // Not F_SEAL_WRITE, which fails while the system has a page in hand, be it to move it about in memory.
    // It would end writable mappings too, but none has outlived the process. A kernel before 5.1 knows no other.
    constexpr int size = F_SEAL_SHRINK | F_SEAL_GROW;
    return fcntl(output, F_ADD_SEALS, size | F_SEAL_FUTURE_WRITE) == 0
        || (errno == EINVAL && fcntl(output, F_ADD_SEALS, size | F_SEAL_WRITE) == 0);
}

/// Waits for the child, passing on its progress.
IsolationEnd Attend(Child& child, int pipe, std::uint32_t wallSeconds,
                    const std::function<bool(float)>& progress, IsolationOutcome& outcome)
{
    const Clock::time_point deadline = Clock::now() + std::chrono::seconds(wallSeconds);
    float share = 0.0f;
    bool isPipeOpen = true;
    for (;;)
    {
        pollfd waiting = {isPipeOpen ? pipe : -1, POLLIN, 0};
        // Without a pipe to watch, the end is near; ask more often.
        const int ready = poll(&waiting, 1, isPipeOpen ? kPollMilliseconds : 2);
        if (ready > 0)
        {
            isPipeOpen = ReadProgress(pipe, share);
        }
        if (child.Poll())
        {
            return ReasonOfEnd(child, outcome);
        }
        if (Clock::now() >= deadline)
        {
            child.Kill();
            return IsolationEnd::OutOfTime;
        }
        if (progress && !progress(share))
        {
            child.Kill();
            return IsolationEnd::Cancelled;
        }
    }
}

} // namespace

IsolationOutcome::IsolationOutcome(IsolationOutcome&& other) noexcept
    : end(other.end), signal(other.signal), exitStatus(other.exitStatus), output(std::exchange(other.output, -1)),
      outputBytes(other.outputBytes)
{
}

IsolationOutcome& IsolationOutcome::operator=(IsolationOutcome&& other) noexcept
{
    std::swap(end, other.end);
    std::swap(signal, other.signal);
    std::swap(exitStatus, other.exitStatus);
    std::swap(output, other.output);
    std::swap(outputBytes, other.outputBytes);
    return *this;
}

IsolationOutcome::~IsolationOutcome()
{
    if (output >= 0)
    {
        close(output);
    }
}

void IsolatedWork::Report(float share)
{
    while (write(m_progress, &share, sizeof(share)) < 0 && errno == EINTR)
    {
    }
}

void IsolatedWork::AllowSeconds(std::uint64_t cpuSeconds)
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_CPU, &limit) == 0)
    {
        // The hard limit is a second above the host's, and would kill without a word.
        limit.rlim_cur = std::min<rlim_t>(cpuSeconds, limit.rlim_max - 1);
        setrlimit(RLIMIT_CPU, &limit);
    }
}

IsolationOutcome RunIsolated(const IsolationLimits& limits, const std::function<void(IsolatedWork&)>& work,
                             const std::function<bool(float)>& progress)
{
    IsolationOutcome outcome;
    Descriptor output(memfd_create("orvane-import", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    int ends[2] = {-1, -1};
    if (output.Get() < 0 || pipe2(ends, O_CLOEXEC) != 0)
    {
        return outcome;
    }
    Descriptor readEnd(ends[0]);
    Descriptor writeEnd(ends[1]);

    // Measured here: the child had better not open files before it is under its limits.
    const std::uint64_t mapped = MappedBytes();
    const pid_t host = getpid();
    const pid_t pid = fork();
    if (pid < 0)
    {
        return outcome;
    }
    if (pid == 0)
    {
        IsolatedWork side(output.Get(), writeEnd.Get());
        RunChild(host, limits, mapped, work, side);
    }

    Child child(pid);
    writeEnd.Reset();
    outcome.end = Attend(child, readEnd.Get(), limits.wallSeconds, progress, outcome);
    if (outcome.end == IsolationEnd::Finished)
    {
        struct stat info = {};
        if (!Seal(output.Get()) || fstat(output.Get(), &info) != 0)
        {
            outcome.end = IsolationEnd::OutputLost;
            return outcome;
        }
        outcome.outputBytes = static_cast<std::uint64_t>(info.st_size);
        outcome.output = output.Release();
    }
    return outcome;
}

} // namespace OV::Host
