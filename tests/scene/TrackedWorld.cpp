#include "tests/scene/TrackedWorld.h"

namespace OV::Test
{

namespace
{

/// Reaches what is kept from hosts.
struct NodeSlots : Node
{
    static Object* Animation(const Node& node) { return node.GetAnimationData(); }
};

struct MeshSlots : Mesh
{
    static Object* Own(const Mesh& mesh) { return (mesh.*&MeshSlots::GetOwnRenderData)(); }
};

struct MeshNodeLists : MeshNode
{
    static const std::vector<NodeMaterial*>& Materials(const MeshNode& node)
    {
        return (node.*&MeshNodeLists::GetNodeMaterials)();
    }
};

struct SceneCameras : Scene
{
    static CameraNode* Default(const Scene& scene) { return scene.*&SceneCameras::defaultCamera; }
};

template <class T>
bool HasOnce(const std::vector<T*>& list, const T* entry)
{
    return std::count(list.begin(), list.end(), entry) == 1;
}

/// Of two lists that name each other's holders, one: every entry is alive, stands here once
/// and names the holder.
template <class Holder, class Entry, class List>
bool IsLinked(const Holder* holder, const List& list, const std::vector<Entry*>& alive, bool (*names)(Entry*, const Holder*))
{
    std::set<const Entry*> seen;
    for (Entry* const entry : list)
    {
        if (!Has(alive, static_cast<const Entry*>(entry)) || !seen.insert(entry).second || !names(entry, holder))
        {
            return false;
        }
    }
    return true;
}

template <class... Checks>
std::string FirstOf(Checks... checks)
{
    std::string found;
    ((found.empty() ? void(found = checks()) : void()), ...);
    return found;
}

} // namespace

std::vector<Node*> World::AllNodes() const
{
    std::vector<Node*> all = nodes;
    for (const Scene* const scene : scenes)
    {
        for (Node* const own : {scene->GetRoot(), static_cast<Node*>(SceneCameras::Default(*scene))})
        {
            if (own)
            {
                all.push_back(own);
            }
        }
    }
    for (const WatchedPtr<CameraNode>& stray : strayCameras)
    {
        if (stray.Get())
        {
            all.push_back(stray.Get());
        }
    }
    return all;
}

void World::KeepStrayCamera(const Scene& scene)
{
    CameraNode* const camera = SceneCameras::Default(scene);
    const Node* top = camera;
    while (top && top->GetParent() && top != scene.GetRoot())
    {
        top = top->GetParent();
    }
    if (camera && top != scene.GetRoot())
    {
        strayCameras.emplace_back(camera);
    }
}

bool World::IsEmpty() const
{
    return scenes.empty() && nodes.empty() && meshes.empty() && materials.empty() && lineStyles.empty() &&
           geometries.empty() && objects.empty() &&
           std::none_of(strayCameras.begin(), strayCameras.end(),
                        [](const WatchedPtr<CameraNode>& stray) { return stray.Get() != nullptr; });
}

std::string World::Violation() const
{
    return FirstOf([this] { return TreeViolation(); },
                   [this]
                   {
                       std::string found;
                       for (std::size_t i = 0; i < scenes.size() && found.empty(); ++i)
                       {
                           found = SceneViolation(*scenes[i]);
                       }
                       return found;
                   },
                   [this] { return OwnershipViolation(); }, [this] { return MeshViolation(); },
                   [this] { return MaterialViolation(); }, [this] { return NodeMaterialViolation(); },
                   [this] { return LineViolation(); }, [this] { return ObjectViolation(); },
                   [this] { return GeometryViolation(); });
}

std::string World::TreeViolation() const
{
    const std::vector<Node*> all = AllNodes();
    for (const Node* const node : all)
    {
        if (node->GetScene() && !Has(scenes, static_cast<const Scene*>(node->GetScene())))
        {
            return "a node names a dead scene";
        }
        if (!IsLinked<Node, Node>(node, node->GetChildren(), all,
                                  [](Node* child, const Node* parent) { return child->GetParent() == parent; }))
        {
            return "a child is dead, twice there or does not name its parent";
        }
        const Node* const parent = node->GetParent();
        if (!parent)
        {
            continue;
        }
        if (!Has(all, parent))
        {
            return "a node names a dead parent";
        }
        const auto& siblings = parent->GetChildren();
        if (std::count(siblings.begin(), siblings.end(), node) != 1)
        {
            return "a parent does not hold its child once";
        }
        if (parent->GetScene() != node->GetScene())
        {
            return "parent and child are of different scenes";
        }
        std::size_t steps = 0;
        for (const Node* up = parent; up; up = up->GetParent())
        {
            if (++steps > all.size())
            {
                return "the tree runs in a circle";
            }
        }
    }
    return "";
}

std::string World::SceneViolation(const Scene& scene) const
{
    const Node* const root = scene.GetRoot();
    const CameraNode* const own = SceneCameras::Default(scene);
    if ((root && root->GetScene() != &scene) || (own && own->GetScene() != &scene))
    {
        return "root or default camera are of another scene";
    }
    const CameraNode* const camera = scene.GetCameraNode();
    if (camera && !Has(AllNodes(), static_cast<const Node*>(camera)))
    {
        return "the camera in use is dead";
    }
    std::vector<Material*> listed = scene.GetOptimizedMaterials();
    listed.insert(listed.end(), scene.GetAlphaMaterials().begin(), scene.GetAlphaMaterials().end());
    if (!IsLinked<Scene, Material>(&scene, listed, materials,
                                   [](Material* m, const Scene* s) { return m->GetScene() == s; }))
    {
        return "a listed material is dead, twice there or does not name the scene";
    }
    if (!IsLinked<Scene, LineStyle>(&scene, scene.GetLineStyles(), lineStyles,
                                    [](LineStyle* s, const Scene* owner) { return s->GetScene() == owner; }))
    {
        return "a listed style is dead, twice there or does not name the scene";
    }
    if (!IsLinked<Scene, Mesh>(&scene, scene.GetMeshes(), meshes,
                               [](Mesh* m, const Scene* s) { return m->GetScene() == s; }) ||
        !IsLinked<Scene, Line>(&scene, scene.GetLines(), lines,
                               [](Line* l, const Scene* s) { return l->GetScene() == s; }))
    {
        return "a mesh or line of a scene is dead or does not name it";
    }
    if (!IsLinked<Scene, LightNode>(&scene, scene.GetLights(), lights,
                                    [](LightNode* l, const Scene* s) { return l->GetScene() == s; }))
    {
        return "a listed light is dead, twice there or does not name the scene";
    }
    for (const AlphaMeshNode* const item : scene.GetZOrderedDrawItems())
    {
        if (!Has(meshNodes, static_cast<const MeshNode*>(item->node)) ||
            !Has(meshes, static_cast<const Mesh*>(item->mesh)))
        {
            return "a draw item names a dead node or mesh";
        }
    }
    return "";
}

std::string World::OwnershipViolation() const
{
    const auto isDead = [this](const Scene* scene) { return scene && !Has(scenes, scene); };
    for (Material* const material : materials)
    {
        Scene* const scene = material->GetScene();
        if (isDead(scene) || (scene && !HasOnce<Material>(scene->GetOptimizedMaterials(), material) &&
                              !HasOnce<Material>(scene->GetAlphaMaterials(), material)))
        {
            return "a material names a scene that does not list it";
        }
    }
    for (LineStyle* const style : lineStyles)
    {
        Scene* const scene = style->GetScene();
        if (isDead(scene) || (scene && !HasOnce<LineStyle>(scene->GetLineStyles(), style)))
        {
            return "a style names a scene that does not list it";
        }
    }
    for (LightNode* const light : lights)
    {
        if (light->GetScene() && !HasOnce<LightNode>(light->GetScene()->GetLights(), light))
        {
            return "a light is not in the list of its scene";
        }
    }
    for (Mesh* const mesh : meshes)
    {
        Scene* const scene = mesh->GetScene();
        if (isDead(scene))
        {
            return "a mesh names a dead scene";
        }
        if (scene && scene->GetMeshes().count(mesh) == 0 &&
            !(mesh->HasType(NodeTypeLine) && scene->GetLines().count(static_cast<Line*>(mesh)) == 1))
        {
            return "a mesh names a scene that does not hold it";
        }
    }
    return "";
}

std::string World::MeshViolation() const
{
    for (const Mesh* const mesh : meshes)
    {
        if (!IsLinked<Mesh, MeshNode>(mesh, mesh->GetNodes(), meshNodes,
                                      [](MeshNode* n, const Mesh* m) { return Has(n->GetMeshes(), m); }))
        {
            return "a mesh names a node that is dead, twice there or does not name it";
        }
    }
    for (const MeshNode* const node : meshNodes)
    {
        if (!IsLinked<MeshNode, Mesh>(node, node->GetMeshes(), meshes,
                                      [](Mesh* m, const MeshNode* n) { return Has(m->GetNodes(), n); }))
        {
            return "a node names a mesh that is dead, twice there or does not name it";
        }
    }
    return "";
}

std::string World::MaterialViolation() const
{
    for (const Material* const material : materials)
    {
        if (!IsLinked<Material, Mesh>(material, material->GetMeshes(), meshes,
                                      [](Mesh* m, const Material* owner) { return m->GetMaterial() == owner; }))
        {
            return "a material holds a mesh that is dead or of another material";
        }
        const auto& held = material->GetMeshes();
        const auto isOutOfOrder = [](const Mesh* a, const Mesh* b) { return a->GetSortID() >= b->GetSortID(); };
        if (std::adjacent_find(held.begin(), held.end(), isOutOfOrder) != held.end())
        {
            return "the meshes of a material do not rise in sort ID";
        }
    }
    for (Mesh* const mesh : meshes)
    {
        const Material* const material = mesh->GetMaterial();
        if (material && (!Has(materials, material) || std::count(material->GetMeshes().begin(), material->GetMeshes().end(), mesh) != 1))
        {
            return "a mesh names a material that does not hold it";
        }
    }
    return "";
}

std::string World::NodeMaterialViolation() const
{
    for (const NodeMaterial* const material : nodeMaterials)
    {
        if (!IsLinked<NodeMaterial, MeshNode>(
                material, material->GetNodes(), meshNodes,
                [](MeshNode* n, const NodeMaterial* m) { return Has(MeshNodeLists::Materials(*n), m); }))
        {
            return "a node material names a node that is dead, twice there or does not name it";
        }
    }
    for (MeshNode* const node : meshNodes)
    {
        const std::vector<NodeMaterial*>& pushed = MeshNodeLists::Materials(*node);
        if (!IsLinked<MeshNode, NodeMaterial>(
                node, pushed, nodeMaterials,
                [](NodeMaterial* m, const MeshNode* n) { return Has(m->GetNodes(), n); }))
        {
            return "a node names a node material that is dead, twice there or does not name it";
        }
        if (node->CurrentNodeMaterial() != (pushed.empty() ? nullptr : pushed.front()))
        {
            return "the current node material is not the oldest";
        }
        const bool isFlagged = (node->GetFlags() & NodeFlagHasNodeMaterial) != 0;
        const bool isBound = std::any_of(nodeLineStyles.begin(), nodeLineStyles.end(),
                                         [node](const NodeLineStyle* style) { return style->GetNode() == node; });
        if ((!pushed.empty() && !isFlagged && styledNodes.count(node) == 0) ||
            (pushed.empty() && !isBound && isFlagged))
        {
            return "the flag of a node does not say whether it has a node material";
        }
    }
    return "";
}

std::string World::LineViolation() const
{
    for (const LineStyle* const style : lineStyles)
    {
        if (!IsLinked<LineStyle, Line>(style, style->GetLines(), lines,
                                       [](Line* l, const LineStyle* s) { return l->GetStyle() == s; }))
        {
            return "a style holds a line that is dead or of another style";
        }
    }
    for (Line* const line : lines)
    {
        const LineStyle* const style = line->GetStyle();
        if (style && (!Has(lineStyles, style) || style->GetLines().count(line) != 1))
        {
            return "a line names a style that does not hold it";
        }
    }
    for (const NodeLineStyle* const style : nodeLineStyles)
    {
        if (style->GetNode() && !Has(meshNodes, static_cast<const MeshNode*>(style->GetNode())))
        {
            return "a style is bound to a dead node";
        }
    }
    return "";
}

std::string World::ObjectViolation() const
{
    std::vector<Object*> held;
    for (const Node* const node : AllNodes())
    {
        held.push_back(NodeSlots::Animation(*node));
    }
    for (const MeshNode* const node : meshNodes)
    {
        held.push_back(node->GetRenderData());
        held.push_back(node->GetCollisonData());
    }
    for (const CameraNode* const camera : cameras)
    {
        held.push_back(camera->GetRenderData());
    }
    for (const LightNode* const light : lights)
    {
        held.push_back(light->GetRenderData());
    }
    for (const Mesh* const mesh : meshes)
    {
        held.push_back(MeshSlots::Own(*mesh));
    }
    for (const RawMesh* const geometry : geometries)
    {
        held.push_back(geometry->GetRenderData());
    }
    for (const Material* const material : materials)
    {
        held.push_back(material->GetRenderData());
    }
    for (const LineStyle* const style : lineStyles)
    {
        held.push_back(style->GetRenderData());
    }
    held.erase(std::remove(held.begin(), held.end(), nullptr), held.end());
    std::sort(held.begin(), held.end());
    std::vector<Object*> alive = objects;
    std::sort(alive.begin(), alive.end());
    return held == alive ? "" : "the objects alive are not those that slots hold, each once";
}

std::string World::GeometryViolation() const
{
    std::set<const RawMesh*> used;
    for (const Mesh* const mesh : meshes)
    {
        used.insert(mesh->GetRawMesh().get());
    }
    for (const auto& geometry : heldGeometries)
    {
        used.insert(geometry.get());
    }
    return used == std::set<const RawMesh*>(geometries.begin(), geometries.end())
               ? ""
               : "the geometries alive are not those in use";
}

} // namespace OV::Test
