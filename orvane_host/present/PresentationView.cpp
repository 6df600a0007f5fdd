#include "orvane_host/present/detail/PresentationImpl.h"
#include "orvane_host/present/detail/SectionPlanes.h"
#include "orvane_host/present/detail/ShownPoints.h"
#include "orvane_host/view/ViewFit.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>

namespace OV::Host
{

namespace
{

constexpr double kPi = 3.14159265358979323846;

Vector Middle(const Vector& a, const Vector& b)
{
    return Vector((a.x + b.x) / 2.0f, (a.y + b.y) / 2.0f, (a.z + b.z) / 2.0f);
}

} // namespace

SceneFit::Filter Presentation::Impl::ModelFilter() const
{
    return [this](const MeshNode& node, const Mesh& mesh)
    { return IsOfModel(mesh) && visibility->IsShownByScene(node); };
}

Vector Presentation::Impl::MiddleOfModel() const
{
    return report.hasBox ? Middle(report.boxMin, report.boxMax) : Vector();
}

float Presentation::Impl::Aspect() const
{
    return m_width > 0 && m_height > 0 ? static_cast<float>(m_width) / static_cast<float>(m_height)
                                       : ViewFitOptions().aspect;
}

void Presentation::Impl::PlaceCamera()
{
    ViewFitOptions fit;
    fit.aspect = Aspect();
    fit.fovDegrees = settings.view.fov;
    fit.orthographic = settings.view.orthographic;
    fit.upAxis = settings.view.upAxis;
    // The fit goes by where the nodes are.
    UpdateGlobals();
    CameraNode& camera = Camera();
    const ViewSettings& view = settings.view;
    if (view.eye)
    {
        ViewFit::Look(camera, *view.eye, view.target.value_or(MiddleOfModel()), view.up.value_or(Up()), report.boxMin,
                      report.boxMax, fit);
    }
    else
    {
        // Hiding and cutting don't move the view.
        ViewFit::Frame(camera, report.boxMin, report.boxMax, view.named, fit);
        SceneFit::Frame(camera, World(), ModelFilter(), fit.aspect, fit.margin);
    }
    ReachShadows();
    KeepDepths();
    m_isPictureChanged = true;
}

void Presentation::Impl::ReachShadows()
{
    const std::optional<PresentationRenderer::ShadowGround> ground = ShadowGroundOfModel();
    if (!ground || !settings.shadows || !sun.direction)
    {
        return;
    }
    // Those of a lower sun end out of sight.
    constexpr float lowest = 0.05f;
    const auto dot = [](const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; };
    const float height = std::max(dot(ground->up, *sun.direction), lowest);
    CameraNode& camera = Camera();
    const auto& m = camera.GetGlobal().GetTransf3d().m;
    float nearest = 0.0f;
    float farthest = 0.0f;
    camera.GetNearFar(nearest, farthest);
    for (int i = 0; i < 8; ++i)
    {
        const Vector corner((i & 1) != 0 ? report.boxMax.x : report.boxMin.x,
                            (i & 2) != 0 ? report.boxMax.y : report.boxMin.y,
                            (i & 4) != 0 ? report.boxMax.z : report.boxMin.z);
        const float along = (dot(ground->up, corner) - dot(ground->up, ground->position)) / height;
        const double shadow[3] = {static_cast<double>(corner.x - sun.direction->x * along),
                                  static_cast<double>(corner.y - sun.direction->y * along),
                                  static_cast<double>(corner.z - sun.direction->z * along)};
        double away = 0.0;
        for (int row = 0; row < 3; ++row)
        {
            away -= (shadow[row] - m[row][3]) * m[row][2];
        }
        farthest = std::max(farthest, static_cast<float>(away * 1.01));
    }
    camera.SetNearFar(nearest, farthest);
}

std::optional<Presentation::Box> Presentation::Impl::BoxOf(const std::vector<Vector>& points) const
{
    if (points.empty())
    {
        return std::nullopt;
    }
    Box box{points.front(), points.front()};
    for (const Vector& point : points)
    {
        box.low = Vector(std::min(box.low.x, point.x), std::min(box.low.y, point.y), std::min(box.low.z, point.z));
        box.high = Vector(std::max(box.high.x, point.x), std::max(box.high.y, point.y), std::max(box.high.z, point.z));
    }
    return box;
}

std::vector<Vector> Presentation::Impl::ShownPointsBelow(const Node& node)
{
    UpdateGlobals();
    if (m_lostNodes->AreThere() || m_isSceneOther)
    {
        // The node may be among them.
        return {};
    }
    const auto isShown = [this](const MeshNode& place, const Mesh& mesh)
    { return IsOfModel(mesh) && (place.GetFlags() & NodeFlagHidden) == 0; };
    return Detail::ShownPoints(node, isShown, Detail::SectionPlanesOf(settings.section));
}

std::vector<Vector> Presentation::Impl::AllPoints()
{
    UpdateGlobals();
    return Detail::ShownPoints(*World().GetRoot(), ModelFilter(), {});
}

bool Presentation::Impl::Frame(const std::vector<Vector>& points)
{
    UpdateGlobals();
    Scene measured;
    Detail::AddPoints(measured, points);
    CameraNode& camera = *measured.GetCameraNode();
    camera.SetGlobal(Camera().GetGlobal());
    camera.SetProjection(Camera().GetProjection());
    camera.SetFOV(Camera().GetFOV());
    if (!SceneFit::Frame(camera, measured, Aspect(), ViewFitOptions().margin))
    {
        return false;
    }
    double distance = camera.GetDistanceToTarget();
    if (settings.view.orthographic)
    {
        // Settings have the height of the picture by way of the distance.
        distance *= std::tan(static_cast<double>(camera.GetFOV())) / std::tan(settings.view.fov * kPi / 360.0);
    }
    return LookAsFrom(camera, distance);
}

bool Presentation::Impl::SetViewHeight(double height)
{
    return std::isfinite(height) && height > 0.0
        && LookAsFrom(Camera(), height / 2.0 / std::tan(settings.view.fov * kPi / 360.0));
}

double Presentation::Impl::ViewHeight() const
{
    const CameraNode& camera = Camera();
    const double half = std::tan(static_cast<double>(camera.GetFOV())) * camera.GetDistanceToTarget();
    // The angle of a camera is that of the shorter side where there is perspective.
    const bool isUpright = camera.GetProjection() == CameraNode::Perspective && m_height > m_width && m_width > 0;
    return 2.0 * half * (isUpright ? static_cast<double>(m_height) / m_width : 1.0);
}

bool Presentation::Impl::LookAsFrom(const CameraNode& camera, double distance)
{
    const auto& m = camera.GetGlobal().GetTransf3d().m;
    const Vector place = camera.GetGlobal().GetPosition();
    const auto behind = [&](const Vector& from, double by)
    {
        return Vector(static_cast<float>(from.x + m[0][2] * by), static_cast<float>(from.y + m[1][2] * by),
                      static_cast<float>(from.z + m[2][2] * by));
    };
    const Vector target = behind(place, -static_cast<double>(camera.GetDistanceToTarget()));
    return LookFrom(behind(target, distance), target,
                    Vector(static_cast<float>(m[0][1]), static_cast<float>(m[1][1]), static_cast<float>(m[2][1])));
}

bool Presentation::Impl::LookFrom(const Vector& eye, const Vector& target, const std::optional<Vector>& up)
{
    PresentationSettings wanted = settings;
    wanted.view.eye = eye;
    wanted.view.target = target;
    wanted.view.up = up;
    std::string error;
    return Apply(wanted, error);
}

} // namespace OV::Host
