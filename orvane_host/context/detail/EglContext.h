#pragma once

#include <EGL/egl.h>

#include <memory>
#include <string>

namespace OV::Host::Detail
{

class EglDisplay;

/// A desktop GL context on whatever EGL display the machine offers, with a pbuffer where the
/// driver cannot do without a surface.
class EglContext
{
public:
    /// Makes a context and makes it current. Null when no display gives one: `error` then
    /// tells the reason of each attempt.
    static std::unique_ptr<EglContext> Create(bool forcePbuffer, std::string& error);

    ~EglContext();

    EglContext(const EglContext&) = delete;
    EglContext& operator=(const EglContext&) = delete;

    bool MakeCurrent();
    bool IsCurrent() const;
    void Release();

    /// How the context was reached.
    const std::string& GetPlatform() const { return m_platform; }

private:
    EglContext() = default;

    /// Fills this object from one display. False with a reason when any step fails.
    bool Open(const EglDisplay& display, bool forcePbuffer, std::string& reason);

    const EglDisplay* m_display = nullptr; ///< lives as long as the process
    EGLContext m_context = EGL_NO_CONTEXT;
    EGLSurface m_surface = EGL_NO_SURFACE;
    std::string m_platform;
};

}  // namespace OV::Host::Detail
