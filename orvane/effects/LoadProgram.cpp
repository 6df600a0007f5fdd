#include "orvane/effects/ShaderProgram.h"

#include "orvane/base/GLCheckpoint.h"
#include "orvane/platform/detail/EntryPoints.h"

#include <GL/glew.h>

#include <iostream>
#include <new>
#include <vector>

namespace OV
{

namespace
{

/// Reads the log of a shader or a program; empty when GL has none.
template <class GetParameter, class GetLog>
std::vector<char> ReadLog(unsigned int object, GetParameter getParameter, GetLog getLog)
{
    GLint length = 0;
    getParameter(object, GL_INFO_LOG_LENGTH, &length);
    std::vector<char> log;
    try
    {
        if (length > 1)
        {
            log.assign(static_cast<std::size_t>(length) + 1, '\0');
            getLog(object, length, nullptr, log.data());
        }
    }
    catch (const std::bad_alloc&)
    {
        // Without the memory for its reason a failure is still one, and the object to be deleted.
    }
    return log;
}

void ReportFailedCompile(unsigned int shader, unsigned int type)
{
    std::cerr << "Error compiling " << (type == GL_VERTEX_SHADER ? "vertex" : "fragment")
              << " shader" << std::endl;
    const std::vector<char> log = ReadLog(shader, glGetShaderiv, glGetShaderInfoLog);
    if (!log.empty())
    {
        std::cerr << "Compile error information: " << std::endl << log.data() << std::endl;
    }
}

/// Attaches the shaders and binds the attributes.
/// @return false on a GL error. Program and shaders are then left as they are: that is meant.
bool Assemble(unsigned int program, unsigned int vertexShader, unsigned int fragmentShader,
              const std::map<unsigned int, std::string>& attributes)
{
    glAttachShader(program, vertexShader);
    glAttachShader(program, fragmentShader);
    if (glGetError() != GL_NO_ERROR)
    {
        return false;
    }
    for (const auto& [index, name] : attributes)
    {
        glBindAttribLocation(program, index, name.c_str());
        if (glGetError() != GL_NO_ERROR)
        {
            return false;
        }
    }
    return true;
}

/// Links, and lets go of the shaders, which the program keeps for as long as it needs them.
/// @return the program, 0 on failure.
int Link(unsigned int program, unsigned int vertexShader, unsigned int fragmentShader)
{
    glLinkProgram(program);
    GLint linked = GL_FALSE;
    glGetProgramiv(program, GL_LINK_STATUS, &linked);
    if (!linked)
    {
        // Fetched and dropped on purpose: a failed link leaves no trace on any stream.
        ReadLog(program, glGetProgramiv, glGetProgramInfoLog);
        glDeleteProgram(program);
        glDeleteShader(fragmentShader);
        glDeleteShader(vertexShader);
        return 0;
    }
    if (glGetError() != GL_NO_ERROR)
    {
        return 0;
    }
    glDeleteShader(fragmentShader);
    glDeleteShader(vertexShader);
    return glGetError() == GL_NO_ERROR ? static_cast<int>(program) : 0;
}

} // namespace

int LoadProgram(const std::string& name, const std::string& vertexSource,
                const std::string& fragmentSource,
                const std::map<unsigned int, std::string>& attributes)
{
    if (!Platform::LoadEntryPoints())
    {
        return 0;
    }
    glGetError();
    // All that takes memory comes before the first shader, which nobody would delete.
    const std::string vertexText = ShaderPrelude + vertexSource;
    const std::string fragmentText = ShaderPrelude + fragmentSource;
    const std::string vertexName = name + ".vert";
    const std::string fragmentName = name + ".frag";
    const int vertexShader = CompileShader(vertexName, GL_VERTEX_SHADER, vertexText.c_str());
    if (vertexShader == 0)
    {
        return 0;
    }
    const int fragmentShader = CompileShader(fragmentName, GL_FRAGMENT_SHADER, fragmentText.c_str());
    if (fragmentShader == 0)
    {
        glDeleteShader(vertexShader);
        return 0;
    }
    const unsigned int program = glCreateProgram();
    if (program == 0)
    {
        glDeleteShader(fragmentShader);
        glDeleteShader(vertexShader);
        return 0;
    }
    if (!Assemble(program, vertexShader, fragmentShader, attributes))
    {
        return 0;
    }
    return Link(program, vertexShader, fragmentShader);
}

int CompileShader(const std::string&, unsigned int type, const char* source)
{
    if (source == nullptr || !Platform::LoadEntryPoints())
    {
        return 0;
    }
    glGetError();
    const unsigned int shader = glCreateShader(type);
    if (glGetError() != GL_NO_ERROR || shader == 0)
    {
        return 0;
    }
    glShaderSource(shader, 1, &source, nullptr);
    if (glGetError() != GL_NO_ERROR)
    {
        return 0;
    }
    glCompileShader(shader);
    glGetError();
    GLint compiled = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &compiled);
    OV_GL_CHECKPOINT();
    if (compiled == GL_TRUE)
    {
        return static_cast<int>(shader);
    }
    ReportFailedCompile(shader, type);
    glDeleteShader(shader);
    return 0;
}

} // namespace OV
