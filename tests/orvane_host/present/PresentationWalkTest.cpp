#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/orvane_host/present/SettingsDice.h"

#include "orvane/platform/detail/EntryPoints.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Node.h"
#include "tests/support/GLState.h"
#include "tests/support/Sanitized.h"

#include <functional>

namespace OV::Test
{

namespace
{

using Host::PresentationSettings;

/// Each is drawn by two presentations, which takes its time. The sanitizers look for faults of memory,
/// which a tenth of the way has as well.
constexpr int kSteps = isSanitized ? 30 : 300;

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
    Walk(&Boxes, kSteps, 1);
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
    Walk(make, kSteps, 2);
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
        }
        EXPECT_TRUE(HeldBy(*walker) == *held) << HeldBy(*walker) << " after " << *held;
    }
}

} // namespace OV::Test
