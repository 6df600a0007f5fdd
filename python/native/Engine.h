#pragma once

#include <pybind11/pybind11.h>

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

namespace OV::Python
{

/// Lets other threads of the interpreter run for as long as it lives.
///
/// In place of pybind11's own: taking the lock ends the thread once the interpreter shuts down, which
/// unwinds, and a destructor that may not throw would end the process.
class WithoutInterpreter
{
public:
    WithoutInterpreter() : m_state(PyEval_SaveThread()) {}
    ~WithoutInterpreter() noexcept(false) { PyEval_RestoreThread(m_state); }

    WithoutInterpreter(const WithoutInterpreter&) = delete;
    WithoutInterpreter& operator=(const WithoutInterpreter&) = delete;

private:
    PyThreadState* m_state;
};

/// The one thread on which GL, scenes and presentations live, whatever threads Python calls from.
///
/// It never touches the interpreter, so that neither waits for the other in a circle, and its stack
/// does not depend on how small a host makes those of its threads. It starts with the first call and
/// ends with the interpreter.
class Engine
{
public:
    /// Lives as long as the process.
    static Engine& Get();

    /// Runs work on the thread and waits for its result, with the interpreter free for others. What it
    /// throws comes out here. An interrupt from the keyboard ends the waiting, not the work, so that
    /// whatever that needs has to be its own.
    /// @throw Refused after Stop, and in a process forked from one where the thread was running.
    template <typename Work>
    std::invoke_result_t<Work> Run(Work work)
    {
        return Run(std::move(work), [] {});
    }

    /// The same, with something done now and then while it waits, with the interpreter; what that throws ends the
    /// waiting too.
    template <typename Work, typename Watch>
    std::invoke_result_t<Work> Run(Work work, Watch watch)
    {
        using Result = std::invoke_result_t<Work>;
        const auto task = std::make_shared<std::packaged_task<Result()>>(std::move(work));
        std::future<Result> result = task->get_future();
        Add([task] { (*task)(); });
        while (!IsReady([&](std::chrono::milliseconds most)
                        { return result.wait_for(most) == std::future_status::ready; }))
        {
            watch();
        }
        return Take(result);
    }

    /// Runs work on the thread some time later; never, where there is none any more.
    void RunLater(std::function<void()> work);

    /// Has something done on the thread when it ends.
    void AtStop(std::function<void()> work);

    /// On the thread: makes the GL context current, which is made the first time.
    /// @throw Refused where there is no GL.
    void NeedContext();

    /// Ends the thread after the work in hand, which waiters see as Refused.
    void Stop();

    /// Whether Stop waits for the work in hand, which had better end soon.
    bool IsStopping() const;

    /// @throw Refused while Stop waits, and after it.
    void NeedRunning() const;

private:
    struct State;

    Engine();

    void Add(std::function<void()> work);
    void Loop();
    [[noreturn]] static void TellStopped();

    template <typename Wait>
    static bool IsReady(Wait wait)
    {
        bool isReady = false;
        {
            const WithoutInterpreter scope;
            isReady = wait(std::chrono::milliseconds(100));
        }
        if (!isReady && PyErr_CheckSignals() != 0)
        {
            throw pybind11::error_already_set();
        }
        return isReady;
    }

    template <typename Result>
    static Result Take(std::future<Result>& result)
    {
        try
        {
            return result.get();
        }
        catch (const std::future_error&)
        {
            TellStopped();
        }
    }

    State* m_state;
};

} // namespace OV::Python
