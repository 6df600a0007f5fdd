#pragma once

#include "orvane_host/geometry/SectionFill.h"
#include "orvane_host/present/PresentationSettings.h"

#include <vector>

namespace OV::Host::Detail
{

/// The planes of settings with normals of length 1, by which outlines are measured.
std::vector<SectionPlane> SectionPlanesOf(const SectionSettings& settings);

} // namespace OV::Host::Detail
