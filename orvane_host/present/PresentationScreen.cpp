#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/PresentationRenderer.h"
#include "orvane_host/present/detail/ConstantColorScope.h"
#include "orvane_host/present/detail/DrawIdKeeper.h"
#include "orvane_host/present/detail/EffectInPlace.h"
#include "orvane_host/present/detail/Effects.h"
#include "orvane_host/present/detail/OcclusionView.h"
#include "orvane_host/present/detail/SampleShadingScope.h"
#include "orvane_host/present/detail/ScreenBuffer.h"
#include "orvane/effects/DepthIdPassEffectES20.h"
#include "orvane/effects/LineFilterEffectES20.h"
#include "orvane/effects/SSAOEffectES20.h"
#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MaterialES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <array>
#include <cmath>

namespace OV::Host
{

namespace
{

/// The attribute that identifiers come from, where they are those of vertices.
constexpr GLuint kIdentifierAttribute = 1;

GLint Query(GLenum name)
{
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

/// What surfaces are drawn with, where none is blended.
void PrepareSurfaces()
{
    glDisable(GL_BLEND);
    glDepthMask(GL_TRUE);
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
}

bool DrawsPoints(const MeshStyleES20& style)
{
    const auto* const data = dynamic_cast<const MaterialES20*>(&style);
    return data && (data->GetMaterial()->GetFlags() & MaterialFlagPoints) != 0;
}

Detail::ScreenBuffer& MadeOnce(std::unique_ptr<Detail::ScreenBuffer>& buffer, eRenderTargetProfile profile)
{
    if (!buffer)
    {
        buffer = std::make_unique<Detail::ScreenBuffer>(profile);
    }
    return *buffer;
}

/// What drawing over the screen changes, for the length of a scope: from the state that the
/// passes over a scene leave to the same, without blending. The alpha of the picture stays: who
/// lays it over something else wants what is drawn over it as opaque as what it is on.
class OverScreenScope
{
public:
    OverScreenScope()
    {
        glDisable(GL_CULL_FACE);
        glDisable(GL_BLEND);
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_FALSE);
    }

    ~OverScreenScope()
    {
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        glEnable(GL_CULL_FACE);
    }

    OverScreenScope(const OverScreenScope&) = delete;
    OverScreenScope& operator=(const OverScreenScope&) = delete;
};

/// Lets only what has something of the scene in it be drawn over, sample by sample, for the
/// length of a scope. A background, which lies at the far plane, keeps its colour. The depth test
/// is on, as the passes over a scene leave it.
class OverSceneScope
{
public:
    /// @param depthRange to have at the end.
    explicit OverSceneScope(const std::array<float, 2>& depthRange) : m_range(depthRange)
    {
        glGetIntegerv(GL_DEPTH_FUNC, &m_function);
        glDepthMask(GL_FALSE);
        glDepthFunc(GL_GREATER);
        glDepthRange(1.0, 1.0);
    }

    ~OverSceneScope()
    {
        glDepthRange(m_range[0], m_range[1]);
        glDepthFunc(static_cast<GLenum>(m_function));
        glDepthMask(GL_TRUE);
    }

    OverSceneScope(const OverSceneScope&) = delete;
    OverSceneScope& operator=(const OverSceneScope&) = delete;

private:
    GLint m_function = GL_LESS;
    std::array<float, 2> m_range;
};

} // namespace

void PresentationRenderer::BeginCapture()
{
    SceneRenderer::BeginCapture();
    m_capturing = offscreenFramebuffer != 0 && !UseMSAA();
}

void PresentationRenderer::ApplyCapture()
{
    m_capturing = false;
    SceneRenderer::ApplyCapture();
}

void PresentationRenderer::Render2D(Scene2D* layer)
{
    const float ratio = devicePixelRatio;
    devicePixelRatio = m_layerRatio.value_or(ratio);
    PrepareLines(false);
    SceneRenderer::Render2D(layer);
    ReleaseLines();
    devicePixelRatio = ratio;
}

PresentationRenderer::Size PresentationRenderer::TargetSize() const
{
    return m_capturing ? Size{offscreenWidth, offscreenHeight} : Size{width, height};
}

bool PresentationRenderer::HasScreenStages() const
{
    return !overDraw && (m_edges || m_identifiersShown || OverlaysLines() || m_occlusionShown);
}

bool PresentationRenderer::NeedsIdentifiers(Identity identity) const
{
    const bool forEdges = m_edges || m_identifiersShown;
    return OverlaysLines() || (forEdges && identity == m_edges.value_or(EdgeLook()).identity);
}

Detail::ScreenBuffer& PresentationRenderer::IdentifiersOf(Identity identity)
{
    return MadeOnce(m_identifiers[static_cast<int>(identity)], RenderTargetProfileColorDepth);
}

bool PresentationRenderer::PrepareScreenMesh()
{
    if (!screenMesh)
    {
        CreateScreenMesh();
    }
    return screenMeshData;
}

void PresentationRenderer::ListSurfaces(bool withPoints)
{
    m_surfaces.clear();
    const MeshStyleES20* last = nullptr;
    bool identified = false;
    for (std::size_t i = 0; i < m_items.size(); ++i)
    {
        if (i == m_firstLine)
        {
            i = m_firstAlpha;
        }
        if (i == m_items.size())
        {
            break;
        }
        const RenderItemES20& item = m_items[i];
        if (item.style != last)
        {
            last = item.style;
            identified = item.style->GetShader(RenderPassDepthId) && (withPoints || !DrawsPoints(*item.style));
        }
        if (identified)
        {
            m_surfaces.push_back(item);
        }
    }
}

void PresentationRenderer::DrawSurfaces(Scene& scene, CameraNode& camera, MaterialEffectES20& effect)
{
    CameraNodeES20* const cameraData = PrepareCamera(camera);
    if (!cameraData)
    {
        return;
    }
    Detail::DrawIdKeeper drawIds(scene);
    ListItems(scene, cameraData);
    ListSurfaces(true);
    drawIds.Keep(m_surfaces);
    bufferPool.GenerateVBOs();
    PrepareSurfaces();
    const Detail::EffectInPlace inPlace(m_surfaces, RenderPassDepthIdSecond, effect);
    RenderItemList(cameraData, m_surfaces, RenderPassDepthIdSecond);
    MeshES20::ResetBufferCache();
}

Detail::ScreenBuffer* PresentationRenderer::OcclusionDepth() const
{
    if (!m_occlusionShown)
    {
        return nullptr;
    }
    // Depth comes with identifiers, but lines need theirs as it is.
    for (const Identity identity : {Identity::Group, Identity::Object})
    {
        if (NeedsIdentifiers(identity))
        {
            return m_identifiers[static_cast<int>(identity)].get();
        }
    }
    return m_depth.get();
}

bool PresentationRenderer::DrawOffscreen(const CameraNode& camera, CameraNodeES20* cameraData)
{
    if (!Detail::FetchOnce(m_identifierEffect, effectCache, EffectCache::DepthIdPass))
    {
        return false;
    }
    // Of points the shader of identifiers knows no size.
    ListSurfaces(false);
    m_screen.framebuffer = static_cast<unsigned int>(Query(GL_FRAMEBUFFER_BINDING));
    m_screen.multisampled = Query(GL_SAMPLE_BUFFERS) != 0;
    glGetFloatv(GL_DEPTH_RANGE, m_screen.depthRange.data());
    m_screen.depthShare = Detail::OcclusionView(camera).depthShare;
    const bool dithered = glIsEnabled(GL_DITHER);
    PrepareSurfaces();
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    bool drawn = true;
    for (const Identity identity : {Identity::Object, Identity::Group})
    {
        drawn = drawn && (!NeedsIdentifiers(identity) || DrawIdentifiers(cameraData, identity));
    }
    const bool hasDepth = NeedsIdentifiers(Identity::Object) || NeedsIdentifiers(Identity::Group);
    drawn = drawn && (!m_occlusionShown || hasDepth || DrawDepth(cameraData));
    glClearColor(clearColor.r, clearColor.g, clearColor.b, clearColor.a);
    const Size target = TargetSize();
    glViewport(0, 0, target.width, target.height);
    if (dithered)
    {
        glEnable(GL_DITHER);
    }
    return drawn;
}

bool PresentationRenderer::DrawIdentifiers(CameraNodeES20* cameraData, Identity identity)
{
    const Size target = TargetSize();
    // Samples of a pixel that look up four of these give edges as smooth as the surfaces.
    bool finer = m_edges && target != m_refusedFiner && m_screen.multisampled && Detail::SampleShadingScope::IsSupported();
    Detail::ScreenBuffer& buffer = IdentifiersOf(identity);
    if (finer && !buffer.Resize(2 * target.width, 2 * target.height))
    {
        m_refusedFiner = target;
        finer = false;
    }
    if (!finer && !buffer.Resize(target.width, target.height))
    {
        return false;
    }
    m_shadesSamples = finer && Detail::SampleShadingScope::IsOfUse();
    m_identifierEffect->SetIdMode(identity == Identity::Group ? 1 : 0);
    const Detail::ConstantColorScope plain(kIdentifierAttribute, identity == Identity::Object);
    DrawInto(buffer, GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT, cameraData);
    return true;
}

bool PresentationRenderer::DrawDepth(CameraNodeES20* cameraData)
{
    const Size target = TargetSize();
    Detail::ScreenBuffer& buffer = MadeOnce(m_depth, RenderTargetProfileDepth);
    if (!buffer.Resize(target.width, target.height))
    {
        return false;
    }
    m_identifierEffect->SetIdMode(1);
    DrawInto(buffer, GL_DEPTH_BUFFER_BIT, cameraData);
    return true;
}

void PresentationRenderer::DrawInto(Detail::ScreenBuffer& buffer, unsigned int clearMask, CameraNodeES20* cameraData)
{
    const bool forOcclusion = OcclusionDepth() == &buffer;
    // The depth of a plane is linear on the screen: without the steps between pixels no pattern
    // comes out on planes.
    buffer.SmoothDepth(forOcclusion);
    if (forOcclusion)
    {
        glDepthRange(0.0, m_screen.depthShare);
    }
    buffer.GetTarget().BeginCapture(clearMask);
    RenderItemList(cameraData, m_surfaces, RenderPassDepthId);
    buffer.GetTarget().EndCapture();
    if (forOcclusion)
    {
        glDepthRange(m_screen.depthRange[0], m_screen.depthRange[1]);
    }
}

void PresentationRenderer::PrepareLines(bool hasIdentifiers)
{
    if (!Detail::FetchOnce(m_lineEffect, effectCache, EffectCache::SolidLine))
    {
        return;
    }
    // The effect widens lines by the square.
    m_lineEffect->SetPixelRatio(std::sqrt(static_cast<float>(TargetSize().width) / static_cast<float>(width)));
    if (OverlaysLines() && hasIdentifiers)
    {
        m_lineEffect->SetIdTexture(IdentifiersOf(Identity::Object).GetTarget().GetColorTexture());
        m_lineEffect->SetGroupTexture(IdentifiersOf(Identity::Group).GetTarget().GetColorTexture());
        m_lineEffect->SetDepthTexture(IdentifiersOf(Identity::Object).GetTarget().GetDepthTexture());
        m_usedUnits = {true, true, true};
    }
}

void PresentationRenderer::ReleaseLines()
{
    if (m_lineEffect)
    {
        m_lineEffect->SetPixelRatio(1.0f);
        m_lineEffect->SetIdTexture(0);
        m_lineEffect->SetGroupTexture(0);
        m_lineEffect->SetDepthTexture(0);
    }
}

void PresentationRenderer::ReleaseTextures()
{
    // The first unit comes last and stays active.
    for (const unsigned int unit : {2u, 1u, 0u})
    {
        if (m_usedUnits[unit] || unit == 0)
        {
            glActiveTexture(GL_TEXTURE0 + unit);
        }
        if (m_usedUnits[unit])
        {
            glBindTexture(GL_TEXTURE_2D, 0);
            m_usedUnits[unit] = false;
        }
    }
}

void PresentationRenderer::DrawOverScreen(MaterialEffectES20& effect)
{
    effect.Apply(nullptr, nullptr);
    screenMeshData->Render(&effect, screenMesh->GetNodes(), false);
    effect.Remove();
}

void PresentationRenderer::DrawOcclusion(const CameraNode& camera)
{
    Detail::ScreenBuffer* const depth = OcclusionDepth();
    if (!depth || !Detail::FetchOnce(m_occlusionEffect, effectCache, EffectCache::SSAO))
    {
        return;
    }
    Detail::ScreenBuffer& picture = MadeOnce(m_picture, RenderTargetProfileColor);
    const Size target = TargetSize();
    if (!picture.Resize(target.width, target.height))
    {
        return;
    }
    picture.CopyFrom(m_screen.framebuffer, m_screen.multisampled);
    const Detail::OcclusionView view(camera);
    m_occlusionEffect->SetNearFar(view.nearDistance, view.farDistance);
    m_occlusionEffect->SetDimensions(width, height);
    m_occlusionEffect->SetDepthTexture(static_cast<int>(depth->GetTarget().GetDepthTexture()));
    m_occlusionEffect->SetRenderTexture(static_cast<int>(picture.GetTarget().GetColorTexture()));
    const OverScreenScope overScreen;
    const OverSceneScope overScene(m_screen.depthRange);
    DrawOverScreen(*m_occlusionEffect);
    m_usedUnits = {true, true, m_usedUnits[2]};
}

void PresentationRenderer::DrawEdges()
{
    if ((!m_edges && !m_identifiersShown)
        || !Detail::FetchOnce(m_edgeEffect, effectCache, EffectCache::LineFilter))
    {
        return;
    }
    const EdgeLook look = m_edges.value_or(EdgeLook());
    m_edgeEffect->SetOverlayOnly(true);
    m_edgeEffect->SetShowIds(m_identifiersShown);
    m_edgeEffect->EdgeWeight(look.weight);
    m_edgeEffect->SetEdgeColor(look.color);
    // Lines are as wide as a pixel of the screen, however fine the buffers are.
    m_edgeEffect->SetDimensions(width, height);
    m_edgeEffect->SetIdTexture(static_cast<int>(IdentifiersOf(look.identity).GetTarget().GetColorTexture()));
    const OverScreenScope overScreen;
    const Detail::SampleShadingScope smooth(m_shadesSamples);
    glDisable(GL_DEPTH_TEST);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    DrawOverScreen(*m_edgeEffect);
    glDisable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
    // It reads the identifiers alone.
    m_usedUnits = {false, false, true};
}

} // namespace OV::Host
