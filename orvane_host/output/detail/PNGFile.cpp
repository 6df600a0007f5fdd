#include "orvane_host/output/detail/PictureWriters.h"

#include <png.h>

#include <cmath>
#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

[[noreturn]] void Leave(png_structp png, png_const_charp)
{
    png_longjmp(png, 1);
}

void IgnoreWarning(png_structp, png_const_charp)
{
}

bool IsLittleEndian()
{
    const std::uint16_t one = 1;
    return *reinterpret_cast<const unsigned char*>(&one) == 1;
}

/// As libpng leaves by longjmp, what calls it holds nothing that has a destructor.
class PNGFile : public PictureFile
{
public:
    PNGFile(std::unique_ptr<FileSink> sink, const PictureFormat& format) :
        PictureFile(format), m_sink(std::move(sink)),
        m_png(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, Leave, IgnoreWarning)),
        m_info(m_png ? png_create_info_struct(m_png) : nullptr)
    {
    }

    ~PNGFile() override { png_destroy_write_struct(&m_png, &m_info); }

    bool Begin(std::string& error) { return m_info && BeginRows() ? true : Explain(error); }

    bool WriteRow(const void* row, std::string& error) override
    {
        return Put(static_cast<const unsigned char*>(row)) ? true : Explain(error);
    }

    bool Finish(std::string& error) override { return End() ? m_sink->Finish(error) : Explain(error); }

private:
    static void Write(png_structp png, png_bytep bytes, std::size_t size)
    {
        auto& self = *static_cast<PNGFile*>(png_get_io_ptr(png));
        if (!self.m_sink->Write(bytes, size, self.m_reason))
        {
            png_error(png, "not written");
        }
    }

    bool Explain(std::string& error) const
    {
        error = m_reason.empty() ? "the picture could not be packed; ask for a smaller one" : m_reason;
        return false;
    }

    bool BeginRows()
    {
        if (setjmp(png_jmpbuf(m_png)))
        {
            return false;
        }
        png_set_write_fn(m_png, this, Write, nullptr);
        png_set_IHDR(m_png, m_info, static_cast<png_uint_32>(m_format.width),
                     static_cast<png_uint_32>(m_format.height), m_format.bits,
                     m_format.alpha ? PNG_COLOR_TYPE_RGBA : PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        if (m_format.pixelsPerMetre > 0.0)
        {
            const auto pixels = static_cast<png_uint_32>(std::lround(m_format.pixelsPerMetre));
            png_set_pHYs(m_png, m_info, pixels, pixels, PNG_RESOLUTION_METER);
        }
        png_write_info(m_png, m_info);
        if (m_format.bits == 16 && IsLittleEndian())
        {
            png_set_swap(m_png);
        }
        return true;
    }

    bool Put(const unsigned char* row)
    {
        if (setjmp(png_jmpbuf(m_png)))
        {
            return false;
        }
        png_write_row(m_png, row);
        return true;
    }

    bool End()
    {
        if (setjmp(png_jmpbuf(m_png)))
        {
            return false;
        }
        png_write_end(m_png, m_info);
        return true;
    }

    std::unique_ptr<FileSink> m_sink;
    std::string m_reason; ///< of the sink
    png_structp m_png;
    png_infop m_info;
};

}  // namespace

std::unique_ptr<PictureFile> BeginPNG(std::unique_ptr<FileSink> sink, const PictureFormat& format, std::string& error)
{
    auto file = std::make_unique<PNGFile>(std::move(sink), format);
    return file->Begin(error) ? std::move(file) : nullptr;
}

}  // namespace OV::Host::Detail
