#include "tests/orvane_host/present/Crowd.h"
#include "tests/orvane_host/present/PictureRows.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/orvane_host/present/SettingsDice.h"

#include "orvane_host/present/PresentationRenderer.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "tests/support/Sanitized.h"

#include <algorithm>
#include <cstdlib>

namespace OV::Test
{

namespace
{

using Host::BatchCounts;
using Host::BatchUse;
using Host::Presentation;
using Host::PresentationSettings;


class BatchesTest : public PresentationFixture
{
protected:
    explicit BatchesTest(int width = 120, int height = 80, int samples = 4) :
        PresentationFixture(width, height, samples)
    {
    }

    static std::unique_ptr<Presentation> Present(Crowd& crowd, BatchUse use,
                                                 PresentationSettings wanted = PresentationSettings())
    {
        auto presentation = std::make_unique<Presentation>(std::move(crowd.scene), crowd.named);
        wanted.batches.use = use;
        Apply(*presentation, wanted);
        return presentation;
    }

    /// Shadows on things and on the ground, seen from above a corner.
    static PresentationSettings InTheSun()
    {
        Host::SunSettings sun;
        sun.direction = Vector(0.4f, 1.0f, 0.3f);
        PresentationSettings lit;
        lit.sun = sun;
        lit.shadows.emplace();
        lit.ground.emplace();
        lit.view.eye = Vector(9.0f, 7.0f, 11.0f);
        lit.view.target = Vector(3.0f, 0.5f, 3.0f);
        return lit;
    }

    static BatchCounts CountsOf(const Presentation& presentation)
    {
        return presentation.GetRenderer().CountBatches();
    }

    /// One of those that are together, with nothing below it.
    std::size_t FindTogether(const Crowd& crowd, Presentation& presentation)
    {
        Draw(presentation);
        const std::size_t before = CountsOf(presentation).pieces;
        for (std::size_t i = 0; i < crowd.GetCount(); ++i)
        {
            MeshNode& node = crowd.GetNode(i);
            node.SetFlags(NodeFlagHidden, false);
            Draw(presentation);
            const bool wasTogether = CountsOf(presentation).pieces < before;
            node.ClearFlags(NodeFlagHidden, false);
            Draw(presentation);
            if (wasTogether && node.GetChildren().empty())
            {
                return i;
            }
        }
        ADD_FAILURE() << "nothing is together";
        return 0;
    }

    void ExpectLooksAlike(int colors, unsigned int seed, int steps);
    void ExpectEditsAlike(int colors, unsigned int seed, int steps);

    Picture DrawOften(Presentation& presentation, int frames)
    {
        for (int i = 1; i < frames; ++i)
        {
            presentation.Draw(Width(), Height());
        }
        return Draw(presentation);
    }

    /// Whether two pictures are the same but where there are edges, which may lie a rounding beside
    /// where they lay.
    static void ExpectAlike(const Picture& actual, const Picture& expected, const std::string& what)
    {
        int atEdges = 0;
        // What the pixels of the rim have beside them is not known.
        for (int y = 1; y < expected.GetHeight() - 1; ++y)
        {
            for (int x = 1; x < expected.GetWidth() - 1; ++x)
            {
                const int difference = Difference(actual.At(x, y), expected.At(x, y));
                if (difference <= 1)
                {
                    continue;
                }
                ++atEdges;
                ASSERT_LE(difference, Contrast(expected, x, y))
                    << what << ": at " << x << ", " << y << ": " << actual.At(x, y) << ", expected "
                    << expected.At(x, y);
            }
        }
        EXPECT_LE(atEdges, expected.GetWidth() * expected.GetHeight() / 50) << what;
    }

private:
    static int Difference(const Pixel& a, const Pixel& b)
    {
        return std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)});
    }

    /// How far the neighbours of a pixel lie apart.
    static int Contrast(const Picture& picture, int x, int y)
    {
        int most = 0;
        for (int j = std::max(y - 1, 0); j <= std::min(y + 1, picture.GetHeight() - 1); ++j)
        {
            for (int i = std::max(x - 1, 0); i <= std::min(x + 1, picture.GetWidth() - 1); ++i)
            {
                most = std::max(most, Difference(picture.At(i, j), picture.At(x, y)));
            }
        }
        return most;
    }
};

} // namespace

void BatchesTest::ExpectLooksAlike(int colors, unsigned int seed, int steps)
{
    Crowd crowd(60, 1, colors);
    Crowd plainCrowd(60, 1, colors);
    const auto together = Present(crowd, BatchUse::On);
    const auto plain = Present(plainCrowd, BatchUse::Off);
    Draw(*together);
    EXPECT_GT(CountsOf(*together).pieces, 30u);
    Dice dice(seed);
    const std::vector<std::string> paths = plain->ListNodes();
    for (int step = 0; step < steps && !HasFailure(); ++step)
    {
        PresentationSettings wanted = plain->GetSettings();
        Change(wanted, dice, paths);
        Apply(*plain, wanted);
        wanted.batches.use = BatchUse::On;
        Apply(*together, wanted);
        ExpectAlike(Draw(*together), Draw(*plain), "step " + std::to_string(step) + "\n" + wanted.ToJSON());
    }
    EXPECT_EQ(CountsOf(*plain).pieces, 0u);
}

TEST_F(BatchesTest, EveryLookAndSettingShowsWhatItShowsNodeByNode)
{
    ExpectLooksAlike(0, 5, isSanitized ? 30 : 150);
}

TEST_F(BatchesTest, EveryLookAndSettingShowsManyColoursAsNodeByNode)
{
    ExpectLooksAlike(40, 8, isSanitized ? 20 : 100);
}

void BatchesTest::ExpectEditsAlike(int colors, unsigned int seed, int steps)
{
    Crowd crowd(40, 1, colors);
    // A view of its own, which does not follow what is shown.
    PresentationSettings view;
    view.view.eye = Vector(9.0f, 7.0f, 11.0f);
    view.view.target = Vector(3.0f, 0.5f, 3.0f);
    const auto walker = Present(crowd, BatchUse::On, view);
    Dice dice(seed);
    Dice frames(3);
    for (int step = 0; step < steps && !HasFailure(); ++step)
    {
        crowd.Edit(dice);
        // So that the planes of the view are those of a fresh one.
        walker->Refresh();
        const Picture actual = DrawOften(*walker, 1 + frames.Below(12));
        Crowd copy(40, 1, colors);
        Dice again(seed);
        for (int i = 0; i <= step; ++i)
        {
            copy.Edit(again);
        }
        PresentationSettings wanted = walker->GetSettings();
        const auto fresh = Present(copy, BatchUse::Off, wanted);
        ExpectAlike(actual, Draw(*fresh), "step " + std::to_string(step));
    }
    EXPECT_GT(CountsOf(*walker).pieces, 5u);
}

TEST_F(BatchesTest, WhatIsEditedLooksLikeAFreshPresentationOfIt)
{
    ExpectEditsAlike(0, 11, isSanitized ? 30 : 200);
}

TEST_F(BatchesTest, MaterialsOfManyColoursThatAreEditedLookLikeAFreshPresentation)
{
    ExpectEditsAlike(40, 21, isSanitized ? 30 : 200);
}

TEST_F(BatchesTest, WhatIsHiddenHighlightedOrIsolatedLeavesAndComesBack)
{
    Crowd crowd(40);
    Crowd plainCrowd(40);
    const auto together = Present(crowd, BatchUse::On);
    const auto plain = Present(plainCrowd, BatchUse::Off);
    const Picture first = Draw(*together);
    const BatchCounts before = CountsOf(*together);
    const std::string name = "n" + std::to_string(FindTogether(crowd, *together));
    const auto both = [&](const auto& use, const std::string& what) {
        use(*together);
        use(*plain);
        ExpectAlike(Draw(*together), Draw(*plain), what);
    };
    both([&](Presentation& shown) { shown.Hide(name); }, "hidden");
    EXPECT_LT(CountsOf(*together).pieces, before.pieces);
    both([&](Presentation& shown) { shown.Show(name); }, "shown");
    EXPECT_EQ(CountsOf(*together).pieces, before.pieces);
    EXPECT_EQ(CountsOf(*together).single, before.single);
    both([&](Presentation& shown) { shown.Highlight(name, Color(1.0f, 0.0f, 0.0f, 0.5f)); }, "highlighted");
    EXPECT_LT(CountsOf(*together).pieces, before.pieces);
    EXPECT_GT(CountsOf(*together).single, before.single);
    both([&](Presentation& shown) { shown.Isolate(name); }, "isolated");
    both([&](Presentation& shown) { shown.ShowAll(); }, "all");
    both([&](Presentation& shown) { shown.ClearHighlights(); }, "none highlighted");
    EXPECT_EQ(CountsOf(*together).pieces, before.pieces);
    ExpectSame(Draw(*together), first, "back");
}

TEST_F(BatchesTest, ShadowsFollowWhatIsHiddenWhileTheEyeRests)
{
    const PresentationSettings lit = InTheSun();
    Crowd crowd(40);
    Crowd plainCrowd(40);
    const auto together = Present(crowd, BatchUse::On, lit);
    const auto plain = Present(plainCrowd, BatchUse::Off, lit);
    ExpectAlike(Draw(*together), Draw(*plain), "at first");
    for (const std::string& name : plain->ListNodes())
    {
        for (Presentation* each : {together.get(), plain.get()})
        {
            each->Hide(name);
        }
        ExpectAlike(Draw(*together), Draw(*plain), name + " hidden");
        for (Presentation* each : {together.get(), plain.get()})
        {
            each->Show(name);
        }
        ExpectAlike(Draw(*together), Draw(*plain), name + " shown");
    }
}

TEST_F(BatchesTest, WhatLiesOutsideTheViewCastsItsShadowIntoIt)
{
    PresentationSettings lit = InTheSun();
    Crowd crowd(40);
    Crowd plainCrowd(40);
    const auto together = Present(crowd, BatchUse::On, lit);
    const auto plain = Present(plainCrowd, BatchUse::Off, lit);
    for (int corner = 0; corner < 4; ++corner)
    {
        const float x = corner % 2 == 0 ? -2.0f : 8.0f;
        const float z = corner / 2 == 0 ? -2.0f : 8.0f;
        // Nothing but the ground is in sight, and shadows that fall on it.
        lit.view.eye = Vector(x, 4.0f, z);
        lit.view.target = Vector(x + 0.01f, 0.0f, z);
        lit.sun->direction = Vector(3.0f - x, 2.0f, 3.0f - z);
        lit.batches.use = BatchUse::Off;
        Apply(*plain, lit);
        lit.batches.use = BatchUse::On;
        Apply(*together, lit);
        ExpectAlike(Draw(*together), Draw(*plain), "corner " + std::to_string(corner));
    }
}

TEST_F(BatchesTest, ShadowsFollowWhatMovesAndRests)
{
    const PresentationSettings lit = InTheSun();
    Crowd crowd(40);
    Crowd plainCrowd(40);
    const auto together = Present(crowd, BatchUse::On, lit);
    const auto plain = Present(plainCrowd, BatchUse::Off, lit);
    const Picture first = Draw(*together);
    ExpectAlike(first, Draw(*plain), "at first");
    const std::size_t chosen = FindTogether(crowd, *together);
    for (const float height : {0.5f, 1.5f})
    {
        for (Crowd* each : {&crowd, &plainCrowd})
        {
            Transform place = each->GetNode(chosen).GetLocal();
            place.SetPosition(Vector(3.0f, height, 3.0f));
            each->GetNode(chosen).SetLocal(place);
        }
        const Picture moved = Draw(*together);
        ExpectAlike(moved, Draw(*plain), "moved");
        // It is drawn together with the others again.
        DrawOften(*together, 20);
        DrawOften(*plain, 20);
        ExpectAlike(Draw(*together), Draw(*plain), "rested");
    }
}

TEST_F(BatchesTest, WhatMovesOnceStaysInItsBatch)
{
    Crowd crowd(40);
    Crowd plainCrowd(40);
    PresentationSettings view;
    view.view.eye = Vector(9.0f, 7.0f, 11.0f);
    view.view.target = Vector(3.0f, 0.5f, 3.0f);
    const auto together = Present(crowd, BatchUse::On, view);
    const auto plain = Present(plainCrowd, BatchUse::Off, view);
    const std::size_t chosen = FindTogether(crowd, *together);
    const BatchCounts before = CountsOf(*together);
    for (int move = 1; move <= 3; ++move)
    {
        for (const Crowd* each : {&crowd, &plainCrowd})
        {
            Transform place = each->GetNode(chosen).GetLocal();
            place.SetPosition(Vector(1.0f, 0.5f * static_cast<float>(move), 1.0f));
            each->GetNode(chosen).SetLocal(place);
        }
        for (Presentation* each : {together.get(), plain.get()})
        {
            // So that both have the same planes.
            each->Refresh();
        }
        ExpectAlike(Draw(*together), Draw(*plain), "move " + std::to_string(move));
        EXPECT_EQ(CountsOf(*together).pieces, before.pieces);
        EXPECT_EQ(CountsOf(*together).single, before.single);
        EXPECT_EQ(CountsOf(*together).bytes, before.bytes);
        DrawOften(*together, 20);
    }
}

TEST_F(BatchesTest, WhatMovesOnIsDrawnByItselfUntilItHasRested)
{
    Crowd crowd(40);
    const auto together = Present(crowd, BatchUse::On);
    Draw(*together);
    const BatchCounts before = CountsOf(*together);
    const std::size_t chosen = FindTogether(crowd, *together);
    for (int frame = 0; frame < 20; ++frame)
    {
        Transform place = crowd.GetNode(chosen).GetLocal();
        place.SetPosition(Vector(1.0f, 0.1f * static_cast<float>(frame), 1.0f));
        crowd.GetNode(chosen).SetLocal(place);
        Draw(*together);
        // From the second move on.
        const std::size_t left = frame == 0 ? 0 : 1;
        EXPECT_EQ(CountsOf(*together).pieces, before.pieces - left);
        EXPECT_EQ(CountsOf(*together).single, before.single + left);
    }
    DrawOften(*together, 20);
    EXPECT_EQ(CountsOf(*together).pieces, before.pieces);
    EXPECT_EQ(CountsOf(*together).batches, before.batches);
    EXPECT_EQ(CountsOf(*together).bytes, before.bytes);
}

TEST_F(BatchesTest, FlagsThatNobodyMarksTheSceneDirtyForAreFollowed)
{
    Crowd crowd(40);
    const auto together = Present(crowd, BatchUse::On);
    const Picture before = Draw(*together);
    for (std::size_t i = 0; i < crowd.GetCount(); ++i)
    {
        crowd.GetNode(i).SetFlags(NodeFlagHidden, false);
    }
    const Picture hidden = Draw(*together);
    EXPECT_EQ(hidden.At(0, 0), hidden.At(60, 40));
    for (std::size_t i = 0; i < crowd.GetCount(); ++i)
    {
        crowd.GetNode(i).ClearFlags(NodeFlagHidden, false);
    }
    ExpectSame(Draw(*together), before, "shown again");
}

TEST_F(BatchesTest, PicksAreThoseOfNodesDrawnByThemselves)
{
    Crowd crowd(60);
    Crowd plainCrowd(60);
    PresentationSettings wanted;
    wanted.view.named = Host::NamedView::Iso;
    const auto together = Present(crowd, BatchUse::On, wanted);
    const auto plain = Present(plainCrowd, BatchUse::Off, wanted);
    Draw(*together);
    Draw(*plain);
    int hits = 0;
    int others = 0;
    const auto nameOf = [](const Presentation& presentation, const Host::PickHit& hit)
    { return presentation.PathOf(*hit.node); };
    for (int y = 2; y < Height(); y += 5)
    {
        for (int x = 2; x < Width(); x += 5)
        {
            const auto hit = together->Pick(x, y);
            const auto expected = plain->Pick(x, y);
            ASSERT_EQ(hit.has_value(), expected.has_value()) << x << ", " << y;
            hits += hit ? 1 : 0;
            others += hit && nameOf(*together, *hit) != nameOf(*plain, *expected) ? 1 : 0;
            const auto through = together->PickThrough(x, y);
            const auto expectedThrough = plain->PickThrough(x, y);
            ASSERT_EQ(through.size(), expectedThrough.size()) << x << ", " << y;
        }
    }
    EXPECT_GT(hits, 30);
    EXPECT_EQ(others, 0);
    const Host::PickArea all{0, 0, Width(), Height()};
    EXPECT_EQ(together->Pick(all).size(), plain->Pick(all).size());
    // Being picked takes nothing out of a batch.
    EXPECT_GT(CountsOf(*together).pieces, 30u);
}

TEST_F(BatchesTest, SmallThingsAreLeftOutOnlyWhenAskedFor)
{
    Crowd crowd(60);
    PresentationSettings wanted;
    const auto together = Present(crowd, BatchUse::On, wanted);
    const Picture before = Draw(*together);
    wanted.batches = {BatchUse::On, 1e6f};
    Apply(*together, wanted);
    const Picture none = Draw(*together);
    EXPECT_FALSE(none == before);
    wanted.batches.smallestPixels = 0.0f;
    Apply(*together, wanted);
    ExpectSame(Draw(*together), before, "all again");
}

TEST_F(BatchesTest, NodesAndMeshesThatAHostDeletesAreGone)
{
    for (const bool meshFirst : {false, true})
    {
        Crowd crowd(50);
        const auto together = Present(crowd, BatchUse::On);
        Draw(*together);
        for (std::size_t i = crowd.GetCount(); i-- > 0;)
        {
            MeshNode* const node = &crowd.GetNode(i);
            if (meshFirst)
            {
                while (!node->GetMeshes().empty())
                {
                    delete node->GetMeshes().front();
                }
            }
            else
            {
                delete node;
            }
            if (i % 7 == 0)
            {
                Draw(*together);
            }
        }
        Draw(*together);
        EXPECT_EQ(CountsOf(*together).pieces, 0u);
        EXPECT_EQ(CountsOf(*together).batches, 0u);
    }
}

TEST_F(BatchesTest, MaterialsThatAHostDeletesTakeTheirBatchesAlong)
{
    Crowd crowd(50);
    const auto together = Present(crowd, BatchUse::On);
    Draw(*together);
    for (std::size_t i = 0; i < 5; ++i)
    {
        delete &crowd.GetMaterial(i);
        together->Refresh();
        Draw(*together);
    }
    EXPECT_EQ(CountsOf(*together).batches, 0u);
}

TEST_F(BatchesTest, SuspendLeavesNothingAndResumeBringsTheSamePicture)
{
    Crowd crowd(40);
    const auto together = Present(crowd, BatchUse::On);
    const Picture before = Draw(*together);
    together->Suspend();
    together->Resume();
    ExpectSame(Draw(*together), before, "resumed");
    EXPECT_GT(CountsOf(*together).pieces, 15u);
}

TEST_F(BatchesTest, OffAndOnAgainIsTheSamePicture)
{
    Crowd crowd(40);
    PresentationSettings wanted;
    const auto together = Present(crowd, BatchUse::On, wanted);
    const Picture before = Draw(*together);
    const BatchCounts counts = CountsOf(*together);
    wanted.batches.use = BatchUse::Off;
    Apply(*together, wanted);
    ExpectAlike(Draw(*together), before, "off");
    EXPECT_EQ(CountsOf(*together).batches, 0u);
    wanted.batches.use = BatchUse::On;
    Apply(*together, wanted);
    ExpectSame(Draw(*together), before, "on");
    EXPECT_EQ(CountsOf(*together).pieces, counts.pieces);
}

TEST_F(BatchesTest, CornersAreDarkenedByWhatLiesInOtherTiles)
{
    // Seen from above, 71 pixels a unit: floors all over, and walls of a material of their own across them.
    constexpr int kWidth = 1400;
    constexpr int kHeight = 900;
    auto scene = std::make_unique<Scene>();
    Material* materials[2] = {};
    for (Material*& material : materials)
    {
        material = new Material("material");
        material->SetFlags(MaterialFlagUnlit | MaterialFlagNoCull);
        material->SetDiffuse(Color(1.0f, 1.0f, 1.0f));
        scene->AddMaterial(material);
    }
    const auto add = [&](Material& material, std::vector<Vector> corners) {
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer(std::move(corners));
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        auto* const mesh = new Mesh(raw, scene.get());
        auto* const node = new MeshNode(scene.get());
        mesh->AddNode(node);
        scene->GetRoot()->AddChild(node, false);
        material.AddMesh(mesh);
    };
    for (const float z : {-7.0f, 0.0f})
    {
        add(*materials[0], {{-10, 0, z}, {-10, 0, z + 7}, {10, 0, z + 7}, {10, 0, z}});
        add(*materials[1], {{-4.7f, 4, z}, {-4.7f, 4, z + 7}, {-4.54f, 4, z + 7}, {-4.54f, 4, z}});
    }
    Presentation presentation(std::move(scene));
    PresentationSettings wanted;
    wanted.view.orthographic = true;
    wanted.view.up = Vector(0, 0, -1);
    wanted.view.eye = Vector(0, 20, 0);
    wanted.view.target = Vector(0, 0, 0);
    wanted.antialiasing = Host::Antialiasing::None;
    wanted.occlusion = true;
    wanted.occlusionLook.radius = 4.0f;
    Host::PictureOptions options;
    options.width = kWidth;
    options.height = kHeight;
    std::vector<Rows> pictures;
    for (const BatchUse use : {BatchUse::Off, BatchUse::On})
    {
        wanted.batches.use = use;
        Apply(presentation, wanted);
        // The second tile from the left, with what is drawn about it, begins behind the walls.
        options.longestTile = use == BatchUse::On ? 1000 : 0;
        Host::PictureFacts facts;
        pictures.push_back(WriteRows(presentation, options, facts));
        EXPECT_EQ(facts.tiles, use == BatchUse::On ? 3 : 1);
    }
    EXPECT_EQ(CountsOf(presentation).batches, 2u);
    int darkened = 0;
    int differing = 0;
    for (int x = 0; x < kWidth; ++x)
    {
        const int expected = pictures.front().At(x, kHeight / 2, 0);
        darkened += x >= 576 && expected < 254 ? 1 : 0;
        differing += std::abs(pictures.back().At(x, kHeight / 2, 0) - expected) > 2 ? 1 : 0;
    }
    EXPECT_GT(darkened, 10) << "in the second tile";
    EXPECT_EQ(differing, 0);
}

TEST_F(BatchesTest, TwoMaterialsOfOneFormatAreTwoBatchesWithNothingBesides)
{
    constexpr std::size_t kCount = 300;
    auto scene = std::make_unique<Scene>();
    Material* materials[2] = {};
    for (Material*& material : materials)
    {
        material = new Material("material");
        scene->AddMaterial(material);
    }
    for (std::size_t i = 0; i < kCount; ++i)
    {
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer({Vector(0, 0, 0), Vector(1, 0, 0), Vector(0, 1, 0)});
        raw->SetIndices({0, 1, 2});
        raw->EndDescription(true);
        auto* const mesh = new Mesh(raw, scene.get());
        auto* const node = new MeshNode(scene.get());
        Transform place;
        place.SetPosition(Vector(static_cast<float>(i), 0.0f, 0.0f));
        node->SetLocal(place);
        mesh->AddNode(node);
        scene->GetRoot()->AddChild(node, false);
        materials[i % 2]->AddMesh(mesh);
    }
    Presentation presentation(std::move(scene));
    PresentationSettings wanted;
    wanted.batches.use = BatchUse::On;
    Apply(presentation, wanted);
    Draw(presentation);
    const BatchCounts counts = CountsOf(presentation);
    EXPECT_EQ(counts.batches, 2u);
    EXPECT_EQ(counts.pieces, kCount);
    EXPECT_EQ(counts.single, 0u);
    EXPECT_EQ(counts.triangles, kCount);
    EXPECT_EQ(counts.bytes, kCount * (3 * sizeof(Vector) + 3 * sizeof(unsigned short)));
    // Nothing has a copy of its own besides.
    EXPECT_EQ(presentation.GetStatistics().drawn.draws, 2u);
    EXPECT_EQ(presentation.GetStatistics().drawn.bytes, counts.bytes);
}

TEST_F(BatchesTest, WhatBecomesAnotherWithoutAWordIsNoLongerTogether)
{
    enum class Trouble
    {
        Grows,
        LosesNormals,
        NamesVerticesBeyond,
    };
    for (const Trouble trouble : {Trouble::Grows, Trouble::LosesNormals, Trouble::NamesVerticesBeyond})
    {
        auto scene = std::make_unique<Scene>();
        auto* const material = new Material("material");
        scene->AddMaterial(material);
        std::vector<MeshNode*> nodes;
        const auto addMany = [&](Scene& into, int count) {
            for (int i = 0; i < count; ++i)
            {
                auto raw = std::make_shared<RawMesh>();
                raw->SetPositionBuffer({Vector(0, 0, 0), Vector(1, 0, 0), Vector(0, 1, 0)});
                raw->SetNormalBuffer(std::vector<Vector>(3, Vector(0, 0, 1)));
                raw->SetIndices({0, 1, 2});
                raw->EndDescription(true);
                auto* const mesh = new Mesh(raw, &into);
                nodes.push_back(new MeshNode(&into));
                mesh->AddNode(nodes.back());
                into.GetRoot()->AddChild(nodes.back(), false);
                material->AddMesh(mesh);
            }
        };
        addMany(*scene, 20);
        Presentation presentation(std::move(scene));
        PresentationSettings wanted;
        wanted.batches.use = BatchUse::On;
        Apply(presentation, wanted);
        Draw(presentation);
        EXPECT_EQ(CountsOf(presentation).pieces, 20u);

        RawMesh& changed = *nodes[7]->GetMeshes().front()->GetRawMesh();
        if (trouble == Trouble::Grows)
        {
            changed.positions.resize(70000, Vector(1, 1, 0));
            changed.normals.resize(70000, Vector(0, 0, 1));
        }
        else if (trouble == Trouble::LosesNormals)
        {
            changed.normals = {};
            Transform place;
            place.SetPosition(Vector(0.0f, 2.0f, 0.0f));
            // Written where it is, and after that put together with others.
            nodes[7]->SetLocal(place);
            Draw(presentation);
        }
        else
        {
            changed.indices = {0, 1, 60000};
        }
        // As many again: those that are together are put together anew.
        addMany(presentation.GetScene(), 30);
        DrawOften(presentation, 12);
        const BatchCounts counts = CountsOf(presentation);
        EXPECT_EQ(counts.batches, 1u) << static_cast<int>(trouble);
        EXPECT_EQ(counts.pieces, 49u) << static_cast<int>(trouble);
        EXPECT_EQ(counts.single, 1u) << static_cast<int>(trouble);
    }
}

TEST_F(BatchesTest, AutoTakesLargeScenesAlone)
{
    for (const int count : {100, 420})
    {
        Crowd crowd(count);
        const auto presentation = Present(crowd, BatchUse::Auto);
        Draw(*presentation);
        EXPECT_EQ(CountsOf(*presentation).pieces > 0, count > 400);
    }
}

TEST_F(BatchesTest, ARendererMayOutliveItsSceneAndTheOtherWayRound)
{
    for (const bool sceneFirst : {false, true})
    {
        Crowd crowd(50);
        Scene* const scene = crowd.scene.get();
        auto renderer = std::make_unique<Host::PresentationRenderer>(nullptr, nullptr);
        renderer->SetBatches({BatchUse::On});
        renderer->Resize(Width(), Height());
        scene->UpdateGraph(static_cast<float>(Width()), static_cast<float>(Height()));
        renderer->Render3D(scene, scene->GetCameraNode());
        EXPECT_GT(renderer->CountBatches().pieces, 8u);
        if (sceneFirst)
        {
            crowd.scene.reset();
            renderer.reset();
        }
        else
        {
            renderer.reset();
            scene->UpdateGraph(static_cast<float>(Width()), static_cast<float>(Height()));
            scene->Suspend();
            crowd.scene.reset();
        }
    }
}

} // namespace OV::Test
