#include "apps/render/PrintOptions.h"

#include "apps/render/OptionText.h"
#include "apps/render/Options.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <iterator>
#include <utility>

namespace OV::RenderApp
{

namespace
{

constexpr double MetresPerInch = 0.0254;
constexpr float UsualDpi = 300.0f;
constexpr float MostDpi = 10000.0f;

/// ISO 216, lying, in millimetres.
struct Paper
{
    const char* name;
    int width;
    int height;
};

constexpr Paper kPapers[] = {
    {"A0", 1189, 841}, {"A1", 841, 594}, {"A2", 594, 420}, {"A3", 420, 297}, {"A4", 297, 210}, {"A5", 210, 148},
};

const Paper& ParsePaper(const std::string& text)
{
    std::string name = text;
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    const auto* const found = std::find_if(std::begin(kPapers), std::end(kPapers),
                                           [&](const Paper& paper) { return name == paper.name; });
    if (found == std::end(kPapers))
    {
        throw Bad("--paper", text, "one of A0, A1, A2, A3, A4, A5");
    }
    return *found;
}

/// Lengths in the world for one on paper.
double ParseScale(const std::string& text)
{
    const char* const form = "a scale such as 1:100";
    const std::vector<std::string> parts = Split(text, ':');
    if (parts.size() != 2)
    {
        throw Bad("--scale", text, form);
    }
    const auto paper = ParseNumber<double>(parts[0]);
    const auto world = ParseNumber<double>(parts[1]);
    // Written so that what is not a number fails.
    if (!paper || !world || !(*paper > 0.0 && std::isfinite(*paper)) || !(*world > 0.0 && std::isfinite(*world)))
    {
        throw Bad("--scale", text, form);
    }
    return *world / *paper;
}

int PixelsOf(int millimetres, double pixelsPerMetre)
{
    return std::max(static_cast<int>(std::lround(millimetres * 0.001 * pixelsPerMetre)), 1);
}

} // namespace

void DefinePrintOptions(CLI::App& app, PrintTexts& texts, CLI::Option& size, Options& options)
{
    const char* const group = "Print";
    auto* const paper = app.add_option("--paper", texts.paper, "Size of the paper, A0 to A5, in place of --size")
        ->option_text("NAME")->excludes(&size)->group(group);
    app.add_flag("--portrait", texts.portrait, "Paper that stands; it lies if left out")->needs(paper)->group(group);
    app.add_option("--dpi", texts.dpi, "Pixels an inch, written to the file; 300 with --paper\n"
                                       "if left out")
        ->option_text("N")->check(NumberTrouble)->group(group);
    app.add_option("--scale", texts.scale, "Draw without perspective and so large that a length on\n"
                                           "paper stands for so many in the world; with --paper or\n"
                                           "--dpi. A model without a unit counts in metres")
        ->option_text("1:N")->group(group);
    app.add_flag("--alpha", options.picture.transparent, "Leave the background out: a transparent PNG")->group(group);
    app.add_option("--depth", options.picture.bits, "Bits of a channel, 8 or 16; 8 if left out")
        ->option_text("N")->group(group);
}

void InterpretPrint(const PrintTexts& texts, Options& options)
{
    Host::PictureOptions& picture = options.picture;
    if (picture.bits != 8 && picture.bits != 16)
    {
        throw CLI::ValidationError("--depth", "a channel has 8 or 16 bits");
    }
    // Written so that what is not a number fails.
    if (texts.dpi && !(*texts.dpi >= 1.0f && *texts.dpi <= MostDpi))
    {
        throw CLI::ValidationError("--dpi", "there are 1 to 10000 pixels an inch");
    }
    if (picture.transparent && options.settings.sky)
    {
        throw CLI::ValidationError("--alpha", "the --sky covers the background; leave one of them out");
    }
    if (texts.dpi || texts.paper)
    {
        picture.pixelsPerMetre = static_cast<double>(texts.dpi.value_or(UsualDpi)) / MetresPerInch;
    }
    if (texts.paper)
    {
        const Paper& paper = ParsePaper(*texts.paper);
        options.width = PixelsOf(paper.width, picture.pixelsPerMetre);
        options.height = PixelsOf(paper.height, picture.pixelsPerMetre);
        if (texts.portrait)
        {
            std::swap(options.width, options.height);
        }
    }
    if (!texts.scale)
    {
        return;
    }
    if (!texts.dpi && !texts.paper)
    {
        throw CLI::ValidationError("--scale", "what is printed has a size: tell a --paper, or --size and --dpi");
    }
    options.scale = ParseScale(*texts.scale);
    options.settings.view.orthographic = true;
}

} // namespace OV::RenderApp
