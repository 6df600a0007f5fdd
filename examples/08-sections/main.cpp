// A model file, cut open by two planes: what is cut is filled and outlined. Written to sections.png.
#include <orvane_host/orvane_host.h>

int main(int count, char** words)
{
    std::string error;
    const auto gl = OV::Host::HeadlessContext::Create({}, error);
    const auto model = OV::Host::Presentation::Open(count > 1 ? words[1] : "model.ifc", error);
    const auto box = model ? model->GetModelBox() : std::nullopt;
    if (!gl || !box) return 1;

    OV::Host::ClipPlane level; // away with what is above the windows
    level.normal = OV::Vector(0.0f, 1.0f, 0.0f);
    level.position.Interpolate(box->low, box->high, 0.35f);
    OV::Host::ClipPlane front; // and with the front quarter
    front.normal = OV::Vector(0.0f, 0.0f, 1.0f);
    front.position.Interpolate(box->low, box->high, 0.75f);

    OV::Host::PresentationSettings settings;
    settings.section.planes = {level, front};
    settings.section.fill = OV::Color(0.8f, 0.1f, 0.1f);
    settings.lines = OV::Host::LineSettings();
    return model->Apply(settings, error) && model->SavePicture("sections.png", 1280, 720, error) ? 0 : 1;
}
