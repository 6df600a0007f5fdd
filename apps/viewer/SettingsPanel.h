#pragma once

#include "orvane_host/present/Presentation.h"

namespace OV::ViewerApp
{

/// Every field of settings, as something to choose, in the window that is begun.
/// @param box of the model; what planes and distances are offered within.
/// @param sun what the settings of the sun come to.
/// @param fileHasPlace whether the model tells where it stands.
/// @return whether a field was changed.
bool EditSettings(Host::PresentationSettings& settings, const Host::Presentation::Box& box, const Host::SunState& sun,
                  bool fileHasPlace);

} // namespace OV::ViewerApp
