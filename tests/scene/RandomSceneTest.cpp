#include "tests/scene/SceneDoubles.h"
#include "tests/scene/TrackedWorld.h"

#include <map>
#include <random>

namespace OV
{
namespace
{

using namespace Test;

/// A host that does to scenes whatever it may, at random, and knows what must come of it.
class RandomHost
{
public:
    explicit RandomHost(unsigned seed) : m_random(seed) { NewScene(); }

    /// @return what went wrong, empty when nothing did; ends with everything deleted.
    std::string Live(int steps)
    {
        std::string trouble;
        for (int step = 0; step < steps && trouble.empty(); ++step)
        {
            trouble = Do(Operations()[Below(Operations().size())]);
        }
        while (trouble.empty() && !(m_world.IsEmpty() && m_world.heldGeometries.empty()))
        {
            trouble = Do({"the end", &RandomHost::DeleteAny});
        }
        if (!trouble.empty())
        {
            // What is broken cannot be deleted safely.
            return trouble;
        }
        return "";
    }

private:
    struct Operation
    {
        const char* label;
        void (RandomHost::*run)();
    };

    /// Registries in the order that they must have.
    struct Listed
    {
        std::vector<Material*> optimized;
        std::vector<Material*> alpha;
        std::vector<LineStyle*> styles;
        std::vector<LightNode*> lights;
    };

    static const std::vector<Operation>& Operations();

    std::string Do(const Operation& operation)
    {
        m_trouble.clear();
        (this->*operation.run)();
        if (m_trouble.empty())
        {
            m_trouble = m_world.Violation();
        }
        if (m_trouble.empty())
        {
            m_trouble = ListViolation();
        }
        return m_trouble.empty() ? "" : std::string(operation.label) + ": " + m_trouble;
    }

    std::string ListViolation()
    {
        const auto dropDead = [](auto& list, const auto& alive)
        {
            const auto isDead = [&alive](auto* entry) { return std::find(alive.begin(), alive.end(), entry) == alive.end(); };
            list.erase(std::remove_if(list.begin(), list.end(), isDead), list.end());
        };
        for (Scene* const scene : m_world.scenes)
        {
            Listed& listed = m_listed[scene];
            dropDead(listed.optimized, m_world.materials);
            dropDead(listed.alpha, m_world.materials);
            dropDead(listed.styles, m_world.lineStyles);
            dropDead(listed.lights, m_world.lights);
            if (scene->GetOptimizedMaterials() != listed.optimized || scene->GetAlphaMaterials() != listed.alpha)
            {
                return "the materials are not in their lists or not in their order";
            }
            if (scene->GetLineStyles() != listed.styles)
            {
                return "the line styles are not in their order";
            }
            if (scene->GetLights() != listed.lights)
            {
                return "the lights are not in their order";
            }
        }
        return "";
    }

    void Expect(bool holds, const char* what)
    {
        if (!holds && m_trouble.empty())
        {
            m_trouble = what;
        }
    }

    std::size_t Below(std::size_t end) { return m_random() % end; }

    bool OneIn(std::size_t odds) { return Below(odds) == 0; }

    /// Any of the list, now and then none.
    template <class T>
    T* Any(const std::vector<T*>& list)
    {
        return list.empty() || OneIn(20) ? nullptr : list[Below(list.size())];
    }

    template <class T>
    static bool IsCrowded(const std::vector<T*>& list)
    {
        return list.size() >= 10;
    }

    std::shared_ptr<RawMesh> AnyGeometry()
    {
        if (m_world.heldGeometries.empty() || OneIn(3))
        {
            auto geometry = std::make_shared<Tracked<RawMesh>>(m_world);
            geometry->SetPositionBuffer({Vector(static_cast<float>(Below(10)), 0, 0), Vector(0, 1, 0)});
            geometry->EndDescription(true);
            if (OneIn(2))
            {
                m_world.heldGeometries.push_back(geometry);
            }
            return geometry;
        }
        return m_world.heldGeometries[Below(m_world.heldGeometries.size())];
    }

    Transform AnyPlace()
    {
        return Product(At(static_cast<float>(Below(7)), 0, -static_cast<float>(Below(50))),
                       TurnedAboutY(static_cast<double>(Below(60)) * 0.1));
    }

    // Scenes
    void NewScene();
    void DeleteScene();
    void ClearScene();
    void UseCamera();
    void UpdateScene();
    void SuspendAndResume();
    void Populate();

    // Nodes
    void NewNode();
    void AddChild();
    void RemoveChild();
    void MoveNode();
    void DeleteSubtree();
    void DeleteNode();
    void DeleteOwnNode();

    // Meshes and lines
    void NewMesh();
    void NewLine();
    void CopyMesh();
    void AssignMesh();
    void SetSceneOfMesh();
    void AddMeshToNode();
    void RemoveMeshFromNode();
    void DeleteMesh();
    void ReleaseGeometry();

    // Materials
    void NewMaterial();
    void AddMaterial();
    void RemoveMaterial();
    void ChangeOpacity();
    void ProcessChangedMaterial();
    void GiveMaterial();
    void TakeMaterial();
    void AddNodeToMaterial();
    void RemoveNodeFromMaterial();
    void ClearNodeMaterial();
    void DeleteMaterial();

    // Line styles
    void NewStyle();
    void AddStyle();
    void RemoveStyle();
    void GiveStyle();
    void TakeStyle();
    void BindStyle();
    void DeleteStyle();

    void SetData();
    void DeleteAny();

    std::mt19937 m_random;
    World m_world;
    std::map<const Scene*, Listed> m_listed;
    std::string m_trouble;
};

const std::vector<RandomHost::Operation>& RandomHost::Operations()
{
    using H = RandomHost;
    // What stands twice is twice as likely.
    static const std::vector<Operation> operations = {
        {"new scene", &H::NewScene},
        {"delete scene", &H::DeleteScene},
        {"clear scene", &H::ClearScene},
        {"use camera", &H::UseCamera},
        {"update", &H::UpdateScene},
        {"update", &H::UpdateScene},
        {"suspend and resume", &H::SuspendAndResume},
        {"populate", &H::Populate},
        {"populate", &H::Populate},
        {"new node", &H::NewNode},
        {"new node", &H::NewNode},
        {"new node", &H::NewNode},
        {"new node", &H::NewNode},
        {"add child", &H::AddChild},
        {"add child", &H::AddChild},
        {"add child", &H::AddChild},
        {"remove child", &H::RemoveChild},
        {"move node", &H::MoveNode},
        {"delete subtree", &H::DeleteSubtree},
        {"delete node", &H::DeleteNode},
        {"delete root or default camera", &H::DeleteOwnNode},
        {"new mesh", &H::NewMesh},
        {"new mesh", &H::NewMesh},
        {"new mesh", &H::NewMesh},
        {"new line", &H::NewLine},
        {"new line", &H::NewLine},
        {"copy mesh", &H::CopyMesh},
        {"assign mesh", &H::AssignMesh},
        {"set scene of mesh", &H::SetSceneOfMesh},
        {"add mesh to node", &H::AddMeshToNode},
        {"add mesh to node", &H::AddMeshToNode},
        {"add mesh to node", &H::AddMeshToNode},
        {"remove mesh from node", &H::RemoveMeshFromNode},
        {"delete mesh", &H::DeleteMesh},
        {"release geometry", &H::ReleaseGeometry},
        {"new material", &H::NewMaterial},
        {"new material", &H::NewMaterial},
        {"add material", &H::AddMaterial},
        {"add material", &H::AddMaterial},
        {"remove material", &H::RemoveMaterial},
        {"change opacity", &H::ChangeOpacity},
        {"process changed material", &H::ProcessChangedMaterial},
        {"give material", &H::GiveMaterial},
        {"give material", &H::GiveMaterial},
        {"take material", &H::TakeMaterial},
        {"add node to material", &H::AddNodeToMaterial},
        {"add node to material", &H::AddNodeToMaterial},
        {"remove node from material", &H::RemoveNodeFromMaterial},
        {"clear node material", &H::ClearNodeMaterial},
        {"delete material", &H::DeleteMaterial},
        {"new style", &H::NewStyle},
        {"add style", &H::AddStyle},
        {"add style", &H::AddStyle},
        {"remove style", &H::RemoveStyle},
        {"give style", &H::GiveStyle},
        {"give style", &H::GiveStyle},
        {"take style", &H::TakeStyle},
        {"bind style", &H::BindStyle},
        {"delete style", &H::DeleteStyle},
        {"set data", &H::SetData},
        {"set data", &H::SetData},
    };
    return operations;
}

void RandomHost::NewScene()
{
    if (m_world.scenes.size() < 3)
    {
        Scene* const scene = new Tracked<Scene>(m_world);
        m_listed[scene] = {};
    }
}

void RandomHost::DeleteScene()
{
    Scene* const scene = Any(m_world.scenes);
    if (scene && OneIn(2))
    {
        m_listed.erase(scene);
        m_world.KeepStrayCamera(*scene);
        delete scene;
    }
}

void RandomHost::ClearScene()
{
    Scene* const scene = Any(m_world.scenes);
    if (!scene || !OneIn(2))
    {
        return;
    }
    const auto staying = [scene](const auto& list)
    { return std::count_if(list.begin(), list.end(), [scene](auto* entry) { return entry->GetScene() != scene; }); };
    const auto meshes = staying(m_world.meshes);
    const auto materials = staying(m_world.materials);
    const auto styles = staying(m_world.lineStyles);
    const unsigned updateID = scene->GetUpdateID();
    m_world.KeepStrayCamera(*scene);
    scene->Clear();
    Expect(meshes == static_cast<long>(m_world.meshes.size()) &&
               materials == static_cast<long>(m_world.materials.size()) &&
               styles == static_cast<long>(m_world.lineStyles.size()),
           "deleted other things than its own");
    Expect(scene->GetMeshes().empty() && scene->GetLines().empty() && scene->GetZOrderedDrawItems().empty() &&
               scene->GetLineStyles().empty(),
           "something is left");
    Expect(scene->GetRoot() && scene->GetRoot()->GetChildren().size() == 1 && scene->GetCameraNode(),
           "has no fresh root and camera");
    Expect(scene->IsDirty() && scene->GetUpdateID() == updateID, "the clock or the dirty flag is wrong");
}

void RandomHost::UseCamera()
{
    if (Scene* const scene = Any(m_world.scenes))
    {
        CameraNode* const camera = Any(m_world.cameras);
        scene->SetCamera(camera);
        Expect(scene->GetCameraNode() == (camera ? camera : SceneParts::DefaultCamera(*scene)),
               "another camera is in use");
    }
}

void RandomHost::UpdateScene()
{
    if (Scene* const scene = Any(m_world.scenes))
    {
        const unsigned updateID = scene->GetUpdateID();
        scene->UpdateGraph(20.0f, 10.0f);
        Expect(!scene->IsDirty() && scene->GetUpdateID() == updateID + 1, "the clock or the dirty flag is wrong");
        Vector boxMin, boxMax;
        scene->GetBoundingBox(boxMin, boxMax);
        scene->Frame();
    }
}

void RandomHost::SuspendAndResume()
{
    if (Scene* const scene = Any(m_world.scenes))
    {
        scene->Suspend();
        for (Mesh* const mesh : m_world.meshes)
        {
            Expect(mesh->GetScene() != scene || !mesh->GetRenderData(), "a mesh keeps render data");
        }
        for (Material* const material : m_world.materials)
        {
            Expect(material->GetScene() != scene || !material->GetRenderData(), "a material keeps render data");
        }
        for (LineStyle* const style : m_world.lineStyles)
        {
            Expect(style->GetScene() != scene || !style->GetRenderData(), "a style keeps render data");
        }
        scene->Resume();
        Expect(scene->IsDirty(), "the scene is not dirty");
    }
}

void RandomHost::Populate()
{
    if (Scene* const scene = Any(m_world.scenes))
    {
        scene->PopulateZOrderedDrawItems();
        std::size_t expected = 0;
        for (const Material* const material : scene->GetAlphaMaterials())
        {
            for (const Mesh* const mesh : material->GetMeshes())
            {
                expected += mesh->GetNodes().size();
            }
        }
        Expect(scene->GetZOrderedDrawItems().size() == expected, "another number of draw items");
    }
}

void RandomHost::NewNode()
{
    if (IsCrowded(m_world.nodes))
    {
        return;
    }
    Scene* const scene = Any(m_world.scenes);
    Node* node = nullptr;
    switch (Below(6))
    {
    case 0:
        node = new Tracked<Node>(m_world, scene);
        break;
    case 1:
        node = new Tracked<CameraNode>(m_world, scene);
        break;
    case 2:
        node = new Tracked<LightNode>(m_world, scene);
        if (scene)
        {
            m_listed[scene].lights.push_back(m_world.lights.back());
        }
        break;
    default:
        node = new Tracked<MeshNode>(m_world, scene);
        break;
    }
    if (scene && scene->GetRoot() && OneIn(2))
    {
        scene->GetRoot()->AddChild(node, OneIn(2));
        Expect(node->GetParent() == scene->GetRoot(), "not below the root");
    }
}

void RandomHost::AddChild()
{
    Node* const parent = Any(m_world.AllNodes());
    Node* const child = Any(m_world.AllNodes());
    if (!parent)
    {
        return;
    }
    bool isLegal = child && child->GetScene() == parent->GetScene();
    for (const Node* up = parent; up; up = up->GetParent())
    {
        isLegal = isLegal && up != child;
    }
    Node* const oldParent = child ? child->GetParent() : nullptr;
    parent->AddChild(child, OneIn(2));
    if (isLegal)
    {
        Expect(child->GetParent() == parent && parent->GetChildren().back() == child, "not the last child");
    }
    else
    {
        Expect(!child || child->GetParent() == oldParent, "moved against the rules");
    }
}

void RandomHost::RemoveChild()
{
    Node* const child = Any(m_world.AllNodes());
    Node* const parent = child && OneIn(2) ? child->GetParent() : Any(m_world.AllNodes());
    if (!parent)
    {
        return;
    }
    Node* const oldParent = child ? child->GetParent() : nullptr;
    parent->RemoveChild(child);
    Expect(!child || child->GetParent() == (oldParent == parent ? nullptr : oldParent), "another parent than expected");
}

void RandomHost::MoveNode()
{
    if (Node* const node = Any(m_world.AllNodes()))
    {
        OneIn(2) ? node->SetLocal(AnyPlace()) : node->SetGlobal(AnyPlace());
        node->GetGlobalMatrix();
    }
}

void RandomHost::DeleteSubtree()
{
    Scene* const scene = Any(m_world.scenes);
    Node* const top = Any(m_world.nodes);
    if (!scene)
    {
        return;
    }
    const auto isStaying = [top](const Node* node)
    {
        while (node && node != top)
        {
            node = node->GetParent();
        }
        return !node || !top;
    };
    const auto staying = std::count_if(m_world.nodes.begin(), m_world.nodes.end(), isStaying);
    scene->DeleteSubtree(top);
    Expect(staying == static_cast<long>(m_world.nodes.size()), "another number of nodes is left");
    Expect(scene->IsDirty(), "the scene is not dirty");
}

void RandomHost::DeleteNode()
{
    const std::size_t before = m_world.nodes.size();
    if (Node* const node = Any(m_world.nodes))
    {
        delete node;
        Expect(m_world.nodes.size() == before - 1, "other nodes died too");
    }
}

void RandomHost::DeleteOwnNode()
{
    Scene* const scene = Any(m_world.scenes);
    if (!scene || !OneIn(4))
    {
        return;
    }
    if (OneIn(2))
    {
        delete scene->GetRoot();
        Expect(!scene->GetRoot(), "the root is not forgotten");
    }
    else
    {
        delete SceneParts::DefaultCamera(*scene);
        Expect(!SceneParts::DefaultCamera(*scene), "the camera is not forgotten");
    }
}

void RandomHost::NewMesh()
{
    if (!IsCrowded(m_world.meshes))
    {
        Scene* const scene = Any(m_world.scenes);
        const Mesh* const other = OneIn(3) ? Any(m_world.meshes) : nullptr;
        const Mesh* const mesh = other ? new Tracked<Mesh>(m_world, *other, scene)
                                       : new Tracked<Mesh>(m_world, AnyGeometry(), scene);
        Expect(mesh->GetScene() == scene, "not in the scene it was made for");
    }
}

void RandomHost::NewLine()
{
    if (!IsCrowded(m_world.lines))
    {
        auto geometry = std::make_shared<Tracked<RawLine>>(m_world);
        geometry->SetPositionBuffer(std::vector<Vector>(Below(3), Vector(1, 2, 3)));
        Scene* const scene = Any(m_world.scenes);
        const Line* const line = new Tracked<Line>(m_world, geometry, scene);
        Expect(line->GetScene() == scene, "not in the scene it was made for");
    }
}

void RandomHost::CopyMesh()
{
    const Mesh* const source = Any(m_world.meshes);
    if (source && !IsCrowded(m_world.meshes))
    {
        const Mesh* const copy = new Tracked<Mesh>(m_world, *source);
        Expect(copy->GetSortID() == source->GetSortID() && !copy->GetScene(), "no plain copy");
    }
}

void RandomHost::AssignMesh()
{
    Mesh* const target = Any(m_world.meshes);
    const Mesh* const source = Any(m_world.meshes);
    if (target && source)
    {
        target->Mesh::operator=(*source);
        Expect(target->GetSortID() == source->GetSortID() && target->GetRawMesh() == source->GetRawMesh(),
               "no plain copy");
    }
}

void RandomHost::SetSceneOfMesh()
{
    if (Mesh* const mesh = Any(m_world.meshes))
    {
        Scene* const old = mesh->GetScene();
        Scene* const scene = Any(m_world.scenes);
        mesh->SetScene(scene);
        Expect(mesh->GetScene() == (scene ? scene : old), "in another scene");
    }
}

void RandomHost::AddMeshToNode()
{
    Mesh* const mesh = Any(m_world.meshes);
    MeshNode* const node = Any(m_world.meshNodes);
    if (mesh)
    {
        const bool isNew = node && !Has(node->GetMeshes(), static_cast<const Mesh*>(mesh));
        Expect(mesh->AddNode(node) == isNew, "the wrong answer");
    }
}

void RandomHost::RemoveMeshFromNode()
{
    Mesh* const mesh = Any(m_world.meshes);
    MeshNode* const node = mesh && OneIn(2) ? Any(mesh->GetNodes()) : Any(m_world.meshNodes);
    if (mesh)
    {
        const bool isThere = node && Has(node->GetMeshes(), static_cast<const Mesh*>(mesh));
        Expect(mesh->RemoveNode(node) == isThere, "the wrong answer");
    }
}

void RandomHost::DeleteMesh()
{
    delete Any(m_world.meshes);
}

void RandomHost::ReleaseGeometry()
{
    if (!m_world.heldGeometries.empty())
    {
        m_world.heldGeometries.erase(m_world.heldGeometries.begin() +
                                     static_cast<long>(Below(m_world.heldGeometries.size())));
    }
}

void RandomHost::NewMaterial()
{
    if (IsCrowded(m_world.materials))
    {
        return;
    }
    Material* const material = OneIn(2) ? new Tracked<Material>(m_world, std::string("m"))
                                        : static_cast<Material*>(new Tracked<NodeMaterial>(m_world));
    material->SetOpacity(OneIn(2) ? 1.0f : 0.5f);
}

void RandomHost::AddMaterial()
{
    Scene* const scene = Any(m_world.scenes);
    Material* const material = Any(m_world.materials);
    if (!scene)
    {
        return;
    }
    const bool isFree = material && !material->GetScene();
    Expect(scene->AddMaterial(material) == isFree, "the wrong answer");
    if (isFree)
    {
        Listed& listed = m_listed[scene];
        (material->GetOpacity() < 1.0f ? listed.alpha : listed.optimized).push_back(material);
    }
}

void RandomHost::RemoveMaterial()
{
    Scene* const scene = Any(m_world.scenes);
    Material* const material = Any(m_world.materials);
    if (!scene)
    {
        return;
    }
    const bool isThere = material && material->GetScene() == scene;
    Expect(scene->RemoveMaterial(material) == isThere, "the wrong answer");
    if (isThere)
    {
        for (auto* const list : {&m_listed[scene].optimized, &m_listed[scene].alpha})
        {
            list->erase(std::remove(list->begin(), list->end(), material), list->end());
        }
        Expect(!material->GetScene(), "still names the scene");
    }
}

void RandomHost::ChangeOpacity()
{
    if (Material* const material = Any(m_world.materials))
    {
        material->SetOpacity(OneIn(2) ? 1.0f : 0.5f);
    }
}

void RandomHost::ProcessChangedMaterial()
{
    Scene* const scene = Any(m_world.scenes);
    Material* const material = Any(m_world.materials);
    if (!scene)
    {
        return;
    }
    const bool isThere = material && material->GetScene() == scene;
    Expect(scene->ProcessChangedMaterial(material) == isThere, "the wrong answer");
    if (isThere)
    {
        Listed& listed = m_listed[scene];
        for (auto* const list : {&listed.optimized, &listed.alpha})
        {
            list->erase(std::remove(list->begin(), list->end(), material), list->end());
        }
        (material->GetOpacity() < 1.0f ? listed.alpha : listed.optimized).push_back(material);
    }
}

void RandomHost::GiveMaterial()
{
    Material* const material = Any(m_world.materials);
    Mesh* const mesh = Any(m_world.meshes);
    if (!material)
    {
        return;
    }
    const auto& held = material->GetMeshes();
    const bool isTaken =
        mesh && std::any_of(held.begin(), held.end(), [mesh](const Mesh* other)
                            { return other != mesh && other->GetSortID() == mesh->GetSortID(); });
    Expect(material->AddMesh(mesh) == (mesh != nullptr), "the wrong answer");
    Expect(!mesh || mesh->GetMaterial() == (isTaken ? nullptr : material), "another material");
}

void RandomHost::TakeMaterial()
{
    Material* const material = Any(m_world.materials);
    Mesh* const mesh = Any(m_world.meshes);
    if (!material)
    {
        return;
    }
    const bool isThere = mesh && material->GetMeshes().count(mesh) != 0;
    Expect(material->RemoveMesh(mesh) == isThere, "the wrong answer");
    Expect(!mesh || material->GetMeshes().count(mesh) == 0, "still there");
}

void RandomHost::AddNodeToMaterial()
{
    NodeMaterial* const material = Any(m_world.nodeMaterials);
    MeshNode* const node = Any(m_world.meshNodes);
    if (material)
    {
        material->AddNode(node);
        Expect(!node || Has(material->GetNodes(), static_cast<const MeshNode*>(node)), "not there");
    }
}

void RandomHost::RemoveNodeFromMaterial()
{
    NodeMaterial* const material = Any(m_world.nodeMaterials);
    MeshNode* const node = material && OneIn(2) ? Any(material->GetNodes()) : Any(m_world.meshNodes);
    if (material)
    {
        material->RemoveNode(node);
        Expect(!node || !Has(material->GetNodes(), static_cast<const MeshNode*>(node)), "still there");
    }
}

void RandomHost::ClearNodeMaterial()
{
    if (NodeMaterial* const material = Any(m_world.nodeMaterials))
    {
        material->Clear();
        Expect(material->GetNodes().empty(), "still has nodes");
    }
}

void RandomHost::DeleteMaterial()
{
    delete Any(m_world.materials);
}

void RandomHost::NewStyle()
{
    if (!IsCrowded(m_world.lineStyles))
    {
        if (OneIn(2))
        {
            new Tracked<LineStyle>(m_world, std::string("s"));
        }
        else
        {
            new Tracked<NodeLineStyle>(m_world);
        }
    }
}

void RandomHost::AddStyle()
{
    Scene* const scene = Any(m_world.scenes);
    LineStyle* const style = Any(m_world.lineStyles);
    if (!scene)
    {
        return;
    }
    const bool isFree = style && !style->GetScene();
    Expect(scene->AddLineStyle(style) == isFree, "the wrong answer");
    if (isFree)
    {
        m_listed[scene].styles.push_back(style);
    }
}

void RandomHost::RemoveStyle()
{
    Scene* const scene = Any(m_world.scenes);
    LineStyle* const style = Any(m_world.lineStyles);
    if (!scene)
    {
        return;
    }
    const bool isThere = style && style->GetScene() == scene;
    Expect(scene->RemoveLineStyle(style) == isThere, "the wrong answer");
    if (isThere)
    {
        auto& list = m_listed[scene].styles;
        list.erase(std::remove(list.begin(), list.end(), style), list.end());
    }
}

void RandomHost::GiveStyle()
{
    LineStyle* const style = Any(m_world.lineStyles);
    Line* const line = Any(m_world.lines);
    if (style)
    {
        const bool isNew = line && line->GetStyle() != style;
        Expect(style->AddLine(line) == isNew, "the wrong answer");
        Expect(!line || line->GetStyle() == style, "another style");
    }
}

void RandomHost::TakeStyle()
{
    LineStyle* const style = Any(m_world.lineStyles);
    Line* const line = Any(m_world.lines);
    if (style)
    {
        const bool isThere = line && line->GetStyle() == style;
        Expect(style->RemoveLine(line) == isThere, "the wrong answer");
    }
}

void RandomHost::BindStyle()
{
    if (NodeLineStyle* const style = Any(m_world.nodeLineStyles))
    {
        MeshNode* const node = Any(m_world.meshNodes);
        if (node)
        {
            m_world.styledNodes.insert(node);
        }
        style->SetNode(node);
        Expect(style->GetNode() == node, "bound to another node");
        Expect(!node || (node->GetFlags() & NodeFlagHasNodeMaterial), "the node is not flagged");
    }
}

void RandomHost::DeleteStyle()
{
    delete Any(m_world.lineStyles);
}

void RandomHost::SetData()
{
    Object* const data = OneIn(4) ? nullptr : new Tracked<Object>(m_world);
    switch (Below(7))
    {
    case 0:
        if (Node* const node = Any(m_world.AllNodes()))
        {
            return node->SetAnimationData(data);
        }
        break;
    case 1:
        if (MeshNode* const node = Any(m_world.meshNodes))
        {
            return OneIn(2) ? node->SetRenderData(data) : node->SetCollisionData(data);
        }
        break;
    case 2:
        if (LightNode* const light = Any(m_world.lights))
        {
            return light->SetRenderData(OneIn(4) ? (delete data, light->GetRenderData()) : data);
        }
        break;
    case 3:
        if (LineStyle* const style = Any(m_world.lineStyles))
        {
            return style->SetRenderData(data);
        }
        break;
    case 4:
        if (Material* const material = Any(m_world.materials))
        {
            return material->SetRenderData(OneIn(4) ? (delete data, material->GetRenderData()) : data);
        }
        break;
    case 5:
        if (CameraNode* const camera = Any(m_world.cameras))
        {
            return camera->SetRenderData(data);
        }
        break;
    default:
        if (Mesh* const mesh = Any(m_world.meshes))
        {
            return mesh->SetRenderData(OneIn(4) ? (delete data, mesh->GetRenderData()) : data, OneIn(2));
        }
        break;
    }
    delete data;
}

void RandomHost::DeleteAny()
{
    switch (Below(7))
    {
    case 6:
        for (const WatchedPtr<CameraNode>& stray : m_world.strayCameras)
        {
            delete stray.Get();
        }
        break;
    case 0:
        if (OneIn(5) || m_world.nodes.empty())
        {
            DeleteScene();
        }
        break;
    case 1:
        DeleteNode();
        break;
    case 2:
        DeleteMesh();
        break;
    case 3:
        DeleteMaterial();
        break;
    case 4:
        DeleteStyle();
        break;
    default:
        ReleaseGeometry();
        break;
    }
}

class RandomScenes : public ::testing::TestWithParam<unsigned>
{
};

constexpr unsigned worldsPerTest = 100;

TEST_P(RandomScenes, KeepEveryRuleAfterEveryOperation)
{
    for (unsigned world = 0; world < worldsPerTest; ++world)
    {
        const unsigned seed = GetParam() * worldsPerTest + world;
        // Not deleted after trouble: what dangles would end the whole program.
        auto* const host = new RandomHost(seed);
        ASSERT_EQ(host->Live(120), "") << "seed " << seed;
        delete host;
    }
}

INSTANTIATE_TEST_SUITE_P(Scene, RandomScenes, ::testing::Range(0u, 10u));

} // namespace
} // namespace OV
