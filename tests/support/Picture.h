#pragma once

#include <cstdint>
#include <iosfwd>
#include <vector>

namespace OV::Test
{

/// One RGBA colour, 8 bits a channel.
struct Pixel
{
    int r = 0;
    int g = 0;
    int b = 0;
    int a = 255;
};

bool operator==(const Pixel& left, const Pixel& right);
bool operator!=(const Pixel& left, const Pixel& right);
std::ostream& operator<<(std::ostream& stream, const Pixel& pixel);

/// Rounds a colour of 0 to 1 a channel the way that GL stores it; values outside are clamped.
Pixel ToPixel(float r, float g, float b, float a = 1.0f);

/// Largest difference in any of the four channels.
int ChannelDifference(const Pixel& left, const Pixel& right);

/// A rectangle of pixels in GL's window coordinates: the origin lower left, y upward.
struct PixelRect
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
};

/// The rectangle without a border of that many pixels, to stay clear of an edge's rasterising.
PixelRect Inset(const PixelRect& rect, int border = 2);

/// An RGBA picture in memory.
class Picture
{
public:
    Picture() = default;

    /// Takes rows that run from the top down, tight, four bytes a pixel.
    Picture(int width, int height, std::vector<unsigned char> rgba);

    int GetWidth() const { return m_width; }
    int GetHeight() const { return m_height; }
    bool IsEmpty() const { return m_rgba.empty(); }

    /// Colour at GL's window coordinates. Outside the picture a fully transparent black.
    Pixel At(int x, int y) const;
    void Set(int x, int y, const Pixel& pixel);

    const std::vector<unsigned char>& GetRows() const { return m_rgba; }

    bool operator==(const Picture& other) const;
    bool operator!=(const Picture& other) const { return !(*this == other); }

    /// How many pixels have exactly that colour.
    int Count(const Pixel& pixel) const;

private:
    int m_width = 0;
    int m_height = 0;
    std::vector<unsigned char> m_rgba;
};

/// How far two pictures are apart.
struct PictureDifference
{
    bool sameSize = false;
    int largestChannelDifference = 255;
    /// Share of the pixels that differ at all, 0 to 1.
    double differingShare = 1.0;
};

PictureDifference Compare(const Picture& left, const Picture& right);

/// A picture of the differences, channel by channel, ten times as strong as they are and opaque.
Picture DrawDifference(const Picture& left, const Picture& right);

}  // namespace OV::Test
