#pragma once

#include <optional>
#include <string>

namespace OV::Host
{

struct PresentationSettings;

} // namespace OV::Host

namespace OV::Host::Detail
{

/// As PresentationSettings::FromJSON, but for ranges and for what may throw: no more than memory
/// running out.
std::optional<PresentationSettings> ReadSettings(const std::string& text, std::string& error);

} // namespace OV::Host::Detail
