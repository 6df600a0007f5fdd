#pragma once

#include <GL/glew.h>

#include <cstddef>
#include <cstdint>
#include <utility>

namespace OV::Bench
{

/// Fingerprint of the calls past GL 1.1, by standing in the way of each of them. GL 1.1 calls
/// can't be stood in the way of here; they hang on the same data.
class GLFingerprint
{
public:
    GLFingerprint()
    {
        s_value = 14695981039346656037ull;
        s_calls = 0;
        Swap();
    }

    ~GLFingerprint() { Swap(); }

    static inline std::uint64_t s_value = 0;
    static inline std::uint64_t s_calls = 0;

private:
    static void Note(const void* data, std::size_t size)
    {
        const auto* bytes = static_cast<const unsigned char*>(data);
        for (std::size_t i = 0; i < size; ++i)
        {
            s_value = (s_value ^ bytes[i]) * 1099511628211ull;
        }
    }

    template <class... Values>
    static void Call(int function, Values... values)
    {
        ++s_calls;
        Note(&function, sizeof(function));
        (Note(&values, sizeof(values)), ...);
    }

    void Swap()
    {
        std::swap(m_useProgram, __glewUseProgram);
        std::swap(m_bindBuffer, __glewBindBuffer);
        std::swap(m_pointer, __glewVertexAttribPointer);
        std::swap(m_enable, __glewEnableVertexAttribArray);
        std::swap(m_disable, __glewDisableVertexAttribArray);
        std::swap(m_uniform1i, __glewUniform1i);
        std::swap(m_uniform1f, __glewUniform1f);
        std::swap(m_uniform3f, __glewUniform3f);
        std::swap(m_uniform4f, __glewUniform4f);
        std::swap(m_uniform2f, __glewUniform2f);
        std::swap(m_uniform4fv, __glewUniform4fv);
        std::swap(m_matrix3, __glewUniformMatrix3fv);
        std::swap(m_matrix4, __glewUniformMatrix4fv);
    }

    decltype(__glewUseProgram) m_useProgram = [](GLuint p) { Call(1, p); };
    decltype(__glewBindBuffer) m_bindBuffer = [](GLenum t, GLuint b) { Call(2, t, b); };
    decltype(__glewVertexAttribPointer) m_pointer = [](GLuint i, GLint n, GLenum t, GLboolean z, GLsizei s,
                                                       const void* p) { Call(3, i, n, t, z, s, p); };
    decltype(__glewEnableVertexAttribArray) m_enable = [](GLuint i) { Call(4, i); };
    decltype(__glewDisableVertexAttribArray) m_disable = [](GLuint i) { Call(5, i); };
    decltype(__glewUniform1i) m_uniform1i = [](GLint l, GLint v) { Call(6, l, v); };
    decltype(__glewUniform1f) m_uniform1f = [](GLint l, GLfloat v) { Call(7, l, v); };
    decltype(__glewUniform3f) m_uniform3f = [](GLint l, GLfloat x, GLfloat y, GLfloat z) { Call(8, l, x, y, z); };
    decltype(__glewUniform4f) m_uniform4f = [](GLint l, GLfloat x, GLfloat y, GLfloat z, GLfloat w)
    { Call(9, l, x, y, z, w); };
    decltype(__glewUniform2f) m_uniform2f = [](GLint l, GLfloat x, GLfloat y) { Call(12, l, x, y); };
    decltype(__glewUniform4fv) m_uniform4fv = [](GLint l, GLsizei n, const GLfloat* v)
    {
        Call(13, l, n);
        Note(v, 4 * sizeof(float));
    };
    decltype(__glewUniformMatrix3fv) m_matrix3 = [](GLint l, GLsizei n, GLboolean t, const GLfloat* m)
    {
        Call(10, l, n, t);
        Note(m, 9 * sizeof(float));
    };
    decltype(__glewUniformMatrix4fv) m_matrix4 = [](GLint l, GLsizei n, GLboolean t, const GLfloat* m)
    {
        Call(11, l, n, t);
        Note(m, 16 * sizeof(float));
    };
};

} // namespace OV::Bench
