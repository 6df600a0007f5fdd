#include "orvane/renderer/Renderer20.h"

#include "orvane/effects/BaseAAES20.h"
#include "orvane/base/RenderCapabilities.h"
#include "orvane/math/Transform.h"
#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/platform/detail/PixelTransferScope.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderer/detail/ScreenQuad.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/Scene.h"

#include <GL/glew.h>

#include <utility>

namespace OV
{

namespace
{

/// A ratio of at most this much is no supersampling.
constexpr float kPlainRatio = 1.0f;
constexpr float kSupersamplingRatio = 2.0f;

unsigned int CurrentBinding(GLenum query)
{
    GLint name = 0;
    glGetIntegerv(query, &name);
    return static_cast<unsigned int>(name);
}

/// Generates a texture for the capture and leaves it bound.
unsigned int MakeTexture(GLint minFilter, GLint magFilter)
{
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, minFilter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, magFilter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    return texture;
}

/// Generates a renderbuffer and leaves it bound.
unsigned int MakeRenderbuffer()
{
    GLuint renderbuffer = 0;
    glGenRenderbuffers(1, &renderbuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
    return renderbuffer;
}

void AttachTexture(GLenum attachment, unsigned int texture)
{
    glFramebufferTexture2D(GL_FRAMEBUFFER, attachment, GL_TEXTURE_2D, texture, 0);
}

void AttachRenderbuffer(GLenum attachment, unsigned int renderbuffer)
{
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, attachment, GL_RENDERBUFFER, renderbuffer);
}

bool IsComplete()
{
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

} // namespace

bool Renderer20::SetAAMode(AAMode mode)
{
    if (mode == aaMode)
    {
        return false;
    }
    m_nextAAMode = mode;
    if (PutOff([](Renderer20& self) { self.SetAAMode(self.m_nextAAMode); }))
    {
        return true;
    }
    aaMode = mode;
    switch (mode)
    {
    case AAModeNone:
    case AAModeMSAA:
    case AAModeFXAA:
        devicePixelRatio = kPlainRatio;
        break;
    case AAModeSupersampling:
        if (devicePixelRatio <= kPlainRatio)
        {
            devicePixelRatio = kSupersamplingRatio;
        }
        break;
    }
    Suspend();
    Resume();
    return true;
}

void Renderer20::BeginCapture()
{
    if (aaMode == AAModeMSAA || !Platform::LoadEntryPoints())
    {
        return;
    }
    if (offscreenFramebuffer == 0)
    {
        SetupAntialiasBuffers();
    }
    if (offscreenFramebuffer == 0)
    {
        // None is to be had: what follows goes to the screen, as without a capture.
        return;
    }
    if (!screenMesh || !screenMeshData)
    {
        CreateScreenMesh();
    }
    glBindFramebuffer(GL_FRAMEBUFFER, offscreenFramebuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, offscreenColorRenderbuffer);
    glViewport(0, 0, offscreenWidth, offscreenHeight);
    Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

void Renderer20::EndCapture() {}

void Renderer20::ApplyCapture()
{
    if (aaMode == AAModeMSAA || !Platform::LoadEntryPoints())
    {
        return;
    }
    glBindFramebuffer(GL_FRAMEBUFFER, onScreenFramebuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, onScreenRenderbuffer);
    if (offscreenFramebuffer == 0 || !screenMeshData || !screenEffect)
    {
        glViewport(0, 0, width, height);
        return;
    }
    // A host that draws nothing between BeginCapture and this has not had the quad uploaded.
    if (screenMeshData->vertexBufferId == 0)
    {
        bufferPool.GenerateVBOs();
    }
    if (screenMeshData->vertexBufferId == 0)
    {
        // The upload failed, and a mesh that missed it never gets another: the next capture
        // makes a new one.
        DropScreenMesh();
        glViewport(0, 0, width, height);
        return;
    }
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, offscreenColorTexture);
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glViewport(0, 0, width, height);
    DrawScreenMesh();
    glEnable(GL_CULL_FACE);
}

void Renderer20::DrawScreenMesh()
{
    // A subclass may draw with an effect of another kind, which is not told the size.
    if (auto* sized = dynamic_cast<BaseAAES20*>(screenEffect))
    {
        sized->SetDimensions(width, height);
    }
    if (auto* effect = dynamic_cast<MaterialEffectES20*>(screenEffect))
    {
        effect->Apply(nullptr, nullptr);
    }
    screenMeshData->Render(screenEffect, screenMesh->GetNodes(), false);
    EffectES20::EndUse();
    MeshES20::ResetBufferCache();
}

void Renderer20::SetupAntialiasBuffers()
{
    if (!Platform::LoadEntryPoints())
    {
        return;
    }
    const Platform::PixelTransferScope scope(Platform::PixelTransferScope::Direction::Upload);
    onScreenFramebuffer = CurrentBinding(GL_FRAMEBUFFER_BINDING);
    onScreenRenderbuffer = CurrentBinding(GL_RENDERBUFFER_BINDING);
    offscreenWidth = Scaled(width, UsableRatio());
    offscreenHeight = Scaled(height, UsableRatio());

    glGenFramebuffers(1, &offscreenFramebuffer);
    if (offscreenFramebuffer == 0)
    {
        // What would be attached now would land in the screen, and nobody would free it.
        return;
    }
    glBindFramebuffer(GL_FRAMEBUFFER, offscreenFramebuffer);
    // Without storage: the texture takes its place at once.
    offscreenColorRenderbuffer = MakeRenderbuffer();
    AttachRenderbuffer(GL_COLOR_ATTACHMENT0, offscreenColorRenderbuffer);
    offscreenDepthRenderbuffer = MakeRenderbuffer();
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, offscreenWidth, offscreenHeight);
    AttachRenderbuffer(GL_DEPTH_ATTACHMENT, offscreenDepthRenderbuffer);
    AttachRenderbuffer(GL_STENCIL_ATTACHMENT, offscreenDepthRenderbuffer);

    offscreenColorTexture = MakeTexture(GL_LINEAR, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, offscreenWidth, offscreenHeight, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 nullptr);
    AttachTexture(GL_COLOR_ATTACHMENT0, offscreenColorTexture);
    CreateDepthTexture();
    glBindTexture(GL_TEXTURE_2D, 0);
    if (!IsComplete() && offscreenDepthTexture != 0)
    {
        RepairDepthAttachments();
    }

    glBindFramebuffer(GL_FRAMEBUFFER, onScreenFramebuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, onScreenRenderbuffer);
}

void Renderer20::CreateDepthTexture()
{
    offscreenDepthTexture = 0;
    if (!capabilities || !capabilities->HasDepthTexture() || capabilities->HasDepthTextureFault())
    {
        return;
    }
    offscreenDepthTexture = MakeTexture(GL_NEAREST, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH_COMPONENT, offscreenWidth, offscreenHeight, 0,
                 GL_DEPTH_COMPONENT, GL_UNSIGNED_SHORT, nullptr);
    AttachTexture(GL_DEPTH_ATTACHMENT, offscreenDepthTexture);
}

// Desktop drivers call a framebuffer unsupported whose depth and stencil come from two images.
void Renderer20::RepairDepthAttachments()
{
    glBindTexture(GL_TEXTURE_2D, offscreenDepthTexture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_DEPTH24_STENCIL8, offscreenWidth, offscreenHeight, 0,
                 GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8, nullptr);
    AttachTexture(GL_DEPTH_ATTACHMENT, offscreenDepthTexture);
    AttachTexture(GL_STENCIL_ATTACHMENT, offscreenDepthTexture);
    glBindTexture(GL_TEXTURE_2D, 0);
    if (IsComplete())
    {
        return;
    }
    AttachRenderbuffer(GL_DEPTH_ATTACHMENT, offscreenDepthRenderbuffer);
    AttachRenderbuffer(GL_STENCIL_ATTACHMENT, offscreenDepthRenderbuffer);
    glDeleteTextures(1, &offscreenDepthTexture);
    offscreenDepthTexture = 0;
}

void Renderer20::CreateMSAABuffers() {}

void Renderer20::CreateScreenMesh()
{
    Detail::ScreenMesh made = Detail::MakeScreenMesh(bufferPool);
    made.scene->GetCameraNode()->SetGlobal(Transform());
    FetchScreenEffect();
    // Last: what fails before this is made again by the next capture.
    screenMesh = made.mesh;
    screenMeshData = made.data;
    screenScene = std::move(made.scene);
}

void Renderer20::DropScreenMesh()
{
    ReleaseScreenEffect();
    screenMesh = nullptr;
    screenMeshData = nullptr;
    screenScene.reset();
}

void Renderer20::FetchScreenEffect()
{
    EffectES20* effect = effectCache.GetEffect(aaMode == AAModeFXAA ? EffectCache::FXAA : EffectCache::AA);
    ReleaseScreenEffect();
    screenEffect = effect;
}

void Renderer20::ReleaseScreenEffect()
{
    if (screenEffect)
    {
        EffectES20* effect = screenEffect;
        screenEffect = nullptr;
        effect->Release();
    }
}

void Renderer20::ClearOffscreenBuffers()
{
    if (PutOff([](Renderer20& self) { self.Renderer20::ClearOffscreenBuffers(); }))
    {
        return;
    }
    if (offscreenFramebuffer != 0)
    {
        glDeleteRenderbuffers(1, &offscreenColorRenderbuffer);
        glDeleteRenderbuffers(1, &offscreenDepthRenderbuffer);
        glDeleteRenderbuffers(1, &offscreenSpareRenderbuffer);
        glBindTexture(GL_TEXTURE_2D, 0);
        glDeleteTextures(1, &offscreenColorTexture);
        if (offscreenDepthTexture != 0)
        {
            glDeleteTextures(1, &offscreenDepthTexture);
            offscreenDepthTexture = 0;
        }
        glDeleteFramebuffers(1, &offscreenFramebuffer);
        // The other names stay as they are, stale, until the buffers are made anew.
        offscreenFramebuffer = 0;
    }
    if (msaaFramebuffer != 0)
    {
        glDeleteFramebuffers(1, &msaaFramebuffer);
        glDeleteRenderbuffers(1, &msaaColorRenderbuffer);
        glDeleteRenderbuffers(1, &msaaDepthRenderbuffer);
    }
    msaaFramebuffer = 0;
    msaaColorRenderbuffer = 0;
    msaaDepthRenderbuffer = 0;
}

} // namespace OV
