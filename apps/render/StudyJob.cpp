#include "apps/render/StudyJob.h"

#include "apps/render/FileChecks.h"
#include "apps/render/Options.h"
#include "apps/render/Report.h"
#include "orvane_host/output/PictureFile.h"
#include "orvane_host/present/Presentation.h"
#include "orvane_host/present/SunHoursMap.h"
#include "orvane_host/present/SunStudy.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <vector>

namespace OV::RenderApp
{

Host::SunStudyTimes StudyTimes(const Options& options, const Host::Presentation& presentation)
{
    double longitude = 0.0;
    if (const std::optional<Host::GeoPlace>& place = options.settings.sun->place)
    {
        longitude = place->longitude;
    }
    else if (const std::optional<Host::ImportedPlace>& own = presentation.GetReport().place)
    {
        longitude = own->longitude;
    }
    std::string reason;
    const std::optional<Host::SunStudyTimes> times =
        Host::SunStudyTimes::Parse(options.study->times, reason, Host::SunStudy::NominalOffset(longitude));
    Require(times.has_value(), options.model, "--sun-study: " + reason);
    return *times;
}

namespace
{

/// @param rgba the top row first; its alpha is dropped.
void WriteRows(const Options& options, const std::vector<unsigned char>& rgba)
{
    std::string error;
    const std::unique_ptr<Host::PictureFile> file = BeginPicture(options);
    const auto width = static_cast<std::size_t>(options.width);
    std::vector<unsigned char> row(3 * width);
    for (std::size_t y = 0; y < static_cast<std::size_t>(options.height); ++y)
    {
        for (std::size_t x = 0; x < width; ++x)
        {
            std::copy_n(&rgba[4 * (y * width + x)], 3, &row[3 * x]);
        }
        Require(file->WriteRow(row.data(), error), options.output, error);
    }
    Require(file->Finish(error), options.output, error);
}

} // namespace

void WriteStudySheet(const Options& options, Host::Presentation& presentation)
{
    std::vector<unsigned char> rgba;
    std::string error;
    const Host::SunStudyTimes times = StudyTimes(options, presentation);
    Require(Host::SunStudy::DrawSheet(presentation, times, options.width, options.height, rgba, error),
            options.output, error);
    WriteRows(options, rgba);
}

void ShowStudyMap(const Options& options, Host::Presentation& presentation, Host::SunHoursMap& map)
{
    std::string error;
    Require(map.Show(StudyTimes(options, presentation), options.study->hours, error), options.model, error);
    if (!options.settings.view.eye && options.study->hours == "ground")
    {
        map.Frame(static_cast<float>(options.width) / static_cast<float>(options.height));
    }
    map.Layout(options.width, options.height);
    // The light of one moment would contradict the hours of many.
    Host::PresentationSettings settings = presentation.GetSettings();
    settings.sun.reset();
    Require(presentation.Apply(settings, error), options.model, error);
}

} // namespace OV::RenderApp
