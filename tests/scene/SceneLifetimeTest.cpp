#include "orvane/scene/Scene.h"

#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/NodeMaterial.h"
#include "tests/scene/SceneDoubles.h"

#include <type_traits>

namespace OV
{
namespace
{

using namespace Test;

/// A clean scene.
class LivingScene : public ::testing::Test
{
protected:
    LivingScene() { Clean(); }

    void Clean() { scene.UpdateGraph(1, 1); }

    OpenScene scene;
};

/// Two of each kind with render data that note their death.
class NotedScene : public LivingScene
{
protected:
    NotedScene()
    {
        for (const char* const number : {"1", "2"})
        {
            LineStyle* const style = new LineStyle("s");
            style->SetRenderData(Logged(log, std::string("style ") + number));
            scene.AddLineStyle(style);
            for (const bool isOpaque : {true, false})
            {
                Material* const material = new Material("m");
                material->SetOpacity(isOpaque ? 1.0f : 0.5f);
                material->SetRenderData(Logged(log, (isOpaque ? "opaque " : "alpha ") + std::string(number)));
                scene.AddMaterial(material);
            }
            new Mesh(nullptr, &scene);
            new Line(nullptr, &scene);
        }
        // One of two in each of the two places that they may be in.
        Mesh* const first = *scene.GetMeshes().begin();
        Mesh* const second = *scene.GetMeshes().rbegin();
        first->SetRenderData(Logged(log, "mesh 1"), true);
        second->SetRenderData(Logged(log, "mesh 2"), false);
        (*scene.GetLines().begin())->SetRenderData(Logged(log, "line 1"), true);
        (*scene.GetLines().rbegin())->SetRenderData(Logged(log, "line 2"), false);
        Clean();
    }

    // While the log is there to write to.
    ~NotedScene() override { scene.Clear(); }

    Log log;
};

TEST_F(NotedScene, SuspendsStylesThenLinesThenMaterialsThenMeshes)
{
    scene.Suspend();
    EXPECT_EQ(log, (Log{"style 1", "style 2", "line 1", "line 2", "opaque 1", "opaque 2", "alpha 1", "alpha 2",
                        "mesh 1", "mesh 2"}));
    EXPECT_FALSE(scene.IsDirty());
    scene.Suspend();
    EXPECT_EQ(log.size(), 10u);
}

TEST_F(NotedScene, ResumeKeepsRenderDataAndMarksDirty)
{
    scene.Resume();
    EXPECT_TRUE(log.empty());
    EXPECT_TRUE(scene.IsDirty());
}

TEST_F(NotedScene, CleanupGoesFromTheTreeToTheMaterials)
{
    for (const char* const name : {"node 1", "node 2"})
    {
        Node* const node = new Node(&scene);
        node->SetAnimationData(Logged(log, name));
        scene.GetRoot()->AddChild(node, false);
    }
    scene.Clear();
    EXPECT_EQ(log, (Log{"node 1", "node 2", "mesh 1", "mesh 2", "line 1", "line 2", "style 1", "style 2",
                        "opaque 1", "opaque 2", "alpha 1", "alpha 2"}));
}

TEST(SceneLifetime, CleanupTakesTheSceneFromEachObjectBeforeItDies)
{
    Log log;
    {
        Scene scene;
        Mesh* const mesh = new Mesh(nullptr, &scene);
        Line* const line = new Line(nullptr, &scene);
        LineStyle* const style = new LineStyle("a");
        Material* const opaque = new Material("a");
        Material* const alpha = new Material("a");
        alpha->SetOpacity(0.5f);
        scene.AddLineStyle(style);
        scene.AddMaterial(opaque);
        scene.AddMaterial(alpha);
        const auto note = [&log](auto* object)
        {
            return new WatchedObject(
                [&log, object] { log.push_back(object->GetScene() ? "in a scene" : "without"); });
        };
        mesh->SetRenderData(note(mesh), true);
        line->SetRenderData(note(line), true);
        style->SetRenderData(note(style));
        opaque->SetRenderData(note(opaque));
        alpha->SetRenderData(note(alpha));
    }
    EXPECT_EQ(log, Log(5, "without"));
}

TEST_F(NotedScene, ClearMakesANewRootAndCameraAndKeepsTheClockAndTheSettings)
{
    scene.Show(false);
    scene.EnableLights(false);
    scene.SetLowMemory();
    scene.OverrideViewport(true, 1, 2, 3, 4);
    scene.ConversionFactor() = 3.0f;
    scene.UnitScalingFlag() = false;
    bool rootDied = false;
    bool cameraDied = false;
    scene.GetRoot()->SetAnimationData(new WatchedObject([&] { rootDied = true; }));
    scene.GetCameraNode()->SetAnimationData(new WatchedObject([&] { cameraDied = true; }));
    new LightNode(&scene);
    scene.GetRoot()->AddChild(scene.GetLights()[0], false);
    Clean();
    Clean();
    const unsigned updateID = scene.GetUpdateID();
    scene.Clear();
    EXPECT_TRUE(rootDied);
    EXPECT_TRUE(cameraDied);
    EXPECT_EQ(scene.GetUpdateID(), updateID);
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_TRUE(scene.GetLights().empty());
    EXPECT_TRUE(scene.GetLines().empty());
    EXPECT_TRUE(scene.GetMeshes().empty());
    EXPECT_TRUE(scene.GetLineStyles().empty());
    EXPECT_TRUE(scene.GetAlphaMaterials().empty());
    EXPECT_TRUE(scene.GetOptimizedMaterials().empty());
    EXPECT_TRUE(scene.GetZOrderedDrawItems().empty());
    EXPECT_FALSE(scene.IsVisible());
    EXPECT_FALSE(scene.IsLit());
    EXPECT_TRUE(scene.IsMemoryLow());
    EXPECT_EQ(scene.ConversionFactor(), 3.0f);
    EXPECT_FALSE(scene.UnitScalingFlag());
    int x = 0, y = 0, width = 0, height = 0;
    EXPECT_TRUE(scene.GetOverrideViewport(x, y, width, height));
    EXPECT_EQ(height, 4);

    ASSERT_NE(scene.GetRoot(), nullptr);
    EXPECT_EQ(scene.GetRoot()->GetChildren(), (std::list<Node*>{scene.GetCameraNode()}));
    EXPECT_EQ(scene.GetCameraNode()->GetDistanceToTarget(), 50.0f);
    Clean();
    EXPECT_EQ(scene.GetUpdateID(), updateID + 1);
}

TEST_F(LivingScene, ClearKeepsACameraOutsideTheTree)
{
    CameraNode outside(&scene);
    scene.SetCamera(&outside);
    scene.Clear();
    EXPECT_EQ(scene.GetCameraNode(), &outside);
    CameraNode* const inside = new CameraNode(&scene);
    scene.GetRoot()->AddChild(inside, false);
    scene.SetCamera(inside);
    scene.Clear();
    EXPECT_EQ(scene.GetCameraNode(), scene.defaultCamera) << "the camera went with the tree";
}

TEST_F(LivingScene, DeleteSubtreeDeletesANodeBeforeItsChildrenAndLeavesTheRest)
{
    Log log;
    const auto make = [&](Node* parent, const char* name)
    {
        Node* const node = new Node(&scene);
        node->SetAnimationData(Logged(log, name));
        parent->AddChild(node, false);
        return node;
    };
    Node* const top = make(scene.GetRoot(), "top");
    Node* const left = make(top, "left");
    make(left, "left 1");
    make(left, "left 2");
    make(make(top, "right"), "right 1");
    Node* const sibling = new Node(&scene);
    scene.GetRoot()->AddChild(sibling, false);
    Clean();
    scene.DeleteSubtree(top);
    EXPECT_EQ(log, (Log{"top", "left", "left 1", "left 2", "right", "right 1"}));
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_EQ(scene.GetRoot()->GetChildren(), (std::list<Node*>{scene.GetCameraNode(), sibling}));
}

TEST_F(LivingScene, NodesOfADeletedSubtreeHaveNoParentWhenTheyDie)
{
    Log log;
    MeshNode* const top = new MeshNode(&scene);
    MeshNode* const below = new MeshNode(&scene);
    scene.GetRoot()->AddChild(top, false);
    top->AddChild(below, false);
    for (MeshNode* const node : {top, below})
    {
        node->SetRenderData(
            new WatchedObject([&log, node] { log.push_back(node->GetParent() ? "attached" : "free"); }));
    }
    scene.DeleteSubtree(top);
    EXPECT_EQ(log, (Log{"free", "free"}));
}

TEST_F(LivingScene, DeleteSubtreeOfNullMarksDirty)
{
    scene.DeleteSubtree(nullptr);
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_EQ(scene.GetRoot()->GetChildren().size(), 1u);
}

TEST_F(LivingScene, DeleteSubtreeTakesNodesOutOfNodeMaterialsMeshesAndLights)
{
    NodeMaterial* const opaque = new NodeMaterial;
    NodeMaterial* const alpha = new NodeMaterial;
    alpha->SetOpacity(0.5f);
    scene.AddMaterial(opaque);
    scene.AddMaterial(alpha);
    Mesh* const mesh = new Mesh(nullptr, &scene);
    Node* const top = new Node(&scene);
    MeshNode* const node = new MeshNode(&scene);
    MeshNode stays(&scene);
    LightNode* const light = new LightNode(&scene);
    scene.GetRoot()->AddChild(top, false);
    top->AddChild(node, false);
    node->AddChild(light, false);
    for (MeshNode* const user : {node, &stays})
    {
        mesh->AddNode(user);
        opaque->AddNode(user);
        alpha->AddNode(user);
    }
    scene.DeleteSubtree(top);
    EXPECT_EQ(opaque->GetNodes(), (std::vector<MeshNode*>{&stays}));
    EXPECT_EQ(alpha->GetNodes(), (std::vector<MeshNode*>{&stays}));
    EXPECT_EQ(mesh->GetNodes(), (std::vector<MeshNode*>{&stays}));
    EXPECT_TRUE(scene.GetLights().empty());
}

TEST_F(LivingScene, DeleteSubtreeOfADetachedNodeOrADeepOneWorks)
{
    Node* const detached = new Node(&scene);
    detached->AddChild(new Node(&scene), false);
    scene.DeleteSubtree(detached);

    // Deeper than the stack could take, and built bottom up, so that no ancestor is looked for.
    Node* top = new Node(&scene);
    for (int depth = 0; depth < 100000; ++depth)
    {
        Node* const above = new Node(&scene);
        above->AddChild(top, false);
        top = above;
    }
    scene.DeleteSubtree(top);
    EXPECT_EQ(scene.GetRoot()->GetChildren().size(), 1u);
}

TEST_F(LivingScene, WorksOnWithoutRootAndCamera)
{
    scene.DeleteSubtree(scene.GetRoot());
    EXPECT_EQ(scene.GetRoot(), nullptr);
    EXPECT_EQ(scene.GetCameraNode(), nullptr);
    scene.UpdateGraph(1, 1);
    EXPECT_FALSE(scene.IsDirty());
    scene.UpdateCulling();
    scene.Frame();
    Vector boxMin, boxMax;
    scene.GetBoundingBox(boxMin, boxMax);
    EXPECT_GT(boxMin.x, boxMax.x);
    scene.Clear();
    EXPECT_NE(scene.GetRoot(), nullptr);
    EXPECT_NE(scene.GetCameraNode(), nullptr);
}

TEST(SceneLifetime, WhatOwnsCannotBeCopied)
{
    const auto isCopied = [](auto* kind)
    {
        using Kind = std::remove_pointer_t<decltype(kind)>;
        return std::is_copy_constructible_v<Kind> || std::is_copy_assignable_v<Kind>;
    };
    EXPECT_FALSE(isCopied(static_cast<Scene*>(nullptr)));
    EXPECT_FALSE(isCopied(static_cast<Node*>(nullptr)));
    EXPECT_FALSE(isCopied(static_cast<MeshNode*>(nullptr)));
    EXPECT_FALSE(isCopied(static_cast<CameraNode*>(nullptr)));
    EXPECT_FALSE(isCopied(static_cast<LightNode*>(nullptr)));
    EXPECT_FALSE(isCopied(static_cast<LineStyle*>(nullptr)));
    EXPECT_FALSE(isCopied(static_cast<Line*>(nullptr)));
    EXPECT_TRUE(isCopied(static_cast<RawMesh*>(nullptr))) << "geometry is copied without its render data";
}

TEST(SceneLifetime, DestructorDeletesWhatItOwnsAndOnlyThat)
{
    int deaths = 0;
    const auto data = [&deaths] { return Counted(deaths); };
    Material kept("kept");
    kept.SetRenderData(data());
    Mesh outside(nullptr);
    {
        Scene scene;
        Node* const node = new Node(&scene);
        node->SetAnimationData(data());
        scene.GetRoot()->AddChild(node, false);
        (new Mesh(nullptr, &scene))->SetRenderData(data(), true);
        (new Line(nullptr, &scene))->SetRenderData(data(), true);
        LineStyle* const style = new LineStyle("a");
        style->SetRenderData(data());
        scene.AddLineStyle(style);
        Material* const material = new Material("a");
        material->SetRenderData(data());
        scene.AddMaterial(material);
        material->AddMesh(&outside);
        scene.AddMaterial(&kept);
        scene.RemoveMaterial(&kept);
        EXPECT_EQ(deaths, 0);
    }
    EXPECT_EQ(deaths, 5);
    EXPECT_EQ(outside.GetMaterial(), nullptr);
    EXPECT_NE(kept.GetRenderData(), nullptr);
}

} // namespace
} // namespace OV
