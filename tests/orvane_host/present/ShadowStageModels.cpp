#include "tests/orvane_host/present/ShadowStageModels.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <utility>

namespace OV::Test
{

namespace
{

std::shared_ptr<RawMesh> MakeBox(const Vector& low, const Vector& high)
{
    std::vector<Vector> positions;
    std::vector<Vector> normals;
    std::vector<unsigned short> indices;
    const float ends[2][3] = {{low.x, low.y, low.z}, {high.x, high.y, high.z}};
    for (int axis = 0; axis < 3; ++axis)
    {
        for (int side = 0; side < 2; ++side)
        {
            const auto first = static_cast<unsigned short>(positions.size());
            const int corners[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
            for (const auto& corner : corners)
            {
                float p[3];
                float n[3] = {0, 0, 0};
                p[axis] = ends[side][axis];
                p[(axis + 1) % 3] = ends[corner[0]][(axis + 1) % 3];
                p[(axis + 2) % 3] = ends[corner[1]][(axis + 2) % 3];
                n[axis] = side == 1 ? 1.0f : -1.0f;
                positions.emplace_back(p[0], p[1], p[2]);
                normals.emplace_back(n[0], n[1], n[2]);
            }
            static constexpr int orders[2][6] = {{0, 2, 1, 0, 3, 2}, {0, 1, 2, 0, 2, 3}};
            for (const int index : orders[side])
            {
                indices.push_back(static_cast<unsigned short>(first + index));
            }
        }
    }
    auto raw = std::make_shared<RawMesh>();
    raw->SetPositionBuffer(std::move(positions));
    raw->SetNormalBuffer(std::move(normals));
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    return raw;
}

MeshNode& AddBox(Scene& scene, Material& material, const Vector& low, const Vector& high)
{
    auto* const mesh = new Mesh(MakeBox(low, high), &scene);
    material.AddMesh(mesh);
    auto* const node = new MeshNode(&scene);
    scene.GetRoot()->AddChild(node, false);
    mesh->AddNode(node);
    return *node;
}

Material& AddMaterial(Scene& scene, const Color& color)
{
    auto* const material = new Material("material");
    material->SetDiffuse(color);
    material->ignoreLightColor = false;
    scene.AddMaterial(material);
    return *material;
}

} // namespace

FloorAndCube MakeFloorAndCube(float bottom, const Color& cubeColor, float scale, bool withFloor)
{
    auto scene = std::make_unique<Scene>();
    FloorAndCube made;
    Material& floorMaterial = AddMaterial(*scene, Color(0.8f, 0.8f, 0.8f));
    made.cubeMaterial = &AddMaterial(*scene, cubeColor);
    const float s = scale;
    if (withFloor)
    {
        made.floor = &AddBox(*scene, floorMaterial, Vector(-6 * s, -0.5f * s, -6 * s), Vector(6 * s, 0, 6 * s));
    }
    made.cube = &AddBox(*scene, *made.cubeMaterial, Vector(-0.5f * s, bottom * s, -0.5f * s),
                        Vector(0.5f * s, (bottom + 1) * s, 0.5f * s));
    std::vector<Host::ImportedNode> nodes = {{"cube", made.cube}};
    made.presentation = std::make_unique<Host::Presentation>(std::move(scene), std::move(nodes));
    return made;
}

Host::PresentationSettings LookingDown(float scale)
{
    Host::PresentationSettings settings;
    settings.look = Host::Look::Monotone;
    settings.antialiasing = Host::Antialiasing::None;
    settings.view.eye = Vector(0, 20 * scale, 0);
    settings.view.target = Vector(0, 0, 0);
    settings.view.up = Vector(0, 0, -1);
    settings.view.orthographic = true;
    // Its height is that at the target.
    settings.view.fov = 2.0f * 16.699244f; // of which the tangent of a half is 6 / 20
    settings.sun.emplace().direction = Vector(1, 1, 0);
    settings.shadows.emplace().darkness = 0.6f;
    return settings;
}

Picture FloorAndCubeFixture::Draw(FloorAndCube& made, const Host::PresentationSettings& wanted) const
{
    Apply(*made.presentation, wanted);
    return PresentationFixture::Draw(*made.presentation);
}

} // namespace OV::Test
