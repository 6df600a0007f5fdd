#include "tests/imaging/TextureFiles.h"
#include "tests/orvane_host/present/PictureRows.h"
#include "tests/orvane_host/present/PresentationStage.h"
#include "tests/orvane_host/present/ShadowStageModels.h"
#include "tests/orvane_host/present/WindowSurface.h"
#include "tests/support/ShowMesh.h"

#include "orvane_host/present/PictureOptions.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <GL/glew.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace OV::Test
{

namespace
{

using Host::Antialiasing;
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

class ShadowScene : public FloorAndCubeFixture
{
protected:
    ShadowScene() : FloorAndCubeFixture(kSize, kSize, 4) {}

    /// A level square of two units over the floor, with texture coordinates that go from 0 to 1
    /// along x and towards -z.
    static Material& AddSheet(FloorAndCube& made, float height)
    {
        Scene& scene = made.presentation->GetScene();
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer({{-1, height, 1}, {1, height, 1}, {1, height, -1}, {-1, height, -1}});
        raw->SetNormalBuffer(std::vector<Vector>(4, Vector(0, 1, 0)));
        raw->SetTextureBuffer({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        auto* const material = new Material("sheet");
        material->SetDiffuse(Color(0.8f, 0.8f, 0.8f));
        scene.AddMaterial(material);
        ShowMesh(raw, *material, scene);
        made.presentation->Refresh();
        return *material;
    }

    /// A picture of its own size, in tiles of at most that side.
    static Rows Write(FloorAndCube& made, int side, int longestTile, Host::PictureFacts& facts)
    {
        Host::PictureOptions options;
        options.width = side;
        options.height = side;
        options.longestTile = longestTile;
        return WriteRows(*made.presentation, options, facts);
    }
};

/// Opaque where x is below 0.
Pixels HalfOpaque()
{
    Pixels pixels;
    for (int i = 0; i < 64; ++i)
    {
        const auto value = static_cast<unsigned char>(i % 8 < 4 ? 255 : 0);
        pixels.insert(pixels.end(), {value, value, value, 255});
    }
    return pixels;
}

TEST_F(ShadowScene, OpacityMapsCastTheirCutOuts)
{
    TextureFiles files;
    FloorAndCube made = MakeFloorAndCube(20.0f);
    Material& sheet = AddSheet(made, 2.0f);
    sheet.texturePath = files.Path();
    sheet.opacityMapName = files.Write("half.png", HalfOpaque(), 8, 8);
    made.presentation->Hide("cube");
    const Picture picture = Draw(made, LookingDown());
    // Without its map it would cast a square of two units, of which one side is under it.
    ExpectColorInRect(picture, OnFloor(-3.0f, -2.1f, -1.0f, 1.0f), kShade, 1);
    ExpectColorInRect(picture, OnFloor(-1.9f, -1.0f, -1.0f, 1.0f), kWhite);
    ExpectColorInRect(picture, OnFloor(-6.0f, -3.0f, -6.0f, 6.0f), kWhite);
}

TEST_F(ShadowScene, OfGlassIsThereInSoftLightToo)
{
    FloorAndCube made = MakeFloorAndCube(2.0f, Color(0.8f, 0.8f, 0.8f, 0.25f));
    PresentationSettings settings = LookingDown();
    settings.shadows->soft = true;
    const Picture picture = Draw(made, settings);
    // 1 - 0.6 * 0.25 of white.
    ExpectColorInRect(picture, OnFloor(-3.5f, -1.5f, -0.5f, 0.5f), Pixel{217, 217, 217, 255});
    ExpectColorInRect(picture, OnFloor(-6.0f, -3.5f, -6.0f, 6.0f), kWhite);
}

// What is seen through is put together off screen, in light of the same sun.
TEST_F(ShadowScene, LeavesGlassThatNothingShadesAsItIs)
{
    for (const Host::GlassOrder order : {Host::GlassOrder::Exact, Host::GlassOrder::Weighted})
    {
        FloorAndCube made = MakeFloorAndCube(2.0f, Color(0.1f, 0.3f, 0.8f, 0.5f));
        PresentationSettings settings = LookingDown();
        settings.look = Look::Advanced;
        settings.glass.order = order;
        const PixelRect cube = OnFloor(-0.5f, 0.5f, -0.5f, 0.5f);
        const Picture shadows = Draw(made, settings);
        settings.shadows.reset();
        const Picture lit = Draw(made, settings);
        const Pixel glass = lit.At(kSize / 2, kSize / 2);
        ExpectColorInRect(shadows, cube, glass, 1);
        EXPECT_GT(glass.b, glass.r + 20);
    }
}

TEST_F(ShadowScene, IsInPicturesWithSamplesAndInTiles)
{
    for (const Antialiasing antialiasing : {Antialiasing::None, Antialiasing::Multisampling})
    {
        SCOPED_TRACE(antialiasing == Antialiasing::None ? "without samples" : "with samples");
        FloorAndCube made = MakeFloorAndCube(2.0f);
        PresentationSettings settings = LookingDown();
        settings.antialiasing = antialiasing;
        Apply(*made.presentation, settings);
        // Four times as large as LookingDown has it: forty pixels are a unit.
        constexpr int side = 4 * kSize;
        Host::PictureFacts facts;
        const Rows whole = Write(made, side, 0, facts);
        EXPECT_EQ(facts.tiles, 1);
        const Rows tiled = Write(made, side, 128, facts);
        EXPECT_GE(facts.tiles, 9);
        ASSERT_EQ(tiled.data.size(), whole.data.size());
        int wrong = 0;
        int rims = 0;
        for (int y = 0; y < side; ++y)
        {
            for (int x = 0; x < side; ++x)
            {
                const double u = (x - side / 2) / 40.0;
                const double v = (y - side / 2) / 40.0;
                if (std::abs(u) < 0.8 && std::abs(v) < 0.8)
                {
                    continue; // the cube hides it
                }
                const double outside = std::max(std::max(-3.5 - u, u + 1.5), std::abs(v) - 0.5);
                if (std::abs(outside) < 0.06)
                {
                    ++rims;
                    continue;
                }
                const int expected = outside > 0.0 ? 255 : 102;
                wrong += std::abs(whole.At(x, y, 0) - expected) > 1 ? 1 : 0;
                wrong += std::abs(tiled.At(x, y, 0) - expected) > 1 ? 1 : 0;
            }
        }
        EXPECT_EQ(wrong, 0);
        EXPECT_LT(rims, side * side / 50);
    }
}

TEST_F(ShadowScene, IsTheSameInWindowsOfAnySize)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    PresentationSettings wanted = LookingDown();
    for (const bool isSoft : {false, true})
    {
        wanted.shadows->soft = isSoft;
        wanted.shadows->sunWidth = 8.0f;
        Apply(*made.presentation, wanted);
        for (const auto& [width, height] : {std::pair(80, 60), std::pair(80, 61), std::pair(81, 60), std::pair(81, 61)})
        {
            UseFramebuffer(width, height);
            const Picture expected = PresentationFixture::Draw(*made.presentation);
            std::vector<unsigned char> actual(4u * static_cast<std::size_t>(width * height));
            {
                const WindowSurface window(width, height);
                ASSERT_TRUE(window.IsCurrent());
                const FloorAndCube inWindow = MakeFloorAndCube(2.0f);
                Apply(*inWindow.presentation, wanted);
                inWindow.presentation->Draw(width, height);
                glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, actual.data());
            }
            int shaded = 0;
            int most = 0;
            for (int i = 0; i < width * height; ++i)
            {
                const int red = expected.At(i % width, i / width).r;
                shaded += red == kShade.r ? 1 : 0;
                most = std::max(most, std::abs(red - actual[4u * static_cast<std::size_t>(i)]));
            }
            EXPECT_GT(shaded, 20);
            // Rims are of other places where quads begin with other rows.
            EXPECT_LE(most, height % 2 == 0 ? 1 : 40) << width << " x " << height << (isSoft ? ", soft" : ", hard");
        }
    }
}

TEST_F(ShadowScene, OfWhatIsHighlightedStays)
{
    FloorAndCube made = MakeFloorAndCube(2.0f);
    const Picture before = Draw(made, LookingDown());
    ASSERT_TRUE(made.presentation->Highlight("cube", Color(1.0f, 0.0f, 0.0f, 0.5f)));
    const Picture marked = PresentationFixture::Draw(*made.presentation);
    ExpectColorInRect(marked, OnFloor(-3.5f, -1.5f, -0.5f, 0.5f), kShade, 1);
    EXPECT_NE(marked.At(60, 60), before.At(60, 60)) << "the cube itself is marked";
    made.presentation->ClearHighlights();
    ExpectSame(PresentationFixture::Draw(*made.presentation), before, "no longer marked");
}

TEST_F(ShadowScene, FollowsVerticesThatAreMovedInPlace)
{
    // Alone, so that buffers come back with the names that they had.
    FloorAndCube made = MakeFloorAndCube(2.0f, Color(0.8f, 0.8f, 0.8f), 1.0f, false);
    PresentationSettings settings = LookingDown();
    settings.background = Color(1, 1, 1);
    settings.ground.emplace().kind = Host::GroundKind::ShadowCatcher;
    settings.ground->height = 0.0f;
    Draw(made, settings);
    // Box, arrays and their sizes stay.
    Mesh* const mesh = made.cube->GetMeshes().front();
    for (int step = 0; step < 6; ++step)
    {
        SCOPED_TRACE(step);
        const bool isNarrow = step % 2 == 0;
        for (Vector& position : mesh->GetRawMesh()->positions)
        {
            position.z *= isNarrow ? 0.5f : 2.0f;
        }
        mesh->SetRenderData(nullptr, true);
        made.presentation->GetScene().MarkDirty();
        const Picture picture = PresentationFixture::Draw(*made.presentation);
        ExpectColorInRect(picture, OnFloor(-3.5f, -1.5f, -0.25f, 0.25f), kShade, 1);
        ExpectColorInRect(picture, {27, 66, 10, 1}, kWhite);
        ExpectColorInRect(picture, {27, 63, 10, 1}, isNarrow ? kWhite : kShade, 1);
        ExpectColorInRect(picture, {27, 56, 10, 1}, isNarrow ? kWhite : kShade, 1);
    }
}

/// A square over a ground that is lit from above.
class ShadowOfStage : public FlatStage
{
protected:
    ShadowOfStage()
    {
        renderer->SetLook(Look::Advanced);
        auto* const lit = new Material("lit");
        lit->SetDiffuse(Color(0.9f, 0.5f, 0.2f));
        lit->SetAmbient(Color(0.1f, 0.1f, 0.1f));
        World().AddMaterial(lit);
        AddRect(*lit, {0, 0, SmallWidth, SmallHeight}, 0.0f, 1);
        AddRect(Color(0.2f, 0.6f, 0.9f), {56, 24, 16, 16}, 20.0f, 2);
        auto* const light = new LightNode(&World());
        light->SetLocalDirection(Vector(0, 0, -1));
        World().GetRoot()->AddChild(light, false);
        FitCamera();
    }
};

TEST_F(ShadowOfStage, IsTheSameWhereANodeIsEditedInItsContext)
{
    const Picture plain = Draw();
    renderer->SetSun(Vector(1, 0, 1));
    renderer->SetShadows(Host::ShadowSettings());
    const Picture shadow = Draw();
    // Below the square and 20 units beside it.
    const PixelRect dark = Inset({36, 24, 16, 16});
    const PixelRect lit = Inset({4, 4, 28, 56});
    ExpectColorInRect(shadow, lit, plain.At(10, 10));
    ExpectColorInRect(shadow, dark, shadow.At(44, 32));
    EXPECT_LT(shadow.At(44, 32).r + 20, plain.At(44, 32).r);

    renderer->EditInContext({{7, 7}});
    const Picture edited = Draw();
    EXPECT_NE(edited.At(10, 10), shadow.At(10, 10)) << "what is not edited is grey";
    ExpectColorInRect(edited, lit, edited.At(10, 10));
    ExpectColorInRect(edited, dark, edited.At(44, 32));
    EXPECT_EQ(edited.At(44, 32).r, edited.At(44, 32).g);
    EXPECT_LT(edited.At(44, 32).r + 10, edited.At(10, 10).r);
    renderer->LeaveEdit();
    ExpectSame(Draw(), shadow, "no longer edited");
}

} // namespace

} // namespace OV::Test
