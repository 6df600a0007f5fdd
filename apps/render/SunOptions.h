#pragma once

#include "orvane_host/present/PresentationSettings.h"

#include <optional>
#include <string>

namespace CLI
{

class App;

} // namespace CLI

namespace OV::RenderApp
{

struct Options;

/// What the command line says of the sun, as it was typed.
struct SunTexts
{
    std::optional<std::string> sun;
    std::optional<std::string> place;
    std::optional<std::string> study;
    std::optional<std::string> hours;
};

void DefineSunOptions(CLI::App& app, SunTexts& texts);

/// What it says of shadows.
struct ShadowTexts
{
    std::optional<std::string> kind;
    Host::ShadowSettings look;
};

void DefineShadowOptions(CLI::App& app, ShadowTexts& texts);

/// Throws CLI::ValidationError.
void InterpretShadows(const ShadowTexts& texts, Host::PresentationSettings& settings);

/// Throws CLI::ValidationError. The north of the sheet must be known: the sun's is the same.
void InterpretSun(const SunTexts& texts, Options& options);

} // namespace OV::RenderApp
