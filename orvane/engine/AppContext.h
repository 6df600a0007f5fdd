#pragma once

#include "orvane/Export.h"

#include <memory>

namespace OV
{

class Color;
class CoreContext;
class Renderer;

/// What a host creates to draw: the model of a view, the screen's size, and the frame.
///
/// A host's loop calls Update; when it returns false there is nothing to draw; else it calls
/// Render, or, when OnlyForegroundWasDirty says so and a capture exists, RenderCapturedAndUI.
///
/// Every Renderer belongs to the host and must not be null. Making a context needs no GL; the
/// operations that take a renderer need what that renderer needs. Without a scene they leave
/// the scene out.
///
/// A host that is called in the middle of these operations (by a texture loader, a derived node,
/// a screen mapping, a derived renderer) may edit scene and layers, as told at Scene, replace the
/// scene and destroy this object: what the operation still needs goes when it ends. It is not
/// entered a second time: Update, returning false, and the operations that render return at once;
/// Suspend and Resume are carried out when the outermost operation ends, with the GL context that
/// is current then. The renderer has to outlive the operation.
class ORVANE_API AppContext
{
public:
    AppContext();
    AppContext(const AppContext&) = delete;
    AppContext& operator=(const AppContext&) = delete;
    ~AppContext();

    CoreContext* GetContext() const { return m_context.get(); }
    int GetWidth() const { return m_width; }
    int GetHeight() const { return m_height; }

    /// Tells the size in pixels, which reaches the camera with the next Update. The renderer
    /// is told separately, through Renderer::Resize. With a device pixel ratio other than 1, nodes of
    /// layers follow those of the scene only where it is told in points.
    void SetScreenSize(int width, int height);

    /// As CoreContext::Update, with the screen's size.
    bool Update(float time);

    /// Draws the whole frame.
    /// @param capture whether the background layer and the scene go through the off-screen
    /// buffer, to be antialiased and shown again later.
    void Render(Renderer* renderer, bool capture);

    /// Shows the last capture again, and the foreground layer above it. Whether there is a
    /// capture is for the host to know.
    void RenderCapturedAndUI(Renderer* renderer);

    /// Clears the screen in the given colour and draws the foreground layer.
    void RenderClear(Renderer* renderer, Color const& color);

    void ClearOffscreenBuffers(Renderer* renderer);

    /// Lets go of all GL objects before the GL context is lost. Nothing may be drawn until
    /// Resume.
    void Suspend(Renderer* renderer);

    /// Comes back with a new GL context; what is needed is made again by the next frame.
    void Resume(Renderer* renderer);

private:
    /// Whether an operation of this object is calling the host right now.
    bool IsAtWork() const;

    std::unique_ptr<CoreContext> m_context;
    int m_width = 0;
    int m_height = 0;
};

}  // namespace OV
