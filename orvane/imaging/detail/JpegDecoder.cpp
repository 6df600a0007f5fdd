#include "orvane/imaging/detail/JpegDecoder.h"

#include "orvane/imaging/detail/NewImage.h"
#include "orvane/imaging/detail/PictureLimits.h"

#include <algorithm>
#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <jerror.h>
#include <jpeglib.h>
#include <new>
#include <stdexcept>

namespace OV::detail
{

namespace
{

struct ErrorManager
{
    jpeg_error_mgr base;
    std::jmp_buf escape;
};

[[noreturn]] void Fail(j_common_ptr decoder)
{
    std::longjmp(reinterpret_cast<ErrorManager*>(decoder->err)->escape, 1);
}

void PrintNothing(j_common_ptr)
{
}

void NothingToDo(j_decompress_ptr)
{
}

// The block is over: an end-of-image marker, as often as asked, ends whatever was begun.
boolean EndOfImage(j_decompress_ptr decoder)
{
    static constexpr JOCTET marker[] = {0xFF, JPEG_EOI};
    decoder->src->next_input_byte = marker;
    decoder->src->bytes_in_buffer = sizeof(marker);
    return TRUE;
}

void SkipBytes(j_decompress_ptr decoder, long count)
{
    if (count > 0)
    {
        const std::size_t skipped = std::min(static_cast<std::size_t>(count), decoder->src->bytes_in_buffer);
        decoder->src->next_input_byte += skipped;
        decoder->src->bytes_in_buffer -= skipped;
    }
}

boolean GoOnAfterLostRestart(j_decompress_ptr, int)
{
    return TRUE;
}

// One JPEG file in memory and the libjpeg structure that reads it.
//
// libjpeg leaves by longjmp, over the heads of destructors: the functions that call it hold
// nothing that has one, and who calls these owns what must be freed.
class JpegReader
{
public:
    JpegReader(const unsigned char* data, std::size_t size, std::uint64_t maxPictureBytes)
        : m_size(size), m_maxPictureBytes(maxPictureBytes)
    {
        m_decoder.err = jpeg_std_error(&m_error.base);
        m_error.base.error_exit = Fail;
        m_error.base.output_message = PrintNothing;
        m_source.next_input_byte = data;
        m_source.bytes_in_buffer = size;
        m_source.init_source = NothingToDo;
        m_source.fill_input_buffer = EndOfImage;
        m_source.skip_input_data = SkipBytes;
        m_source.resync_to_restart = GoOnAfterLostRestart;
        m_source.term_source = NothingToDo;
    }
    JpegReader(const JpegReader&) = delete;
    JpegReader& operator=(const JpegReader&) = delete;
    ~JpegReader() { jpeg_destroy_decompress(&m_decoder); }

    // Reads up to the pixels; false on a libjpeg error and for a size that the block can not
    // hold, before the library takes memory for it. What the library can bring to colours
    // comes out as RGBA, or BGRA, of alpha 255; all else as its own components.
    bool ReadHeader(bool swapRedBlue)
    {
        if (setjmp(m_error.escape))
        {
            return false;
        }
        jpeg_create_decompress(&m_decoder);
        m_decoder.src = &m_source;
        jpeg_read_header(&m_decoder, TRUE);
        const std::uint64_t bytes = PictureBytes(m_decoder.image_width, m_decoder.image_height);
        if (bytes > m_maxPictureBytes || bytes > m_size * kLargestExpansion)
        {
            return false;
        }
        const J_COLOR_SPACE stored = m_decoder.jpeg_color_space;
        m_isColor = stored == JCS_GRAYSCALE || stored == JCS_RGB || stored == JCS_YCbCr;
        if (m_isColor)
        {
            m_decoder.out_color_space = swapRedBlue ? JCS_EXT_BGRA : JCS_EXT_RGBA;
        }
        jpeg_start_decompress(&m_decoder);
        return true;
    }

    // Reads all pixels, row after row, `stride` bytes apart; false on a libjpeg error.
    bool ReadPixels(unsigned char* firstRow, std::ptrdiff_t stride)
    {
        if (setjmp(m_error.escape))
        {
            return false;
        }
        while (m_decoder.output_scanline < m_decoder.output_height)
        {
            JSAMPROW row = firstRow + std::ptrdiff_t(m_decoder.output_scanline) * stride;
            jpeg_read_scanlines(&m_decoder, &row, 1);
        }
        jpeg_finish_decompress(&m_decoder);
        return true;
    }

    int Width() const { return static_cast<int>(m_decoder.output_width); }
    int Height() const { return static_cast<int>(m_decoder.output_height); }
    int Components() const { return m_decoder.output_components; }
    bool IsColor() const { return m_isColor; }

private:
    jpeg_decompress_struct m_decoder = {};
    ErrorManager m_error = {};
    jpeg_source_mgr m_source = {};
    std::uint64_t m_size;
    std::uint64_t m_maxPictureBytes;
    bool m_isColor = false;
};

[[noreturn]] void ThrowReadError()
{
    throw std::domain_error("Error reading JPEG");
}

// The library converts in the pass that makes the pixels: a pass over its RGB afterwards
// costs half as much again, as it writes past the cache.
std::unique_ptr<Image> ReadColors(JpegReader& reader, bool flipVertical)
{
    std::unique_ptr<Image> image = NewImage(reader.Width(), reader.Height());
    const std::ptrdiff_t stride = std::ptrdiff_t(image->width) * 4;
    unsigned char* const firstRow = flipVertical ? image->data + (image->height - 1) * stride : image->data;
    if (!reader.ReadPixels(firstRow, flipVertical ? -stride : stride))
    {
        ThrowReadError();
    }
    return image;
}

// Components that make no colours are read as 3 bytes a pixel all the same, one block from
// its start, which is meant. Two of them fill only two thirds of a row, the rest is 0.
std::unique_ptr<Image> ReadComponents(JpegReader& reader, bool swapRedBlue, bool flipVertical)
{
    const std::size_t rowBytes = std::size_t(reader.Width()) * std::size_t(std::max(reader.Components(), 3));
    const std::unique_ptr<void, decltype(&std::free)> block(std::calloc(std::size_t(reader.Height()), rowBytes),
                                                            std::free);
    auto* const pixels = static_cast<unsigned char*>(block.get());
    if (!pixels || !reader.ReadPixels(pixels, std::ptrdiff_t(rowBytes)))
    {
        ThrowReadError();
    }
    return std::unique_ptr<Image>(
        Image::ImageFromData(reader.Width(), reader.Height(), pixels, swapRedBlue, true, flipVertical));
}

}  // namespace

std::unique_ptr<Image> DecodeJpeg(const unsigned char* data, std::size_t size, std::uint64_t maxPictureBytes,
                                  bool swapRedBlue, bool flipVertical)
{
    JpegReader reader(data, size, maxPictureBytes);
    if (!reader.ReadHeader(swapRedBlue))
    {
        ThrowReadError();
    }
    try
    {
        return reader.IsColor() ? ReadColors(reader, flipVertical)
                                : ReadComponents(reader, swapRedBlue, flipVertical);
    }
    catch (const std::bad_alloc&)
    {
        // A size that the memory can not hold is an error of the file, as it is inside libjpeg.
        ThrowReadError();
    }
}

}  // namespace OV::detail
