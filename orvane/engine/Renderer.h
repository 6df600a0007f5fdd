#pragma once

#include "orvane/Export.h"
#include "orvane/base/WatchedPtr.h"

namespace OV
{

class CameraNode;
class Color;
class Scene;
class Scene2D;
class TextureLoader;

/// Draws the frames of an AppContext.
///
/// It belongs to the host, which hands it to the context with every call. The order of the
/// calls of a frame is that of AppContext::Render.
class ORVANE_API Renderer
{
public:
    virtual ~Renderer();

    /// Tells the size of the screen in pixels. GL.
    virtual void Resize(int width, int height) = 0;
    /// Names the buffers that stand for the screen and their size in pixels. GL.
    virtual void SetOnScreenBuffers(int width, int height, unsigned framebuffer, unsigned renderbuffer,
                                    unsigned depthbuffer, float scale) = 0;
    /// Frees what the capture of frames holds on the GPU. GL. Does nothing by default.
    virtual void ClearOffscreenBuffers();
    /// Asks that the 3D scene be drawn over the depth of what this frame has drawn already,
    /// until EndRender. Does nothing by default.
    virtual void BeginOverDrawRender();
    /// Opens a frame by clearing the buffers in the given colour. GL.
    /// @param capture whether the frame goes through the off-screen buffer.
    virtual void BeginRender(bool capture, Color const& color) = 0;
    /// Draws the scene as the camera sees it. GL.
    virtual void Render3D(Scene* scene, CameraNode* camera) = 0;
    /// Draws a layer over what is there. GL.
    virtual void Render2D(Scene2D* layer) = 0;
    virtual void EndRender() = 0;
    virtual bool SupportsRenderToTexture() = 0;
    /// From here to EndCapture drawing goes into the off-screen buffer. GL.
    virtual void BeginCapture() = 0;
    virtual void EndCapture() = 0;
    /// Draws the last captured picture on the screen. GL.
    virtual void ApplyCapture() = 0;
    /// Lets go of GL objects before the context is lost. GL.
    virtual void Suspend() = 0;
    /// Comes back with a new context. GL.
    virtual void Resume() = 0;
    virtual int GetWidthPx() = 0;
    virtual int GetHeightPx() = 0;
    /// Takes the request back.
    /// @return whether there was one.
    virtual bool ConsumeRequest();
    /// Leaves a request, whose meaning is the host's.
    virtual void SetRequest();

    /// Whether BeginRender binds the buffers of SetOnScreenBuffers. Nothing in the engine sets
    /// it: while false, the framebuffer that the host has bound is drawn into.
    bool useOnScreenBuffers = false;

protected:
    Renderer();
    /// @param textureLoader stays the host's; null is allowed.
    explicit Renderer(TextureLoader* textureLoader);
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    /// Not owned; reads null once the loader is gone.
    WatchedPtr<TextureLoader> textureLoader;
    bool requestFlag = false;
};

}  // namespace OV
