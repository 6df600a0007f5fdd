#include "orvane/engine/AppContext.h"

#include "orvane/base/detail/Walk.h"
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

AppContext::~AppContext()
{
    detail::Walk::Tell(this);
    // The frame that is calling its host out of whose code this is stands on the context.
    detail::Walk::Discard(std::move(m_context));
}

void AppContext::SetScreenSize(int width, int height)
{
    m_width = width;
    m_height = height;
}

bool AppContext::Update(float time)
{
    if (IsAtWork())
    {
        return false;
    }
    const detail::Walk walk(this, detail::Walk::Update);
    return m_context->Update(time, m_width, m_height);
}

void AppContext::Render(Renderer* renderer, bool capture)
{
    if (IsAtWork())
    {
        return;
    }
    const detail::Walk walk(this, detail::Walk::Draw);
    CoreContext& context = *m_context;
    renderer->BeginRender(capture, context.GetBackgroundColor());
    if (capture)
    {
        renderer->BeginCapture();
    }
    renderer->Render2D(context.GetBackground2D());
    if (Scene* scene = context.GetScene())
    {
        renderer->Render3D(scene, scene->GetCameraNode());
    }
    if (capture)
    {
        renderer->EndCapture();
        renderer->ApplyCapture();
    }
    renderer->Render2D(context.GetForeground2D());
    renderer->EndRender();
}

void AppContext::RenderCapturedAndUI(Renderer* renderer)
{
    if (IsAtWork())
    {
        return;
    }
    const detail::Walk walk(this, detail::Walk::Draw);
    CoreContext& context = *m_context;
    // White, whatever the background colour is: the captured picture covers it.
    renderer->BeginRender(false, Color(1.0f, 1.0f, 1.0f, 1.0f));
    renderer->ApplyCapture();
    renderer->Render2D(context.GetForeground2D());
    renderer->EndRender();
}

void AppContext::RenderClear(Renderer* renderer, Color const& color)
{
    if (IsAtWork())
    {
        return;
    }
    const detail::Walk walk(this, detail::Walk::Draw);
    CoreContext& context = *m_context;
    renderer->BeginRender(false, color);
    renderer->Render2D(context.GetForeground2D());
    renderer->EndRender();
}

void AppContext::ClearOffscreenBuffers(Renderer* renderer)
{
    renderer->ClearOffscreenBuffers();
}

void AppContext::Suspend(Renderer* renderer)
{
    if (detail::Walk::IsOn(this, detail::Walk::Suspend))
    {
        // What is being done already is what is asked for last.
        detail::Walk::Withdraw(this);
        return;
    }
    if (detail::Walk::IsRunning())
    {
        detail::Walk::Postpone(this, renderer, [this, renderer] { Suspend(renderer); });
        return;
    }
    const detail::Walk walk(this, detail::Walk::Suspend);
    CoreContext& context = *m_context;
    if (Scene* scene = context.GetScene())
    {
        scene->Suspend();
    }
    context.GetBackground2D()->Suspend();
    context.GetForeground2D()->Suspend();
    renderer->Suspend();
}

void AppContext::Resume(Renderer* renderer)
{
    if (detail::Walk::IsOn(this, detail::Walk::Resume))
    {
        detail::Walk::Withdraw(this);
        return;
    }
    if (detail::Walk::IsRunning())
    {
        detail::Walk::Postpone(this, renderer, [this, renderer] { Resume(renderer); });
        return;
    }
    const detail::Walk walk(this, detail::Walk::Resume);
    CoreContext& context = *m_context;
    // In the order of Suspend, not mirrored: the texture loader comes back last, and no scene
    // object asks for a texture before the next frame.
    if (Scene* scene = context.GetScene())
    {
        scene->Resume();
    }
    context.GetBackground2D()->Resume();
    context.GetForeground2D()->Resume();
    renderer->Resume();
}

bool AppContext::IsAtWork() const
{
    return detail::Walk::IsOn(this, detail::Walk::Any);
}

}  // namespace OV
