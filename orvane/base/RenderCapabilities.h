#pragma once

#include "orvane/Export.h"
#include "orvane/base/Lifetime.h"

#include <memory>

namespace OV
{

namespace Platform::OpenGLES
{
class RenderCapabilities;
}

/// What the current GL context can do.
///
/// The first question looks at the context, which must be current by then; the answers stay
/// for the life of the object, also when the context is replaced by another.
class ORVANE_API RenderCapabilities
{
public:
    virtual ~RenderCapabilities();

    /// Makes the object for this platform. Needs no GL context.
    static std::unique_ptr<Platform::OpenGLES::RenderCapabilities> Create();

    virtual bool HasFramebufferObject() = 0;
    virtual bool HasARBDepthTexture() = 0;
    virtual bool HasTextureStencil8() = 0;
    virtual bool HasPackedDepthStencil() = 0;
    /// In pixels, for width and height each.
    virtual int GetMaxTextureSize() = 0;
    /// Whether textures may have any size, with whatever restriction.
    virtual bool HasNpotTextures() = 0;
    virtual bool RequiresPowerOfTwo() = 0;
    /// Whether textures of any size may repeat.
    virtual bool HasNpotRepeat() = 0;
    /// Whether textures of any size may have mipmaps.
    virtual bool HasNpotMipmap() = 0;
    virtual bool HasDepthTexture() = 0;
    /// Whether depth textures are known to fail although the context offers them.
    virtual bool HasDepthTextureFault() = 0;

    /// Lets those who keep a pointer to this object notice its end.
    Lifetime& GetLifetime() { return m_lifetime; }

private:
    Lifetime m_lifetime;
};

}  // namespace OV
