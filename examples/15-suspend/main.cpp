// A model file whose GL context goes and comes back, as on a device that changes its graphics card or a
// window that is made anew. Written to suspend-1.png, before, and suspend-2.png, after: the same picture.
#include <orvane_host/orvane_host.h>

int main(int count, char** words)
{
    std::string error;
    auto gl = OV::Host::HeadlessContext::Create({}, error);
    const auto model = OV::Host::Presentation::Open(count > 1 ? words[1] : "model.ifc", error);
    if (!gl || !model || !model->SavePicture("suspend-1.png", 640, 480, error)) return 1;

    model->Suspend(); // lets go of every GL object while the old context is still there
    gl.reset();
    gl = OV::Host::HeadlessContext::Create({}, error);
    if (!gl) return 1;
    model->Resume(); // what is needed is made anew by the next frame

    return model->SavePicture("suspend-2.png", 640, 480, error) ? 0 : 1;
}
