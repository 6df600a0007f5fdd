#include "orvane/engine/AppContext.h"

#include "orvane/engine/CoreContext.h"
#include "orvane/engine/Renderer.h"
#include "orvane/math/Color.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/platform/GenericDeviceConfig.h"
#include "orvane/platform/OpenGLESRenderCapabilities.h"
#include "orvane/scene/Scene.h"

#include <new>
#include <utility>

namespace OV
{

AppContext::AppContext()
{
    std::unique_ptr<RenderCapabilities> capabilities = RenderCapabilities::Create();
    // Nothing in the engine reads the config, so a missing one is no reason to give up.
    std::unique_ptr<DeviceConfig> config(new (std::nothrow) Platform::Generic::DeviceConfig());
    m_context = std::make_unique<CoreContext>(std::move(config), std::move(capabilities));
}

AppContext::~AppContext() = default;

void AppContext::SetScreenSize(int width, int height)
{
    m_width = width;
    m_height = height;
}

bool AppContext::Update(float time)
{
    return m_context->Update(time, m_width, m_height);
}

void AppContext::Render(Renderer* renderer, bool capture)
{
    renderer->BeginRender(capture, m_context->GetBackgroundColor());
    if (capture)
    {
        renderer->BeginCapture();
    }
    renderer->Render2D(m_context->GetBackground2D());
    if (Scene* scene = m_context->GetScene())
    {
        renderer->Render3D(scene, scene->GetCameraNode());
    }
    if (capture)
    {
        renderer->EndCapture();
        renderer->ApplyCapture();
    }
    renderer->Render2D(m_context->GetForeground2D());
    renderer->EndRender();
}

void AppContext::RenderCapturedAndUI(Renderer* renderer)
{
    // White, whatever the background colour is: the captured picture covers it.
    renderer->BeginRender(false, Color(1.0f, 1.0f, 1.0f, 1.0f));
    renderer->ApplyCapture();
    renderer->Render2D(m_context->GetForeground2D());
    renderer->EndRender();
}

void AppContext::RenderClear(Renderer* renderer, Color const& color)
{
    renderer->BeginRender(false, color);
    renderer->Render2D(m_context->GetForeground2D());
    renderer->EndRender();
}

void AppContext::ClearOffscreenBuffers(Renderer* renderer)
{
    renderer->ClearOffscreenBuffers();
}

void AppContext::Suspend(Renderer* renderer)
{
    if (Scene* scene = m_context->GetScene())
    {
        scene->Suspend();
    }
    m_context->GetBackground2D()->Suspend();
    m_context->GetForeground2D()->Suspend();
    renderer->Suspend();
}

void AppContext::Resume(Renderer* renderer)
{
    // In the order of Suspend, not mirrored: the texture loader comes back last, and no scene
    // object asks for a texture before the next frame.
    if (Scene* scene = m_context->GetScene())
    {
        scene->Resume();
    }
    m_context->GetBackground2D()->Resume();
    m_context->GetForeground2D()->Resume();
    renderer->Resume();
}

}  // namespace OV
