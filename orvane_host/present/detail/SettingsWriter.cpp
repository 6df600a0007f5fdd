#include "orvane_host/present/detail/SettingsWriter.h"

#include "orvane_host/present/detail/SettingsFields.h"
#include "orvane_host/present/detail/SettingsText.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <type_traits>

namespace OV::Host::Detail
{

namespace
{

/// JSON has no word for what is not finite; the library's null would come back as none.
WrittenJson ToJson(float number)
{
    return std::isfinite(number) ? WrittenJson(number) : WrittenJson(Shown(number));
}

WrittenJson ToJson(const Vector& vector)
{
    return WrittenJson::array({ToJson(vector.x), ToJson(vector.y), ToJson(vector.z)});
}

WrittenJson ToJson(const Color& color)
{
    if (const auto hex = ToHex(color))
    {
        return *hex;
    }
    return WrittenJson::array({ToJson(color.r), ToJson(color.g), ToJson(color.b), ToJson(color.a)});
}

/// Plain values, enumerators and structs of fields.
template <typename Value>
WrittenJson ToJson(const Value& value);

template <typename Value>
WrittenJson ToJson(const std::optional<Value>& value)
{
    return value ? ToJson(*value) : WrittenJson();
}

template <typename Value>
WrittenJson ToJson(const std::vector<Value>& values)
{
    WrittenJson json = WrittenJson::array();
    for (const Value& value : values)
    {
        json.push_back(ToJson(value));
    }
    return json;
}

template <typename Settings>
void AddFields(WrittenJson& json, const Settings& settings)
{
    Fields<Settings>::Visit([&](const char* name, auto member, const Limits&)
                            { json[name] = ToJson(settings.*member); });
}

template <typename Value>
WrittenJson ToJson(const Value& value)
{
    if constexpr (std::is_arithmetic_v<Value> || std::is_same_v<Value, std::string>)
    {
        return value;
    }
    else if constexpr (std::is_enum_v<Value>)
    {
        const char* const name = NameOf(value);
        return name ? WrittenJson(name) : WrittenJson(static_cast<int>(value));
    }
    else
    {
        WrittenJson json = WrittenJson::object();
        AddFields(json, value);
        return json;
    }
}

/// The library's own layout gives each number of a vector a line.
void Lay(const WrittenJson& json, const std::string& indent, std::string& text)
{
    const bool isFlat =
        std::none_of(json.begin(), json.end(), [](const WrittenJson& item) { return item.is_structured(); });
    if (!json.is_structured() || json.empty())
    {
        text += json.dump(-1, ' ', false, WrittenJson::error_handler_t::replace);
        return;
    }
    const bool isRow = json.is_array() && isFlat;
    const std::string inner = isRow ? "" : "\n" + indent + "  ";
    text += json.is_array() ? "[" : "{";
    const char* separator = "";
    for (const auto& item : json.items())
    {
        text += separator + inner;
        separator = isRow ? ", " : ",";
        if (json.is_object())
        {
            text += WrittenJson(item.key()).dump() + ": ";
        }
        Lay(item.value(), indent + "  ", text);
    }
    text += isRow ? "" : "\n" + indent;
    text += json.is_array() ? "]" : "}";
}

} // namespace

std::string WriteSettings(const PresentationSettings& settings)
{
    WrittenJson json = WrittenJson::object();
    json["version"] = kSettingsVersion;
    AddFields(json, settings);
    std::string text;
    Lay(json, "", text);
    return text + "\n";
}

} // namespace OV::Host::Detail
