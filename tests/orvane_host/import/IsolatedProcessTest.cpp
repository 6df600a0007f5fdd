#include "orvane_host/import/detail/IsolatedProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace OV::Host;

namespace
{

IsolationLimits Generous()
{
    IsolationLimits limits;
    limits.memoryBytes = std::uint64_t(1) << 30;
    limits.outputBytes = 64 << 20;
    limits.cpuSeconds = 60;
    limits.wallSeconds = 120;
    return limits;
}

std::string Output(const IsolationOutcome& outcome)
{
    std::string text(outcome.outputBytes, '\0');
    EXPECT_EQ(pread(outcome.output, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
    return text;
}

void Write(IsolatedWork& side, const std::string& text)
{
    if (write(side.Output(), text.data(), text.size()) != static_cast<ssize_t>(text.size()))
    {
        throw std::runtime_error("write");
    }
}

/// Held by a thread around its visits to the heap, of which there may be any number.
///
/// The system's heap makes itself ready when the process forks. That of the address sanitizer
/// does not: what another thread has locked of it stays locked in the child for good. There,
/// and there alone, the moment of the fork waits until no holder is in the heap.
class HeapVisit
{
public:
#if defined(__SANITIZE_ADDRESS__)
    HeapVisit()
    {
        static const int registered = pthread_atfork(Close, Open, Open);
        EXPECT_EQ(registered, 0);
        while (s_isClosed)
        {
            std::this_thread::yield();
        }
        s_mutex.lock();
    }

    ~HeapVisit() { s_mutex.unlock(); }

    HeapVisit(const HeapVisit&) = delete;
    HeapVisit& operator=(const HeapVisit&) = delete;

private:
    static void Close()
    {
        s_isClosed = true;
        s_mutex.lock();
    }

    static void Open()
    {
        s_mutex.unlock();
        s_isClosed = false;
    }

    static inline std::mutex s_mutex;
    static inline std::atomic<bool> s_isClosed{false};
#else
    HeapVisit() {}
#endif
};

TEST(IsolatedProcess, WhatTheWorkWritesComesBack)
{
    const IsolationOutcome outcome = RunIsolated(
        Generous(), [](IsolatedWork& side) { Write(side, "result"); }, nullptr);
    ASSERT_EQ(outcome.end, IsolationEnd::Finished);
    EXPECT_EQ(Output(outcome), "result");
}

TEST(IsolatedProcess, OutputCannotChangeAfterwards)
{
    const IsolationOutcome outcome = RunIsolated(
        Generous(), [](IsolatedWork& side) { Write(side, "result"); }, nullptr);
    ASSERT_EQ(outcome.end, IsolationEnd::Finished);
    EXPECT_NE(ftruncate(outcome.output, 0), 0);
    EXPECT_LT(pwrite(outcome.output, "x", 1, 0), 0);
}

TEST(IsolatedProcess, WhoStillReadsTheOutputDoesNotLoseIt)
{
    // A page in a pipe is in use, as one is that the system moves about in memory just then.
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe(ends), 0);
    const IsolationOutcome outcome = RunIsolated(
        Generous(),
        [&ends](IsolatedWork& side)
        {
            Write(side, "result");
            off_t begin = 0;
            if (splice(side.Output(), &begin, ends[1], nullptr, 6, 0) != 6)
            {
                _exit(1);
            }
        },
        nullptr);
    ASSERT_EQ(outcome.end, IsolationEnd::Finished);
    EXPECT_EQ(Output(outcome), "result");
    EXPECT_LT(pwrite(outcome.output, "x", 1, 0), 0);
    EXPECT_EQ(mmap(nullptr, 6, PROT_READ | PROT_WRITE, MAP_SHARED, outcome.output, 0), MAP_FAILED);
    close(ends[0]);
    close(ends[1]);
}

TEST(IsolatedProcess, EveryWayToCrashIsToldFromAnEnd)
{
    struct
    {
        const char* label;
        std::function<void(IsolatedWork&)> work;
        int signal;
        int exitStatus = 0;
    } const cases[] = {
        {"segmentation fault", [](IsolatedWork&) { std::raise(SIGSEGV); }, SIGSEGV},
        {"abort", [](IsolatedWork&) { std::abort(); }, SIGABRT},
        {"bus error", [](IsolatedWork&) { std::raise(SIGBUS); }, SIGBUS},
        {"arithmetic", [](IsolatedWork&) { std::raise(SIGFPE); }, SIGFPE},
        {"terminated", [](IsolatedWork&) { std::raise(SIGTERM); }, SIGTERM},
        {"exit as if all were well", [](IsolatedWork&) { _exit(0); }, 0},
        {"exit", [](IsolatedWork&) { _exit(3); }, 0, 3},
        {"an exception", [](IsolatedWork&) { throw std::runtime_error("x"); }, 0, 93},
        {"an exception of no class", [](IsolatedWork&) { throw 7; }, 0, 93},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.label);
        const IsolationOutcome outcome = RunIsolated(Generous(), test.work, nullptr);
        EXPECT_EQ(outcome.end, IsolationEnd::Crashed);
        EXPECT_EQ(outcome.signal, test.signal);
        EXPECT_EQ(outcome.exitStatus, test.exitStatus);
        EXPECT_EQ(outcome.output, -1);
    }
}

TEST(IsolatedProcess, TheHostsHandlersDoNotSeeTheCrash)
{
    // Were it called, the process would leave with a status of its own.
    const auto before = std::signal(SIGSEGV, [](int) { _exit(1); });
    const IsolationOutcome outcome = RunIsolated(
        Generous(), [](IsolatedWork&) { std::raise(SIGSEGV); }, nullptr);
    std::signal(SIGSEGV, before);
    EXPECT_EQ(outcome.signal, SIGSEGV);
}

TEST(IsolatedProcess, MemoryOfTheHostStaysAsItWas)
{
    std::vector<int> values = {1, 2, 3};
    const IsolationOutcome outcome = RunIsolated(
        Generous(), [&values](IsolatedWork&) { values.assign(1000, 9); }, nullptr);
    EXPECT_EQ(outcome.end, IsolationEnd::Finished);
    EXPECT_EQ(values, (std::vector<int>{1, 2, 3}));
}

TEST(IsolatedProcess, MemoryIsLimitedBeyondWhatTheHostHas)
{
    const auto map = [](std::size_t bytes)
    {
        return [bytes](IsolatedWork&)
        {
            if (mmap(nullptr, bytes, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) == MAP_FAILED)
            {
                throw std::bad_alloc();
            }
        };
    };
    IsolationLimits limits = Generous();
    limits.memoryBytes = 64 << 20;
    EXPECT_EQ(RunIsolated(limits, map(32 << 20), nullptr).end, IsolationEnd::Finished);
    EXPECT_EQ(RunIsolated(limits, map(65 << 20), nullptr).end, IsolationEnd::OutOfMemory);
}

TEST(IsolatedProcess, OutputIsLimited)
{
    IsolationLimits limits = Generous();
    limits.outputBytes = 1000;
    const auto writeBytes = [](std::size_t size)
    { return [size](IsolatedWork& side) { Write(side, std::string(size, 'x')); }; };
    EXPECT_EQ(RunIsolated(limits, writeBytes(1000), nullptr).end, IsolationEnd::Finished);
    const auto overflow = [](IsolatedWork& side)
    {
        Write(side, std::string(1000, 'x'));
        Write(side, "y");
    };
    EXPECT_EQ(RunIsolated(limits, overflow, nullptr).end, IsolationEnd::TooMuchOutput);
}

TEST(IsolatedProcess, AnEndlessLoopEndsWithTheProcessorTime)
{
    IsolationLimits limits = Generous();
    limits.cpuSeconds = 1;
    const auto loop = [](IsolatedWork&)
    {
        for (volatile bool isTurning = true; isTurning;)
        {
        }
    };
    EXPECT_EQ(RunIsolated(limits, loop, nullptr).end, IsolationEnd::OutOfTime);
}

TEST(IsolatedProcess, TheWorkMaySetItsProcessorTimeUpToTheLimitOfTheHost)
{
    const auto loop = [](std::uint64_t seconds)
    {
        return [seconds](IsolatedWork& side)
        {
            side.AllowSeconds(seconds);
            for (volatile bool isTurning = true; isTurning;)
            {
            }
        };
    };
    EXPECT_EQ(RunIsolated(Generous(), loop(1), nullptr).end, IsolationEnd::OutOfTime);
    IsolationLimits limits = Generous();
    limits.cpuSeconds = 1;
    EXPECT_EQ(RunIsolated(limits, loop(1000), nullptr).end, IsolationEnd::OutOfTime);
}

TEST(IsolatedProcess, AnEndlessWaitEndsWithTheWallTime)
{
    IsolationLimits limits = Generous();
    limits.wallSeconds = 1;
    EXPECT_EQ(RunIsolated(
                  limits, [](IsolatedWork&) { pause(); }, nullptr)
                  .end,
              IsolationEnd::OutOfTime);
}

TEST(IsolatedProcess, ProgressComesInOrderAndEndsBelowOne)
{
    std::vector<float> shares;
    const IsolationOutcome outcome = RunIsolated(
        Generous(),
        [](IsolatedWork& side)
        {
            for (float share : {0.25f, 0.5f, 0.1f, 7.0f})
            {
                side.Report(share);
            }
        },
        [&shares](float share)
        {
            shares.push_back(share);
            return true;
        });
    EXPECT_EQ(outcome.end, IsolationEnd::Finished);
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    for (float share : shares)
    {
        EXPECT_LE(share, 1.0f);
    }
}

TEST(IsolatedProcess, ProgressIsAskedForWhileTheWorkIsSilent)
{
    int calls = 0;
    const IsolationOutcome outcome = RunIsolated(
        Generous(), [](IsolatedWork&) { pause(); }, [&calls](float) { return ++calls < 3; });
    EXPECT_EQ(outcome.end, IsolationEnd::Cancelled);
    EXPECT_EQ(calls, 3);
}

TEST(IsolatedProcess, AnExceptionOfTheCallbackLeavesNoProcessBehind)
{
    EXPECT_THROW(
        RunIsolated(
            Generous(), [](IsolatedWork&) { pause(); }, [](float) -> bool { throw std::runtime_error("x"); }),
        std::runtime_error);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(IsolatedProcess, WorksWhereTheHostIgnoresItsChildren)
{
    const auto before = std::signal(SIGCHLD, SIG_IGN);
    const IsolationOutcome outcome = RunIsolated(
        Generous(), [](IsolatedWork& side) { Write(side, "result"); }, nullptr);
    std::signal(SIGCHLD, before);
    ASSERT_EQ(outcome.end, IsolationEnd::Finished);
    EXPECT_EQ(Output(outcome), "result");
}

TEST(IsolatedProcess, NothingIsPrinted)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    RunIsolated(
        Generous(),
        [](IsolatedWork&)
        {
            std::printf("to standard output\n");
            std::fprintf(stderr, "to standard error\n");
            std::fflush(nullptr);
        },
        nullptr);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(IsolatedProcess, RunsBesideOtherThreadsThatAllocate)
{
    std::atomic<bool> isDone{false};
    std::atomic<int> visits{0};
    std::thread busy(
        [&isDone, &visits]
        {
            while (!isDone)
            {
                const HeapVisit visit;
                std::vector<std::string> texts(100, std::string(200, 'x'));
                ++visits;
            }
        });
    while (visits == 0)
    {
        std::this_thread::yield();
    }
    for (int i = 0; i < 50; ++i)
    {
        const IsolationOutcome outcome = RunIsolated(
            Generous(),
            [](IsolatedWork& side)
            {
                std::vector<std::string> texts(100, std::string(300, 'y'));
                Write(side, texts.back());
            },
            nullptr);
        EXPECT_EQ(outcome.end, IsolationEnd::Finished);
    }
    isDone = true;
    busy.join();
}

TEST(IsolatedProcess, NoDescriptorsAreLeftOpen)
{
    const int before = dup(0);
    close(before);
    for (int i = 0; i < 10; ++i)
    {
        RunIsolated(
            Generous(), [](IsolatedWork& side) { Write(side, "x"); }, nullptr);
        RunIsolated(
            Generous(), [](IsolatedWork&) { std::raise(SIGSEGV); }, nullptr);
    }
    const int after = dup(0);
    close(after);
    EXPECT_EQ(after, before);
}

} // namespace
