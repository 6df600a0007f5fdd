#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/ScreenBuffer.h"

#include "orvane_host/present/detail/UploadScope.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <iostream>

namespace OV::Host::Detail
{

namespace
{

GLint Query(GLenum name)
{
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

/// Those of a refusal, which whoever looks for errors knows nothing of. Bounded, since a lost
/// context reports one for ever.
void DropErrors()
{
    for (int i = 0; i < 16 && glGetError() != GL_NO_ERROR; ++i)
    {
    }
}

GLint FormatOf(ScreenBuffer::Depths depths)
{
    switch (depths)
    {
    case ScreenBuffer::Depths::Finest: break;
    case ScreenBuffer::Depths::Offsets:
        // Mesa's software renderer gives depths 32 bits where it is not asked for a number. A unit of a polygon
        // offset is then a 256th of what depths worked out in float differ by, and faces in one plane that are
        // kept apart by units show in turns.
        return GL_DEPTH_COMPONENT24;
    case ScreenBuffer::Depths::Short: return GL_DEPTH_COMPONENT16;
    }
    return GL_DEPTH_COMPONENT;
}

} // namespace

bool ScreenBuffer::Target::InitializeBuffers()
{
    const int wantedWidth = width;
    const int wantedHeight = height;
    if (width <= 0 || height <= 0)
    {
        return RenderTarget::InitializeBuffers();
    }
    width = height = 1;
    const bool isMade = RenderTarget::InitializeBuffers();
    width = wantedWidth;
    height = wantedHeight;
    return isMade && Enlarge();
}

bool ScreenBuffer::Target::Enlarge()
{
    const GLint before = Query(GL_FRAMEBUFFER_BINDING);
    DropErrors();
    const auto enlarge = [this](GLuint texture, GLint internal, GLenum format, GLenum type) {
        if (texture != 0)
        {
            glBindTexture(GL_TEXTURE_2D, texture);
            glTexImage2D(GL_TEXTURE_2D, 0, internal, width, height, 0, format, type, nullptr);
        }
    };
    {
        const UploadScope upload;
        enlarge(colorTexture, GL_RGBA, GL_RGBA, GL_UNSIGNED_BYTE);
        enlarge(depthTexture, FormatOf(m_depths), GL_DEPTH_COMPONENT, GL_UNSIGNED_INT);
    }
    glBindTexture(GL_TEXTURE_2D, 0);
    glDeleteRenderbuffers(1, &depthRenderbuffer);
    depthRenderbuffer = 0;
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    if (glGetError() != GL_NO_ERROR || glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
    {
        std::cerr << "Could not make a buffer of " << width << " x " << height << " pixels." << std::endl;
        return false;
    }
    glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(before));
    return true;
}

ScreenBuffer::~ScreenBuffer()
{
    m_target.SetDimensions(0, 0);
}

bool ScreenBuffer::Resize(int width, int height)
{
    if (width == m_width && height == m_height)
    {
        return m_usable;
    }
    m_width = width;
    m_height = height;
    m_smooth = false;
    const GLint limit = Query(GL_MAX_TEXTURE_SIZE);
    if (width <= 0 || height <= 0 || width > limit || height > limit)
    {
        m_target.SetDimensions(0, 0);
        m_usable = false;
        return false;
    }
    const GLint framebuffer = Query(GL_FRAMEBUFFER_BINDING);
    const GLint renderbuffer = Query(GL_RENDERBUFFER_BINDING);
    m_target.SetDimensions(width, height);
    // A target that fails leaves its own framebuffer bound.
    m_usable = Query(GL_FRAMEBUFFER_BINDING) == framebuffer;
    if (!m_usable)
    {
        glBindFramebuffer(GL_FRAMEBUFFER, static_cast<GLuint>(framebuffer));
        glBindRenderbuffer(GL_RENDERBUFFER, static_cast<GLuint>(renderbuffer));
        m_target.SetDimensions(0, 0);
        DropErrors();
        return false;
    }
    return true;
}

void ScreenBuffer::SetDepths(Depths depths)
{
    if (depths != m_target.GetDepths())
    {
        m_target.SetDepths(depths);
        Resize(0, 0);
    }
}

void ScreenBuffer::SmoothDepth(bool smooth)
{
    if (m_smooth == smooth)
    {
        return;
    }
    m_smooth = smooth;
    const GLint filter = smooth ? GL_LINEAR : GL_NEAREST;
    glBindTexture(GL_TEXTURE_2D, m_target.GetDepthTexture());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, filter);
    glBindTexture(GL_TEXTURE_2D, 0);
}

void ScreenBuffer::CopyFrom(unsigned int framebuffer, bool multisampled)
{
    if (!multisampled)
    {
        glBindTexture(GL_TEXTURE_2D, m_target.GetColorTexture());
        glCopyTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 0, 0, m_width, m_height);
        return;
    }
    // Only a blit resolves samples.
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, m_target.GetFramebuffer());
    glBlitFramebuffer(0, 0, m_width, m_height, 0, 0, m_width, m_height, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffer);
}

} // namespace OV::Host::Detail
