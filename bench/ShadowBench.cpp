#include "bench/BenchSupport.h"
#include "orvane_host/geometry/Primitives.h"
#include "orvane_host/present/Presentation.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

// Frames of a hall of columns with shadows, against the plain frame. What counts is the ratio with drawing: where nothing
// moves the map stands, and looking it up is what is paid for. A crate that moves has the map about it drawn anew, and an
// eye that moves what it hasn't seen before: that is measured over all of a way there and back, since frames differ.
namespace
{

using namespace OV;
using namespace OV::Bench;
using Host::Look;

constexpr int kWidth = 960;
constexpr int kHeight = 540;
constexpr int kColumns = 8; ///< each way
constexpr int kSettled = 4;
constexpr int kSteps = 20; ///< of the eye, each way
constexpr float kStepLength = 0.05f;
constexpr double kStepAngle = 0.0175;

MeshNode& AddBody(Scene& scene, Material& material, std::shared_ptr<RawMesh> raw, const Vector& position)
{
    auto* const mesh = new Mesh(std::move(raw), &scene);
    material.AddMesh(mesh);
    auto* const node = new MeshNode(&scene);
    Transform place;
    place.SetPosition(position);
    node->SetLocal(place);
    scene.GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
    return *node;
}

Material& AddMaterial(Scene& scene, const char* name, const Color& color)
{
    auto* const material = new Material(name);
    material->SetDiffuse(color);
    material->ignoreLightColor = false;
    scene.AddMaterial(material);
    return *material;
}

const Vector kCratePlace(-2, 0, 0);

struct Hall
{
    std::unique_ptr<Scene> scene = std::make_unique<Scene>();
    MeshNode* crate = nullptr;
};

/// 32 m each way and 4 m high, with beams as a roof that the sun shines through, and a crate between columns.
Hall MakeHall()
{
    Hall hall;
    std::unique_ptr<Scene>& scene = hall.scene;
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
    const auto crate = Host::Primitives::Box(Vector(-0.4f, 0, -0.4f), Vector(0.4f, 0.8f, 0.4f));
    hall.crate = &AddBody(*scene, wood, crate, kCratePlace);
    return hall;
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

/// In every frame.
enum class Moves
{
    Nothing,
    Crate,
    EyeAhead,
    EyeAround,
};

struct Kind
{
    const char* name;
    bool shadows = false;
    bool soft = false;
    Moves moves = Moves::Nothing;
};
const Kind kKinds[] = {
    {"none"},
    {"hard", true},
    {"soft", true, true},
    {"moving hard", true, false, Moves::Crate},
    {"moving soft", true, true, Moves::Crate},
    {"walking none", false, false, Moves::EyeAhead},
    {"walking hard", true, false, Moves::EyeAhead},
    {"walking soft", true, true, Moves::EyeAhead},
    {"turning none", false, false, Moves::EyeAround},
    {"turning hard", true, false, Moves::EyeAround},
    {"turning soft", true, true, Moves::EyeAround},
};

/// So many steps from a place, level with it.
View After(const View& view, Moves moves, int steps)
{
    View moved = view;
    const float x = view.target.x - view.eye.x;
    const float z = view.target.z - view.eye.z;
    if (moves == Moves::EyeAhead)
    {
        const float way = kStepLength * static_cast<float>(steps) / std::hypot(x, z);
        const Vector by(way * x, 0, way * z);
        moved.eye.Add(view.eye, by);
        moved.target.Add(view.target, by);
    }
    else if (moves == Moves::EyeAround)
    {
        const double angle = kStepAngle * steps;
        const auto c = static_cast<float>(std::cos(angle));
        const auto s = static_cast<float>(std::sin(angle));
        moved.target = Vector(view.eye.x + c * x - s * z, view.target.y, view.eye.z + s * x + c * z);
    }
    return moved;
}

class ShadowBench
{
public:
    ShadowBench() : ShadowBench(MakeHall()) {}

    /// Draws until all is made that the next frames take.
    void Choose(const View& view, Look look, const Kind& kind)
    {
        m_view = view;
        m_moves = kind.moves;
        m_settings = Host::PresentationSettings();
        m_settings.look = look;
        m_settings.antialiasing = Host::Antialiasing::None;
        m_settings.sun.emplace().direction = Vector(0.5f, 0.8f, 0.4f);
        if (kind.shadows)
        {
            m_settings.shadows.emplace().soft = kind.soft;
        }
        LookFrom(view);
        for (int i = 0; i < kSettled; ++i)
        {
            Draw();
        }
    }

    /// A frame, or those of the eye's way.
    void DrawMoved()
    {
        if (m_moves == Moves::Nothing)
        {
            Draw();
        }
        else if (m_moves == Moves::Crate)
        {
            Transform place;
            place.SetPosition(Vector(kCratePlace.x + 0.02f * static_cast<float>(++m_step % 50), 0, kCratePlace.z));
            m_crate->SetLocal(place);
            m_hall.GetScene().MarkDirty();
            Draw();
        }
        else
        {
            for (int i = 1; i <= 2 * kSteps; ++i)
            {
                LookFrom(After(m_view, m_moves, std::min(i, 2 * kSteps - i)));
                Draw();
            }
        }
    }

private:
    explicit ShadowBench(Hall hall) :
        m_context(OpenContext(kWidth, kHeight)), m_crate(hall.crate), m_hall(std::move(hall.scene), {})
    {
    }

    void LookFrom(const View& view)
    {
        m_settings.view.eye = view.eye;
        m_settings.view.target = view.target;
        std::string error;
        if (!m_hall.Apply(m_settings, error))
        {
            std::fprintf(stderr, "%s\n", error.c_str());
            std::exit(1);
        }
    }

    void Draw()
    {
        m_hall.Draw(kWidth, kHeight);
        m_context->Finish();
    }

    std::unique_ptr<Host::HeadlessContext> m_context;
    MeshNode* m_crate; ///< the hall's
    Host::Presentation m_hall;
    Host::PresentationSettings m_settings;
    View m_view{};
    Moves m_moves = Moves::Nothing;
    int m_step = 0;
};

void Measure(benchmark::State& state, const View& view, Look look, const Kind& kind)
{
    static ShadowBench bench;
    bench.Choose(view, look, kind);
    Repeat(state, 1, [] { bench.DrawMoved(); });
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
            for (const Kind& kind : kKinds)
            {
                const std::string name = std::string(view.name) + "/" + look.first + "/" + kind.name;
                benchmark::RegisterBenchmark(name.c_str(), Measure, view, look.second, kind)
                    ->Unit(benchmark::kMillisecond);
            }
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
