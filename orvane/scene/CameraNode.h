#pragma once

#include "orvane/scene/Frustum.h"
#include "orvane/scene/IScreen.h"
#include "orvane/scene/Node.h"

namespace OV
{

/// The eye of a scene: looks down its negative Z, with Y up.
///
/// Scene::UpdateGraph keeps the frustum and the inverse transform of the scene's camera up to
/// date. Those of any other camera are stale until its owner calls UpdateGraph and
/// UpdateFrustum.
class ORVANE_API CameraNode : public Node
{
public:
    /// Tested only against Perspective: a host may use any other value as orthographic.
    enum CameraProjection : std::uint32_t
    {
        Perspective = 0,
        Orthographic = 1,
    };

    explicit CameraNode(Scene* ownScene);

    /// Ends being the camera of any scene that uses this one.
    ~CameraNode() override;

    void SetLocal(const Transform& t) override;
    void SetGlobal(const Transform& t) override;
    void UpdateGraph() override;
    int Type() const override;
    bool HasType(int type) override;

    /// Rebuilds the frustum from the global transform as it stands, for a screen of this size.
    /// A size of 0 gives numbers that are not finite.
    void UpdateFrustum(float width, float height);

    /// Whether a sphere in world space lies outside the frustum.
    bool IsOutside(const Vector& p, float tolerance) const
    {
        return frustum.IsOutside(p, tolerance);
    }

    /// Copies the four side planes in the order left, right, top, bottom, which is not the
    /// order they are stored and tested in.
    void GetPlanes(Plane* out) const;

    /// Gives the segment in world space behind a screen position, twice the far distance
    /// long. x and y run from 0 to 1, from the left and from the top. A camera whose near
    /// distance is past its far distance is set to 0.1 and 1000 for good.
    void CreateRay(float x, float y, Vector& start, Vector& end);

    /// Gives the screen position of a point in world space, in the units of the screen size,
    /// from the top left. Out z is the depth of a perspective projection minus 1: -2 at the
    /// near plane, 0 at the far plane; 0 for an orthographic camera. A screen without a size
    /// and a point in the camera's own plane give numbers that are not finite.
    void WorldPosToScreenPos(const Vector& world, Vector& out) const;

    /// Sees what the other camera sees, without taking its place in the tree: the local
    /// transform stays. Near and far distances that make no range become 0.1 and 1000.
    void SyncView(CameraNode* other);

    /// Gives both cameras the smaller of the near and the larger of the far distances.
    void SyncNearFar(CameraNode* other);

    /// Half the angle of view, in radians.
    float GetFOV() const
    {
        return fov;
    }

    void SetFOV(float halfAngle)
    {
        fov = halfAngle;
    }

    /// Distance to the point looked at, from which an orthographic view takes its height.
    float GetDistanceToTarget() const
    {
        return distanceToTarget;
    }

    void SetDistanceToTarget(float distance)
    {
        distanceToTarget = distance;
    }

    CameraProjection GetProjection() const
    {
        return projection;
    }

    void SetProjection(CameraProjection newProjection)
    {
        projection = newProjection;
    }

    void GetNearFar(float& nearValue, float& farValue) const
    {
        nearValue = nearDistance;
        farValue = farDistance;
    }

    /// Distances along the line of sight. A far distance of 0 or less becomes 1 for a
    /// perspective camera.
    void SetNearFar(float nearValue, float farValue);

    /// As of the last UpdateFrustum.
    const Frustum& GetFrustum() const
    {
        return frustum;
    }

    /// World to camera space, as of the last UpdateGraph.
    const Transform& GetInvTransform() const
    {
        return invTransform;
    }

    /// Whether the camera was moved by SetLocal or SetGlobal since the last call.
    bool IsDirtyAndReset();

    Object* GetRenderData() const
    {
        return renderData.get();
    }

    /// Takes the object over and deletes the present one, even where they are the same: then
    /// none is left.
    void SetRenderData(Object* data);

    /// Takes the mapping over, null for the camera's own formulas. The one that was there is
    /// not deleted: it is back in the host's care.
    void SetScreenMapping(IScreen* mapping);

    /// Size of the screen, in the units of the last UpdateFrustum.
    float screenWidth = 0.0f;
    float screenHeight = 0.0f;

protected:
    float fov = 0.45f;
    float distanceToTarget = 50.0f;
    CameraProjection projection = Perspective;
    bool fovOnSmallerSide = true;
    Transform invTransform;
    float nearDistance = 0.01f;
    float farDistance = 1000.0f;
    bool dirty = false;
    Frustum frustum;
    std::unique_ptr<Object> renderData;
    std::unique_ptr<IScreen> screenMapping;

private:
    friend class Scene;

    /// Scenes that use this camera in place of their own.
    std::vector<Scene*> m_overriddenScenes;
};

} // namespace OV
