#include "orvane_host/present/detail/SettingsReader.h"

#include "orvane_host/present/detail/SettingsFields.h"
#include "orvane_host/present/detail/SettingsParser.h"
#include "orvane_host/present/detail/SettingsText.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <type_traits>

namespace OV::Host::Detail
{

namespace
{

const char* KindOf(const ReadJson& json)
{
    return json.is_null()      ? "null"
           : json.is_boolean() ? "a truth value"
           : json.is_number()  ? "a number"
           : json.is_string()  ? "a text"
           : json.is_array()   ? "a list"
                               : "an object";
}

/// Takes values over from a document until the first that does not fit.
class Reader
{
public:
    const std::string& Error() const { return m_error; }

    template <typename Settings>
    void ReadFields(const std::string& path, const ReadJson& json, Settings& settings,
                    const char* furtherName = nullptr)
    {
        std::vector<std::string> known;
        if (furtherName)
        {
            known.emplace_back(furtherName);
        }
        Fields<Settings>::Visit([&](const char* name, auto, const Limits&) { known.emplace_back(name); });
        for (const auto& item : json.items())
        {
            if (std::find(known.begin(), known.end(), item.key()) == known.end())
            {
                m_error = "there is no field " + Shown(Join(path, item.key()));
                return;
            }
        }
        Fields<Settings>::Visit(
            [&](const char* name, auto member, const Limits&)
            {
                const auto found = json.find(name);
                if (m_error.empty() && found != json.end())
                {
                    Read(Join(path, name), *found, settings.*member);
                }
            });
    }

    void ReadVersion(const ReadJson& json)
    {
        const auto found = json.find("version");
        if (found == json.end())
        {
            return;
        }
        if (!found->is_number_integer())
        {
            Refuse("version", *found, "a whole number");
        }
        else if (*found != kSettingsVersion)
        {
            m_error =
                "version is " + found->dump() + "; only " + std::to_string(kSettingsVersion) + " can be read";
        }
    }

    void Refuse(const std::string& path, const ReadJson& json, const std::string& expectation)
    {
        m_error = path + " is " + KindOf(json) + "; it has to be " + expectation;
    }

private:
    void Read(const std::string& path, const ReadJson& json, bool& value)
    {
        if (!json.is_boolean())
        {
            return Refuse(path, json, "true or false");
        }
        value = json.get<bool>();
    }

    void Read(const std::string& path, const ReadJson& json, float& value)
    {
        if (!json.is_number())
        {
            return Refuse(path, json, "a number");
        }
        value = json.get<float>();
    }

    void Read(const std::string& path, const ReadJson& json, int& value)
    {
        if (!json.is_number_integer())
        {
            return Refuse(path, json, "a whole number");
        }
        // What does not fit is out of range of every field in any case.
        constexpr std::int64_t most = std::numeric_limits<int>::max();
        value = json.is_number_unsigned()
                    ? static_cast<int>(std::min<std::uint64_t>(json.get<std::uint64_t>(), most))
                    : static_cast<int>(std::clamp<std::int64_t>(json.get<std::int64_t>(), -most, most));
    }

    void Read(const std::string& path, const ReadJson& json, std::string& value)
    {
        if (!json.is_string())
        {
            return Refuse(path, json, "a text");
        }
        value = json.get<std::string>();
    }

    void Read(const std::string& path, const ReadJson& json, Vector& value)
    {
        if (!IsNumbers(json) || json.size() != 3)
        {
            return Refuse(path, json, "a list of three numbers");
        }
        value = Vector(json[0].get<float>(), json[1].get<float>(), json[2].get<float>());
    }

    void Read(const std::string& path, const ReadJson& json, Color& value)
    {
        const char* const form = "a colour \"#RRGGBB\" or \"#RRGGBBAA\", or a list of three or four numbers";
        if (json.is_string())
        {
            const std::string text = json.get<std::string>();
            const auto color = FromHex(text);
            if (!color)
            {
                m_error = path + " is " + Shown(text) + "; it has to be " + form;
                return;
            }
            value = *color;
            return;
        }
        if (!IsNumbers(json) || (json.size() != 3 && json.size() != 4))
        {
            return Refuse(path, json, form);
        }
        value = Color(json[0].get<float>(), json[1].get<float>(), json[2].get<float>(),
                      json.size() == 4 ? json[3].get<float>() : 1.0f);
    }

    template <typename Value>
    void Read(const std::string& path, const ReadJson& json, std::optional<Value>& value)
    {
        value.reset();
        if (!json.is_null())
        {
            Read(path, json, value.emplace());
        }
    }

    template <typename Value>
    void Read(const std::string& path, const ReadJson& json, std::vector<Value>& values)
    {
        if (!json.is_array())
        {
            return Refuse(path, json, "a list");
        }
        values.clear();
        for (std::size_t i = 0; i < json.size() && m_error.empty(); ++i)
        {
            Read(path + "[" + std::to_string(i) + "]", json[i], values.emplace_back());
        }
    }

    /// Enumerators, and structs of fields.
    template <typename Value>
    void Read(const std::string& path, const ReadJson& json, Value& value)
    {
        if constexpr (std::is_enum_v<Value>)
        {
            ReadName(path, json, value);
        }
        else if (!json.is_object())
        {
            Refuse(path, json, "an object");
        }
        else
        {
            ReadFields(path, json, value);
        }
    }

    template <typename Enum>
    void ReadName(const std::string& path, const ReadJson& json, Enum& value)
    {
        const std::string expectation = "one of " + ListNames<Enum>();
        if (!json.is_string())
        {
            return Refuse(path, json, expectation);
        }
        const std::string text = json.get<std::string>();
        for (int i = 0; NameOf(static_cast<Enum>(i)); ++i)
        {
            if (text == NameOf(static_cast<Enum>(i)))
            {
                value = static_cast<Enum>(i);
                return;
            }
        }
        m_error = path + " is " + Shown(text) + "; it has to be " + expectation;
    }

    static bool IsNumbers(const ReadJson& json)
    {
        return json.is_array() &&
               std::all_of(json.begin(), json.end(), [](const ReadJson& item) { return item.is_number(); });
    }

    std::string m_error;
};

} // namespace

std::optional<PresentationSettings> ReadSettings(const std::string& text, std::string& error)
{
    std::string trouble;
    const std::optional<ReadJson> json = ParseJson(text, trouble);
    if (!json)
    {
        error = "the settings: " + trouble;
        return std::nullopt;
    }
    Reader reader;
    PresentationSettings settings;
    if (!json->is_object())
    {
        reader.Refuse("the whole of the settings", *json, "an object");
    }
    else
    {
        reader.ReadVersion(*json);
        if (reader.Error().empty())
        {
            reader.ReadFields("", *json, settings, "version");
        }
    }
    if (!reader.Error().empty())
    {
        error = reader.Error();
        return std::nullopt;
    }
    return settings;
}

} // namespace OV::Host::Detail
