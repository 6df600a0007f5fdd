// The host kit calls GL past 1.1 by the names of the GL library. Defined here they lead to GLEW's
// pointers, which a recorder exchanges, so that a test of the host kit sees these calls too.

#include <GL/glew.h>

#undef glActiveTexture
#undef glBindBuffer
#undef glBindFramebuffer
#undef glBindRenderbuffer
#undef glBlitFramebuffer
#undef glBufferData
#undef glBufferSubData
#undef glCheckFramebufferStatus
#undef glMinSampleShading
#undef glMultiDrawElements
#undef glVertexAttrib4f

extern "C"
{

void GLAPIENTRY glActiveTexture(GLenum unit)
{
    __glewActiveTexture(unit);
}

void GLAPIENTRY glBindBuffer(GLenum target, GLuint buffer)
{
    __glewBindBuffer(target, buffer);
}

void GLAPIENTRY glBindFramebuffer(GLenum target, GLuint framebuffer)
{
    __glewBindFramebuffer(target, framebuffer);
}

void GLAPIENTRY glBindRenderbuffer(GLenum target, GLuint renderbuffer)
{
    __glewBindRenderbuffer(target, renderbuffer);
}

void GLAPIENTRY glBlitFramebuffer(GLint fromX0, GLint fromY0, GLint fromX1, GLint fromY1, GLint toX0, GLint toY0,
                                  GLint toX1, GLint toY1, GLbitfield mask, GLenum filter)
{
    __glewBlitFramebuffer(fromX0, fromY0, fromX1, fromY1, toX0, toY0, toX1, toY1, mask, filter);
}

void GLAPIENTRY glBufferData(GLenum target, GLsizeiptr size, const void* data, GLenum usage)
{
    __glewBufferData(target, size, data, usage);
}

void GLAPIENTRY glBufferSubData(GLenum target, GLintptr offset, GLsizeiptr size, const void* data)
{
    __glewBufferSubData(target, offset, size, data);
}

GLenum GLAPIENTRY glCheckFramebufferStatus(GLenum target)
{
    return __glewCheckFramebufferStatus(target);
}

void GLAPIENTRY glMultiDrawElements(GLenum mode, const GLsizei* counts, GLenum type, const void* const* indices,
                                    GLsizei drawCount)
{
    __glewMultiDrawElements(mode, counts, type, indices, drawCount);
}

void GLAPIENTRY glMinSampleShading(GLfloat share)
{
    __glewMinSampleShading(share);
}

void GLAPIENTRY glVertexAttrib4f(GLuint attribute, GLfloat x, GLfloat y, GLfloat z, GLfloat w)
{
    __glewVertexAttrib4f(attribute, x, y, z, w);
}

}
