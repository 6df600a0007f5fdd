#include "orvane/effects/EffectCache.h"

#include "orvane/effects/AAEffectES20.h"
#include "orvane/effects/AdvancedMaterialEffectES20.h"
#include "orvane/effects/AdvancedMaterialPhongEffectES20.h"
#include "orvane/effects/BasicMaterialAmbientPassEffectES20.h"
#include "orvane/effects/BasicMaterialEffectES20.h"
#include "orvane/effects/CrosshatchEffectES20.h"
#include "orvane/effects/DepthIdPassEffectES20.h"
#include "orvane/effects/FXAAEffectES20.h"
#include "orvane/effects/HUDEffectES20.h"
#include "orvane/effects/LineFilterEffectES20.h"
#include "orvane/effects/MonotoneEffectES20.h"
#include "orvane/effects/SSAOEffectES20.h"
#include "orvane/effects/SimMaterialEffectES20.h"
#include "orvane/effects/SkyEffectES20.h"
#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/effects/VertexColorEffectES20.h"
#include "orvane/effects/WeightedAverageSecondPassEffectES20.h"
#include "orvane/base/Lifetime.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace OV
{

using Maker = EffectES20* (*)(EffectCache*);

/// What a cache and its copies have in common.
struct EffectCache::Family
{
    /// Makes an effect. As a part of the cache it may also make those that only a cache makes.
    template <class Effect>
    static EffectES20* Make(EffectCache* cache)
    {
        return new Effect(cache);
    }

    template <bool additive>
    static EffectES20* MakeBasicMaterial(EffectCache* cache)
    {
        return new BasicMaterialEffectES20(cache, additive);
    }

    /// What makes the effect of a type; null for one without a class.
    static Maker FindMaker(EffectType type);

    Lifetime lifetime;
    std::vector<EffectCache*> caches;
};

Maker EffectCache::Family::FindMaker(EffectType wanted)
{
    struct Row
    {
        EffectType type;
        Maker make;
    };
    static constexpr Row rows[] = {
        {BasicMaterial, MakeBasicMaterial<false>},
        {HUD, Make<HUDEffectES20>},
        {VertexColor, Make<VertexColorEffectES20>},
        {AA, Make<AAEffectES20>},
        {FXAA, Make<FXAAEffectES20>},
        {SimMaterial, Make<SimMaterialEffectES20>},
        {SolidLine, Make<SolidLineEffectES20>},
        {BasicMaterialAmbientPass, Make<BasicMaterialAmbientPassEffectES20>},
        {BasicMaterialAdditive, MakeBasicMaterial<true>},
        {WeightedAverageSecondPass, Make<WeightedAverageSecondPassEffectES20>},
        {DepthIdPass, Make<DepthIdPassEffectES20>},
        {SSAO, Make<SSAOEffectES20>},
        {Sky, Make<SkyEffectES20>},
        {LineFilter, Make<LineFilterEffectES20>},
        {AdvancedMaterial, Make<AdvancedMaterialEffectES20>},
        {Crosshatch, Make<CrosshatchEffectES20>},
        {Monotone, Make<MonotoneEffectES20>},
        {AdvancedMaterialPhong, Make<AdvancedMaterialPhongEffectES20>},
    };
    const auto row = std::find_if(std::begin(rows), std::end(rows),
                                  [wanted](const Row& candidate) { return candidate.type == wanted; });
    return row == std::end(rows) ? nullptr : row->make;
}

EffectCache::EffectCache()
{
    JoinFamily(std::make_shared<Family>());
}

EffectCache::EffectCache(const EffectCache& other) : m_effects(other.m_effects)
{
    JoinFamily(other.m_family);
}

EffectCache& EffectCache::operator=(const EffectCache& other)
{
    if (this != &other)
    {
        const std::map<EffectType, EffectES20*> abandoned = std::move(m_effects);
        m_effects = other.m_effects;
        for (const auto& [type, effect] : abandoned)
        {
            if (effect != nullptr && effect->m_cache == this && !Lists(effect))
            {
                HandOver(effect);
            }
        }
        LeaveFamily();
        JoinFamily(other.m_family);
    }
    return *this;
}

EffectCache::~EffectCache()
{
    m_family->lifetime.End();
    // Moved, not copied: the end of a cache takes no memory.
    const std::map<EffectType, EffectES20*> effects = std::move(m_effects);
    for (const auto& [type, effect] : effects)
    {
        if (effect == nullptr)
        {
            continue;
        }
        const bool survives = effect->m_placeholders > 0 || effect->m_refCount > 1;
        if (effect->m_placeholders == 0)
        {
            effect->Release();
        }
        if (survives)
        {
            HandOver(effect);
        }
    }
    LeaveFamily();
}

Lifetime& EffectCache::GetLifetime() const
{
    return m_family->lifetime;
}

EffectES20* EffectCache::GetEffect(EffectType type)
{
    if (type == AdvancedMaterial &&
        EffectES20::GetAdvancedMaterialShaderType() == AdvancedMaterialPhong)
    {
        type = AdvancedMaterialPhong;
    }
    EffectES20*& entry = m_effects[type];
    if (entry != nullptr)
    {
        entry->AddReference();
    }
    else if (const Maker make = Family::FindMaker(type))
    {
        entry = make(this);
    }
    return entry;
}

void EffectCache::RemoveEffect(EffectES20* effect)
{
    const auto found = std::find_if(m_effects.begin(), m_effects.end(),
                                    [effect](const auto& entry) { return entry.second == effect; });
    if (found != m_effects.end())
    {
        m_effects.erase(found);
    }
}

void EffectCache::JoinFamily(const std::shared_ptr<Family>& family)
{
    m_family = family;
    m_family->caches.push_back(this);
}

void EffectCache::LeaveFamily()
{
    std::vector<EffectCache*>& caches = m_family->caches;
    caches.erase(std::remove(caches.begin(), caches.end(), this), caches.end());
    m_family.reset();
}

bool EffectCache::Lists(const EffectES20* effect) const
{
    return std::any_of(m_effects.begin(), m_effects.end(),
                       [effect](const auto& entry) { return entry.second == effect; });
}

void EffectCache::Forget(EffectES20* effect)
{
    for (EffectCache* cache : m_family->caches)
    {
        cache->RemoveEffect(effect);
    }
}

void EffectCache::HandOver(EffectES20* effect)
{
    const std::vector<EffectCache*>& caches = m_family->caches;
    const auto heir = std::find_if(caches.begin(), caches.end(), [this, effect](EffectCache* cache) {
        return cache != this && cache->Lists(effect);
    });
    effect->m_cache = heir == caches.end() ? nullptr : *heir;
}

} // namespace OV
