#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace OV::Host
{

/// A moment, with how the clocks of a place tell it.
struct ZonedTime
{
    /// Seconds of UTC since the start of 1970, 86,400 a day: leap seconds are not counted.
    std::int64_t seconds = 0;
    /// Minutes that the clocks are ahead of UTC: east is positive. -1080 to 1080.
    int offset = 0;

    /// Reads an ISO 8601 date and time with its offset from UTC: YYYY-MM-DDThh:mm, where :ss and a
    /// fraction of it may follow, then Z, +hh:mm, +hhmm or +hh, or the same with a minus. Years 1600
    /// to 2999 of the Gregorian calendar. A leap second, ss = 60, is the first of the next minute; a
    /// fraction is dropped.
    /// @param error on failure what is wrong with the text, as the end of a sentence. Untouched
    ///        otherwise.
    /// @param offsetElse of a text without an offset, in minutes; none refuses one.
    static std::optional<ZonedTime> Parse(const std::string& text, std::string& error,
                                          std::optional<int> offsetElse = std::nullopt);

    /// As the clocks show it: "2026-06-21".
    std::string Date() const;

    /// As the clocks show it: "15:00", or "15:00:30" where there are seconds.
    std::string Clock() const;

    /// "UTC", "UTC+2" or "UTC-3:30".
    std::string Zone() const;

    /// What Parse gives the same moment and offset for: "2026-06-21T15:00+02:00".
    std::string Text() const;
};

} // namespace OV::Host
