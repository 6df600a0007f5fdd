#pragma once

#include "orvane/math/Color.h"
#include "orvane/math/Vector.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace OV::RenderApp
{

// Texts of the command line as values. What can't be read is thrown as wrong usage.

/// Wrong usage: what was typed for an option is not what it takes.
CLI::ValidationError Bad(const std::string& option, const std::string& text, const std::string& expectation);

/// Reads all of a text as one number; nothing when it is not one.
template <typename Number, typename... Base>
std::optional<Number> ParseNumber(std::string_view text, Base... base)
{
    Number number{};
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, base...);
    return result.ec == std::errc() && result.ptr == end ? std::optional<Number>(number) : std::nullopt;
}

/// A check of an option of a number that may be left out, which takes no text at all for 0.
std::string NumberTrouble(const std::string& text);

std::vector<std::string> Split(const std::string& text, char separator);

/// Reads finite numbers between commas, as many as are wanted.
std::vector<float> ParseNumbers(const std::string& option, const std::string& text, std::size_t count,
                                const std::string& form);

Vector ParseVector(const std::string& option, const std::string& text);

/// RRGGBB or #RRGGBB in hexadecimal digits, or the name of a colour.
Color ParseColor(const std::string& option, const std::string& text);

} // namespace OV::RenderApp
