#include "orvane_host/import/detail/ViewBuilder.h"

#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace OV::Host
{

namespace
{

using Vec = QGM::Vector3d;

constexpr double kDefaultDistance = 50.0;

Vec ToVec(const double (&v)[3])
{
    return Vec(v[0], v[1], v[2]);
}

Vec Cross(const Vec& a, const Vec& b)
{
    return Vec(a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x);
}

bool IsFinite(const Vec& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

/// A length above 0 that a float can hold.
bool IsDirection(const Vec& v)
{
    return IsFinite(v) && v.length() > 1e-12 && v.length() < 1e12;
}

bool IsPositive(double value)
{
    return std::isfinite(value) && value > 0.0;
}

Vector BoxCenter(const ImportReport& report)
{
    Vector center;
    if (report.hasBox)
    {
        center.Set((report.boxMin.x + report.boxMax.x) * 0.5f, (report.boxMin.y + report.boxMax.y) * 0.5f,
                   (report.boxMin.z + report.boxMax.z) * 0.5f);
    }
    return center;
}

/// @return false when direction and up do not decide a camera's axes.
bool CameraTransform(const CameraData& data, Transform& transform)
{
    Vec z = ToVec(data.direction);
    Vec x = Cross(ToVec(data.direction), ToVec(data.up));
    const Vec position = ToVec(data.position);
    if (!IsDirection(z) || !IsDirection(x) || !IsFinite(position))
    {
        return false;
    }
    z.normalize();
    z = Vec(-z.x, -z.y, -z.z);
    x.normalize();
    transform.SetTransf3d(
        QGM::Transf3d(QGM::Point3d(position.x, position.y, position.z), x, Cross(z, x), z, false));
    return true;
}

/// From the camera to the middle of the scene, along the view.
double DistanceToScene(const CameraNode& camera, const ImportReport& report)
{
    Vector offset;
    offset.Subtract(BoxCenter(report), camera.GetGlobal().GetPosition());
    Vec back = camera.GetGlobal().GetTransf3d().zDir();
    back.normalize();
    const double along = -(offset.x * back.x + offset.y * back.y + offset.z * back.z);
    const double distance = along > 0.0 ? along : offset.Magnitude();
    return IsPositive(distance) ? distance : kDefaultDistance;
}

/// The engine's field of view: half the angle on the shorter side, or, without an aspect to
/// tell which that is, half of the angle given.
double HalfAngle(const CameraData& data)
{
    const double half = IsPositive(data.horizontalAngle) ? std::min(data.horizontalAngle, 3.0) * 0.5 : 0.45;
    return IsPositive(data.aspect) && data.aspect > 1.0 ? std::atan(std::tan(half) / data.aspect) : half;
}

void SetLens(const CameraData& data, const ImportReport& report, CameraNode& camera)
{
    const double scale = camera.GetGlobal().GetMaxScale();
    const double distance = DistanceToScene(camera, report);
    camera.SetDistanceToTarget(static_cast<float>(distance));
    camera.SetFOV(static_cast<float>(HalfAngle(data)));
    if (IsPositive(data.orthographicHalfWidth))
    {
        const double aspect = IsPositive(data.aspect) ? data.aspect : 1.0;
        camera.SetProjection(CameraNode::Orthographic);
        camera.SetFOV(static_cast<float>(std::atan(data.orthographicHalfWidth * scale / aspect / distance)));
    }
    if (IsPositive(data.nearDistance) && IsPositive(data.farDistance) && data.farDistance > data.nearDistance)
    {
        camera.SetNearFar(static_cast<float>(data.nearDistance * scale),
                          static_cast<float>(data.farDistance * scale));
    }
    else
    {
        camera.SetNearFar(static_cast<float>(distance * 1e-3), static_cast<float>(distance * 10.0));
    }
}

bool HasNode(std::int32_t node, const std::vector<Node*>& nodes)
{
    return node >= 0 && static_cast<std::size_t>(node) < nodes.size();
}

void BuildCameras(const ModelData& model, const std::vector<Node*>& nodes, ImportResult& result)
{
    for (const CameraData& data : model.cameras)
    {
        Transform local;
        if (!HasNode(data.node, nodes) || !CameraTransform(data, local))
        {
            result.report.warnings.push_back("A camera of the file is left out: it looks nowhere.");
            continue;
        }
        auto* camera = new CameraNode(result.scene.get());
        Node* parent = nodes[static_cast<std::size_t>(data.node)];
        parent->AddChild(camera, false);
        camera->SetLocal(local);
        camera->UpdateGraph();
        SetLens(data, result.report, *camera);
        result.cameras.push_back(camera);
    }
}

/// Full strength in the brightest channel, so that the file's units do not matter.
bool SetLightColor(const LightData& data, float ambientLevel, LightNode& light)
{
    const float brightest = std::max({data.color[0], data.color[1], data.color[2]});
    if (!IsPositive(brightest))
    {
        return false;
    }
    float rgb[3];
    for (int i = 0; i < 3; ++i)
    {
        const float share = data.color[i] / brightest;
        rgb[i] = (std::isfinite(share) ? std::clamp(share, 0.0f, 1.0f) : 0.0f) * (1.0f - ambientLevel);
    }
    light.SetColor(rgb[0], rgb[1], rgb[2]);
    return true;
}

/// A light without a direction shines towards the middle of the scene.
void PlacePointLight(const LightData& data, Node& node, const ImportReport& report, Scene& scene,
                     LightNode& light)
{
    QGM::Point3d position(data.position[0], data.position[1], data.position[2]);
    position *= node.GetGlobal().GetTransf3d();
    const Vector center = BoxCenter(report);
    Vec towards(center.x - position.x, center.y - position.y, center.z - position.z);
    if (!IsDirection(towards))
    {
        towards = Vec(0.0, -1.0, 0.0);
        position = QGM::Point3d();
    }
    towards.normalize();
    scene.GetRoot()->AddChild(&light, false);
    Transform place;
    place.SetTransf3d(QGM::Transf3d(position, Vec(1, 0, 0), Vec(0, 1, 0), Vec(0, 0, 1), false));
    light.SetGlobal(place);
    light.SetLocalDirection(
        Vector(static_cast<float>(towards.x), static_cast<float>(towards.y), static_cast<float>(towards.z)));
}

int Rank(const LightData& data)
{
    return data.kind == LightKind::Directional ? 0 : IsDirection(ToVec(data.direction)) ? 1 : 2;
}

void BuildLights(const ModelData& model, const std::vector<Node*>& nodes, float ambientLevel,
                 ImportResult& result)
{
    std::vector<LightData> lights = model.lights;
    std::stable_sort(lights.begin(), lights.end(),
                     [](const LightData& a, const LightData& b) { return Rank(a) < Rank(b); });
    for (const LightData& data : lights)
    {
        // Made without a scene a light would not be in its list; one that goes takes itself out.
        auto light = std::make_unique<LightNode>(result.scene.get());
        if (!HasNode(data.node, nodes) || !SetLightColor(data, ambientLevel, *light))
        {
            continue;
        }
        light->SetAmbient(1.0f, 1.0f, 1.0f);
        Node& node = *nodes[static_cast<std::size_t>(data.node)];
        Vec direction = ToVec(data.direction);
        if (IsDirection(direction))
        {
            direction.normalize();
            light->SetLocalDirection(Vector(static_cast<float>(direction.x), static_cast<float>(direction.y),
                                            static_cast<float>(direction.z)));
            node.AddChild(light.get(), false);
            light->SetLocal(Transform());
            light->UpdateGraph();
        }
        else
        {
            PlacePointLight(data, node, result.report, *result.scene, *light);
        }
        result.lights.push_back(light.release());
    }
}

} // namespace

void BuildCamerasAndLights(const ModelData& model, const std::vector<Node*>& nodes,
                           const ImportOptions& options, ImportResult& result)
{
    BuildCameras(model, nodes, result);
    BuildLights(model, nodes, std::clamp(options.ambientLevel, 0.0f, 1.0f), result);
    result.report.cameras = result.cameras.size();
    result.report.lights = result.lights.size();
}

} // namespace OV::Host
