#include "orvane_host/present/OrbitView.h"

#include "orvane_host/present/PresentationSettings.h"
#include "orvane_host/view/OrbitCamera.h"

namespace OV::Host
{

namespace
{

template <typename Triple>
Vector Narrowed(const Triple& triple)
{
    return Vector(static_cast<float>(triple.x), static_cast<float>(triple.y), static_cast<float>(triple.z));
}

} // namespace

void ReadView(const ViewSettings& view, OrbitCamera& camera)
{
    camera.SetUpAxis(view.upAxis);
    camera.SetFov(view.fov);
    camera.SetOrthographic(view.orthographic);
    const Vector target = view.target ? *view.target : Narrowed(camera.GetModelMiddle());
    if (!view.eye || !camera.Look(*view.eye, target, view.up.value_or(UpDirection(view.upAxis))))
    {
        camera.LookFrom(view.named);
    }
}

void WriteView(const OrbitCamera& camera, ViewSettings& view)
{
    view.eye = Narrowed(camera.GetEye());
    view.target = Narrowed(camera.GetState().target);
    view.up = Narrowed(camera.GetUp());
    view.fov = static_cast<float>(camera.GetFov());
    view.orthographic = camera.IsOrthographic();
    view.upAxis = camera.GetUpAxis();
}

} // namespace OV::Host
