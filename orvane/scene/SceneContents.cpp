// What a scene owns: how it comes and goes as a whole, and subtrees with it.

#include "orvane/base/detail/Walk.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeListener.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/detail/Erase.h"
#include "orvane/scene/detail/Subtree.h"
#include "orvane/scene/detail/TreeCursor.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace OV
{

namespace
{

/// Deletes a node that has no parent, and everything below it, without any memory: children
/// before their parent.
void DeleteNodesFromBelow(Node* top)
{
    for (Node* node = top; node;)
    {
        if (Node* const child = node->GetFirstChild())
        {
            node = child;
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
    for (Node* node : {m_firstNode, m_firstVisitedNode})
    {
        while (node)
        {
            node->scene = nullptr;
            node->m_previousOfScene = nullptr;
            node = std::exchange(node->m_nextOfScene, nullptr);
        }
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
    taken.meshes.swap(m_meshes);
    ++m_meshesRevision;
    if (m_meshSet)
    {
        m_meshSet->clear();
    }
    taken.lines.swap(lines);
    taken.lineStyles.swap(lineStyles);
    taken.optimizedMaterials.swap(optimizedMaterials);
    taken.alphaMaterials.swap(alphaMaterials);
    return taken;
}

void Scene::Delete(Contents& contents)
{
    DeleteDetached(contents.root);
    // By address, as ever since they stood in a set.
    std::sort(contents.meshes.begin(), contents.meshes.end(), std::less<>());
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
        if (IsAmong(contents.meshes, mesh))
        {
            TakeOut(contents.meshes, mesh);
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

} // namespace OV
