#pragma once

#include <memory>
#include <string>
#include <vector>

namespace OV::Host
{

/// A desktop GL context that needs no window and no display, with a framebuffer object of its
/// own to draw into.
///
/// The context is a compatibility context, so that the GLSL of the engine compiles. It is made
/// on EGL's surfaceless platform, else on a device, else on the default display, each time with
/// a small pbuffer where the driver cannot do without a surface. Several may live at once, one
/// current on a thread.
class HeadlessContext
{
public:
    /// What the context must have current besides its framebuffer object.
    enum class Surface
    {
        Automatic, ///< none where the driver allows it, else a pbuffer
        Pbuffer    ///< a pbuffer in any case
    };

    /// Size in pixels and kind of the framebuffer.
    struct Options
    {
        int width = 1280;
        int height = 720;
        /// Samples a pixel; 0 and 1 mean no multisampling. The driver may give more.
        int samples = 0;
        Surface surface = Surface::Automatic;
    };

    /// Makes a context and its framebuffer, makes the one current and binds the other.
    /// @param error what is missing and what helps, in one line, when the result is null;
    ///        untouched otherwise. Nothing stays current after a failure.
    static std::unique_ptr<HeadlessContext> Create(const Options& options, std::string& error);

    /// Address of a GL function, 1.1 or later, or null. Works before any context is current;
    /// an address says nothing on whether the current context supports the function.
    static void* GetProcAddress(const char* name);

    /// Destroys the framebuffer and the context. GL objects that the host made in it die too.
    ~HeadlessContext();

    HeadlessContext(const HeadlessContext&) = delete;
    HeadlessContext& operator=(const HeadlessContext&) = delete;

    /// Makes the context current on the calling thread. False when the driver refuses, as it
    /// does while the context is current on another thread.
    bool MakeCurrent();

    bool IsCurrent() const;

    /// Leaves the calling thread without a current context if this one is current.
    void Release();

    /// Gives the framebuffer another size and sample count, makes the context current and
    /// binds the framebuffer. The pixels are undefined afterwards.
    /// @return false, with the old framebuffer untouched, when `error` says why.
    bool Resize(int width, int height, int samples, std::string& error);

    /// Binds the framebuffer for drawing and reading and sets the viewport to all of it.
    /// The context must be current.
    void BindFramebuffer();

    /// Reads the picture: RGBA, 8 bits each, tight rows, the top row first, samples resolved.
    /// Makes the context current and keeps its state.
    /// @return false when the pixels cannot be had; `rgba` is then empty.
    bool ReadPixels(std::vector<unsigned char>& rgba);

    /// Waits until GL has carried out everything asked of it. The context must be current.
    void Finish();

    int GetWidth() const;
    int GetHeight() const;

    /// Samples a pixel that the driver really gave; 0 without multisampling.
    int GetSamples() const;

    /// GL name of the framebuffer object to draw into.
    unsigned int GetFramebuffer() const;

    /// Largest width and height that a framebuffer of this context may have, in pixels.
    int GetMaxWidth() const;
    int GetMaxHeight() const;
    int GetMaxSamples() const;

    /// The GL strings of the context.
    const std::string& GetVendor() const;
    const std::string& GetRenderer() const;
    const std::string& GetVersion() const;

    /// How the context was reached, for a report: "surfaceless", "device 0", "default display",
    /// with " and pbuffer" behind it where one is used.
    const std::string& GetPlatform() const;

private:
    class Impl;

    explicit HeadlessContext(std::unique_ptr<Impl> impl);

    std::unique_ptr<Impl> m_impl;
};

}  // namespace OV::Host
