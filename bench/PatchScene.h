#pragma once

#include "orvane/scene/LightNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace OV::Bench
{

constexpr int kPatches = 10000; ///< meshes, each at a node of its own, in a square of 100 by 100
constexpr int kPatchMaterials = 50;
constexpr int kPatchCells = 7; ///< 7 x 7 cells of two triangles: 98 a mesh

/// @param spacing of the vertices, along X and Y.
inline std::shared_ptr<RawMesh> MakePatch(float spacing)
{
    std::vector<Vector> positions;
    std::vector<Vector> normals;
    std::vector<unsigned short> indices;
    for (int y = 0; y <= kPatchCells; ++y)
    {
        for (int x = 0; x <= kPatchCells; ++x)
        {
            positions.emplace_back(static_cast<float>(x) * spacing, static_cast<float>(y) * spacing, 0.0f);
            normals.emplace_back(0.0f, 0.0f, 1.0f);
        }
    }
    for (int y = 0; y < kPatchCells; ++y)
    {
        for (int x = 0; x < kPatchCells; ++x)
        {
            const auto a = static_cast<unsigned short>(y * (kPatchCells + 1) + x);
            const auto b = static_cast<unsigned short>(a + 1);
            const auto c = static_cast<unsigned short>(a + kPatchCells + 1);
            const auto d = static_cast<unsigned short>(c + 1);
            indices.insert(indices.end(), {a, b, d, a, d, c});
        }
    }
    auto raw = std::make_shared<RawMesh>();
    raw->SetPositionBuffer(std::move(positions));
    raw->SetNormalBuffer(std::move(normals));
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    return raw;
}

/// Fills a scene with one light and kPatches meshes 50 units in front of the default camera.
inline void AddPatches(Scene& scene, float spacing)
{
    scene.GetRoot()->AddChild(new LightNode(&scene), false);
    std::vector<Material*> materials;
    for (int i = 0; i < kPatchMaterials; ++i)
    {
        materials.push_back(new Material("material " + std::to_string(i)));
        scene.AddMaterial(materials.back());
    }
    for (int i = 0; i < kPatches; ++i)
    {
        auto* mesh = new Mesh(MakePatch(spacing), &scene);
        auto* node = new MeshNode(&scene);
        Transform place;
        place.SetPosition(Vector(static_cast<float>(i % 100), static_cast<float>(i / 100), -50.0f));
        node->SetLocal(place);
        mesh->AddNode(node);
        node->SetUserData(i);
        scene.GetRoot()->AddChild(node, false);
        materials[static_cast<std::size_t>(i % kPatchMaterials)]->AddMesh(mesh);
    }
}

} // namespace OV::Bench
