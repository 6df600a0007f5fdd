#pragma once

#include "orvane_host/view/SolarPosition.h"
#include "orvane/math/Vector.h"

#include <optional>
#include <string>

namespace OV::Host
{

/// The sun of a picture: a direction, or else a time, a place and where north is. One of the two is needed.
struct SunSettings
{
    /// World space, from the model to the sun, of any length above 0. With one, nothing else of where
    /// the sun stands counts.
    std::optional<Vector> direction;
    /// As ZonedTime::Parse reads it, such as "2026-06-21T15:00+02:00".
    std::string time;
    /// None for the place that the model's file tells.
    std::optional<GeoPlace> place;
    /// Where north lies in the model: degrees clockwise from its -Z seen from above, or from its +Y
    /// where that is Z up. None for what the model's file tells, or else 0.
    std::optional<float> north;
};

/// Numbers are compared exactly, unlike those of Vector alone.
bool operator==(const GeoPlace& left, const GeoPlace& right);
bool operator==(const SunSettings& left, const SunSettings& right);

inline bool operator!=(const GeoPlace& left, const GeoPlace& right)
{
    return !(left == right);
}
inline bool operator!=(const SunSettings& left, const SunSettings& right)
{
    return !(left == right);
}

/// What settings of the sun come to for a model.
struct SunState
{
    /// World space, from the model to the sun, of length 1; none where there is no direct light.
    std::optional<Vector> direction;
    /// Where the sun stands in the sky; none for one by direction.
    std::optional<SolarPosition> position;
    /// Where north lies in the model, as SunSettings::north; none for a sun by direction.
    std::optional<float> north;
    /// For a person, one line about what the picture doesn't show by itself; empty where there is
    /// nothing to tell.
    std::string note;
};

} // namespace OV::Host
