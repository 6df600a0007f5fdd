#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"
#include "tests/imaging/JpegFile.h"

#include <benchmark/benchmark.h>
#include <png.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <jpeglib.h>
#include <memory>
#include <vector>

// Each picture is decoded by ImageCodec and, in the same run, by the library called directly
// into rows of its own pixels. What counts is the ratio of the two.
namespace
{

using OV::Image;
using OV::ImageCodec;
using OV::Test::Bytes;
using OV::Test::JpegFile;

constexpr int kSide = 2048;

enum class Content
{
    Photo,
    Flat
};

// Soft gradients with grain, or fields of one colour as drawings and icons have them.
Bytes MakePixels(int channels, Content content)
{
    Bytes pixels;
    pixels.reserve(std::size_t(kSide) * kSide * std::size_t(channels));
    unsigned state = 1;
    for (int y = 0; y < kSide; ++y)
    {
        for (int x = 0; x < kSide; ++x)
        {
            for (int c = 0; c < channels; ++c)
            {
                state = state * 1664525u + 1013904223u;
                const int value = content == Content::Flat
                                      ? x / 64 * 16 + y / 64 * 7 + c * 30
                                      : int(128 + 100 * std::sin(x * 0.01 + c) * std::cos(y * 0.013)) + int(state >> 29);
                pixels.push_back(static_cast<unsigned char>(value));
            }
        }
    }
    return pixels;
}

Bytes MakePng(int channels, Content content)
{
    Bytes pixels = MakePixels(channels, content);
    return ImageCodec::EncodeImagePNG(pixels, kSide, kSide, std::uint64_t(channels));
}

Bytes MakeJpeg(Content content)
{
    JpegFile file;
    file.width = file.height = kSide;
    file.horizontalSampling = file.verticalSampling = 2;
    file.quality = 85;
    file.pixels = MakePixels(3, content);
    return file.Write();
}

struct Source
{
    const Bytes* file;
    std::size_t offset;
};

void ReadBytes(png_structp png, png_bytep destination, std::size_t count)
{
    Source& source = *static_cast<Source*>(png_get_io_ptr(png));
    std::memcpy(destination, source.file->data() + source.offset, count);
    source.offset += count;
}

std::unique_ptr<unsigned char[]> DecodePngDirectly(const Bytes& file)
{
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    Source source{&file, 0};
    png_set_read_fn(png, &source, ReadBytes);
    png_read_info(png, info);
    const std::size_t height = png_get_image_height(png, info);
    const std::size_t rowBytes = png_get_rowbytes(png, info);
    std::unique_ptr<unsigned char[]> block(new unsigned char[rowBytes * height]);
    std::vector<png_bytep> rows(height);
    for (std::size_t y = 0; y < height; ++y)
    {
        rows[y] = &block[y * rowBytes];
    }
    png_read_image(png, rows.data());
    png_read_end(png, nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
    return block;
}

std::unique_ptr<unsigned char[]> DecodeJpegDirectly(const Bytes& file)
{
    jpeg_decompress_struct decoder = {};
    jpeg_error_mgr errors;
    decoder.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&decoder);
    jpeg_mem_src(&decoder, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&decoder, TRUE);
    jpeg_start_decompress(&decoder);
    const std::size_t rowBytes = std::size_t(decoder.output_width) * std::size_t(decoder.output_components);
    std::unique_ptr<unsigned char[]> block(new unsigned char[rowBytes * decoder.output_height]);
    while (decoder.output_scanline < decoder.output_height)
    {
        JSAMPROW row = &block[decoder.output_scanline * rowBytes];
        jpeg_read_scanlines(&decoder, &row, 1);
    }
    jpeg_finish_decompress(&decoder);
    jpeg_destroy_decompress(&decoder);
    return block;
}

void Directly(benchmark::State& state, std::unique_ptr<unsigned char[]> (*decode)(const Bytes&), Bytes file)
{
    for (auto _ : state)
    {
        benchmark::DoNotOptimize(decode(file).get());
    }
}

// As textures are loaded: rows turned over.
void WithCodec(benchmark::State& state, Bytes file)
{
    for (auto _ : state)
    {
        const std::unique_ptr<Image> image(ImageCodec::DecodeImage(file.data(), int(file.size()), false, true));
        benchmark::DoNotOptimize(image->data);
    }
}

// The conversion that decoded rows take when they come as one block.
void Convert(benchmark::State& state, bool sourceIsRGB)
{
    const int side = int(state.range(0));
    Bytes source(std::size_t(side) * std::size_t(side) * (sourceIsRGB ? 3 : 4), 100);
    for (auto _ : state)
    {
        const std::unique_ptr<Image> image(Image::ImageFromData(side, side, source.data(), true, sourceIsRGB, true));
        benchmark::DoNotOptimize(image->data);
    }
}

#define ORVANE_PAIR(name, direct, ...)                                                                \
    BENCHMARK_CAPTURE(Directly, name, direct, __VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime(); \
    BENCHMARK_CAPTURE(WithCodec, name, __VA_ARGS__)->Unit(benchmark::kMillisecond)->UseRealTime()

ORVANE_PAIR(JpegPhoto, DecodeJpegDirectly, MakeJpeg(Content::Photo));
ORVANE_PAIR(JpegFlat, DecodeJpegDirectly, MakeJpeg(Content::Flat));
ORVANE_PAIR(PngRgbPhoto, DecodePngDirectly, MakePng(3, Content::Photo));
ORVANE_PAIR(PngRgbFlat, DecodePngDirectly, MakePng(3, Content::Flat));
ORVANE_PAIR(PngRgbaPhoto, DecodePngDirectly, MakePng(4, Content::Photo));
ORVANE_PAIR(PngRgbaFlat, DecodePngDirectly, MakePng(4, Content::Flat));

BENCHMARK_CAPTURE(Convert, Rgb, true)->Arg(255)->Arg(8192)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Convert, Rgba, false)->Arg(255)->Arg(8192)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
