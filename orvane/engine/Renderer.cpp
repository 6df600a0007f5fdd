#include "orvane/engine/Renderer.h"

#include "orvane/base/detail/Walk.h"
#include "orvane/imaging/TextureLoader.h"

namespace OV
{

Renderer::Renderer() = default;

Renderer::Renderer(TextureLoader* textureLoader)
    : textureLoader(textureLoader)
{
}

Renderer::~Renderer()
{
    detail::Walk::Tell(this);
}

void Renderer::ClearOffscreenBuffers()
{
}

void Renderer::BeginOverDrawRender()
{
}

bool Renderer::ConsumeRequest()
{
    const bool wasSet = requestFlag;
    requestFlag = false;
    return wasSet;
}

void Renderer::SetRequest()
{
    requestFlag = true;
}

}  // namespace OV
