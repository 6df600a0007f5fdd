#include "tests/imaging/PngFile.h"

#include "tests/imaging/Decoding.h"

#include <png.h>
#include <zlib.h>

#include <stdexcept>

namespace OV::Test
{

namespace
{

constexpr std::size_t kSignatureBytes = 8;
constexpr std::size_t kChunkFrame = 12;  // length, type and checksum

[[noreturn]] void Throw(png_structp, png_const_charp message)
{
    throw std::runtime_error(message);
}

void Append(png_structp png, png_bytep bytes, std::size_t count)
{
    auto& file = *static_cast<Bytes*>(png_get_io_ptr(png));
    file.insert(file.end(), bytes, bytes + count);
}

std::size_t ReadNumber(const Bytes& file, std::size_t at)
{
    return std::size_t(file[at]) << 24 | std::size_t(file[at + 1]) << 16 | std::size_t(file[at + 2]) << 8 |
           file[at + 3];
}

}  // namespace

int PngFile::Channels() const
{
    switch (colorType)
    {
    case PNG_COLOR_TYPE_GRAY_ALPHA:
        return 2;
    case PNG_COLOR_TYPE_RGB:
        return 3;
    case PNG_COLOR_TYPE_RGBA:
        return 4;
    default:
        return 1;
    }
}

std::size_t PngFile::RowBytes() const
{
    return (std::size_t(width) * std::size_t(Channels() * bitDepth) + 7) / 8;
}

void PngFile::FillWithNoise(unsigned seed)
{
    rows.clear();
    for (int y = 0; y < height; ++y)
    {
        rows.push_back(NoiseBytes(RowBytes(), seed + unsigned(y)));
    }
    if (colorType == PNG_COLOR_TYPE_PALETTE)
    {
        palette = NoiseBytes((std::size_t(1) << bitDepth) * 3, seed);
    }
}

Bytes PngFile::Write() const
{
    Bytes file;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, Throw, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(png, &file, Append, nullptr);
    png_set_IHDR(png, info, png_uint_32(width), png_uint_32(height), bitDepth, colorType,
                 interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    std::vector<png_color> colors(palette.size() / 3);
    for (std::size_t i = 0; i < colors.size(); ++i)
    {
        colors[i] = {palette[i * 3], palette[i * 3 + 1], palette[i * 3 + 2]};
    }
    if (!colors.empty())
    {
        png_set_PLTE(png, info, colors.data(), int(colors.size()));
    }
    if (!transparency.empty() || transparentColor)
    {
        png_color_16 zero = {};
        png_set_tRNS(png, info, transparency.empty() ? nullptr : transparency.data(), int(transparency.size()),
                     transparentColor ? &zero : nullptr);
    }
    png_write_info(png, info);
    std::vector<Bytes> copy = rows;
    std::vector<png_bytep> pointers;
    for (Bytes& row : copy)
    {
        pointers.push_back(row.data());
    }
    png_write_image(png, pointers.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return file;
}

void RepairChecksums(Bytes& file)
{
    for (std::size_t at = kSignatureBytes; at + kChunkFrame <= file.size();)
    {
        const std::size_t length = ReadNumber(file, at);
        if (length > file.size() - at - kChunkFrame)
        {
            return;
        }
        const unsigned long sum = crc32(0, file.data() + at + 4, static_cast<unsigned>(length + 4));
        for (int i = 0; i < 4; ++i)
        {
            file[at + 8 + length + std::size_t(i)] = static_cast<unsigned char>(sum >> (24 - 8 * i));
        }
        at += kChunkFrame + length;
    }
}

}  // namespace OV::Test
