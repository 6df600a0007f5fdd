#include "orvane_host/sheet/Watermark.h"

#include "orvane_host/import/detail/PictureFile.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Sprite.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace OV::Host
{

namespace
{

/// Half the picture each way, each pixel the mean of four. Colours count by their alpha.
PicturePixels Halve(const PicturePixels& from)
{
    PicturePixels half{std::max(1, from.width / 2), std::max(1, from.height / 2), {}};
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
    PicturePixels picture;
    if (!ReadPictureFile(path, FirstRow::Bottom, picture, error))
    {
        return nullptr;
    }
    std::unique_ptr<Watermark> read(new Watermark);
    read->m_width = picture.width;
    read->m_height = picture.height;
    read->m_rgba = std::move(picture.rgba);
    return read;
}

void Watermark::Show(Scene2D& layer, int width, int height)
{
    const double fit = std::min({1.0, static_cast<double>(width) / m_width, static_cast<double>(height) / m_height});
    const int shownWidth = std::max(1, static_cast<int>(std::lround(m_width * fit)));
    const int shownHeight = std::max(1, static_cast<int>(std::lround(m_height * fit)));
    PicturePixels pixels{m_width, m_height, m_rgba};
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
