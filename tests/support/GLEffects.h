#pragma once

#include "tests/support/GLHookTags.h"
#include "tests/support/GLNotes.h"

#include <algorithm>
#include <cstring>
#include <limits>

// What a call changed, whoever carried it out.

namespace OV::Test
{

namespace
{

constexpr unsigned kMaxTextureUnits = 32;

bool IsBufferTarget(GLenum target)
{
    return target == GL_ARRAY_BUFFER || target == GL_ELEMENT_ARRAY_BUFFER;
}

// Cube map faces belong to the cube map.
GLenum BindingTarget(GLenum target)
{
    const bool isFace = target >= GL_TEXTURE_CUBE_MAP_POSITIVE_X && target <= GL_TEXTURE_CUBE_MAP_NEGATIVE_Z;
    return isFace ? GL_TEXTURE_CUBE_MAP : target;
}

std::size_t BytesPerPixel(GLenum format, GLenum type)
{
    std::size_t channels = 0;
    switch (format)
    {
    case GL_RGBA:
    case GL_BGRA:
        channels = 4;
        break;
    case GL_RGB:
        channels = 3;
        break;
    case GL_LUMINANCE_ALPHA:
        channels = 2;
        break;
    default:
        channels = 1;
    }
    switch (type)
    {
    case GL_FLOAT:
    case GL_UNSIGNED_INT:
        return channels * 4;
    case GL_UNSIGNED_SHORT:
        return channels * 2;
    default:
        return channels;
    }
}

void Born(State& state, Kind kind, GLsizei n, const GLuint* names)
{
    for (GLsizei i = 0; i < n; ++i)
    {
        state.Born(kind, names[i]);
    }
}

void Died(State& state, Kind kind, GLsizei n, const GLuint* names)
{
    for (GLsizei i = 0; i < n; ++i)
    {
        state.Died(kind, names[i]);
    }
}

// GL takes deleted objects out of the bindings that it tells about.
void Unbind(State& state, GLenum query, GLsizei n, const GLuint* names)
{
    for (GLsizei i = 0; i < n; ++i)
    {
        if (names[i] != 0 && state.Integer(query, 0) == static_cast<int>(names[i]))
        {
            state.integers[query] = {0};
        }
    }
}

template <class T>
void SetUniform(State& state, GLint location, GLsizei count, int width, const T* values)
{
    if (state.recording)
    {
        state.SetUniformValue(location, std::vector<float>(values, values + count * width));
    }
}

template <class T, class... More>
void SetUniformParts(State& state, GLint location, T first, More... more)
{
    const T values[] = {first, more...};
    SetUniform(state, location, 1, 1 + static_cast<int>(sizeof...(more)), values);
}

template <class Tag, class... A>
void Observe(State&, Tag, A...)
{
}

#define ORVANE_OBSERVE_NAMES(kind, plural)                                                                  \
    void Observe(State& state, Gen##plural##Tag, Nothing*, GLsizei n, GLuint* names)                        \
    {                                                                                                       \
        Born(state, Kind::kind, n, names);                                                                  \
    }
ORVANE_OBSERVE_NAMES(Buffer, Buffers)
ORVANE_OBSERVE_NAMES(Texture, Textures)
ORVANE_OBSERVE_NAMES(Framebuffer, Framebuffers)
ORVANE_OBSERVE_NAMES(Renderbuffer, Renderbuffers)
#undef ORVANE_OBSERVE_NAMES

void Observe(State& state, DeleteBuffersTag, Nothing*, GLsizei n, const GLuint* names)
{
    Died(state, Kind::Buffer, n, names);
    Unbind(state, GL_ARRAY_BUFFER_BINDING, n, names);
    Unbind(state, GL_ELEMENT_ARRAY_BUFFER_BINDING, n, names);
    for (GLsizei i = 0; i < n; ++i)
    {
        state.buffers.erase(names[i]);
        for (auto& [target, bound] : state.boundBuffers)
        {
            bound = bound == names[i] ? 0 : bound;
        }
    }
}

void Observe(State& state, DeleteTexturesTag, Nothing*, GLsizei n, const GLuint* names)
{
    Died(state, Kind::Texture, n, names);
    for (GLsizei i = 0; i < n; ++i)
    {
        const auto first = state.texels.lower_bound({names[i], 0, std::numeric_limits<int>::min()});
        const auto last = state.texels.upper_bound(
            {names[i], std::numeric_limits<unsigned>::max(), std::numeric_limits<int>::max()});
        state.texels.erase(first, last);
        for (auto& [place, bound] : state.boundTextures)
        {
            bound = bound == names[i] ? 0 : bound;
        }
    }
}

void Observe(State& state, DeleteFramebuffersTag, Nothing*, GLsizei n, const GLuint* names)
{
    Died(state, Kind::Framebuffer, n, names);
    Unbind(state, GL_FRAMEBUFFER_BINDING, n, names);
}

void Observe(State& state, DeleteRenderbuffersTag, Nothing*, GLsizei n, const GLuint* names)
{
    Died(state, Kind::Renderbuffer, n, names);
    Unbind(state, GL_RENDERBUFFER_BINDING, n, names);
}

void Observe(State& state, CreateShaderTag, GLuint* result, GLenum type)
{
    state.Born(Kind::Shader, *result);
    state.shaders[*result] = State::Shader{type, "", 0, ""};
}

void Observe(State& state, DeleteShaderTag, Nothing*, GLuint shader)
{
    state.Died(Kind::Shader, shader);
}

void Observe(State& state, ShaderSourceTag, Nothing*, GLuint shader, GLsizei count, const GLchar* const* strings,
             const GLint* lengths)
{
    state.shaders[shader].text = JoinSource(count, strings, lengths);
}

void Observe(State& state, CreateProgramTag, GLuint* result)
{
    state.Born(Kind::Program, *result);
    state.programs[*result] = State::Program();
}

void Observe(State& state, DeleteProgramTag, Nothing*, GLuint program)
{
    state.Died(Kind::Program, program);
}

void Observe(State& state, AttachShaderTag, Nothing*, GLuint program, GLuint shader)
{
    state.programs[program].texts.push_back(state.shaders[shader].text);
}

void Observe(State& state, BindAttribLocationTag, Nothing*, GLuint program, GLuint index, const GLchar* name)
{
    state.programs[program].boundAttributes[name] = static_cast<int>(index);
}

void Observe(State& state, GetUniformLocationTag, GLint* result, GLuint program, const GLchar* name)
{
    if (*result >= 0)
    {
        state.programs[program].uniforms[name] = *result;
    }
}

void Observe(State& state, UseProgramTag, Nothing*, GLuint program)
{
    state.currentProgram = program;
    state.integers[GL_CURRENT_PROGRAM] = {static_cast<int>(program)};
}

void Observe(State& state, EnableTag, Nothing*, GLenum capability)
{
    state.enabled[capability] = true;
}

void Observe(State& state, DisableTag, Nothing*, GLenum capability)
{
    state.enabled[capability] = false;
}

void Observe(State& state, ActiveTextureTag, Nothing*, GLenum unit)
{
    if (unit >= GL_TEXTURE0 && unit < GL_TEXTURE0 + kMaxTextureUnits)
    {
        state.activeUnit = unit - GL_TEXTURE0;
        state.integers[GL_ACTIVE_TEXTURE] = {static_cast<int>(unit)};
    }
}

void Observe(State& state, BindTextureTag, Nothing*, GLenum target, GLuint texture)
{
    state.boundTextures[{state.activeUnit, target}] = texture;
}

void Observe(State& state, BindBufferTag, Nothing*, GLenum target, GLuint buffer)
{
    state.boundBuffers[target] = buffer;
    if (IsBufferTarget(target))
    {
        const GLenum query =
            target == GL_ARRAY_BUFFER ? GL_ARRAY_BUFFER_BINDING : GL_ELEMENT_ARRAY_BUFFER_BINDING;
        state.integers[query] = {static_cast<int>(buffer)};
    }
}

void Observe(State& state, BindFramebufferTag, Nothing*, GLenum target, GLuint framebuffer)
{
    if (target != GL_READ_FRAMEBUFFER)
    {
        state.integers[GL_FRAMEBUFFER_BINDING] = {static_cast<int>(framebuffer)};
    }
}

void Observe(State& state, BindRenderbufferTag, Nothing*, GLenum, GLuint renderbuffer)
{
    state.integers[GL_RENDERBUFFER_BINDING] = {static_cast<int>(renderbuffer)};
}

void Observe(State& state, BufferDataTag, Nothing*, GLenum target, GLsizeiptr size, const void* data, GLenum)
{
    std::vector<unsigned char>& bytes = state.buffers[state.boundBuffers[target]];
    bytes.assign(static_cast<std::size_t>(std::max<GLsizeiptr>(size, 0)), 0);
    if (data && !bytes.empty())
    {
        std::memcpy(bytes.data(), data, bytes.size());
    }
}

void Observe(State& state, BufferSubDataTag, Nothing*, GLenum target, GLintptr offset, GLsizeiptr size,
             const void* data)
{
    std::vector<unsigned char>& bytes = state.buffers[state.boundBuffers[target]];
    if (offset >= 0 && size >= 0 && static_cast<std::size_t>(offset + size) <= bytes.size())
    {
        std::memcpy(bytes.data() + offset, data, static_cast<std::size_t>(size));
    }
}

void Observe(State& state, TexImage2DTag, Nothing*, GLenum target, GLint level, GLint, GLsizei width, GLsizei height,
             GLint, GLenum format, GLenum type, const void* pixels)
{
    GLTexels texels{width, height, format, type, {}};
    if (pixels && width > 0 && height > 0)
    {
        const unsigned char* bytes = static_cast<const unsigned char*>(pixels);
        const std::size_t size = static_cast<std::size_t>(width) * height * BytesPerPixel(format, type);
        texels.bytes.assign(bytes, bytes + size);
    }
    state.texels[{state.BoundTexture(BindingTarget(target)), target, level}] = std::move(texels);
}

void Observe(State& state, CopyTexImage2DTag, Nothing*, GLenum target, GLint level, GLenum format, GLint, GLint,
             GLsizei width, GLsizei height, GLint)
{
    state.texels[{state.BoundTexture(BindingTarget(target)), target, level}] = {width, height, format, 0, {}};
}

void Observe(State& state, TexSubImage2DTag, Nothing*, GLenum target, GLint level, GLint x, GLint y, GLsizei width,
             GLsizei height, GLenum format, GLenum type, const void* pixels)
{
    const std::size_t pixel = BytesPerPixel(format, type);
    GLTexels& texels = state.texels[{state.BoundTexture(BindingTarget(target)), target, level}];
    if (texels.width == 0 && x == 0 && y == 0)
    {
        // A level that GL made by itself.
        texels = {width, height, format, type, std::vector<unsigned char>(pixel * width * height)};
    }
    if (!pixels || texels.bytes.empty() || texels.format != format || texels.type != type || x < 0 || y < 0 ||
        x + width > texels.width || y + height > texels.height)
    {
        return;
    }
    for (GLsizei row = 0; row < height; ++row)
    {
        std::memcpy(texels.bytes.data() + (static_cast<std::size_t>(y + row) * texels.width + x) * pixel,
                    static_cast<const unsigned char*>(pixels) + row * width * pixel, width * pixel);
    }
}

#define ORVANE_OBSERVE_INTEGER(name, type, query)                                        \
    void Observe(State& state, name##Tag, Nothing*, type value)                          \
    {                                                                                    \
        state.integers[query] = {static_cast<int>(value)};                               \
    }
ORVANE_OBSERVE_INTEGER(DepthFunc, GLenum, GL_DEPTH_FUNC)
ORVANE_OBSERVE_INTEGER(DepthMask, GLboolean, GL_DEPTH_WRITEMASK)
ORVANE_OBSERVE_INTEGER(CullFace, GLenum, GL_CULL_FACE_MODE)
ORVANE_OBSERVE_INTEGER(FrontFace, GLenum, GL_FRONT_FACE)
ORVANE_OBSERVE_INTEGER(BlendEquation, GLenum, GL_BLEND_EQUATION)
#undef ORVANE_OBSERVE_INTEGER

void Observe(State& state, BlendFuncTag, Nothing*, GLenum source, GLenum destination)
{
    state.integers[GL_BLEND_SRC] = {static_cast<int>(source)};
    state.integers[GL_BLEND_DST] = {static_cast<int>(destination)};
}

void Observe(State& state, ColorMaskTag, Nothing*, GLboolean r, GLboolean g, GLboolean b, GLboolean a)
{
    state.integers[GL_COLOR_WRITEMASK] = {r, g, b, a};
}

void Observe(State& state, ClearColorTag, Nothing*, GLclampf r, GLclampf g, GLclampf b, GLclampf a)
{
    state.floats[GL_COLOR_CLEAR_VALUE] = {r, g, b, a};
}

void Observe(State& state, PolygonOffsetTag, Nothing*, GLfloat factor, GLfloat units)
{
    state.floats[GL_POLYGON_OFFSET_FACTOR] = {factor};
    state.floats[GL_POLYGON_OFFSET_UNITS] = {units};
}

void Observe(State& state, LineWidthTag, Nothing*, GLfloat width)
{
    state.floats[GL_LINE_WIDTH] = {width};
}

void Observe(State& state, PixelStoreiTag, Nothing*, GLenum name, GLint value)
{
    state.integers[name] = {value};
}

void Observe(State& state, ViewportTag, Nothing*, GLint x, GLint y, GLsizei width, GLsizei height)
{
    state.integers[GL_VIEWPORT] = {x, y, width, height};
}

#define ORVANE_OBSERVE_UNIFORM(type, suffix)                                                                     \
    void Observe(State& state, Uniform1##suffix##Tag, Nothing*, GLint location, type a)                          \
    {                                                                                                            \
        SetUniformParts(state, location, a);                                                                     \
    }                                                                                                            \
    void Observe(State& state, Uniform2##suffix##Tag, Nothing*, GLint location, type a, type b)                  \
    {                                                                                                            \
        SetUniformParts(state, location, a, b);                                                                  \
    }                                                                                                            \
    void Observe(State& state, Uniform3##suffix##Tag, Nothing*, GLint location, type a, type b, type c)          \
    {                                                                                                            \
        SetUniformParts(state, location, a, b, c);                                                               \
    }                                                                                                            \
    void Observe(State& state, Uniform4##suffix##Tag, Nothing*, GLint location, type a, type b, type c, type d)  \
    {                                                                                                            \
        SetUniformParts(state, location, a, b, c, d);                                                            \
    }
ORVANE_OBSERVE_UNIFORM(GLfloat, f)
ORVANE_OBSERVE_UNIFORM(GLint, i)
#undef ORVANE_OBSERVE_UNIFORM

#define ORVANE_OBSERVE_VECTOR(name, type, width)                                                                 \
    void Observe(State& state, name##Tag, Nothing*, GLint location, GLsizei count, const type* values)           \
    {                                                                                                            \
        SetUniform(state, location, count, width, values);                                                       \
    }
ORVANE_OBSERVE_VECTOR(Uniform1fv, GLfloat, 1)
ORVANE_OBSERVE_VECTOR(Uniform2fv, GLfloat, 2)
ORVANE_OBSERVE_VECTOR(Uniform3fv, GLfloat, 3)
ORVANE_OBSERVE_VECTOR(Uniform4fv, GLfloat, 4)
ORVANE_OBSERVE_VECTOR(Uniform1iv, GLint, 1)
ORVANE_OBSERVE_VECTOR(Uniform2iv, GLint, 2)
ORVANE_OBSERVE_VECTOR(Uniform3iv, GLint, 3)
ORVANE_OBSERVE_VECTOR(Uniform4iv, GLint, 4)
#undef ORVANE_OBSERVE_VECTOR

#define ORVANE_OBSERVE_MATRIX(name, width)                                                                       \
    void Observe(State& state, name##Tag, Nothing*, GLint location, GLsizei count, GLboolean,                    \
                 const GLfloat* values)                                                                          \
    {                                                                                                            \
        SetUniform(state, location, count, width, values);                                                       \
    }
ORVANE_OBSERVE_MATRIX(UniformMatrix2fv, 4)
ORVANE_OBSERVE_MATRIX(UniformMatrix3fv, 9)
ORVANE_OBSERVE_MATRIX(UniformMatrix4fv, 16)
#undef ORVANE_OBSERVE_MATRIX

}  // namespace

}  // namespace OV::Test
