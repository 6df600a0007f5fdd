// A model file as a presentation: a look, a sky, edges, darkened corners and a smooth picture,
// and what is in the middle of it.
#include <orvane_host/context/HeadlessContext.h>
#include <orvane_host/import/ModelImporter.h>
#include <orvane_host/present/Picking.h>
#include <orvane_host/present/PresentationRenderer.h>
#include <orvane_host/view/SceneFit.h>
#include <orvane_host/view/ViewFit.h>
#include <orvane_host/output/WritePNG.h>
#include <orvane/orvane.h>

#include <iostream>

namespace
{

constexpr int Width = 960;
constexpr int Height = 540;

int Fail(const std::string& error)
{
    std::cerr << error << '\n';
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        return Fail("usage: example-presentation MODEL");
    }
    std::string error;
    const auto gl = OV::Host::HeadlessContext::Create({Width, Height}, error);
    if (!gl)
    {
        return Fail(error);
    }
    OV::Host::ImportResult model = OV::Host::ModelImporter::Import(argv[1]);
    if (!model)
    {
        return Fail(model.error.Line());
    }
    // Edges part things by the user data of their nodes.
    int number = 0;
    for (const OV::Host::ImportedNode& imported : model.nodes)
    {
        imported.node->SetUserData(number++);
    }

    OV::AppContext app;
    OV::CoreContext& context = *app.GetContext();
    context.SetScene(std::move(model.scene));
    OV::Scene& scene = *context.GetScene();
    OV::Host::ModelImporter::AddDefaultLights(scene);
    OV::Host::ViewFitOptions fit;
    fit.aspect = static_cast<float>(Width) / Height;
    OV::Host::ViewFit::Frame(*scene.GetCameraNode(), model.report.boxMin, model.report.boxMax,
                             OV::Host::NamedView::Iso, fit);

    app.SetScreenSize(Width, Height);
    app.Update(0.0f); // puts everything where it is, which the closer fit goes by
    OV::Host::SceneFit::Frame(*scene.GetCameraNode(), scene, fit.aspect);

    const std::unique_ptr<OV::TextureLoader> textures(OV::TextureLoader::Create());
    OV::Host::PresentationRenderer renderer(textures.get(), context.GetRenderCapabilities());
    renderer.Resize(Width, Height);
    renderer.SetLook(OV::Host::Look::Basic);
    renderer.ShowSky(true);
    renderer.SetEdges(OV::Host::EdgeLook());
    renderer.ShowAmbientOcclusion(true);
    renderer.SetAAMode(OV::AAModeFXAA);

    app.Update(0.0f);
    app.Render(&renderer, true);
    if (!OV::Host::WritePNG(*gl, "presentation.png", OV::Host::PNGAlpha::Drop, error))
    {
        return Fail(error);
    }

    OV::Host::Picking picking(renderer);
    for (const OV::Host::PickHit& hit : picking.Pick(scene, *scene.GetCameraNode(), {Width / 2, Height / 2}))
    {
        std::cout << "node " << hit.node->GetUserData() << " at " << hit.position.x << ' ' << hit.position.y << ' '
                  << hit.position.z << '\n';
    }
    return 0;
}
