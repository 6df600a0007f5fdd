#pragma once

#include <GL/gl.h>
#include <GL/glext.h>

#include <type_traits>

namespace OV::Host::Detail
{

/// The GL functions that the host kit itself calls, fetched through EGL: the engine's own
/// loading of entry points stays untouched, as it is in a host that knows no extension loader.
struct GLFunctions
{
    const GLubyte* (APIENTRYP getString)(GLenum) = nullptr;
    GLenum (APIENTRYP getError)() = nullptr;
    void (APIENTRYP getIntegerv)(GLenum, GLint*) = nullptr;
    GLboolean (APIENTRYP isEnabled)(GLenum) = nullptr;
    void (APIENTRYP enable)(GLenum) = nullptr;
    void (APIENTRYP disable)(GLenum) = nullptr;
    void (APIENTRYP finish)() = nullptr;
    void (APIENTRYP viewport)(GLint, GLint, GLsizei, GLsizei) = nullptr;
    void (APIENTRYP pixelStorei)(GLenum, GLint) = nullptr;
    void (APIENTRYP readPixels)(GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, void*) = nullptr;
    PFNGLBINDBUFFERPROC bindBuffer = nullptr;
    PFNGLGENFRAMEBUFFERSPROC genFramebuffers = nullptr;
    PFNGLDELETEFRAMEBUFFERSPROC deleteFramebuffers = nullptr;
    PFNGLBINDFRAMEBUFFERPROC bindFramebuffer = nullptr;
    PFNGLCHECKFRAMEBUFFERSTATUSPROC checkFramebufferStatus = nullptr;
    PFNGLFRAMEBUFFERRENDERBUFFERPROC framebufferRenderbuffer = nullptr;
    PFNGLBLITFRAMEBUFFERPROC blitFramebuffer = nullptr;
    PFNGLGENRENDERBUFFERSPROC genRenderbuffers = nullptr;
    PFNGLDELETERENDERBUFFERSPROC deleteRenderbuffers = nullptr;
    PFNGLBINDRENDERBUFFERPROC bindRenderbuffer = nullptr;
    PFNGLRENDERBUFFERSTORAGEMULTISAMPLEPROC renderbufferStorageMultisample = nullptr;
    PFNGLGETRENDERBUFFERPARAMETERIVPROC getRenderbufferParameteriv = nullptr;

    /// Fetches every function from `getProcAddress(const char*)`.
    /// @return the name of the first that is missing, or null when all are there.
    template <typename GetProcAddress>
    const char* Load(GetProcAddress getProcAddress)
    {
        const char* missing = nullptr;
        const auto fetch = [&](auto& function, const char* name)
        {
            function = reinterpret_cast<std::decay_t<decltype(function)>>(getProcAddress(name));
            if (!function && !missing)
            {
                missing = name;
            }
        };
        fetch(getString, "glGetString");
        fetch(getError, "glGetError");
        fetch(getIntegerv, "glGetIntegerv");
        fetch(isEnabled, "glIsEnabled");
        fetch(enable, "glEnable");
        fetch(disable, "glDisable");
        fetch(finish, "glFinish");
        fetch(viewport, "glViewport");
        fetch(pixelStorei, "glPixelStorei");
        fetch(readPixels, "glReadPixels");
        fetch(bindBuffer, "glBindBuffer");
        fetch(genFramebuffers, "glGenFramebuffers");
        fetch(deleteFramebuffers, "glDeleteFramebuffers");
        fetch(bindFramebuffer, "glBindFramebuffer");
        fetch(checkFramebufferStatus, "glCheckFramebufferStatus");
        fetch(framebufferRenderbuffer, "glFramebufferRenderbuffer");
        fetch(blitFramebuffer, "glBlitFramebuffer");
        fetch(genRenderbuffers, "glGenRenderbuffers");
        fetch(deleteRenderbuffers, "glDeleteRenderbuffers");
        fetch(bindRenderbuffer, "glBindRenderbuffer");
        fetch(renderbufferStorageMultisample, "glRenderbufferStorageMultisample");
        fetch(getRenderbufferParameteriv, "glGetRenderbufferParameteriv");
        return missing;
    }
};

}  // namespace OV::Host::Detail
