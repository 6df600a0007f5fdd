#include "tests/imaging/JpegFile.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <jpeglib.h>
#include <stdexcept>

namespace OV::Test
{

namespace
{

[[noreturn]] void Throw(j_common_ptr)
{
    throw std::runtime_error("libjpeg gave up");
}

J_COLOR_SPACE GivenSpace(JpegFile::Colors colors)
{
    switch (colors)
    {
    case JpegFile::Colors::Grey:
        return JCS_GRAYSCALE;
    case JpegFile::Colors::TwoComponents:
        return JCS_UNKNOWN;
    case JpegFile::Colors::CMYK:
    case JpegFile::Colors::YCCK:
        return JCS_CMYK;
    default:
        return JCS_RGB;
    }
}

void ChooseStoredSpace(jpeg_compress_struct& encoder, JpegFile::Colors colors)
{
    if (colors == JpegFile::Colors::RGB)
    {
        jpeg_set_colorspace(&encoder, JCS_RGB);
    }
    else if (colors == JpegFile::Colors::YCCK)
    {
        jpeg_set_colorspace(&encoder, JCS_YCCK);
    }
}

}  // namespace

int JpegFile::Components() const
{
    switch (colors)
    {
    case Colors::Grey:
        return 1;
    case Colors::TwoComponents:
        return 2;
    case Colors::CMYK:
    case Colors::YCCK:
        return 4;
    default:
        return 3;
    }
}

void JpegFile::FillWithPicture(unsigned seed)
{
    pixels.clear();
    pixels.reserve(std::size_t(width) * std::size_t(height) * std::size_t(Components()));
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            for (int c = 0; c < Components(); ++c)
            {
                seed = seed * 1664525u + 1013904223u;
                const double value = 128.0 + 100.0 * std::sin(x * 0.11 + c) * std::cos(y * 0.07 - c);
                pixels.push_back(static_cast<unsigned char>(value + double(seed >> 29)));
            }
        }
    }
}

Bytes JpegFile::Write() const
{
    jpeg_compress_struct encoder = {};
    jpeg_error_mgr errors;
    encoder.err = jpeg_std_error(&errors);
    errors.error_exit = Throw;
    jpeg_create_compress(&encoder);
    unsigned char* block = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&encoder, &block, &size);
    encoder.image_width = JDIMENSION(width);
    encoder.image_height = JDIMENSION(height);
    encoder.input_components = Components();
    encoder.in_color_space = GivenSpace(colors);
    jpeg_set_defaults(&encoder);
    ChooseStoredSpace(encoder, colors);
    jpeg_set_quality(&encoder, quality, TRUE);
    for (int i = 0; i < encoder.num_components; ++i)
    {
        encoder.comp_info[i].h_samp_factor = i == 0 ? horizontalSampling : 1;
        encoder.comp_info[i].v_samp_factor = i == 0 ? verticalSampling : 1;
    }
    encoder.arith_code = arithmetic ? TRUE : FALSE;
    encoder.restart_interval = unsigned(restartInterval);
    if (progressive)
    {
        jpeg_simple_progression(&encoder);
    }
    jpeg_start_compress(&encoder, TRUE);
    const std::size_t rowBytes = std::size_t(width) * std::size_t(Components());
    while (encoder.next_scanline < encoder.image_height)
    {
        auto* row = const_cast<JSAMPROW>(pixels.data() + encoder.next_scanline * rowBytes);
        jpeg_write_scanlines(&encoder, &row, 1);
    }
    jpeg_finish_compress(&encoder);
    jpeg_destroy_compress(&encoder);
    Bytes file(block, block + size);
    std::free(block);
    return file;
}

DecodedJpeg DecodeDirectly(const Bytes& file)
{
    jpeg_decompress_struct decoder = {};
    jpeg_error_mgr errors;
    decoder.err = jpeg_std_error(&errors);
    errors.error_exit = Throw;
    jpeg_create_decompress(&decoder);
    jpeg_mem_src(&decoder, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&decoder, TRUE);
    jpeg_start_decompress(&decoder);
    DecodedJpeg result{int(decoder.output_width), int(decoder.output_height), decoder.output_components, {}};
    const std::size_t rowBytes = std::size_t(result.width) * std::size_t(result.components);
    result.pixels.resize(rowBytes * std::size_t(result.height));
    while (decoder.output_scanline < decoder.output_height)
    {
        JSAMPROW row = result.pixels.data() + decoder.output_scanline * rowBytes;
        jpeg_read_scanlines(&decoder, &row, 1);
    }
    jpeg_finish_decompress(&decoder);
    jpeg_destroy_decompress(&decoder);
    return result;
}

}  // namespace OV::Test
