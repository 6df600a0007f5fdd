#include "apps/viewer/CommandText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

/// The shortest text that is read as the same number.
std::string TextOf(float number)
{
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof(text), number).ptr);
}

std::string TextOf(double number)
{
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof(text), number).ptr);
}

std::string TextOf(std::initializer_list<float> numbers)
{
    std::string text;
    for (const float number : numbers)
    {
        text += (text.empty() ? "" : ",") + TextOf(number);
    }
    return text;
}

std::string TextOf(const Vector& vector)
{
    return TextOf({vector.x, vector.y, vector.z});
}

int ByteOf(float channel)
{
    return static_cast<int>(std::lround(channel * 255.0f));
}

std::string TextOf(const Color& color)
{
    char text[8];
    std::snprintf(text, sizeof(text), "%02X%02X%02X", ByteOf(color.r) & 0xFF, ByteOf(color.g) & 0xFF,
                  ByteOf(color.b) & 0xFF);
    return text;
}

bool IsOfBytes(const Color& color)
{
    const auto isByte = [](float channel) { return static_cast<float>(ByteOf(channel)) / 255.0f == channel; };
    return isByte(color.r) && isByte(color.g) && isByte(color.b) && color.a == 1.0f;
}

const char* NameOf(Host::Antialiasing antialiasing)
{
    switch (antialiasing)
    {
    case Host::Antialiasing::None: return "none";
    case Host::Antialiasing::Multisampling: return "msaa";
    case Host::Antialiasing::Filter: return "fxaa";
    case Host::Antialiasing::Supersampling: break;
    }
    return "ssaa";
}

const char* NameOf(Host::BatchUse use)
{
    switch (use)
    {
    case Host::BatchUse::Auto: return "auto";
    case Host::BatchUse::On: return "on";
    case Host::BatchUse::Off: break;
    }
    return "off";
}

bool IsPlain(const std::string& word)
{
    return !word.empty() && std::all_of(word.begin(), word.end(), [](char character) {
        return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z')
            || (character >= 'A' && character <= 'Z') || std::string("-_./,:=+").find(character) != std::string::npos;
    });
}

/// Puts a command together. A value that begins with a dash would be taken for an option, so that
/// each stands with its option in one word.
class Builder
{
public:
    explicit Builder(RenderCommand& command) : m_command(command) {}

    void Add(const std::string& option) { m_command.arguments.push_back(option); }
    void Add(const std::string& option, const std::string& value) { Add(option + "=" + value); }

    void AddColor(const std::string& option, const Color& color)
    {
        if (!IsOfBytes(color))
        {
            m_command.leftOut.push_back("the colour of " + option + " is rounded");
        }
        Add(option, TextOf(color));
    }

    void LeaveOut(const std::string& sentence) { m_command.leftOut.push_back(sentence); }

private:
    RenderCommand& m_command;
};

void AddView(Builder& command, const Host::ViewSettings& view)
{
    if (view.eye)
    {
        command.Add("--eye", TextOf(*view.eye));
        if (view.target)
        {
            command.Add("--target", TextOf(*view.target));
        }
        if (view.up)
        {
            command.Add("--up", TextOf(*view.up));
        }
    }
    else
    {
        command.Add("--view", Host::ViewFit::NameOf(view.named));
    }
    command.Add("--fov", TextOf(view.fov));
    if (view.orthographic)
    {
        command.Add("--ortho");
    }
    if (view.upAxis != Host::UpAxis::Y)
    {
        command.Add("--up-axis", "z");
    }
}

void AddSection(Builder& command, const Host::SectionSettings& section, bool hasEye)
{
    for (const Host::ClipPlane& plane : section.planes)
    {
        command.Add("--clip", TextOf(plane.normal) + "," + TextOf(plane.position));
    }
    if (section.planes.empty())
    {
        return;
    }
    if (!hasEye)
    {
        // The window gives all of the model room, also what is cut away.
        command.Add("--fit-all");
    }
    if (section.fill)
    {
        command.AddColor("--poche", *section.fill);
    }
    else
    {
        command.Add("--poche", "off");
    }
    if (section.outlineWidth)
    {
        command.Add("--outline", TextOf(*section.outlineWidth));
    }
    command.AddColor("--outline-color", section.outlineColor);
}

void AddLines(Builder& command, const Host::LineSettings& lines)
{
    command.Add("--lines");
    command.Add("--crease", TextOf(lines.crease));
    command.Add("--line-width", TextOf(lines.width));
    command.AddColor("--line-color", lines.color);
    if (lines.dash)
    {
        command.Add("--dash", TextOf(*lines.dash));
    }
    command.Add("--line-offset", TextOf(lines.offset));
    if (lines.hidden == Host::HiddenLines::Dashed)
    {
        command.Add("--hidden", "dashed");
    }
}

void AddSun(Builder& command, const Host::PresentationSettings& settings)
{
    const Host::SunSettings& sun = *settings.sun;
    if (sun.direction)
    {
        command.Add("--sun", TextOf(*sun.direction));
        return;
    }
    command.Add("--sun", sun.time);
    if (sun.place)
    {
        command.Add("--place", TextOf({sun.place->latitude, sun.place->longitude}));
    }
    // One option is north for both, and the arrow follows the sun's.
    if (sun.north)
    {
        command.Add("--north", TextOf(*sun.north));
        if (!settings.sheet.north)
        {
            command.LeaveOut("there is no north arrow");
        }
    }
    else if (settings.sheet.north)
    {
        command.LeaveOut("there is a north arrow");
    }
}

void AddSheet(Builder& command, const Host::SheetSettings& sheet, bool hasSky, bool isNorthTold)
{
    if (!sheet.title.empty())
    {
        command.Add("--title", sheet.title);
    }
    if (sheet.scaleBar)
    {
        command.Add("--scale-bar");
    }
    if (sheet.north && !isNorthTold)
    {
        command.Add("--north", TextOf(*sheet.north));
    }
    if (!sheet.watermark.empty() && !hasSky)
    {
        command.Add("--watermark", sheet.watermark);
    }
}

void AddShadows(Builder& command, const Host::PresentationSettings& settings)
{
    if (settings.shadows)
    {
        const Host::ShadowSettings usual;
        const Host::ShadowSettings& shadows = *settings.shadows;
        command.Add("--shadows", shadows.soft ? "soft" : "hard");
        if (shadows.sunWidth != usual.sunWidth)
        {
            command.Add("--sun-width", TextOf(shadows.sunWidth));
        }
        if (shadows.darkness != usual.darkness)
        {
            command.Add("--shadow-darkness", TextOf(shadows.darkness));
        }
        if (shadows.clippedCasts)
        {
            command.Add("--clipped-casts");
        }
    }
}

void AddSurroundings(Builder& command, const Host::PresentationSettings& settings)
{
    if (!settings.surroundings.empty())
    {
        command.Add("--surroundings", settings.surroundings);
    }
    if (!settings.ground)
    {
        return;
    }
    if (settings.ground->kind == Host::GroundKind::ShadowCatcher)
    {
        command.Add("--ground", "shadow");
    }
    else
    {
        command.AddColor("--ground", settings.ground->color);
    }
    if (settings.ground->height)
    {
        command.LeaveOut("the ground is as low as the model");
    }
}

void AddOcclusion(Builder& command, const Host::PresentationSettings& settings)
{
    if (!settings.occlusion)
    {
        return;
    }
    const Host::OcclusionLook usual;
    const Host::OcclusionLook& look = settings.occlusionLook;
    command.Add("--ao");
    if (look.kind == Host::OcclusionKind::Spiral)
    {
        command.Add("--ao-kind", "spiral");
    }
    if (look.radius)
    {
        command.Add("--ao-radius", TextOf(*look.radius));
    }
    if (look.strength != usual.strength)
    {
        command.Add("--ao-strength", TextOf(look.strength));
    }
}

void AddSurfaces(Builder& command, const Host::PresentationSettings& settings)
{
    command.Add("--look", Host::NameOfLook(settings.look));
    if (!settings.cullBacks)
    {
        command.Add("--no-cull");
    }
    if (settings.glass.order != Host::GlassOrder::Exact)
    {
        command.Add("--glass", settings.glass.order == Host::GlassOrder::Scene ? "scene" : "weighted");
    }
    else if (settings.glass.layers != Host::GlassSettings().layers)
    {
        command.Add("--glass-layers", std::to_string(settings.glass.layers));
    }
    if (!settings.editPath.empty() && (settings.look == Host::Look::Advanced || settings.look == Host::Look::Phong))
    {
        command.Add("--edit", settings.editPath);
    }
    if (settings.edges)
    {
        command.Add("--edges", TextOf(settings.edges->weight));
        command.AddColor("--edge-color", settings.edges->color);
        if (settings.edges->identity != Host::EdgeLook().identity)
        {
            command.LeaveOut("edges are those between nodes");
        }
    }
    AddOcclusion(command, settings);
    AddShadows(command, settings);
}

void AddShown(Builder& command, const Shown& shown)
{
    for (const std::string& path : shown.hidden)
    {
        command.Add("--hide", path);
    }
    if (!shown.isolated.empty())
    {
        command.Add("--isolate", shown.isolated);
    }
    for (const std::string& path : shown.labels)
    {
        command.Add("--label", path);
    }
    for (const Host::Dimension& dimension : shown.dimensions)
    {
        std::string places;
        for (const QGM::Point3d& point : dimension.points)
        {
            for (const double number : {point.x, point.y, point.z})
            {
                places += (places.empty() ? "" : ",") + TextOf(number);
            }
        }
        command.Add(dimension.points.size() == 2 ? "--distance" : "--angle", places);
    }
    if (shown.pixelRatio != 1.0f)
    {
        command.Add("--pixel-ratio", TextOf(shown.pixelRatio));
    }
}

/// A name that begins with a dash is no option when a folder stands before it.
std::string ArgumentOf(const std::string& file)
{
    return !file.empty() && file[0] == '-' ? "./" + file : file;
}

} // namespace

std::string RenderCommand::ToShell() const
{
    std::string line = "orvane-render";
    for (const std::string& word : arguments)
    {
        line += ' ';
        if (IsPlain(word))
        {
            line += word;
            continue;
        }
        line += '\'';
        for (const char character : word)
        {
            line += character == '\'' ? std::string("'\\''") : std::string(1, character);
        }
        line += '\'';
    }
    return line;
}

RenderCommand MakeRenderCommand(const Host::PresentationSettings& settings, const std::string& model, int width,
                                int height, const std::string& output, const Shown& shown)
{
    RenderCommand command;
    Builder builder(command);
    builder.Add(ArgumentOf(model));
    for (const std::string& file : shown.besides)
    {
        builder.Add(ArgumentOf(file));
    }
    builder.Add("-o");
    builder.Add(output);
    builder.Add("--size", std::to_string(width) + "x" + std::to_string(height));
    builder.Add("--aa", NameOf(settings.antialiasing));
    if (settings.samples && settings.antialiasing == Host::Antialiasing::Multisampling)
    {
        builder.Add("--samples", std::to_string(*settings.samples));
    }
    if (settings.batches.use != Host::BatchUse::Auto)
    {
        builder.Add("--batches", NameOf(settings.batches.use));
    }
    if (settings.batches.smallestPixels > 0.0f)
    {
        builder.LeaveOut("small things are drawn");
    }
    AddView(builder, settings.view);
    AddSurfaces(builder, settings);
    // What counts only beside another field may stay set without it, but not on a command line.
    if (settings.look != Host::Look::Crosshatch)
    {
        AddSection(builder, settings.section, settings.view.eye.has_value());
    }
    builder.AddColor("--background", settings.background);
    if (settings.sky)
    {
        builder.Add("--sky");
    }
    if (settings.fog)
    {
        builder.Add("--fog", TextOf({settings.fog->start, settings.fog->end}));
    }
    AddSurroundings(builder, settings);
    if (settings.lines)
    {
        AddLines(builder, *settings.lines);
    }
    if (settings.sun)
    {
        AddSun(builder, settings);
    }
    AddSheet(builder, settings.sheet, settings.sky, settings.sun && !settings.sun->direction);
    AddShown(builder, shown);
    return command;
}

} // namespace OV::ViewerApp
