#pragma once

#include "orvane_host/output/PictureFile.h"
#include "orvane_host/present/Presentation.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace OV::Test
{

/// The numbers of a picture.
struct Rows
{
    Host::PictureFormat format;
    std::vector<unsigned char> data;

    int At(int x, int y, int channel) const
    {
        const int index = (y * format.width + x) * format.Channels() + channel;
        if (format.bits == 8)
        {
            return data[static_cast<std::size_t>(index)];
        }
        std::uint16_t wide = 0;
        std::memcpy(&wide, &data[static_cast<std::size_t>(2 * index)], sizeof(wide));
        return wide;
    }
};

/// Keeps rows as they come.
class RowsFile : public Host::PictureFile
{
public:
    explicit RowsFile(const Host::PictureFormat& format) : PictureFile(format) { rows.format = format; }

    bool WriteRow(const void* row, std::string&) override
    {
        const auto* const begin = static_cast<const unsigned char*>(row);
        rows.data.insert(rows.data.end(), begin, begin + m_format.width * m_format.Channels() * m_format.bits / 8);
        return true;
    }

    bool Finish(std::string&) override { return true; }

    Rows rows;
};

/// A picture as its file gets it.
/// @param facts what is told of it.
inline Rows WriteRows(Host::Presentation& presentation, const Host::PictureOptions& options, Host::PictureFacts& facts)
{
    Host::PictureFormat format;
    format.width = options.width;
    format.height = options.height;
    format.alpha = options.transparent;
    format.bits = options.bits;
    RowsFile file(format);
    std::string error;
    EXPECT_TRUE(presentation.WritePicture(file, options, error, &facts)) << error;
    return file.rows;
}

} // namespace OV::Test
