#pragma once

#include <string>

namespace OV::Host
{

struct PresentationSettings;

} // namespace OV::Host

namespace OV::Host::Detail
{

/// As PresentationSettings::Trouble.
std::string FindTrouble(const PresentationSettings& settings);

} // namespace OV::Host::Detail
