#include "tests/support/Picture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ostream>
#include <utility>

namespace OV::Test
{

bool operator==(const Pixel& left, const Pixel& right)
{
    return ChannelDifference(left, right) == 0;
}

bool operator!=(const Pixel& left, const Pixel& right)
{
    return !(left == right);
}

std::ostream& operator<<(std::ostream& stream, const Pixel& pixel)
{
    return stream << '(' << pixel.r << ", " << pixel.g << ", " << pixel.b << ", " << pixel.a << ')';
}

Pixel ToPixel(float r, float g, float b, float a)
{
    const auto channel = [](float value)
    { return static_cast<int>(std::lround(std::clamp(value, 0.0f, 1.0f) * 255.0f)); };
    return {channel(r), channel(g), channel(b), channel(a)};
}

int ChannelDifference(const Pixel& left, const Pixel& right)
{
    return std::max(std::max(std::abs(left.r - right.r), std::abs(left.g - right.g)),
                    std::max(std::abs(left.b - right.b), std::abs(left.a - right.a)));
}

PixelRect Inset(const PixelRect& rect, int border)
{
    return {rect.x + border, rect.y + border, rect.width - 2 * border, rect.height - 2 * border};
}

Picture::Picture(int width, int height, std::vector<unsigned char> rgba)
    : m_width(width), m_height(height), m_rgba(std::move(rgba))
{
    m_rgba.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
}

Pixel Picture::At(int x, int y) const
{
    if (x < 0 || y < 0 || x >= m_width || y >= m_height)
    {
        return {0, 0, 0, 0};
    }
    const std::size_t row = static_cast<std::size_t>(m_height - 1 - y);
    const unsigned char* p = &m_rgba[(row * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x)) * 4];
    return {p[0], p[1], p[2], p[3]};
}

void Picture::Set(int x, int y, const Pixel& pixel)
{
    if (x < 0 || y < 0 || x >= m_width || y >= m_height)
    {
        return;
    }
    const std::size_t row = static_cast<std::size_t>(m_height - 1 - y);
    unsigned char* p = &m_rgba[(row * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x)) * 4];
    const int channels[4] = {pixel.r, pixel.g, pixel.b, pixel.a};
    for (int i = 0; i < 4; ++i)
    {
        p[i] = static_cast<unsigned char>(std::clamp(channels[i], 0, 255));
    }
}

bool Picture::operator==(const Picture& other) const
{
    return m_width == other.m_width && m_height == other.m_height && m_rgba == other.m_rgba;
}

int Picture::Count(const Pixel& pixel) const
{
    int count = 0;
    for (std::size_t i = 0; i + 3 < m_rgba.size(); i += 4)
    {
        count += Pixel{m_rgba[i], m_rgba[i + 1], m_rgba[i + 2], m_rgba[i + 3]} == pixel ? 1 : 0;
    }
    return count;
}

PictureDifference Compare(const Picture& left, const Picture& right)
{
    PictureDifference result;
    result.sameSize = left.GetWidth() == right.GetWidth() && left.GetHeight() == right.GetHeight();
    if (!result.sameSize)
    {
        return result;
    }
    result.largestChannelDifference = 0;
    std::size_t differing = 0;
    for (int y = 0; y < left.GetHeight(); ++y)
    {
        for (int x = 0; x < left.GetWidth(); ++x)
        {
            const int difference = ChannelDifference(left.At(x, y), right.At(x, y));
            result.largestChannelDifference = std::max(result.largestChannelDifference, difference);
            differing += difference > 0 ? 1 : 0;
        }
    }
    const double pixels = static_cast<double>(left.GetWidth()) * left.GetHeight();
    result.differingShare = pixels > 0 ? static_cast<double>(differing) / pixels : 0.0;
    return result;
}

Picture DrawDifference(const Picture& left, const Picture& right)
{
    const int width = std::max(left.GetWidth(), right.GetWidth());
    const int height = std::max(left.GetHeight(), right.GetHeight());
    Picture result(width, height, {});
    const auto strength = [](int a, int b) { return std::min(255, 10 * std::abs(a - b)); };
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            const Pixel a = left.At(x, y);
            const Pixel b = right.At(x, y);
            // A difference in alpha alone shows as grey.
            const int alpha = strength(a.a, b.a);
            result.Set(x, y, {std::max(alpha, strength(a.r, b.r)), std::max(alpha, strength(a.g, b.g)),
                              std::max(alpha, strength(a.b, b.b)), 255});
        }
    }
    return result;
}

}  // namespace OV::Test
