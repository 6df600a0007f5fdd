#include "orvane/imaging/detail/PngEncoder.h"

#include "orvane/imaging/detail/PngSupport.h"

#include <algorithm>
#include <csetjmp>
#include <cstddef>
#include <stdexcept>

namespace OV::detail
{

namespace
{

void AppendBytes(png_structp png, png_bytep bytes, std::size_t count)
{
    auto& output = *static_cast<std::vector<unsigned char>*>(png_get_io_ptr(png));
    bool stored = true;
    try
    {
        output.insert(output.end(), bytes, bytes + count);
    }
    catch (...)
    {
        stored = false;
    }
    // Outside the handler: the jump would leave the caught exception behind.
    if (!stored)
    {
        png_error(png, "no memory for the output");
    }
}

// libpng takes 32 bits and refuses the largest of them; what does not fit must not be cut to
// something that does.
png_uint_32 ToPngSize(std::uint64_t value)
{
    return static_cast<png_uint_32>(std::min<std::uint64_t>(value, PNG_UINT_32_MAX));
}

// The libpng structures that write one file. As libpng leaves by longjmp, Write holds nothing
// that has a destructor.
class PngWriter
{
public:
    PngWriter()
    {
        m_png = png_create_write_struct(kPngVersion, nullptr, PngFail, PngIgnoreWarning);
        if (!m_png)
        {
            throw std::domain_error("failed to allocate init png write structure");
        }
        m_info = png_create_info_struct(m_png);
        if (!m_info)
        {
            png_destroy_write_struct(&m_png, nullptr);
            throw std::domain_error("failed to allocate init png info structure");
        }
    }
    PngWriter(const PngWriter&) = delete;
    PngWriter& operator=(const PngWriter&) = delete;
    ~PngWriter()
    {
        png_free(m_png, m_rows);
        png_destroy_write_struct(&m_png, &m_info);
    }

    // Null where all went well, else what did not.
    const char* Write(unsigned char* pixels, std::uint64_t width, std::uint64_t height, std::uint64_t channels,
                      std::vector<unsigned char>& output)
    {
        if (setjmp(png_jmpbuf(m_png)))
        {
            return "Error writing PNG";
        }
        m_rows = static_cast<png_bytepp>(png_malloc(m_png, height * sizeof(png_bytep)));
        if (!m_rows)
        {
            return "failed to allocate png memory";
        }
        for (std::uint64_t i = 0; i < height; ++i)
        {
            m_rows[i] = pixels + i * channels * width;
        }
        png_set_rows(m_png, m_info, m_rows);
        png_set_write_fn(m_png, &output, AppendBytes, nullptr);
        png_set_IHDR(m_png, m_info, ToPngSize(width), ToPngSize(height), 8,
                     channels == 4 ? PNG_COLOR_TYPE_RGBA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_write_png(m_png, m_info, PNG_TRANSFORM_IDENTITY, nullptr);
        return nullptr;
    }

private:
    png_structp m_png = nullptr;
    png_infop m_info = nullptr;
    png_bytepp m_rows = nullptr;
};

}  // namespace

std::vector<unsigned char> EncodePng(std::vector<unsigned char>& pixels, std::uint64_t width, std::uint64_t height,
                                     std::uint64_t channels)
{
    std::vector<unsigned char> output;
    PngWriter writer;
    if (const char* failure = writer.Write(pixels.data(), width, height, channels, output))
    {
        throw std::domain_error(failure);
    }
    return output;
}

}  // namespace OV::detail
