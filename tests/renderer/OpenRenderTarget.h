#pragma once

#include "orvane/renderer/RenderTarget.h"

#include <string>
#include <vector>

namespace OV::Test
{

/// A render target with its protected side open, which notes what comes through its slots.
class OpenRenderTarget : public RenderTarget
{
public:
    using RenderTarget::RenderTarget;

    ~OpenRenderTarget() override
    {
        // A target of its own accord leaves its objects behind.
        if (freeAtEnd)
        {
            RenderTarget::DestroyBuffers();
        }
    }

    using RenderTarget::bufferPool;
    using RenderTarget::capturing;
    using RenderTarget::colorTexture;
    using RenderTarget::depthRenderbuffer;
    using RenderTarget::depthTexture;
    using RenderTarget::framebuffer;
    using RenderTarget::height;
    using RenderTarget::profile;
    using RenderTarget::renderbuffer;
    using RenderTarget::savedFramebuffer;
    using RenderTarget::savedRenderbuffer;
    using RenderTarget::screenMesh;
    using RenderTarget::screenMeshData;
    using RenderTarget::screenScene;
    using RenderTarget::width;

    void ResumeCapture() override
    {
        log.push_back("resume");
        RenderTarget::ResumeCapture();
    }

    void SuspendCapture() override
    {
        log.push_back("suspend");
        RenderTarget::SuspendCapture();
    }

    bool InitializeBuffers() override
    {
        log.push_back("initialize");
        initialized = RenderTarget::InitializeBuffers();
        return initialized;
    }

    void DestroyBuffers() override
    {
        log.push_back("destroy");
        RenderTarget::DestroyBuffers();
    }

    void CreateScreenMesh() override
    {
        log.push_back("mesh");
        RenderTarget::CreateScreenMesh();
    }

    std::vector<std::string> log;
    bool initialized = false;
    bool freeAtEnd = true;
};

/// All profiles, in the order of their numbers.
inline constexpr eRenderTargetProfile kProfiles[] = {
    RenderTargetProfileColor,
    RenderTargetProfileDepth,
    RenderTargetProfileColorDepth,
    RenderTargetProfileColorDepthStencil,
};

} // namespace OV::Test
