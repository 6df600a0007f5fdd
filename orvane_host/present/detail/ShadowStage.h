#pragma once

#include "orvane_host/present/PresentationStage.h"
#include "orvane_host/present/ShadowSettings.h"
#include "orvane_host/present/detail/CasterList.h"
#include "orvane_host/present/detail/DrawnCasters.h"
#include "orvane_host/present/detail/DrawnParts.h"
#include "orvane_host/present/detail/ScreenBuffer.h"
#include "orvane_host/present/detail/SunShare.h"
#include "orvane_host/present/detail/SunTable.h"
#include "orvane_host/present/detail/SunView.h"
#include "orvane/math/Vector.h"
#include "orvane/renderdata/RenderItemES20.h"

#include <glm/mat4x4.hpp>

#include <cstdint>
#include <optional>
#include <vector>

namespace OV
{

class LightShare;

} // namespace OV

namespace OV::Host::Detail
{

class CasterEffect;
struct WholeView;

/// What the sun sees of the surfaces of a frame, and from it the share of its light that reaches
/// each fragment of the looks.
///
/// Everything is listed anew each frame, and of what the sun sees those texels are drawn anew that something else
/// casts into than before, or that weren't in the map: a picture follows from its scene alone.
class ShadowStage final : public PresentationStage
{
public:
    ShadowStage() = default;

    /// GL if anything was drawn.
    ~ShadowStage() override;

    /// @param towardSun world space, of any length above 0. None shines and casts nothing.
    /// @param up of the ground, unit.
    void SetSun(const std::optional<Vector>& towardSun, const Vector& up)
    {
        m_towardSun = towardSun;
        m_up = up;
    }

    /// None casts nothing.
    void SetShadows(const std::optional<ShadowSettings>& settings) { m_settings = settings; }
    const std::optional<ShadowSettings>& GetShadows() const { return m_settings; }

    /// Whether rims may take the time that finer ones do, where that is little of a frame. True at first.
    void SetFine(bool isFine) { m_isFine = isFine; }

    /// A plane that catches shadows below the scene: a point of it and its upper side, unit. None is
    /// there at first.
    struct Plane
    {
        Vector position;
        Vector up;
    };
    void SetPlane(const std::optional<Plane>& plane) { m_plane = plane; }

    /// What the looks of the frame are to be drawn with, from Draw to the end of the frame; null
    /// where all of the light reaches all of them.
    LightShare* GetShare() { return m_inForce ? &m_share : nullptr; }

    /// Of the plane, where shadows may fall: a corner and the two edges there. None without shadows
    /// on it.
    struct Patch
    {
        glm::dvec3 corner{0.0};
        glm::dvec3 across{0.0};
        glm::dvec3 along{0.0};
    };
    const std::optional<Patch>& GetPatch() const { return m_patch; }

    void Prepare(PresentationFrame& frame) override;
    void Draw(PresentationFrame& frame) override;
    void ReleaseGL() override;

private:
    /// What shadows are laid out for: all of the picture, or a part of one that is too large for it.
    static WholeView SeenIn(PresentationFrame& frame);
    std::optional<SunView> LayOut(const PresentationFrame& frame, const WholeView& seen, const glm::dvec3& towardSun);
    void FindPatch(const glm::dvec3& towardSun, glm::dvec3& low, glm::dvec3& high);
    /// Of all that the maps depend on but the casters and what of the world their parts are of.
    std::uint64_t FingerprintOf(const SunView& view) const;
    bool MakeMaps(const SunView& view);
    bool DrawMaps(PresentationFrame& frame, const SunView& view);
    void DrawMap(PresentationFrame& frame, const SunView& view, bool glass);
    void DrawPart(PresentationFrame& frame, const SunView::Tile& tile, const DrawnParts::Change& change, bool glass);
    void DrawTexels(PresentationFrame& frame, const SunView::Tile& tile, const TexelRect& texels, bool glass);
    void SetValues(const PresentationFrame& frame, const WholeView& seen, const SunView& view);
    void BindMaps(PresentationFrame& frame);

    std::optional<Vector> m_towardSun;
    Vector m_up{0.0f, 1.0f, 0.0f};
    std::optional<ShadowSettings> m_settings;
    bool m_isFine = true;
    std::optional<Plane> m_plane;

    SunShare m_share;
    bool m_inForce = false;
    bool m_hasGlass = false; ///< in the frame
    std::optional<Patch> m_patch;

    CasterEffect* m_effect = nullptr; ///< one reference; null until shadows are drawn
    ScreenBuffer m_depth{RenderTargetProfileDepth};
    ScreenBuffer m_glass{RenderTargetProfileColorDepth};
    SunTable m_table;
    // What is in the maps.
    DrawnCasters m_drawn;
    DrawnParts m_parts;

    // Of the frame.
    CasterList m_casters;
    std::vector<RenderItemES20> m_items;
};

} // namespace OV::Host::Detail
