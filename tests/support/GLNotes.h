#pragma once

#include "tests/support/GLHookTags.h"

#include <algorithm>
#include <type_traits>

// What is noted of a call beside its name: its arguments and what they point at.

namespace OV::Test
{

namespace
{

template <class T>
void KeepNames(GLCall& call, GLsizei n, const T* names)
{
    call.ints.assign(names, names + std::max(n, 0));
}

template <class Tag>
constexpr bool kTakesOffset =
    std::is_same_v<Tag, VertexAttribPointerTag> || std::is_same_v<Tag, DrawElementsTag>;

template <class Tag, class T>
GLArgument ToArgument(T value)
{
    GLArgument argument;
    if constexpr (std::is_pointer_v<T>)
    {
        using Pointee = std::remove_cv_t<std::remove_pointer_t<T>>;
        if constexpr (kTakesOffset<Tag>)
        {
            argument.kind = GLArgument::Kind::Offset;
            argument.number = static_cast<double>(reinterpret_cast<std::uintptr_t>(value));
        }
        else if constexpr (std::is_same_v<Pointee, GLchar> && std::is_const_v<std::remove_pointer_t<T>>)
        {
            argument.kind = GLArgument::Kind::Text;
            argument.text = value ? value : "";
        }
        else
        {
            argument.kind = GLArgument::Kind::Data;
            argument.number = value ? 1.0 : 0.0;
        }
    }
    else
    {
        argument.kind = std::is_floating_point_v<T> ? GLArgument::Kind::Real : GLArgument::Kind::Integer;
        argument.number = static_cast<double>(value);
    }
    return argument;
}

template <class Tag, class... A>
void NoteValues(GLCall&, Tag, A...)
{
}

#define ORVANE_NOTE_VECTOR(name, type, kept, width)                                      \
    void NoteValues(GLCall& call, name##Tag, GLint, GLsizei count, const type* values)   \
    {                                                                                    \
        call.kept.assign(values, values + count * (width));                              \
    }
ORVANE_NOTE_VECTOR(Uniform1fv, GLfloat, floats, 1)
ORVANE_NOTE_VECTOR(Uniform2fv, GLfloat, floats, 2)
ORVANE_NOTE_VECTOR(Uniform3fv, GLfloat, floats, 3)
ORVANE_NOTE_VECTOR(Uniform4fv, GLfloat, floats, 4)
ORVANE_NOTE_VECTOR(Uniform1iv, GLint, ints, 1)
ORVANE_NOTE_VECTOR(Uniform2iv, GLint, ints, 2)
ORVANE_NOTE_VECTOR(Uniform3iv, GLint, ints, 3)
ORVANE_NOTE_VECTOR(Uniform4iv, GLint, ints, 4)
#undef ORVANE_NOTE_VECTOR

#define ORVANE_NOTE_MATRIX(name, width)                                                                      \
    void NoteValues(GLCall& call, name##Tag, GLint, GLsizei count, GLboolean, const GLfloat* values)         \
    {                                                                                                        \
        call.floats.assign(values, values + count * (width));                                                \
    }
ORVANE_NOTE_MATRIX(UniformMatrix2fv, 4)
ORVANE_NOTE_MATRIX(UniformMatrix3fv, 9)
ORVANE_NOTE_MATRIX(UniformMatrix4fv, 16)
#undef ORVANE_NOTE_MATRIX

#define ORVANE_NOTE_NAMES(name)                                                          \
    void NoteValues(GLCall& call, name##Tag, GLsizei n, const GLuint* names)             \
    {                                                                                    \
        KeepNames(call, n, names);                                                       \
    }
ORVANE_NOTE_NAMES(DeleteBuffers)
ORVANE_NOTE_NAMES(DeleteTextures)
ORVANE_NOTE_NAMES(DeleteFramebuffers)
ORVANE_NOTE_NAMES(DeleteRenderbuffers)
#undef ORVANE_NOTE_NAMES

void NoteValues(GLCall& call, DrawBuffersTag, GLsizei n, const GLenum* buffers)
{
    KeepNames(call, n, buffers);
}

void NoteValues(GLCall& call, TexParameterfvTag, GLenum, GLenum name, const GLfloat* values)
{
    call.floats.assign(values, values + (name == GL_TEXTURE_BORDER_COLOR ? 4 : 1));
}

void NoteValues(GLCall& call, VertexAttrib4fvTag, GLuint, const GLfloat* values)
{
    call.floats.assign(values, values + 4);
}

void NoteValues(GLCall& call, MultiDrawElementsTag, GLenum, const GLsizei* counts, GLenum, const void* const*, GLsizei n)
{
    KeepNames(call, n, counts);
}

std::string JoinSource(GLsizei count, const GLchar* const* strings, const GLint* lengths)
{
    std::string text;
    for (GLsizei i = 0; i < count; ++i)
    {
        text += lengths && lengths[i] >= 0 ? std::string(strings[i], static_cast<std::size_t>(lengths[i]))
                                           : std::string(strings[i]);
    }
    return text;
}

void NoteValues(GLCall& call, ShaderSourceTag, GLuint, GLsizei count, const GLchar* const* strings,
                const GLint* lengths)
{
    call.texts.push_back(JoinSource(count, strings, lengths));
}

// Values that the call brings back.
template <class Tag, class... A>
void NoteAnswer(GLCall&, Tag, A...)
{
}

#define ORVANE_NOTE_NEW_NAMES(name)                                                      \
    void NoteAnswer(GLCall& call, name##Tag, GLsizei n, GLuint* names)                   \
    {                                                                                    \
        KeepNames(call, n, names);                                                       \
    }
ORVANE_NOTE_NEW_NAMES(GenBuffers)
ORVANE_NOTE_NEW_NAMES(GenTextures)
ORVANE_NOTE_NEW_NAMES(GenFramebuffers)
ORVANE_NOTE_NEW_NAMES(GenRenderbuffers)
#undef ORVANE_NOTE_NEW_NAMES

}  // namespace

}  // namespace OV::Test
