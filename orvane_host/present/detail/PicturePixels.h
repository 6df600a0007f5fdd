#pragma once

#include "orvane_host/present/PictureOptions.h"

#include <cstddef>
#include <vector>

namespace OV::Host::Detail
{

/// Rows of a picture that wait for their tiles, the lowest first. 8 or 16 bits a channel.
class PicturePixels
{
public:
    /// @throw std::bad_alloc where there is no memory for them.
    PicturePixels(int width, int rows, int channels, int bits);

    /// Puts pixels of a tile in their place.
    /// @param rgba tight rows, the lowest first.
    void Put(const std::vector<unsigned char>& rgba, int x, int width, int rows);

    /// The same with straight alpha, from a picture of the tile on black and one on white.
    void Put(const std::vector<unsigned char>& onBlack, const std::vector<unsigned char>& onWhite, int x, int width,
             int rows);

    /// @param row from the lowest.
    const unsigned char* RowAt(int row) const { return m_bytes.data() + static_cast<std::size_t>(row) * m_rowBytes; }

    /// Notices whether a row goes on with the colour of those that were looked at before.
    void Look(int row, PictureFacts& facts);

private:
    template <typename Channel>
    void PutOpaque(const Channel* rgba, int x, int width, int rows);
    template <typename Channel>
    void PutStraight(const Channel* onBlack, const Channel* onWhite, int x, int width, int rows);
    bool IsLike(const unsigned char* row, const unsigned char* pixel, std::size_t pixels) const;
    Color ColorOf(const unsigned char* pixel) const;

    int m_channels;
    int m_bits;
    std::size_t m_pixelBytes;
    std::size_t m_rowBytes;
    std::vector<unsigned char> m_bytes;
    std::vector<unsigned char> m_first; ///< pixel that was looked at
};

} // namespace OV::Host::Detail
