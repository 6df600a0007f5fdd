#pragma once

#include "orvane/Export.h"
#include "orvane/math/Color.h"

#include <memory>

namespace OV
{

class CameraNode;
class DeviceConfig;
class RenderCapabilities;
class Scene;
class Scene2D;

/// The model of one view: a 3D scene, a 2D layer behind it and one above it, and the colour
/// behind all of them. It makes no GL calls.
///
/// The scene is null until SetScene. Until then the updates leave it out and GetCamera
/// returns null. All that is handed out stays the context's.
class ORVANE_API CoreContext
{
public:
    /// Takes both over; null is allowed.
    CoreContext(std::unique_ptr<DeviceConfig>&& config, std::unique_ptr<RenderCapabilities>&& capabilities);
    CoreContext(const CoreContext&) = delete;
    CoreContext& operator=(const CoreContext&) = delete;
    virtual ~CoreContext();

    DeviceConfig* GetConfig() const { return config.get(); }
    RenderCapabilities* GetRenderCapabilities() const { return capabilities.get(); }
    Scene* GetScene() const { return scene.get(); }
    Scene2D* GetForeground2D() const { return foreground2D.get(); }
    Scene2D* GetBackground2D() const { return background2D.get(); }
    /// The camera through which the scene is seen.
    CameraNode* GetCamera() const;
    Color const& GetBackgroundColor() const { return backgroundColor; }
    /// The time that the last Update was given.
    float GetRunningTime() const { return runningTime; }
    /// Whether the last Update found changes in the foreground layer alone, so that a captured
    /// picture of the rest can be shown again. A hint for the host: the engine ignores it.
    bool OnlyForegroundWasDirty() const { return onlyForegroundWasDirty; }

    /// Dirties the scene. A colour that Color::IsEqual takes for the present one changes
    /// nothing.
    void SetBackgroundColor(Color const& color);

    /// Takes a scene over and destroys the old one, with its render data: GL, if it was drawn.
    /// Called from within an operation of the engine, by a texture loader or a derived node for
    /// instance, it destroys the old one when the outermost operation ends.
    void SetScene(std::unique_ptr<Scene>&& newScene);

    /// Brings the scene and both layers up to date; once a frame.
    ///
    /// Without a scene the layers are updated all the same and the result is false. From within
    /// an update of this context nothing is updated and the result is false.
    /// @param time stored as it is: the time, not a step.
    /// @param width, height screen size in pixels, which goes to the camera.
    /// @return whether anything is to be drawn.
    bool Update(float time, int width, int height);

    /// Ends all picking in both layers. The argument is ignored.
    void UpdateUI(float time);

protected:
    // Destroyed from the last to the first: what comes later may look at what comes earlier.
    std::unique_ptr<DeviceConfig> config;
    std::unique_ptr<RenderCapabilities> capabilities;
    Color backgroundColor{1.0f, 1.0f, 1.0f, 1.0f};
    float runningTime = 0.0f;
    bool onlyForegroundWasDirty = false;
    std::unique_ptr<Scene2D> foreground2D;
    std::unique_ptr<Scene2D> background2D;
    std::unique_ptr<Scene> scene;
};

}  // namespace OV
