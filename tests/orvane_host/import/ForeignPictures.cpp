#include "tests/orvane_host/import/ForeignPictures.h"

#include <webp/encode.h>

namespace OV::Test
{

namespace
{

void Append(Bytes& bytes, const Bytes& more)
{
    for (const unsigned char byte : more)
    {
        bytes.push_back(byte);
    }
}

void Append32(Bytes& bytes, std::uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
    {
        bytes.push_back(static_cast<unsigned char>(value >> shift));
    }
}

} // namespace

Colour FourPixels::At(int x, int y) const
{
    const Colour colours[] = {{255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}, fourth};
    return colours[2 * y + x];
}

Bytes Tga(const FourPixels& pixels, bool isPacked, bool isTopDown)
{
    Bytes bytes(18);
    bytes[2] = isPacked ? 10 : 2;
    bytes[12] = bytes[14] = 2;
    bytes[16] = 32;
    bytes[17] = isTopDown ? 0x28 : 0x08;
    for (int row = 0; row < 2; ++row)
    {
        for (int x = 0; x < 2; ++x)
        {
            const Colour colour = pixels.At(x, isTopDown ? row : 1 - row);
            if (isPacked)
            {
                bytes.push_back(0x80);
            }
            Append(bytes, {colour[2], colour[1], colour[0], colour[3]});
        }
    }
    return bytes;
}

Bytes Bmp(const FourPixels& pixels)
{
    Bytes bytes = {'B', 'M'};
    for (const std::uint32_t value : {70u, 0u, 54u, 40u, 2u, 2u, 0x00180001u, 0u, 16u, 0u, 0u, 0u, 0u})
    {
        Append32(bytes, value);
    }
    for (int y = 1; y >= 0; --y)
    {
        for (int x = 0; x < 2; ++x)
        {
            const Colour colour = pixels.At(x, y);
            Append(bytes, {colour[2], colour[1], colour[0]});
        }
        Append(bytes, {0, 0});
    }
    return bytes;
}

Bytes Gif(const FourPixels& pixels)
{
    Bytes bytes = {'G', 'I', 'F', '8', '9', 'a', 2, 0, 2, 0, 0x81, 0, 0};
    for (int i = 0; i < 4; ++i)
    {
        const Colour colour = pixels.At(i % 2, i / 2);
        Append(bytes, {colour[0], colour[1], colour[2]});
    }
    if (pixels.fourth[3] != 255)
    {
        Append(bytes, {0x21, 0xF9, 4, 1, 0, 0, 3, 0});
    }
    Append(bytes, {0x2C, 0, 0, 0, 0, 2, 0, 2, 0, 0});
    // A word of three bits clears the table before each pixel, so that no word gets longer.
    std::uint32_t words = 0;
    int used = 0;
    for (std::uint32_t word : {4u, 0u, 4u, 1u, 4u, 2u, 4u, 3u, 5u})
    {
        words |= word << used;
        used += 3;
    }
    Append(bytes, {2, 4});
    Append32(bytes, words);
    Append(bytes, {0, 0x3B});
    return bytes;
}

Bytes Webp(const FourPixels& pixels)
{
    Bytes rgba;
    for (int i = 0; i < 4; ++i)
    {
        const Colour colour = pixels.At(i % 2, i / 2);
        Append(rgba, {colour[0], colour[1], colour[2], colour[3]});
    }
    std::uint8_t* output = nullptr;
    const std::size_t size = WebPEncodeLosslessRGBA(rgba.data(), 2, 2, 8, &output);
    const Bytes bytes(output, output + size);
    WebPFree(output);
    return bytes;
}

} // namespace OV::Test
