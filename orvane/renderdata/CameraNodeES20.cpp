#include "orvane/renderdata/CameraNodeES20.h"

#include "orvane/math/Vector.h"
#include "orvane/scene/CameraNode.h"

#include <cmath>

namespace OV
{

namespace
{

/// Half the width and half the height of the view at distance 1. The tangent belongs to the
/// shorter side; the longer one gets wider.
struct ViewExtent
{
    ViewExtent(float tangent, int width, int height)
    {
        const auto w = static_cast<float>(width);
        const auto h = static_cast<float>(height);
        if (height > width)
        {
            horizontal = tangent;
            vertical = h * tangent / w;
        }
        else
        {
            vertical = tangent;
            horizontal = w * tangent / h;
        }
    }

    float horizontal;
    float vertical;
};

/// What both projections are made of.
struct Lens
{
    explicit Lens(const CameraNode& camera) :
        perspective(camera.GetProjection() == CameraNode::Perspective),
        tangent(std::tan(camera.GetFOV())), distanceToTarget(camera.GetDistanceToTarget())
    {
        camera.GetNearFar(nearDistance, farDistance);
    }

    /// The height follows the distance to the target, whichever side is the shorter.
    void Orthographic(int width, int height, Matrix& projection) const
    {
        const float top = tangent * distanceToTarget;
        const float right = top * static_cast<float>(width) / static_cast<float>(height);
        projection.CalculateOrthoMatrix(-right, right, -top, top, nearDistance, farDistance);
    }

    bool perspective;
    float tangent;
    float distanceToTarget;
    float nearDistance = 0.0f;
    float farDistance = 0.0f;
};

/// A frustum without a far plane, its depth held a little below 1 so that what is very far
/// away is not clipped by rounding.
void InfinitePerspective(const ViewExtent& extent, float n, Matrix& projection)
{
    const float right = n * extent.horizontal;
    const float top = n * extent.vertical;
    const float left = -right;
    const float bottom = -top;
    projection = Matrix{};
    projection.m[0] = 2.0f * n / (right - left);
    projection.m[5] = 2.0f * n / (top - bottom);
    projection.m[8] = (right + left) / (right - left);
    projection.m[9] = (top + bottom) / (top - bottom);
    projection.m[10] = -0.99999f;
    projection.m[11] = -1.0f;
    projection.m[14] = n * -1.99999f;
}

} // namespace

CameraNodeES20::CameraNodeES20(CameraNode* sceneCamera) :
    camera(sceneCamera)
{
}

CameraNodeES20::CameraNodeES20(const CameraNodeES20& other) = default;
CameraNodeES20& CameraNodeES20::operator=(const CameraNodeES20& other) = default;
CameraNodeES20::~CameraNodeES20() = default;

void CameraNodeES20::UpdateMVP(int width, int height, bool)
{
    if (!camera)
    {
        return;
    }
    const Matrix view = UpdateView();
    const Lens lens(*camera);
    Matrix projection;
    if (lens.perspective)
    {
        const ViewExtent extent(lens.tangent, width, height);
        const float right = lens.nearDistance * extent.horizontal;
        const float top = lens.nearDistance * extent.vertical;
        projection.CalculatePerspMatrix(-right, right, -top, top, lens.nearDistance, lens.farDistance);
    }
    else
    {
        lens.Orthographic(width, height, projection);
    }
    mvp.Multiply(projection, view);
    TakePart(mvp);
}

void CameraNodeES20::UpdateInfiniteMVP(int width, int height, float nearOffset)
{
    if (!camera)
    {
        return;
    }
    const Matrix view = UpdateView();
    const Lens lens(*camera);
    Matrix projection;
    if (lens.perspective)
    {
        InfinitePerspective(ViewExtent(lens.tangent, width, height), lens.nearDistance + nearOffset,
                            projection);
    }
    else
    {
        lens.Orthographic(width, height, projection);
    }
    mvp.Multiply(projection, view);
    TakePart(mvp);
}

void CameraNodeES20::UpdateHudMVP(int width, int height, float nearZ, float farZ)
{
    hudCamera = true;
    hudMvp.CalculateOrthoMatrix(0.0f, static_cast<float>(width), 0.0f, static_cast<float>(height), nearZ,
                                farZ);
    TakePart(hudMvp);
}

void CameraNodeES20::TakePart(Matrix& matrix) const
{
    const bool isWhole = m_part.scaleX == 1.0 && m_part.scaleY == 1.0 && m_part.shiftX == 0.0 && m_part.shiftY == 0.0;
    if (isWhole)
    {
        // Also where a number is not finite.
        return;
    }
    for (int column = 0; column < 16; column += 4)
    {
        const auto shifted = [&](int row, double scale, double shift)
        { return static_cast<float>(scale * matrix.m[column + row] + shift * matrix.m[column + 3]); };
        matrix.m[column] = shifted(0, m_part.scaleX, m_part.shiftX);
        matrix.m[column + 1] = shifted(1, m_part.scaleY, m_part.shiftY);
    }
}

Matrix CameraNodeES20::UpdateView()
{
    hudCamera = false;
    Transform unscaled = camera->GetGlobal();
    unscaled.SetScale(Vector(1.0f, 1.0f, 1.0f));
    invCamT.Invert(unscaled);
    Matrix view;
    invCamT.ExtractMatrix(view, true);
    return view;
}

} // namespace OV
