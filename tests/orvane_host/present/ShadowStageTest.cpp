#include "tests/orvane_host/present/ShadowStageModels.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <GL/glew.h>

#include <algorithm>
#include <functional>

namespace OV::Test
{

namespace
{

using Host::Look;
using Host::Presentation;
using Host::PresentationSettings;

constexpr int kSize = 120;

const Pixel kWhite{255, 255, 255, 255};
/// 1 - 0.6 of white.
const Pixel kShade{102, 102, 102, 255};

/// A rectangle of the floor in the picture of LookingDown: x and z in units.
PixelRect OnFloor(float x0, float x1, float z0, float z1)
{
    return Inset({static_cast<int>(60 + 10 * x0), static_cast<int>(60 - 10 * z1), static_cast<int>(10 * (x1 - x0)),
                  static_cast<int>(10 * (z1 - z0))});
}

/// Where the cube's shadow lies with its lower face two units up and the sun half way up from +x.
const PixelRect kShadow = OnFloor(-3.5f, -1.5f, -0.5f, 0.5f);

/// How light a part of a picture is, 0 to 255.
struct Tones
{
    double mean = 0.0;
    int darkest = 255;
    int lightest = 0;

    static Tones In(const Picture& picture, const PixelRect& rect)
    {
        Tones tones;
        for (int y = rect.y; y < rect.y + rect.height; ++y)
        {
            for (int x = rect.x; x < rect.x + rect.width; ++x)
            {
                const int red = picture.At(x, y).r;
                tones.mean += red;
                tones.darkest = std::min(tones.darkest, red);
                tones.lightest = std::max(tones.lightest, red);
            }
        }
        tones.mean /= rect.width * rect.height;
        return tones;
    }
};

class ShadowStage : public FloorAndCubeFixture
{
protected:
    ShadowStage() : FloorAndCubeFixture(kSize, kSize, 0) {}

    /// The shadow of LookingDown and nothing else but the cube itself.
    static void ExpectShadow(const Picture& picture, const Pixel& shade)
    {
        ExpectColorInRect(picture, kShadow, shade, 1);
        ExpectColorInRect(picture, OnFloor(-6, -3.5f, -6, 6), kWhite);
        ExpectColorInRect(picture, OnFloor(-3.5f, -1.5f, -6, -0.5f), kWhite);
        ExpectColorInRect(picture, OnFloor(-3.5f, -1.5f, 0.5f, 6), kWhite);
        ExpectColorInRect(picture, OnFloor(-1.5f, 6, -6, 6), kWhite);
    }
};

TEST_F(ShadowStage, FallsWhereTheSunThrowsIt)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    ExpectShadow(Draw(made, LookingDown()), kShade);
}

TEST_F(ShadowStage, NeedsSunAndSetting)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    PresentationSettings settings = LookingDown();
    settings.shadows.reset();
    ExpectShadow(Draw(made, settings), kWhite);
    settings = LookingDown();
    settings.sun.reset();
    ExpectShadow(Draw(made, settings), kWhite);
}

TEST_F(ShadowStage, IsTheSameFromAMillimetreToTenKilometres)
{
    for (const float scale : {1e-3f, 1.0f, 1e4f})
    {
        SCOPED_TRACE(scale);
        FloorAndCube made = MakeFloorAndCube(2.0f, Color(0.8f, 0.8f, 0.8f), scale);
        ExpectShadow(Draw(made, LookingDown(scale)), kShade);
    }
}

// Against so long a way of the light, 16 bits of depth are more than a unit each.
TEST_F(ShadowStage, IsTheSameWhereAnotherThingLiesFarAway)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    Scene& scene = made.presentation->GetScene();
    auto* const other = new MeshNode(&scene);
    scene.GetRoot()->AddChild(other, false);
    made.cube->GetMeshes().front()->AddNode(other);
    Transform place;
    place.SetPosition(Vector(-60000, -60000, 0));
    other->SetLocal(place);
    made.presentation->Refresh();
    ExpectShadow(Draw(made, LookingDown()), kShade);
    // And back, in buffers that were there.
    other->SetFlags(NodeFlagHidden, false);
    scene.MarkDirty();
    ExpectShadow(PresentationFixture::Draw(*made.presentation), kShade);
}

TEST_F(ShadowStage, IsTheSameInPerspective)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    PresentationSettings settings = LookingDown();
    settings.view.orthographic = false;
    ExpectShadow(Draw(made, settings), kShade);
}

// The cube stands on the floor: what its side doesn't hide is dark from its foot on.
TEST_F(ShadowStage, BeginsAtTheFeet)
{
    FloorAndCube made = MakeFloorAndCube(0.0f);
    const Picture picture = Draw(made, LookingDown());
    // The cube ends at the column 55.
    ExpectColorInRect(picture, {47, 57, 7, 6}, kShade, 1);
}

TEST_F(ShadowStage, LeavesNoSpeckOnWhatIsLit)
{
    // A sun so low that texels are drawn out most, and the cube's shadow leaves the floor.
    FloorAndCube made = MakeFloorAndCube(2.0f);
    PresentationSettings settings = LookingDown();
    settings.sun->direction = Vector(0.97f, 0.1f, 0.22f);
    settings.view.eye = Vector(6, 14, 11);
    settings.view.orthographic = false;
    const Picture shadows = Draw(made, settings);
    settings.shadows.reset();
    const Picture lit = Draw(made, settings);
    int floor = 0;
    int dark = 0;
    for (int y = 0; y < kSize; ++y)
    {
        for (int x = 0; x < kSize; ++x)
        {
            // Of the cube one side that is seen looks away from the sun; nothing else does.
            const bool isFloor = lit.At(x, y) == kWhite && (x < 40 || x > 80);
            floor += isFloor ? 1 : 0;
            dark += isFloor && shadows.At(x, y) != kWhite ? 1 : 0;
        }
    }
    EXPECT_GT(floor, kSize * kSize / 3);
    EXPECT_EQ(dark, 0);
}

TEST_F(ShadowStage, OfHiddenNodesThereIsNone)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    Draw(made, LookingDown());
    ASSERT_TRUE(made.presentation->Hide("cube"));
    ExpectShadow(PresentationFixture::Draw(*made.presentation), kWhite);
    made.presentation->ShowAll();
    ExpectShadow(PresentationFixture::Draw(*made.presentation), kShade);
}

TEST_F(ShadowStage, FollowsWhatMoves)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    Draw(made, LookingDown());
    Transform place;
    place.SetPosition(Vector(0, 0, 3));
    made.cube->SetLocal(place);
    made.presentation->GetScene().MarkDirty();
    const Picture picture = PresentationFixture::Draw(*made.presentation);
    ExpectColorInRect(picture, OnFloor(-3.5f, -1.5f, 2.5f, 3.5f), kShade, 1);
    ExpectColorInRect(picture, kShadow, kWhite);
}

TEST_F(ShadowStage, OfWhatIsCutAwayThereIsNoneUnlessWanted)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    PresentationSettings settings = LookingDown();
    Host::ClipPlane plane;
    plane.normal = Vector(0, 1, 0);
    plane.position = Vector(0, 1, 0);
    settings.section.planes = {plane};
    settings.section.outlineWidth = 0.0f;
    ExpectShadow(Draw(made, settings), kWhite);
    settings.shadows->clippedCasts = true;
    ExpectShadow(Draw(made, settings), kShade);
}

// What is cut through casts as the solid that is left of it.
TEST_F(ShadowStage, OfWhatIsCutThroughIsThatOfTheRest)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    PresentationSettings settings = LookingDown();
    Host::ClipPlane plane;
    plane.normal = Vector(0, 1, 0);
    plane.position = Vector(0, 2.5f, 0);
    settings.section.planes = {plane};
    settings.section.outlineWidth = 0.0f;
    const Picture picture = Draw(made, settings);
    ExpectColorInRect(picture, OnFloor(-3.0f, -1.5f, -0.5f, 0.5f), kShade, 1);
    ExpectColorInRect(picture, OnFloor(-6.0f, -3.0f, -0.5f, 0.5f), kWhite);
}

TEST_F(ShadowStage, OfGlassLetsAShareThrough)
{
    FloorAndCube made = MakeFloorAndCube(2.0f, Color(0.8f, 0.8f, 0.8f, 0.25f));
    // 1 - 0.6 * 0.25 of white.
    ExpectShadow(Draw(made, LookingDown()), Pixel{217, 217, 217, 255});
}

TEST_F(ShadowStage, OfGlassThatIsAllButSolidIsThatOfASolid)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    ExpectShadow(Draw(made, LookingDown()), kShade);
    made.cubeMaterial->SetOpacity(0.999f);
    made.presentation->GetScene().ProcessChangedMaterial(made.cubeMaterial);
    made.presentation->Refresh();
    ExpectColorInRect(PresentationFixture::Draw(*made.presentation), kShadow, kShade, 1);
}

TEST_F(ShadowStage, TakesTheLightOfTheSunAndNothingElse)
{
    for (const Look look : {Look::Basic, Look::Advanced, Look::Phong})
    {
        SCOPED_TRACE(Host::NameOfLook(look));
        FloorAndCube made = MakeFloorAndCube(2.0f);
        PresentationSettings settings = LookingDown();
        settings.look = look;
        const Picture shadows = Draw(made, settings);
        settings.shadows.reset();
        const Picture lit = Draw(made, settings);
        // In the plane of the floor, from where none of its light falls on it.
        settings.sun->direction = Vector(1, 0, 0);
        const Picture unlit = Draw(made, settings);
        const Pixel dark = unlit.At(kShadow.x + 5, kShadow.y + 3);
        ExpectColorInRect(shadows, kShadow, dark, 1);
        ExpectColorInRect(shadows, OnFloor(1, 5, -5, 5), lit.At(100, 60), 0);
        EXPECT_GT(lit.At(100, 60).r, dark.r + 20);
    }
}

TEST_F(ShadowStage, MakesStrokesDenser)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    PresentationSettings settings = LookingDown();
    settings.look = Look::Crosshatch;
    const Picture shadows = Draw(made, settings);
    settings.shadows.reset();
    const Picture lit = Draw(made, settings);
    EXPECT_LT(Tones::In(shadows, kShadow).mean, 0.8 * Tones::In(lit, kShadow).mean);
    const PixelRect elsewhere = OnFloor(1, 5, -5, 5);
    EXPECT_EQ(Tones::In(shadows, elsewhere).mean, Tones::In(lit, elsewhere).mean);
}

TEST_F(ShadowStage, HasWiderRimsWhereTheSunIsWide)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    PresentationSettings settings = LookingDown();
    settings.shadows->soft = true;
    settings.shadows->sunWidth = 10.0f;
    const Picture picture = Draw(made, settings);
    const int row = 60;
    int between = 0;
    for (int x = 15; x < 55; ++x)
    {
        const int red = picture.At(x, row).r;
        between += red > 110 && red < 247 ? 1 : 0;
    }
    // Two rims, of things about 3.5 units away along the light: 3.5 * 2 * tan(5) / sin(45) units each.
    EXPECT_NEAR(between, 2 * 8.7, 6);
    ExpectColorInRect(picture, {33, 58, 3, 4}, kShade, 4);
    ExpectColorInRect(picture, OnFloor(1, 5, -5, 5), kWhite);
}

TEST_F(ShadowStage, IsCaughtByAGround)
{
    FloorAndCube made = MakeFloorAndCube(2.0f, Color(0.8f, 0.8f, 0.8f), 1.0f, false);
    PresentationSettings settings = LookingDown();
    settings.background = Color(1, 1, 1);
    settings.ground.emplace().kind = Host::GroundKind::ShadowCatcher;
    settings.ground->height = 0.0f;
    ExpectShadow(Draw(made, settings), kShade);
    // From below nothing is seen of it.
    settings.view.eye = Vector(0, -20, 0);
    settings.view.up = Vector(0, 0, 1);
    const Picture below = Draw(made, settings);
    settings.ground.reset();
    ExpectSame(below, Draw(made, settings), "from below");
}

TEST_F(ShadowStage, IsCaughtInStrokesWhereSurfacesAreDrawnInThem)
{
    FloorAndCube made = MakeFloorAndCube(2.0f, Color(0.8f, 0.8f, 0.8f), 1.0f, false);
    PresentationSettings settings = LookingDown();
    settings.look = Look::Crosshatch;
    settings.background = Color(1, 1, 1);
    settings.ground.emplace().kind = Host::GroundKind::ShadowCatcher;
    settings.ground->height = 0.0f;
    const Picture picture = Draw(made, settings);
    const Tones shadow = Tones::In(picture, kShadow);
    EXPECT_LT(shadow.darkest, 60) << "strokes";
    EXPECT_GT(shadow.lightest, 200) << "paper between them";
    EXPECT_NEAR(shadow.mean, kShade.r, 20.0) << "as dark as elsewhere";
    ExpectColorInRect(picture, OnFloor(-6, -3.5f, -6, 6), kWhite);
    ExpectColorInRect(picture, OnFloor(-3.5f, -1.5f, -6, -0.5f), kWhite);
    ExpectColorInRect(picture, OnFloor(-3.5f, -1.5f, 0.5f, 6), kWhite);
    // And flat again in another look.
    settings.look = Look::Advanced;
    ExpectColorInRect(Draw(made, settings), kShadow, kShade, 1);
}

TEST_F(ShadowStage, LiesOnAGroundAtTheModelsLowestPoint)
{
    FloorAndCube made = MakeFloorAndCube(2.0f, Color(0.8f, 0.8f, 0.8f), 1.0f, false);
    PresentationSettings settings = LookingDown();
    settings.ground.emplace().kind = Host::GroundKind::ShadowCatcher;
    const Picture picture = Draw(made, settings);
    ExpectColorInRect(picture, {47, 57, 6, 6}, kShade, 1);
}

TEST_F(ShadowStage, IsTheSameWhateverWasDrawnBefore)
{
    const PresentationSettings settings = LookingDown();
    FloorAndCube made = MakeFloorAndCube(2.0f);
    const Picture first = Draw(made, settings);
    ExpectSame(PresentationFixture::Draw(*made.presentation), first, "again");
    for (const Look look : {Look::Advanced, Look::Crosshatch, Look::VertexColor})
    {
        PresentationSettings other = settings;
        other.look = look;
        other.sun->direction = Vector(-1, 2, 1);
        other.shadows->soft = true;
        Draw(made, other);
    }
    made.presentation->Hide("cube");
    PresentationFixture::Draw(*made.presentation);
    made.presentation->ShowAll();
    ExpectSame(Draw(made, settings), first, "after others");
    made.presentation->Suspend();
    made.presentation->Resume();
    ExpectSame(PresentationFixture::Draw(*made.presentation), first, "after a suspend");
    FloorAndCube fresh = MakeFloorAndCube(2.0f);
    ExpectSame(Draw(fresh, settings), first, "in another presentation");
}

TEST_F(ShadowStage, GoesWithoutATrace)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    PresentationSettings plain = LookingDown();
    plain.look = Look::Advanced;
    plain.sun.reset();
    plain.shadows.reset();
    const Picture before = Draw(made, plain);
    Draw(made, LookingDown());
    ExpectSame(Draw(made, plain), before, "without a sun again");
}

TEST_F(ShadowStage, StaysWhileTheEyeMoves)
{
    // Ten pixels are a unit, so that a unit moves the picture by whole pixels.
    FloorAndCube made = MakeFloorAndCube(2.0f);
    PresentationSettings settings = LookingDown();
    const Picture before = Draw(made, settings);
    settings.view.eye->x = 1.0f;
    settings.view.target = Vector(1, 0, 0);
    const Picture after = Draw(made, settings);
    int differing = 0;
    for (int y = 0; y < kSize; ++y)
    {
        for (int x = 20; x < 50; ++x)
        {
            differing += before.At(x, y) != after.At(x - 10, y) ? 1 : 0;
        }
    }
    EXPECT_EQ(differing, 0);
}

/// Lays another floor over the one that there is.
void AddFloor(FloorAndCube& made, Material& material, float height)
{
    Scene& scene = made.presentation->GetScene();
    auto* const mesh = new Mesh(made.floor->GetMeshes().front()->GetRawMesh(), &scene);
    material.AddMesh(mesh);
    auto* const node = new MeshNode(&scene);
    scene.GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
    Transform place;
    place.SetPosition(Vector(0, height, 0));
    node->SetLocal(place);
    made.presentation->Refresh();
}

/// How many pixels are drawn in a frame, those counted again that something nearer comes over.
unsigned int CountFragments(const std::function<void()>& draw)
{
    GLuint query = 0;
    GLuint count = 0;
    glGenQueries(1, &query);
    glBeginQuery(GL_SAMPLES_PASSED, query);
    draw();
    glEndQuery(GL_SAMPLES_PASSED);
    glGetQueryObjectuiv(query, GL_QUERY_RESULT, &count);
    glDeleteQueries(1, &query);
    return count;
}

TEST_F(ShadowStage, IsNotLookedUpForWhatIsHidden)
{
    FloorAndCube made = MakeFloorAndCube(0.5f);
    for (int i = 1; i <= 4; ++i)
    {
        // Each before all that were there, and of both materials by turns.
        AddFloor(made, i % 2 == 0 ? *made.cubeMaterial : *made.floor->GetMeshes().front()->GetMaterial(), 2.0f * i);
    }
    PresentationSettings settings = LookingDown();
    settings.batches.use = Host::BatchUse::Off;
    for (const bool soft : {false, true})
    {
        SCOPED_TRACE(soft);
        settings.shadows->soft = soft;
        // The first frame draws what the sun sees as well.
        Draw(made, settings);
        EXPECT_EQ(CountFragments([&] { PresentationFixture::Draw(*made.presentation); }), 1u * kSize * kSize);
    }
    // The scene is one in which the order counts.
    settings.shadows.reset();
    Draw(made, settings);
    EXPECT_GT(CountFragments([&] { PresentationFixture::Draw(*made.presentation); }), 3u * kSize * kSize);
}

TEST_F(ShadowStage, LeavesTheOrderOfWhatPassesAllThatIsBeforeIt)
{
    FloorAndCube made = MakeFloorAndCube(0.5f);
    Material& under = *made.floor->GetMeshes().front()->GetMaterial();
    under.SetFlags(MaterialFlagAlwaysPass);
    AddFloor(made, *made.cubeMaterial, 3.0f);
    PresentationSettings settings = LookingDown();
    // The floor, which lies in the shadow of the other, is drawn before that.
    ExpectColorInRect(Draw(made, settings), OnFloor(-2, 2, -2, 2), kWhite);
}

TEST_F(ShadowStage, IsInFinerPicturesToo)
{
    for (const Host::Antialiasing antialiasing : {Host::Antialiasing::Filter, Host::Antialiasing::Supersampling})
    {
        FloorAndCube made = MakeFloorAndCube(2.0f);
        PresentationSettings settings = LookingDown();
        settings.antialiasing = antialiasing;
        ExpectShadow(Draw(made, settings), kShade);
    }
}

} // namespace

} // namespace OV::Test
