#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/SunTable.h"

#include "orvane_host/context/detail/GLVersion.h"
#include "orvane_host/present/detail/UploadScope.h"

#include <GL/gl.h>
#include <GL/glext.h>

namespace OV::Host::Detail
{

bool SunTable::IsSupported()
{
    return GLVersion().Has(3, 0, "GL_ARB_texture_float");
}

void SunTable::Upload(const Rows& rows)
{
    if (m_texture != 0 && rows == m_rows)
    {
        return;
    }
    m_rows = rows;
    const UploadScope scope;
    if (m_texture == 0)
    {
        glGenTextures(1, &m_texture);
    }
    glBindTexture(GL_TEXTURE_2D, m_texture);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, Columns, static_cast<GLsizei>(m_rows.size()), 0, GL_RGBA, GL_FLOAT,
                 m_rows.data());
    for (const GLenum name : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER})
    {
        glTexParameteri(GL_TEXTURE_2D, name, GL_NEAREST);
    }
    // Columns come again after the last.
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glBindTexture(GL_TEXTURE_2D, 0);
}

void SunTable::ReleaseGL()
{
    if (m_texture != 0)
    {
        glDeleteTextures(1, &m_texture);
        m_texture = 0;
    }
}

} // namespace OV::Host::Detail
