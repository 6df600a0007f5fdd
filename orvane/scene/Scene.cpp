#include "orvane/scene/Scene.h"

#include "orvane/base/detail/Walk.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeListener.h"
#include "orvane/scene/detail/Erase.h"
#include "orvane/scene/detail/Subtree.h"
#include "orvane/scene/detail/TreeCursor.h"

#include <new>
#include <utility>
#include <vector>

namespace OV
{

namespace
{

/// The first entry of exactly this name, or null.
template <class T>
T* FindByName(const std::vector<T*>& list, const std::string& name)
{
    for (T* entry : list)
    {
        if (entry->GetName() == name)
        {
            return entry;
        }
    }
    return nullptr;
}

/// Deletes a node that has no parent, and everything below it, without any memory: children
/// before their parent.
void DeleteNodesFromBelow(Node* top)
{
    for (Node* node = top; node;)
    {
        if (!node->GetChildren().empty())
        {
            node = node->GetChildren().front();
            continue;
        }
        Node* const next = node == top ? nullptr : node->GetParent();
        delete node;
        node = next;
    }
}

/// Deletes a node that has no parent, and everything below it, a node before its children.
void DeleteNodes(Node* top)
{
    std::vector<Node*> subtree;
    try
    {
        subtree = detail::CollectSubtree(top);
    }
    catch (const std::bad_alloc&)
    {
        // The end of a scene must not be the end of the process.
        DeleteNodesFromBelow(top);
        return;
    }
    // Each node leaves its node materials and clears its children's parent as it dies.
    for (Node* dying : subtree)
    {
        delete dying;
    }
}

/// Suspends one after the other, whatever a texture loader that is given textures back does to
/// the list meanwhile.
template <class T>
void SuspendAll(const std::vector<T*>& list, const detail::Walk& walk, const Scene* scene)
{
    for (std::size_t i = 0; !walk.IsGone(scene) && i < list.size();)
    {
        T* const present = list[i];
        present->Suspend();
        if (walk.IsGone(scene))
        {
            return;
        }
        // From the start where the list has changed: what is suspended already takes no harm.
        i = i < list.size() && list[i] == present ? i + 1 : 0;
    }
}

template <class T>
void SuspendAll(const std::set<T*>& list, const detail::Walk& walk, const Scene* scene)
{
    for (T* last = nullptr; !walk.IsGone(scene);)
    {
        const auto next = last ? list.upper_bound(last) : list.begin();
        if (next == list.end())
        {
            return;
        }
        last = *next;
        last->Suspend();
    }
}

} // namespace

Scene::Scene() :
    m_treeWalks(std::make_unique<detail::TreeWalks>())
{
    Initialize();
}

Scene::~Scene()
{
    detail::Walk::Tell(this);
    for (NodeListener* listener : std::exchange(m_nodeListeners, {}))
    {
        listener->m_scene = nullptr;
        listener->SceneGone();
    }
    Cleanup();
    DeleteContentsSetAside();
    SetCamera(nullptr);
    detail::TreeCursor::WalksDie(*m_treeWalks);
    // What the host keeps outside the tree lives on without a scene.
    for (Node* node = m_firstNode; node;)
    {
        node->scene = nullptr;
        node->m_previousOfScene = nullptr;
        node = std::exchange(node->m_nextOfScene, nullptr);
    }
}

void Scene::Initialize()
{
    auto newRoot = std::make_unique<Node>(this);
    auto newCamera = std::make_unique<CameraNode>(this);
    newRoot->AddChild(newCamera.get(), false);
    root = newRoot.release();
    defaultCamera = newCamera.release();
}

void Scene::Cleanup()
{
    // First, so that no dying node or mesh has to look for its items. None is kept for later: that
    // would take memory, and an end that runs out of it ends the process.
    for (DrawItemLink& link : m_drawItemLinks)
    {
        if (link.item)
        {
            UnlinkDrawItem(link);
        }
    }
    m_drawItemLinks.clear();
    for (AlphaMeshNode* item : std::exchange(zOrderedDrawItems, {}))
    {
        delete item;
    }
    DeleteDetached(root);
    Contents contents = TakeContents();
    Delete(contents);
    m_spareDrawItems.clear();
}

Scene::Contents Scene::TakeContents()
{
    Contents taken;
    taken.root = std::exchange(root, nullptr);
    defaultCamera = nullptr;
    taken.meshes.swap(meshes);
    taken.lines.swap(lines);
    taken.lineStyles.swap(lineStyles);
    taken.optimizedMaterials.swap(optimizedMaterials);
    taken.alphaMaterials.swap(alphaMaterials);
    return taken;
}

void Scene::Delete(Contents& contents)
{
    DeleteDetached(contents.root);
    for (Mesh* mesh : contents.meshes)
    {
        // A line that was also given to SetScene stands in both.
        if (mesh->HasType(NodeTypeLine))
        {
            contents.lines.erase(static_cast<Line*>(mesh));
        }
        mesh->scene = nullptr;
        delete mesh;
    }
    for (Line* line : contents.lines)
    {
        line->scene = nullptr;
        delete line;
    }
    for (LineStyle* style : contents.lineStyles)
    {
        style->scene = nullptr;
        delete style;
    }
    for (const std::vector<Material*>* list : {&contents.optimizedMaterials, &contents.alphaMaterials})
    {
        for (Material* material : *list)
        {
            material->scene = nullptr;
            delete material;
        }
    }
    MarkDirty();
}

void Scene::Clear()
{
    if (detail::Walk::IsRunning())
    {
        SetContentsAside();
    }
    else
    {
        Cleanup();
    }
    Initialize();
}

void Scene::SetContentsAside()
{
    ClearDrawItems();
    m_setAside.push_back(TakeContents());
    detail::Walk::Postpone(this, nullptr, [this] { DeleteContentsSetAside(); });
    MarkDirty();
}

void Scene::DeleteContentsSetAside()
{
    while (!m_setAside.empty())
    {
        Contents contents = std::move(m_setAside.back());
        m_setAside.pop_back();
        Delete(contents);
    }
}

bool Scene::TakeBack(Material* material)
{
    for (Contents& contents : m_setAside)
    {
        if (detail::EraseFirst(contents.optimizedMaterials, material) ||
            detail::EraseFirst(contents.alphaMaterials, material))
        {
            return true;
        }
    }
    return false;
}

bool Scene::TakeBack(LineStyle* style)
{
    for (Contents& contents : m_setAside)
    {
        if (detail::EraseFirst(contents.lineStyles, style))
        {
            return true;
        }
    }
    return false;
}

bool Scene::TakeBack(Mesh* mesh)
{
    for (Contents& contents : m_setAside)
    {
        if (contents.meshes.erase(mesh) != 0)
        {
            return true;
        }
    }
    return false;
}

bool Scene::TakeBackLine(Line* line)
{
    for (Contents& contents : m_setAside)
    {
        if (contents.lines.erase(line) != 0)
        {
            return true;
        }
    }
    return false;
}

void Scene::DeleteSubtree(Node* node)
{
    if (node)
    {
        if (node->parent)
        {
            node->parent->RemoveChild(node);
        }
        if (detail::Walk::IsRunning())
        {
            PostponeDeletion(node);
        }
        else
        {
            DeleteDetached(node);
        }
    }
    MarkDirty();
}

void Scene::DeleteDetached(Node* top)
{
    DeleteNodes(top);
}

void Scene::PostponeDeletion(Node* top)
{
    if (root == top)
    {
        root = nullptr;
    }
    for (Node* node : detail::CollectSubtree(top))
    {
        // Nothing is to be shown there any more, and whoever deletes the nodes of a mesh until it
        // has none comes to an end.
        if (node->HasType(NodeTypeMeshNode))
        {
            static_cast<MeshNode*>(node)->LeaveMeshes();
        }
    }
    if (!detail::Walk::IsPostponed(top))
    {
        detail::Walk::Postpone(top, nullptr, [top] { DeleteDetached(top); });
    }
}

bool Scene::AddMaterial(Material* material)
{
    if (!material || material->scene)
    {
        return false;
    }
    (material->IsTransparent() ? alphaMaterials : optimizedMaterials).push_back(material);
    material->scene = this;
    MarkDirty();
    return true;
}

bool Scene::RemoveMaterial(Material* material)
{
    if (!detail::EraseFirst(optimizedMaterials, material) &&
        !detail::EraseFirst(alphaMaterials, material) && !TakeBack(material))
    {
        return false;
    }
    material->scene = nullptr;
    MarkDirty();
    return true;
}

Material* Scene::GetMaterial(const std::string& name)
{
    Material* const opaque = FindByName(optimizedMaterials, name);
    return opaque ? opaque : FindByName(alphaMaterials, name);
}

bool Scene::ProcessChangedMaterial(Material* material)
{
    return RemoveMaterial(material) && AddMaterial(material);
}

bool Scene::AddLineStyle(LineStyle* style)
{
    if (!style || style->scene)
    {
        return false;
    }
    lineStyles.push_back(style);
    style->scene = this;
    MarkDirty();
    return true;
}

bool Scene::RemoveLineStyle(LineStyle* style)
{
    if (!detail::EraseFirst(lineStyles, style) && !TakeBack(style))
    {
        return false;
    }
    style->scene = nullptr;
    MarkDirty();
    return true;
}

LineStyle* Scene::GetLineStyle(const std::string& name) const
{
    return FindByName(lineStyles, name);
}

LineStyle* Scene::GetLineStyle(const Color&) const
{
    // Required as it stands: no search by colour exists.
    return nullptr;
}

bool Scene::AddMesh(Mesh* mesh)
{
    if (!mesh)
    {
        return false;
    }
    LeaveOtherScene(mesh);
    meshes.insert(mesh);
    mesh->scene = this;
    MarkDirty();
    return true;
}

bool Scene::RemoveMesh(Mesh* mesh)
{
    if (meshes.erase(mesh) == 0 && !TakeBack(mesh))
    {
        return false;
    }
    ReleaseMesh(mesh);
    MarkDirty();
    return true;
}

bool Scene::AddLine(Line* line)
{
    if (!line || lines.count(line) != 0)
    {
        return false;
    }
    LeaveOtherScene(line);
    lines.insert(line);
    line->scene = this;
    MarkDirty();
    return true;
}

bool Scene::RemoveLine(Line* line)
{
    if (lines.erase(line) == 0 && !TakeBackLine(line))
    {
        return false;
    }
    ReleaseMesh(line);
    MarkDirty();
    return true;
}

void Scene::LeaveOtherScene(Mesh* mesh)
{
    Scene* const other = mesh->scene;
    if (!other || other == this)
    {
        return;
    }
    other->RemoveMesh(mesh);
    if (mesh->HasType(NodeTypeLine))
    {
        other->RemoveLine(static_cast<Line*>(mesh));
    }
}

void Scene::ReleaseMesh(Mesh* mesh)
{
    // A line that was also given to SetScene stands among the meshes as well, and has to be
    // able to leave both.
    const bool isLine = mesh->HasType(NodeTypeLine);
    if (meshes.count(mesh) == 0 && !(isLine && lines.count(static_cast<Line*>(mesh)) != 0))
    {
        mesh->scene = nullptr;
    }
}

bool Scene::AddLightNode(LightNode* light)
{
    if (!light || detail::Contains(lights, light))
    {
        return false;
    }
    lights.push_back(light);
    MarkDirty();
    return true;
}

bool Scene::RemoveLightNode(LightNode* light)
{
    if (!detail::EraseFirst(lights, light))
    {
        return false;
    }
    MarkDirty();
    return true;
}

void Scene::SetCamera(CameraNode* camera)
{
    if (overrideCamera)
    {
        detail::EraseAny(overrideCamera->m_overriddenScenes, this);
    }
    overrideCamera = camera;
    if (overrideCamera)
    {
        overrideCamera->m_overriddenScenes.push_back(this);
    }
}

void Scene::Suspend()
{
    const detail::Walk walk(this, detail::Walk::Other);
    SuspendAll(lineStyles, walk, this);
    SuspendAll(lines, walk, this);
    SuspendAll(optimizedMaterials, walk, this);
    SuspendAll(alphaMaterials, walk, this);
    SuspendAll(meshes, walk, this);
}

void Scene::Resume()
{
    for (LineStyle* style : lineStyles)
    {
        style->Resume();
    }
    for (Line* line : lines)
    {
        line->Resume();
    }
    for (Material* material : optimizedMaterials)
    {
        material->Resume();
    }
    for (Material* material : alphaMaterials)
    {
        material->Resume();
    }
    for (Mesh* mesh : meshes)
    {
        mesh->Resume();
    }
    MarkDirty();
}

void Scene::GetTextureStats(int& first, int& second, int& third) const
{
    first = textureStats[0];
    second = textureStats[1];
    third = textureStats[2];
}

void Scene::OverrideViewport(bool enable, int x, int y, int width, int height)
{
    viewportOverridden = enable;
    viewport = {x, y, width, height};
}

bool Scene::GetOverrideViewport(int& x, int& y, int& width, int& height) const
{
    x = viewport.x;
    y = viewport.y;
    width = viewport.width;
    height = viewport.height;
    return viewportOverridden;
}

void Scene::AddNodeListener(NodeListener* listener)
{
    if (!listener || listener->m_scene == this)
    {
        return;
    }
    if (listener->m_scene)
    {
        listener->m_scene->RemoveNodeListener(listener);
    }
    m_nodeListeners.push_back(listener);
    listener->m_scene = this;
}

void Scene::RemoveNodeListener(NodeListener* listener)
{
    if (listener && listener->m_scene == this)
    {
        detail::EraseFirst(m_nodeListeners, listener);
        listener->m_scene = nullptr;
    }
}

void Scene::TellNodeChanged(Node& node, NodeChange change)
{
    for (NodeListener* listener : m_nodeListeners)
    {
        listener->NodeChanged(node, change);
    }
}

void Scene::Register(Node* node)
{
    node->m_nextOfScene = m_firstNode;
    if (m_firstNode)
    {
        m_firstNode->m_previousOfScene = node;
    }
    m_firstNode = node;
}

void Scene::Unregister(Node* node)
{
    for (NodeListener* listener : m_nodeListeners)
    {
        listener->NodeGone(*node);
    }
    (node->m_previousOfScene ? node->m_previousOfScene->m_nextOfScene : m_firstNode) =
        node->m_nextOfScene;
    if (node->m_nextOfScene)
    {
        node->m_nextOfScene->m_previousOfScene = node->m_previousOfScene;
    }
    if (root == node)
    {
        root = nullptr;
    }
    for (Contents& contents : m_setAside)
    {
        if (contents.root == node)
        {
            contents.root = nullptr;
        }
    }
    for (const Node*& visited : m_treeWalks->visited)
    {
        if (visited == node)
        {
            visited = nullptr;
        }
    }
}

} // namespace OV
