#include "orvane_host/view/ZonedTime.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>

namespace OV::Host
{

namespace
{

constexpr int kFirstYear = 1600;
constexpr int kLastYear = 2999;
constexpr int kMostOffset = 18 * 60;
constexpr std::int64_t kDay = 86400;

constexpr const char* kForm = "it has to be a date and time with an offset, such as 2026-06-21T15:00+02:00";

struct Date
{
    std::int64_t year;
    int month;
    int day;
};

int DaysIn(int year, int month)
{
    constexpr std::array<int, 12> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool isLeap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    return days[static_cast<std::size_t>(month - 1)] + (month == 2 && isLeap ? 1 : 0);
}

/// Days since the start of 1970. Years begin in March here, so that the odd day is the last one.
std::int64_t DaysOf(const Date& date)
{
    const std::int64_t year = date.year - (date.month <= 2 ? 1 : 0);
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * (date.month + (date.month > 2 ? -3 : 9)) + 2) / 5 + date.day - 1;
    return era * 146097 + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear - 719468;
}

Date DateOf(std::int64_t days)
{
    days += 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const std::int64_t dayOfEra = days - era * 146097;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t month = (5 * dayOfYear + 2) / 153;
    const int day = static_cast<int>(dayOfYear - (153 * month + 2) / 5 + 1);
    return {yearOfEra + era * 400 + (month >= 10 ? 1 : 0), static_cast<int>(month < 10 ? month + 3 : month - 9), day};
}

std::int64_t FloorDivide(std::int64_t value, std::int64_t by)
{
    return value / by - (value % by < 0 ? 1 : 0);
}

/// Takes a text from left to right.
class Scanner
{
public:
    explicit Scanner(const std::string& text) : m_text(text) {}

    bool IsAtEnd() const { return m_at == m_text.size(); }

    bool Take(char wanted)
    {
        const bool isThere = !IsAtEnd() && m_text[m_at] == wanted;
        m_at += isThere ? 1 : 0;
        return isThere;
    }

    /// Exactly so many digits.
    bool Take(int digits, int& number)
    {
        number = 0;
        for (int i = 0; i < digits; ++i)
        {
            if (!IsDigit())
            {
                return false;
            }
            number = number * 10 + (m_text[m_at++] - '0');
        }
        return true;
    }

    /// One digit or more, whatever they are.
    bool TakeFraction()
    {
        const std::size_t from = m_at;
        while (IsDigit())
        {
            ++m_at;
        }
        return m_at > from;
    }

private:
    bool IsDigit() const { return !IsAtEnd() && m_text[m_at] >= '0' && m_text[m_at] <= '9'; }

    const std::string& m_text;
    std::size_t m_at = 0;
};

/// The parts of a text, in the order in which they stand there.
struct Parts
{
    int year = 0;
    int month = 0;
    int day = 0;
    int hour = 0;
    int minute = 0;
    int second = 0;
    bool hasOffset = false;
    bool isWest = false;
    int offsetHour = 0;
    int offsetMinute = 0;

    bool Read(const std::string& text)
    {
        Scanner scan(text);
        if (!scan.Take(4, year) || !scan.Take('-') || !scan.Take(2, month) || !scan.Take('-') || !scan.Take(2, day)
            || !scan.Take('T') || !scan.Take(2, hour) || !scan.Take(':') || !scan.Take(2, minute))
        {
            return false;
        }
        if (scan.Take(':')
            && (!scan.Take(2, second) || ((scan.Take('.') || scan.Take(',')) && !scan.TakeFraction())))
        {
            return false;
        }
        hasOffset = !scan.IsAtEnd();
        if (!hasOffset || scan.Take('Z'))
        {
            return scan.IsAtEnd();
        }
        isWest = scan.Take('-');
        if ((!isWest && !scan.Take('+')) || !scan.Take(2, offsetHour))
        {
            return false;
        }
        return scan.IsAtEnd() || ((scan.Take(':') || true) && scan.Take(2, offsetMinute) && scan.IsAtEnd());
    }

    /// Empty where all parts are such as there are.
    std::string Trouble() const
    {
        if (year < kFirstYear || year > kLastYear)
        {
            return "the year has to be " + std::to_string(kFirstYear) + " to " + std::to_string(kLastYear);
        }
        if (month < 1 || month > 12)
        {
            return "the month has to be 01 to 12";
        }
        if (day < 1 || day > DaysIn(year, month))
        {
            return "the day has to be 01 to " + std::to_string(DaysIn(year, month)) + " in that month";
        }
        if (hour > 23 || minute > 59 || second > 60)
        {
            return "the time has to be 00:00:00 to 23:59:60";
        }
        if (offsetMinute > 59 || offsetHour * 60 + offsetMinute > kMostOffset)
        {
            return "the offset has to be -18:00 to +18:00";
        }
        return {};
    }
};

std::string TwoDigits(std::int64_t number)
{
    return (number < 10 ? "0" : "") + std::to_string(number);
}

} // namespace

std::optional<ZonedTime> ZonedTime::Parse(const std::string& text, std::string& error, std::optional<int> offsetElse)
{
    Parts parts;
    const bool isRead = parts.Read(text);
    const std::string trouble = !isRead ? kForm
        : !parts.hasOffset && !offsetElse ? "it lacks the offset from UTC, such as Z or +02:00"
                                          : parts.Trouble();
    if (!trouble.empty())
    {
        error = trouble;
        return std::nullopt;
    }
    const int offset = parts.offsetHour * 60 + parts.offsetMinute;
    ZonedTime time;
    time.offset = parts.hasOffset ? (parts.isWest ? -offset : offset) : *offsetElse;
    time.seconds = DaysOf({parts.year, parts.month, parts.day}) * kDay + parts.hour * 3600 + parts.minute * 60
        + parts.second - time.offset * 60;
    return time;
}

std::string ZonedTime::Date() const
{
    const Host::Date date = DateOf(FloorDivide(seconds + offset * 60, kDay));
    return std::to_string(date.year) + "-" + TwoDigits(date.month) + "-" + TwoDigits(date.day);
}

std::string ZonedTime::Clock() const
{
    const std::int64_t local = seconds + offset * 60;
    const std::int64_t ofDay = local - FloorDivide(local, kDay) * kDay;
    const std::int64_t second = ofDay % 60;
    return TwoDigits(ofDay / 3600) + ":" + TwoDigits(ofDay / 60 % 60) + (second != 0 ? ":" + TwoDigits(second) : "");
}

std::string ZonedTime::Zone() const
{
    const int minutes = offset < 0 ? -offset : offset;
    return offset == 0 ? "UTC"
                       : (offset < 0 ? "UTC-" : "UTC+") + std::to_string(minutes / 60)
            + (minutes % 60 != 0 ? ":" + TwoDigits(minutes % 60) : "");
}

std::string ZonedTime::Text() const
{
    const int minutes = offset < 0 ? -offset : offset;
    return Date() + "T" + Clock()
        + (offset == 0 ? "Z" : (offset < 0 ? "-" : "+") + TwoDigits(minutes / 60) + ":" + TwoDigits(minutes % 60));
}

} // namespace OV::Host
