#pragma once

#include "orvane_host/present/PresentationStage.h"
#include "orvane_host/present/ShadowSettings.h"
#include "orvane_host/present/detail/Fingerprint.h"
#include "orvane_host/present/detail/ScreenBuffer.h"
#include "orvane_host/present/detail/SunShare.h"
#include "orvane_host/present/detail/SunTable.h"
#include "orvane_host/present/detail/SunView.h"
#include "orvane/math/Vector.h"
#include "orvane/renderdata/RenderItemES20.h"

#include <glm/mat4x4.hpp>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace OV
{

class LightShare;
class MeshNode;
class MeshStyleES20;

} // namespace OV

namespace OV::Host::Detail
{

class CasterEffect;
struct WholeView;

/// What the sun sees of the surfaces of a frame, and from it the share of its light that reaches
/// each fragment of the looks.
///
/// Everything is listed anew each frame, and what the sun sees is drawn anew where anything of it is
/// not as it was: a picture follows from its scene alone.
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
    struct Caster
    {
        /// At the node alone, or of a mesh that stands nowhere else.
        RenderItemES20 item;
        MeshNode* node = nullptr;
        bool isGlass = false;
    };

    /// What casters of one style have in common.
    struct Kind
    {
        const MeshStyleES20* style = nullptr;
        bool casts = false;
        bool isGlass = false;
    };

    void ListCasters(const PresentationFrame& frame);
    void ListCasters(const std::vector<RenderItemES20>& items, std::size_t first, std::size_t end);
    void ListCasters(const RenderItemES20& item, const Kind& kind);
    void AddCaster(const RenderItemES20& item, MeshNode& node, const Kind& kind);
    static Kind KindOf(MeshStyleES20& style);
    void AddToPrint(const RenderItemES20& item, const MeshNode& node, const CastBox& box);
    /// What shadows are laid out for: all of the picture, or a part of one that is too large for it.
    static WholeView SeenIn(PresentationFrame& frame);
    std::optional<SunView> LayOut(const PresentationFrame& frame, const WholeView& seen, const glm::dvec3& towardSun);
    void FindPatch(const glm::dvec3& towardSun, glm::dvec3& low, glm::dvec3& high);
    std::uint64_t FingerprintOf(const SunView& view) const;
    bool DrawMaps(PresentationFrame& frame, const SunView& view);
    void DrawPart(PresentationFrame& frame, const SunView& view, const SunView::Tile& tile, bool glass);
    void SetValues(const PresentationFrame& frame, const WholeView& seen, const SunView& view);
    void BindMaps(PresentationFrame& frame);

    std::optional<Vector> m_towardSun;
    Vector m_up{0.0f, 1.0f, 0.0f};
    std::optional<ShadowSettings> m_settings;
    std::optional<Plane> m_plane;

    SunShare m_share;
    bool m_inForce = false;
    bool m_hasGlass = false; ///< in the frame
    std::optional<Patch> m_patch;

    CasterEffect* m_effect = nullptr; ///< one reference; null until shadows are drawn
    ScreenBuffer m_depth{RenderTargetProfileDepth};
    ScreenBuffer m_glass{RenderTargetProfileColorDepth};
    SunTable m_table;
    std::optional<std::uint64_t> m_drawn; ///< fingerprint of what is in the maps

    // Of the frame.
    std::vector<Caster> m_casters;
    std::vector<CastBox> m_boxes; ///< of the casters, in their order
    Fingerprint m_print;          ///< of the casters
    const MeshStyleES20* m_printed = nullptr; ///< the last style in it
    std::vector<RenderItemES20> m_meshes;     ///< of a material that is listed as a whole
    std::vector<RenderItemES20> m_items;
};

} // namespace OV::Host::Detail
