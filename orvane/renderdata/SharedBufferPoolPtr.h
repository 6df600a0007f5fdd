#pragma once

#include "orvane/Export.h"

#include <cstddef>

namespace OV
{

class SharedBufferPool;

/// Plain pointer to a pool, owning nothing, that reads null once the pool is gone.
///
/// One word, where a WatchedPtr takes six: each mesh of a scene holds one. All pointers to a pool
/// share the word that its end clears. For the one thread that owns the GL context.
class ORVANE_API SharedBufferPoolPtr
{
public:
    SharedBufferPoolPtr() = default;

    /// Null is allowed.
    SharedBufferPoolPtr(SharedBufferPool* pool);

    SharedBufferPoolPtr(const SharedBufferPoolPtr& other) : m_word(other.m_word)
    {
        if (m_word)
        {
            ++m_word->holders;
        }
    }

    SharedBufferPoolPtr& operator=(const SharedBufferPoolPtr& other);

    ~SharedBufferPoolPtr()
    {
        LetGo();
    }

    SharedBufferPool* Get() const
    {
        return m_word ? m_word->pool : nullptr;
    }

    operator SharedBufferPool*() const
    {
        return Get();
    }

    SharedBufferPool* operator->() const
    {
        return Get();
    }

private:
    friend class SharedBufferPool;

    struct Word
    {
        SharedBufferPool* pool;
        std::size_t holders; ///< the pool is one
    };

    void LetGo()
    {
        if (m_word && --m_word->holders == 0)
        {
            delete m_word;
        }
    }

    Word* m_word = nullptr;
};

} // namespace OV
