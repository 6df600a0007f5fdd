#pragma once

#include "orvane_host/present/PresentationSettings.h"

#include <string>

namespace CLI
{

class App;

} // namespace CLI

namespace OV::RenderApp
{

/// What the command line says of lines, as it was typed.
struct LineTexts
{
    bool wanted = false;
    std::string color = "000000";
    std::string hidden = "none";
    Host::LineSettings look;
};

void DefineLineOptions(CLI::App& app, LineTexts& texts);

/// Throws wrong usage.
void InterpretLines(const LineTexts& texts, Host::PresentationSettings& settings);

} // namespace OV::RenderApp
