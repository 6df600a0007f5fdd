#include "orvane_host/present/detail/PictureTiles.h"

#include "orvane_host/present/PresentationSettings.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <tuple>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

/// Of the buffers of a picture that is drawn at once, of those of a tile, and of the rows of a picture that
/// wait for their tiles. At once is better: a rasteriser rounds in another way in a tile.
constexpr std::int64_t MostWholeBytes = 640 << 20;
constexpr std::int64_t MostTileBytes = 320 << 20;
constexpr std::int64_t MostRowBytes = 160 << 20;

/// Of a tile that little is drawn for.
constexpr int MostSide = 4096;

/// Of a tile that shadows are cast in: the map of what the sun sees, which is laid out for each tile, has texels
/// for no more.
constexpr int MostShadowedSide = 1536;

int UpToStep(int pixels)
{
    return (pixels + PictureTiles::Step - 1) / PictureTiles::Step * PictureTiles::Step;
}

int DownToStep(std::int64_t pixels)
{
    return static_cast<int>(std::max<std::int64_t>(pixels / PictureTiles::Step, 1) * PictureTiles::Step);
}

/// How much of a side a tile keeps.
int KeptOf(int whole, int most, int margin)
{
    return whole <= most ? whole : DownToStep(most - 2 * margin);
}

/// What is needed along a side: the first pixel and how many.
std::pair<int, int> NeededOf(int kept, int keptSize, int rim, int drawn, int drawnSize)
{
    const int first = std::max(kept - rim, drawn);
    return {first, std::min(kept + keptSize + rim, drawn + drawnSize) - first};
}

int CountOf(int whole, int kept)
{
    return (whole + kept - 1) / kept;
}

} // namespace

int BytesPerPixel(const PresentationSettings& settings, int samples, int bits)
{
    const bool isFiner = settings.antialiasing == Antialiasing::Supersampling;
    const int drawn = isFiner ? 4 : 1;
    const int color = bits / 2;
    // Colour and depth of each sample, what they are resolved into, and what is read.
    int bytes = (color + 4) * std::max(samples, 1) + (samples > 1 ? color : 0) + color;
    bytes += isFiner || settings.antialiasing == Antialiasing::Filter ? drawn * (4 + 4 + 4) : 0;
    // Where there are samples the following are finer. A target of colours has a depth of 4 bytes to be read and
    // one of 2 that nobody reads. Identifiers, and what is darkened.
    const bool isSpiral = settings.occlusion && settings.occlusionLook.kind == OcclusionKind::Spiral;
    const bool isIdentified = settings.edges || isSpiral;
    bytes += isIdentified ? (4 + 6) * (settings.edges && samples > 1 ? 4 : drawn) : 0;
    bytes += isSpiral ? 4 * drawn : 0;
    // Faces, and what is hidden.
    bytes += settings.occlusion && !isSpiral ? (4 + 6) * (samples > 1 ? 4 : drawn) + 4 * drawn : 0;
    // Depth and slope of surfaces and of glass, what lines cover and its depth, and lines kept.
    bytes += settings.lines ? (7 * 4 + 3 * 2) * drawn : 0;
    // Three depths, a layer and two sums.
    const bool isLayered = settings.glass.order != GlassOrder::Scene;
    const bool isFine = settings.glass.order == GlassOrder::Exact && samples > 1;
    bytes += isLayered ? (3 * 4 + 2 + 4 + 2 * 8) * (isFine ? 4 : drawn) : 0;
    return bytes;
}

PictureTiles::PictureTiles(const PixelSize& whole, const PixelSize& most, int margin, int rim) :
    m_whole(whole), m_kept{KeptOf(whole.width, most.width, UpToStep(margin)),
                           KeptOf(whole.height, most.height, UpToStep(margin))},
    m_rim(rim), m_marginX(m_kept.width < whole.width ? UpToStep(margin) : 0),
    m_marginY(m_kept.height < whole.height ? UpToStep(margin) : 0),
    m_columns(CountOf(whole.width, m_kept.width)), m_rows(CountOf(whole.height, m_kept.height))
{
}

PictureTile PictureTiles::At(int column, int row) const
{
    PictureTile tile;
    tile.x = column * m_kept.width;
    tile.y = row * m_kept.height;
    tile.kept.width = std::min(m_kept.width, m_whole.width - tile.x);
    tile.kept.height = std::min(m_kept.height, m_whole.height - tile.y);
    PicturePart& part = tile.part;
    part.whole = m_whole;
    part.x = std::max(tile.x - m_marginX, 0);
    part.y = std::max(tile.y - m_marginY, 0);
    part.size.width = std::min(tile.x + tile.kept.width + m_marginX, m_whole.width) - part.x;
    part.size.height = std::min(tile.y + tile.kept.height + m_marginY, m_whole.height) - part.y;
    PictureRect& needed = part.needed;
    std::tie(needed.x, needed.size.width) = NeededOf(tile.x, tile.kept.width, m_rim, part.x, part.size.width);
    std::tie(needed.y, needed.size.height) = NeededOf(tile.y, tile.kept.height, m_rim, part.y, part.size.height);
    return tile;
}

PixelSize PictureTiles::GetLargest() const
{
    return {std::min(m_kept.width + 2 * m_marginX, m_whole.width),
            std::min(m_kept.height + 2 * m_marginY, m_whole.height)};
}

PixelSize TileSizeFor(const PresentationSettings& settings, const PixelSize& whole, int samples, int bits,
                      const PixelSize& limit, int longest)
{
    const std::int64_t bytes = BytesPerPixel(settings, samples, bits);
    const std::int64_t pixels = MostTileBytes / bytes;
    const std::int64_t rows = MostRowBytes / (static_cast<std::int64_t>(whole.width) * bits / 2);
    const int side = longest > 0 ? longest : std::max(limit.width, limit.height);
    const bool isWithinLimit = whole.width <= limit.width && whole.height <= limit.height;
    PixelSize size;
    if (isWithinLimit && static_cast<std::int64_t>(whole.width) * whole.height <= MostWholeBytes / bytes)
    {
        size = whole;
    }
    else
    {
        // About square: then least of it is overlaps.
        const int most = settings.shadows ? MostShadowedSide : MostSide;
        const auto square = static_cast<std::int64_t>(std::sqrt(static_cast<double>(pixels)));
        size.height = std::min({whole.height, DownToStep(std::min(square, rows)), most});
        size.width = std::min({whole.width, DownToStep(pixels / size.height), most});
    }
    size.width = std::min({size.width, limit.width, side});
    size.height = std::min({size.height, limit.height, side});
    return size;
}

} // namespace OV::Host::Detail
