#pragma once

#include "orvane_host/present/detail/SettingsText.h"

#include <optional>
#include <string>

namespace OV::Host::Detail
{

/// Reads JSON text that anyone may have written: not too long, not too deep, no name twice in one
/// object.
/// @param error on failure one sentence. Untouched otherwise.
std::optional<ReadJson> ParseJson(const std::string& text, std::string& error);

} // namespace OV::Host::Detail
