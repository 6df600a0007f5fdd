#pragma once

#include "orvane/effects/EffectCache.h"
#include "orvane/effects/EffectES20.h"

namespace OV::Host::Detail
{

/// Fetches the effect of a type, with a reference that is the caller's, unless there is one
/// already. Null where the cache has none of this class. GL for a new one.
template <class Effect>
Effect* FetchOnce(Effect*& effect, EffectCache& cache, EffectCache::EffectType type)
{
    if (!effect)
    {
        EffectES20* const found = cache.GetEffect(type);
        effect = dynamic_cast<Effect*>(found);
        if (found && !effect)
        {
            found->Release();
        }
    }
    return effect;
}

/// Gives the reference back, if there is one. GL with the last one.
template <class Effect>
void Drop(Effect*& effect)
{
    if (effect)
    {
        effect->Release();
        effect = nullptr;
    }
}

} // namespace OV::Host::Detail
