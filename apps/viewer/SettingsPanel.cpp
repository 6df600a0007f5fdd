#include "apps/viewer/SettingsPanel.h"

#include "orvane_host/view/ZonedTime.h"

#include <imgui.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string>

namespace OV::ViewerApp
{

namespace
{

using Settings = Host::PresentationSettings;
using Box = Host::Presentation::Box;

/// A choice of one of several names, in the order of the enumerators.
template <typename Enum>
bool Choose(const char* label, Enum& value, std::initializer_list<const char*> names)
{
    int index = static_cast<int>(value);
    if (!ImGui::Combo(label, &index, std::data(names), static_cast<int>(names.size())))
    {
        return false;
    }
    value = static_cast<Enum>(index);
    return true;
}

/// Colours are of bytes, so that a command can tell them exactly.
float OfBytes(float channel)
{
    return static_cast<float>(std::lround(std::clamp(channel, 0.0f, 1.0f) * 255.0f)) / 255.0f;
}

bool EditColor(const char* label, Color& color)
{
    float channels[3] = {color.r, color.g, color.b};
    if (!ImGui::ColorEdit3(label, channels, ImGuiColorEditFlags_NoInputs))
    {
        return false;
    }
    color = Color(OfBytes(channels[0]), OfBytes(channels[1]), OfBytes(channels[2]));
    return true;
}

bool EditSlider(const char* label, float& value, float low, float high, const char* format = "%.3g", int flags = 0)
{
    return ImGui::SliderFloat(label, &value, low, high, format, flags | ImGuiSliderFlags_AlwaysClamp);
}

/// What may be left out: a tick, and what Edit offers where it is set.
template <typename Value, typename Edit>
bool EditOptional(const char* label, std::optional<Value>& value, const Value& usual, Edit edit)
{
    bool isSet = value.has_value();
    bool changed = ImGui::Checkbox(label, &isSet);
    if (changed)
    {
        value = isSet ? std::optional<Value>(usual) : std::nullopt;
    }
    if (value)
    {
        ImGui::PushID(label);
        ImGui::Indent();
        changed = edit(*value) || changed;
        ImGui::Unindent();
        ImGui::PopID();
    }
    return changed;
}

template <std::size_t Size>
bool EditText(const char* label, std::string& text)
{
    char buffer[Size];
    std::snprintf(buffer, sizeof(buffer), "%s", text.c_str());
    if (!ImGui::InputText(label, buffer, sizeof(buffer)))
    {
        return false;
    }
    text = buffer;
    return true;
}

bool EditVector(const char* label, Vector& vector, float speed)
{
    float values[3] = {vector.x, vector.y, vector.z};
    if (!ImGui::DragFloat3(label, values, speed, 0.0f, 0.0f, "%.4g"))
    {
        return false;
    }
    vector = Vector(values[0], values[1], values[2]);
    return true;
}

float ExtentOf(const Box& box)
{
    Vector size;
    size.Subtract(box.high, box.low);
    return std::max(size.Magnitude(), 1e-6f);
}

bool EditOcclusion(Settings& settings, float extent)
{
    bool changed = ImGui::Checkbox("Dark corners", &settings.occlusion);
    if (!settings.occlusion)
    {
        return changed;
    }
    Host::OcclusionLook& look = settings.occlusionLook;
    ImGui::PushID("Dark corners");
    ImGui::Indent();
    changed = Choose("Kind", look.kind, {"As rays tell", "Of some pixels"}) || changed;
    if (look.kind == Host::OcclusionKind::Horizon)
    {
        changed = EditOptional("Radius of its own", look.radius, 0.04f * extent,
                               [&](float& radius) { return EditSlider("Radius", radius, 1e-3f * extent, 0.25f * extent); })
            || changed;
        changed = EditSlider("Strength", look.strength, 0.0f, 2.0f) || changed;
    }
    ImGui::Unindent();
    ImGui::PopID();
    return changed;
}

bool EditSurfaces(Settings& settings, const Box& box)
{
    bool changed = Choose("Look", settings.look, {"Basic", "Advanced", "Phong", "Crosshatch", "Monotone", "Vertex color"});
    changed = ImGui::Checkbox("Leave out backs of faces", &settings.cullBacks) || changed;
    changed = Choose("Glass over glass", settings.glass.order, {"As in the file", "Mixed", "Exact"}) || changed;
    if (settings.glass.order == Host::GlassOrder::Exact)
    {
        changed = ImGui::SliderInt("Layers of glass", &settings.glass.layers, 1, 16, "%d", ImGuiSliderFlags_AlwaysClamp)
            || changed;
    }
    changed = EditOcclusion(settings, ExtentOf(box)) || changed;
    changed = EditText<512>("Edit", settings.editPath) || changed;
    return changed;
}

bool EditLines(Settings& settings)
{
    bool changed = EditOptional("Edges of the model", settings.lines, Host::LineSettings(),
                                [](Host::LineSettings& lines)
                                {
                                    bool edited = EditSlider("Width", lines.width, 0.25f, 10.0f);
                                    edited = EditSlider("Crease", lines.crease, 0.0f, 180.0f, "%.0f deg") || edited;
                                    edited = EditColor("Color", lines.color) || edited;
                                    edited = EditOptional("Dashes", lines.dash, 6.0f, [](float& dash)
                                                          { return EditSlider("Length", dash, 1.0f, 40.0f); })
                                        || edited;
                                    edited = EditSlider("Offset", lines.offset, -2.0f, 2.0f) || edited;
                                    return Choose("Hidden", lines.hidden, {"Not drawn", "Dashed"}) || edited;
                                });
    changed = EditOptional("Outlines between parts", settings.edges, Host::EdgeLook(),
                           [](Host::EdgeLook& edges)
                           {
                               bool edited = EditSlider("Weight", edges.weight, 0.0f, 1.0f);
                               edited = EditColor("Color", edges.color) || edited;
                               return Choose("Between", edges.identity, {"Colors", "Nodes"}) || edited;
                           })
        || changed;
    return changed;
}

/// Where a plane stands along its normal, as a slider through the model.
bool EditPlane(Host::ClipPlane& plane, const Box& box)
{
    bool changed = false;
    static constexpr struct
    {
        const char* label;
        float x, y, z;
    } axes[] = {{"X", 1, 0, 0}, {"Y", 0, 1, 0}, {"Z", 0, 0, 1}};
    for (const auto& axis : axes)
    {
        if (ImGui::Button(axis.label))
        {
            // A second time it is turned round.
            const bool isThis = std::abs(plane.normal.x) == axis.x && std::abs(plane.normal.y) == axis.y
                && std::abs(plane.normal.z) == axis.z;
            const float sign = isThis && plane.normal.x + plane.normal.y + plane.normal.z > 0.0f ? -1.0f : 1.0f;
            plane.normal = Vector(sign * axis.x, sign * axis.y, sign * axis.z);
            changed = true;
        }
        ImGui::SameLine();
    }
    ImGui::TextUnformatted("Across");
    const float length = plane.normal.Magnitude();
    const Vector normal(plane.normal.x / length, plane.normal.y / length, plane.normal.z / length);
    const Vector middle((box.low.x + box.high.x) / 2.0f, (box.low.y + box.high.y) / 2.0f, (box.low.z + box.high.z) / 2.0f);
    const Vector half((box.high.x - box.low.x) / 2.0f, (box.high.y - box.low.y) / 2.0f, (box.high.z - box.low.z) / 2.0f);
    const float reach = std::abs(normal.x) * half.x + std::abs(normal.y) * half.y + std::abs(normal.z) * half.z;
    Vector away;
    away.Subtract(plane.position, middle);
    float place = away.Dot(normal);
    if (reach > 0.0f && ImGui::SliderFloat("Place", &place, -reach, reach, "%.4g"))
    {
        plane.position =
            Vector(middle.x + normal.x * place, middle.y + normal.y * place, middle.z + normal.z * place);
        changed = true;
    }
    changed = EditVector("Normal", plane.normal, 0.01f) || changed;
    return changed;
}

bool EditSection(Host::SectionSettings& section, const Box& box)
{
    bool changed = false;
    for (std::size_t i = 0; i < section.planes.size(); ++i)
    {
        ImGui::PushID(static_cast<int>(i));
        ImGui::Text("Plane %zu", i + 1);
        ImGui::SameLine();
        const bool isRemoved = ImGui::SmallButton("Remove");
        Host::ClipPlane edited = section.planes[i];
        // One without a direction is on its way to another.
        if (EditPlane(edited, box) && edited.normal.Magnitude() > 0.0f)
        {
            section.planes[i] = edited;
            changed = true;
        }
        ImGui::PopID();
        if (isRemoved)
        {
            section.planes.erase(section.planes.begin() + static_cast<std::ptrdiff_t>(i));
            return true;
        }
    }
    if (section.planes.size() < Settings::MostClipPlanes && ImGui::Button("Add a plane"))
    {
        Host::ClipPlane plane;
        plane.normal = section.planes.empty() ? Vector(0.0f, 0.0f, 1.0f) : Vector(1.0f, 0.0f, 0.0f);
        plane.position = Vector((box.low.x + box.high.x) / 2.0f, (box.low.y + box.high.y) / 2.0f,
                                (box.low.z + box.high.z) / 2.0f);
        section.planes.push_back(plane);
        changed = true;
    }
    changed = EditOptional("Fill", section.fill, *Host::SectionSettings().fill,
                           [](Color& color) { return EditColor("Fill color", color); })
        || changed;
    const float extent = ExtentOf(box);
    changed = EditOptional("Outline of a width of its own", section.outlineWidth, extent / 500.0f,
                           [&](float& width) { return EditSlider("Width", width, 0.0f, extent / 50.0f); })
        || changed;
    return EditColor("Outline color", section.outlineColor) || changed;
}

bool EditReflected(std::string& surroundings)
{
    bool reflectsSky = surroundings == "sky";
    bool changed = ImGui::Checkbox("Smooth things reflect a sky", &reflectsSky);
    if (changed)
    {
        surroundings = reflectsSky ? "sky" : "";
    }
    char name[512];
    std::snprintf(name, sizeof(name), "%s", reflectsSky ? "" : surroundings.c_str());
    // A name that is half typed is no file yet.
    if (ImGui::InputTextWithHint("Reflected", "PNG or JPEG, Enter", name, sizeof(name),
                                 ImGuiInputTextFlags_EnterReturnsTrue))
    {
        surroundings = name;
        changed = true;
    }
    return changed;
}

bool EditSurroundings(Settings& settings, const Box& box)
{
    const float extent = ExtentOf(box);
    bool changed = EditColor("Background", settings.background);
    changed = ImGui::Checkbox("Sky", &settings.sky) || changed;
    changed = EditReflected(settings.surroundings) || changed;
    changed = EditOptional("Ground", settings.ground, Host::GroundSettings(),
                           [&](Host::GroundSettings& ground)
                           {
                               bool edited = Choose("Shows", ground.kind, {"Shadows alone", "Color"});
                               edited = (ground.kind == Host::GroundKind::Plain && EditColor("Color", ground.color)) || edited;
                               return EditOptional("Height of its own", ground.height, box.low.y, [&](float& height)
                                                   { return ImGui::DragFloat("Height", &height, extent * 1e-3f, 0.0f, 0.0f, "%.4g"); })
                                   || edited;
                           })
        || changed;
    const Host::FogRange usual{extent, extent * 3.0f};
    changed = EditOptional("Fog", settings.fog, usual,
                           [&](Host::FogRange& fog)
                           {
                               Host::FogRange edited = fog;
                               bool moved = EditSlider("From", edited.start, 0.0f, extent * 5.0f);
                               moved = EditSlider("To", edited.end, 0.0f, extent * 10.0f) || moved;
                               edited.end = std::max(edited.end, edited.start + extent * 1e-3f);
                               fog = moved ? edited : fog;
                               return moved;
                           })
        || changed;
    return changed;
}

bool EditView(Host::ViewSettings& view, const Box& box)
{
    bool changed = ImGui::Checkbox("Without perspective", &view.orthographic);
    changed = EditSlider("Angle", view.fov, 1.0f, 170.0f, "%.0f deg") || changed;
    int named = view.eye ? -1 : static_cast<int>(view.named);
    static constexpr const char* names[] = {"Corner", "Front", "Back", "Left", "Right", "Top", "Bottom"};
    if (ImGui::Combo("From", &named, names, static_cast<int>(std::size(names))))
    {
        view.named = static_cast<Host::NamedView>(named);
        view.eye.reset();
        view.target.reset();
        changed = true;
    }
    changed = Choose("Up is", view.upAxis, {"Y", "Z"}) || changed;
    if (view.eye)
    {
        const float speed = ExtentOf(box) * 1e-3f;
        Host::ViewSettings edited = view;
        bool moved = EditVector("Eye", *edited.eye, speed);
        if (edited.target)
        {
            moved = EditVector("Target", *edited.target, speed) || moved;
        }
        Vector up = view.up.value_or(Host::UpDirection(view.upAxis));
        if (EditVector("Upwards", up, 0.01f))
        {
            edited.up = up;
            moved = true;
        }
        if (moved && up.Magnitude() > 0.0f)
        {
            view = edited;
            changed = true;
        }
    }
    return changed;
}

bool EditPicture(Settings& settings)
{
    bool changed = Choose("Smooth rims", settings.antialiasing, {"No", "Multisampling", "Filter", "Supersampling"});
    if (settings.antialiasing == Host::Antialiasing::Multisampling)
    {
        changed = EditOptional("Samples", settings.samples, 4,
                               [](int& samples)
                               { return ImGui::SliderInt("Number", &samples, 0, 16, "%d", ImGuiSliderFlags_AlwaysClamp); })
            || changed;
    }
    changed = Choose("Draw together", settings.batches.use, {"Where it pays", "Always", "Never"}) || changed;
    return EditSlider("Leave out below", settings.batches.smallestPixels, 0.0f, 8.0f, "%.1f pixels") || changed;
}

Host::SunSettings UsualSun()
{
    Host::SunSettings sun;
    sun.direction = Vector(0.5f, 1.0f, 0.3f);
    sun.time = "2026-06-21T12:00Z";
    return sun;
}

bool EditShadows(Settings& settings, const Host::SunState& state)
{
    const bool hadShadows = settings.shadows.has_value();
    const bool changed = EditOptional("Shadows of the sun", settings.shadows, Host::ShadowSettings(),
                                [](Host::ShadowSettings& shadows)
                                {
                                    bool edited = ImGui::Checkbox("Soft rims", &shadows.soft);
                                    edited = EditSlider("Width of sun", shadows.sunWidth, 0.1f, 10.0f, "%.2f deg") || edited;
                                    edited = EditSlider("Darkness", shadows.darkness, 0.0f, 1.0f) || edited;
                                    return ImGui::Checkbox("Of what is cut away too", &shadows.clippedCasts) || edited;
                                });
    // Without a sun nothing would be seen of them; one that came with them leaves with them.
    if (settings.shadows && !hadShadows && !settings.sun)
    {
        settings.sun = UsualSun();
    }
    else if (!settings.shadows && hadShadows && settings.sun == UsualSun())
    {
        settings.sun.reset();
    }
    if (settings.shadows && !settings.sun)
    {
        ImGui::TextWrapped("There is no sun; tick it below.");
    }
    else if (settings.shadows && !state.note.empty())
    {
        ImGui::TextWrapped("%s", state.note.c_str());
    }
    return changed;
}

bool EditPlace(std::optional<Host::GeoPlace>& place)
{
    const auto edit = [](Host::GeoPlace& edited)
    {
        const bool changed = EditSlider("Latitude", edited.latitude, -90.0f, 90.0f, "%.2f deg N");
        return EditSlider("Longitude", edited.longitude, -180.0f, 180.0f, "%.2f deg E") || changed;
    };
    return EditOptional("Place, else the file's", place, Host::GeoPlace{52.52f, 13.4f}, edit);
}

bool EditSunTime(Host::SunSettings& sun)
{
    char time[64];
    std::snprintf(time, sizeof(time), "%s", sun.time.c_str());
    bool changed = false;
    // A time that is half typed is none yet.
    if (ImGui::InputTextWithHint("Time", "2026-06-21T15:00+02:00, Enter", time, sizeof(time),
                                 ImGuiInputTextFlags_EnterReturnsTrue))
    {
        sun.time = time;
        changed = true;
    }
    std::string error;
    if (std::optional<Host::ZonedTime> at = Host::ZonedTime::Parse(sun.time, error))
    {
        constexpr std::int64_t day = 86400;
        const std::int64_t local = at->seconds + at->offset * 60;
        const std::int64_t midnight = local - ((local % day) + day) % day;
        auto hour = static_cast<float>(local - midnight) / 3600.0f;
        if (EditSlider("Hour", hour, 0.0f, 23.98f, "%.2f h"))
        {
            // To the minute.
            at->seconds = midnight - at->offset * 60 + 60 * std::lround(hour * 60.0f);
            sun.time = at->Text();
            changed = true;
        }
    }
    return changed;
}

bool EditSun(std::optional<Host::SunSettings>& sun, const Host::SunState& state, bool fileHasPlace)
{
    const auto edit = [fileHasPlace](Host::SunSettings& edited)
    {
        int way = edited.direction ? 0 : 1;
        bool changed = ImGui::RadioButton("Direction", &way, 0);
        ImGui::SameLine();
        changed = ImGui::RadioButton("Time and place", &way, 1) || changed;
        if (changed)
        {
            edited.direction = way == 0 ? UsualSun().direction : std::nullopt;
            if (!edited.place && !fileHasPlace)
            {
                edited.place = Host::GeoPlace{52.52f, 13.4f};
            }
        }
        if (edited.direction)
        {
            Vector direction = *edited.direction;
            if (EditVector("To the sun", direction, 0.01f) && direction.Magnitude() > 0.0f)
            {
                edited.direction = direction;
                changed = true;
            }
            return changed;
        }
        changed = EditSunTime(edited) || changed;
        changed = EditPlace(edited.place) || changed;
        return EditOptional("North, else the file's", edited.north, 0.0f, [](float& north)
                            { return EditSlider("Clockwise of -Z", north, -180.0f, 180.0f, "%.0f deg"); })
            || changed;
    };
    // The heading has the same name; what comes behind the signs tells the two apart for clicks.
    const bool changed = EditOptional("Sun##box", sun, UsualSun(), edit);
    if (sun && state.position)
    {
        ImGui::TextWrapped("Azimuth %.1f, elevation %.1f deg", state.position->azimuth, state.position->elevation);
    }
    if (!state.note.empty())
    {
        ImGui::TextWrapped("%s", state.note.c_str());
    }
    return changed;
}

bool EditSheet(Host::SheetSettings& sheet)
{
    bool changed = EditText<512>("Title", sheet.title);
    changed = ImGui::Checkbox("Scale bar", &sheet.scaleBar) || changed;
    changed = EditOptional("North", sheet.north, 0.0f,
                           [](float& north) { return EditSlider("Clockwise", north, -180.0f, 180.0f, "%.0f deg"); })
        || changed;
    char name[512];
    std::snprintf(name, sizeof(name), "%s", sheet.watermark.c_str());
    // A name that is half typed is no file yet.
    if (ImGui::InputTextWithHint("Watermark", "PNG or JPEG, Enter", name, sizeof(name),
                                 ImGuiInputTextFlags_EnterReturnsTrue))
    {
        sheet.watermark = name;
        changed = true;
    }
    return changed;
}

} // namespace

bool EditSettings(Settings& settings, const Box& box, const Host::SunState& sun, bool fileHasPlace)
{
    bool changed = false;
    ImGui::PushItemWidth(ImGui::GetContentRegionAvail().x * 0.52f);
    const auto group = [](const char* label, bool open)
    { return ImGui::CollapsingHeader(label, open ? ImGuiTreeNodeFlags_DefaultOpen : 0); };
    changed = (group("Surfaces", true) && EditSurfaces(settings, box)) || changed;
    changed = (group("Lines", true) && EditLines(settings)) || changed;
    changed = (group("Section", true) && EditSection(settings.section, box)) || changed;
    changed = (group("Surroundings", true) && EditSurroundings(settings, box)) || changed;
    changed = (group("Shadows", false) && EditShadows(settings, sun)) || changed;
    changed = (group("Sun", false) && EditSun(settings.sun, sun, fileHasPlace)) || changed;
    changed = (group("View", false) && EditView(settings.view, box)) || changed;
    changed = (group("Picture", false) && EditPicture(settings)) || changed;
    changed = (group("Sheet", false) && EditSheet(settings.sheet)) || changed;
    ImGui::PopItemWidth();
    return changed;
}

} // namespace OV::ViewerApp
