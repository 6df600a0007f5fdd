#pragma once

#include "orvane/math/Matrix.h"
#include "orvane/math/Quaternion.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <utility>

/// Plain double-precision computations that the value types are held against. They take other
/// ways than the code under test wherever there is one.
namespace MathTesting
{

constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr double pi = 3.14159265358979323846;

inline float Above(float value)
{
    return std::nextafter(value, std::numeric_limits<float>::infinity());
}

inline float Below(float value)
{
    return std::nextafter(value, -std::numeric_limits<float>::infinity());
}

/// Row-major 4x4 matrix, element [r][c].
using Matrix4 = std::array<std::array<double, 4>, 4>;
using Vector4 = std::array<double, 4>;

inline Matrix4 Identity4()
{
    Matrix4 result{};
    for (int i = 0; i < 4; ++i)
    {
        result[i][i] = 1.0;
    }
    return result;
}

inline Matrix4 Product(const Matrix4& a, const Matrix4& b)
{
    Matrix4 result{};
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            for (int k = 0; k < 4; ++k)
            {
                result[r][c] += a[r][k] * b[k][c];
            }
        }
    }
    return result;
}

inline Vector4 Apply(const Matrix4& a, const Vector4& v)
{
    Vector4 result{};
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            result[r] += a[r][c] * v[c];
        }
    }
    return result;
}

/// By Gauss-Jordan elimination with row exchange.
inline Matrix4 Inverse(Matrix4 a)
{
    Matrix4 result = Identity4();
    for (int c = 0; c < 4; ++c)
    {
        int pivot = c;
        for (int r = c + 1; r < 4; ++r)
        {
            if (std::fabs(a[r][c]) > std::fabs(a[pivot][c]))
            {
                pivot = r;
            }
        }
        std::swap(a[c], a[pivot]);
        std::swap(result[c], result[pivot]);
        const double divisor = a[c][c];
        for (int k = 0; k < 4; ++k)
        {
            a[c][k] /= divisor;
            result[c][k] /= divisor;
        }
        for (int r = 0; r < 4; ++r)
        {
            const double factor = r == c ? 0.0 : a[r][c];
            for (int k = 0; k < 4; ++k)
            {
                a[r][k] -= factor * a[c][k];
                result[r][k] -= factor * result[c][k];
            }
        }
    }
    return result;
}

/// Rotation about one of the axes 0, 1, 2.
inline Matrix4 AxisRotation(int axis, double angle)
{
    Matrix4 result = Identity4();
    const int i = (axis + 1) % 3;
    const int j = (axis + 2) % 3;
    result[i][i] = std::cos(angle);
    result[i][j] = -std::sin(angle);
    result[j][i] = std::sin(angle);
    result[j][j] = std::cos(angle);
    return result;
}

/// Rotation about any axis, by Rodrigues' formula.
inline Matrix4 AngleAxisRotation(double x, double y, double z, double angle)
{
    const double length = std::sqrt(x * x + y * y + z * z);
    const std::array<double, 3> n = {x / length, y / length, z / length};
    const double cross[3][3] = {{0, -n[2], n[1]}, {n[2], 0, -n[0]}, {-n[1], n[0], 0}};
    Matrix4 result = Identity4();
    for (int r = 0; r < 3; ++r)
    {
        for (int c = 0; c < 3; ++c)
        {
            result[r][c] = (r == c ? std::cos(angle) : 0.0) + std::sin(angle) * cross[r][c] +
                           (1.0 - std::cos(angle)) * n[r] * n[c];
        }
    }
    return result;
}

/// Rotation of a quaternion that need not be unit, through its axis and angle.
inline Matrix4 RotationOf(const OV::Quaternion& q)
{
    const double x = q.x;
    const double y = q.y;
    const double z = q.z;
    const double length = std::sqrt(x * x + y * y + z * z);
    if (length == 0.0)
    {
        return Identity4();
    }
    return AngleAxisRotation(x, y, z, 2.0 * std::atan2(length, static_cast<double>(q.w)));
}

inline Matrix4 Widen(const OV::Matrix& m)
{
    Matrix4 result{};
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            result[r][c] = m.m[c * 4 + r];
        }
    }
    return result;
}

inline Matrix4 Elements(const QGM::Transf3d& t)
{
    Matrix4 result{};
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            result[r][c] = t.m[r][c];
        }
    }
    return result;
}

inline Matrix4 Elements(const OV::Transform& t)
{
    return Elements(t.GetTransf3d());
}

inline QGM::Transf3d MakeTransf3d(const Matrix4& elements)
{
    QGM::Transf3d result;
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            result.setValue(r, c, elements[r][c]);
        }
    }
    return result;
}

inline OV::Transform MakeTransform(const Matrix4& elements)
{
    OV::Transform result;
    result.SetTransf3d(MakeTransf3d(elements));
    return result;
}

inline OV::Quaternion RawQuaternion(float x, float y, float z, float w)
{
    OV::Quaternion result;
    result.x = x;
    result.y = y;
    result.z = z;
    result.w = w;
    return result;
}

inline double Norm(const OV::Quaternion& q)
{
    return std::sqrt(double(q.x) * q.x + double(q.y) * q.y + double(q.z) * q.z + double(q.w) * q.w);
}

inline void ExpectExactly(const OV::Vector& actual, float x, float y, float z)
{
    EXPECT_EQ(actual.x, x);
    EXPECT_EQ(actual.y, y);
    EXPECT_EQ(actual.z, z);
}

inline void ExpectNear(const OV::Vector& actual, double x, double y, double z, double tolerance)
{
    EXPECT_NEAR(actual.x, x, tolerance);
    EXPECT_NEAR(actual.y, y, tolerance);
    EXPECT_NEAR(actual.z, z, tolerance);
}

inline void ExpectExactly(const OV::Quaternion& actual, float x, float y, float z, float w)
{
    EXPECT_EQ(actual.x, x);
    EXPECT_EQ(actual.y, y);
    EXPECT_EQ(actual.z, z);
    EXPECT_EQ(actual.w, w);
}

inline void ExpectNear(const OV::Quaternion& actual, double x, double y, double z, double w,
                       double tolerance)
{
    EXPECT_NEAR(actual.x, x, tolerance);
    EXPECT_NEAR(actual.y, y, tolerance);
    EXPECT_NEAR(actual.z, z, tolerance);
    EXPECT_NEAR(actual.w, w, tolerance);
}

inline void ExpectNear(const Matrix4& actual, const Matrix4& expected, double tolerance)
{
    for (int r = 0; r < 4; ++r)
    {
        for (int c = 0; c < 4; ++c)
        {
            EXPECT_NEAR(actual[r][c], expected[r][c], tolerance) << "row " << r << " column " << c;
        }
    }
}

/// Repeatable input for property tests.
class Random
{
public:
    double Between(double low, double high)
    {
        return std::uniform_real_distribution<double>(low, high)(m_engine);
    }

    OV::Vector AnyVector(double extent = 10.0)
    {
        const auto x = static_cast<float>(Between(-extent, extent));
        const auto y = static_cast<float>(Between(-extent, extent));
        const auto z = static_cast<float>(Between(-extent, extent));
        return OV::Vector(x, y, z);
    }

    OV::Vector UnitVector()
    {
        for (;;)
        {
            OV::Vector v = AnyVector(1.0);
            const float lengthSquared = v.MagnitudeSquared();
            if (lengthSquared > 0.01f && lengthSquared < 1.0f)
            {
                v.Normalize();
                return v;
            }
        }
    }

    OV::Quaternion Rotation()
    {
        const OV::Vector axis = UnitVector();
        const double half = Between(0.0, pi);
        const double sine = std::sin(half);
        return OV::Quaternion(static_cast<float>(axis.x * sine), static_cast<float>(axis.y * sine),
                              static_cast<float>(axis.z * sine),
                              static_cast<float>(std::cos(half)));
    }

    Matrix4 AnyMatrix()
    {
        Matrix4 result{};
        for (auto& row : result)
        {
            for (double& element : row)
            {
                element = Between(-2.0, 2.0);
            }
        }
        return result;
    }

    /// Rotation, scale of 0.1 to 10 an axis, translation; a mirror if asked for.
    Matrix4 AffineMatrix(bool isMirror = false)
    {
        const OV::Vector axis = UnitVector();
        Matrix4 result = AngleAxisRotation(axis.x, axis.y, axis.z, Between(0.0, 2.0 * pi));
        for (int c = 0; c < 3; ++c)
        {
            const double sign = isMirror && c == 1 ? -1.0 : 1.0;
            const double scale = sign * std::pow(10.0, Between(-1.0, 1.0));
            for (int r = 0; r < 3; ++r)
            {
                result[r][c] *= scale;
            }
        }
        for (int r = 0; r < 3; ++r)
        {
            result[r][3] = Between(-100.0, 100.0);
        }
        return result;
    }

private:
    std::mt19937 m_engine{20240229};
};

} // namespace MathTesting
