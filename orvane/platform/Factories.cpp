// What the abstract classes of the engine are made of on this platform. The makers stand here, so
// that nothing below the platform knows it.
#include "orvane/platform/ESTextureLoader.h"
#include "orvane/platform/LinuxRenderCapabilities.h"

namespace OV
{

std::unique_ptr<Platform::OpenGLES::RenderCapabilities> RenderCapabilities::Create()
{
    return Platform::Linux::RenderCapabilities::Create();
}

TextureLoader* TextureLoader::Create()
{
    return new Platform::Linux::ESTextureLoader();
}

}  // namespace OV
