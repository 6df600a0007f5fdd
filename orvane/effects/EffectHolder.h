#pragma once

#include "orvane/Export.h"

#include <memory>

namespace OV
{

class EffectCache;

/// Base of those who keep references to effects for longer than a call and may outlive the
/// cache that the effects came from.
///
/// A dying cache takes back one reference of each of its effects, which its users still count
/// as theirs. So it first tells the holders, and they let go of everything themselves.
class ORVANE_API EffectHolder
{
public:
    EffectHolder(const EffectHolder&) = delete;
    EffectHolder& operator=(const EffectHolder&) = delete;

    /// The cache that this holder belongs to; null when it joined none, or when it is gone.
    EffectCache* GetEffectCache() const
    {
        return m_cache;
    }

protected:
    EffectHolder() = default;

    /// Joins the cache, whose end it will be told. Null joins none.
    explicit EffectHolder(EffectCache* cache);
    virtual ~EffectHolder();

    /// Joins another cache in place of the present one. Null leaves it.
    void JoinEffectCache(EffectCache* cache);

    /// The cache is about to die and is no longer GetEffectCache. Release every effect that
    /// came from it, now, and never use the cache again.
    virtual void OnEffectCacheGone() = 0;

private:
    friend class EffectCache;

    struct Family;

    EffectCache* m_cache = nullptr;
    std::shared_ptr<Family> m_family;
};

} // namespace OV
