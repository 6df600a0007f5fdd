#pragma once

#include "orvane_host/present/PresentationStage.h"

namespace OV
{

class SSAOEffectES20;

} // namespace OV

namespace OV::Host::Detail
{

/// Ambient occlusion: darkens corners of what is drawn of the scene, by its depth.
class OcclusionStage final : public PresentationStage
{
public:
    void Show(bool show) { m_shown = show; }

    int MarginOf(const PixelSize& whole) const override;
    FrameNeeds NeedsOf(const PresentationFrame& frame) const override;
    void Draw(PresentationFrame& frame) override;
    void ReleaseGL() override;

private:
    bool m_shown = false;
    SSAOEffectES20* m_effect = nullptr; ///< one counted reference; null until it is drawn with
};

} // namespace OV::Host::Detail
