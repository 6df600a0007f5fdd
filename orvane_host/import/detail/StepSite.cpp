#include "orvane_host/import/detail/StepSite.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace OV::Host
{

namespace
{

constexpr double kPi = 3.14159265358979323846;

/// Names and descriptions of a site may be long; what is longer still is passed over.
constexpr std::size_t kMostInstance = 65536;

bool IsSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/// Gives the instances of a file one after another, without white space and comments outside of
/// strings, and without the semicolon.
class InstanceReader
{
public:
    explicit InstanceReader(std::istream& stream) : m_stream(stream) {}

    /// @param instance empty for one that is too long.
    /// @return false at the end, where what no semicolon ends is dropped.
    bool Next(std::string& instance)
    {
        instance.clear();
        bool isInString = false;
        bool isTooLong = false;
        char c = 0;
        while (Take(c))
        {
            if (!isInString && c == '/' && Peek() == '*')
            {
                SkipComment();
                continue;
            }
            if (!isInString && c == ';')
            {
                if (isTooLong)
                {
                    instance.clear();
                }
                return true;
            }
            // Two quotes within a string leave it and come back.
            isInString = c == '\'' ? !isInString : isInString;
            isTooLong = isTooLong || instance.size() >= kMostInstance;
            if (!isTooLong && (isInString || !IsSpace(c)))
            {
                instance += c;
            }
        }
        return false;
    }

private:
    bool Fill()
    {
        if (m_at == m_end)
        {
            m_stream.read(m_block.data(), static_cast<std::streamsize>(m_block.size()));
            m_at = 0;
            m_end = static_cast<std::size_t>(std::max<std::streamsize>(m_stream.gcount(), 0));
        }
        return m_at < m_end;
    }

    bool Take(char& c)
    {
        const bool isThere = Fill();
        c = isThere ? m_block[m_at++] : '\0';
        return isThere;
    }

    char Peek() { return Fill() ? m_block[m_at] : '\0'; }

    void SkipComment()
    {
        char before = 0;
        char c = 0;
        Take(c); // the star
        c = 0;
        while (!(before == '*' && c == '/'))
        {
            before = c;
            if (!Take(c))
            {
                return;
            }
        }
    }

    std::istream& m_stream;
    std::array<char, 65536> m_block;
    std::size_t m_at = 0;
    std::size_t m_end = 0;
};

/// The parts between commas that stand in no further parentheses and no string.
std::vector<std::string_view> PartsOf(std::string_view list)
{
    std::vector<std::string_view> parts;
    std::size_t from = 0;
    int depth = 0;
    bool isInString = false;
    for (std::size_t i = 0; i <= list.size(); ++i)
    {
        const char c = i < list.size() ? list[i] : ',';
        isInString = c == '\'' ? !isInString : isInString;
        depth += isInString ? 0 : c == '(' ? 1 : c == ')' ? -1 : 0;
        if (i == list.size() || (c == ',' && depth == 0 && !isInString))
        {
            parts.push_back(list.substr(from, i - from));
            from = i + 1;
        }
    }
    return parts;
}

/// What stands between the parentheses of a text that begins and ends with them.
std::optional<std::string_view> Within(std::string_view text)
{
    const bool isList = text.size() >= 2 && text.front() == '(' && text.back() == ')';
    return isList ? std::optional<std::string_view>(text.substr(1, text.size() - 2)) : std::nullopt;
}

template <typename Number>
std::optional<Number> NumberIn(std::string_view text)
{
    text.remove_prefix(!text.empty() && text.front() == '+' ? 1 : 0);
    Number number{};
    const char* const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end ? std::optional<Number>(number) : std::nullopt;
}

/// "#12".
std::optional<std::uint64_t> ReferenceIn(std::string_view text)
{
    return !text.empty() && text.front() == '#' ? NumberIn<std::uint64_t>(text.substr(1)) : std::nullopt;
}

/// "#12=KEYWORD(...)", with the keyword in capitals as such files have it.
struct Instance
{
    std::uint64_t number = 0;
    std::string_view keyword;
    std::string_view arguments;

    bool Read(std::string_view text)
    {
        const std::size_t equals = text.find('=');
        const std::size_t open = text.find('(');
        if (equals == std::string_view::npos || open == std::string_view::npos || open < equals)
        {
            return false;
        }
        const std::optional<std::uint64_t> reference = ReferenceIn(text.substr(0, equals));
        const std::optional<std::string_view> within = Within(text.substr(open));
        number = reference.value_or(0);
        keyword = text.substr(equals + 1, open - equals - 1);
        arguments = within.value_or(std::string_view());
        return reference && within;
    }
};

/// Degrees, minutes, seconds and perhaps millionths of a second, all of one sign.
std::optional<double> AngleIn(std::string_view text, double most)
{
    const std::optional<std::string_view> list = Within(text);
    const std::vector<std::string_view> parts = list ? PartsOf(*list) : std::vector<std::string_view>();
    if (parts.size() != 3 && parts.size() != 4)
    {
        return std::nullopt;
    }
    constexpr int mostOf[] = {360, 59, 59, 999999};
    constexpr double share[] = {1.0, 60.0, 3600.0, 3600e6};
    double angle = 0.0;
    bool isPositive = false;
    bool isNegative = false;
    for (std::size_t i = 0; i < parts.size(); ++i)
    {
        const std::optional<int> number = NumberIn<int>(parts[i]);
        if (!number || *number > mostOf[i] || *number < -mostOf[i])
        {
            return std::nullopt;
        }
        isPositive = isPositive || *number > 0;
        isNegative = isNegative || *number < 0;
        angle += *number / share[i];
    }
    return (isPositive && isNegative) || std::abs(angle) > most ? std::nullopt : std::optional<double>(angle);
}

std::optional<ImportedPlace> PlaceOf(const Instance& site)
{
    constexpr std::size_t latitudeAt = 9;
    constexpr std::size_t longitudeAt = 10;
    const std::vector<std::string_view> parts = PartsOf(site.arguments);
    if (parts.size() <= longitudeAt)
    {
        return std::nullopt;
    }
    const std::optional<double> latitude = AngleIn(parts[latitudeAt], 90.0);
    const std::optional<double> longitude = AngleIn(parts[longitudeAt], 180.0);
    if (!latitude || !longitude || (*latitude == 0.0 && *longitude == 0.0))
    {
        return std::nullopt;
    }
    return ImportedPlace{*latitude, *longitude};
}

/// The direction that is a context's true north.
std::optional<std::uint64_t> NorthOf(const Instance& context)
{
    constexpr std::size_t northAt = 5;
    const std::vector<std::string_view> parts = PartsOf(context.arguments);
    return parts.size() > northAt ? ReferenceIn(parts[northAt]) : std::nullopt;
}

std::optional<double> HeadingOf(const Instance& direction)
{
    const std::optional<std::string_view> list = Within(direction.arguments);
    const std::vector<std::string_view> parts = list ? PartsOf(*list) : std::vector<std::string_view>();
    if (parts.size() != 2 && parts.size() != 3)
    {
        return std::nullopt;
    }
    const double x = NumberIn<double>(parts[0]).value_or(std::nan(""));
    const double y = NumberIn<double>(parts[1]).value_or(std::nan(""));
    const double length = std::hypot(x, y);
    if (!(length > 0.0 && std::isfinite(length)))
    {
        return std::nullopt;
    }
    const double heading = std::atan2(x, y) * 180.0 / kPi;
    return heading > -180.0 ? heading : 180.0;
}

} // namespace

StepSite ReadStepSite(std::istream& stream)
{
    StepSite site;
    std::optional<std::uint64_t> north;
    std::string text;
    Instance instance;
    for (InstanceReader reader(stream); reader.Next(text) && !(site.place && north);)
    {
        if (!instance.Read(text))
        {
            continue;
        }
        if (!site.place && instance.keyword == "IFCSITE")
        {
            site.place = PlaceOf(instance);
        }
        else if (!north && instance.keyword == "IFCGEOMETRICREPRESENTATIONCONTEXT")
        {
            north = NorthOf(instance);
        }
    }
    stream.clear();
    stream.seekg(0);
    for (InstanceReader reader(stream); north && reader.Next(text);)
    {
        if (instance.Read(text) && instance.number == *north && instance.keyword == "IFCDIRECTION")
        {
            site.north = HeadingOf(instance);
            break;
        }
    }
    return site;
}

} // namespace OV::Host
