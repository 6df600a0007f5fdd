#include "apps/render/Options.h"

#include "apps/common/FlagWords.h"
#include "apps/render/CallerText.h"
#include "apps/render/LineOptions.h"
#include "apps/render/OcclusionOptions.h"
#include "apps/render/OptionText.h"
#include "apps/render/PrintOptions.h"
#include "apps/render/Report.h"
#include "apps/render/SunOptions.h"
#include "apps/render/SurfaceOptions.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace OV::RenderApp
{

namespace
{

constexpr int MostSamples = 64;
constexpr int MostFrames = 1000000;

/// The values as they were typed, where CLI11 has no type for them.
struct Texts
{
    std::string size = "1280x720";
    std::string view = "iso";
    std::optional<std::string> eye;
    std::optional<std::string> target;
    std::optional<std::string> up;
    std::optional<std::string> antialiasing;
    std::string background = "FFFFFF";
    std::optional<std::string> fog;
    std::optional<std::string> ground;
    std::optional<float> edges;
    std::string edgeColor = "000000";
    SurfaceTexts surfaces;
    LineTexts lines;
    std::optional<std::string> pick;
    std::string batches = "auto";
    ModelTexts models;
    std::optional<std::string> upAxis;
    NodeTexts nodes;
    std::optional<std::string> listing;
    PrintTexts print;
    SunTexts sun;
    ShadowTexts shadows;
    OcclusionTexts occlusion;
};

struct NamedAntialiasing
{
    const char* name;
    Host::Antialiasing antialiasing;
};

constexpr NamedAntialiasing kAntialiasing[] = {
    {"none", Host::Antialiasing::None},
    {"msaa", Host::Antialiasing::Multisampling},
    {"fxaa", Host::Antialiasing::Filter},
    {"ssaa", Host::Antialiasing::Supersampling},
};

struct NamedBatchUse
{
    const char* name;
    Host::BatchUse use;
};

constexpr NamedBatchUse kBatchUses[] = {
    {"auto", Host::BatchUse::Auto},
    {"on", Host::BatchUse::On},
    {"off", Host::BatchUse::Off},
};

/// Names what has to be there in the line of usage.
class Formatter : public CLI::Formatter
{
public:
    std::string make_usage(const CLI::App*, std::string name) const override
    {
        return "\nUsage: " + name + " [options] MODEL... -o OUT.png\n";
    }
};

void ParseSize(const std::string& text, Options& options)
{
    const char* const form = "a size WxH in pixels, such as 1280x720";
    const std::vector<std::string> parts = Split(text, 'x');
    if (parts.size() != 2)
    {
        throw Bad("--size", text, form);
    }
    const auto width = ParseNumber<std::int64_t>(parts[0]);
    const auto height = ParseNumber<std::int64_t>(parts[1]);
    if (!width || !height)
    {
        throw Bad("--size", text, form);
    }
    if (*width < 1 || *height < 1)
    {
        throw Bad("--size", text, "a size with any pixels; the smallest is 1x1");
    }
    // What is too large is for GL to say: its limit is worth naming.
    constexpr std::int64_t largest = std::numeric_limits<int>::max();
    options.width = static_cast<int>(std::min(*width, largest));
    options.height = static_cast<int>(std::min(*height, largest));
}

Host::FogRange ParseFog(const std::string& text)
{
    const char* const form = "two distances START,END, not negative, the end beyond the start";
    const std::vector<float> range = ParseNumbers("--fog", text, 2, form);
    if (range[0] < 0.0f || range[1] <= range[0])
    {
        throw Bad("--fog", text, form);
    }
    return {range[0], range[1]};
}

Host::GroundSettings ParseGround(const std::string& text)
{
    Host::GroundSettings ground;
    if (text == "shadow")
    {
        ground.kind = Host::GroundKind::ShadowCatcher;
        return ground;
    }
    ground.color = ParseColor("--ground", text);
    return ground;
}

void DefineGeneralOptions(CLI::App& app, Options& options, Texts& texts, bool& listFormats)
{
    app.set_help_flag("-h,--help", "Show this text and leave");
    app.set_version_flag("--version", "orvane-render " ORVANE_VERSION, "Show the version and leave");
    app.add_flag("--list-formats", listFormats, "Show the file formats that can be read and leave");
    DefineModelOptions(app, texts.models);
    app.add_option("-o,--output", options.output, "PNG or JPEG file to write; - for standard output")
        ->option_text("OUT.png");
    app.add_flag("--quiet", options.quiet, "Write no warnings; failures are told all the same");
    app.add_flag("--fail-if-empty", options.failIfEmpty, "Leave with status 1 where nothing of the model is seen");
}

void DefinePictureOptions(CLI::App& app, Options& options, Texts& texts)
{
    const char* const group = "Picture";
    auto* size = app.add_option("--size", texts.size, "Size in pixels, up to 65535x65535; 1280x720 if left out")
        ->option_text("WxH")->group(group);
    app.add_option("--aa", texts.antialiasing, "How rims are smoothed: none, msaa (several samples a\n"
                                               "pixel), fxaa (a filter over the picture) or ssaa (drawn\n"
                                               "in twice the size); if left out msaa, or ssaa with\n"
                                               "--clip")
        ->option_text("NAME")->group(group);
    app.add_option("--samples", options.settings.samples, "Samples a pixel of msaa, 0 for hard edges; if left out 4,\n"
                                                 "or 0 where GL has none")
        ->option_text("N")->check(NumberTrouble)->group(group);
    app.add_option("--batches", texts.batches, "Whether what stands still is drawn together, in few\n"
                                               "calls: on, off, or auto, where there is much of it;\n"
                                               "auto if left out")
        ->option_text("NAME")->group(group);
    app.add_option("--background", texts.background, "Colour behind the model, of fog and of the horizon;\n"
                                                     "FFFFFF if left out")
        ->option_text("RRGGBB")->group(group);
    app.add_flag("--sky", options.settings.sky, "Draw a sky behind the model")->group(group);
    app.add_option("--fog", texts.fog, "Fade out between two distances from the eye, in units\n"
                                       "of the model")
        ->option_text("START,END")->group(group);
    app.add_option("--pixel-ratio", options.picture.pixelRatio, "Pixels of the picture for each of a line's width, 0.5\n"
                                                        "to 8; 1 if left out")
        ->option_text("N")->group(group);
    app.add_option("--surroundings", options.settings.surroundings, "What smooth surfaces reflect: sky, a PNG or JPEG file in\n"
                                                                    "all directions (twice as wide as high), or six sides of\n"
                                                                    "a cube: a star in the name stands for px, nx and so on;\n"
                                                                    "advanced and phong only")
        ->option_text("FILE|sky")->group(group);
    app.add_option("--ground", texts.ground, "Draw a ground under the model: a colour that fades into\n"
                                             "the horizon, or shadow for shadows alone")
        ->option_text("shadow|#RRGGBB")->group(group);
    app.add_flag("--no-cull", texts.surfaces.noCull, "Draw the back of every face too")->group(group);
    app.add_flag("--keep-coplanar", options.keepsCoplanar, "Leave faces in one plane to show in turns; without this\n"
                                                           "the thinner of two things is seen, of equals the later")
        ->group(group);
    DefinePrintOptions(app, texts.print, *size, options);
}

void DefineViewOptions(CLI::App& app, Options& options, Texts& texts)
{
    const char* const group = "View";
    auto* view = app.add_option("--view", texts.view, "iso, front, back, left, right, top or bottom, with all of\n"
                                                      "the model in the picture; iso if left out")
        ->option_text("NAME")->group(group);
    auto* eye = app.add_option("--eye", texts.eye, "Where the eye is, in place of --view; Y is up")
        ->option_text("X,Y,Z")->excludes(view)->group(group);
    app.add_option("--target", texts.target, "What the eye looks at; the middle of the model if left out")
        ->option_text("X,Y,Z")->needs(eye)->group(group);
    app.add_option("--up", texts.up, "What is up in the picture; the axis that is up if left out")
        ->option_text("X,Y,Z")->needs(eye)->group(group);
    app.add_option("--up-axis", texts.upAxis, "The axis of the model that is up, y or z; y if left out")
        ->option_text("NAME")->group(group);
    app.add_option("--fov", options.settings.view.fov, "Full vertical angle of view; 35 if left out")
        ->option_text("DEG")->group(group);
    app.add_flag("--fit-all", options.fitsAll, "Leave room for what is cut away too")->group(group);
    app.add_flag("--ortho", options.settings.view.orthographic, "Draw without perspective")->group(group);
}

void DefineScreenOptions(CLI::App& app, Texts& texts)
{
    const char* const group = "Over the picture";
    auto* edges = app.add_option("--edges", texts.edges, "Draw an edge where one node ends and another begins, of\n"
                                                   "an opacity from 0 to 1; 0.5 if left out")
        ->option_text("[WEIGHT]")->group(group);
    app.add_option("--edge-color", texts.edgeColor, "Colour of edges; 000000 if left out")
        ->option_text("RRGGBB")->needs(edges)->group(group);
}

void DefineSheetOptions(CLI::App& app, Options& options)
{
    const char* const group = "Sheet";
    app.add_option("--title", options.settings.sheet.title, "Text in the lower right corner")->option_text("TEXT")->group(group);
    app.add_flag("--scale-bar", options.settings.sheet.scaleBar, "Draw a bar of a round length in units of the model, right\n"
                                                  "at what the eye looks at and everywhere with --ortho")
        ->group(group);
    app.add_option("--north", options.settings.sheet.north, "Draw an arrow to the north, which is so many degrees\n"
                                             "clockwise from the top of the picture")
        ->option_text("DEG")->check(NumberTrouble)->group(group);
    app.add_option("--watermark", options.settings.sheet.watermark, "Picture in the middle behind the model, in place of --sky")
        ->option_text("FILE.png")->group(group);
}

void DefineMeasuringOptions(CLI::App& app, Options& options, Texts& texts)
{
    const char* const group = "Measuring";
    app.add_option("--pick", texts.pick, "Write what is at a pixel, counted from the upper left\n"
                                         "corner, to standard output, as JSON: what is seen and\n"
                                         "what is behind it. No picture needs to be written")
        ->option_text("X,Y")->group(group);
    app.add_flag("--stats", options.stats, "Write times and counts to standard output, as JSON")->group(group);
    app.add_option("--list-nodes", texts.listing, "Write the tree of nodes to standard output, as text or\n"
                                                "as json. No picture needs to be written")
        ->option_text("[text|json]")->group(group);
    app.add_option("--frames", options.frames, "Draw the picture so often; 1 if left out")
        ->option_text("N")->group(group);
}

void CheckRanges(const Options& options)
{
    // Written so that what is not a number fails.
    if (!(options.settings.view.fov >= 1.0f && options.settings.view.fov <= 170.0f))
    {
        throw CLI::ValidationError("--fov", "an angle is 1 to 170 degrees");
    }
    if (options.settings.samples && (*options.settings.samples < 0 || *options.settings.samples > MostSamples))
    {
        throw CLI::ValidationError("--samples", "there are 0 to " + std::to_string(MostSamples) + " samples");
    }
    if (!(options.picture.pixelRatio >= 0.5f && options.picture.pixelRatio <= 8.0f))
    {
        throw CLI::ValidationError("--pixel-ratio", "a ratio is 0.5 to 8");
    }
    if (options.frames < 1 || options.frames > MostFrames)
    {
        throw CLI::ValidationError("--frames", "there are 1 to " + std::to_string(MostFrames) + " frames");
    }
}

/// It is the shader that cuts, which the samples of msaa do not smooth.
std::string UsualAntialiasing(const Texts& texts, const Options& options)
{
    return !texts.surfaces.clips.empty() && !options.settings.samples ? "ssaa" : "msaa";
}

void InterpretBatches(const Texts& texts, Options& options)
{
    const auto found = std::find_if(std::begin(kBatchUses), std::end(kBatchUses),
                                    [&](const NamedBatchUse& named) { return named.name == texts.batches; });
    if (found == std::end(kBatchUses))
    {
        throw Bad("--batches", texts.batches, "one of auto, on, off");
    }
    options.settings.batches.use = found->use;
}

void InterpretAntialiasing(const Texts& texts, Options& options)
{
    const std::string name = texts.antialiasing ? *texts.antialiasing : UsualAntialiasing(texts, options);
    const auto found = std::find_if(std::begin(kAntialiasing), std::end(kAntialiasing),
                                    [&](const NamedAntialiasing& named) { return named.name == name; });
    if (found == std::end(kAntialiasing))
    {
        throw Bad("--aa", name, "one of none, msaa, fxaa, ssaa");
    }
    options.settings.antialiasing = found->antialiasing;
    if (options.settings.samples && options.settings.antialiasing != Host::Antialiasing::Multisampling)
    {
        throw CLI::ValidationError("--samples", "only msaa has samples; leave it out or --aa " + name);
    }
}

void InterpretEdges(const Texts& texts, Options& options)
{
    if (!texts.edges)
    {
        return;
    }
    // Written so that what is not a number fails.
    if (!(*texts.edges >= 0.0f && *texts.edges <= 1.0f))
    {
        throw CLI::ValidationError("--edges", "an opacity is 0 to 1");
    }
    options.settings.edges.emplace();
    options.settings.edges->weight = *texts.edges;
    options.settings.edges->color = ParseColor("--edge-color", texts.edgeColor);
}

/// CLI11 takes whatever follows for the value of an option. Here only a number is the one of
/// --edges, and only a form that of --list-nodes, so that they may stand alone with the model behind.
std::vector<std::string> CompleteWords(int argc, const char* const* argv)
{
    std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    for (std::size_t i = 0; i < words.size(); ++i)
    {
        const bool hasValue = i + 1 < words.size() && ParseNumber<float>(words[i + 1]);
        if (words[i] == "--edges" && !hasValue)
        {
            words[i] += "=" + std::to_string(Host::EdgeLook().weight);
        }
        const bool hasForm = i + 1 < words.size() && (words[i + 1] == "text" || words[i + 1] == "json");
        if (words[i] == "--list-nodes" && !hasForm)
        {
            words[i] += "=text";
        }
    }
    return words;
}

void CheckSheet(const Options& options)
{
    if (options.settings.sheet.north && !std::isfinite(*options.settings.sheet.north))
    {
        throw CLI::ValidationError("--north", "an angle is a number of degrees");
    }
    if (options.settings.sky && !options.settings.sheet.watermark.empty())
    {
        throw CLI::ValidationError("--watermark", "the --sky would hide it; leave one of them out");
    }
}

PickedPixel ParsePixel(const std::string& text, const Options& options)
{
    const std::vector<std::string> parts = Split(text, ',');
    const auto x = ParseNumber<int>(parts.front());
    const auto y = ParseNumber<int>(parts.back());
    if (parts.size() != 2 || !x || !y)
    {
        throw Bad("--pick", text, "a pixel X,Y, such as 640,360");
    }
    if (*x < 0 || *x >= options.width || *y < 0 || *y >= options.height)
    {
        throw Bad("--pick", text, "in the picture, which ends at " + std::to_string(options.width - 1) + ","
                      + std::to_string(options.height - 1));
    }
    return {*x, *y};
}

void Define(CLI::App& app, Options& options, Texts& texts, bool& listFormats)
{
    app.name("orvane-render");
    app.description("Renders a model file into a PNG or JPEG picture.");
    app.formatter(std::make_shared<Formatter>());
    app.get_formatter()->column_width(22);
    DefineGeneralOptions(app, options, texts, listFormats);
    DefinePictureOptions(app, options, texts);
    DefineViewOptions(app, options, texts);
    DefineSurfaceOptions(app, texts.surfaces, options.settings);
    DefineScreenOptions(app, texts);
    DefineOcclusionOptions(app, texts.occlusion, options.settings);
    DefineShadowOptions(app, texts.shadows);
    DefineLineOptions(app, texts.lines);
    DefineSunOptions(app, texts.sun);
    DefineSheetOptions(app, options);
    DefineNodeOptions(app, texts.nodes);
    DefineMeasuringOptions(app, options, texts);
    app.footer("The view is from the front, the right and above unless told otherwise.\n"
               "Exit status: 0 done, 1 failed, 2 wrong usage.");
}

/// With an eye the axis is what is up in the picture, unless that is told as well.
void InterpretUpAxis(const Texts& texts, Host::ViewSettings& view)
{
    if (!texts.upAxis)
    {
        return;
    }
    if (*texts.upAxis != "y" && *texts.upAxis != "z")
    {
        throw Bad("--up-axis", *texts.upAxis, "y or z");
    }
    view.upAxis = *texts.upAxis == "z" ? Host::UpAxis::Z : Host::UpAxis::Y;
}

/// What is to be done besides the picture, or in place of it.
void InterpretTasks(const Texts& texts, Options& options)
{
    if (texts.listing)
    {
        if (*texts.listing != "text" && *texts.listing != "json")
        {
            throw Bad("--list-nodes", *texts.listing, "text or json");
        }
        options.listing = *texts.listing == "json" ? NodeListing::JSON : NodeListing::Text;
    }
    const bool tells = texts.pick || texts.listing || options.stats;
    if (options.output.empty() && !tells)
    {
        throw CLI::RequiredError("-o OUT.png");
    }
    if (options.output == "-" && tells)
    {
        throw CLI::ValidationError("-o", "standard output takes the picture or what is told of it; name a file");
    }
}

void Interpret(const Texts& texts, Options& options)
{
    InterpretModels(texts.models, options);
    InterpretTasks(texts, options);
    CheckRanges(options);
    CheckSheet(options);
    options.settings.sheet.title = ToUtf8(options.settings.sheet.title);
    ParseSize(texts.size, options);
    InterpretPrint(texts.print, options);
    if (texts.pick)
    {
        options.pick = ParsePixel(*texts.pick, options);
    }
    options.settings.background = ParseColor("--background", texts.background);
    if (!Host::ViewFit::ParseView(texts.view, options.settings.view.named))
    {
        throw Bad("--view", texts.view, "one of iso, front, back, left, right, top, bottom");
    }
    options.nodes = InterpretNodes(texts.nodes);
    if (texts.eye)
    {
        options.settings.view.eye = ParseVector("--eye", *texts.eye);
    }
    if (texts.target)
    {
        options.settings.view.target = ParseVector("--target", *texts.target);
    }
    if (texts.up)
    {
        const Vector up = ParseVector("--up", *texts.up);
        // What points nowhere counts as left out.
        if (up.Magnitude() > 0.0f)
        {
            options.settings.view.up = up;
        }
    }
    InterpretUpAxis(texts, options.settings.view);
    if (texts.fog)
    {
        options.settings.fog = ParseFog(*texts.fog);
    }
    InterpretBatches(texts, options);
    if (texts.ground)
    {
        options.settings.ground = ParseGround(*texts.ground);
    }
    InterpretAntialiasing(texts, options);
    InterpretSurfaces(texts.surfaces, options.settings);
    InterpretEdges(texts, options);
    InterpretShadows(texts.shadows, options.settings);
    InterpretOcclusion(texts.occlusion, options.settings);
    InterpretSun(texts.sun, options);
    InterpretLines(texts.lines, options.settings);
}

} // namespace

Command ParseCommandLine(int argc, const char* const* argv)
{
    Command command;
    Texts texts;
    bool listFormats = false;
    CLI::App app;
    Define(app, command.options, texts, listFormats);
    try
    {
        std::vector<std::string> words = CompleteWords(argc, argv);
        Apps::RefuseFlagValues(app, words);
        // The parser takes them from the back.
        std::reverse(words.begin(), words.end());
        app.parse(std::move(words));
        if (!listFormats)
        {
            Interpret(texts, command.options);
        }
        command.action = listFormats ? Action::ListFormats : Action::Render;
    }
    catch (const CLI::Success& asked)
    {
        app.exit(asked);
        command.exitCode = FlushOutput() ? 0 : 1;
    }
    catch (const CLI::ParseError& wrong)
    {
        PrintLine(std::string(wrong.what()) + "; see orvane-render --help");
        command.exitCode = 2;
    }
    return command;
}

std::vector<std::string> ListOptions()
{
    Options options;
    Texts texts;
    bool listFormats = false;
    CLI::App app;
    Define(app, options, texts, listFormats);
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options())
    {
        for (const std::string& name : option->get_lnames())
        {
            names.push_back("--" + name);
        }
    }
    return names;
}

} // namespace OV::RenderApp
