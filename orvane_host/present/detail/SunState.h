#pragma once

#include "orvane_host/present/SunSettings.h"

#include <optional>
#include <string>

namespace OV::Host
{

struct ImportReport;

} // namespace OV::Host

namespace OV::Host::Detail
{

/// Works out where the sun stands by settings in range, for a model.
/// @param error on failure one sentence: what neither the settings nor the file tell. Untouched
///        otherwise.
/// @return none on failure.
std::optional<SunState> FindSun(const SunSettings& settings, const ImportReport& report, UpAxis upAxis,
                                std::string& error);

} // namespace OV::Host::Detail
