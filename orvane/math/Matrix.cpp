#include "orvane/math/Matrix.h"

#include <algorithm>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

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
#ifdef __SSE2__
    // The same products and sums in the same order as below, four rows at a time: what a compiler
    // makes of that takes half as long again.
    const __m128 first = _mm_loadu_ps(a.m);
    const __m128 second = _mm_loadu_ps(a.m + 4);
    const __m128 third = _mm_loadu_ps(a.m + 8);
    const __m128 fourth = _mm_loadu_ps(a.m + 12);
    for (int column = 0; column < 16; column += 4)
    {
        const __m128 factors = _mm_loadu_ps(b.m + column);
        __m128 sum = _mm_mul_ps(first, _mm_shuffle_ps(factors, factors, _MM_SHUFFLE(0, 0, 0, 0)));
        sum = _mm_add_ps(sum, _mm_mul_ps(second, _mm_shuffle_ps(factors, factors, _MM_SHUFFLE(1, 1, 1, 1))));
        sum = _mm_add_ps(sum, _mm_mul_ps(third, _mm_shuffle_ps(factors, factors, _MM_SHUFFLE(2, 2, 2, 2))));
        sum = _mm_add_ps(sum, _mm_mul_ps(fourth, _mm_shuffle_ps(factors, factors, _MM_SHUFFLE(3, 3, 3, 3))));
        _mm_storeu_ps(m + column, sum);
    }
#else
    for (int column = 0; column < 4; ++column)
    {
        const float* factors = b.m + column * 4;
        // Apart from the operands, so that the four rows can be worked out side by side.
        float rows[4];
        for (int row = 0; row < 4; ++row)
        {
            rows[row] = a.m[row] * factors[0] + a.m[4 + row] * factors[1] + a.m[8 + row] * factors[2] +
                        a.m[12 + row] * factors[3];
        }
        std::copy(rows, rows + 4, m + column * 4);
    }
#endif
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
