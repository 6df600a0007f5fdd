#include "orvane/overlay/Scene2D.h"

#include "tests/overlay/LayerShapes.h"
#include "tests/overlay/OverlayDoubles.h"
#include "tests/support/VirtualSlot.h"

#include "orvane/engine/CoreContext.h"
#include "orvane/base/DeviceConfig.h"
#include "orvane/base/RenderCapabilities.h"
#include "orvane/scene/AlphaMeshNode.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LineStyle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace OV::Test
{

namespace
{

constexpr float kLargest = std::numeric_limits<float>::max();

std::vector<float> DrawnZ(const Scene2D& layer)
{
    std::vector<float> z;
    for (const AlphaMeshNode* item : layer.GetZOrderedDrawItems())
    {
        z.push_back(item->z);
    }
    return z;
}

TEST(Scene2D, StartsDirtyWithoutSizeAndWithUpdateIDOne)
{
    CoreContext context(nullptr, nullptr);
    const Scene2D layer(&context);
    EXPECT_EQ(layer.GetContext(), &context);
    EXPECT_EQ(layer.screenWidth, 0.0f);
    EXPECT_EQ(layer.screenHeight, 0.0f);
    EXPECT_EQ(layer.nearZ, 0.0f);
    EXPECT_EQ(layer.farZ, 1.0f);
    EXPECT_TRUE(layer.IsDirty());
    EXPECT_EQ(layer.GetUpdateID(), 1u);
    EXPECT_EQ(Scene2D(nullptr).GetContext(), nullptr);
}

TEST(Scene2D, UpdateGraphOfANewLayerLeavesItCleanWithUpdateIDTwo)
{
    Scene2D layer(nullptr);
    Scene& scene = layer;
    scene.UpdateGraph(640.0f, 480.0f);
    EXPECT_FALSE(layer.IsDirty());
    EXPECT_EQ(layer.GetUpdateID(), 2u);
}

TEST(Scene2D, UpdateGraphKeepsTheSizeAndPassesItToTheCamera)
{
    Scene2D layer(nullptr);
    layer.UpdateGraph(640.0f, 480.0f);
    EXPECT_EQ(layer.screenWidth, 640.0f);
    EXPECT_EQ(layer.screenHeight, 480.0f);
    EXPECT_EQ(layer.GetCameraNode()->screenWidth, 640.0f);
    EXPECT_EQ(layer.GetCameraNode()->screenHeight, 480.0f);

    // Also when nothing else has changed.
    ASSERT_FALSE(layer.IsDirty());
    layer.UpdateGraph(320.0f, 200.0f);
    EXPECT_EQ(layer.screenWidth, 320.0f);
    EXPECT_EQ(layer.GetCameraNode()->screenHeight, 200.0f);
}

TEST(Scene2D, UpdateGraphCopesWithALayerThatHasLostItsCamera)
{
    Scene2D layer(nullptr);
    layer.DeleteSubtree(layer.GetCameraNode());
    layer.UpdateGraph(640.0f, 480.0f);
    EXPECT_EQ(layer.screenWidth, 640.0f);
    EXPECT_FALSE(layer.IsDirty());
}

TEST(Scene2D, UpdateGraphCopesWithALayerThatHasLostItsRoot)
{
    for (const bool withShape : {false, true})
    {
        Scene2D layer(nullptr);
        const auto kept = std::make_unique<Shape2DNode>(&layer);
        if (withShape)
        {
            AddLayerMesh(layer, *kept, *AddLayerMaterial(layer, 0.5f));
        }
        layer.DeleteSubtree(layer.GetRoot());
        layer.UpdateGraph(640.0f, 480.0f);
        layer.MarkDirty();
        layer.UpdateGraph(320.0f, 480.0f);
        EXPECT_EQ(layer.nearZ, kLargest);
        EXPECT_EQ(layer.farZ, -kLargest);
        EXPECT_FALSE(layer.IsDirty());
        EXPECT_EQ(layer.GetZOrderedDrawItems().size(), withShape ? 1u : 0u);
        layer.Clear();
        layer.UpdateGraph(320.0f, 480.0f);
        EXPECT_NE(layer.GetRoot(), nullptr);
    }
}

TEST(Scene2D, AnEmptyLayerHasTheRangeOfNothing)
{
    Scene2D layer(nullptr);
    layer.UpdateGraph(640.0f, 480.0f);
    EXPECT_EQ(layer.nearZ, kLargest);
    EXPECT_EQ(layer.farZ, -kLargest);
}

TEST(Scene2D, TheRangeHoldsTheDepthsOfAllShapesOnTheScreen)
{
    Scene2D layer(nullptr);
    Material* const material = AddLayerMaterial(layer, 1.0f);
    for (const float z : {-3.0f, 2.0f, 7.0f})
    {
        AddLayerMesh(layer, *AddShapeNode(layer, 50, 50, z), *material);
    }
    AddLayerMesh(layer, *AddShapeNode(layer, 500, 50, 90), *material);
    layer.UpdateGraph(100.0f, 100.0f);
    EXPECT_EQ(layer.nearZ, -7.0f);
    EXPECT_EQ(layer.farZ, 3.0f);
}

TEST(Scene2D, ACleanUpdateKeepsRangeAndOrder)
{
    Scene2D layer(nullptr);
    Material* const material = AddLayerMaterial(layer, 0.5f);
    AddLayerMesh(layer, *AddShapeNode(layer, 50, 50, 4), *material);
    AddLayerMesh(layer, *AddShapeNode(layer, 50, 50, 1), *material);
    layer.UpdateGraph(100.0f, 100.0f);
    layer.UpdateGraph(100.0f, 100.0f);
    EXPECT_EQ(layer.nearZ, -4.0f);
    EXPECT_EQ(layer.farZ, -1.0f);
    EXPECT_THAT(DrawnZ(layer), testing::ElementsAre(1.0f, 4.0f));
}

TEST(Scene2D, TransparentShapesAreOrderedByAscendingZAcrossMaterials)
{
    Scene2D layer(nullptr);
    Material* const first = AddLayerMaterial(layer, 0.5f);
    Material* const second = AddLayerMaterial(layer, 0.5f);
    AddLayerMesh(layer, *AddShapeNode(layer, 50, 50, 3), *first);
    AddLayerMesh(layer, *AddShapeNode(layer, 50, 50, -2), *second);
    AddLayerMesh(layer, *AddShapeNode(layer, 50, 50, 1), *first);
    AddLayerMesh(layer, *AddShapeNode(layer, 50, 50, 8), *second);
    layer.UpdateGraph(100.0f, 100.0f);
    EXPECT_THAT(DrawnZ(layer), testing::ElementsAre(-2.0f, 1.0f, 3.0f, 8.0f));
}

TEST(Scene2D, TheOrderGoesByTheCentreOfTheMesh)
{
    Scene2D layer(nullptr);
    Material* const material = AddLayerMaterial(layer, 0.5f);
    Mesh* const lifted = AddLayerMesh(layer, *AddShapeNode(layer, 50, 50, 0), *material);
    lifted->GetSphere().center = Vector(0, 0, 5);
    Mesh* const flat = AddLayerMesh(layer, *AddShapeNode(layer, 50, 50, 4), *material);
    layer.UpdateGraph(100.0f, 100.0f);
    ASSERT_EQ(layer.GetZOrderedDrawItems().size(), 2u);
    EXPECT_EQ(layer.GetZOrderedDrawItems()[0]->mesh, flat);
    EXPECT_EQ(layer.GetZOrderedDrawItems()[1]->mesh, lifted);
}

TEST(Scene2D, OpaqueShapesAreNotInTheOrder)
{
    Scene2D layer(nullptr);
    AddLayerMesh(layer, *AddShapeNode(layer, 50, 50, 0), *AddLayerMaterial(layer, 1.0f));
    layer.UpdateGraph(100.0f, 100.0f);
    EXPECT_TRUE(layer.GetZOrderedDrawItems().empty());
}

TEST(Scene2D, AShapeWithoutAPlaceInZIsDrawnLast)
{
    Scene2D layer(nullptr);
    Material* const material = AddLayerMaterial(layer, 0.5f);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    for (const float z : {2.0f, nan, -1.0f, nan, 0.0f})
    {
        AddLayerMesh(layer, *AddShapeNode(layer, 50, 50, z), *material);
    }
    layer.UpdateGraph(100.0f, 100.0f);
    EXPECT_THAT(DrawnZ(layer),
                testing::ElementsAre(-1.0f, 0.0f, 2.0f, testing::IsNan(), testing::IsNan()));
}

TEST(Scene2D, ResetPickingReachesBothMaterialLists)
{
    Scene2D layer(nullptr);
    Shape2DNode* const opaque = AddShapeNode(layer, 0, 0, 0);
    AddLayerMesh(layer, *opaque, *AddLayerMaterial(layer, 1.0f));
    Shape2DNode* const transparent = AddShapeNode(layer, 0, 0, 0);
    AddLayerMesh(layer, *transparent, *AddLayerMaterial(layer, 0.5f));
    Shape2DNode* const second = AddShapeNode(layer, 0, 0, 0);
    AddLayerMesh(layer, *second, *layer.GetAlphaMaterials()[0]);
    opaque->pickState = 2;
    transparent->pickState = 3;
    second->pickState = 4;
    layer.ResetPicking();
    EXPECT_EQ(opaque->pickState, 0u);
    EXPECT_EQ(transparent->pickState, 0u);
    EXPECT_EQ(second->pickState, 0u);
}

TEST(Scene2D, ResetPickingPassesOverNodesOfOtherKindsAndShapesWithoutMaterial)
{
    Scene2D layer(nullptr);
    Material* const material = AddLayerMaterial(layer, 1.0f);
    auto* plain = new MeshNode(&layer);
    layer.GetRoot()->AddChild(plain, false);
    AddLayerMesh(layer, *plain, *material);
    plain->SetFlags(NodeFlagNoHitTest, false);
    Shape2DNode* const bare = AddShapeNode(layer, 0, 0, 0);
    bare->pickState = 3;
    layer.ResetPicking();
    EXPECT_EQ(plain->GetFlags(), unsigned{NodeFlagNoHitTest});
    EXPECT_EQ(bare->pickState, 3u);
}

/// The meshes of the draw items, bottom one first.
std::vector<Mesh*> DrawnMeshes(const Scene2D& layer)
{
    std::vector<Mesh*> meshes;
    for (const AlphaMeshNode* item : layer.GetZOrderedDrawItems())
    {
        meshes.push_back(item->mesh);
    }
    return meshes;
}

/// Sees to it that operations of the base reach the layer's own.
class NotingLayer : public Scene2D
{
public:
    NotingLayer() : Scene2D(nullptr) {}

    bool AddLineStyle(LineStyle* style) override
    {
        calls.push_back("AddLineStyle");
        return Scene2D::AddLineStyle(style);
    }

    void UpdateGraph(float width, float height) override
    {
        calls.push_back("UpdateGraph");
        Scene2D::UpdateGraph(width, height);
    }

    std::vector<std::string> calls;

protected:
    void ProcessZOrderedDrawItems() override
    {
        calls.push_back("ProcessZOrderedDrawItems");
        Scene2D::ProcessZOrderedDrawItems();
    }
};

TEST(Scene2D, KeepsTheOrderOfTheScenesVirtualOperations)
{
    struct Open : Scene2D
    {
        using Scene2D::ProcessZOrderedDrawItems;
    };
    EXPECT_EQ(VirtualSlot(&Scene2D::Clear), 1);
    EXPECT_EQ(VirtualSlot(static_cast<bool (Scene2D::*)(LineStyle*)>(&Scene2D::AddLineStyle)), 5);
    EXPECT_EQ(VirtualSlot(&Scene2D::UpdateGraph), 7);
    EXPECT_EQ(VirtualSlot(&Open::ProcessZOrderedDrawItems), 11);
    EXPECT_EQ(VirtualSlot(&Scene2D::AddSprite), -1);
    EXPECT_EQ(VirtualSlot(&Scene2D::AddText), -1);
}

TEST(Scene2D, DerivedClassesAreReachedThroughTheScene)
{
    NotingLayer layer;
    Scene& scene = layer;
    scene.AddLineStyle(new LineStyle("style"));
    scene.UpdateGraph(10, 10);
    EXPECT_THAT(layer.calls, testing::ElementsAre("AddLineStyle", "UpdateGraph", "ProcessZOrderedDrawItems"));
    scene.UpdateGraph(10, 10);
    EXPECT_THAT(layer.calls, testing::ElementsAre("AddLineStyle", "UpdateGraph", "ProcessZOrderedDrawItems",
                                                  "UpdateGraph"));
}

TEST(Scene2D, ALineStyleLosesItsFog)
{
    Scene2D layer(nullptr);
    auto* const style = new LineStyle("style");
    style->fog = true;
    Scene& scene = layer;
    EXPECT_TRUE(scene.AddLineStyle(style));
    EXPECT_FALSE(style->fog);
    EXPECT_EQ(layer.GetLineStyles().size(), 1u);
    style->fog = true;
    EXPECT_FALSE(scene.AddLineStyle(style)) << "it is in a scene already";
    EXPECT_FALSE(style->fog);
    EXPECT_FALSE(scene.AddLineStyle(nullptr));
}

TEST(Scene2D, ListsOfTextsAndSpritesKeepTheirOrderAndMarkTheLayer)
{
    Scene2D layer(nullptr);
    Scene2D other(nullptr);
    std::vector<std::unique_ptr<Sprite>> sprites;
    std::vector<std::unique_ptr<Text>> texts;
    for (int i = 0; i < 3; ++i)
    {
        sprites.push_back(std::make_unique<Sprite>(&other, new Rect(&other, 1, 1, false)));
        texts.push_back(std::make_unique<Text>("Sans", 12, "x", &other, false, false, 0));
    }
    const auto cleanUp = [&] { layer.UpdateGraph(10, 10); };
    for (int i = 0; i < 3; ++i)
    {
        cleanUp();
        layer.AddSprite(sprites[i].get());
        EXPECT_TRUE(layer.IsDirty());
        cleanUp();
        layer.AddText(texts[i].get());
        EXPECT_TRUE(layer.IsDirty());
    }
    cleanUp();
    layer.RemoveSprite(sprites[1].get());
    EXPECT_TRUE(layer.IsDirty());
    EXPECT_THAT(layer.GetSprites(), testing::ElementsAre(sprites[0].get(), sprites[2].get()));
    cleanUp();
    layer.RemoveSprite(sprites[1].get());
    EXPECT_TRUE(layer.IsDirty()) << "even though it wasn't there";
    cleanUp();
    layer.RemoveText(texts[0].get());
    EXPECT_TRUE(layer.IsDirty());
    EXPECT_THAT(layer.GetTexts(), testing::ElementsAre(texts[1].get(), texts[2].get()));
    cleanUp();
    layer.RemoveText(texts[0].get());
    EXPECT_TRUE(layer.IsDirty()) << "even though it wasn't there";
    EXPECT_EQ(layer.GetTexts().size(), 2u);
    for (int i = 0; i < 3; ++i)
    {
        layer.RemoveSprite(sprites[i].get());
        layer.RemoveText(texts[i].get());
    }
}

TEST(Scene2D, SpritesAtEqualZLieLaterAboveEarlierAcrossMaterials)
{
    Scene2D layer(nullptr);
    auto* const shared = new Material2D("shared");
    layer.AddMaterial(shared);
    std::vector<std::unique_ptr<Sprite>> sprites;
    std::vector<Mesh*> expected;
    for (int i = 0; i < 60; ++i)
    {
        auto* const shape = new Rect(&layer, 10, 10, false);
        sprites.push_back(i % 3 == 0 ? std::make_unique<Sprite>(shared, &layer, shape)
                                     : std::make_unique<Sprite>(&layer, shape));
        Place(*sprites.back()->GetNode(), static_cast<float>(i * 7 % 10), 0, 2);
        expected.push_back(shape);
    }
    layer.UpdateGraph(100, 100);
    EXPECT_EQ(DrawnMeshes(layer), expected);
    sprites[5]->SetOverrideMaterial(shared);
    layer.UpdateGraph(100, 100);
    EXPECT_EQ(DrawnMeshes(layer), expected) << "another material does not lift a sprite";
}

TEST(Scene2D, ASpriteCountsAsLaterThanThoseBeforeItWhateverTheAgeOfItsShape)
{
    Scene2D layer(nullptr);
    std::vector<Rect*> shapes;
    for (int i = 0; i < 20; ++i)
    {
        shapes.push_back(new Rect(&layer, 10, 10, false));
    }
    auto* const unused = new Rect(&layer, 10, 10, false);
    std::vector<std::unique_ptr<Sprite>> sprites;
    std::vector<Mesh*> expected;
    for (int i = 0; i < 20; ++i)
    {
        Rect* const shape = shapes[static_cast<std::size_t>(i * 7 % 20)];
        sprites.push_back(std::make_unique<Sprite>(&layer, shape));
        expected.push_back(shape);
    }
    // What stands in the layer without a sprite counts by its own age.
    Material* const material = AddLayerMaterial(layer, 0.5f);
    Mesh* const later = AddLayerMesh(layer, *AddShapeNode(layer, 0, 0, 0), *material);
    material->AddMesh(unused);
    unused->AddNode(AddShapeNode(layer, 0, 0, 0));
    expected.insert(expected.begin(), unused);
    expected.push_back(later);
    layer.UpdateGraph(100, 100);
    EXPECT_EQ(DrawnMeshes(layer), expected);
}

TEST(Scene2D, NodesOfOneShapeAtEqualZLieInTheOrderOfTheShape)
{
    Scene2D layer(nullptr);
    Material* const material = AddLayerMaterial(layer, 0.5f);
    std::vector<MeshNode*> nodes;
    nodes.push_back(AddShapeNode(layer, 0, 0, 1));
    Mesh* const mesh = AddLayerMesh(layer, *nodes.front(), *material);
    for (int i = 1; i < 40; ++i)
    {
        nodes.push_back(AddShapeNode(layer, 0, 0, 1));
        mesh->AddNode(nodes.back());
    }
    layer.UpdateGraph(100, 100);
    std::vector<MeshNode*> drawn;
    for (const AlphaMeshNode* item : layer.GetZOrderedDrawItems())
    {
        drawn.push_back(item->node);
    }
    EXPECT_EQ(drawn, nodes);
}

TEST(Scene2D, BackdropsLieBehindTheirTextAtAnyZ)
{
    for (const float z : {0.0f, -1.0f, 1.0e6f, -1.0e6f, 3.0e8f, -3.0e8f, 1.0e30f})
    {
        SCOPED_TRACE(z);
        Scene2D layer(nullptr);
        const PlainMeasure measure;
        Text text("Sans", 20, "word", &layer, false, false, 0);
        text.AddBackdrop(Color(1, 0, 0, 1), 50, 30, 0, 0);
        Place(*text.GetInstance(0), 0, 0, z);
        layer.UpdateGraph(100, 100);
        ASSERT_EQ(layer.GetZOrderedDrawItems().size(), 2u);
        EXPECT_EQ(layer.GetZOrderedDrawItems()[0]->mesh, text.GetLeftBackdrop());
    }
}

TEST(Scene2D, AShapeShiftedInZIsSortedByIt)
{
    Scene2D layer(nullptr);
    const Sprite lower(&layer, new Rect(&layer, 10, 10, false));
    const Sprite upper(&layer, new Rect(&layer, 10, 10, false));
    layer.UpdateGraph(100, 100);
    ASSERT_EQ(DrawnMeshes(layer).back(), upper.GetShape());
    lower.GetShape()->ShiftZ(0.5f);
    ASSERT_TRUE(layer.IsDirty());
    layer.UpdateGraph(100, 100);
    EXPECT_EQ(DrawnMeshes(layer).back(), lower.GetShape());
}

TEST(Scene2D, AChangedSizeRefreshesMaterialsScaledBelowOneAlone)
{
    Scene2D layer(nullptr);
    layer.UpdateGraph(100, 100);
    struct
    {
        const char* label;
        float uScale;
        bool text, opaque, refreshed;
    } const cases[] = {
        {"scale 1", 1.0f, true, false, false},
        {"just below 1", 0.999f, true, false, true},
        {"above 1", 1.5f, true, false, false},
        {"opaque", 0.5f, true, true, true},
        {"without anything to make it of", 0.5f, false, false, false},
    };
    for (const auto& expected : cases)
    {
        SCOPED_TRACE(expected.label);
        auto* const material = new Material2D("material");
        material->transparent = !expected.opaque;
        material->uScale = expected.uScale;
        if (expected.text)
        {
            material->text = "word";
        }
        layer.AddMaterial(material);
        int alive = 0;
        material->SetRenderData(new CountedData(alive));
        layer.UpdateGraph(layer.screenWidth, 100);
        EXPECT_EQ(alive, 1) << "the same size";
        layer.UpdateGraph(layer.screenWidth + 1, 100);
        EXPECT_EQ(alive, expected.refreshed ? 0 : 1);
        delete material;
    }
    auto* const solid = AddLayerMaterial(layer, 1.0f);
    solid->uScale = 0.5f;
    int alive = 0;
    solid->SetRenderData(new CountedData(alive));
    layer.UpdateGraph(100, 300);
    EXPECT_EQ(alive, 1) << "no Material2D";
}

TEST(Scene2D, AChangedSizeCullsAnew)
{
    Scene2D layer(nullptr);
    Shape2DNode* const node = AddShapeNode(layer, 500, 50, 0);
    AddLayerMesh(layer, *node, *AddLayerMaterial(layer, 1.0f));
    layer.UpdateGraph(100, 100);
    ASSERT_TRUE(node->GetFlags() & NodeFlagCulled);
    layer.UpdateGraph(600, 100);
    EXPECT_FALSE(node->GetFlags() & NodeFlagCulled);
    EXPECT_FALSE(layer.IsDirty());
}

TEST(Scene2D, ClearLeavesALayerThatWorks)
{
    Scene2D layer(nullptr);
    const Sprite sprite(&layer, new Rect(&layer, 10, 10, false));
    layer.UpdateGraph(100, 100);
    layer.Clear();
    EXPECT_TRUE(layer.GetSprites().empty());
    const Sprite second(&layer, new Rect(&layer, 10, 10, false));
    layer.UpdateGraph(100, 100);
    EXPECT_EQ(layer.GetZOrderedDrawItems().size(), 1u);
}

}  // namespace

}  // namespace OV::Test
