#pragma once

#include <algorithm>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace OV::detail
{

/// Writes a x b, 16 elements each, column-major, to what is neither of them.
inline void Multiply(float* product, const float* a, const float* b)
{
#ifdef __SSE2__
    // The same products and sums in the same order as below, four rows at a time: what a compiler
    // makes of that takes half as long again.
    const __m128 first = _mm_loadu_ps(a);
    const __m128 second = _mm_loadu_ps(a + 4);
    const __m128 third = _mm_loadu_ps(a + 8);
    const __m128 fourth = _mm_loadu_ps(a + 12);
    for (int column = 0; column < 16; column += 4)
    {
        const __m128 factors = _mm_loadu_ps(b + column);
        __m128 sum = _mm_mul_ps(first, _mm_shuffle_ps(factors, factors, _MM_SHUFFLE(0, 0, 0, 0)));
        sum = _mm_add_ps(sum, _mm_mul_ps(second, _mm_shuffle_ps(factors, factors, _MM_SHUFFLE(1, 1, 1, 1))));
        sum = _mm_add_ps(sum, _mm_mul_ps(third, _mm_shuffle_ps(factors, factors, _MM_SHUFFLE(2, 2, 2, 2))));
        sum = _mm_add_ps(sum, _mm_mul_ps(fourth, _mm_shuffle_ps(factors, factors, _MM_SHUFFLE(3, 3, 3, 3))));
        _mm_storeu_ps(product + column, sum);
    }
#else
    for (int column = 0; column < 4; ++column)
    {
        const float* factors = b + column * 4;
        // Apart from the operands, so that the four rows can be worked out side by side.
        float rows[4];
        for (int row = 0; row < 4; ++row)
        {
            rows[row] = a[row] * factors[0] + a[4 + row] * factors[1] + a[8 + row] * factors[2] +
                        a[12 + row] * factors[3];
        }
        std::copy(rows, rows + 4, product + column * 4);
    }
#endif
}

} // namespace OV::detail
