#pragma once

#include <EGL/egl.h>

namespace OV::Test
{

/// A context whose framebuffer 0 has a size, a depth buffer and rows that begin at the top, as those of windows do,
/// where the rows of framebuffer objects begin at the bottom. Current while it lives.
class WindowSurface
{
public:
    WindowSurface(int width, int height)
        : m_display(eglGetCurrentDisplay()), m_beforeContext(eglGetCurrentContext()), m_before(eglGetCurrentSurface(EGL_DRAW))
    {
        const EGLint wanted[] = {EGL_SURFACE_TYPE, EGL_PBUFFER_BIT, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT,
                                 EGL_RED_SIZE, 8, EGL_ALPHA_SIZE, 8, EGL_DEPTH_SIZE, 24, EGL_STENCIL_SIZE, 8, EGL_NONE};
        EGLConfig config = nullptr;
        EGLint count = 0;
        eglBindAPI(EGL_OPENGL_API);
        if (!eglChooseConfig(m_display, wanted, &config, 1, &count) || count < 1)
        {
            return;
        }
        const EGLint size[] = {EGL_WIDTH, width, EGL_HEIGHT, height, EGL_NONE};
        m_surface = eglCreatePbufferSurface(m_display, config, size);
        m_context = eglCreateContext(m_display, config, EGL_NO_CONTEXT, nullptr);
        m_isCurrent = eglMakeCurrent(m_display, m_surface, m_surface, m_context) == EGL_TRUE;
    }

    ~WindowSurface()
    {
        eglMakeCurrent(m_display, m_before, m_before, m_beforeContext);
        if (m_context != EGL_NO_CONTEXT)
        {
            eglDestroyContext(m_display, m_context);
        }
        if (m_surface != EGL_NO_SURFACE)
        {
            eglDestroySurface(m_display, m_surface);
        }
    }

    WindowSurface(const WindowSurface&) = delete;
    WindowSurface& operator=(const WindowSurface&) = delete;

    bool IsCurrent() const { return m_isCurrent; }

private:
    EGLDisplay m_display;
    EGLContext m_beforeContext;
    EGLSurface m_before;
    EGLContext m_context = EGL_NO_CONTEXT;
    EGLSurface m_surface = EGL_NO_SURFACE;
    bool m_isCurrent = false;
};

} // namespace OV::Test
