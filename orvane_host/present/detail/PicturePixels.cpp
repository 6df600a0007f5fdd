#include "orvane_host/present/detail/PicturePixels.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace OV::Host::Detail
{

namespace
{

/// Of 255 that nobody sees.
constexpr int UnseenSteps = 2;

/// What shows the background through by a share shows by that share more on white than on black,
/// whatever was blended in between; the rest is its own colour.
template <typename Channel>
std::array<Channel, 4> StraightOf(const Channel* onBlack, const Channel* onWhite)
{
    constexpr std::int64_t most = std::numeric_limits<Channel>::max();
    std::int64_t shown = 0;
    for (int i = 0; i < 3; ++i)
    {
        shown += std::max<std::int64_t>(static_cast<std::int64_t>(onWhite[i]) - onBlack[i], 0);
    }
    const std::int64_t alpha = most - (shown + 1) / 3;
    std::array<Channel, 4> straight{};
    if (alpha <= 0)
    {
        return straight;
    }
    for (std::size_t i = 0; i < 3; ++i)
    {
        straight[i] = static_cast<Channel>(std::min((onBlack[i] * most + alpha / 2) / alpha, most));
    }
    straight[3] = static_cast<Channel>(alpha);
    return straight;
}

} // namespace

PicturePixels::PicturePixels(int width, int rows, int channels, int bits) :
    m_channels(channels), m_bits(bits), m_pixelBytes(static_cast<std::size_t>(channels * bits / 8)),
    m_rowBytes(static_cast<std::size_t>(width) * m_pixelBytes),
    m_bytes(m_rowBytes * static_cast<std::size_t>(rows))
{
}

template <typename Channel>
void PicturePixels::PutOpaque(const Channel* rgba, int x, int width, int rows)
{
    for (int row = 0; row < rows; ++row)
    {
        auto* to = reinterpret_cast<Channel*>(m_bytes.data() + static_cast<std::size_t>(row) * m_rowBytes) + x * m_channels;
        for (int i = 0; i < width; ++i, rgba += 4, to += m_channels)
        {
            std::copy_n(rgba, 3, to);
        }
    }
}

template <typename Channel>
void PicturePixels::PutStraight(const Channel* onBlack, const Channel* onWhite, int x, int width, int rows)
{
    for (int row = 0; row < rows; ++row)
    {
        auto* to = reinterpret_cast<Channel*>(m_bytes.data() + static_cast<std::size_t>(row) * m_rowBytes) + x * m_channels;
        for (int i = 0; i < width; ++i, onBlack += 4, onWhite += 4, to += m_channels)
        {
            const std::array<Channel, 4> straight = StraightOf(onBlack, onWhite);
            std::copy(straight.begin(), straight.end(), to);
        }
    }
}

void PicturePixels::Put(const std::vector<unsigned char>& rgba, int x, int width, int rows)
{
    if (m_bits == 16)
    {
        PutOpaque(reinterpret_cast<const std::uint16_t*>(rgba.data()), x, width, rows);
    }
    else
    {
        PutOpaque(rgba.data(), x, width, rows);
    }
}

void PicturePixels::Put(const std::vector<unsigned char>& onBlack, const std::vector<unsigned char>& onWhite, int x,
                        int width, int rows)
{
    if (m_bits == 16)
    {
        PutStraight(reinterpret_cast<const std::uint16_t*>(onBlack.data()),
                    reinterpret_cast<const std::uint16_t*>(onWhite.data()), x, width, rows);
    }
    else
    {
        PutStraight(onBlack.data(), onWhite.data(), x, width, rows);
    }
}

Color PicturePixels::ColorOf(const unsigned char* pixel) const
{
    std::array<float, 4> channels = {0.0f, 0.0f, 0.0f, 1.0f};
    for (int i = 0; i < m_channels; ++i)
    {
        float& channel = channels[static_cast<std::size_t>(i)];
        channel = m_bits == 16 ? static_cast<float>(reinterpret_cast<const std::uint16_t*>(pixel)[i]) / 65535.0f
                               : static_cast<float>(pixel[i]) / 255.0f;
    }
    return Color(channels[0], channels[1], channels[2], channels[3]);
}

bool PicturePixels::IsLike(const unsigned char* row, const unsigned char* pixel, std::size_t pixels) const
{
    const auto isLike = [&](const auto* at, const auto* like, int unseen)
    {
        for (std::size_t i = 0; i < pixels; ++i, at += m_channels)
        {
            for (int channel = 0; channel < m_channels; ++channel)
            {
                if (std::abs(static_cast<int>(at[channel]) - static_cast<int>(like[channel])) > unseen)
                {
                    return false;
                }
            }
        }
        return true;
    };
    using Wide = const std::uint16_t*;
    return m_bits == 16 ? isLike(reinterpret_cast<Wide>(row), reinterpret_cast<Wide>(pixel), UnseenSteps * 257)
                        : isLike(row, pixel, UnseenSteps);
}

void PicturePixels::Look(int row, PictureFacts& facts)
{
    if (m_first.empty())
    {
        m_first.assign(RowAt(row), RowAt(row) + m_pixelBytes);
        facts.color = ColorOf(m_first.data());
    }
    facts.isOneColor = facts.isOneColor && IsLike(RowAt(row), m_first.data(), m_rowBytes / m_pixelBytes);
}

} // namespace OV::Host::Detail
