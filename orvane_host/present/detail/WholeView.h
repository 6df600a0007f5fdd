#pragma once

#include "orvane_host/present/PresentationFrame.h"
#include "orvane/math/Matrix.h"

namespace OV::Host::Detail
{

/// All of a picture, of which a frame may draw a part: what is worked out from it is the same in each part,
/// to the bit.
struct WholeView
{
    /// Leaves the frame as it was.
    explicit WholeView(PresentationFrame& frame);

    PixelSize size;       ///< in pixels of the target
    PixelSize first;      ///< the pixel at the lower left corner of the target, across and up
    Matrix worldToClip{};
};

} // namespace OV::Host::Detail
