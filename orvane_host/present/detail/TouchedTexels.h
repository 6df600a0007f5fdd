#pragma once

#include "orvane_host/present/detail/SunView.h"
#include "orvane_host/present/detail/TexelRect.h"

#include <vector>

namespace OV::Host::Detail
{

/// What is to be drawn anew of a part of a map for what has changed among its casters: a few rectangles that hold
/// all of the footprints; none where the part sees none of them, and all of the part where that is hardly more.
/// @param changed of casters as they were and as they are.
std::vector<TexelRect> FindTouchedTexels(const SunView::Tile& tile, const std::vector<SunView::Footprint>& changed);

/// Whatever has a footprint that doesn't reach into this draws none of the texels.
SunView::Footprint FootprintAbout(const SunView::Tile& tile, const TexelRect& texels);

} // namespace OV::Host::Detail
