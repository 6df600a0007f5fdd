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

/// Meshes side by side, each at a node of its own.
struct PatchOptions
{
    int patches = kPatches;
    int materials = kPatchMaterials;
    int columns = kPatchCells; ///< of cells of two triangles
    int rows = kPatchCells;
    float spacing = 1.0f; ///< of the vertices, along X and Y
    int side = 100;       ///< patches in a row
    /// Squares of so many patches each way share a material, as neighbours in a building do; 0: the
    /// materials take turns.
    int block = 0;
};

inline std::shared_ptr<RawMesh> MakePatch(const PatchOptions& options)
{
    const int columns = options.columns;
    std::vector<Vector> positions;
    std::vector<Vector> normals;
    std::vector<unsigned short> indices;
    const auto vertices = static_cast<std::size_t>((columns + 1) * (options.rows + 1));
    positions.reserve(vertices);
    normals.reserve(vertices);
    indices.reserve(static_cast<std::size_t>(columns * options.rows) * 6);
    for (int y = 0; y <= options.rows; ++y)
    {
        for (int x = 0; x <= columns; ++x)
        {
            positions.emplace_back(static_cast<float>(x) * options.spacing,
                                   static_cast<float>(y) * options.spacing, 0.0f);
            normals.emplace_back(0.0f, 0.0f, 1.0f);
        }
    }
    for (int y = 0; y < options.rows; ++y)
    {
        for (int x = 0; x < columns; ++x)
        {
            const auto a = static_cast<unsigned short>(y * (columns + 1) + x);
            const auto b = static_cast<unsigned short>(a + 1);
            const auto c = static_cast<unsigned short>(a + columns + 1);
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

/// The place of a patch, 50 units in front of the default camera.
inline Transform PatchPlace(int index, float lift = 0.0f, int side = 100)
{
    Transform place;
    place.SetPosition(Vector(static_cast<float>(index % side), static_cast<float>(index / side), lift - 50.0f));
    return place;
}

/// The material of a patch, by its number.
inline std::size_t PatchMaterial(const PatchOptions& options, int index)
{
    const int square = options.block > 0 ? index / options.side / options.block + index % options.side / options.block
                                         : index;
    return static_cast<std::size_t>(square % options.materials);
}

/// Fills a scene with one light and the patches.
/// @return their nodes; the user data of each is its index.
inline std::vector<MeshNode*> AddPatches(Scene& scene, const PatchOptions& options)
{
    std::vector<MeshNode*> nodes;
    scene.GetRoot()->AddChild(new LightNode(&scene), false);
    std::vector<Material*> materials;
    for (int i = 0; i < options.materials; ++i)
    {
        materials.push_back(new Material("material " + std::to_string(i)));
        scene.AddMaterial(materials.back());
    }
    for (int i = 0; i < options.patches; ++i)
    {
        auto* mesh = new Mesh(MakePatch(options), &scene);
        auto* node = new MeshNode(&scene);
        node->SetLocal(PatchPlace(i, 0.0f, options.side));
        mesh->AddNode(node);
        node->SetUserData(i);
        scene.GetRoot()->AddChild(node, false);
        materials[PatchMaterial(options, i)]->AddMesh(mesh);
        nodes.push_back(node);
    }
    return nodes;
}

} // namespace OV::Bench
