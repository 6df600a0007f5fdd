#include "orvane/effects/EffectReferencePlaceholder.h"

#include "orvane/effects/EffectES20.h"

namespace OV
{

EffectReferencePlaceholder::EffectReferencePlaceholder(EffectES20* effect) : m_effect(effect)
{
    if (m_effect != nullptr)
    {
        m_effect->AddReference();
        ++m_effect->m_placeholders;
    }
}

EffectReferencePlaceholder::~EffectReferencePlaceholder()
{
    if (m_effect != nullptr)
    {
        --m_effect->m_placeholders;
        m_effect->Release();
    }
}

} // namespace OV
