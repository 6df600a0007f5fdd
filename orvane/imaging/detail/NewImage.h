#pragma once

#include "orvane/imaging/Image.h"

#include <memory>

namespace OV::detail
{

/// Makes an image of the given size whose pixels are still to be written. A width or height
/// below 1 gives one without pixels.
/// @throw std::bad_alloc where there is no memory for it.
std::unique_ptr<Image> NewImage(int width, int height);

}  // namespace OV::detail
