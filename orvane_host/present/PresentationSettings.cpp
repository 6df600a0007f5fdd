#include "orvane_host/present/PresentationSettings.h"

#include "orvane_host/present/detail/SettingsCheck.h"
#include "orvane_host/present/detail/SettingsFields.h"
#include "orvane_host/present/detail/SettingsReader.h"
#include "orvane_host/present/detail/SettingsWriter.h"

#include <algorithm>
#include <exception>
#include <type_traits>
#include <utility>

namespace OV::Host
{

namespace
{

bool Same(const Vector& left, const Vector& right)
{
    return left.x == right.x && left.y == right.y && left.z == right.z;
}

bool Same(const Color& left, const Color& right)
{
    return left.r == right.r && left.g == right.g && left.b == right.b && left.a == right.a;
}

/// Plain values and structs of fields.
template <typename Value>
bool Same(const Value& left, const Value& right);

template <typename Value>
bool Same(const std::optional<Value>& left, const std::optional<Value>& right)
{
    return left.has_value() == right.has_value() && (!left || Same(*left, *right));
}

template <typename Value>
bool Same(const std::vector<Value>& left, const std::vector<Value>& right)
{
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](const Value& one, const Value& other) { return Same(one, other); });
}

template <typename Value>
bool Same(const Value& left, const Value& right)
{
    if constexpr (std::is_arithmetic_v<Value> || std::is_enum_v<Value> || std::is_same_v<Value, std::string>)
    {
        return left == right;
    }
    else
    {
        bool isSame = true;
        Detail::Fields<Value>::Visit([&](const char*, auto member, const Detail::Limits&)
                                     { isSame = isSame && Same(left.*member, right.*member); });
        return isSame;
    }
}

} // namespace

std::string PresentationSettings::Trouble() const
{
    return Detail::FindTrouble(*this);
}

std::string PresentationSettings::ToJSON() const
{
    return Detail::WriteSettings(*this);
}

std::optional<PresentationSettings> PresentationSettings::FromJSON(const std::string& text,
                                                                   std::string& error)
{
    try
    {
        std::optional<PresentationSettings> settings = Detail::ReadSettings(text, error);
        std::string trouble = settings ? settings->Trouble() : std::string();
        if (trouble.empty())
        {
            return settings;
        }
        error = std::move(trouble);
    }
    catch (const std::exception&)
    {
        error = "there is no memory for the settings";
    }
    return std::nullopt;
}

bool operator==(const FogRange& left, const FogRange& right)
{
    return Same(left, right);
}

bool operator==(const ClipPlane& left, const ClipPlane& right)
{
    return Same(left, right);
}

bool operator==(const SectionSettings& left, const SectionSettings& right)
{
    return Same(left, right);
}

bool operator==(const LineSettings& left, const LineSettings& right)
{
    return Same(left, right);
}

bool operator==(const EdgeLook& left, const EdgeLook& right)
{
    return Same(left, right);
}

bool operator==(const GeoPlace& left, const GeoPlace& right)
{
    return Same(left, right);
}

bool operator==(const SunSettings& left, const SunSettings& right)
{
    return Same(left, right);
}

bool operator==(const GroundSettings& left, const GroundSettings& right)
{
    return Same(left, right);
}

bool operator==(const ViewSettings& left, const ViewSettings& right)
{
    return Same(left, right);
}

bool operator==(const SheetSettings& left, const SheetSettings& right)
{
    return Same(left, right);
}

bool operator==(const PresentationSettings& left, const PresentationSettings& right)
{
    return Same(left, right);
}

} // namespace OV::Host
