#pragma once

#include "tests/support/GLHookTags.h"

#include <algorithm>
#include <cstring>

// What a function does where no driver does it.

namespace OV::Test
{

namespace
{

void Fill(std::size_t count, const int* from, GLint* to)
{
    std::copy(from, from + count, to);
}

GLsizei LogLength(const std::string& log)
{
    return log.empty() ? 0 : static_cast<GLsizei>(log.size() + 1);
}

void CopyLog(const std::string& log, GLsizei size, GLsizei* length, GLchar* to)
{
    if (size <= 0)
    {
        return;
    }
    const std::size_t count = std::min(log.size(), static_cast<std::size_t>(size - 1));
    std::memcpy(to, log.data(), count);
    to[count] = '\0';
    if (length)
    {
        *length = static_cast<GLsizei>(count);
    }
}

void MakeNames(State& state, const char* function, GLsizei n, GLuint* names)
{
    for (GLsizei i = 0; i < n; ++i)
    {
        names[i] = state.NewName(function);
    }
}

template <class Tag, class... A>
void Fake(State&, Tag, A...)
{
}

#define ORVANE_FAKE_NEW_NAMES(name)                                                      \
    void Fake(State& state, name##Tag, Nothing*, GLsizei n, GLuint* names)               \
    {                                                                                    \
        MakeNames(state, name##Tag::kName, n, names);                                    \
    }
ORVANE_FAKE_NEW_NAMES(GenBuffers)
ORVANE_FAKE_NEW_NAMES(GenTextures)
ORVANE_FAKE_NEW_NAMES(GenFramebuffers)
ORVANE_FAKE_NEW_NAMES(GenRenderbuffers)
#undef ORVANE_FAKE_NEW_NAMES

void Fake(State& state, CreateShaderTag, GLuint* result, GLenum)
{
    *result = state.NewName(CreateShaderTag::kName);
}

void Fake(State& state, CreateProgramTag, GLuint* result)
{
    *result = state.NewName(CreateProgramTag::kName);
}

void Fake(State& state, CompileShaderTag, Nothing*, GLuint shader)
{
    State::Shader& compiled = state.shaders[shader];
    const auto answer = state.compileAnswers.find(compiled.type);
    compiled.status = answer == state.compileAnswers.end() ? 1 : answer->second.status;
    compiled.log = answer == state.compileAnswers.end() ? "" : answer->second.log;
}

void Fake(State& state, LinkProgramTag, Nothing*, GLuint program)
{
    state.programs[program].status = state.linkAnswer.status;
    state.programs[program].log = state.linkAnswer.log;
}

void Fake(State& state, GetShaderivTag, Nothing*, GLuint shader, GLenum name, GLint* value)
{
    const State::Shader& asked = state.shaders[shader];
    switch (name)
    {
    case GL_COMPILE_STATUS:
        *value = asked.status;
        break;
    case GL_INFO_LOG_LENGTH:
        *value = LogLength(asked.log);
        break;
    case GL_SHADER_TYPE:
        *value = static_cast<GLint>(asked.type);
        break;
    default:
        *value = 0;
    }
}

void Fake(State& state, GetProgramivTag, Nothing*, GLuint program, GLenum name, GLint* value)
{
    const State::Program& asked = state.programs[program];
    switch (name)
    {
    case GL_LINK_STATUS:
    case GL_VALIDATE_STATUS:
        *value = asked.status;
        break;
    case GL_INFO_LOG_LENGTH:
        *value = LogLength(asked.log);
        break;
    default:
        *value = 0;
    }
}

void Fake(State& state, GetShaderInfoLogTag, Nothing*, GLuint shader, GLsizei size, GLsizei* length, GLchar* log)
{
    CopyLog(state.shaders[shader].log, size, length, log);
}

void Fake(State& state, GetProgramInfoLogTag, Nothing*, GLuint program, GLsizei size, GLsizei* length, GLchar* log)
{
    CopyLog(state.programs[program].log, size, length, log);
}

void Fake(State& state, GetUniformLocationTag, GLint* result, GLuint program, const GLchar* name)
{
    *result = state.UniformLocation(program, name);
}

void Fake(State& state, GetAttribLocationTag, GLint* result, GLuint program, const GLchar* name)
{
    *result = state.AttribLocation(program, name);
}

void Fake(State& state, GetErrorTag, GLenum* result)
{
    *result = GL_NO_ERROR;
    if (!state.errors.empty())
    {
        *result = state.errors.front();
        state.errors.pop_front();
    }
}

void Fake(State& state, GetStringTag, const GLubyte** result, GLenum name)
{
    const auto found = state.strings.find(name);
    const bool answers = found != state.strings.end() && found->second;
    *result = answers ? reinterpret_cast<const GLubyte*>(found->second->c_str()) : nullptr;
}

void Fake(State& state, GetIntegervTag, Nothing*, GLenum name, GLint* values)
{
    const auto set = state.setIntegers.find(name);
    if (set != state.setIntegers.end())
    {
        Fill(set->second.size(), set->second.data(), values);
        return;
    }
    const auto known = state.integers.find(name);
    if (known != state.integers.end())
    {
        Fill(known->second.size(), known->second.data(), values);
        return;
    }
    *values = state.IsEnabled(name) ? 1 : 0;
}

void Fake(State& state, GetBooleanvTag, Nothing*, GLenum name, GLboolean* values)
{
    const auto known = state.integers.find(name);
    if (known == state.integers.end())
    {
        *values = state.IsEnabled(name) ? GL_TRUE : GL_FALSE;
        return;
    }
    std::transform(known->second.begin(), known->second.end(), values,
                   [](int value) { return static_cast<GLboolean>(value != 0 ? GL_TRUE : GL_FALSE); });
}

void Fake(State& state, GetFloatvTag, Nothing*, GLenum name, GLfloat* values)
{
    const auto set = state.setFloats.find(name);
    const auto known = state.floats.find(name);
    if (set != state.setFloats.end())
    {
        std::copy(set->second.begin(), set->second.end(), values);
    }
    else if (known != state.floats.end())
    {
        std::copy(known->second.begin(), known->second.end(), values);
    }
    else
    {
        *values = static_cast<float>(state.Integer(name, 0));
    }
}

void Fake(State& state, IsEnabledTag, GLboolean* result, GLenum capability)
{
    *result = state.IsEnabled(capability) ? GL_TRUE : GL_FALSE;
}

void Fake(State& state, CheckFramebufferStatusTag, GLenum* result, GLenum)
{
    *result = state.framebufferStatus;
}

#define ORVANE_FAKE_IS(name, kind)                                                       \
    void Fake(State& state, name##Tag, GLboolean* result, GLuint object)                 \
    {                                                                                    \
        *result = state.live[Kind::kind].count(object) ? GL_TRUE : GL_FALSE;             \
    }
ORVANE_FAKE_IS(IsBuffer, Buffer)
ORVANE_FAKE_IS(IsFramebuffer, Framebuffer)
ORVANE_FAKE_IS(IsProgram, Program)
ORVANE_FAKE_IS(IsRenderbuffer, Renderbuffer)
ORVANE_FAKE_IS(IsShader, Shader)
ORVANE_FAKE_IS(IsTexture, Texture)
#undef ORVANE_FAKE_IS

void Fake(State& state, GetBufferSubDataTag, Nothing*, GLenum target, GLintptr offset, GLsizeiptr size, void* to)
{
    const std::vector<unsigned char>& bytes = state.buffers[state.boundBuffers[target]];
    if (offset >= 0 && size >= 0 && static_cast<std::size_t>(offset + size) <= bytes.size())
    {
        std::memcpy(to, bytes.data() + offset, static_cast<std::size_t>(size));
    }
}

}  // namespace

}  // namespace OV::Test
