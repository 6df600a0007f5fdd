#include "orvane/overlay/Shape2DNode.h"

#include "orvane/math/Sphere.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2D.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/NodeType.h"
#include "orvane/scene/detail/Erase.h"

#include <algorithm>
#include <cmath>

namespace OV
{

namespace
{

void Widen(float& lowest, float& highest, float from, float to)
{
    lowest = std::min(lowest, from);
    highest = std::max(highest, to);
}

// An orthographic camera may see what lies behind its own place, as far as its near plane.
bool IsBehindEye(CameraNode& camera, const Vector& world)
{
    Vector view;
    view.Multiply(camera.GetInvTransform(), world);
    if (camera.GetProjection() == CameraNode::Perspective)
    {
        return !(view.z < 0.0f);
    }
    float nearPlane = 0.0f;
    float farPlane = 0.0f;
    camera.GetNearFar(nearPlane, farPlane);
    return !(-view.z >= std::min(nearPlane, 0.0f));
}

}  // namespace

Shape2DNode::Shape2DNode(Scene2D* scene)
    : MeshNode(scene)
    , scene2D(scene)
{
    // Here, since each update watches it, which is to take nothing from the heap.
    GetLifetime();
}

Shape2DNode::~Shape2DNode()
{
    LeaveFollowers();
}

void Shape2DNode::LeaveFollowers()
{
    if (m_follows)
    {
        detail::EraseFirst(scene2D->m_followers, this);
        m_follows = false;
    }
}

void Shape2DNode::Set3DParent(Node* node)
{
    LeaveFollowers();
    parent3D = node;
    Scene2D* const layer = GetScene2D();
    if (!layer)
    {
        return;
    }
    m_behindEye = false;
    if (node)
    {
        layer->m_followers.push_back(this);
        m_follows = true;
    }
    layer->MarkDirty();
}

void Shape2DNode::SetBehindEye(bool isBehind)
{
    if (isBehind != m_behindEye)
    {
        m_behindEye = isBehind;
        scene->MarkDirty();
    }
}

Vector Shape2DNode::ToParentSpace(const Vector& place) const
{
    // The parents' globals are those of the update before: they may have moved since.
    Transform global;
    for (const Node* above = parent; above; above = above->GetParent())
    {
        global.Multiply(above->GetLocal(), global);
    }
    Transform toParent;
    toParent.Invert(global);
    Vector inParent;
    inParent.Multiply(toParent, place);
    return inParent;
}

void Shape2DNode::FollowParent()
{
    Node* const followed = parent3D;
    Scene* const followedScene = followed ? followed->GetScene() : nullptr;
    CameraNode* const camera = followedScene ? followedScene->GetCameraNode() : nullptr;
    if (!camera)
    {
        SetBehindEye(false);
        if (!followed)
        {
            LeaveFollowers();
        }
        return;
    }
    const Vector world = followed->GetGlobal().GetPosition();
    Vector screen;
    LifetimeWatch self;
    self.Watch(GetLifetime());
    LifetimeWatch eye;
    eye.Watch(camera->GetLifetime());
    camera->WorldPosToScreenPos(world, screen);
    // A screen mapping of the host's may have taken away what it was asked for.
    if (!self.IsAlive() || !eye.IsAlive() || !m_follows)
    {
        return;
    }
    const bool hasPlace = std::isfinite(screen.x) && std::isfinite(screen.y);
    SetBehindEye(!hasPlace || IsBehindEye(*camera, world));
    if (m_behindEye)
    {
        return;
    }
    // The camera counts from the top, the layer from the bottom.
    const Vector place = ToParentSpace(Vector(screen.x, scene2D->screenHeight - screen.y, 0.0f));
    Transform moved = local;
    moved.SetPosition(Vector(place.x, place.y, local.GetPosition().z));
    if (moved != local)
    {
        SetLocal(moved);
    }
}

bool Shape2DNode::IsInside(float x, float y)
{
    const Scene2D* const layer = GetScene2D();
    if (!layer || !(layer->screenHeight > 0.0f))
    {
        return false;
    }
    Vector point;
    point.Multiply(inverseGlobal, Vector(x, y, 0.0f));
    for (Mesh* mesh : EachMesh())
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
    // What hangs below may delete this node.
    LifetimeWatch watch;
    watch.Watch(GetLifetime());
    Node::UpdateGraph();
    if (!watch.IsAlive())
    {
        return;
    }
    const float z = -global.GetPosition().z;
    if (Scene2D* const layer = GetScene2D())
    {
        Widen(layer->nearZ, layer->farZ, z, z);
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
        for (const Mesh* mesh : EachMesh())
        {
            // The last mesh alone decides, whatever the others found.
            offScreen = GetScene2D() && IsOffScreen(*mesh);
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
    Node::UpdateCulling(nearValue, farValue);
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
