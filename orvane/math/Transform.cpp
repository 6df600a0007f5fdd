#include "orvane/math/Transform.h"

#include "orvane/math/Matrix.h"
#include "orvane/math/Matrix3x3.h"

#include <cmath>

#if defined(__SSE2__) && defined(__GNUC__)
#define ORVANE_PRODUCT_BY_ROWS
#include <xmmintrin.h>
#endif

namespace OV
{

namespace
{

#ifdef ORVANE_PRODUCT_BY_ROWS

/// Two halves where the processor has no register of that size.
using Row = double __attribute__((vector_size(4 * sizeof(double)), aligned(alignof(double)), may_alias));

/// The same products and sums in the same order as Transf3d::operator*, a row at a time: the floats are made
/// before a row leaves its register.
__attribute__((always_inline)) inline void MultiplyRows(double (&product)[4][4], const double (&a)[4][4],
                                                        const double (&b)[4][4], float* inFloats)
{
    const auto* const right = reinterpret_cast<const Row*>(b);
    const Row first = right[0];
    const Row second = right[1];
    const Row third = right[2];
    const Row fourth = right[3];
    __m128 narrow[4];
    for (int row = 0; row < 4; ++row)
    {
        const double* const left = a[row];
        const Row sum = left[0] * first + left[1] * second + left[2] * third + left[3] * fourth;
        *reinterpret_cast<Row*>(product[row]) = sum;
        narrow[row] = __builtin_convertvector(sum, __m128);
    }
    _MM_TRANSPOSE4_PS(narrow[0], narrow[1], narrow[2], narrow[3]);
    for (int column = 0; column < 4; ++column)
    {
        _mm_storeu_ps(inFloats + column * 4, narrow[column]);
    }
}

__attribute__((target("avx"))) void MultiplyByAvx(double (&product)[4][4], const double (&a)[4][4],
                                                  const double (&b)[4][4], float* inFloats)
{
    MultiplyRows(product, a, b, inFloats);
}

#endif

Vector Narrow(const QGM::Vector3d& v)
{
    return Vector(static_cast<float>(v.x), static_cast<float>(v.y), static_cast<float>(v.z));
}

QGM::Vector3d WidenToVector3d(const Vector& v)
{
    return QGM::Vector3d(v.x, v.y, v.z);
}

QGM::Point3d WidenToPoint3d(const Vector& v)
{
    return QGM::Point3d(v.x, v.y, v.z);
}

Vector UnitColumn(const QGM::Vector3d& column)
{
    Vector unit = Narrow(column);
    unit.Normalize();
    return unit;
}

double LengthSquared(const QGM::Vector3d& v)
{
    return v.x * v.x + v.y * v.y + v.z * v.z;
}

void ExtractLinear(const QGM::Transf3d& transform, float* out)
{
    for (int column = 0; column < 3; ++column)
    {
        for (int row = 0; row < 3; ++row)
        {
            out[column * 3 + row] = static_cast<float>(transform.m[row][column]);
        }
    }
}

} // namespace

void Transform::Multiply(const Transform& a, const Transform& b, Matrix& inFloats)
{
#ifdef ORVANE_PRODUCT_BY_ROWS
    if (__builtin_cpu_supports("avx"))
    {
        MultiplyByAvx(m_transform.m, a.m_transform.m, b.m_transform.m, inFloats.m);
    }
    else
    {
        MultiplyRows(m_transform.m, a.m_transform.m, b.m_transform.m, inFloats.m);
    }
#else
    Multiply(a, b);
    ExtractMatrix(inFloats);
#endif
}

void Transform::SetPosition(const Vector& v)
{
    for (unsigned int i = 0; i < 3; ++i)
    {
        m_transform.setValue(i, 3, v[i]);
    }
}

Vector Transform::GetScale() const
{
    Vector scale(static_cast<float>(m_transform.xDir().length()),
                 static_cast<float>(m_transform.yDir().length()),
                 static_cast<float>(m_transform.zDir().length()));
    if (m_transform.isMirror())
    {
        scale.x = -scale.x;
    }
    return scale;
}

void Transform::SetScale(const Vector& s)
{
    const bool isMirror = m_transform.isMirror();
    const bool flip = (s.x < 0.0f && !isMirror) || (s.x > 0.0f && isMirror);
    QGM::Vector3d columns[3] = {m_transform.xDir(), m_transform.yDir(), m_transform.zDir()};
    for (unsigned int column = 0; column < 3; ++column)
    {
        // The signs of y and z are dropped on purpose: a mirror is held on X alone.
        double factor = std::fabs(static_cast<double>(s[column]));
        if (column == 0 && flip)
        {
            factor = -factor;
        }
        const QGM::Vector3d& unit = columns[column].normalize();
        m_transform.setValue(0, column, unit.x * factor);
        m_transform.setValue(1, column, unit.y * factor);
        m_transform.setValue(2, column, unit.z * factor);
    }
}

float Transform::GetMaxScale() const
{
    // The largest square has the largest root, so that one root does for the three axes.
    const double x = LengthSquared(m_transform.xDir());
    const double y = LengthSquared(m_transform.yDir());
    const double z = LengthSquared(m_transform.zDir());
    const double largest = x >= y && x >= z ? x : y >= z ? y : z;
    return static_cast<float>(std::sqrt(largest));
}

Quaternion Transform::GetRotation() const
{
    Vector x = UnitColumn(m_transform.xDir());
    const Vector y = UnitColumn(m_transform.yDir());
    const Vector z = UnitColumn(m_transform.zDir());
    if (m_transform.isMirror())
    {
        x.Scale(-1.0f);
    }
    Quaternion rotation;
    rotation.FromThreeVectors(x, y, z);
    return rotation;
}

void Transform::SetRotation(const Quaternion& q)
{
    const Vector scale = GetScale();
    Matrix3x3 rotation;
    q.ExtractMatrix(rotation);
    for (unsigned int column = 0; column < 3; ++column)
    {
        for (unsigned int row = 0; row < 3; ++row)
        {
            m_transform.setValue(row, column, rotation.m[column * 3 + row] * scale[column]);
        }
    }
}

void Transform::ExtractMatrix(Matrix& matrix, bool) const
{
    for (int column = 0; column < 4; ++column)
    {
        for (int row = 0; row < 4; ++row)
        {
            matrix.m[column * 4 + row] = static_cast<float>(m_transform.m[row][column]);
        }
    }
}

void Transform::ExtractRot3x3(float* out) const
{
    ExtractLinear(m_transform, out);
}

void Transform::ExtractAffineInverseTranspose3x3(float* out) const
{
    ExtractLinear(m_transform.affineInverseTranspose(), out);
}

void Transform::FromColumnMajor4x4(const float* m, bool)
{
    for (unsigned int row = 0; row < 4; ++row)
    {
        for (unsigned int column = 0; column < 4; ++column)
        {
            m_transform.setValue(row, column, m[column * 4 + row]);
        }
    }
}

void Transform::FromRowMajor4x4(const float* m, bool)
{
    for (unsigned int row = 0; row < 4; ++row)
    {
        for (unsigned int column = 0; column < 4; ++column)
        {
            m_transform.setValue(row, column, m[row * 4 + column]);
        }
    }
}

void Transform::EyeLookUp(const Vector& eye, const Vector& at, const Vector& up)
{
    Vector z;
    z.Subtract(eye, at);
    z.Normalize();
    Vector x;
    x.Cross(up, z);
    x.Normalize();
    Vector y;
    y.Cross(z, x);
    m_transform = QGM::Transf3d(WidenToPoint3d(eye), WidenToVector3d(x), WidenToVector3d(y),
                                WidenToVector3d(z), false);
}

bool Transform::operator==(const Transform& other) const
{
    return m_transform.isEqual(other.m_transform, 1e-12);
}

bool Transform::operator!=(const Transform& other) const
{
    return !(*this == other);
}

} // namespace OV
