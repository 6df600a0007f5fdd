#pragma once

#include "orvane/math/Color.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// What reading, writing and checking settings say about values in common.
namespace OV::Host::Detail
{

/// With the precision of the settings, so that numbers are written as short as they are told apart
/// and come back exactly.
using WrittenJson = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool, std::int64_t,
                                         std::uint64_t, float>;
using ReadJson =
    nlohmann::basic_json<std::map, std::vector, std::string, bool, std::int64_t, std::uint64_t, float>;

constexpr int kSettingsVersion = 1;

/// A number for a sentence, also where it is none.
std::string Shown(float number);

/// A text of anyone's for a sentence: in quotes, printable and not too long.
std::string Shown(const std::string& text);

bool IsUtf8(const std::string& text);

/// "#RRGGBB", or "#RRGGBBAA" where it is not opaque; none where bytes do not tell it exactly.
std::optional<std::string> ToHex(const Color& color);

/// Reads both forms of ToHex; none for any other text.
std::optional<Color> FromHex(const std::string& text);

inline std::string Join(const std::string& path, const std::string& name)
{
    return path.empty() ? name : path + "." + name;
}

} // namespace OV::Host::Detail
