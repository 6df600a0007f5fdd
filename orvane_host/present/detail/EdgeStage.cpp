#include "orvane_host/present/detail/EdgeStage.h"

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/NeededScope.h"
#include "orvane_host/present/detail/OverScreenScope.h"
#include "orvane_host/present/detail/SampleShadingScope.h"
#include "orvane/effects/LineFilterEffectES20.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

FrameNeeds EdgeStage::NeedsOf(const PresentationFrame&) const
{
    FrameNeeds needs;
    if (m_edges || m_identifiersShown)
    {
        const bool groups = m_edges.value_or(EdgeLook()).identity == Identity::Group;
        needs.groupIdentifiers = groups;
        needs.objectIdentifiers = !groups;
        needs.fineIdentifiers = m_edges.has_value();
    }
    return needs;
}

int EdgeStage::MarginOf(const PixelSize&) const
{
    // A neighbour, and the one that a pixel's samples look up beside it.
    return m_edges ? 2 : 0;
}

void EdgeStage::ReleaseGL()
{
    Drop(m_effect);
}

void EdgeStage::Draw(PresentationFrame& frame)
{
    if ((!m_edges && !m_identifiersShown)
        || !FetchOnce(m_effect, frame.renderer.GetEffects(), EffectCache::LineFilter))
    {
        return;
    }
    const EdgeLook look = m_edges.value_or(EdgeLook());
    const bool groups = look.identity == Identity::Group;
    m_effect->SetOverlayOnly(true);
    m_effect->SetShowIds(m_identifiersShown);
    m_effect->EdgeWeight(look.weight);
    m_effect->SetEdgeColor(look.color);
    // Lines are as wide as a pixel of the screen, however fine the buffers are.
    m_effect->SetDimensions(frame.screen.width, frame.screen.height);
    m_effect->SetIdTexture(static_cast<int>(groups ? frame.groupIdentifiers : frame.objectIdentifiers));
    const OverScreenScope overScreen;
    const SampleShadingScope smooth(frame.shadeSamples);
    const NeededScope needed(frame.part, frame.target);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    frame.renderer.DrawOverScreen(*m_effect);
    glDisable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
    // It reads the identifiers alone.
    frame.usedUnits[0] = false;
    frame.usedUnits[1] = false;
    frame.usedUnits[2] = true;
}

} // namespace OV::Host::Detail
