#include "orvane/scene/MeshNode.h"

#include "orvane/scene/NodeMaterial.h"
#include "tests/scene/SceneDoubles.h"
#include "tests/support/VirtualSlot.h"

#include <limits>

namespace OV
{
namespace
{

using namespace Test;
using ::testing::Test;

constexpr float largest = std::numeric_limits<float>::max();

struct MeshNodeParts : MeshNode
{
    static void Push(MeshNode& node, NodeMaterial* material) { (node.*&MeshNodeParts::PushNodeMaterial)(material); }
    static void Remove(MeshNode& node, NodeMaterial* material)
    {
        (node.*&MeshNodeParts::RemoveNodeMaterial)(material);
    }
};

TEST(MeshNode, StartsAsStated)
{
    MeshNode node(nullptr);
    EXPECT_EQ(node.GetFlags(), 0u);
    EXPECT_EQ(node.GetRenderData(), nullptr);
    EXPECT_EQ(node.GetCollisonData(), nullptr);
    EXPECT_TRUE(node.GetMeshes().empty());
    EXPECT_FALSE(node.UsingDrawID());
    EXPECT_EQ(node.CurrentNodeMaterial(), nullptr);
}

TEST(MeshNode, OwnsRenderDataAndCollisionData)
{
    int deaths = 0;
    {
        MeshNode node(nullptr);
        ExpectOwningSlot([&] { return node.GetRenderData(); }, [&](Object* data) { node.SetRenderData(data); });
        ExpectOwningSlot([&] { return node.GetCollisonData(); },
                         [&](Object* data) { node.SetCollisionData(data); });
        node.SetRenderData(Counted(deaths));
        node.SetCollisionData(Counted(deaths));
    }
    EXPECT_EQ(deaths, 2);
}

TEST(MeshNode, FlagsHaveTheirBits)
{
    EXPECT_EQ(NodeFlagHidden, 0x01u);
    EXPECT_EQ(NodeFlagCulled, 0x02u);
    EXPECT_EQ(NodeFlagHasNodeMaterial, 0x04u);
    EXPECT_EQ(NodeFlagNoHitTest, 0x08u);
}

/// Below the top: a MeshNode, a plain Node, and a MeshNode below each of them.
class FlaggedTree : public Test
{
protected:
    FlaggedTree()
    {
        scene.GetRoot()->AddChild(top, false);
        top->AddChild(plain, false);
        top->AddChild(direct, false);
        plain->AddChild(belowPlain, false);
        direct->AddChild(belowDirect, false);
        scene.UpdateGraph(1, 1);
    }

    void ExpectFlags(unsigned ofTop, unsigned ofDirect, unsigned ofBelowDirect, unsigned ofBelowPlain) const
    {
        EXPECT_EQ(top->GetFlags(), ofTop);
        EXPECT_EQ(direct->GetFlags(), ofDirect);
        EXPECT_EQ(belowDirect->GetFlags(), ofBelowDirect);
        EXPECT_EQ(belowPlain->GetFlags(), ofBelowPlain);
        EXPECT_FALSE(scene.IsDirty());
    }

    Scene scene;
    MeshNode* top = new MeshNode(&scene);
    Node* plain = new Node(&scene);
    MeshNode* direct = new MeshNode(&scene);
    MeshNode* belowPlain = new MeshNode(&scene);
    MeshNode* belowDirect = new MeshNode(&scene);
};

TEST_F(FlaggedTree, SetFlagsOrsInAndStopsAtANodeOfAnotherKind)
{
    direct->SetFlags(NodeFlagNoHitTest, false);
    top->SetFlags(NodeFlagHidden, true);
    ExpectFlags(0x01, 0x09, 0x01, 0x00);
    top->SetFlags(static_cast<NodeFlags>(0x100), false);
    ExpectFlags(0x101, 0x09, 0x01, 0x00);
}

TEST_F(FlaggedTree, ClearFlagsRemovesAndLeavesTheChildrenWhenNotRecursive)
{
    top->SetFlags(NodeFlagHidden | NodeFlagNoHitTest, true);
    belowPlain->SetFlags(NodeFlagHidden, false);
    top->ClearFlags(NodeFlagHidden, false);
    ExpectFlags(0x08, 0x09, 0x09, 0x01);
    top->ClearFlags(NodeFlagHidden | NodeFlagCulled, true);
    ExpectFlags(0x08, 0x08, 0x08, 0x01);
}

TEST(MeshNode, IsReadyToDrawWithoutADrawIDOrAtTheUpdateOfItsScene)
{
    Scene scene;
    MeshNode node(&scene);
    EXPECT_TRUE(node.ReadyToDraw());
    node.SetDrawID(2);
    EXPECT_TRUE(node.UsingDrawID());
    EXPECT_FALSE(node.ReadyToDraw());
    scene.UpdateGraph(1, 1);
    EXPECT_TRUE(node.ReadyToDraw());
    node.InvalidateDrawID();
    EXPECT_TRUE(node.UsingDrawID());
    EXPECT_FALSE(node.ReadyToDraw());
    node.SetDrawID(0);
    EXPECT_FALSE(node.UsingDrawID());
    EXPECT_TRUE(node.ReadyToDraw());

    MeshNode alone(nullptr);
    EXPECT_TRUE(alone.ReadyToDraw());
    alone.SetDrawID(1);
    EXPECT_FALSE(alone.ReadyToDraw());
}

TEST(MeshNode, TheFirstNodeMaterialPushedIsCurrent)
{
    NodeMaterial first;
    NodeMaterial second;
    MeshNode node(nullptr);
    MeshNodeParts::Push(node, &first);
    MeshNodeParts::Push(node, &second);
    MeshNodeParts::Push(node, &first);
    EXPECT_EQ(node.CurrentNodeMaterial(), &first);
    EXPECT_EQ(node.GetFlags(), 0x04u);
    MeshNodeParts::Remove(node, &first);
    EXPECT_EQ(node.CurrentNodeMaterial(), &second) << "pushed once, though twice asked";
    EXPECT_EQ(node.GetFlags(), 0x04u);
    MeshNodeParts::Remove(node, &first);
    EXPECT_EQ(node.CurrentNodeMaterial(), &second);
    MeshNodeParts::Remove(node, &second);
    EXPECT_EQ(node.CurrentNodeMaterial(), nullptr);
    EXPECT_EQ(node.GetFlags(), 0x00u);
}

TEST(MeshNode, RemovingAStrangerClearsTheFlagWhenNoMaterialIsLeft)
{
    NodeMaterial stranger;
    MeshNode node(nullptr);
    node.SetFlags(NodeFlagHasNodeMaterial | NodeFlagHidden, false);
    MeshNodeParts::Remove(node, &stranger);
    EXPECT_EQ(node.GetFlags(), 0x01u);
}

TEST(MeshNode, PushingWhatIsThereDoesNotSetTheFlagAgain)
{
    NodeMaterial material;
    MeshNode node(nullptr);
    MeshNodeParts::Push(node, &material);
    node.ClearFlags(NodeFlagHasNodeMaterial, false);
    MeshNodeParts::Push(node, &material);
    EXPECT_EQ(node.GetFlags(), 0x00u);
    MeshNodeParts::Remove(node, &material);
}

/// A camera at the origin that looks down -Z with sides at 45 degrees.
class SeenNodes : public Test
{
protected:
    SeenNodes()
    {
        scene.GetCameraNode()->SetFOV(std::atan(1.0f));
        scene.UpdateGraph(100.0f, 100.0f);
        scene.GetRoot()->AddChild(node, false);
    }

    Mesh* AddBall(MeshNode* holder, const Vector& center, float radius)
    {
        Mesh* const mesh = new Mesh(Ball(center, radius), &scene);
        mesh->AddNode(holder);
        return mesh;
    }

    bool Cull() { return node->FrustumCulling(nearValue, farValue); }

    void ExpectRange(float nearExpected, float farExpected) const
    {
        EXPECT_NEAR(nearValue, nearExpected, std::fabs(nearExpected) * 1e-5f);
        EXPECT_NEAR(farValue, farExpected, std::fabs(farExpected) * 1e-5f);
    }

    Scene scene;
    MeshNode* node = new MeshNode(&scene);
    float nearValue = largest;
    float farValue = -largest;
};

const Vector ahead(0, 0, -50);
const Vector beside(100, 0, -20);

TEST_F(SeenNodes, VisibleMeshGivesItsDepths)
{
    AddBall(node, ahead, 2);
    EXPECT_FALSE(Cull());
    ExpectRange(48, 52);
    EXPECT_EQ(node->GetFlags(), 0u);
    AddBall(node, Vector(0, 0, -70), 1);
    EXPECT_FALSE(Cull());
    ExpectRange(48, 71);
}

TEST_F(SeenNodes, RangeIsWidenedNeverNarrowed)
{
    nearValue = 10;
    farValue = 100;
    AddBall(node, ahead, 2);
    EXPECT_FALSE(Cull());
    ExpectRange(10, 100);
}

TEST_F(SeenNodes, MeshesOutsideBeforeTheFirstVisibleOneDoNotCount)
{
    AddBall(node, beside, 3);
    AddBall(node, ahead, 2);
    EXPECT_FALSE(Cull());
    ExpectRange(48, 52);
}

TEST_F(SeenNodes, MeshesOutsideAfterTheFirstVisibleOneCount)
{
    AddBall(node, ahead, 2);
    AddBall(node, beside, 3);
    EXPECT_FALSE(Cull());
    ExpectRange(17, 52);
}

TEST_F(SeenNodes, AllOutsideCullsTheNodeAndLeavesTheRange)
{
    nearValue = 5;
    farValue = 6;
    Mesh* const mesh = AddBall(node, beside, 3);
    AddBall(node, beside, 4);
    EXPECT_TRUE(Cull());
    ExpectRange(5, 6);
    EXPECT_EQ(node->GetFlags(), 0x02u);

    mesh->GetSphere().center = ahead;
    EXPECT_FALSE(Cull());
    EXPECT_EQ(node->GetFlags(), 0x00u) << "the next test clears the flag";
}

TEST_F(SeenNodes, NodeWithoutMeshesIsCulled)
{
    EXPECT_TRUE(Cull());
    EXPECT_EQ(node->GetFlags(), 0x02u);
    EXPECT_EQ(nearValue, largest);
    EXPECT_EQ(farValue, -largest);
}

TEST_F(SeenNodes, HiddenNodeIsNeitherCulledNorChanged)
{
    AddBall(node, ahead, 2);
    for (const unsigned before : {0x01u, 0x03u})
    {
        node->ClearFlags(static_cast<NodeFlags>(~0u), false);
        node->SetFlags(static_cast<NodeFlags>(before), false);
        EXPECT_FALSE(Cull());
        EXPECT_EQ(node->GetFlags(), before);
        EXPECT_EQ(nearValue, largest);
        EXPECT_EQ(farValue, -largest);
    }
}

TEST_F(SeenNodes, SphereIsPlacedByTheGlobalAndScaledByTheLargestScale)
{
    AddBall(node, Vector(0, 0, -5), 1);
    node->SetGlobal(Product(At(0, 0, -20), Scaled(1, 3, 2)));
    EXPECT_FALSE(Cull());
    ExpectRange(30 - 3, 30 + 3);

    // 30 deep the side is 30 away; the sphere's centre lies 4 past it, which is 2.83 off.
    node->SetGlobal(Product(At(34, 0, -20), Scaled(1, 3, 2)));
    EXPECT_FALSE(Cull()) << "conservative for a scale that is not even";
    node->SetGlobal(Product(At(34, 0, -20), Scaled(1, 1, 2)));
    EXPECT_TRUE(Cull());
}

TEST_F(SeenNodes, DepthsCountAlongTheSightOfTheSceneCamera)
{
    AddBall(node, Vector(30, 0, 0), 2);
    CameraNode camera(&scene);
    camera.SetGlobal(Product(At(-5, 0, 0), TurnedAboutY(-quarterTurn)));
    scene.SetCamera(&camera);
    scene.UpdateGraph(100.0f, 100.0f);
    EXPECT_FALSE(Cull());
    ExpectRange(33, 37);
}

TEST_F(SeenNodes, WithoutSceneOrCameraNothingIsTested)
{
    MeshNode free(nullptr);
    Mesh mesh(Ball(ahead, 1));
    mesh.AddNode(&free);
    EXPECT_FALSE(free.FrustumCulling(nearValue, farValue));
    EXPECT_EQ(free.GetFlags(), 0u);
    AddBall(node, ahead, 2);
    delete scene.GetCameraNode();
    EXPECT_FALSE(Cull());
    EXPECT_EQ(nearValue, largest);
}

TEST_F(SeenNodes, UpdateCullingVisitsChildrenOfHiddenAndCulledNodes)
{
    MeshNode* const hidden = new MeshNode(&scene);
    MeshNode* const below = new MeshNode(&scene);
    node->AddChild(hidden, false);
    hidden->AddChild(below, false);
    AddBall(hidden, Vector(0, 0, -10), 1);
    AddBall(below, ahead, 2);
    hidden->SetFlags(NodeFlagHidden, false);
    node->UpdateCulling(nearValue, farValue);
    ExpectRange(48, 52);
    EXPECT_EQ(node->GetFlags(), 0x02u) << "culled for want of meshes";
    EXPECT_EQ(hidden->GetFlags(), 0x01u);
    EXPECT_EQ(below->GetFlags(), 0x00u);
}

TEST_F(SeenNodes, BoundingBoxIsThatOfTheScaledSpheres)
{
    AddBall(node, Vector(1, 2, 3), 1);
    AddBall(node, Vector(-4, 0, 0), 0.5f);
    node->SetGlobal(Product(At(10, 0, 0), Scaled(2, 1, 1)));
    Vector boxMin(largest, largest, largest);
    Vector boxMax(-largest, -largest, -largest);
    node->ComputeBoundingBox(boxMin, boxMax);
    EXPECT_TRUE(IsNear(boxMin, Vector(1, -1, -1)));
    EXPECT_TRUE(IsNear(boxMax, Vector(14, 4, 5)));

    Vector wideMin(-100, -100, -100);
    Vector wideMax(100, 100, 100);
    node->ComputeBoundingBox(wideMin, wideMax);
    EXPECT_TRUE(IsNear(wideMin, Vector(-100, -100, -100), 0.0f)) << "only widens";
    EXPECT_TRUE(IsNear(wideMax, Vector(100, 100, 100), 0.0f));
}

TEST_F(SeenNodes, HiddenNodeStaysOutOfTheBoundingBoxButItsChildrenCount)
{
    MeshNode* const below = new MeshNode(&scene);
    node->AddChild(below, false);
    AddBall(node, Vector(50, 50, 50), 1);
    AddBall(below, Vector(5, 5, 5), 1);
    node->SetFlags(NodeFlagHidden, false);
    Vector boxMin(largest, largest, largest);
    Vector boxMax(-largest, -largest, -largest);
    node->ComputeBoundingBox(boxMin, boxMax);
    EXPECT_TRUE(IsNear(boxMin, Vector(4, 4, 4)));
    EXPECT_TRUE(IsNear(boxMax, Vector(6, 6, 6)));
}

TEST_F(SeenNodes, CenterStartsFromTheOrigin)
{
    AddBall(node, Vector(10, 10, 10), 1);
    Vector center;
    node->ComputeCenter(center);
    EXPECT_TRUE(IsNear(center, Vector(5.5f, 5.5f, 5.5f)));
}

TEST(MeshNode, UpdateGraphIsThatOfANode)
{
    Scene scene;
    MeshNode* const node = new MeshNode(&scene);
    MeshNode* const below = new MeshNode(&scene);
    scene.GetRoot()->AddChild(node, false);
    node->AddChild(below, false);
    node->SetLocal(At(1, 2, 3));
    scene.UpdateGraph(1, 1);
    EXPECT_TRUE(IsSame(below->GetGlobal(), At(1, 2, 3)));
}

TEST(MeshNode, DyingLeavesMeshesAndNodeMaterialsAlive)
{
    Scene scene;
    NodeMaterial* const material = new NodeMaterial;
    scene.AddMaterial(material);
    NodeMaterial loose;
    Mesh first(nullptr);
    Mesh second(nullptr);
    MeshNode* const node = new MeshNode(&scene);
    MeshNode stays(&scene);
    for (Mesh* const mesh : {&first, &second})
    {
        mesh->AddNode(&stays);
        mesh->AddNode(node);
    }
    material->AddNode(node);
    loose.AddNode(node);
    loose.AddNode(&stays);
    scene.UpdateGraph(1, 1);
    delete node;
    EXPECT_EQ(first.GetNodes(), (std::vector<MeshNode*>{&stays}));
    EXPECT_EQ(second.GetNodes(), (std::vector<MeshNode*>{&stays}));
    EXPECT_TRUE(material->GetNodes().empty());
    EXPECT_EQ(loose.GetNodes(), (std::vector<MeshNode*>{&stays}));
    EXPECT_TRUE(scene.IsDirty());
}

TEST(MeshNode, ItsDataFindTheirSlotsEmptyWhenItDies)
{
    int empty = 0;
    MeshNode* const node = new MeshNode(nullptr);
    node->SetRenderData(new WatchedObject([&] { empty += node->GetRenderData() == nullptr; }));
    node->SetCollisionData(new WatchedObject([&] { empty += node->GetCollisonData() == nullptr; }));
    delete node;
    EXPECT_EQ(empty, 2);
}

TEST(MeshNode, AddsNoVirtualOperations)
{
    EXPECT_EQ(VirtualSlot(&MeshNode::FrustumCulling), -1);
    EXPECT_EQ(VirtualSlot(&MeshNode::SetFlags), -1);
    EXPECT_EQ(VirtualSlot(&MeshNode::UpdateCulling), VirtualSlot(&Node::UpdateCulling));
}

} // namespace
} // namespace OV
