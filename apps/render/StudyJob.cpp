#include "apps/render/StudyJob.h"

#include "apps/render/Options.h"
#include "apps/render/Report.h"
#include "orvane_host/output/WritePNG.h"
#include "orvane_host/present/Presentation.h"
#include "orvane_host/present/SunHoursMap.h"
#include "orvane_host/present/SunStudy.h"

#include <utility>

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

void WriteStudySheet(const Options& options, Host::Presentation& presentation)
{
    std::vector<unsigned char> rgba;
    std::string error;
    const Host::SunStudyTimes times = StudyTimes(options, presentation);
    Require(Host::SunStudy::DrawSheet(presentation, times, options.width, options.height, rgba, error),
            options.output, error);
    Require(Host::WritePNG(std::move(rgba), options.width, options.height, options.output, Host::PNGAlpha::Drop, error),
            options.output, error);
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
