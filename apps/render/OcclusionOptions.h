#pragma once

#include "orvane_host/present/OcclusionLook.h"

#include <string>

namespace CLI
{

class App;

} // namespace CLI

namespace OV::Host
{

struct PresentationSettings;

} // namespace OV::Host

namespace OV::RenderApp
{

/// What the command line says of dark corners, as it was typed.
struct OcclusionTexts
{
    std::string kind = "horizon";
    Host::OcclusionLook look;
};

void DefineOcclusionOptions(CLI::App& app, OcclusionTexts& texts, Host::PresentationSettings& settings);

/// Throws CLI::ValidationError.
void InterpretOcclusion(const OcclusionTexts& texts, Host::PresentationSettings& settings);

} // namespace OV::RenderApp
