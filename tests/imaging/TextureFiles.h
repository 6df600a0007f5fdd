#pragma once

#include "tests/support/TemporaryFolder.h"

#include "orvane/imaging/FilePath.h"
#include "orvane/imaging/ImageCodec.h"

#include <fstream>
#include <string>
#include <vector>

namespace OV::Test
{

using Pixels = std::vector<unsigned char>;

/// RGBA, one colour.
inline Pixels PlainPixels(int width, int height, unsigned char r, unsigned char g, unsigned char b,
                          unsigned char a = 255)
{
    Pixels pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    for (std::size_t i = 0; i < pixels.size(); i += 4)
    {
        pixels[i] = r;
        pixels[i + 1] = g;
        pixels[i + 2] = b;
        pixels[i + 3] = a;
    }
    return pixels;
}

/// RGBA, every pixel told by its column in red and its row in green.
inline Pixels CountedPixels(int width, int height)
{
    Pixels pixels;
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            pixels.insert(pixels.end(),
                          {static_cast<unsigned char>(x), static_cast<unsigned char>(y), 7, 200});
        }
    }
    return pixels;
}

/// The same rows, the last one first.
inline Pixels Flipped(const Pixels& pixels, int width)
{
    const std::size_t rowBytes = static_cast<std::size_t>(width) * 4;
    Pixels flipped;
    for (std::size_t row = pixels.size() / rowBytes; row-- > 0;)
    {
        flipped.insert(flipped.end(), pixels.begin() + row * rowBytes, pixels.begin() + (row + 1) * rowBytes);
    }
    return flipped;
}

/// A folder with picture files for a texture loader.
class TextureFiles
{
public:
    /// The folder as the loader wants it, ended by a separator.
    FilePath Path() const
    {
        const std::string& folder = m_folder.Path();
        return FilePath{std::wstring(folder.begin(), folder.end()) + L"/"};
    }

    /// Writes RGBA pixels, top row first, as a PNG file.
    /// @return the name, for the loader.
    std::string Write(const std::string& name, Pixels pixels, int width, int height)
    {
        const std::vector<unsigned char> bytes =
            ImageCodec::EncodeImagePNG(pixels, static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height), 4);
        WriteBytes(name, bytes);
        return name;
    }

    void WriteBytes(const std::string& name, const std::vector<unsigned char>& bytes)
    {
        std::ofstream file(m_folder.Path(name), std::ios::binary);
        file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

private:
    TemporaryFolder m_folder;
};

}  // namespace OV::Test
