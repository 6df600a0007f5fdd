#include "tests/orvane_host/present/PictureRows.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/support/ShowMesh.h"

#include "orvane_host/geometry/Polyline.h"
#include "orvane_host/present/BlankPicture.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>

namespace OV::Test
{

namespace
{

using Host::BlankReason;
using Host::PictureOptions;
using Host::PresentationSettings;

constexpr int WholeWidth = 400;
constexpr int WholeHeight = 300;

class PresentationPicture : public PresentationFixture
{
protected:
    PresentationPicture() : presentation(PresentBoxes()) {}

    Rows Draw(const PictureOptions& options, Host::PictureFacts& facts)
    {
        return WriteRows(*presentation, options, facts);
    }

    static PictureOptions Whole()
    {
        PictureOptions options;
        options.width = WholeWidth;
        options.height = WholeHeight;
        return options;
    }

    /// Where two pictures differ by more than rounding.
    void ExpectTilesMakeTheWhole(const PresentationSettings& wanted, const std::string& what,
                                 PictureOptions options = Whole(), int longestTile = 192, int leastTiles = 6)
    {
        Apply(*presentation, wanted);
        Host::PictureFacts facts;
        const Rows whole = Draw(options, facts);
        EXPECT_EQ(facts.tiles, 1) << what;
        options.longestTile = longestTile;
        const Rows tiled = Draw(options, facts);
        EXPECT_GE(facts.tiles, leastTiles) << what;
        ASSERT_EQ(whole.data.size(), tiled.data.size());
        int differing = 0;
        for (int y = 0; y < options.height; ++y)
        {
            for (int x = 0; x < options.width; ++x)
            {
                bool differs = false;
                for (int channel = 0; channel < 3; ++channel)
                {
                    differs = differs || std::abs(whole.At(x, y, channel) - tiled.At(x, y, channel)) > 1;
                }
                differing += differs ? 1 : 0;
            }
        }
        EXPECT_EQ(differing, 0) << what;
    }

    std::unique_ptr<Host::Presentation> presentation;
    TemporaryFolder folder;
};

PresentationSettings Everything(Host::Antialiasing antialiasing)
{
    PresentationSettings all;
    all.antialiasing = antialiasing;
    all.background = Color(0.8f, 0.9f, 1.0f);
    all.sky = true;
    all.fog = {2.0f, 40.0f};
    all.lines = Host::LineSettings();
    all.lines->width = 3.0f;
    all.edges = Host::EdgeLook();
    all.occlusion = true;
    // The other kind sees farther, which takes many tiles of so small a picture: one way will do.
    all.occlusionLook.kind = antialiasing == Host::Antialiasing::Multisampling ? Host::OcclusionKind::Horizon
                                                                               : Host::OcclusionKind::Spiral;
    all.sheet.title = "A title that runs over the rims of tiles";
    all.sheet.scaleBar = true;
    all.sheet.north = 30.0f;
    return all;
}

TEST_F(PresentationPicture, TilesMakeTheWholeWithAnythingOn)
{
    for (const Host::Antialiasing way : {Host::Antialiasing::None, Host::Antialiasing::Multisampling,
                                         Host::Antialiasing::Filter, Host::Antialiasing::Supersampling})
    {
        ExpectTilesMakeTheWhole(Everything(way), "way " + std::to_string(static_cast<int>(way)));
    }
}

TEST_F(PresentationPicture, TilesAreTheWholeByteForByteWhereNothingIsFilteredOrDarkened)
{
    using Change = void (*)(PresentationSettings&);
    struct Case
    {
        const char* label;
        Change change;
    };
    const Case cases[] = {
        {"no smoothing", [](PresentationSettings& wanted) { wanted.antialiasing = Host::Antialiasing::None; }},
        {"samples", [](PresentationSettings&) {}},
        {"finer pixels", [](PresentationSettings& wanted) { wanted.antialiasing = Host::Antialiasing::Supersampling; }},
        {"orthographic",
         [](PresentationSettings& wanted) {
             wanted.antialiasing = Host::Antialiasing::None;
             wanted.view.orthographic = true;
         }},
        {"lines",
         [](PresentationSettings& wanted) {
             wanted.lines = Host::LineSettings();
             wanted.lines->width = 3.0f;
             wanted.lines->hidden = Host::HiddenLines::Dashed;
         }},
        {"edges", [](PresentationSettings& wanted) { wanted.edges = Host::EdgeLook(); }},
        {"shadows",
         [](PresentationSettings& wanted) {
             wanted.sun.emplace();
             wanted.sun->direction = Vector(1, 2, 1);
             wanted.shadows.emplace();
         }},
        {"sheet",
         [](PresentationSettings& wanted) {
             wanted.sheet.title = "A title that runs over the rims of tiles";
             wanted.sheet.scaleBar = true;
         }},
    };
    for (const Case& c : cases)
    {
        PresentationSettings wanted;
        c.change(wanted);
        Apply(*presentation, wanted);
        PictureOptions options = Whole();
        Host::PictureFacts facts;
        const Rows whole = Draw(options, facts);
        EXPECT_EQ(facts.tiles, 1) << c.label;
        options.longestTile = 192;
        const Rows tiled = Draw(options, facts);
        EXPECT_GE(facts.tiles, 6) << c.label;
        EXPECT_TRUE(whole.data == tiled.data) << c.label;
    }
}

TEST_F(PresentationPicture, TilesMakeTheWholeWhereCornersAreDarkFartherThanTheyOverlap)
{
    PresentationSettings wanted;
    wanted.antialiasing = Host::Antialiasing::None;
    wanted.occlusion = true;
    wanted.occlusionLook.radius = 2.0f;
    PictureOptions options;
    options.width = 700;
    options.height = 540;
    ExpectTilesMakeTheWhole(wanted, "far", options, 640, 3);
}

TEST_F(PresentationPicture, TilesMakeTheWholeInEachKindOfView)
{
    PresentationSettings wanted;
    wanted.view.orthographic = true;
    ExpectTilesMakeTheWhole(wanted, "orthographic");
    wanted.lines = Host::LineSettings();
    wanted.lines->dash = 7.0f;
    wanted.view.named = Host::NamedView::Front;
    ExpectTilesMakeTheWhole(wanted, "dashes");
    wanted.look = Host::Look::Crosshatch;
    ExpectTilesMakeTheWhole(wanted, "strokes");
    wanted.look = Host::Look::Phong;
    wanted.section.planes = {{Vector(0, 1, 0), Vector(0, 0.3f, 0)}};
    ExpectTilesMakeTheWhole(wanted, "cut");
}

TEST_F(PresentationPicture, TilesMakeTheWholeOfAGroundThatCatchesShadowsInStrokes)
{
    PresentationSettings wanted;
    wanted.look = Host::Look::Crosshatch;
    wanted.background = Color(1, 1, 1);
    wanted.ground.emplace().kind = Host::GroundKind::ShadowCatcher;
    ExpectTilesMakeTheWhole(wanted, "without sun");
    wanted.sun = Host::SunSettings();
    wanted.sun->direction = Vector(1, 1, 0.6f);
    wanted.shadows.emplace();
    ExpectTilesMakeTheWhole(wanted, "strokes");
}

TEST_F(PresentationPicture, WhatFollowsIsTheSameAfterTiles)
{
    const Picture drawn = PresentationFixture::Draw(*presentation);
    PictureOptions options = Whole();
    options.longestTile = 128;
    Host::PictureFacts facts;
    Draw(options, facts);
    EXPECT_FALSE(presentation->NeedsDraw());
    ExpectSame(PresentationFixture::Draw(*presentation), drawn, "after tiles");
}

TEST_F(PresentationPicture, ProgressRisesToTheEndAndStopsTheWork)
{
    PictureOptions options = Whole();
    options.longestTile = 128;
    std::vector<float> told;
    options.progress = [&](float percent)
    {
        told.push_back(percent);
        return true;
    };
    Host::PictureFacts facts;
    Draw(options, facts);
    ASSERT_EQ(told.size(), static_cast<std::size_t>(facts.tiles));
    EXPECT_TRUE(std::is_sorted(told.begin(), told.end()));
    EXPECT_FLOAT_EQ(told.back(), 100.0f);
    options.progress = [](float) { return false; };
    std::string error;
    EXPECT_FALSE(presentation->SavePicture(folder.Path("stopped.png"), options, error));
    EXPECT_NE(error.find("stopped"), std::string::npos) << error;
    EXPECT_FALSE(std::ifstream(folder.Path("stopped.png")).good());
}

TEST_F(PresentationPicture, ATransparentPictureLaidOnAColourIsThePictureOnThatColour)
{
    for (const int tile : {0, 128})
    {
        PresentationSettings wanted;
        wanted.lines = Host::LineSettings();
        wanted.background = Color(0.2f, 0.6f, 0.4f);
        Apply(*presentation, wanted);
        PictureOptions options = Whole();
        options.longestTile = tile;
        Host::PictureFacts facts;
        const Rows opaque = Draw(options, facts);
        options.transparent = true;
        const Rows straight = Draw(options, facts);
        EXPECT_EQ(straight.At(0, 0, 3), 0);
        int partly = 0;
        int wrong = 0;
        for (int y = 0; y < WholeHeight; ++y)
        {
            for (int x = 0; x < WholeWidth; ++x)
            {
                const double alpha = straight.At(x, y, 3) / 255.0;
                partly += alpha > 0.0 && alpha < 1.0 ? 1 : 0;
                const double behind[] = {51.0, 153.0, 102.0};
                for (int channel = 0; channel < 3; ++channel)
                {
                    const double laid = alpha * straight.At(x, y, channel) + (1.0 - alpha) * behind[channel];
                    wrong += std::abs(laid - opaque.At(x, y, channel)) > 2.0 ? 1 : 0;
                }
            }
        }
        // Rims and glass.
        EXPECT_GT(partly, 500);
        EXPECT_EQ(wrong, 0);
    }
}

TEST_F(PresentationPicture, ATakenPictureIsThatOfAFileInBytes)
{
    for (const bool isTransparent : {false, true})
    {
        PictureOptions options = Whole();
        options.transparent = isTransparent;
        Host::PictureFacts facts;
        const Rows file = Draw(options, facts);
        options.bits = 16;
        std::vector<unsigned char> rgba;
        std::string error;
        ASSERT_TRUE(presentation->TakePicture(rgba, options, error)) << error;
        ASSERT_EQ(rgba.size(), 4u * WholeWidth * WholeHeight);
        int wrong = 0;
        for (int i = 0; i < 4 * WholeWidth * WholeHeight; ++i)
        {
            const int pixel = i / 4;
            const bool isMade = i % 4 == 3 && !isTransparent;
            const int expected = isMade ? 255 : file.At(pixel % WholeWidth, pixel / WholeWidth, i % 4);
            wrong += rgba[static_cast<std::size_t>(i)] == expected ? 0 : 1;
        }
        EXPECT_EQ(wrong, 0);
    }
}

TEST_F(PresentationPicture, SixteenBitsTellMoreThanEight)
{
    PresentationSettings wanted;
    wanted.background = Color(0.3f, 0.5f, 0.7001f);
    Apply(*presentation, wanted);
    PictureOptions options = Whole();
    options.bits = 16;
    Host::PictureFacts facts;
    const Rows rows = Draw(options, facts);
    EXPECT_NEAR(rows.At(0, 0, 0), 0.3 * 65535.0, 1.0);
    EXPECT_NEAR(rows.At(0, 0, 2), 0.7001 * 65535.0, 1.0);
}

TEST_F(PresentationPicture, ThePictureIsAsHighAsAsked)
{
    PresentationSettings wanted;
    wanted.view.orthographic = true;
    Apply(*presentation, wanted);
    presentation->Resize(WholeWidth, WholeHeight);
    EXPECT_TRUE(presentation->SetViewHeight(12.5));
    EXPECT_NEAR(presentation->GetViewHeight(), 12.5, 1e-4);
    presentation->Resize(WholeHeight, WholeWidth);
    EXPECT_NEAR(presentation->GetViewHeight(), 12.5, 1e-4);
    EXPECT_FALSE(presentation->SetViewHeight(0.0));
    EXPECT_FALSE(presentation->SetViewHeight(-1.0));
    EXPECT_NEAR(presentation->GetViewHeight(), 12.5, 1e-4);
}

TEST_F(PresentationPicture, ABlankPictureHasAReason)
{
    const auto reason = [&] { return presentation->FindBlank(Whole()).reason; };
    EXPECT_EQ(reason(), BlankReason::NotBlank);

    PresentationSettings cut;
    cut.section.planes = {{Vector(0, -1, 0), Vector(0, 1000, 0)}};
    cut.sheet.title = "Nothing but a title";
    cut.sky = true;
    Apply(*presentation, cut);
    EXPECT_EQ(reason(), BlankReason::AllCutAway);
    EXPECT_TRUE(presentation->GetSettings() == cut);

    PresentationSettings away;
    away.view.eye = Vector(0, 0, 500);
    away.view.target = Vector(0, 0, 600);
    Apply(*presentation, away);
    EXPECT_EQ(reason(), BlankReason::OutOfView);

    PresentationSettings fog;
    fog.fog = {0.0f, 0.001f};
    Apply(*presentation, fog);
    EXPECT_EQ(reason(), BlankReason::InFog);

    Apply(*presentation, PresentationSettings());
    presentation->Isolate("house/left");
    presentation->Hide("house/left");
    EXPECT_EQ(reason(), BlankReason::AllHidden);
    presentation->ShowAll();
    EXPECT_EQ(reason(), BlankReason::NotBlank);
}

TEST_F(PresentationPicture, AnEyeInsideASolidIsTold)
{
    ASSERT_TRUE(presentation->Isolate("house/right/roof"));
    const auto box = presentation->GetShownBox();
    ASSERT_TRUE(box);
    PresentationSettings inside;
    inside.view.eye = Vector((box->low.x + box->high.x) / 2, (box->low.y + box->high.y) / 2, (box->low.z + box->high.z) / 2);
    inside.view.target = Vector(inside.view.eye->x, inside.view.eye->y, inside.view.eye->z - 1.0f);
    Apply(*presentation, inside);
    const Host::BlankPicture blank = presentation->FindBlank(Whole());
    EXPECT_EQ(blank.reason, BlankReason::EyeInside);
    EXPECT_EQ(blank.node, "house/right/roof");
    EXPECT_NE(blank.Line().find("'house/right/roof'"), std::string::npos);
}

TEST_F(PresentationPicture, AnEmptyModelIsTold)
{
    presentation = std::make_unique<Host::Presentation>(std::make_unique<Scene>());
    EXPECT_EQ(presentation->FindBlank(Whole()).reason, BlankReason::EmptyModel);
}

/// A square of two triangles at a place, in a scene with its material.
struct SquareScene
{
    std::unique_ptr<Scene> scene = std::make_unique<Scene>();
    Material* material = new Material("square");

    SquareScene() { scene->AddMaterial(material); }

    MeshNode& Add(double size, const Transform& place, float stray = 0.0f)
    {
        const auto half = static_cast<float>(size / 2.0);
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer({Vector(-half, -half, 0), Vector(half, -half, 0), Vector(half, half, 0),
                                Vector(-half, half, 0), Vector(-half, -half + stray, 0)});
        raw->SetNormalBuffer(std::vector<Vector>(5, Vector(0, 0, 1)));
        raw->SetIndices({0, 1, 2, 0, 2, 3, 0, 0, 4});
        raw->EndDescription(true);
        MeshNode& node = ShowMesh(raw, *material, *scene);
        node.SetLocal(place);
        return node;
    }

    BlankReason Reason()
    {
        Host::Presentation presentation(std::move(scene));
        PresentationSettings wanted;
        wanted.view.named = Host::NamedView::Front;
        std::string error;
        EXPECT_TRUE(presentation.Apply(wanted, error)) << error;
        PictureOptions picture;
        picture.width = 120;
        picture.height = 90;
        const Host::BlankPicture blank = presentation.FindBlank(picture);
        EXPECT_EQ(blank.Line().empty(), blank.reason == BlankReason::NotBlank);
        return blank.reason;
    }
};

Transform PlaceAt(double x)
{
    QGM::Transf3d place;
    place.m[0][3] = x;
    Transform result;
    result.SetTransf3d(place);
    return result;
}

TEST_F(PresentationPicture, AModelThatNoCameraCanShowIsTold)
{
    struct Case
    {
        const char* label;
        double size;
        double place;
        float stray;
        BlankReason reason;
    };
    const double nan = std::nan("");
    const Case cases[] = {
        {"usual", 2.0, 0.0, 0.0f, BlankReason::NotBlank},
        {"tiny", 1e-9, 0.0, 0.0f, BlankReason::TooTiny},
        {"a point", 0.0, 0.0, 0.0f, BlankReason::TooTiny},
        {"far away", 2.0, 1e12, 0.0f, BlankReason::TooFarAway},
        {"one corner astray", 2.0, 0.0, 1e9f, BlankReason::FarApart},
        {"not a number", 2.0, nan, 0.0f, BlankReason::NotFinite},
        {"infinite", 2.0, HUGE_VAL, 0.0f, BlankReason::NotFinite},
        {"beyond everything", 2.0, 1e30, 0.0f, BlankReason::NotFinite},
    };
    for (const Case& each : cases)
    {
        SquareScene square;
        square.Add(each.size, PlaceAt(each.place), each.stray);
        EXPECT_EQ(square.Reason(), each.reason) << each.label;
    }
}

TEST_F(PresentationPicture, NodesThatAreNowhereLeaveTheOthersInTheView)
{
    SquareScene alone;
    alone.Add(2.0, PlaceAt(30.0));
    Host::Presentation expected(std::move(alone.scene));
    SquareScene many;
    many.Add(2.0, PlaceAt(30.0));
    for (const double place : {std::nan(""), HUGE_VAL, -1e30})
    {
        many.Add(2.0, PlaceAt(place));
    }
    Host::Presentation actual(std::move(many.scene));
    PresentationSettings wanted;
    for (const bool hasShadows : {false, true})
    {
        if (hasShadows)
        {
            wanted.shadows = Host::ShadowSettings();
        }
        Apply(expected, wanted);
        Apply(actual, wanted);
        Host::PictureFacts facts;
        const Rows left = WriteRows(expected, Whole(), facts);
        const Rows right = WriteRows(actual, Whole(), facts);
        EXPECT_FALSE(facts.isOneColor);
        EXPECT_TRUE(left.data == right.data) << hasShadows;
    }
}

TEST_F(PresentationPicture, WhatHasTheColourOfTheBackgroundIsTold)
{
    auto scene = std::make_unique<Scene>();
    auto raw = std::make_shared<RawMesh>();
    raw->SetPositionBuffer({Vector(-1, -1, 0), Vector(1, -1, 0), Vector(1, 1, 0), Vector(-1, 1, 0)});
    raw->SetNormalBuffer(std::vector<Vector>(4, Vector(0, 0, 1)));
    raw->SetIndices({0, 1, 2, 0, 2, 3});
    raw->EndDescription(true);
    auto* const material = new Material("white");
    material->SetDiffuse(Color(1, 1, 1));
    material->SetAmbient(Color(0, 0, 0));
    material->SetFlags(MaterialFlagUnlit);
    scene->AddMaterial(material);
    ShowMesh(raw, *material, *scene);
    presentation = std::make_unique<Host::Presentation>(std::move(scene));
    PresentationSettings wanted;
    wanted.view.named = Host::NamedView::Front;
    wanted.background = Color(1.0f, 1.0f, 1.0f);
    Apply(*presentation, wanted);
    EXPECT_EQ(presentation->FindBlank(Whole()).reason, BlankReason::BackgroundColor);
    PictureOptions transparent = Whole();
    transparent.transparent = true;
    EXPECT_EQ(presentation->FindBlank(transparent).reason, BlankReason::NotBlank);
    wanted.background = Color(0.98f, 1.0f, 1.0f);
    Apply(*presentation, wanted);
    EXPECT_EQ(presentation->FindBlank(Whole()).reason, BlankReason::NotBlank) << "just beside it";
}

TEST_F(PresentationPicture, LinesThatHaveTheColourOfTheBackgroundAreTold)
{
    auto scene = std::make_unique<Scene>();
    auto* const style = new LineStyle("white");
    style->color = Color(1, 1, 1);
    style->width = 2.0f;
    scene->AddLineStyle(style);
    auto* const line = new Line(Host::Polyline::Make({Vector(-1, -1, 0), Vector(1, 1, 0)}).front(), scene.get());
    style->AddLine(line);
    auto* const node = new MeshNode(scene.get());
    scene->GetRoot()->AddChild(node, false);
    line->AddNode(node);
    presentation = std::make_unique<Host::Presentation>(std::move(scene));
    PresentationSettings wanted;
    wanted.view.named = Host::NamedView::Front;
    wanted.background = Color(1, 1, 1);
    Apply(*presentation, wanted);
    EXPECT_EQ(presentation->FindBlank(Whole()).reason, BlankReason::BackgroundColor);
    EXPECT_TRUE(presentation->GetSettings() == wanted);
    wanted.background = Color(0.5f, 1.0f, 1.0f);
    Apply(*presentation, wanted);
    EXPECT_EQ(presentation->FindBlank(Whole()).reason, BlankReason::NotBlank);
    // The line crosses the view, which none of its ends is in.
    wanted.background = Color(1, 1, 1);
    wanted.view.eye = Vector(0, 0, 0.5f);
    wanted.view.target = Vector(0, 0, 0);
    Apply(*presentation, wanted);
    EXPECT_EQ(presentation->FindBlank(Whole()).reason, BlankReason::BackgroundColor);
    wanted.view.target = Vector(0, 0, 1);
    Apply(*presentation, wanted);
    EXPECT_EQ(presentation->FindBlank(Whole()).reason, BlankReason::OutOfView);
}

} // namespace

} // namespace OV::Test
