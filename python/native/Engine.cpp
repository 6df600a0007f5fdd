#include "python/native/Engine.h"

#include "python/native/Refused.h"
#include "orvane_host/context/HeadlessContext.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <vector>

namespace OV::Python
{

namespace
{

constexpr std::size_t kStackBytes = std::size_t(16) << 20;
/// Pictures have framebuffers of their own.
constexpr int kContextSize = 16;

} // namespace

struct Engine::State
{
    std::mutex mutex;
    std::condition_variable added;
    std::deque<std::function<void()>> pending;
    std::vector<std::function<void()>> atStop;
    std::unique_ptr<Host::HeadlessContext> context; ///< of the thread alone
    pthread_t thread{};
    std::atomic<pid_t> process{0}; ///< in which the thread runs; 0 before it does
    bool isStopping = false;
};

Engine::Engine() : m_state(new State)
{
}

Engine& Engine::Get()
{
    // Never deleted: threads may wait for it while the process ends.
    static Engine* const engine = new Engine;
    return *engine;
}

void Engine::TellStopped()
{
    throw Refused(Trouble::Closed, "orvane has ended with the interpreter");
}

void Engine::Add(std::function<void()> work)
{
    // Before the lock, which the other process may have held when it was forked.
    if (m_state->process != 0 && m_state->process != getpid())
    {
        throw Refused(Trouble::Closed,
                      "orvane was in use when this process was forked, which threads and GL do not survive; "
                      "start processes by multiprocessing's method 'spawn', or fork before the first use");
    }
    const std::lock_guard lock(m_state->mutex);
    if (m_state->isStopping)
    {
        TellStopped();
    }
    if (m_state->process == 0)
    {
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        pthread_attr_setstacksize(&attributes, kStackBytes);
        const auto run = [](void* engine) -> void*
        {
            static_cast<Engine*>(engine)->Loop();
            return nullptr;
        };
        const int failure = pthread_create(&m_state->thread, &attributes, run, this);
        pthread_attr_destroy(&attributes);
        if (failure != 0)
        {
            throw Refused(Trouble::Context, "no thread can be started for drawing; end some others");
        }
        m_state->process = getpid();
    }
    m_state->pending.push_back(std::move(work));
    m_state->added.notify_one();
}

void Engine::RunLater(std::function<void()> work)
{
    auto* const kept = new std::function<void()>(std::move(work));
    try
    {
        Add(
            [kept]
            {
                (*kept)();
                delete kept;
            });
    }
    catch (const Refused&)
    {
        // Kept for good: what it holds can be let go on the thread alone.
    }
}

void Engine::AtStop(std::function<void()> work)
{
    const std::lock_guard lock(m_state->mutex);
    m_state->atStop.push_back(std::move(work));
}

void Engine::Loop()
{
    std::unique_lock lock(m_state->mutex);
    for (;;)
    {
        m_state->added.wait(lock, [&] { return m_state->isStopping || !m_state->pending.empty(); });
        if (m_state->isStopping)
        {
            break;
        }
        std::function<void()> work = std::move(m_state->pending.front());
        m_state->pending.pop_front();
        lock.unlock();
        work();
        work = nullptr;
        lock.lock();
    }
    const std::vector<std::function<void()>> last = std::move(m_state->atStop);
    lock.unlock();
    for (const std::function<void()>& work : last)
    {
        work();
    }
    m_state->context.reset();
}

void Engine::NeedContext()
{
    if (m_state->context)
    {
        return;
    }
    Host::HeadlessContext::Options options;
    options.width = kContextSize;
    options.height = kContextSize;
    std::string error;
    m_state->context = Host::HeadlessContext::Create(options, error);
    if (!m_state->context)
    {
        throw Refused(Trouble::Context, error);
    }
}

bool Engine::IsStopping() const
{
    const std::lock_guard lock(m_state->mutex);
    return m_state->isStopping;
}

void Engine::NeedRunning() const
{
    if (IsStopping())
    {
        TellStopped();
    }
}

void Engine::Stop()
{
    // As in Add. There is nothing to end in a forked process.
    if (m_state->process != 0 && m_state->process != getpid())
    {
        return;
    }
    {
        const std::lock_guard lock(m_state->mutex);
        if (std::exchange(m_state->isStopping, true) || m_state->process == 0)
        {
            return;
        }
        m_state->added.notify_one();
    }
    const WithoutInterpreter scope;
    pthread_join(m_state->thread, nullptr);
    // Whoever waits for work that nobody will do is told so.
    const std::lock_guard lock(m_state->mutex);
    m_state->pending.clear();
}

} // namespace OV::Python
