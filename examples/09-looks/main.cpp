// A model file in every look, each in a picture of its own: look-basic.png, look-advanced.png, ...
#include <orvane_host/orvane_host.h>

int main(int count, char** words)
{
    std::string error;
    const auto gl = OV::Host::HeadlessContext::Create({}, error);
    const auto model = OV::Host::Presentation::Open(count > 1 ? words[1] : "model.ifc", error);
    if (!gl || !model) return 1;
    using OV::Host::Look;
    for (const Look look :
         {Look::Basic, Look::Advanced, Look::Phong, Look::Crosshatch, Look::Monotone, Look::VertexColor})
    {
        OV::Host::PresentationSettings settings = model->GetSettings();
        settings.look = look;
        settings.edges = OV::Host::EdgeLook(); // Monotone has one colour: edges part things in it
        settings.edges->weight = 1.0f;
        const std::string name = std::string("look-") + OV::Host::NameOfLook(look) + ".png";
        if (!model->Apply(settings, error) || !model->SavePicture(name, 640, 480, error)) return 1;
    }
    return 0;
}
