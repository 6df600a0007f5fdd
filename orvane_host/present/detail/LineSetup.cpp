#include "orvane_host/present/detail/LineSetup.h"

#include "orvane_host/present/detail/Effects.h"
#include "orvane/effects/SolidLineEffectES20.h"

#include <cmath>

namespace OV::Host::Detail
{

void LineSetup::Begin(EffectCache& effects, const PixelSize& target, const PixelSize& screen)
{
    if (FetchOnce(m_effect, effects, EffectCache::SolidLine))
    {
        // The effect widens lines by the square.
        m_effect->SetPixelRatio(std::sqrt(static_cast<float>(target.width) / static_cast<float>(screen.width)));
    }
}

void LineSetup::Overlay(PresentationFrame& frame)
{
    if (m_effect)
    {
        m_effect->SetIdTexture(frame.objectIdentifiers);
        m_effect->SetGroupTexture(frame.groupIdentifiers);
        m_effect->SetDepthTexture(frame.objectDepth);
        frame.usedUnits[0] = true;
        frame.usedUnits[1] = true;
        frame.usedUnits[2] = true;
    }
}

void LineSetup::End()
{
    if (m_effect)
    {
        m_effect->SetPixelRatio(1.0f);
        m_effect->SetIdTexture(0);
        m_effect->SetGroupTexture(0);
        m_effect->SetDepthTexture(0);
    }
}

void LineSetup::ReleaseGL()
{
    Drop(m_effect);
}

} // namespace OV::Host::Detail
