#include "orvane_host/present/detail/HighlightRenderer.h"

#include "orvane_host/geometry/detail/DepthRank.h"
#include "orvane_host/present/detail/EffectInPlace.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane/effects/DepthIdPassEffectES20.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/NodeType.h"

#include <GL/gl.h>
#include <GL/glext.h>

namespace OV::Host::Detail
{

namespace
{

/// Of a mesh's own material: how it is rasterised.
constexpr unsigned int kKeptFlags = MaterialFlagNoCull | MaterialFlagPoints | MaterialFlagAlwaysPass;

} // namespace

/// Lays one colour over what is cut as the surfaces are.
class HighlightRenderer::Effect : public DepthIdPassEffectES20
{
public:
    Effect() : DepthIdPassEffectES20(nullptr) { SetIdMode(1); }

    Color color;

    void Apply(MaterialES20* material, CameraNodeES20* camera) override
    {
        DepthIdPassEffectES20::Apply(material, camera);
        glEnable(GL_BLEND);
        // The shader of identifiers writes no opacity.
        glBlendColor(0.0f, 0.0f, 0.0f, color.a);
        glBlendFunc(GL_CONSTANT_ALPHA, GL_ONE_MINUS_CONSTANT_ALPHA);
    }

    void Remove() override
    {
        glDisable(GL_BLEND);
        glBlendColor(0.0f, 0.0f, 0.0f, 0.0f);
    }

    void BindMeshUniforms(MeshNode* node) override
    {
        DepthIdPassEffectES20::BindMeshUniforms(node);
        Set(UniformIdentifier, color.r, color.g, color.b, 1.0f);
    }
};

HighlightRenderer::Highlight::Highlight(MeshNode& of, const Color& laid) : node(of), color(laid)
{
    watch.Watch(of.GetLifetime());
}

HighlightRenderer::HighlightRenderer(TextureLoader* loader, RenderCapabilities* caps) :
    PresentationRenderer(loader, caps), m_material(std::make_unique<NodeMaterial>())
{
}

HighlightRenderer::~HighlightRenderer()
{
    ReleaseEffect();
}

void HighlightRenderer::SetHighlights(Colors colors)
{
    m_colors.clear();
    // A colour is laid at the depth of the node drawn by itself.
    std::vector<const MeshNode*> nodes;
    for (const auto& [node, color] : colors)
    {
        m_colors.emplace_back(*node, color);
        nodes.push_back(node);
    }
    KeepApart(std::move(nodes));
}

void HighlightRenderer::ReleaseEffect()
{
    m_material->Suspend();
    Drop(m_effect);
}

void HighlightRenderer::Suspend()
{
    ReleaseEffect();
    PresentationRenderer::Suspend();
}

void HighlightRenderer::DrawScene(Scene& scene, CameraNode& camera)
{
    if (m_colors.empty())
    {
        PresentationRenderer::DrawScene(scene, camera);
        return;
    }
    // A stage of the host's may delete the camera meanwhile.
    LifetimeWatch watch;
    watch.Watch(camera.GetLifetime());
    PresentationRenderer::DrawScene(scene, camera);
    CameraNodeES20* const cameraData = watch.IsAlive() ? CameraDataOf(&camera) : nullptr;
    if (!cameraData)
    {
        return;
    }
    if (!m_material->GetRenderData())
    {
        m_material->SetRenderData(new MaterialES20(m_material.get(), nullptr, nullptr, nullptr));
    }
    if (!m_effect)
    {
        m_effect = new Effect;
    }
    const bool isDithered = glIsEnabled(GL_DITHER) != GL_FALSE;
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE);
    for (const Highlight& highlight : m_colors)
    {
        if (!highlight.watch.IsAlive())
        {
            continue;
        }
        for (Mesh* mesh : highlight.node.EachMesh())
        {
            if (mesh->Type() != NodeTypeLine && mesh->GetMaterial() && mesh->ReadyToDraw()
                && dynamic_cast<const MeshES20*>(mesh->GetRenderData()))
            {
                Lay(highlight.color, highlight.node, *mesh, *cameraData);
            }
        }
    }
    if (isDithered)
    {
        glEnable(GL_DITHER);
    }
    MeshES20::ResetBufferCache();
}

void HighlightRenderer::Lay(const Color& color, MeshNode& node, Mesh& mesh, CameraNodeES20& camera)
{
    const Material& own = *mesh.GetMaterial();
    m_effect->color = color;
    m_material->flags = (own.GetFlags() & kKeptFlags) | MaterialFlagPolygonOffset;
    m_material->pointSize = own.pointSize;
    // As deep as the surface, and a little nearer: the two are drawn by different programs.
    // The room for lines moves depth only, not what is seen.
    DepthOffset offset = DepthRank::OffsetOf(own);
    if (!offset.isOn || DepthRank::HasRoom(offset))
    {
        offset = DepthRank::Steps(DepthRank::Of(offset));
    }
    m_material->polygonOffsetFactor = offset.factor;
    m_material->polygonOffsetUnits = offset.units - 1.0f;
    m_item.assign(1, {&mesh, static_cast<MaterialES20*>(m_material->GetRenderData()), true, &node});
    const EffectInPlace inPlace(m_item, RenderPassDepthId, *m_effect);
    RenderItemList(&camera, m_item, RenderPassDepthId);
}

} // namespace OV::Host::Detail
