#pragma once

#include "orvane/base/Lifetime.h"

namespace OV
{

/// Plain pointer, owning nothing, that reads null once its object is gone.
///
/// Converts from and to T*, so that it stands in for a raw pointer. T offers GetLifetime().
template <class T>
class WatchedPtr
{
public:
    WatchedPtr() = default;

    /// Null is allowed.
    WatchedPtr(T* object) { *this = object; }

    WatchedPtr(const WatchedPtr& other) { *this = other.Get(); }

    WatchedPtr& operator=(const WatchedPtr& other) { return *this = other.Get(); }

    /// Null is allowed.
    WatchedPtr& operator=(T* object)
    {
        m_object = object;
        if (object)
            m_watch.Watch(object->GetLifetime());
        else
            m_watch.Stop();
        return *this;
    }

    T* Get() const { return m_watch.IsAlive() ? m_object : nullptr; }

    operator T*() const { return Get(); }
    T* operator->() const { return Get(); }

private:
    T* m_object = nullptr;
    LifetimeWatch m_watch;
};

}  // namespace OV
