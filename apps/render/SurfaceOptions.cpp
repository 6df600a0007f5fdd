#include "apps/render/SurfaceOptions.h"

#include "apps/render/OptionText.h"
#include "orvane_host/present/PresentationSettings.h"

#include <CLI/CLI.hpp>

#include <cmath>

namespace OV::RenderApp
{

namespace
{

Host::ClipPlane ParseClip(const std::string& text)
{
    const char* const form = "six numbers NX,NY,NZ,PX,PY,PZ, a normal and a point";
    const std::vector<float> numbers = ParseNumbers("--clip", text, 6, form);
    const Vector normal(numbers[0], numbers[1], numbers[2]);
    const float length = std::hypot(normal.x, normal.y, normal.z);
    if (!(length > 0.0f) || !std::isfinite(length))
    {
        throw Bad("--clip", text, "a plane: its normal has no direction");
    }
    // The width of the outline is measured in normals.
    return {Vector(normal.x / length, normal.y / length, normal.z / length),
            Vector(numbers[3], numbers[4], numbers[5])};
}

} // namespace

void DefineSurfaceOptions(CLI::App& app, SurfaceTexts& texts, Host::PresentationSettings& settings)
{
    const char* const group = "Surfaces";
    app.add_option("--look", texts.look, "basic, advanced, phong, crosshatch, monotone or\n"
                                         "vertex-color; advanced if left out")
        ->option_text("NAME")->group(group);
    app.add_option("--glass", texts.glass, "How see-through surfaces lie over each other: exact, the\n"
                                           "nearer over the farther at every pixel; weighted, mixed;\n"
                                           "scene, in the order of the file; exact if left out")
        ->option_text("exact|weighted|scene")->group(group);
    app.add_option("--glass-layers", settings.glass.layers, "How many come in exact order, one behind the other, 1 to\n"
                                                            "64; what lies behind them is mixed; 8 if left out")
        ->option_text("N")->check(CLI::Range(1, Host::GlassSettings::MostLayers))->group(group);
    auto* clip = app.add_option("--clip", texts.clips, "Cut away what lies on the side of a normal at a point;\n"
                                                       "up to 6 times")
        ->option_text("NX,NY,NZ,PX,PY,PZ")->allow_extra_args(false)->group(group);
    app.add_option("--poche", texts.poche, "Colour of what is cut, or off; 333333 if left out")
        ->option_text("RRGGBB|off")->needs(clip)->group(group);
    app.add_option("--outline", settings.section.outlineWidth, "Width of the outline along a cut in units of the model,\n"
                                                          "0 for none; a 500th of the model if left out")
        ->option_text("WIDTH")->needs(clip)->group(group);
    app.add_option("--outline-color", texts.outlineColor, "Colour of the outline; 000000 if left out")
        ->option_text("RRGGBB")->needs(clip)->group(group);
    app.add_option("--edit", texts.edit, "Draw all in grey but a node and what is below it, found\n"
                                       "by its name or by names from a node down to it, with\n"
                                       "slashes between them; advanced and phong only")
        ->option_text("PATH")->group(group);
}

void InterpretSurfaces(const SurfaceTexts& texts, Host::PresentationSettings& settings)
{
    settings.cullBacks = !texts.noCull;
    if (texts.glass == "exact")
    {
        settings.glass.order = Host::GlassOrder::Exact;
    }
    else if (texts.glass == "weighted" || texts.glass == "scene")
    {
        settings.glass.order = texts.glass == "scene" ? Host::GlassOrder::Scene : Host::GlassOrder::Weighted;
    }
    else
    {
        throw Bad("--glass", texts.glass, "one of exact, weighted, scene");
    }
    if (!Host::ParseLook(texts.look, settings.look))
    {
        throw Bad("--look", texts.look, "one of basic, advanced, phong, crosshatch, monotone, vertex-color");
    }
    if (texts.clips.size() > Host::PresentationSettings::MostClipPlanes)
    {
        throw CLI::ValidationError("--clip", "there are at most " + std::to_string(Host::PresentationSettings::MostClipPlanes) + " planes");
    }
    for (const std::string& clip : texts.clips)
    {
        settings.section.planes.push_back(ParseClip(clip));
    }
    if (!texts.clips.empty() && settings.look == Host::Look::Crosshatch)
    {
        throw CLI::ValidationError("--clip", "the look crosshatch is not cut; use another");
    }
    if (texts.poche == "off")
    {
        settings.section.fill.reset();
    }
    else if (texts.poche)
    {
        settings.section.fill = ParseColor("--poche", *texts.poche);
    }
    if (settings.section.outlineWidth && !(*settings.section.outlineWidth >= 0.0f && std::isfinite(*settings.section.outlineWidth)))
    {
        throw CLI::ValidationError("--outline", "a width is 0 or more");
    }
    settings.section.outlineColor = ParseColor("--outline-color", texts.outlineColor);
    if (texts.edit && texts.edit->empty())
    {
        throw Bad("--edit", *texts.edit, "the name of a node");
    }
    settings.editPath = texts.edit.value_or(std::string());
    if (texts.edit && settings.look != Host::Look::Advanced && settings.look != Host::Look::Phong)
    {
        throw CLI::ValidationError("--edit", "the look " + texts.look + " shows no edit; use advanced or phong");
    }
}

} // namespace OV::RenderApp
