#pragma once

#include "orvane_host/present/PresentationRenderer.h"
#include "orvane/base/Lifetime.h"
#include "orvane/math/Color.h"

#include <list>
#include <memory>
#include <utility>
#include <vector>

namespace OV
{

class Mesh;
class MeshNode;
class NodeMaterial;

} // namespace OV

namespace OV::Host::Detail
{

/// Lays colours over the surfaces of nodes once a scene is drawn, in any look. Nothing of the scene
/// changes for it.
class HighlightRenderer : public PresentationRenderer
{
public:
    using PresentationRenderer::DrawsBesideScene;
    using PresentationRenderer::SetGround;

    /// In the order in which they are laid.
    using Colors = std::vector<std::pair<MeshNode*, Color>>;

    HighlightRenderer(TextureLoader* textureLoader, RenderCapabilities* capabilities);
    ~HighlightRenderer() override;

    /// The alpha of a colour is how much of it is seen. What is hidden or cut away gets none.
    void SetHighlights(Colors colors);

    void Suspend() override;

protected:
    void DrawScene(Scene& scene, CameraNode& camera) override;

private:
    class Effect;

    /// A colour that is laid as long as its node is watched.
    struct Highlight
    {
        Highlight(MeshNode& of, const Color& laid);

        MeshNode& node;
        Color color;
        LifetimeWatch watch;
    };

    void ReleaseEffect();
    void Lay(const Color& color, MeshNode& node, Mesh& mesh, CameraNodeES20& camera);

    std::list<Highlight> m_colors;
    /// Stands for a material without being in a scene; one that belongs to nodes is drawn without
    /// meshes of its own.
    std::unique_ptr<NodeMaterial> m_material;
    Effect* m_effect = nullptr; ///< one counted reference; null until something is highlighted
    std::vector<RenderItemES20> m_item;
};

} // namespace OV::Host::Detail
