#include "orvane_host/view/SolarPosition.h"

#include "orvane_host/view/ZonedTime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace OV::Host::Test
{

namespace
{

constexpr double kPi = 3.14159265358979323846;

/// What the method is good for, with a little room.
constexpr double kAccuracy = 0.012;

ZonedTime At(const std::string& text)
{
    std::string error;
    const std::optional<ZonedTime> time = ZonedTime::Parse(text, error);
    EXPECT_TRUE(time) << text << ": " << error;
    return time.value_or(ZonedTime());
}

/// Between two places in the sky, in degrees. From their chord: an arc cosine tells no small angles.
double Apart(double azimuth, double elevation, double otherAzimuth, double otherElevation)
{
    const auto x = [](double az, double el) { return std::cos(el * kPi / 180) * std::sin(az * kPi / 180); };
    const auto y = [](double az, double el) { return std::cos(el * kPi / 180) * std::cos(az * kPi / 180); };
    const auto z = [](double el) { return std::sin(el * kPi / 180); };
    return 180.0 / kPi
        * std::hypot(x(azimuth, elevation) - x(otherAzimuth, otherElevation),
                     y(azimuth, elevation) - y(otherAzimuth, otherElevation), z(elevation) - z(otherElevation));
}

struct Sight
{
    const char* label;
    const char* time;
    GeoPlace place;
    double azimuth;
    double elevation; ///< without air
};

const Sight kPublished[] = {
    // The worked example of I. Reda and A. Andreas, "Solar Position Algorithm for Solar Radiation
    // Applications", NREL/TP-560-34302, revised 2008, appendix A.5.
    {"Golden, Colorado", "2003-10-17T12:30:30-07:00", {39.742476f, -105.1786f}, 194.340241, 39.872046},
};

/// By the routines of the IAU (SOFA: Epv00, Pnm06a, Gst06a, Ab), seen from the surface.
const Sight kByTheIAU[] = {
    {"Berlin, an afternoon in June", "2026-06-21T15:00+02:00", {52.52f, 13.4f}, 226.981870, 53.980743},
    {"Berlin, an afternoon in December", "2026-12-21T14:00+01:00", {52.52f, 13.4f}, 206.738130, 9.972892},
    {"Sydney, a morning in January", "1988-01-26T09:00+11:00", {-33.87f, 151.21f}, 91.481499, 33.468743},
    {"Ushuaia, noon in June", "2050-06-21T12:00-03:00", {-54.8f, -68.3f}, 22.014070, 9.149905},
    {"Nairobi, the sun in the north", "1975-07-04T12:30+03:00", {-1.29f, 36.82f}, 3.889899, 65.733068},
    {"Quito, the sun in the south", "2010-12-21T11:00-05:00", {-0.18f, -78.47f}, 144.332431, 60.907136},
    {"Longyearbyen, midnight in summer", "2026-06-21T00:00+02:00", {78.22f, 15.64f}, 346.152027, 12.017883},
    {"Longyearbyen, noon in winter", "2026-12-21T12:00+01:00", {78.22f, 15.64f}, 181.057679, -11.661321},
    {"McMurdo, midnight in summer", "2000-12-21T00:00+13:00", {-77.85f, 166.67f}, 205.972095, 12.582880},
    {"McMurdo, noon in winter", "2000-06-21T12:00+12:00", {-77.85f, 166.67f}, 12.870176, -11.614024},
    {"Suva, east of the date line", "2026-03-20T06:00-11:00", {-18.1f, -178.4f}, 94.803254, -14.486721},
    {"London, long ago", "1900-05-01T10:00Z", {51.48f, 0.0f}, 136.530809, 46.656363},
    {"London, to come", "2100-09-01T10:00Z", {51.48f, 0.0f}, 139.610902, 40.145953},
};

} // namespace

TEST(SolarPosition, IsWhereThePublishedExampleHasIt)
{
    for (const Sight& sight : kPublished)
    {
        const SolarPosition sun = SolarPosition::At(At(sight.time), sight.place);
        EXPECT_LT(Apart(sun.azimuth, sun.trueElevation, sight.azimuth, sight.elevation), kAccuracy) << sight.label;
    }
}

TEST(SolarPosition, IsWhereTheRoutinesOfTheIAUHaveIt)
{
    for (const Sight& sight : kByTheIAU)
    {
        const SolarPosition sun = SolarPosition::At(At(sight.time), sight.place);
        EXPECT_LT(Apart(sun.azimuth, sun.trueElevation, sight.azimuth, sight.elevation), kAccuracy)
            << sight.label << ": " << sun.azimuth << ", " << sun.trueElevation;
    }
}

TEST(SolarPosition, HasTheDeclinationOfThePublishedExample)
{
    // Seen from a pole the elevation is the declination, but for the parallax. J. Meeus, "Astronomical
    // Algorithms", example 25.a: 1992, October 13, 0h of dynamical time, 59 seconds ahead of UTC.
    const SolarPosition north = SolarPosition::At(At("1992-10-12T23:59:01Z"), {90.0f, 0.0f});
    const SolarPosition south = SolarPosition::At(At("1992-10-12T23:59:01Z"), {-90.0f, 0.0f});
    EXPECT_NEAR(north.trueElevation + 8.794 / 3600.0, -7.78507, 2e-4);
    EXPECT_NEAR(south.trueElevation + 8.794 / 3600.0, 7.78507, 2e-4);
}

TEST(SolarPosition, CrossesTheEquatorAndTurnsWhenTheAlmanacSays)
{
    // Equinoxes and solstices of 2026, to the minute.
    const auto declination = [](const char* time)
    { return SolarPosition::At(At(time), {90.0f, 0.0f}).trueElevation + 8.794 / 3600.0; };
    EXPECT_NEAR(declination("2026-03-20T14:46Z"), 0.0, 0.005);
    EXPECT_NEAR(declination("2026-09-23T00:05Z"), 0.0, 0.005);
    EXPECT_NEAR(declination("2026-06-21T08:24Z"), 23.436, 0.005);
    EXPECT_NEAR(declination("2026-12-21T20:50Z"), -23.436, 0.005);
    EXPECT_LT(declination("2026-03-20T13:46Z"), declination("2026-03-20T15:46Z"));
    EXPECT_GT(declination("2026-09-22T23:05Z"), declination("2026-09-23T01:05Z"));
}

TEST(SolarPosition, IsUpAllDayInPolarSummerAndNeverInPolarNight)
{
    const GeoPlace places[] = {{78.22f, 15.64f}, {-77.85f, 166.67f}};
    for (int i = 0; i < 2; ++i)
    {
        for (int hour = 0; hour < 24; ++hour)
        {
            const std::string clock = (hour < 10 ? "0" : "") + std::to_string(hour) + ":00Z";
            EXPECT_EQ(SolarPosition::At(At("2026-06-21T" + clock), places[i]).IsUp(), i == 0) << hour;
            EXPECT_EQ(SolarPosition::At(At("2026-12-21T" + clock), places[i]).IsUp(), i == 1) << hour;
        }
    }
}

TEST(SolarPosition, IsLiftedByTheAir)
{
    // Sunrise in Greenwich on 2026-03-20 is 06:03 to the minute, of the upper rim: 0.27 degrees above
    // the middle.
    const GeoPlace greenwich{51.48f, 0.0f};
    EXPECT_NEAR(SolarPosition::At(At("2026-03-20T06:03Z"), greenwich).elevation, -0.27, 0.15);
    double last = -90.0;
    for (int minute = 10; minute < 12 * 60; ++minute)
    {
        ZonedTime time = At("2026-03-20T00:00Z");
        time.seconds += 60 * minute;
        const SolarPosition sun = SolarPosition::At(time, greenwich);
        const double lift = sun.elevation - sun.trueElevation;
        EXPECT_GE(lift, 0.0) << minute;
        EXPECT_LE(lift, 0.66) << minute;
        EXPECT_GT(sun.elevation, last) << minute << ": it only rises";
        last = sun.elevation;
        if (std::abs(sun.trueElevation) < 0.1)
        {
            EXPECT_NEAR(lift, 0.48, 0.03);
        }
        if (std::abs(sun.trueElevation - 30.0) < 0.1)
        {
            EXPECT_NEAR(lift, 1.76 / 60.0, 0.002);
        }
    }
}

TEST(SolarPosition, HasADirectionInTheModel)
{
    const auto direction = [](double azimuth, double elevation, float north, UpAxis up)
    {
        SolarPosition sun;
        sun.azimuth = azimuth;
        sun.elevation = elevation;
        return sun.Direction(north, up);
    };
    const float half = std::sqrt(0.5f);
    // North is -Z, and east is to the right of it.
    EXPECT_EQ(direction(0, 0, 0, UpAxis::Y), Vector(0, 0, -1));
    EXPECT_EQ(direction(90, 0, 0, UpAxis::Y), Vector(1, 0, 0));
    EXPECT_EQ(direction(180, 45, 0, UpAxis::Y), Vector(0, half, half));
    EXPECT_EQ(direction(270, 0, 0, UpAxis::Y), Vector(-1, 0, 0));
    EXPECT_EQ(direction(0, 90, 0, UpAxis::Y), Vector(0, 1, 0));
    // Where north is to the right, east is in front.
    EXPECT_EQ(direction(0, 0, 90, UpAxis::Y), Vector(1, 0, 0));
    EXPECT_EQ(direction(90, 0, 90, UpAxis::Y), Vector(0, 0, 1));
    EXPECT_EQ(direction(90, 0, -270, UpAxis::Y), Vector(0, 0, 1));
    EXPECT_EQ(direction(0, 0, 0, UpAxis::Z), Vector(0, 1, 0));
    EXPECT_EQ(direction(90, 45, 0, UpAxis::Z), Vector(half, 0, half));
    EXPECT_EQ(direction(0, 0, 90, UpAxis::Z), Vector(1, 0, 0));
}

TEST(SolarPosition, StandsInTheSouthAtNoonInTheNorthAndTheOtherWayRound)
{
    const SolarPosition berlin = SolarPosition::At(At("2026-06-21T13:08+02:00"), {52.52f, 13.4f});
    EXPECT_NEAR(berlin.azimuth, 180.0, 1.0);
    EXPECT_NEAR(berlin.trueElevation, 90.0 - 52.52 + 23.436, 0.02);
    const SolarPosition sydney = SolarPosition::At(At("2026-06-21T11:57+10:00"), {-33.87f, 151.21f});
    EXPECT_NEAR(std::fmod(sydney.azimuth + 180.0, 360.0), 180.0, 1.0);
    EXPECT_NEAR(sydney.trueElevation, 90.0 - 33.87 - 23.436, 0.02);
}

} // namespace OV::Host::Test
