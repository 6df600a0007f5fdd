#include "orvane/imaging/detail/PngDecoder.h"

#include "orvane/imaging/detail/NewImage.h"
#include "orvane/imaging/detail/PictureLimits.h"
#include "orvane/imaging/detail/PngSupport.h"
#include "orvane/imaging/detail/RowTransform.h"

#include <csetjmp>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>

namespace OV::detail
{

namespace
{

// The most that a chunk may hold, but for those with pixels.
constexpr png_alloc_size_t kMaxChunkBytes = png_alloc_size_t(8) << 20;

// The library keeps no text, profile or unknown chunk, so that none may be kept.
constexpr png_uint_32 kMaxKeptChunks = 1;

struct ByteSource
{
    const unsigned char* data;
    std::size_t size;
    std::size_t offset;
};

void ReadBytes(png_structp png, png_bytep destination, std::size_t count)
{
    ByteSource& source = *static_cast<ByteSource*>(png_get_io_ptr(png));
    if (count > source.size - source.offset)
    {
        png_error(png, "read past the end");
    }
    std::memcpy(destination, source.data + source.offset, count);
    source.offset += count;
}

// Where the rows of a file go, and what is done to them on the way.
struct RowSink
{
    unsigned char* firstRow;
    std::ptrdiff_t stride;
    // Null where the rows are wanted as they come; else a row is decoded here and brought to
    // its place while the cache still holds it.
    unsigned char* scratch;
    const RowTransform* transform;
};

// One PNG file in memory and the libpng structures that read it.
//
// libpng leaves by longjmp, over the heads of destructors: the functions that call it hold
// nothing that has one, and who calls these owns what must be freed.
class PngReader
{
public:
    enum class Status
    {
        Ready,
        Refused,
        Failed
    };

    PngReader(const unsigned char* data, std::size_t size, std::uint64_t maxPictureBytes)
        : m_source{data, size, 0}, m_maxPictureBytes(maxPictureBytes)
    {
        m_png = png_create_read_struct(kPngVersion, nullptr, PngFail, PngIgnoreWarning);
    }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;
    ~PngReader() { png_destroy_read_struct(&m_png, &m_info, &m_end); }

    // Reads up to the pixels and settles their form.
    Status ReadHeader()
    {
        if (!m_png)
        {
            return Status::Refused;
        }
        if (setjmp(png_jmpbuf(m_png)))
        {
            return Status::Failed;
        }
        m_info = png_create_info_struct(m_png);
        m_end = png_create_info_struct(m_png);
        if (!m_info || !m_end)
        {
            return Status::Refused;
        }
        png_set_read_fn(m_png, &m_source, ReadBytes);
        BoundChunks();
        png_read_info(m_png, m_info);
        png_get_IHDR(m_png, m_info, &m_width, &m_height, &m_bitDepth, &m_colorType, &m_interlace, nullptr, nullptr);
        if (m_interlace != PNG_INTERLACE_NONE || !SetUpColors())
        {
            return Status::Refused;
        }
        if (PictureBytes(m_width, m_height) > m_maxPictureBytes)
        {
            png_error(m_png, "too large a picture");
        }
        if (std::uint64_t(png_get_rowbytes(m_png, m_info)) * m_height > m_source.size * kLargestExpansion)
        {
            png_error(m_png, "too little data for the size");
        }
        png_read_update_info(m_png, m_info);
        m_rowBytes = png_get_rowbytes(m_png, m_info);
        return Status::Ready;
    }

    // Reads all pixels; false on a libpng error.
    bool ReadPixels(const RowSink& sink)
    {
        if (setjmp(png_jmpbuf(m_png)))
        {
            return false;
        }
        for (png_uint_32 y = 0; y < m_height; ++y)
        {
            unsigned char* const row = sink.firstRow + std::ptrdiff_t(y) * sink.stride;
            if (sink.scratch)
            {
                png_read_row(m_png, sink.scratch, nullptr);
                (*sink.transform)(sink.scratch, row, m_width, 1);
            }
            else
            {
                png_read_row(m_png, row, nullptr);
            }
        }
        png_read_end(m_png, m_end);
        return true;
    }

    int Width() const { return static_cast<int>(m_width); }
    int Height() const { return static_cast<int>(m_height); }
    // Of a row as ReadPixels delivers it.
    std::size_t RowBytes() const { return m_rowBytes; }
    // The rows are to be read as 3 bytes a pixel, else as 4.
    bool IsRGB() const { return m_isRGB; }

private:
    // Lets no chunk cost more than its pixels need, before any is read.
    void BoundChunks()
    {
        png_set_chunk_malloc_max(m_png, kMaxChunkBytes);
        png_set_chunk_cache_max(m_png, kMaxKeptChunks);
#ifdef PNG_HANDLE_AS_UNKNOWN_SUPPORTED
        // Texts and profiles unpack to a thousand times their bytes and say nothing of pixels.
        // The list is the library's own of all such chunks; tRNS is not on it.
        png_set_keep_unknown_chunks(m_png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
#endif
    }

    // False for what is refused.
    bool SetUpColors()
    {
        switch (m_colorType)
        {
        case PNG_COLOR_TYPE_RGBA:
            m_isRGB = false;
            return true;
        case PNG_COLOR_TYPE_RGB:
            m_isRGB = true;
            return true;
        case PNG_COLOR_TYPE_PALETTE:
            png_set_palette_to_rgb(m_png);
            m_isRGB = png_get_valid(m_png, m_info, PNG_INFO_tRNS) == 0;
            if (!m_isRGB)
            {
                png_set_tRNS_to_alpha(m_png);
            }
            return true;
        default:
            if (m_bitDepth > 8)
            {
                return false;
            }
            // Grey with alpha too counts as 3 bytes a pixel, though its rows then hold 4: meant.
            png_set_expand_gray_1_2_4_to_8(m_png);
            png_set_gray_to_rgb(m_png);
            m_isRGB = true;
            return true;
        }
    }

    ByteSource m_source;
    std::uint64_t m_maxPictureBytes;
    png_structp m_png = nullptr;
    png_infop m_info = nullptr;
    png_infop m_end = nullptr;
    png_uint_32 m_width = 0;
    png_uint_32 m_height = 0;
    int m_bitDepth = 0;
    int m_colorType = 0;
    int m_interlace = 0;
    std::size_t m_rowBytes = 0;
    bool m_isRGB = false;
};

[[noreturn]] void ThrowReadError()
{
    throw std::domain_error("Error reading PNG");
}

// Rows that hold just the pixels they are read as go straight to the image.
std::unique_ptr<Image> ReadTightRows(PngReader& reader, bool swapRedBlue, bool flipVertical)
{
    std::unique_ptr<Image> image = NewImage(reader.Width(), reader.Height());
    const std::ptrdiff_t stride = std::ptrdiff_t(image->width) * 4;
    const RowTransform transform = ChooseRowTransform(swapRedBlue, reader.IsRGB(), false);
    std::unique_ptr<unsigned char[]> scratch;
    if (swapRedBlue || reader.IsRGB())
    {
        scratch.reset(new unsigned char[reader.RowBytes()]);
    }
    RowSink sink{image->data, stride, scratch.get(), &transform};
    if (flipVertical)
    {
        sink.firstRow += (image->height - 1) * stride;
        sink.stride = -stride;
    }
    if (!reader.ReadPixels(sink))
    {
        ThrowReadError();
    }
    return image;
}

// Rows with more bytes than that (two a channel, or an alpha that is not asked for) are read
// as if they had not, one block from its start: the picture is distorted, which is meant.
std::unique_ptr<Image> ReadWideRows(PngReader& reader, bool swapRedBlue, bool flipVertical)
{
    std::unique_ptr<unsigned char[]> block(new unsigned char[reader.RowBytes() * std::size_t(reader.Height())]);
    if (!reader.ReadPixels({block.get(), std::ptrdiff_t(reader.RowBytes()), nullptr, nullptr}))
    {
        ThrowReadError();
    }
    return std::unique_ptr<Image>(Image::ImageFromData(reader.Width(), reader.Height(), block.get(), swapRedBlue,
                                                       reader.IsRGB(), flipVertical));
}

}  // namespace

std::unique_ptr<Image> DecodePng(const unsigned char* data, std::size_t size, std::uint64_t maxPictureBytes,
                                 bool swapRedBlue, bool flipVertical)
{
    PngReader reader(data, size, maxPictureBytes);
    switch (reader.ReadHeader())
    {
    case PngReader::Status::Refused:
        return nullptr;
    case PngReader::Status::Failed:
        ThrowReadError();
    case PngReader::Status::Ready:
        break;
    }
    try
    {
        const bool tight = reader.RowBytes() == std::size_t(reader.Width()) * SourceBytes(reader.IsRGB());
        return tight ? ReadTightRows(reader, swapRedBlue, flipVertical)
                     : ReadWideRows(reader, swapRedBlue, flipVertical);
    }
    catch (const std::bad_alloc&)
    {
        // A size that the memory can not hold is an error of the file, as it is inside libpng.
        ThrowReadError();
    }
}

}  // namespace OV::detail
