#include "orvane/scene/NodeMaterial.h"

#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/detail/Erase.h"

namespace OV
{

NodeMaterial::NodeMaterial() = default;

NodeMaterial::~NodeMaterial()
{
    Clear();
}

int NodeMaterial::Type() const
{
    return NodeTypeNodeMaterial;
}

bool NodeMaterial::HasType(int type)
{
    return type == NodeTypeNodeMaterial || type == NodeTypeMaterial;
}

void NodeMaterial::AddNode(MeshNode* node)
{
    if (!node || detail::Contains(nodes, node))
    {
        return;
    }
    nodes.push_back(node);
    node->PushNodeMaterial(this);
    if (scene)
    {
        scene->MarkDirty();
    }
}

void NodeMaterial::RemoveNode(MeshNode* node)
{
    if (!detail::EraseFirst(nodes, node))
    {
        return;
    }
    node->RemoveNodeMaterial(this);
    if (scene)
    {
        scene->MarkDirty();
    }
}

void NodeMaterial::Clear()
{
    if (!nodes.empty() && scene)
    {
        scene->MarkDirty();
    }
    for (MeshNode* node : nodes)
    {
        node->RemoveNodeMaterial(this);
    }
    nodes.clear();
}

} // namespace OV
