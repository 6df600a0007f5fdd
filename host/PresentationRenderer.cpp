#define GL_GLEXT_PROTOTYPES

#include "host/PresentationRenderer.h"

#include "host/HatchTextures.h"
#include "host/detail/ObjectHatchEffect.h"
#include "orvane/effects/AdvancedMaterialBaseES20.h"
#include "orvane/imaging/TextureLoader.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderdata/MeshStyleES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Scene.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace OV::Host
{

namespace
{

struct NamedLook
{
    const char* name;
    Look look;
};

constexpr NamedLook kLooks[] = {
    {"basic", Look::Basic},           {"advanced", Look::Advanced}, {"phong", Look::Phong},
    {"crosshatch", Look::Crosshatch}, {"monotone", Look::Monotone}, {"vertex-color", Look::VertexColor},
};

/// The attribute that the look reads colours from, where a mesh has them.
constexpr GLuint kColorAttribute = 2;

/// What a mesh without colours has instead, for the length of a scope.
class PlainColorScope
{
public:
    explicit PlainColorScope(bool wanted) : m_wanted(wanted)
    {
        if (m_wanted)
        {
            glVertexAttrib4f(kColorAttribute, 1.0f, 1.0f, 1.0f, 1.0f);
        }
    }

    ~PlainColorScope()
    {
        if (m_wanted)
        {
            glVertexAttrib4f(kColorAttribute, 0.0f, 0.0f, 0.0f, 1.0f);
        }
    }

    PlainColorScope(const PlainColorScope&) = delete;
    PlainColorScope& operator=(const PlainColorScope&) = delete;

private:
    bool m_wanted;
};

/// Shades every sample of a multisampled picture for the length of a scope, where GL can.
///
/// Shaded once a pixel, a face that a pixel's centre misses is looked at beyond its rim: what
/// seen from its edge runs through a clip plane leaves dots on the wrong side. And it is the
/// shader that cuts, so that this is what smooths the rim of a cut.
class SampleShadingScope
{
public:
    explicit SampleShadingScope(bool wanted) : m_on(wanted && IsSupported() && !glIsEnabled(GL_SAMPLE_SHADING))
    {
        if (m_on)
        {
            glEnable(GL_SAMPLE_SHADING);
            glMinSampleShading(1.0f);
        }
    }

    ~SampleShadingScope()
    {
        if (m_on)
        {
            glMinSampleShading(0.0f);
            glDisable(GL_SAMPLE_SHADING);
        }
    }

    SampleShadingScope(const SampleShadingScope&) = delete;
    SampleShadingScope& operator=(const SampleShadingScope&) = delete;

private:
    static bool IsSupported()
    {
        const auto* const names = reinterpret_cast<const char*>(glGetString(GL_EXTENSIONS));
        return names && std::strstr(names, "GL_ARB_sample_shading");
    }

    bool m_on;
};

template <class Effect>
Effect* Fetch(EffectCache& cache, EffectCache::EffectType type)
{
    EffectES20* const effect = cache.GetEffect(type);
    auto* const wanted = dynamic_cast<Effect*>(effect);
    if (effect && !wanted)
    {
        effect->Release();
    }
    return wanted;
}

template <class Effect>
void Drop(Effect*& effect)
{
    if (effect)
    {
        effect->Release();
        effect = nullptr;
    }
}

} // namespace

PresentationRenderer::PresentationRenderer(TextureLoader* loader, RenderCapabilities* caps) :
    SceneRenderer(loader, caps)
{
}

PresentationRenderer::~PresentationRenderer()
{
    ReleaseEffects();
}

bool PresentationRenderer::ParseLook(const std::string& name, Look& look)
{
    const auto found = std::find_if(std::begin(kLooks), std::end(kLooks),
                                    [&](const NamedLook& candidate) { return candidate.name == name; });
    if (found == std::end(kLooks))
    {
        return false;
    }
    look = found->look;
    return true;
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
    ReleaseEffects();
    SceneRenderer::Suspend();
}

void PresentationRenderer::ReleaseEffects()
{
    Drop(m_hatchEffect);
    Drop(m_advanced);
    Drop(m_phong);
    m_hatches.reset();
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

void PresentationRenderer::DrawScene(Scene& scene, CameraNode& camera)
{
    CameraNodeES20* const cameraData = CameraDataOf(&camera);
    if (!cameraData)
    {
        return;
    }
    const float pointsPerPixel = GetPxToPtScale();
    cameraData->UpdateMVP(static_cast<int>(static_cast<float>(width) * pointsPerPixel),
                          static_cast<int>(static_cast<float>(height) * pointsPerPixel), false);
    PrepareLook();
    BeginScene();
    ListItems(scene, cameraData);
    if (m_look == Look::Crosshatch)
    {
        UseHatchEffect(scene);
    }
    bufferPool.GenerateVBOs();
    const SampleShadingScope sampleShading(!EffectES20::GetClipPlaneNormals().empty());
    const PlainColorScope plainColors(m_look == Look::VertexColor);
    DrawItems(cameraData, PassOfLook());
    MeshES20::ResetBufferCache();
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
    m_hatches = std::make_unique<HatchTextures>(*textureLoader);
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
    AdvancedMaterialBaseES20*& effect = m_look == Look::Phong ? m_phong : m_advanced;
    if (!effect)
    {
        effect = Fetch<AdvancedMaterialBaseES20>(effectCache, m_look == Look::Phong ? EffectCache::AdvancedMaterialPhong
                                                                                    : EffectCache::AdvancedMaterial);
    }
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
    for (LineStyle* lineStyle : scene.GetLineStyles())
    {
        PrepareLineStyle(lineStyle, cameraData, m_items, true);
    }
    for (Material* material : scene.GetAlphaMaterials())
    {
        PrepareOptimizedMaterial(material, cameraData, m_items, true);
    }
}

void PresentationRenderer::DrawItems(CameraNodeES20* cameraData, RenderPass pass)
{
    const auto passOf = [pass](const RenderItemES20& item) {
        return item.style->GetShader(pass) ? pass : RenderPassDefault;
    };
    auto begin = m_items.begin();
    while (begin != m_items.end())
    {
        const RenderPass own = passOf(*begin);
        const auto end = std::find_if(begin, m_items.end(),
                                      [&](const RenderItemES20& item) { return passOf(item) != own; });
        m_run.assign(begin, end);
        RenderItemList(cameraData, m_run, own);
        begin = end;
    }
}

} // namespace OV::Host
