#include "orvane_host/context/detail/EglContext.h"

#include <EGL/eglext.h>

#include <array>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace OV::Host::Detail
{

namespace
{

std::string EglErrorName(EGLint code)
{
    switch (code)
    {
    case EGL_SUCCESS: return "no reason given";
    case EGL_NOT_INITIALIZED: return "EGL_NOT_INITIALIZED";
    case EGL_BAD_ACCESS: return "EGL_BAD_ACCESS";
    case EGL_BAD_ALLOC: return "EGL_BAD_ALLOC";
    case EGL_BAD_ATTRIBUTE: return "EGL_BAD_ATTRIBUTE";
    case EGL_BAD_CONFIG: return "EGL_BAD_CONFIG";
    case EGL_BAD_CONTEXT: return "EGL_BAD_CONTEXT";
    case EGL_BAD_DISPLAY: return "EGL_BAD_DISPLAY";
    case EGL_BAD_MATCH: return "EGL_BAD_MATCH";
    case EGL_BAD_NATIVE_WINDOW: return "EGL_BAD_NATIVE_WINDOW";
    case EGL_BAD_PARAMETER: return "EGL_BAD_PARAMETER";
    default: return "EGL error " + std::to_string(code);
    }
}

/// True when the blank-separated list holds exactly that word.
bool HasWord(const char* list, const std::string& word)
{
    if (!list)
    {
        return false;
    }
    const std::string padded = " " + std::string(list) + " ";
    return padded.find(" " + word + " ") != std::string::npos;
}

struct Candidate
{
    std::string name;
    EGLDisplay display = EGL_NO_DISPLAY;
};

template <typename Function>
Function EglFunction(const char* name)
{
    return reinterpret_cast<Function>(eglGetProcAddress(name));
}

/// Every display worth trying, the one that needs least first.
std::vector<Candidate> FindCandidates()
{
    std::vector<Candidate> candidates;
    const char* extensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    const auto getPlatformDisplay =
        EglFunction<PFNEGLGETPLATFORMDISPLAYEXTPROC>("eglGetPlatformDisplayEXT");
    if (getPlatformDisplay && HasWord(extensions, "EGL_MESA_platform_surfaceless"))
    {
        candidates.push_back({"surfaceless", getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA,
                                                                EGL_DEFAULT_DISPLAY, nullptr)});
    }
    const auto queryDevices = EglFunction<PFNEGLQUERYDEVICESEXTPROC>("eglQueryDevicesEXT");
    const bool hasDevices = HasWord(extensions, "EGL_EXT_platform_device")
        && (HasWord(extensions, "EGL_EXT_device_enumeration") || HasWord(extensions, "EGL_EXT_device_base"));
    if (getPlatformDisplay && queryDevices && hasDevices)
    {
        std::array<EGLDeviceEXT, 16> devices{};
        EGLint count = 0;
        if (!queryDevices(static_cast<EGLint>(devices.size()), devices.data(), &count))
        {
            count = 0;
        }
        for (EGLint i = 0; i < count; ++i)
        {
            candidates.push_back({"device " + std::to_string(i),
                                  getPlatformDisplay(EGL_PLATFORM_DEVICE_EXT, devices[i], nullptr)});
        }
    }
    candidates.push_back({"default display", eglGetDisplay(EGL_DEFAULT_DISPLAY)});
    return candidates;
}

}  // namespace

/// An initialised display. It stays open for the life of the process: EGL ends a display for
/// everybody at the first eglTerminate, and Mesa leaks a little each time one is ended.
class EglDisplay
{
public:
    /// The one object of a display, or null with a reason.
    static const EglDisplay* Open(const Candidate& candidate, std::string& reason)
    {
        if (candidate.display == EGL_NO_DISPLAY)
        {
            reason = "there is no such display";
            return nullptr;
        }
        static std::mutex mutex;
        // Never destroyed, since a context in a static object may be the last to go.
        static auto& displays = *new std::map<EGLDisplay, std::unique_ptr<EglDisplay>>;
        const std::lock_guard<std::mutex> lock(mutex);
        std::unique_ptr<EglDisplay>& entry = displays[candidate.display];
        if (!entry)
        {
            EGLint major = 0;
            EGLint minor = 0;
            if (!eglInitialize(candidate.display, &major, &minor))
            {
                reason = EglErrorName(eglGetError());
                return nullptr;
            }
            entry.reset(new EglDisplay(candidate));
        }
        return entry.get();
    }

    EGLDisplay Handle() const { return m_candidate.display; }

    const std::string& Name() const { return m_candidate.name; }

    bool HasExtension(const std::string& name) const
    {
        return HasWord(eglQueryString(Handle(), EGL_EXTENSIONS), name);
    }

private:
    explicit EglDisplay(const Candidate& candidate) : m_candidate(candidate) {}

    Candidate m_candidate;
};

std::unique_ptr<EglContext> EglContext::Create(bool forcePbuffer, std::string& error)
{
    std::string reasons;
    for (const Candidate& candidate : FindCandidates())
    {
        std::string reason;
        std::unique_ptr<EglContext> context(new EglContext);
        const EglDisplay* display = EglDisplay::Open(candidate, reason);
        if (display && context->Open(*display, forcePbuffer, reason))
        {
            return context;
        }
        reasons += (reasons.empty() ? "" : "; ") + candidate.name + ": " + reason;
    }
    error = "no EGL display gives a desktop OpenGL context (" + reasons
        + "); install a GL driver with EGL, such as the packages libegl1 and libgl1-mesa-dri";
    return nullptr;
}

bool EglContext::Open(const EglDisplay& display, bool forcePbuffer, std::string& reason)
{
    m_display = &display;
    if (!eglBindAPI(EGL_OPENGL_API))
    {
        reason = "EGL offers no desktop OpenGL here";
        return false;
    }
    const bool needsPbuffer = forcePbuffer || !m_display->HasExtension("EGL_KHR_surfaceless_context");
    const EGLint configAttributes[] = {EGL_SURFACE_TYPE, needsPbuffer ? EGL_PBUFFER_BIT : 0,
                                       EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (!eglChooseConfig(m_display->Handle(), configAttributes, &config, 1, &count) || count == 0)
    {
        reason = needsPbuffer ? "no configuration for desktop OpenGL with a pbuffer"
                              : "no configuration for desktop OpenGL";
        return false;
    }
    // Without attributes the driver gives its newest version that still knows all older GLSL.
    m_context = eglCreateContext(m_display->Handle(), config, EGL_NO_CONTEXT, nullptr);
    if (m_context == EGL_NO_CONTEXT)
    {
        reason = "no desktop OpenGL context: " + EglErrorName(eglGetError());
        return false;
    }
    if (needsPbuffer)
    {
        const EGLint surfaceAttributes[] = {EGL_WIDTH, 16, EGL_HEIGHT, 16, EGL_NONE};
        m_surface = eglCreatePbufferSurface(m_display->Handle(), config, surfaceAttributes);
        if (m_surface == EGL_NO_SURFACE)
        {
            reason = "no pbuffer: " + EglErrorName(eglGetError());
            return false;
        }
    }
    if (!MakeCurrent())
    {
        reason = "the context cannot be made current: " + EglErrorName(eglGetError());
        return false;
    }
    m_platform = m_display->Name() + (needsPbuffer ? " and pbuffer" : "");
    return true;
}

EglContext::~EglContext()
{
    if (m_context != EGL_NO_CONTEXT)
    {
        Release();
        eglDestroyContext(m_display->Handle(), m_context);
    }
    if (m_surface != EGL_NO_SURFACE)
    {
        eglDestroySurface(m_display->Handle(), m_surface);
    }
}

bool EglContext::MakeCurrent()
{
    // The bound API is a matter of the thread, and decides what "current" means below.
    eglBindAPI(EGL_OPENGL_API);
    return IsCurrent() || eglMakeCurrent(m_display->Handle(), m_surface, m_surface, m_context);
}

bool EglContext::IsCurrent() const
{
    return eglGetCurrentContext() == m_context;
}

void EglContext::Release()
{
    eglBindAPI(EGL_OPENGL_API);
    if (IsCurrent())
    {
        eglMakeCurrent(m_display->Handle(), EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    }
}

}  // namespace OV::Host::Detail
