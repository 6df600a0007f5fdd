#include "orvane/platform/LinuxRenderCapabilities.h"

namespace OV::Platform::Linux
{

RenderCapabilities::~RenderCapabilities() = default;

std::unique_ptr<OpenGLES::RenderCapabilities> RenderCapabilities::Create()
{
    return std::make_unique<RenderCapabilities>();
}

}  // namespace OV::Platform::Linux
