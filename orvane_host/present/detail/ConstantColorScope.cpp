#define GL_GLEXT_PROTOTYPES

#include "orvane_host/present/detail/ConstantColorScope.h"

#include <GL/gl.h>
#include <GL/glext.h>

namespace OV::Host::Detail
{

ConstantColorScope::ConstantColorScope(unsigned int attribute, bool wanted) : m_attribute(attribute), m_wanted(wanted)
{
    if (m_wanted)
    {
        glVertexAttrib4f(m_attribute, 1.0f, 1.0f, 1.0f, 1.0f);
    }
}

ConstantColorScope::~ConstantColorScope()
{
    if (m_wanted)
    {
        glVertexAttrib4f(m_attribute, 0.0f, 0.0f, 0.0f, 1.0f);
    }
}

} // namespace OV::Host::Detail
