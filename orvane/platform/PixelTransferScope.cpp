#include "orvane/platform/detail/PixelTransferScope.h"

#include <GL/glew.h>

namespace OV::Platform
{

namespace
{

struct Setting
{
    GLenum name;
    GLint wanted;
};

// Rows of 4 bytes a pixel are whole words, so that an alignment of 4 pads nothing.
constexpr Setting kUpload[] = {
    {GL_UNPACK_ALIGNMENT, 4},
    {GL_UNPACK_ROW_LENGTH, 0},
    {GL_UNPACK_SKIP_ROWS, 0},
    {GL_UNPACK_SKIP_PIXELS, 0},
};

constexpr Setting kRead[] = {
    {GL_PACK_ALIGNMENT, 4},
    {GL_PACK_ROW_LENGTH, 0},
    {GL_PACK_SKIP_ROWS, 0},
    {GL_PACK_SKIP_PIXELS, 0},
};

const Setting* SettingsOf(PixelTransferScope::Direction direction)
{
    return direction == PixelTransferScope::Direction::Upload ? kUpload : kRead;
}

GLenum BufferOf(PixelTransferScope::Direction direction)
{
    return direction == PixelTransferScope::Direction::Upload ? GL_PIXEL_UNPACK_BUFFER : GL_PIXEL_PACK_BUFFER;
}

GLenum BindingOf(PixelTransferScope::Direction direction)
{
    return direction == PixelTransferScope::Direction::Upload ? GL_PIXEL_UNPACK_BUFFER_BINDING
                                                              : GL_PIXEL_PACK_BUFFER_BINDING;
}

bool HasPixelBuffers()
{
    return GLEW_VERSION_2_1 || GLEW_ARB_pixel_buffer_object;
}

}  // namespace

PixelTransferScope::PixelTransferScope(Direction direction) :
    m_direction(direction)
{
    const Setting* const settings = SettingsOf(direction);
    for (int i = 0; i < kSettings; ++i)
    {
        glGetIntegerv(settings[i].name, &m_values[i]);
        if (m_values[i] != settings[i].wanted)
        {
            glPixelStorei(settings[i].name, settings[i].wanted);
        }
    }
    if (HasPixelBuffers())
    {
        glGetIntegerv(BindingOf(direction), &m_buffer);
    }
    if (m_buffer != 0)
    {
        glBindBuffer(BufferOf(direction), 0);
    }
}

PixelTransferScope::~PixelTransferScope()
{
    const Setting* const settings = SettingsOf(m_direction);
    for (int i = 0; i < kSettings; ++i)
    {
        if (m_values[i] != settings[i].wanted)
        {
            glPixelStorei(settings[i].name, m_values[i]);
        }
    }
    if (m_buffer != 0)
    {
        glBindBuffer(BufferOf(m_direction), static_cast<GLuint>(m_buffer));
    }
}

}  // namespace OV::Platform
