#include "tests/support/ProgramInspection.h"

#include "orvane/platform/detail/EntryPoints.h"

#include <GL/glew.h>

namespace OV::Test
{

namespace
{

template <class Get>
std::set<std::string> ActiveNames(unsigned int program, GLenum what, Get get)
{
    GLint count = 0;
    glGetProgramiv(program, what, &count);
    std::set<std::string> names;
    for (GLint i = 0; i < count; ++i)
    {
        char name[256] = {};
        GLint size = 0;
        GLenum type = 0;
        get(program, static_cast<GLuint>(i), static_cast<GLsizei>(sizeof(name)), nullptr, &size, &type, name);
        names.insert(name);
    }
    return names;
}

} // namespace

std::string CompileLog(unsigned int type, const std::string& text)
{
    Platform::LoadEntryPoints();
    const unsigned int shader = glCreateShader(type);
    const char* source = text.c_str();
    glShaderSource(shader, 1, &source, nullptr);
    glCompileShader(shader);
    GLint status = 0;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &status);
    char log[4096] = {};
    glGetShaderInfoLog(shader, sizeof(log), nullptr, log);
    glDeleteShader(shader);
    return status == GL_TRUE ? log : std::string("failed: ") + log;
}

std::set<std::string> ActiveUniforms(unsigned int program)
{
    return ActiveNames(program, GL_ACTIVE_UNIFORMS, glGetActiveUniform);
}

std::set<std::string> ActiveAttributes(unsigned int program)
{
    return ActiveNames(program, GL_ACTIVE_ATTRIBUTES, glGetActiveAttrib);
}

} // namespace OV::Test
