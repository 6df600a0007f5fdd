#pragma once

#include "host/SceneRenderer.h"
#include "orvane/scene/Node.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace OV
{

class AdvancedMaterialBaseES20;
class EffectES20;

} // namespace OV

namespace OV::Host::Detail
{

class ObjectHatchEffect;

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

/// A renderer that draws a scene in any look: each frame is prepared once and drawn with the pass
/// of the look. Lines and 2D layers are as ever, and so are materials that know no other pass
/// than the default one.
///
/// The global clip planes cut the surfaces in every look. To see the section fill, materials must
/// show their back faces.
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

    /// In the looks Advanced and Phong everything is grey from the next frame on but the nodes
    /// whose path begins with this one.
    void EditInContext(std::vector<std::pair<std::uint64_t, std::uint64_t>> path);

    /// Everything has its colour again.
    void LeaveEdit();

    void Suspend() override;

    /// Finds a look by its name on a command line, such as "vertex-color".
    /// @return false, with nothing changed, if there is none.
    static bool ParseLook(const std::string& name, Look& look);

protected:
    void DrawScene(Scene& scene, CameraNode& camera) override;

private:
    RenderPass PassOfLook() const;
    void PrepareLook();
    void PrepareHatches();
    void UseHatchEffect(Scene& scene);
    void PrepareEdit();
    void BeginScene() const;
    void ListItems(Scene& scene, CameraNodeES20* cameraData);
    void DrawItems(CameraNodeES20* cameraData, RenderPass pass);
    void ReleaseEffects();

    Look m_look = Look::Advanced;
    std::optional<std::vector<std::pair<std::uint64_t, std::uint64_t>>> m_editPath;

    // One counted reference each, so that what is set on them lasts; null until they are drawn
    // with.
    Detail::ObjectHatchEffect* m_hatchEffect = nullptr;
    AdvancedMaterialBaseES20* m_advanced = nullptr;
    AdvancedMaterialBaseES20* m_phong = nullptr;
    std::unique_ptr<HatchTextures> m_hatches;

    std::vector<RenderItemES20> m_items;
    std::vector<RenderItemES20> m_run; ///< those of m_items that one pass draws in a row
};

} // namespace OV::Host
