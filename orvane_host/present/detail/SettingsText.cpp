#include "orvane_host/present/detail/SettingsText.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdio>

namespace OV::Host::Detail
{

namespace
{

/// The byte that a channel is told by exactly.
std::optional<unsigned int> ByteOf(float channel)
{
    // Written so that what is not a number fails.
    if (!(channel >= 0.0f && channel <= 1.0f) || std::signbit(channel))
    {
        return std::nullopt;
    }
    const auto byte = static_cast<unsigned int>(std::lround(channel * 255.0f));
    return static_cast<float>(byte) / 255.0f == channel ? std::optional<unsigned int>(byte) : std::nullopt;
}

} // namespace

std::string Shown(float number)
{
    if (std::isnan(number))
    {
        return "not a number";
    }
    if (std::isinf(number))
    {
        return number > 0.0f ? "infinite" : "minus infinite";
    }
    return number == std::trunc(number) && std::fabs(number) < 1e6f ? std::to_string(static_cast<int>(number))
                                                                    : WrittenJson(number).dump();
}

std::string Shown(const std::string& text)
{
    constexpr std::size_t most = 60;
    const std::string start = text.substr(0, most);
    // Escapes leave only ASCII, so that a character that was cut through stays readable.
    return WrittenJson(start).dump(-1, ' ', true, WrittenJson::error_handler_t::replace) +
           (text.size() > most ? "..." : "");
}

bool IsUtf8(const std::string& text)
{
    try
    {
        WrittenJson(text).dump();
        return true;
    }
    catch (const WrittenJson::type_error&)
    {
        return false;
    }
}

std::optional<std::string> ToHex(const Color& color)
{
    const auto red = ByteOf(color.r);
    const auto green = ByteOf(color.g);
    const auto blue = ByteOf(color.b);
    const auto alpha = ByteOf(color.a);
    if (!red || !green || !blue || !alpha)
    {
        return std::nullopt;
    }
    char text[10];
    std::snprintf(text, sizeof text, "#%02X%02X%02X%02X", *red, *green, *blue, *alpha);
    return std::string(text, *alpha == 255 ? 7 : 9);
}

std::optional<Color> FromHex(const std::string& text)
{
    if ((text.size() != 7 && text.size() != 9) || text[0] != '#')
    {
        return std::nullopt;
    }
    float channels[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    for (std::size_t i = 1; i < text.size(); i += 2)
    {
        unsigned int byte = 0;
        const char* const end = text.data() + i + 2;
        const auto result = std::from_chars(text.data() + i, end, byte, 16);
        if (result.ec != std::errc() || result.ptr != end)
        {
            return std::nullopt;
        }
        channels[i / 2] = static_cast<float>(byte) / 255.0f;
    }
    return Color(channels[0], channels[1], channels[2], channels[3]);
}

} // namespace OV::Host::Detail
