#pragma once

#include "orvane_host/present/SceneRenderer.h"
#include "orvane/math/Color.h"
#include "orvane/scene/Node.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace OV
{

class AdvancedMaterialBaseES20;
class DepthIdPassEffectES20;
class EffectES20;
class LineFilterEffectES20;
class MaterialEffectES20;
class SSAOEffectES20;
class SolidLineEffectES20;

} // namespace OV

namespace OV::Host::Detail
{

class LineRoom;
class ObjectHatchEffect;
class ScreenBuffer;

} // namespace OV::Host::Detail

namespace OV::Host
{

class HatchTextures;

/// How the surfaces of a scene are drawn.
enum class Look
{
    Basic,       ///< light at the vertices
    Advanced,    ///< light at every pixel, with maps and reflection
    Phong,       ///< the same with soft shadows and a sun of settable strength
    Crosshatch,  ///< pen strokes
    Monotone,    ///< one flat colour
    VertexColor, ///< the colours of the vertices; white where a mesh has none
};

/// What counts as one thing where edges are drawn.
enum class Identity
{
    Object, ///< what has one colour at the vertices of a mesh; a mesh without colours is one thing
    Group,  ///< the nodes of one Node::GetUserData
};

/// How the edges between things are drawn.
struct EdgeLook
{
    /// Opacity, 0 to 1. Where only one neighbour of a pixel is of another thing, half of it.
    float weight = 0.5f;
    Color color{0.0f, 0.0f, 0.0f};
    Identity identity = Identity::Group;
};

/// A renderer that puts a presentation together, each frame in this order: sky; identifiers and
/// depth, off screen; surfaces in a look and lines; ambient occlusion; edges. Each is on or off by
/// itself; a captured frame is antialiased after them, and the layer above comes last.
///
/// Lines and 2D layers are as ever, and so are materials that know no other pass than the default
/// one. The global clip planes cut the surfaces in every look but Crosshatch. To see the section fill,
/// materials must show their back faces.
///
/// Lines are as wide as their styles say in pixels of the screen, also in a finer capture. Where
/// FeatureEdges::MakeRoom gave them room, surfaces have their colours from where they are, and
/// their depth is drawn a second time for the lines.
///
/// Edges and ambient occlusion see surfaces, not lines or points, and need depth in the framebuffer
/// that they are drawn over. They are left out of a frame that is drawn over another, and where GL
/// can't make their buffers.
class PresentationRenderer : public SceneRenderer
{
public:
    /// As SceneRenderer. Not GL.
    PresentationRenderer(TextureLoader* textureLoader, RenderCapabilities* capabilities);

    /// GL if anything was drawn.
    ~PresentationRenderer() override;

    /// Draws in a look from the next frame on; Advanced at first. The two models of shading at
    /// every pixel share one setting of the process, which each frame in one of them sets.
    void SetLook(Look look) { m_look = look; }
    Look GetLook() const { return m_look; }

    /// How many strokes the look Crosshatch draws for a length, against those that suit a house in
    /// metres, from the next frame on; 1 at first. See HatchTextures. GL if it has drawn.
    void SetStrokeDensity(int density);

    /// Whether materials are drawn. On at first. Edges come from the surfaces all the same;
    /// ambient occlusion has only lines left to darken.
    void ShowSurfaces(bool show) { m_surfacesShown = show; }

    /// Whether lines are drawn. On at first.
    void ShowLines(bool show) { m_linesShown = show; }

    /// Draws the lines of styles that are marked so (LineStyle::overlay) only where a thing of
    /// either identity ends, and by the depth of its surroundings, so that neither hides half of
    /// a line on a rim. Off at first: they are drawn as all lines are.
    void OverlayLines(bool overlay) { m_linesOverlaid = overlay; }

    /// Draws an edge of a screen pixel wherever one thing ends and another begins. None at first.
    void SetEdges(const std::optional<EdgeLook>& edges) { m_edges = edges; }
    const std::optional<EdgeLook>& GetEdges() const { return m_edges; }

    /// Shows the identifiers that edges come from, as colours, in place of the scene. Off at
    /// first; without edges those of EdgeLook's identity.
    void ShowIdentifiers(bool show) { m_identifiersShown = show; }

    /// Darkens corners. Off at first. Within about 10 pixels of them where the camera's target lies
    /// as far away as what is looked at (CameraNode::SetDistanceToTarget), else within fewer.
    void ShowAmbientOcclusion(bool show) { m_occlusionShown = show; }

    /// Pixels per point of the 2D layers, where that isn't the device pixel ratio: supersampling
    /// raises the ratio, and with it the size of all that is measured in points. None at first.
    void SetLayerRatio(const std::optional<float>& pixelsPerPoint) { m_layerRatio = pixelsPerPoint; }

    /// In the looks Advanced and Phong everything is grey from the next frame on but the nodes
    /// whose path begins with this one.
    void EditInContext(std::vector<std::pair<std::uint64_t, std::uint64_t>> path);

    /// Everything has its colour again.
    void LeaveEdit();

    /// Draws the surfaces of a scene with one effect in place of theirs, in the order of a frame,
    /// with depth, into what is bound. What is hidden or has no effect for identifiers is left
    /// out. The camera's matrices get the size of the view, in points. GL.
    void DrawSurfaces(Scene& scene, CameraNode& camera, MaterialEffectES20& effect);

    void BeginCapture() override;
    void ApplyCapture() override;
    void Render2D(Scene2D* layer) override;
    void Suspend() override;

    /// Finds a look by its name on a command line, such as "vertex-color".
    /// @return false, with nothing changed, if there is none.
    static bool ParseLook(const std::string& name, Look& look);

protected:
    void DrawScene(Scene& scene, CameraNode& camera) override;

private:
    /// In pixels.
    struct Size
    {
        int width;
        int height;

        bool operator!=(const Size& other) const { return width != other.width || height != other.height; }
    };

    /// What a frame is drawn into, as it was found.
    struct Screen
    {
        unsigned int framebuffer = 0;
        bool multisampled = false;
        std::array<float, 2> depthRange = {0.0f, 1.0f};
        double depthShare = 1.0; ///< of the depth range, for a far plane that suits occlusion
    };

    RenderPass PassOfLook() const;
    void PrepareLook();
    void PrepareHatches();
    void UseHatchEffect(Scene& scene);
    void PrepareEdit();
    void BeginScene() const;
    CameraNodeES20* PrepareCamera(CameraNode& camera);
    void ListItems(Scene& scene, CameraNodeES20* cameraData);
    void DrawLook(CameraNodeES20* cameraData);
    void DrawItems(CameraNodeES20* cameraData, const std::vector<RenderItemES20>& items, RenderPass pass);
    void ReleaseHeld();

    // PresentationScreen.cpp: what is drawn by way of other buffers.
    Size TargetSize() const;
    bool HasScreenStages() const;
    bool OverlaysLines() const { return m_linesOverlaid && m_linesShown; }
    bool NeedsIdentifiers(Identity identity) const;
    Detail::ScreenBuffer& IdentifiersOf(Identity identity);
    void ListSurfaces(bool withPoints);
    Detail::ScreenBuffer* OcclusionDepth() const;
    bool DrawOffscreen(const CameraNode& camera, CameraNodeES20* cameraData);
    bool DrawIdentifiers(CameraNodeES20* cameraData, Identity identity);
    bool DrawDepth(CameraNodeES20* cameraData);
    void DrawInto(Detail::ScreenBuffer& buffer, unsigned int clearMask, CameraNodeES20* cameraData);
    void PrepareLines(bool hasIdentifiers);
    void ReleaseLines();
    void ReleaseTextures();
    void DrawOcclusion(const CameraNode& camera);
    void DrawEdges();
    bool PrepareScreenMesh();
    void DrawOverScreen(MaterialEffectES20& effect);

    Look m_look = Look::Advanced;
    bool m_surfacesShown = true;
    bool m_linesShown = true;
    bool m_linesOverlaid = false;
    bool m_identifiersShown = false;
    bool m_occlusionShown = false;
    bool m_capturing = false; ///< from BeginCapture to ApplyCapture, where there are buffers
    bool m_shadesSamples = false; ///< edges of this frame do, for finer identifiers
    Screen m_screen; ///< of this frame, where it has stages
    std::array<bool, 3> m_usedUnits = {}; ///< that hold textures of the stages
    Size m_refusedFiner = {0, 0}; ///< that GL could not make finer identifiers for
    std::optional<EdgeLook> m_edges;
    std::optional<float> m_layerRatio;
    std::optional<std::vector<std::pair<std::uint64_t, std::uint64_t>>> m_editPath;

    // One counted reference each, so that what is set on them lasts; null until they are drawn
    // with.
    Detail::ObjectHatchEffect* m_hatchEffect = nullptr;
    AdvancedMaterialBaseES20* m_advanced = nullptr;
    AdvancedMaterialBaseES20* m_phong = nullptr;
    DepthIdPassEffectES20* m_identifierEffect = nullptr;
    LineFilterEffectES20* m_edgeEffect = nullptr;
    SSAOEffectES20* m_occlusionEffect = nullptr;
    SolidLineEffectES20* m_lineEffect = nullptr;
    std::unique_ptr<HatchTextures> m_hatches;
    int m_strokeDensity = 1;

    // Identifiers of the surfaces, by Identity, as colours, and their depth; null until needed.
    std::unique_ptr<Detail::ScreenBuffer> m_identifiers[2];
    /// For occlusion, where nothing else needs depth; null until needed.
    std::unique_ptr<Detail::ScreenBuffer> m_depth;
    std::unique_ptr<Detail::ScreenBuffer> m_picture; ///< what occlusion darkens; null until needed

    std::vector<RenderItemES20> m_items;
    std::size_t m_firstLine = 0;  ///< in m_items, behind the opaque surfaces
    std::size_t m_firstAlpha = 0; ///< in m_items, behind the lines
    std::vector<RenderItemES20> m_lines;    ///< those of m_items, where they are drawn alone
    std::unique_ptr<Detail::LineRoom> m_lineRoom;
    std::vector<RenderItemES20> m_surfaces; ///< those of m_items that have identifiers
    std::vector<RenderItemES20> m_run; ///< those of the items that one pass draws in a row
};

} // namespace OV::Host
