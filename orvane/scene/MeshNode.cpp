#include "orvane/scene/MeshNode.h"

#include "orvane/math/Sphere.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/NodeLineStyle.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/detail/Box.h"
#include "orvane/scene/detail/Erase.h"
#include "orvane/scene/detail/OwnedObject.h"

#include <utility>

namespace OV
{

MeshNode::MeshNode(Scene* ownScene) :
    Node(ownScene)
{
}

void MeshNode::LeaveMeshes()
{
    while (!m_drawLists.empty())
    {
        m_drawLists.back()->RemoveDrawItemsOf(this);
    }
    for (Mesh* mesh : std::exchange(meshes, {}))
    {
        mesh->RemoveNode(this);
    }
}

MeshNode::~MeshNode()
{
    LeaveMeshes();
    for (NodeMaterial* material : std::exchange(nodeMaterials, {}))
    {
        material->RemoveNode(this);
    }
    for (NodeLineStyle* style : m_lineStyles)
    {
        style->node = nullptr;
    }
    renderData.reset();
    collisionData.reset();
}

void MeshNode::UpdateGraph()
{
    Node::UpdateGraph();
}

void MeshNode::UpdateCulling(float& nearValue, float& farValue)
{
    FrustumCulling(nearValue, farValue);
    Node::UpdateCulling(nearValue, farValue);
}

void MeshNode::ComputeBoundingBox(Vector& boxMin, Vector& boxMax)
{
    if (!(flags & NodeFlagHidden))
    {
        const float scale = global.GetMaxScale();
        for (Mesh* mesh : meshes)
        {
            const Sphere& sphere = mesh->GetSphere();
            const float radius = scale * sphere.radius;
            Vector center;
            center.Multiply(global, sphere.center);
            const Vector extent(radius, radius, radius);
            Vector low;
            Vector high;
            low.Subtract(center, extent);
            high.Add(center, extent);
            detail::WidenBox(boxMin, boxMax, low, high);
        }
    }
    Node::ComputeBoundingBox(boxMin, boxMax);
}

int MeshNode::Type() const
{
    return NodeTypeMeshNode;
}

bool MeshNode::HasType(int type)
{
    return type == NodeTypeMeshNode || type == NodeTypeNode;
}

bool MeshNode::FrustumCulling(float& nearValue, float& farValue)
{
    const CameraNode* const camera = scene ? scene->GetCameraNode() : nullptr;
    if ((flags & NodeFlagHidden) || !camera)
    {
        return false;
    }

    const float scale = global.GetMaxScale();
    bool culled = true;
    for (Mesh* mesh : meshes)
    {
        const Sphere& sphere = mesh->GetSphere();
        const float radius = scale * sphere.radius;
        Vector center;
        center.Multiply(global, sphere.center);
        if (!camera->IsOutside(center, radius))
        {
            culled = false;
        }
        else if (culled)
        {
            // After the first visible mesh the others count for the depths, seen or not.
            continue;
        }
        Vector inView;
        inView.Multiply(camera->GetInvTransform(), center);
        const float depth = -inView.z;
        if (nearValue > depth - radius)
        {
            nearValue = depth - radius;
        }
        if (depth + radius > farValue)
        {
            farValue = depth + radius;
        }
    }

    // A culled node has passed over each of its meshes: the range is as it was.
    if (culled)
    {
        flags |= NodeFlagCulled;
    }
    else
    {
        flags &= ~NodeFlagCulled;
    }
    return culled;
}

void MeshNode::SetFlags(NodeFlags bits, bool recursive)
{
    flags |= bits;
    if (recursive)
    {
        for (Node* child : children)
        {
            if (child->HasType(NodeTypeMeshNode))
            {
                static_cast<MeshNode*>(child)->SetFlags(bits, true);
            }
        }
    }
}

void MeshNode::ClearFlags(NodeFlags bits, bool recursive)
{
    flags &= ~bits;
    if (recursive)
    {
        for (Node* child : children)
        {
            if (child->HasType(NodeTypeMeshNode))
            {
                static_cast<MeshNode*>(child)->ClearFlags(bits, true);
            }
        }
    }
}

void MeshNode::SetRenderData(Object* data)
{
    detail::ReplaceObject(renderData, data);
}

void MeshNode::SetCollisionData(Object* data)
{
    detail::ReplaceObject(collisionData, data);
}

void MeshNode::PushNodeMaterial(NodeMaterial* material)
{
    if (!detail::Contains(nodeMaterials, material))
    {
        nodeMaterials.push_back(material);
        flags |= NodeFlagHasNodeMaterial;
    }
}

void MeshNode::RemoveNodeMaterial(NodeMaterial* material)
{
    detail::EraseFirst(nodeMaterials, material);
    if (nodeMaterials.empty())
    {
        flags &= ~NodeFlagHasNodeMaterial;
    }
}

bool MeshNode::MatchesUpdateID() const
{
    return scene && drawID == scene->GetUpdateID();
}

} // namespace OV
