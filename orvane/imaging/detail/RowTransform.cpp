#include "orvane/imaging/detail/RowTransform.h"

#include "orvane/imaging/detail/WidenRGB.h"

#include <array>
#include <cstring>

namespace OV::detail
{

namespace
{

constexpr std::size_t kPixelBytes = 4;
constexpr unsigned char kOpaque = 255;

void CopyRGBA(const unsigned char* source, unsigned char* destination, std::size_t pixels)
{
    std::memcpy(destination, source, pixels * kPixelBytes);
}

void SwapRGBA(const unsigned char* source, unsigned char* destination, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i, source += 4, destination += kPixelBytes)
    {
        const unsigned char pixel[kPixelBytes] = {source[2], source[1], source[0], source[3]};
        std::memcpy(destination, pixel, kPixelBytes);
    }
}

void WidenAndSwapRGB(const unsigned char* source, unsigned char* destination, std::size_t pixels)
{
    for (std::size_t i = 0; i < pixels; ++i, source += 3, destination += kPixelBytes)
    {
        const unsigned char pixel[kPixelBytes] = {source[2], source[1], source[0], kOpaque};
        std::memcpy(destination, pixel, kPixelBytes);
    }
}

using PixelRun = void (*)(const unsigned char*, unsigned char*, std::size_t);

template <PixelRun Run>
void KeepRows(unsigned char* source, unsigned char* destination, std::size_t width, std::size_t rows)
{
    Run(source, destination, width * rows);
}

template <PixelRun Run, bool SourceIsRGB>
void ReverseRows(unsigned char* source, unsigned char* destination, std::size_t width, std::size_t rows)
{
    for (std::size_t row = rows; row-- > 0; source += width * SourceBytes(SourceIsRGB))
    {
        Run(source, destination + row * width * kPixelBytes, width);
    }
}

using TransformFunction = void (*)(unsigned char*, unsigned char*, std::size_t, std::size_t);

// Numbered flipVertical * 4 + sourceIsRGB * 2 + swapRedBlue.
constexpr std::array<TransformFunction, 8> kTransforms = {
    KeepRows<CopyRGBA>,           KeepRows<SwapRGBA>,
    KeepRows<WidenRGB>,           KeepRows<WidenAndSwapRGB>,
    ReverseRows<CopyRGBA, false>, ReverseRows<SwapRGBA, false>,
    ReverseRows<WidenRGB, true>,  ReverseRows<WidenAndSwapRGB, true>,
};

}  // namespace

RowTransform ChooseRowTransform(bool swapRedBlue, bool sourceIsRGB, bool flipVertical)
{
    return kTransforms[(flipVertical ? 4u : 0u) + (sourceIsRGB ? 2u : 0u) + (swapRedBlue ? 1u : 0u)];
}

}  // namespace OV::detail
