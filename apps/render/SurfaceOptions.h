#pragma once

#include <optional>
#include <string>
#include <vector>

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

/// What the command line says of surfaces and cuts, as it was typed.
struct SurfaceTexts
{
    std::string look = "advanced";
    std::vector<std::string> clips;
    std::optional<std::string> poche;
    std::string outlineColor = "000000";
    std::optional<std::string> edit;
    std::string glass = "exact";
    bool noCull = false;
};

void DefineSurfaceOptions(CLI::App& app, SurfaceTexts& texts, Host::PresentationSettings& settings);

/// Throws wrong usage.
void InterpretSurfaces(const SurfaceTexts& texts, Host::PresentationSettings& settings);

} // namespace OV::RenderApp
