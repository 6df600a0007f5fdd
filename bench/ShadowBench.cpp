#include "bench/BenchSupport.h"
#include "orvane_host/geometry/Primitives.h"
#include "orvane_host/present/Presentation.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <string>
#include <utility>
#include <vector>

// Frames of a hall of columns with shadows, against the plain frame. What counts is the ratio with drawing: the map
// stands, and looking it up is what is paid for.
namespace
{

using namespace OV;
using namespace OV::Bench;
using Host::Look;

constexpr int kWidth = 960;
constexpr int kHeight = 540;
constexpr int kColumns = 8; ///< each way

void AddBody(Scene& scene, Material& material, std::shared_ptr<RawMesh> raw, const Vector& position)
{
    auto* const mesh = new Mesh(std::move(raw), &scene);
    material.AddMesh(mesh);
    auto* const node = new MeshNode(&scene);
    Transform place;
    place.SetPosition(position);
    node->SetLocal(place);
    scene.GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
}

Material& AddMaterial(Scene& scene, const char* name, const Color& color)
{
    auto* const material = new Material(name);
    material->SetDiffuse(color);
    material->ignoreLightColor = false;
    scene.AddMaterial(material);
    return *material;
}

/// 32 m each way and 4 m high, with beams as a roof that the sun shines through.
std::unique_ptr<Scene> MakeHall()
{
    auto scene = std::make_unique<Scene>();
    Material& stone = AddMaterial(*scene, "stone", Color(0.8f, 0.8f, 0.8f));
    Material& wood = AddMaterial(*scene, "wood", Color(0.7f, 0.5f, 0.3f));
    AddBody(*scene, stone, Host::Primitives::Box(Vector(-16, -0.3f, -16), Vector(16, 0, 16)), Vector());
    for (int i = 0; i < kColumns; ++i)
    {
        const float at = 4.0f * static_cast<float>(i) - 14.0f;
        AddBody(*scene, wood, Host::Primitives::Box(Vector(-15.5f, 4, -1.2f), Vector(15.5f, 4.3f, 1.2f)), Vector(0, 0, at));
        for (int j = 0; j < kColumns; ++j)
        {
            AddBody(*scene, stone, Host::Primitives::Cylinder(0.3f, 4.0f),
                    Vector(at, 2, 4.0f * static_cast<float>(j) - 14.0f));
        }
    }
    return scene;
}

struct View
{
    const char* name;
    Vector eye;
    Vector target;
};
const View kViews[] = {
    {"outside", Vector(30, 18, 34), Vector(0, 1, 0)},
    {"inside", Vector(12, 1.7f, 13), Vector(-6, 1.6f, -4)},
};

class ShadowBench
{
public:
    ShadowBench() : m_context(OpenContext(kWidth, kHeight)), m_hall(MakeHall(), {}) {}

    /// Draws until all is made that the next frames take.
    void Choose(const View& view, Look look, bool shadows, bool soft)
    {
        Host::PresentationSettings settings;
        settings.look = look;
        settings.antialiasing = Host::Antialiasing::None;
        settings.view.eye = view.eye;
        settings.view.target = view.target;
        settings.sun.emplace().direction = Vector(0.5f, 0.8f, 0.4f);
        if (shadows)
        {
            settings.shadows.emplace().soft = soft;
        }
        std::string error;
        if (!m_hall.Apply(settings, error))
        {
            std::fprintf(stderr, "%s\n", error.c_str());
            std::exit(1);
        }
        Draw();
        Draw();
    }

    void Draw()
    {
        m_hall.Draw(kWidth, kHeight);
        m_context->Finish();
    }

private:
    std::unique_ptr<Host::HeadlessContext> m_context;
    Host::Presentation m_hall;
};

void Measure(benchmark::State& state, const View& view, Look look, bool shadows, bool soft)
{
    static ShadowBench bench;
    bench.Choose(view, look, shadows, soft);
    Repeat(state, 1, [] { bench.Draw(); });
}

} // namespace

int main(int argc, char** argv)
{
    // Drawing by this thread, whose time is taken.
    ::setenv("LP_NUM_THREADS", "0", 0);
    for (const View& view : kViews)
    {
        for (const auto& look : {std::pair("monotone", Look::Monotone), std::pair("advanced", Look::Advanced)})
        {
            for (const char* const shadows : {"none", "hard", "soft"})
            {
                const std::string kind = shadows;
                const std::string name = std::string(view.name) + "/" + look.first + "/" + kind;
                benchmark::RegisterBenchmark(name.c_str(), Measure, view, look.second, kind != "none", kind == "soft")
                    ->Unit(benchmark::kMillisecond);
            }
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
