#pragma once

#include "orvane/Export.h"
#include "orvane/renderdata/SharedBufferPool.h"

#include <cstdint>
#include <memory>

namespace OV
{
class EffectES20;
class Mesh;
class MeshES20;
class Scene;
} // namespace OV

/// What a RenderTarget draws into.
enum eRenderTargetProfile
{
    RenderTargetProfileColor = 0,             ///< colour texture, no depth
    RenderTargetProfileDepth = 1,             ///< depth texture, no colour
    RenderTargetProfileColorDepth = 2,        ///< a texture for each
    RenderTargetProfileColorDepthStencil = 3, ///< a colour and a depth-stencil texture
};

/// An off-screen surface of its own: drawn into, read back, or laid over the screen through an
/// effect. It needs no renderer.
///
/// Use: SetDimensions, BeginCapture, drawing, EndCapture, then ApplyCapture, SaveImageTo or the
/// textures. Without a size it has no buffers, and captures go to framebuffer 0. All operations
/// but construction and queries need GL.
///
/// Its end frees no GL object: a host that lets a target go gives its size back first, by
/// SetDimensions(0, 0).
class ORVANE_API RenderTarget
{
public:
    /// Receives pixels. Copies share the block, which the first to die frees for all: a copy is
    /// a hand-over, after which the giver's data is to be set to null.
    struct ORVANE_API RenderTargetImage
    {
        RenderTargetImage() = default;
        RenderTargetImage(const RenderTargetImage&) = default;
        RenderTargetImage& operator=(const RenderTargetImage&) = default;
        ~RenderTargetImage();

        std::int64_t width = 0;
        std::int64_t height = 0;

        /// width * height * 4 bytes of RGBA, the bottom row first, from malloc.
        unsigned char* data = nullptr;
    };

    /// Not GL.
    explicit RenderTarget(eRenderTargetProfile targetProfile);
    RenderTarget(const RenderTarget&) = delete;
    RenderTarget& operator=(const RenderTarget&) = delete;
    virtual ~RenderTarget();

    /// Starts a capture and clears what the mask of glClear names.
    virtual void BeginCapture(unsigned int clearMask);

    /// Binds the target, without a clear, and sets the viewport to all of it. Nothing while a
    /// capture runs.
    virtual void ResumeCapture();

    /// Binds what was bound before; the viewport stays. Nothing unless a capture runs.
    virtual void SuspendCapture();
    virtual void EndCapture();

    /// Reads the picture. A block that the image held before is not freed. Without a colour
    /// texture the picture is all zeroes, and GL has an error to report.
    virtual void SaveImageTo(RenderTargetImage& image);

    /// Draws the screen quad through an effect, which the caller has applied, over the target's
    /// size. Blending and depth test stay off. Nothing before the first capture.
    virtual void ApplyCapture(OV::EffectES20* effect);

    /// Makes the buffers, in pixels; nothing at the size that the target has. A size of 0 or less
    /// has none.
    virtual void SetDimensions(int newWidth, int newHeight);

    /// GL names; 0: the profile has none. They are the target's.
    virtual unsigned int GetColorTexture();
    virtual unsigned int GetDepthTexture();

protected:
    /// Reports trouble in one line on the standard error stream.
    /// @return false then, with the framebuffer left bound and what was made kept.
    virtual bool InitializeBuffers();
    virtual void DestroyBuffers();
    virtual void CreateScreenMesh();

    int width = 0;
    int height = 0;
    OV::SharedBufferPool bufferPool;
    eRenderTargetProfile profile;
    unsigned int savedFramebuffer = 0; ///< bound before the capture
    unsigned int savedRenderbuffer = 0;
    unsigned int framebuffer = 0;  ///< 0: no buffers
    unsigned int renderbuffer = 0; ///< written by nobody; bound while capturing
    unsigned int depthRenderbuffer = 0;
    unsigned int colorTexture = 0;
    unsigned int depthTexture = 0;
    bool capturing = false;
    std::unique_ptr<OV::Scene> screenScene;  ///< null until the first capture
    OV::Mesh* screenMesh = nullptr;          ///< owned by screenScene
    OV::MeshES20* screenMeshData = nullptr;  ///< owned by screenMesh

private:
    bool AddColor();
    bool AddDepth();
    bool AddDepthStencil();
};
