#include "orvane_host/sheet/Watermark.h"

#include "orvane_host/import/detail/ImageProbe.h"
#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Sprite.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>

namespace OV::Host
{

namespace
{

constexpr std::uint64_t MostFileBytes = 256u << 20;
constexpr std::uint64_t MostPixels = 64u << 20;

struct Pixels
{
    int width;
    int height;
    std::vector<unsigned char> rgba;
};

bool ReadFile(const std::string& path, std::vector<unsigned char>& bytes, std::string& error)
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
    if (static_cast<std::uint64_t>(size) > MostFileBytes)
    {
        error = "is larger than 256 MiB; use a smaller picture";
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

/// Half the picture each way, each pixel the mean of four. Colours count by their alpha.
Pixels Halve(const Pixels& from)
{
    Pixels half{std::max(1, from.width / 2), std::max(1, from.height / 2), {}};
    half.rgba.resize(static_cast<std::size_t>(half.width) * half.height * 4);
    for (int y = 0; y < half.height; ++y)
    {
        for (int x = 0; x < half.width; ++x)
        {
            unsigned int sum[3] = {0, 0, 0};
            unsigned int alpha = 0;
            for (int i = 0; i < 4; ++i)
            {
                const int column = std::min(2 * x + i % 2, from.width - 1);
                const int row = std::min(2 * y + i / 2, from.height - 1);
                const unsigned char* const pixel =
                    from.rgba.data() + (static_cast<std::size_t>(row) * from.width + column) * 4;
                for (int channel = 0; channel < 3; ++channel)
                {
                    sum[channel] += static_cast<unsigned int>(pixel[channel]) * pixel[3];
                }
                alpha += pixel[3];
            }
            unsigned char* const out =
                half.rgba.data() + (static_cast<std::size_t>(y) * half.width + x) * 4;
            for (int channel = 0; channel < 3; ++channel)
            {
                out[channel] = static_cast<unsigned char>(alpha ? (sum[channel] + alpha / 2) / alpha : 0);
            }
            out[3] = static_cast<unsigned char>((alpha + 2) / 4);
        }
    }
    return half;
}

} // namespace

Watermark::~Watermark() = default;

std::unique_ptr<Watermark> Watermark::Read(const std::string& path, std::string& error)
{
    std::vector<unsigned char> bytes;
    if (!ReadFile(path, bytes, error))
    {
        return nullptr;
    }
    const ImageFacts facts = ProbeImage(MemorySource(bytes.data(), bytes.size()));
    if (!facts.isReadable)
    {
        error = "the picture " + facts.obstacle + "; save it as a plain PNG";
        return nullptr;
    }
    if (facts.Pixels() > MostPixels)
    {
        error = "has more than 64 megapixels; use a smaller picture";
        return nullptr;
    }
    std::unique_ptr<Image> image;
    try
    {
        image.reset(ImageCodec::DecodeImage(bytes.data(), static_cast<int>(bytes.size()), false, true));
    }
    catch (const std::exception&)
    {
        image.reset();
    }
    if (!image || !image->data || image->width < 1 || image->height < 1)
    {
        error = "cannot be decoded; check that the file is whole";
        return nullptr;
    }
    std::unique_ptr<Watermark> read(new Watermark);
    read->m_width = image->width;
    read->m_height = image->height;
    read->m_rgba.assign(image->data, image->data + static_cast<std::size_t>(image->width) * image->height * 4);
    return read;
}

void Watermark::Show(Scene2D& layer, int width, int height)
{
    const double fit = std::min({1.0, static_cast<double>(width) / m_width, static_cast<double>(height) / m_height});
    const int shownWidth = std::max(1, static_cast<int>(std::lround(m_width * fit)));
    const int shownHeight = std::max(1, static_cast<int>(std::lround(m_height * fit)));
    Pixels pixels{m_width, m_height, m_rgba};
    // GL takes the mean of four texels at most.
    while (pixels.width >= 2 * shownWidth && pixels.height >= 2 * shownHeight)
    {
        pixels = Halve(pixels);
    }

    auto* const rect = new Rect(&layer, static_cast<float>(shownWidth), static_cast<float>(shownHeight), true);
    m_sprite = std::make_unique<Sprite>(&layer, rect);
    Material2D& material = *m_sprite->GetMaterial();
    material.pixelWidth = pixels.width;
    material.pixelHeight = pixels.height;
    material.pixels = static_cast<unsigned char*>(std::malloc(pixels.rgba.size()));
    if (material.pixels)
    {
        std::memcpy(material.pixels, pixels.rgba.data(), pixels.rgba.size());
    }
    else
    {
        m_sprite->Show(false);
    }
    Transform place;
    place.SetPosition(Vector(static_cast<float>((width - shownWidth) / 2),
                             static_cast<float>((height - shownHeight) / 2), 0.0f));
    m_sprite->GetNode()->SetLocal(place);
}

} // namespace OV::Host
