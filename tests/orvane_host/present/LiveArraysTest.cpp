#include "tests/orvane_host/present/Crowd.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/orvane_host/present/SettingsDice.h"

#include "orvane_host/geometry/RayCaster.h"
#include "orvane_host/present/PictureOptions.h"
#include "orvane_host/present/SunHoursMap.h"
#include "orvane_host/present/SunStudy.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "tests/support/Sanitized.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <set>
#include <thread>

namespace OV::Test
{

namespace
{

using Host::Presentation;
using Host::PresentationSettings;

constexpr float kInfinity = std::numeric_limits<float>::infinity();

/// What arithmetic makes of a bad day, and what fits in.
constexpr std::array<float, 14> kNumbers = {std::numeric_limits<float>::quiet_NaN(), kInfinity, -kInfinity, 1e38f, -3e38f,
                                            1e20f, 1e-40f, -1e-20f, 0.0f, 0.0f, 0.5f, -0.25f, 1.0f, 3.0f};

/// The arrays of everything in a scene, which are written to and put back.
class Arrays
{
public:
    explicit Arrays(const Scene& scene)
    {
        std::set<RawMesh*> known;
        const auto add = [&](RawMesh* raw) {
            if (known.insert(raw).second)
            {
                m_entries.push_back({raw, RawMesh(*raw)});
            }
        };
        for (const Mesh* mesh : scene.GetMeshes())
        {
            add(mesh->GetRawMesh().get());
        }
        for (const Line* line : scene.GetLines())
        {
            add(line->GetRawMesh().get());
        }
    }

    /// Writes a few elements, or as many as there are, of each.
    void WriteAll(Dice& dice)
    {
        for (Entry& entry : m_entries)
        {
            Write(entry, dice);
        }
    }

    /// The same of any one.
    void Write(Dice& dice) { Write(m_entries[static_cast<std::size_t>(dice.Below(static_cast<int>(m_entries.size())))], dice); }

    /// Tells of what was written, as a host is meant to.
    void Tell()
    {
        for (const Entry& entry : m_entries)
        {
            entry.raw->EndDescription(true);
            entry.raw->SetRenderData(nullptr);
        }
    }

    /// Puts everything back, and tells.
    void PutBack()
    {
        for (Entry& entry : m_entries)
        {
            *entry.raw = entry.first;
        }
    }

private:
    struct Entry
    {
        RawMesh* raw;
        RawMesh first;
    };

    static void Write(Entry& entry, Dice& dice)
    {
        RawMesh& raw = *entry.raw;
        const int kind = dice.Below(8);
        const int count = dice.Below(4) == 0 ? static_cast<int>(raw.positions.size()) : 1 + dice.Below(4);
        for (int i = 0; i < count; ++i)
        {
            switch (kind)
            {
            case 0:
            case 1:
            case 2: Set(raw.positions, dice, [&] { return Vector(Number(dice), Number(dice), Number(dice)); }); break;
            case 3: Set(raw.positions, dice, [&] { return Vector(dice.Share(), dice.Share(), dice.Share()); }); break;
            case 4: Set(raw.normals, dice, [&] { return Vector(Number(dice), Number(dice), Number(dice)); }); break;
            case 5: Set(raw.textureCoordinates, dice, [&] { return TextureCoordinate(Number(dice), Number(dice)); }); break;
            case 6: Set(raw.colors, dice, [&] { return Color(Number(dice), Number(dice), Number(dice), Number(dice)); }); break;
            default: Set(raw.indices, dice, [&] { return static_cast<unsigned short>(dice.Below(65536)); }); break;
            }
        }
        if (dice.Below(5) == 0)
        {
            std::copy(entry.first.positions.begin(), entry.first.positions.end(), raw.positions.begin());
            std::copy(entry.first.indices.begin(), entry.first.indices.end(), raw.indices.begin());
        }
    }

    static float Number(Dice& dice) { return dice.Of(kNumbers); }

    template <typename Item, typename Make>
    static void Set(std::vector<Item>& items, Dice& dice, const Make& make)
    {
        if (!items.empty())
        {
            items[static_cast<std::size_t>(dice.Below(static_cast<int>(items.size())))] = make();
        }
    }

    std::vector<Entry> m_entries;
};

class LiveArrays : public PresentationFixture
{
protected:
    using Maker = std::function<std::unique_ptr<Presentation>()>;

    LiveArrays() : PresentationFixture(96, 64) {}

    /// Calls everything that reads the arrays of a scene.
    void UseAll(Presentation& presentation, Arrays& arrays, Dice& dice, int step)
    {
        if (dice.Below(3) == 0)
        {
            arrays.Tell();
        }
        if (dice.Below(3) == 0)
        {
            presentation.Refresh();
        }
        presentation.Draw(Width(), Height());
        presentation.Pick(dice.Below(Width()), dice.Below(Height()));
        presentation.PickThrough(dice.Below(Width()), dice.Below(Height()), 4);
        switch (step % 8)
        {
        case 0: CastRays(presentation, dice); break;
        case 1: Hours(presentation, dice.Below(2) == 0 ? "ground" : AnyPath(presentation, dice)); break;
        case 2: SaveTiles(presentation); break;
        case 3: presentation.GetShownBox(); break;
        case 4: Frame(presentation, dice); break;
        case 5: presentation.AddLabel(AnyPath(presentation, dice), "A label"); break;
        case 6: presentation.Isolate(AnyPath(presentation, dice)); break;
        default: presentation.ShowAll(); break;
        }
    }

    /// Changes settings and arrays by turns, and in the end puts all back.
    void Walk(const Maker& make, unsigned int seed, int steps)
    {
        const std::unique_ptr<Presentation> presentation = make();
        const PresentationSettings start = presentation->GetSettings();
        const Picture before = Draw(*presentation);
        Arrays arrays(presentation->GetScene());
        Dice dice(seed);
        for (int step = 0; step < steps; ++step)
        {
            ChangeSettings(*presentation, dice);
            arrays.WriteAll(dice);
            UseAll(*presentation, arrays, dice, step);
        }
        arrays.PutBack();
        ExpectBack(*presentation, start, before, seed);
    }

    /// The same while another thread writes all the time.
    void WalkBesideAThread(const Maker& make, unsigned int seed, int steps)
    {
        const std::unique_ptr<Presentation> presentation = make();
        const PresentationSettings start = presentation->GetSettings();
        const Picture before = Draw(*presentation);
        Arrays arrays(presentation->GetScene());
        std::atomic<bool> ends{false};
        std::thread writer([&] {
            Dice dice(seed + 1000);
            while (!ends)
            {
                arrays.Write(dice);
            }
        });
        Dice dice(seed);
        for (int step = 0; step < steps; ++step)
        {
            ChangeSettings(*presentation, dice);
            UseAll(*presentation, arrays, dice, step);
        }
        ends = true;
        writer.join();
        arrays.PutBack();
        ExpectBack(*presentation, start, before, seed);
    }

private:
    static void ChangeSettings(Presentation& presentation, Dice& dice)
    {
        PresentationSettings wanted = presentation.GetSettings();
        Change(wanted, dice, presentation.ListNodes());
        wanted.batches.use = dice.Below(3) == 0 ? Host::BatchUse::Off : Host::BatchUse::On;
        if (dice.Below(3) == 0)
        {
            wanted.look = Host::Look::Advanced;
            wanted.section.planes = {{Vector(0.0f, 1.0f, 0.1f), Vector(0.0f, 0.3f, 0.0f)}};
            wanted.lines.emplace();
        }
        std::string error;
        presentation.Apply(wanted, error);
        presentation.Hurry(dice.Below(4) == 0);
    }

    void ExpectBack(Presentation& presentation, const PresentationSettings& start, const Picture& before, unsigned int seed)
    {
        presentation.Hurry(false);
        presentation.ShowAll();
        presentation.ClearLabels();
        Apply(presentation, start);
        presentation.Refresh();
        ExpectSame(Draw(presentation), before, "put back, seed " + std::to_string(seed));
    }

    static void CastRays(Presentation& presentation, Dice& dice)
    {
        const Host::RayCaster caster(presentation.GetScene());
        for (int i = 0; i < 20; ++i)
        {
            const QGM::Point3d from(dice.Share(), 2.0 + dice.Share(), dice.Share());
            const QGM::Vector3d along(dice.Share() - 0.5, -1.0, dice.Share() - 0.5);
            caster.Cast(from, along);
            caster.CastThrough(from, along);
        }
    }

    static void Hours(Presentation& presentation, const std::string& surface)
    {
        PresentationSettings wanted = presentation.GetSettings();
        wanted.sun.emplace().time = "2026-06-21T12:00Z";
        wanted.sun->place = Host::GeoPlace{52.52f, 13.4f};
        std::string error;
        const auto times = Host::SunStudyTimes::Parse("2026-03-20T12:00+01:00/13:00/1h", error);
        if (times && presentation.Apply(wanted, error))
        {
            Host::SunHoursMap map(presentation);
            map.Show(*times, surface, error);
            presentation.Draw(96, 64);
        }
    }

    void SaveTiles(Presentation& presentation)
    {
        Host::PictureOptions options;
        options.width = 120;
        options.height = 80;
        options.longestTile = 64;
        std::string error;
        presentation.SavePicture(m_folder.Path("picture.png"), options, error);
        presentation.FindBlank(options);
    }

    static void Frame(Presentation& presentation, Dice& dice)
    {
        switch (dice.Below(3))
        {
        case 0: presentation.FrameAll(); break;
        case 1: presentation.FrameShown(); break;
        default: presentation.FrameNode(AnyPath(presentation, dice)); break;
        }
    }

    static std::string AnyPath(Presentation& presentation, Dice& dice)
    {
        const std::vector<std::string> paths = presentation.ListNodes();
        return paths.empty() ? std::string() : paths[static_cast<std::size_t>(dice.Below(static_cast<int>(paths.size())))];
    }

    TemporaryFolder m_folder;
};

/// Several times as many are asked for by hand, such as with the sanitizers.
int Rounds()
{
    const char* const wanted = std::getenv("ORVANE_LIVE_ROUNDS");
    return wanted ? std::atoi(wanted) : 1;
}

/// Most of the time goes into programs that a driver compiles for one combination after another.
constexpr int kSteps = isSanitized ? 4 : 16;

std::shared_ptr<RawMesh> Ring()
{
    constexpr int sides = 24;
    constexpr int rings = 16;
    std::vector<Vector> positions;
    std::vector<unsigned short> indices;
    for (int ring = 0; ring < rings; ++ring)
    {
        for (int side = 0; side < sides; ++side)
        {
            const float u = 6.2831853f * static_cast<float>(ring) / rings;
            const float v = 6.2831853f * static_cast<float>(side) / sides;
            const float radius = 1.0f + 0.4f * std::cos(u);
            positions.emplace_back(radius * std::cos(v), 0.4f * std::sin(u), radius * std::sin(v));
            const auto at = [&](int r, int s) { return static_cast<unsigned short>(r % rings * sides + s % sides); };
            for (const unsigned short index : {at(ring, side), at(ring + 1, side), at(ring + 1, side + 1), at(ring, side),
                                               at(ring + 1, side + 1), at(ring, side + 1)})
            {
                indices.push_back(index);
            }
        }
    }
    auto raw = std::make_shared<RawMesh>();
    raw->SetNormalBuffer(std::vector<Vector>(positions.size(), Vector(0, 1, 0)));
    raw->SetPositionBuffer(std::move(positions));
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    return raw;
}

/// Closed boxes, and rings whose triangles share their corners and so are closed wherever these go.
std::unique_ptr<Presentation> Solids()
{
    NamedScene boxes = MakeBoxes();
    for (int i = 0; i < 2; ++i)
    {
        auto* const mesh = new Mesh(Ring(), boxes.scene.get());
        auto* const node = new MeshNode(boxes.scene.get());
        boxes.scene->GetRoot()->AddChild(node, false);
        boxes.scene->GetOptimizedMaterials().front()->AddMesh(mesh);
        mesh->AddNode(node);
        boxes.nodes.push_back({"ring" + std::to_string(i), node});
    }
    return std::make_unique<Presentation>(std::move(boxes.scene), std::move(boxes.nodes));
}

std::unique_ptr<Presentation> Many()
{
    Crowd crowd(60);
    return std::make_unique<Presentation>(std::move(crowd.scene), crowd.named);
}

} // namespace

TEST_F(LiveArrays, WhatIsWrittenIntoSolidsBetweenFramesHarmsNothing)
{
    for (int i = 0; i < Rounds(); ++i)
    {
        Walk(&Solids, 1 + static_cast<unsigned int>(i), kSteps);
    }
}

TEST_F(LiveArrays, WhatIsWrittenIntoABatchBetweenFramesHarmsNothing)
{
    for (int i = 0; i < Rounds(); ++i)
    {
        Walk(&Many, 1 + static_cast<unsigned int>(i), kSteps);
    }
}

TEST_F(LiveArrays, WhatIsWrittenIntoLinesAndAllElseBetweenFramesHarmsNothing)
{
    for (int i = 0; i < Rounds(); ++i)
    {
        std::unique_ptr<EveryFeatureScene> features;
        const auto make = [&] {
            auto scene = std::make_unique<Scene>();
            features = std::make_unique<EveryFeatureScene>(*scene);
            return std::make_unique<Presentation>(std::move(scene));
        };
        Walk(make, 1 + static_cast<unsigned int>(i), kSteps);
    }
}

TEST_F(LiveArrays, WhatAnotherThreadWritesMeanwhileHarmsNothing)
{
    for (int i = 0; i < Rounds(); ++i)
    {
        WalkBesideAThread(&Solids, 1 + static_cast<unsigned int>(i), kSteps / 2);
        WalkBesideAThread(&Many, 1 + static_cast<unsigned int>(i), kSteps / 2);
    }
}

} // namespace OV::Test
