#include "tests/orvane_host/present/PresentationModels.h"

#include "orvane_host/geometry/Polyline.h"
#include "orvane_host/import/NodePath.h"
#include "orvane/math/Transform.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <new>

namespace OV::Test
{

namespace
{

using Host::Presentation;
using Host::PresentationSettings;

class PresentationNodes : public PresentationFixture
{
protected:
    PresentationNodes() : presentation(PresentBoxes()) {}

    /// The nodes that are seen anywhere, by name.
    std::vector<std::string> Seen()
    {
        Draw(*presentation);
        std::vector<std::string> names;
        for (const Host::PickHit& hit : presentation->Pick({0, 0, Width(), Height()}))
        {
            const std::string path = presentation->PathOf(*hit.node);
            names.push_back(path.substr(path.rfind('/') + 1));
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::unique_ptr<Host::Presentation> presentation;
};

using Names = std::vector<std::string>;

TEST_F(PresentationNodes, AreListedAndFoundByPath)
{
    EXPECT_EQ(presentation->ListNodes(),
              (Names{"house", "house/left", "house/right", "house/right/roof", "house/twin", "house/glass"}));
    const Node* const roof = presentation->FindNode("right/roof");
    ASSERT_TRUE(roof);
    EXPECT_EQ(presentation->PathOf(*roof), "house/right/roof");
    EXPECT_FALSE(presentation->FindNode("roof/right"));
    EXPECT_FALSE(presentation->FindNode(""));
    for (const bool isDone : {presentation->Hide("attic"), presentation->Show("attic"), presentation->Isolate("attic"),
                              presentation->Highlight("attic", Color(1, 0, 0)), presentation->ClearHighlight("attic"),
                              presentation->FrameNode("attic")})
    {
        EXPECT_FALSE(isDone);
    }
}

TEST_F(PresentationNodes, WhatIsHiddenIsNeitherDrawnNorPickedAndComesBackAsItWas)
{
    const Picture whole = Draw(*presentation);
    EXPECT_EQ(Seen(), (Names{"glass", "left", "right", "roof", "twin"}));
    EXPECT_TRUE(presentation->Hide("right"));
    EXPECT_EQ(Seen(), (Names{"glass", "left", "twin"})) << "with the roof below it";
    EXPECT_TRUE(presentation->Hide("house"));
    EXPECT_EQ(Seen(), Names{});
    EXPECT_TRUE(presentation->Show("house"));
    EXPECT_EQ(Seen(), (Names{"glass", "left", "twin"})) << "each is shown by itself";
    EXPECT_TRUE(presentation->Show("right"));
    ExpectSame(Draw(*presentation), whole, "all shown");
}

TEST_F(PresentationNodes, AnIsolatedNodeIsAloneAndTakesThePlaceOfAnother)
{
    const Picture whole = Draw(*presentation);
    presentation->Isolate("right");
    EXPECT_EQ(Seen(), (Names{"right", "roof"}));
    presentation->Isolate("twin");
    EXPECT_EQ(Seen(), Names{"twin"});
    presentation->Hide("twin");
    EXPECT_EQ(Seen(), Names{});
    presentation->ShowAll();
    ExpectSame(Draw(*presentation), whole, "all shown");
}

TEST_F(PresentationNodes, WhatTheSceneHidesStaysHidden)
{
    NamedScene boxes = MakeBoxes();
    static_cast<MeshNode*>(boxes.nodes[1].node)->SetFlags(NodeFlagHidden, false);
    presentation = std::make_unique<Host::Presentation>(std::move(boxes.scene), std::move(boxes.nodes));
    const Picture without = Draw(*presentation);
    presentation->Hide("left");
    presentation->Isolate("left");
    EXPECT_EQ(Seen(), Names{});
    presentation->ShowAll();
    presentation->Show("left");
    ExpectSame(Draw(*presentation), without, "as the scene has it");
}

TEST_F(PresentationNodes, HidingDoesNotMoveTheViewNotEvenInAnotherSize)
{
    presentation->Hide("left");
    const Picture hidden = Draw(*presentation);
    presentation->Draw(Width() / 2, Height());
    ExpectSame(Draw(*presentation), hidden, "after another size");
    presentation->ShowAll();
    const auto fresh = PresentBoxes();
    ExpectSame(Draw(*presentation), Draw(*fresh), "all shown");
}

TEST_F(PresentationNodes, WhatIsHiddenIsNotCut)
{
    PresentationSettings cut;
    cut.section.planes = {{Vector(0, 0, 1), Vector(0, 0, 0)}};
    cut.section.fill = Color(1, 0, 1);
    cut.section.outlineWidth = 0.0f;
    cut.view.named = Host::NamedView::Front;
    Apply(*presentation, cut);
    const Picture filled = Draw(*presentation);
    const int before = filled.Count(Pixel{255, 0, 255, 255});
    presentation->Hide("left");
    const int hidden = Draw(*presentation).Count(Pixel{255, 0, 255, 255});
    EXPECT_GT(hidden, 0);
    EXPECT_LT(hidden, before / 2);
    presentation->ShowAll();
    ExpectSame(Draw(*presentation), filled, "all shown");
}

TEST_F(PresentationNodes, AHighlightIsAColourOverTheNodeInEveryLookAndIsTakenBack)
{
    PresentationSettings wanted;
    wanted.antialiasing = Host::Antialiasing::None;
    for (int look = 0; look < 6; ++look)
    {
        wanted.look = static_cast<Host::Look>(look);
        for (const bool cut : {false, true})
        {
            wanted.section.planes.clear();
            if (cut && wanted.look != Host::Look::Crosshatch)
            {
                wanted.section.planes = {{Vector(0, 1, 0), Vector(0, 0.7f, 0)}};
            }
            wanted.lines = cut ? std::optional<Host::LineSettings>(Host::LineSettings()) : std::nullopt;
            Apply(*presentation, wanted);
            const Picture before = Draw(*presentation);
            presentation->Highlight("house", Color(0, 1, 0, 0.5f));
            presentation->Highlight("left", Color(1, 0, 0, 1.0f));
            const Picture lit = Draw(*presentation);
            EXPECT_GT(lit.Count(Pixel{255, 0, 0, 255}), 100) << "look " << look;
            const std::optional<Host::PickHit> hit = presentation->Pick(Width() / 2, Height() / 2);
            ASSERT_TRUE(hit);
            EXPECT_TRUE(hit->mesh->GetMaterial());
            presentation->ClearHighlight("left");
            EXPECT_EQ(Draw(*presentation).Count(Pixel{255, 0, 0, 255}), 0);
            presentation->ClearHighlights();
            ExpectSame(Draw(*presentation), before, "look " + std::to_string(look));
        }
    }
}

TEST_F(PresentationNodes, OfATreeThatIsDeeperThanTheStackAreHiddenAndHighlightedToo)
{
    NamedScene boxes = MakeBoxes();
    Node* const top = boxes.nodes[0].node;
    Node* deepest = top;
    for (int level = 0; level < 200000; ++level)
    {
        auto* const child = new Node(boxes.scene.get());
        deepest->AddChild(child, false);
        deepest = child;
    }
    presentation = std::make_unique<Host::Presentation>(std::move(boxes.scene), std::move(boxes.nodes));
    const Picture whole = Draw(*presentation);
    EXPECT_TRUE(presentation->Highlight("house", Color(1.0f, 0.0f, 0.0f)));
    EXPECT_FALSE(Draw(*presentation) == whole);
    EXPECT_TRUE(presentation->Hide("house"));
    EXPECT_EQ(Seen(), Names{});
    EXPECT_TRUE(presentation->Isolate("left"));
    presentation->Refresh();
    presentation->ShowAll();
    presentation->ClearHighlights();
    ExpectSame(Draw(*presentation), whole, "all taken back");
}

TEST_F(PresentationNodes, AHighlightCoversJustWhatTheNodeShows)
{
    UseFramebuffer(SmallWidth, SmallHeight);
    PresentationSettings wanted;
    wanted.antialiasing = Host::Antialiasing::None;
    wanted.section.planes = {{Vector(0, 1, 0), Vector(0, 0.7f, 0)}};
    Apply(*presentation, wanted);
    const Picture before = Draw(*presentation);
    presentation->Highlight("left", Color(1, 0, 0, 1.0f));
    const Picture lit = Draw(*presentation);
    const Node* const left = presentation->FindNode("left");
    for (int y = 0; y < Height(); ++y)
    {
        for (int x = 0; x < Width(); ++x)
        {
            if (lit.At(x, y) != before.At(x, y))
            {
                bool isThere = false;
                for (const Host::PickHit& hit : presentation->PickThrough(x, Height() - 1 - y, 4))
                {
                    isThere = isThere || hit.node == left;
                }
                EXPECT_TRUE(isThere) << x << ", " << y << ": " << before.At(x, y) << " became " << lit.At(x, y);
            }
        }
    }
}

TEST_F(PresentationNodes, APixelIsPickedFromTheUpperLeftCornerOfTheLastSize)
{
    EXPECT_FALSE(presentation->Pick(3, 3)) << "before there is a size";
    PresentationSettings wanted;
    wanted.view.named = Host::NamedView::Front;
    Apply(*presentation, wanted);
    presentation->Resize(Width(), Height());
    std::vector<int> rows;
    for (int y = 0; y < Height(); ++y)
    {
        const std::optional<Host::PickHit> hit = presentation->Pick(Width() / 2 - 21, y);
        if (hit)
        {
            EXPECT_EQ(presentation->PathOf(*hit->node), "house/left");
            EXPECT_NEAR(hit->position.z, 1.0f, 0.01f);
            rows.push_back(y);
        }
    }
    ASSERT_FALSE(rows.empty());
    EXPECT_LT(rows.front(), Height() / 2);
    EXPECT_GT(rows.back(), Height() / 2);
    EXPECT_FALSE(presentation->Pick(-1, 0));
    const std::vector<Host::PickHit> through = presentation->PickThrough(Width() / 2 - 21, Height() / 2);
    ASSERT_EQ(through.size(), 2u) << "the small box in the tall one";
    EXPECT_NE(through[0].mesh, through[1].mesh);
    EXPECT_EQ(through[0].node, through[1].node);
}

TEST_F(PresentationNodes, WhatIsCutAwayIsNotPicked)
{
    PresentationSettings wanted;
    wanted.view.named = Host::NamedView::Front;
    wanted.section.planes = {{Vector(0, 0, 1), Vector(0, 0, 0.2f)}};
    wanted.section.fill.reset();
    Apply(*presentation, wanted);
    presentation->Resize(Width(), Height());
    const std::optional<Host::PickHit> hit = presentation->Pick(Width() / 2 - 21, Height() / 2);
    ASSERT_TRUE(hit);
    EXPECT_LE(hit->position.z, 0.21f);
}

TEST_F(PresentationNodes, BoxesAreThoseOfTheModelAndOfWhatIsShown)
{
    const auto expectBox = [](const std::optional<Host::Presentation::Box>& box, const Vector& low, const Vector& high)
    {
        ASSERT_TRUE(box);
        EXPECT_NEAR(box->low.x, low.x, 1e-5f);
        EXPECT_NEAR(box->low.y, low.y, 1e-5f);
        EXPECT_NEAR(box->low.z, low.z, 1e-5f);
        EXPECT_NEAR(box->high.x, high.x, 1e-5f);
        EXPECT_NEAR(box->high.y, high.y, 1e-5f);
        EXPECT_NEAR(box->high.z, high.z, 1e-5f);
    };
    const Vector low(-2.6f, -1.5f, -2.7f);
    const Vector high(2.3f, 1.5f, 1.95f);
    expectBox(presentation->GetModelBox(), low, high);
    expectBox(presentation->GetShownBox(), low, high);
    presentation->Isolate("left");
    expectBox(presentation->GetShownBox(), Vector(-2.6f, -1.5f, -1), Vector(-0.6f, 1.5f, 1));
    PresentationSettings cut;
    cut.section.planes = {{Vector(0, 2, 0), Vector(0, 0.25f, 0)}, {Vector(-1, 0, 0), Vector(-1.0f, 0, 0)}};
    Apply(*presentation, cut);
    expectBox(presentation->GetShownBox(), Vector(-1.0f, -1.5f, -1), Vector(-0.6f, 0.25f, 1));
    expectBox(presentation->GetModelBox(), low, high);
    cut.section.planes = {{Vector(0, 1, 0), Vector(0, -9, 0)}};
    Apply(*presentation, cut);
    EXPECT_FALSE(presentation->GetShownBox());
    EXPECT_FALSE(presentation->FrameShown());
}

/// How far the picture of something reaches, 0 to 1 from the lower left corner.
struct Reach
{
    float left = 1.0f;
    float right = 0.0f;
    float low = 1.0f;
    float high = 0.0f;
};

Reach ReachOf(const Picture& picture, const Pixel& background)
{
    Reach reach;
    const auto width = static_cast<float>(picture.GetWidth());
    const auto height = static_cast<float>(picture.GetHeight());
    for (int y = 0; y < picture.GetHeight(); ++y)
    {
        for (int x = 0; x < picture.GetWidth(); ++x)
        {
            if (picture.At(x, y) != background)
            {
                reach.left = std::min(reach.left, static_cast<float>(x) / width);
                reach.right = std::max(reach.right, static_cast<float>(x + 1) / width);
                reach.low = std::min(reach.low, static_cast<float>(y) / height);
                reach.high = std::max(reach.high, static_cast<float>(y + 1) / height);
            }
        }
    }
    return reach;
}

TEST_F(PresentationNodes, FramingFillsThePictureWithANodeOrWithWhatPlanesLeft)
{
    const Pixel white{255, 255, 255, 255};
    for (const bool orthographic : {false, true})
    {
        PresentationSettings wanted;
        wanted.view.orthographic = orthographic;
        Apply(*presentation, wanted);
        Draw(*presentation);
        const auto expectFilled = [&](const char* what)
        {
            const Reach reach = ReachOf(Draw(*presentation), white);
            EXPECT_GT(std::max(reach.right - reach.left, reach.high - reach.low), 0.9f) << what;
            EXPECT_GT(std::min({reach.left, 1.0f - reach.right, reach.low, 1.0f - reach.high}), 0.0f) << what;
            EXPECT_NEAR(reach.left, 1.0f - reach.right, 0.06f) << what;
            EXPECT_NEAR(reach.low, 1.0f - reach.high, 0.06f) << what;
            // The settings tell where the camera is.
            const auto fresh = PresentBoxes();
            Apply(*fresh, presentation->GetSettings());
            const Host::ViewSettings& view = fresh->GetSettings().view;
            ASSERT_TRUE(view.eye && view.target) << what;
        };
        presentation->Isolate("roof");
        EXPECT_TRUE(presentation->FrameNode("roof"));
        expectFilled("roof");
        presentation->ShowAll();
        EXPECT_TRUE(presentation->FrameAll());
        expectFilled("all");
        wanted = presentation->GetSettings();
        wanted.section.planes = {{Vector(1, 0, 0), Vector(-1.2f, 0, 0)}};
        Apply(*presentation, wanted);
        EXPECT_TRUE(presentation->FrameShown());
        expectFilled("what the plane left");
        const auto fresh = PresentBoxes();
        Apply(*fresh, presentation->GetSettings());
        ExpectSame(Draw(*fresh), Draw(*presentation), "from the settings alone");
    }
}

TEST_F(PresentationNodes, ACameraSetByTheHostIsToldBySettings)
{
    ASSERT_TRUE(presentation->SetCamera(Vector(4, 3, 8), Vector(0, 0, 0)));
    const Picture seen = Draw(*presentation);
    const Host::ViewSettings& view = presentation->GetSettings().view;
    EXPECT_EQ(view.eye->x, 4.0f);
    EXPECT_EQ(view.target->z, 0.0f);
    const auto other = PresentBoxes();
    Apply(*other, presentation->GetSettings());
    ExpectSame(Draw(*other), seen, "from settings");
    // The same place, as a transform.
    Transform place;
    place.EyeLookUp(Vector(4, 3, 8), Vector(0, 0, 0), Vector(0, 1, 0));
    ASSERT_TRUE(other->SetCamera(place, std::sqrt(89.0f)));
    EXPECT_NEAR(other->GetSettings().view.target->x, 0.0f, 1e-5f);
    EXPECT_NEAR(other->GetSettings().view.target->y, 0.0f, 1e-5f);
    EXPECT_NEAR(other->GetSettings().view.eye->z, 8.0f, 1e-5f);
    EXPECT_FALSE(presentation->SetCamera(Vector(1, 1, 1), Vector(1, 1, 1)));
    EXPECT_FALSE(presentation->SetCamera(place, 0.0f));
    ExpectSame(Draw(*presentation), seen, "after refusals");
}

TEST_F(PresentationNodes, ARefreshFollowsWhatTheHostHasChanged)
{
    PresentationSettings wanted;
    wanted.lines = Host::LineSettings();
    wanted.section.planes = {{Vector(0, 1, 0), Vector(0, 0.2f, 0)}};
    wanted.cullBacks = false;
    Apply(*presentation, wanted);
    presentation->Highlight("twin", Color(1, 0, 0));
    presentation->Hide("roof");
    Draw(*presentation);
    const auto change = [](Scene& scene, Node* twin)
    {
        scene.DeleteSubtree(twin);
        Material& clay = *scene.GetOptimizedMaterials().front();
        clay.SetDiffuse(Color(0.2f, 0.2f, 0.9f));
        clay.SetFlags(MaterialFlagUnlit);
    };
    change(presentation->GetScene(), presentation->FindNode("twin"));
    presentation->Refresh();
    EXPECT_FALSE(presentation->FindNode("twin"));
    NamedScene boxes = MakeBoxes();
    change(*boxes.scene, boxes.nodes[4].node);
    boxes.nodes.erase(boxes.nodes.begin() + 4);
    Host::Presentation fresh(std::move(boxes.scene), std::move(boxes.nodes));
    Apply(fresh, wanted);
    fresh.Hide("roof");
    ExpectSame(Draw(*presentation), Draw(fresh), "changed before it was presented");
}

TEST_F(PresentationNodes, LinesOfTheHostCountForTheBoxAndAreInTheView)
{
    PresentationSettings wanted;
    wanted.view.named = Host::NamedView::Front;
    wanted.lines = Host::LineSettings();
    Apply(*presentation, wanted);
    Scene& scene = presentation->GetScene();
    auto* const style = new LineStyle("host");
    style->color = Color(0, 0, 1);
    style->secondColor = Color(0, 0, 0, 0);
    style->antialias = false;
    style->width = 2.0f;
    scene.AddLineStyle(style);
    auto* const node = new MeshNode(&scene);
    scene.GetRoot()->AddChild(node, false);
    auto* const line = new Line(Host::Polyline::Make({Vector(0, 0, 6), Vector(5, 0, 6)}).front(), &scene);
    style->AddLine(line);
    line->AddNode(node);
    presentation->Refresh();
    const auto box = presentation->GetModelBox();
    ASSERT_TRUE(box);
    EXPECT_NEAR(box->high.x, 5.0f, 1e-5f);
    EXPECT_NEAR(box->high.z, 6.0f, 1e-5f);
    // From end to end: neither the near plane nor the rim of the picture cuts it.
    EXPECT_GT(Draw(*presentation).Count({0, 0, 255, 255}), 2 * Width() / 3);
    wanted.section.planes = {{Vector(1, 0, 0), Vector(3, 0, 0)}};
    Apply(*presentation, wanted);
    EXPECT_NEAR(presentation->GetShownBox()->high.x, 3.0f, 1e-5f);
    EXPECT_NEAR(presentation->GetModelBox()->high.x, 5.0f, 1e-5f);
}

TEST_F(PresentationNodes, WithoutNamesDoAllThatNamedOnesDo)
{
    NamedScene boxes = MakeBoxes();
    Node& left = *Host::FindNode(boxes.nodes, "left");
    presentation->Resize(Width(), Height());
    Presentation bare(std::move(boxes.scene));
    const auto both = [&](const char* what, const auto& act) {
        EXPECT_TRUE(act(*presentation, std::string("left"))) << what;
        EXPECT_TRUE(act(bare, left)) << what;
        ExpectSame(Draw(bare), Draw(*presentation), what);
    };
    both("highlighted", [](Presentation& of, const auto& node) { return of.Highlight(node, Color(1, 0, 0, 0.5f)); });
    both("with a label", [](Presentation& of, const auto& node) { return of.AddLabel(node, "tower"); });
    both("framed", [](Presentation& of, const auto& node) { return of.FrameNode(node); });
    both("isolated", [](Presentation& of, const auto& node) { return of.Isolate(node); });
    both("hidden", [](Presentation& of, const auto& node) { return of.Hide(node); });
    both("shown", [](Presentation& of, const auto& node) { return of.Show(node); });
    both("without a label", [](Presentation& of, const auto& node) { return of.RemoveLabel(node); });
    both("plain", [](Presentation& of, const auto& node) { return of.ClearHighlight(node); });
    EXPECT_FALSE(bare.AddLabel(left)) << "it has no name to be shown";
    EXPECT_EQ(bare.ListNodes(), Names{});

    // One of another scene is no node of this one.
    const Node& other = *presentation->FindNode("left");
    EXPECT_FALSE(bare.Highlight(other, Color(1, 0, 0)));
    EXPECT_FALSE(bare.Hide(other));
    EXPECT_FALSE(bare.Isolate(other));
    EXPECT_FALSE(bare.AddLabel(other, "other"));
    EXPECT_FALSE(bare.FrameNode(other));
}

TEST_F(PresentationNodes, WithoutNamesAreForgottenWhenTheHostDeletesThem)
{
    NamedScene boxes = MakeBoxes();
    Node* const left = Host::FindNode(boxes.nodes, "left");
    Presentation bare(std::move(boxes.scene));
    const Picture whole = Draw(bare);
    bare.Isolate(*left);
    bare.Highlight(*left, Color(1, 0, 0));
    bare.AddLabel(*left, "tower");
    EXPECT_FALSE(Draw(bare) == whole);
    delete left;
    EXPECT_FALSE(Draw(bare) == whole) << "the others, and not the one that is gone";
    EXPECT_GT(bare.GetShownBox()->low.x, -2.0f);
    EXPECT_TRUE(bare.GetForeground().GetTexts().empty());
}

TEST_F(PresentationNodes, TakeOverNothingFromDeletedOnesWhoseAddressesTheyHave)
{
    Scene& scene = presentation->GetScene();
    Mesh* const tall = dynamic_cast<MeshNode&>(*presentation->FindNode("left")).GetMeshes().front();
    alignas(MeshNode) unsigned char place[sizeof(MeshNode)];
    const auto add = [&] {
        auto* const node = ::new (place) MeshNode(&scene);
        tall->AddNode(node);
        scene.GetRoot()->AddChild(node, false);
        return node;
    };
    MeshNode* node = add();
    presentation->Refresh();
    const Picture plain = Draw(*presentation);
    const Names names = presentation->ListNodes();
    const std::function<void()> doings[] = {
        [&] { presentation->AddName(*node, "tower"); },
        [&] { presentation->Highlight(*node, Color(1, 0, 0)); },
        [&] { presentation->AddLabel(*node, "tower"); },
        [&] { presentation->Hide(*node); },
        [&] { presentation->Isolate(*node); },
    };
    for (const auto& act : doings)
    {
        SCOPED_TRACE(&act - doings);
        act();
        const Picture other = Draw(*presentation);
        EXPECT_TRUE(other != plain || presentation->ListNodes() != names);
        node->~MeshNode();
        node = add();
        ExpectSame(Draw(*presentation), plain, "the next one there");
        EXPECT_EQ(presentation->ListNodes(), names);
    }
    node->~MeshNode();
}

TEST_F(PresentationNodes, StayHiddenByTheHostWhereADeletedOneHadTheirAddress)
{
    Scene& scene = presentation->GetScene();
    alignas(MeshNode) unsigned char place[sizeof(MeshNode)];
    const auto add = [&] {
        auto* const node = ::new (place) MeshNode(&scene);
        scene.GetRoot()->AddChild(node, false);
        return node;
    };
    MeshNode* node = add();
    EXPECT_TRUE(presentation->Isolate("left"));
    EXPECT_TRUE(node->GetFlags() & NodeFlagHidden);
    node->~MeshNode();
    node = add();
    node->SetFlags(NodeFlagHidden, false);
    presentation->ShowAll();
    EXPECT_TRUE(node->GetFlags() & NodeFlagHidden);
    node->ClearFlags(NodeFlagHidden, false);
    presentation->Refresh();
    EXPECT_FALSE(node->GetFlags() & NodeFlagHidden);
    node->~MeshNode();
}

TEST_F(PresentationNodes, AreFoundByNamesThatTheHostGivesThem)
{
    Node* const twin = presentation->FindNode("twin");
    ASSERT_TRUE(twin);
    auto* const added = new MeshNode(&presentation->GetScene());
    twin->AddChild(added, false);
    EXPECT_EQ(presentation->PathOf(*added), "");
    presentation->AddName(*added, "lamp");
    presentation->Refresh();
    EXPECT_EQ(presentation->FindNode("twin/lamp"), added);
    EXPECT_EQ(presentation->PathOf(*added), presentation->PathOf(*twin) + "/lamp");
    EXPECT_EQ(presentation->ListNodes().back(), presentation->PathOf(*added));
    presentation->AddName(*added, "sconce");
    EXPECT_EQ(presentation->FindNode("twin/sconce"), added);
    EXPECT_FALSE(presentation->FindNode("lamp"));
}

} // namespace

} // namespace OV::Test
