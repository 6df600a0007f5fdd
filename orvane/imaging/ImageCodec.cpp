#include "orvane/imaging/ImageCodec.h"

#include "orvane/imaging/FilePath.h"
#include "orvane/imaging/Image.h"
#include "orvane/imaging/detail/FileBytes.h"
#include "orvane/imaging/detail/JpegDecoder.h"
#include "orvane/imaging/detail/PngDecoder.h"
#include "orvane/imaging/detail/PngEncoder.h"
#include "orvane/imaging/detail/Utf8.h"

#include <atomic>
#include <limits>
#include <png.h>

namespace OV
{

namespace
{

std::atomic<std::uint64_t> g_maxPictureBytes{std::uint64_t(1) << 30};

}  // namespace

Image* ImageCodec::LoadImageData(const FilePath& path, const std::string& name, bool swapRedBlue, bool flipVertical)
{
    const std::wstring fullName = path.path + detail::WideFromUtf8(name);
    std::string fileName;
    if (!detail::Utf8FromWide(fullName, fileName))
    {
        return nullptr;
    }
    const detail::FileBytes bytes = detail::ReadWholeFile(fileName, std::numeric_limits<int>::max());
    if (bytes.size == 0)
    {
        return nullptr;
    }
    return DecodeImage(bytes.data.get(), static_cast<int>(bytes.size), swapRedBlue, flipVertical);
}

Image* ImageCodec::DecodeImage(unsigned char* data, int size, bool swapRedBlue, bool flipVertical)
{
    const std::size_t bytes = data && size > 0 ? static_cast<std::size_t>(size) : 0;
    const bool isPng = png_sig_cmp(data, 0, bytes) == 0;
    const std::uint64_t limit = GetMaxPictureBytes();
    return (isPng ? detail::DecodePng(data, bytes, limit, swapRedBlue, flipVertical)
                  : detail::DecodeJpeg(data, bytes, limit, swapRedBlue, flipVertical))
        .release();
}

void ImageCodec::SetMaxPictureBytes(std::uint64_t bytes)
{
    g_maxPictureBytes = bytes;
}

std::uint64_t ImageCodec::GetMaxPictureBytes()
{
    return g_maxPictureBytes;
}

std::vector<unsigned char> ImageCodec::EncodeImagePNG(std::vector<unsigned char>& pixels, std::uint64_t width,
                                                      std::uint64_t height, std::uint64_t channels)
{
    // Divided, not multiplied: the product of three numbers from outside may wrap around.
    const std::uint64_t size = pixels.size();
    if ((channels != 3 && channels != 4) || width == 0 || height == 0 || size % channels != 0 ||
        size / channels % width != 0 || size / channels / width != height)
    {
        return {};
    }
    return detail::EncodePng(pixels, width, height, channels);
}

}  // namespace OV
