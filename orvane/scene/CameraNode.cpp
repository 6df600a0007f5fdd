#include "orvane/scene/CameraNode.h"

#include "orvane/scene/Scene.h"
#include "orvane/scene/detail/OwnedObject.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace OV
{

namespace
{

constexpr float defaultNear = 0.1f;
constexpr float defaultFar = 1000.0f;

/// Tangents of half the width and half the height of a view.
struct ViewTangents
{
    /// @param onSmallerSide whether the angle spans the width of an upright screen; it spans
    /// the height of any other.
    ViewTangents(float halfAngle, float width, float height, bool onSmallerSide)
    {
        const float tangent = std::tan(halfAngle);
        if (onSmallerSide && height > width)
        {
            horizontal = tangent;
            vertical = height * tangent / width;
        }
        else
        {
            vertical = tangent;
            horizontal = width * tangent / height;
        }
    }

    float horizontal;
    float vertical;
};

Vector Rotated(const Quaternion& rotation, const Vector& v)
{
    Vector result;
    result.Multiply(rotation, v);
    return result;
}

Vector Sum(const Vector& a, const Vector& b)
{
    Vector result;
    result.Add(a, b);
    return result;
}

Vector Unit(float x, float y, float z)
{
    Vector result(x, y, z);
    result.Normalize();
    return result;
}

} // namespace

CameraNode::CameraNode(Scene* ownScene) :
    Node(ownScene)
{
    // Here, since each update watches it, which is to take nothing from the heap.
    GetLifetime();
}

CameraNode::~CameraNode()
{
    while (!m_overriddenScenes.empty())
    {
        m_overriddenScenes.back()->SetCamera(nullptr);
    }
    if (scene && scene->defaultCamera == this)
    {
        scene->defaultCamera = nullptr;
    }
    detail::Walk::DiscardDrawn(std::move(renderData));
    // It may be what is deleting this camera.
    detail::Walk::Discard(std::move(screenMapping));
}

void CameraNode::SetLocal(const Transform& t)
{
    Node::SetLocal(t);
    dirty = true;
}

void CameraNode::SetGlobal(const Transform& t)
{
    Node::SetGlobal(t);
    dirty = true;
}

void CameraNode::UpdateGraph()
{
    // What hangs below a camera may delete it.
    LifetimeWatch watch;
    watch.Watch(GetLifetime());
    Node::UpdateGraph();
    if (watch.IsAlive())
    {
        invTransform.Invert(global);
    }
}

int CameraNode::Type() const
{
    return NodeTypeCameraNode;
}

bool CameraNode::HasType(int type)
{
    return type == NodeTypeCameraNode || type == NodeTypeNode;
}

void CameraNode::UpdateFrustum(float width, float height)
{
    screenWidth = width;
    screenHeight = height;

    const Quaternion rotation = global.GetRotation();
    frustum.position = global.GetPosition();
    frustum.direction = Rotated(rotation, Vector(0.0f, 0.0f, -1.0f));
    frustum.perspective = projection == Perspective;

    // From the camera to a point on each side plane, in the camera's own space.
    Vector toLeft, toTop, toRight, toBottom;
    if (frustum.perspective)
    {
        const ViewTangents tangents(fov, screenWidth, screenHeight, fovOnSmallerSide);
        frustum.leftNormal = Unit(-1.0f, 0.0f, tangents.horizontal);
        frustum.topNormal = Unit(0.0f, 1.0f, tangents.vertical);
        frustum.rightNormal = Unit(1.0f, 0.0f, tangents.horizontal);
        frustum.bottomNormal = Unit(0.0f, -1.0f, tangents.vertical);
    }
    else
    {
        // The height carries the angle here, on an upright screen too.
        const float halfHeight = std::tan(fov) * distanceToTarget;
        const float halfWidth = (width / height) * halfHeight;
        frustum.leftNormal = Vector(-1.0f, 0.0f, 0.0f);
        frustum.topNormal = Vector(0.0f, 1.0f, 0.0f);
        frustum.rightNormal = Vector(1.0f, 0.0f, 0.0f);
        frustum.bottomNormal = Vector(0.0f, -1.0f, 0.0f);
        toLeft.Set(-halfWidth, 0.0f, 0.0f);
        toTop.Set(0.0f, halfHeight, 0.0f);
        toRight.Set(halfWidth, 0.0f, 0.0f);
        toBottom.Set(0.0f, -halfHeight, 0.0f);
    }

    const auto place = [&](Plane& plane, const Vector& toPlane, const Vector& normal)
    {
        plane.Set(Sum(frustum.position, Rotated(rotation, toPlane)), Rotated(rotation, normal));
    };
    place(frustum.leftPlane, toLeft, frustum.leftNormal);
    place(frustum.topPlane, toTop, frustum.topNormal);
    place(frustum.rightPlane, toRight, frustum.rightNormal);
    place(frustum.bottomPlane, toBottom, frustum.bottomNormal);
}

void CameraNode::GetPlanes(Plane* out) const
{
    out[0] = frustum.leftPlane;
    out[1] = frustum.rightPlane;
    out[2] = frustum.topPlane;
    out[3] = frustum.bottomPlane;
}

void CameraNode::CreateRay(float x, float y, Vector& start, Vector& end)
{
    if (screenMapping)
    {
        screenMapping->ScreenToRay(x, y, start, end, fovOnSmallerSide);
        return;
    }
    if (nearDistance > farDistance)
    {
        nearDistance = defaultNear;
        farDistance = defaultFar;
    }

    const float nx = (x - 0.5f) * 2.0f;
    const float ny = ((1.0f - y) - 0.5f) * 2.0f;
    const float length = 2.0f * farDistance;
    if (projection == Perspective && screenHeight != 0.0f && screenWidth != 0.0f)
    {
        const ViewTangents tangents(fov, screenWidth, screenHeight, fovOnSmallerSide);
        Vector direction = Unit(nx * tangents.horizontal, ny * tangents.vertical, -1.0f);
        direction.Scale(length);
        start = global.GetPosition();
        end.Multiply(global, direction);
        return;
    }

    // A perspective camera without a screen comes here too.
    const float tangent = std::tan(fov);
    const Quaternion rotation = global.GetRotation();
    const Vector offset(tangent * nx * distanceToTarget * screenWidth / screenHeight,
                        tangent * ny * distanceToTarget, 0.0f);
    start = Sum(global.GetPosition(), Rotated(rotation, offset));
    Vector along = Rotated(rotation, Vector(0.0f, 0.0f, -1.0f));
    along.Scale(length);
    end = Sum(start, along);
    if (nearDistance < 0.0f)
    {
        start = Sum(start, Rotated(rotation, Vector(0.0f, 0.0f, -nearDistance)));
    }
}

void CameraNode::WorldPosToScreenPos(const Vector& world, Vector& out) const
{
    if (screenMapping)
    {
        screenMapping->WorldToScreen(world, screenWidth, screenHeight, out);
        return;
    }

    const float halfWidth = screenWidth / 2.0f;
    const float halfHeight = screenHeight / 2.0f;
    if (projection != Perspective)
    {
        Vector p;
        p.Multiply(invTransform, world);
        const float extent = std::tan(fov) * distanceToTarget;
        const float py = p.y / extent;
        const float px = p.x / (extent * screenWidth / screenHeight);
        out.Set(px * halfWidth + halfWidth, screenHeight - (py * halfHeight + halfHeight), 0.0f);
        return;
    }

    Vector fromEye;
    fromEye.Subtract(world, global.GetPosition());
    Vector v = Rotated(invTransform.GetRotation(), fromEye);
    const float zView = v.z;
    v.Normalize();
    const float sx = -v.x / v.z;
    const float sy = -v.y / v.z;
    // As if fovOnSmallerSide were set, whatever it is.
    const ViewTangents tangents(fov, screenWidth, screenHeight, true);
    const float n = nearDistance;
    const float f = farDistance;
    out.Set(halfWidth * sx / tangents.horizontal + halfWidth,
            screenHeight - (halfHeight * sy / tangents.vertical + halfHeight),
            (((n + f) * zView / (f - n)) + (2.0f * n * f / (f - n))) / zView - 1.0f);
}

void CameraNode::SyncView(CameraNode* other)
{
    if (!other)
    {
        return;
    }
    const bool isRange = other->farDistance > other->nearDistance;
    nearDistance = isRange ? other->nearDistance : defaultNear;
    farDistance = isRange ? other->farDistance : defaultFar;
    fov = other->fov;
    projection = other->projection;
    global = other->global;
    invTransform = other->invTransform;
    distanceToTarget = other->distanceToTarget;
    globalMatrixDirty = true;
    globalNormalsDirty = true;
    UpdateFrustum(other->screenWidth, other->screenHeight);
}

void CameraNode::SyncNearFar(CameraNode* other)
{
    if (!other)
    {
        return;
    }
    nearDistance = other->nearDistance = std::min(nearDistance, other->nearDistance);
    farDistance = other->farDistance = std::max(farDistance, other->farDistance);
}

void CameraNode::SetNearFar(float nearValue, float farValue)
{
    nearDistance = nearValue;
    farDistance = projection == Perspective && farValue <= 0.0f ? 1.0f : farValue;
}

bool CameraNode::IsDirtyAndReset()
{
    return std::exchange(dirty, false);
}

void CameraNode::SetRenderData(Object* data)
{
    detail::ReplaceDrawnObject(renderData, data);
}

void CameraNode::SetScreenMapping(IScreen* mapping)
{
    (void)screenMapping.release();
    screenMapping.reset(mapping);
}

} // namespace OV
