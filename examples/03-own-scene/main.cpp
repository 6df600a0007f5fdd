// A lit roof, drawn without a window and written to own-scene.png.
#include <orvane_host/context/HeadlessContext.h>
#include <orvane_host/import/ModelImporter.h>
#include <orvane_host/view/ViewFit.h>
#include <orvane_host/output/WritePNG.h>
#include <orvane/orvane.h>

int main()
{
    std::string error;
    const auto gl = OV::Host::HeadlessContext::Create({640, 480, 4}, error);
    if (!gl) return 1;

    OV::AppContext app;
    app.GetContext()->SetScene(std::make_unique<OV::Scene>());
    OV::Scene& scene = *app.GetContext()->GetScene(); // owns everything that is given to it
    auto raw = std::make_shared<OV::RawMesh>();
    raw->SetPositionBuffer({{-1, 0, 1}, {1, 0, 1}, {0, 1, 0}, {1, 0, 1}, {1, 0, -1}, {0, 1, 0}});
    raw->SetNormalBuffer({{0, 1, 1}, {0, 1, 1}, {0, 1, 1}, {1, 1, 0}, {1, 1, 0}, {1, 1, 0}});
    raw->SetIndices({0, 1, 2, 3, 4, 5});
    raw->EndDescription(true);
    auto* roof = new OV::Mesh(raw, &scene);
    auto* place = new OV::MeshNode(&scene);
    auto* clay = new OV::Material("clay");
    clay->SetDiffuse({0.8f, 0.4f, 0.3f, 1.0f});
    clay->SetAmbient({0.2f, 0.1f, 0.1f, 1.0f});
    scene.AddMaterial(clay);
    clay->AddMesh(roof), roof->AddNode(place);
    scene.GetRoot()->AddChild(place, false);
    OV::Host::ViewFit::Frame(*scene.GetCameraNode(), raw->bboxMin, raw->bboxMax, OV::Host::NamedView::Iso);
    OV::Host::ModelImporter::AddDefaultLights(scene);

    const std::unique_ptr<OV::TextureLoader> textures(OV::TextureLoader::Create());
    OV::Renderer20 renderer(textures.get(), app.GetContext()->GetRenderCapabilities());
    app.SetScreenSize(640, 480);
    renderer.Resize(640, 480);
    app.Update(0.0f);
    app.Render(&renderer, false);
    return OV::Host::WritePNG(*gl, "own-scene.png", OV::Host::PNGAlpha::Drop, error) ? 0 : 1;
}
