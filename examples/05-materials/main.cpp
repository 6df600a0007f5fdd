// A chequered ball, half of it behind a pane of glass, written to materials.png.
#include <orvane_host/orvane_host.h>
#include <orvane/orvane.h>

#include <cstdlib>

namespace
{

/// Shows a body in a material, which has to be in the scene.
void Show(OV::Scene& scene, const std::shared_ptr<OV::RawMesh>& body, OV::Material& material)
{
    auto* mesh = new OV::Mesh(body, &scene); // the scene deletes it, and the node as a part of its tree
    auto* node = new OV::MeshNode(&scene);
    material.AddMesh(mesh);
    mesh->AddNode(node);
    scene.GetRoot()->AddChild(node, false);
}

/// Gives it a picture of 16 by 8 squares. One in a file has its name in textureName and its folder in texturePath.
void SetChequer(OV::Material& material, const unsigned char (&dark)[4], const unsigned char (&light)[4])
{
    constexpr int Square = 32;
    material.pixelWidth = 16 * Square;
    material.pixelHeight = 8 * Square;
    const int pixels = material.pixelWidth * material.pixelHeight;
    material.pixels = static_cast<unsigned char*>(std::malloc(4 * pixels)); // the material frees it
    for (int pixel = 0; material.pixels && pixel < pixels; ++pixel)
    {
        const bool isDark = (pixel / Square + pixel / material.pixelWidth / Square) % 2 == 0;
        for (int channel = 0; channel < 4; ++channel)
        {
            material.pixels[4 * pixel + channel] = (isDark ? dark : light)[channel];
        }
    }
}

} // namespace

int main()
{
    std::string error;
    const auto gl = OV::Host::HeadlessContext::Create({}, error);
    if (!gl) return 1;

    auto scene = std::make_unique<OV::Scene>();
    auto* chequer = new OV::Material("chequer");
    SetChequer(*chequer, {150, 40, 30, 255}, {245, 235, 215, 255});
    scene->AddMaterial(chequer);
    Show(*scene, OV::Host::Primitives::Sphere(1.0f, 96, 48), *chequer);

    auto* glass = new OV::Material("glass");
    glass->SetDiffuse({0.2f, 0.5f, 0.7f, 0.5f}); // the last number is how much it covers
    glass->SetFlags(OV::MaterialFlagNoCull);     // its back is seen too
    scene->AddMaterial(glass);                   // once it is see-through: AddMaterial looks at that
    Show(*scene, OV::Host::Primitives::Box({0.0f, -0.8f, 1.2f}, {1.2f, 0.8f, 1.25f}), *glass);

    OV::Host::Presentation model(std::move(scene));
    OV::Host::PresentationSettings settings;
    settings.view.named = OV::Host::NamedView::Front;
    return model.Apply(settings, error) && model.SavePicture("materials.png", 640, 480, error) ? 0 : 1;
}
