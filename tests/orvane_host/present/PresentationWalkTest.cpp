#include "tests/orvane_host/present/PresentationModels.h"

#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Node.h"
#include "tests/support/GLState.h"
#include "tests/support/HeapCount.h"

#include <array>
#include <functional>
#include <random>

namespace OV::Test
{

namespace
{

using Host::PresentationSettings;

/// Numbers that are the same on every system.
class Dice
{
public:
    explicit Dice(unsigned int seed) : m_engine(seed) {}

    int Below(int count) { return static_cast<int>(m_engine() % static_cast<unsigned int>(count)); }

    template <typename Value, std::size_t Count>
    const Value& Of(const std::array<Value, Count>& values)
    {
        return values[static_cast<std::size_t>(Below(static_cast<int>(Count)))];
    }

    float Share() { return static_cast<float>(Below(1001)) / 1000.0f; }

private:
    std::mt19937 m_engine;
};

Color AnyColor(Dice& dice)
{
    return Color(dice.Share(), dice.Share(), dice.Share());
}

Host::ClipPlane AnyPlane(Dice& dice)
{
    static constexpr std::array<std::array<float, 3>, 5> normals = {
        {{0, 1, 0}, {1, 0, 0}, {0, 0, 1}, {0.5f, 1, 0.2f}, {-1, 0, 0}}};
    const auto& normal = dice.Of(normals);
    return {Vector(normal[0], normal[1], normal[2]),
            Vector(dice.Share() - 0.5f, 1.5f * dice.Share() - 0.5f, dice.Share() - 0.5f)};
}

void ChangeSection(PresentationSettings& settings, Dice& dice)
{
    switch (dice.Below(6))
    {
    case 0: settings.section.planes.clear(); break;
    case 1: settings.section.planes = {AnyPlane(dice)}; break;
    case 2: settings.section.planes = {AnyPlane(dice), AnyPlane(dice)}; break;
    case 3: settings.section.fill = dice.Below(3) != 0 ? std::optional<Color>(AnyColor(dice)) : std::nullopt; break;
    case 4: settings.section.outlineWidth = dice.Below(2) != 0 ? std::optional<float>(0.1f * dice.Share()) : std::nullopt; break;
    default: settings.section.outlineColor = AnyColor(dice); break;
    }
}

void ChangeLines(PresentationSettings& settings, Dice& dice)
{
    if (dice.Below(3) == 0)
    {
        settings.lines.reset();
        return;
    }
    Host::LineSettings lines = settings.lines.value_or(Host::LineSettings());
    lines.crease = dice.Of(std::array<float, 3>{30.0f, 100.0f, 180.0f});
    lines.width = dice.Of(std::array<float, 3>{1.0f, 2.0f, 4.0f});
    lines.color = AnyColor(dice);
    lines.dash = dice.Below(3) == 0 ? std::optional<float>(3.0f) : std::nullopt;
    lines.offset = dice.Of(std::array<float, 2>{0.0f, 2.0f});
    settings.lines = lines;
}

void ChangeView(PresentationSettings& settings, Dice& dice)
{
    Host::ViewSettings& view = settings.view;
    switch (dice.Below(4))
    {
    case 0:
        view.eye.reset();
        view.target.reset();
        view.named = static_cast<Host::NamedView>(dice.Below(7));
        break;
    case 1:
        view.eye = Vector(8.0f * dice.Share() - 4.0f, 3.0f, 6.0f + 2.0f * dice.Share());
        view.target = dice.Below(2) != 0 ? std::optional<Vector>(Vector(0.2f, 0.1f, 0.0f)) : std::nullopt;
        break;
    case 2: view.orthographic = !view.orthographic; break;
    default: view.fov = dice.Of(std::array<float, 3>{20.0f, 35.0f, 60.0f}); break;
    }
}

void ChangeSheet(PresentationSettings& settings, Dice& dice)
{
    switch (dice.Below(3))
    {
    case 0: settings.sheet.title = dice.Of(std::array<const char*, 3>{"", "A", "House"}); break;
    case 1: settings.sheet.scaleBar = !settings.sheet.scaleBar; break;
    default: settings.sheet.north = dice.Below(2) != 0 ? std::optional<float>(30.0f) : std::nullopt; break;
    }
}

/// One setting, or a few that belong together.
void Change(PresentationSettings& settings, Dice& dice, const std::vector<std::string>& paths)
{
    switch (dice.Below(13))
    {
    case 0:
    case 1: settings.look = static_cast<Host::Look>(dice.Below(6)); break;
    case 2: settings.cullBacks = !settings.cullBacks; break;
    case 3:
    case 4: ChangeSection(settings, dice); break;
    case 5: settings.editPath = paths.empty() ? "" : paths[static_cast<std::size_t>(dice.Below(static_cast<int>(paths.size())))]; break;
    case 6: settings.background = AnyColor(dice); break;
    case 7: settings.sky = !settings.sky; break;
    case 8: settings.fog = dice.Below(2) != 0 ? std::optional<Host::FogRange>({3.0f, 9.0f + dice.Share()}) : std::nullopt; break;
    case 9: ChangeLines(settings, dice); break;
    case 10:
        settings.edges = dice.Below(2) != 0 ? std::optional<Host::EdgeLook>({dice.Share(), AnyColor(dice), dice.Below(2) != 0 ? Host::Identity::Object : Host::Identity::Group})
                                            : std::nullopt;
        settings.occlusion = dice.Below(2) != 0;
        break;
    case 11: dice.Below(2) != 0 ? ChangeView(settings, dice) : ChangeSheet(settings, dice); break;
    default: settings.antialiasing = static_cast<Host::Antialiasing>(dice.Below(4)); break;
    }
    // The one look that is not cut.
    if (settings.look == Host::Look::Crosshatch)
    {
        settings.section.planes.clear();
    }
}

/// What a presentation holds, by kind.
struct Held
{
    std::size_t nodes = 0;
    std::size_t meshes = 0;
    std::size_t lines = 0;
    std::size_t styles = 0;
    std::size_t materials = 0;
    std::map<std::string, std::size_t> gl;

    bool operator==(const Held& other) const
    {
        return nodes == other.nodes && meshes == other.meshes && lines == other.lines && styles == other.styles
            && materials == other.materials && gl == other.gl;
    }
};

std::size_t CountNodes(const Node& node)
{
    std::size_t count = 1;
    for (const Node* child : node.GetChildren())
    {
        count += CountNodes(*child);
    }
    return count;
}

Held HeldBy(const Host::Presentation& presentation)
{
    const Scene& scene = presentation.GetScene();
    Held held{CountNodes(*scene.GetRoot()), scene.GetMeshes().size(), scene.GetLines().size(),
              scene.GetLineStyles().size(), scene.GetOptimizedMaterials().size() + scene.GetAlphaMaterials().size(), {}};
    for (const auto& [kind, names] : GLState::CaptureObjects())
    {
        held.gl[kind] = names.size();
    }
    return held;
}

std::ostream& operator<<(std::ostream& stream, const Held& held)
{
    stream << held.nodes << " nodes, " << held.meshes << " meshes, " << held.lines << " lines, " << held.styles
           << " styles, " << held.materials << " materials";
    for (const auto& [kind, count] : held.gl)
    {
        stream << ", " << count << " " << kind;
    }
    return stream;
}

class PresentationWalk : public PresentationFixture
{
protected:
    using Maker = std::function<std::unique_ptr<Host::Presentation>()>;

    /// Walks one presentation and makes a fresh one for each step.
    void Walk(const Maker& make, int steps, unsigned int seed)
    {
        Dice dice(seed);
        const std::unique_ptr<Host::Presentation> walker = make();
        const std::vector<std::string> paths = walker->ListNodes();
        for (int step = 0; step < steps && !HasFailure(); ++step)
        {
            PresentationSettings wanted = walker->GetSettings();
            Change(wanted, dice, paths);
            Apply(*walker, wanted);
            const Picture actual = Draw(*walker);
            const std::unique_ptr<Host::Presentation> fresh = make();
            Apply(*fresh, wanted);
            ExpectSame(actual, Draw(*fresh), "step " + std::to_string(step) + "\n" + wanted.ToJSON());
        }
    }
};

std::unique_ptr<Host::Presentation> Boxes()
{
    NamedScene boxes = MakeBoxes();
    return std::make_unique<Host::Presentation>(std::move(boxes.scene), std::move(boxes.nodes));
}

} // namespace

TEST_F(PresentationWalk, EachStepThroughBoxesIsWhatAFreshPresentationDraws)
{
    Walk(&Boxes, 1000, 1);
}

TEST_F(PresentationWalk, EachStepThroughEveryFeatureIsWhatAFreshPresentationDraws)
{
    std::vector<std::unique_ptr<EveryFeatureScene>> features;
    const auto make = [&]
    {
        // Only those of the walker and of the last fresh one are needed.
        if (features.size() > 2)
        {
            features.erase(features.begin() + 1);
        }
        auto scene = std::make_unique<Scene>();
        features.push_back(std::make_unique<EveryFeatureScene>(*scene));
        return std::make_unique<Host::Presentation>(std::move(scene));
    };
    Walk(make, 1000, 2);
}

TEST_F(PresentationWalk, BackAtTheStartNothingIsLeftOfIt)
{
    const std::unique_ptr<Host::Presentation> walker = Boxes();
    const PresentationSettings start = walker->GetSettings();
    const std::vector<std::string> paths = walker->ListNodes();
    const Picture first = Draw(*walker);
    // What is made on demand and kept, such as programs and the buffers of the stages, is made in
    // the first round.
    std::optional<Held> held;
    std::size_t bytes = 0;
    for (int round = 0; round < 3; ++round)
    {
        Dice dice(3);
        for (int step = 0; step < 300; ++step)
        {
            PresentationSettings wanted = walker->GetSettings();
            Change(wanted, dice, paths);
            Apply(*walker, wanted);
            walker->Draw(Width(), Height());
        }
        Apply(*walker, start);
        ExpectSame(Draw(*walker), first, "round " + std::to_string(round));
        if (!held)
        {
            held = HeldBy(*walker);
            bytes = HeapBytes();
        }
        EXPECT_TRUE(HeldBy(*walker) == *held) << HeldBy(*walker) << " after " << *held;
        EXPECT_LE(HeapBytes(), bytes + bytes / 1000) << "round " << round;
    }
}

} // namespace OV::Test
