#pragma once

#include <cmath>

namespace OV
{

/// Colour with alpha, channels in 0..1, not premultiplied; opaque white by default.
///
/// Nothing is ever clamped.
class Color
{
public:
    constexpr Color() = default;

    /// Opaque.
    constexpr Color(float red, float green, float blue) :
        r(red), g(green), b(blue)
    {
    }

    constexpr Color(float red, float green, float blue, float alpha) :
        r(red), g(green), b(blue), a(alpha)
    {
    }

    /// The opaque colour of three bytes.
    static constexpr Color GetRGB(unsigned char red, unsigned char green, unsigned char blue)
    {
        return Color(red / 255.0f, green / 255.0f, blue / 255.0f);
    }

    /// The colour of four bytes.
    static constexpr Color GetRGBA(unsigned char red, unsigned char green, unsigned char blue,
                                   unsigned char alpha)
    {
        return Color(red / 255.0f, green / 255.0f, blue / 255.0f, alpha / 255.0f);
    }

    Color& Set(const Color& other)
    {
        return *this = other;
    }

    /// Sets the three channels and makes the colour opaque.
    Color& Set(float red, float green, float blue)
    {
        return Set(red, green, blue, 1.0f);
    }

    Color& Set(float red, float green, float blue, float alpha)
    {
        r = red;
        g = green;
        b = blue;
        a = alpha;
        return *this;
    }

    /// Sets the three channels from values in 0..255. Alpha stays, unlike in Set.
    void SetRGB(float red, float green, float blue)
    {
        r = red / 255.0f;
        g = green / 255.0f;
        b = blue / 255.0f;
    }

    /// Sets all four channels, alpha too, from values in 0..255.
    void SetRGBA(float red, float green, float blue, float alpha)
    {
        SetRGB(red, green, blue);
        a = alpha / 255.0f;
    }

    /// Adds r, g and b of the other; alpha stays.
    void AddRGB(const Color& other)
    {
        r += other.r;
        g += other.g;
        b += other.b;
    }

    /// Multiplies r, g and b; alpha stays.
    void ModulateRGB(float factor)
    {
        r *= factor;
        g *= factor;
        b *= factor;
    }

    /// Whether every channel, alpha included, differs by less than 0.0001.
    bool IsEqual(const Color& other) const
    {
        constexpr float tolerance = 0.0001f;
        return std::fabs(r - other.r) < tolerance && std::fabs(g - other.g) < tolerance &&
               std::fabs(b - other.b) < tolerance && std::fabs(a - other.a) < tolerance;
    }

    /// Whether all four channels are the same floats.
    bool IsExactlyEqual(const Color& other) const
    {
        return r == other.r && g == other.g && b == other.b && a == other.a;
    }

    float r = 1.0f;
    float g = 1.0f;
    float b = 1.0f;
    float a = 1.0f;
};

} // namespace OV
