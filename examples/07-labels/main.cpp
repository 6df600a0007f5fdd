// A sheet about two crates: a title, a bar of the host's own above the picture, labels and a dimension that
// stand where the crates are. labels-1.png and labels-2.png show it before and after one crate has moved.
#include <orvane_host/orvane_host.h>
#include <orvane/orvane.h>

namespace
{

OV::Transform At(float x, float y, float z)
{
    OV::Transform place;
    place.SetPosition({x, y, z});
    return place;
}

/// @return the place of the crate, which the scene owns.
OV::MeshNode* AddCrate(OV::Scene& scene, OV::Material& material, const OV::Transform& place)
{
    auto* mesh = new OV::Mesh(OV::Host::Primitives::Box({-0.5f, 0, -0.5f}, {0.5f, 1, 0.5f}), &scene);
    auto* node = new OV::MeshNode(&scene);
    material.AddMesh(mesh);
    mesh->AddNode(node);
    node->SetLocal(place);
    scene.GetRoot()->AddChild(node, false);
    return node;
}

} // namespace

int main()
{
    std::string error;
    const auto gl = OV::Host::HeadlessContext::Create({}, error);
    if (!gl) return 1;

    auto scene = std::make_unique<OV::Scene>();
    auto* wood = new OV::Material("wood");
    wood->SetDiffuse({0.85f, 0.65f, 0.4f, 1.0f});
    wood->SetSpecular({0.0f, 0.0f, 0.0f, 1.0f}); // nothing shines on it
    scene->AddMaterial(wood);
    OV::MeshNode* const first = AddCrate(*scene, *wood, At(-2, 0, 0));
    OV::MeshNode* const second = AddCrate(*scene, *wood, At(2, 0, 0));

    OV::Host::Presentation model(std::move(scene));
    model.AddName(*first, "crate");
    model.AddName(*second, "other crate");
    model.AddLabel("crate"); // its name
    model.AddLabel("other crate", "this one moves");
    model.SetDimensions({OV::Host::Dimension{{{-1.5, 0, 0.5}, {1.5, 0, 0.5}}}});

    // Anything else goes into the layer above the model, in pixels from its lower left corner.
    OV::Sprite bar(&model.GetForeground(), new OV::Rect(&model.GetForeground(), 200.0f, 12.0f, false));
    bar.SetColor({0.75f, 0.1f, 0.1f, 1.0f});
    bar.GetNode()->SetLocal(At(20, 20, 0));

    OV::Host::PresentationSettings settings;
    settings.sheet.title = "Two crates";
    settings.view.eye = OV::Vector(0.0f, 3.0f, 9.0f);
    settings.view.target = OV::Vector(0.0f, 1.0f, 0.0f);
    if (!model.Apply(settings, error) || !model.SavePicture("labels-1.png", 800, 450, error)) return 1;

    second->SetLocal(At(2, 1, 0)); // the label follows; a dimension is between points, and stays
    model.Refresh();               // what is shown reaches elsewhere
    return model.SavePicture("labels-2.png", 800, 450, error) ? 0 : 1;
}
