#pragma once

#include "orvane/Export.h"

namespace OV
{

class LifetimeWatch;

/// Held by value by an object that others point at without owning it; tells them when it dies.
///
/// Watchers stand in an intrusive list: watching allocates nothing and asking costs one
/// pointer comparison. For the one thread that owns the GL context.
class ORVANE_API Lifetime
{
public:
    Lifetime() = default;

    /// The copy starts a life of its own, which nobody watches yet.
    Lifetime(const Lifetime&) noexcept {}

    /// Keeps the own life and its watchers.
    Lifetime& operator=(const Lifetime&) noexcept { return *this; }

    ~Lifetime() { End(); }

    /// Ends the life now: every watcher is told, in no defined order, and watches nothing
    /// afterwards. A destructor whose body undoes what watchers still use calls it first;
    /// else the end of the member does.
    void End();

private:
    friend class LifetimeWatch;

    LifetimeWatch* m_first = nullptr;
};

/// Watches one Lifetime, so that a plain pointer to its owner is known to be good.
class ORVANE_API LifetimeWatch
{
public:
    /// Called when the watched life ends, with the holder that Watch was given. It may
    /// start or stop watches and destroy their holders, its own among them.
    using Notice = void (*)(void* holder);

    LifetimeWatch() = default;
    LifetimeWatch(const LifetimeWatch&) = delete;
    LifetimeWatch& operator=(const LifetimeWatch&) = delete;
    ~LifetimeWatch() { Stop(); }

    /// Watches this life from now on, and no longer the one before.
    /// @param notice may be null; holder is handed to it and otherwise not used.
    void Watch(Lifetime& life, Notice notice = nullptr, void* holder = nullptr);

    /// Watches nothing; the notice will not come. Harmless when nothing is watched.
    void Stop();

    /// True while a life is watched that has not ended.
    bool IsAlive() const { return m_life != nullptr; }

private:
    friend class Lifetime;

    Lifetime* m_life = nullptr;
    LifetimeWatch* m_next = nullptr;
    LifetimeWatch** m_link = nullptr; ///< the pointer that points at this watch
    Notice m_notice = nullptr;
    void* m_holder = nullptr;
};

} // namespace OV
