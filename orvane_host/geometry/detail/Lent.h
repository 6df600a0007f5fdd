#pragma once

#include "orvane/base/Lifetime.h"

#include <memory>
#include <utility>

namespace OV::Host::Detail
{

/// Owns an object that stands in a scene for a while. A scene that is emptied deletes it with all else, and so may a
/// host: it is gone then, and nobody deletes it twice.
template <class T>
class Lent
{
public:
    Lent() = default;
    explicit Lent(std::unique_ptr<T> object) { Reset(std::move(object)); }
    ~Lent() { Reset(); }

    Lent(const Lent&) = delete;
    Lent& operator=(const Lent&) = delete;

    /// Null for none, and once it is gone.
    T* Get() const { return m_watch.IsAlive() ? m_object : nullptr; }

    /// Deletes what it has, wherever it stands, and takes another one over.
    void Reset(std::unique_ptr<T> object = nullptr)
    {
        delete Get();
        m_watch.Stop();
        m_object = object.release();
        if (m_object)
        {
            m_watch.Watch(m_object->GetLifetime());
        }
    }

    /// Leaves the object to whoever has it.
    void Release() { m_watch.Stop(); }

private:
    T* m_object = nullptr;
    LifetimeWatch m_watch;
};

} // namespace OV::Host::Detail
