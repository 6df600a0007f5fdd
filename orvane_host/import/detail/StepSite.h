#pragma once

#include "orvane_host/import/ImportResult.h"

#include <istream>
#include <optional>

namespace OV::Host
{

/// Where a building of a STEP file (ISO 10303-21) stands.
struct StepSite
{
    /// Of the first site that tells a latitude and a longitude; none where both are 0, which stands
    /// for unknown.
    std::optional<ImportedPlace> place;
    /// Of the first geometric context that tells the true north, in degrees clockwise from the file's
    /// +Y, above -180 to 180.
    std::optional<double> north;
};

/// Reads a file of anyone's from start to end, with little memory. What is damaged or out of range
/// counts as not told; nothing throws but memory running out.
/// @param stream at its start, and such that it can go back there.
StepSite ReadStepSite(std::istream& stream);

} // namespace OV::Host
