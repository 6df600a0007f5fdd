#pragma once

#include "orvane/Export.h"

#include <cmath>

namespace OV
{

class Matrix;
class Quaternion;
class Transform;

/// Point, direction or scale of three floats.
///
/// Three-operand operations write their result to the object they are called on, which
/// may be one of the operands. Bad input gives NaN or infinity, never a report.
class ORVANE_API Vector
{
public:
    constexpr Vector() = default;

    constexpr Vector(float xValue, float yValue, float zValue) :
        x(xValue), y(yValue), z(zValue)
    {
    }

    /// Component 0, 1 or 2. There is no bound check: any other index selects z.
    constexpr float& operator[](unsigned int index)
    {
        return index == 0 ? x : index == 1 ? y : z;
    }

    /// Component 0, 1 or 2. There is no bound check: any other index selects z.
    constexpr const float& operator[](unsigned int index) const
    {
        return index == 0 ? x : index == 1 ? y : z;
    }

    Vector& Set(float xValue, float yValue, float zValue)
    {
        x = xValue;
        y = yValue;
        z = zValue;
        return *this;
    }

    /// Becomes a + b.
    void Add(const Vector& a, const Vector& b)
    {
        Set(a.x + b.x, a.y + b.y, a.z + b.z);
    }

    /// Becomes a - b.
    void Subtract(const Vector& a, const Vector& b)
    {
        Set(a.x - b.x, a.y - b.y, a.z - b.z);
    }

    /// Becomes the right-handed product a x b.
    void Cross(const Vector& a, const Vector& b)
    {
        Set(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
    }

    /// Becomes a * b, component by component.
    void Multiply(const Vector& a, const Vector& b)
    {
        Set(a.x * b.x, a.y * b.y, a.z * b.z);
    }

    /// Becomes m applied to the point (v, 1). Row 3 of m is not used: nothing is divided by w.
    void Multiply(const Matrix& m, const Vector& v);

    /// Becomes v rotated by q, by (w*w - u.u) v + 2 (u.v) u + 2 w (u x v) with u = (x, y, z).
    /// A q that is not unit also scales, by its squared norm.
    void Multiply(const Quaternion& q, const Vector& v);

    /// Becomes t applied to the point v, translation included, computed in double.
    void Multiply(const Transform& t, const Vector& v);

    /// Scales each component in place by the one of the argument.
    void Scale(const Vector& factors)
    {
        Multiply(*this, factors);
    }

    /// Scales in place.
    void Scale(float factor)
    {
        Scale(factor, *this);
    }

    /// Becomes factor * v.
    void Scale(float factor, const Vector& v)
    {
        Set(factor * v.x, factor * v.y, factor * v.z);
    }

    /// Divides by the length; a zero vector becomes NaN.
    void Normalize()
    {
        const float length = Magnitude();
        Set(x / length, y / length, z / length);
    }

    /// Becomes (b - a) * t + a, with t clamped to 0..1 first.
    void Interpolate(const Vector& a, const Vector& b, float t)
    {
        const float weight = t < 0.0f ? 0.0f : t > 1.0f ? 1.0f : t;
        Set((b.x - a.x) * weight + a.x, (b.y - a.y) * weight + a.y, (b.z - a.z) * weight + a.z);
    }

    float Dot(const Vector& v) const
    {
        return x * v.x + y * v.y + z * v.z;
    }

    float Dot(const Vector& v)
    {
        return static_cast<const Vector&>(*this).Dot(v);
    }

    float DistanceSquared(const Vector& v) const
    {
        const Vector difference(x - v.x, y - v.y, z - v.z);
        return difference.MagnitudeSquared();
    }

    float Magnitude() const
    {
        return std::sqrt(MagnitudeSquared());
    }

    float MagnitudeSquared() const
    {
        return Dot(*this);
    }

    /// Whether no component differs by more than 1e-6. The test is a negated "greater",
    /// so that NaN counts as equal to anything.
    bool operator==(const Vector& other) const
    {
        constexpr double tolerance = 1e-6;
        return !(std::fabs(static_cast<double>(x - other.x)) > tolerance) &&
               !(std::fabs(static_cast<double>(y - other.y)) > tolerance) &&
               !(std::fabs(static_cast<double>(z - other.z)) > tolerance);
    }

    bool operator!=(const Vector& other) const
    {
        return !(*this == other);
    }

    /// Whether every component differs by less than 1e-5: wider than operator==, and strict.
    bool IsEqual(const Vector& other) const
    {
        constexpr float tolerance = 1e-5f;
        return std::fabs(x - other.x) < tolerance && std::fabs(y - other.y) < tolerance &&
               std::fabs(z - other.z) < tolerance;
    }

    /// Whether this is (1, 1, 1) within 1e-5: the test of a scale, not of a length.
    bool IsUnity() const
    {
        constexpr float tolerance = 1e-5f;
        return std::fabs(x - 1.0f) <= tolerance && std::fabs(y - 1.0f) <= tolerance &&
               std::fabs(z - 1.0f) <= tolerance;
    }

    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
};

} // namespace OV
