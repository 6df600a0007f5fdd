#include "orvane/scene/Scene.h"

#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/NodeLineStyle.h"
#include "orvane/scene/NodeMaterial.h"
#include "tests/scene/SceneDoubles.h"
#include "tests/support/VirtualSlot.h"

#include <functional>
#include <set>

namespace OV
{
namespace
{

using namespace Test;
using ::testing::Test;

/// A clean scene.
class CleanScene : public Test
{
protected:
    CleanScene() { Clean(); }

    void Clean() { scene.UpdateGraph(1, 1); }

    Material* Add(const std::string& name, float opacity)
    {
        Material* const material = new Material(name);
        material->SetOpacity(opacity);
        scene.AddMaterial(material);
        return material;
    }

    OpenScene scene;
};

using Materials = std::vector<Material*>;

TEST(Scene, StartsAsStated)
{
    OpenScene scene;
    EXPECT_TRUE(scene.IsVisible());
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_TRUE(scene.IsLit());
    EXPECT_FALSE(scene.IsMemoryLow());
    EXPECT_EQ(scene.GetUpdateID(), 1u);
    EXPECT_EQ(scene.ConversionFactor(), 1.0f);
    EXPECT_TRUE(scene.UnitScalingFlag());
    int x = 0, y = 0, width = 0, height = 0;
    EXPECT_FALSE(scene.GetOverrideViewport(x, y, width, height));
    EXPECT_EQ(x, -1);
    EXPECT_EQ(y, -1);
    EXPECT_EQ(width, -1);
    EXPECT_EQ(height, -1);
    int first = 9, second = 9, third = 9;
    scene.GetTextureStats(first, second, third);
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 0);
    EXPECT_EQ(third, 0);
    EXPECT_TRUE(scene.GetLights().empty());
    EXPECT_TRUE(scene.GetLines().empty());
    EXPECT_TRUE(scene.GetMeshes().empty());
    EXPECT_TRUE(scene.GetLineStyles().empty());
    EXPECT_TRUE(scene.GetAlphaMaterials().empty());
    EXPECT_TRUE(scene.GetOptimizedMaterials().empty());
    EXPECT_TRUE(scene.GetZOrderedDrawItems().empty());

    ASSERT_NE(scene.GetRoot(), nullptr);
    EXPECT_EQ(scene.GetRoot()->GetScene(), &scene);
    EXPECT_EQ(scene.GetRoot()->Type(), NodeTypeNode);
    EXPECT_EQ(scene.GetRoot()->GetParent(), nullptr);
    CameraNode* const camera = scene.GetCameraNode();
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera, scene.defaultCamera);
    EXPECT_EQ(camera->GetScene(), &scene);
    EXPECT_EQ(camera->GetParent(), scene.GetRoot());
    EXPECT_EQ(scene.GetRoot()->GetChildren(), (std::list<Node*>{camera}));
}

TEST_F(CleanScene, FirstUpdateLeavesItCleanWithUpdateIDTwo)
{
    EXPECT_FALSE(scene.IsDirty());
    EXPECT_EQ(scene.GetUpdateID(), 2u);
}

TEST_F(CleanScene, ShowStoresAndMarksDirty)
{
    scene.Show(false);
    EXPECT_FALSE(scene.IsVisible());
    EXPECT_TRUE(scene.IsDirty());
    Clean();
    scene.Show(false);
    EXPECT_TRUE(scene.IsDirty()) << "even unchanged";
    scene.Show(true);
    EXPECT_TRUE(scene.IsVisible());
}

TEST_F(CleanScene, OtherSettingsDoNotMarkIt)
{
    scene.EnableLights(false);
    EXPECT_FALSE(scene.IsLit());
    scene.SetLowMemory();
    EXPECT_TRUE(scene.IsMemoryLow());
    scene.ConversionFactor() = 2.5f;
    EXPECT_EQ(scene.ConversionFactor(), 2.5f);
    scene.UnitScalingFlag() = false;
    EXPECT_FALSE(scene.UnitScalingFlag());
    for (const bool enable : {true, false})
    {
        scene.OverrideViewport(enable, 1, -2, 3, 4);
        int x = 0, y = 0, width = 0, height = 0;
        EXPECT_EQ(scene.GetOverrideViewport(x, y, width, height), enable);
        EXPECT_EQ(x, 1);
        EXPECT_EQ(y, -2);
        EXPECT_EQ(width, 3);
        EXPECT_EQ(height, 4);
    }
    scene.textureStats[0] = 5;
    scene.textureStats[1] = 6;
    scene.textureStats[2] = 7;
    int first = 0, second = 0, third = 0;
    scene.GetTextureStats(first, second, third);
    EXPECT_EQ(first, 5);
    EXPECT_EQ(second, 6);
    EXPECT_EQ(third, 7);
    EXPECT_FALSE(scene.IsDirty());
    scene.MarkDirty();
    EXPECT_TRUE(scene.IsDirty());
}

TEST_F(CleanScene, IsMarkedDirtyByWhatTheTableSaysAndByNothingElse)
{
    Node* const parent = new Node(&scene);
    Node* const child = new Node(&scene);
    MeshNode* const node = new MeshNode(&scene);
    Mesh* const mesh = new Mesh(nullptr, &scene);
    Material* const material = new Material("m");
    NodeMaterial* const nodeMaterial = new NodeMaterial;
    scene.GetRoot()->AddChild(parent, false);
    scene.AddMaterial(material);
    scene.AddMaterial(nodeMaterial);
    CameraNode camera(&scene);
    NodeLineStyle style;
    const struct
    {
        const char* label;
        bool marks;
        std::function<void()> change;
    } steps[] = {
        {"AddChild that keeps no globals", false, [&] { parent->AddChild(child, false); }},
        {"RemoveChild", false, [&] { parent->RemoveChild(child); }},
        {"undo of RemoveChild", false, [&] { parent->AddChild(child, false); }},
        {"AddChild that keeps globals", true, [&] { scene.GetRoot()->AddChild(child, true); }},
        {"SetLocal", true, [&] { child->SetLocal(At(1, 0, 0)); }},
        {"SetGlobal", true, [&] { child->SetGlobal(At(2, 0, 0)); }},
        {"AddNode", false, [&] { mesh->AddNode(node); }},
        {"AddMesh", false, [&] { material->AddMesh(mesh); }},
        {"flags", false, [&] { node->SetFlags(NodeFlagHidden, true); }},
        {"draw ID", false, [&] { node->SetDrawID(1); }},
        {"value of a material", false, [&] { material->SetDiffuse(Color(1, 0, 0, 1)); }},
        {"node of a material", true, [&] { nodeMaterial->AddNode(node); }},
        {"node of a line style", false, [&] { style.SetNode(node); }},
        {"RemoveMesh", false, [&] { material->RemoveMesh(mesh); }},
        {"RemoveNode", false, [&] { mesh->RemoveNode(node); }},
        {"SetCamera", false, [&] { scene.SetCamera(&camera); }},
        {"EnableLights", false, [&] { scene.EnableLights(false); }},
        {"OverrideViewport", false, [&] { scene.OverrideViewport(true, 1, 2, 3, 4); }},
        {"ProcessChangedMaterial", true, [&] { scene.ProcessChangedMaterial(material); }},
        {"a material that goes", true, [&] { delete material; }},
        {"a node that goes by itself", false, [&] { delete child; }},
        {"DeleteSubtree", true, [&] { scene.DeleteSubtree(parent); }},
        {"a mesh that goes", true, [&] { delete mesh; }},
        {"a light that comes", true, [&] { scene.GetRoot()->AddChild(new LightNode(&scene), false); }},
        {"Resume", true, [&] { scene.Resume(); }},
        {"Show", true, [&] { scene.Show(false); }},
        {"Clear", true, [&] { scene.Clear(); }},
    };
    for (const auto& step : steps)
    {
        scene.UpdateGraph(100.0f, 100.0f);
        ASSERT_FALSE(scene.IsDirty());
        step.change();
        EXPECT_EQ(scene.IsDirty(), step.marks) << step.label;
    }
    style.SetNode(nullptr);
    delete node;
}

TEST_F(CleanScene, SetCameraOverridesTheDefaultOne)
{
    CameraNode* const own = scene.GetCameraNode();
    {
        CameraNode camera(&scene);
        scene.SetCamera(&camera);
        EXPECT_EQ(scene.GetCameraNode(), &camera);
        EXPECT_FALSE(scene.IsDirty());
        scene.SetCamera(nullptr);
        EXPECT_EQ(scene.GetCameraNode(), own);
        scene.SetCamera(&camera);
    }
    EXPECT_EQ(scene.GetCameraNode(), own) << "the camera has died";
}

TEST_F(CleanScene, MaterialsGoToTheListOfTheirTransparency)
{
    Material* const opaque = Add("opaque", 1.0f);
    EXPECT_TRUE(scene.IsDirty());
    Material* const alpha = Add("alpha", 0.5f);
    Material* const opaque2 = Add("opaque2", 1.0f);
    Material* const alpha2 = Add("alpha2", 0.0f);
    EXPECT_EQ(scene.GetOptimizedMaterials(), (Materials{opaque, opaque2}));
    EXPECT_EQ(scene.GetAlphaMaterials(), (Materials{alpha, alpha2}));
    EXPECT_EQ(opaque->GetScene(), &scene);
    EXPECT_EQ(alpha->GetScene(), &scene);
}

TEST_F(CleanScene, TheVirtualIsTransparentDecides)
{
    struct Clear : Material
    {
        Clear() : Material("clear") {}
        bool IsTransparent() override { return true; }
    };
    Material* const material = new Clear;
    scene.AddMaterial(material);
    EXPECT_EQ(scene.GetAlphaMaterials(), (Materials{material}));
}

TEST_F(CleanScene, AddMaterialOfNullOrOfOneInASceneIsRefused)
{
    Scene other;
    Material* const mine = Add("mine", 1.0f);
    Material* const theirs = new Material("theirs");
    other.AddMaterial(theirs);
    Clean();
    EXPECT_FALSE(scene.AddMaterial(mine));
    EXPECT_FALSE(scene.AddMaterial(theirs));
    EXPECT_FALSE(scene.AddMaterial(nullptr));
    EXPECT_EQ(scene.GetOptimizedMaterials(), (Materials{mine}));
    EXPECT_EQ(theirs->GetScene(), &other);
    EXPECT_FALSE(scene.IsDirty());
}

TEST_F(CleanScene, RemoveMaterialHandsItBackAndKeepsTheOrder)
{
    Materials opaque, alpha;
    for (int i = 0; i < 3; ++i)
    {
        opaque.push_back(Add("o", 1.0f));
        alpha.push_back(Add("a", 0.5f));
    }
    Clean();
    EXPECT_TRUE(scene.RemoveMaterial(opaque[1]));
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_TRUE(scene.RemoveMaterial(alpha[0]));
    EXPECT_EQ(scene.GetOptimizedMaterials(), (Materials{opaque[0], opaque[2]}));
    EXPECT_EQ(scene.GetAlphaMaterials(), (Materials{alpha[1], alpha[2]}));
    EXPECT_EQ(opaque[1]->GetScene(), nullptr);
    Clean();
    EXPECT_FALSE(scene.RemoveMaterial(opaque[1]));
    EXPECT_FALSE(scene.RemoveMaterial(nullptr));
    EXPECT_FALSE(scene.IsDirty());
    delete opaque[1];
    delete alpha[0];
}

TEST_F(CleanScene, AMaterialStaysInItsListWhenItsTransparencyChanges)
{
    Material* const material = Add("a", 1.0f);
    material->SetOpacity(0.5f);
    EXPECT_TRUE(scene.RemoveMaterial(material)) << "found in the list it was added to";
    EXPECT_TRUE(scene.GetOptimizedMaterials().empty());
    delete material;
}

TEST_F(CleanScene, ProcessChangedMaterialMovesItToTheEndOfTheOtherList)
{
    Material* const first = Add("1", 1.0f);
    Material* const second = Add("2", 1.0f);
    Material* const alpha = Add("3", 0.5f);
    first->SetOpacity(0.25f);
    EXPECT_TRUE(scene.ProcessChangedMaterial(first));
    EXPECT_EQ(scene.GetOptimizedMaterials(), (Materials{second}));
    EXPECT_EQ(scene.GetAlphaMaterials(), (Materials{alpha, first}));
    EXPECT_TRUE(scene.ProcessChangedMaterial(alpha)) << "unchanged it goes to the end";
    EXPECT_EQ(scene.GetAlphaMaterials(), (Materials{first, alpha}));
    EXPECT_EQ(alpha->GetScene(), &scene);
}

TEST_F(CleanScene, ProcessChangedMaterialOfAStrangerIsRefused)
{
    Scene other;
    Material* const theirs = new Material("theirs");
    other.AddMaterial(theirs);
    Material loose("loose");
    EXPECT_FALSE(scene.ProcessChangedMaterial(&loose));
    EXPECT_FALSE(scene.ProcessChangedMaterial(theirs));
    EXPECT_FALSE(scene.ProcessChangedMaterial(nullptr));
    EXPECT_EQ(loose.GetScene(), nullptr);
    EXPECT_EQ(theirs->GetScene(), &other);
    EXPECT_FALSE(scene.IsDirty());
}

TEST(Scene, ProcessChangedMaterialRunsTheVirtualOperations)
{
    struct NotedScene : Scene
    {
        bool AddMaterial(Material* material) override
        {
            log.push_back("add");
            return accepts && Scene::AddMaterial(material);
        }
        bool RemoveMaterial(Material* material) override
        {
            log.push_back("remove");
            return Scene::RemoveMaterial(material);
        }
        Log log;
        bool accepts = true;
    };
    NotedScene scene;
    Material material("a");
    EXPECT_FALSE(scene.ProcessChangedMaterial(&material));
    EXPECT_EQ(scene.log, (Log{"remove"}));
    scene.AddMaterial(&material);
    scene.log.clear();
    EXPECT_TRUE(scene.ProcessChangedMaterial(&material));
    EXPECT_EQ(scene.log, (Log{"remove", "add"}));
    scene.accepts = false;
    EXPECT_FALSE(scene.ProcessChangedMaterial(&material)) << "the answer is that of the adding";
}

TEST_F(CleanScene, GetMaterialFindsTheFirstOfExactlyThatNameOpaqueOnesFirst)
{
    Material* const alpha = Add("stone", 0.5f);
    EXPECT_EQ(scene.GetMaterial("stone"), alpha);
    Material* const opaque = Add("stone", 1.0f);
    Add("stone", 1.0f);
    EXPECT_EQ(scene.GetMaterial("stone"), opaque);
    EXPECT_EQ(scene.GetMaterial("Stone"), nullptr);
    EXPECT_EQ(scene.GetMaterial("ston"), nullptr);
    EXPECT_EQ(scene.GetMaterial("stones"), nullptr);
    EXPECT_EQ(scene.GetMaterial(std::string("stone\0", 6)), nullptr) << "length counts";
    Material* const zero = Add(std::string("a\0b", 3), 1.0f);
    EXPECT_EQ(scene.GetMaterial(std::string("a\0b", 3)), zero);
    EXPECT_EQ(scene.GetMaterial("a"), nullptr);
}

TEST_F(CleanScene, LineStylesAreAddedOnceAndHandedBack)
{
    Scene other;
    LineStyle* const styles[3] = {new LineStyle("a"), new LineStyle("b"), new LineStyle("a")};
    for (LineStyle* const style : styles)
    {
        EXPECT_TRUE(scene.AddLineStyle(style));
        EXPECT_EQ(style->GetScene(), &scene);
        EXPECT_TRUE(scene.IsDirty());
        Clean();
    }
    EXPECT_FALSE(scene.AddLineStyle(styles[0]));
    EXPECT_FALSE(other.AddLineStyle(styles[0]));
    EXPECT_FALSE(scene.AddLineStyle(nullptr));
    EXPECT_FALSE(other.RemoveLineStyle(styles[0]));
    EXPECT_FALSE(scene.RemoveLineStyle(nullptr));
    EXPECT_FALSE(scene.IsDirty());
    EXPECT_EQ(scene.GetLineStyles(), (std::vector<LineStyle*>{styles[0], styles[1], styles[2]}));

    EXPECT_EQ(scene.GetLineStyle("a"), styles[0]);
    EXPECT_EQ(scene.GetLineStyle("b"), styles[1]);
    EXPECT_EQ(scene.GetLineStyle("c"), nullptr);
    EXPECT_TRUE(scene.RemoveLineStyle(styles[0]));
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_EQ(styles[0]->GetScene(), nullptr);
    EXPECT_EQ(scene.GetLineStyles(), (std::vector<LineStyle*>{styles[1], styles[2]}));
    EXPECT_FALSE(scene.RemoveLineStyle(styles[0]));
    EXPECT_EQ(scene.GetLineStyle("a"), styles[2]);
    delete styles[0];
}

TEST_F(CleanScene, GetLineStyleByColorFindsNothing)
{
    LineStyle* const style = new LineStyle("a");
    style->color = Color(1, 0, 0, 1);
    scene.AddLineStyle(style);
    EXPECT_EQ(scene.GetLineStyle(Color(1, 0, 0, 1)), nullptr);
}

TEST_F(CleanScene, AddMeshNeverRefusesAMeshAndMovesItFromAnotherScene)
{
    OpenScene other;
    Mesh* const mesh = new Mesh(nullptr, &other);
    other.UpdateGraph(1, 1);
    EXPECT_TRUE(scene.AddMesh(mesh));
    EXPECT_TRUE(other.GetMeshes().empty());
    EXPECT_TRUE(other.IsDirty());
    EXPECT_EQ(scene.GetMeshes(), std::set<Mesh*>{mesh});
    EXPECT_EQ(mesh->GetScene(), &scene);
    EXPECT_TRUE(scene.IsDirty());
    Clean();
    EXPECT_TRUE(scene.AddMesh(mesh)) << "already here";
    EXPECT_EQ(scene.GetMeshes(), std::set<Mesh*>{mesh});
    EXPECT_EQ(mesh->GetScene(), &scene);
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_FALSE(scene.AddMesh(nullptr));
}

TEST_F(CleanScene, RemoveMeshRefusesAStrangerAndHandsBackItsOwn)
{
    OpenScene other;
    Mesh* const mesh = new Mesh(nullptr, &scene);
    Clean();
    EXPECT_FALSE(other.RemoveMesh(mesh)) << "from an empty set";
    new Mesh(nullptr, &other);
    EXPECT_FALSE(other.RemoveMesh(mesh));
    EXPECT_FALSE(scene.RemoveMesh(nullptr));
    EXPECT_FALSE(scene.IsDirty());
    EXPECT_EQ(mesh->GetScene(), &scene);
    EXPECT_TRUE(scene.RemoveMesh(mesh));
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_EQ(mesh->GetScene(), nullptr);
    EXPECT_TRUE(scene.GetMeshes().empty());
    EXPECT_FALSE(scene.RemoveMesh(mesh));
    delete mesh;
}

TEST_F(CleanScene, AddLineRefusesOneThatIsThereAndRemoveLineAStranger)
{
    OpenScene other;
    Line* const line = new Line(nullptr, &scene);
    Clean();
    EXPECT_FALSE(scene.AddLine(line));
    EXPECT_FALSE(scene.AddLine(nullptr));
    EXPECT_FALSE(other.RemoveLine(line));
    EXPECT_FALSE(scene.IsDirty());
    EXPECT_TRUE(scene.RemoveLine(line));
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_EQ(line->GetScene(), nullptr);
    EXPECT_FALSE(scene.RemoveLine(line));
    Clean();
    EXPECT_TRUE(scene.AddLine(line));
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_EQ(line->GetScene(), &scene);
    EXPECT_TRUE(other.AddLine(line));
    EXPECT_TRUE(scene.GetLines().empty()) << "no scene is left with a line of another";
    EXPECT_EQ(line->GetScene(), &other);
}

TEST_F(CleanScene, AddLightNodeRefusesOneThatIsThereAndRemoveLightNodeAStranger)
{
    OpenScene other;
    LightNode light(&scene);
    LightNode second(&scene);
    LightNode third(&scene);
    Clean();
    EXPECT_FALSE(scene.AddLightNode(&light));
    EXPECT_FALSE(scene.AddLightNode(nullptr));
    EXPECT_FALSE(other.RemoveLightNode(&light));
    EXPECT_FALSE(scene.IsDirty());
    EXPECT_TRUE(scene.RemoveLightNode(&second));
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_EQ(scene.GetLights(), (std::vector<LightNode*>{&light, &third}));
    EXPECT_FALSE(scene.RemoveLightNode(&second));
    Clean();
    EXPECT_TRUE(scene.AddLightNode(&second));
    EXPECT_TRUE(scene.IsDirty());
    EXPECT_EQ(scene.GetLights(), (std::vector<LightNode*>{&light, &third, &second}));
}

TEST_F(CleanScene, SetsAreOrderedByAddress)
{
    std::set<Mesh*> meshes;
    std::set<Line*> lines;
    for (int i = 0; i < 5; ++i)
    {
        meshes.insert(new Mesh(nullptr, &scene));
        lines.insert(new Line(nullptr, &scene));
    }
    EXPECT_EQ(scene.GetMeshes(), meshes);
    EXPECT_EQ(scene.GetLines(), lines);
}

TEST(Scene, VirtualsStandInTheirOrder)
{
    EXPECT_EQ(VirtualSlot(&Scene::Clear), 1);
    EXPECT_EQ(VirtualSlot(&Scene::AddMaterial), 2);
    EXPECT_EQ(VirtualSlot(&Scene::RemoveMaterial), 3);
    EXPECT_EQ(VirtualSlot(&Scene::GetMaterial), 4);
    EXPECT_EQ(VirtualSlot(&Scene::AddLineStyle), 5);
    EXPECT_EQ(VirtualSlot(&Scene::RemoveLineStyle), 6);
    EXPECT_EQ(VirtualSlot(&Scene::UpdateGraph), 7);
    EXPECT_EQ(VirtualSlot(&Scene::Suspend), 8);
    EXPECT_EQ(VirtualSlot(&Scene::Resume), 9);
    EXPECT_EQ(VirtualSlot(&Scene::GetBoundingBox), 10);
    EXPECT_EQ(VirtualSlot(&OpenScene::ProcessZOrderedDrawItems), 11);
    EXPECT_EQ(VirtualSlot(&OpenScene::UpdateCulling), -1);
    EXPECT_EQ(VirtualSlot(&OpenScene::AddMesh), -1);
    EXPECT_EQ(VirtualSlot(&Scene::ProcessChangedMaterial), -1);
}

} // namespace
} // namespace OV
