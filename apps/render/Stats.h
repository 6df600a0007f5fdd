#pragma once

#include "apps/render/GLCalls.h"
#include "orvane_host/present/Presentation.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace OV::RenderApp
{

/// What --stats tells. Times are milliseconds.
struct Stats
{
    double load = 0.0;
    double pack = 0.0;
    /// One entry a frame; the first one includes the packing.
    std::vector<double> frames;

    Host::PresentationStatistics presented;
    GLCallCounts calls = {}; ///< of the last frame

    int width = 0;
    int height = 0;
    int samples = 0;
    std::string glVendor;
    std::string glRenderer;
    std::string glVersion;

    /// Of the frames after the first, which only draw; of the first where it is the only one.
    double MedianFrame() const;

    /// Puts everything into a JSON object.
    void AddTo(nlohmann::ordered_json& json) const;
};

} // namespace OV::RenderApp
