#pragma once

#include "orvane_host/present/EdgeLook.h"
#include "orvane_host/present/PresentationStage.h"

#include <optional>

namespace OV
{

class LineFilterEffectES20;

} // namespace OV

namespace OV::Host::Detail
{

/// Edges between things, or the identifiers that they come from, over the picture.
class EdgeStage final : public PresentationStage
{
public:
    void SetEdges(const std::optional<EdgeLook>& edges) { m_edges = edges; }
    const std::optional<EdgeLook>& GetEdges() const { return m_edges; }

    void ShowIdentifiers(bool show) { m_identifiersShown = show; }

    int MarginOf(const PixelSize& whole) const override;
    FrameNeeds NeedsOf(const PresentationFrame& frame) const override;
    void Draw(PresentationFrame& frame) override;
    void ReleaseGL() override;

private:
    std::optional<EdgeLook> m_edges;
    bool m_identifiersShown = false;
    LineFilterEffectES20* m_effect = nullptr; ///< one counted reference; null until it is drawn with
};

} // namespace OV::Host::Detail
