// A model file under the sun of a summer afternoon, with soft shadows on a ground, written to sun.png.
#include <orvane_host/orvane_host.h>

#include <iostream>

int main(int count, char** words)
{
    std::string error;
    const auto gl = OV::Host::HeadlessContext::Create({}, error);
    const auto model = OV::Host::Presentation::Open(count > 1 ? words[1] : "model.ifc", error);
    if (!gl || !model) return 1;

    OV::Host::PresentationSettings settings;
    settings.sun = OV::Host::SunSettings();
    settings.sun->time = "2026-06-21T16:00+02:00";
    settings.sun->place = OV::Host::GeoPlace{49.1f, 8.4f}; // without one, that of the file
    settings.shadows = OV::Host::ShadowSettings();
    settings.shadows->soft = true;
    settings.ground = OV::Host::GroundSettings();
    settings.sky = true;
    if (!model->Apply(settings, error) || !model->SavePicture("sun.png", 1280, 720, error)) return 1;
    if (const auto& sun = model->GetSun().position)
    {
        std::cout << "The sun stands " << sun->elevation << " degrees high, " << sun->azimuth << " from north.\n";
    }
    return 0;
}
