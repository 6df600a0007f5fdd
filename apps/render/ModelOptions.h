#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace CLI
{

class App;

} // namespace CLI

namespace OV::RenderApp
{

struct Options;

/// A model that comes from standard input.
struct PipedModel
{
    /// Which of the models it is: 0 for Options::model, then those in Options::besides.
    std::size_t index = 0;
    std::string format; ///< the ending that a file would have; empty to go by what it holds
};

/// The values as they were typed.
struct ModelTexts
{
    std::vector<std::string> models;
    std::optional<std::string> format;
};

void DefineModelOptions(CLI::App& app, ModelTexts& texts);

/// Throws what CLI11 throws on wrong usage.
void InterpretModels(const ModelTexts& texts, Options& options);

} // namespace OV::RenderApp
