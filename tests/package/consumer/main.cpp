// The smallest use of an installed Orvane: a scene is built and updated, without GL.
#include <orvane/orvane.h>

#include <memory>

int main()
{
    OV::AppContext app;
    app.GetContext()->SetScene(std::make_unique<OV::Scene>());
    app.SetScreenSize(640, 480);
    return app.Update(0.0f) ? 0 : 1;
}
