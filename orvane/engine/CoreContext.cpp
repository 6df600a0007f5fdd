#include "orvane/engine/CoreContext.h"

#include "orvane/base/DeviceConfig.h"
#include "orvane/base/RenderCapabilities.h"
#include "orvane/base/detail/Walk.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Scene.h"

#include <utility>

namespace OV
{

CoreContext::CoreContext(std::unique_ptr<DeviceConfig>&& config, std::unique_ptr<RenderCapabilities>&& capabilities)
    : config(std::move(config))
    , capabilities(std::move(capabilities))
    , foreground2D(std::make_unique<Scene2D>(this))
    , background2D(std::make_unique<Scene2D>(this))
{
}

CoreContext::~CoreContext() = default;

CameraNode* CoreContext::GetCamera() const
{
    return scene ? scene->GetCameraNode() : nullptr;
}

void CoreContext::SetBackgroundColor(Color const& color)
{
    if (color.IsEqual(backgroundColor))
    {
        return;
    }
    backgroundColor = color;
    if (scene)
    {
        scene->MarkDirty();
    }
}

void CoreContext::SetScene(std::unique_ptr<Scene>&& newScene)
{
    if (&newScene != &scene)
    {
        std::unique_ptr<Scene> old = std::exchange(scene, std::move(newScene));
        detail::Walk::Discard(std::move(old));
    }
}

bool CoreContext::Update(float time, int width, int height)
{
    if (detail::Walk::IsOn(this, detail::Walk::Update))
    {
        return false;
    }
    const detail::Walk walk(this, detail::Walk::Update);
    runningTime = time;
    const float screenWidth = static_cast<float>(width);
    const float screenHeight = static_cast<float>(height);
    // Whatever the host puts in its place meanwhile, this one lives until the update is over.
    Scene* const updated = scene.get();
    if (!updated)
    {
        background2D->UpdateGraph(screenWidth, screenHeight);
        foreground2D->UpdateGraph(screenWidth, screenHeight);
        onlyForegroundWasDirty = false;
        return false;
    }
    if (CameraNode* camera = updated->GetCameraNode())
    {
        camera->screenWidth = screenWidth;
        camera->screenHeight = screenHeight;
    }

    bool sceneSideDirty = updated->IsDirty() || background2D->IsDirty();
    const bool foregroundDirty = foreground2D->IsDirty();
    updated->UpdateGraph(screenWidth, screenHeight);
    background2D->UpdateGraph(screenWidth, screenHeight);
    foreground2D->UpdateGraph(screenWidth, screenHeight);

    // An update may dirty a scene whose turn was before; the 3D scene alone gets another one
    // in this frame, the layers wait for the next.
    if (!sceneSideDirty && (updated->IsDirty() || background2D->IsDirty() || foreground2D->IsDirty()))
    {
        updated->UpdateGraph(screenWidth, screenHeight);
        sceneSideDirty = true;
    }
    onlyForegroundWasDirty = foregroundDirty && !sceneSideDirty;
    return sceneSideDirty || foregroundDirty;
}

void CoreContext::UpdateUI(float)
{
    background2D->ResetPicking();
    foreground2D->ResetPicking();
}

}  // namespace OV
