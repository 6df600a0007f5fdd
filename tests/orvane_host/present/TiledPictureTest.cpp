#include "tests/orvane_host/present/PictureRows.h"
#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/support/ShowMesh.h"

#include "orvane/math/Quaternion.h"
#include "orvane/math/Transform.h"
#include "orvane_host/geometry/Primitives.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

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

/// A look or stage, and how much of a scene may differ in tiles: where a rasteriser rounds what it interpolates
/// by the place in the tile, a colour may be a step off.
struct Case
{
    const char* label;
    void (*change)(PresentationSettings&);
    int mostOfBoxes;  ///< pixels
    int mostOfRound;
};

void Cast(PresentationSettings& wanted, bool soft)
{
    wanted.sun.emplace();
    wanted.sun->direction = Vector(1, 2, 1);
    wanted.shadows.emplace();
    wanted.shadows->soft = soft;
}

/// So that all colours of the sky are seen.
void LookUp(PresentationSettings& wanted)
{
    wanted.view.eye = Vector(4, 0.5f, 9);
    wanted.view.target = Vector(0, 2.5f, 0);
}

const Case Cases[] = {
    {"advanced", [](PresentationSettings&) {}, 0, 3},
    {"phong", [](PresentationSettings& wanted) { wanted.look = Look::Phong; }, 0, 3},
    {"basic", [](PresentationSettings& wanted) { wanted.look = Look::Basic; }, 0, 3},
    {"monotone", [](PresentationSettings& wanted) { wanted.look = Look::Monotone; }, 0, 3},
    {"vertex colours", [](PresentationSettings& wanted) { wanted.look = Look::VertexColor; }, 0, 3},
    {"strokes", [](PresentationSettings& wanted) { wanted.look = Look::Crosshatch; }, 60, 40},
    {"strokes in shadows",
     [](PresentationSettings& wanted) {
         wanted.look = Look::Crosshatch;
         Cast(wanted, false);
     },
     60, 40},
    {"sky",
     [](PresentationSettings& wanted) {
         wanted.sky = true;
         wanted.background = Color(0.8f, 0.9f, 1.0f);
         LookUp(wanted);
     },
     0, 3},
    {"sky without perspective",
     [](PresentationSettings& wanted) {
         wanted.sky = true;
         wanted.view.orthographic = true;
         LookUp(wanted);
     },
     0, 3},
    {"fog", [](PresentationSettings& wanted) { wanted.fog = {2.0f, 40.0f}; }, 3, 3},
    {"occlusion", [](PresentationSettings& wanted) { wanted.occlusion = true; }, 3, 8},
    {"occlusion of pixels",
     [](PresentationSettings& wanted) {
         wanted.occlusion = true;
         wanted.occlusionLook.kind = Host::OcclusionKind::Spiral;
     },
     20, 20},
    {"edges", [](PresentationSettings& wanted) { wanted.edges = Host::EdgeLook(); }, 0, 3},
    {"lines",
     [](PresentationSettings& wanted) {
         wanted.lines = Host::LineSettings();
         wanted.lines->width = 3.0f;
         wanted.lines->dash = 7.0f;
         wanted.lines->hidden = Host::HiddenLines::Dashed;
     },
     0, 3},
    {"hard shadows", [](PresentationSettings& wanted) { Cast(wanted, false); }, 0, 3},
    {"soft shadows", [](PresentationSettings& wanted) { Cast(wanted, true); }, 0, 6},
    {"a ground",
     [](PresentationSettings& wanted) {
         wanted.ground.emplace();
         wanted.fog = {10.0f, 60.0f};
     },
     3, 3},
    {"a ground for shadows",
     [](PresentationSettings& wanted) {
         wanted.ground.emplace().kind = Host::GroundKind::ShadowCatcher;
         Cast(wanted, true);
     },
     0, 6},
    {"a cut", [](PresentationSettings& wanted) { wanted.section.planes = {{Vector(0, 1, 0), Vector(0, 0.27f, 0)}}; }, 0, 3},
    {"a sheet",
     [](PresentationSettings& wanted) {
         wanted.sheet.title = "A title that runs over the rims of tiles";
         wanted.sheet.scaleBar = true;
     },
     0, 3},
};

class TiledPicture : public PresentationFixture, public ::testing::WithParamInterface<Antialiasing>
{
protected:
    /// In sizes that tiles don't divide.
    void ExpectTilesMakeTheWhole(Host::Presentation& presentation, const Case& c, int most, int largest = 1)
    {
        PresentationSettings wanted;
        wanted.antialiasing = GetParam();
        c.change(wanted);
        Apply(presentation, wanted);
        PictureOptions options;
        options.width = 307;
        options.height = 229;
        Host::PictureFacts facts;
        const Rows whole = WriteRows(presentation, options, facts);
        EXPECT_EQ(facts.tiles, 1) << c.label;
        options.longestTile = 150;
        const Rows tiled = WriteRows(presentation, options, facts);
        EXPECT_GE(facts.tiles, 6) << c.label;
        const Difference difference = Compare(whole, tiled);
        EXPECT_LE(difference.pixels, most) << c.label;
        // The filter may see an edge in a step.
        const bool isFiltered = GetParam() == Antialiasing::Filter && wanted.look == Look::Crosshatch;
        EXPECT_LE(difference.largest, isFiltered ? 8 : largest) << c.label;
    }
};

TEST_P(TiledPicture, OfBoxesIsTheWhole)
{
    const auto presentation = PresentBoxes();
    for (const Case& c : Cases)
    {
        ExpectTilesMakeTheWhole(*presentation, c, c.mostOfBoxes);
    }
}

TEST_P(TiledPicture, OfWhatIsRoundIsTheWhole)
{
    Host::Presentation presentation(MakeRoundScene());
    for (const Case& c : Cases)
    {
        ExpectTilesMakeTheWhole(presentation, c, c.mostOfRound);
    }
}

TEST_P(TiledPicture, WithNotesIsTheWhole)
{
    const auto presentation = PresentBoxes();
    // Longer than there is room beside their places.
    ASSERT_TRUE(presentation->AddLabel("left", "The left one of two towers"));
    ASSERT_TRUE(presentation->AddLabel("roof", "The roof of the right one"));
    const auto look = [](PresentationSettings& wanted) { wanted.view.named = Host::NamedView::Front; };
    ExpectTilesMakeTheWhole(*presentation, {"labels", look, 0, 0}, 0);
    // Where a rim meets the middle of a pixel, it may be rounded to either side: a quarter of the ink.
    ASSERT_TRUE(presentation->SetDimensions({{{{-2.0, 0.0, 1.0}, {2.0, 1.3, 1.0}}}}));
    ExpectTilesMakeTheWhole(*presentation, {"dimensions", look, 0, 0}, 12, 64);
}

INSTANTIATE_TEST_SUITE_P(Ways, TiledPicture,
                         ::testing::Values(Antialiasing::None, Antialiasing::Multisampling, Antialiasing::Filter));

} // namespace

} // namespace OV::Test
