// The smallest use of an installed Orvane: a scene is built, seen by the kit and updated, without GL.
#include <orvane/orvane.h>
#include <orvane_host/orvane_host.h>

#include <memory>

int main()
{
    OV::AppContext app;
    app.GetContext()->SetScene(std::make_unique<OV::Scene>());
    app.SetScreenSize(640, 480);
    OV::Scene& scene = *app.GetContext()->GetScene();
    OV::Host::ViewFit::Frame(*scene.GetCameraNode(), {-1, -1, -1}, {1, 1, 1}, OV::Host::NamedView::Iso);
    return app.Update(0.0f) ? 0 : 1;
}
