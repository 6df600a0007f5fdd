#pragma once

#include "orvane/Export.h"
#include "orvane/effects/EffectCache.h"
#include "orvane/engine/Renderer.h"
#include "orvane/base/WatchedPtr.h"
#include "orvane/math/Color.h"
#include "orvane/renderdata/RenderItemES20.h"
#include "orvane/renderdata/RenderPass.h"
#include "orvane/renderdata/SharedBufferPool.h"
#include "orvane/renderer/AAMode.h"
#include "orvane/scene/AlphaMeshNode.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace OV
{

namespace detail
{

class Walk;

} // namespace detail

class CameraNodeES20;
class EffectES20;
class LineStyle;
class Material;
class MaterialES20;
class Mesh;
class MeshES20;
class MeshNode;
class Object;
class RenderCapabilities;

/// The renderer on the feature set of OpenGL ES 2.0.
///
/// Gives scene objects their render data on the first frame that needs it, and owns what all
/// of that shares. Sizes are pixels; matrices get points, which are pixels divided by the
/// device pixel ratio and truncated. A host may derive from it to run further passes with the
/// protected operations. One renderer after another may draw on a thread; none of it is for
/// two threads.
///
/// A host that is called while this draws may edit what is drawn, as told at Scene. A scene that
/// is being drawn is not drawn again from within. Suspend, Resume, SetAAMode and
/// ClearOffscreenBuffers then wait until the outermost operation of the engine ends. The renderer
/// itself has to outlive what it is doing.
///
/// Each pass sets what it depends on, so that a frame does not depend on the one before:
/// depth writes are on for every clear, and blending is off when a pass begins and when it ends.
/// What a host's own GL may have changed between two frames, and what it has to leave alone,
/// stands in docs/contract.md.
class ORVANE_API Renderer20 : public Renderer
{
public:
    /// Not GL.
    /// @param textureLoader, capabilities not owned; may be null and may die first.
    Renderer20(TextureLoader* textureLoader, RenderCapabilities* capabilities);
    Renderer20(const Renderer20&) = delete;
    Renderer20& operator=(const Renderer20&) = delete;

    /// Frees the off-screen buffers and the screen mesh. GL if there are any, or if effects
    /// are still alive. Render data on scene objects stays and becomes inert.
    ~Renderer20() override;

    /// Sets the size of the screen in pixels and the viewport, to which every frame comes back.
    /// GL. A capture keeps its size until its buffers are cleared.
    void Resize(int width, int height) override;

    /// Resizes, clears the capture buffers, and names what counts as the screen. GL. The scale
    /// isn't read.
    void SetOnScreenBuffers(int width, int height, unsigned framebuffer, unsigned renderbuffer,
                            unsigned depthbuffer, float scale) override;

protected:
    /// Deletes the off-screen buffers, if any; the next BeginCapture makes them anew. GL.
    void ClearOffscreenBuffers() override;

public:
    /// Until EndRender, Render3D keeps the depth buffer of what was drawn before it.
    void BeginOverDrawRender() override;

    /// Clears the screen in a colour, which a capture then clears in too. GL.
    void BeginRender(bool capture, Color const& color) override;

    /// Draws the opaque materials, the line styles and the alpha materials of a scene, in this
    /// order. GL. Null for either draws nothing.
    void Render3D(Scene* scene, CameraNode* camera) override;

    /// Draws a layer over what is there: its opaque materials, its line styles, then its
    /// z-ordered items one by one. GL. Null draws nothing.
    void Render2D(Scene2D* layer) override;

    void EndRender() override;

    /// @return true.
    bool SupportsRenderToTexture() override;

    /// Sends what follows to the off-screen buffers, made at need, and clears them. GL. Nothing
    /// in mode AAModeMSAA.
    void BeginCapture() override;

    /// Nothing: ApplyCapture ends the capture.
    void EndCapture() override;

    /// Back to the screen, and draws the last capture on it. GL. Without a capture, or without
    /// an effect that draws it, only the buffers and the viewport change. Nothing in mode
    /// AAModeMSAA.
    void ApplyCapture() override;

    /// Lets go of everything in GL that the renderer itself holds. GL.
    void Suspend() override;

    /// Gives the screen mesh its render data again. GL.
    void Resume() override;

    int GetWidthPx() override;
    int GetHeightPx() override;

    /// Replaces both; see the constructor. What was made with the old ones stays.
    virtual void Configure(TextureLoader* textureLoader, RenderCapabilities* capabilities);

    float GetDevicePixelRatio() const { return devicePixelRatio; }

    /// Sets the pixels per point. Only matrices and the size of a capture follow it: a layer,
    /// which counts in points, shows its texts and shapes so many times as large in pixels. One
    /// that is not finite or not above 0 counts as 1 wherever pixels are counted.
    void SetDevicePixelRatio(float ratio) { devicePixelRatio = ratio; }

    /// 1 / device pixel ratio.
    float GetPxToPtScale() const { return 1.0f / devicePixelRatio; }

    AAMode GetAAMode() const { return aaMode; }

    /// Changes the mode: settles the device pixel ratio for it (AAModeSupersampling raises a
    /// ratio of at most 1 to 2, the others set 1), then suspends and resumes. GL. Where the ratio
    /// changes so does the size of what the layers show: with supersampling on a plain screen
    /// texts come out twice as large, unless the host gives them half the size and place.
    /// @return false, with nothing changed, if the mode is in force already.
    bool SetAAMode(AAMode mode);

    bool UseFXAA() const { return aaMode == AAModeFXAA; }
    bool UseMSAA() const { return aaMode == AAModeMSAA; }

    /// True also for AAModeFXAA: it covers every mode that filters a capture.
    bool CanSuperSample() const { return aaMode > AAModeMSAA; }

protected:
    /// Draws the items in order, applying a style only where it changes. GL. May be called
    /// again from within, by an effect or a mesh that it draws.
    void RenderItemList(CameraNodeES20* cameraData, std::vector<RenderItemES20> const& items,
                        RenderPass pass);

    /// Lists the meshes of a material, if it is ready, giving it render data at need. GL.
    /// @param clippingPlane whether the clip planes cut its meshes.
    void PrepareOptimizedMaterial(Material* material, CameraNodeES20* cameraData,
                                  std::vector<RenderItemES20>& items, bool clippingPlane);

    /// Lists the lines of a style, giving it render data at need. GL.
    /// @param clippingPlane whether the clip planes cut its lines.
    void PrepareLineStyle(LineStyle* lineStyle, CameraNodeES20* cameraData,
                          std::vector<RenderItemES20>& items, bool clippingPlane);

    /// PrepareOptimizedMaterial for what the list holds now, in its order: a host that is called
    /// meanwhile may change it. GL.
    void PrepareOptimizedMaterials(const std::vector<Material*>& materials, CameraNodeES20* cameraData,
                                   std::vector<RenderItemES20>& items, bool clippingPlane);

    /// The two for lists that RenderItemList reads: where all meshes of a material are drawn in the simplest
    /// way, one item without a mesh stands for them. GL.
    void PrepareWholeMaterial(Material* material, CameraNodeES20* cameraData, std::vector<RenderItemES20>& items,
                              bool clippingPlane);
    void PrepareWholeMaterials(const std::vector<Material*>& materials, CameraNodeES20* cameraData,
                               std::vector<RenderItemES20>& items, bool clippingPlane);

    /// Lists the meshes that an item without a mesh, of a frame that is being drawn, stands for.
    static void ListMeshes(const RenderItemES20& whole, std::vector<RenderItemES20>& items);

    /// PrepareLineStyle for what the list holds now, likewise. GL.
    void PrepareLineStyles(const std::vector<LineStyle*>& lineStyles, CameraNodeES20* cameraData,
                           std::vector<RenderItemES20>& items, bool clippingPlane);

    /// Whether anything of a scene was deleted since the outermost running operation of the engine
    /// began, as a host does that it calls; only then may an item that was listed name what is gone.
    bool HasLosses() const;
    bool IsGone(const RenderItemES20& item) const;

    /// Lists one mesh at one node, if its material is ready. GL.
    void PrepareZOrderedMeshNode(AlphaMeshNode* alphaNode, CameraNodeES20* cameraData,
                                 std::vector<RenderItemES20>& items);

    /// Makes the framebuffer of the capture; what is bound at this moment counts as the screen
    /// from then on. GL.
    void SetupAntialiasBuffers();

    /// For a subclass that multisamples off screen: the engine itself makes no such buffers.
    void CreateMSAABuffers();

    /// Makes the quad that a capture is drawn with, and fetches its effect. GL.
    void CreateScreenMesh();

    WatchedPtr<RenderCapabilities> capabilities; ///< not owned; reads null once it is gone
    int width = 0;                               ///< of the screen, pixels
    int height = 0;
    std::unique_ptr<CameraNodeES20> hudCamera; ///< for 2D layers; has no camera
    SharedBufferPool bufferPool;
    EffectCache effectCache;

    // GL names; 0: none.
    unsigned int onScreenFramebuffer = 0;
    unsigned int onScreenRenderbuffer = 0;
    unsigned int onScreenDepthbuffer = 0; ///< kept for the host
    int offscreenWidth = 0;               ///< of the capture, pixels
    int offscreenHeight = 0;
    unsigned int offscreenFramebuffer = 0; ///< while 0, the five below have no meaning
    unsigned int offscreenColorRenderbuffer = 0;
    unsigned int offscreenDepthRenderbuffer = 0;
    unsigned int offscreenSpareRenderbuffer = 0; ///< never made, deleted with the others
    unsigned int offscreenColorTexture = 0;
    unsigned int offscreenDepthTexture = 0; ///< 0 where depth textures don't work

    std::unique_ptr<Scene> screenScene;  ///< null until the first capture
    EffectES20* screenEffect = nullptr;  ///< one counted reference; null if there is no such effect
    Mesh* screenMesh = nullptr;          ///< owned by screenScene
    MeshES20* screenMeshData = nullptr;  ///< owned by screenMesh
    unsigned int msaaFramebuffer = 0;    ///< these three are a subclass's to make, ours to delete
    unsigned int msaaColorRenderbuffer = 0;
    unsigned int msaaDepthRenderbuffer = 0;
    bool overDraw = false;
    bool msaaBuffersReady = false; ///< set by no operation of the engine
    AAMode aaMode = AAModeNone;
    Color clearColor{1.0f, 1.0f, 1.0f, 1.0f}; ///< of the last BeginRender
    std::unique_ptr<Object> extension;        ///< carried for the host
    float devicePixelRatio = 1.0f;

private:
    /// A material that one item stood for, with its render data; null where it was listed in another way.
    struct WholeMaterial
    {
        const Material* material = nullptr; ///< only to be compared
        MaterialES20* data = nullptr;
    };

    /// What PrepareWholeMaterials made of a list of materials, and under what that holds.
    struct WholeList
    {
        /// Of all materials and of all meshes' render data.
        struct Revision
        {
            std::uint64_t materials = ~std::uint64_t{0};
            std::uint64_t meshes = ~std::uint64_t{0};

            bool operator==(const Revision& other) const
            {
                return materials == other.materials && meshes == other.meshes;
            }
        };

        static Revision CurrentRevision();

        const std::vector<Material*>* list = nullptr; ///< only to be compared
        bool isClipped = false;
        Revision revision;
        std::vector<WholeMaterial> materials; ///< in the order of the list
    };

    MaterialES20* MaterialDataOf(Material& material);

    /// Does something with the render data of a material, if it is ready.
    template <class Prepare>
    void PrepareBy(Material* material, Prepare prepare);
    static void PrefetchAhead(const RenderItemES20* items);
    void DrawItem(const RenderItemES20& item, RenderPass pass, const detail::Walk& walk,
                  std::vector<MeshNode*>& singleNode);
    void DrawWhole(MaterialES20& material, RenderPass pass, const detail::Walk& walk,
                   std::vector<MeshNode*>& singleNode);
    WholeList& WholeListOf(const std::vector<Material*>& materials, bool clippingPlane);
    void ListZOrdered(Scene& layer, std::vector<RenderItemES20>& items, const detail::Walk& walk);
    void DrawItems(CameraNodeES20* cameraData, std::vector<RenderItemES20> const& items);
    int ToPoints(int pixels) const;

    /// The device pixel ratio, or 1 for one that is no such thing.
    float UsableRatio() const;

    /// Truncated; the number itself where the result would not be an int.
    static int Scaled(int number, float factor);

    /// Brings back the viewport of Resize where the host has set another one since.
    void RestoreViewport() const;

    /// Leaves something to the end of the walk that is drawing with this renderer.
    /// @return false when there is none: then it is the caller's to do now.
    bool PutOff(void (*later)(Renderer20&));

    /// glClear with depth writes on: with them off, as a pass before may have left them, the
    /// depth buffer would keep its contents.
    static void Clear(unsigned int mask);

    void CreateDepthTexture();
    void RepairDepthAttachments();
    void FetchScreenEffect();
    void ReleaseScreenEffect();
    void DropScreenMesh();
    void DrawScreenMesh();

    // Kept for their capacity: a steady frame allocates nothing.
    std::vector<RenderItemES20> m_items;
    std::vector<MeshNode*> m_singleNode;
    std::vector<Material*> m_materials;
    std::vector<LineStyle*> m_lineStyles;
    std::vector<AlphaMeshNode> m_drawItems;
    WholeList m_wholeLists[2]; ///< a frame asks for two, of opaque materials and of others
    std::size_t m_nextWholeList = 0;
    AAMode m_nextAAMode = AAModeNone; ///< of a change put off
};

} // namespace OV
