#include "tests/overlay/LayerStage.h"

#include "orvane/overlay/Arrow.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <GL/glew.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace OV::Test
{

namespace
{

const Color kColors[] = {Color(1, 0, 0, 1), Color(0, 1, 0, 1), Color(0, 0, 1, 1)};
const Pixel kPixels[] = {kRed, kGreen, kBlue};

class OverlayPicture : public LayerStage
{
protected:
    /// Adds a square of the 3D scene that faces the camera, unlit.
    MeshNode* AddSolid(const Color& color, float side, const Vector& place)
    {
        auto raw = std::make_shared<RawMesh>();
        const float h = side / 2.0f;
        raw->SetPositionBuffer({{-h, -h, 0}, {h, -h, 0}, {h, h, 0}, {-h, h, 0}});
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        auto* const mesh = new Mesh(raw, &World());
        auto* const material = new Material("solid");
        material->SetFlags(MaterialFlagUnlit);
        material->SetAmbient(Color(0, 0, 0, 0));
        material->SetDiffuse(color);
        World().AddMaterial(material);
        material->AddMesh(mesh);
        auto* const node = new MeshNode(&World());
        mesh->AddNode(node);
        World().GetRoot()->AddChild(node, false);
        Place(*node, place.x, place.y, place.z);
        return node;
    }

    void LookFrom(const Vector& eye, const Vector& at)
    {
        Transform view;
        view.EyeLookUp(eye, at, Vector(0, 1, 0));
        World().GetCameraNode()->SetGlobal(view);
    }
};

TEST_F(OverlayPicture, HigherZLiesAboveAcrossMaterialsAndSprites)
{
    // Made in an order that is not the one in z.
    AddSprite({10, 10, 60, 60}, kColors[1], 5.0f);
    AddSprite({30, 30, 60, 60}, kColors[2], 9.0f);
    AddSprite({0, 0, 128, 128}, kColors[0], -3.0f);
    const Picture picture = Frame();
    ExpectColorInRect(picture, {30, 30, 60, 60}, kBlue);
    ExpectColorInRect(picture, {10, 10, 20, 60}, kGreen);
    ExpectColorInRect(picture, {0, 92, 128, 36}, kRed);

    Place(*sprites[0]->GetNode(), 10, 10, 20.0f);
    ExpectColorInRect(Frame(), {10, 10, 60, 60}, kGreen);
}

TEST_F(OverlayPicture, AtEqualZLaterSpritesLieAboveEarlier)
{
    auto* const shared = new Material2D("shared");
    shared->color = kColors[0];
    Layer().AddMaterial(shared);
    for (int i = 0; i < 40; ++i)
    {
        if (i % 3 == 0)
        {
            auto* const shape = new Rect(&Layer(), 80, 80, false);
            sprites.push_back(std::make_unique<Sprite>(shared, &Layer(), shape));
            Place(*sprites.back()->GetNode(), static_cast<float>(i), static_cast<float>(i), 1.5f);
        }
        else
        {
            AddSprite({i, i, 80, 80}, kColors[i % 3], 1.5f);
        }
    }
    const Picture picture = Frame();
    for (int i = 0; i < 40; ++i)
    {
        // What is left of each below its follower: a row and a column.
        ExpectColorInRect(picture, {i, i, i == 39 ? 80 : 1, 80}, kPixels[i % 3]);
        ExpectColorInRect(picture, {i, i, 80, i == 39 ? 80 : 1}, kPixels[i % 3]);
    }
}

TEST_F(OverlayPicture, OpaqueMaterialsAndTransparentOnesShareOneOrder)
{
    Sprite& opaque = AddSprite({20, 20, 60, 60}, kColors[0], 2.0f);
    opaque.GetMaterial()->transparent = false;
    Layer().ProcessChangedMaterial(opaque.GetMaterial());
    AddSprite({0, 0, 128, 128}, kColors[1], 1.0f);
    AddSprite({60, 60, 40, 40}, kColors[2], 3.0f);
    const Picture picture = Frame();
    ExpectColorInRect(picture, {20, 20, 40, 60}, kRed);
    ExpectColorInRect(picture, {60, 60, 40, 40}, kBlue);
    ExpectColorInRect(picture, {0, 0, 20, 128}, kGreen);
}

TEST_F(OverlayPicture, EverythingIsSeenWhateverItsZ)
{
    struct
    {
        const char* label;
        float lower, upper;
    } const cases[] = {
        {"one plane", 0.0f, 0.0f},          {"one plane far up", 1.0e6f, 1.0e6f}, {"one plane far down", -1.0e6f, -1.0e6f},
        {"far apart", -1.0e6f, 1.0e6f},     {"a little apart", 0.0f, 0.001f},     {"very far up", 3.0e8f, 3.0e8f},
        {"both far up", 1.0e6f, 1000001.0f}, {"to the ends", -1.0e20f, 1.0e20f},
    };
    for (const auto& expected : cases)
    {
        SCOPED_TRACE(expected.label);
        sprites.clear();
        AddSprite({10, 10, 60, 60}, kColors[0], expected.lower);
        AddSprite({40, 40, 60, 60}, kColors[1], expected.upper);
        const Picture picture = Frame();
        ExpectColorInRect(picture, {10, 10, 30, 60}, kRed);
        ExpectColorInRect(picture, {40, 40, 60, 60}, kGreen);
    }
}

TEST_F(OverlayPicture, TheForegroundLiesAboveTheModelAndTheBackgroundBehind)
{
    World().GetCameraNode()->SetProjection(CameraNode::Orthographic);
    World().GetCameraNode()->SetFOV(std::atan(1.0f));
    World().GetCameraNode()->SetDistanceToTarget(64.0f);
    LookFrom(Vector(0, 0, 100), Vector(0, 0, 0));
    AddSolid(kColors[1], 64.0f, Vector(0, 0, 99));
    auto* const shape = new Rect(&Background(), 128, 128, false);
    const Sprite ground(&Background(), shape);
    ground.GetMaterial()->color = kColors[0];
    AddSprite({50, 50, 20, 20}, kColors[2], -50.0f);
    const Picture picture = Frame();
    ExpectColorInRect(picture, {50, 50, 20, 20}, kBlue);
    ExpectColorInRect(picture, Inset({32, 32, 18, 64}), kGreen);
    ExpectColorInRect(picture, {0, 0, 128, 30}, kRed);
}

TEST_F(OverlayPicture, ClipRegionsCutOnEverySide)
{
    struct
    {
        const char* label;
        int x, y, width, height;
        PixelRect seen;
    } const cases[] = {
        {"left", 50, 0, 100, 128, {50, 30, 30, 40}},
        {"right", 0, 0, 60, 128, {40, 30, 20, 40}},
        // A vertical cut of a sprite comes out at the other edge.
        {"lower edge of the region", 0, 45, 128, 100, {40, 30, 40, 25}},
        {"upper edge of the region", 0, 0, 128, 60, {40, 40, 40, 30}},
    };
    for (const auto& region : cases)
    {
        SCOPED_TRACE(region.label);
        sprites.clear();
        Sprite& sprite = AddSprite({40, 30, 40, 40}, kColors[0]);
        Frame();
        sprite.SetClipRegion(region.x, region.y, region.width, region.height);
        const Picture picture = Frame();
        ExpectColorInRect(picture, region.seen, kRed);
        EXPECT_EQ(picture.Count(kRed), region.seen.width * region.seen.height);
        sprite.SetClipRegion(200, 200, 10, 10);
        EXPECT_EQ(Frame().Count(kRed), 0);
        sprite.SetClipRegion(0, 0, 128, 128);
        EXPECT_EQ(Frame().Count(kRed), 40 * 40);
    }
}

TEST_F(OverlayPicture, AnOverrideMaterialColoursTheSpriteUntilItIsTakenAway)
{
    Sprite& sprite = AddSprite({40, 30, 40, 40}, kColors[0]);
    auto* const other = new Material2D("other");
    other->color = kColors[2];
    Layer().AddMaterial(other);
    EXPECT_EQ(Frame().Count(kRed), 1600);
    sprite.SetOverrideMaterial(other);
    EXPECT_EQ(Frame().Count(kBlue), 1600);
    sprite.SetOverrideMaterial(nullptr);
    const Picture picture = Frame();
    EXPECT_EQ(picture.Count(kRed), 1600);
    EXPECT_EQ(picture.Count(kBlue), 0);
}

TEST_F(OverlayPicture, MovesResizesAndHidingAreSeenInTheNextFrame)
{
    Sprite& sprite = AddSprite({40, 30, 40, 40}, kColors[0]);
    Frame();
    sprite.GetShape()->ShiftX(-30);
    EXPECT_TRUE(context->Update(0.0f));
    ExpectColorInRect(Frame(), {10, 30, 40, 40}, kRed);
    sprite.GetShape()->Resize(10, 20);
    const Picture resized = Frame();
    ExpectColorInRect(resized, {40, 30, 10, 20}, kRed);
    EXPECT_EQ(resized.Count(kRed), 200);
    sprite.Show(false);
    EXPECT_EQ(Frame().Count(kRed), 0);
    sprite.Show(true);
    EXPECT_EQ(Frame().Count(kRed), 200);
}

TEST_F(OverlayPicture, ANodeTakenOutOfTheTreeIsDrawnWhereItWasUntilItLeavesItsMesh)
{
    Sprite& sprite = AddSprite({40, 30, 40, 40}, kColors[0]);
    // The depths that a layer shows are those of what is in its tree.
    AddSprite({0, 0, 10, 10}, kColors[1]);
    const Picture before = Frame();
    Shape2DNode* const node = sprite.GetNode();
    Layer().GetRoot()->RemoveChild(node);
    EXPECT_FALSE(context->Update(0.0f)) << "nobody has noticed";
    Layer().MarkDirty();
    EXPECT_EQ(Frame(), before);
    Layer().GetRoot()->AddChild(node, false);
    EXPECT_FALSE(context->Update(0.0f));
    sprite.GetShape()->RemoveNode(node);
    Layer().MarkDirty();
    EXPECT_EQ(Frame().Count(kRed), 0);
    sprite.GetShape()->AddNode(node);
}

TEST_F(OverlayPicture, AnArrowPointsToItsTip)
{
    sprites.push_back(std::make_unique<Sprite>(&Layer(), new Arrow(40, 1, &Layer())));
    sprites.back()->SetColor(kColors[0]);
    Place(*sprites.back()->GetNode(), 20, 60);
    const Picture picture = Frame();
    ExpectColorInRect(picture, {50, 50, 8, 20}, kRed);
    ExpectColorInRect(picture, {22, 70, 10, 10}, kWhite);
    EXPECT_NEAR(picture.Count(kRed), 40 * 40 / 2, 45);
}

TEST_F(OverlayPicture, ABillboardStaysOnItsNodeUnderAMovingCameraInBothProjections)
{
    MeshNode* const solid = AddSolid(kColors[0], 12.0f, Vector(5, -3, 2));
    // Five pixels around the place of its node.
    Sprite& label = AddSprite({0, 0, 5, 5}, kColors[2], 1.0f);
    label.GetShape()->ShiftX(-2.5f);
    label.GetShape()->ShiftY(-2.5f);
    label.GetNode()->Set3DParent(solid);
    CameraNode& camera = *World().GetCameraNode();
    camera.SetFOV(std::atan(0.5f));
    camera.SetNearFar(1.0f, 1000.0f);
    const Vector eyes[] = {{0, 0, 60}, {10, 20, 70}, {-25, 5, 60}, {5, -3, 120}};
    for (const auto projection : {CameraNode::Perspective, CameraNode::Orthographic})
    {
        camera.SetProjection(projection);
        for (const Vector& eye : eyes)
        {
            SCOPED_TRACE(testing::Message() << "projection " << projection << " from " << eye.x << " " << eye.y);
            camera.SetDistanceToTarget(eye.z);
            LookFrom(eye, Vector(0, 0, 0));
            const Picture picture = Frame();
            int left = DefaultSize;
            int right = 0;
            int bottom = DefaultSize;
            int top = 0;
            double blueX = 0.0;
            double blueY = 0.0;
            int blue = 0;
            for (int y = 0; y < DefaultSize; ++y)
            {
                for (int x = 0; x < DefaultSize; ++x)
                {
                    const Pixel pixel = picture.At(x, y);
                    if (pixel != kWhite)
                    {
                        left = std::min(left, x);
                        right = std::max(right, x + 1);
                        bottom = std::min(bottom, y);
                        top = std::max(top, y + 1);
                    }
                    if (pixel == kBlue)
                    {
                        ++blue;
                        blueX += x + 0.5;
                        blueY += y + 0.5;
                    }
                }
            }
            ASSERT_GE(blue, 20);
            ASSERT_LE(blue, 36);
            ASSERT_GT(right - left, 10);
            EXPECT_NEAR(blueX / blue, (left + right) / 2.0, 1.5);
            EXPECT_NEAR(blueY / blue, (bottom + top) / 2.0, 1.5);
        }
    }
    LookFrom(Vector(0, 0, -60), Vector(0, 0, -120));
    EXPECT_EQ(Frame().Count(kBlue), 0) << "behind the eye";
}

TEST_F(OverlayPicture, FramesOfAnUnchangedLayerAreTheSameBytes)
{
    AddSprite({10, 10, 60, 60}, kColors[1], 5.0f);
    AddSprite({30, 30, 60, 60}, Color(0, 0, 1, 0.5f), 9.0f, true);
    AddText("Text", 20, 20, 80, 2.0f);
    const Picture first = Frame();
    Layer().MarkDirty();
    EXPECT_EQ(Frame(), first);
    EXPECT_EQ(Frame(), first);
}

TEST_F(OverlayPicture, TenSuspensionsRepeatThePicture)
{
    AddSprite({10, 10, 60, 60}, kColors[1], 5.0f);
    AddText("Text", 20, 20, 80, 2.0f).AddBackdrop(Color(1, 1, 0, 1), 60, 30, -4, -3);
    const Picture first = Frame();
    for (int i = 0; i < 10; ++i)
    {
        context->Suspend(renderer.get());
        context->Resume(renderer.get());
        EXPECT_EQ(Frame(), first);
    }
}

TEST_F(OverlayPicture, ALayerPutsBackTheDepthFunctionAndTheDepthClamp)
{
    AddSprite({10, 10, 60, 60}, kColors[1]);
    Frame();
    GLint function = 0;
    glGetIntegerv(GL_DEPTH_FUNC, &function);
    EXPECT_EQ(function, GL_LESS);
    EXPECT_FALSE(glIsEnabled(GL_DEPTH_CLAMP));
    glEnable(GL_DEPTH_CLAMP);
    glDepthFunc(GL_ALWAYS);
    // Alone: the beginning of a frame sets both.
    renderer->Render2D(&Layer());
    glGetIntegerv(GL_DEPTH_FUNC, &function);
    EXPECT_EQ(function, GL_ALWAYS);
    EXPECT_TRUE(glIsEnabled(GL_DEPTH_CLAMP));
    glDisable(GL_DEPTH_CLAMP);
    glDepthFunc(GL_LESS);
}

} // namespace

} // namespace OV::Test
