#include "orvane/overlay/Scene2D.h"

#include "tests/overlay/LayerShapes.h"

#include "orvane/engine/CoreContext.h"
#include "orvane/engine/DeviceConfig.h"
#include "orvane/engine/RenderCapabilities.h"
#include "orvane/scene/AlphaMeshNode.h"
#include "orvane/scene/CameraNode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

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

}  // namespace

}  // namespace OV::Test
