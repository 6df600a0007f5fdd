#pragma once

#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/RawMesh.h"

#include <memory>

namespace OV::Test
{

/// A rectangle around its own origin, with a bounding box and sphere to match.
inline std::shared_ptr<RawMesh> MakeRectangle(float width, float height)
{
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer({Vector(-width / 2, -height / 2, 0), Vector(width / 2, -height / 2, 0),
                            Vector(width / 2, height / 2, 0)});
    raw->SetIndices({0, 1, 2});
    raw->EndDescription(true);
    return raw;
}

/// Puts a node at a place of the layer; the layer owns it.
inline Shape2DNode* AddShapeNode(Scene2D& layer, float x, float y, float z)
{
    auto* node = new Shape2DNode(&layer);
    layer.GetRoot()->AddChild(node, false);
    Transform place;
    place.SetPosition(Vector(x, y, z));
    node->SetLocal(place);
    return node;
}

/// A new material of the layer, which owns it.
inline Material* AddLayerMaterial(Scene2D& layer, float opacity)
{
    auto* material = new Material("material");
    material->SetOpacity(opacity);
    layer.AddMaterial(material);
    return material;
}

/// A new mesh of the layer at the node, which shows it in the material. The layer owns it.
inline Mesh* AddLayerMesh(Scene2D& layer, MeshNode& node, Material& material, float width = 10, float height = 10)
{
    auto* mesh = new Mesh(MakeRectangle(width, height), &layer);
    material.AddMesh(mesh);
    mesh->AddNode(&node);
    return mesh;
}

}  // namespace OV::Test
