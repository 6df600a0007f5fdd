#pragma once

#include "orvane/overlay/Text.h"

namespace OV::Detail
{

/// How texts are measured. What measures is set where this is defined, in a unit that every
/// program with a Text links: the overlay itself knows no rasteriser.
Text::SizeCallback& TextSizeCallback();

} // namespace OV::Detail
