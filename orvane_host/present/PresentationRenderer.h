#pragma once

#include "orvane_host/present/BatchSettings.h"
#include "orvane_host/present/EdgeLook.h"
#include "orvane_host/present/GlassSettings.h"
#include "orvane_host/present/HiddenLineLook.h"
#include "orvane_host/present/Look.h"
#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/PresentationStage.h"
#include "orvane_host/present/SceneRenderer.h"
#include "orvane_host/present/ShadowSettings.h"
#include "orvane/math/Vector.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace OV
{

class MaterialEffectES20;
class MeshNode;

} // namespace OV

namespace OV::Host::Detail
{

class Batches;
class EdgeStage;
class FilterEffect;
class GroundStage;
struct Ground;
class HorizonStage;
class ItemLister;
class LineDepthStage;
class LineSetup;
class LineStage;
class OcclusionStage;
class ScreenBuffer;
class ShadowStage;
class SunPatchStage;
class SurfaceStage;

} // namespace OV::Host::Detail

namespace OV::Host
{

struct PickArea;
class Surroundings;

/// A renderer that puts a presentation together, each frame in this order: sky; shadows, identifiers
/// and depth, off screen; surfaces in a look; ambient occlusion; edges; lines. Each is on or off by
/// itself; a captured frame is antialiased after them, and the layer above comes last. The filter of
/// AAModeFXAA comes before the lines.
///
/// Whether a line is seen is found at the middle of it, from pictures of the surfaces alone, and holds for
/// all of its width. Joints are round and covered once, and dashes run on over them. Of lines of
/// different styles the nearer one is on top. Over another frame, and where GL can't make the
/// pictures, lines are drawn as the engine has them, by the depth buffer.
///
/// 2D layers are as ever, and so are materials that know no other pass than the default
/// one. The global clip planes cut the surfaces in every look but Crosshatch. To see the section fill,
/// materials must show their back faces.
///
/// Lines are as wide as their styles say in pixels of the screen, also in a finer capture. The room of
/// FeatureEdges::MakeRoom counts only where lines are compared with the depth buffer; surfaces have
/// their colours from where they are.
///
/// Edges and ambient occlusion see surfaces, not lines or points, and need depth in the framebuffer
/// that they are drawn over. They are left out of a frame that is drawn over another, and where GL
/// can't make their buffers.
///
/// Each of these is a stage, and a host can add stages of its own between them.
class PresentationRenderer : public SceneRenderer
{
public:
    /// As SceneRenderer. Not GL.
    PresentationRenderer(TextureLoader* textureLoader, RenderCapabilities* capabilities);

    /// GL if anything was drawn.
    ~PresentationRenderer() override;

    /// Draws in a look from the next frame on; Advanced at first. The two models of shading at
    /// every pixel share one setting of the process, which each frame in one of them sets.
    void SetLook(Look look);
    Look GetLook() const;

    /// How wide the strokes of the look Crosshatch are, in pixels of the screen, above 0, from the next
    /// frame on; 1.2 at first. Finer ones lie closer together: the tone stays.
    void SetStrokeWidth(float pixels);

    /// What smooth materials (Material::reflectionFactors) reflect in the looks Advanced and Phong,
    /// from the next frame on; null, as at first, for nothing. A material's gloss is 1 less its
    /// roughness; what it reflects has the hue of its specular colour. GL if it has drawn.
    void SetSurroundings(std::shared_ptr<const Surroundings> surroundings);

    /// In which order see-through surfaces are drawn over each other from the next frame on; that of the
    /// scene at first, and where GL can't make the buffers for another.
    void SetGlass(const GlassSettings& glass);

    /// Whether materials are drawn. On at first. Edges come from the surfaces all the same;
    /// nothing hides lines then.
    void ShowSurfaces(bool show);

    /// Whether lines are drawn. On at first.
    void ShowLines(bool show);

    /// Draws the lines of styles that are marked so (LineStyle::overlay) only where a thing of
    /// either identity ends, and by the depth of its surroundings, so that neither hides half of
    /// a line on a rim. Off at first: they are drawn as all lines are.
    void OverlayLines(bool overlay);

    /// Draws lines also where surfaces hide them. None at first.
    void SetHiddenLines(const std::optional<HiddenLineLook>& look);

    /// Draws an edge of a screen pixel wherever one thing ends and another begins. None at first.
    void SetEdges(const std::optional<EdgeLook>& edges);
    const std::optional<EdgeLook>& GetEdges() const;

    /// Shows the identifiers that edges come from, as colours, in place of the scene. Off at
    /// first; without edges those of EdgeLook's identity.
    void ShowIdentifiers(bool show);

    /// Darkens corners, by the engine's effect. Off at first. Within about 10 pixels of them where the camera's target lies
    /// as far away as what is looked at (CameraNode::SetDistanceToTarget), else within fewer.
    void ShowAmbientOcclusion(bool show);

    /// How OcclusionKind::Horizon darkens corners.
    struct HorizonOcclusion
    {
        float radius = 1.0f;   ///< world space, above 0
        float strength = 1.0f; ///< as OcclusionLook::strength
        bool coarse = false;   ///< looked up at a quarter of the pixels, as while the view moves
    };

    /// Darkens corners by how much of its surroundings within a radius each place sees hidden. None at
    /// first. The radius is a quarter of the shorter side of the picture at most.
    void SetHorizonOcclusion(const std::optional<HorizonOcclusion>& occlusion);

    /// The direction towards the sun, in world space, of any length above 0: what casts shadows. The
    /// light itself is the first light of the scene, which shines from there. None at first.
    /// @param up unit, what is up in the scene: shadows of a low sun are finest on level ground.
    void SetSun(const std::optional<Vector>& towardSun, const Vector& up = Vector(0.0f, 1.0f, 0.0f));

    /// Lets surfaces cast the shadows of the sun, in every look. None at first. Lit looks lose the
    /// light of the first light of the scene there and nothing else; the others get darker.
    ///
    /// Lines and points cast nothing, nor does what is hidden; what clip planes have cut away does on
    /// request; see-through materials let a share of the light pass. Where GL can't make the maps
    /// that shadows come from, all is lit.
    void SetShadows(const std::optional<ShadowSettings>& shadows);

    /// A plane that the shadows of the sun fall on and of which nothing else is seen.
    struct ShadowGround
    {
        Vector position; ///< a point of it, in world space
        Vector up;       ///< unit, to the side from which it is seen
        float darkness = 0.35f; ///< of a shadow, 0 to 1
    };

    /// Lays a plane under the scene, as far as shadows fall on it. It hides nothing. None at first.
    void SetShadowGround(const std::optional<ShadowGround>& ground);

    /// As that of Renderer20. Supersampling raises the device pixel ratio from 1 to 2; layers without
    /// a ratio of their own stay as large as they were.
    bool SetAAMode(AAMode mode);

    /// As that of Renderer20; layers without a ratio of their own follow.
    void SetDevicePixelRatio(float ratio);

    /// Pixels per point of the 2D layers, where that isn't the device pixel ratio. None at first.
    void SetLayerRatio(const std::optional<float>& pixelsPerPoint) { m_layerRatio = pixelsPerPoint; }

    /// In the looks Advanced and Phong everything is grey from the next frame on but the nodes
    /// whose path begins with this one.
    void EditInContext(std::vector<std::pair<std::uint64_t, std::uint64_t>> path);

    /// Everything has its colour again.
    void LeaveEdit();

    /// Draws what stands still together from the next frame on. Not in the look Crosshatch, whose
    /// strokes go by the axes of each object. BatchUse::Off at first: who draws several scenes in
    /// turns would have them put together anew each time.
    void SetBatches(const BatchSettings& settings) { m_batchSettings = settings; }

    /// As of the last frame.
    BatchCounts CountBatches() const;

    /// Draws a stage in every frame from the next one on.
    /// @return the stage, which the renderer owns until it is removed; null for null, and while a
    ///         frame is drawn, which deletes the stage that was handed over.
    PresentationStage* AddStage(std::unique_ptr<PresentationStage> stage, StageSlot slot);

    /// Gives a stage back that AddStage took, without GL objects. GL.
    /// @return null, with nothing changed, if there is no such stage, and while a frame is drawn.
    std::unique_ptr<PresentationStage> RemoveStage(const PresentationStage* stage);

    /// Draws the surfaces of a scene with one effect in place of theirs, in the order of a frame,
    /// with depth, into what is bound. What is hidden or has no effect for identifiers is left
    /// out. The camera's matrices get the size of the view, in points. GL.
    /// @param area of the view: what lies elsewhere may be left out. Null draws all.
    void DrawSurfaces(Scene& scene, CameraNode& camera, MaterialEffectES20& effect, const PickArea* area = nullptr);

    /// How many pixels about one it takes to draw it: parts of a picture (ShowPart) are right that far
    /// from their rims, where those aren't the rims of the whole.
    /// @param whole size of the picture.
    int GetMargin(const PixelSize& whole) const;

    /// How many of them have to have their colours too.
    int GetColorMargin(const PixelSize& whole) const;

    void BeginCapture() override;
    void ApplyCapture() override;
    void Render2D(Scene2D* layer) override;
    void Suspend() override;

    /// Finds a look by its name on a command line, such as "vertex-color".
    /// @return false, with nothing changed, if there is none.
    static bool ParseLook(const std::string& name, Look& look);

    /// The name that ParseLook finds a look by.
    static const char* NameOfLook(Look look);

protected:
    /// Whether a stage from outside draws things that no node of the scene shows.
    bool DrawsBesideScene() const;

    /// Nodes that are drawn by themselves from the next frame on, in place of those named before.
    void KeepApart(std::vector<const MeshNode*> nodes);

    void ListSurfaces(Scene& scene, CameraNode& camera, std::vector<RenderItemES20>& items) override;
    /// A level ground under the surfaces, from the next frame on; none at first.
    void SetGround(const std::optional<Detail::Ground>& ground);

    void DrawScene(Scene& scene, CameraNode& camera) override;

private:
    /// Stages in drawing order; outside ones may stand between those of the kit.
    enum class Step
    {
        Shadows,
        Identifiers,
        Depth,
        LineDepth,
        Ground, ///< from here on into the picture
        SunPatch,
        BeforeSurfaces,
        Surfaces,
        AfterSurfaces,
        Occlusion,
        Edges,
        Lines,
        OverPicture,
    };

    struct Entry
    {
        Step step;
        std::unique_ptr<PresentationStage> stage;
        FrameNeeds needs; ///< of the frame that is drawn
    };

    static Step StepOf(StageSlot slot);
    /// Whether AddStage took it.
    static bool IsOutside(const Entry& entry);
    template <class Stage, class... Arguments>
    Stage* Append(Step step, Arguments&... arguments);
    void ReleaseHeld();
    Detail::Batches* BatchesOf(Scene& scene);

    PixelSize TargetSize() const;
    void LayCapture();
    bool NeedsMeshes() const;
    void GatherNeeds(PresentationFrame& frame);
    static void AskTarget(PresentationFrame& frame);
    void BeginScene() const;
    void DrawStage(Entry& entry, PresentationFrame& frame);
    bool CopyPicture(PresentationFrame& frame);

    std::vector<Entry> m_stages; ///< in drawing order
    // In m_stages.
    Detail::ShadowStage* m_shadows = nullptr;
    Detail::SunPatchStage* m_sunPatch = nullptr;
    Detail::SurfaceStage* m_surfaces = nullptr;
    Detail::GroundStage* m_ground = nullptr;
    Detail::OcclusionStage* m_occlusion = nullptr;
    Detail::HorizonStage* m_horizon = nullptr;
    Detail::EdgeStage* m_edges = nullptr;
    Detail::LineDepthStage* m_lineDepth = nullptr;
    Detail::LineStage* m_lines = nullptr;

    bool m_castsShadows = false;
    bool m_drawing = false;   ///< a scene, whose stages are not to change meanwhile
    bool m_capturing = false; ///< from BeginCapture to ApplyCapture, where there are buffers
    std::optional<float> m_layerRatio;
    float m_plainRatio = 1.0f;  ///< the device pixel ratio before supersampling raised it
    float m_raisedRatio = 1.0f; ///< what it was raised to; the same where it was not
    std::unique_ptr<Detail::LineSetup> m_layerLines;
    std::unique_ptr<Detail::ScreenBuffer> m_picture; ///< what stages read of it; null until needed
    Detail::FilterEffect* m_filter = nullptr; ///< one reference; null until a picture is filtered
    std::unique_ptr<Detail::ItemLister> m_lister;
    BatchSettings m_batchSettings{BatchUse::Off};
    std::unique_ptr<Detail::Batches> m_batches; ///< null where everything is drawn node by node
    std::vector<const MeshNode*> m_apart;
    std::optional<std::vector<std::pair<std::uint64_t, std::uint64_t>>> m_editPath;
};

} // namespace OV::Host
