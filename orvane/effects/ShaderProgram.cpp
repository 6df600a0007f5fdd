#include "orvane/effects/ShaderProgram.h"

#include "orvane/base/GLCheckpoint.h"
#include "orvane/math/Color.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Matrix3x3.h"
#include "orvane/math/Vector.h"

#include <GL/glew.h>
#include <glm/gtc/type_ptr.hpp>

#include <iostream>
#include <utility>

namespace OV
{

ShaderProgram* ShaderProgram::s_fed = nullptr;

ShaderProgram::ShaderProgram(int program, const std::string& name) :
    m_program(static_cast<unsigned int>(program)), m_name(name)
{
}

ShaderProgram::ShaderProgram(ShaderProgram&& other) noexcept :
    m_locations(std::move(other.m_locations)),
    m_uniformNames(std::move(other.m_uniformNames)),
    m_program(other.m_program),
    m_name(std::move(other.m_name)),
    m_bound(other.m_bound)
{
    // A short string may survive a move; the source is to end without a name.
    other.m_name.clear();
    other.m_known.ForgetAll();
}

ShaderProgram& ShaderProgram::operator=(ShaderProgram&& other) noexcept
{
    if (this != &other)
    {
        m_locations = std::move(other.m_locations);
        m_uniformNames = std::move(other.m_uniformNames);
        m_program = other.m_program;
        m_name = std::move(other.m_name);
        m_bound = other.m_bound;
        other.m_locations.clear();
        other.m_uniformNames.clear();
        other.m_name.clear();
        m_known.ForgetAll();
        other.m_known.ForgetAll();
    }
    return *this;
}

void ShaderProgram::SetProgram(int program)
{
    m_program = static_cast<unsigned int>(program);
    m_known.ForgetAll();
}

void ShaderProgram::Bind()
{
    s_fed = nullptr;
    glUseProgram(m_program);
    m_bound = true;
}

void ShaderProgram::Unbind()
{
    s_fed = nullptr;
    glUseProgram(0);
    m_bound = false;
}

UniformVar ShaderProgram::operator[](int index)
{
    const int location = GetLocation(index);
    if (location != -1)
    {
        m_known.GiveAway(index);
    }
    return UniformVar{this, location};
}

int ShaderProgram::Load(const char* vertexSource, const char* fragmentSource,
                        const std::map<unsigned int, std::string>& attributes)
{
    const int program = LoadProgram(m_name, vertexSource ? vertexSource : "",
                                    fragmentSource ? fragmentSource : "", attributes);
    SetProgram(program);
    return program;
}

bool ShaderProgram::DeclareUniforms(const std::vector<std::string>& names)
{
    if (&names != &m_uniformNames)
    {
        m_uniformNames = names;
    }
    bool complete = true;
    for (std::size_t i = 0; i < m_uniformNames.size(); ++i)
    {
        if (GetLocation(static_cast<int>(i)) == -1)
        {
            std::cerr << "Missing uniform variable " << m_uniformNames[i] << std::endl;
            complete = false;
        }
    }
    return complete;
}

ShaderProgram::KnownValues::Value& ShaderProgram::KnownValues::At(int index)
{
    const auto place = static_cast<std::size_t>(index);
    if (place >= m_values.size())
    {
        m_values.resize(place + 1);
    }
    return m_values[place];
}

void ShaderProgram::KnownValues::Reserve(std::size_t count)
{
    if (count > m_values.size())
    {
        m_values.resize(count);
    }
}

void ShaderProgram::KnownValues::Keep(int index, const void* value, std::size_t bytes)
{
    Value& known = At(index);
    if (Keeps(known) && bytes <= sizeof(known.words))
    {
        std::memcpy(known.words.data(), value, bytes);
        known.bytes = bytes;
    }
}

void ShaderProgram::KnownValues::Forget(int index)
{
    const auto place = static_cast<std::size_t>(index);
    if (place < m_values.size())
    {
        m_values[place].bytes = 0;
    }
}

void ShaderProgram::KnownValues::ForgetAll()
{
    for (Value& value : m_values)
    {
        value.bytes = 0;
    }
    m_colors = 0;
}

void ShaderProgram::KnownValues::GiveAway(int index)
{
    Value& value = At(index);
    value.bytes = 0;
    value.isGivenAway = true;
}

int ShaderProgram::GetLocation(int index)
{
    // What is written there is not yet known.
    m_known.Forget(index);
    return Exists(index) ? m_locations[static_cast<std::size_t>(index)] : AskLocation(index);
}

int ShaderProgram::AskLocation(int index)
{
    const std::size_t position = static_cast<std::size_t>(index);
    if (position >= m_uniformNames.size())
    {
        return -1;
    }
    const int location = glGetUniformLocation(m_program, m_uniformNames[position].c_str());
    if (position >= m_locations.size())
    {
        // Entries skipped on the way are 0, not -1: they read as location 0 from then on. That
        // is meant.
        m_locations.resize(position + 1, 0);
    }
    m_locations[position] = location;
    return location;
}

void ShaderProgram::Uniform1i(int index, int x)
{
    glUniform1i(GetLocation(index), x);
}

void ShaderProgram::Uniform2i(int index, int x, int y)
{
    glUniform2i(GetLocation(index), x, y);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::Uniform3i(int index, int x, int y, int z)
{
    glUniform3i(GetLocation(index), x, y, z);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::Uniform4i(int index, int x, int y, int z, int w)
{
    glUniform4i(GetLocation(index), x, y, z, w);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::Uniform1f(int index, float x)
{
    glUniform1f(GetLocation(index), x);
}

void ShaderProgram::Uniform2f(int index, float x, float y)
{
    OV_GL_CHECKPOINT();
    glUniform2f(GetLocation(index), x, y);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::Uniform3f(int index, float x, float y, float z)
{
    glUniform3f(GetLocation(index), x, y, z);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::Uniform4f(int index, float x, float y, float z, float w)
{
    glUniform4f(GetLocation(index), x, y, z, w);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::Uniform1iv(int index, int count, const int* values)
{
    glUniform1iv(GetLocation(index), count, values);
}

void ShaderProgram::Uniform2iv(int index, int count, const int* values)
{
    glUniform2iv(GetLocation(index), count, values);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::Uniform3iv(int index, int count, const int* values)
{
    glUniform3iv(GetLocation(index), count, values);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::Uniform4iv(int index, int count, const int* values)
{
    glUniform4iv(GetLocation(index), count, values);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::Uniform1fv(int index, int count, const float* values)
{
    glUniform1fv(GetLocation(index), count, values);
}

void ShaderProgram::Uniform2fv(int index, int count, const float* values)
{
    glUniform2fv(GetLocation(index), count, values);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::Uniform3fv(int index, int count, const float* values)
{
    glUniform3fv(GetLocation(index), count, values);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::Uniform4fv(int index, int count, const float* values)
{
    glUniform4fv(GetLocation(index), count, values);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::UniformMatrix2fv(int index, int count, unsigned char transpose,
                                     const float* values)
{
    glUniformMatrix2fv(GetLocation(index), count, transpose, values);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::UniformMatrix3fv(int index, int count, unsigned char transpose,
                                     const float* values)
{
    glUniformMatrix3fv(GetLocation(index), count, transpose, values);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::UniformMatrix4fv(int index, int count, unsigned char transpose,
                                     const float* values)
{
    glUniformMatrix4fv(GetLocation(index), count, transpose, values);
    OV_GL_CHECKPOINT();
}

void ShaderProgram::SetUniform(int index, int x)
{
    Uniform1i(index, x);
}

void ShaderProgram::SetUniform(int index, int x, int y)
{
    Uniform2i(index, x, y);
}

void ShaderProgram::SetUniform(int index, int x, int y, int z)
{
    Uniform3i(index, x, y, z);
}

void ShaderProgram::SetUniform(int index, int x, int y, int z, int w)
{
    Uniform4i(index, x, y, z, w);
}

void ShaderProgram::SetUniform(int index, float x)
{
    Uniform1f(index, x);
}

void ShaderProgram::SetUniform(int index, float x, float y)
{
    Uniform2f(index, x, y);
}

void ShaderProgram::SetUniform(int index, float x, float y, float z)
{
    Uniform3f(index, x, y, z);
}

void ShaderProgram::SetUniform(int index, float x, float y, float z, float w)
{
    Uniform4f(index, x, y, z, w);
}

void ShaderProgram::SetUniform(int index, const Vector& value)
{
    Uniform3f(index, value.x, value.y, value.z);
}

void ShaderProgram::SetUniform(int index, const Color& value)
{
    Uniform4f(index, value.r, value.g, value.b, value.a);
}

void ShaderProgram::SetUniform(int index, const Matrix3x3& value)
{
    UniformMatrix3fv(index, 1, GL_FALSE, value.m);
}

void ShaderProgram::SetUniform(int index, const Matrix& value)
{
    UniformMatrix4fv(index, 1, GL_FALSE, value.m);
}

void ShaderProgram::SetUniform(int index, const glm::vec2& value)
{
    glUniform2fv(GetLocation(index), 1, glm::value_ptr(value));
}

void ShaderProgram::SetUniform(int index, const glm::vec3& value)
{
    glUniform3fv(GetLocation(index), 1, glm::value_ptr(value));
}

void ShaderProgram::SetUniform(int index, const glm::vec4& value)
{
    glUniform4fv(GetLocation(index), 1, glm::value_ptr(value));
}

void ShaderProgram::SetUniform(int index, const glm::mat3& value, bool transpose)
{
    glUniformMatrix3fv(GetLocation(index), 1, transpose, glm::value_ptr(value));
}

void ShaderProgram::SetUniform(int index, const glm::mat4& value, bool transpose)
{
    glUniformMatrix4fv(GetLocation(index), 1, transpose, glm::value_ptr(value));
}

} // namespace OV
