#pragma once

#include "orvane/platform/OpenGLESRenderCapabilities.h"

namespace OV::Platform
{

namespace Linux
{

/// Capabilities of a desktop GL context on Linux: nothing beyond those of the GL strings.
class ORVANE_API RenderCapabilities : public OpenGLES::RenderCapabilities
{
public:
    ~RenderCapabilities() override;

    /// Needs no GL context.
    static std::unique_ptr<OpenGLES::RenderCapabilities> Create();
};

}  // namespace Linux

/// The other name of the level that belongs to the platform at hand.
namespace Win32 = Linux;

}  // namespace OV::Platform
