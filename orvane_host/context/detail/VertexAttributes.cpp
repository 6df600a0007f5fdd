#define GL_GLEXT_PROTOTYPES

#include "orvane_host/context/detail/VertexAttributes.h"

#include "orvane_host/context/detail/GLVersion.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>

namespace OV::Host::Detail
{

namespace
{

constexpr int kMostAttributes = 16;

} // namespace

VertexAttributes::VertexAttributes(const GLVersion& version)
    : m_hasIntegers(version.Has(3, 0)), m_hasLongs(version.Has(4, 1)), m_hasDivisors(version.Has(3, 3))
{
    int count = 0;
    glGetIntegerv(GL_MAX_VERTEX_ATTRIBS, &count);
    m_attributes.resize(static_cast<std::size_t>(std::clamp(count, 0, kMostAttributes)));
    for (GLuint i = 0; i < m_attributes.size(); ++i)
    {
        Attribute& attribute = m_attributes[i];
        glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &attribute.isEnabled);
        glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_SIZE, &attribute.size);
        glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_TYPE, &attribute.type);
        glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_NORMALIZED, &attribute.isNormalized);
        glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_STRIDE, &attribute.stride);
        glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING, &attribute.buffer);
        glGetVertexAttribPointerv(i, GL_VERTEX_ATTRIB_ARRAY_POINTER, &attribute.pointer);
        if (m_hasIntegers)
        {
            glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_INTEGER, &attribute.isInteger);
        }
        if (m_hasLongs)
        {
            glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_LONG, &attribute.isLong);
        }
        if (m_hasDivisors)
        {
            glGetVertexAttribiv(i, GL_VERTEX_ATTRIB_ARRAY_DIVISOR, &attribute.divisor);
        }
        // Number 0 is the vertex itself in a compatibility context, and has no value.
        if (i > 0)
        {
            glGetVertexAttribfv(i, GL_CURRENT_VERTEX_ATTRIB, attribute.value);
        }
    }
}

void VertexAttributes::Reset() const
{
    for (GLuint i = 0; i < m_attributes.size(); ++i)
    {
        glDisableVertexAttribArray(i);
        if (m_hasDivisors)
        {
            glVertexAttribDivisor(i, 0);
        }
        if (i > 0)
        {
            glVertexAttrib4f(i, 0.0f, 0.0f, 0.0f, 1.0f);
        }
    }
}

void VertexAttributes::Restore() const
{
    for (GLuint i = 0; i < m_attributes.size(); ++i)
    {
        const Attribute& attribute = m_attributes[i];
        RestorePointer(i, attribute);
        (attribute.isEnabled ? glEnableVertexAttribArray : glDisableVertexAttribArray)(i);
        if (m_hasDivisors)
        {
            glVertexAttribDivisor(i, static_cast<GLuint>(attribute.divisor));
        }
        if (i > 0)
        {
            glVertexAttrib4fv(i, attribute.value);
        }
    }
}

void VertexAttributes::RestorePointer(unsigned int index, const Attribute& attribute) const
{
    const auto type = static_cast<GLenum>(attribute.type);
    glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(attribute.buffer));
    if (attribute.isLong)
    {
        glVertexAttribLPointer(index, attribute.size, type, attribute.stride, attribute.pointer);
    }
    else if (attribute.isInteger)
    {
        glVertexAttribIPointer(index, attribute.size, type, attribute.stride, attribute.pointer);
    }
    else
    {
        glVertexAttribPointer(index, attribute.size, type, attribute.isNormalized ? GL_TRUE : GL_FALSE,
                              attribute.stride, attribute.pointer);
    }
}

} // namespace OV::Host::Detail
