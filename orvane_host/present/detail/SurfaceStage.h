#pragma once

#include "orvane_host/present/GlassSettings.h"
#include "orvane_host/present/Look.h"
#include "orvane_host/present/PresentationStage.h"
#include "orvane_host/present/detail/GlassLayers.h"
#include "orvane_host/present/detail/LineRoom.h"
#include "orvane_host/present/detail/LineSetup.h"
#include "orvane_host/present/detail/NearestFirst.h"
#include "orvane_host/present/detail/SurroundingsMap.h"
#include "orvane/math/Color.h"
#include "orvane/renderdata/RenderItemES20.h"
#include "orvane/renderdata/RenderPass.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace OV
{

class AdvancedMaterialBaseES20;
class MeshStyleES20;

} // namespace OV

namespace OV::Host::Detail
{

class LineStage;
class ShadowStage;
class StrokeEffect;

/// The surfaces of the scene in a look, and its lines.
class SurfaceStage final : public PresentationStage
{
public:
    using Path = std::vector<std::pair<std::uint64_t, std::uint64_t>>;

    SurfaceStage();

    /// GL if it was drawn.
    ~SurfaceStage() override;

    // See the operations of PresentationRenderer.
    void SetLook(Look look) { m_look = look; }
    Look GetLook() const { return m_look; }
    void SetStrokeWidth(float pixels) { m_strokeWidth = pixels; }

    /// The same in pixels of what is drawn into; none in looks without strokes.
    std::optional<float> GetStrokeWidth(const PresentationFrame& frame) const;
    void ShowSurfaces(bool show) { m_surfacesShown = show; }
    void ShowLines(bool show) { m_linesShown = show; }
    bool AreLinesShown() const { return m_linesShown; }

    void OverlayLines(bool overlay) { m_linesOverlaid = overlay; }
    void SetSurroundings(std::shared_ptr<const Surroundings> surroundings) { m_surroundings.Set(std::move(surroundings)); }
    void SetGlass(const GlassSettings& glass) { m_glass = glass; }
    void SetEditPath(std::optional<Path> path) { m_editPath = std::move(path); }

    /// What tells how much light reaches the surfaces; outlives this.
    void LightWith(ShadowStage& shadows) { m_shadows = &shadows; }

    /// Whether meshes may be drawn in another order than they are listed in, for which each has to be listed.
    bool SortsMeshes() const;

    /// What draws lines in frames in which it is active; outlives this.
    void LeaveLinesTo(LineStage& lines) { m_lineStage = &lines; }

    int MarginOf(const PixelSize& whole) const override;
    FrameNeeds NeedsOf(const PresentationFrame& frame) const override;
    void Prepare(PresentationFrame& frame) override;
    void Draw(PresentationFrame& frame) override;
    void ReleaseGL() override;

private:
    /// What a material takes of the surroundings.
    struct Reflection
    {
        bool isAny = false;
        float roughness = 0.0f;
        Color tint;

        bool operator==(const Reflection& other) const;
    };

    /// What the effects of the advanced looks are told of meshes in a row.
    struct Dress
    {
        Reflection reflection;
        bool isColored = false; ///< by the colours of its vertices too
        bool isMixed = false;   ///< an item for all of a material, of which that holds for some

        bool operator==(const Dress& other) const
        {
            return isColored == other.isColored && isMixed == other.isMixed && reflection == other.reflection;
        }
    };

    static Reflection ReflectionOf(const MeshStyleES20& style);
    static bool TakesVertexColors(const MeshStyleES20& style);
    bool OverlaysLines() const { return m_linesOverlaid && m_linesShown; }
    RenderPass PassOfLook() const;
    void PrepareEdit(PresentationFrame& frame);
    void UseStrokes(const PresentationFrame& frame);
    bool WantsLayers(const PresentationFrame& frame) const;
    bool IsLayered(const RenderItemES20& item) const;
    void DrawLook(PresentationFrame& frame);
    bool TakesNearestFirst(const PresentationFrame& frame) const;
    void DrawWithoutLines(PresentationFrame& frame, const std::vector<RenderItemES20>& all,
                          const LineRoom::DrawItems& draw);
    bool DrawLayers(PresentationFrame& frame);
    /// @param buffer size of what is drawn into.
    void DrawItems(PresentationFrame& frame, const std::vector<RenderItemES20>& items, RenderPass pass,
                   const PixelSize& buffer);
    void PrepareReflection();
    void Reflect(const Reflection& reflection);

    Look m_look = Look::Advanced;
    ShadowStage* m_shadows = nullptr;
    LineStage* m_lineStage = nullptr;
    bool m_surfacesShown = true;
    bool m_linesShown = true;
    bool m_linesOverlaid = false;
    std::optional<Path> m_editPath;

    // One counted reference each, so that what is set on them lasts; null until they are drawn
    // with.
    StrokeEffect* m_strokes = nullptr;
    AdvancedMaterialBaseES20* m_advanced = nullptr;
    AdvancedMaterialBaseES20* m_phong = nullptr;
    float m_strokeWidth = 1.2f;
    SurroundingsMap m_surroundings;
    AdvancedMaterialBaseES20* m_reflecting = nullptr; ///< one of the two while it reflects
    unsigned int m_reflectionMap = 0;
    GlassSettings m_glass{GlassOrder::Scene, GlassSettings().layers};
    GlassLayers m_layers;
    LineSetup m_lineSetup;
    LineRoom m_lineRoom;
    NearestFirst m_nearestFirst;

    std::vector<RenderItemES20> m_lines;  ///< those of the frame, where they are drawn alone
    std::vector<RenderItemES20> m_part;   ///< its surfaces, where lines are drawn elsewhere
    std::vector<RenderItemES20> m_solids; ///< what is drawn before the see-through surfaces
    std::vector<RenderItemES20> m_panes;  ///< see-through surfaces that are drawn in layers
    std::vector<RenderItemES20> m_others; ///< and those that are not
    std::vector<RenderItemES20> m_run;    ///< those of the items that one pass draws in a row
    std::vector<RenderItemES20> m_spread; ///< the meshes of a material of which only some have colours
};

} // namespace OV::Host::Detail
