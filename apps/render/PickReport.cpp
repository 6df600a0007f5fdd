#include "apps/render/PickReport.h"

#include "orvane_host/import/NodePath.h"
#include "orvane_host/present/Picking.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace OV::RenderApp
{

namespace
{

double DistanceFrom(const CameraNode& camera, const Vector& position)
{
    const auto& m = camera.GetGlobal().GetTransf3d().m;
    const double away[3] = {position.x - m[0][3], position.y - m[1][3], position.z - m[2][3]};
    if (camera.GetProjection() == CameraNode::Perspective)
    {
        return std::hypot(away[0], away[1], away[2]);
    }
    const double back[3] = {m[0][2], m[1][2], m[2][2]};
    return -(away[0] * back[0] + away[1] * back[1] + away[2] * back[2]) / std::hypot(back[0], back[1], back[2]);
}

std::string NameOf(const Mesh& mesh, const std::vector<Host::ImportedMesh>& meshes)
{
    const auto found = std::find_if(meshes.begin(), meshes.end(),
                                    [&](const Host::ImportedMesh& imported) { return imported.mesh == &mesh; });
    return found == meshes.end() ? std::string() : found->name;
}

/// The number of the fewest digits that stands for a float, where the float itself would show
/// the digits that a double has beyond.
double Shortest(float value)
{
    char text[32];
    const auto end = std::to_chars(text, text + sizeof(text), value).ptr;
    double shortest = value;
    std::from_chars(text, end, shortest);
    return shortest;
}

nlohmann::ordered_json NameOrNull(const std::string& name)
{
    return name.empty() ? nlohmann::ordered_json() : nlohmann::ordered_json(name);
}

} // namespace

void PickReport::Add(const Host::PickHit& hit, const CameraNode& camera,
                     const Host::NodePaths& paths, const std::vector<Host::ImportedMesh>& meshes)
{
    Thing thing;
    thing.node = paths.PathTo(*hit.node);
    thing.mesh = NameOf(*hit.mesh, meshes);
    thing.material = hit.mesh->GetMaterial() ? hit.mesh->GetMaterial()->GetName() : std::string();
    thing.distance = DistanceFrom(camera, hit.position);
    thing.position = hit.position;
    things.push_back(thing);
}

void PickReport::AddTo(nlohmann::ordered_json& json) const
{
    nlohmann::ordered_json hits = nlohmann::ordered_json::array();
    for (const Thing& thing : things)
    {
        nlohmann::ordered_json hit;
        hit["node"] = NameOrNull(thing.node);
        hit["mesh"] = NameOrNull(thing.mesh);
        hit["material"] = NameOrNull(thing.material);
        hit["distance"] = Shortest(static_cast<float>(thing.distance));
        hit["position"] = {Shortest(thing.position.x), Shortest(thing.position.y), Shortest(thing.position.z)};
        hits.push_back(hit);
    }
    json["pick"]["pixel"] = {x, y};
    json["pick"]["hits"] = hits;
}

} // namespace OV::RenderApp
