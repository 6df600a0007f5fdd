#include "orvane/effects/detail/ViewSpaceLight.h"

#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/scene/MeshNode.h"

namespace OV::Detail
{

Matrix3x3 ViewSpaceNormalMatrix(const CameraNodeES20& camera, MeshNode& node)
{
    Transform toView;
    toView.Multiply(camera.GetInvCamT(), node.GetGlobal());
    toView.SetScale(Vector(1.0f, 1.0f, 1.0f));
    Matrix3x3 matrix;
    toView.ExtractRot3x3(matrix.m);
    return matrix;
}

} // namespace OV::Detail
