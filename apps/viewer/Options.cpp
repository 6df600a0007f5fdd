#include "apps/viewer/Options.h"

#include "apps/common/FlagWords.h"
#include "apps/viewer/Script.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <iostream>

namespace OV::ViewerApp
{

namespace
{

constexpr int LargestWindow = 16384;

} // namespace

bool ParseSize(const std::string& text, int& width, int& height)
{
    const char* const end = text.data() + text.size();
    int first = 0;
    int second = 0;
    const auto left = std::from_chars(text.data(), end, first);
    if (left.ec != std::errc() || left.ptr == end || *left.ptr != 'x')
    {
        return false;
    }
    const auto right = std::from_chars(left.ptr + 1, end, second);
    if (right.ec != std::errc() || right.ptr != end || first < 1 || second < 1 || first > LargestWindow
        || second > LargestWindow)
    {
        return false;
    }
    width = first;
    height = second;
    return true;
}

Command ParseCommandLine(int argc, const char* const* argv)
{
    Command command;
    Options& options = command.options;
    CLI::App app("Shows models in a window.", "orvane-view");
    std::string size;
    bool helpScript = false;
    app.set_version_flag("--version", std::string("orvane-view ") + ORVANE_VERSION);
    app.add_option("MODEL", options.models, "Model file to open; several stand beside each other");
    app.add_option("--size", size, "Of the window, in points; 1280x800 unless told otherwise")->option_text("WxH");
    app.add_option("--scale", options.scale, "Pixels per point, 0.5 to 8, in place of what the screen tells")
        ->option_text("N");
    app.add_option("--settings", options.settings, "Start with the settings of a JSON file")->option_text("FILE");
    app.add_option("--script", options.script, "Do what a file says, one action a line")->option_text("FILE");
    app.add_flag("--help-script", helpScript, "List the actions of a script");
    app.add_flag("--watch", options.watch, "Open a model again when its file changes");
    app.add_flag("--forget", options.forget, "Start with plain settings, and keep neither settings nor views from one time to the next");
    try
    {
        Apps::RefuseFlagValues(app, {argv + std::min(argc, 1), argv + argc});
        app.parse(argc, argv);
        // Written so that what is not a number fails.
        if (app.count("--scale") > 0 && !(options.scale >= 0.5f && options.scale <= 8.0f))
        {
            throw CLI::ValidationError("--scale", "a scale is 0.5 to 8 pixels per point");
        }
        if (app.count("--size") > 0 && !ParseSize(size, options.width, options.height))
        {
            throw CLI::ValidationError("--size", "'" + size + "' is not a size WxH from 1x1 to 16384x16384");
        }
    }
    catch (const CLI::Success& wanted)
    {
        command.exitCode = app.exit(wanted);
        return command;
    }
    catch (const CLI::ParseError& wrong)
    {
        std::cerr << "orvane-view: " << wrong.what() << "; --help lists the options\n";
        command.exitCode = 2;
        return command;
    }
    if (helpScript)
    {
        std::cout << Script::Help();
        return command;
    }
    command.run = true;
    return command;
}

} // namespace OV::ViewerApp
