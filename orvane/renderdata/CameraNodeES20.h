#pragma once

#include "orvane/Export.h"
#include "orvane/base/Object.h"
#include "orvane/base/WatchedPtr.h"
#include "orvane/math/Matrix.h"
#include "orvane/math/Transform.h"

namespace OV
{

class CameraNode;

/// What of a view fills the target: normalised device coordinates of the whole view become those of
/// the target by a scale and then a shift.
struct ViewPart
{
    double scaleX = 1.0;
    double scaleY = 1.0;
    double shiftX = 0.0;
    double shiftY = 0.0;
};

/// Render data of a camera: the matrices that effects read, rebuilt whenever a scene is drawn.
///
/// Widths and heights are in points. Owned by its camera; the one of the 2D layers has no
/// camera and belongs to the renderer. Holds no GL object.
class ORVANE_API CameraNodeES20 : public Object
{
public:
    /// @param camera not owned; null for 2D layers.
    explicit CameraNodeES20(CameraNode* camera);

    CameraNodeES20(const CameraNodeES20& other);
    CameraNodeES20& operator=(const CameraNodeES20& other);
    ~CameraNodeES20() override;

    /// Null for 2D layers, and once the camera is gone.
    CameraNode* GetCameraNode() const { return camera; }

    /// World to view: the inverse of the camera's global transform, its scale left out.
    const Transform& GetInvCamT() const { return invCamT; }

    /// World to clip space. Zero until the first update.
    const Matrix& GetMVP() const { return mvp; }

    /// Points, with the origin at the lower left, to clip space. Zero until the first update.
    const Matrix& GetHudMVP() const { return hudMvp; }

    /// True if the last update was that of a 2D layer.
    bool isHudCamera() const { return hudCamera; }

    /// Rebuilds invCamT and mvp from the camera. Without a camera it does nothing at all.
    /// The field of view is the half angle of the shorter side in perspective; an
    /// orthographic view has its height from that angle and the distance to the target.
    /// The bool is not read.
    void UpdateMVP(int width, int height, bool);

    /// As UpdateMVP, with an infinite far distance in perspective and the near distance moved
    /// by nearOffset; an orthographic view leaves nearOffset out.
    void UpdateInfiniteMVP(int width, int height, float nearOffset);

    /// Rebuilds hudMvp: (0, 0) to (width, height) and the given range of distances.
    void UpdateHudMVP(int width, int height, float nearZ, float farZ);

    /// Every update from now on makes the matrices of a part of the view, whose sizes stay those of
    /// the whole one; all of it at first. Depths are as ever.
    void SetPart(const ViewPart& part) { m_part = part; }
    const ViewPart& GetPart() const { return m_part; }

    WatchedPtr<CameraNode> camera; ///< not owned; reads null once it is gone
    Transform invCamT;
    Matrix mvp{};
    Matrix hudMvp{};
    bool hudCamera = false;

private:
    Matrix UpdateView();
    void TakePart(Matrix& matrix) const;

    ViewPart m_part;
};

} // namespace OV
