#include "orvane/scene/Scene.h"

#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/detail/Erase.h"
#include "orvane/scene/detail/Subtree.h"

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

} // namespace

Scene::Scene()
{
    Initialize();
}

Scene::~Scene()
{
    Cleanup();
    SetCamera(nullptr);
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
    root = new Node(this);
    defaultCamera = new CameraNode(this);
    root->AddChild(defaultCamera, false);
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
    DeleteSubtree(root);

    for (Mesh* mesh : std::exchange(meshes, {}))
    {
        if (mesh->HasType(NodeTypeLine))
        {
            RemoveLine(static_cast<Line*>(mesh));
        }
        mesh->scene = nullptr;
        delete mesh;
    }
    for (Line* line : std::exchange(lines, {}))
    {
        line->scene = nullptr;
        delete line;
    }
    for (LineStyle* style : std::exchange(lineStyles, {}))
    {
        style->scene = nullptr;
        delete style;
    }
    for (std::vector<Material*>* list : {&optimizedMaterials, &alphaMaterials})
    {
        for (Material* material : std::exchange(*list, {}))
        {
            material->scene = nullptr;
            delete material;
        }
    }
    m_spareDrawItems.clear();
}

void Scene::Clear()
{
    Cleanup();
    Initialize();
}

void Scene::DeleteSubtree(Node* node)
{
    if (node)
    {
        if (node->parent)
        {
            node->parent->RemoveChild(node);
        }
        DeleteNodes(node);
    }
    MarkDirty();
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
        !detail::EraseFirst(alphaMaterials, material))
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
    if (!detail::EraseFirst(lineStyles, style))
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
    if (meshes.erase(mesh) == 0)
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
    if (lines.erase(line) == 0)
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
    for (LineStyle* style : lineStyles)
    {
        style->Suspend();
    }
    for (Line* line : lines)
    {
        line->Suspend();
    }
    for (Material* material : optimizedMaterials)
    {
        material->Suspend();
    }
    for (Material* material : alphaMaterials)
    {
        material->Suspend();
    }
    for (Mesh* mesh : meshes)
    {
        mesh->Suspend();
    }
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
    for (const Node*& visited : m_treeWalks.visited)
    {
        if (visited == node)
        {
            visited = nullptr;
        }
    }
}

} // namespace OV
