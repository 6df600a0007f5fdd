#include "orvane_host/present/detail/SunState.h"

#include "orvane_host/import/ImportResult.h"
#include "orvane_host/view/ZonedTime.h"

#include <cmath>
#include <cstdio>

namespace OV::Host::Detail
{

namespace
{

/// In double, since the squares of what floats hold may be no floats.
Vector UnitOf(const Vector& direction)
{
    const double x = direction.x;
    const double y = direction.y;
    const double z = direction.z;
    const double length = std::hypot(x, y, z);
    return Vector(static_cast<float>(x / length), static_cast<float>(y / length), static_cast<float>(z / length));
}

std::string InDegrees(double degrees)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", degrees);
    return text;
}

} // namespace

std::optional<SunState> FindSun(const SunSettings& settings, const ImportReport& report, UpAxis upAxis,
                                std::string& error)
{
    SunState state;
    if (settings.direction)
    {
        state.direction = UnitOf(*settings.direction);
        return state;
    }
    std::optional<GeoPlace> place = settings.place;
    if (!place && report.place)
    {
        place = {static_cast<float>(report.place->latitude), static_cast<float>(report.place->longitude)};
    }
    if (!place)
    {
        error = "sun.place is missing, and the model's file tells none; it has to be a latitude and a longitude";
        return std::nullopt;
    }
    std::string reason;
    const std::optional<ZonedTime> time = ZonedTime::Parse(settings.time, reason);
    if (!time)
    {
        error = "sun.time: " + reason;
        return std::nullopt;
    }
    state.north = settings.north.value_or(static_cast<float>(report.north.value_or(0.0)));
    state.position = SolarPosition::At(*time, *place);
    if (state.position->IsUp())
    {
        state.direction = state.position->Direction(*state.north, upAxis);
    }
    else
    {
        state.note = "the sun is " + InDegrees(-state.position->trueElevation) + " degrees below the horizon at "
            + time->Text() + ": there is no direct light";
    }
    return state;
}

} // namespace OV::Host::Detail
