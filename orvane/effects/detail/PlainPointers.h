#pragma once

#include <GL/glew.h>

#include <cstdint>

namespace OV::detail
{

/// Where a few attributes, which are enabled, are pointed for one mesh of a buffer after another: at floats, so many
/// bytes behind the positions.
class PlainPointers
{
public:
    /// Nothing for a stream that isn't there, which is negative. At most four.
    void Add(unsigned int attribute, int components, int behindPosition)
    {
        if (behindPosition >= 0)
        {
            m_pointers[m_count++] = {attribute, components, behindPosition};
        }
    }

    /// GL.
    void Point(int stride, int position) const
    {
        for (int i = 0; i < m_count; ++i)
        {
            const auto offset = static_cast<std::intptr_t>(position) + m_pointers[i].behindPosition;
            glVertexAttribPointer(m_pointers[i].attribute, m_pointers[i].components, GL_FLOAT, GL_FALSE, stride,
                                  reinterpret_cast<const void*>(offset));
        }
    }

private:
    struct Pointer
    {
        unsigned int attribute;
        int components;
        int behindPosition;
    };

    Pointer m_pointers[4];
    int m_count = 0;
};

} // namespace OV::detail
