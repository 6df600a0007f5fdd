#pragma once

#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"
#include "tests/imaging/Bytes.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace OV::Test
{

/// The pixels of an image.
inline Bytes Pixels(const Image& image)
{
    return Bytes(image.data, image.data + std::size_t(image.width) * std::size_t(image.height) * 4);
}

/// Decodes a block that has not one byte more than it should.
inline std::unique_ptr<Image> Decode(Bytes file, bool swapRedBlue = false, bool flipVertical = false)
{
    file.shrink_to_fit();
    return std::unique_ptr<Image>(
        ImageCodec::DecodeImage(file.data(), static_cast<int>(file.size()), swapRedBlue, flipVertical));
}

/// So many bytes of a fixed noise.
inline Bytes NoiseBytes(std::size_t size, unsigned seed = 1)
{
    Bytes bytes(size);
    for (unsigned char& byte : bytes)
    {
        seed = seed * 1664525u + 1013904223u;
        byte = static_cast<unsigned char>(seed >> 24);
    }
    return bytes;
}

}  // namespace OV::Test
