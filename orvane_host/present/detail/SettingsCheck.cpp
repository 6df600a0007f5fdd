#include "orvane_host/present/detail/SettingsCheck.h"

#include "orvane_host/present/detail/SettingsFields.h"
#include "orvane_host/present/detail/SettingsText.h"
#include "orvane_host/view/ZonedTime.h"

#include <cmath>
#include <cstddef>
#include <type_traits>

namespace OV::Host::Detail
{

namespace
{

std::string Tell(const Limits& limits)
{
    const bool hasLeast = limits.least > kFinite.least;
    const bool hasMost = limits.most < kFinite.most;
    if (limits.isAboveLeast)
    {
        return "above " + Shown(limits.least) + (hasMost ? " and at most " + Shown(limits.most) : "");
    }
    if (hasLeast)
    {
        return Shown(limits.least) + (hasMost ? " to " + Shown(limits.most) : " or more");
    }
    return "a finite number";
}

/// Written so that what is not a number fails.
bool IsWithin(float number, const Limits& limits)
{
    return (limits.isAboveLeast ? number > limits.least : number >= limits.least) && number <= limits.most;
}

std::string Refuse(const std::string& path, const std::string& what, const std::string& bound)
{
    return path + " is " + what + "; it has to be " + bound;
}

/// Collects the first trouble of one value after another.
class Checker
{
public:
    const std::string& Trouble() const { return m_trouble; }

    template <typename Settings>
    void CheckFields(const std::string& path, const Settings& settings)
    {
        Fields<Settings>::Visit(
            [&](const char* name, auto member, const Limits& limits)
            {
                if (m_trouble.empty())
                {
                    Check(Join(path, name), settings.*member, limits);
                }
            });
        if (m_trouble.empty())
        {
            CheckTogether(path, settings);
        }
    }

private:
    void Check(const std::string&, bool, const Limits&) {}

    void Check(const std::string& path, float number, const Limits& limits)
    {
        if (!IsWithin(number, limits))
        {
            m_trouble = Refuse(path, Shown(number), Tell(limits));
        }
    }

    void Check(const std::string& path, int number, const Limits& limits)
    {
        // The limits of whole numbers are small enough to be exact.
        if (!IsWithin(static_cast<float>(number), limits))
        {
            m_trouble = Refuse(path, std::to_string(number), Tell(limits));
        }
    }

    void Check(const std::string& path, const Vector& vector, const Limits& limits)
    {
        CheckPart(path, vector.x, "x", limits);
        CheckPart(path, vector.y, "y", limits);
        CheckPart(path, vector.z, "z", limits);
    }

    void Check(const std::string& path, const Color& color, const Limits& limits)
    {
        CheckPart(path, color.r, "red", limits);
        CheckPart(path, color.g, "green", limits);
        CheckPart(path, color.b, "blue", limits);
        CheckPart(path, color.a, "alpha", limits);
    }

    void Check(const std::string& path, const std::string& text, const Limits&)
    {
        if (text.size() > PresentationSettings::MostTextBytes)
        {
            m_trouble = Refuse(path, std::to_string(text.size()) + " bytes long",
                               "at most " + std::to_string(PresentationSettings::MostTextBytes));
        }
        else if (text.find('\0') != std::string::npos)
        {
            m_trouble = path + " holds a zero byte; it has to be without";
        }
        else if (!IsUtf8(text))
        {
            m_trouble = Refuse(path, Shown(text), "UTF-8");
        }
    }

    template <typename Value>
    void Check(const std::string& path, const std::optional<Value>& value, const Limits& limits)
    {
        if (value)
        {
            Check(path, *value, limits);
        }
    }

    void Check(const std::string& path, const std::vector<ClipPlane>& planes, const Limits& limits)
    {
        if (planes.size() > PresentationSettings::MostClipPlanes)
        {
            m_trouble = path + " holds " + std::to_string(planes.size()) + "; there are at most " +
                        std::to_string(PresentationSettings::MostClipPlanes);
        }
        for (std::size_t i = 0; i < planes.size() && m_trouble.empty(); ++i)
        {
            Check(path + "[" + std::to_string(i) + "]", planes[i], limits);
        }
    }

    /// Enumerators, and structs of fields.
    template <typename Value>
    void Check(const std::string& path, const Value& value, const Limits&)
    {
        if constexpr (!std::is_enum_v<Value>)
        {
            CheckFields(path, value);
        }
        else if (!NameOf(value))
        {
            m_trouble = Refuse(path, std::to_string(static_cast<int>(value)), "one of " + ListNames<Value>());
        }
    }

    void CheckPart(const std::string& path, float number, const char* part, const Limits& limits)
    {
        if (m_trouble.empty() && !IsWithin(number, limits))
        {
            m_trouble = Refuse(path, Shown(number) + " in " + part, Tell(limits));
        }
    }

    void CheckDirection(const std::string& path, const Vector& vector)
    {
        const float length = std::hypot(vector.x, vector.y, vector.z);
        if (!(length > 0.0f && std::isfinite(length)))
        {
            m_trouble = path + " has no direction; its length has to be above 0 and finite";
        }
    }

    template <typename Settings>
    void CheckTogether(const std::string&, const Settings&)
    {
    }

    void CheckTogether(const std::string& path, const FogRange& fog)
    {
        if (!(fog.end > fog.start))
        {
            m_trouble = Refuse(Join(path, "end"), Shown(fog.end), "above the start, " + Shown(fog.start));
        }
    }

    void CheckTogether(const std::string& path, const ClipPlane& plane)
    {
        CheckDirection(Join(path, "normal"), plane.normal);
    }

    void CheckTogether(const std::string& path, const SunSettings& sun)
    {
        std::string reason;
        if (sun.direction)
        {
            CheckDirection(Join(path, "direction"), *sun.direction);
        }
        else if (!ZonedTime::Parse(sun.time, reason))
        {
            m_trouble = Join(path, "time") + " is " + Shown(sun.time) + "; " + reason;
            m_trouble += sun.time.empty() ? ", unless there is " + Join(path, "direction") : "";
        }
    }

    void CheckTogether(const std::string& path, const ViewSettings& view)
    {
        if (view.up)
        {
            CheckDirection(Join(path, "up"), *view.up);
        }
        // Not by the operator of Vector, which takes near ones for the same.
        if (m_trouble.empty() && view.eye && view.target && view.eye->x == view.target->x &&
            view.eye->y == view.target->y && view.eye->z == view.target->z)
        {
            m_trouble = Refuse(Join(path, "eye"), "where the target is", "elsewhere");
        }
    }

    void CheckTogether(const std::string&, const PresentationSettings& settings)
    {
        if (settings.look == Look::Crosshatch && !settings.section.planes.empty())
        {
            m_trouble = "section.planes has to be empty with the look crosshatch, which is not cut";
        }
        else if (settings.sky && !settings.sheet.watermark.empty())
        {
            m_trouble = "sheet.watermark has to be empty with a sky, which would hide it";
        }
    }

    std::string m_trouble;
};

} // namespace

std::string FindTrouble(const PresentationSettings& settings)
{
    Checker checker;
    checker.CheckFields("", settings);
    return checker.Trouble();
}

} // namespace OV::Host::Detail
