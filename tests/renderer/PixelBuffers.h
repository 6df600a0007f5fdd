#pragma once

#include <GL/glew.h>
#include <gtest/gtest.h>

namespace OV::Test
{

/// A host's pixel buffers, of 16 bytes each, bound for unpacking and packing as long as it lives.
class PixelBuffers
{
public:
    PixelBuffers()
    {
        glGenBuffers(2, m_names);
        for (const int i : {0, 1})
        {
            glBindBuffer(kTargets[i], m_names[i]);
            glBufferData(kTargets[i], 16, nullptr, GL_STREAM_DRAW);
        }
    }

    ~PixelBuffers() { glDeleteBuffers(2, m_names); }

    PixelBuffers(const PixelBuffers&) = delete;
    PixelBuffers& operator=(const PixelBuffers&) = delete;

    /// Both are bound as they were.
    void ExpectBound() const
    {
        for (const int i : {0, 1})
        {
            GLint bound = 0;
            glGetIntegerv(kBindings[i], &bound);
            EXPECT_EQ(static_cast<GLuint>(bound), m_names[i]);
        }
    }

private:
    static constexpr GLenum kTargets[2] = {GL_PIXEL_UNPACK_BUFFER, GL_PIXEL_PACK_BUFFER};
    static constexpr GLenum kBindings[2] = {GL_PIXEL_UNPACK_BUFFER_BINDING, GL_PIXEL_PACK_BUFFER_BINDING};

    GLuint m_names[2] = {};
};

} // namespace OV::Test
