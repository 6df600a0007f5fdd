#include "orvane/engine/RenderCapabilities.h"

#include "orvane/platform/LinuxRenderCapabilities.h"

namespace OV
{

RenderCapabilities::~RenderCapabilities() = default;

std::unique_ptr<Platform::OpenGLES::RenderCapabilities> RenderCapabilities::Create()
{
    return Platform::Linux::RenderCapabilities::Create();
}

}  // namespace OV
