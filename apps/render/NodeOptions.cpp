#include "apps/render/NodeOptions.h"

#include "apps/render/Report.h"
#include "orvane_host/import/NodePath.h"
#include "orvane_host/present/Presentation.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <cmath>
#include <cstddef>

namespace OV::RenderApp
{

namespace
{

Host::Dimension ParseDimension(const std::string& option, const std::string& text, std::size_t points)
{
    const CLI::ValidationError wrong(option, "'" + text + "' is not " + std::to_string(3 * points)
                                                 + " numbers X,Y,Z,..., three for each point");
    std::vector<double> numbers;
    for (const std::string& part : CLI::detail::split(text, ','))
    {
        double number = 0.0;
        const char* const end = part.data() + part.size();
        const auto result = std::from_chars(part.data(), end, number);
        if (result.ec != std::errc() || result.ptr != end || !std::isfinite(number))
        {
            throw wrong;
        }
        numbers.push_back(number);
    }
    if (numbers.size() != 3 * points)
    {
        throw wrong;
    }
    Host::Dimension dimension;
    for (std::size_t i = 0; i < numbers.size(); i += 3)
    {
        dimension.points.emplace_back(numbers[i], numbers[i + 1], numbers[i + 2]);
    }
    return dimension;
}

} // namespace

void DefineNodeOptions(CLI::App& app, NodeTexts& texts)
{
    const char* const group = "Model";
    app.add_option("--hide", texts.hidden, "Leave out a node and what is below it, found as by\n"
                                           "--edit; any number of times")
        ->option_text("PATH")->allow_extra_args(false)->group(group);
    app.add_option("--isolate", texts.isolated, "Leave out all but a node and what is below it")
        ->option_text("PATH")->group(group);
    app.add_option("--label", texts.labels, "Write the name of a node at its middle, without what\n"
                                            "only programs read; any number of times")
        ->option_text("PATH")->allow_extra_args(false)->group(group);
    app.add_option("--distance", texts.distances, "Draw the distance between two places, in units of the\n"
                                                  "model, as a dimension line; any number of times")
        ->option_text("X,Y,Z,X,Y,Z")->allow_extra_args(false)->group(group);
    app.add_option("--angle", texts.angles, "Draw the angle of three places at the second one; any\n"
                                            "number of times")
        ->option_text("X,Y,Z,...")->allow_extra_args(false)->group(group);
}

NodeOptions InterpretNodes(const NodeTexts& texts)
{
    NodeOptions options;
    options.hidden = texts.hidden;
    options.isolated = texts.isolated;
    options.labels = texts.labels;
    for (const std::string& text : texts.distances)
    {
        options.dimensions.push_back(ParseDimension("--distance", text, 2));
    }
    for (const std::string& text : texts.angles)
    {
        options.dimensions.push_back(ParseDimension("--angle", text, 3));
    }
    return options;
}

void ShowNodes(const NodeOptions& options, Host::Presentation& presentation, const std::string& model)
{
    const auto require = [&](bool isDone, const std::string& path, const char* option)
    {
        Require(isDone, model, "there is no node '" + path + "' for " + option + "; some that there are: "
                    + Host::SomeNodeNames(presentation.GetNodes()));
    };
    for (const std::string& path : options.hidden)
    {
        require(presentation.Hide(path), path, "--hide");
    }
    if (!options.isolated.empty())
    {
        require(presentation.Isolate(options.isolated), options.isolated, "--isolate");
    }
    for (const std::string& path : options.labels)
    {
        require(presentation.AddLabel(path), path, "--label");
    }
    presentation.SetDimensions(options.dimensions);
}

} // namespace OV::RenderApp
