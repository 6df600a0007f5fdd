#include "tests/scene/SceneDoubles.h"
#include "tests/scene/TrackedWorld.h"

#include <algorithm>

namespace OV
{
namespace
{

using namespace Test;

/// Two scenes and one or two of everything, linked in every way there is. Scenes own some of
/// it; the rest is the test's.
class Stage
{
public:
    Stage()
    {
        scene->GetRoot()->AddChild(parent, false);
        parent->AddChild(child, false);
        parent->AddChild(light, false);
        mesh->AddNode(parent);
        mesh->AddNode(child);
        sharer->AddNode(child);
        line->AddNode(child);
        looseMesh->AddNode(looseNode);
        looseMesh->AddNode(child);

        material->SetOpacity(0.5f);
        scene->AddMaterial(material);
        scene->AddMaterial(nodeMaterial);
        for (Mesh* const used : {mesh, sharer, looseMesh})
        {
            material->AddMesh(used);
        }
        for (NodeMaterial* const used : {nodeMaterial, looseNodeMaterial})
        {
            used->AddNode(child);
            used->AddNode(looseNode);
        }
        scene->AddLineStyle(style);
        style->AddLine(line);
        style->AddLine(looseLine);
        nodeStyle->SetNode(child);
        world.styledNodes.insert(child);
        looseLine->SetScene(otherScene);

        scene->SetCamera(camera);
        otherScene->SetCamera(camera);
        scene->PopulateZOrderedDrawItems();
        scene->UpdateGraph(10, 10);

        const auto data = [this] { return new Tracked<Object>(world); };
        scene->GetRoot()->SetAnimationData(data());
        parent->SetAnimationData(data());
        child->SetRenderData(data());
        child->SetCollisionData(data());
        light->SetRenderData(data());
        camera->SetRenderData(data());
        mesh->SetRenderData(data(), true);
        sharer->SetRenderData(data(), false);
        line->SetRenderData(data(), true);
        looseLine->SetRenderData(data(), true);
        material->SetRenderData(data());
        nodeMaterial->SetRenderData(data());
        style->SetRenderData(data());
        nodeStyle->SetRenderData(data());
    }

    /// Deletes what is left of the test's own.
    ~Stage()
    {
        while (!world.scenes.empty())
        {
            DeleteScene(world.scenes.back());
        }
        Kill(world.nodes);
        for (const WatchedPtr<CameraNode>& stray : world.strayCameras)
        {
            delete stray.Get();
        }
        Kill(world.meshes);
        Kill(world.materials);
        Kill(world.lineStyles);
        ReleaseGeometries();
    }

    void DeleteScene(Scene* dying)
    {
        if (Has(world.scenes, static_cast<const Scene*>(dying)))
        {
            world.KeepStrayCamera(*dying);
            delete dying;
        }
    }

    template <class T>
    static void Kill(std::vector<T*>& list)
    {
        while (!list.empty())
        {
            delete list.back();
        }
    }

    template <class T>
    std::shared_ptr<T> Held()
    {
        auto held = std::make_shared<Tracked<T>>(world);
        world.heldGeometries.push_back(held);
        return held;
    }

    void ReleaseGeometries()
    {
        world.heldGeometries.clear();
        geometry.reset();
        lineGeometry.reset();
    }

    World world;
    Scene* const scene = new Tracked<Scene>(world);
    Scene* const otherScene = new Tracked<Scene>(world);
    MeshNode* const parent = new Tracked<MeshNode>(world, scene);
    MeshNode* const child = new Tracked<MeshNode>(world, scene);
    MeshNode* const looseNode = new Tracked<MeshNode>(world, scene);
    LightNode* const light = new Tracked<LightNode>(world, scene);
    CameraNode* const camera = new Tracked<CameraNode>(world, scene);
    std::shared_ptr<RawMesh> geometry = Held<RawMesh>();
    std::shared_ptr<RawLine> lineGeometry = Held<RawLine>();
    Mesh* const mesh = new Tracked<Mesh>(world, geometry, scene);
    Mesh* const sharer = new Tracked<Mesh>(world, geometry, scene);
    Mesh* const looseMesh = new Tracked<Mesh>(world, geometry);
    Line* const line = new Tracked<Line>(world, lineGeometry, scene);
    Line* const looseLine = new Tracked<Line>(world, lineGeometry, scene);
    Material* const material = new Tracked<Material>(world, std::string("alpha"));
    NodeMaterial* const nodeMaterial = new Tracked<NodeMaterial>(world);
    NodeMaterial* const looseNodeMaterial = new Tracked<NodeMaterial>(world);
    LineStyle* const style = new Tracked<LineStyle>(world, std::string("style"));
    NodeLineStyle* const nodeStyle = new Tracked<NodeLineStyle>(world);
};

/// Deletes an object of a stage, unless its owner or another step has deleted it already.
template <class T>
void Delete(const std::vector<T*>& alive, T* object)
{
    if (Has(alive, static_cast<const T*>(object)))
    {
        delete object;
    }
}

bool IsAlive(const Stage& stage)
{
    return Has(stage.world.scenes, static_cast<const Scene*>(stage.scene));
}

struct Step
{
    const char* label;
    void (*run)(Stage&);
};

const Step deleteScene = {"scene", [](Stage& s) { s.DeleteScene(s.scene); }};
const Step deleteOtherScene = {"other scene", [](Stage& s) { s.DeleteScene(s.otherScene); }};
const Step clearScene = {"clear",
                         [](Stage& s)
                         {
                             if (IsAlive(s))
                             {
                                 s.world.KeepStrayCamera(*s.scene);
                                 s.scene->Clear();
                             }
                         }};
const Step deleteRoot = {"root",
                         [](Stage& s)
                         {
                             if (IsAlive(s))
                             {
                                 delete s.scene->GetRoot();
                             }
                         }};
const Step deleteDefaultCamera = {"default camera",
                                  [](Stage& s)
                                  {
                                      if (IsAlive(s))
                                      {
                                          delete SceneParts::DefaultCamera(*s.scene);
                                      }
                                  }};
const Step deleteParent = {"parent node", [](Stage& s) { Delete<Node>(s.world.nodes, s.parent); }};
const Step deleteChild = {"child node", [](Stage& s) { Delete<Node>(s.world.nodes, s.child); }};
const Step deleteLooseNode = {"loose node", [](Stage& s) { Delete<Node>(s.world.nodes, s.looseNode); }};
const Step deleteLight = {"light", [](Stage& s) { Delete<Node>(s.world.nodes, s.light); }};
const Step deleteCamera = {"camera", [](Stage& s) { Delete<Node>(s.world.nodes, s.camera); }};
const Step deleteMesh = {"mesh", [](Stage& s) { Delete(s.world.meshes, s.mesh); }};
const Step deleteSharer = {"sharing mesh", [](Stage& s) { Delete(s.world.meshes, s.sharer); }};
const Step deleteLooseMesh = {"loose mesh", [](Stage& s) { Delete(s.world.meshes, s.looseMesh); }};
const Step deleteLine = {"line", [](Stage& s) { Delete<Mesh>(s.world.meshes, s.line); }};
const Step deleteLooseLine = {"line of both scenes", [](Stage& s) { Delete<Mesh>(s.world.meshes, s.looseLine); }};
const Step deleteMaterial = {"material", [](Stage& s) { Delete(s.world.materials, s.material); }};
const Step deleteNodeMaterial = {"node material",
                                 [](Stage& s) { Delete<Material>(s.world.materials, s.nodeMaterial); }};
const Step deleteLooseNodeMaterial = {
    "loose node material", [](Stage& s) { Delete<Material>(s.world.materials, s.looseNodeMaterial); }};
const Step deleteStyle = {"style", [](Stage& s) { Delete(s.world.lineStyles, s.style); }};
const Step deleteNodeStyle = {"node style", [](Stage& s) { Delete<LineStyle>(s.world.lineStyles, s.nodeStyle); }};
const Step deleteDrawItems = {"draw items",
                              [](Stage& s)
                              {
                                  if (IsAlive(s))
                                  {
                                      s.scene->PopulateZOrderedDrawItems();
                                  }
                              }};
const Step releaseGeometries = {"geometries", [](Stage& s) { s.ReleaseGeometries(); }};
const Step suspend = {"suspend",
                      [](Stage& s)
                      {
                          for (Scene* const scene : s.world.scenes)
                          {
                              scene->Suspend();
                          }
                      }};
const Step update = {"update",
                     [](Stage& s)
                     {
                         for (Scene* const scene : s.world.scenes)
                         {
                             scene->MarkDirty();
                             scene->UpdateGraph(10, 10);
                         }
                     }};

using Steps = std::vector<const Step*>;

/// Runs the steps on a fresh stage.
/// @return what went wrong and when; empty when nothing did.
std::string TroubleOf(const Steps& steps)
{
    Stage stage;
    std::string done;
    for (const Step* const step : steps)
    {
        done += std::string(done.empty() ? "" : ", ") + step->label;
        step->run(stage);
        const std::string violation = stage.world.Violation();
        if (!violation.empty())
        {
            return "after " + done + ": " + violation;
        }
    }
    return "";
}

struct Group
{
    const char* label;
    Steps steps;
};

void PrintTo(const Group& group, std::ostream* out)
{
    *out << group.label;
}

class DestructionOrder : public ::testing::TestWithParam<Group>
{
};

TEST_P(DestructionOrder, LeavesNothingDangling)
{
    Steps steps = GetParam().steps;
    std::sort(steps.begin(), steps.end());
    int orders = 0;
    do
    {
        ASSERT_EQ(TroubleOf(steps), "");
        ++orders;
    } while (std::next_permutation(steps.begin(), steps.end()));
    int expected = 1;
    for (int i = 2; i <= static_cast<int>(steps.size()); ++i)
    {
        expected *= i;
    }
    EXPECT_EQ(orders, expected);
}

const Group groups[] = {
    {"MeshesAndMaterials",
     {&deleteScene, &deleteParent, &deleteChild, &deleteMesh, &deleteSharer, &deleteMaterial,
      &releaseGeometries}},
    {"NodeMaterials",
     {&deleteScene, &deleteChild, &deleteLooseNode, &deleteMesh, &deleteNodeMaterial, &deleteLooseNodeMaterial}},
    {"LinesAndStyles",
     {&deleteScene, &deleteOtherScene, &deleteLine, &deleteLooseLine, &deleteStyle, &deleteNodeStyle}},
    {"CamerasAndLights",
     {&deleteScene, &deleteOtherScene, &deleteRoot, &deleteDefaultCamera, &deleteCamera, &deleteLight}},
    {"DrawItems",
     {&deleteDrawItems, &deleteScene, &deleteChild, &deleteMesh, &deleteLooseMesh, &deleteMaterial}},
    {"Clearing", {&clearScene, &deleteOtherScene, &deleteLooseNode, &deleteLooseLine, &deleteNodeStyle, &update}},
};

INSTANTIATE_TEST_SUITE_P(Scene, DestructionOrder, ::testing::ValuesIn(groups),
                         [](const auto& info) { return info.param.label; });

const Steps allSteps = {&deleteScene,     &deleteOtherScene,   &clearScene,
                        &deleteRoot,      &deleteDefaultCamera, &deleteParent,
                        &deleteChild,     &deleteLooseNode,    &deleteLight,
                        &deleteCamera,    &deleteMesh,         &deleteSharer,
                        &deleteLooseMesh, &deleteLine,         &deleteLooseLine,
                        &deleteMaterial,  &deleteNodeMaterial, &deleteLooseNodeMaterial,
                        &deleteStyle,     &deleteNodeStyle,    &deleteDrawItems,
                        &releaseGeometries, &suspend,          &update};

TEST(DestructionOrder, EachOfAllBeforeEachOther)
{
    for (const Step* const first : allSteps)
    {
        for (const Step* const second : allSteps)
        {
            if (first == second)
            {
                continue;
            }
            Steps rest = allSteps;
            rest.erase(std::remove_if(rest.begin(), rest.end(),
                                      [&](const Step* step) { return step == first || step == second; }),
                       rest.end());
            Steps steps = {first, second};
            steps.insert(steps.end(), rest.begin(), rest.end());
            ASSERT_EQ(TroubleOf(steps), "");
            steps = {first, second};
            steps.insert(steps.end(), rest.rbegin(), rest.rend());
            ASSERT_EQ(TroubleOf(steps), "");
        }
    }
}

TEST(DestructionOrder, GeometryMayGoFirstOrLast)
{
    for (const bool first : {true, false})
    {
        World world;
        auto* const scene = new Tracked<Scene>(world);
        auto geometry = std::make_shared<Tracked<RawMesh>>(world);
        new Tracked<Mesh>(world, geometry, scene);
        new Tracked<Mesh>(world, geometry, scene);
        geometry->SetRenderData(new Tracked<Object>(world));
        if (first)
        {
            geometry.reset();
            EXPECT_EQ(world.geometries.size(), 1u) << "the meshes keep it";
        }
        delete scene;
        EXPECT_EQ(world.geometries.size(), first ? 0u : 1u);
        EXPECT_TRUE(world.objects.empty()) << "render data go with the first mesh";
        geometry.reset();
        EXPECT_TRUE(world.IsEmpty());
    }
}

TEST(DestructionOrder, OwnersDeleteAllThatIsTheirs)
{
    Stage stage;
    stage.ReleaseGeometries();
    delete stage.scene;
    delete stage.otherScene;
    EXPECT_EQ(stage.world.nodes, (std::vector<Node*>{stage.looseNode, stage.camera}));
    EXPECT_EQ(stage.world.meshes, (std::vector<Mesh*>{stage.looseMesh}));
    EXPECT_EQ(stage.world.materials, (std::vector<Material*>{stage.looseNodeMaterial}));
    EXPECT_EQ(stage.world.lineStyles, (std::vector<LineStyle*>{stage.nodeStyle}));
    EXPECT_EQ(stage.world.geometries.size(), 1u) << "that of the loose mesh";
    EXPECT_EQ(stage.world.objects.size(), 2u) << "of the camera and of the style";
    EXPECT_EQ(stage.world.Violation(), "");
}

} // namespace
} // namespace OV
