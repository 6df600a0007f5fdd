#define GL_GLEXT_PROTOTYPES

#include "apps/viewer/ModelPicture.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>

namespace OV::ViewerApp
{

ModelPicture::~ModelPicture()
{
    Release();
}

void ModelPicture::Release()
{
    glDeleteFramebuffers(1, &m_framebuffer);
    glDeleteRenderbuffers(1, &m_color);
    glDeleteRenderbuffers(1, &m_depth);
    m_framebuffer = m_color = m_depth = 0;
    m_width = m_height = m_samples = 0;
}

bool ModelPicture::Make(int width, int height, int samples)
{
    Release();
    glGenFramebuffers(1, &m_framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    glGenRenderbuffers(1, &m_color);
    glBindRenderbuffer(GL_RENDERBUFFER, m_color);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, GL_RGBA8, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, m_color);
    glGenRenderbuffers(1, &m_depth);
    glBindRenderbuffer(GL_RENDERBUFFER, m_depth);
    glRenderbufferStorageMultisample(GL_RENDERBUFFER, samples, GL_DEPTH24_STENCIL8, width, height);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER, m_depth);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
    {
        Release();
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        return false;
    }
    m_width = width;
    m_height = height;
    m_samples = samples;
    return true;
}

bool ModelPicture::Begin(int width, int height, int samples)
{
    GLint most = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &most);
    const int wanted = samples > 1 ? std::min(samples, most) : 0;
    if (Holds(width, height) && m_samples == wanted)
    {
        glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
        return true;
    }
    return Make(width, height, wanted);
}

void ModelPicture::Show(int x, int y) const
{
    glBindFramebuffer(GL_READ_FRAMEBUFFER, m_framebuffer);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    // The window has no samples of its own, so that those of the picture are resolved by the way.
    glBlitFramebuffer(0, 0, m_width, m_height, x, y, x + m_width, y + m_height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

} // namespace OV::ViewerApp
