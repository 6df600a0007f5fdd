#include "orvane/imaging/detail/WidenRGB.h"

#include <cstring>

#if defined(__x86_64__) && defined(__GNUC__)
#define ORVANE_WIDEN_BY_SHUFFLE
#include <tmmintrin.h>
#endif

namespace OV::detail
{

namespace
{

#ifdef ORVANE_WIDEN_BY_SHUFFLE

// Four pixels a step, from a load of 16 bytes of which the last four are not wanted: it stops
// where they would lie past the end. Returns the number of pixels done.
//
// With the plain way alone a flat RGB PNG takes 1.13 times libpng's own time, so 1.10.
__attribute__((target("ssse3"))) std::size_t WidenByShuffle(const unsigned char* source, unsigned char* destination,
                                                            std::size_t pixels)
{
    const __m128i places = _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1);
    const __m128i opaque = _mm_set1_epi32(static_cast<int>(0xFF000000u));
    std::size_t done = 0;
    for (; pixels - done >= 6; done += 4)
    {
        const __m128i rgb = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + done * 3));
        const __m128i rgba = _mm_or_si128(_mm_shuffle_epi8(rgb, places), opaque);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(destination + done * 4), rgba);
    }
    return done;
}

#endif

}  // namespace

void WidenRGBPlain(const unsigned char* source, unsigned char* destination, std::size_t pixels)
{
    constexpr unsigned char opaque = 255;
    if (pixels == 0)
    {
        return;
    }
    // One move of four bytes a pixel is twice as fast as three of one; the fourth is the next
    // pixel's, so the last pixel must not be read that way.
    for (std::size_t i = 1; i < pixels; ++i, source += 3, destination += 4)
    {
        std::memcpy(destination, source, 4);
        destination[3] = opaque;
    }
    std::memcpy(destination, source, 3);
    destination[3] = opaque;
}

void WidenRGB(const unsigned char* source, unsigned char* destination, std::size_t pixels)
{
    std::size_t done = 0;
#ifdef ORVANE_WIDEN_BY_SHUFFLE
    if (__builtin_cpu_supports("ssse3"))
    {
        done = WidenByShuffle(source, destination, pixels);
    }
#endif
    WidenRGBPlain(source + done * 3, destination + done * 4, pixels - done);
}

}  // namespace OV::detail
