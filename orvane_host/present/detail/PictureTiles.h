#pragma once

#include "orvane_host/present/PresentationFrame.h"

namespace OV::Host
{

struct PresentationSettings;

} // namespace OV::Host

namespace OV::Host::Detail
{

/// A part of a picture that is drawn, and what of it is kept: the rest is there for what looks about
/// a pixel.
struct PictureTile
{
    PicturePart part;
    int x = 0; ///< of the lower left corner of what is kept, in the whole
    int y = 0;
    PixelSize kept;
};

/// How a picture is divided into tiles that overlap.
///
/// Every part begins at a multiple of a step, so that patterns of the screen and the groups of
/// pixels that GL takes differences in lie as in the whole.
class PictureTiles
{
public:
    static constexpr int Step = 64;

    /// @param most size of what is drawn at once; at least a step is kept of each tile, whatever it is.
    /// @param margin pixels that are drawn about what is kept.
    /// @param rim how many of them are needed in their colours, at most all.
    PictureTiles(const PixelSize& whole, const PixelSize& most, int margin, int rim);

    int GetColumns() const { return m_columns; }
    int GetRows() const { return m_rows; }

    /// @param row from the bottom.
    PictureTile At(int column, int row) const;

    /// The largest that a part gets.
    PixelSize GetLargest() const;

private:
    PixelSize m_whole;
    PixelSize m_kept; ///< of a tile, but for the last ones
    int m_rim = 0;
    int m_marginX = 0;
    int m_marginY = 0;
    int m_columns = 1;
    int m_rows = 1;
};

/// What GL takes for each pixel that is drawn of a picture, about. What the sun sees comes on top.
int BytesPerPixel(const PresentationSettings& settings, int samples, int bits);

/// The size of tiles that keeps drawing a picture within some hundred megabytes.
/// @param limit of a side, of GL.
/// @param longest side, or 0.
PixelSize TileSizeFor(const PresentationSettings& settings, const PixelSize& whole, int samples, int bits,
                      const PixelSize& limit, int longest);

} // namespace OV::Host::Detail
