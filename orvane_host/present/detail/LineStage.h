#pragma once

#include "orvane_host/present/HiddenLineLook.h"
#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/PresentationStage.h"
#include "orvane_host/present/detail/LineEffect.h"
#include "orvane_host/present/detail/LineLayEffect.h"
#include "orvane_host/present/detail/LineRuns.h"

#include <memory>
#include <optional>
#include <vector>

namespace OV::Host::Detail
{

class LineDepthStage;
class ScreenBuffer;

/// The lines of the scene over the picture of its surfaces, style by style.
///
/// What lines of a style cover is drawn by itself and then laid over the picture in their colour,
/// so that a joint is covered once. What is seen through glass is laid before the glass is drawn.
/// Between styles the nearer line hides the other one.
class LineStage final : public PresentationStage
{
public:
    /// @param depth outlives this.
    explicit LineStage(LineDepthStage& depth);

    /// GL if it was drawn.
    ~LineStage() override;

    /// Draws what is hidden too, from the next frame on. None at first.
    void SetHiddenLines(const std::optional<HiddenLineLook>& look) { m_hidden = look; }

    /// For the frame that begins.
    /// @param isSmooth whether the picture has smooth rims; else only lines of styles that want them have.
    /// @param isDeferred keeps the lines for LayOver, which comes once the picture is filtered.
    void Begin(bool isSmooth, bool isDeferred);

    /// Whether the lines of this frame are drawn here.
    bool IsActive() const;

    /// Of the opaque surfaces of this frame, as large as the target; 0 where there are none. A texture.
    unsigned int GetSolidDepth() const;

    /// Draws what is seen through glass, before that is drawn. GL.
    void DrawThroughGlass(PresentationFrame& frame);

    void Draw(PresentationFrame& frame) override;

    /// Lays the lines that the last frame kept over what is bound, as often as it is shown. GL.
    void LayOver();

    void ReleaseGL() override;

private:
    /// Lines of a style in a row.
    struct Group
    {
        std::size_t first;
        std::size_t last;
        const LineStyle* style;
        LineEffect::Pen pen;
    };

    void ListGroups(const PresentationFrame& frame);
    LineEffect::Pen PenOf(const LineStyle& style, float scale) const;
    LineEffect::View ViewOf(PresentationFrame& frame) const;
    bool PrepareFrame(PresentationFrame& frame);
    void Paint(PresentationFrame& frame, LineEffect::Kind kind);
    bool DrawsAtOnce() const;
    void DrawCoverage(PresentationFrame& frame, const Group& group, bool isFirst, bool isLast);
    void DrawLines(PresentationFrame& frame, const Group& group, bool core);
    void Lay(PresentationFrame& frame, const Group& group, LineLayEffect::Channels channels);
    void KeepLines(PresentationFrame& frame, const Group& group, LineLayEffect::Channels channels, bool isFirst);

    LineDepthStage& m_depth;
    std::optional<HiddenLineLook> m_hidden;
    bool m_isSmooth = false;
    bool m_isDeferred = false;
    bool m_isPrepared = false; ///< for the frame
    bool m_isCovered = false;  ///< what all lines of the frame cover is drawn
    bool m_isKept = false;     ///< lines of the last frame are in m_kept
    StageAccess* m_access = nullptr; ///< of the last frame
    LineRuns m_runs;
    std::unique_ptr<LineEffect> m_effect; ///< null until drawn with, as the next
    std::unique_ptr<LineLayEffect> m_layEffect;
    std::unique_ptr<ScreenBuffer> m_coverage; ///< null until needed, as the next
    std::unique_ptr<ScreenBuffer> m_kept;

    // They keep their memory from frame to frame.
    std::vector<Group> m_groups;
    std::vector<MeshNode*> m_node;
};

} // namespace OV::Host::Detail
