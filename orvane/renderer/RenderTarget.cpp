#include "orvane/renderer/RenderTarget.h"

#include "orvane/base/GLCheckpoint.h"
#include "orvane/effects/EffectES20.h"
#include "orvane/math/Transform.h"
#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/platform/detail/PixelTransferScope.h"
#include "orvane/renderdata/MeshES20.h"
#include "orvane/renderer/detail/ScreenQuad.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/Scene.h"

#include <GL/glew.h>

#include <cstdlib>
#include <iostream>
#include <utility>

namespace
{

constexpr const char* kNoColor = "Could not create color attachment for render target.";
constexpr const char* kNoDepth =
    "Could not allocate render buffer storage for depth target, framebuffer incomplete.";

unsigned int CurrentBinding(GLenum query)
{
    GLint name = 0;
    glGetIntegerv(query, &name);
    return static_cast<unsigned int>(name);
}

/// Makes a texture of the target's parameters and leaves it bound.
unsigned int MakeTexture(int width, int height, GLenum format, GLenum type)
{
    GLuint texture = 0;
    glGenTextures(1, &texture);
    glBindTexture(GL_TEXTURE_2D, texture);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    const OV::Platform::PixelTransferScope scope(OV::Platform::PixelTransferScope::Direction::Upload);
    glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(format), width, height, 0, format, type, nullptr);
    return texture;
}

/// Makes a renderbuffer with storage and leaves it bound.
unsigned int MakeRenderbuffer(int width, int height, GLenum format)
{
    GLuint renderbuffer = 0;
    glGenRenderbuffers(1, &renderbuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
    glRenderbufferStorage(GL_RENDERBUFFER, format, width, height);
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

/// Drops errors of earlier calls. Bounded, since a lost context reports one for ever.
void DrainErrors()
{
    for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i)
    {
    }
}

bool IsComplete()
{
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

bool Fail(const char* message)
{
    std::cerr << message << std::endl;
    return false;
}

} // namespace

RenderTarget::RenderTargetImage::~RenderTargetImage()
{
    std::free(data);
}

RenderTarget::RenderTarget(eRenderTargetProfile targetProfile) : profile(targetProfile) {}

RenderTarget::~RenderTarget() = default;

unsigned int RenderTarget::GetColorTexture()
{
    return colorTexture;
}

unsigned int RenderTarget::GetDepthTexture()
{
    return depthTexture;
}

void RenderTarget::SetDimensions(int newWidth, int newHeight)
{
    if (newWidth == width && newHeight == height)
    {
        return;
    }
    width = newWidth;
    height = newHeight;
    DestroyBuffers();
    InitializeBuffers();
}

bool RenderTarget::InitializeBuffers()
{
    if (width <= 0 || height <= 0 || !OV::Platform::LoadEntryPoints())
    {
        return false;
    }
    const unsigned int boundFramebuffer = CurrentBinding(GL_FRAMEBUFFER_BINDING);
    const unsigned int boundRenderbuffer = CurrentBinding(GL_RENDERBUFFER_BINDING);
    // A running capture has saved what its end gives back; it goes on in the new buffers.
    if (!capturing)
    {
        savedFramebuffer = boundFramebuffer;
        savedRenderbuffer = boundRenderbuffer;
    }
    const bool hasColor = profile != RenderTargetProfileDepth;
    glGenFramebuffers(1, &framebuffer);
    if (framebuffer == 0)
    {
        // What would be attached now would land in the screen, and nobody would free it.
        return Fail(hasColor ? kNoColor : kNoDepth);
    }
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    const bool hasDepth = profile == RenderTargetProfileDepth || profile == RenderTargetProfileColorDepth;
    if ((hasColor && !AddColor()) || (hasDepth && !AddDepth()) ||
        (profile == RenderTargetProfileColorDepthStencil && !AddDepthStencil()))
    {
        return false;
    }
    glBindFramebuffer(GL_FRAMEBUFFER, capturing ? framebuffer : boundFramebuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, boundRenderbuffer);
    glBindTexture(GL_TEXTURE_2D, 0);
    return true;
}

bool RenderTarget::AddColor()
{
    colorTexture = MakeTexture(width, height, GL_RGBA, GL_UNSIGNED_BYTE);
    AttachTexture(GL_COLOR_ATTACHMENT0, colorTexture);
    return IsComplete() || Fail(kNoColor);
}

bool RenderTarget::AddDepth()
{
    if (profile == RenderTargetProfileDepth)
    {
        // Without a colour attachment desktop GL wants to hear that none is drawn or read.
        glDrawBuffer(GL_NONE);
        glReadBuffer(GL_NONE);
    }
    DrainErrors();
    depthRenderbuffer = MakeRenderbuffer(width, height, GL_DEPTH_COMPONENT16);
    AttachRenderbuffer(GL_DEPTH_ATTACHMENT, depthRenderbuffer);
    if (glGetError() != GL_NO_ERROR)
    {
        return Fail("Could not allocate render buffer storage for depth target.");
    }
    if (!IsComplete())
    {
        return Fail(kNoDepth);
    }
    depthTexture = MakeTexture(width, height, GL_DEPTH_COMPONENT, GL_UNSIGNED_INT);
    AttachTexture(GL_DEPTH_ATTACHMENT, depthTexture);
    glBindTexture(GL_TEXTURE_2D, 0);
    return IsComplete() || Fail("Could not create depth texture, framebuffer is incomplete.");
}

bool RenderTarget::AddDepthStencil()
{
    depthRenderbuffer = MakeRenderbuffer(width, height, GL_DEPTH24_STENCIL8);
    AttachRenderbuffer(GL_DEPTH_ATTACHMENT, depthRenderbuffer);
    AttachRenderbuffer(GL_STENCIL_ATTACHMENT, depthRenderbuffer);
    if (!IsComplete())
    {
        return Fail("Could not create depth stencil render buffer.");
    }
    depthTexture = MakeTexture(width, height, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8);
    AttachTexture(GL_DEPTH_ATTACHMENT, depthTexture);
    AttachTexture(GL_STENCIL_ATTACHMENT, depthTexture);
    if (!IsComplete())
    {
        return Fail("Could not create depth stencil texture.");
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    return true;
}

void RenderTarget::DestroyBuffers()
{
    if (framebuffer == 0)
    {
        return;
    }
    if (depthRenderbuffer != 0)
    {
        glDeleteRenderbuffers(1, &depthRenderbuffer);
        depthRenderbuffer = 0;
    }
    if (depthTexture != 0)
    {
        glDeleteTextures(1, &depthTexture);
        depthTexture = 0;
    }
    if (colorTexture != 0)
    {
        glDeleteTextures(1, &colorTexture);
        colorTexture = 0;
    }
    glDeleteFramebuffers(1, &framebuffer);
    framebuffer = 0;
}

void RenderTarget::BeginCapture(unsigned int clearMask)
{
    if (!OV::Platform::LoadEntryPoints())
    {
        return;
    }
    if (!screenMesh)
    {
        CreateScreenMesh();
    }
    ResumeCapture();
    // With depth writes off, as a pass before may have left them, the depth buffer would keep
    // its contents.
    glDepthMask(GL_TRUE);
    glClear(clearMask);
    OV::OV_GL_CHECKPOINT();
}

void RenderTarget::ResumeCapture()
{
    if (capturing || !OV::Platform::LoadEntryPoints())
    {
        return;
    }
    savedFramebuffer = CurrentBinding(GL_FRAMEBUFFER_BINDING);
    savedRenderbuffer = CurrentBinding(GL_RENDERBUFFER_BINDING);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, renderbuffer);
    glViewport(0, 0, width, height);
    capturing = true;
}

void RenderTarget::SuspendCapture()
{
    if (!capturing)
    {
        return;
    }
    glFlush();
    glBindFramebuffer(GL_FRAMEBUFFER, savedFramebuffer);
    glBindRenderbuffer(GL_RENDERBUFFER, savedRenderbuffer);
    capturing = false;
}

void RenderTarget::EndCapture()
{
    SuspendCapture();
}

void RenderTarget::SaveImageTo(RenderTargetImage& image)
{
    if (!OV::Platform::LoadEntryPoints())
    {
        return;
    }
    // Kept apart from the saved binding, which a running capture still needs.
    const unsigned int bound = CurrentBinding(GL_FRAMEBUFFER_BINDING);
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    image.width = width;
    image.height = height;
    const std::size_t size = width > 0 && height > 0 ? std::size_t(width) * std::size_t(height) * 4 : 0;
    image.data = static_cast<unsigned char*>(std::calloc(size > 0 ? size : 1, 1));
    if (image.data && size > 0)
    {
        const OV::Platform::PixelTransferScope scope(OV::Platform::PixelTransferScope::Direction::Read);
        glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, image.data);
    }
    glBindFramebuffer(GL_FRAMEBUFFER, bound);
}

void RenderTarget::ApplyCapture(OV::EffectES20* effect)
{
    if (!screenMeshData || !OV::Platform::LoadEntryPoints())
    {
        return;
    }
    // Nobody else uploads what is in the target's own pool.
    if (screenMeshData->vertexBufferId == 0)
    {
        bufferPool.GenerateVBOs();
    }
    if (screenMeshData->vertexBufferId == 0)
    {
        // The upload failed, and a mesh that missed it never gets another: the next capture
        // makes a new one.
        screenMesh = nullptr;
        screenMeshData = nullptr;
        screenScene.reset();
    }
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_CULL_FACE);
    glViewport(0, 0, width, height);
    if (screenMeshData)
    {
        screenMeshData->Render(effect, screenMesh->GetNodes(), false);
        OV::EffectES20::EndUse();
        OV::MeshES20::ResetBufferCache();
    }
    glEnable(GL_CULL_FACE);
}

void RenderTarget::CreateScreenMesh()
{
    OV::Detail::ScreenMesh made = OV::Detail::MakeScreenMesh(bufferPool);
    made.scene->GetCameraNode()->SetLocal(OV::Transform());
    screenMesh = made.mesh;
    screenMeshData = made.data;
    screenScene = std::move(made.scene);
}
