#include "orvane/overlay/Shape2DNode.h"

#include "orvane/math/Sphere.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2D.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/NodeType.h"

#include <algorithm>

namespace OV
{

namespace
{

void Widen(float& lowest, float& highest, float from, float to)
{
    lowest = std::min(lowest, from);
    highest = std::max(highest, to);
}

}  // namespace

Shape2DNode::Shape2DNode(Scene2D* scene)
    : MeshNode(scene)
    , scene2D(scene)
{
}

Shape2DNode::~Shape2DNode()
{
    LeaveFollowers();
}

void Shape2DNode::LeaveFollowers()
{
    // A node whose scene is gone reads null there, and its layer with it.
    if (scene && scene2D)
    {
        std::vector<Shape2DNode*>& followers = scene2D->m_followers;
        followers.erase(std::remove(followers.begin(), followers.end(), this), followers.end());
    }
}

void Shape2DNode::Set3DParent(Node* node)
{
    LeaveFollowers();
    parent3D = node;
    m_behindEye = false;
    if (node && scene && scene2D)
    {
        scene2D->m_followers.push_back(this);
    }
}

void Shape2DNode::FollowParent()
{
    Node* const followed = parent3D;
    Scene* const followedScene = followed ? followed->GetScene() : nullptr;
    CameraNode* const camera = followedScene ? followedScene->GetCameraNode() : nullptr;
    if (!camera)
    {
        return;
    }
    const Vector world = followed->GetGlobal().GetPosition();
    Vector view;
    view.Multiply(camera->GetInvTransform(), world);
    const bool behindEye = camera->GetProjection() == CameraNode::Perspective && !(view.z < 0.0f);
    if (behindEye != m_behindEye)
    {
        m_behindEye = behindEye;
        scene->MarkDirty();
    }
    if (behindEye)
    {
        return;
    }
    Vector screen;
    camera->WorldPosToScreenPos(world, screen);
    // The camera counts from the top, the layer from the bottom.
    Vector place(screen.x, scene2D->screenHeight - screen.y, 0.0f);
    if (parent)
    {
        Transform toParent;
        toParent.Invert(parent->GetGlobal());
        place.Multiply(toParent, place);
    }
    Transform moved = local;
    moved.SetPosition(Vector(place.x, place.y, local.GetPosition().z));
    if (moved != local)
    {
        SetLocal(moved);
    }
}

bool Shape2DNode::IsInside(float x, float y)
{
    if (!scene || !scene2D || !(scene2D->screenHeight > 0.0f))
    {
        return false;
    }
    Vector point;
    point.Multiply(inverseGlobal, Vector(x, y, 0.0f));
    for (Mesh* mesh : meshes)
    {
        auto* const shape = dynamic_cast<Shape2D*>(mesh);
        if (shape && shape->IsInside(point.x, point.y))
        {
            return true;
        }
    }
    return false;
}

void Shape2DNode::UpdateGraph()
{
    Node::UpdateGraph();
    const float z = -global.GetPosition().z;
    if (scene2D)
    {
        Widen(scene2D->nearZ, scene2D->farZ, z, z);
    }
    inverseGlobal.Invert(global);
}

bool Shape2DNode::IsOffScreen(const Mesh& mesh) const
{
    Vector first;
    Vector second;
    mesh.GetBBox(first, second);
    first.Multiply(global, first);
    second.Multiply(global, second);
    const auto [left, right] = std::minmax(first.x, second.x);
    const auto [bottom, top] = std::minmax(first.y, second.y);
    return left > scene2D->screenWidth || right < 0.0f || bottom > scene2D->screenHeight || top < 0.0f;
}

void Shape2DNode::UpdateCulling(float& nearValue, float& farValue)
{
    if ((flags & NodeFlagHidden) == 0)
    {
        const float nearBefore = nearValue;
        const float farBefore = farValue;
        const float z = -global.GetPosition().z;
        bool offScreen = false;
        for (const Mesh* mesh : meshes)
        {
            // The last mesh alone decides, whatever the others found.
            offScreen = scene2D && IsOffScreen(*mesh);
            const float reach = billboard ? 0.0f : global.GetMaxScale() * mesh->GetSphere().radius;
            Widen(nearValue, farValue, z - reach, z + reach);
        }
        if (offScreen || m_behindEye)
        {
            nearValue = nearBefore;
            farValue = farBefore;
            SetFlags(NodeFlagCulled, false);
        }
        else
        {
            ClearFlags(NodeFlagCulled, false);
        }
    }
    for (Node* child : children)
    {
        child->UpdateCulling(nearValue, farValue);
    }
}

int Shape2DNode::Type() const
{
    return NodeTypeShape2DNode;
}

bool Shape2DNode::HasType(int type)
{
    return type == NodeTypeShape2DNode || type == NodeTypeMeshNode || type == NodeTypeNode;
}

}  // namespace OV
