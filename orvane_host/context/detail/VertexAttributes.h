#pragma once

#include <vector>

namespace OV::Host::Detail
{

class GLVersion;

/// The first 16 vertex attributes of the vertex array that is bound. All of it GL.
class VertexAttributes
{
public:
    /// Reads them.
    explicit VertexAttributes(const GLVersion& version);

    /// Gives them GL's initial values, without arrays.
    void Reset() const;

    /// Makes them what they were, with the same vertex array bound. Changes the array buffer.
    void Restore() const;

private:
    struct Attribute
    {
        int isEnabled = 0;
        int size = 4;
        int type = 0;
        int isNormalized = 0;
        int isInteger = 0;
        int isLong = 0;
        int stride = 0;
        int buffer = 0;
        int divisor = 0;
        void* pointer = nullptr;
        float value[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    };

    void RestorePointer(unsigned int index, const Attribute& attribute) const;

    bool m_hasIntegers;
    bool m_hasLongs;
    bool m_hasDivisors;
    std::vector<Attribute> m_attributes;
};

} // namespace OV::Host::Detail
