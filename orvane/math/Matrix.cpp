#include "orvane/math/Matrix.h"

#include "orvane/math/detail/MatrixProduct.h"

#include <algorithm>

namespace OV
{

namespace
{

/// Whether an extent is too small to divide by. The comparison is made in double: 1e-6 as a
/// float lies below 1e-6 and is too small, the next float is not.
bool IsTooSmall(float extent)
{
    return static_cast<double>(extent) <= 1e-6;
}

} // namespace

void Matrix::Identity()
{
    std::fill(m, m + 16, 0.0f);
    m[0] = m[5] = m[10] = m[15] = 1.0f;
}

void Matrix::Multiply(const Matrix& a, const Matrix& b)
{
    detail::Multiply(m, a.m, b.m);
}

void Matrix::Transpose(const Matrix& source)
{
    for (int column = 0; column < 4; ++column)
    {
        for (int row = 0; row < 4; ++row)
        {
            m[column * 4 + row] = source.m[row * 4 + column];
        }
    }
}

void Matrix::CalculateOrthoMatrix(float left, float right, float bottom, float top, float nearZ,
                                  float farZ)
{
    Identity();
    const float width = right - left;
    const float height = top - bottom;
    const float depth = farZ - nearZ;
    if (IsTooSmall(width) || IsTooSmall(height) || IsTooSmall(depth))
    {
        return;
    }
    m[0] = 2.0f / width;
    m[5] = 2.0f / height;
    m[10] = -2.0f / depth;
    m[12] = -(left + right) / width;
    m[13] = -(top + bottom) / height;
    m[14] = -(nearZ + farZ) / depth;
}

void Matrix::CalculatePerspMatrix(float left, float right, float bottom, float top, float nearZ,
                                  float farZ)
{
    Identity();
    const float width = right - left;
    const float height = top - bottom;
    const float depth = farZ - nearZ;
    if (IsTooSmall(nearZ) || IsTooSmall(farZ) || IsTooSmall(width) || IsTooSmall(height) ||
        IsTooSmall(depth))
    {
        return;
    }
    m[0] = 2.0f * nearZ / width;
    m[5] = 2.0f * nearZ / height;
    m[8] = (left + right) / width;
    m[9] = (bottom + top) / height;
    m[10] = -(nearZ + farZ) / depth;
    m[11] = -1.0f;
    m[14] = -2.0f * farZ * nearZ / depth;
    m[15] = 0.0f;
}

} // namespace OV
