#include "orvane_host/present/detail/HighlightRenderer.h"

#include "orvane/imaging/TextureLoader.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/NodeType.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

namespace
{

/// Of a mesh's own material: how it is rasterised.
constexpr unsigned int kKeptFlags = MaterialFlagNoCull | MaterialFlagPoints | MaterialFlagAlwaysPass;

} // namespace

HighlightRenderer::HighlightRenderer(TextureLoader* loader, RenderCapabilities* caps) :
    PresentationRenderer(loader, caps), m_material(std::make_unique<NodeMaterial>())
{
}

HighlightRenderer::~HighlightRenderer()
{
    m_material->Suspend();
}

void HighlightRenderer::Suspend()
{
    m_material->Suspend();
    PresentationRenderer::Suspend();
}

void HighlightRenderer::DrawScene(Scene& scene, CameraNode& camera)
{
    PresentationRenderer::DrawScene(scene, camera);
    CameraNodeES20* const cameraData = m_colors.empty() ? nullptr : CameraDataOf(&camera);
    if (!cameraData)
    {
        return;
    }
    if (!m_material->GetRenderData())
    {
        m_material->SetRenderData(new MaterialES20(m_material.get(), textureLoader, &bufferPool, &effectCache));
    }
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE);
    for (const auto& [node, color] : m_colors)
    {
        for (Mesh* mesh : node->GetMeshes())
        {
            if (mesh->Type() != NodeTypeLine && mesh->GetMaterial() && mesh->GetRenderData() && mesh->ReadyToDraw())
            {
                Lay(color, *node, *mesh, *cameraData);
            }
        }
    }
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
    MeshES20::ResetBufferCache();
}

void HighlightRenderer::Lay(const Color& color, MeshNode& node, Mesh& mesh, CameraNodeES20& camera)
{
    const Material& own = *mesh.GetMaterial();
    m_material->diffuse = color;
    m_material->ambient = color;
    m_material->flags = (own.GetFlags() & kKeptFlags) | MaterialFlagUnlit | MaterialFlagPolygonOffset;
    m_material->pointSize = own.pointSize;
    // As deep as the surface, and a little nearer: the two are drawn by different programs.
    const bool isMoved = (own.GetFlags() & MaterialFlagPolygonOffset) != 0;
    m_material->polygonOffsetFactor = isMoved ? own.polygonOffsetFactor : 0.0f;
    m_material->polygonOffsetUnits = (isMoved ? own.polygonOffsetUnits : 0.0f) - 1.0f;
    m_item.assign(1, {&mesh, static_cast<MaterialES20*>(m_material->GetRenderData()), true, &node});
    RenderItemList(&camera, m_item, RenderPassDefault);
}

} // namespace OV::Host::Detail
