#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

namespace OV::RenderApp
{

struct Options;

/// What the options of a picture for print were given, as typed.
struct PrintTexts
{
    std::optional<std::string> paper;
    std::optional<std::string> scale;
    std::optional<float> dpi;
    bool portrait = false;
};

/// @param size that of the picture in pixels, which a paper has too.
/// @param ortho what a scale brings along.
void DefinePrintOptions(CLI::App& app, PrintTexts& texts, CLI::Option& size, Options& options);

/// Sets the size of the picture, its resolution and how much of the model it shows. Throws wrong usage.
void InterpretPrint(const PrintTexts& texts, Options& options);

} // namespace OV::RenderApp
