// The nodes of a scene, in its tree or not, as it keeps account of them.

#include "orvane/scene/LightNode.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeListener.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/detail/TreeCursor.h"

#include <typeinfo>

namespace OV
{

bool Node::IsOfEngine() const
{
    // Any other class may do in a walk what nobody knows here.
    const std::type_info& type = typeid(*this);
    return type == typeid(MeshNode) || type == typeid(Node) || type == typeid(LightNode);
}

Node*& Scene::FirstOfItsKind(const Node* node)
{
    return node->m_kind == Node::KindVisited ? m_firstVisitedNode : m_firstNode;
}

void Scene::Link(Node* node)
{
    Node*& first = FirstOfItsKind(node);
    node->m_previousOfScene = nullptr;
    node->m_nextOfScene = first;
    if (first)
    {
        first->m_previousOfScene = node;
    }
    first = node;
}

void Scene::Unlink(Node* node)
{
    (node->m_previousOfScene ? node->m_previousOfScene->m_nextOfScene : FirstOfItsKind(node)) =
        node->m_nextOfScene;
    if (node->m_nextOfScene)
    {
        node->m_nextOfScene->m_previousOfScene = node->m_previousOfScene;
    }
}

void Scene::Register(Node* node)
{
    Link(node);
}

void Scene::Unregister(Node* node)
{
    for (NodeListener* listener : m_nodeListeners)
    {
        listener->NodeGone(*node);
    }
    Unlink(node);
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

void Scene::FindAndMarkVisitedNodes()
{
    m_visitedNodesMarkedAt = updateID;
    // Those that no walk has seen stand first. A node is not asked for its class before, since it
    // may be under construction.
    for (Node* node = m_firstNode; node && node->m_kind == Node::KindNotYetKnown;)
    {
        Node* const next = node->m_nextOfScene;
        if (node->IsOfEngine())
        {
            node->m_kind = Node::KindOfEngine;
        }
        else
        {
            Unlink(node);
            node->m_kind = Node::KindVisited;
            Link(node);
        }
        node = next;
    }
    for (Node* node = m_firstVisitedNode; node; node = node->m_nextOfScene)
    {
        node->Mark(updateID);
    }
}

} // namespace OV
