// Entry points of GL are met in two places: those past 1.1 are pointers of GLEW, which are exchanged
// while a counter lives, and the others are symbols of the GL library. A program's own definition of a
// symbol is found before a library's, so that what stands at the end of this file is what the engine
// and the kit call.

#include "apps/render/GLCalls.h"

#include <GL/glew.h>

#include <dlfcn.h>

#include <utility>

namespace OV::RenderApp
{

namespace
{

GLCallCounts counts = {};
bool isCounting = false;

void Count(GLCallKind kind)
{
    if (isCounting)
    {
        ++counts[static_cast<std::size_t>(kind)];
    }
}

/// Stands in for what a pointer of GLEW leads to.
template <auto* Pointer, GLCallKind Kind, class Function>
class Hook;

template <auto* Pointer, GLCallKind Kind, class Result, class... Arguments>
class Hook<Pointer, Kind, Result (*)(Arguments...)>
{
public:
    /// A second call puts the pointer back.
    static void Swap() { std::swap(*Pointer, s_other); }

private:
    static Result GLAPIENTRY Call(Arguments... arguments)
    {
        Count(Kind);
        return s_other(arguments...);
    }

    static inline Result (*s_other)(Arguments...) = &Call;
};

template <GLCallKind Kind, auto*... Pointers>
void SwapEach()
{
    (Hook<Pointers, Kind, std::remove_pointer_t<decltype(Pointers)>>::Swap(), ...);
}

void SwapAll()
{
    SwapEach<GLCallKind::Program, &__glewUseProgram>();
    SwapEach<GLCallKind::Uniform, &__glewUniform1f, &__glewUniform2f, &__glewUniform3f, &__glewUniform4f,
             &__glewUniform1i, &__glewUniform2i, &__glewUniform3i, &__glewUniform4i, &__glewUniform1fv,
             &__glewUniform2fv, &__glewUniform3fv, &__glewUniform4fv, &__glewUniform1iv, &__glewUniform2iv,
             &__glewUniform3iv, &__glewUniform4iv, &__glewUniformMatrix2fv, &__glewUniformMatrix3fv,
             &__glewUniformMatrix4fv>();
    SwapEach<GLCallKind::Attribute, &__glewVertexAttribPointer, &__glewEnableVertexAttribArray,
             &__glewDisableVertexAttribArray, &__glewVertexAttrib4f, &__glewVertexAttrib4fv>();
    SwapEach<GLCallKind::Buffer, &__glewBindBuffer, &__glewBufferData, &__glewBufferSubData>();
    SwapEach<GLCallKind::Texture, &__glewActiveTexture>();
    SwapEach<GLCallKind::Framebuffer, &__glewBindFramebuffer, &__glewBindRenderbuffer, &__glewBlitFramebuffer>();
    SwapEach<GLCallKind::State, &__glewBlendEquation, &__glewBlendFuncSeparate, &__glewBlendColor>();
}

template <class Function>
Function Next(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

} // namespace

GLCallCounter::GLCallCounter()
{
    counts = {};
    isCounting = true;
    SwapAll();
}

GLCallCounter::~GLCallCounter()
{
    SwapAll();
    isCounting = false;
}

const GLCallCounts& GLCallCounter::GetCounts() const
{
    return counts;
}

} // namespace OV::RenderApp

#undef glActiveTexture
#undef glBindBuffer
#undef glBindFramebuffer
#undef glBindRenderbuffer
#undef glBlitFramebuffer
#undef glUseProgram
#undef glVertexAttrib4f

#define ORVANE_COUNTED(kind, name, parameters, arguments)                                     \
    extern "C" __attribute__((visibility("default"))) void GLAPIENTRY name parameters         \
    {                                                                                         \
        static const auto next = OV::RenderApp::Next<void(GLAPIENTRY*) parameters>(#name);    \
        OV::RenderApp::Count(OV::RenderApp::GLCallKind::kind);                                \
        next arguments;                                                                       \
    }

ORVANE_COUNTED(Draw, glDrawArrays, (GLenum mode, GLint first, GLsizei count), (mode, first, count))
ORVANE_COUNTED(Draw, glDrawElements, (GLenum mode, GLsizei count, GLenum type, const void* indices),
               (mode, count, type, indices))
ORVANE_COUNTED(Program, glUseProgram, (GLuint program), (program))
ORVANE_COUNTED(Attribute, glVertexAttrib4f, (GLuint index, GLfloat x, GLfloat y, GLfloat z, GLfloat w),
               (index, x, y, z, w))
ORVANE_COUNTED(Buffer, glBindBuffer, (GLenum target, GLuint buffer), (target, buffer))
ORVANE_COUNTED(Texture, glActiveTexture, (GLenum unit), (unit))
ORVANE_COUNTED(Texture, glBindTexture, (GLenum target, GLuint texture), (target, texture))
ORVANE_COUNTED(Texture, glTexParameteri, (GLenum target, GLenum name, GLint value), (target, name, value))
ORVANE_COUNTED(Texture, glCopyTexSubImage2D,
               (GLenum target, GLint level, GLint toX, GLint toY, GLint x, GLint y, GLsizei width, GLsizei height),
               (target, level, toX, toY, x, y, width, height))
ORVANE_COUNTED(Framebuffer, glBindFramebuffer, (GLenum target, GLuint framebuffer), (target, framebuffer))
ORVANE_COUNTED(Framebuffer, glBindRenderbuffer, (GLenum target, GLuint renderbuffer), (target, renderbuffer))
ORVANE_COUNTED(Framebuffer, glBlitFramebuffer,
               (GLint fromX0, GLint fromY0, GLint fromX1, GLint fromY1, GLint toX0, GLint toY0, GLint toX1, GLint toY1,
                GLbitfield mask, GLenum filter),
               (fromX0, fromY0, fromX1, fromY1, toX0, toY0, toX1, toY1, mask, filter))
ORVANE_COUNTED(State, glBlendFunc, (GLenum source, GLenum destination), (source, destination))
ORVANE_COUNTED(State, glColorMask, (GLboolean red, GLboolean green, GLboolean blue, GLboolean alpha),
               (red, green, blue, alpha))
ORVANE_COUNTED(State, glCullFace, (GLenum mode), (mode))
ORVANE_COUNTED(State, glDepthFunc, (GLenum function), (function))
ORVANE_COUNTED(State, glDepthMask, (GLboolean mask), (mask))
ORVANE_COUNTED(State, glDepthRange, (GLclampd nearest, GLclampd farthest), (nearest, farthest))
ORVANE_COUNTED(State, glDisable, (GLenum capability), (capability))
ORVANE_COUNTED(State, glEnable, (GLenum capability), (capability))
ORVANE_COUNTED(State, glFrontFace, (GLenum mode), (mode))
ORVANE_COUNTED(State, glLineWidth, (GLfloat width), (width))
ORVANE_COUNTED(State, glPolygonMode, (GLenum face, GLenum mode), (face, mode))
ORVANE_COUNTED(State, glPolygonOffset, (GLfloat factor, GLfloat units), (factor, units))
ORVANE_COUNTED(State, glScissor, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height))
ORVANE_COUNTED(State, glViewport, (GLint x, GLint y, GLsizei width, GLsizei height), (x, y, width, height))
ORVANE_COUNTED(Clear, glClear, (GLbitfield mask), (mask))
