#include "orvane_host/present/detail/OcclusionStage.h"

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/StageAccess.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/NeededScope.h"
#include "orvane_host/present/detail/OcclusionView.h"
#include "orvane_host/present/detail/OverSceneScope.h"
#include "orvane_host/present/detail/OverScreenScope.h"
#include "orvane_host/present/detail/WholeView.h"
#include "orvane/effects/SSAOEffectES20.h"

#include <algorithm>
#include <cmath>

namespace OV::Host::Detail
{

FrameNeeds OcclusionStage::NeedsOf(const PresentationFrame&) const
{
    FrameNeeds needs;
    needs.depth = m_shown;
    needs.picture = m_shown;
    return needs;
}

int OcclusionStage::MarginOf(const PixelSize& whole) const
{
    // The effect steps 4 times its radius of at most 10/3 pixels, which its dither, a share of the picture,
    // widens.
    const double dither = 1e-4 * std::max(whole.width, whole.height);
    return m_shown ? static_cast<int>(std::ceil(4.0 * (10.0 / 3.0 + dither))) + 2 : 0;
}

void OcclusionStage::ReleaseGL()
{
    Drop(m_effect);
}

void OcclusionStage::Draw(PresentationFrame& frame)
{
    if (!m_shown || !FetchOnce(m_effect, frame.renderer.GetEffects(), EffectCache::SSAO))
    {
        return;
    }
    const OcclusionView view(frame.camera);
    m_effect->SetNearFar(view.nearDistance, view.farDistance);
    const PicturePart& part = frame.part;
    m_effect->SetDimensions(part.whole.width, part.whole.height);
    const WholeView whole(frame);
    m_effect->SetPart(whole.first.width, whole.first.height, frame.target.width, frame.target.height,
                      whole.size.width, whole.size.height);
    m_effect->SetDepthTexture(static_cast<int>(frame.depth));
    m_effect->SetRenderTexture(static_cast<int>(frame.picture));
    const OverScreenScope overScreen;
    const OverSceneScope overScene(frame.depthRange);
    const NeededScope needed(frame.part, frame.target);
    frame.renderer.DrawOverScreen(*m_effect);
    frame.usedUnits[0] = true;
    frame.usedUnits[1] = true;
}

} // namespace OV::Host::Detail
