#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace OV::Host
{

/// The pixels of a picture: R, G, B, A, rows tight.
struct PicturePixels
{
    int width = 0;
    int height = 0;
    std::vector<unsigned char> rgba;
};

/// What a picture of a file may be at most.
struct PictureFileLimits
{
    std::uint64_t bytes = std::uint64_t(256) << 20;
    std::uint64_t pixels = std::uint64_t(64) << 20;
};

/// Which row of a picture comes first.
enum class FirstRow
{
    Top,
    Bottom,
};

/// Reads a PNG, JPEG, TGA, BMP, GIF or WebP file whose head is looked at before anything is decoded.
/// @param path UTF-8, or whatever bytes name the file.
/// @param error on failure the reason and the remedy in one line, without the path.
bool ReadPictureFile(const std::string& path, FirstRow first, PicturePixels& picture, std::string& error,
                     const PictureFileLimits& limits = PictureFileLimits());

} // namespace OV::Host
