#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/UploadScope.h"

#include <GL/gl.h>
#include <GL/glext.h>

namespace OV::Host::Detail
{

namespace
{

constexpr GLenum kNames[] = {GL_UNPACK_ALIGNMENT, GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS};
constexpr GLint kTight[] = {1, 0, 0, 0};

} // namespace

UploadScope::UploadScope()
{
    static_assert(sizeof(kNames) / sizeof(kNames[0]) == kSettings);
    for (int i = 0; i < kSettings; ++i)
    {
        glGetIntegerv(kNames[i], &m_values[i]);
        glPixelStorei(kNames[i], kTight[i]);
    }
    glGetIntegerv(GL_PIXEL_UNPACK_BUFFER_BINDING, &m_buffer);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, 0);
}

UploadScope::~UploadScope()
{
    for (int i = 0; i < kSettings; ++i)
    {
        glPixelStorei(kNames[i], m_values[i]);
    }
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, static_cast<GLuint>(m_buffer));
}

} // namespace OV::Host::Detail
