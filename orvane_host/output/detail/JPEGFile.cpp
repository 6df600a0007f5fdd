#include "orvane_host/output/detail/PictureWriters.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <utility>

#include <jpeglib.h>

namespace OV::Host::Detail
{

namespace
{

constexpr double MetresPerCentimetre = 0.01;
constexpr double MostDensity = 65535.0;

/// As libjpeg leaves by longjmp, what calls it holds nothing that has a destructor.
class JPEGFile : public PictureFile
{
public:
    JPEGFile(std::unique_ptr<FileSink> sink, const PictureFormat& format) :
        PictureFile(format), m_sink(std::move(sink))
    {
        m_jpeg.err = jpeg_std_error(&m_trouble);
        m_trouble.error_exit = Leave;
        m_trouble.output_message = [](j_common_ptr) {};
        m_jpeg.client_data = this;
        m_destination.init_destination = [](j_compress_ptr jpeg) { Of(jpeg).Empty(); };
        m_destination.empty_output_buffer = [](j_compress_ptr jpeg) -> boolean
        {
            Of(jpeg).Flush(Of(jpeg).m_bytes.size());
            return TRUE;
        };
        m_destination.term_destination = [](j_compress_ptr jpeg)
        { Of(jpeg).Flush(Of(jpeg).m_bytes.size() - Of(jpeg).m_destination.free_in_buffer); };
    }

    ~JPEGFile() override { jpeg_destroy_compress(&m_jpeg); }

    bool Begin(std::string& error) { return BeginRows() ? true : Explain(error); }

    bool WriteRow(const void* row, std::string& error) override
    {
        return Put(static_cast<const unsigned char*>(row)) ? true : Explain(error);
    }

    bool Finish(std::string& error) override { return End() ? m_sink->Finish(error) : Explain(error); }

private:
    template <class Info>
    static JPEGFile& Of(Info* info)
    {
        return *static_cast<JPEGFile*>(info->client_data);
    }

    [[noreturn]] static void Leave(j_common_ptr jpeg) { std::longjmp(Of(jpeg).m_escape, 1); }

    void Empty()
    {
        m_destination.next_output_byte = m_bytes.data();
        m_destination.free_in_buffer = m_bytes.size();
    }

    void Flush(std::size_t size)
    {
        const bool isWritten = m_sink->Write(m_bytes.data(), size, m_reason);
        Empty();
        if (!isWritten)
        {
            std::longjmp(m_escape, 1);
        }
    }

    bool Explain(std::string& error) const
    {
        error = m_reason.empty() ? "the picture could not be packed; ask for a smaller one" : m_reason;
        return false;
    }

    bool BeginRows()
    {
        if (setjmp(m_escape))
        {
            return false;
        }
        jpeg_create_compress(&m_jpeg);
        m_jpeg.client_data = this;
        m_jpeg.dest = &m_destination;
        m_jpeg.image_width = static_cast<JDIMENSION>(m_format.width);
        m_jpeg.image_height = static_cast<JDIMENSION>(m_format.height);
        m_jpeg.input_components = 3;
        m_jpeg.in_color_space = JCS_RGB;
        jpeg_set_defaults(&m_jpeg);
        jpeg_set_quality(&m_jpeg, std::clamp(m_format.quality, 1, 100), TRUE);
        // Thin coloured lines are what halved colours would blur.
        m_jpeg.comp_info[0].h_samp_factor = 1;
        m_jpeg.comp_info[0].v_samp_factor = 1;
        if (m_format.pixelsPerMetre > 0.0)
        {
            const double density = std::min(m_format.pixelsPerMetre * MetresPerCentimetre, MostDensity);
            m_jpeg.density_unit = 2; // pixels a centimetre
            m_jpeg.X_density = static_cast<UINT16>(std::max(1L, std::lround(density)));
            m_jpeg.Y_density = m_jpeg.X_density;
        }
        jpeg_start_compress(&m_jpeg, TRUE);
        return true;
    }

    bool Put(const unsigned char* row)
    {
        if (setjmp(m_escape))
        {
            return false;
        }
        JSAMPROW rows[1] = {const_cast<JSAMPROW>(row)};
        return jpeg_write_scanlines(&m_jpeg, rows, 1) == 1;
    }

    bool End()
    {
        if (setjmp(m_escape))
        {
            return false;
        }
        jpeg_finish_compress(&m_jpeg);
        return true;
    }

    std::unique_ptr<FileSink> m_sink;
    std::string m_reason; ///< of the sink
    std::array<unsigned char, 65536> m_bytes{};
    std::jmp_buf m_escape{};
    jpeg_error_mgr m_trouble{};
    jpeg_destination_mgr m_destination{};
    jpeg_compress_struct m_jpeg{};
};

}  // namespace

std::unique_ptr<PictureFile> BeginJPEG(std::unique_ptr<FileSink> sink, const PictureFormat& format,
                                       std::string& error)
{
    auto file = std::make_unique<JPEGFile>(std::move(sink), format);
    return file->Begin(error) ? std::move(file) : nullptr;
}

}  // namespace OV::Host::Detail
