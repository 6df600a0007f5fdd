#include "tests/orvane_host/present/PictureRows.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/support/ShowMesh.h"

#include "orvane/math/Quaternion.h"
#include "orvane/math/Transform.h"
#include "orvane_host/geometry/Primitives.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <string>

namespace OV::Test
{

namespace
{

using Host::Antialiasing;
using Host::Look;
using Host::PictureOptions;
using Host::PresentationSettings;

/// Two spheres, a box that is turned and a floor.
std::unique_ptr<Scene> MakeRoundScene()
{
    auto scene = std::make_unique<Scene>();
    const auto add = [&](const std::shared_ptr<RawMesh>& raw, const Color& color, const Vector& place,
                         const Vector& turns) {
        auto* const material = new Material("round");
        material->SetDiffuse(color);
        material->SetAmbient(Color(0.3f * color.r, 0.3f * color.g, 0.3f * color.b));
        scene->AddMaterial(material);
        Transform transform;
        transform.SetPosition(place);
        Quaternion rotation;
        rotation.SetEulerAngles(turns);
        transform.SetRotation(rotation);
        ShowMesh(raw, *material, *scene).SetLocal(transform);
    };
    using Host::Primitives;
    add(Primitives::Sphere(1.0f, 48, 24), Color(0.8f, 0.4f, 0.2f), Vector(-0.9f, 1.0f, 0.1f), Vector(0.3f, 0.2f, 0.1f));
    add(Primitives::Sphere(0.6f, 48, 24), Color(0.9f, 0.9f, 0.9f), Vector(0.8f, 0.6f, 0.5f), Vector(0, 0, 0));
    add(Primitives::Box(Vector(-0.5f, -0.4f, -0.6f), Vector(0.5f, 0.4f, 0.6f)), Color(0.3f, 0.5f, 0.8f),
        Vector(0.4f, 0.7f, -1.2f), Vector(0.3f, 0.7f, 0.2f));
    add(Primitives::Box(Vector(-3.0f, -0.1f, -2.5f), Vector(3.0f, 0.0f, 2.5f)), Color(0.7f, 0.8f, 0.6f),
        Vector(0, 0, 0), Vector(0, 0, 0));
    return scene;
}

/// How pictures differ.
struct Difference
{
    int pixels = 0;
    int largest = 0;
};

Difference Compare(const Rows& a, const Rows& b)
{
    Difference difference;
    const int channels = a.format.Channels();
    for (int y = 0; y < a.format.height; ++y)
    {
        for (int x = 0; x < a.format.width; ++x)
        {
            int most = 0;
            for (int channel = 0; channel < channels; ++channel)
            {
                most = std::max(most, std::abs(a.At(x, y, channel) - b.At(x, y, channel)));
            }
            difference.pixels += most > 0 ? 1 : 0;
            difference.largest = std::max(difference.largest, most);
        }
    }
    return difference;
}

struct Stage
{
    const char* label;
    void (*change)(PresentationSettings&);
};

class TiledPicture : public PresentationFixture
{
};

TEST_F(TiledPicture, Measure)
{
    const Stage stages[] = {
        {"plain", [](PresentationSettings&) {}},
        {"phong", [](PresentationSettings& s) { s.look = Look::Phong; }},
        {"monotone", [](PresentationSettings& s) { s.look = Look::Monotone; }},
        {"basic", [](PresentationSettings& s) { s.look = Look::Basic; }},
        {"vertex", [](PresentationSettings& s) { s.look = Look::VertexColor; }},
        {"crosshatch", [](PresentationSettings& s) { s.look = Look::Crosshatch; }},
        {"crosshatch shadows", [](PresentationSettings& s) { s.look = Look::Crosshatch; s.sun.emplace(); s.sun->direction = Vector(1, 2, 1); s.shadows.emplace(); }},
        {"sky", [](PresentationSettings& s) { s.sky = true; s.background = Color(0.8f, 0.9f, 1.0f); }},
        {"fog", [](PresentationSettings& s) { s.fog = {2.0f, 40.0f}; }},
        {"horizon", [](PresentationSettings& s) { s.occlusion = true; s.occlusionLook.kind = Host::OcclusionKind::Horizon; }},
        {"spiral", [](PresentationSettings& s) { s.occlusion = true; s.occlusionLook.kind = Host::OcclusionKind::Spiral; }},
        {"edges", [](PresentationSettings& s) { s.edges = Host::EdgeLook(); }},
        {"lines", [](PresentationSettings& s) { s.lines = Host::LineSettings(); s.lines->width = 3.0f; s.lines->hidden = Host::HiddenLines::Dashed; }},
        {"soft shadows", [](PresentationSettings& s) { s.sun.emplace(); s.sun->direction = Vector(1, 2, 1); s.shadows.emplace(); s.shadows->soft = true; }},
        {"ground", [](PresentationSettings& s) { s.ground.emplace(); }},
        {"ground catcher", [](PresentationSettings& s) { s.ground.emplace().kind = Host::GroundKind::ShadowCatcher;  s.sun.emplace(); s.sun->direction = Vector(1, 2, 1); s.shadows.emplace();}},
        {"ortho", [](PresentationSettings& s) { s.view.orthographic = true; }},
    };
    for (const bool round : {false, true})
    {
        auto presentation = round ? std::make_unique<Host::Presentation>(MakeRoundScene()) : PresentBoxes();
        if (const char* model = std::getenv("MODEL"))
        {
            if (round) break;
            std::string error;
            presentation = Host::Presentation::Open(model, error);
            ASSERT_TRUE(presentation) << error;
        }
        const std::string only = std::getenv("ONLY") ? std::getenv("ONLY") : "";
        const std::string ways = std::getenv("WAYS") ? std::getenv("WAYS") : "0123";
        for (const Stage& stage : stages)
        {
            if (!only.empty() && only.find(std::string(",") + stage.label + ",") == std::string::npos) continue;
            for (const Antialiasing way : {Antialiasing::None, Antialiasing::Multisampling, Antialiasing::Filter, Antialiasing::Supersampling})
            {
                if (ways.find(char('0' + int(way))) == std::string::npos) continue;
                PresentationSettings wanted;
                wanted.antialiasing = way;
                stage.change(wanted);
                Apply(*presentation, wanted);
                PictureOptions options;
                options.width = 403;
                options.height = 301;
                if (const char* big = std::getenv("BIG"))
                {
                    options.width = std::atoi(big);
                    options.height = options.width * 2 / 3 + 1;
                }
                Host::PictureFacts facts;
                const Rows whole = WriteRows(*presentation, options, facts);
                EXPECT_EQ(facts.tiles, 1);
                options.longestTile = options.width > 1000 ? 704 : 192;
                const Rows tiled = WriteRows(*presentation, options, facts);
                const Difference d = Compare(whole, tiled);
                if (std::getenv("WHERE"))
                    for (int y = 0, n = 0; y < options.height && n < 40; ++y)
                        for (int x = 0; x < options.width; ++x)
                        {
                            const int least = std::atoi(std::getenv("WHERE"));
                            if (std::abs(whole.At(x, y, 0) - tiled.At(x, y, 0)) >= least && n++ < 40)
                                printf("  %d,%d: %d %d\n", x, y, whole.At(x, y, 0), tiled.At(x, y, 0));
                        }
                if (d.pixels)
                printf("%s %-20s %d: tiles %d differing %d (%.5f %%), largest %d\n", round ? "round" : "boxes", stage.label, int(way), facts.tiles, d.pixels,
                       100.0 * d.pixels / (options.width * options.height), d.largest);
            }
        }
    }
}

} // namespace

} // namespace OV::Test
