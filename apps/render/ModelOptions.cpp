#include "apps/render/ModelOptions.h"

#include "apps/render/OptionText.h"
#include "apps/render/Options.h"
#include "orvane_host/import/ModelImporter.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>

namespace OV::RenderApp
{

namespace
{

/// The ending that is meant, in small letters and without a dot.
std::string ParseFormat(const std::string& text)
{
    std::string ending = text.substr(!text.empty() && text[0] == '.' ? 1 : 0);
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    for (const Host::ImportFormat& format : Host::ModelImporter::ListFormats())
    {
        if (std::find(format.extensions.begin(), format.extensions.end(), ending) != format.extensions.end())
        {
            return ending;
        }
    }
    throw Bad("--format", text, "an ending such as obj; --list-formats shows all");
}

} // namespace

void DefineModelOptions(CLI::App& app, ModelTexts& texts)
{
    app.add_option("MODEL", texts.models, "Model file to draw; several are drawn in one scene,\n"
                                          "brought to the unit of the first where they tell theirs;\n"
                                          "- for a model from standard input")
        ->option_text(" ");
    app.add_option("--format", texts.format, "What a model from standard input is, as the ending of a\n"
                                             "file, such as obj; found out if left out")
        ->option_text("ENDING");
}

void InterpretModels(const ModelTexts& texts, Options& options)
{
    std::vector<std::string> models = texts.models;
    if (models.empty() || models.front().empty())
    {
        throw CLI::RequiredError("MODEL");
    }
    const auto piped = std::find(models.begin(), models.end(), "-");
    if (piped != models.end())
    {
        if (std::find(piped + 1, models.end(), "-") != models.end())
        {
            throw CLI::ValidationError("MODEL", "standard input holds one model; name - once");
        }
        options.piped = PipedModel();
        options.piped->index = static_cast<std::size_t>(piped - models.begin());
        *piped = "standard input";
    }
    if (texts.format)
    {
        if (!options.piped)
        {
            throw CLI::ValidationError("--format", "only a model from standard input has one; name - as the model");
        }
        options.piped->format = ParseFormat(*texts.format);
    }
    options.model = models.front();
    options.besides.assign(models.begin() + 1, models.end());
}

} // namespace OV::RenderApp
