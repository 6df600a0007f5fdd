#include "orvane_host/view/SolarPosition.h"

#include "orvane_host/view/ZonedTime.h"

#include <algorithm>
#include <cmath>

namespace OV::Host
{

namespace
{

constexpr double kPi = 3.14159265358979323846;

double Sin(double degrees)
{
    return std::sin(degrees * kPi / 180.0);
}

double Cos(double degrees)
{
    return std::cos(degrees * kPi / 180.0);
}

double Degrees(double radians)
{
    return radians * 180.0 / kPi;
}

/// In 0 to below 360.
double Turn(double degrees)
{
    const double turn = std::fmod(degrees, 360.0);
    const double positive = turn < 0.0 ? turn + 360.0 : turn;
    return positive < 360.0 ? positive : 0.0;
}

/// Seconds by which the even time of the sun's path is ahead of UTC: the long-term parabola of Morrison
/// and Stephenson. From 1900 to 2100 it is less than a minute off, or 0.0007 degrees.
double DynamicalLead(double centuries)
{
    const double since1820 = centuries + 1.8;
    return -20.0 + 32.0 * since1820 * since1820;
}

/// Seen from the middle of the earth, in degrees.
struct Equatorial
{
    double rightAscension;
    double declination;
    double distance;  ///< in mean distances of the sun
    double equinoxes; ///< by which apparent sidereal time is ahead of the mean one
};

/// @param t centuries of dynamical time since 2000, January 1.5.
Equatorial SunAt(double t)
{
    const double meanLongitude = 280.46646 + t * (36000.76983 + t * 0.0003032);
    const double meanAnomaly = 357.52911 + t * (35999.05029 - t * 0.0001537);
    const double eccentricity = 0.016708634 - t * (0.000042037 + t * 0.0000001267);
    const double center = (1.914602 - t * (0.004817 + t * 0.000014)) * Sin(meanAnomaly)
        + (0.019993 - t * 0.000101) * Sin(2.0 * meanAnomaly) + 0.000289 * Sin(3.0 * meanAnomaly);
    const double distance = 1.000001018 * (1.0 - eccentricity * eccentricity)
        / (1.0 + eccentricity * Cos(meanAnomaly + center));
    const double node = 125.04 - 1934.136 * t;
    const double nutation = -0.00478 * Sin(node);
    const double aberration = -0.00569;
    const double longitude = meanLongitude + center + aberration + nutation;
    const double obliquity =
        23.0 + (26.0 + (21.448 - t * (46.8150 + t * (0.00059 - t * 0.001813))) / 60.0) / 60.0 + 0.00256 * Cos(node);
    return {Degrees(std::atan2(Cos(obliquity) * Sin(longitude), Cos(longitude))),
            Degrees(std::asin(Sin(obliquity) * Sin(longitude))), distance, nutation * Cos(obliquity)};
}

/// By how many degrees air lifts what it shows: after Saemundsson, whose formula ends a little below
/// the horizon.
double Refraction(double trueElevation)
{
    constexpr double lowest = -1.0;
    const double h = std::max(trueElevation, lowest);
    const double lift = 1.02 / 60.0 / std::tan((h + 10.3 / (h + 5.11)) * kPi / 180.0);
    return std::max(lift, 0.0);
}

} // namespace

SolarPosition SolarPosition::At(const ZonedTime& time, const GeoPlace& place)
{
    // 2000, January 1.5, is so many seconds after the start of 1970.
    const double days = (static_cast<double>(time.seconds) - 946728000.0) / 86400.0;
    const double t = days / 36525.0;
    const Equatorial sun = SunAt(t + DynamicalLead(t) / 86400.0 / 36525.0);
    const double sidereal =
        280.46061837 + 360.98564736629 * days + t * t * (0.000387933 - t / 38710000.0) + sun.equinoxes;
    const double hourAngle = sidereal + place.longitude - sun.rightAscension;

    const double latitude = place.latitude;
    const double east = -Cos(sun.declination) * Sin(hourAngle);
    const double north =
        Cos(latitude) * Sin(sun.declination) - Sin(latitude) * Cos(sun.declination) * Cos(hourAngle);
    const double up = Sin(latitude) * Sin(sun.declination) + Cos(latitude) * Cos(sun.declination) * Cos(hourAngle);
    const double fromMiddle = Degrees(std::atan2(up, std::hypot(east, north)));
    const double parallax = 8.794 / 3600.0 / sun.distance * Cos(fromMiddle);

    SolarPosition position;
    position.azimuth = Turn(Degrees(std::atan2(east, north)));
    position.trueElevation = fromMiddle - parallax;
    position.elevation = position.trueElevation + Refraction(position.trueElevation);
    return position;
}

Vector SolarPosition::Direction(float north, UpAxis upAxis) const
{
    const double heading = azimuth + north;
    const auto right = static_cast<float>(Cos(elevation) * Sin(heading));
    const auto ahead = static_cast<float>(Cos(elevation) * Cos(heading));
    const auto up = static_cast<float>(Sin(elevation));
    return upAxis == UpAxis::Y ? Vector(right, up, -ahead) : Vector(right, ahead, up);
}

} // namespace OV::Host
