// A dashed square, a thick circle and a fine spiral round a ball that hides their far sides, written to
// lines.png.
#include <orvane_host/orvane_host.h>
#include <orvane/orvane.h>

#include <cmath>

namespace
{

/// Shows a line of a style of its own.
/// @param width of the line in all, in pixels.
/// @param dash length of a dash and of the gap after it, in pixels; 0 for a line without gaps.
void Show(OV::Scene& scene, const std::vector<OV::Vector>& points, bool closed, const OV::Color& color, float width,
          float dash)
{
    auto* style = new OV::LineStyle("line");
    style->color = color;
    style->secondColor = OV::Color(0.0f, 0.0f, 0.0f); // it is added, and white unless told otherwise
    style->width = width / 2.0f; // to each side
    style->antialias = false;    // it would fade over all of its width; the picture is smoothed
    style->SetDashed(dash > 0.0f);
    style->SetDashFrequency(dash);
    scene.AddLineStyle(style); // the scene owns it, as all that follows

    auto* node = new OV::MeshNode(&scene);
    scene.GetRoot()->AddChild(node, false);
    for (const std::shared_ptr<OV::RawLine>& part : OV::Host::Polyline::Make(points, closed))
    {
        auto* line = new OV::Line(part, &scene);
        style->AddLine(line);
        line->AddNode(node);
    }
}

std::vector<OV::Vector> Spiral(float radius, float height, int turns, int points)
{
    std::vector<OV::Vector> list;
    for (int i = 0; i <= points; ++i)
    {
        const float share = static_cast<float>(i) / static_cast<float>(points);
        const float angle = 6.2831853f * share * static_cast<float>(turns);
        list.emplace_back(radius * std::cos(angle), height * (share - 0.5f), radius * std::sin(angle));
    }
    return list;
}

} // namespace

int main()
{
    std::string error;
    const auto gl = OV::Host::HeadlessContext::Create({}, error);
    if (!gl) return 1;

    auto scene = std::make_unique<OV::Scene>();
    auto* ball = new OV::Mesh(OV::Host::Primitives::Sphere(1.0f, 64, 32), scene.get());
    auto* place = new OV::MeshNode(scene.get());
    auto* grey = new OV::Material("grey");
    grey->SetDiffuse({0.8f, 0.8f, 0.8f, 1.0f});
    grey->SetFlags(OV::MaterialFlagUnlit);
    scene->AddMaterial(grey);
    grey->AddMesh(ball);
    ball->AddNode(place);
    scene->GetRoot()->AddChild(place, false);

    Show(*scene, Spiral(1.8f, 0.0f, 1, 180), true, {0.8f, 0.1f, 0.1f}, 5.0f, 0.0f);
    Show(*scene, Spiral(1.05f, 2.4f, 8, 800), false, {0.1f, 0.2f, 0.8f}, 1.5f, 0.0f);
    Show(*scene, {{-2, -1.2f, -2}, {2, -1.2f, -2}, {2, -1.2f, 2}, {-2, -1.2f, 2}}, true, {0, 0, 0}, 3.0f, 12.0f);

    OV::Host::Presentation model(std::move(scene));
    return model.SavePicture("lines.png", 640, 480, error) ? 0 : 1;
}
