#include "orvane_host/present/PresentationRenderer.h"

#include "orvane_host/present/HatchTextures.h"
#include "orvane_host/present/detail/ConstantColorScope.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/ObjectHatchEffect.h"
#include "orvane_host/present/detail/SampleShadingScope.h"
#include "orvane_host/present/detail/ScreenBuffer.h"
#include "orvane/effects/AdvancedMaterialBaseES20.h"
#include "orvane/effects/DepthIdPassEffectES20.h"
#include "orvane/effects/LineFilterEffectES20.h"
#include "orvane/effects/SSAOEffectES20.h"
#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/imaging/TextureLoader.h"
#include "orvane/math/Transform.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderdata/MeshStyleES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Scene.h"

#include <GL/gl.h>
#include <glm/geometric.hpp>
#include <glm/vec3.hpp>

#include <algorithm>
#include <cmath>

namespace OV::Host
{

namespace
{

/// The attribute that the look reads colours from.
constexpr GLuint kColorAttribute = 2;

/// Whether there are cuts that gain by shading each sample.
bool SmoothsCuts(const CameraNode& camera)
{
    const std::vector<glm::vec3>& normals = EffectES20::GetClipPlaneNormals();
    if (normals.empty() || camera.GetProjection() != CameraNode::Perspective
        || Detail::SampleShadingScope::IsExactInPerspective())
    {
        return !normals.empty();
    }
    const Vector place = camera.GetGlobal().GetPosition();
    const glm::vec3 eye(place.x, place.y, place.z);
    for (std::size_t i = 0; i < normals.size(); ++i)
    {
        // What is off grows with the distance of the plane from the origin, against that from the
        // eye. Up to here it is a pixel or two, and better than dots beside the cut.
        constexpr float most = 4.0f;
        const glm::vec3& position = EffectES20::GetClipPlanePositions()[i];
        if (std::abs(glm::dot(normals[i], position)) > most * std::abs(glm::dot(normals[i], eye - position)))
        {
            return false;
        }
    }
    return true;
}

} // namespace

PresentationRenderer::PresentationRenderer(TextureLoader* loader, RenderCapabilities* caps) :
    SceneRenderer(loader, caps)
{
}

PresentationRenderer::~PresentationRenderer()
{
    ReleaseHeld();
}

bool PresentationRenderer::ParseLook(const std::string& name, Look& look)
{
    return Host::ParseLook(name, look);
}

void PresentationRenderer::SetStrokeDensity(int density)
{
    if (m_strokeDensity != density)
    {
        m_strokeDensity = density;
        m_hatches.reset();
    }
}

void PresentationRenderer::EditInContext(std::vector<std::pair<std::uint64_t, std::uint64_t>> path)
{
    m_editPath = std::move(path);
}

void PresentationRenderer::LeaveEdit()
{
    m_editPath.reset();
}

void PresentationRenderer::Suspend()
{
    ReleaseHeld();
    SceneRenderer::Suspend();
}

void PresentationRenderer::ReleaseHeld()
{
    Detail::Drop(m_hatchEffect);
    Detail::Drop(m_advanced);
    Detail::Drop(m_phong);
    Detail::Drop(m_identifierEffect);
    Detail::Drop(m_edgeEffect);
    Detail::Drop(m_occlusionEffect);
    Detail::Drop(m_lineEffect);
    m_hatches.reset();
    for (std::unique_ptr<Detail::ScreenBuffer>& identifiers : m_identifiers)
    {
        identifiers.reset();
    }
    m_depth.reset();
    m_picture.reset();
    m_refusedFiner = {0, 0};
}

RenderPass PresentationRenderer::PassOfLook() const
{
    switch (m_look)
    {
    case Look::Advanced:
    case Look::Phong:
        return RenderPassAdvanced;
    case Look::Crosshatch:
        return RenderPassCrosshatch;
    case Look::Monotone:
        return RenderPassMonotone;
    case Look::VertexColor:
        return RenderPassVertexColor;
    case Look::Basic:
        break;
    }
    return RenderPassDefault;
}

CameraNodeES20* PresentationRenderer::PrepareCamera(CameraNode& camera)
{
    CameraNodeES20* const cameraData = CameraDataOf(&camera);
    if (cameraData)
    {
        const float pointsPerPixel = GetPxToPtScale();
        cameraData->UpdateMVP(static_cast<int>(static_cast<float>(width) * pointsPerPixel),
                              static_cast<int>(static_cast<float>(height) * pointsPerPixel), false);
    }
    return cameraData;
}

void PresentationRenderer::DrawScene(Scene& scene, CameraNode& camera)
{
    CameraNodeES20* const cameraData = PrepareCamera(camera);
    if (!cameraData)
    {
        return;
    }
    PrepareLook();
    ListItems(scene, cameraData);
    if (m_look == Look::Crosshatch)
    {
        UseHatchEffect(scene);
    }
    const bool hasStages = HasScreenStages() && PrepareScreenMesh();
    bufferPool.GenerateVBOs();
    const bool hasPictures = hasStages && DrawOffscreen(camera, cameraData);
    BeginScene();
    PrepareLines(hasPictures);
    DrawLook(cameraData);
    ReleaseLines();
    if (hasPictures)
    {
        DrawOcclusion(camera);
        DrawEdges();
        ReleaseTextures();
    }
    MeshES20::ResetBufferCache();
}

void PresentationRenderer::DrawLook(CameraNodeES20* cameraData)
{
    const Detail::SampleShadingScope sampleShading(SmoothsCuts(*cameraData->GetCameraNode())
                                                   && Detail::SampleShadingScope::IsOfUse());
    const Detail::ConstantColorScope plainColors(kColorAttribute, m_look == Look::VertexColor);
    if (m_surfacesShown)
    {
        DrawItems(cameraData, m_items, PassOfLook());
        return;
    }
    m_lines.assign(m_items.begin() + static_cast<std::ptrdiff_t>(m_firstLine),
                   m_items.begin() + static_cast<std::ptrdiff_t>(m_firstAlpha));
    DrawItems(cameraData, m_lines, RenderPassDefault);
}

void PresentationRenderer::PrepareLook()
{
    switch (m_look)
    {
    case Look::Advanced:
        EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterial);
        PrepareEdit();
        break;
    case Look::Phong:
        EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterialPhong);
        PrepareEdit();
        break;
    case Look::Crosshatch:
        PrepareHatches();
        break;
    case Look::Basic:
    case Look::Monotone:
    case Look::VertexColor:
        break;
    }
}

void PresentationRenderer::PrepareHatches()
{
    if (!m_hatchEffect)
    {
        m_hatchEffect = new Detail::ObjectHatchEffect;
    }
    if (m_hatches || !textureLoader)
    {
        return;
    }
    m_hatches = std::make_unique<HatchTextures>(*textureLoader, m_strokeDensity);
    for (int tone = 0; tone < HatchTextures::Tones; ++tone)
    {
        m_hatchEffect->SetHatchTexture(tone, m_hatches->GetTexture(tone));
    }
}

void PresentationRenderer::UseHatchEffect(Scene& scene)
{
    for (const auto* list : {&scene.GetOptimizedMaterials(), &scene.GetAlphaMaterials()})
    {
        for (Material* material : *list)
        {
            auto* const data = dynamic_cast<MaterialES20*>(material->GetRenderData());
            EffectES20** const slot = data ? &data->passEffects[RenderPassCrosshatch] : nullptr;
            // A kind of material that isn't drawn in this pass has no effect to replace.
            if (slot && *slot && *slot != m_hatchEffect)
            {
                (*slot)->Release();
                *slot = m_hatchEffect;
                m_hatchEffect->AddReference();
            }
        }
    }
}

void PresentationRenderer::PrepareEdit()
{
    const bool soft = m_look == Look::Phong;
    AdvancedMaterialBaseES20* const effect = Detail::FetchOnce(
        soft ? m_phong : m_advanced, effectCache,
        soft ? EffectCache::AdvancedMaterialPhong : EffectCache::AdvancedMaterial);
    if (!effect)
    {
        return;
    }
    if (m_editPath)
    {
        effect->SetEditInContextPath(*m_editPath);
    }
    else
    {
        effect->ClearEditInContextPath();
    }
}

void PresentationRenderer::BeginScene() const
{
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
    if (!overDraw)
    {
        glClear(GL_DEPTH_BUFFER_BIT);
    }
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
}

void PresentationRenderer::ListItems(Scene& scene, CameraNodeES20* cameraData)
{
    m_items.clear();
    for (Material* material : scene.GetOptimizedMaterials())
    {
        PrepareOptimizedMaterial(material, cameraData, m_items, true);
    }
    m_firstLine = m_items.size();
    if (m_linesShown)
    {
        for (LineStyle* lineStyle : scene.GetLineStyles())
        {
            PrepareLineStyle(lineStyle, cameraData, m_items, true);
        }
    }
    m_firstAlpha = m_items.size();
    for (Material* material : scene.GetAlphaMaterials())
    {
        PrepareOptimizedMaterial(material, cameraData, m_items, true);
    }
}

void PresentationRenderer::DrawItems(CameraNodeES20* cameraData, const std::vector<RenderItemES20>& items,
                                     RenderPass pass)
{
    const auto passOf = [pass](const RenderItemES20& item) {
        return item.style->GetShader(pass) ? pass : RenderPassDefault;
    };
    auto begin = items.begin();
    while (begin != items.end())
    {
        const RenderPass own = passOf(*begin);
        const auto end = std::find_if(begin, items.end(),
                                      [&](const RenderItemES20& item) { return passOf(item) != own; });
        m_run.assign(begin, end);
        RenderItemList(cameraData, m_run, own);
        begin = end;
    }
}

} // namespace OV::Host
