#include "tests/support/GLFunctions.h"
#include "tests/support/GLRecorderState.h"

#include <GL/glew.h>

#include <dlfcn.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <type_traits>

// Each function gets a tag. A call is noted (Note), carried out by the driver or by what
// stands in for it (Fake), and its effect is kept (Observe). The three are overloaded by tag;
// the templates below serve every function that needs nothing special.

namespace OV::Test
{

namespace
{

using State = GLRecorder::State;
using Kind = GLObjectKind;

struct Nothing
{
};

#define ORVANE_DECLARE_TAG(name)                            \
    struct name##Tag                                        \
    {                                                       \
        static constexpr const char* kName = "gl" #name;    \
    };
#define ORVANE_DECLARE_TAG_11(result, name, parameters, arguments) ORVANE_DECLARE_TAG(name)
ORVANE_GL11_FUNCTIONS(ORVANE_DECLARE_TAG_11)
ORVANE_GLEW_FUNCTIONS(ORVANE_DECLARE_TAG)

// ---------------------------------------------------------------------------------- helpers

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

void Fill(std::size_t count, const int* from, GLint* to)
{
    std::copy(from, from + count, to);
}

int StateInteger(State& state, GLenum name, int fallback)
{
    const auto found = state.integers.find(name);
    return found == state.integers.end() || found->second.empty() ? fallback : found->second[0];
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
        if (names[i] != 0 && StateInteger(state, query, 0) == static_cast<int>(names[i]))
        {
            state.integers[query] = {0};
        }
    }
}

template <class T>
void KeepNames(GLCall& call, GLsizei n, const T* names)
{
    call.ints.assign(names, names + std::max(n, 0));
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

// ------------------------------------------------------------------------------------- Note

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

// ------------------------------------------------------------------------------------- Fake

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
        *values = static_cast<float>(StateInteger(state, name, 0));
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

// ---------------------------------------------------------------------------------- Observe

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
    if (data)
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

// ------------------------------------------------------------------------------------- Hook

template <class Tag, class Signature>
struct Hook;

template <class Tag, class R, class... A>
struct Hook<Tag, R(A...)>
{
    using Function = R(GLAPIENTRY*)(A...);
    using Result = std::conditional_t<std::is_void_v<R>, Nothing, R>;

    static inline Function driver = nullptr;

    static R GLAPIENTRY Call(A... a)
    {
        State* state = State::active;
        if (!state)
        {
            return driver(a...);
        }
        std::size_t index = 0;
        if (state->recording)
        {
            index = state->calls.size();
            GLCall call;
            call.name = Tag::kName;
            call.args = {ToArgument<Tag>(a)...};
            NoteValues(call, Tag(), a...);
            state->calls.push_back(std::move(call));
        }
        Result result = Result();
        if (state->mode == GLRecorder::Mode::StandIn)
        {
            Fake(*state, Tag(), &result, a...);
        }
        else if constexpr (std::is_void_v<R>)
        {
            driver(a...);
        }
        else
        {
            result = driver(a...);
        }
        Observe(*state, Tag(), &result, a...);
        state->RaiseFor(Tag::kName);
        if (state->recording)
        {
            NoteAnswer(state->calls[index], Tag(), a...);
        }
        if constexpr (!std::is_void_v<R>)
        {
            return result;
        }
    }

    static void Install(Function& pointer)
    {
        if (pointer != &Call)
        {
            driver = pointer;
            pointer = &Call;
        }
    }

    static void Remove(Function& pointer)
    {
        if (pointer == &Call)
        {
            pointer = driver;
        }
    }
};

// The driver's function of the same name as one that this program defines.
void* DriverFunction(const char* name)
{
    void* found = dlsym(RTLD_NEXT, name);
    if (!found)
    {
        std::fprintf(stderr, "GLRecorder: no GL library has %s\n", name);
        std::abort();
    }
    return found;
}

// Whether calls end here instead of going on to the driver.
bool StandsIn()
{
    return State::active && State::active->mode == GLRecorder::Mode::StandIn;
}

template <class Pointer>
using SignatureOf = std::remove_pointer_t<std::remove_reference_t<Pointer>>;

}  // namespace

void GLRecorder::State::InstallHooks()
{
#define ORVANE_INSTALL(name) Hook<name##Tag, SignatureOf<decltype(__glew##name)>>::Install(__glew##name);
    ORVANE_GLEW_FUNCTIONS(ORVANE_INSTALL)
#undef ORVANE_INSTALL
}

void GLRecorder::State::RemoveHooks()
{
#define ORVANE_REMOVE(name) Hook<name##Tag, SignatureOf<decltype(__glew##name)>>::Remove(__glew##name);
    ORVANE_GLEW_FUNCTIONS(ORVANE_REMOVE)
#undef ORVANE_REMOVE
}

}  // namespace OV::Test

#define ORVANE_DEFINE(result, name, parameters, arguments)                                            \
    extern "C" result GLAPIENTRY gl##name parameters                                                  \
    {                                                                                                 \
        using Hook = OV::Test::Hook<OV::Test::name##Tag, result parameters>;                          \
        if (!Hook::driver && !OV::Test::StandsIn())                                                   \
        {                                                                                             \
            Hook::driver = reinterpret_cast<Hook::Function>(OV::Test::DriverFunction("gl" #name));    \
        }                                                                                             \
        return Hook::Call arguments;                                                                  \
    }
ORVANE_GL11_FUNCTIONS(ORVANE_DEFINE)
