#include "orvane_host/view/ZonedTime.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

namespace OV::Host::Test
{

namespace
{

std::int64_t SecondsOf(const std::string& text)
{
    std::string error;
    const std::optional<ZonedTime> time = ZonedTime::Parse(text, error);
    EXPECT_TRUE(time) << text << ": " << error;
    return time ? time->seconds : -1;
}

std::string TroubleOf(const std::string& text)
{
    std::string error;
    EXPECT_FALSE(ZonedTime::Parse(text, error)) << text;
    return error;
}

} // namespace

TEST(ZonedTime, CountsTheSecondsOfUTC)
{
    EXPECT_EQ(SecondsOf("1970-01-01T00:00Z"), 0);
    EXPECT_EQ(SecondsOf("2026-06-21T15:00+02:00"), 1782046800);
    EXPECT_EQ(SecondsOf("2026-06-21T13:00Z"), 1782046800);
    EXPECT_EQ(SecondsOf("2026-06-21T08:30:00-0430"), 1782046800);
    EXPECT_EQ(SecondsOf("2026-06-22T02:45+13:45"), 1782046800);
}

TEST(ZonedTime, ReadsEveryFormOfTheOffset)
{
    const std::int64_t noon = SecondsOf("2000-02-29T12:00:00Z");
    EXPECT_EQ(noon, 951825600);
    for (const char* text : {"2000-02-29T12:00Z", "2000-02-29T12:00+00:00", "2000-02-29T12:00-00:00",
                             "2000-02-29T13:00+01", "2000-02-29T13:00+0100", "2000-02-29T06:30-05:30",
                             "2000-03-01T06:00+18:00", "2000-02-28T18:00-18:00", "2000-02-29T12:00:00.999Z",
                             "2000-02-29T12:00:00,5Z"})
    {
        EXPECT_EQ(SecondsOf(text), noon) << text;
    }
    EXPECT_EQ(SecondsOf("2000-02-29T12:00:07Z"), noon + 7);
}

TEST(ZonedTime, TakesALeapSecondForTheNextMinute)
{
    EXPECT_EQ(SecondsOf("2016-12-31T23:59:60Z"), SecondsOf("2017-01-01T00:00:00Z"));
}

TEST(ZonedTime, RefusesWhatIsNoTimeWithTheReason)
{
    const std::string form = "it has to be a date and time with an offset, such as 2026-06-21T15:00+02:00";
    for (const char* text :
         {"", "now", "2026-06-21", "2026-06-21 15:00Z", "2026-06-21T15Z", "2026-6-21T15:00Z", "26-06-21T15:00Z",
          "2026-06-21T15:00z", "2026-06-21T15:00Zx", "2026-06-21T15:00 Z", "2026-06-21T15:00+2", "2026-06-21T15:00+2:00",
          "2026-06-21T15:00+02:0", "2026-06-21T15:00+02:", "2026-06-21T15:00+02:000", "2026-06-21T15:00:Z",
          "2026-06-21T15:00:00.Z", "+2026-06-21T15:00Z", "-2026-06-21T15:00Z", "20260621T1500Z", " 2026-06-21T15:00Z",
          "2026-06-21T15:00+", "2026-06-21T1\xC2\xB2:00Z", "9999999999-06-21T15:00Z"})
    {
        EXPECT_EQ(TroubleOf(text), form) << text;
    }
    EXPECT_EQ(TroubleOf(std::string("2026-06-21T15:00Z\0", 18)), form);
    const std::pair<const char*, const char*> cases[] = {
        {"2026-06-21T15:00", "it lacks the offset from UTC, such as Z or +02:00"},
        {"2026-00-21T15:00Z", "the month has to be 01 to 12"},
        {"2026-13-21T15:00Z", "the month has to be 01 to 12"},
        {"2026-06-00T15:00Z", "the day has to be 01 to 30 in that month"},
        {"2026-06-31T15:00Z", "the day has to be 01 to 30 in that month"},
        {"2026-02-29T15:00Z", "the day has to be 01 to 28 in that month"},
        {"2028-02-30T15:00Z", "the day has to be 01 to 29 in that month"},
        {"1900-02-29T15:00Z", "the day has to be 01 to 28 in that month"},
        {"2026-06-21T24:00Z", "the time has to be 00:00:00 to 23:59:60"},
        {"2026-06-21T15:60Z", "the time has to be 00:00:00 to 23:59:60"},
        {"2026-06-21T15:00:61Z", "the time has to be 00:00:00 to 23:59:60"},
        {"2026-06-21T15:00+18:01", "the offset has to be -18:00 to +18:00"},
        {"2026-06-21T15:00-19:00", "the offset has to be -18:00 to +18:00"},
        {"2026-06-21T15:00+02:60", "the offset has to be -18:00 to +18:00"},
        {"1599-12-31T15:00Z", "the year has to be 1600 to 2999"},
        {"3000-01-01T15:00Z", "the year has to be 1600 to 2999"},
    };
    for (const auto& [text, trouble] : cases)
    {
        EXPECT_EQ(TroubleOf(text), trouble) << text;
    }
    EXPECT_EQ(SecondsOf("1600-02-29T00:00Z"), -11670998400);
    EXPECT_EQ(SecondsOf("2999-12-31T23:59:59Z"), 32503679999);
}

TEST(ZonedTime, MayGetItsOffsetFromElsewhere)
{
    std::string error;
    const std::optional<ZonedTime> here = ZonedTime::Parse("2026-06-21T15:00", error, 120);
    ASSERT_TRUE(here);
    EXPECT_EQ(here->seconds, 1782046800);
    EXPECT_EQ(here->offset, 120);
    const std::optional<ZonedTime> there = ZonedTime::Parse("2026-06-21T13:00Z", error, 120);
    ASSERT_TRUE(there);
    EXPECT_EQ(there->seconds, 1782046800);
    EXPECT_EQ(there->offset, 0);
    EXPECT_EQ(error, "");
}

TEST(ZonedTime, IsShownAsItsClocksShowIt)
{
    const struct
    {
        const char* text;
        const char* date;
        const char* clock;
        const char* zone;
        const char* again;
    } cases[] = {
        {"2026-06-21T15:00+02:00", "2026-06-21", "15:00", "UTC+2", "2026-06-21T15:00+02:00"},
        {"2026-06-21T15:00:09-0330", "2026-06-21", "15:00:09", "UTC-3:30", "2026-06-21T15:00:09-03:30"},
        {"2000-02-29T23:59Z", "2000-02-29", "23:59", "UTC", "2000-02-29T23:59Z"},
        {"1999-12-31T23:30-01", "1999-12-31", "23:30", "UTC-1", "1999-12-31T23:30-01:00"},
        {"1600-01-01T00:00+05:45", "1600-01-01", "00:00", "UTC+5:45", "1600-01-01T00:00+05:45"},
        {"1969-12-31T23:59:59Z", "1969-12-31", "23:59:59", "UTC", "1969-12-31T23:59:59Z"},
    };
    for (const auto& wanted : cases)
    {
        std::string error;
        const std::optional<ZonedTime> time = ZonedTime::Parse(wanted.text, error);
        ASSERT_TRUE(time) << wanted.text << ": " << error;
        EXPECT_EQ(time->Date(), wanted.date);
        EXPECT_EQ(time->Clock(), wanted.clock);
        EXPECT_EQ(time->Zone(), wanted.zone);
        EXPECT_EQ(time->Text(), wanted.again);
    }
    // Every day of four centuries follows the one before.
    ZonedTime day;
    std::string error;
    day.seconds = SecondsOf("1600-01-01T12:00Z");
    for (int i = 0; i < 146097; ++i, day.seconds += 86400)
    {
        ASSERT_EQ(SecondsOf(day.Date() + "T12:00Z"), day.seconds) << i;
    }
    EXPECT_EQ(day.Date(), "2000-01-01");
}

} // namespace OV::Host::Test
