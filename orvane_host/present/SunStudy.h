#pragma once

#include "orvane_host/view/ZonedTime.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace OV::Host
{

class Presentation;
struct SunMoment;

/// The times of a sun study: even steps from a first to a last one.
struct SunStudyTimes
{
    static constexpr int MostMoments = 1500;

    ZonedTime first;
    ZonedTime last;         ///< after the first, within 366 days
    int stepSeconds = 3600; ///< 1 or more, with at most MostMoments moments

    /// Reads FIRST/LAST/STEP, such as "2026-03-20T09:00+01:00/17:00/1h": the first and the last as
    /// ZonedTime::Parse has it, the last with or without its date and the step in hours and minutes,
    /// such as "30m" or "1h30m".
    /// @param error on failure what is wrong, as the end of a sentence. Untouched otherwise.
    /// @param offsetElse of times without an offset, in minutes; none refuses them.
    static std::optional<SunStudyTimes> Parse(const std::string& text, std::string& error,
                                              std::optional<int> offsetElse = std::nullopt);

    /// The first, and from there all steps up to the last one.
    std::vector<ZonedTime> Moments() const;

    /// From the first to the last of the moments.
    double Hours() const;
};

/// What the sun does to a presented model over a day. A study of settings without a sun, or with one by
/// direction, is refused, and so is one without a place.
class SunStudy
{
public:
    /// The moments at which the sun is up, each with the hours that it stands for: a step, and half of
    /// one at either end. Up to steps of three hours the sun is followed between them.
    /// @param error on failure one sentence. Untouched otherwise.
    static std::optional<std::vector<SunMoment>> MomentsOf(const Presentation& presentation,
                                                           const SunStudyTimes& times, std::string& error);

    /// Draws a picture of each moment in one view, each with its time in a strip below it, in a grid. GL;
    /// the framebuffer that is bound and the settings stay. What is picked next is picked in the size of
    /// one picture.
    /// @param width of the whole sheet, in pixels.
    /// @param rgba gets the sheet, opaque, the top row first.
    /// @param error on failure the reason and the remedy in one line. Untouched otherwise.
    static bool DrawSheet(Presentation& presentation, const SunStudyTimes& times, int width, int height,
                          std::vector<unsigned char>& rgba, std::string& error);

    /// Minutes that the clocks of a place are ahead of UTC by its longitude alone: whole hours.
    static int NominalOffset(double longitude);
};

} // namespace OV::Host
