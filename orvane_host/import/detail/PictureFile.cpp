#include "orvane_host/import/detail/PictureFile.h"

#include "orvane_host/import/detail/ForeignPicture.h"
#include "orvane_host/import/detail/ImageProbe.h"
#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <exception>
#include <fstream>
#include <memory>
#include <utility>

namespace OV::Host
{

namespace
{

constexpr std::uint64_t kMebi = 1u << 20;

bool ReadFile(const std::string& path, std::uint64_t most, std::vector<unsigned char>& bytes, std::string& error)
{
    struct stat facts{};
    if (::stat(path.c_str(), &facts) == 0 && S_ISDIR(facts.st_mode))
    {
        error = "is a folder; name a PNG file";
        return false;
    }
    errno = 0;
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file ? static_cast<std::streamoff>(file.tellg()) : -1;
    if (size < 0)
    {
        error = std::string("cannot be read: ") + std::strerror(errno ? errno : EIO) + "; check the name";
        return false;
    }
    if (static_cast<std::uint64_t>(size) > most)
    {
        error = "is larger than " + std::to_string(most / kMebi) + " MiB; use a smaller picture";
        return false;
    }
    bytes.resize(static_cast<std::size_t>(size));
    file.seekg(0);
    if (!file.read(reinterpret_cast<char*>(bytes.data()), size))
    {
        error = "cannot be read to its end; check that it is a file";
        return false;
    }
    return true;
}

bool Decode(std::vector<unsigned char>& bytes, FirstRow first, PicturePixels& picture)
{
    std::unique_ptr<Image> image;
    try
    {
        image.reset(ImageCodec::DecodeImage(bytes.data(), static_cast<int>(bytes.size()), false,
                                            first == FirstRow::Bottom));
    }
    catch (const std::exception&)
    {
        image.reset();
    }
    if (!image || !image->data || image->width < 1 || image->height < 1)
    {
        return false;
    }
    picture.width = image->width;
    picture.height = image->height;
    picture.rgba.assign(image->data, image->data + static_cast<std::size_t>(image->width) * image->height * 4);
    return true;
}

/// Decodes what the engine does not.
bool Convert(const std::vector<unsigned char>& bytes, const ImageFacts& facts, FirstRow first,
             PicturePixels& picture)
{
    std::vector<unsigned char> rgba = DecodeForeign(bytes.data(), bytes.size(), facts);
    if (rgba.empty())
    {
        return false;
    }
    const auto row = static_cast<std::ptrdiff_t>(facts.width) * 4;
    for (std::ptrdiff_t low = 0, high = static_cast<std::ptrdiff_t>(facts.height) - 1;
         first == FirstRow::Bottom && low < high; ++low, --high)
    {
        std::swap_ranges(rgba.begin() + low * row, rgba.begin() + (low + 1) * row, rgba.begin() + high * row);
    }
    picture.width = static_cast<int>(facts.width);
    picture.height = static_cast<int>(facts.height);
    picture.rgba = std::move(rgba);
    return true;
}

} // namespace

bool ReadPictureFile(const std::string& path, FirstRow first, PicturePixels& picture, std::string& error,
                     const PictureFileLimits& limits)
{
    std::vector<unsigned char> bytes;
    if (!ReadFile(path, limits.bytes, bytes, error))
    {
        return false;
    }
    const ImageFacts facts = ProbeImage(MemorySource(bytes.data(), bytes.size()));
    if (!facts.isReadable)
    {
        error = "the picture " + facts.obstacle + "; save it as a plain PNG";
        return false;
    }
    if (facts.Pixels() > limits.pixels)
    {
        error = "has more than " + std::to_string(limits.pixels / kMebi) + " megapixels; use a smaller picture";
        return false;
    }
    if (!(facts.needsConversion ? Convert(bytes, facts, first, picture) : Decode(bytes, first, picture)))
    {
        error = "cannot be decoded; check that the file is whole";
        return false;
    }
    return true;
}

} // namespace OV::Host
