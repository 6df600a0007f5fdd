#pragma once

#include "orvane/renderdata/RenderItemES20.h"
#include "orvane/renderdata/RenderPass.h"

#include <vector>

namespace OV
{

class CameraNodeES20;
class EffectCache;
class LineStyle;
class Material;
class MaterialEffectES20;
class Mesh;
class MeshNode;
class SharedBufferPool;
class TextureLoader;

} // namespace OV

namespace OV::Host
{

class SceneRenderer;

struct PresentationFrame;

/// What a stage may use of the renderer that draws its frame.
class StageAccess
{
public:
    StageAccess(const StageAccess&) = delete;
    StageAccess& operator=(const StageAccess&) = delete;

    EffectCache& GetEffects();

    /// Not owned; null where there is none.
    TextureLoader* GetTextureLoader();

    /// Lists the meshes of a material, if it is ready, giving it render data at need. GL.
    /// @param clipped whether the clip planes cut them.
    void List(Material& material, CameraNodeES20& cameraData, std::vector<RenderItemES20>& items, bool clipped);

    /// Lists the lines of a style, giving it render data at need. GL.
    /// @param clipped whether the clip planes cut them.
    void List(LineStyle& style, CameraNodeES20& cameraData, std::vector<RenderItemES20>& items, bool clipped);

    /// The same for whole lists, which a host that is called meanwhile may edit.
    void List(const std::vector<Material*>& materials, CameraNodeES20& cameraData, std::vector<RenderItemES20>& items,
              bool clipped);
    void List(const std::vector<LineStyle*>& styles, CameraNodeES20& cameraData, std::vector<RenderItemES20>& items,
              bool clipped);

    /// The same, where one item without a mesh may stand for all that a material lists, as far as it is drawn
    /// in the simplest way. Nothing but drawing knows such items.
    void ListWhole(Material& material, CameraNodeES20& cameraData, std::vector<RenderItemES20>& items, bool clipped);
    void ListWhole(const std::vector<Material*>& materials, CameraNodeES20& cameraData,
                   std::vector<RenderItemES20>& items, bool clipped);

    /// Lists the meshes that such an item stands for, in the frame that has listed it.
    static void ListMeshes(const RenderItemES20& whole, std::vector<RenderItemES20>& items);

    /// Lists a mesh at a node, whatever the clip planes, if its material is ready, giving the material
    /// and the mesh render data at need. The mesh needs no scene, and need not be among those that
    /// its material knows. GL.
    void List(Mesh& mesh, MeshNode& node, CameraNodeES20& cameraData, std::vector<RenderItemES20>& items);

    /// Where new geometry takes room.
    SharedBufferPool& GetBufferPool();

    /// Whether a host that was called in this frame has deleted anything of a scene; only then may an
    /// item that was listed name what is gone.
    bool HasLosses() const;
    bool IsGone(const RenderItemES20& item) const;

    /// Uploads the geometry that was listed for the first time. After every stage has prepared and
    /// the scene is listed the frame does so itself. GL.
    void Upload();

    /// Draws items in order, batches of several materials in the colours of each. GL.
    void Draw(CameraNodeES20& cameraData, const std::vector<RenderItemES20>& items, RenderPass pass);

    /// Draws surfaces of a frame's scene into a target that lies over the picture, or over its part that is
    /// drawn, from its lower left corner to its upper right one. In a part they come to lie, to the bit,
    /// where they lie in the whole, as far as GL's viewports reach. GL.
    void DrawInPicture(PresentationFrame& frame, const std::vector<RenderItemES20>& items, RenderPass pass);

    /// Makes what DrawOverScreen draws with, if there is none yet, to be uploaded. GL.
    /// @return false where it can't be had.
    bool PrepareScreen();

    /// Draws an effect that needs neither material nor camera over all of the target. Depth test,
    /// culling and blending are as they are found. GL.
    void DrawOverScreen(MaterialEffectES20& effect);

private:
    friend class SceneRenderer;

    explicit StageAccess(SceneRenderer& renderer) : m_renderer(renderer) {}

    void DrawItems(CameraNodeES20& cameraData, const std::vector<RenderItemES20>& items, RenderPass pass);

    SceneRenderer& m_renderer;
    std::vector<RenderItemES20> m_run; ///< in a row, all with the colours of their vertices or none
};

} // namespace OV::Host
