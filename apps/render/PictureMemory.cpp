#include "apps/render/PictureMemory.h"

#include "apps/render/Options.h"
#include "apps/render/Report.h"
#include "apps/render/SystemMemory.h"
#include "orvane_host/context/HeadlessContext.h"
#include "orvane_host/present/Presentation.h"

#include <cstdint>

namespace OV::RenderApp
{

namespace
{

/// A larger picture is drawn in tiles alone.
constexpr std::uint64_t MostBytesAtOnce = std::uint64_t(512) << 20;

int BytesPerPixel(const Options& options, int samples)
{
    // What is read of it, a copy and the file.
    int bytes = Host::Presentation::BytesPerPixel(options.settings, samples) + 3 + 3;
    // What the sun sees, in about as many texels for each pixel.
    const int drawn = ScaleOf(options.settings) * ScaleOf(options.settings);
    bytes += options.settings.shadows ? (4 + 2) * 4 * drawn : 0;
    // Numbers and their depth.
    bytes += options.pick ? 4 + 2 + 4 : 0;
    return bytes;
}

std::uint64_t BytesOf(const Options& options, int samples)
{
    return static_cast<std::uint64_t>(options.width) * static_cast<std::uint64_t>(options.height)
        * static_cast<std::uint64_t>(BytesPerPixel(options, samples));
}

} // namespace

int ScaleOf(const Host::PresentationSettings& settings)
{
    return settings.antialiasing == Host::Antialiasing::Supersampling ? 2 : 1;
}

const std::string& SubjectOf(const Options& options)
{
    return options.output.empty() ? options.model : options.output;
}

void CheckSize(const Options& options, const Host::HeadlessContext& gl)
{
    const int maxWidth = gl.GetMaxWidth() / ScaleOf(options.settings);
    const int maxHeight = gl.GetMaxHeight() / ScaleOf(options.settings);
    Require(options.width <= maxWidth && options.height <= maxHeight, SubjectOf(options),
            "a frame of " + std::to_string(options.width) + "x" + std::to_string(options.height)
                + " is too large to be measured; this GL draws at most " + std::to_string(maxWidth) + "x"
                + std::to_string(maxHeight) + " at once, so ask for a smaller --size");
}

bool FitsAtOnce(const Options& options, const Host::HeadlessContext& gl)
{
    const int samples = Host::Presentation::SamplesFor(options.settings, gl.GetMaxSamples());
    return options.width <= gl.GetMaxWidth() / ScaleOf(options.settings)
        && options.height <= gl.GetMaxHeight() / ScaleOf(options.settings)
        && BytesOf(options, samples) <= MostBytesAtOnce;
}

void CheckMemory(const Options& options, int samples)
{
    const std::uint64_t needed = BytesOf(options, samples);
    const std::uint64_t available = AvailableMemory();
    if (available != 0 && needed > available)
    {
        const auto mebibytes = [](std::uint64_t bytes) { return std::to_string(bytes >> 20) + " MiB"; };
        throw Failure(SubjectOf(options), "a picture of " + std::to_string(options.width) + "x"
                          + std::to_string(options.height) + " takes " + mebibytes(needed)
                          + " of memory and there are " + mebibytes(available) + "; ask for a smaller --size");
    }
}

} // namespace OV::RenderApp
