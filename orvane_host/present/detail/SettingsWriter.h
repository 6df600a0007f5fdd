#pragma once

#include <string>

namespace OV::Host
{

struct PresentationSettings;

} // namespace OV::Host

namespace OV::Host::Detail
{

/// As PresentationSettings::ToJSON.
std::string WriteSettings(const PresentationSettings& settings);

} // namespace OV::Host::Detail
