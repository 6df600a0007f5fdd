#include "orvane/renderer/Renderer20.h"

#include "orvane/effects/EffectES20.h"
#include "orvane/base/RenderCapabilities.h"
#include "orvane/base/detail/Walk.h"
#include "orvane/imaging/TextureLoader.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderer/detail/BorrowedVector.h"
#include "orvane/renderer/detail/DataOf.h"
#include "orvane/renderer/detail/FrameState.h"
#include "orvane/scene/AlphaMeshNode.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/Scene.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <utility>

namespace OV
{

namespace
{

/// Room before the lowest and behind the highest thing of a layer.
constexpr float kLayerMargin = 0.1f;

/// The depth range of a layer with its margin. So far out that a margin is lost in rounding, the
/// next float stands for it.
float Below(float nearZ)
{
    return std::min(nearZ - kLayerMargin, std::nextafter(nearZ, -std::numeric_limits<float>::infinity()));
}

float Above(float farZ)
{
    return std::max(farZ + kLayerMargin, std::nextafter(farZ, std::numeric_limits<float>::infinity()));
}

/// How a layer tests depth: things at equal depth show in their order, and nothing is lost at
/// the far plane to rounding. Puts both back.
class LayerDepthScope
{
public:
    LayerDepthScope()
    {
        glGetIntegerv(GL_DEPTH_FUNC, &m_function);
        glDepthFunc(GL_LEQUAL);
        if (GLEW_ARB_depth_clamp)
        {
            m_clamped = glIsEnabled(GL_DEPTH_CLAMP) != GL_FALSE;
            glEnable(GL_DEPTH_CLAMP);
        }
    }

    ~LayerDepthScope()
    {
        if (GLEW_ARB_depth_clamp && !m_clamped)
        {
            glDisable(GL_DEPTH_CLAMP);
        }
        glDepthFunc(static_cast<GLenum>(m_function));
    }

    LayerDepthScope(const LayerDepthScope&) = delete;
    LayerDepthScope& operator=(const LayerDepthScope&) = delete;

private:
    GLint m_function = GL_LESS;
    bool m_clamped = false;
};

CameraNodeES20* CameraDataOf(CameraNode& camera)
{
    if (!camera.GetRenderData())
    {
        camera.SetRenderData(new (std::nothrow) CameraNodeES20(&camera));
    }
    return detail::DataOf<CameraNodeES20>(camera.GetRenderData());
}

} // namespace

Renderer20::Renderer20(TextureLoader* loader, RenderCapabilities* caps) :
    Renderer(loader), capabilities(caps), hudCamera(std::make_unique<CameraNodeES20>(nullptr))
{
}

Renderer20::~Renderer20()
{
    hudCamera.reset();
    Renderer20::ClearOffscreenBuffers();
    if (screenScene)
    {
        ReleaseScreenEffect();
        screenScene.reset();
    }
    extension.reset();
}

void Renderer20::Configure(TextureLoader* loader, RenderCapabilities* caps)
{
    textureLoader = loader;
    capabilities = caps;
    EffectES20::ForgetUniformValues();
}

bool Renderer20::SupportsRenderToTexture()
{
    return true;
}

int Renderer20::GetWidthPx()
{
    return width;
}

int Renderer20::GetHeightPx()
{
    return height;
}

void Renderer20::Resize(int newWidth, int newHeight)
{
    width = newWidth;
    height = newHeight;
    glViewport(0, 0, width, height);
}

void Renderer20::SetOnScreenBuffers(int newWidth, int newHeight, unsigned framebuffer, unsigned renderbuffer,
                                    unsigned depthbuffer, float)
{
    Resize(newWidth, newHeight);
    ClearOffscreenBuffers();
    onScreenFramebuffer = framebuffer;
    onScreenRenderbuffer = renderbuffer;
    onScreenDepthbuffer = depthbuffer;
}

void Renderer20::BeginOverDrawRender()
{
    overDraw = true;
}

void Renderer20::EndRender()
{
    overDraw = false;
}

void Renderer20::BeginRender(bool capture, Color const& color)
{
    clearColor = color;
    if (!Platform::LoadEntryPoints())
    {
        return;
    }
    if (useOnScreenBuffers)
    {
        const bool multisampled = aaMode == AAModeMSAA && msaaBuffersReady && capture;
        glBindFramebuffer(GL_FRAMEBUFFER, multisampled ? msaaFramebuffer : onScreenFramebuffer);
    }
    Detail::SetFrameState();
    RestoreViewport();
    glClearColor(color.r, color.g, color.b, color.a);
    Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    // As Render3D leaves them: a layer drawn first takes them over, and the first frame has to
    // look like all others.
    glEnable(GL_CULL_FACE);
    glBlendEquation(GL_FUNC_ADD);
}

void Renderer20::Render3D(Scene* scene, CameraNode* camera)
{
    if (!scene || !camera || detail::Walk::IsOn(scene, detail::Walk::Draw) || !Platform::LoadEntryPoints())
    {
        return;
    }
    const detail::Walk walk(scene, detail::Walk::Draw);
    const detail::Walk ownWalk(this, detail::Walk::Draw);
    CameraNodeES20* cameraData = CameraDataOf(*camera);
    if (!cameraData)
    {
        return;
    }
    cameraData->UpdateMVP(ToPoints(width), ToPoints(height), false);
    glDisable(GL_BLEND);
    if (overDraw)
    {
        glDepthMask(GL_TRUE);
    }
    else
    {
        Clear(GL_DEPTH_BUFFER_BIT);
    }
    glEnable(GL_CULL_FACE);
    glEnable(GL_DEPTH_TEST);
    glBlendEquation(GL_FUNC_ADD);

    Detail::BorrowedVector<RenderItemES20> items(m_items);
    PrepareWholeMaterials(scene->GetOptimizedMaterials(), cameraData, *items, false);
    if (!walk.IsGone(scene))
    {
        PrepareLineStyles(scene->GetLineStyles(), cameraData, *items, false);
    }
    if (!walk.IsGone(scene))
    {
        PrepareWholeMaterials(scene->GetAlphaMaterials(), cameraData, *items, false);
    }
    DrawItems(cameraData, *items);
}

void Renderer20::Render2D(Scene2D* layer)
{
    if (!layer || detail::Walk::IsOn(layer, detail::Walk::Draw) || !Platform::LoadEntryPoints())
    {
        return;
    }
    const detail::Walk walk(layer, detail::Walk::Draw);
    const detail::Walk ownWalk(this, detail::Walk::Draw);
    glDisable(GL_BLEND);
    Clear(GL_DEPTH_BUFFER_BIT);
    hudCamera->UpdateHudMVP(ToPoints(width), ToPoints(height), Below(layer->nearZ), Above(layer->farZ));
    glEnable(GL_DEPTH_TEST);
    const LayerDepthScope depthScope;

    Detail::BorrowedVector<RenderItemES20> items(m_items);
    PrepareOptimizedMaterials(layer->GetOptimizedMaterials(), hudCamera.get(), *items, false);
    if (!walk.IsGone(layer))
    {
        PrepareLineStyles(layer->GetLineStyles(), hudCamera.get(), *items, false);
    }
    if (!walk.IsGone(layer))
    {
        ListZOrdered(*layer, *items, walk);
    }
    DrawItems(hudCamera.get(), *items);
}

void Renderer20::ListZOrdered(Scene& layer, std::vector<RenderItemES20>& items, const detail::Walk& walk)
{
    // Copies: what a scene does with its items when a host changes them is its own affair.
    Detail::BorrowedVector<AlphaMeshNode> drawItems(m_drawItems);
    for (const AlphaMeshNode* item : layer.GetZOrderedDrawItems())
    {
        (*drawItems).push_back(*item);
    }
    // One by one, so that the order by z holds across materials.
    for (AlphaMeshNode& item : *drawItems)
    {
        if (!walk.IsGone(item.mesh) && !walk.IsGone(item.node))
        {
            PrepareZOrderedMeshNode(&item, hudCamera.get(), items);
        }
    }
}

void Renderer20::DrawItems(CameraNodeES20* cameraData, std::vector<RenderItemES20> const& items)
{
    bufferPool.GenerateVBOs();
    RenderItemList(cameraData, items, RenderPassDefault);
    MeshES20::ResetBufferCache();
    if (!items.empty())
    {
        // Lines leave it on.
        glDisable(GL_BLEND);
    }
}

void Renderer20::RestoreViewport() const
{
    if (width <= 0 || height <= 0)
    {
        return;
    }
    GLint viewport[4] = {0, 0, 0, 0};
    glGetIntegerv(GL_VIEWPORT, viewport);
    if (viewport[0] != 0 || viewport[1] != 0 || viewport[2] != width || viewport[3] != height)
    {
        glViewport(0, 0, width, height);
    }
}

void Renderer20::Clear(unsigned int mask)
{
    glDepthMask(GL_TRUE);
    glClear(mask);
}

int Renderer20::ToPoints(int pixels) const
{
    return Scaled(pixels, 1.0f / UsableRatio());
}

float Renderer20::UsableRatio() const
{
    return std::isfinite(devicePixelRatio) && devicePixelRatio > 0.0f ? devicePixelRatio : 1.0f;
}

int Renderer20::Scaled(int number, float factor)
{
    const float scaled = static_cast<float>(number) * factor;
    constexpr float end = 2147483648.0f;
    return scaled > -end && scaled < end ? static_cast<int>(scaled) : number;
}

bool Renderer20::PutOff(void (*later)(Renderer20&))
{
    if (!detail::Walk::IsOn(this, detail::Walk::Draw))
    {
        return false;
    }
    detail::Walk::Postpone(static_cast<Renderer*>(this), nullptr, [this, later] { later(*this); });
    return true;
}

void Renderer20::Suspend()
{
    const bool isWithin = detail::Walk::IsOn(this, detail::Walk::Suspend);
    if (isWithin || PutOff([](Renderer20& self) { self.Renderer20::Suspend(); }))
    {
        return;
    }
    const detail::Walk walk(this, detail::Walk::Suspend);
    EffectES20::ForgetUniformValues();
    ClearOffscreenBuffers();
    if (screenMesh)
    {
        screenMesh->SetRenderData(nullptr, true);
        screenMeshData = nullptr;
        ReleaseScreenEffect();
    }
    if (textureLoader)
    {
        textureLoader->Suspend();
    }
}

void Renderer20::Resume()
{
    const bool isWithin = detail::Walk::IsOn(this, detail::Walk::Resume);
    if (isWithin || PutOff([](Renderer20& self) { self.Renderer20::Resume(); }))
    {
        return;
    }
    const detail::Walk walk(this, detail::Walk::Resume);
    EffectES20::ForgetUniformValues();
    if (textureLoader)
    {
        textureLoader->Resume();
    }
    if (screenMesh)
    {
        FetchScreenEffect();
        screenMeshData = new MeshES20(screenMesh, &bufferPool);
        screenMesh->SetRenderData(screenMeshData, true);
    }
}

} // namespace OV
