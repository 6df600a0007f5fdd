#pragma once

#include "orvane/base/RenderCapabilities.h"

#include <cstdint>
#include <set>
#include <string>

namespace OV::Platform::OpenGLES
{

/// Answers from the strings that the GL context gives, read once, on the first question.
class ORVANE_API RenderCapabilities : public OV::RenderCapabilities
{
public:
    ~RenderCapabilities() override;

    bool HasFramebufferObject() override;
    bool HasARBDepthTexture() override;
    bool HasTextureStencil8() override;
    bool HasPackedDepthStencil() override;
    int GetMaxTextureSize() override;
    bool HasNpotTextures() override;
    bool RequiresPowerOfTwo() override;
    bool HasNpotRepeat() override;
    bool HasNpotMipmap() override;
    bool HasDepthTexture() override;
    bool HasDepthTextureFault() override;

    /// Reads the context anew. GL. Unless every answer came, which takes a current context that
    /// lives on, the object stays undetected, so that the next question tries again.
    virtual void Detect();

    /// Whether the context names exactly this extension. It detects nothing: before the first
    /// of the other questions the answer is false.
    bool HasExtension(const std::string& extension) const;

protected:
    std::string vendor;
    std::string renderer;
    std::string version;
    std::set<std::string> extensions;
    bool detected = false;
    bool framebufferObject = false;
    bool arbDepthTexture = false;
    bool textureStencil8 = false;
    bool packedDepthStencil = false;
    bool npotTextures = false;
    bool npotRepeat = false;
    bool npotMipmap = false;
    bool depthTexture = false;
    bool depthTextureFault = false;  ///< No driver is known to need it: it stays false.
    std::int32_t maxTextureSize = 0;

private:
    void EnsureDetected();
    bool LoadExtensions();
};

}  // namespace OV::Platform::OpenGLES
