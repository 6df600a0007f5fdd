// Holds a PNG file to colours at places, and to other files: CheckPicture FILE X,Y=RRGGBB... same=FILE... with x
// and y in pixels from the upper left corner.
#include "orvane/imaging/FilePath.h"
#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <memory>
#include <string>

namespace
{

/// Of a channel: what another driver makes of rounding and smoothing.
constexpr int Tolerance = 12;

/// One pixel of so many may differ in pictures that are the same: the rim of a thing that is drawn together with
/// others in one of them and by itself in the other.
constexpr std::size_t PixelsForOneOther = 10000;

/// Null, with the reason told, for what is no picture.
std::unique_ptr<OV::Image> Read(const std::string& path)
{
    std::unique_ptr<OV::Image> picture;
    try
    {
        picture.reset(OV::ImageCodec::LoadImageData(OV::FilePath(), path, false, false));
    }
    catch (const std::exception& trouble)
    {
        std::cerr << path << ": " << trouble.what() << '\n';
    }
    if (!picture || !picture->data)
    {
        std::cerr << path << " is no picture\n";
        return nullptr;
    }
    return picture;
}

bool IsSame(const OV::Image& picture, const std::string& otherPath)
{
    const std::unique_ptr<OV::Image> other = Read(otherPath);
    if (!other || other->width != picture.width || other->height != picture.height)
    {
        std::cerr << otherPath << " has another size or none\n";
        return false;
    }
    const std::size_t pixels = static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
    std::size_t others = 0;
    for (std::size_t i = 0; i < pixels; ++i)
    {
        others += std::memcmp(picture.data + 4 * i, other->data + 4 * i, 4) != 0 ? 1 : 0;
    }
    if (others > pixels / PixelsForOneOther)
    {
        std::cerr << others << " of " << pixels << " pixels differ from " << otherPath << '\n';
        return false;
    }
    return true;
}

/// @return whether the picture has the colour there; tells what it has where it doesn't.
bool HasColor(const OV::Image& picture, const char* words)
{
    int x = 0;
    int y = 0;
    unsigned int expected = 0;
    int length = 0;
    if (std::sscanf(words, "%d,%d=%6x%n", &x, &y, &expected, &length) != 3 || words[length] != '\0')
    {
        std::cerr << words << " is not X,Y=RRGGBB\n";
        return false;
    }
    if (x < 0 || y < 0 || x >= picture.width || y >= picture.height)
    {
        std::cerr << words << " lies outside of the picture\n";
        return false;
    }
    const unsigned char* const actual = picture.data + 4 * (y * picture.width + x);
    for (int channel = 0; channel < 3; ++channel)
    {
        const int wanted = static_cast<int>(expected >> (16 - 8 * channel)) & 0xFF;
        if (std::abs(actual[channel] - wanted) > Tolerance)
        {
            std::fprintf(stderr, "expected %s, but found %02X%02X%02X\n", words, actual[0], actual[1], actual[2]);
            return false;
        }
    }
    return true;
}

} // namespace

int main(int count, char** words)
{
    if (count < 3)
    {
        std::cerr << "usage: CheckPicture FILE X,Y=RRGGBB... same=FILE...\n";
        return 2;
    }
    const std::unique_ptr<OV::Image> picture = Read(words[1]);
    bool allRight = picture != nullptr;
    for (int i = 2; picture && i < count; ++i)
    {
        const std::string word = words[i];
        const bool isRight = word.compare(0, 5, "same=") == 0 ? IsSame(*picture, word.substr(5))
                                                              : HasColor(*picture, words[i]);
        allRight = isRight && allRight;
    }
    return allRight ? 0 : 1;
}
