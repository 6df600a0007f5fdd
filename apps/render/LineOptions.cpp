#include "apps/render/LineOptions.h"

#include "apps/render/OptionText.h"

#include <CLI/CLI.hpp>

#include <cmath>

namespace OV::RenderApp
{

namespace
{

constexpr float WidestLine = 100.0f;

/// Written so that what is not a number fails.
void CheckLineLook(const Host::LineSettings& look)
{
    if (!(look.crease >= 0.0f && look.crease <= 180.0f))
    {
        throw CLI::ValidationError("--crease", "an angle of bending is 0 to 180 degrees");
    }
    if (!(look.width > 0.0f && look.width <= WidestLine))
    {
        throw CLI::ValidationError("--line-width", "a width is above 0 and at most 100 pixels");
    }
    if (look.dash && !(*look.dash > 0.0f && std::isfinite(*look.dash)))
    {
        throw CLI::ValidationError("--dash", "the length of a dash is above 0 pixels");
    }
    if (!std::isfinite(look.offset))
    {
        throw CLI::ValidationError("--line-offset", "an offset is a number");
    }
}

} // namespace

void DefineLineOptions(CLI::App& app, LineTexts& texts)
{
    const char* const group = "Lines";
    Host::LineSettings& look = texts.look;
    auto* lines = app.add_flag("--lines", texts.wanted, "Draw the edges of the model: where it bends or ends")
        ->group(group);
    app.add_option("--crease", look.crease, "Draw no edge that bends less; 30 if left out")
        ->option_text("DEG")->needs(lines)->group(group);
    app.add_option("--line-width", look.width, "Width of a line in pixels; 1 if left out")
        ->option_text("PX")->needs(lines)->group(group);
    app.add_option("--line-color", texts.color, "Colour of lines; 000000 if left out")
        ->option_text("RRGGBB")->needs(lines)->group(group);
    app.add_option("--dash", look.dash, "Length of a dash and of a gap in pixels; no gaps if\n"
                                        "left out")
        ->option_text("FREQ")->needs(lines)->group(group);
    app.add_option("--line-offset", look.offset, "Shift of lines towards the eye, in 1/500 of the depth of\n"
                                                 "the view without perspective; 0 if left out, since faces\n"
                                                 "make room for the lines on them")
        ->option_text("VALUE")->needs(lines)->group(group);
    app.add_option("--hidden", texts.hidden, "What is drawn of lines behind surfaces: none, or dashed\n"
                                             "and thinner; none if left out")
        ->option_text("none|dashed")->needs(lines)->group(group);
}

void InterpretLines(const LineTexts& texts, Host::PresentationSettings& settings)
{
    if (!texts.wanted)
    {
        return;
    }
    CheckLineLook(texts.look);
    settings.lines = texts.look;
    settings.lines->color = ParseColor("--line-color", texts.color);
    if (texts.hidden != "none" && texts.hidden != "dashed")
    {
        throw CLI::ValidationError("--hidden", "'" + texts.hidden + "' is neither none nor dashed");
    }
    settings.lines->hidden = texts.hidden == "dashed" ? Host::HiddenLines::Dashed : Host::HiddenLines::None;
}

} // namespace OV::RenderApp
