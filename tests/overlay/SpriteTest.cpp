#include "orvane/overlay/Sprite.h"

#include "tests/overlay/LayerShapes.h"
#include "tests/overlay/OverlayDoubles.h"

#include "orvane/overlay/Arrow.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

namespace OV::Test
{

namespace
{

using Floats = std::vector<float>;

struct OpenSprite : Sprite
{
    using Sprite::clipActive;
    using Sprite::clipBottom;
    using Sprite::clipLeft;
    using Sprite::clipped;
    using Sprite::clipRight;
    using Sprite::clipTop;
    using Sprite::ownsMaterial;
    using Sprite::Sprite;
};

class SpriteTest : public testing::Test
{
protected:
    /// A sprite of a rectangle whose lower left corner stands at (x, y).
    std::unique_ptr<OpenSprite> AddSprite(float x, float y, float width, float height)
    {
        auto sprite = std::make_unique<OpenSprite>(layer.get(), new Rect(layer.get(), width, height, true));
        Place(*sprite->GetNode(), x, y);
        Update();
        return sprite;
    }

    void Update() { layer->UpdateGraph(200, 100); }

    std::unique_ptr<Scene2D> layer = std::make_unique<Scene2D>(nullptr);
};

TEST_F(SpriteTest, MakesAMaterialAndANodeInItsLayer)
{
    auto* const rect = new Rect(layer.get(), 10, 10, false);
    OpenSprite sprite(layer.get(), rect);
    EXPECT_TRUE(sprite.ownsMaterial);
    ASSERT_NE(sprite.GetMaterial(), nullptr);
    EXPECT_EQ(sprite.GetMaterial()->GetName(), "sprite");
    EXPECT_EQ(sprite.GetMaterial()->GetScene(), layer.get());
    EXPECT_EQ(sprite.GetShape(), rect);
    EXPECT_EQ(rect->GetMaterial(), sprite.GetMaterial());
    ASSERT_NE(sprite.GetNode(), nullptr);
    EXPECT_EQ(sprite.GetNode()->GetScene2D(), layer.get());
    EXPECT_EQ(sprite.GetNode()->GetParent(), layer->GetRoot());
    EXPECT_EQ(rect->GetNodes(), (std::vector<MeshNode*>{sprite.GetNode()}));
    EXPECT_EQ(layer->GetSprites(), (std::vector<Sprite*>{&sprite}));
    EXPECT_FALSE(sprite.HasOverrideMaterial());
    EXPECT_TRUE(sprite.IsVisible());
    EXPECT_TRUE(layer->IsDirty());
}

TEST_F(SpriteTest, WithoutAMaterialIsNotDrawnUntilAnotherStandsIn)
{
    Material2D standIn("stand-in");
    {
        OpenSprite sprite(nullptr, layer.get(), new Rect(layer.get(), 10, 10, false));
        Update();
        EXPECT_EQ(sprite.GetMaterial(), nullptr);
        EXPECT_FALSE(sprite.ownsMaterial);
        EXPECT_TRUE(layer->GetZOrderedDrawItems().empty());
        sprite.SetColor(Color(1, 0, 0, 1));
        EXPECT_TRUE(sprite.GetColor().IsEqual(Color()));
        sprite.Show(false);
        sprite.Show(true);
        sprite.SetClipRegion(1, 2, 3, 4);
        layer->AddMaterial(&standIn);
        sprite.SetOverrideMaterial(&standIn);
        Update();
        EXPECT_EQ(layer->GetZOrderedDrawItems().size(), 1u);
        sprite.SetOverrideMaterial(nullptr);
        Update();
        EXPECT_TRUE(layer->GetZOrderedDrawItems().empty());
    }
    EXPECT_TRUE(layer->GetSprites().empty());
}

TEST_F(SpriteTest, WithoutAShapeOrARootIsEmpty)
{
    {
        const Sprite sprite(layer.get(), nullptr);
        Update();
        EXPECT_EQ(sprite.GetShape(), nullptr);
    }
    layer->DeleteSubtree(layer->GetRoot());
    {
        const Sprite sprite(layer.get(), new Rect(layer.get(), 10, 10, false));
        ASSERT_NE(sprite.GetNode(), nullptr);
        EXPECT_EQ(sprite.GetNode()->GetParent(), nullptr);
        Update();
    }
    EXPECT_TRUE(layer->GetSprites().empty());
}

TEST_F(SpriteTest, HasNoVirtualOperationButTheDestructor)
{
    EXPECT_TRUE(std::has_virtual_destructor_v<Sprite>);
    bool gone = false;
    struct Derived : Sprite
    {
        Derived(Scene2D* scene, Shape2D* shape, bool& goneFlag) : Sprite(scene, shape), flag(goneFlag) {}
        ~Derived() override { flag = true; }
        bool& flag;
    };
    const std::unique_ptr<Sprite> sprite =
        std::make_unique<Derived>(layer.get(), new Rect(layer.get(), 1, 1, false), gone);
    const_cast<std::unique_ptr<Sprite>&>(sprite).reset();
    EXPECT_TRUE(gone);
}

TEST_F(SpriteTest, WithAGivenMaterialDoesNotDestroyIt)
{
    auto* const material = new Material2D("given");
    layer->AddMaterial(material);
    {
        OpenSprite sprite(material, layer.get(), new Rect(layer.get(), 10, 10, false));
        EXPECT_FALSE(sprite.ownsMaterial);
        EXPECT_EQ(sprite.GetMaterial(), material);
        EXPECT_EQ(material->GetMeshes().size(), 1u);
    }
    EXPECT_EQ(layer->GetMaterial("given"), material);
    EXPECT_TRUE(material->GetMeshes().empty());
}

TEST_F(SpriteTest, TakesShapeNodesAndOwnMaterialWithIt)
{
    {
        const auto sprite = AddSprite(0, 0, 10, 10);
        auto* const second = new Shape2DNode(layer.get());
        layer->GetRoot()->AddChild(second, false);
        sprite->GetShape()->AddNode(second);
        ASSERT_EQ(layer->GetRoot()->GetChildren().size(), 3u);
        Update();
        ASSERT_FALSE(layer->IsDirty());
    }
    EXPECT_EQ(layer->GetRoot()->GetChildren().size(), 1u) << "the camera stays";
    EXPECT_TRUE(layer->GetMeshes().empty());
    EXPECT_TRUE(layer->GetAlphaMaterials().empty());
    EXPECT_TRUE(layer->GetSprites().empty());
    EXPECT_TRUE(layer->IsDirty());
}

TEST_F(SpriteTest, ANodeBelowAnotherOfItsNodesGoesWithThat)
{
    auto sprite = AddSprite(0, 0, 10, 10);
    auto* const below = new Shape2DNode(layer.get());
    sprite->GetNode()->AddChild(below, false);
    sprite->GetShape()->AddNode(below);
    sprite.reset();
    EXPECT_EQ(layer->GetRoot()->GetChildren().size(), 1u);
}

TEST_F(SpriteTest, ShowHidesTheNodeAndBringsItBack)
{
    const auto sprite = AddSprite(0, 0, 10, 10);
    ASSERT_FALSE(layer->IsDirty());
    sprite->Show(false);
    EXPECT_FALSE(sprite->IsVisible());
    EXPECT_TRUE(IsHidden(*sprite->GetNode()));
    EXPECT_TRUE(layer->IsDirty());
    Update();
    sprite->Show(true);
    EXPECT_TRUE(sprite->IsVisible());
    EXPECT_FALSE(IsHidden(*sprite->GetNode()));
    EXPECT_TRUE(layer->IsDirty());
}

TEST_F(SpriteTest, ItsColourIsThatOfItsMaterial)
{
    const auto sprite = AddSprite(0, 0, 10, 10);
    EXPECT_TRUE(sprite->GetColor().IsExactlyEqual(Color(1, 1, 1, 1)));
    sprite->SetColor(Color(0.25f, 0.5f, 0.75f, 0.125f));
    EXPECT_TRUE(sprite->GetColor().IsExactlyEqual(Color(0.25f, 0.5f, 0.75f, 0.125f)));
    EXPECT_TRUE(sprite->GetMaterial()->color.IsExactlyEqual(Color(0.25f, 0.5f, 0.75f, 0.125f)));
    EXPECT_TRUE(layer->IsDirty());
}

TEST_F(SpriteTest, AnOverrideMaterialStandsInUntilItIsTakenAway)
{
    const auto sprite = AddSprite(0, 0, 10, 10);
    auto* const first = new Material2D("first");
    auto* const second = new Material2D("second");
    layer->AddMaterial(first);
    layer->AddMaterial(second);
    Update();

    sprite->SetOverrideMaterial(first);
    EXPECT_TRUE(sprite->HasOverrideMaterial());
    EXPECT_EQ(sprite->GetShape()->GetMaterial(), first);
    EXPECT_TRUE(sprite->GetMaterial()->GetMeshes().empty());
    EXPECT_TRUE(layer->IsDirty());

    sprite->SetOverrideMaterial(second);
    EXPECT_EQ(sprite->GetShape()->GetMaterial(), second);
    EXPECT_TRUE(first->GetMeshes().empty());

    sprite->SetColor(Color(0, 0, 1, 1));
    EXPECT_TRUE(sprite->GetMaterial()->color.IsExactlyEqual(Color(0, 0, 1, 1)));
    EXPECT_TRUE(second->color.IsExactlyEqual(Color(1, 1, 1, 1)));

    sprite->SetOverrideMaterial(nullptr);
    EXPECT_FALSE(sprite->HasOverrideMaterial());
    EXPECT_EQ(sprite->GetShape()->GetMaterial(), sprite->GetMaterial());
    EXPECT_TRUE(second->GetMeshes().empty());
}

TEST_F(SpriteTest, TakingAwayNoOverrideAddsTheShapeAgainWhichIsThereAlready)
{
    const auto sprite = AddSprite(0, 0, 10, 10);
    sprite->SetOverrideMaterial(nullptr);
    EXPECT_EQ(sprite->GetMaterial()->GetMeshes().size(), 1u);
    EXPECT_EQ(sprite->GetShape()->GetMaterial(), sprite->GetMaterial());
    EXPECT_TRUE(layer->IsDirty());
}

TEST_F(SpriteTest, LeavesTheOverrideMaterialAtItsEnd)
{
    auto* const other = new Material2D("other");
    layer->AddMaterial(other);
    {
        const auto sprite = AddSprite(0, 0, 10, 10);
        sprite->SetOverrideMaterial(other);
    }
    EXPECT_TRUE(other->GetMeshes().empty());
}

TEST_F(SpriteTest, IgnorePickFlagsEveryNode)
{
    const auto sprite = AddSprite(0, 0, 10, 10);
    auto* const second = new Shape2DNode(layer.get());
    layer->GetRoot()->AddChild(second, false);
    sprite->GetShape()->AddNode(second);
    EXPECT_FALSE(IsLeftOutOfHitTests(*second));
    sprite->IgnorePick(true);
    EXPECT_TRUE(IsLeftOutOfHitTests(*sprite->GetNode()));
    EXPECT_TRUE(IsLeftOutOfHitTests(*second));
    sprite->IgnorePick(false);
    EXPECT_FALSE(IsLeftOutOfHitTests(*sprite->GetNode()));
    EXPECT_FALSE(IsLeftOutOfHitTests(*second));
}

TEST_F(SpriteTest, WithoutAClipRegionUpdatingChangesNothing)
{
    const auto sprite = AddSprite(500, 0, 10, 10);
    sprite->Show(false);
    const Floats corners = CornersOf(*sprite->GetShape());
    EXPECT_TRUE(sprite->UpdateToClipRegion());
    EXPECT_FALSE(sprite->IsVisible());
    EXPECT_FALSE(sprite->clipActive);
    EXPECT_EQ(CornersOf(*sprite->GetShape()), corners);
}

TEST_F(SpriteTest, AClipRegionIsKeptByItsFourEdges)
{
    const auto sprite = AddSprite(20, 30, 10, 10);
    ASSERT_FALSE(layer->IsDirty());
    sprite->SetClipRegion(1, 2, 30, 40);
    EXPECT_TRUE(sprite->clipped);
    EXPECT_EQ(sprite->clipLeft, 1);
    EXPECT_EQ(sprite->clipTop, 2);
    EXPECT_EQ(sprite->clipRight, 31);
    EXPECT_EQ(sprite->clipBottom, 42);
    EXPECT_FALSE(sprite->clipActive);
    EXPECT_TRUE(layer->IsDirty());
    sprite->SetClipRegion(10, 10, std::numeric_limits<int>::max(), std::numeric_limits<int>::max());
    EXPECT_EQ(sprite->clipRight, std::numeric_limits<int>::max());
    EXPECT_EQ(sprite->clipBottom, std::numeric_limits<int>::max());
}

// The region's top goes with the lower edge and its bottom with the upper one, while a
// rectangle's cuts at top and bottom are those of its upper and lower edge: a vertical cut
// comes out at the other edge.
TEST_F(SpriteTest, ClipRegionsCutOnEverySide)
{
    struct
    {
        const char* label;
        int x, y, width, height;
        Floats corners;
    } const cases[] = {
        {"left", 24, 0, 100, 100, {4, 0, 10, 0, 10, 20, 4, 20}},
        {"right", 0, 0, 27, 100, {0, 0, 7, 0, 7, 20, 0, 20}},
        {"top", 0, 35, 100, 100, {0, 0, 10, 0, 10, 15, 0, 15}},
        {"bottom", 0, 0, 100, 42, {0, 8, 10, 8, 10, 20, 0, 20}},
        {"left and right", 22, 0, 5, 100, {2, 0, 7, 0, 7, 20, 2, 20}},
        {"all", 22, 33, 5, 10, {2, 7, 7, 7, 7, 17, 2, 17}},
    };
    for (const auto& region : cases)
    {
        SCOPED_TRACE(region.label);
        const auto sprite = AddSprite(20, 30, 10, 20);
        sprite->SetClipRegion(region.x, region.y, region.width, region.height);
        EXPECT_EQ(CornersOf(*sprite->GetShape()), region.corners);
        EXPECT_TRUE(sprite->clipActive);
        EXPECT_TRUE(sprite->IsVisible());
        EXPECT_TRUE(sprite->UpdateToClipRegion());
        EXPECT_EQ(CornersOf(*sprite->GetShape()), region.corners) << "a second time";
    }
}

TEST_F(SpriteTest, OutsideOfItsRegionASpriteIsHidden)
{
    struct
    {
        const char* label;
        int x, y, width, height;
        bool visible;
    } const cases[] = {
        {"left of the region", 31, 0, 50, 100, false},   {"touching its left edge", 30, 0, 50, 100, true},
        {"right of the region", 0, 0, 19, 100, false},   {"touching its right edge", 0, 0, 20, 100, true},
        {"below the region", 0, 51, 100, 50, false},     {"touching its lower edge", 0, 50, 100, 50, true},
        {"above the region", 0, 0, 100, 29, false},      {"touching its upper edge", 0, 0, 100, 30, true},
    };
    for (const auto& region : cases)
    {
        SCOPED_TRACE(region.label);
        const auto sprite = AddSprite(20, 30, 10, 20);
        sprite->SetClipRegion(region.x, region.y, region.width, region.height);
        EXPECT_EQ(sprite->UpdateToClipRegion(), region.visible);
        EXPECT_EQ(sprite->IsVisible(), region.visible);
        EXPECT_TRUE(sprite->clipActive);
    }
}

TEST_F(SpriteTest, WhatComesBackInsideIsWholeAgain)
{
    const auto sprite = AddSprite(20, 30, 10, 20);
    sprite->SetClipRegion(25, 0, 100, 100);
    ASSERT_TRUE(sprite->clipActive);
    Place(*sprite->GetNode(), 200, 30);
    Update();
    EXPECT_FALSE(sprite->UpdateToClipRegion());
    EXPECT_FALSE(sprite->IsVisible());
    Place(*sprite->GetNode(), 25, 30);
    Update();
    EXPECT_TRUE(sprite->UpdateToClipRegion());
    EXPECT_TRUE(sprite->IsVisible());
    EXPECT_FALSE(sprite->clipActive);
    EXPECT_EQ(CornersOf(*sprite->GetShape()), (Floats{0, 0, 10, 0, 10, 20, 0, 20}));
    EXPECT_EQ(TextureOf(*sprite->GetShape()), (Floats{0, 0, 1, 0, 1, 1, 0, 1}));
}

TEST_F(SpriteTest, ClampedToTheRightClipEvenARectangleInsideIsCutByWhateverItGets)
{
    const auto sprite = AddSprite(20, 30, 10, 20);
    sprite->ClampToRightClip(true);
    sprite->SetClipRegion(0, 0, 50, 100);
    EXPECT_TRUE(sprite->clipActive);
    EXPECT_EQ(CornersOf(*sprite->GetShape()), (Floats{0, 0, 30, 0, 30, 20, 0, 20})) << "widened to the edge";
    sprite->SetClipRegion(0, 0, 26, 100);
    EXPECT_EQ(CornersOf(*sprite->GetShape()), (Floats{0, 0, 6, 0, 6, 20, 0, 20}));
    sprite->ClampToRightClip(false);
    sprite->SetClipRegion(0, 0, 50, 100);
    EXPECT_EQ(CornersOf(*sprite->GetShape()), (Floats{0, 0, 10, 0, 10, 20, 0, 20}));
}

TEST_F(SpriteTest, OnlyARectangleAtOneNodeIsCut)
{
    OpenSprite arrow(layer.get(), new Arrow(10, 1, layer.get()));
    Place(*arrow.GetNode(), 500, 500);
    Update();
    arrow.SetClipRegion(0, 0, 10, 10);
    EXPECT_TRUE(arrow.UpdateToClipRegion());
    EXPECT_TRUE(arrow.IsVisible());
    EXPECT_FALSE(arrow.clipActive);

    const auto sprite = AddSprite(500, 0, 10, 10);
    auto* const second = new Shape2DNode(layer.get());
    layer->GetRoot()->AddChild(second, false);
    sprite->GetShape()->AddNode(second);
    sprite->SetClipRegion(0, 0, 10, 10);
    EXPECT_TRUE(sprite->UpdateToClipRegion());
    EXPECT_TRUE(sprite->IsVisible());
    EXPECT_FALSE(sprite->clipActive);
}

TEST_F(SpriteTest, IsEmptyOnceItsLayerIsGone)
{
    const auto sprite = AddSprite(0, 0, 10, 10);
    layer.reset();
    EXPECT_EQ(sprite->GetMaterial(), nullptr);
    EXPECT_EQ(sprite->GetShape(), nullptr);
    EXPECT_EQ(sprite->GetNode(), nullptr);
    EXPECT_FALSE(sprite->HasOverrideMaterial());
    EXPECT_FALSE(sprite->IsVisible());
    EXPECT_TRUE(sprite->GetColor().IsExactlyEqual(Color()));
    EXPECT_TRUE(sprite->UpdateToClipRegion());
    sprite->Show(true);
    sprite->SetColor(Color());
    sprite->SetOverrideMaterial(nullptr);
    sprite->IgnorePick(true);
    sprite->SetClipRegion(0, 0, 1, 1);
}

TEST_F(SpriteTest, IsEmptyOnceItsLayerIsCleared)
{
    auto sprite = AddSprite(0, 0, 10, 10);
    layer->Clear();
    EXPECT_EQ(sprite->GetShape(), nullptr);
    EXPECT_TRUE(layer->GetSprites().empty());
    Update();
    sprite.reset();
    EXPECT_FALSE(layer->IsDirty()) << "it has nothing to do with the layer any more";
}

TEST_F(SpriteTest, WhatTheLayerDoesNotOwnGoesToo)
{
    auto* const shape = new Rect(nullptr, 10, 10, false);
    WatchedPtr<Rect> watchedShape = shape;
    OpenSprite sprite(layer.get(), shape);
    WatchedPtr<Material2D> watchedMaterial = sprite.GetMaterial();
    layer->RemoveMaterial(sprite.GetMaterial());
    layer.reset();
    EXPECT_EQ(watchedShape.Get(), nullptr);
    EXPECT_EQ(watchedMaterial.Get(), nullptr);
}

TEST_F(SpriteTest, AGivenMaterialOutsideOfTheLayerOutlivesIt)
{
    Material2D given("given");
    OpenSprite sprite(&given, layer.get(), new Rect(layer.get(), 10, 10, false));
    layer.reset();
    EXPECT_TRUE(given.GetMeshes().empty());
    EXPECT_EQ(sprite.GetMaterial(), nullptr);
}

TEST_F(SpriteTest, CopesWithAHostThatDeletesItsShape)
{
    const auto sprite = AddSprite(0, 0, 10, 10);
    sprite->SetClipRegion(0, 0, 100, 100);
    delete sprite->GetShape();
    EXPECT_EQ(sprite->GetShape(), nullptr);
    EXPECT_TRUE(sprite->UpdateToClipRegion());
    sprite->SetOverrideMaterial(nullptr);
    sprite->IgnorePick(true);
    sprite->Show(false);
    Update();
}

TEST_F(SpriteTest, CopesWithAHostThatDeletesItsNode)
{
    const auto sprite = AddSprite(0, 0, 10, 10);
    layer->DeleteSubtree(sprite->GetNode());
    EXPECT_EQ(sprite->GetNode(), nullptr);
    EXPECT_FALSE(sprite->IsVisible());
    sprite->Show(true);
    sprite->SetClipRegion(0, 0, 5, 5);
    EXPECT_TRUE(sprite->UpdateToClipRegion());
    Update();
}

TEST_F(SpriteTest, CopesWithAHostThatDeletesItsMaterials)
{
    const auto sprite = AddSprite(0, 0, 10, 10);
    auto* const other = new Material2D("other");
    layer->AddMaterial(other);
    sprite->SetOverrideMaterial(other);
    delete other;
    EXPECT_FALSE(sprite->HasOverrideMaterial());
    sprite->SetOverrideMaterial(nullptr);
    EXPECT_EQ(sprite->GetShape()->GetMaterial(), sprite->GetMaterial());

    delete sprite->GetMaterial();
    EXPECT_EQ(sprite->GetMaterial(), nullptr);
    sprite->SetColor(Color(1, 0, 0, 1));
    auto* const third = new Material2D("third");
    layer->AddMaterial(third);
    sprite->SetOverrideMaterial(third);
    EXPECT_EQ(sprite->GetShape()->GetMaterial(), third);
    sprite->SetOverrideMaterial(nullptr);
    EXPECT_EQ(sprite->GetShape()->GetMaterial(), nullptr);
}

TEST_F(SpriteTest, WithoutAShapeItIsANodeThatShowsNothing)
{
    OpenSprite sprite(layer.get(), nullptr);
    EXPECT_EQ(sprite.GetShape(), nullptr);
    sprite.Show(false);
    EXPECT_FALSE(sprite.IsVisible());
    EXPECT_TRUE(sprite.UpdateToClipRegion());
    Update();
}

} // namespace

} // namespace OV::Test
