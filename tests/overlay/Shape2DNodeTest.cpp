#include "orvane/overlay/Shape2DNode.h"

#include "tests/overlay/LayerShapes.h"
#include "tests/overlay/OverlayDoubles.h"
#include "tests/support/VirtualSlot.h"

#include "orvane/overlay/Arrow.h"
#include "orvane/scene/NodeType.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace OV::Test
{

namespace
{

class Shape2DNodeTest : public testing::Test
{
protected:
    Shape2DNodeTest() { layer.UpdateGraph(100.0f, 80.0f); }

    // A shape of 10 by 10 pixels whose globals are up to date.
    Shape2DNode* AddSquare(float x, float y, float z = 0)
    {
        Shape2DNode* const node = AddShapeNode(layer, x, y, z);
        AddLayerMesh(layer, *node, *material);
        node->UpdateGraph();
        return node;
    }

    static bool IsCulled(const Shape2DNode& node) { return (node.GetFlags() & NodeFlagCulled) != 0; }

    void Cull(Node& node) { node.UpdateCulling(nearest, farthest); }

    Scene2D layer{nullptr};
    Material* material = AddLayerMaterial(layer, 1.0f);
    float nearest = 1000.0f;
    float farthest = -1000.0f;
};

TEST_F(Shape2DNodeTest, KnowsItsLayerAndItsKinds)
{
    Shape2DNode* const node = AddShapeNode(layer, 0, 0, 0);
    EXPECT_EQ(node->GetScene2D(), &layer);
    EXPECT_EQ(node->GetScene(), &layer);
    EXPECT_EQ(node->Type(), 0x53326E44);
    EXPECT_TRUE(node->HasType(NodeTypeShape2DNode));
    EXPECT_TRUE(node->HasType(NodeTypeMeshNode));
    EXPECT_TRUE(node->HasType(NodeTypeNode));
    EXPECT_FALSE(node->HasType(NodeTypeCameraNode));
    EXPECT_FALSE(node->HasType(NodeTypeShape2D));
}

TEST_F(Shape2DNodeTest, PickStatesReadAsCapturedMovedAndReleased)
{
    struct
    {
        unsigned state;
        bool captured, moved, released;
    } const cases[] = {{0, false, false, false}, {1, true, false, false},  {2, true, false, false},
                       {3, false, true, false},  {4, false, false, true}, {5, false, false, false}};
    Shape2DNode* const node = AddShapeNode(layer, 0, 0, 0);
    EXPECT_EQ(node->pickState, 0u);
    for (const auto& expected : cases)
    {
        SCOPED_TRACE(expected.state);
        node->pickState = expected.state;
        EXPECT_EQ(node->PickCaptured(), expected.captured);
        EXPECT_EQ(node->PickMoved(), expected.moved);
        EXPECT_EQ(node->PickReleased(), expected.released);
    }
}

TEST_F(Shape2DNodeTest, UpdateGraphWidensTheRangeOfTheLayer)
{
    Shape2DNode* const node = AddShapeNode(layer, 0, 0, 5);
    layer.nearZ = 0.0f;
    layer.farZ = 1.0f;
    node->UpdateGraph();
    EXPECT_EQ(layer.nearZ, -5.0f);
    EXPECT_EQ(layer.farZ, 1.0f);
    EXPECT_EQ(node->GetGlobal().GetPosition(), Vector(0, 0, 5));
}

TEST_F(Shape2DNodeTest, UpdateGraphKeepsTheInverseOfTheGlobalTransform)
{
    struct Open : Shape2DNode
    {
        using Shape2DNode::inverseGlobal;
        using Shape2DNode::Shape2DNode;
    };
    auto* node = new Open(&layer);
    layer.GetRoot()->AddChild(node, false);
    EXPECT_EQ(node->inverseGlobal, Transform());
    Transform place;
    place.SetPosition(Vector(3, -2, 1));
    node->SetLocal(place);
    node->UpdateGraph();
    Vector back;
    back.Multiply(node->inverseGlobal, Vector(3, -2, 1));
    EXPECT_EQ(back, Vector(0, 0, 0));
}

TEST_F(Shape2DNodeTest, IsCulledWhenItLeavesTheScreenOnAnySide)
{
    struct
    {
        const char* label;
        float x, y;
        bool culled;
    } const cases[] = {
        {"inside", 50, 40, false},          {"touches the right edge", 105, 40, false},
        {"past the right edge", 105.5f, 40, true}, {"touches the left edge", -5, 40, false},
        {"past the left edge", -5.5f, 40, true},   {"touches the top", 50, 85, false},
        {"past the top", 50, 85.5f, true},         {"touches the bottom", 50, -5, false},
        {"past the bottom", 50, -5.5f, true},
    };
    for (const auto& expected : cases)
    {
        SCOPED_TRACE(expected.label);
        Shape2DNode* const node = AddSquare(expected.x, expected.y, 2);
        nearest = 1000.0f;
        farthest = -1000.0f;
        Cull(*node);
        EXPECT_EQ(IsCulled(*node), expected.culled);
        EXPECT_EQ(nearest, expected.culled ? 1000.0f : -2.0f);
        EXPECT_EQ(farthest, expected.culled ? -1000.0f : -2.0f);
    }
}

TEST_F(Shape2DNodeTest, ComesBackWhenItIsOnTheScreenAgain)
{
    Shape2DNode* const node = AddSquare(500, 40);
    Cull(*node);
    EXPECT_TRUE(IsCulled(*node));
    layer.screenWidth = 600.0f;
    Cull(*node);
    EXPECT_FALSE(IsCulled(*node));
}

TEST_F(Shape2DNodeTest, CornersAreOrderedAfterAMirroringTransform)
{
    Shape2DNode* const node = AddSquare(50, 40);
    Transform mirrored = node->GetLocal();
    mirrored.SetScale(Vector(-1, 1, 1));
    node->SetLocal(mirrored);
    node->UpdateGraph();
    Cull(*node);
    EXPECT_FALSE(IsCulled(*node));
}

TEST_F(Shape2DNodeTest, TheLastMeshAloneDecides)
{
    Shape2DNode* const node = AddSquare(50, 40);
    Mesh* const outside = AddLayerMesh(layer, *node, *material);
    outside->GetRawMesh()->SetBBox(Vector(900, 0, 0), Vector(910, 10, 0));
    Cull(*node);
    EXPECT_TRUE(IsCulled(*node));
    EXPECT_EQ(nearest, 1000.0f);

    AddLayerMesh(layer, *node, *material);
    Cull(*node);
    EXPECT_FALSE(IsCulled(*node));
    EXPECT_EQ(nearest, 0.0f);
}

TEST_F(Shape2DNodeTest, ANodeWithoutMeshesIsNotCulled)
{
    Shape2DNode* const node = AddShapeNode(layer, 900, 0, 0);
    node->SetFlags(NodeFlagCulled, false);
    Cull(*node);
    EXPECT_FALSE(IsCulled(*node));
    EXPECT_EQ(nearest, 1000.0f);
    EXPECT_EQ(farthest, -1000.0f);
}

TEST_F(Shape2DNodeTest, WithoutBillboardTheRangeHoldsTheBoundingRadius)
{
    Shape2DNode* const node = AddSquare(50, 40, 2);
    Transform doubled = node->GetLocal();
    doubled.SetScale(Vector(1, 2, 1));
    node->SetLocal(doubled);
    node->UpdateGraph();
    node->DisableBillboard(true);
    Cull(*node);
    const float reach = 2.0f * node->GetMeshes()[0]->GetSphere().radius;
    ASSERT_GT(reach, 0.0f);
    EXPECT_FLOAT_EQ(nearest, -2.0f - reach);
    EXPECT_FLOAT_EQ(farthest, -2.0f + reach);

    node->DisableBillboard(false);
    nearest = 1000.0f;
    farthest = -1000.0f;
    Cull(*node);
    EXPECT_EQ(nearest, -2.0f);
    EXPECT_EQ(farthest, -2.0f);
}

TEST_F(Shape2DNodeTest, AHiddenNodeKeepsItsFlagsAndItsChildrenAreVisited)
{
    Shape2DNode* const parent = AddSquare(900, 40);
    Shape2DNode* const child = AddSquare(0, 0, 0);
    parent->AddChild(child, true);
    parent->SetFlags(NodeFlagHidden, false);
    child->UpdateGraph();
    Cull(*parent);
    EXPECT_FALSE(IsCulled(*parent));
    EXPECT_EQ(nearest, 0.0f);

    parent->SetFlags(NodeFlagCulled, false);
    Cull(*parent);
    EXPECT_TRUE(IsCulled(*parent));
}

TEST_F(Shape2DNodeTest, ChildrenOfAVisibleNodeAreVisitedToo)
{
    Shape2DNode* const parent = AddSquare(50, 40, 1);
    Shape2DNode* const child = AddSquare(900, 40, 9);
    parent->AddChild(child, true);
    Cull(*parent);
    EXPECT_FALSE(IsCulled(*parent));
    EXPECT_TRUE(IsCulled(*child));
    EXPECT_EQ(farthest, -1.0f);
}

TEST_F(Shape2DNodeTest, ReplacesTheNodesOperationsAndAddsNone)
{
    EXPECT_EQ(VirtualSlot(&Shape2DNode::UpdateGraph), 3);
    EXPECT_EQ(VirtualSlot(&Shape2DNode::UpdateCulling), 4);
    EXPECT_EQ(VirtualSlot(&Shape2DNode::Type), 7);
    EXPECT_EQ(VirtualSlot(&Shape2DNode::HasType), 8);
    EXPECT_EQ(VirtualSlot(&Shape2DNode::IsInside), -1);
    Shape2DNode* const node = AddShapeNode(layer, 0, 0, 5);
    Node& base = *node;
    layer.nearZ = 0.0f;
    base.UpdateGraph();
    EXPECT_EQ(layer.nearZ, -5.0f);
}

TEST_F(Shape2DNodeTest, PickStateHasASetter)
{
    Shape2DNode* const node = AddShapeNode(layer, 0, 0, 0);
    node->SetPickState(4);
    EXPECT_EQ(node->pickState, 4u);
    EXPECT_TRUE(node->PickReleased());
}

TEST_F(Shape2DNodeTest, IsInsideAsksItsShapesInTheirOwnSpace)
{
    Shape2DNode* const node = AddShapeNode(layer, 30, 20, 7);
    auto* const rect = new Rect(&layer, 10, 5, false);
    rect->AddNode(node);
    node->UpdateGraph();
    EXPECT_TRUE(node->IsInside(30, 20));
    EXPECT_TRUE(node->IsInside(40, 25));
    EXPECT_FALSE(node->IsInside(29.9f, 20));
    EXPECT_FALSE(node->IsInside(40.1f, 25));

    Transform turned = node->GetLocal();
    turned.SetRotation(Quaternion(0.0f, 0.0f, std::sqrt(0.5f), std::sqrt(0.5f)));
    turned.SetScale(Vector(2, 2, 1));
    node->SetLocal(turned);
    node->UpdateGraph();
    EXPECT_TRUE(node->IsInside(21, 39)) << "turned by a quarter to the left, twice as large";
    EXPECT_FALSE(node->IsInside(19, 39));
    EXPECT_FALSE(node->IsInside(35, 22));
}

TEST_F(Shape2DNodeTest, IsInsideOfAnyShapeIsEnough)
{
    Shape2DNode* const node = AddShapeNode(layer, 0, 0, 0);
    (new Shape2D(&layer))->AddNode(node);
    (new Arrow(10, 1, &layer))->AddNode(node);
    AddLayerMesh(layer, *node, *material);
    auto* const rect = new Rect(&layer, 5, 5, false);
    rect->ShiftX(50);
    rect->AddNode(node);
    node->UpdateGraph();
    EXPECT_TRUE(node->IsInside(5, 0)) << "the arrow";
    EXPECT_TRUE(node->IsInside(52, 2)) << "the rectangle";
    EXPECT_FALSE(node->IsInside(30, 2));
    EXPECT_FALSE(AddShapeNode(layer, 0, 0, 0)->IsInside(0, 0)) << "no shape";
}

TEST_F(Shape2DNodeTest, AShapeThatIsNeitherRectangleNorArrowIsNeverInside)
{
    Shape2DNode* const node = AddShapeNode(layer, 0, 0, 0);
    auto* const shape = new Shape2D(&layer);
    shape->GetRawMesh()->SetPositionBuffer({Vector(-9, -9, 0), Vector(9, -9, 0), Vector(0, 9, 0)});
    shape->AddNode(node);
    node->UpdateGraph();
    EXPECT_FALSE(node->IsInside(0, 0));
}

TEST_F(Shape2DNodeTest, ALayerWithoutHeightAnswersFalseToEveryIsInside)
{
    Scene2D flat(nullptr);
    Shape2DNode* const node = AddShapeNode(flat, 0, 0, 0);
    (new Rect(&flat, 10, 10, false))->AddNode(node);
    flat.UpdateGraph(100, 0);
    EXPECT_FALSE(node->IsInside(5, 5));
    flat.UpdateGraph(100, 1);
    EXPECT_TRUE(node->IsInside(5, 5));
}

TEST_F(Shape2DNodeTest, WithoutALayerNothingIsInside)
{
    Rect rect(nullptr, 10, 10, false);
    Shape2DNode node(nullptr);
    rect.AddNode(&node);
    EXPECT_FALSE(node.IsInside(5, 5));
    node.UpdateGraph();
    float nearValue = 0.0f;
    float farValue = 0.0f;
    node.UpdateCulling(nearValue, farValue);
    EXPECT_EQ(node.GetFlags() & NodeFlagCulled, 0u);
}

TEST_F(Shape2DNodeTest, AFlatScaleHasNoInside)
{
    Shape2DNode* const node = AddSquare(0, 0);
    (new Rect(&layer, 10, 10, false))->AddNode(node);
    Transform none;
    none.SetScale(Vector(0, 0, 0));
    node->SetLocal(none);
    node->UpdateGraph();
    EXPECT_FALSE(node->IsInside(0, 0));
}

}  // namespace

}  // namespace OV::Test
