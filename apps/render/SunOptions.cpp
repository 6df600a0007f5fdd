#include "apps/render/SunOptions.h"

#include "apps/render/OptionText.h"
#include "apps/render/Options.h"
#include "orvane_host/present/SunStudy.h"
#include "orvane_host/view/ZonedTime.h"

#include <CLI/CLI.hpp>

#include <cmath>
#include <vector>

namespace OV::RenderApp
{

namespace
{

/// Finite numbers between commas; none where anything else stands there.
std::optional<std::vector<float>> NumbersIn(const std::string& text)
{
    std::vector<float> numbers;
    for (const std::string& part : Split(text, ','))
    {
        const std::optional<float> number = ParseNumber<float>(part);
        if (!number || !std::isfinite(*number))
        {
            return std::nullopt;
        }
        numbers.push_back(*number);
    }
    return numbers;
}

Host::GeoPlace ParsePlace(const std::string& text)
{
    const std::optional<std::vector<float>> numbers = NumbersIn(text);
    if (!numbers || numbers->size() != 2 || std::abs(numbers->front()) > 90.0f || std::abs(numbers->back()) > 180.0f)
    {
        throw Bad("--place", text, "a place LAT,LON, -90 to 90 and -180 to 180, such as 52.52,13.40");
    }
    return {numbers->front(), numbers->back()};
}

Host::SunSettings ParseSun(const std::string& text)
{
    Host::SunSettings sun;
    const std::optional<std::vector<float>> numbers = NumbersIn(text);
    if (numbers && numbers->size() == 3)
    {
        const Vector direction((*numbers)[0], (*numbers)[1], (*numbers)[2]);
        const float length = std::hypot(direction.x, direction.y, direction.z);
        if (!(length > 0.0f) || !std::isfinite(length))
        {
            throw Bad("--sun", text, "a direction: it has no length");
        }
        sun.direction = direction;
        return sun;
    }
    std::string reason;
    if (!Host::ZonedTime::Parse(text, reason))
    {
        throw CLI::ValidationError("--sun", "'" + text + "' is no direction X,Y,Z and no time; for a time " + reason);
    }
    sun.time = text;
    return sun;
}

} // namespace

void DefineSunOptions(CLI::App& app, SunTexts& texts)
{
    const char* const group = "Sun";
    auto* const sun = app.add_option("--sun", texts.sun, "Light from where the sun stands: at a time with its offset\n"
                                                         "from UTC, such as 2026-06-21T15:00+02:00, at --place, with\n"
                                                         "north so many degrees clockwise from -Z as --north tells,\n"
                                                         "both of which a file may tell; or in a direction from the\n"
                                                         "model")
                          ->option_text("TIME|X,Y,Z")->group(group);
    app.add_option("--place", texts.place, "Latitude and longitude in degrees, north and east positive")
        ->option_text("LAT,LON")->group(group);
    auto* const study = app.add_option("--sun-study", texts.study, "Draw a sheet with a picture of each step of a day, such as\n"
                                                                   "2026-03-20T09:00/17:00/1h; without an offset from UTC in\n"
                                                                   "the whole hours that suit the longitude")
                            ->option_text("FIRST/LAST/STEP")->excludes(sun)->group(group);
    app.add_option("--sun-hours", texts.hours, "Draw the hours of sun of the study as a coloured map in\n"
                                               "place of the sheet: on the ground at the foot of the model\n"
                                               "or on a node, found as for --edit")
        ->option_text("ground|PATH")->needs(study)->group(group);
}

void InterpretSun(const SunTexts& texts, Options& options)
{
    if (texts.place && !texts.sun && !texts.study)
    {
        throw CLI::ValidationError("--place", "it is for --sun or --sun-study; name one of them");
    }
    if (texts.sun)
    {
        options.settings.sun = ParseSun(*texts.sun);
    }
    if (texts.study)
    {
        // What the clocks there show is known once the model is.
        std::string reason;
        const std::optional<Host::SunStudyTimes> times = Host::SunStudyTimes::Parse(*texts.study, reason, 0);
        if (!times)
        {
            throw CLI::ValidationError("--sun-study", "'" + *texts.study + "': " + reason);
        }
        options.study = SunStudyRequest{*texts.study, texts.hours.value_or(std::string())};
        options.settings.sun.emplace().time = times->first.Text();
        if (texts.hours && texts.hours->empty())
        {
            throw Bad("--sun-hours", *texts.hours, "ground or the name of a node");
        }
        if (!texts.hours && (options.pick || options.stats || options.output.empty()))
        {
            throw CLI::ValidationError("--sun-study", "a sheet needs -o OUT.png and is without --pick and --stats");
        }
    }
    if (!options.settings.sun)
    {
        return;
    }
    if (options.settings.sun->direction && texts.place)
    {
        throw CLI::ValidationError("--place", "a --sun by direction has none; leave it out");
    }
    if (texts.place)
    {
        options.settings.sun->place = ParsePlace(*texts.place);
    }
    options.settings.sun->north = options.settings.sheet.north;
    if (options.study && options.study->hours.empty() && !options.settings.shadows)
    {
        // They are what a study is for.
        options.settings.shadows.emplace();
    }
}

void DefineShadowOptions(CLI::App& app, ShadowTexts& texts)
{
    const char* const group = "Shadows of the sun";
    Host::ShadowSettings& look = texts.look;
    auto* shadows = app.add_option("--shadows", texts.kind, "Cast them, with hard rims or with soft ones")
        ->option_text("hard|soft")->group(group);
    app.add_option("--sun-width", look.sunWidth, "Width of the sun in the sky, for soft rims; 0.53 if left\n"
                                                 "out")
        ->option_text("DEG")->needs(shadows)->group(group);
    app.add_option("--shadow-darkness", look.darkness, "Share of their colours that shadows take in crosshatch,\n"
                                                       "monotone and vertex-color; 0.35 if left out")
        ->option_text("SHARE")->needs(shadows)->group(group);
    app.add_flag("--clipped-casts", look.clippedCasts, "Let what is cut away cast its shadow too")
        ->needs(shadows)->group(group);
}

void InterpretShadows(const ShadowTexts& texts, Host::PresentationSettings& settings)
{
    if (texts.kind)
    {
        if (*texts.kind != "hard" && *texts.kind != "soft")
        {
            throw CLI::ValidationError("--shadows", "shadows are hard or soft");
        }
        settings.shadows = texts.look;
        settings.shadows->soft = *texts.kind == "soft";
        // Written so that what is not a number fails.
        if (!(texts.look.sunWidth > 0.0f && texts.look.sunWidth <= 20.0f))
        {
            throw CLI::ValidationError("--sun-width", "a width is above 0 and at most 20");
        }
        if (!(texts.look.darkness >= 0.0f && texts.look.darkness <= 1.0f))
        {
            throw CLI::ValidationError("--shadow-darkness", "a share is 0 to 1");
        }
    }
}

} // namespace OV::RenderApp
