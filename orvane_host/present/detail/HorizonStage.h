#pragma once

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/PresentationStage.h"
#include "orvane_host/present/detail/EffectInPlace.h"
#include "orvane_host/present/detail/ScreenBuffer.h"

#include <optional>
#include <vector>

namespace OV::Host::Detail
{

class FaceEffect;
class HorizonEffect;

/// Ambient occlusion as rays within a radius would tell it, from what the eye sees of the surfaces.
class HorizonStage final : public PresentationStage
{
public:
    struct Look
    {
        float radius = 1.0f; ///< world space, above 0
        float strength = 1.0f;
        bool coarse = false; ///< looked up at every other pixel along each edge
    };

    HorizonStage() = default;

    /// GL if anything was drawn.
    ~HorizonStage() override;

    /// None draws nothing.
    void Show(const std::optional<Look>& look) { m_look = look; }

    int MarginOf(const PixelSize& whole) const override;
    FrameNeeds NeedsOf(const PresentationFrame& frame) const override;
    void Draw(PresentationFrame& frame) override;
    void ReleaseGL() override;

private:
    bool MakeBuffers(const PresentationFrame& frame);
    void SetValues(const PresentationFrame& frame);
    double FinerThanScreen(const PresentationFrame& frame) const;
    void SetFar(const PresentationFrame& frame, double right, double top);
    void FindHidden(PresentationFrame& frame);
    void DrawFaces(PresentationFrame& frame);
    void DrawFar(PresentationFrame& frame);
    void DrawSurfaces(PresentationFrame& frame, ScreenBuffer& buffer, const std::vector<RenderItemES20>& surfaces);

    std::optional<Look> m_look;

    // One reference each; null until something is drawn.
    FaceEffect* m_faceEffect = nullptr;
    HorizonEffect* m_effect = nullptr;
    ScreenBuffer m_faces{RenderTargetProfileColorDepth};
    ScreenBuffer m_far{RenderTargetProfileColorDepth};
    ScreenBuffer m_hidden{RenderTargetProfileColor};
    int m_apart = 1; ///< pixels of the target for one of what is hidden, along each edge
    int m_finer = 1; ///< pixels of the faces for one of the target, along each edge
    PixelSize m_hiddenSize;
    PixelSize m_farSize; ///< of the frame; none where all is near
    std::optional<PicturePart> m_found; ///< what the buffers have been drawn for
    EffectInPlace::Replaced m_replaced;
};

} // namespace OV::Host::Detail
