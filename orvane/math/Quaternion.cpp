#include "orvane/math/Quaternion.h"

#include "orvane/math/Matrix.h"
#include "orvane/math/Matrix3x3.h"
#include "orvane/math/Vector.h"

#include <cmath>

namespace OV
{

namespace
{

constexpr float pi = 3.1415927f;
constexpr float halfPi = 1.5707964f;
constexpr float twoPi = 6.2831855f;

/// Cosine above which two vectors count as parallel and a half angle as no rotation.
constexpr double parallelCosine = 0.999999;

float WrapAngle(float angle)
{
    return angle < 0.0f ? angle + twoPi : angle;
}

float Dot(const Quaternion& a, const Quaternion& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
}

/// Sets the components as they are: the constructor and Set make them unit.
void SetRaw(Quaternion& q, float x, float y, float z, float w)
{
    q.x = x;
    q.y = y;
    q.z = z;
    q.w = w;
}

} // namespace

Quaternion::Quaternion(float xValue, float yValue, float zValue, float wValue)
{
    Set(xValue, yValue, zValue, wValue);
}

void Quaternion::Set(float xValue, float yValue, float zValue, float wValue)
{
    SetRaw(*this, xValue, yValue, zValue, wValue);
    Normalize();
}

void Quaternion::Multiply(const Quaternion& a, const Quaternion& b)
{
    SetRaw(*this,
           a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
           a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x,
           a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w,
           a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z);
}

void Quaternion::Compose(const Quaternion& a, const Quaternion& b)
{
    // The product in eight multiplications and a halving instead of sixteen.
    const float e = (b.z + b.x) * (a.y + a.x);
    const float f = (b.x - b.z) * (a.x - a.y);
    const float g = (b.y + b.w) * (a.w - a.z);
    const float h = (b.w - b.y) * (a.z + a.w);
    Set((a.x + a.w) * (b.w + b.x) - (e + f + g + h) * 0.5f,
        (b.w - b.x) * (a.y + a.z) + (e - f + g - h) * 0.5f,
        (a.w - a.x) * (b.y + b.z) + (e - f - g + h) * 0.5f,
        (b.z - b.y) * (a.y - a.z) + (g + h - e - f) * 0.5f);
}

void Quaternion::Uncompose(const Quaternion& a, const Quaternion& b)
{
    Quaternion conjugate;
    conjugate.Invert(b);
    Compose(a, conjugate);
}

void Quaternion::Invert(const Quaternion& q)
{
    SetRaw(*this, -q.x, -q.y, -q.z, q.w);
}

void Quaternion::Normalize()
{
    const float norm = std::sqrt(Dot(*this, *this));
    SetRaw(*this, x / norm, y / norm, z / norm, w / norm);
}

void Quaternion::FromRotation(const Vector& axis, float angle)
{
    Vector unit = axis;
    unit.Normalize();
    const float sine = std::sin(angle / 2.0f);
    SetRaw(*this, unit.x * sine, unit.y * sine, unit.z * sine, std::cos(angle / 2.0f));
}

void Quaternion::GetRotation(Vector& axis, float& angle)
{
    const double cosine = w;
    axis.Set(1.0f, 0.0f, 0.0f);
    if (cosine > parallelCosine || cosine < -parallelCosine)
    {
        // A full turn, w near -1, is no rotation either: both ends give an angle of 0.
        angle = 0.0f;
        return;
    }
    angle = static_cast<float>(2.0 * std::acos(cosine));
    const Vector u(x, y, z);
    const float length = u.Magnitude();
    if (!(static_cast<double>(length) < 1e-6))
    {
        axis.Set(x / length, y / length, z / length);
    }
}

void Quaternion::FromColumnMajor3x3(const float* m)
{
    const float trace = m[0] + m[4] + m[8];
    if (trace > 0.0f)
    {
        const float s = std::sqrt(trace + 1.0f);
        const float k = 0.5f / s;
        SetRaw(*this, (m[5] - m[7]) * k, (m[6] - m[2]) * k, (m[1] - m[3]) * k, s / 2.0f);
    }
    else if (m[0] > m[4] && m[0] > m[8])
    {
        const float s = std::sqrt(m[0] + 1.0f - m[4] - m[8]);
        const float k = 0.5f / s;
        SetRaw(*this, s / 2.0f, (m[3] + m[1]) * k, (m[6] + m[2]) * k, (m[5] - m[7]) * k);
    }
    else if (m[4] > m[8])
    {
        const float s = std::sqrt(m[4] + 1.0f - m[0] - m[8]);
        const float k = 0.5f / s;
        SetRaw(*this, (m[3] + m[1]) * k, s / 2.0f, (m[5] + m[7]) * k, (m[6] - m[2]) * k);
    }
    else
    {
        const float s = std::sqrt(m[8] + 1.0f - m[0] - m[4]);
        const float k = 0.5f / s;
        SetRaw(*this, (m[6] + m[2]) * k, (m[5] + m[7]) * k, s / 2.0f, (m[1] - m[3]) * k);
    }
    Normalize();
}

void Quaternion::FromRowMajor3x3(const float* m)
{
    const float columns[9] = {m[0], m[3], m[6], m[1], m[4], m[7], m[2], m[5], m[8]};
    FromColumnMajor3x3(columns);
}

void Quaternion::FromThreeVectors(const Vector& a, const Vector& b, const Vector& c)
{
    const float columns[9] = {a.x, a.y, a.z, b.x, b.y, b.z, c.x, c.y, c.z};
    FromColumnMajor3x3(columns);
}

void Quaternion::GetThreeVectors(Vector& a, Vector& b, Vector& c) const
{
    Matrix3x3 rotation;
    ExtractMatrix(rotation);
    const float* m = rotation.m;
    a.Set(m[0], m[1], m[2]).Normalize();
    b.Set(m[3], m[4], m[5]).Normalize();
    c.Set(m[6], m[7], m[8]).Normalize();
}

void Quaternion::ExtractMatrix(Matrix3x3& matrix) const
{
    float* m = matrix.m;
    m[0] = 1.0f - 2.0f * (y * y + z * z);
    m[1] = 2.0f * (x * y + w * z);
    m[2] = 2.0f * (x * z - w * y);
    m[3] = 2.0f * (x * y - w * z);
    m[4] = 1.0f - 2.0f * (x * x + z * z);
    m[5] = 2.0f * (y * z + w * x);
    m[6] = 2.0f * (x * z + w * y);
    m[7] = 2.0f * (y * z - w * x);
    m[8] = 1.0f - 2.0f * (x * x + y * y);
}

void Quaternion::ExtractMatrix(Matrix& matrix) const
{
    Matrix3x3 rotation;
    ExtractMatrix(rotation);
    matrix.Identity();
    for (int column = 0; column < 3; ++column)
    {
        for (int row = 0; row < 3; ++row)
        {
            matrix.m[column * 4 + row] = rotation.m[column * 3 + row];
        }
    }
}

void Quaternion::FromTwoVectors(const Vector& a, const Vector& b)
{
    const double cosine = a.Dot(b);
    if (cosine > parallelCosine)
    {
        *this = Quaternion();
        return;
    }
    if (cosine < -parallelCosine)
    {
        // About Y even when the vectors lie along Y and the half turn moves neither.
        SetRaw(*this, 0.0f, 1.0f, 0.0f, 0.0f);
        return;
    }
    // The operands in this order carry the second vector onto the first.
    Vector axis;
    axis.Cross(b, a);
    const float lengthSquared = axis.MagnitudeSquared();
    if (lengthSquared < 1e-6f)
    {
        *this = Quaternion();
        return;
    }
    axis.Normalize();
    FromRotation(axis, static_cast<float>(std::acos(cosine)));
}

bool Quaternion::MakeYUp(const Quaternion& r)
{
    const Vector up(0.0f, 1.0f, 0.0f);
    Vector projectedUp;
    projectedUp.Multiply(*this, up);
    projectedUp.z = 0.0f;
    projectedUp.Normalize();

    Quaternion correction;
    correction.FromTwoVectors(up, projectedUp);
    Multiply(r, *this);
    Multiply(correction, *this);
    Normalize();
    return true;
}

void Quaternion::SetEulerAngles(const Vector& e)
{
    const float sx = std::sin(e.x / 2.0f);
    const float cx = std::cos(e.x / 2.0f);
    const float sy = std::sin(e.y / 2.0f);
    const float cy = std::cos(e.y / 2.0f);
    const float sz = std::sin(e.z / 2.0f);
    const float cz = std::cos(e.z / 2.0f);
    SetRaw(*this,
           cz * cy * sx - sz * sy * cx,
           cz * sy * cx + sz * cy * sx,
           sz * cy * cx - cz * sy * sx,
           cz * cy * cx + sz * sy * sx);
}

void Quaternion::GetEulerAngles(Vector& e) const
{
    Matrix rotation;
    ExtractMatrix(rotation);
    const float* m = rotation.m;
    const float angleY = std::atan2(-m[2], std::sqrt(m[0] * m[0] + m[1] * m[1]));
    const float cosineY = std::cos(angleY);
    e.y = WrapAngle(angleY);
    if (std::fabs(static_cast<double>(cosineY)) > 1e-6)
    {
        e.x = WrapAngle(std::atan2(m[6] / cosineY, m[10] / cosineY));
        e.z = WrapAngle(std::atan2(m[1] / cosineY, m[0] / cosineY));
        return;
    }
    // X and Z turn about the same line here; the sense differs between the two ends of Y.
    const float angleX = std::atan2(m[4], m[5]);
    e.x = WrapAngle(e.y > halfPi ? -angleX : angleX);
    e.z = 0.0f;
}

void Quaternion::Interpolate(const Quaternion& a, const Quaternion& b, float t)
{
    const float weight = t < 0.0f ? 0.0f : t > 1.0f ? 1.0f : t;
    Quaternion from = a;
    Quaternion to = b;
    float cosine = Dot(from, to);
    if (cosine < 0.0f)
    {
        SetRaw(from, -from.x, -from.y, -from.z, -from.w);
        cosine = -cosine;
    }

    float fromWeight = 1.0f - weight;
    float toWeight = weight;
    if (!(cosine + 1.0f > 0.05))
    {
        // Only NaN comes here, since the cosine is not negative any more. The path runs from a
        // towards a quaternion perpendicular to it, whatever b is.
        SetRaw(to, -from.y, from.x, -from.w, from.z);
        fromWeight = std::sin((0.5f - weight) * pi);
        toWeight = std::sin(weight * pi);
    }
    else if (!(0.05 > 1.0f - cosine))
    {
        const float theta = std::acos(cosine);
        const float sine = std::sin(theta);
        fromWeight = std::sin(theta - theta * weight) / sine;
        toWeight = std::sin(theta * weight) / sine;
    }

    SetRaw(*this,
           fromWeight * from.x + toWeight * to.x,
           fromWeight * from.y + toWeight * to.y,
           fromWeight * from.z + toWeight * to.z,
           fromWeight * from.w + toWeight * to.w);
}

bool Quaternion::operator==(const Quaternion& other) const
{
    constexpr double tolerance = 1e-6;
    return !(std::fabs(static_cast<double>(x - other.x)) > tolerance) &&
           !(std::fabs(static_cast<double>(y - other.y)) > tolerance) &&
           !(std::fabs(static_cast<double>(z - other.z)) > tolerance) &&
           !(std::fabs(static_cast<double>(w - other.w)) > tolerance);
}

bool Quaternion::operator!=(const Quaternion& other) const
{
    return !(*this == other);
}

} // namespace OV
