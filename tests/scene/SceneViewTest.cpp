#include "orvane/scene/Scene.h"

#include "orvane/scene/Line.h"
#include "orvane/scene/Material.h"
#include "tests/scene/SceneDoubles.h"

#include <algorithm>
#include <limits>
#include <set>

namespace OV
{
namespace
{

using namespace Test;
using ::testing::Test;

constexpr float largest = std::numeric_limits<float>::max();

class ViewedScene : public Test
{
protected:
    CameraNode* Camera() { return scene.GetCameraNode(); }

    void Update() { scene.UpdateGraph(100.0f, 100.0f); }

    MeshNode* AddNode(Node* parent, const Transform& local)
    {
        MeshNode* const node = new MeshNode(&scene);
        parent->AddChild(node, false);
        node->SetLocal(local);
        return node;
    }

    /// A mesh of a ball around the origin, of this material, at this node.
    Mesh* AddBall(Material* material, MeshNode* node, const Vector& center = Vector(0, 0, 0))
    {
        Mesh* const mesh = new Mesh(Ball(center, 1.0f), &scene);
        mesh->AddNode(node);
        material->AddMesh(mesh);
        return mesh;
    }

    Material* AddMaterial(float opacity)
    {
        Material* const material = new Material("a");
        material->SetOpacity(opacity);
        scene.AddMaterial(material);
        return material;
    }

    void ExpectNearFar(float nearExpected, float farExpected)
    {
        float nearValue = 0.0f;
        float farValue = 0.0f;
        Camera()->GetNearFar(nearValue, farValue);
        EXPECT_EQ(nearValue, nearExpected);
        EXPECT_EQ(farValue, farExpected);
    }

    OpenScene scene;
};

TEST_F(ViewedScene, UpdateOfACleanSceneStillUpdatesTheCameraAndTheClock)
{
    Update();
    Update();
    ASSERT_FALSE(scene.IsDirty());
    NodeParts::Global(*Camera()) = At(1, 2, 3);
    scene.UpdateGraph(320.0f, 200.0f);
    EXPECT_EQ(Camera()->screenWidth, 320.0f);
    EXPECT_EQ(Camera()->screenHeight, 200.0f);
    EXPECT_TRUE(IsSame(Camera()->GetInvTransform(), At(-1, -2, -3)));
    EXPECT_TRUE(IsNear(Camera()->GetFrustum().position, Vector(1, 2, 3)));
    const float tanV = std::tan(0.45f);
    EXPECT_NEAR(Camera()->GetFrustum().rightNormal.z / Camera()->GetFrustum().rightNormal.x, 1.6f * tanV, 1e-4f);
    EXPECT_EQ(scene.GetUpdateID(), 4u);
    EXPECT_FALSE(scene.IsDirty());
}

TEST_F(ViewedScene, TheTreeIsWalkedOnlyWhenDirty)
{
    struct Visited : Node
    {
        using Node::Node;
        void UpdateGraph() override
        {
            ++visits;
            Node::UpdateGraph();
        }
        int visits = 0;
    };
    auto* const node = new Visited(&scene);
    scene.GetRoot()->AddChild(node, false);
    Update();
    EXPECT_EQ(node->visits, 1);
    Update();
    EXPECT_EQ(node->visits, 1);
    scene.MarkDirty();
    Update();
    EXPECT_EQ(node->visits, 2);
}

TEST(Scene, UpdatesTheCameraThenTheTreeThenTheDrawItems)
{
    struct NotedCamera : CameraNode
    {
        NotedCamera(Scene* scene, Log& l) : CameraNode(scene), log(l) {}
        void UpdateGraph() override
        {
            log.push_back("camera at " + std::to_string(static_cast<int>(screenWidth)));
            CameraNode::UpdateGraph();
        }
        Log& log;
    };
    struct NotedScene : Scene
    {
        explicit NotedScene(Log& l) : log(l) {}
        void ProcessZOrderedDrawItems() override
        {
            log.push_back("items at " + std::to_string(GetUpdateID()) + (IsDirty() ? " dirty" : " clean"));
            Scene::ProcessZOrderedDrawItems();
        }
        Log& log;
    };
    struct NotedNode : Node
    {
        NotedNode(Scene* scene, Log& l) : Node(scene), log(l) {}
        void UpdateGraph() override { log.push_back("node"); }
        Log& log;
    };
    Log log;
    NotedScene scene(log);
    NotedCamera camera(&scene, log);
    scene.SetCamera(&camera);
    scene.GetRoot()->AddChild(new NotedNode(&scene, log), false);
    scene.UpdateGraph(40, 30);
    EXPECT_EQ(log, (Log{"camera at 40", "node", "items at 1 dirty"}));
    log.clear();
    scene.UpdateGraph(50, 30);
    EXPECT_EQ(log, (Log{"camera at 50"}));
}

TEST_F(ViewedScene, TheFrustumUsesTheGlobalAsItStandsBeforeTheWalk)
{
    Update();
    Node* const rig = new Node(&scene);
    scene.GetRoot()->AddChild(rig, false);
    rig->AddChild(Camera(), false);
    rig->SetLocal(At(5, 0, 0));
    Update();
    EXPECT_TRUE(IsSame(Camera()->GetGlobal(), At(5, 0, 0)));
    EXPECT_TRUE(IsNear(Camera()->GetFrustum().position, Vector(0, 0, 0))) << "one frame behind its parent";
    Update();
    EXPECT_TRUE(IsNear(Camera()->GetFrustum().position, Vector(5, 0, 0)));
}

TEST_F(ViewedScene, ChangesMadeBetweenTwoUpdatesCarryTheIDOfTheComingOne)
{
    Update();
    Node* const node = new Node(&scene);
    scene.GetRoot()->AddChild(node, false);
    node->SetLocal(At(1, 0, 0));
    EXPECT_EQ(NodeParts::UpdateID(*node), 2u);
    Update();
    EXPECT_TRUE(IsSame(node->GetGlobal(), At(1, 0, 0)));
    EXPECT_EQ(scene.GetUpdateID(), 3u);
    NodeParts::Global(*node) = At(9, 9, 9);
    scene.MarkDirty();
    Update();
    EXPECT_TRUE(IsSame(node->GetGlobal(), At(9, 9, 9))) << "aged, and not composed again";
}

using Pair = std::pair<MeshNode*, Mesh*>;

std::vector<Pair> PairsOf(const Scene& scene)
{
    std::vector<Pair> pairs;
    for (const AlphaMeshNode* const item : scene.GetZOrderedDrawItems())
    {
        pairs.emplace_back(item->node, item->mesh);
    }
    return pairs;
}

TEST_F(ViewedScene, PopulateFollowsTheAlphaListTheMeshesAndTheirNodes)
{
    Material* const opaque = AddMaterial(1.0f);
    Material* const first = AddMaterial(0.5f);
    Material* const second = AddMaterial(0.5f);
    MeshNode* const a = AddNode(scene.GetRoot(), At(0, 0, -5));
    MeshNode* const b = AddNode(scene.GetRoot(), At(0, 0, -6));
    AddBall(opaque, a);
    Mesh* const late = AddBall(second, b);
    Mesh* const early = new Mesh(nullptr, &scene);
    Mesh* const newest = new Mesh(nullptr, &scene);
    first->AddMesh(newest);
    first->AddMesh(early);
    early->AddNode(b);
    early->AddNode(a);
    newest->AddNode(a);
    const std::vector<Pair> expected = {{b, early}, {a, early}, {a, newest}, {b, late}};
    scene.PopulateZOrderedDrawItems();
    EXPECT_EQ(PairsOf(scene), expected);
    for (const AlphaMeshNode* const item : scene.GetZOrderedDrawItems())
    {
        EXPECT_EQ(item->z, 0.0f);
    }
    Update();
    EXPECT_EQ(scene.GetZOrderedDrawItems()[0]->z, 6.0f);
    scene.PopulateZOrderedDrawItems();
    EXPECT_EQ(PairsOf(scene), expected) << "anew, not added to";
    for (const AlphaMeshNode* const item : scene.GetZOrderedDrawItems())
    {
        EXPECT_EQ(item->z, 0.0f);
    }
}

TEST_F(ViewedScene, NothingPopulatesTheListOfA3DSceneByItself)
{
    AddBall(AddMaterial(0.5f), AddNode(scene.GetRoot(), Transform()));
    Update();
    EXPECT_TRUE(scene.GetZOrderedDrawItems().empty());
}

TEST_F(ViewedScene, DrawItemsAreSortedBackToFrontByTheirDistance)
{
    Material* const material = AddMaterial(0.5f);
    Camera()->SetLocal(At(0, 0, 10));
    // The sphere's centre counts, placed by the node.
    MeshNode* const nearNode = AddNode(scene.GetRoot(), At(0, 0, -5));
    MeshNode* const farNode = AddNode(scene.GetRoot(), Product(At(0, 0, -20), Scaled(1, 1, 2)));
    MeshNode* const behind = AddNode(scene.GetRoot(), At(0, 0, 30));
    AddBall(material, nearNode);
    AddBall(material, behind);
    AddBall(material, farNode, Vector(0, 0, -3));
    scene.PopulateZOrderedDrawItems();
    Update();
    const auto& items = scene.GetZOrderedDrawItems();
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0]->node, farNode);
    EXPECT_NEAR(items[0]->z, 36.0f, 1e-4f);
    EXPECT_EQ(items[1]->node, nearNode);
    EXPECT_NEAR(items[1]->z, 15.0f, 1e-4f);
    EXPECT_EQ(items[2]->node, behind);
    EXPECT_NEAR(items[2]->z, -20.0f, 1e-4f);
}

TEST_F(ViewedScene, DrawItemsAreSortedOnlyWhenDirty)
{
    Material* const material = AddMaterial(0.5f);
    MeshNode* const nearNode = AddNode(scene.GetRoot(), At(0, 0, -5));
    MeshNode* const farNode = AddNode(scene.GetRoot(), At(0, 0, -20));
    AddBall(material, nearNode);
    AddBall(material, farNode);
    Update();
    scene.PopulateZOrderedDrawItems();
    EXPECT_FALSE(scene.IsDirty());
    Update();
    EXPECT_EQ(scene.GetZOrderedDrawItems()[0]->node, nearNode);
    EXPECT_EQ(scene.GetZOrderedDrawItems()[0]->z, 0.0f);
    scene.MarkDirty();
    Update();
    EXPECT_EQ(scene.GetZOrderedDrawItems()[0]->node, farNode);
}

TEST_F(ViewedScene, DepthCountsInTheViewOfTheCameraInUse)
{
    Material* const material = AddMaterial(0.5f);
    CameraNode camera(&scene);
    camera.SetGlobal(Product(At(3, 0, 0), TurnedAboutY(quarterTurn)));
    scene.SetCamera(&camera);
    AddBall(material, AddNode(scene.GetRoot(), At(-7, 100, 100)));
    scene.PopulateZOrderedDrawItems();
    Update();
    EXPECT_NEAR(scene.GetZOrderedDrawItems()[0]->z, 10.0f, 1e-4f);
}

TEST_F(ViewedScene, EqualAndUnorderedDepthsKeepEveryItem)
{
    Material* const material = AddMaterial(0.5f);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    std::set<MeshNode*> nodes;
    int numbers = 0;
    for (int i = 0; i < 200; ++i)
    {
        const float z = i % 3 == 0 ? nan : -static_cast<float>(i % 7);
        numbers += i % 3 != 0;
        MeshNode* const node = AddNode(scene.GetRoot(), At(0, 0, z));
        AddBall(material, node);
        nodes.insert(node);
    }
    scene.PopulateZOrderedDrawItems();
    Update();
    const auto& items = scene.GetZOrderedDrawItems();
    std::set<MeshNode*> found;
    for (const AlphaMeshNode* const item : items)
    {
        found.insert(item->node);
    }
    EXPECT_EQ(found, nodes);
    for (int i = 0; i < 200; ++i)
    {
        EXPECT_EQ(std::isnan(items[i]->z), i >= numbers) << "what is no number comes last";
        if (i > 0 && i < numbers)
        {
            EXPECT_GE(items[i - 1]->z, items[i]->z);
        }
    }
}

TEST_F(ViewedScene, DrawItemsOfADyingNodeOrMeshLeaveTheList)
{
    Material* const material = AddMaterial(0.5f);
    MeshNode* const a = AddNode(scene.GetRoot(), Transform());
    MeshNode* const b = AddNode(scene.GetRoot(), Transform());
    MeshNode* const c = AddNode(scene.GetRoot(), Transform());
    Mesh* const first = AddBall(material, a);
    Mesh* const second = AddBall(material, a);
    first->AddNode(b);
    second->AddNode(b);
    second->AddNode(c);
    scene.PopulateZOrderedDrawItems();
    ASSERT_EQ(scene.GetZOrderedDrawItems().size(), 5u);
    scene.DeleteSubtree(b);
    EXPECT_EQ(PairsOf(scene), (std::vector<Pair>{{a, first}, {a, second}, {c, second}}));
    delete second;
    EXPECT_EQ(PairsOf(scene), (std::vector<Pair>{{a, first}}));
    delete material;
    first->RemoveNode(a);
    EXPECT_EQ(PairsOf(scene).size(), 1u) << "both are alive: the next filling takes it out";
    Update();
    delete a;
    EXPECT_TRUE(scene.GetZOrderedDrawItems().empty());
}

TEST_F(ViewedScene, DrawItemsMayNameNodesOfAnotherScene)
{
    auto other = std::make_unique<Scene>();
    MeshNode* const foreign = new MeshNode(other.get());
    other->GetRoot()->AddChild(foreign, false);
    Material* const material = AddMaterial(0.5f);
    Mesh* const mesh = new Mesh(nullptr, other.get());
    mesh->AddNode(foreign);
    material->AddMesh(mesh);
    scene.PopulateZOrderedDrawItems();
    ASSERT_EQ(scene.GetZOrderedDrawItems().size(), 1u);
    Update();
    other.reset();
    EXPECT_TRUE(scene.GetZOrderedDrawItems().empty());
}

TEST_F(ViewedScene, ASceneWhoseItemsWereTakenOutByHandDoesNotHoldUpTheDeathOfANode)
{
    Material* const material = AddMaterial(0.5f);
    MeshNode* const node = AddNode(scene.GetRoot(), Transform());
    Mesh* const mesh = AddBall(material, node);
    scene.PopulateZOrderedDrawItems();
    const std::unique_ptr<AlphaMeshNode> taken(scene.zOrderedDrawItems.back());
    scene.zOrderedDrawItems.clear();
    delete node;
    delete mesh;
    EXPECT_TRUE(scene.GetZOrderedDrawItems().empty());
}

struct DepthCase
{
    const char* label;
    CameraNode::CameraProjection projection;
    float nearValue, farValue;
    float nearExpected, farExpected;
};

void PrintTo(const DepthCase& given, std::ostream* out)
{
    *out << given.label;
}

class DepthRange : public ViewedScene, public ::testing::WithParamInterface<DepthCase>
{
};

TEST_P(DepthRange, GivesTheCameraItsPlanes)
{
    const DepthCase& given = GetParam();
    Camera()->SetProjection(given.projection);
    scene.ProcessNearFar(given.nearValue, given.farValue);
    float nearValue = 0.0f;
    float farValue = 0.0f;
    Camera()->GetNearFar(nearValue, farValue);
    EXPECT_FLOAT_EQ(nearValue, given.nearExpected);
    EXPECT_FLOAT_EQ(farValue, given.farExpected);
}

const DepthCase depthCases[] = {
    {"NothingSeen", CameraNode::Perspective, largest, -largest, 1.0f, 200.0f},
    {"AllBehind", CameraNode::Perspective, -50.0f, -0.001f, 1.0f, 200.0f},
    {"JustReachingTheEye", CameraNode::Perspective, -10.0f, 0.0f, 0.05f * 0.005f, 0.05f},
    {"FloorOfFive", CameraNode::Perspective, 1.0f, 1001.0f, 5.0f, 1006.0f},
    {"FloorOfTheFarPlane", CameraNode::Perspective, 0.0f, 100.0f, 100.5f * 0.005f, 100.5f},
    {"AboveTheFloor", CameraNode::Perspective, 10.0f, 110.0f, 9.5f, 110.5f},
    {"OrthographicKeepsANegativeNear", CameraNode::Orthographic, -100.0f, 100.0f, -101.0f, 101.0f},
    {"OrthographicAllBehind", CameraNode::Orthographic, -100.0f, -50.0f, -100.25f, -49.75f},
    {"OrthographicHasNoFloor", CameraNode::Orthographic, 0.0f, 100.0f, -0.5f, 100.5f},
};

INSTANTIATE_TEST_SUITE_P(Scene, DepthRange, ::testing::ValuesIn(depthCases),
                         [](const auto& info) { return info.param.label; });

TEST_F(ViewedScene, AnEmptyViewGivesExactlyOneAndTwoHundred)
{
    scene.ProcessNearFar(3.4028235e38f, -3.4028235e38f);
    ExpectNearFar(1.0f, 200.0f);
}

TEST_F(ViewedScene, AWideRangeGivesExactlyFiveAndThousandAndSix)
{
    scene.ProcessNearFar(1.0f, 1001.0f);
    ExpectNearFar(5.0f, 1006.0f);
}

TEST_F(ViewedScene, UpdateCullingCollectsTheDepthsOfTheTree)
{
    Camera()->SetFOV(std::atan(1.0f));
    Material* const material = AddMaterial(1.0f);
    MeshNode* const seen = AddNode(scene.GetRoot(), At(0, 0, -20));
    MeshNode* const unseen = AddNode(scene.GetRoot(), At(0, 0, 500));
    AddBall(material, seen);
    AddBall(material, unseen);
    Update();
    EXPECT_EQ(seen->GetFlags() | unseen->GetFlags(), 0u) << "an update culls nothing";
    scene.UpdateCulling();
    EXPECT_EQ(seen->GetFlags(), 0x00u);
    EXPECT_EQ(unseen->GetFlags(), 0x02u);
    float nearValue = 0.0f;
    float farValue = 0.0f;
    Camera()->GetNearFar(nearValue, farValue);
    EXPECT_FLOAT_EQ(nearValue, 18.99f);
    EXPECT_FLOAT_EQ(farValue, 21.01f);
}

TEST_F(ViewedScene, UpdateCullingOfAnEmptySceneGivesTheDefaults)
{
    Update();
    scene.UpdateCulling();
    ExpectNearFar(1.0f, 200.0f);
}

TEST_F(ViewedScene, FrameMovesAPerspectiveCameraBackByTheDiagonal)
{
    Material* const material = AddMaterial(1.0f);
    AddBall(material, AddNode(scene.GetRoot(), At(-1, 0, 0)));
    AddBall(material, AddNode(scene.GetRoot(), At(3, 10, 4)));
    scene.Frame();
    // The box reaches from (-2, -1, -1) to (4, 11, 5): its diagonal is the root of 216.
    const float diagonal = std::sqrt(216.0f);
    EXPECT_NEAR(Camera()->GetDistanceToTarget(), diagonal, 1e-4f);
    EXPECT_TRUE(IsNear(Camera()->GetGlobal().GetPosition(), Vector(1, 5, 2 + diagonal), 1e-4f));
    Vector forward;
    forward.Multiply(Camera()->GetGlobal().GetRotation(), Vector(0, 0, -1));
    EXPECT_TRUE(IsNear(forward, Vector(0, 0, -1)));
    EXPECT_TRUE(Camera()->IsDirtyAndReset()) << "through the camera's own SetGlobal";
    EXPECT_TRUE(scene.IsDirty());
}

TEST_F(ViewedScene, FrameWalksTheTreeFirst)
{
    Update();
    MeshNode* const node = AddNode(scene.GetRoot(), Transform());
    AddBall(AddMaterial(1.0f), node);
    node->SetLocal(At(100, 0, 0));
    scene.Frame();
    EXPECT_TRUE(IsSame(node->GetGlobal(), At(100, 0, 0)));
    EXPECT_NEAR(Camera()->GetGlobal().GetPosition().x, 100.0f, 1e-3f);
}

TEST_F(ViewedScene, FrameLeavesAnOrthographicCameraButWalksTheTree)
{
    MeshNode* const node = AddNode(scene.GetRoot(), At(7, 0, 0));
    AddBall(AddMaterial(1.0f), node);
    Camera()->SetProjection(CameraNode::Orthographic);
    scene.Frame();
    EXPECT_EQ(Camera()->GetDistanceToTarget(), 50.0f);
    EXPECT_TRUE(IsSame(Camera()->GetGlobal(), Transform()));
    EXPECT_TRUE(IsSame(node->GetGlobal(), At(7, 0, 0)));
}

TEST_F(ViewedScene, FrameOfAnEmptySceneIsNotFinite)
{
    scene.Frame();
    EXPECT_FALSE(std::isfinite(Camera()->GetDistanceToTarget()));
}

TEST_F(ViewedScene, FrameMovesTheCameraInUse)
{
    CameraNode camera(&scene);
    scene.SetCamera(&camera);
    AddBall(AddMaterial(1.0f), AddNode(scene.GetRoot(), At(7, 0, 0)));
    scene.Frame();
    EXPECT_NEAR(camera.GetGlobal().GetPosition().x, 7.0f, 1e-4f);
    EXPECT_TRUE(IsSame(scene.defaultCamera->GetGlobal(), Transform()));
}

TEST_F(ViewedScene, BoundingBoxIsThatOfAllVerticesAtPlainMeshNodes)
{
    struct OtherMeshNode : MeshNode
    {
        using MeshNode::MeshNode;
        int Type() const override { return NodeTypeShape2DNode; }
    };
    const auto geometry = Points({Vector(0, 0, 0), Vector(1, 2, 3)});
    // What is stored is not what is measured.
    geometry->SetBBox(Vector(-99, -99, -99), Vector(99, 99, 99));
    geometry->sphere.radius = 99.0f;
    Mesh* const mesh = new Mesh(geometry, &scene);
    Node* const plain = new Node(&scene);
    scene.GetRoot()->AddChild(plain, false);
    MeshNode* const deep = AddNode(plain, Product(At(10, 0, 0), TurnedAboutY(quarterTurn)));
    MeshNode* const flat = AddNode(scene.GetRoot(), At(0, -5, 0));
    MeshNode* const other = new OtherMeshNode(&scene);
    scene.GetRoot()->AddChild(other, false);
    other->SetLocal(At(1000, 1000, 1000));
    for (MeshNode* const node : {deep, flat, other})
    {
        mesh->AddNode(node);
    }
    flat->SetFlags(NodeFlagHidden, false);

    Vector boxMin(5, 5, 5);
    Vector boxMax(5, 5, 5);
    scene.GetBoundingBox(boxMin, boxMax);
    EXPECT_TRUE(IsNear(boxMin, Vector(0, 0, 0))) << "by the globals as they stand";
    EXPECT_TRUE(IsNear(boxMax, Vector(1, 2, 3)));
    Update();
    scene.GetBoundingBox(boxMin, boxMax);
    // The quarter turn takes (1, 2, 3) to (3, 2, -1).
    EXPECT_TRUE(IsNear(boxMin, Vector(0, -5, -1)));
    EXPECT_TRUE(IsNear(boxMax, Vector(13, 2, 3)));
}

TEST_F(ViewedScene, BoundingBoxOfAnEmptySceneIsTheWrongWayRound)
{
    Vector boxMin, boxMax;
    scene.GetBoundingBox(boxMin, boxMax);
    EXPECT_TRUE(IsNear(boxMin, Vector(largest, largest, largest), 0.0f));
    EXPECT_TRUE(IsNear(boxMax, Vector(-largest, -largest, -largest), 0.0f));
}

} // namespace
} // namespace OV
