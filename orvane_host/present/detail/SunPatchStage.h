#pragma once

#include "orvane_host/present/PresentationStage.h"

namespace OV::Host::Detail
{

class ShadowStage;
class SunPatchEffect;
class SunStrokeEffect;
class SurfaceStage;

/// A plane under the scene of which nothing is seen but the shadows of the sun on it. It hides
/// nothing, and nothing is seen of it from below.
class SunPatchStage final : public PresentationStage
{
public:
    /// @param shadows what falls on it, and where; outlives this.
    explicit SunPatchStage(ShadowStage& shadows) : m_shadows(shadows) {}

    /// GL if it was drawn.
    ~SunPatchStage() override;

    /// Of a shadow on it, 0 to 1.
    void SetDarkness(float darkness) { m_darkness = darkness; }

    /// Where surfaces are drawn in strokes, so are shadows here. @param surfaces outlive this.
    void TakeStrokesOf(const SurfaceStage& surfaces) { m_surfaces = &surfaces; }

    void Draw(PresentationFrame& frame) override;
    void ReleaseGL() override;

private:
    SunPatchEffect& EffectFor(const PresentationFrame& frame);

    ShadowStage& m_shadows;
    const SurfaceStage* m_surfaces = nullptr;
    float m_darkness = 0.0f;
    SunPatchEffect* m_effect = nullptr;   ///< one reference; null until drawn with
    SunStrokeEffect* m_strokes = nullptr; ///< the same, for looks of strokes
};

} // namespace OV::Host::Detail
