#include "apps/render/OcclusionOptions.h"

#include "orvane_host/present/PresentationSettings.h"

#include <CLI/CLI.hpp>

#include <cmath>

namespace OV::RenderApp
{

void DefineOcclusionOptions(CLI::App& app, OcclusionTexts& texts, Host::PresentationSettings& settings)
{
    const char* const group = "Dark corners";
    auto* ao = app.add_flag("--ao", settings.occlusion, "Darken corners")->group(group);
    app.add_option("--ao-kind", texts.kind, "By how much of its surroundings each place sees hidden,\n"
                                            "or by the engine's effect of some pixels; horizon if left\n"
                                            "out")
        ->option_text("horizon|spiral")->needs(ao)->group(group);
    app.add_option("--ao-radius", texts.look.radius, "How far what hides something may be, in units of the\n"
                                                     "model; what suits the model if left out")
        ->option_text("LENGTH")->needs(ao)->group(group);
    app.add_option("--ao-strength", texts.look.strength, "How much darker what is hidden gets, 0 to 2; 1, as much as\n"
                                                         "is hidden, if left out")
        ->option_text("FACTOR")->needs(ao)->group(group);
}

void InterpretOcclusion(const OcclusionTexts& texts, Host::PresentationSettings& settings)
{
    settings.occlusionLook = texts.look;
    if (texts.kind != "horizon" && texts.kind != "spiral")
    {
        throw CLI::ValidationError("--ao-kind", "dark corners are of the kind horizon or spiral");
    }
    settings.occlusionLook.kind = texts.kind == "spiral" ? Host::OcclusionKind::Spiral : Host::OcclusionKind::Horizon;
    // Written so that what is not a number fails.
    if (texts.look.radius && !(*texts.look.radius > 0.0f && std::isfinite(*texts.look.radius)))
    {
        throw CLI::ValidationError("--ao-radius", "a length is above 0");
    }
    if (!(texts.look.strength >= 0.0f && texts.look.strength <= 2.0f))
    {
        throw CLI::ValidationError("--ao-strength", "a factor is 0 to 2");
    }
}

} // namespace OV::RenderApp
