#include "orvane_host/context/HeadlessContext.h"

#include "orvane_host/context/detail/EglContext.h"
#include "orvane_host/context/detail/HeadlessFramebuffer.h"

#include <utility>

namespace OV::Host
{

class HeadlessContext::Impl
{
public:
    ~Impl()
    {
        // The names die with the context anyhow; deleting them while another context is current
        // would hit that one's objects.
        if (framebuffer && !egl->IsCurrent())
        {
            framebuffer->Abandon();
        }
    }

    /// Learns functions, strings and limits of the context, which must be current.
    bool Inspect(std::string& error)
    {
        const char* missing = gl.Load(&HeadlessContext::GetProcAddress);
        if (missing)
        {
            error = "the GL driver lacks the function " + std::string(missing)
                + "; use a driver with OpenGL 3.0 or later";
            return false;
        }
        vendor = Text(GL_VENDOR);
        renderer = Text(GL_RENDERER);
        version = Text(GL_VERSION);
        GLint major = 0;
        gl.getIntegerv(GL_MAJOR_VERSION, &major);
        if (gl.getError() != GL_NO_ERROR || major < 3)
        {
            error = "OpenGL " + version + " of " + renderer
                + " is too old for framebuffer objects; use a driver with OpenGL 3.0 or later";
            return false;
        }
        limits = Detail::FramebufferLimits::Query(gl);
        return true;
    }

    std::unique_ptr<Detail::EglContext> egl;
    Detail::GLFunctions gl;
    Detail::FramebufferLimits limits;
    std::unique_ptr<Detail::HeadlessFramebuffer> framebuffer;
    std::string vendor;
    std::string renderer;
    std::string version;

private:
    std::string Text(GLenum name) const
    {
        const GLubyte* text = gl.getString(name);
        return text ? reinterpret_cast<const char*>(text) : "";
    }
};

std::unique_ptr<HeadlessContext> HeadlessContext::Create(const Options& options, std::string& error)
{
    auto impl = std::make_unique<Impl>();
    impl->egl = Detail::EglContext::Create(options.surface == Surface::Pbuffer, error);
    if (!impl->egl || !impl->Inspect(error))
    {
        return nullptr;
    }
    std::unique_ptr<HeadlessContext> context(new HeadlessContext(std::move(impl)));
    if (!context->Resize(options.width, options.height, options.samples, error))
    {
        return nullptr;
    }
    return context;
}

void* HeadlessContext::GetProcAddress(const char* name)
{
    return reinterpret_cast<void*>(eglGetProcAddress(name));
}

HeadlessContext::HeadlessContext(std::unique_ptr<Impl> impl) : m_impl(std::move(impl))
{
}

HeadlessContext::~HeadlessContext() = default;

bool HeadlessContext::MakeCurrent()
{
    return m_impl->egl->MakeCurrent();
}

bool HeadlessContext::IsCurrent() const
{
    return m_impl->egl->IsCurrent();
}

void HeadlessContext::Release()
{
    m_impl->egl->Release();
}

bool HeadlessContext::Resize(int width, int height, int samples, std::string& error)
{
    if (!MakeCurrent())
    {
        error = "the GL context cannot be made current; release it on the thread that holds it";
        return false;
    }
    auto made = Detail::HeadlessFramebuffer::Create(m_impl->gl, m_impl->limits, width, height, samples, error);
    if (!made)
    {
        return false;
    }
    m_impl->framebuffer = std::move(made);
    BindFramebuffer();
    return true;
}

void HeadlessContext::BindFramebuffer()
{
    m_impl->framebuffer->Bind();
}

bool HeadlessContext::ReadPixels(std::vector<unsigned char>& rgba)
{
    rgba.clear();
    return MakeCurrent() && m_impl->framebuffer->ReadPixels(rgba);
}

void HeadlessContext::Finish()
{
    m_impl->gl.finish();
}

int HeadlessContext::GetWidth() const
{
    return m_impl->framebuffer->GetWidth();
}

int HeadlessContext::GetHeight() const
{
    return m_impl->framebuffer->GetHeight();
}

int HeadlessContext::GetSamples() const
{
    return m_impl->framebuffer->GetSamples();
}

unsigned int HeadlessContext::GetFramebuffer() const
{
    return m_impl->framebuffer->GetName();
}

int HeadlessContext::GetMaxWidth() const
{
    return m_impl->limits.maxWidth;
}

int HeadlessContext::GetMaxHeight() const
{
    return m_impl->limits.maxHeight;
}

int HeadlessContext::GetMaxSamples() const
{
    return m_impl->limits.maxSamples;
}

const std::string& HeadlessContext::GetVendor() const
{
    return m_impl->vendor;
}

const std::string& HeadlessContext::GetRenderer() const
{
    return m_impl->renderer;
}

const std::string& HeadlessContext::GetVersion() const
{
    return m_impl->version;
}

const std::string& HeadlessContext::GetPlatform() const
{
    return m_impl->egl->GetPlatform();
}

}  // namespace OV::Host
