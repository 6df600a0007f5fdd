#pragma once

#include "orvane_host/present/PresentationFrame.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/math/Matrix.h"

#include <array>
#include <string>

namespace OV
{

class LineStyle;

} // namespace OV

namespace OV::Host::Detail
{

class LineRuns;

/// Draws how much lines cover of each pixel, in red where they are seen and in blue where they are
/// hidden; green and alpha hold what of that is clear of fog. Without fog green may hold what is seen
/// through glass.
///
/// Whether a line is seen is found at the middle of it, in pictures of the depth of the surfaces,
/// and holds for all of its width: it neither comes through what is before it nor is it cut where
/// its surface ends. Blended by the larger value, joints and crossings are covered once.
class LineEffect final : public EffectES20
{
public:
    enum class Kind
    {
        BeforeAll,    ///< what no surface hides
        ThroughGlass, ///< what is seen through glass alone
        Both = 3,     ///< without fog
    };

    /// Where surfaces lie, in textures as large as the target; 0 where there are none.
    struct SurfaceDepth
    {
        unsigned int depth = 0;
        unsigned int slopes = 0;   ///< see SlopeEffect
        unsigned int farthest = 0; ///< see FarthestEffect; one of its blocks for each texel

        explicit operator bool() const { return depth != 0; }
    };

    /// What lines of one frame are drawn into and held to.
    struct View
    {
        PixelSize target; ///< of what is drawn into
        PixelSize whole;  ///< of the whole picture, as fine as the target
        float x = 0.0f;   ///< of the target in the whole
        float y = 0.0f;
        Matrix worldToClip{}; ///< of the whole picture
        SurfaceDepth depth; ///< none: nothing hides lines
        SurfaceDepth glass; ///< of what is see-through
    };

    /// Pixels from one dash to the next, 0 for no gaps, and of a dash.
    struct Dashes
    {
        float period = 0.0f;
        float length = 0.0f;
    };

    /// How lines of a style are drawn.
    struct Pen
    {
        float halfWidth = 0.5f; ///< pixels, as all lengths
        Dashes dashes;
        float hiddenHalfWidth = 0.0f; ///< 0: what is hidden is not drawn
        Dashes hiddenDashes;
        bool isSmooth = true;
    };

    LineEffect();

    /// For what is applied from now on. @param runs outlive what is drawn.
    void Show(const View& view, Kind kind, const LineRuns& runs);

    /// GL.
    /// @param core draws only where a line covers most of a pixel: for its depth.
    void Apply(const LineStyle& style, const Pen& pen, CameraNodeES20& camera, bool core);
    void Remove();

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void BindMeshAttributes(MeshES20* mesh) override;
    void ReleaseMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;

    /// Pixels about a line that its pixels are looked for in.
    static float ReachOf(const Pen& pen);

    /// How far segments are followed, in normalised device coordinates. @param whole see View.
    static std::array<float, 2> GuardOf(const PixelSize& whole, float reach);

private:
    void SetOffset(const LineStyle& style, CameraNodeES20& camera);

    View m_view;
    Kind m_kind = Kind::BeforeAll;
    const LineRuns* m_runs = nullptr;
    MeshES20* m_mesh = nullptr; ///< whose attributes are bound
    bool m_isOffset = false;
    std::array<unsigned int, 5> m_boundBefore{}; ///< by unit
};

} // namespace OV::Host::Detail
