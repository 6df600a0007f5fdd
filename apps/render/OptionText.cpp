#include "apps/render/OptionText.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <iterator>

namespace OV::RenderApp
{

namespace
{

struct NamedColor
{
    const char* name;
    unsigned int value; ///< 0xRRGGBB
};

/// As style sheets have them.
constexpr NamedColor kColors[] = {
    {"black", 0x000000},  {"white", 0xFFFFFF},  {"gray", 0x808080},   {"grey", 0x808080},    {"silver", 0xC0C0C0},
    {"red", 0xFF0000},    {"maroon", 0x800000}, {"orange", 0xFFA500}, {"yellow", 0xFFFF00},  {"olive", 0x808000},
    {"lime", 0x00FF00},   {"green", 0x008000},  {"aqua", 0x00FFFF},   {"cyan", 0x00FFFF},    {"teal", 0x008080},
    {"blue", 0x0000FF},   {"navy", 0x000080},   {"purple", 0x800080}, {"magenta", 0xFF00FF}, {"fuchsia", 0xFF00FF},
    {"brown", 0xA52A2A},  {"pink", 0xFFC0CB},   {"beige", 0xF5F5DC},  {"ivory", 0xFFFFF0},   {"skyblue", 0x87CEEB},
};

std::optional<unsigned int> FindColor(const std::string& text)
{
    std::string name = text;
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    const auto* const found = std::find_if(std::begin(kColors), std::end(kColors),
                                           [&](const NamedColor& color) { return name == color.name; });
    return found == std::end(kColors) ? std::nullopt : std::optional<unsigned int>(found->value);
}

} // namespace

CLI::ValidationError Bad(const std::string& option, const std::string& text, const std::string& expectation)
{
    return CLI::ValidationError(option, "'" + text + "' is not " + expectation);
}

std::string NumberTrouble(const std::string& text)
{
    return text.empty() ? "'' is not a number" : std::string();
}

std::vector<std::string> Split(const std::string& text, char separator)
{
    return CLI::detail::split(text, separator);
}

std::vector<float> ParseNumbers(const std::string& option, const std::string& text, std::size_t count,
                                const std::string& form)
{
    std::vector<float> numbers;
    for (const std::string& part : Split(text, ','))
    {
        const auto number = ParseNumber<float>(part);
        if (!number || !std::isfinite(*number))
        {
            throw Bad(option, text, form);
        }
        numbers.push_back(*number);
    }
    if (numbers.size() != count)
    {
        throw Bad(option, text, form);
    }
    return numbers;
}

Vector ParseVector(const std::string& option, const std::string& text)
{
    const std::vector<float> xyz = ParseNumbers(option, text, 3, "three numbers X,Y,Z");
    return Vector(xyz[0], xyz[1], xyz[2]);
}

Color ParseColor(const std::string& option, const std::string& text)
{
    const std::string digits = text.substr(!text.empty() && text[0] == '#' ? 1 : 0);
    auto value = digits.size() == 6 ? ParseNumber<unsigned int>(digits, 16) : std::nullopt;
    value = value ? value : FindColor(text);
    if (!value)
    {
        throw Bad(option, text, "a colour RRGGBB of six hexadecimal digits or a name such as white");
    }
    const auto channel = [&](int shift) { return static_cast<float>((*value >> shift) & 0xFFu) / 255.0f; };
    return Color(channel(16), channel(8), channel(0));
}

} // namespace OV::RenderApp
