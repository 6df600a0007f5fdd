#pragma once

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/PresentationStage.h"
#include "orvane_host/present/detail/EffectInPlace.h"
#include "orvane_host/present/detail/LineEffect.h"
#include "orvane_host/present/detail/LineRoom.h"
#include "orvane/renderdata/RenderItemES20.h"

#include <memory>
#include <vector>

namespace OV::Host::Detail
{

class FarthestEffect;
class ScreenBuffer;
class SlopeEffect;

/// Pictures of the depth of the surfaces, by which lines are seen or hidden: of what is opaque, and
/// of what is see-through.
class LineDepthStage final : public PresentationStage
{
public:
    LineDepthStage();

    /// GL if there are buffers.
    ~LineDepthStage() override;

    // As for SurfaceStage.
    void ShowSurfaces(bool show) { m_surfacesShown = show; }
    void ShowLines(bool show) { m_linesShown = show; }
    void OverlayLines(bool overlay) { m_linesOverlaid = overlay; }

    /// Identifiers come in place of the picture, and so over its lines.
    void ShowIdentifiers(bool show) { m_identifiersShown = show; }

    /// Whether the lines of the frame are drawn by these pictures. Else they are drawn with the
    /// surfaces, by the depth buffer: over another frame, where they lie on ends of identities, and
    /// where GL can't make the pictures.
    bool IsReady() const { return m_isReady; }

    const LineEffect::SurfaceDepth& GetDepth() const { return m_depth; }
    const LineEffect::SurfaceDepth& GetGlass() const { return m_glass; }

    FrameNeeds NeedsOf(const PresentationFrame& frame) const override;
    void Prepare(PresentationFrame& frame) override;
    void Draw(PresentationFrame& frame) override;
    void ReleaseGL() override;

private:
    bool IsWanted(const PresentationFrame& frame) const;
    void Sort(const FrameItems& items);
    LineEffect::SurfaceDepth DrawInto(PresentationFrame& frame, std::unique_ptr<ScreenBuffer>& buffer,
                                      const std::vector<RenderItemES20>& shaped,
                                      const std::vector<RenderItemES20>& plain);

    void FindFarthest(PresentationFrame& frame);

    bool m_surfacesShown = true;
    bool m_linesShown = true;
    bool m_linesOverlaid = false;
    bool m_identifiersShown = false;
    bool m_isReady = false;
    LineEffect::SurfaceDepth m_depth;
    LineEffect::SurfaceDepth m_glass;
    std::unique_ptr<SlopeEffect> m_effect; ///< null until drawn with, as the next
    std::unique_ptr<FarthestEffect> m_farthestEffect;
    LineRoom m_room;
    std::unique_ptr<ScreenBuffer> m_opaqueBuffer; ///< null until needed, as the next
    std::unique_ptr<ScreenBuffer> m_glassBuffer;
    std::unique_ptr<ScreenBuffer> m_blockBuffer;
    std::unique_ptr<ScreenBuffer> m_farthestBuffer;

    // They keep their memory from frame to frame.
    std::vector<RenderItemES20> m_opaque;
    std::vector<RenderItemES20> m_seeThrough;
    std::vector<RenderItemES20> m_shaped; ///< opaque ones with a shape of their own: points, holes
    const std::vector<RenderItemES20> m_none;
    EffectInPlace::Replaced m_replaced;
};

} // namespace OV::Host::Detail
