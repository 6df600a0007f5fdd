#pragma once

namespace OV
{

/// Place in a texture, u to the right and v upwards, 0..1 across the picture.
class TextureCoordinate
{
public:
    constexpr TextureCoordinate() = default;

    constexpr TextureCoordinate(float uValue, float vValue) :
        u(uValue), v(vValue)
    {
    }

    float u = 0.0f;
    float v = 0.0f;
};

} // namespace OV
