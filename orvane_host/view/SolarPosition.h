#pragma once

#include "orvane_host/view/ViewFit.h"
#include "orvane/math/Vector.h"

namespace OV::Host
{

struct ZonedTime;

/// A place on the earth, in degrees, north and east positive.
struct GeoPlace
{
    float latitude = 0.0f;  ///< -90 to 90
    float longitude = 0.0f; ///< -180 to 180
};

/// Where the sun stands in the sky of a place.
///
/// By the low-accuracy method of J. Meeus, "Astronomical Algorithms", chapter 25, with his sidereal
/// time, nutation, aberration and parallax. Against the IAU's routines at 100,000 places and moments
/// from 1900 to 2100 it was at most 0.011 degrees off, a fiftieth of the sun's disc, and 0.003 on
/// average; from 1600 to 2999 it is no worse, as far as the turning of the earth is known. UTC counts
/// for UT1, from which it is at most 0.9 seconds off, or 0.004 degrees, as long as leap seconds are
/// kept.
struct SolarPosition
{
    /// Degrees clockwise from true north, 0 to below 360.
    double azimuth = 0.0;
    /// Of the middle of the disc above the horizon, in degrees, as it is seen: refraction of air of
    /// 1010 hPa and 10 degrees Celsius lifts it, by 0.48 degrees at the horizon.
    double elevation = 0.0;
    /// As elevation, but where there is no air.
    double trueElevation = 0.0;

    static SolarPosition At(const ZonedTime& time, const GeoPlace& place);

    /// Whether there is direct light: the middle of the disc is seen above the horizon.
    bool IsUp() const { return elevation > 0.0; }

    /// From the model to the sun, of length 1, as it is seen.
    /// @param north where north lies, in degrees clockwise from the model's -Z seen from above, or from
    ///        its +Y with Z up.
    Vector Direction(float north, UpAxis upAxis) const;
};

} // namespace OV::Host
