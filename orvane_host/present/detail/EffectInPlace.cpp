#include "orvane_host/present/detail/EffectInPlace.h"

#include "orvane/renderdata/MaterialES20.h"

namespace OV::Host::Detail
{

EffectInPlace::EffectInPlace(const std::vector<RenderItemES20>& items, RenderPass pass, EffectES20& effect,
                             Replaced* scratch) :
    m_replaced(scratch ? *scratch : m_own)
{
    m_replaced.clear();
    const MeshStyleES20* last = nullptr;
    for (const RenderItemES20& item : items)
    {
        if (item.style == last)
        {
            continue;
        }
        last = item.style;
        if (auto* const material = dynamic_cast<MaterialES20*>(item.style))
        {
            EffectES20*& slot = material->passEffects[pass];
            m_replaced.emplace_back(&slot, slot);
            slot = &effect;
        }
    }
}

EffectInPlace::~EffectInPlace()
{
    // Backwards: a style that is listed twice was replaced twice.
    for (auto it = m_replaced.rbegin(); it != m_replaced.rend(); ++it)
    {
        *it->first = it->second;
    }
}

} // namespace OV::Host::Detail
