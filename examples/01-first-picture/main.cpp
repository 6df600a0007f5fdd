// A model file, drawn without a window and written to first-picture.png.
#include <orvane_host/orvane_host.h>

int main(int count, char** words)
{
    std::string error;
    OV::Host::PresentationSettings look;
    look.sky = true;
    look.lines = OV::Host::LineSettings();
    const auto gl = OV::Host::HeadlessContext::Create({}, error);
    const auto model = OV::Host::Presentation::Open(count > 1 ? words[1] : "model.ifc", error);
    if (!gl || !model || !model->Apply(look, error)) return 1;
    return model->SavePicture("first-picture.png", 1280, 720, error) ? 0 : 1;
}
