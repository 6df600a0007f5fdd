#include "orvane_host/import/detail/SceneMerge.h"

#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"

#include <algorithm>
#include <set>
#include <unordered_map>
#include <utility>

namespace OV::Host
{

namespace
{

Transform Scaled(const Transform& place, double scale)
{
    QGM::Transf3d scaling;
    for (std::uint64_t axis = 0; axis < 3; ++axis)
    {
        scaling.setValue(axis, axis, scale);
    }
    Transform scaled;
    scaled.SetTransf3d(scaling * place.GetTransf3d());
    return scaled;
}

Node* NewCamera(const CameraNode& camera, Scene& scene, float scale)
{
    auto* const twin = new CameraNode(&scene);
    float nearDistance = 0.0f;
    float farDistance = 0.0f;
    camera.GetNearFar(nearDistance, farDistance);
    twin->SetProjection(camera.GetProjection());
    twin->SetFOV(camera.GetFOV());
    twin->SetNearFar(nearDistance * scale, farDistance * scale);
    twin->SetDistanceToTarget(camera.GetDistanceToTarget() * scale);
    return twin;
}

Node* NewLight(LightNode& light, Scene& scene)
{
    auto* const twin = new LightNode(&scene);
    const Color& color = light.GetColor();
    twin->SetColor(color.r, color.g, color.b);
    if (light.HasAmbient())
    {
        const Color& ambient = light.GetAmbient();
        twin->SetAmbient(ambient.r, ambient.g, ambient.b);
    }
    twin->SetVisible(light.IsVisible());
    // A light tells its direction in the world alone.
    Transform turned;
    turned.SetRotation(light.GetGlobal().GetRotation());
    Transform back;
    back.Invert(turned);
    Vector direction;
    direction.Multiply(back, light.GetGlobalDirection());
    twin->SetLocalDirection(direction);
    return twin;
}

Node* NewNode(Node& node, Scene& scene, float scale)
{
    if (const auto* const camera = dynamic_cast<const CameraNode*>(&node))
    {
        return NewCamera(*camera, scene, scale);
    }
    if (auto* const light = dynamic_cast<LightNode*>(&node))
    {
        return NewLight(*light, scene);
    }
    auto* const place = dynamic_cast<MeshNode*>(&node);
    if (!place)
    {
        return new Node(&scene);
    }
    auto* const twin = new MeshNode(&scene);
    twin->SetFlags(static_cast<NodeFlags>(place->GetFlags()), false);
    // The meshes are on their way to the other scene themselves.
    const std::vector<Mesh*> meshes(place->EachMesh().begin(), place->EachMesh().end());
    for (Mesh* const mesh : meshes)
    {
        // First, so that the mesh of one node never has two: it would keep a list.
        mesh->RemoveNode(place);
        mesh->AddNode(twin);
    }
    return twin;
}

/// Nodes of the other scene, by those that they stand for.
using Twins = std::unordered_map<const Node*, Node*>;

/// Makes a tree anew, without recursion: it may be deeper than the stack.
Node* MoveTree(Node& top, Scene& scene, double scale, std::uint64_t number, Twins& twins)
{
    std::vector<std::pair<Node*, Node*>> left = {{&top, scene.GetRoot()}};
    while (!left.empty())
    {
        const auto [node, parent] = left.back();
        left.pop_back();
        Node* const twin = NewNode(*node, scene, static_cast<float>(scale));
        twins[node] = twin;
        parent->AddChild(twin, false);
        twin->SetLocal(node == &top ? Scaled(node->GetLocal(), scale) : node->GetLocal());
        Node::Path path = node->GetPath();
        if (!path.empty())
        {
            path.front().second = number;
            twin->SetPath(path);
        }
        const NodeChildren children = node->EachChild();
        for (auto child = children.rbegin(); child != children.rend(); ++child)
        {
            left.emplace_back(*child, twin);
        }
    }
    return twins[&top];
}

/// In the order of the lists, and to the same list.
void MoveMaterials(Scene& from, Scene& to)
{
    for (const bool isAlpha : {false, true})
    {
        const std::vector<Material*> materials = isAlpha ? from.GetAlphaMaterials() : from.GetOptimizedMaterials();
        for (Material* const material : materials)
        {
            from.RemoveMaterial(material);
            to.AddMaterial(material);
        }
    }
}

/// A line stays in the lines of its scene: those of the other one are made anew over the same points.
void MoveLines(Scene& from, Scene& to, const Twins& twins)
{
    const std::set<Line*> lines = from.GetLines();
    for (Line* const line : lines)
    {
        auto* const twin = new Line(*line, &to);
        if (LineStyle* const style = line->GetStyle())
        {
            style->AddLine(twin);
        }
        for (MeshNode* const node : line->EachNode())
        {
            if (twins.count(node) == 0)
            {
                twin->AddNode(node);
            }
        }
        delete line;
    }
    const std::vector<LineStyle*> styles = from.GetLineStyles();
    for (LineStyle* const style : styles)
    {
        from.RemoveLineStyle(style);
        to.AddLineStyle(style);
    }
}

} // namespace

std::vector<Node*> MoveInto(Scene& scene, ImportResult& model, double scale, std::uint64_t number)
{
    const std::unique_ptr<Scene> from = std::move(model.scene);
    from->GetRoot()->UpdateGraph();
    Twins twins;
    std::vector<Node*> tops;
    for (Node* const top : from->GetRoot()->EachChild())
    {
        // The camera of a new scene is none of the file's.
        if (top != from->GetCameraNode())
        {
            tops.push_back(MoveTree(*top, scene, scale, number, twins));
        }
    }
    MoveMaterials(*from, scene);
    MoveLines(*from, scene, twins);
    while (!from->EachMesh().empty())
    {
        from->EachMesh().back()->SetScene(&scene);
    }
    for (ImportedNode& node : model.nodes)
    {
        node.node = twins[node.node];
    }
    for (CameraNode*& camera : model.cameras)
    {
        camera = static_cast<CameraNode*>(twins[camera]);
    }
    for (LightNode*& light : model.lights)
    {
        light = static_cast<LightNode*>(twins[light]);
    }
    scene.MarkDirty();
    return tops;
}

void AddReport(ImportReport& sum, const ImportReport& more, double scale)
{
    sum.fileBytes += more.fileBytes;
    sum.nodes += more.nodes;
    sum.meshNodes += more.meshNodes;
    sum.fileMeshes += more.fileMeshes;
    sum.meshes += more.meshes;
    sum.vertices += more.vertices;
    sum.triangles += more.triangles;
    sum.coplanarPairs += more.coplanarPairs;
    sum.drawnTriangles += more.drawnTriangles;
    sum.points += more.points;
    sum.lines += more.lines;
    sum.skippedLines += more.skippedLines;
    sum.droppedTriangles += more.droppedTriangles;
    sum.materials += more.materials;
    sum.fileTextures += more.fileTextures;
    sum.embeddedTextures += more.embeddedTextures;
    sum.missingTextures += more.missingTextures;
    sum.normalMaps += more.normalMaps;
    sum.opacityMaps += more.opacityMaps;
    sum.lights += more.lights;
    sum.cameras += more.cameras;
    sum.warnings.insert(sum.warnings.end(), more.warnings.begin(), more.warnings.end());
    if (!more.hasBox)
    {
        return;
    }
    const auto share = static_cast<float>(scale);
    const Vector low(more.boxMin.x * share, more.boxMin.y * share, more.boxMin.z * share);
    const Vector high(more.boxMax.x * share, more.boxMax.y * share, more.boxMax.z * share);
    if (!std::exchange(sum.hasBox, true))
    {
        sum.boxMin = low;
        sum.boxMax = high;
        return;
    }
    sum.boxMin.Set(std::min(sum.boxMin.x, low.x), std::min(sum.boxMin.y, low.y), std::min(sum.boxMin.z, low.z));
    sum.boxMax.Set(std::max(sum.boxMax.x, high.x), std::max(sum.boxMax.y, high.y), std::max(sum.boxMax.z, high.z));
}

std::string UniqueTopName(const std::vector<ImportedNode>& others, const ImportResult& model)
{
    const auto isTaken = [&others](const std::string& name)
    {
        return name.empty()
            || std::any_of(others.begin(), others.end(), [&](const ImportedNode& node) { return node.name == name; });
    };
    if (!model.nodes.empty() && !isTaken(model.nodes.front().name))
    {
        return model.nodes.front().name;
    }
    const std::string& file = model.error.file;
    const std::string plain = file.empty() ? "model" : file.substr(file.find_last_of('/') + 1);
    std::string name = plain;
    for (int next = 2; isTaken(name); ++next)
    {
        name = plain + " (" + std::to_string(next) + ")";
    }
    return name;
}

} // namespace OV::Host
